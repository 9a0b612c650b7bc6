"""IP-XACT components of two years, imported: what they say of registers, and what is wrong with them."""

import csv
import io
import unittest
from pathlib import Path

import support
from support import options, run

HEAD = {"2014": '<ipxact:component xmlns:ipxact="http://www.accellera.org/XMLSchema/IPXACT/1685-2014">',
        "2009": '<spirit:component xmlns:spirit="http://www.spiritconsortium.org/XMLSchema/SPIRIT/1685-2009">'}
PREFIX = {"2014": "ipxact", "2009": "spirit"}


def component(year, *lines):
    """A component; names in the lines have the prefix ":" for that of the year."""
    names = ["<:vendor>v</:vendor>", "<:library>l</:library>", "<:name>chip</:name>", "<:version>1</:version>"]
    text = "\n".join([*names, *lines])
    for sign in ("<", "</", " "):
        text = text.replace(f"{sign}:", f"{sign}{PREFIX[year]}:")
    return f"{HEAD[year]}\n{text}\n</{PREFIX[year]}:component>\n"


def block(*lines, base="'h1000", size="'h100", year="2014"):
    return component(year, "<:memoryMaps><:memoryMap><:name>map</:name>",
                     f"<:addressBlock><:name>uart</:name><:baseAddress>{base}</:baseAddress><:range>{size}</:range>"
                     "<:width>32</:width>", *lines, "</:addressBlock></:memoryMap></:memoryMaps>")


def register(*lines, name="ctrl", offset="0", size="32"):
    return (f"<:register><:name>{name}</:name><:addressOffset>{offset}</:addressOffset><:size>{size}</:size>"
            f"{''.join(lines)}</:register>")


def field(name="en", offset="0", width="1", before="", behind=""):
    return (f"<:field><:name>{name}</:name><:bitOffset>{offset}</:bitOffset>{before}<:bitWidth>{width}</:bitWidth>"
            f"{behind}</:field>")


ALL_OF_2014 = component(
    "2014",
    "<:addressSpaces><:addressSpace><:name>space</:name><:range>4G</:range><:addressUnitBits>16</:addressUnitBits>",
    "<:localMemoryMap><:name>local</:name><:addressBlock><:name>words</:name><:baseAddress>'h80</:baseAddress>"
    "<:range>4</:range><:width>16</:width>",
    register(name="word", offset="1", size="16"), "</:addressBlock></:localMemoryMap>", "</:addressSpace></:addressSpaces>",
    "<:memoryMaps><:memoryMap><:name>map</:name>",
    "<:addressBlock><:name>uart</:name><:description>A port\n\nfor &lt;serial&gt; lines</:description>"
    "<:baseAddress>BASE*2</:baseAddress><:typeIdentifier>port</:typeIdentifier>"
    "<:range>'h100</:range><:width>32</:width><:access>read-only</:access>",
    "<:register><:name>ctrl</:name><:description>Control</:description><:addressOffset>0</:addressOffset>"
    "<:size>WIDTH</:size><:access>read-write</:access>",
    field("speed", 1, "$clog2(8)", "<:resets><:reset resetTypeRef='SOFT'><:value>1</:value></:reset><:reset>"
          "<:value>3'b101</:value></:reset></:resets>", "<:enumeratedValues><:enumeratedValue usage='read-write'>"
          "<:name>slow</:name><:description>9600</:description><:value>'h0</:value></:enumeratedValue><:enumeratedValue>"
          "<:name>fast</:name><:value>5</:value></:enumeratedValue></:enumeratedValues>"),
    field("part", 4, 4, "<:resets><:reset><:value>3</:value><:mask>1</:mask></:reset></:resets>"),
    field("error", "8", 1, behind="<:modifiedWriteValue>oneToClear</:modifiedWriteValue>"
          "<:readAction>clear</:readAction>"),
    field("state", 9, 2, behind="<:access>read-only</:access>"),
    field("gone", 12, 1).replace("<:bitOffset>", "<:isPresent>WIDTH==8</:isPresent><:bitOffset>"), "</:register>",
    "<:register><:name>data</:name><:dim>2</:dim><:dim>3</:dim><:addressOffset>'h10</:addressOffset><:size>8</:size>"
    "<:field><:name>all</:name><:bitOffset>0</:bitOffset><:bitWidth>8</:bitWidth></:field></:register>",
    "<:registerFile><:name>chan</:name><:dim>2</:dim><:addressOffset>'h20</:addressOffset><:range>16</:range>",
    register(name="a"), "<:registerFile><:name>inner</:name><:addressOffset>8</:addressOffset><:range>8</:range>",
    register(name="b", offset="4", size="16"), "</:registerFile></:registerFile>",
    "<:register><:name>id</:name><:dim>0</:dim><:addressOffset>'h60</:addressOffset><:size>16</:size></:register>",
    "</:addressBlock>",
    "<:bank bankAlignment='serial'><:name>bank</:name><:baseAddress>'h2000</:baseAddress>",
    *(f"<:addressBlock><:name>{name}</:name><:range>'h10</:range><:width>32</:width>{register(name='r')}</:addressBlock>"
      for name in ("first", "second")), "</:bank>",
    "<:addressBlock><:name>ram</:name><:baseAddress>'h8000</:baseAddress><:range>4K</:range><:width>32</:width>"
    "<:usage>memory</:usage></:addressBlock>",
    "</:memoryMap></:memoryMaps>",
    "<:description>Says all</:description>",
    "<:parameters><:parameter parameterId='BASE'><:name>base</:name><:value>'h400*WIDTH</:value></:parameter>"
    "<:parameter parameterId='WIDTH'><:name>w</:name><:value>32</:value></:parameter></:parameters>")

