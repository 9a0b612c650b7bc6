"""The live console: one script on targets of all kinds, an emulated board, and the prompt in a terminal."""

import fcntl
import os
import pty
import re
import select
import shutil
import signal
import struct
import subprocess
import sys
import termios
import time
import unittest

import support
from support import EXAMPLES, archive, options, run

BOARD = EXAMPLES / "cmsdk_cm3/soc.xml"
QEMU = "qemu-system-arm"

CHIP = archive(
    '<typedef name="node"><uint32 name="next"/><uint32 name="data"/></typedef>',
    '<module name="uart"><comment>Serial port</comment><reg32 name="ctrl" protect="rw">',
    '<bits name="mode" pos="0" access="rw" rst="0"><options><option name="off" value="0"/><option name="on" value="1"/></options></bits>',
    '<bits name="speed" pos="3:1" access="rw" rst="2"><options><option name="slow" value="0"/><option name="fast" value="5"/></options></bits>',
    '</reg32><reg32 name="id" protect="r"><bits name="id" pos="31:0" access="r" rst="0x5A"/></reg32>',
    '<reg32 name="secret" protect="w"/><reg32 name="table" protect="rw" count="4"/>',
    '<reg16 name="half" protect="rw"/><reg8 name="byte" protect="rw"/><int8 name="level"/><ptr name="head" type="node"/></module>',
    '<instance name="UART" type="uart" address="0x40000000"/><instance name="NODE" type="node" address="0x40000040"/>')
MEMORY = struct.pack("<II", 4, 0x5A) + bytes(0x40)

PATIENT = "set timeout 60"                      # on a machine that has much else to do

SCRIPT = f"""\
{PATIENT} # what targets of all kinds do alike
UART
UART.ctrl
UART.ctrl.speed = fast
UART.ctrl.speed
x = UART.ctrl.R
x & 0xE
UART.ctrl.w(UART.ctrl.speed.wl(x, slow))
UART.ctrl.speed.r
UART.table[2] = 0x1234
UART.table
UART.level = -3
UART.level
UART.half = 0xBEEF
UART.byte.w(UART.half.R & 0xFF)
UART.byte.r
UART.secret
UART.secret.w(7)
UART.id = 1
UART.id.id.r
UART.ctrl.sped = 1
UART.ctrl.speed = faster
snapshot before.txt UART
UART.ctrl.mode = on
UART.table[0] = 5
diff before.txt
restore before.txt
restore before.txt --yes
diff before.txt
dump UART 36
dump 0x4000001C 4
wait UART.ctrl.speed == slow within 1
wait UART.ctrl.speed == fast within 0
watch UART.table[1] 0
UART.head = NODE.data.address - 4
UART.head.>.data = 9
UART.head.>
NODE.data.r
set dry-run on
UART.ctrl.speed = fast
set dry-run off
record lines.txt
UART.ctrl.mode = on
record off
UART.ctrl.mode = off
source lines.txt
UART.ctrl.mode
"""


