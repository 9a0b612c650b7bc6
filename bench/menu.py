"""Times the menu of a documentation site in headless Chromium: a menu of 100,000 nodes from the start of its page until
its rows are on the screen, and each key typed into its search box until the hits are.

Pages are opened from the disk. A time ends when the first picture of the screen with the result has been made; the
median and the largest of several runs are printed."""

import argparse
import pathlib
import shutil
import statistics
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "tests/end_to_end"))
import browser  # noqa: E402

QUERIES = ["field_7", "unit12.config_register_3", "zzz", "e"]

# Runs before the page's own scripts: notes when the first rows were on the screen.
WATCH_ROWS = """
new MutationObserver((_, observer) => {
    if (!document.querySelector('#tree .row'))
        return;
    observer.disconnect();
    requestAnimationFrame(() => { const channel = new MessageChannel();
        channel.port1.onmessage = () => { window.rowsShown = performance.now(); };
        channel.port2.postMessage(0); });
}).observe(document, {childList: true, subtree: true});
"""

# From a key's way down until behind the picture that its hits are on.
WATCH_KEYS = """
window.keyTimes = [];
addEventListener('keydown', () => {
    const begin = performance.now();
    requestAnimationFrame(() => { const channel = new MessageChannel();
        channel.port1.onmessage = () => keyTimes.push(performance.now() - begin);
        channel.port2.postMessage(0); });
}, true);
"""


def menu_text(count):
    """A menu.js as the generator writes it: units of 100 registers with three fields each."""
    lines = ["USETEXTLINKS = 1", "STARTALLOPEN = 0", 'foldersTree = gFld("soc","chip.html")', "i0 = foldersTree"]
    for number in range(count):
        unit, inside = divmod(number, 401)
        register, field = divmod(inside - 1, 4)
        page, address = f"UNIT{unit}.html", 0x40000000 + 0x1000 * unit + 4 * max(register, 0)
        if inside == 0:
            lines.append(f'    i1=insFld(i0,gFld("UNIT{unit}","{page}#{address:08X}m"))')
        elif field == 0:
            lines += [f'        i2=insFld(i1,gFld("config_register_{register}","{page}#{address:08X}rrw"))',
                      '        i2.iconSrc = "reg32.png"', '        i2.iconSrcClosed = "reg32.png"']
        else:
            lines += [f'            i3=insDoc(i2,gLnk("R","field_{register}_{field}",'
                      f'"{page}#{address:08X}b{4 * field + 3}-{4 * field}rw"))', '            i3.iconSrc = "bitfield.png"']
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--nodes", type=int, default=100_000)
    parser.add_argument("--runs", type=int, default=7)
    arguments = parser.parse_args()
    if browser.missing():
        sys.exit(f"not installed: {', '.join(browser.missing())}")

    shown, keys = [], []
    with tempfile.TemporaryDirectory() as folder:
        site = pathlib.Path(folder) / "site"
        shutil.copytree(HERE.parent / "src/docsite/pool", site)
        (site / "menu.js").write_text(menu_text(arguments.nodes))
        with browser.Browser() as window:
            window.devtools("Page.addScriptToEvaluateOnNewDocument", source=WATCH_ROWS)
            for _ in range(arguments.runs):
                window.open("about:blank")
                window.open((site / "menu.html").as_uri())
                shown.append(window.wait(lambda: window.run("return window.rowsShown"), "the rows of the menu"))
            window.run(WATCH_KEYS)
            for query in QUERIES:
                window.type("/")
                for letter in query:
                    window.type(letter)
                    window.run_until_called("requestAnimationFrame(() => setTimeout(arguments[0], 50))")
                window.type("Escape")
            keys = window.run("return keyTimes")
    for name, times, limit in (("shown", shown, 1000), ("a key of the search", keys, 100)):
        print(f"{name}: {statistics.median(times):.0f} ms, at most {max(times):.0f} ms in {len(times)}; "
              f"the bound is {limit} ms")


if __name__ == "__main__":
    main()
