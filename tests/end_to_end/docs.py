"""The command docs: where the site lands, where its fixed files come from, and what is told when a file can't be
written."""

import os
import shutil

import support
from support import POOL, archive, run

CHIP = archive('<module name="uart"><reg32 name="ctrl"/></module>', '<instance name="UART0" type="uart"/>',
               '<instance name="UART1" type="uart" address="0x10"/>')
SOFT = archive('<typedef name="task"><uint32 name="id"/></typedef>', '<instance name="TASK" type="task"/>')
MADE = {"index.html", "chip.html", "menu.js"}


class Docs(support.Case):
    def setUp(self):
        super().setUp()
        self.chip = self.lay_out({"chip.xml": CHIP, "soft.xml": SOFT}, "chip.xml")
        self.soft = self.folder / "soft.xml"
        self.program = support.program_with_pool(self.folder)

    def docs(self, *arguments, **settings):
        return run("docs", *arguments, **{"program": self.program, **settings})

    def test_one_root(self):
        site = self.folder / "new/site"
        self.expect(self.docs("--chip", self.chip, "-o", site), 0)
        files = support.files_below(site)
        self.assertEqual(files.keys(), {*POOL, *MADE, "UART0.html", "UART1.html"})
        for name in POOL:
            self.assertEqual(files[name].decode(), f"stand-in for {name}")
        self.assertIn(b"<title>chip</title>", files["index.html"])
        self.expect(self.docs("--soft", self.soft, "-o", self.folder / "other"), 0)
        self.assertIn("TASK.html", support.files_below(self.folder / "other"))

    def test_encoding(self):
        """A page that is not in ASCII says that it is in UTF-8, since a server need not."""
        chip = self.lay_out({"words.xml": archive(
            '<module name="m"><reg32 name="r"><comment>Größe</comment></reg32></module>',
            '<module name="n"><reg32 name="r"/></module>', '<instance name="M" type="m"/>',
            '<instance name="N" type="n" address="0x10"/>')}, "words.xml")
        self.expect(self.docs("--chip", chip, "-o", self.folder / "site"), 0)
        files = support.files_below(self.folder / "site")
        marked = {name for name, content in files.items() if content.startswith(b"\xEF\xBB\xBF")}
        self.assertEqual(marked, {"M.html"})
        self.assertIn("Größe", files["M.html"].decode())

    def test_both_roots(self):
        site = self.folder / "site"
        self.expect(self.docs("--chip", self.chip, "--soft", self.soft, "-o", site), 0)
        expected = {f"chip/{name}" for name in {*POOL, *MADE, "UART0.html", "UART1.html"}}
        expected |= {f"soft/{name}" for name in {*POOL, *MADE, "TASK.html"}}
        self.assertEqual(support.files_below(site).keys(), expected)

    def test_pool_is_found_from_anywhere(self):
        """Beside the program or where an installation has it; never in the current directory, unless both are one."""
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        link = elsewhere / "linked"
        link.symlink_to(self.program)
        for program in (os.path.relpath(self.program, elsewhere), link):
            self.expect(self.docs("--chip", self.chip, "-o", "site", program=program, folder=elsewhere), 0)
            self.assertEqual(support.files_below(elsewhere / "site").keys() & set(POOL), set(POOL))
            shutil.rmtree(elsewhere / "site")
        installed = self.folder / "prefix"
        (installed / "bin").mkdir(parents=True)
        support.lay_out_pool(installed / "share/veldmap/docpool")
        program = shutil.copy(self.program, installed / "bin/veldmap")
        self.expect(self.docs("--chip", self.chip, "-o", "site", program=program, folder=elsewhere), 0)
        self.assertEqual(support.files_below(elsewhere / "site").keys() & set(POOL), set(POOL))

    def test_site_without_all_of_its_pool(self):
        (self.folder / "docpool/ua.js").unlink()
        (self.folder / "docpool/hole.png").unlink()
        site = self.folder / "site"
        self.expect(self.docs("--chip", self.chip, "-o", site), 1,
                    err=f"error: {site} is not complete, since {self.folder}/docpool lacks: hole.png, ua.js\n")
        self.assertIn("UART1.html", support.files_below(site))

    def test_files_that_cannot_be_written(self):
        site = self.folder / "site"
        for name in ("ua.js", "chip.html", "UART0.html"):
            (site / name).mkdir(parents=True)
        told = self.docs("--chip", self.chip, "-o", site)
        self.expect(told, 1, err=None)
        *files, last = told.err.splitlines()
        self.assertEqual([line.split(" can't be written: ")[0] for line in files],
                         [f"error: {site}/{name}" for name in ("ua.js", "chip.html", "UART0.html")])
        self.assertEqual(last, "error: The pages behind it are not written: UART1")
        self.expect(self.docs("--chip", self.chip, "-o", self.chip), 1,
                    err=f"error: The directory {self.chip} can't be made: Not a directory\n")

    def test_names_that_can_be_no_page(self):
        for name, reason in (("../out", "the name of the instance leads out of the directory"),
                             ("a/b", "the name of the instance leads out of the directory"),
                             ("index", "the site has another file of that name")):
            with self.subTest(name):
                root = self.lay_out({"odd.xml": CHIP.replace("UART0", name)}, "odd.xml")
                site = self.folder / "sites" / name.replace("/", "_")
                self.expect(self.docs("--chip", root, "-o", site), 1,
                            err=f"error: {site}/{name}.html can't be written: {reason}\n"
                                "error: The pages behind it are not written: UART1\n")
                self.assertEqual(support.files_below(site).keys(), {*POOL, *MADE})
        self.assertEqual({path.name for path in (self.folder / "sites").iterdir()}, {".._out", "a_b", "index"})

    def test_two_instances_of_one_name(self):
        root = self.lay_out({"twice.xml": CHIP.replace("UART1", "UART0")}, "twice.xml")
        site = self.folder / "site"
        self.expect(self.docs("--chip", root, "-o", site), 0,
                    err=f"warning: {site}/UART0.html shows the last of several instances of that name.\n")
        self.assertIn("0x00000010", (site / "UART0.html").read_text())

    def test_description_that_does_not_load(self):
        broken = self.lay_out({"broken.xml": archive("<bogus/>")}, "broken.xml")
        self.expect(self.docs("--chip", broken, "-o", self.folder / "site"), 1, err=None)
        self.assertFalse((self.folder / "site").exists())
        self.expect(self.docs("--chip", self.chip), 2, out=None, err=None)


if __name__ == "__main__":
    support.main(__doc__)
