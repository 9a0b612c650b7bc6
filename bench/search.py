"""Times the search of a reference manual in headless Chromium: its start page until it is on the screen, each key typed
into the search until the first hits are, and what the page takes of memory behind all of it.

The site is made by the program of a description that bench/generate_description.py writes. Its pages are opened from the
disk. A time ends when the first picture of the screen with the result has been made. Keys that find nothing have none."""

import argparse
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "tests/end_to_end"))
import browser  # noqa: E402

# Names, a path, words of descriptions, an option, an address, and what there is not.
QUERIES = ["ctrl", "unit7_m2.conf", "threshold of part", "register 4711", "single", "0x40003004", "zzz"]

# From a key's way down until behind the picture that its first hits are on.
WATCH_KEYS = """
window.keyTimes = [];
addEventListener('keydown', () => {
    const begin = performance.now();
    const list = document.getElementById('-hits');
    const observer = new MutationObserver(() => {
        if (!list.children.length)
            return;
        observer.disconnect();
        requestAnimationFrame(() => { const channel = new MessageChannel();
            channel.port1.onmessage = () => keyTimes.push(performance.now() - begin);
            channel.port2.postMessage(0); });
    });
    observer.observe(list, {childList: true});
}, true);
"""


def memory_of_page(driver):
    """The megabytes that the largest renderer below a process has for itself."""
    parents, found = {}, []
    for status in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            parents[int(status.parent.name)] = int(status.read_text().rsplit(")", 1)[1].split()[1])
        except OSError:
            continue                                            # it has ended meanwhile
    for process in parents:
        above = process
        while above in parents and above != driver:
            above = parents[above]
        folder = pathlib.Path("/proc") / str(process)
        if above == driver and b"--type=renderer" in (folder / "cmdline").read_bytes():
            lines = [line.split() for line in (folder / "smaps_rollup").read_text().splitlines()[1:]]
            found.append(sum(int(line[1]) for line in lines if line[0].startswith("Private_")) / 1024)
    return max(found)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--bin", type=pathlib.Path, required=True, metavar="DIR", help="where the program lies")
    parser.add_argument("--registers", type=int, default=100_000)
    parser.add_argument("--work", metavar="DIR", help="for temporary files")
    arguments = parser.parse_args()
    if browser.missing():
        sys.exit(f"not installed: {', '.join(browser.missing())}")

    with tempfile.TemporaryDirectory(dir=arguments.work) as folder:
        chip, site = pathlib.Path(folder) / "chip", pathlib.Path(folder) / "site"
        subprocess.run([sys.executable, HERE / "generate_description.py", f"--registers={arguments.registers}",
                        f"--files={max(1, arguments.registers // 100)}", f"--out={chip}"], check=True, stdout=subprocess.DEVNULL)
        subprocess.run([arguments.bin / "veldmap", "site", "-q", "--no-lint", "--chip", chip / "soc.xml", "-o", site], check=True)
        index = sum(path.stat().st_size for kind in ("main", "names") for path in (site / "search").glob(f"{kind}-*.js"))
        print(f"names and places in the index: {index / arguments.registers:.1f} bytes a register; the bound is 40")
        with browser.Browser() as window:
            window.open((site / "index.html").as_uri())
            opened = window.run("return performance.getEntriesByName('first-contentful-paint')[0].startTime")
            print(f"opened: {opened:.0f} ms, {memory_of_page(window.driver.pid):.0f} MB; the bounds are 1000 ms and 200 MB")
            window.run(WATCH_KEYS)
            window.type("/")
            time.sleep(1)
            for query in QUERIES:
                window.run("const box = document.querySelector('.search'); box.value = ''; box.focus(); box.select()")
                for letter in query:
                    window.type(letter)
                    time.sleep(0.1)
                window.wait(lambda: window.run("return document.getElementById('-hits').ariaBusy") == "false", query, 60)
            times = window.run("return keyTimes")
            print(f"first hits of a key: {statistics.median(times):.0f} ms, at most {max(times):.0f} ms in {len(times)}; "
                  "the bound is 50 ms")
            print(f"memory behind these searches: {memory_of_page(window.driver.pid):.0f} MB; the bound is 200 MB")


if __name__ == "__main__":
    main()
