#!/usr/bin/env python3
"""Mutated descriptions through the commands of the program: whatever it is given, a run ends by itself and in time, with a
status of its own and no report of a sanitizer, and leaves whole files and nothing else.

What fails is kept as a folder with its files and the command line, in "command"."""

import argparse
import json
import os
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path
from typing import NamedTuple

PROJECT = Path(__file__).resolve().parents[1]
PIECE = re.compile(r"<!--.*?-->|<[^<>]*>|[^<]+|<", re.S)
VALUE = re.compile(r"""(\w+)=("[^"]*"|'[^']*')""")
REPORT = re.compile(r"Sanitizer|runtime error:|terminate called|Assertion|ASSERT")
WORDS = ["", "0", "1", "-1", "31:0", "0:31", "33:30", "127:64", "7:7", "2147483647", "-2147483648", "4294967296", "0x7fffffff",
         "0xFFFFFFFF", "1/0", "1<<40", "A", "A+B", "m", "uart", "$M", "yes", "no", "ro", "wo", "rw", "dec", "../x.xml", "root.xml",
         "sub/other.xml", "/dev/null", "%1%2", "a b", "a-b", "\u00e9\u20ac\U0001f600", "&lt;b&gt;", "&#10;", "&quot;);alert(1);(&quot;",
         "*/", "--", "n" * 300, "((((1))))", "int", "class", "1e9", "\\"]
COUNTS = ["0", "1", "2", "3", "17", "A", "-1", "65536"]

# What is typed; {root} is the mutated description, {out} a fresh directory, {path} and {word} come from the description.
COMMANDS = [
    "check -Wall {root}", "check -Wall --strict --explain {root}", "check --format=json -Wall {root}",
    "check --format=sarif -Wall {root}", "headers --no-lint --types --globals --accessors --chip {root} -o {out}",
    "headers --self-check --chip {root} -o {out}", "headers --no-lint --soft {root} -o {out} --depfile {out}/d --list {out}/l",
    "vhdl --no-lint --chip {root} -o {out}", "vhdl --no-lint --accepted --self-check --chip {root} -o {out}",
    "docs --no-lint --chip {root} -o {out}", "site --no-lint --chip {root} -o {out}",
    "site --single --no-lint --chip {root} --soft {other} -o {out}",
    "build --no-lint --chip {root} --soft {other} --headers {out}/h --vhdl {out}/v --docs {out}/d", "tree --chip {root}",
    "tree --json --chip {root} --soft {other}", "show --json --chip {root} {path}", "show --chip {root} {path} --image {image} --at 0x1000",
    "write --chip {root} {path}={word} --image {image} --at 0x1000 --force", "find --chip {root} {word}",
    "complete --chip {root} {path}.", "eval --chip {root} {word}", "encrypt {root} {out}/sealed.xmd",
]


class Seeds(NamedTuple):
    files: list                                 # whole descriptions
    lines: list                                 # what may stand in one


def read_seeds():
    paths = [*PROJECT.glob("examples/*.xml"), *PROJECT.glob("examples/periph/*.xml"),
             *PROJECT.glob("fuzz/corpus/description/*")]
    files = [text for path in sorted(paths) if 150 < len(text := path.read_text(errors="replace")) < 20000]
    lines = [line.replace("^", "") for path in sorted(PROJECT.glob("tests/golden/*/*.txt"))
             for line in path.read_text().splitlines() if line.lstrip().startswith("<")]
    return Seeds(files, lines)


def balanced(pieces):
    """The pieces with the end tags that their start tags ask for, so that more than the form of the document is tried."""
    result, open_tags = [], []
    for piece in pieces:
        tag = re.match(r"<(/?)([\w.-]+)[^<>]*?(/?)>", piece)
        if tag and not tag[1] and not tag[3]:
            open_tags.append(tag[2])
        elif tag and tag[1]:
            if tag[2] not in open_tags or len(open_tags) == 1:
                continue
            while open_tags[-1] != tag[2]:
                result.append(f"</{open_tags.pop()}>")
            open_tags.pop()
        result.append(piece)
    return [*result, *(f"</{name}>" for name in reversed(open_tags))]


