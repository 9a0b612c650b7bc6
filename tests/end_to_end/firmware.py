"""The example firmware, and every command and file of docs/firmware.md."""

import os
import re
import shutil
import signal
import subprocess
from pathlib import Path
from typing import NamedTuple

import support
from support import EXAMPLES, options

PAGE = Path(__file__).resolve().parents[2] / "docs/firmware.md"
FENCE = re.compile(r"^```(\w*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
NAME = re.compile(r"(?:// |<!-- )(\S+)(?: -->)?\n")
FILES = {"xml", "c", "cpp", "asm"}
CROSS = ("arm-none-eabi-gcc", "qemu-system-arm")


class Step(NamedTuple):
    language: str
    text: str
    name: str                                   # of the file that the text is, empty for commands and what they print


def steps_of(page):
    for language, text in FENCE.findall(page):
        name = NAME.match(text) if language in FILES else None
        yield Step(language, text, name[1] if name else "")


class Shell(support.Case):
    """Commands in the folder of the test."""

    def setUp(self):
        super().setUp()
        if not shutil.which("gcc"):
            self.skipTest("gcc is missing")

    def sh(self, commands, **environment):
        """What commands print, in the test's folder, and whether all of them went well."""
        shell = subprocess.Popen(["bash", "-c", f"set -eu\n{commands}"], cwd=self.folder, text=True,
                                 env={**os.environ, "LC_ALL": "C", **environment}, start_new_session=True,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        try:
            out, err = shell.communicate(timeout=300)
        except subprocess.TimeoutExpired:
            os.killpg(shell.pid, signal.SIGKILL)    # an emulator of a firmware that never ends too
            raise
        return shell.returncode, out, err

    @staticmethod
    def has_cross_tools():
        return all(map(shutil.which, CROSS))


class Firmware(Shell):
    def build(self, *steps):
        return self.sh(" ".join([str(EXAMPLES / "firmware/build"), *steps]), VELDMAP=options.veldmap, OUT="made")

    def need_cross_tools(self):
        if not self.has_cross_tools():
            self.skipTest(f"{' or '.join(CROSS)} is missing")

    def test_on_this_machine(self):
        status, out, err = self.build("host")
        self.assertEqual((status, err), (0, ""))
        self.assertRegex(out, r"^[1-9]\d+ checks, 0 faults\n$")

    def test_on_the_emulated_board(self):
        self.need_cross_tools()
        self.assertEqual(self.build("target", "run"),
                         (0, "hello from 14 blocks\nthe timer is over\nthe light is on\n", ""))

    def test_a_fault_shows_in_the_status(self):
        """With the light in another register main fails; the emulator tells its caller."""
        self.need_cross_tools()
        copy = self.folder / "firmware"
        shutil.copytree(EXAMPLES / "firmware", copy)
        main = (copy / "main.c").read_text()
        (copy / "main.c").write_text(main.replace("fpgaio_led_write(hwp_fpgaio", "fpgaio_misc_write(hwp_fpgaio"))
        (self.folder / "cmsdk_cm3").symlink_to(EXAMPLES / "cmsdk_cm3")
        status, out, _ = self.sh("firmware/build target run", VELDMAP=options.veldmap, OUT="made")
        self.assertEqual((status, out.splitlines()[-1]), (1, "the light is off"))

    def test_wrong_step(self):
        self.assertEqual(self.build("fly")[0], 2)


class Page(Shell):
    def test_everything_on_it(self):
        """In the order of the page: files are laid out, commands run, and what they print is what stands behind them."""
        (self.folder / "examples").symlink_to(EXAMPLES)
        (self.folder / "bin").mkdir()
        (self.folder / "bin/veldmap").symlink_to(options.veldmap)
        environment = {"PATH": f"{self.folder}/bin:{os.environ['PATH']}", "VELDMAP": options.veldmap}
        steps = list(steps_of(PAGE.read_text()))
        self.assertEqual(PAGE.read_text().count("```"), 2 * len(steps))
        self.assertGreater(len(steps), 20)
        printed, left_out = "", 0
        for step in steps:
            with self.subTest(step.text):
                if step.language == "text":
                    self.assertIn(printed, (step.text, None))
                    printed = ""
                elif step.language in FILES:
                    self.assertTrue(step.name, "a file is named in its first line")
                    (self.folder / step.name).write_text(step.text)
                else:
                    self.assertEqual((step.language, printed or ""), ("sh", ""), "what is printed stands on the page")
                    if ("arm-none-eabi" in step.text or " target " in step.text) and not self.has_cross_tools():
                        printed, left_out = None, left_out + 1
                        continue
                    status, printed, errors = self.sh(step.text, **environment)
                    self.assertEqual((status, support.SUMMARY.sub("", errors)), (0, ""))
        self.assertFalse(printed)
        commands = "".join(step.text for step in steps if step.language == "sh")
        unused = [step.name for step in steps if step.name and not re.search(rf"(?<!\S){re.escape(step.name)}", commands)]
        self.assertEqual(unused, [], "each file is used by a command")
        if left_out:
            self.skipTest(f"{left_out} commands need {' and '.join(CROSS)}")


if __name__ == "__main__":
    support.main(__doc__)
