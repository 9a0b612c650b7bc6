"""Build systems: an installation, moved to another place, as projects find and use it, and what make and ninja know of
descriptions. Each project is built once after a change, and must be right then."""

import os
import shlex
import shutil
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

import support
from support import archive, options, run

GENERATORS = {"Ninja": "ninja", "Unix Makefiles": "make"}
# A program in C that prints what stands in the headers.
MAIN = """#include <stdio.h>
#define KSEG1(address) (address)
#include "soc.h"
int main(void) { printf("%d\\n", SPEED); return 0; }
"""
PROJECT = """cmake_minimum_required(VERSION 3.21)
project(firmware LANGUAGES C)
find_package(veldmap REQUIRED COMPONENTS generate)
veldmap_generate(soc_headers CHIP hw/soc.xml)
add_executable(firmware main.c)
target_link_libraries(firmware PRIVATE soc_headers)
"""
# Another machine as far as CMake can tell: packages of this one are not looked for.
TOOLCHAIN = """set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR other)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT -m32)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_CROSSCOMPILING_EMULATOR false)
set(CMAKE_FIND_ROOT_PATH /nowhere)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
"""


def soc(speed, *lines):
    return archive(f'<var name="SPEED" value="{speed}"/>', *lines)


def command(*words, folder=None, status=0, environment=None):
    """Runs a command that must end with this status (None: with another one than 0); what it says."""
    done = subprocess.run([str(word) for word in words], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, env={**os.environ, **(environment or {})})
    if done.returncode != status and (status is not None or done.returncode == 0):
        raise AssertionError(f"{' '.join(map(str, words))}\nended with {done.returncode}:\n{done.stdout[-4000:]}")
    return done.stdout


class Project(support.Case):
    """A project in a directory of its own, whose name needs quotes."""

    def setUp(self):
        super().setUp()
        self.source = self.folder / "a project"
        self.build = self.source / "build"
        self.files = {"CMakeLists.txt": PROJECT, "main.c": MAIN, "hw/soc.xml": soc(1)}

    def write(self, files):
        """Writes files that are newer than all before."""
        time.sleep(0.02)
        self.lay_out({f"a project/{name}": text for name, text in files.items()})

    def configure(self, generator="Ninja", *arguments, status=0):
        return command("cmake", "-G", generator, "-S", self.source, "-B", self.build, "-DCMAKE_BUILD_TYPE=",
                       f"-DCMAKE_PREFIX_PATH={options.prefix}", *arguments, status=status)

    def make(self):
        # A compiler cache knows the sources again in another directory.
        return command("cmake", "--build", self.build, environment={"CCACHE_BASEDIR": "/"})

    def printed(self):
        self.make()
        return command(self.build / "firmware").strip()

    def time_of(self, name):
        return next(self.build.rglob(name)).stat().st_mtime_ns

    def for_each_generator(self):
        for generator, program in GENERATORS.items():
            if shutil.which(program):
                with self.subTest(generator):
                    shutil.rmtree(self.source, ignore_errors=True)
                    self.write(self.files)
                    yield generator


