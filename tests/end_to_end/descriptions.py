"""docs/descriptions.md, as its readers take it: every description in it is loaded and checked, what is shown below it is
a part of what the program writes, and its lists of tags and attributes are those of the schema."""

import os
import re
import shutil
import subprocess
import xml.etree.ElementTree as ElementTree
from pathlib import Path
from typing import NamedTuple

import support
from support import options, run

support.LINTED.clear()

PROJECT = Path(__file__).resolve().parents[2]
PAGE = PROJECT / "docs/descriptions.md"
SCHEMA = PROJECT / "schema/veldmap.xsd"

# What files the lines of a block stand in.
WRITTEN = {"c": r"(?<!_asm)\.h$", "asm": r"_asm\.h$", "vhdl": r"\.vhd$"}
IN_ARCHIVE = re.compile("<(alias|cjoker|enum|include|instance|module|range|spacer|typedef|var)[ >/]")


class Block(NamedTuple):
    line: int                                   # of its first line in the page
    heading: str
    language: str
    text: str


def blocks():
    heading = ""
    begin = None
    for number, line in enumerate(PAGE.read_text().splitlines(), 1):
        if begin is None and line.startswith("#"):
            heading = line
        elif line.startswith("```"):
            if begin is None:
                begin, language, lines = number + 1, line[3:], []
            else:
                yield Block(begin, heading, language, "\n".join(lines) + "\n")
                begin = None
        elif begin is not None:
            lines.append(line)


def whole(text):
    """The description that a shown part of one stands in."""
    if text.startswith(("<archive", "<bigarchive", "<!--")):
        return text
    if IN_ARCHIVE.match(text):
        return f"<archive>\n{text}</archive>\n"
    return (f'<archive>\n<module name="uart">\n{text}</module>\n'
            '<instance name="UART0" type="uart" address="0x40000000"/>\n</archive>\n')


class Example(NamedTuple):
    """A description and what is shown of it. Named files of one chapter are one description, of which the last is the root."""

    line: int
    files: dict
    root: str
    shown: list


def examples():
    made = []
    heading = None
    for block in blocks():
        if block.language != "xml":
            if made and heading == block.heading:
                made[-1].shown.append(block)
            elif block.language == "console":
                made.append(Example(block.line, {}, "", [block]))
            continue
        named = re.match(r"<!-- (\S+) -->", block.text)
        name = named[1] if named else "soc.xml"
        files = {**(made[-1].files if named and heading == block.heading else {}), name: whole(block.text)}
        made.append(Example(block.line, files, name, []))
        heading = block.heading
    return made


class Descriptions(support.Case):
    def texts_of(self, pattern):
        return [path.read_text() for path in sorted((self.folder / "written").rglob("*")) if re.search(pattern, path.name)]

    def look_for(self, block):
        if block.language == "console":
            return self.repeat(block.text)
        if block.language == "html":
            pages = "".join(self.texts_of(r"\.html$"))
            for line in block.text.splitlines():
                self.assertIn(line, pages)
            return None
        texts = self.texts_of(WRITTEN[block.language])
        if not any(f"\n{block.text}" in f"\n{text}" for text in texts):
            self.fail(f"no file has the lines:\n{block.text}\nbut:\n" + "\n".join(texts))

    def repeat(self, session):
        """Types the commands of a session, and expects the lines below each."""
        path = f"{Path(options.veldmap).parent}{os.pathsep}{os.environ['PATH']}"
        for command, answer in re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", session, re.MULTILINE):
            typed = subprocess.run(["bash", "-c", command], capture_output=True, text=True, cwd=self.folder, check=False,
                                   env={**os.environ, "PATH": path, "LC_ALL": "C"})
            self.assertEqual(typed.stdout + typed.stderr, answer, command)

    def test_examples(self):
        count = 0
        for example in examples():
            with self.subTest(line=example.line):
                shutil.rmtree(self.folder)
                self.folder.mkdir()
                if example.files:
                    root = self.lay_out(example.files, example.root)
                    self.expect(run("check", "--strict", root), 0)
                    self.expect(run("build", "--no-lint", "-q", "--chip", root, "--headers", self.folder / "written/c", "--vhdl",
                                    self.folder / "written/vhdl", "--docs", self.folder / "written/site"), 0)
                for block in example.shown:
                    self.look_for(block)
                    count += 1
        self.assertGreater(count, 40)

    def test_the_schema_takes_the_examples(self):
        if not shutil.which("xmllint"):
            self.skipTest("xmllint is not there (libxml2-utils)")
        for example in examples():
            for name, text in example.files.items():
                self.lay_out({name: text})
                judged = subprocess.run(["xmllint", "--noout", "--schema", SCHEMA, self.folder / name],
                                        capture_output=True, text=True, check=False)
                self.assertEqual(judged.returncode, 0, f"line {example.line}: {judged.stderr}")


