"""What the process-level tests share: the program's runs within limits, descriptions laid out, and the way out."""

import argparse
import atexit
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path
from typing import NamedTuple

SKIPPED = 77                                    # what the test driver takes as "not run"
MESSAGE = re.compile(r"(.+:\d+:\d+: )?(error|warning|note): .+")
SUMMARY = re.compile(r"^note: (\d+ files written, \d+ unchanged, \d+ failed.*)\.\n\Z", re.M)

HERE = Path(__file__).resolve().parent
PRELUDE = HERE / "prelude.h"
EXAMPLES = HERE.parents[1] / "examples"
GOLDEN = HERE.parent / "golden"

options = argparse.Namespace()                  # the command line of the test, filled in by main()


class Run(NamedTuple):
    status: int                                 # negative: the number of the signal that ended the run
    out: str
    err: str
    seconds: float
    megabytes: float                            # the largest resident size
    summary: str                                # what became of files: the last line of the errors, which lack it


# The commands that tell what lint finds. The descriptions of most tests are full of it, and it is not what they ask.
LINTED = {"check", "headers", "vhdl", "docs", "site", "build"}


def run(*arguments, give_up=300, environment=None, program=None, folder=None):
    """One run of the program. One that hangs is killed after give_up seconds, which shows as signal 9."""
    command = [program or options.veldmap, *map(str, arguments)]
    place = next((at for at, word in enumerate(command) if word in LINTED), None)
    if place is not None:
        command.insert(place + 1, "--no-lint")
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        begin = time.monotonic()
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=out, stderr=err, env=environment,
                                   cwd=folder)
        watchdog = threading.Timer(give_up, process.kill)
        watchdog.start()
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.monotonic() - begin
        watchdog.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
        out.seek(0)
        err.seek(0)
        told = err.read().decode()
        summary = SUMMARY.search(told)
        return Run(process.returncode, out.read().decode(), SUMMARY.sub("", told), seconds, usage.ru_maxrss / 1024,
                   summary[1] if summary else "")


def chips():
    """The folders that hold a real chip and facts about it: the one among the examples, and those of --descriptions."""
    folders = [EXAMPLES, *([Path(options.descriptions)] if options.descriptions else [])]
    found = {path.parent.name: path.parent.resolve() for folder in folders for path in folder.glob("*/facts.json")}
    return [found[name] for name in sorted(found)]


def archive(*lines):
    """The text of a description; the first of the lines is line 2 of the file."""
    return "\n".join(["<archive>", *lines, "</archive>", ""])


class Case(unittest.TestCase):
    """A test with a directory of its own and shorter words for what most tests ask."""

    maxDiff = 2000

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.folder = Path(directory.name)

    def lay_out(self, files, root="root.xml"):
        """Writes a dictionary of relative names and contents; gives the path of the root file."""
        for name, content in files.items():
            path = self.folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return self.folder / root

    def expect(self, run, status, out="", err=""):
        """The exit status first: a run that failed says more than a text that differs. None allows any text."""
        self.assertEqual(run.status, status, run.err[:2000])
        for wanted, text in ((out, run.out), (err, run.err)):
            if wanted is not None:
                self.assertEqual(text, wanted)

    def expect_golden(self, name, text):
        """The text is that of a golden file; UPDATE_GOLDEN=1 writes it instead."""
        path = GOLDEN / name
        if "UPDATE_GOLDEN" in os.environ:
            path.write_text(text)
        self.assertEqual(text, path.read_text(), path)

    def tree(self, *roots):
        run_of_tree = run("tree", "--json", *roots)
        self.expect(run_of_tree, 0, out=None)
        return json.loads(run_of_tree.out)


# The fixed files of a documentation site.
POOL = ["style.css", "print.css", "ftv2blank.gif", "ftv2folderclosed.gif", "ftv2folderopen.gif", "ftv2lastnode.gif",
        "ftv2mlastnode.gif", "ftv2mnode.gif", "ftv2node.gif", "ftv2plastnode.gif", "ftv2pnode.gif", "ftv2vertline.gif",
        "memory.png", "module.png", "reg16.png", "reg32.png", "reg8.png", "bitfield.png", "hole.png",
        "veldcorplogo.png", "ftiens4.js", "ua.js", "menu.html"]


def lay_out_pool(folder):
    """Fills a folder with stand-ins for the fixed files of a site."""
    folder.mkdir(parents=True)
    for name in POOL:
        (folder / name).write_text(f"stand-in for {name}")


def program_with_pool(folder):
    """A copy of the program in the folder with a pool beside it; its path."""
    lay_out_pool(folder / "docpool")
    return shutil.copy(options.veldmap, folder / "veldmap")


def files_below(folder):
    """Content by relative name."""
    return {str(path.relative_to(folder)): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def skip(reason):
    print("SKIPPED:", reason)
    sys.exit(SKIPPED)


def main(description, arguments=(), prepare=lambda: None):
    """Reads the command line into options, runs the tests of the calling file, and leaves with their status."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--veldmap", required=True, metavar="PATH", help="the program under test")
    parser.add_argument("--descriptions", metavar="DIR", help="further real chips, with facts beside them")
    for name, settings in arguments:
        parser.add_argument(name, **settings)
    _, rest = parser.parse_known_args(namespace=options)
    options.veldmap = os.path.abspath(options.veldmap)
    cache = tempfile.TemporaryDirectory()       # what builds keep of files that are soon gone
    atexit.register(cache.cleanup)
    os.environ["XDG_CACHE_HOME"] = cache.name
    if not os.access(options.veldmap, os.X_OK):
        parser.error(f"{options.veldmap} is no program")
    prepare()
    result = unittest.main(argv=[sys.argv[0], *rest], exit=False).result
    if not result.wasSuccessful() or result.testsRun == 0:
        sys.exit(1)
    if result.skipped:
        skip("; ".join(sorted({reason for _, reason in result.skipped})))
