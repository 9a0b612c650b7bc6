"""Encrypted containers as users have them: a description that is sealed file by file gives the same headers, openssl
agrees on every byte, and what is no container is refused."""

import hashlib
import shutil
import subprocess
import struct
import unittest
from pathlib import Path

import support
from support import options, run

DEVELOPMENT_KEY = b"veldmap development key, public."
PLAIN = b"<archive><var name='N' value='7'/></archive>\n"


def openssl(content, key, vector, *direction):
    command = ["openssl", "enc", "-aes-256-cbc", "-nopad", "-K", key.hex(), "-iv", vector.hex(), *direction]
    return subprocess.run(command, input=content, capture_output=True, check=True).stdout


def container(document, key=DEVELOPMENT_KEY, vector=bytes(range(16)), length=None):
    """A container that owes nothing to the program."""
    filled = document + b"#" * (-len(document) % 16)
    head = b"EXML" + struct.pack("<HI", 1, len(document) if length is None else length) + vector
    return head + openssl(filled, key, vector, "-e")


class Container(support.Case):
    def encrypt(self, source, destination):
        self.expect(run("-q", "encrypt", source, destination), 0)

    def generated(self, root, name):
        out = self.folder / name
        self.expect(run("build", "-q", "--chip", root, "--headers", out / "h", "--vhdl", out / "v", "--docs", out / "d"),
                    0)
        return support.files_below(out)

    def seal(self, source, target, sealed, renamed):
        """Lays out a description anew. The predicates say of a file by its number whether it becomes a container, and
        whether that is then called .xmd."""
        names = [path.relative_to(source) for path in sorted(source.rglob("*.xml"))]
        called = {name: name.with_suffix(".xmd") if sealed(number) and renamed(number) else name
                  for number, name in enumerate(names)}
        for number, name in enumerate(names):
            text = (source / name).read_text()
            for other in names:
                for word in (str(other), f"../{other}", other.name):
                    text = text.replace(f'file="{word}"', f'file="{Path(word).with_suffix(called[other].suffix)}"')
            place = self.lay_out({Path(target, called[name]): text}, Path(target, called[name]))
            if sealed(number):
                self.encrypt(place, place.with_suffix(".new"))
                place.with_suffix(".new").rename(place)
            self.assertEqual(place.read_bytes().startswith(b"EXML"), sealed(number), place)
        return self.folder / target / called[Path("soc.xml")]

    def check_layouts(self, source):
        plain = self.generated(source / "soc.xml", "plain")
        self.assertTrue(plain)
        layouts = {"everything": (lambda number: True, lambda number: True),
                   "under the old names": (lambda number: True, lambda number: False),
                   "every other": (lambda number: number % 2 == 0, lambda number: True),
                   "the rest": (lambda number: number % 2 == 1, lambda number: number % 3 != 0)}
        for title, (sealed, renamed) in layouts.items():
            with self.subTest(layout=title, source=source.name):
                self.assertEqual(self.generated(self.seal(source, title, sealed, renamed), title + " out"), plain)

    def test_sealed_chips_give_the_same_headers(self):
        for folder in support.chips():
            self.check_layouts(folder)
            for made in self.folder.iterdir():
                shutil.rmtree(made)

    def test_openssl_agrees(self):
        if not shutil.which("openssl"):
            self.skipTest("openssl is missing")
        if options.secret_key:
            self.skipTest("the program has a secret key, which openssl would show to all in its command line")
        for size in (0, 15, 16, 17, 100_000):
            document = bytes(index * 31 % 251 for index in range(size))
            source = self.lay_out({"soc.xml": document}, "soc.xml")
            self.expect(run("-q", "encrypt", "--exact", source, self.folder / "soc.xmd"), 0)
            made = (self.folder / "soc.xmd").read_bytes()
            self.assertEqual(made[:10], b"EXML" + struct.pack("<HI", 1, size))
            self.assertEqual(len(made), 26 + (size + 15) // 16 * 16)
            self.assertEqual(openssl(made[26:], DEVELOPMENT_KEY, made[10:26], "-d")[:size], document)
        files = {"root.xml": support.archive('<include file="sub/n.xmd"/>'), "sub/n.xmd": container(PLAIN)}
        root = self.lay_out(files)
        self.expect(run("check", root), 0)
        self.expect(run("eval", "--chip", self.folder / "sub/n.xmd", "N"), 0, "7\n")
        for damaged in (container(PLAIN, key=bytes(32)), container(PLAIN, length=len(PLAIN) - 5)):
            self.lay_out({"sub/n.xmd": damaged})
            told = run("check", root)
            self.expect(told, 1, err=None)
            self.assertRegex(told.err, rf"\A{self.folder}/sub/n\.xmd:[12]:\d+: error: .+\n\Z")

    def test_damage_is_told(self):
        text = support.archive("<comment>UART</comment>", "<var name='N' value='7'/>")
        self.lay_out({"sub/n.xml": text, "root.xml": support.archive('<include file="sub/n.xmd"/>')})
        sealed = self.folder / "sub/n.xmd"
        self.encrypt(self.folder / "sub/n.xml", sealed)
        whole = sealed.read_bytes()
        words = "The container is damaged, or was written with another key."
        for name, at in (("vector", 10), ("document", 30), ("digest", len(whole) - 90), ("end", len(whole) - 20)):
            sealed.write_bytes(whole[:at] + bytes([whole[at] ^ 1]) + whole[at + 1:])
            for command in (("check", self.folder / "root.xml"), ("tree", "--chip", self.folder / "root.xml")):
                told = run(*command)
                self.assertEqual((told.status, told.out), (1, ""), name)
                self.assertTrue(told.err.startswith(f"error: {sealed}: {words}\n") or
                                told.err.startswith(f"{sealed}:0:0: error: {words}\n"), told.err)
        sealed.write_bytes(whole)
        self.expect(run("eval", "--chip", sealed, "N"), 0, "7\n")
        if options.secret_key or not shutil.which("openssl"):
            return
        plain = openssl(whole[26:], DEVELOPMENT_KEY, whole[10:26], "-d").rstrip(b"\0")
        digest = hashlib.sha256(text.encode()).hexdigest()
        self.assertEqual(plain.decode(), f"{text}<?veldmap-sha256 {digest} is the digest of all before?>")
        self.addCleanup(support.LINTED.update, set(support.LINTED))
        support.LINTED.clear()
        sealed.write_bytes(container(plain, key=bytes(32)))
        self.assertIn("note: the file is an encrypted container without a digest: it may be damaged, or was written "
                      "with another key\n", run("check", self.folder / "root.xml").err)

    def test_command(self):
        source = self.lay_out({"soc.xml": PLAIN}, "soc.xml")
        target = self.folder / "soc.xmd"
        warning = f"warning: {target} keeps nothing secret: this veldmap was built with the development key, which " \
                  "everybody has.\n"
        self.expect(run("encrypt", source, target), 0, err="" if options.secret_key else warning)
        before = support.files_below(self.folder)
        for words in ((), (source,), (source, target, source), (source, target, "--chip")):
            self.expect(run("encrypt", *words), 2, err=None)
        for words, named in (((self.folder / "no.xml", self.folder / "new"), self.folder / "no.xml"),
                             ((source, self.folder / "no/soc.xmd"), self.folder / "no/soc.xmd")):
            self.expect(run("encrypt", *words), 1, err=f"error: Unable to open file {named}\n")
        short = self.lay_out({"short.xmd": before["soc.xmd"][:20]}, "short.xmd")
        self.expect(run("check", short), 1,
                    err=f"{short}:0:0: error: The container ends within its header of 26 bytes.\n")
        short.unlink()
        self.assertEqual(support.files_below(self.folder), before)


if __name__ == "__main__":
    support.main(__doc__, [
        ("--secret-key", {"action": "store_true", "help": "the program was built with VELDMAP_KEY_FILE"})])
