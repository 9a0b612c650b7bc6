"""What the program says to mistakes that people make, with its explanations: the whole text, as they read it."""

import subprocess

import support
from support import archive, options

support.LINTED.clear()

UART = '<module name="uart"><reg32 name="ctrl" protect="rw"><bits name="en" pos="0" access="rw"/></reg32></module>'


def register(*lines):
    return archive('<module name="uart">', '<reg32 name="ctrl" protect="rw">', *lines, "</reg32></module>")


# A title, the files of a description, the first of them the root, and, if it is not "check", the command.
DOCUMENTS = [
    ("a tag that is not closed", {"soc.xml": archive('<module name="uart">', '<reg32 name="ctrl" protect="rw"/>')}),
    ("an end tag in other letters", {"soc.xml": archive('<module name="uart">', "</Module>")}),
    ("the end of the file is missing", {"soc.xml": '<archive>\n<module name="uart">\n'}),
    ("a quote is missing", {"soc.xml": archive('<var name="A value="1"/>', '<var name="B" value="2"/>')}),
    ("a value without quotes", {"soc.xml": archive("<var name=A value=1/>")}),
    ("an ampersand in a comment", {"soc.xml": archive("<comment>R&D</comment>")}),
    ("a comment that does not end", {"soc.xml": archive("<!-- from here", '<var name="A" value="1"/>')}),
    ("Latin-1 without a declaration", {"soc.xml": b"<archive>\n<comment>Gr\xfc\xdfe</comment>\n</archive>\n"}),
    *((f"bytes that are no text: {wrong.hex(' ')}", {"soc.xml": b"<archive>\n<comment>caf\xc3\xa9 " + wrong + b"</comment></archive>\n"})
      for wrong in (b"\xed\xa0\x80", b"\xe0\x80\xaf", b"\xf0\x80\x80\xaf", b"\xf4\x90\x80\x80", b"\xf8\x88", b"\xe2\x82", b"\xc0\xaf")),
    ("Latin-1 that says it is UTF-8", {"soc.xml": b'<?xml version="1.0" encoding="utf-8"?>\n<archive><comment>\xfc</comment></archive>'}),
    ("half of a character of two bytes", {"soc.xml": "<archive>".encode("utf-16") + b"\x00"}),
    *((f"what does not end: {start}", {"soc.xml": archive("<module name='m'>", f"{start} name='r'", "<comment>C</comment>")})
      for start in ("<![CDATA[", "<?xml-model", "<!DOCTYPE", "<!ELEMENT", "<reg32", "</module", "<reg32 x='", "<")),
    ("an end without a beginning", {"soc.xml": archive("<comment>A</comment></comment>")}),
    ("two roots", {"soc.xml": "<archive/>\n<archive/>\n"}),
    ("an empty file", {"soc.xml": ""}),
    ("no XML", {"soc.xml": "#define A 1\n"}),
    ("another root", {"soc.xml": "<description/>\n"}),
]
WORDS = [
    ("a misspelt tag", {"soc.xml": archive('<modul name="uart"/>')}),
    ("a tag of another place", {"soc.xml": register('<option name="a" value="1"/>')}),
    ("a misspelt attribute", {"soc.xml": register('<bits name="en" pos="0" acess="rw"/>')}),
    ("the word of another format", {"soc.xml": register('<bits name="en" pos="0" access="w1c" reset="1"/>')}),
    ("a register without a name", {"soc.xml": archive('<module name="uart"><reg32 protect="rw"/></module>')}),
    ("a field without a position", {"soc.xml": register('<bits name="en" access="rw"/>')}),
    ("a reserved word", {"soc.xml": archive('<module name="uart"><reg32 name="int" protect="rw"/></module>')}),
    ("a name that breaks pages", {"soc.xml": archive(UART, '<instance name="Timer &quot;A&quot;" type="uart" address="0x40"/>')}),
    ("two comments", {"soc.xml": archive("<comment>Chip</comment>", "<comment>A chip</comment>")}),
]
EXPRESSIONS = [
    ("a misspelt name", {"soc.xml": archive('<var name="WIDTH" value="8"/>', '<var name="SIZE" value="4*WIDHT"/>')}),
    ("a name that comes later", {"soc.xml": archive('<module name="m"><reg name="r" count="DEPTH" protect="r"/></module>', '<var name="DEPTH" value="4"/>')}),
    ("a name in other letters", {"soc.xml": archive('<var name="BASE" value="0x4000"/>', UART, '<instance name="U" type="uart" address="base+4"/>')}),
    ("its own value", {"soc.xml": archive('<var name="COUNT" value="COUNT+1"/>')}),
    ("an operator is missing", {"soc.xml": archive('<var name="A" value="0x10 0x20"/>')}),
    ("an operand is missing", {"soc.xml": archive('<var name="A" value="(1&lt;&lt;)"/>')}),
    ("an open parenthesis", {"soc.xml": archive('<var name="A" value="2*(3+4"/>')}),
    ("an unknown function", {"soc.xml": archive('<var name="A" value="log2(4)"/>')}),
    ("a position", {"soc.xml": register('<bits name="en" pos="7:LOW" access="rw"/>')}),
    ("all else that has no value", {"soc.xml": archive()}, ["eval", *"""#1 1+"A '2 1,2 (1,2) exp2(1,2 exp2(1,2) 1) (1)) ,1 *1 1+ ~ 3:4
      sin() exp2 exp2("a") -"a" (A 0b12 "a"("b") A(1) 1.2.3 \u00e9 $A.b""".split(), "", " ", "1+" * 200 + "X", "(" * 300]),
    ("precedence of C", {"soc.xml": archive('<var name="A" value="-2+3"/>')}),
]
REFERENCES = [
    ("a misspelt type", {"soc.xml": archive(UART, '<instance name="U" type="uatr" address="0x40"/>')}),
    ("a type that comes later", {"soc.xml": archive('<instance name="U" type="uart" address="0x40"/>', UART)}),
    ("a type of another file", {"soc.xml": archive('<include file="uart.xml"/>', '<include file="spi.xml"/>'),
                                "uart.xml": archive('<enum name="speeds"><entry name="slow"/></enum>', UART),
                                "spi.xml": archive('<module name="spi"><reg name="r" protect="rw"><bits name="s" pos="0" access="rw">',
                                                   '<options linkenum="speeds"/></bits></reg></module>')}),
    ("a file that is not there", {"soc.xml": archive('<include file="uart.xlm"/>', '<instance name="U" type="uart"/>')}),
    ("an error three files down", {"soc.xml": archive('<include file="a/a.xml"/>'), "a/a.xml": archive("", '<include file="b.xml"/>'),
                                   "a/b.xml": archive('<var name="A" value="*"/>')}),
    ("a field of a group", {"soc.xml": register('<bits name="low" pos="0" access="rw"/>', '<bitgroup name="all"><entry ref="lov"/></bitgroup>')}),
    ("an enum and options", {"soc.xml": archive('<enum name="e"><entry name="a"/></enum>', '<module name="m"><reg name="r" protect="rw">',
                                                '<bits name="b" pos="0" access="rw"><options linkenum="e"><option name="c" value="1"/></options></bits></reg></module>')}),
    ("a type twice", {"soc.xml": archive(UART, UART)}),
]
MEANINGS = [
    ("fields that overlap", {"soc.xml": register('<bits name="speed" pos="3:1" access="rw"/>', '<bits name="mode" pos="4:3" access="rw"/>')}),
    ("a field beyond its register", {"soc.xml": register('<bits name="far" pos="32" access="rw"/>')}),
    ("a reset value that is cut", {"soc.xml": register('<bits name="speed" pos="1:0" access="rw" rst="4"/>')}),
    ("an uneven cut", {"soc.xml": register('<bits name="ch" pos="7:0" cut="3" access="rw"/>')}),
    ("an address without 0x", {"soc.xml": archive(UART, '<instance name="U" type="uart" address="40001000"/>')}),
    ("instances that overlap", {"soc.xml": archive(UART, '<instance name="U0" type="uart" address="0x40"/>', '<instance name="U1" type="uart" address="0x40"/>')}),
    ("a member twice", {"soc.xml": archive('<module name="m"><reg name="a" protect="r"/>', '<reg name="a" protect="r"/></module>')}),
    ("macros of one name", {"soc.xml": archive('<module name="m"><reg name="a" protect="r"><bits name="en" pos="0" access="r"/></reg>',
                                               '<reg name="b" protect="r"><bits name="en" pos="1" access="r"/></reg></module>')}),
    ("a module as a member", {"soc.xml": archive(UART, '<module name="soc"><instance name="u" type="uart"/></module>')}),
]
CHIP = {"soc.xml": archive(UART, '<instance name="UART0" type="uart" address="0x40"/>')}
COMMANDS = [
    ("a path in other letters", CHIP, ["show", "$uart0"]),
    ("a path without its dollar", CHIP, ["show", "UART0.ctrl"]),
    ("a misspelt path", CHIP, ["show", "$UART0.crtl.en"]),
    ("an address of nothing", CHIP, ["show", "0x1000"]),
    ("a value that is too wide", CHIP, ["write", "$UART0.ctlr=1", "--image", "soc.xml", "--at", "0x40"]),
    ("an expression on the command line", CHIP, ["eval", "0x10+SIZE"]),
]