class Scripts(support.Case):
    def setUp(self):
        super().setUp()
        self.chip = self.lay_out({"chip.xml": CHIP, "script.txt": SCRIPT}, "chip.xml")

    def ask(self, target, *words, status=0):
        result = run("console", "--chip", self.chip, *(["--target", target] if target else []), *words,
                     folder=self.folder)
        self.assertEqual(result.status, status, result.err)
        return result

    def test_one_script_on_all_kinds_of_targets(self):
        memory = self.folder / "memory.bin"
        program = f"exec:{sys.executable} {EXAMPLES / 'target.py'} {memory} 0x40000000"
        for target in ("sim", f"image:{memory}@0x40000000", program, f"mem:{memory}@0x40000000"):
            with self.subTest(target):
                memory.write_bytes(MEMORY)
                (self.folder / "lines.txt").unlink(missing_ok=True)
                told = self.ask(target, "--keep-going", "script.txt", status=1)
                self.expect_golden("program/console.txt", f"{told.out}\n{told.err}")
                if target != "sim":
                    self.assertEqual(memory.read_bytes()[:4], struct.pack("<I", 1), "what was written is kept")
        self.assertIn("$UART.level = 0xFD\n", (self.folder / "before.txt").read_text())

    def test_status_and_places(self):
        told = self.ask("sim", "script.txt", status=1)
        self.assertEqual(told.err.splitlines()[0],
                         "script.txt:17:1: error: $UART.secret can't be read: it is not readable; $UART.secret.rf reads it all the same.")
        self.assertNotIn("\n", told.err.strip(), "the first failure ends it")
        told = self.ask("sim", "-c", "UART.half = 3", "-c", "UART.half.r", "-c", "quit", "-c", "1+")
        self.assertEqual((told.out, told.err), ("0x0003\n", ""))
        self.assertIn("-c:2:1: error: ", self.ask("sim", "-c", "1", "-c", "1+", status=1).err)
        self.lay_out({"outer.txt": "1\nsource inner.txt\n2\n", "inner.txt": "3\nUART.halb\n4\n"})
        told = self.ask("sim", "outer.txt", status=1)
        self.assertEqual(told.out, "0x1\n0x3\n")
        self.assertEqual(told.err, "inner.txt:2:1: error: No element has the path $UART.halb; it leads as far as $UART.\n"
                                   "note: did you mean '$UART.half'?\n")
        typed = subprocess.run([options.veldmap, "console", "--chip", self.chip, "--target", "sim"], input="1+1\n\nx\n5\n",
                               capture_output=True, text=True)
        self.assertEqual((typed.returncode, typed.stdout), (1, "0x2\n"))
        self.assertTrue(typed.stderr.startswith("<stdin>:3:1: error: "), typed.stderr)

    def test_without_a_target(self):
        told = self.ask(None, "--keep-going", "-c", "ls", "-c", "UART.half.r", "-c", "connect", "-c", "connect sim",
                        "-c", "UART.half.r", status=1)
        self.assertEqual(told.err, "-c:2:1: error: There is no target; 'connect' tries again, 'connect KIND:...' takes another.\n"
                                   "-c:3:1: error: There is no target; 'connect' tries again, 'connect KIND:...' takes another.\n")
        self.assertTrue(told.out.endswith("\n0x0000\n"))
        self.ask("image:none.bin@0", "-c", "1", status=1)
        self.ask("what:ever", "-c", "1", status=1)
        self.assertIn("none.txt can't be read", self.ask("sim", "none.txt", status=1).err)

    def test_a_target_that_dies(self):
        program = self.lay_out({"die.py": "import sys\nsys.stdin.readline()\nprint('0x7', flush=True)\n"
                                          "sys.stdin.readline()\n"}, "die.py")
        told = self.ask(f"exec:{sys.executable} {program}", "--keep-going", "-c", PATIENT, "-c", "UART.half.r", "-c",
                        "UART.half.r", "-c", "UART", "-c", "UART.half.getl", "-c", "connect", "-c", "UART.half.r", status=1)
        self.assertEqual(told.out, "0x0007\n0x0007\n", "after connect")
        errors = told.err.splitlines()
        self.assertEqual([line.partition(" error: ")[0] for line in errors], ["-c:3:1:", "-c:4:1:", "-c:5:1:"])
        self.assertTrue(all("'connect' tries again" in line for line in errors[:2]), told.err)