class Generating(Project):
    def test_a_change_is_built_at_once_and_once(self):
        for generator in self.for_each_generator():
            self.configure(generator)
            self.assertEqual(self.printed(), "1")
            self.write({"hw/soc.xml": soc(2)})
            self.assertEqual(self.printed(), "2", "not a build later")
            self.make() # Ninja learns what the first run left
            made = [self.time_of(name) for name in ("main.c.o", "soc_headers.stamp", "soc.h")]
            self.write({"hw/other.xml": archive(), "hw/sub/more.xml": archive()})
            said = self.make()
            self.assertEqual([self.time_of(name) for name in ("main.c.o", "soc_headers.stamp", "soc.h")], made,
                             "another file is nobody's concern")
            if generator == "Ninja":
                self.assertIn("no work to do", said)
            self.write({"hw/soc.xml": soc("1+1").replace("1+1", "2")})
            self.make()
            self.assertEqual([self.time_of(name) for name in ("main.c.o", "soc.h")], [made[0], made[2]],
                             "nothing is compiled for a header that stays the same")
            self.assertGreater(self.time_of("soc_headers.stamp"), made[1])

    def test_includes_that_come_and_go(self):
        include = '<include file="../shared/deep/speed.xml" optional="yes"/>'
        for generator in self.for_each_generator():
            self.configure(generator)
            self.assertEqual(self.printed(), "1")
            self.write({"hw/soc.xml": archive(include), "shared/deep/speed.xml": soc(3)})
            self.assertEqual(self.printed(), "3", "in a directory that was not on the way before")
            self.write({"shared/deep/speed.xml": soc(4)})
            self.assertEqual(self.printed(), "4")
            self.write({"hw/soc.xml": archive(include, '<var name="FAST" value="SPEED"/>'), "main.c": MAIN.replace(
                "SPEED", "FAST")})
            self.assertEqual(self.printed(), "4")
            headers = {str(path.relative_to(self.build)) for path in self.build.rglob("*.h")}
            self.assertLessEqual({"soc_headers-headers/hw/soc.h", "soc_headers-headers/shared/deep/speed.h"}, headers)
            self.assertEqual(list(self.folder.rglob("a project/shared/**/*.h")), [])
            # A file that is looked for and not found is known as well.
            self.write({"hw/soc.xml": soc(5, '<include file="later.xml" optional="yes"/>'), "main.c": MAIN.replace(
                "SPEED", "SPEED")})
            self.write({"hw/later.xml": archive()})
            self.write({"main.c": MAIN})
            self.assertEqual(self.printed(), "5")
            self.write({"hw/later.xml": archive("<bogus/>")})
            command("cmake", "--build", self.build, status=None)

    def test_what_lies_beside_the_headers(self):
        """Two roots, so that words and global variables have two directories."""
        self.files |= {
            "CMakeLists.txt": PROJECT.replace("hw/soc.xml", "hw/soc.xml SOFT sw/main.xml TYPES GLOBALS ACCESSORS"),
            "hw/soc.xml": archive('<var name="LINES" value="2" global="yes"/>', '<module name="led">',
                                  '<reg32 name="ctrl" protect="rw">',
                                  '<bits name="on" pos="3:2" access="rw"/></reg32></module>'),
            "sw/main.xml": archive('<var name="TASKS" value="7"/>'),
            "main.c": """#include <stdio.h>
                #include <veldmap/types.h>
                #include "globals.h"
                #include "soc_accessors.h"
                #include "main.h"
                int main(void) { printf("%d\\n", (int)led_ctrl_with_on(0, LINES) + TASKS); return 0; }
                """}
        for generator in self.for_each_generator():
            self.configure(generator)
            self.assertEqual(self.printed(), "15")
            self.write({"hw/soc.xml": self.files["hw/soc.xml"].replace('"2"', '"1"')})
            self.assertEqual(self.printed(), "11")

    def test_two_roots_with_one_base(self):
        self.files |= {"CMakeLists.txt": PROJECT.replace("hw/soc.xml", "hw/soc.xml SOFT sw/main.xml BASE ."),
                       "sw/main.xml": archive('<var name="TASKS" value="7"/>'),
                       "main.c": MAIN.replace('"soc.h"', '"soc.h"\n#include "main.h"').replace("SPEED", "SPEED+TASKS")}
        for generator in self.for_each_generator():
            self.configure(generator)
            self.assertEqual(self.printed(), "8")
            self.assertTrue((self.build / "soc_headers-headers/soft/sw/main.h").is_file())
        shutil.rmtree(self.build)
        self.write({"CMakeLists.txt": PROJECT + "veldmap_generate(again CHIP hw/soc.xml OUTPUT soc_headers-headers)\n"})
        self.assertIn("soc_headers and again both make", " ".join(self.configure(status=1).split()))

    def test_a_project_that_is_not_in_c_plus_plus(self):
        self.write({**self.files, "CMakeLists.txt": PROJECT.replace(" COMPONENTS generate", "")})
        self.assertIn("veldmap::library is left out: the project does not enable the language CXX", self.configure())
        self.assertEqual(self.printed(), "1")
        self.write({"CMakeLists.txt": PROJECT.replace("COMPONENTS generate", "COMPONENTS generate library")})
        said = " ".join(self.configure(status=1).split())
        self.assertIn("component library can't be used here: the project does not enable the language CXX", said)
        self.write({"CMakeLists.txt": PROJECT.replace("COMPONENTS generate", "COMPONENTS frobnicate")})
        self.configure(status=1)

    def test_another_machine(self):
        with_library = PROJECT.replace("LANGUAGES C", "LANGUAGES C CXX").replace("add_executable(firmware",
                                                                                 "add_library(firmware OBJECT")
        self.write({**self.files, "toolchain.cmake": TOOLCHAIN, "CMakeLists.txt": with_library})
        package = f"-Dveldmap_DIR={next(options.prefix.rglob('veldmapConfig.cmake')).parent}"
        toolchain = f"-DCMAKE_TOOLCHAIN_FILE={self.source}/toolchain.cmake"
        self.configure("Ninja", package, toolchain)
        self.make()
        self.write({"CMakeLists.txt": with_library.replace(" COMPONENTS generate", "")})
        self.assertIn("veldmap::library is left out", self.configure("Ninja", package, toolchain))
        self.make()
        self.write({"CMakeLists.txt": with_library.replace("generate)", "library)", 1)})
        self.configure("Ninja", package, toolchain, status=1)


