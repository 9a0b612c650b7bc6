"""Real chips, from their descriptions to compiled headers.

Each folder of descriptions holds a facts.json about the chip that no program wrote which reads descriptions. Everything
expected here is worked out from those facts alone: the C names by the naming rules below, offsets and addresses as they
stand, macro values from a field's lowest bit and width. Compilers then judge the headers, and the tree is compared in
both directions, so that something extra is a fault like something missing.
"""

import itertools
import json
import os
import re
import shutil
import subprocess
import unittest
from pathlib import Path

import support
from support import options, run

GCC = ["gcc", "-m32"]
WORD = 0xFFFFFFFF


# Names in generated text -------------------------------------------------------------------------------------------

def c_type(kind):
    """A module is hardware and says so in its name; a typedef only gets the ending of a type, if it lacks it."""
    name = kind["name"].upper()
    if not kind["typedef"]:
        return f"HWP_{name}_T"
    return name if kind["name"].endswith("_T") else f"{name}_T"


def camel(name):
    """CC_HOST_RGF and ccHost_rgf are both ccHostRgf."""
    words = re.sub("([a-z])([A-Z])", r"\1_\2", name).lower()
    return re.sub("_+([^_])", lambda match: match[1].upper(), words)


def assembly_name(path):
    """$UART0.CTRL is REG_UART0_CTRL. A structure's name is glued to what stands before it, an array's is not."""
    prefix, *structures, register = path.lstrip("$").replace("[", "_").replace("]", "").upper().split(".")
    for written, flat in zip(path.split(".")[1:], structures):
        prefix += ("_" if "[" in written and not prefix.endswith("_") else "") + flat
    return f"REG_{prefix}_{register}"


# Field macros ------------------------------------------------------------------------------------------------------
# A macro is a pair of its name and a list of (expression that uses it, value).

def value_macro(name, mask):
    """One bit needs no argument. A wider value is cut to the field and moved to its lowest bit."""
    if mask.bit_count() == 1:
        return name, [(name, mask)]
    return name, [(f"{name}(0xFFFFFFFF)", mask), (f"{name}(1)", mask & -mask)]


def field_macros(name, field):
    if field["default"] or not field["options"]:
        yield value_macro(name, field["mask"])
    if field["mask_macro"]:
        yield f"{name}_MASK", [(f"{name}_MASK", field["mask"])]
    if field["shift_macro"]:
        yield f"{name}_SHIFT", [(f"{name}_SHIFT", field["lsb"])]
    for option, value in field["options"]:
        use = f"{name}_{option}".upper()
        yield use, [(use, value << field["lsb"])]


def group_macros(name, mask):
    yield value_macro(name, mask)
    yield f"{name}_MASK", [(f"{name}_MASK", mask)]
    yield f"{name}_SHIFT", [(f"{name}_SHIFT", (mask & -mask).bit_length() - 1)]


def macros_of(kind):
    """The macros of a type. The register's name is no part of theirs: of one name the first stands."""
    macros = {}
    for register in kind["registers"]:
        masks = {field["name"]: field["mask"] for field in register["fields"]}
        for field in register["fields"]:
            for name, uses in field_macros(f"{kind['name']}_{field['name']}".upper(), field):
                macros.setdefault(name, uses)
        for group in register["groups"]:
            mask = sum(masks[name] for name in group["fields"])
            for name, uses in group_macros(f"{kind['name']}_{group['name']}".upper(), mask):
                macros.setdefault(name, uses)
    return macros


def constants(facts):
    """Variables and the entries of enums, as (name in generated text, value)."""
    for variable in facts["vars"]:
        yield variable["name"].upper(), variable["value"]
    for name, value in itertools.chain.from_iterable(enum["entries"] for enum in facts["enums"]):
        yield name.upper(), value


def macro_uses(facts):
    for kind in facts["types"]:
        yield from itertools.chain.from_iterable(macros_of(kind).values())


def unwanted_macros(facts):
    """Lines that translate when no field has a macro that nobody asked for."""
    wanted = set(dict(constants(facts))).union(*(macros_of(kind) for kind in facts["types"]))
    for kind in facts["types"]:
        for field in itertools.chain.from_iterable(register["fields"] for register in kind["registers"]):
            name = f"{kind['name']}_{field['name']}".upper()
            for macro in (name, f"{name}_MASK", f"{name}_SHIFT"):
                if macro not in wanted:
                    yield f"#ifdef {macro}\n#error {macro} was not asked for\n#endif"


# C and assembly that only translate when the headers are right ------------------------------------------------------