@unittest.skipUnless(shutil.which(QEMU), f"{QEMU} is not installed")
class Board(support.Case):
    """The registers of an emulated board that stands still, or whose processor runs in a loop of one instruction."""

    LOOP = struct.pack("<III", 0x20001000, 9, 0xE7FEE7FE)   # the stack, the first instruction behind, and that

    def start(self, *more):
        socket, loop = self.folder / "gdb", self.folder / "loop.bin"
        loop.write_bytes(self.LOOP)
        emulator = subprocess.Popen([QEMU, "-M", "mps2-an385", "-display", "none", "-monitor", "none", "-serial", "null",
                                     "-kernel", loop, *more, "-gdb", f"unix:{socket},server=on,wait=off"],
                                    stdin=subprocess.DEVNULL)
        self.addCleanup(emulator.wait)
        self.addCleanup(emulator.kill)
        deadline = time.monotonic() + 30
        while not socket.exists() and time.monotonic() < deadline:
            time.sleep(0.05)
        self.target = f"gdb:{socket}"

    def ask(self, *lines, status=0, target=None):
        words = [word for line in (PATIENT, *lines) for word in ("-c", line)]
        told = run("console", "--chip", BOARD, "--target", target or self.target, *words, folder=self.folder)
        self.assertEqual(told.status, status, told.err)
        return told

    def test_registers(self):
        self.start("-S")
        self.assertEqual(self.ask("WDT.WDOGVALUE.r", "DUALTIMER.TIMER1CONTROL.r").out, "0xFFFFFFFF\n0x00000020\n")
        dump = self.ask("dump 0x40004FE0 0x20").out.splitlines()
        self.assertEqual(dump[0].split()[:2], ["0x40004FE0", "00000021"])
        self.assertEqual(dump[1].split()[:5], ["0x40004FF0", "0000000D", "000000F0", "00000005", "000000B1"])
        told = self.ask("TIMER0.CTRL.INTEN = E_DISABLE_ENABLE_ENABLE", "TIMER0.CTRL.INTEN",
                        "TIMER0.RELOAD = 0x1234", "TIMER0.RELOAD.r",
                        "UART0.CTRL.TXEN.w(E_DISABLE_ENABLE_ENABLE)", "UART0.CTRL.RXEN = 1", "UART0.CTRL.r", "UART0.BAUDDIV = 16+1",
                        "UART0.BAUDDIV.r", "FPGAIO.LED.LED1 = E_OFF_ON_ON", "FPGAIO.LED", "FPGAIO.LED.LED1 = E_OFF_ON_OFF",
                        "FPGAIO.LED.r").out
        self.assertEqual(re.findall(r"= (.*)|^(0x\w+)$", told, re.M),
                         [("1 (E_DISABLE_ENABLE_ENABLE)", ""), ("", "0x00001234"), ("", "0x00000003"),
                          ("", "0x00000011"), ("0x00000002", ""), ("0 (E_OFF_ON_OFF)", ""), ("1 (E_OFF_ON_ON)", ""),
                          ("", "0x00000000")])
        refused = self.ask("WDT.WDOGVALUE = 1", status=1).err
        self.assertIn("it is not writable; $WDT.WDOGVALUE.wf writes it all the same", refused)
        # A register that takes nothing: the watchdog's value, written by force, and one whose bits are fixed.
        self.assertIn("reads 0x", self.ask("UART0.BAUDDIV = 0xFFFFFFFF", status=1).err)
        self.assertEqual(self.ask("UART0.BAUDDIV = 16", "snapshot all.txt", "UART0.BAUDDIV = 20", "FPGAIO.LED.LED0 = E_OFF_ON_ON",
                                  "diff all.txt").out.splitlines()[1:],
                         ["$UART0.BAUDDIV  0x00000010 -> 0x00000014", "$FPGAIO.LED  0x00000000 -> 0x00000001",
                          "  LED0  0 (E_OFF_ON_OFF) -> 1 (E_OFF_ON_ON)"])
        told = self.ask("snapshot uart.txt UART0.CTRL UART0.BAUDDIV FPGAIO.LED", "UART0.BAUDDIV = 99",
                        "FPGAIO.LED.LED0 = E_OFF_ON_OFF", "diff uart.txt", "restore uart.txt --yes", "diff uart.txt").out
        self.assertEqual(told.splitlines()[-2:], ["3 of 3 registers written", "no differences"])

    def test_watch_while_the_processor_runs(self):
        self.start()
        target = f"{self.target},run=on"
        told = self.ask("TIMER0.RELOAD = 0xFFFFFFF", "TIMER0.VALUE = 0xFFFFFFF", "TIMER0.CTRL.ENABLE = 1",
                        "watch TIMER0.VALUE 3", "wait TIMER0.VALUE < 0xFFFFFFF within 60", target=target).out
        changes = re.findall(r"^ +\d+\.\d{3} s  \$TIMER0.VALUE  0x(\w{8}) -> 0x(\w{8})$", told, re.M)
        self.assertGreaterEqual(len(changes), 2, told)
        for before, after in changes:
            self.assertLess(int(after, 16), int(before, 16), "it counts down")

    def test_speed(self):
        self.start("-S")
        lines = self.folder / "reads.txt"
        lines.write_text(f"{PATIENT}\n" + "TIMER0.RELOAD.R\n" * 4000)
        told = run("console", "--chip", BOARD, "--target", self.target, lines)
        self.expect(told, 0)
        self.assertLess(told.seconds, 60)
        print(f"{4000 / told.seconds:.0f} reads a second, with the start of the program", file=sys.stderr)


