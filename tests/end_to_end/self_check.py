"""The files of assertions: compilers and a simulator pass them as they are, and fail when one number is another."""

import re
import shutil
import subprocess
import unittest

import support
from support import EXAMPLES, archive, run

# Every kind of declaration that headers and packages have.
LIBRARY = archive('<var name="LIB" value="2"/>', '<cjoker>#define OWN 1</cjoker>')
CHIP = archive(
    '<include file="sub/lib.xml"/>',
    '<var name="COUNT" value="LIB+1"/><var name="MINUS" value="-5"/>',
    '<range name="span" left="COUNT" right="0"/>',
    '<enum name="mode"><entry name="MODE_OFF"/><entry name="MODE_ON" value="7"/></enum>',
    '<module name="uart">',
    '<reg32 name="ctrl"><bits name="enable" pos="0"/>',
    '<bits name="speed" pos="3:1"><options><default/><mask/><shift/><option name="fast" value="5"/></options></bits>',
    '<bits name="x" pos="4"/><bits name="y" pos="6"/><bits name="top" pos="31"/>',
    '<bitgroup name="g"><entry ref="x"/><entry ref="y"/></bitgroup></reg32>',
    '<hole size="64"/>',
    '<reg16 name="half"><l name="lower"/><h name="upper"/><bits name="w" pos="COUNT+5:COUNT"/></reg16><hole size="16"/>',
    '<reg32 name="chan" count="COUNT"><bits name="enable" pos="5"/></reg32>',
    '<struct name="ch" count="2"><reg32 name="a"><bits name="f" pos="0"/></reg32><reg32 name="b"><bits name="f" pos="0"/>',
    '</reg32></struct>',
    '<reg32 name="none" count="0"/><memory name="mem" size="16"/>',
    '</module>',
    '<typedef name="node"><ptr name="next" type="void"/><uint16 name="len"/><uint8 name="data" count="6"/></typedef>',
    '<alias name="flags"><reg32 name="f"><bits name="a" pos="0"/><bits name="b" pos="2:1"/></reg32></alias>',
    '<alias name="list"><ptr name="p" type="void"/></alias>',
    '<alias name="bank"><reg16 name="r" count="COUNT"/></alias>',
    '<instance name="UART0" type="uart" address="0xC0000000"/>',
    '<instance name="NODE" type="node" address="0x20000000"/>')

# Of soc.h: what stands there, what is put in its place, and the assertions that must fail, to the last one.
C_MUTATIONS = [
    ("(LIB+1)", "(LIB+2)", ["COUNT must be 3", "$UART0: size must be 60", "$UART0.chan: size must be 12"]),
    ("(-5)", "(5)", ["MINUS must be -5"]),
    ("= 0x00000007", "= 0x00000008", ["mode.MODE_ON must be 7"]),
    ("0xC0000000", "0xC0000004", ["$UART0: REG_UART0_BASE must be 0xC0000000"]),
    ("0xC0000000", "0x1C0000000", ["$UART0: REG_UART0_BASE must be 0xC0000000"]),
    ("REG32 Reserved_00000004[2]", "REG32 Reserved_00000004[3]",
     ["$UART0.Reserved_00000004_64: size must be 8", "$UART0.half: offset must be 0xC"]),
    ("REG8 upper", "REG16 upper", ["$UART0.half high half: size must be 1"]),
    ("} ch[2]", "} ch[3]", ["$UART0.ch: size must be 16", "$UART0.mem: offset must be 0x2C"]),
    ("UINT8 mem[16]", "UINT8 mem[20]", ["$UART0.mem: size must be 16"]),
    ("UINT16                         len", "UINT8                          len", ["$NODE.len: size must be 2"]),
    ("HWP_UART_T*", "NODE_T*", ["$UART0: size of *hwp_uart0 must be 60"]),
    ("(1<<0)\n#define UART_SPEED", "(1<<1)\n#define UART_SPEED", ["$UART0.ctrl.enable: UART_ENABLE must be 0x1"]),
    ("(((n)&7)<<1)", "(((n)&3)<<1)", ["$UART0.ctrl.speed: UART_SPEED(0xFFFFFFFFu) must be 0xE"]),
    ("(((n)&7)<<1)", "((n)<<1&14)|0*(n)", []),
    ("(((n)&7)<<1)", "(((n)&7)*0+14)", ["$UART0.ctrl.speed: UART_SPEED(1) must be 0x2"]),
    ("(7<<1)", "(7<<2)", ["$UART0.ctrl.speed: UART_SPEED_MASK must be 0xE"]),
    ("_SHIFT            (1)", "_SHIFT            (2)", ["$UART0.ctrl.speed: UART_SPEED_SHIFT must be 0x1"]),
    ("(5<<1)", "(4<<1)", ["$UART0.ctrl.speed: UART_SPEED_FAST must be 0xA"]),
    ("(1<<31)", "(1<<30)", ["$UART0.ctrl.top: UART_TOP must be 0x80000000"]),
    ("(5<<4)\n", "(7<<4)\n", ["$UART0.ctrl.g: UART_G_MASK must be 0x50"]),
    ("//#define UART_ENABLE", "#define UART_ENABLE_2", []),
]

