"""The manual of the program, docs/veldmap.1: it has every command and every option, in the words of the help. Where this
fails because the help has changed, UPDATE_GOLDEN=1 writes that part of the manual anew."""

import os
import re
import shutil
import subprocess
import unittest
from pathlib import Path
from typing import NamedTuple

import support
from support import run

MANUAL = Path(__file__).resolve().parents[2] / "docs/veldmap.1"
BEGIN, END = '.\\" generated\n', '.\\" end of what is generated\n'

# What the help says of an option beside its name, its value and its meaning.
RELATION = re.compile(r"(?:(?:Excludes|Needs): (\S+)|REQUIRED|Env:\S+)")


class Entry(NamedTuple):
    names: str                                  # "-o,--output DIR", or the name of a word
    meaning: str


class Help(NamedTuple):
    meaning: str
    usage: str
    groups: dict                                # entries by the heading of their group
    footer: list                                # lines


def help_of(*command):
    """What the program prints for --help, taken apart."""
    printed = run(*command, "--help")
    if printed.status != 0:
        raise AssertionError(printed.err)
    front, _, rest = printed.out.partition("Usage: ")
    usage, _, rest = rest.partition("\n")
    groups, footer = {}, []
    heading = None
    for line in rest.splitlines():
        if footer or re.match(r"Examples?:$", line):
            footer.append(line)
        elif re.match(r"\S.*:$", line):
            heading = groups.setdefault(line[:-1], [])
        elif line.startswith(" " * 20) and heading:             # the meaning of a long name
            heading[-1] = Entry(heading[-1].names, f"{heading[-1].meaning} {line.strip()}".strip())
        elif line.startswith("  ") and heading is not None:
            names, _, meaning = line[2:].partition("  ") if "  " in line[2:] else split_at_column(line)
            required = "(required)" if "REQUIRED" in names else ""
            heading.append(Entry(RELATION.sub("", names).strip(), f"{meaning.strip()} {required}".strip()))
        elif line:
            footer.append(line)
    return Help(" ".join(front.split()), usage, groups, footer)


def split_at_column(line):
    """Names and meaning, where the names fill their column up to its last place or stand in a line of their own."""
    return (line[2:30], "", line[30:]) if line[29:30] == " " else (line[2:], "", "")


def roff(text):
    """The text as a line of a manual."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq")
    return f"\\&{text}" if text.startswith((".", "\\(aq")) else text


def commands():
    return [entry.names for entry in help_of().groups["Subcommands"]]


def lines_of_entries(entries):
    for entry in entries:
        if not entry.names.startswith("-h,"):
            yield ".TP"
            yield f".B {roff(entry.names)}"
            yield roff(entry.meaning)


def lines_of_footer(footer):
    is_example = False
    before = ""
    for line in footer:
        if re.match(r"Examples?:$", line):
            if is_example:
                yield ".EE"
            yield from (".PP", ".EX")
            is_example = True
        elif is_example:
            yield roff(line.strip()) if line else ".EE"
            is_example = bool(line)
        elif line:
            yield from (roff(line),) if before else (".PP", roff(line))
        before = line
    if is_example:
        yield ".EE"


def generated():
    """The chapters on options and commands."""
    program = help_of()
    yield ".SH OPTIONS"
    yield from (".TP", ".B \\-h, \\-\\-help", "Print help and exit; behind a command, that of the command.")
    yield from lines_of_entries(program.groups["Options"])
    yield ".SH COMMANDS"
    shared = {}                                 # which commands have a group, by its heading and entries
    for command in commands():
        told = help_of(command)
        yield f".SS {roff(told.usage.removeprefix('veldmap '))}"
        yield roff(f"{told.meaning}.")
        for heading, entries in told.groups.items():
            if heading in ("Options", "Positionals"):
                yield from lines_of_entries(entries)
            else:
                shared.setdefault((heading, tuple(entries)), []).append(command)
        yield from lines_of_footer(told.footer)
    yield ".SH OPTIONS OF SEVERAL COMMANDS"
    for (heading, entries), owners in shared.items():
        yield f".SS {heading}"
        yield f"Of {', '.join(owners)}."
        yield from lines_of_entries(entries)


class Manual(support.Case):
    def test_it_says_what_the_help_says(self):
        text = MANUAL.read_text()
        front, rest = text.split(BEGIN)
        made = f"{front}{BEGIN}" + "".join(f"{line}\n" for line in generated()) + END + rest.split(END)[1]
        if "UPDATE_GOLDEN" in os.environ:
            MANUAL.write_text(made)
        self.assertEqual(MANUAL.read_text(), made)

    def test_it_names_every_option(self):
        """Whatever the taking apart above may have missed."""
        text = MANUAL.read_text().replace("\\-", "-").replace("\\(aq", "'")
        for command in ([], *([name] for name in commands())):
            names = set(re.findall(r"(?<![\w-])--?[A-Za-z][\w-]*", run(*command, "--help").out))
            missing = {name for name in names if not re.search(rf"(?<![\w-]){re.escape(name)}(?![\w-])", text)}
            self.assertEqual(missing, set(), command)

    def test_it_is_well_formed(self):
        for checker in (["groff", "-man", "-Tutf8", "-ww", "-z"], ["mandoc", "-Tlint", "-Wwarning"]):
            if shutil.which(checker[0]):
                break
        else:
            raise unittest.SkipTest("neither groff nor mandoc is installed")
        checked = subprocess.run([*checker, MANUAL], capture_output=True, text=True, check=False)
        self.assertEqual((checked.returncode, checked.stdout + checked.stderr), (0, ""))


if __name__ == "__main__":
    support.main("The manual of the program")