ALL_OF_2009 = component(
    "2009", "<:memoryMaps><:memoryMap><:name>map</:name>",
    "<:addressBlock><:name>timer</:name><:baseAddress :id='BASE' :resolve='user'>0x40000000</:baseAddress>"
    "<:range :id='RANGE'>1K</:range><:width>32</:width><:usage>register</:usage><:access>read-write</:access>",
    register("<:access>read-write</:access><:reset><:value>0x12</:value><:mask>0xFF</:mask></:reset>",
             field("low", 0, 4), field("high", 4, 4), field("rest", 8, 24)),
    register("<:dim>4</:dim><:access>write-only</:access>", name="load", offset="0x10").replace(
        "<:addressOffset>", "<:dim>4</:dim><:addressOffset>").replace("32</:size><:dim>4</:dim>", "32</:size>"),
    "</:addressBlock>", "<:addressUnitBits>8</:addressUnitBits>", "</:memoryMap></:memoryMaps>")

# What of a block is wrong, and the error behind its place.
WRONG = [
    (block(register(), base="NOWHERE"), "map.uart: ipxact:baseAddress is 'NOWHERE', which is no number or expression."),
    (block(register(), base="'h100000000"), "map.uart: ipxact:baseAddress is 4294967296, and may be 4294967295 at most."),
    (block(register(), base="-4"), "map.uart: ipxact:baseAddress is -4, and may be 4294967295 at most."),
    (block(register(size="0")), "map.uart.ctrl: size is '0', which is no number of bits."),
    (block(register(size="1/0")), "map.uart.ctrl: ipxact:size is '1/0', which is no number or expression."),
    (block(register(name="")), "map.uart.ipxact:register: it has no name, so nothing is made of it."),
    (block(register(field(width="0"))), "map.uart.ctrl.en: bitWidth is '0', which is no number of bits."),
    (block(register(field(offset="1e9"))), "map.uart.ctrl.en: ipxact:bitOffset is '1e9', which is no number or "
     "expression."),
    (block(register(field(offset="5000"))), "map.uart.ctrl.en: ipxact:bitOffset is 5000, and may be 1023 at most."),
    (block(register().replace("<:size>32</:size>", "")), "map.uart.ctrl: it has no size."),
    (component("2014"), "chip: it has no address blocks, so nothing is made of it."),
]


