"""Times whole processes, in turn, and prints their medians: the bare parsing of a description of 25,000 registers with
expat and with QDomDocument; `veldmap check` and the generators on the same files, alone and three in one build, on one
processor and on two; `veldmap headers` on twice the description; a build of what has not changed; and `veldmap check` with
lint, and on the same files as encrypted containers. What nothing else is said of runs on one processor."""

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
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - begin


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--bin", required=True, help="directory of veldmap, parse_only and parse_expat")
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
        veldmap, parse_only, parse_expat = (os.path.join(arguments.bin, name)
                                            for name in ("veldmap", "parse_only", "parse_expat"))
        encrypt(veldmap, once, sealed)
        root = f"{once}/soc.xml"
        os.environ["XDG_CACHE_HOME"] = os.path.join(work, "cache")

        def build(directory):
            return [veldmap, "build", "-q", "--no-lint", "--chip", root, "--headers", f"{directory}/headers",
                    "--vhdl", f"{directory}/vhdl", "--docs", f"{directory}/docs"]
        on_both = {
            "check": [veldmap, "check", "--no-lint", root],
            "headers": [veldmap, "headers", "--no-lint", "--chip", root, "-o"],
            "vhdl": [veldmap, "vhdl", "-q", "--no-lint", "--chip", root, "-o"],
            "docs": [veldmap, "docs", "--no-lint", "--chip", root, "-o"],
            "build": build("{output}"),
        }
        unchanged = build(os.path.join(work, "unchanged"))
        for _ in range(2):  # the second finds that all is up to date
            seconds(unchanged, last)
            time.sleep(0.2)
        commands = {
            "expat": [parse_expat, once],
            "parse": [parse_only, once],
            **on_both,
            **{f"{name}, two": command for name, command in on_both.items()},
            "site": [veldmap, "site", "--no-lint", "--chip", root, "-o"],
            "headers, twice": [veldmap, "headers", "--no-lint", "--chip", f"{twice}/soc.xml", "-o"],
            "build, unchanged": unchanged,
            "check, lint": [veldmap, "check", root],
            "check, encrypted": [veldmap, "check", "--no-lint", f"{sealed}/soc.xml"],
        }
        times = {name: [] for name in commands}
        for run in range(arguments.runs + 1):  # the first warms up
            for name, command in commands.items():
                # Each run fills a directory of its own, and none is deleted before the end: ext4 passes over inodes
                # that were deleted in the last minutes, one by one, which makes the next 500 files ten times as slow.
                output = os.path.join(work, f"{name} {run}")
                words = [word.replace("{output}", output) for word in command]
                taken = seconds(words + [output] if words[-1] == "-o" else words,
                                last_two if name.endswith("two") else last)
                if run > 0:
                    times[name].append(taken)
    for name, taken in times.items():
        print(f"{name:16} {statistics.median(taken):.3f} s  ({min(taken):.3f} to {max(taken):.3f})")
    bounds = [("check", "expat", 2.2), ("headers", "expat", 4.0), ("vhdl", "expat", 4.5), ("docs", "expat", 5.0),
              ("build", "expat", 8.0)]
    if len(available) > 1:
        bounds += [("check, two", "expat", 1.6), ("headers, two", "expat", 2.5), ("vhdl, two", "expat", 3.0),
                   ("docs, two", "expat", 3.0), ("build, two", "expat", 5.0)]
    bounds += [("site", "docs", 1.5), ("headers, twice", "headers", 2.3), ("check, encrypted", "check", 1.1),
               ("build, unchanged", "check", 1.1)]
    for name, base, limit in bounds:
        ratio = statistics.median(a / b for a, b in zip(times[name], times[base]))
        print(f"{name} / {base}: {ratio:.2f}, at most {limit}")


if __name__ == "__main__":
    main()
