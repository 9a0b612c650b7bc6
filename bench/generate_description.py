#!/usr/bin/env python3
"""Writes the description of a made-up chip of any size, for measuring.

The same arguments give the same files, byte by byte. A register is one reg tag, also where an array repeats it, and
each piece of a cut bits tag is a field. There are exactly twice as many fields as registers. Prints the path of the
root file.
"""

import argparse
from pathlib import Path

MODULE_SIZES = (12, 16, 10, 20, 14, 18)         # registers of a module, in turn
FIELD_COUNTS = (2, 3, 1, 4, 0)                  # fields of every other register; its neighbour makes them up to four
NAMES = ("ENABLE", "MODE", "DIVIDER", "LEVEL", "STATUS", "SELECT", "COUNT", "THRESHOLD")
REGISTERS = ("CTRL", "CONFIG", "STATUS", "INTENSET", "INTENCLR", "DATA", "PRESCALER", "TIMING", "LIMIT")
ACCESSES = ("rw", "rw", "r", "w", "rs", "rc")
OPTIONS = ("disabled", "enabled", "single", "continuous")
ENUMS = {"on_off": ("OFF", "ON"), "level": ("LOW", "MIDDLE", "HIGH", "FULL"), "edge": ("NONE", "RISE", "FALL", "BOTH")}
PAGE = 0x1000


def pick(choices, number):
    return choices[number % len(choices)]


def comment(text, present=True):
    return f"<comment>{text}</comment>" if present else ""


def attribute(name, value):
    return f' {name}="{value}"' if value else ""


def write(path, lines):
    path.parent.mkdir(parents=True, exist_ok=True)
    content = (line if line.startswith(" ") else f"  {line}" for line in lines if line.strip())
    path.write_text("\n".join(['<?xml version="1.0" encoding="UTF-8"?>', "<archive>", *content, "</archive>", ""]))


def options_of(number, width):
    """Names for the values of some fields: their own, those of a shared enum, or only the macros that they want."""
    if number % 3 == 0 and width >= 2:
        names = OPTIONS[:2 + number % 2 * 2]
        entries = "".join(f'<option name="{name}" value="{index}">{comment(f"the unit is {name}", number % 2)}</option>'
                          for index, name in enumerate(names))
        return f"<options>{entries}<default/>{pick(('', '<mask/>', '<mask/><shift/>'), number // 3)}</options>"
    if number % 5 == 1:
        return f'<options linkenum="{"on_off" if width == 1 else pick(("level", "edge"), number)}"/>'
    return "<options><mask/><shift/></options>" if number % 7 == 2 else ""


def position(unit, number, lowest, highest):
    """One number, two in either order, or an expression of a variable, as people write them."""
    if lowest == highest:
        return str(lowest) if number % 4 else f"0x{lowest:X}"
    if lowest == 0 and number % 5 == 0:
        return f"{unit}_FIRST+{highest}:{unit}_FIRST"
    return f"{lowest}:{highest}" if number % 11 == 7 else f"{highest}:{lowest}"


def fields_of(unit, number, bits, count):
    """The bits tags of one register: count fields, each in its part of the register, with gaps between."""
    if count > 1 and number % 8 == 3:
        piece = bits // count // 2
        place = f"{piece * count - 1}:0"
        yield f'      <bits name="LINES" pos="{place}" cut="{piece}" cutprefix="LINE" access="rw" rst="0">'
        yield f"        {comment('one piece for each line')}"
        yield "      </bits>"
        return
    part = bits // max(count, 1)
    for index in range(count):
        key = number * 4 + index
        width = 1 if key % 3 == 1 else max(1, part - key % 3 - 1)
        reset = pick(("0", "1", f"0x{(1 << width) - 1:X}", "no"), key)
        name = pick(NAMES, key) + (f"_{number % 100}" if number % 3 else "")
        place = position(unit, key, index * part, index * part + width - 1)
        display = attribute("display", pick(("", "hex", "", "bin"), key))
        yield f'      <bits name="{name}{index}" pos="{place}" access="{pick(ACCESSES, key)}" rst="{reset}"{display}>'
        yield "        " + comment(f"{name.lower()} of part {index}, 0 &lt; n &amp;&amp; n &lt; {width + 1}", key % 6)
        yield f"        {options_of(key, width)}"
        yield "      </bits>"


