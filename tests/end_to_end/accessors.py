"""The headers of functions: compilers take them without a warning, and a compiled program finds each value where the
tree has it.

What a function is called and gives is worked out here from the tree alone: its name from those of the type, the members
and the field, its value from the positions of the field. Registers lie in a buffer of the program.
"""

import itertools
import re
import shutil
import subprocess
from pathlib import Path

import support
from support import EXAMPLES, run

WARNINGS = ["-Wall", "-Wextra", "-Wconversion", "-Wsign-conversion", "-Wundef", "-Werror"]
COMPILERS = [["gcc", "-std=c99"], ["clang", "-std=c99"], ["g++", "-xc++", "-std=c++17"],
             ["clang++", "-xc++", "-std=c++17"], ["gcc", "-std=c99", "-m32"]]

# What no example has: widths, last bits, access of all kinds, signs, groups, arrays in arrays, aliases, and comments
# that would end or go on.
CORNERS = r"""<archive asm="no">
<var name="DEPTH" value="2"/>
<enum name="level"><entry name="LOW"/><entry name="HIGH" value="9"/></enum>
<alias name="status"><reg name="x" protect="rw">
  <bits name="busy" pos="0" access="r"/><bits name="mode" pos="31:28" access="rw"/></reg></alias>
<alias name="box"><struct name="x"><uint8 name="b"><bits name="in" pos="3:1"/></uint8></struct></alias>
<alias name="row"><reg16 name="x" count="2" protect="rw"/></alias>
<alias name="flags"><reg8 name="x" protect="rw"><bits name="all" pos="7:0" access="rw"/></reg8></alias>
<module name="Block">
  <reg name="WIDE" protect="rw">
    <bits name="whole" pos="31:0" access="rw"><comment>*/ int broken; /* ??/
and \ &#x202E; </comment><options><option name="most" value="-1"/><option name="some" value="5"/>
      </options></bits></reg>
  <reg name="ctrl" protect="rw">
    <bits name="last" pos="31" access="rw"/><bits name="sum" pos="30:24" access="rw"><comment>a \</comment><options>
      <option name="minus" value="-3"/><option name="plus" value="3"/></options></bits>
    <bits name="read" pos="3" access="r"/><bits name="write" pos="4" access="w"/><bits name="class" pos="6:5" access="rw"/>
    <bits name="none" pos="7"/>
    <bits name="lane" pos="15:8" access="rw" cut="2" cutprefix="l"/>
    <bitgroup name="ends"><entry ref="last"/><entry ref="class"/></bitgroup>
    <bitgroup name="mixed"><entry ref="read"/><entry ref="class"/></bitgroup>
  </reg>
  <reg name="irq" protect="rw"><bits name="tx" pos="0" access="rc"/><bits name="rx" pos="2:1" access="rs"/>
    <bits name="now" pos="9" access="r"/></reg>
  <reg name="both" protect="rw"><bits name="clear" pos="0" access="rc"/><bits name="keep" pos="7:4" access="rw"/></reg>
  <reg16 name="half" protect="rw" count="DEPTH"><bits name="top" pos="15:12" access="rw"/>
    <bits name="low" pos="0" access="rw"/><bits name="beyond" pos="20:14" access="rw"/></reg16>
  <reg8 name="byte" protect="r"><bits name="f" pos="7:1" access="rw"/></reg8>
  <reg8 name="sink" protect="w"><bits name="f" pos="6:0" access="rw"/></reg8>
  <hole size="16"/>
  <struct name="lanes" count="3"><reg16 name="pair" count="2" protect="rw"><bits name="x" pos="9:4" access="rw"/></reg16>
    <struct name="deep"><int32 name="n"><bits name="exp" pos="31:24"/><bits name="man" pos="23:0" access="rw"/></int32>
    </struct></struct>
  <int16 name="s16"><bits name="hi" pos="15:8" access="rw"/></int16>
  <int8 name="s8"><bits name="all" pos="7:0" access="rw"/></int8>
  <bool name="b"><bits name="on" pos="0" access="rw"/></bool>
  <instance name="level" type="level"/>
  <instance name="st" type="status"/>
  <instance name="rows" type="row" count="2"/>
  <instance name="fl" type="flags"/>
  <ireg name="far" protect="rw"><bits name="f" pos="6:2" access="rw"/><bits name="w" pos="7" access="c"/></ireg>
  <ireg name="away" protect="rw"/>
  <reg name="bare" protect="rw"/><reg name="absent" count="0" protect="rw"><bits name="f" pos="0" access="rw"/></reg>
</module>
<typedef name="packet"><uint32 name="head"><bits name="size" pos="11:0" access="rw"/></uint32><uint8 name="plain"/></typedef>
<typedef name="queue"><instance name="packets" type="packet" count="2"/></typedef>
</archive>"""

