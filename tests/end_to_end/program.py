"""The program's commands: what each prints and where, what it writes, and with which status it ends."""

import json
import os
import pty
import re
import shutil
import subprocess
import unittest

import support
from support import archive, options, run

REGS = archive(
    '<var name="NB_CHAN" value="2"><comment>channels</comment></var>', '<range name="bus" left="15" right="0"/>',
    '<enum name="mode"><entry name="MODE_OFF"/><entry name="MODE_ON" value="5"/></enum>',
    '<typedef name="fifo"><uint8 name="data"/><int16 name="level"/></typedef>')
CHIP = archive(
    '<comment>a small chip</comment>', '<include file="lib/regs.xml"/>', '<var name="ALL" value="1" global="yes"/>',
    '<module name="uart" category="serial">', '<reg32 name="ctrl" protect="rw"><comment>Control</comment>',
    '<bits name="speed" pos="3:1" access="rw" rst="2"><options><option name="fast" value="5"/><mask/></options></bits>',
    '<bits name="b" pos="7:4" cut="2" access="r"/></reg32>',
    '<reg16 name="word"><l name="lo"/><h name="hi"/></reg16>', '<hole size="16"/>',
    '<reg8 name="chan" count="NB_CHAN"/>', '<instance name="queue" type="fifo"/>', '<ireg name="inner"/>',
    '<bool name="flag"/>', '<ptr name="next" type="fifo"/>', '<memory name="ram" size="8"/>',
    '<instance name="state" type="mode"/>', '<struct name="pair"><uint name="a"/><int8 name="b"/></struct>',
    '</module>', '<instance name="UART0" type="uart" address="0x80001000"/>')
SOFT = archive('<var name="OF_CHIP" value="ALL+1"/>', '<module name="task"><uint32 name="id"/></module>')
FILES = {"chip.xml": CHIP, "lib/regs.xml": REGS, "soft.xml": SOFT}
HEADERS = {"chip.h", "chip_asm.h", "lib/regs.h", "lib/regs_asm.h"}

COMMANDS = ("check", "headers", "vhdl", "docs", "site", "build", "tree", "show", "find", "export", "regs", "write", "console",
            "complete", "eval", "rules", "new", "import", "encrypt")
VALUES = [("1+2*3", "int", 7), ("0x10+0b11", "int", 19), ("0xFFFFFFFF", "dword", 4294967295), ("-2+3", "int", -5),
          ("7/2.0", "real", 3.5), ("1<2", "bool", True), ('"a"+1', "string", "a1"), ("exp2(4)", "int", 16)]


