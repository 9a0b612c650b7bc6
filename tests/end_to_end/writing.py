"""Writing files: whatever ends a run, files are old or new and whole, nothing else is left behind, and what is told says
why. What does not change is not written."""

import contextlib
import errno
import fcntl
import json
import os
import resource
import shutil
import signal
import subprocess
import time
import unittest

import support
from support import archive, options, run

REGISTERS = "".join(f'<reg32 name="r{number}"/>' for number in range(300))

# A library that stands in front of the system's, for what only a full disk and a foreign directory do.
SHIM = r"""
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static int is(const char *what) { const char *const asked = getenv("SHIM"); return asked && !strcmp(asked, what); }

ssize_t write(int file, const void *bytes, size_t count)
{
    ssize_t (*const real)(int, const void *, size_t) = (ssize_t (*)(int, const void *, size_t))dlsym(RTLD_NEXT, "write");
    static size_t left = 1000;
    if (!is("full disk") || file <= 2)
        return real(file, bytes, count);
    if (left == 0) {
        errno = ENOSPC;
        return -1;
    }
    const ssize_t written = real(file, bytes, count < left ? count : left);
    left -= written > 0 ? (size_t)written : 0;
    return written;
}

static int no(int flags) { return is("foreign directory") && (flags & O_EXCL); }
#define OPEN(name) \
    int name(const char *path, int flags, ...) \
    { \
        int (*const real)(const char *, int, ...) = (int (*)(const char *, int, ...))dlsym(RTLD_NEXT, #name); \
        va_list more; \
        va_start(more, flags); \
        const mode_t mode = flags & O_CREAT ? va_arg(more, mode_t) : 0; \
        va_end(more); \
        if (!no(flags)) \
            return real(path, flags, mode); \
        errno = EACCES; \
        return -1; \
    }
OPEN(open)
OPEN(open64)
"""


def chip(value, registers=REGISTERS):
    return archive(f'<var name="A" value="{value}"/>', '<include file="sub/other.xml"/>',
                   f'<module name="m">{registers}</module>', '<instance name="M" type="m" address="0x1000"/>')


