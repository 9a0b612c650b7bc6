"""Times whole processes on one processor, in turn, and prints their medians: the generators on a description of 25,000
registers, `veldmap headers` on two processors as well, the bare parsing of the same files, `veldmap headers` on twice
the description, and `veldmap check` on the plain files and on the same ones as encrypted containers."""

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time


def generate(registers, files, directory):
    script = pathlib.Path(__file__).with_name("generate_description.py")
    subprocess.run([sys.executable, script, "--registers", str(registers), "--files", str(files), "--out", directory],
                   check=True, stdout=subprocess.DEVNULL)


def encrypt(veldmap, source, target):
    """Every file below source as a container of the same name below target."""
    for path in pathlib.Path(source).rglob("*.xml"):
        place = pathlib.Path(target) / path.relative_to(source)
        place.parent.mkdir(parents=True, exist_ok=True)
        subprocess.run([veldmap, "-q", "encrypt", path, place], check=True)


def seconds(command, processors):
    os.sync()  # what earlier runs have written is not written back during this one
    os.sched_setaffinity(0, processors)
    begin = time.perf_counter()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return time.perf_counter() - begin


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--bin", required=True, help="directory of veldmap and parse_only")
    parser.add_argument("--runs", type=int, default=9)
    parser.add_argument("--work", metavar="DIR", help="where descriptions and headers lie, by default on the disk; "
                        "a directory in memory leaves out what the file system adds")
    arguments = parser.parse_args()
    available = sorted(os.sched_getaffinity(0))
    last, last_two = set(available[-1:]), set(available[-2:])  # interrupts of disks go to the first

    with tempfile.TemporaryDirectory(dir=arguments.work) as work:
        once, twice, sealed = (os.path.join(work, name) for name in ("once", "twice", "sealed"))
        generate(25_000, 250, once)
        generate(50_000, 500, twice)
        veldmap, parse_only = (os.path.join(arguments.bin, name) for name in ("veldmap", "parse_only"))
        encrypt(veldmap, once, sealed)
        commands = {
            "parse": [parse_only, once],
            "headers": [veldmap, "headers", "--chip", f"{once}/soc.xml", "-o"],
            "vhdl": [veldmap, "vhdl", "-q", "--chip", f"{once}/soc.xml", "-o"],
            "docs": [veldmap, "docs", "--chip", f"{once}/soc.xml", "-o"],
            "headers, twice": [veldmap, "headers", "--chip", f"{twice}/soc.xml", "-o"],
            "headers, two": [veldmap, "headers", "--chip", f"{once}/soc.xml", "-o"],
            "check": [veldmap, "check", f"{once}/soc.xml"],
            "check, encrypted": [veldmap, "check", f"{sealed}/soc.xml"],
        }
        times = {name: [] for name in commands}
        for run in range(arguments.runs + 1):  # the first warms up
            for name, command in commands.items():
                # Each run fills a directory of its own, and none is deleted before the end: ext4 passes over inodes
                # that were deleted in the last minutes, one by one, which makes the next 500 files ten times as slow.
                output = os.path.join(work, f"{name} {run}")
                taken = seconds(command + [output] if command[-1] == "-o" else command,
                                last_two if name.endswith("two") else last)
                if run > 0:
                    times[name].append(taken)
    for name, taken in times.items():
        print(f"{name:16} {statistics.median(taken):.3f} s  ({min(taken):.3f} to {max(taken):.3f})")
    for name, base, limit in (("headers", "parse", 2.0), ("headers, twice", "headers", 2.3), ("vhdl", "headers", 1.2),
                              ("docs", "headers", 1.5), ("check, encrypted", "check", 1.1)):
        ratio = statistics.median(a / b for a, b in zip(times[name], times[base]))
        print(f"{name} / {base}: {ratio:.2f}, at most {limit}")
    if len(available) > 1:
        ratio = statistics.median(a / b for a, b in zip(times["headers"], times["headers, two"]))
        print(f"headers / headers on two processors: {ratio:.2f}, at least 1.6")


if __name__ == "__main__":
    main()