class Program(support.Case):
    def setUp(self):
        super().setUp()
        self.chip = self.lay_out(FILES, "chip.xml")
        self.soft = self.folder / "soft.xml"
        self.roots = ("--chip", self.chip, "--soft", self.soft)

    def test_check(self):
        for arguments in ((self.chip,), ("--chip", self.chip), self.roots):
            self.expect(run("check", "--no-lint", *arguments), 0)
        self.assertEqual(support.files_below(self.folder).keys(), FILES.keys(), "check writes nothing")

    @unittest.skipUnless(shutil.which("gcc"), "gcc is not installed")
    def test_headers_of_the_examples_compile(self):
        self.expect(run("headers", "--chip", support.EXAMPLES / "soc.xml", "--soft", support.EXAMPLES / "firmware.xml",
                        "-o", self.folder / "out"), 0)
        headers = [path for path in (self.folder / "out").rglob("*.h") if not path.name.endswith("_asm.h")]
        self.assertEqual(len(headers), 5)
        folders = [f"-I{folder}" for folder in {path.parent for path in headers}]
        for header in headers:
            command = ["gcc", "-fsyntax-only", "-std=c11", "-Wall", "-Werror", "-include", support.PRELUDE, *folders,
                       "-x", "c", header]
            compiled = subprocess.run(command, capture_output=True, text=True)
            self.assertEqual(compiled.returncode, 0, compiled.stderr)

    def test_build_writes_what_the_single_commands_write(self):
        one, each = self.folder / "one", self.folder / "each"
        for command in ("headers", "vhdl", "docs", "site"):
            self.expect(run(command, *self.roots, "-o", each / command, "-j", 1), 0, err=None)
        self.expect(run("build", "-j", 3, *self.roots, "--headers", one / "headers", "--vhdl", one / "vhdl", "--docs",
                        one / "docs", "--site", one / "site"), 0, err=None)
        self.assertEqual(support.files_below(one), support.files_below(each))
        # One that fails does not keep the others from being written.
        (self.folder / "file").write_text("")
        self.expect(run("build", "--chip", self.chip, "--headers", self.folder / "file" / "x", "--vhdl", one / "more"),
                    1, err=None)
        self.assertEqual(support.files_below(one / "more"), support.files_below(each / "vhdl"))
        for number in ("0", "-1", "two", ""):
            self.expect(run("headers", *self.roots, "-o", one / "none", "-j", number), 2,
                        err=f"error: '{number}' is no number of threads: -j takes one from 1 on.\n")
        self.assertFalse((one / "none").exists())
        self.expect(run("build", *self.roots), 2, err=None)
        self.expect(run("build", "--soft", self.soft, "--vhdl", one), 2, err=None)

    def test_log_and_warnings(self):
        root = self.lay_out({"root.xml": archive('<include file="missing.xml"/>')})
        warnings = f"warning: Unable to open file {self.folder}/missing.xml\n{root}:0:0: warning: Skipped.\n"
        self.expect(run("check", root), 0, err=warnings)
        self.expect(run("-q", "check", root), 0)
        told = run("-v", "check", root)
        self.expect(told, 0, err=None)
        for text in (f"Loading {root}...", "Chip root loaded.", *warnings.splitlines()):
            self.assertIn(text, told.err)
        broken = self.lay_out({"broken.xml": archive("<bogus/>")}, "broken.xml")
        self.expect(run("-q", "check", broken), 1, err=f"{broken}:2:8: error: Unvalid tag : 'bogus'\n")

    def test_colours_are_for_terminals(self):
        broken = self.lay_out({"broken.xml": archive("<bogus/>")}, "broken.xml")
        for environment, coloured in (({}, True), ({"NO_COLOR": "1"}, False)):
            here, there = pty.openpty()
            plain = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
            subprocess.run([options.veldmap, "check", broken], stdin=subprocess.DEVNULL, stderr=there,
                           env={**plain, "TERM": "xterm", **environment})
            os.close(there)
            text = os.read(here, 10000).decode()
            os.close(here)
            self.assertIn("Unvalid tag", text)
            self.assertEqual("\x1b[" in re.sub("\x1b\\[[0-9]*K", "", text), coloured, repr(text))

    def test_terminals_obey_no_description(self):
        def obeyed(text):
            return [c for c in text if c != "\n" and (ord(c) < 32 or 127 <= ord(c) < 160 or c in "\u2028\u202e\u2066")]

        evil = "a&#10;b&#13;\u009b31m\x7f\u2028\u202e\u2066z"
        name = "esc\x1b[31m\n.xml"
        root = self.lay_out({name: archive(f"<instance name='I' type='{evil}' address='0'/>",
                                           f"<var name='v' value='{evil}'/>", f"<include file='{evil}'/>")}, name)
        for words in ((), ("--explain",)):
            for run_of_check in (run("check", *words, root), run("tree", *words, "--chip", root)):
                self.expect(run_of_check, 1, err=None)
                self.assertEqual(obeyed(run_of_check.err), [])
                self.assertIn("'a?b??31m????z'", run_of_check.err)
                first = run_of_check.err.splitlines()[0]
                self.assertTrue(first.startswith(f"{self.folder}/esc?[31m?.xml:2:"), first)
        shown = self.lay_out({"c.xml": archive(f"<comment>{evil}</comment>")}, "c.xml")
        here, there = pty.openpty()
        subprocess.run([options.veldmap, "tree", "--chip", shown], stdin=subprocess.DEVNULL, stdout=there)
        os.close(there)
        text = os.read(here, 10000).decode().replace("\r\n", "\n")
        os.close(here)
        self.assertIn("31m", text)
        self.assertEqual(obeyed(text), [])
        self.assertIn("\u009b", run("tree", "--chip", shown).out, "elsewhere it is what it was")

    def test_headers(self):
        target = self.folder / "new/out"
        self.expect(run("headers", "--no-lint", "--chip", self.chip, "-o", target), 0)
        self.assertEqual(support.files_below(target).keys(), HEADERS)
        content = (target / "chip.h").read_text()
        for text in ('#include "regs.h"', "} HWP_UART_T;", "#define REG_UART0_BASE              0x80001000"):
            self.assertIn(text, content)
        self.expect(run("headers", "--soft", self.soft, "-o", self.folder / "soft"), 1, err=None)   # ALL is the chip's
        both = self.folder / "both"
        self.expect(run("headers", "--no-lint", *self.roots, "-o", both), 0)
        self.assertEqual(support.files_below(both).keys(),
                         {f"chip/{name}" for name in HEADERS} | {"soft/soft.h", "soft/soft_asm.h"})
        self.assertEqual(support.files_below(both / "chip"), support.files_below(target))

    def test_tree(self):
        shown = run("tree", *self.roots)
        self.expect(shown, 0, out=None)
        self.expect_golden("program/tree.txt", shown.out)
        self.expect_golden("program/tree.json", json.dumps(self.tree(*self.roots), indent=1) + "\n")

    def test_eval(self):
        self.expect(run("eval", "1+2*3", "0x10+0b11", '"a"+1'), 0, "7\n19\na1\n")
        self.expect(run("eval", "--chip", self.chip, "NB_CHAN*8+ALL", "MODE_ON"), 0, "17\n5\n")
        self.expect(run("eval", *self.roots, "NB_CHAN"), 0, "2\n")
        told = run("eval", "--json", "--", *(expression for expression, *_ in VALUES))
        self.expect(told, 0, out=None)
        self.assertEqual(json.loads(told.out), [{"type": kind, "value": value} for _, kind, value in VALUES])

    def test_expressions_without_a_value(self):
        told = run("eval", "6*7", "NB_CHAN", "2")
        self.expect(told, 1, out=None, err=None)
        self.assertEqual([line for line in told.out.splitlines() if line], ["42", "2"])
        self.assertIn("NB_CHAN", told.err)
        told = run("eval", "--json", "NB_CHAN", "1/0", "(1", "6*7")
        self.expect(told, 1, out=None, err=None)
        self.assertEqual(json.loads(told.out), [{"error": 5}, {"error": 7}, {"error": 9}, {"type": "int", "value": 42}])

    def test_the_standard_input(self):
        self.lay_out({"types.xml": support.archive('<typedef name="t"><uint8 name="a"/></typedef>')}, "types.xml")
        text = support.archive('<include file="types.xml"/>', '<instance name="T" type="{}" address="0"/>')
        def piped(type_name, *words):
            return subprocess.run([support.options.veldmap, *words], input=text.format(type_name), cwd=self.folder,
                                  capture_output=True, text=True)
        self.assertEqual((piped("t", "check", "-").stderr, piped("t", "check", "-").returncode), ("", 0))
        told = piped("u", "check", "--explain", "-")
        self.assertEqual(told.returncode, 1)
        self.assertTrue(told.stderr.startswith("<stdin>:3:41: error: ") and '<instance name="T" type="u"' in told.stderr)
        self.assertIn("$T ", piped("t", "find", "--chip", "-", "T").stdout)
        for words in (["headers", "--chip", "-", "-o", "out"], ["check", "--chip", "-", "--soft", "-"]):
            self.assertEqual(piped("t", *words).returncode, 2)
        self.assertFalse((self.folder / "out").exists())

    def test_wrong_usage_is_told_as_an_error(self):
        for words, said in ((("headers", "--chip", "x.xml"), "--output is required; 'veldmap headers --help'"),
                            (("chek",), "There is no command chek; did you mean 'check'?"),
                            (("help", "hedaers"), "There is no command hedaers; did you mean 'headers'?"),
                            (("zzz",), "There is no command zzz; 'veldmap --help'")):
            told = run(*words)
            self.expect(told, 2, err=None)
            self.assertTrue(told.err.startswith(f"error: {said}"), told.err)
        self.assertEqual(run("help", "show").out, run("show", "--help").out)
        self.assertEqual(run("help").out, run("--help").out)

    def test_help_teaches_by_example(self):
        for arguments in ((), *((command,) for command in COMMANDS)):
            with self.subTest(arguments):
                told = run(*arguments, "--help")
                self.expect(told, 0, out=None)
                self.assertRegex(told.out, r"(?m)^\s+(\$ )?veldmap .*" + (arguments or ("headers",))[0] + " ")


if __name__ == "__main__":
    support.main(__doc__)