class Mistakes(support.Case):
    def said(self, title, files, command):
        """The text of one case: what the files hold, what is typed, and what the program says."""
        folder = self.folder / title
        for name, content in files.items():
            path = folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content if isinstance(content, bytes) else content.encode())
        words = [command[0], "--chip", "soc.xml", "--explain", *command[1:]]
        done = subprocess.run([options.veldmap, *words], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True)
        told = done.stderr.decode().replace(f"{folder}/", "")
        self.assertTrue(told, title)
        self.assertEqual(done.returncode != 0, "error:" in told, title)
        return f"# {title}\n{told}"

    def expect_cases(self, name, cases):
        texts = [self.said(title, files, *command or [["check"]]) for title, files, *command in cases]
        self.expect_golden(f"program/mistakes_{name}.txt", "\n".join(texts))

    def test_documents(self):
        self.expect_cases("documents", DOCUMENTS)

    def test_words(self):
        self.expect_cases("words", WORDS)

    def test_expressions(self):
        self.expect_cases("expressions", EXPRESSIONS)

    def test_references(self):
        self.expect_cases("references", REFERENCES)

    def test_meanings(self):
        self.expect_cases("meanings", MEANINGS)

    def test_commands(self):
        self.expect_cases("commands", COMMANDS)


if __name__ == "__main__":
    support.main(__doc__)