class Terminal:
    """The program in a terminal of its own."""

    def __init__(self, folder, *words):
        environment = {**os.environ, "TERM": "xterm", "LC_ALL": "C.UTF-8", "XDG_STATE_HOME": str(folder / "state"),
                       "HOME": str(folder), "NO_COLOR": "1"}
        self.process, self.descriptor = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execve(options.veldmap, [options.veldmap, *map(str, words)], environment)
        self.resize(100)
        self.screen = ""

    def resize(self, columns):
        fcntl.ioctl(self.descriptor, termios.TIOCSWINSZ, struct.pack("HHHH", 30, columns, 0, 0))

    def type(self, text):
        os.write(self.descriptor, text.encode())

    def wait_for(self, pattern, seconds=30):
        """What has come since the last call up to the end of the pattern."""
        deadline = time.monotonic() + seconds
        while not (found := re.search(pattern, self.screen)):
            ready, _, _ = select.select([self.descriptor], [], [], max(0, deadline - time.monotonic()))
            try:
                piece = os.read(self.descriptor, 65536) if ready else b""
            except OSError:
                piece = b""
            if not piece:
                raise AssertionError(f"no {pattern!r} in {self.screen!r}")
            self.screen += piece.decode(errors="replace")
        told, self.screen = self.screen[:found.end()], self.screen[found.end():]
        return told

    def end(self, text="\x04"):
        self.type(text)
        try:
            while select.select([self.descriptor], [], [], 60)[0] and os.read(self.descriptor, 65536):
                pass
        except OSError:
            pass                                # the other end is closed
        os.close(self.descriptor)               # which ends one that is still there
        return os.waitstatus_to_exitcode(os.waitpid(self.process, 0)[1])