class Mutator:
    def __init__(self, seeds, chance):
        self.seeds, self.chance = seeds, chance

    def description(self):
        chance = self.chance
        pieces = PIECE.findall(chance.choice(self.seeds.files))
        for _ in range(chance.choice((0, 1, 1, 1, 2, 2, 3, 8))):
            chance.choices((self.change_value, self.insert_lines, self.repeat, self.drop, self.swap_tag),
                           (8, 3, 1, 1, 1))[0](pieces)
        text = "".join(balanced(pieces) if chance.random() < 0.95 else pieces)
        data = bytearray(text.encode(chance.choice(("utf-8",) * 19 + ("utf-16",)), errors="replace"))
        for _ in range(chance.choice((0,) * 30 + (1, 2, 6))):
            at = chance.randrange(len(data) + 1)
            data[at:at + chance.choice((0, 0, 1, 1, 30))] = bytes(chance.randrange(256) for _ in range(chance.randrange(3)))
        return bytes(data)

    def place(self, pieces):
        return self.chance.randrange(len(pieces)) if pieces else 0

    def change_value(self, pieces):
        tags = [at for at, piece in enumerate(pieces) if VALUE.search(piece) and not piece.startswith("<?")]
        if not tags:
            return
        at = self.chance.choice(tags)
        found = self.chance.choice(list(VALUE.finditer(pieces[at])))
        others = [match[2][1:-1] for match in VALUE.finditer("".join(pieces))]
        word = self.chance.choice(COUNTS if found[1] == "count" else [*WORDS, *others])
        quote = found[2][0]
        pieces[at] = pieces[at][:found.start(2)] + quote + word.replace(quote, "") + quote + pieces[at][found.end(2):]

    def insert_lines(self, pieces):
        ends = [at for at, piece in enumerate(pieces) if piece.startswith("</")]
        at = self.chance.choice(ends or [0])
        pieces[at:at] = [piece for _ in range(self.chance.randrange(1, 4))
                         for piece in PIECE.findall(self.chance.choice(self.seeds.lines))]

    def repeat(self, pieces):
        begin, end = sorted((self.place(pieces), self.place(pieces)))
        at = self.place(pieces)
        pieces[at:at] = pieces[begin:end][:200] * self.chance.choice((1, 1, 2, 9))

    def drop(self, pieces):
        at = self.place(pieces)
        del pieces[at:at + self.chance.choice((1, 1, 2, 10))]

    def swap_tag(self, pieces):
        tags = [at for at, piece in enumerate(pieces) if re.match(r"<\w", piece)]
        if tags:
            name = re.match(r"<(\w+)", self.chance.choice(self.seeds.lines + ["<archive"]).strip())
            at = self.chance.choice(tags)
            pieces[at] = re.sub(r"^<\w+", f"<{name[1] if name else 'reg'}", pieces[at])


class Failure(Exception):
    pass


