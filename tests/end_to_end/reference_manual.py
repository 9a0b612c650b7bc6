"""The reference manual in headless Chromium, from the disk and from a server: every link, links to members of arrays,
search, decoder, keys, dark, paper; what C makes of its macros and expressions. Nothing may be said on the console or asked
of elsewhere."""

import functools
import html.parser
import http.server
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import urllib.parse
from pathlib import Path

import browser
import support
from support import run

ROOT = Path(__file__).resolve().parents[2]
CHIP, SOFT = ROOT / "examples/soc.xml", ROOT / "examples/firmware.xml"

# What people and others may write: names that file systems, HTML, scripts and addresses take for something else.
ODD = support.archive(
    '<comment>Odd &lt;script&gt;alert(1)&lt;/script&gt; <script>alert(2)</script><b onclick="alert(3)">bold</b></comment>',
    '<var name="LINES" value="3"><comment>a `tick` ${1} \\ back</comment></var>',
    '<enum name="level"><entry name="LOW"/><entry name="HIGH" value="3"/></enum>',
    '<module name="wide">',
    '<comment>One <p>two<p>three</p></p> <li>four</li><ul>x<li>five</li></ul><img src="x" onerror="alert(4)"/></comment>',
    '<reg32 name="flags" protect="rw"><comment>32 flags</comment>',
    *(f'<bits name="flag_of_line_{bit}" pos="{bit}" access="{("rw", "r", "rc", "rs", "w")[bit % 5]}" rst="{bit % 2}"/>'
      for bit in range(32)),
    '</reg32>',
    '<reg16 name="a&lt;b&gt;&quot;c" protect="rw"><bits name="x" pos="2:5" rst="1"/><bits name="y" pos="4:0"/>'
    '<bits name="far" pos="20:14"/></reg16>',
    '<reg8 name="constructor" protect="rw"/><reg8 name="-main" protect="rw"/><hole size="16"/>',
    '<struct name="bank" count="LINES"><reg32 name="ctrl" protect="rw"><bits name="speed" pos="31:1" rst="0x10"/>'
    '<bits name="enable" pos="0"/></reg32><reg16 name="data" protect="rw" count="2"/></struct>',
    '<memory name="ram" size="0x100"><comment>Samples */ \\ of the &amp; second &lt;converter&gt;</comment></memory>',
    f'<struct name="outer_{"x" * 40}"><struct name="inner_{"y" * 40}"><reg8 name="{"z" * 400}" protect="rw">',
    '<bits name="f" pos="0"/></reg8></struct></struct>',
    '</module>',
    '<typedef name="table"><uint8 name="big" count="2000"/><ptr name="next" type="void"/></typedef>',
    *(f'<instance name="{name}" type="wide" address="{0x1000 * (at + 1)}"/>' for at, name in enumerate(
        ("Con", "con", "a/../b", "index", "UNIT é", "--x", "search", "a%20b#c?d"))),
    '<instance name="TABLE" type="table" address="0xFFFFF000"/>')


class Page(html.parser.HTMLParser):
    """The ids of a page, where its links lead, and the attributes of fields and options."""

    def __init__(self, text):
        super().__init__()
        self.ids, self.links, self.headings = [], [], []
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if "id" in attributes:
            self.ids.append(attributes["id"])
        self.links += [attributes[name] for name in ("href", "src") if name in attributes]
        if re.fullmatch("h[1-6]", tag):
            self.headings.append(int(tag[1]))


def site_of(target, *arguments):
    done = run("site", *arguments, "-o", target)
    if done.status != 0:
        raise AssertionError(done.err)
    return target


