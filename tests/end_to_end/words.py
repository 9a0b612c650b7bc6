"""What the headers leave to their user: the words of veldmap/types.h and the global variables of globals.h."""

import re
import shutil
import subprocess

import support
from support import EXAMPLES, archive, run

STRICT = ["-Wall", "-Wextra", "-Wconversion", "-Wsign-conversion", "-Wundef", "-Werror", "-fsyntax-only"]
LANGUAGES = [["gcc", "-std=c99"], ["gcc", "-std=c99", "-m32"], ["clang", "-std=c99"], ["g++", "-std=c++17", "-xc++"],
             ["clang++", "-std=c++17", "-xc++"], ["arm-none-eabi-gcc", "-std=c99", "-ffreestanding"]]
REGISTERS = ("reg", "reg32", "reg16", "reg8", "ireg")
INTEGERS = ("int", "int32", "int16", "int8", "uint", "uint32", "uint16", "uint8", "bool")


def bytes_of(kind):
    if kind in ("ireg", "bool") or kind.endswith("8"):
        return 1
    return 2 if kind.endswith("16") else 4


def every_word():
    """A description whose headers use all words that there are."""
    kinds = REGISTERS + INTEGERS
    aliases = [f'<alias name="a_{kind}"><{kind} name="x"/></alias>' for kind in kinds]
    members = [f'<{kind} name="m_{kind}"/><instance name="i_{kind}" type="a_{kind}"/>' for kind in kinds]
    pointers = [f'<ptr name="p_{kind}" type="{kind}"/>' for kind in (*INTEGERS, "void", "memory")]
    return archive('<var name="N" value="exp2(3)"/>', *aliases, '<module name="m">', *members, '<memory name="b" size="4"/>',
                   '<reg name="n" count="N"/>', "</module>", '<typedef name="t">', *pointers, "</typedef>",
                   '<instance name="M" type="m" address="0x40000000"/>')


def compilers():
    """Those of the languages above that there are; the probe needs what a program on the host needs."""
    for compiler in LANGUAGES:
        language = "-xc++" if "++" in compiler[0] else "-xc"
        if shutil.which(compiler[0]) and subprocess.run([*compiler, language, "-fsyntax-only", "-"], text=True,
                                                        input="#include <stdint.h>\n", capture_output=True).returncode == 0:
            yield compiler


