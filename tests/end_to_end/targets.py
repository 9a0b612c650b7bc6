"""show, write and regs on targets of all kinds: one transcript for those that hold the same, and an emulated board."""

import json
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

import support
from support import archive, run

CHIP = archive(
    '<typedef name="node"><ptr name="next" type="node"/><uint16 name="a"/><uint16 name="b"/></typedef>',
    '<module name="port"><reg32 name="ctrl" protect="rw">',
    '<bits name="speed" pos="3:1" access="rw" rst="2"><options><option name="fast" value="5"/></options></bits>',
    '<bits name="ready" pos="8" access="r" rst="1"/></reg32>',
    '<reg32 name="chan" protect="rw" count="2"/><reg16 name="secret" protect="w"><bits name="key" pos="15:0" access="w"/>',
    '</reg16><reg16 name="ro" protect="r"><bits name="id" pos="15:0" access="r" rst="0x42"/></reg16>',
    '<ptr name="head" type="node"/><memory name="ram" size="16"/></module>',
    '<instance name="P" type="port" address="0x40000000"/>', '<instance name="Q" type="port" address="0x50000000"/>')
BYTES = struct.pack("<IIIHHI16x", 0x104, 0, 0, 0, 0x42, 0)
BOARD = support.EXAMPLES / "cmsdk_cm3" / "soc.xml"
SCRIPT = [
    ("regs", "$P"),
    ("write", "$P.ctrl.speed=fast", "$P.chan[1]=0xCAFE", "$P.secret=7", "$P.head=0x40000014"),
    ("regs", "$P.ctrl.speed", "$P.chan", "$P.head.>"),
    ("show", "$P.head.>.b", "$P.ctrl"),
    ("regs", "--json", "$P.ctrl", "$P.secret", "$P.head.>.a"),
    ("write", "$P.ctrl.speed=9"),
    ("write", "$P.ro=1"),
    ("regs", "$P.none", "0x40000006"),
    ("regs", "$Q.ctrl"),
]