class Files(support.Case):
    """What the pages say, without a browser."""

    def odd(self):
        return site_of(self.folder / "out", "--chip", self.lay_out({"odd.xml": ODD}, "odd.xml"))

    def test_files_of_the_pool(self):
        """They are known to build systems; a site that lacks one is not complete."""
        program = shutil.copy(support.options.veldmap, self.folder / "veldmap")
        pool = Path(shutil.copytree(Path(support.options.veldmap).parent / "sitepool", self.folder / "sitepool"))
        arguments = ("site", "--chip", CHIP, "-o", self.folder / "out", "--depfile", self.folder / "d")
        self.expect(run(*arguments, program=program), 0)
        self.assertIn(str(pool / "search.js"), (self.folder / "d").read_text())
        (pool / "search.js").unlink()
        self.expect(run(*arguments, program=program), 1,
                    err=f"error: {self.folder / 'out'} is not complete, since {pool} lacks: search.js\n")

    def test_every_link_leads_somewhere(self):
        real = [site_of(self.folder / chip.name, "--chip", chip / "soc.xml") for chip in support.chips()]
        both = site_of(self.folder / "both", "--chip", CHIP, "--soft", SOFT)
        single = site_of(self.folder / "single", "--chip", CHIP, "--soft", SOFT, "--single")
        sections = set(Page((single / "manual.html").read_text()).ids)
        for page in both.glob("*.html"):
            if page.name in ("UART0.html", "GPIO.html"):
                members = {name for name in Page(page.read_text()).ids if not name.startswith("-")}
                self.assertGreater(len(members), 3)
                self.assertLessEqual({f"{page.stem}.{name}" for name in members} - sections, set())
        for site in (self.odd(), both, single, *real):
            pages = {path.name: Page(path.read_text()) for path in site.glob("*.html")}
            self.assertEqual(len({name.lower() for name in pages}), len(pages))
            for name, page in pages.items():
                self.assertRegex(name, r"^[A-Za-z0-9_][A-Za-z0-9_.~-]*\.html$")
                self.assertEqual(len(set(page.ids)), len(page.ids), name)
                self.assertEqual(page.headings.count(1), 1, name)
                steps = [after - before for before, after in zip(page.headings, page.headings[1:])]
                self.assertLessEqual(max(steps, default=0), 1, name)
                for link in page.links:
                    if link.startswith("data:") or "#-" in link:
                        continue
                    file, _, fragment = link.partition("#")
                    self.assertTrue((site / urllib.parse.unquote(file)).exists() if file else True, f"{name}: {link}")
                    if fragment:
                        self.assertIn(urllib.parse.unquote(fragment), pages[file or name].ids, f"{name}: {link}")

    def test_texts_are_harmless(self):
        site = self.odd()
        index = (site / "index.html").read_text()
        self.assertIn("Odd &lt;script&gt;alert(1)&lt;/script&gt; &lt;script&gt;alert(2)&lt;/script&gt; <b>bold</b></div>", index)
        con = (site / "_Con.html").read_text()
        self.assertIn("One <p>two</p><p>three</p>  &lt;li&gt;four <ul><li>x</li><li>five</li></ul> "
                      "&lt;img src=&quot;x&quot; onerror=&quot;alert(4)&quot;/&gt;", con)
        self.assertIn("default-src 'none'", con)
        self.assertTrue((site / "_con~2.html").exists() and (site / "index~2.html").exists())

    def test_is_the_same_for_all_threads(self):
        sites = [support.files_below(site_of(self.folder / jobs, "--chip", CHIP, "--soft", SOFT, "-j", jobs))
                 for jobs in ("1", "5")]
        self.assertEqual(*sites)
        self.assertIn("search/names-0.js", sites[0])

    def test_all_files_are_listed(self):
        for more in ([], ["--single"]):
            out = self.folder / f"out{len(more)}"
            told = run("site", "--chip", CHIP, "--soft", SOFT, "-o", out, "--list", "-", *more)
            self.expect(told, 0, out=None)
            self.assertEqual(sorted(told.out.splitlines()), sorted(str(out / name) for name in support.files_below(out)))

    def test_index_is_small(self):
        """Names and places take at most 40 bytes a register, and no piece of descriptions is large."""
        registers = 6000
        subprocess.run([sys.executable, ROOT / "bench/generate_description.py", f"--registers={registers}", "--files=60",
                        f"--out={self.folder / 'chip'}"], check=True, stdout=subprocess.DEVNULL)
        search = site_of(self.folder / "out", "--chip", self.folder / "chip/soc.xml") / "search"
        size = {kind: [path.stat().st_size for path in search.glob(f"{kind}-*.js")] for kind in ("main", "names", "words", "texts")}
        self.assertLess(sum(size["main"] + size["names"]), 40 * registers)
        self.assertGreater(sum(size["names"]), 20 * registers)
        for kind in ("words", "texts"):
            self.assertGreater(len(size[kind]), 5)
            self.assertLess(max(size[kind]), 150_000)

    def test_comments_of_the_index_end_where_they_should(self):
        """Descriptions stand in comments of scripts, which theirs must not end."""
        chip = self.lay_out({"hostile.xml": support.archive(
            '<module name="m"><reg32 name="r"><comment>a */}) b \\ c \\*/ d */alert(1)/* e `${1}`</comment>',
            '<bits name="f" pos="0"><comment>*/</comment></bits></reg32></module>',
            '<instance name="x*/y" type="m" address="0"/>')}, "hostile.xml")
        for path in (site_of(self.folder / "out", "--chip", chip) / "search").glob("*.js"):
            text = path.read_text()
            self.assertEqual((text.count("*/"), text[-5:]), (1, "*/})\n"), path)

    def test_large_arrays_are_small(self):
        chip = self.lay_out({"big.xml": support.archive(
            '<module name="m"><reg32 name="r" count="60000"><bits name="f" pos="0"/></reg32></module>',
            '<instance name="M" type="m" address="0"/>')}, "big.xml")
        files = support.files_below(site_of(self.folder / "out", "--chip", chip))
        self.assertLess(sum(map(len, files.values())), 150_000)
        self.assertIn(b'id="r[59999]"', files["M.html"])

    def test_macros_are_those_of_headers(self):
        """Each macro that a page offers for a field has the field's bits, by the word of a C compiler."""
        if not shutil.which("cc"):
            self.skipTest("there is no C compiler")
        for chip in [ROOT / "examples", *support.chips()]:
            site = site_of(self.folder / f"site-{chip.name}", "--chip", chip / "soc.xml")
            include = self.folder / f"include-{chip.name}"
            self.expect(run("headers", "--chip", chip / "soc.xml", "-o", include), 0, err=None)
            includes = [path.relative_to(include) for path in include.rglob("*.h") if not path.stem.endswith("_asm")]
            checks = set()
            for page in site.glob("*.html"):
                for up, down, rest in re.findall(r'<tr id="[^"]*" data-up="(\d+)" data-down="(\d+)"([^>]*)>', page.read_text()):
                    mask = ((1 << int(up) - int(down) + 1) - 1 << int(down)) & 0xFFFFFFFF
                    for kind, macro in re.findall(r'data-(macro|mask)="([^"]*)"', rest):
                        checks.add((macro.replace("(n)", "(0xFFFFFFFFu)"), mask))
            self.assertGreater(len(checks), 5)
            text = [f'#include "{name}"' for name in includes]
            text += [f'_Static_assert((unsigned)({macro}) == {mask}u, "{macro}");' for macro, mask in sorted(checks)]
            source = self.lay_out({"macros.c": "\n".join(text)}, "macros.c")
            done = subprocess.run(["cc", "-w", "-fsyntax-only", *(f"-I{folder}" for folder in {path.parent for path in include.rglob("*.h")}), "-include", support.PRELUDE,
                                   source], capture_output=True, text=True)
            self.assertEqual(done.returncode, 0, done.stderr[:2000])


