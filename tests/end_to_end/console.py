"""The commands that ask and change single elements: show, write and complete."""

import json
import struct

import support
from support import archive, run

CHIP = archive(
    '<typedef name="node"><ptr name="next" type="node"/><uint32 name="data"/></typedef>',
    '<module name="port"><reg32 name="ctrl" protect="rw">',
    '<bits name="speed" pos="3:1" access="rw" rst="2"><options><option name="fast" value="5"/></options></bits>',
    '<bits name="go" pos="8" access="s"/><bits name="ack" pos="10:9" access="rc"/><bits name="busy" pos="31" access="r"><comment>one\ttwo</comment></bits>',
    '<bits name="wide" pos="39:28" access="rw"/></reg32>',
    '<reg16 name="secret" protect="w"><bits name="key" pos="15:0" access="rw"/></reg16><reg16 name="ro" protect="r"/>',
    '<int8 name="level" count="2"/><hole size="16"/><memory name="ram" size="4"/><ptr name="head" type="node"/>',
    '</module>', '<instance name="P" type="port" address="0x40000000"/>',
    '<instance name="TOP" type="port" address="0xFFFFFFFC"/>', '<instance name="EDGE" type="port" address="0xFFFFFFFE"/>',
    '<instance name="TWIN" type="port" address="0x40000000"/>')
BYTES = struct.pack("<IHHbbHII", 0x0000070A, 0x1234, 0xBEEF, -2, 7, 0, 0, 0x40000014) + struct.pack("<II", 0, 0xCAFE)


