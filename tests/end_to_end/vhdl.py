"""VHDL packages before a real tool: what it must take it takes, and what it must refuse the program has warned of."""

import re
import shutil
import subprocess
import unittest

import support
from support import archive, run

EXAMPLE = support.EXAMPLES / "timer.xml"
STANDARDS = ("93", "08")

# Uses what examples/timer.xml declares, as hardware would: a register of the packed bits, fields picked out of it.
USER = """
library ieee;
use ieee.std_logic_1164.all;
use work.memmap_reg_pkg.all;
use work.timer_reg_pkg.all;

entity user is end entity;

architecture test of user is
  signal ctrl : std_logic_vector(range_ctrl) := "10100101101";
  signal compare : tab_compare(0 to tabsize_compare - 1);
  signal count : count_t := 0;
begin
  process begin
    assert APB_BASE = 1073741824 and TIMER_NB_CHAN = 4 and MODE_CYCLE = 2 severity failure;
    assert TIMER_REG_NBA = 3 and at_CTRL = 0 and at_COUNT = 1 and at_COMPARE = 4 and at_COMPARE_3 = 7 severity failure;
    assert l_enable = 0 and l_run'high = 5 and l_run'low = 4 and l_wrapped = 31 severity failure;
    assert p_wrapped = 24 and range_count'high = 24 and range_compare'high = 24 severity failure;
    assert ctrl'length = 11 and compare'length = 4 and count_t'high = 23 severity failure;
    assert ctrl(p_enable) = '1' and ctrl(p_run) = "10" and ctrl(p_divider) = "10100101" severity failure;
    assert false report "all was checked" severity note;
    wait;
  end process;
end architecture;
"""

# Every kind of line that VHDL refuses, and what depends on one.
REFUSED = {
    "soc.xml": archive(
        '<include file="a.xml"/><include file="x/a.xml"/><include file="entity.xml"/>',
        '<var name="BIG" value="0x80000000"/><var name="SMALL" value="BIG-0x7FFFFFFF"/>',
        '<var name="A" value="1"/><var name="a" value="2"/><var name="OF_A" value="a"/><var name="OTHER" value="C"/>',
        '<var name="SHIFT" value="1&lt;&lt;4"><comment>\u20ac<br/>two</comment></var>',
        '<range name="signal" left="3" right="0"/><range name="span" left="WIDTH" right="SHIFT-16"/>',
        '<module name="m"><reg name="c"><bits name="f" pos="WIDTH:0"/><bits name="g" pos="SHIFT"/></reg>',
        '<reg name="r" count="2"/><reg name="C"><bits name="f" pos="6"/></reg></module>',
        '<module name="n"><reg name="c" count="2"><bits name="f" pos="5:4"/></reg></module>',
        '<instance name="M0" type="m" address="0"/>'),
    "a.xml": archive('<var name="WIDTH" value="4"/><var name="C" value="3"/><var name="c" value="4"/>'),
    "x/a.xml": archive('<var name="FAR" value="1"/>'),
    "entity.xml": archive('<var name="GONE" value="1"/>').replace("<archive>", '<archive vhdlpkg="entity">'),
}

NO_FIELDS = "ranges of registers without bitfields"
TWICE = "names that are declared already"
ADDRESS_BITS = "_REG_NBA outside 1 to 12"
DECLARATION = re.compile(r"^\s*(constant|subtype|type)\s+(\w+)\s*(:|is)(.*);$")


def packages_below(folder, others=()):
    """The packages by name, those that others use first."""
    found = {}
    for path in set(folder.rglob("*.vhd")) - set(others):
        text = path.read_text()
        found[re.search(r"^package (\w+) is$", text, re.MULTILINE)[1]] = path
    ordered = {}

    begun = set()

    def take(name):
        begun.add(name)
        for used in re.findall(r"^USE work\.(\w+)\.all;$", found[name].read_text(), re.MULTILINE):
            if used not in begun:
                take(used)
        ordered.setdefault(name, found[name])

    for name in sorted(found):
        take(name)
    return ordered


def refused_lines(lines):
    """The lines of a package that no tool takes, by number, with the kind of each. Reads nothing but the text."""
    declared, refused = set(), {}
    for number, line in enumerate(lines):
        declaration = DECLARATION.match(line)
        if not declaration:
            continue
        name, rest = declaration[2].lower(), declaration[4]
        vector = re.search(r"std_logic_vector\((\w+)\)", rest)
        if re.search(r"integer range  downto 0$", rest) or (vector and vector[1].lower() not in declared):
            refused[number] = NO_FIELDS
        elif name in declared:
            refused[number] = TWICE
        elif name.endswith("_reg_nba") and not 1 <= int(rest.split(":=")[1]) <= 12:
            refused[number] = ADDRESS_BITS
        if refused.get(number) != NO_FIELDS:
            declared.add(name)
    return refused


