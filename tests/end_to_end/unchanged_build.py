"""A build of what has not changed: nothing is made again, all is told as before, and whatever has changed is noticed."""

import os
import shutil
import time

import support
from support import archive, run

UNIT = archive('<module name="unit"><comment>a unit</comment>', '<reg name="CTRL"><bits name="EN" pos="0"/></reg>',
               '<reg name="ctrl"><bits name="EN" pos="0"/></reg>', "</module>")
ROOT = archive('<include file="unit.xml"/>', '<include file="board.xml" optional="yes"/>',
               '<instance name="UNIT" type="unit" address="0x1000"/>')
SOME = r"[1-9]\d*"


class UnchangedBuild(support.Case):
    def setUp(self):
        super().setUp()
        self.root = self.lay_out({"unit.xml": UNIT, "root.xml": ROOT})
        self.program = support.program_with_pool(self.folder)
        self.out = self.folder / "out"
        self.cache = self.folder / "cache"
        self.environment = {**os.environ, "XDG_CACHE_HOME": str(self.cache)}
        self.all = self.outputs_in(self.out)

    @staticmethod
    def outputs_in(folder):
        return ["--headers", folder / "h", "--vhdl", folder / "v", "--docs", folder / "d"]

    def build(self, *more, program=None):
        return run("build", *(more or self.all), "--chip", self.root, program=program or self.program,
                   environment=self.environment)

    def settle(self):
        """Builds until the files are so old that what is kept of them is certain; the last run."""
        self.expect(self.build(), 0, err=None)
        time.sleep(0.3)
        done = self.build()
        self.expect_written(0, done)
        self.assertEqual(len(list(self.cache.rglob("build-*"))), 1)
        return done

    def expect_written(self, count, done):
        self.expect(done, 0, err=None)
        self.assertRegex(done.summary, rf"^{count} files written, \d+ unchanged, 0 failed")

    def test_outputs_are_not_read_and_all_is_told(self):
        made = self.settle()
        left = self.build()
        self.assertEqual((left.out, left.err, left.summary), (made.out, made.err, made.summary))
        self.assertIn("VHDL refuses", left.err)
        trace = self.folder / "trace"
        if shutil.which("strace"):
            run("-f", "-e", "trace=openat", "-o", trace, self.program, "build", *self.all, "--chip", self.root,
                program="strace", environment=self.environment)
            self.assertIn("unit.xml", trace.read_text())
            self.assertNotIn("unit.h", trace.read_text())

    def test_formats_and_lists(self):
        listed, depfile = self.folder / "list", self.folder / "out.d"
        told = []
        for _ in range(4):
            runs = [self.build(*self.all, "--list", listed, "--depfile", depfile, "--format", sort)
                    for sort in ("json", "sarif")]
            told.append(([(done.status, done.out, done.err) for done in runs], listed.read_text(), depfile.read_text()))
            listed.unlink()
            depfile.unlink()
            time.sleep(0.3)
        for later in told[1:]:
            self.assertEqual(later, told[0])
        self.assertIn("unit.h", told[0][1])
        self.assertIn("style.css", told[0][2])

    def test_what_has_changed_is_noticed(self):
        header = self.out / "h" / "unit.h"

        def edit():
            """Keeps size and time of the file."""
            times = header.stat()
            with header.open("r+b") as file:
                file.write(b"X")
            os.utime(header, ns=(times.st_atime_ns, times.st_mtime_ns))

        def link():
            header.rename(self.folder / "moved.h")
            header.symlink_to(self.folder / "moved.h")

        pool = self.folder / "docpool"
        cases = [
            ("an output is edited", edit, 1),
            ("an output is gone", header.unlink, 1),
            ("an output is another file", lambda: shutil.copy(self.out / "h" / "root.h", header), 1),
            ("an output is a link to outside", link, 1),
            ("a directory is gone", lambda: shutil.rmtree(self.out / "v"), 2),
            ("a fixed file", lambda: (pool / "style.css").write_text("other"), 1),
            ("a description", lambda: self.lay_out({"unit.xml": UNIT.replace("a unit", "the unit")}), SOME),
            ("a new description", lambda: self.lay_out({"board.xml": archive('<var name="X" value="1"/>')}), SOME),
            ("a description is gone", (self.folder / "board.xml").unlink, SOME),
        ]
        for what, change, count in cases:
            with self.subTest(what):
                self.settle()
                self.expect_written(0, self.build())
                change()
                self.expect_written(count, self.build())
                fresh = self.folder / "fresh"
                self.expect(self.build(*self.outputs_in(fresh)), 0, err=None)
                now = support.files_below(self.out)
                self.assertEqual({name: now[name] for name in support.files_below(fresh)}, support.files_below(fresh))
                shutil.rmtree(fresh)
                shutil.rmtree(self.cache)

    def test_what_is_asked_for_is_noticed(self):
        self.settle()
        self.expect_written(1, self.build(*self.all, "--accepted"))
        self.expect_written(1, self.build())
        self.expect_written(2, self.build(*self.all, "--self-check"))
        self.assertRegex(self.build(*self.all[:2]).summary, "^0 files written, 4 unchanged")

    def test_another_program_has_other_fixed_files(self):
        self.settle()
        other = self.folder / "other"
        other.mkdir()
        program = support.program_with_pool(other)
        (other / "docpool" / "ua.js").write_text("newer")
        self.expect_written(1, self.build(program=program))

    def test_a_description_that_fails(self):
        self.settle()
        self.lay_out({"unit.xml": UNIT.replace("</module>", "<nonsense/></module>")})
        self.assertEqual(self.build().status, 1)
        self.lay_out({"unit.xml": UNIT})
        self.expect_written(0, self.build())

    def test_without_a_place_for_the_record(self):
        for place in "relative", "/proc/none", "":
            self.environment.update(XDG_CACHE_HOME=place, HOME="/proc/none")
            self.expect(self.build(), 0, err=None)
            time.sleep(0.3)
            self.expect_written(0, self.build())

    def test_a_damaged_record(self):
        self.settle()
        record = next(self.cache.rglob("build-*"))
        whole = record.read_bytes()
        for damaged in b"", whole[:-10], whole[:200] + b"\0" * 50 + whole[250:], b"\xff" * 64:
            record.write_bytes(damaged)
            self.expect_written(0, self.build())
            self.assertEqual(record.read_bytes(), whole)


if __name__ == "__main__":
    support.main(__doc__)
