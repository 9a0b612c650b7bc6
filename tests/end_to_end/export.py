"""Exports, as the tools that take them see them: in the order that the standards demand, with the facts of the chips."""

import json
import re
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

import register_files
import support
from support import archive, run

SCHEMA = support.GOLDEN.parents[1] / "schema/map.schema.json"
FORMATS = ("svd", "ipxact", "systemrdl", "json", "csv")
EXAMPLE = ("--chip", support.EXAMPLES / "soc.xml", "--soft", support.EXAMPLES / "firmware.xml")

# What formats don't take, or take otherwise.
AWKWARD = archive(
    '<comment>A chip that asks &lt;much&gt; of "formats"<br/>on two lines \\</comment>',
    '<var name="N" value="2"/>',
    '<enum name="mode"><entry name="MODE_OFF"/><entry name="MODE_ON" value="5"/></enum>',
    '<typedef name="pair"><reg16 name="low" protect="rw"/><reg16 name="high" protect="rw"/></typedef>',
    '<module name="reg"><comment>A block called as a keyword is</comment>',
    '<reg32 name="default" protect="rw">',
    '<bits name="enum" pos="3:1" access="rw" rst="9"><options linkenum="mode"/></bits>',
    '<bits name="string" pos="8:4" access="rc" rst="3"><options><option name="1st" value="1"/>'
    '<option name="also" value="1"/><option name="less" value="-1"/><option name="beyond" value="32"/></options></bits>',
    '<bits name="over" pos="9:8" access="rs"/><bits name="beside" pos="31:30" access="-w"/>',
    '<bits name="beside_r" pos="31:30" access="r-"/><bits name="none" pos="12" access="--"/></reg32>',
    '<reg16 name="word" protect="r"><l name="lo"/><h name="hi"/></reg16><hole size="16"/>',
    '<reg8 name="same" protect="w" count="N*2"/><reg8 name="never"/>',
    '<ireg name="inner" protect="rw"/><memory name="ram" size="6"/>',
    '<instance name="pairs" type="pair" count="N"><comment>two by two</comment></instance>',
    '<struct name="hollow"><hole size="32"/></struct>',
    '<ptr name="next" type="pair"/><int16 name="level"/><bool name="flag"/><ptr name="bytes" type="uint8"/>',
    '</module>',
    '<typedef name="block"><memory name="ram" size="256"/></typedef>',
    '<instance name="A" type="reg" address="0x40000000" category="a b"/>',
    '<instance name="1B" type="reg" address="0x50000000"/>',
    '<instance name="A" type="pair" address="0x60000000"/>',
    '<instance name="under" type="pair" address="0x40000010"/>',
    '<instance name="RAM" type="block" address="0xFFFFFF00"/>')


def exported(*roots, form):
    return run("export", *roots, "--format", form, "--max-findings", 0)


