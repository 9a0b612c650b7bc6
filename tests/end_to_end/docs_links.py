"""Documentation sites of real chips and of the examples: their nesting, their links, and whether they show the tree.

A page is read strictly, and its text says where it is no well-formed document:
- <br> and <link> stand without an end, which HTML allows, beside <br/> and <hr/>, which have a slash;
- <a name='...'/> in the table of fields is empty for this test, as its slash says. HTML does not know that slash: to a
  browser the anchor holds the field's name and position, and ends with its cell, which displays the same;
- width=100% has no quotes.
What comments hold is markup of the description, and only has to be balanced.
"""

import html.parser
import json
import re
from pathlib import Path

import support
from support import run

VOID = {"br", "hr", "link"}
MARGIN = re.compile(r"margin-left:(\d+)px")
STRUCTURES = ("struct", "array")

# Inside what each element may stand. Comments are in cells of these classes, where everything may stand.
PARENTS = {"html": {None}, "head": {"html"}, "body": {"html"}, "link": {"head"}, "title": {"head"},
           "table": {"body", "td"}, "tr": {"table"}, "td": {"tr"}, "b": {"td"}, "center": {"td"}, "hr": {"body"},
           "br": {"body", "td", "a"}, "a": {"body", "td"}}
COMMENTS = {"rc", "bc"}


class Node:
    def __init__(self, tag, attributes, parent):
        self.tag, self.attributes, self.parent, self.parts = tag, attributes, parent, []
        if parent:
            parent.parts.append(self)

    def __getitem__(self, name):
        return self.attributes.get(name)

    @property
    def children(self):
        return [part for part in self.parts if isinstance(part, Node)]

    @property
    def text(self):
        return "".join(part if isinstance(part, str) else part.text for part in self.parts)

    def all(self, tag):
        """The elements of a tag inside this one, outermost first."""
        for child in self.children:
            if child.tag == tag:
                yield child
            yield from child.all(tag)

    def is_in_comment(self):
        return bool(self.parent) and (self.parent["class"] in COMMENTS or self.parent.is_in_comment())


class Page(html.parser.HTMLParser):
    """A page as a tree. An end without its begin, or the other way round, is an error."""

    def __init__(self, path):
        super().__init__()
        self.top = self.open = None
        self.feed(path.read_text())
        self.close()
        if self.open or not self.top:
            raise AssertionError(f"{self.open.tag if self.open else 'nothing'} is open at the end")

    def handle_startendtag(self, tag, attributes):
        node = Node(tag, dict(attributes), self.open)
        if not node.is_in_comment() and (self.open and self.open.tag) not in PARENTS[tag]:
            raise AssertionError(f"{tag} in {self.open.tag} at {self.getpos()}")
        self.top = self.top or node
        return node

    def handle_starttag(self, tag, attributes):
        node = self.handle_startendtag(tag, attributes)
        if tag not in VOID:
            self.open = node

    def handle_endtag(self, tag):
        if not self.open or tag != self.open.tag:
            raise AssertionError(f"</{tag}> closes {self.open.tag if self.open else 'nothing'} at {self.getpos()}")
        self.open = self.open.parent

    def handle_data(self, data):
        if self.open:
            self.open.parts.append(data)

    def anchors(self):
        return {anchor["name"] for anchor in self.top.all("a") if anchor["name"]}


# What a page shows, and what it should -------------------------------------------------------------------------------

def heading_of(element):
    """The classes of an element's heading and rule, its anchor and its title."""
    kind, address = element["kind"], f"{element['address']:08X}"
    if kind == "struct":
        return "mh", "me", address + "m", element["name"]
    if kind == "array":
        bar = "l" if element["prototype"]["kind"] == "struct" else "r"
        return bar + "h", bar + "e", address + "ra", f"{element['name']} (size=={len(element['members'])})"
    if kind == "hole":
        return "hh", "he", address + "h", f"Reserved_{element['offset']:08X}_{element['bits']}"
    if kind == "memory":
        unit, divisor = next((unit, divisor) for unit, divisor in (("MB", 1 << 20), ("KB", 1 << 10), ("B", 1))
                             if element["size"] % divisor == 0)
        return "lh", "le", address + "mem", f"{element['name']} (size={element['size'] // divisor} {unit})"
    return "rh", "re", f"{address}r{element['access']}", element["name"]


