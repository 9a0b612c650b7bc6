"""The system refuses one call, each in its turn: whatever that is, a run ends by itself and says why, files are old or new
and whole, and nothing else is left behind."""

import errno
import os
import re
import shutil
import subprocess
from pathlib import Path

import support
from support import options
from written import JOBS, WritingCase

# A library that stands in front of the system's. It counts the calls of one kind on files below FAULT_BELOW, and lets the
# one of the number FAULT_AT fail, and all further ones if it makes directories: where one can't be made, no other way leads
# there. What failed goes to the file FAULT_LOG, or if FAULT_AT is 0 how many calls there were.
SHIM = r"""
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

static int count;

static void note(const char *text)
{
    const int log = (int)syscall(SYS_openat, AT_FDCWD, getenv("FAULT_LOG"), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    syscall(SYS_write, log, text, strlen(text));
    syscall(SYS_close, log);
}

__attribute__((destructor)) static void end(void)
{
    char text[16];
    sprintf(text, "%d", count);
    if (!atoi(getenv("FAULT_AT")))
        note(text);
}

static int fails(const char *call, const char *path)
{
    const char *const below = getenv("FAULT_BELOW");
    if (strcmp(call, getenv("FAULT_CALL")) || strncmp(path, below, strlen(below)))
        return 0;
    const int at = atoi(getenv("FAULT_AT"));
    if (++count < at || at == 0 || (count > at && strcmp(call, "mkdir")))
        return 0;
    if (count == at)
        note(path);
    errno = atoi(getenv("FAULT_ERROR"));
    return 1;
}

static int failsOn(const char *call, int file)
{
    char link[64];
    char path[4096];
    sprintf(link, "/proc/self/fd/%d", file);
    const ssize_t size = readlink(link, path, sizeof path - 1);
    path[size < 0 ? 0 : size] = 0;
    return fails(call, path);
}

#define REAL(result, name, ...) result (*const real)(__VA_ARGS__) = (result (*)(__VA_ARGS__))dlsym(RTLD_NEXT, #name)
#define MODE \
    va_list more; \
    va_start(more, flags); \
    const mode_t mode = flags & O_CREAT ? va_arg(more, mode_t) : 0; \
    va_end(more)
#define OPEN(name) \
    int name(const char *path, int flags, ...) \
    { REAL(int, name, const char *, int, ...); MODE; return fails("open", path) ? -1 : real(path, flags, mode); }
#define OPENAT(name) \
    int name(int at, const char *path, int flags, ...) \
    { REAL(int, name, int, const char *, int, ...); MODE; return fails("open", path) ? -1 : real(at, path, flags, mode); }
OPEN(open) OPEN(open64) OPENAT(openat) OPENAT(openat64)

int close(int file)
{
    REAL(int, close, int);
    const int isFailing = failsOn("close", file);
    const int error = errno;
    const int status = real(file);
    if (!isFailing)
        return status;
    errno = error;
    return -1;
}

ssize_t read(int file, void *bytes, size_t size)
{ REAL(ssize_t, read, int, void *, size_t); return failsOn("read", file) ? -1 : real(file, bytes, size); }

ssize_t write(int file, const void *bytes, size_t size)
{
    REAL(ssize_t, write, int, const void *, size_t);
    if (size > 1 && failsOn("short write", file))
        return real(file, bytes, size / 2);
    return failsOn("write", file) ? -1 : real(file, bytes, size);
}

int rename(const char *from, const char *to)
{ REAL(int, rename, const char *, const char *); return fails("rename", to) ? -1 : real(from, to); }

int mkdir(const char *path, mode_t mode)
{ REAL(int, mkdir, const char *, mode_t); return fails("mkdir", path) ? -1 : real(path, mode); }
"""

FAULTS = [("write", errno.ENOSPC), ("short write", 0), ("rename", errno.EIO), ("rename", errno.EACCES),
          ("open", errno.EMFILE), ("open", errno.EACCES), ("close", errno.EIO), ("read", errno.EIO), ("mkdir", errno.ENOSPC)]


class Faults(WritingCase):
    def setUp(self):
        super().setUp()
        (self.folder / "shim.c").write_text(SHIM)
        self.log = self.folder.with_suffix(".log")
        self.addCleanup(self.log.unlink, missing_ok=True)
        subprocess.run(["gcc", "-shared", "-fPIC", "-Wall", "-o", self.folder / "shim.so", self.folder / "shim.c"], check=True)

    def disturbed(self, job, call, error, at):
        """The run, and what the log says."""
        asan = os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"
        done = self.do(job, *(["-j1"] if job in ("headers", "build", "site") else []),
                       environment={**os.environ, "ASAN_OPTIONS": asan, "LD_PRELOAD": str(self.folder / "shim.so"),
                                    "FAULT_BELOW": str(self.folder), "FAULT_CALL": call, "FAULT_ERROR": str(error),
                                    "FAULT_AT": str(at), "FAULT_LOG": str(self.log)})
        return done, self.log.read_text()

    def test_faults(self):
        for job in JOBS:
            states = self.states(job)
            for call, error in FAULTS:
                before = {} if call == "mkdir" and job != "write" else states[0]
                self.restore(before)
                calls = int(self.disturbed(job, call, error, 0)[1])
                for at in range(1, calls + 1, options.every):
                    with self.subTest(job=job, call=call, error=errno.errorcode.get(error), at=at):
                        self.one_fault(job, call, error, at, before, states)
                print(f"{job}: {calls} times {call}, {os.strerror(error)}")

    def one_fault(self, job, call, error, at, before, states):
        self.restore(before)
        done, place = self.disturbed(job, call, error, at)
        self.assertIn(done.status, (0, 1), done.err)
        left = self.ended([before, *states])
        self.assertLessEqual(left.names, before.keys() | states[1].keys())
        if f"warning: Unable to open file {place}" in done.err and done.status == 0:
            return                              # an include, without which a description loads
        self.assertEqual(left.torn, [])
        if done.status == 0:
            self.assertNotIn("error:", done.err)
            self.expect_new(states)
        else:
            # What is begun has a name of its own: the message names the file whose place it takes.
            named = Path(place).parent if Path(place).name.startswith(".veldmap-") else place
            line = next((line for line in done.err.splitlines() if "error:" in line), "")
            self.assertIn(str(named), line)
            if not line.startswith("error: Unable to open file "): # words of the library, which give no reason
                self.assertIn(os.strerror(error), line)
        self.expect(self.do(job), 0, err=None)
        self.expect_new(states)


if __name__ == "__main__":
    if not shutil.which("gcc"):
        support.skip("gcc is not installed")
    support.main(__doc__.splitlines()[0], [
        ("--every", {"type": int, "default": 1, "help": "of so many calls only one fails, for a slow program"})])