PRELUDE = r"""
#include <stdio.h>
#include <string.h>

static uint32_t memory[SIZE / 4 + 1];
static const uint32_t patterns[] = {0, 0xFFFFFFFFU, 0x55555555U, 0xAAAAAAAAU, 0x12345678U, 0xFEDCBA98U,
#define ONE(n) 1U << (n), ~(1U << (n))
#define FOUR(n) ONE(n), ONE(n + 1), ONE(n + 2), ONE(n + 3)
    FOUR(0), FOUR(4), FOUR(8), FOUR(12), FOUR(16), FOUR(20), FOUR(24), FOUR(28)};
static unsigned checks, faults;

static void expect(uint32_t found, uint32_t wanted, const char *what)
{
    ++checks;
    if (found != wanted && ++faults < 20)
        printf("%s: %08x, not %08x\n", what, (unsigned)found, (unsigned)wanted);
}

/* The bytes of a register in a buffer whose other bytes are noise. */
static void put(unsigned offset, unsigned bits, uint32_t value)
{
    unsigned char *bytes = (unsigned char *)memory;
    memset(bytes, 0xA5, sizeof memory);
    for (unsigned at = 0; at < bits / 8; ++at)
        bytes[offset + at] = (unsigned char)(value >> (8 * at));
}

/* Whether the register alone has changed since the buffer was noise. */
static uint32_t taken(unsigned offset, unsigned bits, const char *what)
{
    const unsigned char *bytes = (const unsigned char *)memory;
    uint32_t value = 0;
    for (unsigned at = 0; at < sizeof memory; ++at) {
        if (at - offset < bits / 8)
            value |= (uint32_t)bytes[at] << (8 * (at - offset));
        else
            expect(bytes[at], 0xA5, what);
    }
    return value;
}

#define EACH(p) for (const uint32_t *p = patterns; p != patterns + sizeof patterns / sizeof *patterns; ++p)
#define READS(call, offset, bits, expected) EACH(p) { put(offset, bits, *p); expect((uint32_t)(call), expected, #call); }
#define GIVES(call, expected) EACH(p) { expect((uint32_t)(call), expected, #call); }
#define COMPOSES(call, cut, expected) EACH(p) EACH(v) { expect((uint32_t)(call) & (cut), (expected) & (cut), #call); }
#define WRITES(call, offset, bits, expected) \
    EACH(p) { put(0, 0, 0); call; expect(taken(offset, bits, #call), expected, #call); }
"""


def c_type(kind):
    name = kind["typedefName"].upper()
    if kind["kind"] == "struct" and not kind["isTypedef"]:
        return f"HWP_{name}_T"
    return name if kind["typedefName"].endswith("_T") else f"{name}_T"


def registers_of(element, name, offset=0, indexes=()):
    """(name, indexes, offset, element) of each register that a type declares itself, one by one in its arrays."""
    if element["kind"] == "array":
        stride = element["prototype"]["size"]
        for at in range(element["count"]):
            yield from registers_of(element["prototype"], name, offset + at * stride, (*indexes, at))
    elif element["kind"] == "struct":
        if not element["declaredType"]:         # else it is of a type that has functions of its own
            for member in element["members"]:
                yield from registers_of(member, f"{name}_{member['name'].lower()}", offset + member["offset"], indexes)
    elif "bitFields" in element and element["kind"] != "pointer" and not element["enumTemplate"]:
        yield name, indexes, offset, element


