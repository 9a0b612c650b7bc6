"""The program's commands: what each prints and where, what it writes, and with which status it ends."""

import json
import os
import pathlib
import pty
import re
import shutil
import subprocess
import unittest

import support
from support import archive, options, run

HERE = pathlib.Path(__file__).resolve().parent

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

ELEMENT = {"kind", "name", "path", "type", "typedefName", "declaredType", "category", "comment", "keywords", "address",
           "offset", "size", "align"}
VALUABLE = {"access", "display", "enumTemplate", "low", "high", "physicalName", "bitFields", "bitGroups"}
BY_KIND = {"struct": {"isTypedef", "members"}, "array": {"count", "countExpression", "prototype", "members"},
           "hole": {"bits"}, "memory": set(), "pointer": VALUABLE | {"pointedType"}}
FIELD = {"name", "up", "down", "upExpression", "downExpression", "physicalUp", "physicalDown", "physicalUpExpression",
         "physicalDownExpression", "access", "reset", "display", "comment", "options", "hasDefault", "hasMask",
         "hasShift"}
VARIABLE = {"name", "expression", "value", "comment", "enum"}
KINDS = {"struct", "register32", "register16", "register8", "internal_register8", "hole", "array", "unsigned_int8",
         "int16", "boolean", "pointer", "memory", "int32", "unsigned_int32", "int8"}