class Targets(support.Case):
    def setUp(self):
        super().setUp()
        self.chip = self.lay_out({"chip.xml": CHIP}, "chip.xml")
        self.image = self.folder / "image.bin"
        self.image.write_bytes(BYTES)

    def ask(self, target, command, *words, chip=None):
        return run(command, "--chip", chip or self.chip, *words, "--target", target, "--timeout", "20")

    def transcript(self, target):
        """What the script's commands print and tell; a simulator begins anew with each."""
        text = ""
        for command, *words in SCRIPT:
            done = self.ask(target, command, *words)
            text += f"$ {command} {' '.join(words)}\n{done.out}{done.err}"
            text += f"status {done.status}\n" if done.status else ""
        return text.replace(str(self.folder), "FOLDER")

    def test_one_transcript(self):
        program = f"{sys.executable} {support.EXAMPLES / 'target.py'} {self.image} 0x40000000"
        with tempfile.NamedTemporaryFile(dir="/dev/shm") as shared:
            shared.write(BYTES)
            shared.flush()
            for target in (f"image:{self.image}@0x40000000", f"mem:{shared.name}@0x40000000", f"exec:{program}"):
                self.image.write_bytes(BYTES)
                told = self.transcript(target)
                # Only the reason why nothing can be accessed somewhere is a target's own.
                told = "".join(line.partition("can't be read: ")[0] + ("can't be read\n" if "be read: " in line else "")
                               for line in told.splitlines(keepends=True))
                self.expect_golden("program/targets.txt", told)
            for name in (shared.name, self.image):
                with open(name, "rb") as file:
                    self.assertEqual(file.read(), struct.pack("<IIIHHI16x", 0x10A, 0, 0xCAFE, 7, 0x42, 0x40000014))
        self.assertEqual(self.ask("sim", "regs", "$P").out, self.golden_part("regs $P"))

    @staticmethod
    def golden_part(command):
        """What the golden transcript has below a command."""
        behind = (support.GOLDEN / "program/targets.txt").read_text().partition(f"$ {command}\n")[2]
        return re.split(r"(?m)^\$ ", behind)[0]

    def test_several_targets_and_failures(self):
        both = run("regs", "--chip", self.chip, "$P.ctrl", "$Q.ctrl", "--target", f"image:{self.image}@0x50000000",
                   "--target", "sim")
        self.expect(both, 0, out=None)
        self.assertEqual([line.split()[2] for line in both.out.splitlines()], ["0x00000104", "0x00000104"])
        stuck = self.ask("sim", "write", "--force", "$P.ctrl.ready=0", "$P.chan[0]=1")
        self.expect(stuck, 0)                   # nothing that can be compared
        away = self.ask("exec:exit 2", "regs", "$P.ctrl", "$Q.ctrl")
        self.expect(away, 1, out=None, err="error: $P.ctrl can't be read: the program 'exit 2': it has ended with "
                    "status 2.\n")
        self.assertEqual([line.split()[2] for line in away.out.splitlines()], ["?", "?"])
        values = json.loads(self.ask("exec:exit 2", "show", "--json", "$P.ctrl").out)
        self.assertIsNone(values[0]["value"])
        for words in (("regs", "$P"), ("write", "$P.ctrl=1"), ("regs", "--target", "sim"),
                      ("regs", "$P", "--target", "sim", "--image", self.image, "--at", "0"),
                      ("regs", "$P", "--timeout", "1"), ("regs", "$P", "--target", "sim", "--timeout", "0"),
                      ("regs", "$P", "--target", "sim", "--timeout", "x"), ("show", "$P", "--target")):
            told = run(words[0], "--chip", self.chip, *words[1:])
            self.assertEqual(told.status, 2, words)
            self.assertTrue(told.err.startswith("error: "), words)
        for target in ("", "none:x", "image:x", "gdb:x", "mem:/none/none", "gdb:localhost:1"):
            told = self.ask(target, "regs", "$P")
            self.assertEqual((told.status, told.out), (1, ""), target)
            self.assertRegex(told.err, r"^error: .+\.\n$")

    def test_an_interruption_ends_in_order(self):
        ended = self.folder / "ended"
        program = f"read line; echo began >&2; read line; echo ended >{ended}"
        command = [support.options.veldmap, "regs", "--chip", self.chip, "$P", "--target", f"exec:{program}",
                   "--timeout", "60"]
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        self.assertEqual(process.stderr.readline(), "began\n")
        process.send_signal(signal.SIGINT)
        self.assertEqual((process.communicate(timeout=20)[1], process.returncode),
                         (f"error: $P can't be read: the program '{program}': interrupted.\n", 1))
        self.assertEqual(ended.read_text(), "ended\n", "its input ended, and it was waited for")

    def test_completion_knows_the_kinds(self):
        self.assertEqual(run("complete", "--words", "regs", "--target", "").out.split(),
                         ["image:", "gdb:", "mem:", "sim", "exec:"])
        self.assertIn("$P.ctrl\t", run("complete", "--words", "regs", "--chip", self.chip, "$P.").out)

    @unittest.skipUnless(shutil.which("qemu-system-arm"), "qemu-system-arm is not installed")
    def test_an_emulated_board(self):
        program = self.folder / "loop.bin"      # stack, first instruction at 8: a loop of one
        program.write_bytes(struct.pack("<IIHH", 0x20001000, 9, 0xE7FE, 0))
        path = self.folder / "gdb"
        board = subprocess.Popen(["qemu-system-arm", "-M", "mps2-an385", "-S", "-display", "none", "-monitor", "none",
                                  "-serial", "none", "-gdb", f"unix:{path},server=on,wait=off", "-device",
                                  f"loader,file={program},addr=0"], stdin=subprocess.DEVNULL)
        self.addCleanup(board.wait)
        self.addCleanup(board.terminate)
        end = time.monotonic() + 20
        while time.monotonic() < end and self.ask(f"gdb:{path}", "regs", "$UART0.CTRL", chip=BOARD).status:
            time.sleep(0.05)                    # it is not there yet

        def value(*words, at=f"gdb:{path}"):
            done = self.ask(at, "regs", "--json", *words, chip=BOARD)
            self.assertEqual(done.status, 0, done.err)
            return [register["value"] for register in json.loads(done.out)]

        def write(*words, at=f"gdb:{path}"):
            return self.ask(at, "write", *words, chip=BOARD)

        self.assertEqual(value("$WDT.WDOGVALUE", "$DUALTIMER.TIMER1CONTROL"), [0xFFFFFFFF, 0x20])
        self.expect(write("$TIMER0.RELOAD=1000", "$TIMER0.CTRL.INTEN=1", "$UART0.CTRL.TXEN=1", "$UART0.BAUDDIV=20",
                          "$FPGAIO.LED.LED0=1"), 0)
        self.assertEqual(value("$TIMER0.RELOAD", "$TIMER0.CTRL", "$UART0.CTRL", "$UART0.BAUDDIV", "$FPGAIO.LED"),
                         [1000, 8, 1, 20, 1])
        self.assertIn("LED0=1 (", self.ask(f"gdb:{path}", "regs", "$FPGAIO.LED", chip=BOARD).out)
        self.expect(write("$WDT.WDOGVALUE=1"), 1,
                    err="error: $WDT.WDOGVALUE can't be written: it is not writable; --force writes it all the same.\n")
        # Without physical addresses the server says OK and writes nothing.
        self.expect(write("$UART0.BAUDDIV=21", at=f"gdb:{path},phys=off"), 1,
                    err="error: $UART0.BAUDDIV did not take what was written: 0x00000015 reads back as 0x00000014.\n")
        self.expect(write("--no-verify", "$UART0.BAUDDIV=21", at=f"gdb:{path},phys=off"), 0)
        # The chip stands still until it is let run, and then counts between accesses.
        stands = value("$FPGAIO.COUNTER")
        self.assertEqual(value("$FPGAIO.COUNTER"), stands)
        running = value("$FPGAIO.COUNTER", at=f"gdb:{path},run=on")
        time.sleep(0.2)
        self.assertNotEqual(value("$FPGAIO.COUNTER", at=f"gdb:{path},run=on"), running)
        board.kill()
        board.wait()
        gone = self.ask(f"gdb:{path}", "regs", "$UART0.CTRL", chip=BOARD)
        self.expect(gone, 1, err=f"error: the gdb server {path} can't be reached: Connection refused.\n")


if __name__ == "__main__":
    support.main(__doc__)
