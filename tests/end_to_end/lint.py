"""Lint as a user has it: what is told, what counts as an error, and how rules are turned on and off."""

import fcntl
import json
import os
import pty
import struct
import subprocess
import termios
import urllib.parse

import support
from support import archive, options, run

support.LINTED.clear()

# Lines 3 to 5 have one finding each; that of line 5 is of a rule that is off.
UART = archive('<module name="uart"><reg32 name="ctrl" protect="rw">', '<bits name="en" pos="0" access="rw" acess="r"/>',
               '<bits name="mode" pos="3:2" access="rw"/><bits name="fast" pos="2:1" access="rw"/></reg32></module>',
               '<typedef name="spare"><uint8 name="a"/></typedef>', '<instance name="U" type="uart" address="0x1000"/>')
WIDE = archive('<module name="uart"><reg32 name="ctrl" protect="rw">', '<bits name="en" pos="11:-(-8)" cut="2" access="rw"/>',
               '</reg32></module>')
MISSING = archive('<include file="missing.xml"/>')


class Lint(support.Case):
    def setUp(self):
        super().setUp()
        self.root = self.lay_out({"root.xml": UART, "wide.xml": WIDE, "missing.xml.in": MISSING})

    def told(self, *arguments, status=0):
        """The findings of a check: line, severity and rule of each."""
        checked = run("check", self.root, *arguments)
        self.expect(checked, status, err=None)
        found = []
        for line in checked.err.splitlines():
            place, severity, rest = line.split(": ", 2)
            self.assertTrue(place.startswith(f"{self.root}:") and rest.endswith("]"), line)
            found.append((int(place.split(":")[-2]), severity, rest.rpartition(" [")[2][:-1]))
        return found

    def test_findings_and_their_severities(self):
        both = [(3, "warning", "unknown-attribute"), (4, "warning", "field-overlap")]
        unused = (5, "note", "unused-type")
        as_errors = lambda found: [(line, "error", rule) for line, _, rule in found]
        self.assertEqual(self.told(), both)
        self.assertEqual(self.told("-Wno-field-overlap"), both[:1])
        self.assertEqual(self.told("-W", "no-field-overlap"), both[:1])
        self.assertEqual(self.told("--no-warn", "field-overlap", "-Wfield-overlap"), both[:1])
        self.assertEqual(self.told("-Wunused-type"), [*both, unused])
        self.assertEqual(self.told("-Wall", "-Wno-unknown-attribute"), [both[1], unused])
        self.assertEqual(self.told("-Werror=field-overlap", status=1), [both[0], *as_errors(both[1:])])
        self.assertEqual(self.told("-Werror=unused-type", status=1), [*both, *as_errors([unused])])
        for strict in ("--strict", "-Werror"):
            self.assertEqual(self.told(strict, status=1), as_errors(both))
        self.assertEqual(self.told("--strict", "-Wno-error=field-overlap", status=1), [*as_errors(both[:1]), both[1]])
        self.assertEqual(self.told("-q"), [])
        self.assertEqual(self.told("-q", "-Werror=field-overlap", status=1), as_errors(both[1:]))

    def test_wrong_words_are_wrong_usage(self):
        near = "error: There is no rule '{}'; did you mean 'field-overlap'?\n"
        for words, id in ((["-Wfeild-overlap"], "feild-overlap"), (["-W", "no-field_overlap"], "field_overlap"),
                          (["-Werror=fieldoverlap"], "fieldoverlap"), (["--no-warn=field-overlaps"], "field-overlaps")):
            self.expect(run("check", self.root, *words), 2, err=near.format(id))
        self.expect(run("check", self.root, "-Wqqqq"), 2,
                    err="error: There is no rule 'qqqq'; 'veldmap rules' shows which there are.\n")
        self.expect(run("check", self.root, "--max-messages", "-1"), 2, err=None)
        self.expect(run("check", self.root, "-W"), 2, err=None)
        self.expect(run("tree", "--chip", self.root, "-Wall"), 2, err=None)

    def test_without_lint_only_the_load_is_told(self):
        self.expect(run("check", self.root, "--no-lint", "-Wall", "--strict"), 0)
        wide = self.folder / "wide.xml"
        self.expect(run("headers", "--chip", wide, "-o", self.folder / "out", "--no-lint"), 0)
        self.assertTrue((self.folder / "out/wide.h").exists())
        for command in (["tree"], ["show", "$U"], ["complete", "$"], ["eval", "1"]):
            self.expect(run(*command, "--chip", self.root), 0, out=None)

    def test_generating_commands_tell_and_write(self):
        for command in (["headers", "-o"], ["vhdl", "-o"], ["docs", "-o"], ["site", "-o"],
                        ["build", "--site"]):
            out = self.folder / command[0]
            done = run(*command, out, "--chip", self.root)
            self.expect(done, 0, err=None)
            self.assertIn("[field-overlap]", done.err)
            self.assertTrue(any(out.iterdir()))
            # Nothing is written with an error, whether the user or the rule makes it one.
            for more in (["--chip", self.root, "--strict"], ["--chip", self.folder / "wide.xml"]):
                done = run(*command, self.folder / "none", *more)
                self.expect(done, 1, err=None)
                self.assertIn("error: ", done.err)
                self.assertFalse((self.folder / "none").exists())

    def test_strict_is_for_loading_too(self):
        root = self.lay_out({"includes.xml": MISSING}, "includes.xml")
        warned = run("check", root, "--no-lint")
        self.expect(warned, 0, err=f"warning: Unable to open file {self.folder}/missing.xml\n"
                                   f"{root}:0:0: warning: Skipped.\n")
        self.expect(run("check", root, "--no-lint", "--strict"), 1, err=warned.err.replace("warning:", "error:"))

    def test_missing_includes_have_a_line(self):
        root = self.lay_out({"includes.xml": archive('<include file="a.xml"/>'), "a.xml": MISSING}, "includes.xml")
        at = f"{self.folder}/a.xml:2:29: "
        self.expect(run("check", root), 0, err=f"{at}warning: Unable to open file {self.folder}/missing.xml\n"
                                               f"{at}note: No such file or directory\n"
                                               f"{self.folder}/a.xml:0:0: warning: Skipped.\n")
        self.expect(run("check", root, "--strict"), 1, err=None)
        [missing, _] = json.loads(run("check", root, "--format=json").out)
        self.assertEqual((missing["line"], missing["note"]), (2, "No such file or directory"))
        self.assertEqual([(one["file"], one["line"], one["text"]) for one in missing["related"]],
                         [(str(root), 2, "included from here")])

    def test_names_that_break_what_is_made(self):
        text = archive('<module name="t"><reg name="r" protect="r"/></module>',
                       '{}<instance name="J&quot;);alert(3);(&quot;" type="t" address="0"/>')
        bad = self.lay_out({"bad.xml": text.format("")}, "bad.xml")
        waived = self.lay_out({"good.xml": text.format("<!-- veldmap: allow unusable-name -->")}, "good.xml")
        for command in ("headers", "vhdl", "docs"):
            out = self.folder / "out"
            told = run(command, "--chip", bad, "-o", out)
            self.expect(told, 1, err=None)
            self.assertIn(f"{bad}:3:65: error: ", told.err)
            self.assertFalse(out.exists())
        self.expect(run("check", waived), 0)
        self.expect(run("check", bad, "-Wno-unusable-name"), 0)
        self.expect(run("check", bad, "--no-lint"), 0)

    def test_threads_make_no_difference(self):
        told = {run("check", self.root, "-Wall", "--max-messages=0", "-j", threads).err for threads in (1, 2, 7)}
        self.assertEqual(len(told), 1)

    def test_files_of_options(self):
        file = self.folder / "my options"
        file.write_text("# of this project\n\n-Wno-field-overlap  # we have unions\n-W unused-type\n--max-messages 7")
        self.assertEqual([rule for *_, rule in self.told(f"@{file}")], ["unknown-attribute", "unused-type"])
        file.write_text(f"--chip {self.root}\r\n\t-Wno-all\r\n")
        self.expect(run("check", f"@{file}"), 0)
        file.write_text("-Wno-such-rule")
        self.expect(run("check", self.root, f"@{file}"), 2, err=None)
        self.expect(run("check", self.root, "@none"), 2,
                    err="error: The file of options none can't be read: No such file or directory\n")
        self.expect(run("check", self.root, f"@{self.folder}"), 2, err=None)
        self.expect(run("eval", '"@none"'), 0, out="@none\n")
        self.expect(run("complete", "--chip", self.root, "@none"), 0, out="$U\t\t\t\n")

    def test_many_findings_are_cut(self):
        lines = [f'<bits name="b{number}" pos="{number}" access="rw" acess="r"/>' for number in range(32)]
        registers = [f'<reg32 name="r{number}">{"".join(lines[:10])}</reg32>' for number in range(12)]
        root = self.lay_out({"root.xml": archive('<module name="m">', *registers, "</module>")})
        words = ("check", root, "-Wno-all", "-Wunknown-attribute")
        told = run(*words).err.splitlines()
        self.assertEqual(len(told), 101)
        self.assertEqual(told[-1], "note: 20 more findings are not told; --max-messages=0 tells all.")
        self.assertEqual(len(run(*words, "--max-messages=0").err.splitlines()), 120)
        self.assertEqual(len(run(*words, "--max-messages=5").err.splitlines()), 6)
        self.assertEqual(len(run(*words, "--max-messages=5", "--strict").err.splitlines()), 120)

    def test_explanations(self):
        shown = (f"{self.root}:3:47: warning: bits 'uart.ctrl.en': 'acess' is no attribute of 'bits'; did you mean "
                 "'access'? [unknown-attribute]\n"
                 '     3 | <bits name="en" pos="0" access="rw" acess="r"/>\n'
                 "       |                                     ^~~~~\n")
        words = ("check", self.root, "-Wno-all", "-Wunknown-attribute")
        self.expect(run(*words, "--explain"), 0, err=shown)
        self.expect(run(*words), 0, err=shown[:shown.index("\n") + 1])
        wrong = self.lay_out({"wrong.xml": archive('<module name="uart"/>', "<modul/>", '<enum name="kinds"/>',
                                                   '<instance name="U" type="uatr"/>')}, "wrong.xml")
        told = run("check", wrong, "--explain")
        self.expect(told, 1, err=None)
        self.assertIn("     3 | <modul/>\n       |  ^~~~~\nhint: did you mean 'module'?\n", told.err)
        self.assertIn("""     5 | <instance name="U" type="uatr"/>\n       |                          ^~~~\n"""
                      "hint: did you mean 'uart'?\n", told.err)
        self.assertIn("hint: did you mean 'module'?", run("tree", "--chip", wrong, "--explain").err)
        self.assertEqual(json.loads(run("check", wrong, "--format=json", "--explain").out)[0]["line"], 3)
        # What an encrypted file says is not shown.
        secret = self.folder / "secret.xmd"
        run("encrypt", self.root, secret)
        told = run("check", secret, "--explain", "-Wno-all", "-Wunknown-attribute")
        self.assertEqual(len(told.err.splitlines()), 1, told.err)

    def test_terminals_have_explanations(self):
        for arguments, explained in (((), True), (("--no-explain",), False), (("--no-lint", "--chip"), False)):
            here, there = pty.openpty()
            fcntl.ioctl(there, termios.TIOCSWINSZ, struct.pack("HHHH", 25, 40, 0, 0))
            root = self.lay_out({"wrong.xml": archive(f"<modul {' ' * 100}/>")}, "wrong.xml")
            subprocess.run([options.veldmap, "check", *arguments, root], stdin=subprocess.DEVNULL, stderr=there)
            os.close(there)
            lines = os.read(here, 10000).decode().splitlines()
            os.close(here)
            self.assertEqual(any(" | <modul" in line for line in lines), explained, lines)
            self.assertTrue(all(len(line) < 40 for line in lines if " | " in line), lines)

    def test_json(self):
        keys = {"rule", "severity", "file", "line", "column", "text"}
        found = run("check", self.root, "--format=json")
        self.expect(found, 0, out=None)
        findings = json.loads(found.out)
        self.assertEqual([(one["line"], one["severity"], one["rule"]) for one in findings], self.told())
        self.assertTrue(all(keys <= one.keys() and one["file"] == str(self.root) for one in findings))
        self.assertEqual(findings[0]["column"], UART.splitlines()[2].index("/>") + 2)
        self.assertNotIn(" [", findings[0]["text"])
        overlap = findings[1]
        self.assertEqual([(one["line"], one["text"]) for one in overlap["related"]], [(4, "the other field")])
        self.assertTrue(overlap["hint"])
        # Beside results they go where messages go; what has no place has no file.
        for command in (["tree", "--chip"], ["headers", "-o", self.folder / "out", "--chip"]):
            done = run(*command, self.folder / "none.xml", "--format", "json")
            self.expect(done, 1, err=None)
            told = [(one["rule"], one["severity"], one["file"], one["line"]) for one in json.loads(done.err)]
            self.assertEqual(told, [("file-not-opened", "warning", "", 0), ("not-loaded", "error", "", 0)])
        self.assertEqual(json.loads(run("check", self.root, "-q", "--format=json").out), [])
        self.expect(run("check", self.root, "--format=xml"), 2, err=None)
        with open("/dev/full", "w") as full:
            failed = subprocess.run([options.veldmap, "check", self.root, "--format=json"], stdout=full)
        self.assertEqual(failed.returncode, 1)

    def test_sarif(self):
        root = self.lay_out({"a b/\u00fc#1.xml": UART.replace("</module>", '<hole size="+*"/></module>')},
                            "a b/\u00fc#1.xml")
        elsewhere = self.lay_out({"else/x.xml": WIDE}, "else/x.xml")
        done = run("check", "--chip", root.relative_to(self.folder), "--soft", elsewhere, "--format=sarif",
                   folder=self.folder / "a b" / "..")
        self.expect(done, 1, out=None)
        log = json.loads(done.out)
        self.assertEqual(log["version"], "2.1.0")
        self.assertTrue(log["$schema"].endswith("sarif-2.1.0.json"))
        [sarif] = log["runs"]
        self.assertEqual(sarif["columnKind"], "utf16CodeUnits")
        driver = sarif["tool"]["driver"]
        self.assertEqual(driver["name"], "veldmap")
        self.assertEqual(driver["version"], run("--version").out.strip())
        ids = [rule["id"] for rule in driver["rules"]]
        self.assertEqual(len(ids), len(set(ids)))
        for rule in driver["rules"]:
            self.assertTrue(rule["shortDescription"]["text"])
            self.assertIn(rule["defaultConfiguration"]["level"], ("note", "warning", "error"))
        self.assertEqual({result["ruleId"] for result in sarif["results"]}, set(ids))
        for result in sarif["results"]:
            self.assertEqual(ids[result["ruleIndex"]], result["ruleId"])
            self.assertIn(result["level"], ("none", "note", "warning", "error"))
            self.assertTrue(result["message"]["text"])
            self.assertTrue(all(place["message"]["text"] and place["physicalLocation"]["region"]["startLine"] >= 1
                                for place in result.get("relatedLocations", [])))
            for location in result["locations"]:
                physical = location["physicalLocation"]
                path = urllib.parse.unquote(physical["artifactLocation"]["uri"])
                self.assertNotRegex(physical["artifactLocation"]["uri"], "[^!-~]")
                self.assertTrue((self.folder / path.removeprefix("file://")).is_file(), path)
                self.assertTrue(all(type(place) is int and place >= 1 for place in physical["region"].values()))
        uris = {result["locations"][0]["physicalLocation"]["artifactLocation"]["uri"] for result in sarif["results"]}
        self.assertEqual(uris, {"a%20b/%C3%BC%231.xml", "else/x.xml"})
        from_inside = json.loads(run("check", elsewhere, "--format=sarif", folder=self.folder / "a b").out)
        uri = from_inside["runs"][0]["results"][0]["locations"][0]["physicalLocation"]["artifactLocation"]["uri"]
        self.assertEqual(uri, f"file://{elsewhere}")
        # An empty run, and a finding without a place, are sound too.
        empty = json.loads(run("check", root, "-q", "--no-lint", "--format=sarif").out)["runs"][0]
        self.assertEqual([result["level"] for result in empty["results"]], ["error"])
        placeless = json.loads(run("check", "none.xml", "--format=sarif").out)["runs"][0]["results"]
        self.assertTrue(placeless and not any("locations" in result for result in placeless))

    def test_rules_are_listed(self):
        rows = json.loads(run("rules", "--json").out)
        self.assertEqual({row["id"]: row["on"] for row in rows}["unused-type"], False)
        listed = run("rules")
        self.expect(listed, 0, out=None)
        self.assertEqual([line.split()[:3] for line in listed.out.splitlines()],
                         [[row["id"], row["severity"], "on" if row["on"] else "off"] for row in rows])
        self.assertEqual(len(rows), len({row["id"] for row in rows}))


if __name__ == "__main__":
    support.main(__doc__)