def position(field, separator):
    return str(field["up"]) if field["up"] == field["down"] else f"{field['up']}{separator}{field['down']}"


def fields_of(element):
    """(anchor, name, bits, access, has a reset, comment) of each field, and the anchors that cover each bit."""
    anchors = [f"{element['address']:08X}b{position(field, '-')}{field['access']}" for field in element["bitFields"]]
    table = [(anchor, field["name"], f"[{position(field, ':')}]", field["access"], field["reset"] is not None)
             for anchor, field in zip(anchors, element["bitFields"])]
    bits = [[anchor for anchor, field in zip(anchors, element["bitFields"]) if field["down"] <= bit <= field["up"]]
            for bit in reversed(range(8 * element["size"]))]
    return table, bits


def expected_bars(element, level, is_top=True):
    """What the page of an element shows, in order: headings, fields with bits, comments and rules."""
    heading, rule, anchor, title = heading_of(element)
    yield "heading", heading, 25 * level, anchor, title, f"0x{element['address']:08X}"
    member_of_array = element["name"].endswith("]")
    if element["kind"] == "array" and element["prototype"]["comment"]:
        yield "comment", "bf", 25 * (level + 1)
    elif element["kind"] == "memory" and element["comment"]:
        yield "comment", "sc", 25 * level
    elif "bitFields" in element:
        if element["comment"] and not member_of_array:
            yield "comment", "bf", 25 * level
        if element["bitFields"]:
            table, bits = fields_of(element)
            kind = "bf po" if member_of_array and not element["path"].endswith("[0]") else "bf"
            yield "diagram", kind, 25 * level, bits
            yield "fields", kind, 25 * level, table
    for member in element.get("members", []):
        yield from expected_bars(member, level if is_top and element["kind"] == "struct" else level + 1, False)
    yield "rule", rule, 25 * level


def covered_bits(rows):
    """The anchors of the fields over each bit of a diagram, from its row of names. The other rows have the same
    cells."""
    bits = []
    cells = [[(cell["class"] == "hole", int(cell["colspan"] or 1)) for cell in row.children] for row in rows[1:]]
    if len(cells) != 3 or cells[0] != cells[1] or cells[0] != cells[2]:
        raise AssertionError(f"rows of different cells: {cells}")
    for cell, (_, span) in zip(rows[1].children, cells[0]):
        bits += [[link["href"][1:] for link in cell.all("a")]] * span
    if [cell.text for cell in rows[0].children] != [str(bit) for bit in reversed(range(len(bits)))]:
        raise AssertionError(f"{len(bits)} bits below the numbers {rows[0].text}")
    return bits


def shown_fields(rows):
    for row in rows:
        name, _, access, reset = row.children
        anchor, *_ = name.all("a")
        bits, = name.all("center")
        yield anchor["name"], name.text.removesuffix(bits.text), bits.text, access.text, reset.text != "-"


def shown_bars(page):
    """What a page shows, in the form of expected_bars."""
    body = page.top.children[1]
    anchor = None
    for node in body.children:
        margin = int(match[1]) if (match := MARGIN.match(node["style"] or "")) else None
        rows = node.children
        if node.tag == "a":
            anchor = node["name"]
        elif node.tag == "hr":
            yield "rule", node["class"], margin
        elif node.tag == "table" and anchor:
            title, address = rows[0].children
            yield "heading", node["class"], margin, anchor, title.text, address.text
            anchor = None
        elif node.tag == "table":
            first = rows[0].children[0]["class"]
            if first == "rc":
                yield "comment", node["class"], margin
            elif first == "h":
                yield "diagram", node["class"], margin, covered_bits(rows)
            else:
                yield "fields", node["class"], margin, list(shown_fields(rows[1:]))


