"""A documentation site in headless Chromium, opened from the disk and from a server: the tree, its search and its keys,
what the pages show, their dark and their printed form. Nothing may be said on the console or asked of elsewhere."""

import functools
import http.server
import shutil
import tempfile
import threading
from pathlib import Path

import browser
import support
from support import run

ROOT = Path(__file__).resolve().parents[2]
CHIP = ROOT / "examples/soc.xml"
POOL = ROOT / "src/docsite/pool"

# Where the element that a page was opened at is, once the page is there: its name, and whether it can be seen.
ARRIVED = """
    const target = document.querySelector(':target');
    const box = target && (target.textContent ? target : target.nextElementSibling).getBoundingClientRect();
    return document.readyState === 'complete' && target &&
        [target.name, box.top >= 0 && box.bottom <= innerHeight && box.right > 0 && box.left < innerWidth];
"""

# Each cell of each diagram, as [what it holds, its left and right edge, those of its highest and lowest bit]. A cell
# is in the text as wide as so many bits; here it has to stand below them.
CELLS = """
    const cells = [];
    for (const diagram of document.querySelectorAll('.bf')) {
        const [bits, ...rows] = [...diagram.rows].map(row => [...row.cells]);
        for (const row of bits[0].className === 'h' ? rows : []) {
            let at = 0;
            for (const cell of row) {
                const box = cell.getBoundingClientRect();
                const first = bits[at].getBoundingClientRect();
                const last = bits[at += cell.colSpan, at - 1].getBoundingClientRect();
                cells.push([cell.textContent, [box.left, box.right], [first.left, last.right]]);
            }
        }
    }
    return cells;
"""

# [class, ratio] of the contrast of each cell's text to what is behind it, by the formula of WCAG 2.2.
CONTRASTS = """
    const channels = color => color.match(/[0-9.]+/g).map(Number);
    const luminance = color => channels(color).slice(0, 3).map(c => c / 255)
        .map(c => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
        .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
    const behind = element => {
        const color = getComputedStyle(element).backgroundColor;
        return channels(color)[3] === 0 ? behind(element.parentElement) : color;
    };
    return [...document.querySelectorAll(arguments[0])].filter(element => element.textContent.trim()).map(element => {
        const [low, high] = [luminance(getComputedStyle(element).color), luminance(behind(element))].sort((a, b) => a - b);
        return [element.className, (high + 0.05) / (low + 0.05)];
    });
"""