class Console(support.Case):
    def setUp(self):
        super().setUp()
        self.chip = self.lay_out({"chip.xml": CHIP}, "chip.xml")
        self.image = self.folder / "image.bin"
        self.image.write_bytes(BYTES)
        self.at = ("--image", self.image, "--at", "0x40000000")

    def ask(self, command, *words, status=0):
        result = run(command, "--chip", self.chip, *words)
        self.assertEqual(result.status, status, result.err)
        return result

    def values(self, *paths, at=None):
        return [shown["value"] for shown in json.loads(self.ask("show", "--json", *(at or self.at), *paths).out)]

    def test_show_reads_like_a_register_view(self):
        words = ("$P.ctrl", "$P.ctrl.speed"), ("$P",), ("--recursive", "$P")
        self.expect_golden("program/show.txt", "\n".join(self.ask("show", *asked, *self.at).out for asked in words))
        self.assertIn("fast=5", self.ask("show", "$P.ctrl").out, "without an image, what values there are")

    def test_show_follows_pointers_in_the_image(self):
        shown = json.loads(self.ask("show", "--json", "$P.head.>.data", *self.at).out)[0]
        self.assertEqual((shown["path"], shown["address"], shown["value"]), ("$P.head.>.data", 0x40000018, 0xCAFE))
        self.assertEqual(self.values("$P.head.>.next.>.data"), [None], "a null pointer leads out of the image")
        self.image.write_bytes(BYTES[:20] + struct.pack("<III", 0x4000000C, 0, 0xCAFE))
        self.assertEqual(self.values("$P.head.>.next.>.data"), [0x40000014], "the outer pointer first")

    def test_show_as_json(self):
        register, field = json.loads(self.ask("show", "--json", "$P.ctrl", "$P.ctrl.ack").out)
        self.assertNotIn("value", register)
        tree = self.tree("--chip", self.chip)["chip"]["instances"][0]["members"][0]
        self.assertEqual(register, tree)
        self.assertEqual(field, tree["bitFields"][2] | {"path": "$P.ctrl.ack", "address": 0x40000000})
        structure = json.loads(self.ask("show", "--json", "$P", *self.at).out)[0]
        self.assertNotIn("members", structure)
        self.assertIsNone(structure["value"])
        paths = ("$P.ctrl", "$P.ctrl.speed", "$P.ctrl.go", "$P.secret", "$P.secret.key", "$P.level[0]")
        self.assertEqual(self.values(*paths), [0x70A, 5, None, None, None, 0xFFFFFFFE])
        array = json.loads(self.ask("show", "--json", "$P.level").out)[0]
        self.assertEqual((array["count"], array["prototype"]["kind"], "members" in array), (2, "int8", False))

    def test_images_of_any_size_and_place(self):
        self.image.write_bytes(b"")
        self.assertEqual(self.values("$P.ctrl"), [None])
        self.image.write_bytes(BYTES)
        self.assertEqual(self.values("$P.ctrl", at=("--image", self.image, "--at", "0x40000001")), [None])
        # At the top of the address space: one register in it, what comes behind is nowhere.
        self.assertEqual(self.values("$TOP.ctrl", "$TOP.secret", at=("--image", self.image, "--at", "4294967292")),
                         [0x70A, None])
        self.assertEqual(self.values("$EDGE.ctrl", at=("--image", self.image, "--at", "0xFFFFFFFE")), [None])
        self.assertEqual(self.values("$TOP.secret", at=("--image", self.image, "--at", "0b0")), [None])

    def test_paths_that_lead_nowhere(self):
        result = self.ask("show", "$P.ctrl.none.x", "P", "", "$Q.ctrl", "$P.ro", status=1)
        self.assertEqual(result.err, """\
error: No element has the path $P.ctrl.none.x; it leads as far as $P.ctrl.
error: No element has the path P; a path begins with '$' and the name of an instance.
error: No element has the path ; a path begins with '$' and the name of an instance.
error: No element has the path $Q.ctrl.
""")
        self.assertIn("$P.ro ", result.out, "what can be shown is")
        shown = json.loads(self.ask("show", "--json", "$P.none", "$P.ro", status=1).out)
        self.assertEqual(shown[0], {"path": "$P.none", "error": "no such element"})
        self.assertEqual(shown[1]["path"], "$P.ro")
        for path in ("$P.head" + ".>.next" * 10_000, "." * 100_000, "$P." + "x" * 100_000):
            self.assertLess(len(self.ask("show", path, status=1).err), 300)

    def test_write(self):
        def word(*assignments):
            self.image.write_bytes(BYTES)
            self.ask("write", *self.at, *assignments)
            written = self.image.read_bytes()
            self.assertEqual(written[4:], BYTES[4:])
            return int.from_bytes(written[:4], "little")

        self.assertEqual(word("$P.ctrl=0xFFFFFFFF"), 0xFFFFFFFF)
        self.assertEqual(word("$P.ctrl.speed=0b11"), 0x006, "set and clear bits are 0")
        self.assertEqual(word("$P.ctrl.speed=fast", "$P.ctrl.go=1", "$P.ctrl.ack=1"), 0x30A, "one write of one register")
        self.assertEqual(word("$P.ctrl=0x700", "$P.ctrl.speed=1"), 0x702, "the last of two values")
        self.assertEqual(word("$P.ctrl.wide=9"), 0x9000000A, "the bits in the register")
        self.assertEqual(word("--force", "$P.ctrl.busy=1"), 0x8000000A)
        self.assertEqual(word("$P.ctrl.go=1", "$TWIN.ctrl.speed=3"), 0x106, "one register under two names")
        self.ask("write", *self.at, "$P.level[1]=-128", "$P.head.>.data=7", "$P.secret=0xFFFF")
        self.assertEqual(self.image.read_bytes()[4:], struct.pack("<HHbbHIIII", 0xFFFF, 0xBEEF, -2, -128, 0, 0,
                                                                   0x40000014, 0, 7))
        self.ask("write", *self.at, "--force", "$P.ro=1", "$P.level[0]=0x81")
        self.assertEqual(self.values("$P.ro", "$P.level[0]"), [1, 0xFFFFFF81])
        # Another register behind the same pointer is another write: its actions are not repeated.
        self.image.write_bytes(BYTES + struct.pack("<I", 0) + BYTES)
        to_port = CHIP.replace('<ptr name="head" type="node"/>', '<ptr name="head" type="port"/>')
        root = self.lay_out({"two.xml": to_port}, "two.xml")
        self.expect(run("write", "--chip", root, *self.at, "$P.head=0x40000000", "$P.head.>.ctrl.speed=1",
                        "$P.head=0x40000020", "$P.head.>.ctrl.speed=1"), 0)
        self.assertEqual(self.image.read_bytes()[32:36], struct.pack("<I", 2))

    def test_refused_writes_change_nothing(self):
        rows = [("$P.ctrl=0x100000000", "0x100000000 does not fit into 32 bits"),
                ("$P.ctrl=-1", "-1 does not fit into 32 bits"), ("$P.level[0]=128", "128 does not fit into 8 bits"),
                ("$P.ctrl=fast", "'fast' is no number"), ("$P.ctrl=", "'' is no number"),
                ("$P.ctrl.speed=8", "8 does not fit into bits 3 to 1 of 32 bits"),
                ("$P.ctrl.speed=-1", "-1 does not fit into bits 3 to 1 of 32 bits"),
                ("$P.ctrl.wide=16", "16 does not fit into bits 39 to 28 of 32 bits"),
                ("$P.ctrl.speed=slow", "'slow' is neither a number nor one of its options"),
                ("$P.level[0]=-129", "-129 does not fit into 8 bits"),
                ("$P.ctrl=0x0x10", "'0x0x10' is no number"), ("$P.ctrl=5 ", "'5 ' is no number"),
                ("$P.ctrl.go=0", "it takes no value but 1, which sets it"),
                ("$P.ctrl.ack=3", "it takes no value but 1, which clears it"),
                ("$P.ctrl.busy=1", "it is not writable; --force writes it all the same"),
                ("$P.ro=1", "it is not writable; --force writes it all the same"),
                ("$P.level=1", "it has no value of its own; name a register, an integer or a field in it"),
                ("$P.ram=1", "it has no value of its own; name a register, an integer or a field in it"),
                ("$TOP.ctrl=1", f"it does not lie in {self.image}, which has {len(BYTES)} bytes from 0x40000000 on"),
                ("$P.head.>.next.>.data=1",
                 f"it does not lie in {self.image}, which has {len(BYTES)} bytes from 0x40000000 on")]
        for assignment, reason in rows:
            with self.subTest(assignment):
                result = self.ask("write", *self.at, "$P.ctrl=0", assignment, status=1)
            path = assignment.rpartition("=")[0]
            self.assertEqual(result.err, f"error: {path} can't be written: {reason}.\n")
            self.assertEqual(self.image.read_bytes(), BYTES, assignment)
        self.ask("write", *self.at, "$P.none=1", status=1)
        self.ask("write", *self.at, "--force", "$P.ctrl.go=0", status=1)
        missing = self.folder / "none.bin"
        result = self.ask("write", "--image", missing, "--at", "0", "$P.ctrl=0", status=1)
        self.assertEqual(result.err, f"error: {missing} can't be read: No such file or directory\n")

    def test_complete(self):
        lines = self.ask("complete", "$P.ctrl.speed.").out.splitlines()
        self.assertEqual([line.split("\t")[0] for line in lines], ["R", "address", "doc", "r", "rl", "w", "wl"])
        self.assertEqual(lines[6], "wl\tcacheval,value\tnewcacheval\t\"Write local\". Sets the value of the bitfield "
                         "inside the 'cacheval', taken as the parent register's value. Returns the modified cache.")
        self.assertIn("\tone two\n", self.ask("complete", "$P.ctrl.").out, "a candidate is one line")
        listed = json.loads(self.ask("complete", "--json", "$").out)
        self.assertEqual(listed, [{"name": name, "arguments": "", "result": "", "help": "", "type": 14}
                                  for name in ("$EDGE", "$P", "$TOP", "$TWIN")])
        for text in ("", "nothing.", "$P.none.", "$P." + "x" * 100_000):
            self.assertEqual(self.ask("complete", text).out == "", text[3:4] != "x", text[:9])

    def test_wrong_usage(self):
        for words in (("show",), ("complete",), ("complete", "a", "b"), ("write", "$P.ctrl=1"), ("write", *self.at),
                      ("write", *self.at, "$P.ctrl"), ("show", "$P", "--image", self.image),
                      ("show", "$P", "--at", "0"), ("show", "$P", "--image", self.image, "--at", "0x100000000"),
                      ("show", "$P", "--image", self.image, "--at", "x"), ("show", "$P", "--image", "", "--at", "0"),
                      ("write", "$P.ctrl=1", "--image", "", "--at", "0")):
            self.assertNotEqual(self.ask(*words, status=2).err, "")
            self.assertEqual(self.image.read_bytes(), BYTES)


    def test_find_by_name_address_and_comment(self):
        lines = lambda *words, status=0: self.ask("find", *words, status=status).out.splitlines()
        self.assertEqual([line.split()[:2] for line in lines("SP*")],
                         [[f"${name}.ctrl.speed", address] for name, address in
                          (("P", "0x40000000"), ("TOP", "0xFFFFFFFC"), ("EDGE", "0xFFFFFFFE"), ("TWIN", "0x40000000"))])
        self.assertEqual([line.split()[0] for line in lines("0x40000005")], ["$P.secret", "$TWIN.secret"])
        self.assertEqual([line.split()[0] for line in lines("0x4000000A")], ["$P", "$TWIN"])  # in a gap
        self.assertEqual([line.split()[0] for line in lines("two")][:1], ["$P.ctrl.busy"])
        self.assertEqual(lines("level")[0].split()[0], "$P.level")
        self.assertEqual(lines("tw", status=1), [])
        self.assertEqual(lines("0x1", status=1), [])
        found = json.loads(self.ask("find", "--json", "0x40000009").out)
        self.assertEqual([(one["path"], one["address"]) for one in found], [("$P.level[1]", 0x40000009), ("$TWIN.level[1]", 0x40000009)])
        shown = self.ask("show", "0x40000009", *self.at).out
        self.assertIn("= 7", shown)
        self.assertIn("Nothing lies at the address 5.", self.ask("show", "5", status=1).err)


if __name__ == "__main__":
    support.main(__doc__)