class Site(support.Case):
    """The tests of the site of one root; each description makes a class of its own from this."""

    root = None                                 # option and path of the description

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        folder = Path(cls.enterClassContext(support.tempfile.TemporaryDirectory()))
        cls.site = folder / "site"
        done = run("docs", *cls.root, "-o", cls.site, program=support.program_with_pool(folder))
        if done.status != 0:
            raise AssertionError(done.err)
        names = {path.name for path in cls.site.glob("*.html")} - {"index.html", "chip.html", "menu.html"}
        cls.pages = {name: Page(cls.site / name) for name in names}     # a wrong nesting fails here

    def test_links_lead_to_anchors(self):
        anchors = {name: page.anchors() for name, page in self.pages.items()}
        links = []
        for name, page in self.pages.items():
            links += [(name, link["href"]) for tag in ("a", "link") for link in page.top.all(tag) if link["href"]]
        menu = (self.site / "menu.js").read_text()
        targets = re.findall(r'=insFld\(i\d+,gFld\("[^"]*","([^"]*)"\)\)$|'
                             r'=insDoc\(i\d+,gLnk\("R","[^"]*","([^"]*)"\)\)$|^foldersTree = gFld\("[^"]*","([^"]*)"\)$',
                             menu, re.MULTILINE)
        self.assertEqual(len(targets), menu.count("gFld(") + menu.count("gLnk("))
        links += [("menu.js", "".join(target)) for target in targets]
        links += [("menu.js", icon) for icon in re.findall(r'iconSrc(?:Closed)? = "([^"]*)"$', menu, re.MULTILINE)]
        for name in ("index.html", "chip.html"):
            links += [(name, link) for link in re.findall(r"src=[\"']([^\"']*)", (self.site / name).read_text())]
        self.assertGreater(len(links), 2 * len(self.pages))
        for name, link in links:
            page, _, anchor = link.partition("#")
            page = page or name
            if not (self.site / page).is_file() or (anchor and anchor not in anchors[page]):
                self.fail(f"the link {link} of {name} leads nowhere")

    def test_every_anchor_is_in_the_menu(self):
        links = set(re.findall(r'"([^"]*\.html#[^"]*)"\)\)$', (self.site / "menu.js").read_text(), re.MULTILINE))
        anchors = {f"{name}#{anchor}" for name, page in self.pages.items() for anchor in page.anchors()}
        self.assertEqual(links, anchors)

    def test_pages_show_the_tree(self):
        tree = self.tree(*self.root)
        instances = (tree["chip"] or tree["soft"])["instances"]
        self.assertEqual({instance["name"] + ".html" for instance in instances}, self.pages.keys())
        for instance in instances:
            shown = list(shown_bars(self.pages[instance["name"] + ".html"]))
            for number, expected in enumerate(expected_bars(instance, 0)):
                self.assertEqual(shown[number] if number < len(shown) else None, expected, instance["name"])
            self.assertEqual(len(shown), number + 1, instance["name"])


def find_sites():
    """Makes the test classes."""
    roots = {"example_chip": ("--chip", support.EXAMPLES / "soc.xml"),
             "example_soft": ("--soft", support.EXAMPLES / "firmware.xml")}
    for chip in support.chips():
        roots[chip.name] = ("--chip", chip / json.loads((chip / "facts.json").read_text())["root"])
    for name, root in roots.items():
        globals()[name] = type(name, (Site,), {"root": root, "__module__": "__main__"})
    globals().pop("Site")                       # the pattern for the others is no test itself


if __name__ == "__main__":
    support.main(__doc__.splitlines()[0], prepare=find_sites)
