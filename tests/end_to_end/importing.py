"""veldmap import, as its users call it, on the small file of a chip that nobody makes."""

import json
import shutil
import subprocess
import unittest

import support
from support import run

support.LINTED.clear()
SMALL = support.GOLDEN / "import" / "small.svd"


class Importing(support.Case):

    def setUp(self):
        super().setUp()
        self.source = self.lay_out({"chip.svd": SMALL.read_bytes()}, "chip.svd")
        self.out = self.folder / "chip"

    def test_what_is_written_loads_and_is_clean(self):
        told = run("import", self.source, "-o", self.out)
        self.expect(told, 0, out=None, err=None)
        self.assertEqual(told.summary, "8 files written, 0 unchanged, 0 failed")
        self.assertIn("chip.svd:48:18: note: UART0.UART_CLEAR: it lies over 'UART0.UART_STATUS'", told.err)
        self.assertRegex(told.out, r"(?m)^ +1  import-view +it lies over")
        self.expect(run("check", self.out / "soc.xml", "-Wall", "--strict", "-Wno-instance-view"), 0)
        report = (self.out / "IMPORT.md").read_text()
        self.assertIn("## import-view\n", report)
        self.assertNotIn("chip.svd:", report, "lines would change with every version")

    @unittest.skipUnless(shutil.which("gcc"), "gcc is not installed")
    def test_headers_straight_from_the_file_compile(self):
        include = self.folder / "include"
        self.expect(run("headers", "--no-lint", "--chip", self.source, "-o", include, "--self-check"), 0)
        folders = [f"-I{folder}" for folder in (include, include / "periph", include / "common")]
        judged = subprocess.run(["gcc", "-m32", "-std=c11", "-fsyntax-only", "-Wall", "-Werror", "-include",
                                 support.PRELUDE, *folders, include / "chip_self_check.c"], capture_output=True, text=True)
        self.assertEqual(judged.returncode, 0, judged.stderr)

    def test_places_are_those_of_the_source(self):
        shown = run("show", "--chip", self.source, "$UART1.CTRL", "0x40002044")
        self.expect(shown, 0, out=None)
        self.assertIn("$DMA.BANK[0]", shown.out)
        found = json.loads(run("check", self.source, "-Winstance-view", "--format=json").out)
        self.assertEqual({(finding["file"], finding["line"]) for finding in found}, {(str(self.source), 9), (str(self.source), 58)})

    def test_other_commands_take_it_too(self):
        for command in ("docs", "site", "vhdl"):
            self.expect(run(command, "--no-lint", "-q", "--chip", self.source, "-o", self.folder / command), 0, err=None)
            self.assertTrue(any((self.folder / command).rglob("*")), command)

    def test_what_is_there_is_not_overwritten(self):
        self.expect(run("-q", "import", self.source, "-o", self.out), 0, out=None)
        uart = self.out / "periph/uart.xml"
        text = uart.read_text()
        mine = text.replace('    <reg8 name="DATA"', '    <!-- mine -->\n    <reg8 name="DATA"')
        uart.write_text(mine)
        refused = run("import", self.source, "-o", self.out)
        self.expect(refused, 1, err=None)
        self.assertIn(f"error: {uart} is there already and differs; nothing is written.\n", refused.err)
        self.assertEqual(uart.read_text(), mine)
        kept = run("import", self.source, "-o", self.out, "--update")
        self.expect(kept, 0, out=None, err=None)
        self.assertEqual(kept.summary, "0 files written, 8 unchanged, 0 failed")
        self.assertEqual(uart.read_text(), mine)

    def test_bad_input(self):
        cut = self.lay_out({"cut.svd": SMALL.read_bytes()[:3000]}, "cut.svd")
        for source, told in ((cut, f"{cut}:52:57: error: "), (self.folder, "did not load: Is a directory"),
                             (self.folder / "none.svd", "did not load: "),
                             (self.lay_out({"a.xml": "<archive/>"}, "a.xml"), "'archive' is no format")):
            refused = run("import", source, "-o", self.out)
            self.expect(refused, 1, err=None)
            self.assertIn(told, refused.err)
            self.assertFalse(self.out.exists())
        self.expect(run("import", self.source), 2, err=None)

    def test_a_large_file_takes_a_moment(self):
        """Some 20 MB of registers in one peripheral; the limit is for slow machines and sanitizers."""
        row = ("<register><name>R{0}</name><description>Register {0} of many that are much the same</description>"
               "<addressOffset>{1}</addressOffset><fields><field><name>F{2}</name><bitRange>[3:0]</bitRange></field></fields>"
               "</register>\n")
        rows = "".join(row.format(at, 4 * at, at % 7) for at in range(100_000))
        large = self.lay_out({"large.svd": "<device><name>L</name><peripherals><peripheral><name>P</name><baseAddress>0"
                              f"</baseAddress><registers>{rows}</registers></peripheral></peripherals></device>"}, "large.svd")
        told = run("-q", "import", large, "-o", self.out)
        self.expect(told, 0, out=None, err=None)
        self.assertLess(told.seconds, 120)


if __name__ == "__main__":
    support.main(__doc__)