class Server(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


@unittest.skipIf(browser.missing(), "not installed: " + ", ".join(browser.missing()))
class Opened(support.Case):
    """Sites from the disk in one browser."""

    @classmethod
    def setUpClass(cls):
        cls.site = Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        odd = cls.site / "odd.xml"
        odd.write_text(ODD)
        site_of(cls.site / "both", "--chip", CHIP, "--soft", SOFT)
        site_of(cls.site / "odd", "--chip", odd)
        cls.browser = browser.Browser()
        cls.addClassCleanup(cls.browser.close)
        cls.base = cls.site.as_uri() + "/"

    def setUp(self):
        super().setUp()
        self.browser.resize(1280, 900)
        self.browser.open("about:blank")
        self.browser.console()
        self.browser.requests()

    def tearDown(self):
        self.assertEqual(self.browser.console(), [])
        requests = {url for url in self.browser.requests() if not url.startswith(("data:", "about:", "chrome:"))}
        self.assertEqual({url for url in requests if not url.startswith(self.base)}, set())

    def open(self, page):
        self.browser.open("about:blank")
        self.browser.open(self.base + page)

    def text(self, selector):
        return self.browser.run("return document.querySelector(arguments[0])?.textContent ?? null", selector)

    def shown(self):
        return urllib.parse.unquote(self.browser.run("return location.href").split("/")[-1])

    def wait_for(self, page):
        self.browser.wait(lambda: self.shown() == page, f"{page}, not {self.shown()}")

    def search(self, text, at_least=1):
        """The paths of the hits, once all are there."""
        self.browser.run("""const box = document.querySelector('.search'); box.value = ''; box.focus();
            box.dispatchEvent(new Event('input'))""")
        self.browser.type(*text)
        self.browser.wait(lambda: self.browser.run("return document.getElementById('-hits').ariaBusy") == "false",
                          f"the end of a search for {text}")
        self.assertGreaterEqual(len(self.hits()), at_least, text)
        return self.hits()

    def hits(self):
        return self.browser.run("return [...document.querySelectorAll('#-hits .path')].map(path => path.textContent)")


class FromDisk(Opened):
    """What holds for a site wherever it comes from."""

    # Links ------------------------------------------------------------------------------------------------------------

    def test_links_to_members(self):
        for link, heading, place in (("pins[3].mode.output", "pins[3].mode", "0x40008006"), ("pins[3]", "pins[3]", "0x40008006"),
                                     ("pins%5B15%5D.level", "pins[15].level", "0x4000801F"), ("irq", "irq", "0x40008040")):
            self.open("both/GPIO.html#" + link)
            names = self.browser.wait(lambda: self.browser.run("""const it = document.querySelector('.target');
                const section = it && it.closest('section');
                return section && [section.querySelector('h2, h3').textContent, section.querySelector('.place').textContent,
                    it.getBoundingClientRect().top >= 0 && it.getBoundingClientRect().top < innerHeight]"""), link)
            self.assertEqual(names, [heading, place, True])
        self.open("both/GPIO.html#pins[16].mode")           # there is none
        self.assertEqual(self.text("h1"), "GPIO")
        self.open("odd/_Con.html#bank[2].data[1]")
        self.assertEqual(self.text("section[id='bank[n].data[m]'] .place"), f"0x{0x1000 + 12 + 2 * 8 + 4 + 2:08X}")

    def test_address_bar_and_back(self):
        self.open("both/UART0.html")
        self.browser.click(self.browser.find(".contents a[href='#fifo.level']"))
        self.wait_for("UART0.html#fifo.level")
        self.browser.click(self.browser.find(".contents a[href='#ctrl']"))
        self.wait_for("UART0.html#ctrl")
        self.browser.click(self.browser.find("svg a[href='#ctrl.speed']"))
        self.wait_for("UART0.html#ctrl.speed")
        self.browser.send("POST", "/back")
        self.wait_for("UART0.html#ctrl")
        self.browser.send("POST", "/back")
        self.wait_for("UART0.html#fifo.level")
        time.sleep(0.6)                                     # a reader looks before going on
        self.browser.run("scrollTo(0, 0)")
        self.wait_for("UART0.html")
        self.browser.run("document.getElementById('status').scrollIntoView()")
        self.wait_for("UART0.html#status")                  # the address bar follows the reader
        self.assertEqual(self.text(".contents tr.here a"), "status")
        self.browser.run("scrollTo(0, 0)")
        self.wait_for("UART0.html")
        self.browser.click(self.browser.find("dl.facts a"))
        self.wait_for("type-uart.html")

    def test_copies(self):
        def names(selector):
            self.browser.run("document.querySelector(arguments[0]).click()", selector)
            rows = self.browser.run("""return [...document.querySelectorAll('.copies button')]
                .map(row => [...row.children].map(part => part.textContent))""")
            self.browser.type("Escape")
            self.assertIsNone(self.text(".copies"))
            return [tuple(row) for row in rows if row[0] != "link"], dict(rows)["link"]
        self.open("both/GPIO.html#pins[3].mode")
        self.browser.wait(lambda: self.text("section[id='pins[n].mode'] h3") == "pins[3].mode", "the member")
        rows, link = names("section[id='pins[n].mode'] .tool")
        self.assertEqual(rows, [("path", "$GPIO.pins[3].mode"), ("address", "0x40008006"), ("C", "hwp_gpio->pins[3].mode"),
                                ("assembly", "REG_GPIO_PINS_3_MODE")])
        self.assertTrue(link.endswith("GPIO.html#pins[3].mode"), link)
        self.open("both/UART0.html")
        rows, link = names("tr[id='ctrl.speed'] .tool")
        self.assertEqual(rows, [("path", "$UART0.ctrl.speed"), ("address", "0x40000000"), ("C", "UART_SPEED(n)"),
                                ("C mask", "UART_SPEED_MASK"), ("C option", "UART_SPEED_SLOW"), ("C option", "UART_SPEED_FAST"),
                                ("assembly", "REG_UART0_CTRL")])
        paths = [rows[0][1] for page in ("UART0", "GPIO") for rows in [names("h1 + .tools .tool")[0]]]
        self.assertEqual(paths[0], "$UART0")

    # Search -----------------------------------------------------------------------------------------------------------

    def test_search(self):
        self.open("both/index.html")
        self.browser.type("/")
        self.assertTrue(self.browser.run("return document.activeElement.className === 'search'"))
        for text, first in (("speed", ["UART0.ctrl.speed", "UART1.ctrl.speed"]), ("uart1.sp", ["UART1.ctrl.speed"]),
                            ("$uart1.ctrl.speed", ["UART1.ctrl.speed"]), ("uart1 ctrl", ["UART1.ctrl"]),
                            ("clock divider", ["UART0.ctrl.speed", "UART1.ctrl.speed"]),
                            ("fast", ["UART0.ctrl.speed", "UART1.ctrl.speed"]), ("0x40000018", ["UART0.chan[2]"]),
                            ("40008025", ["GPIO.buffer"]), ("0x40008", ["GPIO"]), ("gpio samples", ["GPIO.buffer"]),
                            ("uart0.chan[2]", ["UART0.chan[2]"]), ("apb_base", ["APB_BASE"]), ("inbox length", ["STATE.inbox[n].length"]),
                            ("0x2000000C", ["STATE.inbox[0].payload[2]"])):
            self.assertEqual(self.search(text, len(first))[:len(first)], first, text)
        marks = self.browser.run("return [...document.querySelectorAll('#-hits mark')].map(mark => mark.textContent)")
        self.assertEqual(marks, [])                         # an address is no word
        self.search("clock")
        self.assertEqual(self.text("#-hits .says mark"), "Clock")
        self.browser.type("Down", "Enter")
        self.wait_for("UART1.html#ctrl.speed")
        self.search("status", 2)
        self.browser.type("Enter")
        self.wait_for("UART0.html#status")
        self.browser.run("const box = document.querySelector('.search'); box.value = ''; box.focus()")
        self.browser.type(*"uart1.ctrl", "Enter")           # however soon
        self.wait_for("UART1.html#ctrl")
        self.search("<b>zzz", 0)
        self.browser.wait(lambda: self.text(".count") == "Nothing found", "no hits")
        self.browser.type("Escape", "Escape")
        self.assertFalse(self.browser.run("return document.activeElement.className === 'search'"))

    def test_search_of_odd_names(self):
        self.open("odd/index.html")
        self.assertEqual(self.search("c con", 2)[0], "Con.constructor")
        self.search("flag_of_line_31", 8)
        self.browser.type("Enter")
        self.wait_for("_Con.html#flags.flag_of_line_31")
        self.search("second converter", 1)
        self.assertEqual(self.text("#-hits .says"), "Samples */ \\ of the & second <converter>")
        self.search("0xFFFFF7D1")
        self.assertEqual(self.hits()[0], "TABLE.next")
        self.search("0xFFFFF100")
        self.browser.type("Enter")
        self.wait_for("TABLE.html#big[256]")

    # The decoder ------------------------------------------------------------------------------------------------------

    def decoded(self, section):
        return self.browser.run("""const box = document.getElementById(arguments[0]).querySelector('.decoder');
            return [[...box.querySelectorAll('.values input')].map(input => input.value),
                Object.fromEntries([...box.querySelectorAll('tbody tr')].map(row => [row.cells[0].textContent,
                    [row.querySelector('input').value, row.querySelector('select')?.selectedOptions[0].textContent ?? null]])),
                box.querySelector('.expression').textContent]""", section)

    def test_decoder(self):
        self.open("both/UART0.html")
        self.browser.click(self.browser.find("#ctrl .decode"))
        self.assertEqual(self.decoded("ctrl")[0][0], "0x00000004")      # the reset value
        self.browser.type(*"0x2B")
        self.assertEqual(self.decoded("ctrl"), [["0x2B", "43", f"0b{43:032b}"],
                                               {"enable": ["1", None], "speed": ["5", "fast"], "parity": ["2", "PARITY_EVEN"]},
                                               "hwp_uart0->ctrl = UART_ENABLE | UART_SPEED_FAST | UART_PARITY_PARITY_EVEN;"])
        self.wait_for("UART0.html#ctrl=0x0000002B")
        self.browser.click(self.browser.find("#ctrl .word button:nth-child(1)"))
        self.assertEqual(self.decoded("ctrl")[2],
                         "hwp_uart0->ctrl = UART_ENABLE | UART_SPEED_FAST | UART_PARITY_PARITY_EVEN | 0x80000000;")
        self.browser.run("""const select = document.querySelectorAll('#ctrl .decoder select')[0];
            select.value = '0'; select.dispatchEvent(new Event('change'))""")
        self.assertEqual(self.decoded("ctrl")[0][0], "0x80000021")
        for text, is_wrong in (("0x100000000", "true"), ("x", "true"), ("1_0", None)):
            self.browser.run("document.querySelector('#ctrl .decoder input').select()")
            self.browser.type(*text)
            wrong = self.browser.run("return document.querySelector('#ctrl .decoder input').getAttribute('aria-invalid')")
            self.assertEqual(wrong == "true", is_wrong == "true", text)
        self.assertEqual(self.decoded("ctrl")[0][1], "10")
        self.open("both/GPIO.html#pins[3].mode=1")
        self.browser.wait(lambda: self.text(".decoder .expression") == "hwp_gpio->pins[3].mode = GPIO_OUTPUT;", "the value of the link")
        self.assertEqual(self.shown(), "GPIO.html#pins[3].mode=0x01")

    def test_expressions_have_the_value(self):
        """C finds the value that was decoded in each expression."""
        if not shutil.which("cc"):
            self.skipTest("there is no C compiler")
        include = self.folder / "include"
        self.expect(run("headers", "--chip", self.site / "odd.xml", "-o", include), 0, err=None)
        values = (0, 1, 0xFFFFFFFF, 0x80000001, 0x12345678, 0xA5)
        lines = ['#include "odd.h"']
        for section, mask in (("flags", 0xFFFFFFFF), ("bank[n].ctrl", 0xFFFFFFFF)):
            for value in values:
                self.open(f"odd/_Con.html#{section}={hex(value)}")
                expression = self.browser.wait(lambda: self.text(".decoder .expression"), section).split(" = ")[-1].rstrip(";")
                lines.append(f'_Static_assert((unsigned)({expression}) == {value & mask}u, "{section} {value}");')
        source = self.lay_out({"values.c": "\n".join(lines)}, "values.c")
        done = subprocess.run(["cc", "-w", "-fsyntax-only", f"-I{include}", "-include", support.PRELUDE, source],
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr[:2000])

    # Looks ------------------------------------------------------------------------------------------------------------

    def test_fits_all_widths(self):
        for page in ("both/index.html", "both/UART0.html", "odd/_Con.html", "odd/TABLE.html", "both/types.html", "both/variables.html"):
            for width in (360, 480, 768, 1280, 2560):
                self.browser.devtools("Emulation.setDeviceMetricsOverride", width=width, height=900, deviceScaleFactor=1, mobile=False)
                self.open(page)
                self.browser.run("document.querySelector('.decode')?.click()")
                self.assertLessEqual(self.browser.run("return document.documentElement.scrollWidth"), width, page)
                self.assertEqual(self.browser.run("""
                    return [...document.querySelectorAll('.decoder > *')].filter(part => part.scrollWidth > part.clientWidth + 1
                        && getComputedStyle(part).overflowX === 'visible').map(part => part.className)"""), [], (page, width))
                # names in diagrams stay in their boxes, of which each bit is as wide as another
                wide = self.browser.run("""return [...document.querySelectorAll('.bits')].filter(diagram => {
                    const box = diagram.getBoundingClientRect();
                    return [...diagram.querySelectorAll('text')].some(text => {
                        const at = text.getBoundingClientRect();
                        return at.width && (at.left < box.left - 1 || at.right > box.right + 1 || at.bottom > box.bottom + 1); }); })
                    .map(diagram => diagram.getAttribute('aria-label'))""")
                self.assertEqual(wide, [], (page, width))
                # two drawings of eight bits side by side, or one above the other at their full size
                places = self.browser.run("""return [...document.querySelectorAll('.bits')].map(diagram => [...diagram.children]
                    .map(drawing => drawing.getBoundingClientRect())).filter(drawings => drawings.length > 1)
                    .map(([first, second]) => [first.top < second.top, Math.round(first.width)])""")
                for is_above, wide in places:
                    self.assertEqual(is_above, width < 480, (page, width))
                    self.assertGreaterEqual(wide, 320 if width in (360, 768, 1280, 2560) else 220, (page, width))
        self.browser.devtools("Emulation.clearDeviceMetricsOverride")

    def test_print(self):
        self.open("odd/_Con.html")
        self.browser.devtools("Emulation.setEmulatedMedia", media="print",
                              features=[{"name": "prefers-color-scheme", "value": "dark"}])
        self.assertEqual(self.browser.run("""return ['.bar', '.tools', 'h1', '.contents', '.bits', '.fields'].map(selector =>
            document.querySelector(selector).offsetHeight > 0 || document.querySelector(selector).getBoundingClientRect().height > 0)"""),
                         [False, False, True, True, True, True])
        self.assertEqual(self.browser.run("return getComputedStyle(document.body).backgroundColor"), "rgb(255, 255, 255)")
        self.browser.devtools("Emulation.setEmulatedMedia", media="", features=[])
        self.assertTrue(self.browser.pdf().startswith(b"%PDF"))

    @unittest.skipUnless(shutil.which("pdftotext"), "not installed: poppler-utils")
    def test_manual_on_paper(self):
        """A chapter begins a page, heads of tables come again, diagrams stay whole."""
        chip = self.site / "odd.xml"
        for place, roots in (("paper", ["--chip", CHIP, "--soft", SOFT]), ("odd_paper", ["--chip", chip])): # a browser keeps pages
            self.addCleanup(shutil.rmtree, self.site / place)
            paper = site_of(self.site / place, "--single", *roots)
            self.open(f"{place}/manual.html")
            (self.folder / "manual.pdf").write_bytes(self.browser.pdf())
            text = subprocess.run(["pdftotext", "-layout", self.folder / "manual.pdf", "-"], capture_output=True, check=True).stdout
            pages = [page.strip().splitlines() for page in text.decode().split("\f") if page.strip()]
            chapters = re.findall(r'<article class="chapter" data-name="([^"]+)"', (paper / "manual.html").read_text())
            self.assertGreater(len(chapters), 5)
            for name in chapters:
                self.assertIn(name, [page[0].strip() for page in pages])
            self.assertTrue(any(line.strip() == "Instances" for line in pages[0]))
            for page in pages:
                words = [line.split() for line in page]
                self.assertNotRegex(page[0], r"^\S+ +\d+(:\d+)? +(read|write)", page)      # a field without the table's head
                rows = [[int(word) for word in line] for line in words if len(line) == 16 and line[0] in ("15", "31") and all(word.isdigit() for word in line)]
                for at, row in enumerate(rows):
                    if row[0] == 31:
                        self.assertEqual(rows[at + 1:at + 2], [[*range(15, -1, -1)]], page)
                self.assertFalse(words[0][0] == "31" and len(words[0]) == 16, page)             # a diagram without its register

    def test_without_scripts(self):
        self.browser.devtools("Emulation.setScriptExecutionDisabled", value=True)
        self.addCleanup(self.browser.devtools, "Emulation.setScriptExecutionDisabled", value=False)
        self.open("both/UART0.html#ctrl.speed")
        self.assertTrue(self.browser.pdf().startswith(b"%PDF"))
        source = self.browser.send("GET", "/source")
        self.assertIn('id="ctrl.speed"', source)
        self.assertNotIn("decode", source)


class FromServer(FromDisk):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Server, directory=cls.site))
        thread = threading.Thread(target=server.serve_forever, daemon=True)
        thread.start()
        cls.addClassCleanup(server.server_close)
        cls.addClassCleanup(thread.join)
        cls.addClassCleanup(server.shutdown)
        cls.base = f"http://127.0.0.1:{server.server_port}/"


if __name__ == "__main__":
    support.main(__doc__)
