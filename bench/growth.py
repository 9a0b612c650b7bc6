#!/usr/bin/env python3
"""Measures whether time and memory grow with the description and no faster: each shape below in a small and a large
size, with several commands. Prints what an item (a register, mostly) takes in both, and the ratio, which is to be at
most 1.3. What a run takes without any item is not counted. Times are those of the processor, the least of a few runs on
one core."""

import argparse
import os
import pathlib
import resource
import subprocess
import sys
import tempfile

BOUND = 1.3


def write(path, lines):
    path.parent.mkdir(parents=True, exist_ok=True)
    with open(path, "w") as file:
        file.write('<?xml version="1.0" encoding="UTF-8"?>\n<archive>\n')
        file.writelines(line + "\n" for line in lines)
        file.write("</archive>\n")


def register(name):
    return (f'<reg name="{name}" protect="rw"><bits name="EN" pos="0" rst="1"/>'
            f'<bits name="MODE" pos="7:4" rst="0"/></reg>')


def module(name, registers):
    yield f'<module name="{name}">'
    yield from registers
    yield "</module>"


# Each shape writes so many items below a folder, whose root file is soc.xml.

def flat(folder, count):
    write(folder / "soc.xml", module("flat", (register(f"R{at}") for at in range(count))))


def in_files(folder, count):
    """A hundred registers in each file."""
    files = count // 100
    for at in range(files):
        write(folder / f"m{at}.xml", module(f"m{at}", (register(f"R{place}") for place in range(100))))
    write(folder / "soc.xml", (f'<include file="m{at}.xml"/>' for at in range(files)))


def instances(folder, count):
    def lines():
        yield from module("part", [register("CTRL")])
        for at in range(count):
            yield f'<instance name="PART{at}" type="part" address="0x{at * 16:X}"/>'
    write(folder / "soc.xml", lines())


def chained(folder, count):
    write(folder / "soc.xml", ['<var name="V0" value="1"/>',
                               *(f'<var name="V{at}" value="V{at - 1}+1"/>' for at in range(1, count))])


def entries(folder, count):
    write(folder / "soc.xml", ['<enum name="many">', *(f'<entry name="E{at}"/>' for at in range(count)), "</enum>"])