class Server(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass

    def do_GET(self):
        if self.path == "/favicon.ico":             # browsers ask for it of their own accord
            self.send_response(204)
            self.end_headers()
        else:
            super().do_GET()


class InBrowser(support.Case):
    """One browser for the tests of a class, one window of it for each test."""

    @classmethod
    def setUpClass(cls):
        cls.browser = browser.Browser()
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        super().setUp()
        window = self.browser.send("POST", "/window/new", {"type": "tab"})["handle"]
        before = self.browser.send("GET", "/window")
        self.browser.send("POST", "/window", {"handle": window})
        self.addCleanup(self.browser.send, "POST", "/window", {"handle": before})
        self.addCleanup(self.browser.send, "DELETE", "/window")
        self.browser.resize(1280, 900)
        self.browser.console()
        self.browser.requests()

    def said(self):
        return [text for _, text in self.browser.console()]

    # The tree ---------------------------------------------------------------------------------------------------------

    def in_tree(self, script, *arguments):
        self.browser.frame("treeframe")
        return self.browser.run(script, *arguments)

    def names(self):
        return self.in_tree("return [...document.querySelectorAll('#tree .name')].map(name => name.textContent)")

    def row(self, *path):
        """The row of a node that can be seen."""
        self.browser.frame("treeframe")
        return self.browser.wait(lambda: self.browser.run(
            "return [...document.querySelectorAll('#tree .row')].find(row => row.title === arguments[0])",
            " › ".join(path)), f"a row of {path}")

    def inside_row(self, selector, *path):
        return self.browser.run("return arguments[0].querySelector(arguments[1])", self.row(*path), selector)

    def unfold(self, *path):
        self.browser.click(self.inside_row(".handle", *path))

    def open_node(self, *path):
        self.browser.click(self.inside_row("a", *path))

    def marked(self):
        return self.in_tree("return [...document.querySelectorAll('#tree [aria-selected=true]')].map(row => row.title)")

    def wait_for_mark(self, title):
        self.browser.wait(lambda: self.marked() == [title], f"{title} is marked")

    def search(self, text):
        self.browser.frame("treeframe")
        self.browser.type("/", *text)

    def hits(self):
        return self.in_tree("""return [...document.querySelectorAll('#hits .row')]
            .map(row => [...row.querySelectorAll('.name, .above')].map(part => part.textContent))""")

    # The page ---------------------------------------------------------------------------------------------------------

    def in_page(self, script, *arguments):
        self.browser.frame("basefrm")
        return self.browser.run(script, *arguments)

    def shown(self):
        return self.in_page("return location.href.split('/').pop()")

    def expect_at(self, page, anchor):
        """The page beside the menu, with the anchor in view."""
        self.browser.wait(lambda: self.shown() == f"{page}#{anchor}", f"{page}#{anchor} is shown")
        self.assertEqual(self.browser.wait(lambda: self.in_page(ARRIVED), "a target in the page"), [anchor, True])


def make_site(chip, target):
    done = run("docs", "--chip", chip, "-o", target)
    if done.status != 0:
        raise AssertionError(done.err)


class SiteTests:
    """What holds for a whole site wherever it comes from; a class of its own for each way of opening it."""

    can_see_frames = True                           # whether the menu can see what the other frame shows

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.site = Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        make_site(CHIP, cls.site)

    def setUp(self):
        super().setUp()
        self.browser.open(self.base + "index.html")
        self.browser.wait(self.names, "the rows of the tree")

    def tearDown(self):
        self.assertEqual(self.said(), [])
        pages = {url for url in self.browser.requests() if not url.startswith("chrome://")}
        self.assertTrue(any(url.endswith("/menu.js") for url in pages), pages)
        self.assertEqual({url for url in pages if not url.startswith(self.base)}, set())

    def test_leads_to_what_is_clicked(self):
        self.assertEqual(self.names(), ["soc", "UART0", "UART1", "GPIO"])
        self.assertEqual(self.shown(), "chip.html")
        self.unfold("UART0")
        self.assertEqual(self.names(), ["soc", "UART0", "ctrl", "status", "Reserved_00000008_64", "chan", "fifo", "UART1",
                                        "GPIO"])
        self.open_node("UART0", "ctrl")
        self.expect_at("UART0.html", "40000000rrw")
        self.open_node("UART0", "ctrl", "speed")
        self.expect_at("UART0.html", "40000000b3-1rw")
        self.assertEqual(self.in_page("return getComputedStyle(document.querySelector('tr:has(:target)')).backgroundColor"
                                      " !== getComputedStyle(document.body).backgroundColor"), True)
        self.unfold("UART0", "chan")
        self.open_node("UART0", "chan", "chan[2]")
        self.expect_at("UART0.html", "40000018rrw")
        self.open_node("GPIO")
        self.expect_at("GPIO.html", "40008000m")
        self.assertEqual(self.marked(), ["GPIO"])
        self.open_node("soc")
        self.browser.wait(lambda: self.shown() == "chip.html", "the start page")

    def test_follows_the_links_of_pages(self):
        self.open_node("UART1")
        self.expect_at("UART1.html", "40001000m")
        self.browser.click(self.browser.find("a[href='#40001000b3-1rw']"))
        self.expect_at("UART1.html", "40001000b3-1rw")
        if not self.can_see_frames:
            self.assertEqual(self.marked(), ["UART1"])
            return
        self.wait_for_mark("UART1 › ctrl › speed")
        self.browser.send("POST", "/back")
        self.wait_for_mark("UART1")

    def test_searches(self):
        self.search("speed")
        self.assertEqual(self.hits(), [["speed", "UART0 › ctrl"], ["speed", "UART1 › ctrl"]])
        roles = self.in_tree("""return [...document.querySelectorAll('#hits .row')]
            .map(row => ['role', 'aria-selected'].map(name => row.getAttribute(name)))""")
        self.assertEqual(roles, [["option", "true"], ["option", "false"]])
        self.browser.type("Escape")
        self.search("LEV")                          # names that begin with it stand before those that hold it
        self.assertEqual([name for name, _ in self.hits()[:3]], ["level"] * 3)
        self.assertEqual(self.in_tree("return document.getElementById('count').textContent"), "18 hits")
        self.browser.type("Escape")
        self.search("uart1.sp")
        self.assertEqual(self.hits(), [["speed", "UART1 › ctrl"]])
        self.browser.type("Enter")
        self.expect_at("UART1.html", "40001000b3-1rw")
        self.browser.frame("treeframe")
        self.browser.type("Escape")
        self.assertEqual(self.marked(), ["UART1 › ctrl › speed"])
        self.search("0x40008020")
        self.assertEqual(self.hits(), [["buffer", "GPIO"]])
        self.browser.type("Escape")
        self.search("level")
        self.browser.type("Down", "Down", "Down", "Up", "Enter")
        self.expect_at("GPIO.html", "40008001rrw")
        self.browser.frame("treeframe")
        self.browser.type("Escape")
        self.search("<nothing>")
        self.assertEqual((self.hits(), self.in_tree("return document.getElementById('count').textContent")),
                         ([], "Nothing found"))
        self.browser.type("Enter", "Down", "Escape", "End")
        self.assertEqual(self.in_tree("return document.activeElement.id"), "tree")

    def test_keys(self):
        def active():
            return self.in_tree("""const tree = document.getElementById('tree');
                return document.getElementById(tree.getAttribute('aria-activedescendant')).title""")
        self.browser.frame("treeframe")
        self.in_tree("document.getElementById('tree').focus()")
        for keys, title in ((["Down"], "UART0"), (["Right"], "UART0"), (["Right"], "UART0 › ctrl"),
                            (["Right", "Right", "Down"], "UART0 › ctrl › speed"), (["Left"], "UART0 › ctrl"),
                            (["Left", "Left"], "UART0"), (["End"], "GPIO"), (["Up"], "UART1"),
                            (["Home"], "soc"), (["g"], "GPIO"), (["PageUp"], "soc"), (["u"], "UART0")):
            self.browser.type(*keys)
            self.assertEqual(active(), title, keys)
        self.browser.type("Down", "Down", "Enter")
        self.expect_at("UART0.html", "40000004rr-")
        self.assertEqual(self.marked(), ["UART0 › status"])
        self.browser.frame("treeframe")
        self.browser.type("Down")                   # the menu has kept the keyboard
        self.assertEqual(active(), "UART0 › status › full")
        levels = self.in_tree("""return [...document.querySelectorAll('#tree [role=treeitem]')].slice(0, 3)
            .map(row => ['level', 'setsize', 'posinset', 'expanded'].map(name => row.getAttribute('aria-' + name)))""")
        self.assertEqual(levels, [["1", "1", "1", "true"], ["2", "3", "1", "true"], ["3", "5", "1", "false"]])

    def test_reload(self):
        self.unfold("UART1")
        self.unfold("UART0")
        self.open_node("UART0", "status")
        self.unfold("UART0", "status")
        self.expect_at("UART0.html", "40000004rr-")
        names = self.names()
        self.browser.reload()
        self.expect_at("UART0.html", "40000004rr-")
        self.assertEqual(self.names(), names)
        self.wait_for_mark("UART0 › status")
        self.unfold("UART0")                        # a folder that is closed around the mark stays so
        names = self.names()
        self.search("q")
        self.browser.type("Escape")
        self.assertEqual(self.names(), names)
        self.browser.reload()
        self.expect_at("UART0.html", "40000004rr-")
        self.assertEqual(self.names(), names)
        self.search("fifo")
        self.browser.reload()
        self.browser.wait(self.hits, "the search before the reload")
        self.assertEqual(self.hits(), [["fifo", "UART0"], ["fifo", "UART1"]])
        self.expect_at("UART0.html", "40000004rr-")

    def test_diagrams(self):
        for page, width in (("UART0", 1280), ("GPIO", 1280), ("UART0", 480)):
            self.browser.resize(width, 900)
            self.open_node(page)
            self.browser.wait(lambda: self.shown().startswith(page + ".html"), page)
            cells = self.browser.wait(lambda: self.in_page(CELLS), "diagrams")
            if page == "UART0":
                self.assertTrue({"speed", "chan_3", "rc", "2"} <= {text for text, *_ in cells}, cells)
            for text, (left, right), (first, last) in cells:
                self.assertAlmostEqual(left, first, delta=1.5, msg=text)
                self.assertAlmostEqual(right, last, delta=1.5, msg=text)
            self.assertEqual(self.in_page("return document.scrollingElement.scrollWidth <= innerWidth"), True)
        self.assertEqual(self.in_page("""const box = document.querySelector('.bf:has(.h)');
            return [box.scrollWidth > 700, box.clientWidth < 240]"""), [True, True])

    def test_light_and_dark(self):
        self.open_node("UART0")
        self.expect_at("UART0.html", "40000000m")
        papers = {}
        for scheme in ("dark", "light"):
            self.browser.prefer(scheme)
            for frame, text in (("treeframe", ".name"), ("basefrm", "td")):
                self.browser.frame(frame)
                papers[scheme, frame] = self.browser.run("return getComputedStyle(document.body).backgroundColor")
                contrasts = self.browser.run(CONTRASTS, text)
                self.assertGreater(len(contrasts), 3)
                self.assertEqual([row for row in contrasts if row[1] < 4.5], [], (scheme, frame))
        for frame in ("treeframe", "basefrm"):
            dark, light = ([int(part) for part in papers[scheme, frame][4:-1].split(",")] for scheme in ("dark", "light"))
            self.assertLess(max(dark), 50)
            self.assertGreater(min(light), 200)


class FromDisk(SiteTests, InBrowser):
    can_see_frames = False                          # Chromium takes every file for a site of its own

    @property
    def base(self):
        return self.site.as_uri() + "/"


class FromServer(SiteTests, InBrowser):
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

    def test_deep_links(self):
        self.unfold("GPIO")
        self.open_node("GPIO", "irq")
        self.expect_at("GPIO.html", "40008040rrw")
        address = self.browser.send("GET", "/url")
        self.browser.open("about:blank")
        self.browser.open(address)
        self.expect_at("GPIO.html", "40008040rrw")
        self.wait_for_mark("GPIO › irq")


class Printed(InBrowser):
    def test_print(self):
        root = self.lay_out({"soc.xml": support.archive(
            '<module name="unit">', '<reg32 name="chan" protect="rw" count="4"><comment>A channel</comment>',
            '<bits name="enable" pos="0" access="rw" rst="0"/><bits name="rate" pos="7:4" access="rw"/></reg32>',
            '<memory name="ram" size="64"><comment>Samples</comment></memory><hole size="32"/>',
            '<struct name="pair"><reg8 name="low"/></struct></module>',
            '<instance name="UNIT" type="unit" address="0x1000"/>')}, "soc.xml")
        make_site(root, self.folder / "site")
        self.browser.open((self.folder / "site/UNIT.html").as_uri())
        self.browser.devtools("Emulation.setEmulatedMedia", media="print",
                              features=[{"name": "prefers-color-scheme", "value": "dark"}])
        colours = self.browser.run("""return [...document.querySelectorAll('body, body *')].flatMap(element =>
            { const style = getComputedStyle(element); return [style.color, style.backgroundColor]; })""")
        self.assertLessEqual(set(colours), {"rgb(0, 0, 0)", "rgb(255, 255, 255)", "rgba(0, 0, 0, 0)"})
        shown = self.browser.run("return [...document.querySelectorAll('.bf')].map(box => box.offsetHeight > 0)")
        self.assertEqual(shown, [True] * 3 + [False] * 6)   # the channels' diagram and fields stand once, not four times
        self.browser.devtools("Emulation.setEmulatedMedia", media="")
        self.assertTrue(self.browser.pdf().startswith(b"%PDF"))
        self.assertEqual(self.said(), [])


class Menus(InBrowser):
    """The tree alone, with menus that no example has."""

    def lay_out_menu(self, *lines, **files):
        shutil.copytree(POOL, self.folder, dirs_exist_ok=True)
        (self.folder / "index.html").write_text(
            '<frameset cols="250,*"><frame src="menu.html" name="treeframe"><frame src="chip.html" name="basefrm">')
        (self.folder / "chip.html").write_text("start")
        for name, text in files.items():
            (self.folder / name).write_text(text)
        if lines:
            head = "USETEXTLINKS = 1", "STARTALLOPEN = 0", 'foldersTree = gFld("soc","chip.html")', "i0 = foldersTree"
            (self.folder / "menu.js").write_text("\n".join([*head, *lines, ""]))
        self.browser.open((self.folder / "index.html").as_uri())

    def test_names_are_text(self):
        name = "<b>50%<i>&amp; #1?"
        self.lay_out_menu(f'i1=insFld(i0,gFld("{name}","{name}.html#00000000m"))', **{name + ".html": "<a name=00000000m>"})
        self.assertEqual(self.names(), ["soc", name])
        self.open_node(name)
        self.browser.wait(lambda: self.in_page("return decodeURIComponent(location.href)").endswith(name + ".html#00000000m"),
                          "the page of that name")
        self.search("<b>")
        self.assertEqual(self.hits(), [[name, "soc"]])
        self.assertEqual(self.said(), [])

    def test_settings_of_the_menu(self):
        self.lay_out_menu("USETEXTLINKS = 0", "STARTALLOPEN = 1", 'i1=insFld(i0,gFld("unit","unit.html#00000000m"))',
                          'i2=insFld(i1,gFld("reg","unit.html#00000000rrw"))',
                          'i2.iconSrc = "reg32.png"', 'i2.iconSrcClosed = "reg8.png"',
                          'i3=insDoc(i2,gLnk("R","field","unit.html#00000000b0rw"))', 'i3.iconSrc = "missing.png"')
        self.assertEqual(self.names(), ["soc", "unit", "reg", "field"])
        icon = "return arguments[0].querySelector('.icon').src.split('/').pop()"
        self.assertEqual(self.browser.run(icon, self.row("unit", "reg")), "reg32.png")
        self.unfold("unit", "reg")
        self.assertEqual(self.browser.run(icon, self.row("unit", "reg")), "reg8.png")
        self.assertEqual(self.browser.run("return arguments[0].querySelector('a').textContent", self.row("unit")), "")
        self.unfold("unit", "reg")
        self.browser.wait(lambda: self.inside_row(".spare", "unit", "reg", "field"), "a stand-in for a missing picture")

    def test_no_menu(self):
        self.lay_out_menu()
        self.assertIn("menu.js", self.in_tree("return document.body.innerText"))

    def test_makes_rows_when_they_show(self):
        self.lay_out_menu('i1=insFld(i0,gFld("unit","unit.html#00000000m"))',
                          *(f'i2=insDoc(i1,gLnk("R","n{number}","unit.html#{number:08X}h"))' for number in range(20_000)))
        elements = "return document.getElementById('tree').querySelectorAll('*').length"
        self.assertLess(self.in_tree(elements), 30)
        self.unfold("unit")
        self.assertLess(self.in_tree(elements), 1000)
        self.browser.type("End")
        self.browser.wait(lambda: self.names()[-1] == "n19999", "the last row")
        self.assertLess(self.in_tree(elements), 1000)
        self.browser.reload()
        self.browser.wait(lambda: self.names()[-1:] == ["n19999"], "the place from before the reload")


def prepare():
    if browser.missing():
        support.skip(f"not installed: {', '.join(browser.missing())}")


if __name__ == "__main__":
    support.main(__doc__, prepare=prepare)