# Of soc_reg_pkg.vhd likewise; a simulation ends at the first that fails.
VHDL_MUTATIONS = [
    ("COUNT:                                 integer := LIB+1", "LIB+1", "LIB+2", "COUNT must be 3"),
    ("constant MINUS:", "-5", "-6", "MINUS must be -5"),
    ("subtype span is", "COUNT downto 0", "COUNT downto 1", "span must be 3 downto 0"),
    ("subtype span is", "COUNT downto 0", "COUNT to 0", "span must be 3 downto 0"),
    ("constant MODE_ON:", "7", "6", "MODE_ON must be 7"),
    ("constant UART_REG_NBA", ":= 4", ":= 5", "$UART0: UART_REG_NBA must be 4"),
    ("constant at_HALF:", "3", "4", "$UART0.half: at_HALF must be 3"),
    ("constant at_CHAN_2:", "6", "7", "$UART0.chan[2]: at_CHAN_2 must be 6"),
    ("constant l_top:", "31", "30", "$UART0.ctrl.top: l_top must be 31"),
    ("subtype  l_speed is", "3 downto", "4 downto", "$UART0.ctrl.speed: l_speed must be 3 downto 1"),
    ("subtype  l_w is", "COUNT+5", "COUNT+4", "$UART0.half.w: l_w must be 8 downto 3"),
    ("constant p_x:", "4", "5", "$UART0.ctrl.x: p_x must be 4"),
    ("subtype  p_g is", "5 downto 4", "5 downto 3", "$UART0.ctrl: p_g must be 5 downto 4"),
    ("subtype range_ctrl is", "6 downto", "7 downto", "$UART0.ctrl: range_ctrl must be 6 downto 0"),
    ("constant tabsize_chan:", "3", "2", "$UART0.chan: tabsize_chan must be 3"),
]

LANGUAGE = ["-std=c11", "-Wall", "-Wextra", "-Werror", "-fsyntax-only"]
COMPILERS = {"gcc -m32": [], "gcc -m32 -pedantic": [], "clang -m32": [],
             "clang --target=thumbv7m-none-eabi": ["-ffreestanding"]}


def compiles(command):
    name, *flags = command.split()
    probe = [name, *flags, "-x", "c", "-fsyntax-only", "-"]
    return shutil.which(name) and subprocess.run(probe, input=b"", capture_output=True).returncode == 0


def c_command(check, compiler):
    """As the file itself tells it, with the words of a project."""
    told = re.search(r"^//     cc (.*)$", check.read_text(), re.MULTILINE)[1].split()
    return [*compiler.split(), *COMPILERS[compiler], *LANGUAGE, *told[2:]]


