"""Bad input: whatever a description holds, a run ends soon, in little memory, with a message that leads to the place or
with a value that is defined. It never crashes, and it never leaves half a result behind."""

import itertools
import json
import re
from typing import NamedTuple

import support
from support import MESSAGE, archive, options, run

DEEP = 100_000
BAD_VARIABLE = "In archive 'root', variable 'A' declaration : Error in expression of : A"


def module(*lines):
    """A module in lines of its own: the first of the lines is line 3 of the file."""
    return archive('<module name="m">', *lines, "</module>", '<instance name="M" type="m" address="0x1000"/>')


def nested(start, end, inside="", depth=DEEP):
    return start * depth + inside + end * depth


def entities(definitions, text):
    rows = (f'<!ENTITY {name} "{value}">' for name, value in definitions)
    return "\n".join(["<!DOCTYPE archive [", *rows, f"]><archive><comment>{text}</comment></archive>"])


def in_register(line):
    """A register with this line, which is line 4 of the file."""
    return module('<reg32 name="r">', f"{line}</reg32>")


def chain(levels, member):
    """Types of which each holds the one before it, as often as the member line says."""
    yield '<typedef name="t0"><reg32 name="r"/></typedef>'
    for level in range(levels):
        yield f'<typedef name="t{level + 1}">{member.format(f"t{level}")}</typedef>'


def diamonds(levels, *end_of_root):
    """Two files a level, each of which includes both of the next: 2 to the power of the level ways lead to the last."""
    both = ['<include file="a{}.xml"/>', '<include file="b{}.xml"/>']
    files = {f"{side}{level}.xml": archive(*(line.format(level + 1) for line in both))
             for level, side in itertools.product(range(levels), "ab")}
    files |= {f"a{levels}.xml": archive('<var name="LAST" value="7"/>'), f"b{levels}.xml": archive()}
    return files | {"root.xml": archive(*(line.format(0) for line in both), *end_of_root)}


class Refused(NamedTuple):
    name: str
    files: dict | str | bytes                   # or the content of the root file alone
    line: str | int = r"\d+"
    text: str = ""                              # a limit has words of its own: only the place is asked of it
    file: str = "root.xml"                      # the one at fault


