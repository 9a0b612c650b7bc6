"""The key of containers: what a build takes for one, and that it tells the key to nobody."""

import os
import re
import subprocess
from pathlib import Path

import support
from support import options

KEY = bytes(range(200, 232))


def cmake(*arguments):
    return subprocess.run(["cmake", *map(str, arguments)], capture_output=True, text=True)


class Key(support.Case):
    def source_of(self, content):
        """The source that is made of a key file; None when it is refused."""
        file, output = self.folder / "the key", self.folder / "key.cpp"
        file.write_bytes(content)
        done = cmake(f"-DKEY_FILE={file}", f"-DOUTPUT={output}", "-P",
                     options.source / "cmake/write_key_source.cmake")
        self.assertEqual(done.returncode == 0, output.exists(), done.stderr)
        if content:
            self.assertNotIn(content.strip().decode("latin1"), done.stdout + done.stderr)
        if not output.exists():
            return None
        self.assertEqual(output.stat().st_mode & 0o777, 0o600)
        return output.read_text()

    def bytes_in(self, source):
        return bytes(int(word, 16) for word in re.findall(r"0x([0-9A-Fa-f]{2})\b", source or ""))

    def test_forms(self):
        digits = KEY.hex().encode()
        for content in (KEY, digits, digits.upper(), digits + b"\n", bytes(32), b"\n;\"\\${x}" * 4):
            wanted = content if len(content) == 32 else KEY
            self.assertEqual(self.bytes_in(self.source_of(content)), wanted, content)
        for content in (b"", KEY[:-1], KEY + b"\n", digits[:-1], digits + b"\r\n", digits + b"0", digits + b"\n\n",
                        digits[:-1] + b"g", digits[:-1] + b"\n", digits[:-1] + b"\n\n", digits[:-1] + b"\0",
                        b" " + digits, b"0x" + digits[2:], digits[:63] + b"\n" + digits[:1]):
            self.assertIsNone(self.source_of(content), content)

    def test_build_tells_nobody(self):
        file, build = self.folder / "secret", self.folder / "build"
        file.write_bytes(b"no key")
        configure = ("-S", options.source, "-B", build, "-G", "Ninja", f"-DCMAKE_CXX_COMPILER={options.compiler}",
                     f"-DVELDMAP_KEY_FILE={file}", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON")
        refused = cmake(*configure)
        self.assertNotEqual(refused.returncode, 0)
        self.assertIn("VELDMAP_KEY_FILE is no key", refused.stderr)
        self.assertNotIn("no key\n", refused.stderr)
        file.write_bytes(KEY.hex().encode())
        runs = [cmake("--trace-expand", *configure), cmake("--build", build, "--target", "veldmap_key", "--verbose")]
        for done in runs:
            self.assertEqual(done.returncode, 0, done.stderr[-2000:])
            self.assertNotIn("development key", done.stdout)
            self.assertFalse(self.holds_key((done.stdout + done.stderr).encode()))
        self.assertNotRegex(runs[1].stdout, r"\bccache ", "a cache would keep the key")
        holders = {path for path in build.rglob("*") if path.is_file() and self.holds_key(path.read_bytes())}
        self.assertEqual({path.name for path in holders}, {"key.cpp", "key.cpp.o"})

    def test_every_build_looks_at_the_key(self):
        file, build, spare = self.folder / "secret", self.folder / "build", self.folder / "spare"
        file.write_bytes(KEY)
        configure = ("-S", options.source, "-B", build, "-G", "Ninja", f"-DCMAKE_CXX_COMPILER={options.compiler}")

        def source_after_build(status=0):
            done = cmake("--build", build, "--target", "veldmap_key")
            self.assertEqual(done.returncode != 0, status != 0, done.stdout)
            sources = list(build.rglob("key.cpp"))
            return self.bytes_in(sources[0].read_text()) if sources else None

        self.assertEqual(cmake(*configure, f"-DVELDMAP_KEY_FILE={file}").returncode, 0)
        self.assertEqual(source_after_build(), KEY)
        spare.write_bytes(KEY[::-1])
        os.utime(spare, (1, 1))                     # another key, in a file that is older
        file.unlink()
        self.assertIsNone(source_after_build(status=1), "without its key file a build fails and keeps no key")
        spare.rename(file)
        self.assertEqual(source_after_build(), KEY[::-1])
        self.assertEqual(cmake(*configure, "-DVELDMAP_KEY_FILE=").returncode, 0)
        self.assertEqual([path for path in build.rglob("key.cpp*")], [], "the development key leaves none behind")

    def holds_key(self, content):
        words = b", ".join(b"0x%02x" % byte for byte in KEY[:4])
        return any(form in content.lower() for form in (KEY[:4].lower(), KEY[:4].hex().encode(), words))


if __name__ == "__main__":
    support.main(__doc__, [("--source", {"type": Path, "required": True, "help": "the project"}),
                           ("--compiler", {"required": True, "help": "the C++ compiler"})])