def equal(expression, value):
    return f'_Static_assert((unsigned)({expression}) == {value & WORD}u, "{expression}");'


def places(register):
    """(path, offset) of the first element and, for each array on the way, of its last one."""
    dims = register["dims"]
    corners = {(0,) * len(dims): None}
    for place, (count, _) in enumerate(dims):
        corners[tuple(count - 1 if place == other else 0 for other in range(len(dims)))] = None
    for indices in corners:
        path = register["path"].replace("[%]", "[{}]").format(*indices)
        yield path, register["offset"] + sum(index * stride for index, (_, stride) in zip(indices, dims))


def layout_assertions(kind):
    name = c_type(kind)
    yield equal(f"sizeof({name})", kind["size"])
    for register in kind["registers"]:
        for path, offset in places(register):
            yield equal(f"offsetof({name}, {path})", offset)
            yield equal(f"8 * sizeof((({name} *)0)->{path})", register["width"])
        arrays = register["path"].split("[%]")[:-1]
        for depth, (count, stride) in enumerate(register["dims"], start=1):
            yield equal(f"sizeof((({name} *)0)->{'[0]'.join(arrays[:depth])})", count * stride)


def instance_assertions(facts):
    kinds = {kind["name"]: kind for kind in facts["types"]}
    for instance in facts["instances"]:
        pointer = "hwp_" + camel(instance["name"])
        yield equal(f"REG_{instance['name'].upper()}_BASE", instance["address"])
        yield equal(pointer, instance["address"])
        wanted = c_type(kinds[instance["type"]])
        yield f'_Static_assert(__builtin_types_compatible_p(__typeof__({pointer}), {wanted} *), "type of {pointer}");'


def c_source(facts, headers):
    yield from (f'#include "{header}"' for header in headers)
    yield "#define offsetof(type, member) __builtin_offsetof(type, member)"
    for kind in facts["types"]:
        yield from layout_assertions(kind)
    yield from instance_assertions(facts)
    for expression, value in itertools.chain(constants(facts), macro_uses(facts), facts["cjoker"]):
        yield equal(expression, value)
    yield from unwanted_macros(facts)


def assembly_source(facts, headers):
    """The halves of an address are kept apart, so that a macro that leaves out its base is seen."""
    yield "#define BASE_HI(address) ((address) >> 16)\n#define BASE_LO(address) ((address) & 0xFFFF)"
    yield from (f'#include "{header}"' for header in headers)
    checks = list(itertools.chain(constants(facts), macro_uses(facts)))
    for instance in facts["instances"]:
        base = f"REG_{instance['name'].upper()}_BASE"
        checks.append((base, instance["address"]))
        for path, address, *_ in instance["registers"]:
            checks.append((f"({base}_HI << 16) + {assembly_name(path)}", address))
    for expression, value in checks:
        yield f'.if (({expression}) & {WORD}) != {value & WORD}\n.error "{expression}"\n.endif'
    yield from unwanted_macros(facts)


# The tree in the terms of the facts ---------------------------------------------------------------------------------

def registers_of(element, path="", dims=(), offset=0):
    """(path with [%], counts and strides, offset, element) of every register below an element, arrays folded."""
    if element["kind"] == "array":
        one = element["prototype"]
        yield from registers_of(one, path + "[%]", (*dims, (element["count"], one["size"])), offset + one["offset"])
    elif element["kind"] == "struct":
        for member in element["members"]:
            name = f"{path}.{member['name']}" if path else member["name"]
            yield from registers_of(member, name, dims, offset + member["offset"])
    elif "bitFields" in element:
        yield path, dims, offset, element


def single_registers(element):
    """Every register of an instance, each element of an array by itself."""
    if "bitFields" in element:
        yield element
    for member in element.get("members", []):
        yield from single_registers(member)


def signed(value):
    """The number that a 32-bit word of this value is in the tree, where variables and options are signed."""
    return (value + 0x80000000) % 0x100000000 - 0x80000000


def flags(access):
    """The facts only say what is allowed, the tree has a place for each of reading and writing."""
    return ("r" if "r" in access else "-") + (access.replace("r", "") or "-")


def fields_of_tree(register):
    names = ("name", "up", "down", "access", "reset", "hasDefault", "hasMask", "hasShift")
    fields = [tuple(field[name] for name in names) + (tuple((option["name"], option["value"])
              for option in field["options"]),) for field in register["bitFields"]]
    return fields, [(group["name"], tuple(group["fields"])) for group in register["bitGroups"]]