def too_much_text(name, content, line=r"\d+"):
    most = (448 * 1024 + len(content.encode()) // 2) * 48
    return Refused(name, content, line, "The names of array members and of pieces, and the positions and options of "
                   f"bitfields, hold more than {most} characters.")


REFUSED = [
    Refused("structs in structs", module(nested('<struct name="s">\n', "</struct>\n"))),
    Refused("structs in structs of wide characters", module(nested('<struct name="s">', "</struct>")).encode("utf-16")),
    Refused("structs that nobody closes", module(nested('<struct name="s">', ""))),
    Refused("structs in structs of an include", {
        "root.xml": archive('<include file="deep.xml"/>'),
        "deep.xml": module(nested('<struct name="s">', "</struct>"))}, file="deep.xml"),
    Refused("markup in a comment", archive("<comment>", nested("<b>", "</b>"), "</comment>")),
    Refused("unknown tags", nested("<x>", "</x>")),
    Refused("exponential entities",
            entities([("e0", "lol"), *((f"e{n + 1}", f"&e{n};" * 10) for n in range(12))], "&e12;")),
    Refused("two billion pointers", module('<reg8 name="r"/>', '<ptr name="p" type="m" count="2000000000"/>'), 4),
    Refused("alias of two billion", archive('<alias name="a"><uint8 name="u" count="2000000000"/></alias>'), 2),
    Refused("arrays of arrays", module('<struct name="a" count="1000"><struct name="b" count="1000">',
                                       '<reg8 name="r" count="1000"/></struct></struct>')),
    Refused("types that hold ten of the last", archive(*chain(9, '<instance name="i" type="{0}" count="10"/>'))),
    Refused("types that hold two of the last",
            archive(*chain(40, '<instance name="i" type="{0}"/><instance name="j" type="{0}"/>'))),
    too_much_text("array of a long name", module(f'<reg name="{"n" * 4000}" count="250000"/>'), 3),
    too_much_text("instance of an array under a long name", archive(
        '<alias name="a"><reg name="r" count="250000"/></alias>', f'<instance name="{"n" * 4000}" type="a"/>'), 3),
    too_much_text("pieces of a long name", module(*(
        f'<reg name="r"><bits name="f" pos="127:0" cut="1" cutprefix="{"n" * 90_000}"/></reg>' for _ in range(6)))),
    Refused("name of a hundred thousand letters", module(f'<reg name="{"n" * 100_000}"/>'), 3,
            "The name is longer than 4096 characters."),
    Refused("long names in one another", archive(
        f"<module name='m'>{f'<struct name={chr(39)}{chr(110) * 4000}{chr(39)}>' * 5}<reg name='r'/>{'</struct>' * 5}</module>",
        '<instance name="M" type="m" address="0"/>'), 3,
        "The names of the elements in one another have more than 16384 characters in all."),
    Refused("entities in many files", {
        "root.xml": archive(*(f'<include file="e{at}.xml"/>' for at in range(20))),
        **{f"e{at}.xml": entities([("a", "x" * 16), ("b", "&a;" * 16), ("c", "&b;" * 15)], "&c;" * 230 + str(at))
           for at in range(20)}}, file="e9.xml"),
    Refused("array of bitgroups", module('<reg name="r" count="250000">' + '<bitgroup name="g"/>' * 1000 + "</reg>"), 3,
            "Array 'r' is too large: it would hold 250250000 elements, and 262144 is the limit."),
    Refused("more tags than a document may have", b"<archive>" + b"<a/>" * 4_200_000, 1,
            "The file has more than 4000000 tags."),
    Refused("cut over all numbers", in_register('<bits name="f" pos="2147483647:-2147483647" cut="1"/>'), 4),
    Refused("open parentheses", archive(f'<var name="A" value="{"(" * DEEP}1"/>'), 2, BAD_VARIABLE),
    Refused("name that no way leads to", diamonds(40, '<var name="A" value="NOWHERE"/>'), 4, BAD_VARIABLE),
    Refused("enum that no way leads to", diamonds(40, '<module name="m"><reg name="r"><bits name="f" pos="0">',
                                                  '<options linkenum="none"/></bits></reg></module>'), 5,
            "Options of bitfield 'f' is linked to an undefined enum 'none'."),
]

# Descriptions that load: (name, files or the root file's content, expression in the scope of the root, its value).
VALUES = [
    ("diamonds of includes", diamonds(40, '<var name="A" value="LAST+1"/>'), "A+LAST", 15),
    ("wide characters", archive(*f'<var name="A" value="7"/> {"<spacer/>" * 1000}'.split()).encode("utf-16"), "A", 7),
]


class BadInput(support.Case):
    def bounded(self, *arguments):
        """A run within the limits, whose every message has the form of a message."""
        result = run(*arguments)
        self.assertIn(result.status, (0, 1, 2), f"ended by signal {-result.status}: {result.err[-1500:]}")
        for limit, used, unit in ((options.seconds, result.seconds, "s"), (options.megabytes, result.megabytes, "MB")):
            self.assertTrue(not limit or used <= limit, f"took {used:.2f} {unit}, the limit is {limit:g}")
        for line in result.err.splitlines():
            self.assertTrue(MESSAGE.fullmatch(line), f"no message: {line[:300]}")
        return result

    def refused(self, result, place, text=""):
        """Nothing was loaded, and one error says why. Its place is a regular expression."""
        self.expect(result, 1, err=None)
        self.assertRegex(result.err, re.compile(f"^{place}:\\d+: error: {re.escape(text) or '.+'}$", re.M))
        self.assertEqual(result.err.count("error:"), 1, result.err[:1000])

    def write(self, files):
        return self.lay_out(files if isinstance(files, dict) else {"root.xml": files})

    def test_refused(self):
        for case in REFUSED:
            with self.subTest(case.name):
                root, target = self.write(case.files), self.folder / "out"
                place = f"{re.escape(str(self.folder / case.file))}:{case.line}"
                self.refused(self.bounded("check", root), place, case.text)
                self.refused(self.bounded("headers", "--chip", root, "-o", target), place, case.text)
                self.assertFalse(target.exists() and any(target.rglob("*.h")), "headers of what was not loaded")

    def test_values(self):
        for name, files, expression, value in VALUES:
            with self.subTest(name):
                root = self.write(files)
                self.expect(self.bounded("check", root), 0)
                self.expect(self.bounded("eval", "--chip", root, expression), 0, f"{value}\n")
                self.expect(self.bounded("headers", "--chip", root, "-o", self.folder / "out"), 0)
                self.expect(self.bounded("tree", "--json", "--chip", root), 0, out=None)

    def test_parentheses_of_an_expression(self):
        self.expect(self.bounded("eval", "(" * DEEP + "1"), 1, err=None)
        half = DEEP // 2
        self.expect(self.bounded("eval", "(" * half + "1" + ")" * half), 0, "1\n")

    def test_files_that_are_none(self):
        for path, reason in ((self.folder, "Is a directory"), (self.folder / "missing.xml", "No such file or directory")):
            with self.subTest(path.name):
                told = f"warning: Unable to open file {path}\nerror: {path} did not load: {reason}\n"
                self.expect(self.bounded("check", path), 1, err=told)


class Messages(support.Case):
    def test_both_roots_are_reported(self):
        self.lay_out({"chip.xml": "<chip/>", "soft.xml": archive("<bogus/>"), "good.xml": archive()})
        chip, soft, good = (self.folder / name for name in ("chip.xml", "soft.xml", "good.xml"))
        norm = "Old archive format! Please edit your xml files to conform to the new norm."
        of_chip = f"{chip}:0:0: error: {norm}\n"
        of_soft = f"{soft}:2:8: error: Unvalid tag : 'bogus'\n"
        target = self.folder / "out"
        for roots, err in (((chip, soft), of_chip + of_soft), ((chip, good), of_chip), ((good, soft), of_soft)):
            self.expect(run("check", "--chip", roots[0], "--soft", roots[1]), 1, err=err)
            self.expect(run("headers", "--chip", roots[0], "--soft", roots[1], "-o", target), 1, err=err)
            self.assertFalse(target.exists() and any(target.rglob("*.h")))

    def test_wrong_usage(self):
        root = self.lay_out({"root.xml": archive()})
        for arguments in ((), ("frobnicate",), ("check",), ("headers", "-o", self.folder), ("tree", "--json"),
                          ("headers", "--chip", root), ("check", "--frobnicate", root), ("eval",)):
            with self.subTest(arguments):
                result = run(*arguments)
                self.expect(result, 2, err=None)
                self.assertNotEqual(result.err, "")

    def test_what_cannot_be_written_is_named(self):
        """A regular file is no directory and a directory no file, also for a user who may do everything."""
        root = self.lay_out({"root.xml": archive('<include file="sub/other.xml"/>'), "sub/other.xml": archive(),
                             "file": "", "out/root.h/x": ""})
        for target, named in ((self.folder / "file/below", "file/below"), (self.folder / "out", "out/root.h")):
            with self.subTest(named):
                result = run("headers", "--chip", root, "-o", target)
                self.expect(result, 1, err=None)
                self.assertRegex(result.err, f"(?m)^error: .*{re.escape(str(self.folder / named))}")
        self.assertTrue((self.folder / "out/sub/other.h").is_file(), "the other headers are written all the same")


if __name__ == "__main__":
    support.main(__doc__.splitlines()[0], [
        ("--seconds", {"type": float, "default": 1, "help": "wall-clock limit of a run; 0 for none"}),
        ("--megabytes", {"type": float, "default": 200, "help": "limit of a run's memory; 0 for none"})])