def code_of(lines):
    return [line for line in lines if line.strip() and not line.lstrip().startswith("--")]


class Vhdl(support.Case):
    def generate(self, *roots):
        shutil.rmtree(self.folder / "rtl", ignore_errors=True)
        result = run("vhdl", *roots, "-o", self.folder / "rtl")
        self.expect(result, 0, err=None)
        return result.err

    def ghdl(self, standard, *arguments):
        work = self.folder / f"work{standard}"
        work.mkdir(exist_ok=True)
        # A static value beyond its bounds ends every elaboration, but is a warning of the analysis.
        strict = ["-Werror=runtime-error"] if arguments[0] == "-a" else []
        return subprocess.run(["ghdl", arguments[0], f"--std={standard}", f"--workdir={work}", *strict, *arguments[1:]],
                              cwd=work, capture_output=True, text=True, timeout=120)

    def check(self, standard, *arguments):
        result = self.ghdl(standard, *arguments)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result.stdout + result.stderr

    def passes(self, root, standards=STANDARDS):
        """Packages that VHDL takes, and a simulator finds all their numbers to be those of the description. The lines
        without --accepted are the same but for comments, which tell why."""
        self.generate("--chip", root)
        plain = {path: path.read_text() for path in (self.folder / "rtl").rglob("*.vhd")}
        told = self.tree("--chip", root)["chip"]["archives"]
        self.generate("--accepted", "--self-check", "--chip", root)
        checks = {path for path in (self.folder / "rtl").rglob("*.vhd") if path not in plain}
        self.assertEqual([path.parent for path in checks], [self.folder / "rtl"])
        for path, text in plain.items():
            lines = path.read_text().splitlines()
            left, all_lines = code_of(lines), code_of(text.splitlines())
            if not lines[0].startswith("-- Refused, since ") and "ERROR" not in text and len(set(plain)) == len(told):
                rest = iter(all_lines)
                self.assertEqual([line for line in left if line not in rest], [], path)
                self.assertEqual(len(all_lines) - len(left), sum("-- refused: " in line for line in lines), path)
        for standard in standards:
            shutil.rmtree(self.folder / f"work{standard}", ignore_errors=True)
            self.check(standard, "-a", *packages_below(self.folder / "rtl", checks).values())
            self.check(standard, "-a", *checks)
            self.check(standard, "--elab-run", checks.pop().stem)
            checks = set((self.folder / "rtl").glob("*_self_check*.vhd"))
        return (self.folder / "rtl" / "soc_reg_pkg.vhd")

    def test_example_in_a_simulator(self):
        self.assertEqual(self.generate("--chip", EXAMPLE), "")
        user = self.folder / "user.vhd"
        user.write_text(USER)
        for standard in STANDARDS:
            for path in packages_below(self.folder / "rtl").values():
                self.check(standard, "-a", path)
            self.check(standard, "-a", user)
            self.check(standard, "-e", "user")
            self.assertIn("all was checked", self.check(standard, "-r", "user"))

    def test_the_program_warns_of_what_a_tool_refuses_and_of_nothing_else(self):
        fine = '<reg name="c"><bits name="c" pos="0"/></reg><hole size="32"/>'
        uses_a, uses_b = '<include file="a.xml"/>', '<include file="b.xml"/>'
        width = '<var name="W" value="8"/>'
        refused = [
            {"root": f'<module name="m">{fine}<reg name="r"/></module>'},
            {"root": f'<module name="m">{fine}<reg name="C"><bits name="d" pos="0"/></reg></module>'},
            {"root": '<module name="m"><reg name="c"><bits name="c" pos="0"/></reg></module>'},
            {"root": f'<module name="m">{fine}<reg name="d_"><bits name="d" pos="0"/></reg></module>'},
            {"root": f'<module name="m">{fine}<reg name="d"><bits name="d" pos="0x4"/></reg></module>'},
            {"root": '<var name="signal" value="1"/>'}, {"root": '<var name="integer" value="1"/>'},
            {"root": '<var name="a" value="0x80000000"/>'}, {"root": '<var name="a" value="exp2(31)"/>'},
            {"root": '<var name="a" value="1&lt;&lt;4"/>'}, {"root": '<var name="a" value="5%3"/>'},
            {"root": '<var name="g" value="1" global="yes"/><var name="a" value="g"/>'},
            {"root": f'{uses_a}<var name="W" value="W+1"/>', "a": width},
            {"root": f'{uses_a}<range name="w" left="3" right="0"/><var name="D" value="W+1"/>', "a": width},
            {"root": f'{uses_a}{uses_b}<var name="D" value="W+1"/>', "a": width,
             "b": '<range name="w" left="3" right="0"/>'},
            {"root": f'{uses_a}<var name="D" value="ACK+1"/>', "a": '<var name="ACK" value="1"/>'},
            {"root": f'{uses_a}<var name="D" value="IEEE+1"/>', "a": '<var name="IEEE" value="1"/>'},
            {"root": '<var name="a" value="exp2(31)-1"/>'},
            {"root": f'{uses_a}<module name="m">{fine}<reg name="t" count="2"><bits name="t" pos="1"/></reg></module>',
             "a": '<var name="natural" value="1"/>'},
            {"root": uses_a, "a": uses_b, "b": uses_a},
            {"root": '<archive vhdlpkg="ieee">'}, {"root": '<archive vhdlpkg="entity">'},
        ]
        taken = [
            {"root": f'<module name="m">{fine}</module>'},
            {"root": f'{uses_a}{uses_a}<var name="D" value="W+1"/>', "a": width},
            {"root": '<var name="natural" value="1"/><var name="NOTE" value="1"/><var name="a" value="NOTE+1"/>'},
            {"root": '<var name="a" value="-2147483648"/>'},
            {"root": f'{uses_a}<var name="D" value="-(W-2)*3/exp2(2)"/>', "a": width},
            {"root": '<var name="a" value="1"><comment>one<br/>two</comment></var>'},
        ]
        for files, is_taken in [(files, False) for files in refused] + [(files, True) for files in taken]:
            root = self.lay_out({f"{name}.xml": text + "</archive>" if text.startswith("<archive") else archive(text)
                                 for name, text in files.items()})
            with self.subTest(files):
                warnings = self.generate("--chip", root)
                self.assertEqual(warnings == "", is_taken, warnings)
                if warnings:
                    self.assertRegex(warnings, r"\.xml:[1-9]\d*:\d+: warning: (Module|Package) '\w+': VHDL refuses \d+ lines?, "
                                     r".*; the first is \w+")
                for standard in STANDARDS:
                    shutil.rmtree(self.folder / f"work{standard}", ignore_errors=True)
                    result = self.ghdl(standard, "-a", *packages_below(self.folder / "rtl").values())
                    self.assertEqual(result.returncode == 0, is_taken, result.stderr)
                self.passes(root)

    def test_accepted_packages(self):
        root = self.lay_out(REFUSED, "soc.xml")
        package = self.passes(root)
        self.expect_golden("vhdl/accepted.vhd", package.read_text())
        self.assertEqual(self.passes(EXAMPLE).exists(), False)
        for name in ("soc", "memmap"):
            self.passes(support.EXAMPLES / f"{name}.xml")
        for chip in support.chips():
            self.passes(chip / "soc.xml")

    def test_accepted_packages_have_no_other_numbers(self):
        """What VHDL would take, but as another number than the description has, or from another package."""
        rows = [
            ({"a": '<var name="w" value="1"/><var name="W" value="8"/>'}, '<var name="D" value="W"/>', "it uses W, which is refused"),
            ({"a": '<var name="W" value="8"/>'}, '<var name="w" value="1"/><var name="D" value="W"/>',
             "the expression has another number in VHDL"),
            ({"a": '<var name="W" value="1&lt;&lt;3"/>', "b": '<var name="W" value="1"/>'}, '<var name="D" value="W"/>',
             "it uses W, which is refused"),
            ({"a": '<var name="W" value="1&lt;&lt;3"/><var name="V" value="2"/>'},
             '<range name="r" left="W" right="V"/><var name="U" value="V"/><var name="D" value="U+W"/>',
             "it uses W, which is refused"),
            ({"a": '<include file="root.xml"/><var name="W" value="8"/>'}, '<var name="D" value="W"/>',
             "it uses W, which is refused"),
        ]
        for files, lines, reason in rows:
            with self.subTest(lines):
                includes = "".join(f'<include file="{name}.xml"/>' for name in files)
                root = self.lay_out({"root.xml": archive(includes + lines),
                                     **{f"{name}.xml": archive(text) for name, text in files.items()}})
                self.passes(root)
                self.assertRegex((self.folder / "rtl" / "root_reg_pkg.vhd").read_text(),
                                 rf"--constant D: .* -- refused: {reason}\n")
                self.assertNotRegex((self.folder / "rtl" / "root_reg_pkg.vhd").read_text(), r"--constant U:")

    def test_two_packages_of_one_file(self):
        root = self.lay_out({"soc.xml": archive('<include file="b.xml"/>', '<var name="A" value="1"/>')
                             .replace("<archive>", '<archive vhdlpkg="one">'),
                             "b.xml": archive('<var name="B" value="1"/>').replace("<archive>", '<archive vhdlpkg="one">')},
                            "soc.xml")
        self.passes(root)
        self.assertIn("constant A:", (self.folder / "rtl" / "one.vhd").read_text())

    def test_comments_that_only_a_newer_tool_takes(self):
        comment = "<comment>\u00c5ngstr\u00f6m \u20ac</comment>"
        root = self.lay_out({"root.xml": archive(f'<var name="a" value="1">{comment}</var>')})
        self.assertIn("VHDL-93", self.generate("--chip", root))
        self.assertNotEqual(self.ghdl("93", "-a", self.folder / "rtl" / "root_reg_pkg.vhd").returncode, 0)
        self.check("08", "-a", self.folder / "rtl" / "root_reg_pkg.vhd")
        self.passes(root)

    def test_wrong_usage_and_files_that_can_not_be_written(self):
        self.expect(run("vhdl", "--soft", EXAMPLE, "-o", self.folder), 2, err=None)
        root = self.lay_out({"root.xml": archive().replace("<archive>", '<archive vhdlpkg="../out">')})
        result = run("vhdl", "--chip", root, "-o", self.folder / "rtl")
        self.expect(result, 1, err=None)
        self.assertIn(f"error: {self.folder}/rtl/../out.vhd can't be written: the name of a package may lead nowhere else\n",
                      result.err)
        self.assertFalse((self.folder / "out.vhd").exists())
        root = self.lay_out({"root.xml": archive().replace("<archive>", '<archive relative="/../../x.xml">')})
        result = run("vhdl", "--chip", root, "-o", self.folder / "deep" / "rtl")
        self.expect(result, 0, err=None)
        self.assertIn(f"warning: {self.folder}/x_reg_pkg.vhd lies outside {self.folder}/deep/rtl, as", result.err)
        self.assertTrue((self.folder / "x_reg_pkg.vhd").is_file())
        self.expect(run("vhdl", "--strict", "--chip", root, "-o", self.folder / "deep" / "rtl"), 1, err=None)
        same = self.lay_out({"same.xml": archive('<include file="x/a.xml"/><include file="y/a.xml"/>'),
                             "x/a.xml": archive(), "y/a.xml": archive()}, "same.xml")
        self.assertIn("Package 'a_reg_pkg': another file of the chip has a package of this name",
                      run("vhdl", "--chip", same, "-o", self.folder / "rtl").err)

    def test_real_chips(self):
        for chip in support.chips():
            shutil.rmtree(self.folder / "rtl", ignore_errors=True)
            warned = {}
            for count, kind in re.findall(r"VHDL refuses (\d+) lines?, (.*); the first is",
                                          self.generate("--chip", chip / "soc.xml")):
                warned[kind] = warned.get(kind, 0) + int(count)
            packages = packages_below(self.folder / "rtl")
            self.assertEqual(len(packages), len(list(chip.rglob("*.xml"))))
            expected, samples = {}, {}
            for path in packages.values():
                lines = path.read_text().split("\n")
                refused = refused_lines(lines)
                for number, kind in refused.items():
                    expected[kind] = expected.get(kind, 0) + 1
                cleaned = ["--" + line if number in refused else line for number, line in enumerate(lines)]
                for number, kind in refused.items():
                    others = samples.setdefault(kind, {})
                    if path.name not in others and len(others) < 4:
                        others[path.name] = "\n".join(cleaned[:number] + [lines[number]] + cleaned[number + 1:])
                path.write_text("\n".join(cleaned))
            self.assertEqual(warned, expected, chip.name)
            for standard in STANDARDS:
                self.check(standard, "-a", *packages.values())
                for kind, texts in samples.items():
                    for text in texts.values():
                        (self.folder / "one.vhd").write_text(text)
                        result = self.ghdl(standard, "-a", self.folder / "one.vhd")
                        self.assertNotEqual(result.returncode, 0, f"{kind}: {text}")


def need_ghdl():
    if not shutil.which("ghdl"):
        support.skip("ghdl is not installed")


if __name__ == "__main__":
    support.main(__doc__, prepare=need_ghdl)