COMMANDS = ("check", "headers", "vhdl", "docs", "build", "tree", "show", "write", "complete", "eval", "encrypt")
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
            self.expect(run("check", *arguments), 0)
        self.assertEqual(support.files_below(self.folder).keys(), FILES.keys(), "check writes nothing")

    @unittest.skipUnless(shutil.which("gcc"), "gcc is not installed")
    def test_headers_of_the_examples_compile(self):
        examples = HERE.parent.parent / "examples"
        self.expect(run("headers", "--chip", examples / "soc.xml", "--soft", examples / "firmware.xml", "-o",
                        self.folder / "out"), 0)
        headers = [path for path in (self.folder / "out").rglob("*.h") if not path.name.endswith("_asm.h")]
        self.assertEqual(len(headers), 5)
        folders = [f"-I{folder}" for folder in {path.parent for path in headers}]
        for header in headers:
            command = ["gcc", "-fsyntax-only", "-std=c11", "-Wall", "-Werror", "-include", HERE / "prelude.h", *folders,
                       "-x", "c", header]
            compiled = subprocess.run(command, capture_output=True, text=True)
            self.assertEqual(compiled.returncode, 0, compiled.stderr)

    def test_build_writes_what_the_single_commands_write(self):
        one, each = self.folder / "one", self.folder / "each"
        for command in ("headers", "vhdl", "docs"):
            self.expect(run(command, *self.roots, "-o", each / command), 0, err=None)
        self.expect(run("build", *self.roots, "--headers", one / "headers", "--vhdl", one / "vhdl", "--docs",
                        one / "docs"), 0, err=None)
        self.assertEqual(support.files_below(one), support.files_below(each))
        # One that fails does not keep the others from being written.
        (self.folder / "file").write_text("")
        self.expect(run("build", "--chip", self.chip, "--headers", self.folder / "file" / "x", "--vhdl", one / "more"),
                    1, err=None)
        self.assertEqual(support.files_below(one / "more"), support.files_below(each / "vhdl"))
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

    def test_headers(self):
        target = self.folder / "new/out"
        self.expect(run("headers", "--chip", self.chip, "-o", target), 0)
        self.assertEqual(support.files_below(target).keys(), HEADERS)
        content = (target / "chip.h").read_text()
        for text in ('#include "regs.h"', "} HWP_UART_T;", "#define REG_UART0_BASE              0x80001000"):
            self.assertIn(text, content)
        self.expect(run("headers", "--soft", self.soft, "-o", self.folder / "soft"), 1, err=None)   # ALL is the chip's
        both = self.folder / "both"
        self.expect(run("headers", *self.roots, "-o", both), 0)
        self.assertEqual(support.files_below(both).keys(),
                         {f"chip/{name}" for name in HEADERS} | {"soft/soft.h", "soft/soft_asm.h"})
        self.assertEqual(support.files_below(both / "chip"), support.files_below(target))

    def test_readable_tree(self):
        shown = run("tree", *self.roots)
        self.expect(shown, 0, out=None)
        for word in ("UART0", "0x80001000", "ctrl", "speed"):
            self.assertIn(word, shown.out)

    def check_element(self, element):
        kind = element["kind"]
        self.assertEqual(element.keys(), ELEMENT | BY_KIND.get(kind, VALUABLE), kind)
        for field in element.get("bitFields", []):
            self.assertEqual(field.keys(), FIELD)
        below = [*element.get("members", []), *([element["prototype"]] if "prototype" in element else [])]
        return {kind}.union(*map(self.check_element, below))

    def test_tree_as_json(self):
        tree = self.tree(*self.roots)
        self.assertEqual(tree.keys(), {"chip", "soft", "globals"})
        self.assertEqual([(row.keys(), row["name"], row["value"]) for row in tree["globals"]], [(VARIABLE, "ALL", 1)])
        chip, library = tree["chip"]["archives"]
        self.assertEqual(tree["soft"].keys(), {"name", "archives", "instances"})
        self.assertEqual(chip.keys(), {"file", "comment", "cjoker", "generateAsm", "vhdlPackage", "includes",
                                       "variables", "enums", "templates"})
        self.assertEqual((chip["file"], chip["includes"]), ("chip.xml", ["lib/regs.xml"]))
        self.assertEqual((library["file"], library["includes"]), ("lib/regs.xml", []))
        count, bus, off, on = library["variables"]
        self.assertEqual(count, {"name": "NB_CHAN", "expression": "2", "value": 2, "comment": "channels", "enum": None})
        self.assertEqual((bus.keys() - VARIABLE, bus["rightValue"], bus["direction"]),
                         ({"right", "rightValue", "direction"}, 0, "down"))
        self.assertEqual((off["enum"], on["value"]), ("mode", 5))
        self.assertEqual(library["enums"], [{"name": "mode", "comment": "", "entries": [
            {"name": "MODE_OFF", "expression": "0", "value": 0, "comment": ""},
            {"name": "MODE_ON", "expression": "5", "value": 5, "comment": ""}]}])
        elements = [*chip["templates"], *library["templates"], *tree["chip"]["instances"],
                    *tree["soft"]["archives"][0]["templates"]]
        self.assertEqual(set().union(*map(self.check_element, elements)), KINDS)
        self.check_uart(tree["chip"]["instances"][0])

    def check_uart(self, uart):
        words = ("name", "path", "type", "address", "category", "keywords")
        self.assertEqual([uart[word] for word in words],
                         ["UART0", "$UART0", "uart", 0x80001000, "serial", ["volatile"]])
        places = {"ctrl": 0, "word": 4, "": 6, "chan": 8, "queue": 10, "inner": 14, "flag": 15, "next": 16, "ram": 20,
                  "state": 28, "pair": 32}
        self.assertEqual({member["name"] if member["kind"] != "hole" else "": member["offset"]
                          for member in uart["members"]}, places)
        control, chan = uart["members"][0], uart["members"][3]
        speed, low, _ = control["bitFields"]
        self.assertEqual((control["access"], control["comment"], control["display"]), ("rw", "Control", "hex"))
        self.assertEqual((speed["up"], speed["down"], speed["access"], speed["reset"], speed["hasMask"]),
                         (3, 1, "rw", 2, True))
        self.assertEqual(speed["options"], [{"name": "fast", "value": 5, "comment": ""}])
        self.assertEqual((low["reset"], low["physicalUp"], low["physicalDown"]), (None, 4, 3))
        self.assertEqual(control["bitGroups"], [{"name": "b", "fields": ["0", "1"]}])
        self.assertEqual((chan["count"], chan["countExpression"], [member["path"] for member in chan["members"]]),
                         (2, "NB_CHAN", ["$UART0.chan[0]", "$UART0.chan[1]"]))

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

    def test_help_teaches_by_example(self):
        for arguments in ((), *((command,) for command in COMMANDS)):
            with self.subTest(arguments):
                told = run(*arguments, "--help")
                self.expect(told, 0, out=None)
                self.assertRegex(told.out, r"(?m)^\s+(\$ )?veldmap .*" + (arguments or ("headers",))[0] + " ")


if __name__ == "__main__":
    support.main(__doc__)