class Schema:
    """The tags of the schema with their attributes and defaults, each tag as the page calls it."""

    XS = "{http://www.w3.org/2001/XMLSchema}"
    WHERE = {("instance", "archive"): " in an archive", ("instance", None): " in a structure",
             ("entry", "enum"): " of an enum", ("entry", "bitgroup"): " of a bitgroup",
             ("default", "include"): " of an include"}

    def __init__(self):
        self.parts = {(part.tag, part.get("name")): part for part in ElementTree.parse(SCHEMA).getroot()}
        self.tags = {}                          # attributes and their defaults, by tag
        for name in ("bigarchive", "archive"):
            self.read(self.parts[(f"{self.XS}element", name)], None)

    def inside(self, part, wanted):
        for child in part:
            if child.get("ref"):
                child = self.parts[(child.tag, child.get("ref"))]
            if child.tag == self.XS + wanted:
                yield child
            elif child.tag != f"{self.XS}element":
                yield from self.inside(child, wanted)

    def read(self, element, parent):
        name = element.get("name")
        where = self.WHERE.get((name, parent), self.WHERE.get((name, None), "") if name == "instance" else "")
        called = f"`{name}`{where}"
        if called in self.tags:
            return
        kind = self.parts.get((f"{self.XS}complexType", element.get("type")), element)
        self.tags[called] = {attribute.get("name"): "required" if attribute.get("use") else attribute.get("default", "")
                             for attribute in self.inside(kind, "attribute")}
        for child in self.inside(kind, "element"):
            self.read(child, name)


def rows_below(heading):
    chapter = PAGE.read_text().split(f"\n## {heading}\n")[1].split("\n## ")[0]
    rows = [re.split(r"(?<!\\)\|", line)[1:-1] for line in chapter.splitlines() if line.startswith("| ")]
    return [[cell.strip() for cell in row] for row in rows[1:]]


class Lists(support.Case):
    REGISTERS = [f"`{name}`" for name in ("reg", "reg32", "reg16", "reg8", "ireg")]
    INTEGERS = [f"`{name}`" for name in
                ("uint", "uint32", "uint16", "uint8", "int", "int32", "int16", "int8", "bool")]
    GROUPS = {"registers": REGISTERS, "integers": INTEGERS,
              "members": ["`struct`", "`ptr`", "`instance` in a structure", *REGISTERS, *INTEGERS]}

    def test_attributes(self):
        listed = {}
        for attributes, of, default, _ in rows_below("All attributes"):
            default = {"none": "", "required": "required"}.get(default, default.strip("`"))
            for tag in of.split(", "):
                for owner in self.GROUPS.get(tag, [tag]):
                    for name in re.findall(r"`(\w+)`", attributes):
                        listed[(owner, name)] = default
        known = {(tag, name): default for tag, attributes in Schema().tags.items() for name, default in attributes.items()}
        self.maxDiff = None
        self.assertEqual(listed, known)

    def test_tags(self):
        listed = {name for tags, _, _ in rows_below("All tags") for name in re.findall(r"`(\w+)`", tags)}
        self.assertEqual(listed, {re.match(r"`(\w+)`", tag)[1] for tag in Schema().tags})

    def test_links_lead_somewhere(self):
        text = PAGE.read_text()
        prose = re.sub(r"^```.*?^```", "", text, flags=re.MULTILINE | re.DOTALL)
        anchors = {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
                   for heading in re.findall(r"^#+ (.*)$", prose, re.MULTILINE)}
        links = re.findall(r"\]\(([^)]+)\)", prose)
        self.assertGreater(len(links), 100)
        for link in links:
            file, _, anchor = link.partition("#")
            if file:
                self.assertTrue((PAGE.parent / file).exists(), link)
            else:
                self.assertIn(anchor, anchors)


if __name__ == "__main__":
    support.main("The reference of descriptions")
