"""Debian packages of the build at hand: which there are, what is in each, and what each asks for. scripts/package makes
those for users, and tries them in a clean system."""

import gzip
import re
import shutil
import subprocess

import support
from support import options, run

PROGRAM = {"usr/bin/veldmap", "usr/share/veldmap/veldmap.xsd", "usr/share/veldmap/map.schema.json",
           "usr/share/veldmap/docpool/style.css", "usr/share/man/man1/veldmap.1.gz", "usr/share/bash-completion/completions/veldmap",
           "usr/share/fish/vendor_completions.d/veldmap.fish"}
DEVELOPMENT = {"include/veldmap/veldmap.h", "include/veldmap/model/element.h", "include/veldmap/veldmap_export.h",
               "libveldmap.so", "cmake/veldmap/veldmapConfig.cmake", "pkgconfig/veldmap.pc"}


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


class Packages(support.Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        folder = cls.enterClassContext(support.tempfile.TemporaryDirectory())
        cls.made = support.Path(folder)
        made = subprocess.run(["cpack", "--config", f"{options.build}/CPackConfig.cmake", "-B", cls.made],
                              capture_output=True, text=True, check=False)
        if made.returncode != 0:
            raise AssertionError(made.stdout + made.stderr)
        cls.packages = {path.name.split("_")[0]: path for path in cls.made.glob("*.deb")}
        cls.version = run("--version").out.strip()

    def files(self, name):
        listed = output_of("dpkg-deb", "--contents", self.packages[name])
        return {line.split()[5].removeprefix("./") for line in listed.splitlines() if not line.startswith("d")}

    def control(self, name):
        told = output_of("dpkg-deb", "--field", self.packages[name])
        return dict(re.findall(r"^([A-Za-z-]+): (.*)$", told, re.MULTILINE))

    def test_what_is_in_them(self):
        self.assertEqual(self.packages.keys(), {"veldmap", "libveldmap0", "libveldmap-dev"})
        program = self.files("veldmap")
        self.assertLessEqual(PROGRAM, program)
        self.assertTrue(any(name.endswith("/_veldmap") for name in program))
        library = {name.rpartition("/")[2] for name in self.files("libveldmap0") if name.startswith("usr/lib")}
        self.assertEqual(library, {"libveldmap.so.0", f"libveldmap.so.{self.version}"})
        development = self.files("libveldmap-dev")
        for end in DEVELOPMENT:
            self.assertTrue(any(name.endswith(f"/{end}") for name in development), end)
        everything = [*program, *self.files("libveldmap0"), *development]
        self.assertEqual(len(everything), len(set(everything)), "no file is in two packages")
        for name in self.packages:
            documents = {f"usr/share/doc/{name}/{file}" for file in ("copyright", "changelog.gz", "changelog.Debian.gz")}
            self.assertLessEqual(documents, self.files(name))

    def test_what_they_ask_for(self):
        exactly = f"(= {self.version}-1)"
        program = self.control("veldmap")
        self.assertEqual(program["Version"], f"{self.version}-1")
        self.assertIn(f"libveldmap0 {exactly}", program["Depends"])
        self.assertRegex(program["Depends"], r"libqt6core6t?6?4? \(>= ")
        self.assertRegex(self.control("libveldmap0")["Depends"], "libqt6xml6")
        development = self.control("libveldmap-dev")["Depends"]
        for wanted in (f"libveldmap0 {exactly}", f"veldmap {exactly}", "qt6-base-dev"):
            self.assertIn(wanted, development)
        shlibs = output_of("dpkg-deb", "--info", self.packages["libveldmap0"], "shlibs")
        self.assertRegex(shlibs, r"^libveldmap 0 libveldmap0")
        self.assertIn("activate-noawait ldconfig", output_of("dpkg-deb", "--info", self.packages["libveldmap0"], "triggers"))

    def test_what_the_documents_say(self):
        for name, package in self.packages.items():
            subprocess.run(["dpkg-deb", "-x", package, self.folder], check=True)
            documents = self.folder / "usr/share/doc" / name
            self.assertIn("No licence has been chosen yet", (documents / "copyright").read_text())
            log = gzip.decompress((documents / "changelog.Debian.gz").read_bytes()).decode()
            self.assertRegex(log, rf"^veldmap \({re.escape(self.version)}-1\) .*\n\n  \* .*\n\n -- .* <.*>  \w{{3}}, \d\d ")
            news = gzip.decompress((documents / "changelog.gz").read_bytes()).decode()
            self.assertEqual(re.search(r"^## (\S+),", news, re.MULTILINE)[1], self.version)
        manual = gzip.decompress((self.folder / "usr/share/man/man1/veldmap.1.gz").read_bytes()).decode()
        self.assertIn(f'"Veldmap {self.version}"', manual)


if __name__ == "__main__":
    def prepare():
        for tool in ("cpack", "dpkg-deb", "dpkg-shlibdeps"):
            if not shutil.which(tool):
                support.skip(f"{tool} is not installed")

    support.main(__doc__, arguments=[("--build", {"required": True, "metavar": "DIR", "help": "the build directory"})],
                 prepare=prepare)
