"""Completion of command lines: what the program says a word may become, and what shells make of it when a user types."""

import os
import pty
import re
import select
import shutil
import subprocess
import time
import unittest
from pathlib import Path

import support
from support import options, run

COMPLETIONS = Path(__file__).resolve().parents[2] / "completions"

# A line as it is typed, and what a tab makes of it.
TYPED = [("veldmap ch", "veldmap check "),
         ("veldmap headers --ski", "veldmap headers --skip-up-to-date "),
         ("veldmap headers --chip so", "veldmap headers --chip soc.xml "),
         ("veldmap headers --chip=so", "veldmap headers --chip=soc.xml "),
         ("veldmap headers --chip soc.xml -o per", "veldmap headers --chip soc.xml -o periph/"),
         ("veldmap check --format=j", "veldmap check --format=json "),
         ("veldmap check -Wfield-o", "veldmap check -Wfield-overlap "),
         ("veldmap check tim", "veldmap check timer.xml "),
         ("veldmap show --chip soc.xml '$UA", "veldmap show --chip soc.xml '$UART"),
         ("veldmap show --chip soc.xml '$G", "veldmap show --chip soc.xml '$GPIO"),
         ("veldmap show --chip soc.xml \\$G", "veldmap show --chip soc.xml \\$GPIO"),
         ("veldmap show --chip=soc.xml '$UART0.ct", "veldmap show --chip=soc.xml '$UART0.ctrl"),
         ("veldmap show --chip soc.xml '$UART0.ctrl.sp", "veldmap show --chip soc.xml '$UART0.ctrl.speed' "),
         ("veldmap show --chip soc.xml '$UART0.chan[2", "veldmap show --chip soc.xml '$UART0.chan[2]' "),
         ("veldmap write --chip soc.xml '$UART0.ctrl.sp", "veldmap write --chip soc.xml '$UART0.ctrl.speed")]

# How each shell is started and told about completion, and a key that shows the line as it stands.
BASH = (["bash", "--norc", "--noprofile", "-i"],
        [f"source {COMPLETIONS}/veldmap.bash",
         r"""bind -x '"\C-t": printf "LINE<%s>END\n" "$READLINE_LINE"'"""])
ZSH = (["zsh", "-f", "-i"],
       [f"fpath=({COMPLETIONS} $fpath); autoload -U compinit; compinit -u -D; bindkey -e",
        r"""show() { print -r -- "LINE<$BUFFER>END" }; zle -N show; bindkey '^T' show"""])


class Terminal:
    """A shell on a terminal of its own, in the folder of examples."""

    def __init__(self, command, told):
        environment = {**os.environ, "TERM": "dumb", "COLUMNS": "300", "LC_ALL": "C.UTF-8",
                       "PATH": f"{Path(options.veldmap).parent}{os.pathsep}{os.environ['PATH']}"}
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(support.EXAMPLES)
            os.execvpe(command[0], command, environment)
        for line in [*told, "echo REA''DY"]:
            os.write(self.terminal, f"{line}\n".encode())
        self.read_until("READY")

    def read_until(self, pattern, seconds=30):
        read = b""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if select.select([self.terminal], [], [], 0.1)[0]:
                read += os.read(self.terminal, 65536)
            found = re.search(pattern, read.decode(errors="replace"), re.DOTALL)
            if found:
                return found
        raise AssertionError(f"no {pattern} in {read!r}")

    def line_of(self, typed):
        """What the line is after the keys and a tab; the line is cleared then."""
        os.write(self.terminal, f"{typed}\t\x14".encode())
        line = self.read_until("LINE<(.*)>END")[1]
        os.write(self.terminal, b"\x15")
        return line

    def close(self):
        os.write(self.terminal, b"\x15exit\n")
        os.waitpid(self.process, 0)
        os.close(self.terminal)


