"""docs/robustness.md names the tests that hold its promises: they are there."""

import re

import support

PROJECT = support.HERE.parents[1]
PAGE = (PROJECT / "docs/robustness.md").read_text()


class Robustness(support.Case):
    def test_scripts_are_there(self):
        named = re.findall(r"`(\w+\.py)(?:: (\w+))?`", PAGE)
        self.assertGreater(len(named), 20)
        for file, test in named:
            script = support.HERE / file
            self.assertTrue(script.exists(), file)
            if test:
                self.assertIn(f"    def {test}(self):", script.read_text(), file)

    def test_tests_of_the_library_are_there(self):
        named = re.findall(r"`([A-Z]\w+)\.(\w+)`", PAGE)
        self.assertGreater(len(named), 5)
        sources = "".join(path.read_text() for path in (PROJECT / "tests").rglob("*_test.cpp"))
        for suite, test in named:
            self.assertIn(f"TEST({suite}, {test})", sources)

    def test_every_row_names_a_test(self):
        rows = [line for line in PAGE.splitlines() if line.startswith("| ") and not line.startswith("| promise")]
        self.assertGreater(len(rows), 15)
        for row in rows:
            self.assertRegex(row.split("|")[2], r"`[\w./]+\.(py|\w+)", row)


if __name__ == "__main__":
    support.main(__doc__)