def register(unit, number, total):
    """The lines of the register of this number, out of the total of the whole description."""
    tag, bits = (("reg8", 8) if number % 13 == 7 else ("reg16", 16) if number % 11 == 5 else
                 (pick(("reg32", "reg"), number), 32))
    count = pick(FIELD_COUNTS, number // 2)
    if number % 2:
        count = 4 - count
    if number == total - 1 and total % 2:
        count = 2
    array = pick((f"{unit}_NB_LINES", "3", "0x2"), number // 9) if number % 9 == 4 else ""
    name, rights = f"{pick(REGISTERS, number)}_{number % 100}", pick(("rw", "r", "w"), number)
    yield f'    <{tag} name="{name}" protect="{rights}"{attribute("count", array)}>'
    yield "      " + comment(f"register {number} of the chip,<br/>one of those that its unit has", number % 10)
    yield from fields_of(unit, number, bits, count)
    yield f"    </{tag}>"


def type_lines(unit, tag, name, numbers, total, member):
    """A module or typedef of these registers. Some stand in an inner struct, and holes of each unit lie between."""
    yield f'  <{tag} name="{name}"{attribute("category", unit if tag == "module" else "")}>'
    yield "    " + comment(f"{name}, a {tag} of {len(numbers)} registers")
    inner = range(3, 6) if len(numbers) % 4 == 0 else ()
    for place, number in enumerate(numbers):
        if place in inner and place == inner.start:
            yield f'    <struct name="CHANNEL"{attribute("count", pick(("", f"{unit}_NB_LINES"), number))}>'
        yield from register(unit, number, total)
        if place in inner and place == inner.stop - 1:
            yield "    </struct>"
        elif place % 6 == 5:
            yield f'    <hole{attribute("size", pick(("", "0x40", "8*2", "8"), number))}/>'
    if member:
        yield f'    <instance name="PORT" type="{member}" count="{unit}_NB_LINES"/>'
    yield f"  </{tag}>"


def write_unit(path, index, numbers, total):
    """One file of a unit's modules. Every fourth file has a typedef that the module behind it holds."""
    unit = f"UNIT{index}"
    lines = [comment(f"unit {index}"), '<include file="../common/enums.xml"/>',
             f'<spacer>{comment("numbers of the unit")}</spacer>',
             f'<var name="{unit}_NB_LINES" value="{2 + index % 3}">{comment("lines of the unit")}</var>',
             f'<var name="{unit}_FIRST" value="0x0"/>', f'<var name="{unit}_DEPTH" value="{unit}_NB_LINES*0x10"/>']
    modules, member = [], ""
    while numbers:
        place = len(modules) + bool(member)
        some, numbers = numbers[:pick(MODULE_SIZES, index + place)], numbers[pick(MODULE_SIZES, index + place):]
        if index % 4 == 1 and place == 0 and numbers:
            member = f"unit{index}_port"
            lines += type_lines(unit, "typedef", member, some, total, "")
            continue
        modules.append(f"unit{index}_m{len(modules)}")
        lines += type_lines(unit, "module", modules[-1], some, total, member if len(modules) == 1 else "")
    write(path, lines)
    return modules


def write_chip(folder, registers, files):
    write(folder / "memmap.xml", [
        comment("memory map"),
        f'<var name="CHIP_PAGE" value="0x{PAGE:X}" global="yes">{comment("step of the map")}</var>',
        '<var name="REGION_BASE" value="0x40000000"/>',
        '<range name="address_bits" left="31" right="0"/>'])
    write(folder / "common/enums.xml", [f'<enum name="{name}">' + "".join(
        f'<entry name="{name.upper()}_{entry}"/>' for entry in entries) + f'<bound name="{name.upper()}_COUNT"/></enum>'
        for name, entries in ENUMS.items()])
    names = [f"units/unit{index}.xml" for index in range(files)]
    modules = []
    for index, name in enumerate(names):
        numbers = range(registers * index // files, registers * (index + 1) // files)
        modules += write_unit(folder / name, index, numbers, registers)
    placed = [(module, copy) for number, module in enumerate(modules) for copy in range(2 if number % 4 == 2 else 1)]
    instances = [f'<instance name="{module.upper()}_{copy}" type="{module}" address="REGION_BASE+'
                 f'{pick((f"CHIP_PAGE*{page}", f"0x{page * PAGE:X}"), page)}"/>'
                 for page, (module, copy) in enumerate(placed)]
    includes = [f'<include file="{name}"/>' for name in ("memmap.xml", *names)]
    write(folder / "soc.xml", [comment(f"a chip of {registers} registers"), *includes, *instances])
    return folder / "soc.xml"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--registers", type=int, default=25000)
    parser.add_argument("--files", type=int, default=250, help="files of registers; three more hold what they share")
    parser.add_argument("--out", type=Path, required=True, metavar="DIR")
    options = parser.parse_args()
    if options.registers < 1 or not 1 <= options.files <= options.registers:
        parser.error("there must be a file and at least one register for each")
    print(write_chip(options.out, options.registers, options.files))


if __name__ == "__main__":
    main()