class Headers(support.Case):
    def generate(self, *roots):
        target = self.folder / "h"
        self.expect(run("headers", "--self-check", *roots, "-o", target), 0)
        return target

    def failures(self, check, compiler="gcc -m32", words=("-include", support.PRELUDE)):
        """The assertions that fail, or all that was said where it is something else."""
        done = subprocess.run([*c_command(check, compiler), *map(str, words)], cwd=check.parent, capture_output=True,
                              text=True)
        failed = re.findall(r'static assertion failed: "(.*)"$', done.stderr, re.MULTILINE)
        self.assertEqual(done.returncode == 0, done.stderr == "", done.stderr[:1000])
        return [text.replace('\\"', '"') for text in failed] if failed or not done.stderr else done.stderr

    def passes_everywhere(self, check):
        for compiler in COMPILERS:
            if compiles(compiler):
                self.assertEqual(self.failures(check, compiler), [], f"{compiler} {check}")

    @unittest.skipUnless(compiles("gcc -m32"), "gcc -m32 is missing")
    def test_examples_and_real_chips(self):
        for name in ("soc", "memmap", "timer"):
            shutil.rmtree(self.folder / "h", ignore_errors=True)
            target = self.generate("--chip", EXAMPLES / f"{name}.xml", "--soft", EXAMPLES / "firmware.xml")
            self.passes_everywhere(target / "chip" / f"{name}_self_check.c")
            self.passes_everywhere(target / "soft" / "firmware_self_check.c")
        for chip in support.chips():
            shutil.rmtree(self.folder / "h", ignore_errors=True)
            check = self.generate("--chip", chip / "soc.xml") / "soc_self_check.c"
            self.passes_everywhere(check)
            # Every macro is asserted but those that the description has itself written in C.
            asserted = set(re.findall(r"\w+", check.read_text()))
            own = set(re.findall(r"#define (\w+)", (chip / "soc.xml").read_text()))
            for header in set(check.parent.rglob("*.h")) - set(check.parent.rglob("*_asm.h")):
                macros = set(re.findall(r"^#define (\w+)\b.*[^_\n]$", header.read_text(), re.MULTILINE))
                self.assertEqual(macros - asserted - own, set(), header)

    @unittest.skipUnless(compiles("gcc -m32"), "gcc -m32 is missing")
    def test_one_number_that_differs(self):
        root = self.lay_out({"soc.xml": CHIP, "sub/lib.xml": LIBRARY}, "soc.xml")
        target = self.generate("--chip", root)
        check, header = target / "soc_self_check.c", target / "soc.h"
        self.expect_golden("headers/self_check.c", check.read_text())
        self.passes_everywhere(check)
        prelude = f'-DVELDMAP_SELF_CHECK_PRELUDE="{support.PRELUDE}"'
        self.assertEqual(self.failures(check, words=[prelude]), [])
        self.assertIn("$UART0.half: size must be 2", self.failures(check, words=[]))
        text = header.read_text()
        for old, new, expected in C_MUTATIONS:
            with self.subTest(f"{old} -> {new}"):
                self.assertTrue(old in text)
                header.write_text(text.replace(old, new, 1))
                failed = self.failures(check)
                self.assertIsInstance(failed, list, failed)
                self.assertEqual([each for each in expected if each not in failed], [], failed)
                self.assertEqual(failed == [], expected == [], failed)
        for line in re.findall(r"^#define \w+ .*$", text, re.MULTILINE):
            if re.search(r"\d\)*$", line):
                header.write_text(text.replace(line, re.sub(r"\d(\)*)$", lambda at: f"{int(at[0][0]) ^ 1}{at[1]}", line)))
                self.assertNotEqual(self.failures(check), [], line)

    @unittest.skipUnless(compiles("gcc -m32"), "gcc -m32 is missing")
    def test_what_can_not_be_asserted_is_counted(self):
        odd = '<reg16 name="r" count="COUNT"><bits name="odd" pos="0"/></reg16></alias>'
        root = self.lay_out({"soc.xml": CHIP.replace('<reg16 name="r" count="COUNT"/></alias>', odd), "sub/lib.xml": LIBRARY},
                            "soc.xml")
        check = (self.generate("--chip", root) / "soc_self_check.c").read_text()
        counts = [int(count) for count in re.findall(r"^//     .*: (\d+)$", check, re.MULTILINE)]
        self.assertEqual(counts, [2, 1, 1, 2, 1, 1, 1])

    @unittest.skipUnless(compiles("gcc -m32"), "gcc -m32 is missing")
    def test_text_that_could_end_a_string_or_a_comment(self):
        root = self.lay_out({"a b\\.xml": archive('<var name="A" value="1"/><enum name="q&quot;??/"><entry name="B"/>'
                                                 '</enum>')}, "a b\\.xml")
        target = self.generate("--chip", root)
        check = next(target.glob("*_self_check.c"))
        self.assertIn('VELDMAP_ASSERT(VELDMAP_IS(B, 0x0u)', check.read_text())
        self.assertNotIn("\\.", check.read_text())
        self.assertNotRegex(check.read_text(), r'[^\\]\?\?')