class Installed(Project):
    def test_pkg_config(self):
        environment = {"PKG_CONFIG_PATH": str(next(options.prefix.rglob("veldmap.pc")).parent)}
        flags = command("pkg-config", "--cflags", "--libs", "veldmap", environment=environment)
        flags = shlex.split(flags)
        self.assertIn(options.prefix, [Path(os.path.normpath(flag[2:])).parent for flag in flags if flag.startswith("-I")])
        consumer = Path(__file__).resolve().parents[1] / "consumer"
        self.write({"led.xml": (consumer / "led.xml").read_text()})
        command(options.prefix / "bin/veldmap", "headers", "--chip", self.source / "led.xml", "-o", self.source)
        program = self.folder / "program"
        command(options.compiler, "-std=c++20", "-fPIC", consumer / "main.cpp", f"-I{self.source}", *flags, "-o", program)
        libraries = {"LD_LIBRARY_PATH": str(next(options.prefix.rglob("libveldmap.so")).parent)}
        command(program, self.source / "led.xml", environment=libraries)

    def test_site(self):
        self.write(self.files)
        command(options.prefix / "bin/veldmap", "docs", "--chip", self.source / "hw/soc.xml", "-o", self.folder / "site")
        self.assertTrue((self.folder / "site/style.css").is_file())

    def test_no_file_names_the_place_of_the_installation(self):
        for path in options.prefix.rglob("*"):
            if path.suffix in {".cmake", ".pc", ".h"}:
                text = path.read_text()
                self.assertNotIn(str(options.first_prefix), text, path)
                self.assertFalse(path.suffix == ".pc" and "/usr/local" in text, path)