class Export(support.Case):
    def judge(self, form, text):
        """Takes a text apart as its standard wants it; its registers."""
        if form in ("svd", "ipxact"):
            order, texts = ((register_files.SVD, register_files.SVD_TEXTS) if form == "svd" else
                            (register_files.IPXACT, register_files.IPXACT_TEXTS))
            root = ElementTree.fromstring(text)
            self.assertEqual(list(register_files.faults(root, order, texts))[:5], [])
            self.assertEqual(list(register_files.repeated(root, order))[:5], [])
            return list(register_files.svd_registers(text) if form == "svd" else register_files.ipxact_registers(text))
        if form == "systemrdl":
            return list(register_files.Rdl(text).registers())
        if form == "csv":
            self.assertTrue(text.endswith("\r\n") and '"\n' not in text)
            return list(register_files.csv_registers(text))
        return list(register_files.json_registers(json.loads(text)))

    def judge_all(self, roots, golden):
        told = []
        registers = {}
        for form in FORMATS:
            with self.subTest(form):
                result = exported(*roots, form=form)
                self.expect(result, 0, out=None, err=None)
                told.append(f"{form}:\n{result.err.replace(str(self.folder) + '/', '')}")
                registers[form] = self.judge(form, result.out)
                self.expect_golden(f"export/{golden}.{form}", result.out.replace("\r\n", "\n"))
        return registers, "\n".join(told)

    def test_examples(self):
        registers, _ = self.judge_all(EXAMPLE, "example")
        for form in ("csv", "ipxact", "svd"):
            self.assertEqual(set(registers[form]), set(registers["json"]), form)
        self.assertEqual({address for address, *_ in registers["systemrdl"]},
                         {register.address for register in registers["json"]})

    def test_what_formats_refuse(self):
        root = self.lay_out({"chip.xml": AWKWARD}, "chip.xml")
        _, told = self.judge_all(("--chip", root), "awkward")
        self.expect_golden("export/awkward.txt", told)

    def test_modules_without_instances(self):
        root = self.lay_out({"chip.xml": archive('<module name="ip"><reg32 name="r" protect="rw">'
                                            '<bits name="b" pos="0" access="rw"/></reg32></module>')}, "chip.xml")
        for form in FORMATS:
            with self.subTest(form):
                result = exported("--chip", root, form=form)
                self.expect(result, 0, out=None, err=f"{root}:1:9: note: chip has no instances; each of its modules is "
                            "written as if it were one at address 0. [export-without-instances]\n")
                self.assertEqual([register[0] for register in self.judge(form, result.out)], [0])
        nothing = self.lay_out({"none.xml": archive('<var name="v" value="1"/>')}, "none.xml")
        self.expect(exported("--chip", nothing, form="svd"), 1, err=None)

    def test_real_chips(self):
        """The registers and fields of each format are those of the facts, which no program wrote that reads
        descriptions."""
        for chip in support.chips():
            facts = json.loads((chip / "facts.json").read_text())
            wanted = list(register_files.fact_registers(facts))
            for form in FORMATS:
                with self.subTest(chip=chip.name, form=form):
                    result = exported("--chip", chip / facts["root"], form=form)
                    self.expect(result, 0, out=None, err=None)
                    self.compare(form, wanted, self.judge(form, result.out), result.err)

    def compare(self, form, wanted, found, told):
        if form == "systemrdl":                        # which leaves out what lies where another does, and says so
            left_out = set(re.findall(r"'(\w+)' lies where '\w+' does; it is left out", told))
            wanted = [(name, register) for name, register in wanted if name not in left_out]
        expected = [register for _, register in wanted]
        if form in ("ipxact", "systemrdl"):
            expected = [register_files.with_legal_names(register) for register in expected]
        if form == "systemrdl":
            expected = [(register.address, register.width, register.fields or self.whole(register))
                        for register in expected]
        self.assertEqual(len(found), len(expected))
        self.assertEqual(list(set(found) ^ set(expected))[:4], [])

    def test_what_is_imported_again(self):
        """Registers, fields, resets and values of options are those that were exported, by way of SVD and of IP-XACT."""
        roots = [*(chip / "soc.xml" for chip in support.chips()), support.EXAMPLES / "soc.xml"]
        for number, root in enumerate(roots):
            wanted = self.facts_of(root)
            for form in ("svd", "ipxact"):
                with self.subTest(root=root, form=form):
                    file, out = self.folder / f"{number}.{form}", self.folder / f"{number}{form}"
                    self.expect(run("-q", "export", "--chip", root, "--format", form, "-o", file), 0)
                    self.expect(run("-q", "import", file, "-o", out), 0, out=None, err=None)
                    found = self.facts_of(out / "soc.xml")
                    self.assertEqual(list(set(wanted) ^ set(found))[:3], [])
                    self.assertEqual(len(wanted), len(found))

    @staticmethod
    def facts_of(root):
        """All of the registers but the names, which an import makes fit."""
        registers = register_files.json_registers(json.loads(run("-q", "export", "--chip", root, "--format", "json").out))
        return [register._replace(fields=frozenset(
            (field.lowest, field.width, field.access, field.reset, tuple(sorted(value for _, value in field.options)))
            for field in register.fields)) for register in registers]

    def test_descriptions_of_vendors_files_come_back(self):
        """A description made of a vendor's SVD file, written as SVD and imported again, is the same in each byte."""
        folder = Path(support.options.descriptions).parent / "svd" if support.options.descriptions else None
        if not folder or not folder.is_dir():
            self.skipTest("the vendors' files of --descriptions are not there")
        for source in sorted(folder.glob("*.svd")):
            with self.subTest(source.name):
                once, file, twice = (self.folder / f"{source.stem}{part}" for part in ("1", ".svd", "2"))
                self.expect(run("-q", "import", source, "-o", once), 0, out=None, err=None)
                self.expect(run("-q", "export", "--chip", once / "soc.xml", "--format", "svd", "-o", file), 0)
                self.expect(run("-q", "import", file, "-o", twice), 0, out=None, err=None)
                first, second = ({name: text for name, text in support.files_below(at).items() if name.endswith(".xml")}
                                 for at in (once, twice))
                self.assertEqual(first.keys(), second.keys())
                self.assertEqual([name for name in first if first[name] != second[name]], [])

    @staticmethod
    def whole(register):
        """The field that stands for a register without any."""
        return frozenset([register_files.Field("value", 0, register.width, register.access, None, ())])

    def test_the_schema_takes_the_json(self):
        try:
            import jsonschema
        except ImportError:
            self.skipTest("python3-jsonschema is not installed")
        schema = json.loads(SCHEMA.read_text())
        validator = jsonschema.Draft7Validator(schema)
        jsonschema.Draft7Validator.check_schema(schema)
        awkward = self.lay_out({"chip.xml": AWKWARD}, "chip.xml")
        for roots in (EXAMPLE, ("--chip", awkward), ("--chip", support.EXAMPLES / "cmsdk_cm3/soc.xml")):
            data = json.loads(exported(*roots, form="json").out)
            self.assertEqual([error.message for error in validator.iter_errors(data)][:3], [])
        del data["blocks"][0]["registers"][0]["mask" if "mask" in data["blocks"][0]["registers"][0] else "width"]
        self.assertTrue(list(validator.iter_errors(data)), "it judges")
        # All that is written has its words in the schema.
        for name, value in (("block", data["blocks"][0]), ("register", data["blocks"][0]["registers"][1])):
            self.assertLessEqual(value.keys(), schema["definitions"][name]["properties"].keys())

    def test_the_command(self):
        listed = run("export", "--list")
        self.expect(listed, 0, out=None)
        self.assertEqual([line.split()[0] for line in listed.out.splitlines()], list(FORMATS))
        target = self.folder / "new.svd"
        self.expect(run("export", *EXAMPLE, "--format", "svd", "-o", target), 0, err=None)
        self.assertEqual(target.read_text(), exported(*EXAMPLE, form="svd").out)
        self.expect(run("export", *EXAMPLE), 2, err="error: No format is given: --format takes one of svd, ipxact, "
                    "systemrdl, json, csv.\n")
        self.expect(run("export", "--format", "svd"), 2, err=None)
        self.expect(run("export", *EXAMPLE, "--format", "pdf"), 2, err=None)
        self.expect(run("export", *EXAMPLE, "--format", "csv", "--max-findings", "x"), 2,
                    err="error: 'x' is no number of findings: --max-findings takes one from 0 on.\n")
        self.expect(run("export", *EXAMPLE, "--format", "csv", "-o", self.folder / "no" / "dir.csv"), 1, err=None)
        few, all_of_them = (run("export", *EXAMPLE, "--format", "ipxact", "--max-findings", most).err.count("\n")
                            for most in (1, 0))
        self.assertLess(few, all_of_them)


if __name__ == "__main__":
    support.main(__doc__)