class Words(support.Case):
    def generate(self, root, *options):
        target = self.folder / "out"
        self.expect(run("headers", "--chip", root, "-o", target, *options), 0)
        return target

    def compile(self, target, source, *arguments, expected=""):
        """Every language says the same of a source: nothing, or an error with the expected words."""
        (target / "all.c").write_text(source)
        used = list(compilers()) or self.skipTest("there is no C compiler")
        for compiler in used:
            done = subprocess.run([*compiler, *STRICT, "-I.", *arguments, "all.c"], cwd=target, capture_output=True,
                                  text=True)
            self.assertEqual(done.returncode != 0, bool(expected), f"{compiler}\n{done.stderr[:2000]}")
            self.assertIn(expected, done.stderr)

    def test_all_words_are_defined(self):
        target = self.generate(self.lay_out({"soc.xml": every_word()}, "soc.xml"), "--types")
        sizes = [f"CHECK(sizeof(((HWP_M_T *)0)->{front}_{kind}) == {bytes_of(kind)});"
                 for kind in REGISTERS + INTEGERS for front in "mi"]
        values = ["CHECK(EXP2(0) == 1 && EXP2(33) == 2 && EXP2(4) - 17 < 0);", "CHECK(EXP2(31) == -2147483647 - 1);",
                  "CHECK((INT)-1 < 0 && (INT8)-1 < 0 && (INT16)-1 < 0 && (INT32)-1 < 0);",
                  "CHECK((UINT)-1 > 0 && (UINT8)-1 > 0 && (UINT16)-1 > 0 && (UINT32)-1 > 0 && (BOOL)-1 > 0);"]
        self.compile(target, "\n".join(["#include <veldmap/types.h>", '#include "soc.h"',
                                        "#if EXP2(31) == 0 || EXP2(2) != 4 || EXP2(4) - 17 > 0\n#error EXP2\n#endif",
                                        "#define CHECK(n) extern int check[(n) ? 1 : -1]", *sizes, *values,
                                        "int main(void) { return hwp_m == (HWP_M_T *)0; }", ""]))
        (target / "none.c").write_text('#include "soc.h"\n')
        if shutil.which("gcc"):
            self.assertNotEqual(subprocess.run(["gcc", "-fsyntax-only", "none.c"], cwd=target,
                                               capture_output=True).returncode, 0, "the headers define the words themselves")

    def test_words_of_a_project_stay(self):
        """Each word may be the project's own, as a macro or as a type; and no word is taken twice."""
        target = self.generate(self.lay_out({"soc.xml": every_word()}, "soc.xml"), "--types")
        words = re.findall(r"#ifndef (\w+)", (target / "veldmap/types.h").read_text().split("// C and C++")[1])
        self.assertEqual(len(words), len(set(words)))
        own, uses = [], []
        for word in sorted(set(words) - {"KSEG1", "EXP2"}):
            kind = "void" if word == "VOID" else f"struct own_{word}"
            own.append(f"typedef {kind} {word};\n#define {word} {word}\nextern {kind} *one_{word};")
            uses.append(f"{{ {word} *other = one_{word}; if (other == one_{word}) return 1; }}")
        self.compile(target, "\n".join([*own, "#include <veldmap/types.h>", "int main(void) {", *uses, "return 0; }", ""]))
        self.compile(target, '#define KSEG1(address) (window + (address))\nextern char window[];\n'
                             '#include <veldmap/types.h>\n#include "soc.h"\nextern int check[sizeof(*hwp_m)];\n')

    def test_assembly(self):
        target = self.generate(self.lay_out({"soc.xml": every_word()}, "soc.xml"), "--types")
        (target / "all.S").write_text("#include <veldmap/types.h>\n#include \"soc_asm.h\"\n"
                                      ".if (REG_M_BASE_HI << 16) + REG_M_M_REG32 != REG_M_BASE + 8\n.error \"address\"\n.endif\n"
                                      ".if N != 8 || KSEG1(5) != 5\n.error \"EXP2\"\n.endif\n")
        for compiler in ("gcc", "arm-none-eabi-gcc"):
            if shutil.which(compiler):
                done = subprocess.run([compiler, "-Werror", "-Wundef", "-I.", "-c", "all.S", "-o", "all.o"], cwd=target,
                                      capture_output=True, text=True)
                self.assertEqual(done.returncode, 0, done.stderr)

    def test_globals(self):
        """What an #if takes a global variable for without their header is 0."""
        chip = archive('<var name="COUNT" value="exp2(2)" global="yes"/>', '<module name="m"><reg name="r" count="COUNT"/>'
                       "</module>", "<cjoker>#if COUNT != 4\n#error COUNT is not 4\n#endif</cjoker>")
        soft = archive('<var name="SIZE" value="COUNT*2" global="yes"/>')
        roots = self.lay_out({"soc.xml": chip, "soft.xml": soft}, "soc.xml"), self.folder / "soft.xml"
        self.expect(run("headers", "--chip", roots[0], "-o", self.folder / "plain"), 0)
        target = self.generate(roots[0], "--soft", roots[1], "--types", "--globals")
        source = '#include <veldmap/types.h>\n{}\n#include "chip/soc.h"\n'
        both = source.format('#include "soft/globals.h"\n#include "chip/globals.h"')
        self.compile(target, both + "extern int check[sizeof(HWP_M_T) == 16 && SIZE == 8 ? 1 : -1];\n", "-Ichip")
        self.compile(target, source.format(""), "-Ichip", expected="COUNT")
        files = support.files_below(target)
        self.assertEqual({name: content for name, content in files.items() if name.startswith("chip/soc")},
                         {f"chip/{name}": content for name, content in support.files_below(self.folder / "plain").items()})
        self.assertEqual(files["chip/globals.h"], files["soft/globals.h"])
        self.assertEqual(sorted(files), ["all.c", *(f"{root}/{name}" for root, own in (("chip", "soc"), ("soft", "soft"))
                                         for name in sorted(["globals.h", "globals_asm.h", f"{own}.h", f"{own}_asm.h",
                                                             "veldmap/types.h"]))])

    def test_names_that_are_taken(self):
        root = self.lay_out({"soc.xml": archive('<include file="a/globals.xml"/>', '<include file="veldmap/types.xml"/>'),
                             "a/globals.xml": archive(), "veldmap/types.xml": archive()}, "soc.xml")
        out = self.folder / "out"
        told = run("headers", "--chip", root, "-o", out, "--types", "--globals")
        self.expect(told, 1, err="".join(f"error: {out}/{name}.h can't be written: a header of {by}.xml has this name\n"
                                         for name, by in (("veldmap/types", "veldmap/types"), ("globals", "a/globals"),
                                                          ("globals_asm", "a/globals"))))
        self.assertIn(b"_TYPES_H_", (out / "veldmap/types.h").read_bytes())

    def test_build(self):
        target = self.folder / "out"
        self.expect(run("build", "--chip", EXAMPLES / "soc.xml", "--headers", target, "--types", "--globals", "--accessors"),
                    0)
        shipped = EXAMPLES.parent / "src/headers/types/veldmap/types.h"
        self.assertEqual((target / "veldmap/types.h").read_bytes(), shipped.read_bytes())
        self.assertLessEqual({"veldmap/types.h", "globals.h", "periph/uart_accessors.h"}, support.files_below(target).keys())
        for option in ("--types", "--globals", "--accessors"):
            wrong = run("build", "--chip", EXAMPLES / "soc.xml", "--vhdl", target, option)
            self.expect(wrong, 2, err=None)
            self.assertIn("--headers", wrong.err)


if __name__ == "__main__":
    support.main(__doc__)