class Ipxact(support.Case):
    def imported(self, text, name="chip.xml"):
        source = self.lay_out({name: text}, name)
        return run("import", source, "-o", self.folder / "out"), source

    def registers(self, root):
        rows = csv.DictReader(io.StringIO(run("-q", "export", "--chip", root, "--format", "csv").out, newline=""))
        return [" ".join(f"{row[name]}" for name in ("register", "address", "width", "access", "field", "lsb", "msb",
                                                     "field_access", "reset", "options")).rstrip() for row in rows]

    def test_all_that_is_read(self):
        for year, text in (("2014", ALL_OF_2014), ("2009", ALL_OF_2009)):
            with self.subTest(year):
                told, source = self.imported(text, f"of_{year}.xml")
                self.expect(told, 0, out=None, err=None)
                out = self.folder / "out"
                self.expect(run("check", out / "soc.xml"), 0)
                files = "".join(f"{path.relative_to(out)}\n{path.read_text()}\n" for path in sorted(out.rglob("*.xml")))
                self.expect_golden(f"import/ipxact_{year}.txt", f"{files}{told.err.replace(str(source), source.name)}\n" +
                                   "\n".join(self.registers(out / "soc.xml")) + "\n")
                for path in out.rglob("*.*"):
                    path.unlink()
                # The file itself serves as well.
                self.assertEqual(run("show", "--chip", source, "0x40000000" if year == "2009" else "0x10000").status, 0)

    def test_what_is_wrong(self):
        for text, error in WRONG:
            with self.subTest(error):
                told, source = self.imported(text)
                self.expect(told, 1, out=None, err=None)
                line = told.err.splitlines()[0]
                self.assertRegex(line, rf"^{source}:\d+:\d+: error: ")
                self.assertIn(error, line)
                self.assertFalse((self.folder / "out").exists())

    def test_bad_documents_end_with_a_message(self):
        deep = ("<:registerFile><:name>f</:name><:addressOffset>0</:addressOffset><:range>4</:range>" * 80 + register() +
                "</:registerFile>" * 80)
        self.assertIn("its depth is 65, and may be 64 at most", self.imported(block(deep))[0].err)
        for cut in range(100, len(ALL_OF_2014), 500):
            told, _ = self.imported(ALL_OF_2014[:cut])
            self.assertEqual((told.status, "error: " in told.err), (1, True), told.err)

    def test_real_components(self):
        """Three components of an open library. What they say was read by hand."""
        folder = Path(options.descriptions).parent / "ipxact" if options.descriptions else None
        if not folder or not folder.is_dir():
            self.skipTest("the components of --descriptions are not there")
        wanted = {
            "sum_buffer.1.0": ["$registers.new_value 0x00000010 32 -w value 0 31 -w",
                               "$registers.new_result 0x00000014 32 r- value 0 31 r-"],
            "wb_slave_spi_master.1.0": ["$control.control 0x00000021 8 -w start_transfer 0 0 -w",
                                        "$status.status 0x00000010 8 r- transfer_complete 0 0 r-"],
            "memory_controller.1.0": [
                "$data.bytes 0x00000040 512",
                *(f"$registers.alu_status 0x00000000 16 r- {name} {bit} {bit} r-"
                  for bit, name in enumerate(("div_zero", "zero", "negative", "overflow"))),
                "$registers.modstart 0x00000002 16 rw address 1 15 rw",
                "$registers.modend 0x00000004 16 rw address 1 15 rw",
                "$registers.periph_status 0x00000006 16 rw state 0 1 rw",
                "$registers.periph_status 0x00000006 16 rw write 2 2 rw",
                "$registers.periph_status 0x00000006 16 rw ready 3 3 rw",
                "$registers.periph_read 0x00000008 16 rw data 0 15 rw",
                "$registers.periph_write 0x0000000A 16 rw data 0 15 rw",
                "$registers.periph_addr 0x0000000C 16 rw address 0 15 rw",
                *(f"$registers.work[{at}] 0x000000{14 + 2 * at:02X} 16 rw data 0 15 rw" for at in range(8))]}
        for name, registers in wanted.items():
            with self.subTest(name):
                self.expect(run("import", folder / f"{name}.xml", "-o", self.folder / name), 0, out=None, err=None)
                self.assertEqual(self.registers(self.folder / name / "soc.xml"), registers)


if __name__ == "__main__":
    support.main(__doc__)