class AsPart(Project):
    def test_of_another_project(self):
        """Ways of having the sources in a project; all build into one directory, so that they build the program once."""
        uses = f"""add_executable(firmware main.c)
            veldmap_generate(soc_headers CHIP hw/soc.xml)
            target_link_libraries(firmware PRIVATE soc_headers)
            add_executable(tool ${{CONSUMER}}/main.cpp)
            veldmap_generate(led_headers CHIP ${{CONSUMER}}/led.xml)
            target_link_libraries(tool PRIVATE veldmap::library led_headers)
            """
        start = "cmake_minimum_required(VERSION 3.25)\nproject(firmware LANGUAGES C CXX)\n"
        ways = {"FetchContent": f"""include(FetchContent)
                    FetchContent_Declare(veldmap SOURCE_DIR {options.source})
                    FetchContent_MakeAvailable(veldmap)
                    """,
                "add_subdirectory": f"add_subdirectory({options.source} _deps/veldmap-build)\n"}
        consumer = Path(__file__).resolve().parents[1] / "consumer"
        speed = '<include file="../shared/speed.xml"/>'
        self.write({**self.files, "hw/soc.xml": archive(speed), "shared/speed.xml": soc(1)})
        for number, (way, text) in enumerate(ways.items()):
            with self.subTest(way):
                self.write({"CMakeLists.txt": start + text + uses})
                self.configure("Ninja", f"-DCONSUMER={consumer}", f"-DCMAKE_CXX_COMPILER={options.compiler}",
                               "-DCMAKE_CXX_FLAGS=-Werror")
                self.assertEqual(self.printed(), str(2 * number + 1))
                command(self.build / "tool", consumer / "led.xml")
                self.write({"shared/speed.xml": soc(2 * number + 2)})
                self.assertEqual(self.printed(), str(2 * number + 2))
                self.write({"shared/speed.xml": soc(2 * number + 3)})
                self.assertEqual(self.printed(), str(2 * number + 3))
                self.assertNotIn("veldmap", command("cmake", "--install", self.build, "--prefix", self.folder / "none"))
                self.make()
                self.assertIn("no work to do", self.make())


class Dependencies(support.Case):
    NAMES = ("blank space.xml", "sharp#.xml", "dollar$.xml", "back\\slash.xml", "back\\ blank.xml", "co:lon.xml")

    def test_make_and_ninja_read_the_names(self):
        root = self.lay_out({
            "root.xml": archive(*(f'<include file="{name}"/>' for name in self.NAMES),
                                '<include file="not there.xml" optional="yes"/>'),
            **{name: archive() for name in self.NAMES},
            "Makefile": f'-include made.d\nmade:\n\t"{options.veldmap}" headers --no-lint --chip root.xml -o out '
                        "--depfile made.d --depfile-target made\n\ttouch made\n",
            "build.ninja": f'rule make\n command = "{options.veldmap}" headers --no-lint --chip root.xml -o out --depfile '
                           "made.d --depfile-target made && touch made\n depfile = made.d\nbuild made: make\n"})
        written = run("headers", "--chip", root, "-o", self.folder / "other", "--depfile", self.folder / "d", "--list", "-")
        self.expect(written, 0, out=None)
        self.assertEqual(set(written.out.split("\n")) - {""},
                         {str(path) for path in (self.folder / "other").iterdir()})
        targets, *read = (self.folder / "d").read_text().split(" \\\n ")
        self.assertEqual(targets.count(".h"), len(written.out.splitlines()))
        self.assertEqual(len(read), len(self.NAMES) + 2)
        for program in ("make", "ninja"):
            if not shutil.which(program):
                continue
            with self.subTest(program):
                tool = [program, "-C", self.folder]
                (self.folder / "not there.xml").write_text(archive())
                for path in (self.folder / "made", self.folder / "made.d"):
                    path.unlink(missing_ok=True)
                command(*tool, *(["made"] if program == "make" else []))
                self.assertRegex(command(*tool, *(["made"] if program == "make" else [])), "up to date|no work to do")
                for name in (*self.NAMES, "root.xml", "not there.xml"):
                    time.sleep(0.02)
                    os.utime(self.folder / name)
                    self.assertIn("files written", command(*tool, *(["made"] if program == "make" else [])), name)
                (self.folder / "not there.xml").unlink()
                for _ in range(2): # until it is there, each build looks for it
                    self.assertIn("files written", command(*tool, *(["made"] if program == "make" else [])))

    def test_dry_runs(self):
        root = self.lay_out({"root.xml": archive()})
        out = self.folder / "out"
        for name, made in (("headers", 2), ("vhdl", 1), ("docs", 26)):
            told = run(name, "--chip", root, "-o", out, "--dry-run", "--list", "-")
            self.expect(told, 0, out=None)
            self.assertEqual((len(told.out.splitlines()), told.summary), (made, ""))
        told = run("build", "--chip", root, "--headers", out, "--vhdl", out, "--dry-run", "--list", self.folder / "l")
        self.expect(told, 0)
        self.assertEqual(len((self.folder / "l").read_text().splitlines()), 3)
        self.assertFalse(out.exists())
        self.expect(run("headers", "--chip", root, "-o", out, "--base", root), 2,
                    err=f"error: {root} is no directory: --base takes the one that the names of files start from.\n")
        self.expect(run("headers", "--chip", root, "-o", out, "--base", ".", "--common-base"), 2, out=None, err=None)
        self.expect(run("headers", "--chip", root, "-o", out, "--list", self.folder / "no/l"), 1,
                    err=f"error: {self.folder}/no/l can't be written: No such file or directory\n")