class Completion(support.Case):
    def candidates(self, *words):
        """What the program says, without the meanings."""
        listed = run("complete", "--words", *words, folder=support.EXAMPLES)
        self.assertEqual((listed.status, listed.err), (0, ""))
        return [line.split("\t")[0] for line in listed.out.splitlines()]

    def test_words(self):
        commands = self.candidates("")
        self.assertIn("check\tLoad descriptions", run("complete", "--words", "").out)
        for line in run("--help").out.split("Subcommands:")[1].split("\n\n")[0].splitlines()[1:]:
            self.assertIn(line.split()[0], commands)
        self.assertEqual(self.candidates(), commands)
        self.assertEqual(self.candidates("-v", "sh"), ["show"])
        self.assertEqual(self.candidates("check", "--n"), ["--no-lint", "--no-warn", "--no-explain"])
        self.assertEqual(self.candidates("check", "--format", ""), ["text", "json", "sarif"])
        self.assertEqual(self.candidates("check", "--no-warn", "field-o"), ["field-overlap"])
        self.assertEqual(self.candidates("check", "-W", "no-field-o"), ["no-field-overlap"])
        for kind, words in ((":description", ["check", "--chip", ""]), (":description", ["check", "--soft="]),
                            (":directory", ["docs", "-o", "si"]), (":file", ["show", "--image", ""]),
                            (":file", ["check", "@li"]), (":file", ["encrypt", ""])):
            self.assertEqual(self.candidates(*words), [kind], words)
        for nothing in (["eval", "1+"], ["bogus", "x"], ["show", "$UA"], ["show", "--chip", "missing.xml", "$UA"]):
            listed = run("complete", "--words", *nothing)
            self.assertEqual((listed.status, listed.out), (0, ""), nothing)

    def test_paths(self):
        show = lambda text: self.candidates("show", "--chip", "soc.xml", text)
        self.assertEqual(show(""), ["$GPIO", "$UART0", "$UART1"])
        self.assertEqual(show("$UART0"), ["$UART0", "$UART0."])
        self.assertEqual(show("$UART0.c"), ["$UART0.chan", "$UART0.ctrl"])
        self.assertEqual(show("$UART0.cha"), ["$UART0.chan", "$UART0.chan["])
        self.assertEqual(show("$UART0.chan["), [f"$UART0.chan[{index}]" for index in range(4)])
        self.assertEqual(show("$UART0.ctrl.s"), ["$UART0.ctrl.speed"])
        self.assertEqual(show("$UART0.nothing."), [])
        self.assertEqual(self.candidates("show", "--soft", "firmware.xml", "$ST"), ["$STATE", "$STATE."])
        self.assertEqual(self.candidates("write", "--chip", "soc.xml", "$UART0.ctrl.s"),
                         ["$UART0.ctrl.speed", "$UART0.ctrl.speed="])

    def type_into(self, shell):
        command, told = shell
        if not shutil.which(command[0]):
            raise unittest.SkipTest(f"{command[0]} is not installed")
        terminal = Terminal(command, told)
        self.addCleanup(terminal.close)
        for typed, line in TYPED:
            self.assertEqual(terminal.line_of(typed), line)

    def test_bash(self):
        self.type_into(BASH)

    def test_zsh(self):
        self.type_into(ZSH)

    def test_fish(self):
        if not shutil.which("fish"):
            raise unittest.SkipTest("fish is not installed")
        for typed, word in (("veldmap ch", "check"), ("veldmap headers --chip so", "soc.xml"),
                            ("veldmap headers --chip=so", "--chip=soc.xml"), ("veldmap docs -o per", "periph/"),
                            ("veldmap check --format=j", "--format=json"),
                            ("veldmap show --chip soc.xml '$UART0.ctrl.sp", "$UART0.ctrl.speed"),
                            ("veldmap show --chip soc.xml \\$UART0.ctrl.sp", "$UART0.ctrl.speed")):
            asked = subprocess.run(
                ["fish", "--no-config", "-c", f"source {COMPLETIONS}/veldmap.fish; complete -C $argv", typed],
                capture_output=True, text=True, check=False, cwd=support.EXAMPLES,
                env={**os.environ, "PATH": f"{Path(options.veldmap).parent}{os.pathsep}{os.environ['PATH']}"})
            self.assertEqual([line.split("\t")[0] for line in asked.stdout.splitlines()], [word], typed + asked.stderr)


if __name__ == "__main__":
    support.main(__doc__)
