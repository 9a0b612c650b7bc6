"""The description to start from: nothing is to be said of it, and the tools of each output take what it makes."""

import shutil
import subprocess
import unittest
from pathlib import Path

import support
from support import run

support.LINTED.clear()

SCHEMA = Path(__file__).resolve().parents[2] / "schema/veldmap.xsd"


class New(support.Case):
    def setUp(self):
        super().setUp()
        self.chip = self.folder / "soc.xml"
        self.expect(run("new", self.chip), 0)

    def accepts(self, *command):
        if not shutil.which(command[0]):
            raise unittest.SkipTest(f"{command[0]} is not installed")
        judged = subprocess.run(command, capture_output=True, text=True, check=False, cwd=self.folder)
        self.assertEqual(judged.returncode, 0, judged.stdout + judged.stderr)

    def test_nothing_is_said_of_it(self):
        self.expect(run("check", "-Wall", "--strict", self.chip), 0)
        self.expect(run("build", "-Wall", "--chip", self.chip, "--headers", self.folder / "include", "--vhdl",
                        self.folder / "rtl", "--docs", self.folder / "site"), 0)

    def test_its_schema_takes_it(self):
        self.accepts("xmllint", "--noout", "--schema", SCHEMA, self.chip)

    def test_a_compiler_takes_its_header(self):
        self.expect(run("headers", "--chip", self.chip, "-o", self.folder), 0)
        self.accepts("gcc", "-fsyntax-only", "-Wall", "-Werror", "-include", support.PRELUDE, "-x", "c", "soc.h")

    def test_a_simulator_takes_its_package(self):
        self.expect(run("vhdl", "--chip", self.chip, "-o", self.folder), 0)
        self.accepts("ghdl", "-s", "soc_reg_pkg.vhd")

    def test_nothing_is_overwritten(self):
        text = self.chip.read_text()
        self.chip.write_text("mine")
        self.expect(run("new", self.chip), 1, err=f"error: {self.chip} is there already and stays as it is.\n")
        self.assertEqual(self.chip.read_text(), "mine")
        self.expect(run("new", self.folder), 1, err=f"error: {self.folder} is there already and stays as it is.\n")
        self.expect(run("new", "-", folder=self.folder), 0, out=text)
        missing = self.folder / "missing/soc.xml"
        self.expect(run("new", missing), 1, err=f"error: {missing} can't be written: No such file or directory\n")
        self.expect(run("new", ""), 1, err="error: No name of a file is given.\n")
        self.assertEqual(run("new").status, 2)
        self.assertEqual(support.files_below(self.folder).keys(), {"soc.xml"})


if __name__ == "__main__":
    support.main(__doc__)
