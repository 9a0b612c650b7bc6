"""Documentation sites of real chips and of the examples: their nesting, their links, and a place for every element.

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

# Inside what each element may stand. Comments are in cells of these classes, where everything may stand.
PARENTS = {"html": {None}, "head": {"html"}, "body": {"html"}, "link": {"head"}, "title": {"head"},
           "table": {"body", "td"}, "tr": {"table"}, "td": {"tr"}, "b": {"td"}, "center": {"td"}, "hr": {"body"},
           "br": {"body", "td", "a"}, "a": {"body", "td"}}
COMMENTS = {"rc", "bc"}


class Node:
    def __init__(self, tag, attributes, parent):
        self.tag, self.attributes, self.parent, self.children = tag, attributes, parent, []
        if parent:
            parent.children.append(self)

    def __getitem__(self, name):
        return self.attributes.get(name)

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

    def anchors(self):
        return [anchor["name"] for anchor in self.top.all("a") if anchor["name"]]


def addresses(element):
    """Where the element, its bitfields and what is in it lie, as anchors begin."""
    yield from [f"{element['address']:08X}"] * (1 + len(element.get("bitFields", [])))
    for member in element.get("members", []):
        yield from addresses(member)


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

    def test_every_element_has_an_anchor(self):
        tree = self.tree(*self.root)
        self.assertEqual({f"{instance['name']}.html": sorted(addresses(instance))
                          for instance in (tree["chip"] or tree["soft"])["instances"]},
                         {name: sorted(anchor[:8] for anchor in page.anchors()) for name, page in self.pages.items()})

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