class Prompt(support.Case):
    PROMPT = r"veldmap> $"

    def setUp(self):
        super().setUp()
        self.chip = self.lay_out({"chip.xml": CHIP}, "chip.xml")

    def start(self, *targets):
        words = [word for target in targets for word in ("--target", target)]
        terminal = Terminal(self.folder, "console", "--chip", self.chip, *words)
        self.addCleanup(lambda: self.kill(terminal.process))
        terminal.wait_for(self.PROMPT)
        return terminal

    @staticmethod
    def kill(process):
        try:
            os.kill(process, signal.SIGKILL)
            os.waitpid(process, 0)
        except (ProcessLookupError, ChildProcessError):
            pass                                # it has ended

    def enter(self, terminal, line):
        terminal.type(f"{line}\r")
        terminal.wait_for(re.escape(line[-8:]) + r"\s*\n")
        return terminal.wait_for(self.PROMPT).removesuffix("veldmap> ").replace("\r", "")

    def edits_lines(self):
        """Whether this program was built with an editor of lines."""
        linked = subprocess.run(["ldd", options.veldmap], capture_output=True, text=True, check=False).stdout
        return "libedit" in linked

    def test_lines(self):
        terminal = self.start("sim")
        self.assertEqual(self.enter(terminal, "UART.ctrl.r"), "0x00000004\n")
        self.assertIn("did you mean '$UART.ctrl'?", self.enter(terminal, "UART.ctlr"))
        self.assertEqual(self.enter(terminal, "1+1"), "0x2\n", "a failure is not the end")
        self.enter(terminal, "snapshot file.txt UART.half")
        for answer, told in (("n", "Nothing is restored"), ("y", "1 of 1 register written")):
            terminal.type("restore file.txt\r")
            terminal.wait_for(r"Write 1 of 1 register\? \[y/N\] $")
            terminal.type(f"{answer}\r")
            self.assertIn(told, terminal.wait_for(self.PROMPT))
        self.assertEqual(terminal.end("quit\r"), 0)

    def test_ctrl_c(self):
        terminal = self.start("sim")
        terminal.type("UART.ha")
        terminal.wait_for("UART.ha$")
        terminal.type("\x03")
        terminal.wait_for(r"\^C\s*\n")
        terminal.wait_for(self.PROMPT)
        terminal.type("watch UART.half\r")
        terminal.wait_for(r"UART.half  .*\n")
        terminal.type("\x03")
        terminal.wait_for(self.PROMPT)
        self.assertEqual(self.enter(terminal, "2+2"), "0x4\n")
        # One that ends an access: a target that answers nothing for a minute.
        program = self.lay_out({"silent.py": "import sys, time\nsys.stdin.readline()\nopen('asked', 'w').close()\n"
                                             "time.sleep(600)\n"}, "silent.py")
        self.enter(terminal, f"connect \"exec:{sys.executable} {program}\"")
        self.enter(terminal, "set timeout 60")
        terminal.type("UART.half\r")
        while not (self.folder / "asked").exists():
            time.sleep(0.05)
        terminal.type("\x03")
        self.assertIn("Interrupted", terminal.wait_for(self.PROMPT))
        self.assertEqual(self.enter(terminal, "3+3"), "0x6\n")
        self.assertEqual(terminal.end(), 0)

    def test_completion(self):
        if not self.edits_lines():
            self.skipTest("the program was built without libedit")
        terminal = self.start("sim")
        terminal.type("UA\tctrl.sp\t.w(\t")
        told = terminal.wait_for(r"fast +5[^$]*\n")
        self.assertIn("slow", told)
        terminal.wait_for(r"UART\.ctrl\.speed\.w\($")
        terminal.type("fa\t)\r")
        terminal.wait_for(r"\)\s*\n")
        terminal.wait_for(self.PROMPT)
        self.assertEqual(self.enter(terminal, "UART.ctrl.speed.r"), "0x5\n")
        terminal.type("UART.half.\t")
        self.assertIn("w(value)", terminal.wait_for(r"Writes 'value' into the valuable\."))
        terminal.type("\x03")
        terminal.wait_for(r"\^C\s*\n")
        terminal.wait_for(self.PROMPT)
        (self.folder / "lines.txt").write_text("UART.ctrl.speed.r\n")
        terminal.type("sour\tlin\t\r")
        self.assertIn("0x5", terminal.wait_for(self.PROMPT))
        self.assertEqual(terminal.end(), 0)

    def test_history_and_resize(self):
        if not self.edits_lines():
            self.skipTest("the program was built without libedit")
        terminal = self.start("sim")
        self.enter(terminal, "UART.half = 0x1234")
        self.assertEqual(terminal.end(), 0)
        terminal = self.start("sim")
        terminal.type("\x1b[A")
        terminal.wait_for(r"UART\.half = 0x1234")
        terminal.resize(40)
        terminal.wait_for(r"veldmap> UART\.half = 0x1234")
        terminal.type("\r")
        terminal.wait_for(self.PROMPT)
        self.assertEqual(self.enter(terminal, "UART.half.r"), "0x1234\n")
        self.assertEqual(terminal.end(), 0)

    def test_a_target_that_is_not_there(self):
        terminal = self.start("image:late.bin@0x40000000")
        self.assertIn("There is no target", self.enter(terminal, "UART.half"))
        (self.folder / "late.bin").write_bytes(MEMORY)
        self.enter(terminal, "connect")
        self.assertEqual(self.enter(terminal, "UART.ctrl.r"), "0x00000004\n")
        self.enter(terminal, "UART.half = 0xABCD")
        self.assertEqual(struct.unpack_from("<H", (self.folder / "late.bin").read_bytes(), 28)[0], 0xABCD,
                         "it is kept at once")
        self.assertEqual(terminal.end(), 0)


if __name__ == "__main__":
    support.main(__doc__)