def fields_of_facts(register):
    fields = [(field["name"], field["mask"].bit_length() - 1, field["lsb"], flags(field["access"]), field["reset"],
               field["default"], field["mask_macro"], field["shift_macro"],
               tuple((name, signed(value)) for name, value in field["options"])) for field in register["fields"]]
    return fields, [(group["name"], tuple(group["fields"])) for group in register["groups"]]


def is_variable(row):
    """Ranges and spacers are rows of the same table; the facts are about variables."""
    return row["enum"] is None and "right" not in row and not row["name"].startswith("VELDMAPSPACER")


class Chip(support.Case):
    """The tests of one chip; each folder of descriptions makes a class of its own from this."""

    folder_of_chip = None

    @classmethod
    def setUpClass(cls):
        cls.facts = json.loads((cls.folder_of_chip / "facts.json").read_text())
        cls.root = cls.folder_of_chip / cls.facts["root"]
        cls.headers = [str(Path(name).with_suffix(".h")) for name in cls.facts["order"]]
        cls.assembly_headers = [name.removesuffix(".h") + "_asm.h" for name in cls.headers]

    def generate(self, name, *more, root=None):
        target = self.folder / name
        self.expect(run("headers", "--chip", root or self.root, "-o", target, *more), 0)
        return target

    def compile(self, target, *arguments):
        folders = sorted({str((target / header).parent) for header in self.headers})
        command = [*GCC, *(f"-I{folder}" for folder in folders), *arguments]
        done = subprocess.run(command, cwd=target, capture_output=True, text=True)
        faults = [line for line in done.stderr.splitlines() if "error" in line.lower()]
        self.assertEqual(done.returncode, 0, "\n".join(faults[:20]) or done.stderr[:2000])

    def same(self, expected, found, what):
        """Two dictionaries, told apart by the first few keys that differ."""
        differences = [f"{what} {key}: expected {expected.get(key, 'nothing')}, found {found.get(key, 'nothing')}"
                       for key in {**expected, **found} if expected.get(key) != found.get(key)]
        if differences:
            self.fail(f"{len(differences)} differences\n" + "\n".join(differences[:8]))

    def test_check_is_silent(self):
        self.expect(run("check", self.root), 0)

    def test_c_headers_compile_and_tell_the_truth(self):
        self.need_compiler()
        target = self.generate("out")
        language = ["-ffreestanding", "-fsyntax-only", "-std=c11", "-Wall", "-Werror", "-include", support.PRELUDE]
        for index, header in enumerate(self.headers):
            (target / f"alone{index}.c").write_text(f'#include "{header}"\n')
        self.compile(target, *language, *(f"alone{index}.c" for index in range(len(self.headers))))
        (target / "all.c").write_text("\n".join([*c_source(self.facts, self.headers), ""]))
        self.compile(target, *language, "all.c")

    def test_assembly_headers_tell_the_truth(self):
        self.need_compiler()
        target = self.generate("out")
        (target / "all.S").write_text("\n".join([*assembly_source(self.facts, self.assembly_headers), ""]))
        self.compile(target, "-x", "assembler-with-cpp", "-DVC_ASM", "-Werror", "-c", "all.S", "-o", "all.o")

    def need_compiler(self):
        probe = [*GCC, "-x", "c", "-ffreestanding", "-c", os.devnull, "-o", os.devnull]
        if not shutil.which("gcc"):
            self.skipTest("gcc is missing")
        if subprocess.run(probe, capture_output=True).returncode != 0:
            self.skipTest("gcc has no support for -m32")

    def test_types_in_the_tree(self):
        archives = self.tree("--chip", self.root)["chip"]["archives"]
        kinds = {(archive["file"], kind["typedefName"]): kind
                 for archive in archives for kind in archive["templates"] if kind["kind"] == "struct"}
        self.same({(kind["file"], kind["name"]): (kind["typedef"], kind["size"]) for kind in self.facts["types"]},
                  {key: (kind["isTypedef"], kind["size"]) for key, kind in kinds.items()}, "type")
        for fact in self.facts["types"]:
            expected = {register["path"]: ([tuple(dim) for dim in register["dims"]], register["offset"],
                                           register["width"], flags(register["access"]), fields_of_facts(register))
                        for register in fact["registers"]}
            found = {path: (list(dims), offset, 8 * register["size"], register["access"], fields_of_tree(register))
                     for path, dims, offset, register in registers_of(kinds[fact["file"], fact["name"]])}
            self.same(expected, found, f"{fact['name']}: register")

    def test_instances_in_the_tree(self):
        instances = self.tree("--chip", self.root)["chip"]["instances"]
        kinds = {kind["name"]: {register["path"]: fields_of_facts(register) for register in kind["registers"]}
                 for kind in self.facts["types"]}
        self.assertEqual([(one["name"], one["type"], one["address"]) for one in instances],
                         [(one["name"], one["type"], one["address"]) for one in self.facts["instances"]])
        for fact, instance in zip(self.facts["instances"], instances):
            fields = kinds[fact["type"]]
            expected = {path: (address, width, flags(access), fields[re.sub(r"\[\d+\]", "[%]", path.split(".", 1)[1])])
                        for path, address, width, access in fact["registers"]}
            found = {register["path"]: (register["address"], 8 * register["size"], register["access"],
                                        fields_of_tree(register)) for register in single_registers(instance)}
            self.same(expected, found, "register")

    def test_files_variables_and_enums_in_the_tree(self):
        tree = self.tree("--chip", self.root)
        archives = tree["chip"]["archives"]
        self.assertIsNone(tree["soft"])
        self.assertEqual(tree["chip"]["name"], self.root.stem)
        self.assertEqual(archives[0]["file"], self.facts["root"])
        self.assertEqual(sorted(archive["file"] for archive in archives), sorted(self.facts["order"]))
        self.same({(row["file"], row["name"]): signed(row["value"]) for row in self.facts["vars"]},
                  {(archive["file"], row["name"]): row["value"]
                   for archive in archives for row in archive["variables"] if is_variable(row)}, "variable")
        entries = {(enum["file"], enum["name"]): [(name, signed(value)) for name, value in enum["entries"]]
                   for enum in self.facts["enums"]}
        self.same(entries, {(archive["file"], enum["name"]): [(entry["name"], entry["value"])
                            for entry in enum["entries"]] for archive in archives for enum in archive["enums"]}, "enum")
        self.same(entries, {(archive["file"], name): [(row["name"], row["value"]) for row in archive["variables"]
                            if row["enum"] == name] for archive in archives
                            for name in {row["enum"] for row in archive["variables"]} - {None}}, "variables of enum")

    def test_totals(self):
        chip = self.tree("--chip", self.root)["chip"]
        kinds = [kind for archive in chip["archives"] for kind in archive["templates"] if kind["kind"] == "struct"]
        modules = [kind for kind in kinds if not kind["isTypedef"]]
        declared = [register for module in modules for *_, register in registers_of(module)]
        fields = [field for register in declared for field in register["bitFields"]]
        self.same(self.facts["totals"], {
            "files": len(chip["archives"]), "types": len(modules), "typedefs": len(kinds) - len(modules),
            "instances": len(chip["instances"]),
            "registers": sum(1 for instance in chip["instances"] for _ in single_registers(instance)),
            "register_declarations": len(declared), "fields": len(fields),
            "options": sum(len(field["options"]) for field in fields),
            "enums": sum(len(archive["enums"]) for archive in chip["archives"]),
            "vars": sum(is_variable(row) for archive in chip["archives"] for row in archive["variables"]),
        }, "total of")

    def test_headers_are_the_same_every_time(self):
        first = support.files_below(self.generate("first"))
        self.assertEqual(sorted(first), sorted(self.headers + self.assembly_headers))
        self.assertEqual(first, support.files_below(self.generate("second")))

    def test_up_to_date_headers_stay(self):
        """Of all headers only the one that is older than its description is written again, with its assembly header."""
        copy = self.folder / "chip"
        shutil.copytree(self.folder_of_chip, copy, copy_function=shutil.copyfile)
        for path in copy.rglob("*.xml"):
            os.utime(path, (1_000_000_000, 1_000_000_000))
        target = self.generate("out", root=copy / self.facts["root"])
        first = support.files_below(target)
        aged = [self.headers[0], self.assembly_headers[0]]
        for header in aged:
            (target / header).write_text("old")
        os.utime(target / aged[0], (999_999_999, 999_999_999))
        stamps = {header: (target / header).stat() for header in self.headers + self.assembly_headers}
        self.generate("out", "--skip-up-to-date", root=copy / self.facts["root"])
        written = {header for header, stamp in stamps.items()
                   if (target / header).stat().st_mtime_ns != stamp.st_mtime_ns}
        self.assertEqual(written, set(aged))
        self.assertEqual(support.files_below(target), first)


def find_chips():
    """Makes the test classes."""
    for chip in support.chips():
        globals()[chip.name] = type(chip.name, (Chip,), {"folder_of_chip": chip, "__module__": "__main__"})
    globals().pop("Chip")                       # the pattern for the others is no test itself


if __name__ == "__main__":
    support.main(__doc__.splitlines()[0], prepare=find_chips)