class Register:
    """One register of a type, and the lines of C that check what there is of it. What is not there is declared in
    another way, which compilers only take of what is not there."""

    def __init__(self, name, indexes, offset, element):
        self.name, self.offset, self.element = name, offset, element
        self.bits = 8 * element["size"]
        self.cut = (1 << self.bits) - 1
        self.block = ", ".join(["b", *(f"{at}U" for at in indexes)])
        self.in_memory = element["kind"] != "internal_register8"
        self.is_signed = element["kind"].startswith("int") and self.in_memory
        self.type = f"{'int' if self.is_signed else 'uint'}{self.bits}_t"
        self.place = f"{offset}, {self.bits}"
        self.readable = "r" in element["access"]
        self.writable = "w" in element["access"]
        self.is_hardware = element["kind"].startswith("register")

    def lines(self):
        fields = self.element["bitFields"]
        if not fields and not self.is_hardware:
            return
        value = f"({self.type})*p"
        yield from self.present(self.readable and self.in_memory, f"{self.name}_read", lambda f: [
            f"READS(({self.unsigned()}){f}({self.block}), {self.place}, *p & {self.cut}U)"])
        yield from self.present(self.writable and self.in_memory, f"{self.name}_write", lambda f: [
            f"WRITES({f}({self.block}, {value}), {self.place}, *p & {self.cut}U)"])
        actions = sum({self.mask(field) for field in fields if field["access"][1] in "sc"})
        yield from self.present(self.readable and self.writable and actions, f"{self.name}_to_write_back", lambda f: [
            f"GIVES(({self.unsigned()}){f}({value}), *p & {self.cut & ~actions}U)"])
        for field in fields:
            yield from self.field_lines(field)
        for group in self.element["bitGroups"]:
            members = [field for field in fields if field["name"] in group["fields"]]
            yield from self.part_lines(group["name"], sum(self.mask(field) for field in members),
                                       all(map(self.can_read, members)), all(map(self.can_write, members)))

    def field_lines(self, field):
        name, mask = f"{self.name}_{field['name'].lower()}", self.mask(field)
        signed = self.is_signed or any(option["value"] < 0 for option in field["options"])
        yield from self.part_lines(field["name"], mask, self.can_read(field), self.can_write(field), signed)
        shift = (mask & -mask).bit_length() - 1
        for option in field["options"]:
            yield (f"expect({name}_{option['name'].lower()}, {option['value'] & mask >> shift}U, "
                   f"\"{name}_{option['name']}\");")
        plain = any(self.can_write(other) and other["access"][1] == "w" for other in self.element["bitFields"])
        for letter, verb in (("s", "set"), ("c", "clear")):
            acts = self.can_write(field) and field["access"][1] == letter and not plain and self.in_memory
            bits = ", *p" if field["up"] != field["down"] else ""
            wanted = f"*p << {shift} & {mask}U" if bits else f"{mask}U"
            yield from self.present(acts, f"{self.name}_{verb}_{field['name'].lower()}", lambda f: [
                f"WRITES({f}({self.block}{bits}), {self.place}, {wanted})"])

    def part_lines(self, name, mask, can_read, can_write, signed=False):
        name = name.lower()
        shift = (mask & -mask).bit_length() - 1
        value = f"({self.type})*p"
        plain = f"(*p & {mask}U) >> {shift}"
        sign = 1 << (mask >> shift).bit_length() - 1
        negative = f"(((*p & {mask}U) >> {shift}) ^ {sign}U) - {sign}U"
        yield f"expect({self.name}_{name}_mask, {mask}U, \"{name}\");"
        yield f"expect({self.name}_{name}_shift, {shift}U, \"{name}\");"
        for front, expected, there in (("", plain, can_read), ("signed_", negative, can_read and signed)):
            yield from self.present(there and self.in_memory, f"{self.name}_get_{front}{name}", lambda f: [
                f"READS({f}({self.block}), {self.place}, {expected})"])
            yield from self.present(there, f"{self.name}_{front}{name}_of", lambda f: [
                f"GIVES({f}({value}), {expected})"])
        for front, number, there in (("", "*v", can_write), ("signed_", "(int32_t)*v", can_write and signed)):
            yield from self.present(there, f"{self.name}_with_{front}{name}", lambda f: [
                f"COMPOSES({f}({value}, {number}), {self.cut}U, (*p & ~{mask}U) | (*v << {shift} & {mask}U))"])

    @staticmethod
    def present(is_there, name, lines):
        yield from lines(name) if is_there else [f"ABSENT {name};"]

    def unsigned(self):
        return f"uint{self.bits}_t"

    def can_read(self, field):
        return self.readable and field["access"][0] == "r"

    def can_write(self, field):
        return self.writable and field["access"][1] != "-"

    def mask(self, field):
        return ((2 << field["up"]) - (1 << field["down"])) & self.cut


