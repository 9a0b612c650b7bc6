"""Headless Chromium, driven over the WebDriver protocol with nothing but the standard library."""

import base64
import json
import os
import re
import shutil
import subprocess
import tempfile
import time
import urllib.error
import urllib.request

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"     # how the protocol spells a reference to an element
KEYS = {"Enter": "\ue007", "Escape": "\ue00c", "Backspace": "\ue003", "PageUp": "\ue00e", "PageDown": "\ue00f",
        "End": "\ue010", "Home": "\ue011", "Left": "\ue012", "Up": "\ue013", "Right": "\ue014", "Down": "\ue015"}

# No request but those of the pages: Chromium's own (updates, accounts, safe browsing) are switched off.
FLAGS = ["--headless=new", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
         "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage", "--disable-extensions",
         "--hide-scrollbars=false", "--force-device-scale-factor=1"]


def missing():
    """What of the browser is not installed; empty when all is there."""
    return [name for name in ("chromium", "chromedriver") if not shutil.which(name)]


class Refused(Exception):
    """An answer of the driver that is an error; its text begins with the protocol's word for it."""


class Browser:
    """One window. Use it in a with statement: its end ends the driver and the browser that it started."""

    def __init__(self, width=1280, height=900, flags=()):
        self.profile = tempfile.TemporaryDirectory(prefix="veldmap-browser-")
        self.driver = subprocess.Popen([shutil.which("chromedriver"), "--port=0"], stdin=subprocess.DEVNULL,
                                       stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        try:
            self.base = f"http://127.0.0.1:{self.port()}"
            self.start_session(width, height, flags)
        except BaseException:
            self.close()
            raise

    def port(self):
        """The driver takes a free port and says which."""
        for line in self.driver.stdout:
            if found := re.search(r"started successfully on port (\d+)", line):
                return found[1]
        raise Refused("chromedriver does not start")

    def start_session(self, width, height, flags):
        arguments = [*FLAGS, f"--window-size={width},{height}", f"--user-data-dir={self.profile.name}", *flags]
        if os.geteuid() == 0:
            arguments.append("--no-sandbox")        # Chromium's sandbox does not work for root
        answer = self.send("POST", "/session", {"capabilities": {"alwaysMatch": {
            "browserName": "chrome",
            "goog:chromeOptions": {"binary": shutil.which("chromium"), "args": arguments},
            "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"}}}})
        self.base += "/session/" + answer["sessionId"]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        if "/session/" in getattr(self, "base", ""):
            try:
                self.send("DELETE", "")
            except (Refused, OSError):
                pass                                # it is ended below all the same
        self.driver.terminate()
        self.driver.wait(30)
        self.driver.stdout.close()
        self.profile.cleanup()

    def send(self, method, path, body=None):
        data = json.dumps(body or {}).encode() if method == "POST" else None
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        try:
            with opener.open(request, timeout=120) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            value = json.load(error)["value"]
            raise Refused(f"{value['error']}: {value['message']}") from None

    # The window -------------------------------------------------------------------------------------------------------

    def open(self, url):
        self.send("POST", "/url", {"url": url})

    def reload(self):
        self.send("POST", "/refresh")

    def resize(self, width, height):
        self.send("POST", "/window/rect", {"width": width, "height": height})

    def devtools(self, command, **parameters):
        return self.send("POST", "/goog/cdp/execute", {"cmd": command, "params": parameters})

    def prefer(self, scheme):
        """Light or dark, as a reader's system says it."""
        self.devtools("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def screenshot(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self.send("GET", "/screenshot")))

    def pdf(self):
        return base64.b64decode(self.send("POST", "/print", {"background": False}))

    def frame(self, name):
        """The frame that the following calls are about."""
        self.send("POST", "/frame", {"id": None})
        self.send("POST", "/frame", {"id": self.find(f"frame[name={name}]")})

    # What is in it ----------------------------------------------------------------------------------------------------

    def find(self, selector):
        return self.send("POST", "/element", {"using": "css selector", "value": selector})

    def run(self, script, *arguments):
        return self.send("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def run_until_called(self, script, *arguments):
        """As run, but the value is what the script gives to the function that is its last argument."""
        return self.send("POST", "/execute/async", {"script": script, "args": list(arguments)})

    def click(self, element):
        self.send("POST", f"/element/{element[ELEMENT]}/click")

    def type(self, *keys):
        """Single characters, or names of KEYS, to what has the focus."""
        strokes = [{"type": kind, "value": KEYS.get(key, key)} for key in keys for kind in ("keyDown", "keyUp")]
        self.send("POST", "/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": strokes}]})

    def wait(self, condition, what, seconds=10):
        """The first true value of the condition."""
        end = time.monotonic() + seconds
        while not (value := condition()):
            if time.monotonic() > end:
                raise AssertionError(f"not within {seconds} s: {what}")
            time.sleep(0.02)
        return value

    # What it said -----------------------------------------------------------------------------------------------------

    def console(self):
        """(level, text) of each message since the last call."""
        return [(entry["level"], entry["message"]) for entry in self.send("POST", "/se/log", {"type": "browser"})]

    def requests(self):
        """The addresses of all requests since the last call."""
        events = (json.loads(entry["message"])["message"]
                  for entry in self.send("POST", "/se/log", {"type": "performance"}))
        return [event["params"]["request"]["url"] for event in events if event["method"] == "Network.requestWillBeSent"]
