"""The schema for editors, held against what the program says of the descriptions of the other tests."""

import json
import re
import shutil
import subprocess
import unittest
from pathlib import Path

import support
from support import archive, run

support.LINTED.clear()

TESTS = support.GOLDEN.parent
SCHEMA = TESTS.parent / "schema/veldmap.xsd"

# What lint finds in a description that loads, and the schema refuses.
HERE_TOO = {"unknown-attribute", "unused-attribute", "unused-tag", "unknown-value"}
# What stops a load and shows in one tag without knowing the others.
STOPS_AT_A_TAG = re.compile("foreign-tag-.*|.*-without-.*|range-direction|cut-size")

# Golden files of contents of an archive with questions about them, and what the contents stand in.
CASES = {"check/generated_names.txt": "{}", "check/memory_map.txt": "{}", "check/names.txt": "{}",
         "check/numbers.txt": "{}", "check/structures.txt": "{}", "check/texts.txt": "{}", "check/words.txt": "{}",
         "check/registers.txt": '<module name="uart">{}\n</module>', "access/lists.txt": "{}",
         "access/paths.txt": "{}", "headers/types.txt": "{}", "headers/macros.txt": "{}", "vhdl/maps.txt": "{}",
         "vhdl/findings.txt": "{}"}


def refused(files):
    """Which of the files the schema refuses."""
    judged = subprocess.run(["xmllint", "--noout", "--nonet", "--schema", SCHEMA, *files], capture_output=True,
                            text=True, check=False)
    verdicts = {Path(name): verdict for name, verdict in
                re.findall(r"^(.+) (validates|fails to validate)$", judged.stderr, re.MULTILINE)}
    if len(verdicts) != len(set(files)):
        raise AssertionError(judged.stderr[-2000:])
    return {file for file in files if verdicts[file] != "validates"}


def in_lower_case(text):
    """The description with the tag names that the schema knows. Texts that look like tags don't matter."""
    return re.sub(r"</?[A-Za-z0-9]+", lambda match: match[0].lower(), text)


def cases_of(name, frame):
    for case in (support.GOLDEN / name).read_text().split("\n----------\n"):
        yield archive(frame.format(in_lower_case(re.split(r"^=> ", case, maxsplit=1, flags=re.MULTILINE)[0])))


class Schema(support.Case):
    def write_all(self, texts):
        paths = []
        for number, text in enumerate(texts):
            paths.append(self.folder / f"{number}.xml")
            paths[-1].write_text(text)
        return paths

    def findings(self, path):
        return json.loads(run("check", path, "--format=json", "-Wall", "--max-messages=0").out)

    def test_accepts_what_is_written_to_be_read(self):
        """The examples, what the tests keep in files, and real chips."""
        files = [*support.EXAMPLES.rglob("*.xml"), *(TESTS / "consumer").glob("*.xml")]
        for chip in support.chips():
            files += chip.rglob("*.xml")
        self.assertGreater(len(files), 10)
        self.assertEqual(refused(sorted(set(files))), set())

    def test_agrees_with_lint(self):
        """On what loads. An attribute that wants another one beside it is beyond the schema."""
        paths = self.write_all(text for name, frame in CASES.items() for text in cases_of(name, frame))
        told = refused(paths)
        judged = {True: 0, False: 0}
        for path in paths:
            found = self.findings(path)
            if any(finding["severity"] == "error" for finding in found):
                continue
            expected = any(finding["rule"] in HERE_TOO and "since the field is not cut" not in finding["text"]
                           for finding in found)
            self.assertEqual(path in told, expected, f"{path.read_text()}\n{found}")
            judged[expected] += 1
        self.assertGreater(judged[False], 50)
        self.assertGreater(judged[True], 5)

    def test_refuses_what_stops_a_load(self):
        cases = (support.GOLDEN / "loading/refused.txt").read_text().split("\n\n")
        paths = self.write_all(archive(in_lower_case(case.partition("\n=> ")[0].replace("^", ""))) for case in cases)
        told = refused(paths)
        expected = {path for path in paths
                    if any(STOPS_AT_A_TAG.fullmatch(finding["rule"]) for finding in self.findings(path))}
        self.assertGreater(len(expected), 25)
        self.assertEqual([path.read_text() for path in sorted(expected - told)], [])

    def test_an_editor_may_find_it_in_the_description(self):
        chip = self.lay_out({"root.xml": '<archive xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"'
                                         f' xsi:noNamespaceSchemaLocation="{SCHEMA}"/>'})
        self.assertEqual(refused([chip]), set())
        self.assertEqual(self.findings(chip), [])


if __name__ == "__main__":
    def prepare():
        if not shutil.which("xmllint"):
            support.skip("xmllint is not there (libxml2-utils)")

    support.main(__doc__, prepare=prepare)