class Writing(support.Case):
    def setUp(self):
        super().setUp()
        self.out = self.folder / "out"
        self.root = self.describe(1)

    def describe(self, value):
        return self.lay_out({"root.xml": chip(value), "sub/other.xml": archive(f'<var name="B" value="{value}"/>')})

    def headers(self, *arguments, **settings):
        return run("headers", "--chip", self.root, "-o", self.out, *arguments, **settings)

    def limited(self, kind, limit, *arguments):
        """A run that may not use more of something; its status and what it told."""
        done = subprocess.run([options.veldmap, "headers", "--no-lint", "--chip", self.root, "-o", self.out, *arguments],
                              capture_output=True, text=True,
                              preexec_fn=lambda: resource.setrlimit(kind, (limit, limit)))
        return done.returncode, done.stderr

    def names(self):
        return {str(path.relative_to(self.out)) for path in self.out.rglob("*") if not path.is_dir()}

    NAMES = {"root.h", "root_asm.h", "sub/other.h", "sub/other_asm.h"}

    def test_no_more_than_the_most_output(self):
        for word in ("0", "-1", "", "M", "1T", "1.5M", "1 M", "K"):
            self.expect(self.headers("--max-output", word), 2, err=None)
        beyond = "more than {} bytes{}; --max-output SIZE allows more.\n"
        told = self.headers("--max-output", "1k")
        self.expect(told, 1, err=f"error: {self.out}/root.h and 3 files behind it are not written, since it would be "
                    + beyond.format(1024, " in all"))
        self.assertEqual(told.summary, "0 files written, 0 unchanged, 4 failed")
        self.assertEqual(self.names(), set())
        told = run("build", "--chip", self.root, "--headers", self.out / "h", "--vhdl", self.out / "v", "--max-output",
                   "1K")
        self.assertEqual(told.err.count("error:"), 1, told.err)
        self.assertEqual(told.summary, "0 files written, 0 unchanged, 6 failed")
        self.expect(self.headers("--max-output", "99999999999G"), 0)
        for command in (("tree",), ("tree", "--json"), ("show", "$M", "--json"), ("find", "*"), ("complete", "$M.")):
            whole = run(*command, "--chip", self.root)
            self.expect(whole, 0, out=None)
            size = len(whole.out.encode())
            self.expect(run(*command, "--chip", self.root, "--max-output", size), 0, out=whole.out)
            cut = run(*command, "--chip", self.root, "--max-output", size - 1)
            self.expect(cut, 1, out=None, err="error: The output ends here, since it would be "
                        + beyond.format(size - 1, ""))
            self.assertTrue(whole.out.startswith(cut.out) and len(cut.out) < size, cut.out)

    def test_large_output_takes_little_memory(self):
        self.root = self.lay_out({"root.xml": archive(
            '<module name="m"><reg name="r" count="100000" protect="rw"/></module>', '<instance name="M" type="m" address="0"/>')})
        loaded = run("complete", "$", "--chip", self.root).megabytes
        with open(self.folder / "json", "wb") as out:
            process = subprocess.Popen([options.veldmap, "tree", "--json", "--chip", self.root], stdout=out)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = status
        self.assertEqual(status, 0)
        self.assertGreater((self.folder / "json").stat().st_size, 25e6)
        if not options.megabytes:
            return                                  # a sanitized program, whose memory says nothing
        self.assertLess(usage.ru_maxrss / 1024, loaded + 30)
        docs = run("docs", "--chip", self.root, "-o", self.out)
        self.assertEqual(docs.status, 0, docs.err)
        self.assertGreater((self.out / "M.html").stat().st_size, 18e6)
        self.assertLess(docs.megabytes, loaded + 90)

    def test_only_what_differs_is_written(self):
        times = lambda: {name: (self.out / name).stat().st_mtime_ns for name in self.NAMES}
        self.assertEqual(self.headers().summary, "4 files written, 0 unchanged, 0 failed")
        first = times()
        self.assertEqual(self.headers().summary, "0 files written, 4 unchanged, 0 failed")
        self.assertEqual(times(), first)
        (self.folder / "sub/other.xml").write_text(archive('<var name="B" value="2"/>'))
        self.assertEqual(self.headers("--skip-up-to-date").summary, "2 files written, 2 unchanged, 0 failed")
        self.assertEqual({name for name, when in times().items() if when != first[name]},
                         {"sub/other.h", "sub/other_asm.h"})
        for name in self.NAMES: # however late the file system's clock is
            os.utime(self.out / name, (time.time() + 9, time.time() + 9))
        self.assertEqual(self.headers("--skip-up-to-date").summary,
                         "0 files written, 0 unchanged, 0 failed, 4 up to date")
        self.assertEqual(self.headers("-q").summary, "")
        told = self.headers("--format=json")
        self.assertEqual((told.summary, json.loads(told.err)), ("", []))
        build = ["build", "--chip", self.root, *(word for kind in ("headers", "vhdl", "docs")
                                                 for word in (f"--{kind}", self.folder / "built" / kind))]
        self.assertEqual(run(*build).summary, "33 files written, 0 unchanged, 0 failed")
        self.assertEqual(run(*build).summary, "0 files written, 33 unchanged, 0 failed")
        shutil.rmtree(self.folder / "built/vhdl")
        (self.folder / "built/vhdl").write_text("")
        self.assertEqual(run(*build).summary, "0 files written, 31 unchanged, 2 failed")

    def test_a_file_that_may_not_grow(self):
        self.headers()
        before = support.files_below(self.out)
        self.describe(2)
        status, told = self.limited(resource.RLIMIT_FSIZE, 4096)
        self.assertEqual((status, told.split("\n")[0]),
                         (1, f"error: {self.out}/root.h can't be written: File too large"))
        self.assertIn("note: 2 files written, 0 unchanged, 1 failed.\n", told)
        after = support.files_below(self.out)
        self.assertEqual(after.keys(), self.NAMES)
        self.assertEqual(after["root.h"], before["root.h"])

    def shim(self, what, *arguments):
        source, library = self.folder / "shim.c", self.folder / "shim.so"
        source.write_text(SHIM)
        subprocess.run(["gcc", "-shared", "-fPIC", source, "-o", library, "-ldl"], check=True)
        asan = {"ASAN_OPTIONS": "verify_asan_link_order=0"}
        return self.headers(*arguments, environment={**os.environ, **asan, "LD_PRELOAD": str(library), "SHIM": what})

    @unittest.skipUnless(shutil.which("gcc"), "gcc is not installed")
    def test_a_full_disk(self):
        self.headers()
        before = support.files_below(self.out)
        self.describe(2)
        told = self.shim("full disk")
        reason = os.strerror(errno.ENOSPC)
        self.expect(told, 1, err="".join(f"error: {self.out}/{name} can't be written: {reason}\n"
                                         for name in ("root.h", "sub/other.h")))
        self.assertEqual(support.files_below(self.out), before)

    @unittest.skipUnless(shutil.which("gcc"), "gcc is not installed")
    def test_a_directory_that_takes_no_file(self):
        self.headers()
        self.describe(2)
        told = self.shim("foreign directory")
        self.expect(told, 0, err="".join(f"warning: {self.out}/{name} is written over the old file, not in one step, since "
                                         "its directory takes no other: Permission denied\n"
                                         for name in ("root.h", "root_asm.h", "sub/other.h", "sub/other_asm.h")))
        self.assertRegex((self.out / "root.h").read_text(), r"#define A +\(2\)")

    def test_leftovers(self):
        self.headers()
        for number in range(150):
            (self.out / f".veldmap-{number}-{number}.tmp").write_text("half of a")
            (self.out / f".root.h.{number}.tmp").write_text("what somebody else keeps")
        self.describe(2)
        with open(self.out / ".veldmap-7-7.tmp", "w") as written:
            fcntl.flock(written, fcntl.LOCK_EX)
            self.expect(self.headers(), 0)
        self.assertEqual({path.name for path in self.out.glob(".veldmap-*")}, {".veldmap-7-7.tmp"})
        self.assertEqual(len(list(self.out.glob(".root.h.*"))), 150)

    def test_signals_that_find_a_file_begun(self):
        """A fifo holds the run in the middle of its work."""
        for kind in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            shutil.rmtree(self.out, ignore_errors=True)
            (self.out / "sub").mkdir(parents=True)
            os.mkfifo(self.out / "sub/other.h")
            process = subprocess.Popen([options.veldmap, "headers", "--no-lint", "-j1", "--chip", self.root, "-o", self.out],
                                       stderr=subprocess.DEVNULL)
            self.wait_for(self.out / "root_asm.h")
            process.send_signal(kind)
            self.assertEqual(process.wait(timeout=60), -kind)
            self.assertEqual(list(self.out.rglob(".veldmap*")), [])

    def wait_for(self, path):
        for _ in range(1000):
            if path.exists():
                return
            time.sleep(0.01)
        self.fail(f"{path} does not come")

    def test_who_ignores_signals_means_it(self):
        process = subprocess.Popen(["sh", "-c", f"trap '' HUP; exec '{options.veldmap}' headers --no-lint --chip "
                                    f"'{self.root}' -o '{self.out}'"], stderr=subprocess.DEVNULL)
        for _ in range(20):
            with contextlib.suppress(ProcessLookupError):
                process.send_signal(signal.SIGHUP)
            time.sleep(0.001)
        self.assertIn(process.wait(), (0, -signal.SIGHUP)) # the shell itself may not have come so far
        self.headers()
        self.assertEqual(self.names(), self.NAMES)

    def test_out_of_memory(self):
        if not options.megabytes:
            return # a sanitized program takes all addresses there are
        many = "".join(f'<reg32 name="r{number}"><bits name="b" pos="3:0"/></reg32>' for number in range(40000))
        self.lay_out({"root.xml": chip(1, many)})
        short = 0
        for megabytes in (60, 80, 100, 120, 140, 170, 200, 260, 320):
            status, told = self.limited(resource.RLIMIT_DATA, megabytes << 20, "-j1")
            self.assertIn(status, (0, 1), f"{megabytes} MB: {told[-500:]}")
            if status:
                short += 1
                self.assertTrue(told.endswith("error: Not enough memory.\n"), told[-500:])
            self.assertLessEqual(self.names(), self.NAMES) if self.out.exists() else None
        self.assertGreater(short, 0)

    def test_output_that_nobody_can_take(self):
        for arguments in (["--help"], ["headers", "--help"], ["--version"], ["rules"], ["tree", "--chip", self.root],
                          ["check", "--format=json", self.root]):
            with self.subTest(arguments), open("/dev/full", "w") as full:
                done = subprocess.run([options.veldmap, *map(str, arguments)], stdout=full, stderr=subprocess.PIPE, text=True)
                self.assertEqual((done.returncode, done.stderr),
                                 (1, "error: The standard output can't be written: No space left on device\n"))


if __name__ == "__main__":
    support.main(__doc__.splitlines()[0], [
        ("--seconds", {"type": float, "default": 1, "help": "not used"}),
        ("--megabytes", {"type": float, "default": 200, "help": "0 for a program that can't be kept from memory"})])