class Worker:
    """Makes cases one by one; what it makes follows from the seed alone."""

    def __init__(self, options, seeds, number):
        self.options, self.number = options, number
        self.chance = random.Random(options.seed * 1000 + number)
        self.mutator = Mutator(seeds, self.chance)
        self.cases = self.runs = 0
        self.statuses = {0: 0, 1: 0, 2: 0}

    def work(self, until, failures):
        while time.monotonic() < until and not failures:
            with tempfile.TemporaryDirectory(prefix="veldmap-fuzz-") as name:
                folder = Path(name)
                self.command = []
                try:
                    self.one_case(folder)
                except Failure as failure:
                    failures.append(self.keep(folder, str(failure)))
            self.cases += 1

    def one_case(self, folder):
        root, other, image = (folder / name for name in ("root.xml", "sub/other.xml", "image.bin"))
        other.parent.mkdir()
        (folder / "periph").mkdir()
        for path in (root, other):
            path.write_bytes(self.mutator.description())
        for name in ("memmap.xml", "periph/uart.xml", "periph/gpio.xml"):
            mutated = self.chance.random() < 0.2
            (folder / name).write_bytes(self.mutator.description() if mutated else (PROJECT / "examples" / name).read_bytes())
        image.write_bytes(bytes(range(256)))
        text = root.read_text(errors="replace")
        names = re.findall(r"""name=["'](\w+)""", text) or ["x"]
        for command in self.chance.sample(COMMANDS, 4):
            out = folder / "out"
            shutil.rmtree(out, ignore_errors=True)
            out.mkdir()
            path = "$" + self.chance.choice([".", "[0].", ".*."]).join(self.chance.choices(names, k=self.chance.randrange(1, 4)))
            word = self.chance.choice([*WORDS, *names])
            words = [piece.format(root=root, other=other, out=out, image=image, path=path, word=word)
                     for piece in command.split()]
            self.one_command(folder, out, words)

    def one_command(self, folder, out, words):
        status, told = self.run(folder, words)
        left = [path for path in folder.rglob("*") if path.name.startswith(".veldmap-")]
        if left:
            raise Failure(f"left {left[0].name} behind")
        if status == 0 and any(word in words for word in ("--json", "--format=json", "--format=sarif")):
            self.expect_json(told[0])
        writes = words[0] in ("headers", "vhdl", "docs", "site", "build")
        if status == 0 and writes and self.chance.random() < 0.3:
            self.expect_same(folder, out, words)

    def expect_json(self, text):
        try:
            json.loads(text)
        except ValueError as error:
            raise Failure(f"is no JSON: {error}")

    def expect_same(self, folder, out, words):
        """Any number of threads, and a second run, make the same."""
        before = contents(out)
        status, told = self.run(folder, [words[0], "-j1", *words[1:]])
        if status != 0 or contents(out) != before or " 0 files written" not in told[1]:
            raise Failure(f"makes something else the second time: {told[1][-500:]}")

    def run(self, folder, words):
        self.command = words
        environment = {**os.environ, "ASAN_OPTIONS": "exitcode=99", "UBSAN_OPTIONS": "exitcode=99:print_stacktrace=1",
                       "LSAN_OPTIONS": "exitcode=99"}
        process = subprocess.Popen([self.options.veldmap, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, env=environment, cwd=folder)
        try:
            told = [text.decode(errors="replace") for text in process.communicate(timeout=self.options.limit)]
        except subprocess.TimeoutExpired:
            process.send_signal(signal.SIGKILL)
            process.communicate()
            raise Failure(f"does not end within {self.options.limit:g} s")
        self.runs += 1
        if process.returncode not in self.statuses or REPORT.search(told[1].replace(str(folder), "")):
            raise Failure(f"ends with status {process.returncode}: {told[1][-6000:]}")
        self.statuses[process.returncode] += 1
        return process.returncode, told

    def keep(self, folder, what):
        """Leaves the case where it can be run again, and tells how."""
        kept = Path(self.options.keep).absolute() / f"{self.options.seed}-{self.number}-{self.cases}"
        shutil.rmtree(kept, ignore_errors=True)
        shutil.copytree(folder, kept, symlinks=True)
        command = shlex.join([self.options.veldmap, *self.command]).replace(str(folder), str(kept))
        (kept / "command").write_text(command + "\n")
        return f"fuzz: program: {what}\nfuzz: it is kept in {kept}; run it again with\n    {command}"


def contents(folder):
    return {path.relative_to(folder): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--veldmap", required=True, metavar="PATH", help="the program, built with sanitizers")
    parser.add_argument("--seconds", type=float, default=60, help="how long it goes on")
    parser.add_argument("--seed", type=int, default=int(time.time()), help="of what is made; from the clock if not given")
    parser.add_argument("--limit", type=float, default=60, help="seconds that one run may take")
    parser.add_argument("--keep", required=True, metavar="DIR", help="where cases that fail are kept")
    options = parser.parse_args()
    options.veldmap = os.path.abspath(options.veldmap)
    seeds = read_seeds()
    workers = [Worker(options, seeds, number) for number in range(os.cpu_count())]
    failures = []
    threads = [threading.Thread(target=worker.work, args=(time.monotonic() + options.seconds, failures)) for worker in workers]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    statuses = {status: sum(worker.statuses[status] for worker in workers) for status in (0, 1, 2)}
    print(f"fuzz: program: {sum(worker.cases for worker in workers)} descriptions in {sum(statuses.values())} runs, "
          f"{statuses[0]} of them done, {statuses[1]} refused, {statuses[2]} wrong usage; seed {options.seed}, "
          f"{len(failures) or 'none'} failed", flush=True)
    print("\n".join(failures), end="\n" if failures else "", file=sys.stderr)
    sys.exit(1 if failures or not statuses[0] or not statuses[1] else 0)


if __name__ == "__main__":
    main()
