"""The vendors' files of real chips, imported: nothing that the facts say of the hardware is lost.

The facts of a chip stand beside its description, and no program wrote them that imports anything. An import makes other
arrays and other enums of the same file, so single registers and fields are compared, by absolute address; what the facts
leave out because it lies over something else may be there too.
"""

import collections
import json
import re
import subprocess
import unittest
from pathlib import Path

import support
from support import options, run

WORD = 0xFFFFFFFF
GCC = ["gcc", "-m32", "-Wall", "-Werror", "-std=c11", "-include", support.PRELUDE]


def sources():
    """The vendors' files that lie beside the folder of descriptions, each with its facts."""
    if not options.descriptions:
        return []
    folder = Path(options.descriptions).parent / "svd"
    pairs = [(path, Path(options.descriptions) / path.stem / "facts.json") for path in sorted(folder.glob("*.svd"))]
    return [(path.resolve(), facts.resolve()) for path, facts in pairs if facts.exists()]


# What the facts say ---------------------------------------------------------------------------------------------------

def places(register):
    """The offsets of all members of an array, or of the one register."""
    offsets = [register["offset"]]
    for count, stride in register["dims"]:
        offsets = [offset + at * stride for offset in offsets for at in range(count)]
    return offsets


def expected_registers(facts):
    """(address, bits, access) -> the fields of all that lie there, each with its options by value."""
    types = {kind["name"]: kind for kind in facts["types"]}
    found = collections.defaultdict(list)
    for instance in facts["instances"]:
        singles = {(address, bits): access for _, address, bits, access in instance["registers"]}
        for register in types[instance["type"]]["registers"]:
            for offset in places(register):
                address = instance["address"] + offset
                key = (address, register["width"], register["access"])
                assert singles.pop((address, register["width"])) == register["access"], (instance["name"], key)
                found[key].append((f"{instance['name']}.{register['path']}", register["fields"]))
        assert not singles, (instance["name"], singles)
    return found


def expected_field(field):
    """All that is to be found of a field but its name."""
    return (field["lsb"], field["width"], field["mask"], field["access"].replace("-", ""), field["reset"])


def plain(name, enums=()):
    """A name without what may differ of it: case, underscores, and an enum's name in front of that of an entry."""
    name = name.upper()
    for enum in sorted(enums, key=len, reverse=True):
        if name.startswith(f"{enum.upper()}_"):
            name = name.removeprefix(f"{enum.upper()}_")
            break
    return re.sub(r"[^A-Z0-9]", "", name)


# What the import says -------------------------------------------------------------------------------------------------

def walk(element):
    yield element
    for member in element.get("members", []):
        yield from walk(member)


def imported_registers(tree):
    found = collections.defaultdict(list)
    for instance in tree["chip"]["instances"]:
        for element in walk(instance):
            if "bitFields" in element:
                bits = 8 * element["size"]
                found[element["address"], bits, element["access"].replace("-", "")].append(element)
    return found


def imported_field(field):
    low, width = field["down"], field["up"] - field["down"] + 1
    return (low, width, ((1 << width) - 1) << low, field["access"].replace("-", ""), field["reset"])


class ImportedChips(support.Case):

    @classmethod
    def setUpClass(cls):
        if not sources():
            raise unittest.SkipTest("no vendors' files beside the descriptions")

    def imported(self, path):
        folder = self.folder / path.stem
        self.expect(run("import", path, "-o", folder), 0, out=None, err=None)
        return folder

    def test_nothing_of_the_facts_is_lost(self):
        for path, facts in sources():
            with self.subTest(path.stem):
                folder = self.imported(path)
                self.check_facts(json.loads(facts.read_text()), self.tree("--chip", folder / "soc.xml"))

    def test_a_vendors_file_is_a_chip_as_it_is(self):
        for path, facts in sources():
            with self.subTest(path.stem):
                self.check_facts(json.loads(facts.read_text()), self.tree("--chip", path))

    def check_facts(self, facts, tree):
        found = imported_registers(tree)
        enums = [enum["name"] for archive in tree["chip"]["archives"] for enum in archive["enums"]]
        expected = expected_registers(facts)
        self.assertGreater(len(expected), 50)
        lost = []
        for key, registers in expected.items():
            for name, fields in registers:
                if not any(self.has_all(element, fields, enums) for element in found.get(key, [])):
                    lost.append((hex(key[0]), *key[1:], name))
        self.assertEqual(lost[:10], [], f"{len(lost)} of {len(expected)}")

    def has_all(self, element, fields, enums):
        own = {imported_field(field): field for field in element["bitFields"]}
        for field in fields:
            match = own.get(expected_field(field))
            if match is None:
                return False
            there = {(plain(option["name"], enums), option["value"] & WORD) for option in match["options"]}
            own_enum = [field["linkenum"]] if field.get("linkenum") else []
            if {(plain(name, own_enum), value & WORD) for name, value in field["options"]} - there:
                return False
        return True

    def test_the_import_loads_and_lint_finds_what_is_true_of_the_chip(self):
        of_chips = {"instance-view", "macro-name-twice", "instance-overlap"}
        for path, _ in sources():
            with self.subTest(path.stem):
                folder = self.imported(path)
                support.LINTED.clear()
                found = run("check", folder / "soc.xml", "-Wall", "--format=json", "--max-messages=0")
                self.expect(found, 0, out=None)
                rules = {finding["rule"] for finding in json.loads(found.out)}
                self.assertEqual(rules - of_chips, set())

    def test_compilers_take_the_headers(self):
        for path, _ in sources():
            with self.subTest(path.stem):
                out = self.folder / "include"
                self.expect(run("headers", "--chip", self.imported(path) / "soc.xml", "-o", out, "--types", "--self-check"),
                            0, err=None)
                for source in [*out.rglob("*_self_check.c")]:
                    judged = subprocess.run([*GCC, "-c", "-o", "/dev/null", "-I", out, "-I", out / "periph",
                                             "-I", out / "common", source], capture_output=True, text=True)
                    self.assertEqual(judged.returncode, 0, judged.stderr[:3000])
                self.assertEqual(len([*out.rglob("*_self_check.c")]), 1)
                # The next chip has files of the same names.
                out.rename(self.folder / f"include_{path.stem}")

    def test_the_same_file_gives_the_same_description(self):
        path, _ = sources()[0]
        first = self.imported(path)
        texts = {file.relative_to(first): file.read_bytes() for file in first.rglob("*.*")}
        again = run("import", path, "-o", first)
        self.expect(again, 0, out=None, err=None)
        self.assertEqual(texts, {file.relative_to(first): file.read_bytes() for file in first.rglob("*.*")})
        self.assertIn(" 0 files written", " " + again.summary)


if __name__ == "__main__":
    support.main(__doc__.splitlines()[0])