class Usage(support.Case):
    def test_build_writes_the_same_on_all_threads(self):
        root = self.lay_out({"soc.xml": CHIP, "sub/lib.xml": LIBRARY}, "soc.xml")
        found = []
        for threads in "1", "4":
            folders = ["--headers", self.folder / threads / "h", "--vhdl", self.folder / threads / "v"]
            self.expect(run("build", "--self-check", "--accepted", "-j", threads, "--chip", root, *folders), 0, err=None)
            found.append(support.files_below(self.folder / threads))
        self.assertEqual(*found)
        self.assertEqual({name for name in found[0] if "self_check" in name}, {"h/soc_self_check.c", "v/soc_self_check.vhd"})

    def test_wrong_usage(self):
        root = self.lay_out({"soc.xml": CHIP, "sub/lib.xml": LIBRARY}, "soc.xml")
        for words in (["--docs", "d", "--self-check"], ["--headers", "h", "--accepted"]):
            self.expect(run("build", *words, "--chip", root, folder=self.folder), 2, err=None)
        self.assertFalse((self.folder / "d").exists() or (self.folder / "h").exists())


@unittest.skipUnless(shutil.which("ghdl"), "ghdl is missing")
class Packages(support.Case):
    def simulate(self, folder):
        """What the assertions say, and whether all of them held; each file by the command that the file tells."""
        work = self.folder / "work"
        shutil.rmtree(work, ignore_errors=True)
        work.mkdir()
        told = re.search(r"^--     (ghdl .*)$", (folder / "soc_self_check.vhd").read_text(), re.MULTILINE)[1]
        command = re.sub(r"ghdl (-\w)", rf"ghdl \1 --workdir={work}", told)
        done = subprocess.run(command, shell=True, cwd=folder, capture_output=True, text=True)
        return re.findall(r"\(assertion failure\): (.*)", done.stdout + done.stderr), done

    def test_one_number_that_differs(self):
        root = self.lay_out({"soc.xml": CHIP, "sub/lib.xml": LIBRARY}, "soc.xml")
        folder = self.folder / "v"
        self.expect(run("vhdl", "--accepted", "--self-check", "--chip", root, "-o", folder), 0, err=None)
        self.expect_golden("vhdl/self_check.vhd", (folder / "soc_self_check.vhd").read_text())
        failed, done = self.simulate(folder)
        self.assertEqual((failed, done.returncode), ([], 0), done.stderr)
        package = folder / "soc_reg_pkg.vhd"
        text = package.read_text()
        for line, old, new, expected in VHDL_MUTATIONS:
            with self.subTest(f"{line} {old} -> {new}"):
                lines = [each for each in text.splitlines() if line in each and not each.startswith("--")]
                self.assertEqual([old in each.split("integer")[-1] for each in lines], [True])
                changed = lines[0].replace("integer" + lines[0].split("integer")[-1],
                                           "integer" + lines[0].split("integer")[-1].replace(old, new, 1))
                package.write_text(text.replace(lines[0], changed, 1))
                failed, done = self.simulate(folder)
                self.assertEqual(failed, [expected], done.stderr)
                self.assertNotEqual(done.returncode, 0)

    def test_every_declaration_is_asserted(self):
        for chip in support.chips():
            folder = self.folder / chip.name
            self.expect(run("vhdl", "--accepted", "--self-check", "--chip", chip / "soc.xml", "-o", folder), 0, err=None)
            asserted = set(re.findall(r"work\.(\w+\.\w+)", (folder / "soc_self_check.vhd").read_text()))
            for path in set(folder.rglob("*.vhd")) - {folder / "soc_self_check.vhd"}:
                names = re.findall(r"^ *(?:constant|subtype) +(\w+)", path.read_text(), re.MULTILINE)
                self.assertEqual({f"{path.stem}.{name}" for name in names} - asserted, set(), path)

    def test_names_of_the_entity(self):
        rows = [("2 \u00e9.xml", archive(), "chip_self_check"), ("a.xml", archive(), "a_self_check"),
                ("b.xml", archive().replace("<archive>", '<archive vhdlpkg="B_self_check">'), "b_self_check_2")]
        for name, text, expected in rows:
            root = self.lay_out({name: text}, name)
            folder = self.folder / expected
            self.expect(run("vhdl", "--self-check", "--chip", root, "-o", folder), 0, err=None)
            self.assertIn(f"entity {expected} is\n", (folder / f"{expected}.vhd").read_text())


if __name__ == "__main__":
    support.main(__doc__)