def options(folder, count):
    """A thousand options in each field."""
    def fields():
        for at in range(max(count // 1000, 1)):
            yield f'<reg name="R{at}"><bits name="F" pos="31:0"><options>'
            yield from (f'<option name="O{value}" value="{value}"/>' for value in range(min(count, 1000)))
            yield "</options></bits></reg>"
    write(folder / "soc.xml", module("chosen", fields()))


def equal_registers(folder, count):
    write(folder / "soc.xml", module("equal", (register("R") for _ in range(count))))


def equal_instances(folder, count):
    write(folder / "soc.xml", [*module("part", [register("CTRL")]),
                               *(f'<instance name="PART" type="part" address="0x{at * 16:X}"/>' for at in range(count))])


def equal_variables(folder, count):
    write(folder / "soc.xml", (f'<var name="V" value="{at}"/>' for at in range(count)))


def long_positions(folder, count):
    """256 fields in each register, whose places are expressions."""
    def registers():
        for at in range(count // 256):
            yield f'<reg name="R{at}">'
            yield from (f'<bits name="F{bit}" pos="{"FIRST+" * 40}{bit % 32}"/>' for bit in range(256))
            yield "</reg>"
    write(folder / "soc.xml", ['<var name="FIRST" value="0"/>', *module("wide", registers())])


def circle(folder, count):
    """Every file includes the root, so that each sees all before it, and uses names of others and one that all have."""
    for at in range(count):
        lines = ['<include file="soc.xml"/>', f'<var name="V{at}" value="{at}"/>', f'<var name="SIZE" value="{at % 7}"/>',
                 f'<enum name="e{at}"><entry name="E{at}" value="V{at // 2}+SIZE"/></enum>',
                 *module(f"m{at}", [f'<reg name="R"><bits name="F" pos="SIZE+V{at}-V{at}"/>'
                                    f'<bits name="G" pos="31"><options linkenum="e{at // 3}"/></bits></reg>'])]
        write(folder / f"m{at}.xml", lines)
    write(folder / "soc.xml", (f'<include file="m{at}.xml"/>' for at in range(count)))


def neighbours(folder, count):
    """Every file includes the one before it, and uses names of the first, of its neighbour and of its own."""
    for at in range(count):
        lines = [f'<include file="m{at - 1}.xml"/>'] if at else []
        lines += [f'<var name="V{at}" value="{at}"/>', f'<var name="SIZE" value="{at % 7}"/>',
                  *module(f"m{at}", [f'<reg name="R"><bits name="F" pos="SIZE+V0+V{max(at - 1, 0)}*0"/></reg>'])]
        write(folder / f"m{at}.xml", lines)
    write(folder / "soc.xml", (f'<include file="m{at}.xml"/>' for at in range(count)))


SHAPES = {
    # shape, sizes, commands, seldom run since they write much
    "a flat module": (flat, (10_000, 1_000_000), ("check", "headers", "vhdl")),
    "modules in files of their own": (in_files, (10_000, 990_000), ("check", "headers", "vhdl")),
    "many instances of one module": (instances, (10_000, 1_000_000), ("check", "headers", "vhdl")),
    "chained variables": (chained, (10_000, 1_000_000), ("check", "headers", "vhdl")),
    "entries of an enum": (entries, (10_000, 1_000_000), ("check", "headers", "vhdl")),
    "options of fields": (options, (10_000, 1_000_000), ("check", "headers", "vhdl")),
    "registers of equal names": (equal_registers, (10_000, 1_000_000), ("check", "headers", "vhdl")),
    "instances of equal names": (equal_instances, (10_000, 1_000_000), ("check", "headers", "vhdl")),
    "variables of equal names": (equal_variables, (10_000, 1_000_000), ("check", "headers", "vhdl")),
    "fields with long positions": (long_positions, (2_560, 256_000), ("check", "vhdl")),
    "files in a circle": (circle, (1_000, 9_000), ("check", "headers", "vhdl")),
    "files that include their neighbours": (neighbours, (1_000, 9_000), ("check", "headers", "vhdl")),
}


# A process counts as its memory what the one had that started it, so a small one does.
STARTER = """
import os, sys
child = os.posix_spawn(sys.argv[1], sys.argv[1:], os.environ)
_, status, used = os.wait4(child, 0)
print(used.ru_utime + used.ru_stime, used.ru_maxrss)
sys.exit(os.waitstatus_to_exitcode(status))
"""


def usage(veldmap, command, root, work, runs):
    """Seconds and bytes of one run."""
    words = {"check": ["check", "-q"], "lint": ["check", "-q"]}.get(command, [command, "-q", "-o", f"{work}/out", "--chip"])
    words = [veldmap, words[0], *([] if command == "lint" else ["--no-lint"]), "-j", "1", *words[1:], str(root)]
    seconds, memory = [], []
    for _ in range(runs):
        done = subprocess.run([sys.executable, "-ISc", STARTER, *words], stdout=subprocess.PIPE, text=True)
        if done.returncode != 0:
            sys.exit(f"{' '.join(words)}: exit status {done.returncode}")
        taken, kilobytes = done.stdout.split()[-2:]
        seconds.append(float(taken))
        memory.append(int(kilobytes) * 1024)
    return min(seconds), min(memory)


def measure(veldmap, shape, commands, work, runs):
    write_shape, sizes, own_commands = SHAPES[shape]
    empty = work / "empty"
    write(empty / "soc.xml", [])
    for size in sizes:
        write_shape(work / str(size), size)
    isBeyond = False
    for command in commands or own_commands:
        fixed = usage(veldmap, command, empty / "soc.xml", work / f"{command} empty", runs)
        each = []
        for size in sizes:
            total = usage(veldmap, command, work / str(size) / "soc.xml", work / f"{command} {size}",
                          runs * 3 if size == sizes[0] else 1)
            each.append([(whole - base) / size for whole, base in zip(total, fixed)])
        ratios = [large / small if small > 0 else float("inf") for small, large in zip(*each)]
        marks = ["" if ratio <= BOUND else " !" for ratio in ratios]
        isBeyond = isBeyond or any(marks)
        print(f"{shape:36} {command:8} {each[0][0] * 1e6:9.2f} {each[1][0] * 1e6:9.2f} {ratios[0]:6.2f}{marks[0]:2}"
              f" {each[0][1]:9.0f} {each[1][1]:9.0f} {ratios[1]:6.2f}{marks[1]}", flush=True)
    return isBeyond


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--bin", required=True, help="directory of veldmap")
    parser.add_argument("--shape", metavar="WORD", default="", help="only shapes with this word in their names")
    parser.add_argument("--commands", nargs="+", help="in place of those of each shape; lint is check with lint")
    parser.add_argument("--runs", type=int, default=2)
    parser.add_argument("--work", metavar="DIR", help="where descriptions and outputs lie")
    arguments = parser.parse_args()
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    print(f"{'':36} {'':8} {'µs small':>9} {'large':>9} {'ratio':>6}   {'bytes':>9} {'large':>9} {'ratio':>6}")
    isBeyond = False
    for shape in SHAPES:
        if arguments.shape in shape:
            with tempfile.TemporaryDirectory(dir=arguments.work) as work:
                isBeyond = measure(os.path.join(arguments.bin, "veldmap"), shape, arguments.commands,
                                   pathlib.Path(work), arguments.runs) or isBeyond
    if isBeyond:
        print(f"! is beyond {BOUND}")


if __name__ == "__main__":
    main()