class Bases(support.Case):
    def test_where_names_start(self):
        """A root in a directory of its own, beside which others lie: as it is, and from a base on."""
        root = self.lay_out({"hw/soc.xml": archive('<include file="../shared/common.xml"/>',
                                                   '<include file="moved.xml"/>'),
                             "shared/common.xml": archive(),
                             "hw/moved.xml": archive().replace("<archive>", '<archive relative="../../up.xml">')},
                            "hw/soc.xml")
        out, deep = self.folder / "out", self.folder / "out/a/b"
        outside = {"soc": deep / "soc", "common": out / "a/shared/common", "up": out / "up"}
        shared = {"soc": deep / "hw/soc", "common": deep / "shared/common", "up": out / "a/up"}
        common = {name: deep / self.folder.name / path for name, path in
                  {"soc": "hw/soc", "common": "shared/common", "up": "../up"}.items()}
        for bases, places in (([], outside), (["--base", self.folder], shared), (["--common-base"], common)):
            for command, ending in (("headers", ".h"), ("vhdl", "_reg_pkg.vhd"), ("build", ".h")):
                shutil.rmtree(out, ignore_errors=True)
                to = ["--headers", deep, "--vhdl", deep] if command == "build" else ["-o", deep]
                for strict in ([], ["--strict"]):
                    told = run(command, "--chip", root, *to, *bases, *strict)
                    files = {name: Path(os.path.normpath(f"{place}{ending}")) for name, place in places.items()}
                    lie = [path for path in files.values() if deep not in path.parents]
                    self.expect(told, 1 if strict and lie else 0, err=None)
                    for path in files.values():
                        self.assertTrue(path.is_file(), (command, bases, path))
                        self.assertEqual(path in lie, f"{path} lies outside {deep}, as" in told.err, told.err)
                    self.assertEqual("error: " in told.err, bool(strict and lie))
            self.assertEqual({path.name for path in out.rglob("*.h")}, {f"{name}{kind}.h" for name in places
                                                                       for kind in ("", "_asm")})


def install():
    """Installs the build in a first place and moves it to a second."""
    folder = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(folder.cleanup)
    options.first_prefix, options.prefix = Path(folder.name) / "first", Path(folder.name) / "moved to here"
    command("cmake", "--install", options.build, "--prefix", options.first_prefix)
    options.first_prefix.rename(options.prefix)


if __name__ == "__main__":
    support.main(__doc__.splitlines()[0], [
        ("--source", {"required": True, "help": "the sources of the whole project"}),
        ("--build", {"required": True, "help": "where they are built"}),
        ("--compiler", {"default": "c++", "help": "the compiler of the build"})], install)