def program_of(tree, root):
    """The text of a C program that checks all types of a description."""
    kinds = [kind for archive in tree["archives"] for kind in archive["templates"]]
    absent, functions, size = set(), [], 0
    for kind in kinds:
        lines = [line for register in registers_of(kind, kind["typedefName"].lower())
                 for line in Register(*register).lines()]
        absent.update(line.removeprefix("ABSENT ") for line in lines if line.startswith("ABSENT "))
        lines = [line for line in lines if not line.startswith("ABSENT ")]
        if lines:
            pointer = f"{c_type(kind)} *b = ({c_type(kind)} *)(void *)memory;"
            functions.append([f"static void check_{kind['typedefName']}(void)", "{", pointer, "(void)b;", *lines, "}"])
            size = max(size, kind["size"])
    calls = [function[0].removeprefix("static void ").replace("(void)", "();") for function in functions]
    return "\n".join(["#include <veldmap/types.h>", '#include "globals.h"', f'#include "{root}_accessors.h"',
                      f"#define SIZE {size}", PRELUDE, *(f"extern int {name}" for name in sorted(absent)),
                      *itertools.chain.from_iterable(functions), "int main(void)", "{", *calls,
                      'printf("%u checks, %u faults\\n", checks, faults);', "return faults != 0;", "}", ""])


class Accessors(support.Case):
    def generate(self, root):
        target = self.folder / root.parent.name / root.stem
        self.expect(run("headers", "--chip", root, "-o", target, "--accessors", "--types", "--globals"), 0)
        return target

    def compile(self, target, source, *arguments):
        """All compilers that there are, with the more arguments; gives the command of each."""
        folders = sorted({path.parent for path in target.rglob("*.h") if path.parent.name != "veldmap"})
        used = []
        for compiler in COMPILERS:
            probe = [*compiler, "-xc++" if "++" in compiler[0] else "-xc", "-c", "-o", "/dev/null", "-"]
            if not shutil.which(compiler[0]) or subprocess.run(probe, input="#include <stdio.h>\n", text=True,
                                                               capture_output=True).returncode != 0:
                continue
            done = subprocess.run([*compiler, *WARNINGS, *(f"-I{folder}" for folder in folders), *arguments, source],
                                  cwd=target, capture_output=True, text=True)
            self.assertEqual(done.returncode, 0, f"{compiler}\n{done.stderr[:3000]}")
            used.append(compiler)
            yield compiler
        self.assertTrue(used or self.skipTest("there is no C compiler"))

    def check(self, root):
        target = self.generate(root)
        (target / "check.c").write_text(program_of(self.tree("--chip", root)["chip"], root.stem))
        for compiler in self.compile(target, "check.c", "-O1", "-o", "check"):
            done = subprocess.run([target / "check"], capture_output=True, text=True)
            self.assertEqual((done.returncode, done.stdout[-9:]), (0, "0 faults\n"), f"{compiler}\n{done.stdout}")
            self.assertGreater(int(done.stdout.split()[0]), 1000)

    def test_examples(self):
        for name in ("soc.xml", "timer.xml", "cmsdk_cm3/soc.xml"):
            self.check(EXAMPLES / name)

    def test_corners(self):
        self.check(self.lay_out({"corners.xml": CORNERS}, "corners.xml"))

    def test_larger_chips(self):
        for chip in support.chips():
            target = self.generate(chip / "soc.xml")
            (target / "all.c").write_text('#include <veldmap/types.h>\n#include "globals.h"\n'
                                          '#include "soc_accessors.h"\nint main(void) { return 0; }\n')
            list(self.compile(target, "all.c", "-fsyntax-only"))

    def test_one_access_a_call(self):
        """A function that is given a block names it once, in its one statement; the others have none to name."""
        count = 0
        for chip in support.chips():
            for header in self.generate(chip / "soc.xml").rglob("*_accessors.h"):
                for parameters, body in re.findall(r"^static inline .*\((.*)\)\n\{\n((?:.*\n)*?)\}$",
                                                   header.read_text(), re.MULTILINE):
                    self.assertEqual(body.count("block"), int("*block" in parameters), body)
                    self.assertEqual(body.count(";"), 1)
                    count += 1
        self.assertGreater(count, 200)

    def test_names_that_are_taken(self):
        root = self.lay_out({"soc.xml": support.archive(
            '<include file="uart_accessors.xml"/><include file="uart.xml"/>'),
            "uart.xml": "<archive/>", "uart_accessors.xml": "<archive/>"}, "soc.xml")
        run_of_headers = run("headers", "--chip", root, "-o", self.folder / "out", "--accessors")
        self.expect(run_of_headers, 1, err=f"error: {self.folder}/out/uart_accessors.h can't be written: "
                                           "a header of uart_accessors.xml has this name\n")
        self.assertTrue((self.folder / "out/soc_accessors.h").exists())


if __name__ == "__main__":
    support.main(__doc__.splitlines()[0])
