"""The pages of the reference manual as html-validate and axe-core judge them, light and dark. These are npm packages, which
scripts/setup puts into build/node where there is npm."""

import json
import subprocess

import reference_manual as manual
import support

PACKAGES = manual.ROOT / "build/node/node_modules"


class Valid(support.Case):
    def test_validator_accepts(self):
        validator = PACKAGES / ".bin/html-validate"
        if not validator.exists():
            self.skipTest("html-validate is not in build/node")
        rules = {"extends": ["html-validate:standard", "html-validate:document"], "root": True,
                 "rules": {"valid-id": ["error", {"relaxed": True}], "long-title": "off",
                           "require-sri": ["error", {"target": "crossorigin"}]}}
        (self.folder / ".htmlvalidate.json").write_text(json.dumps(rules))
        self.lay_out({"odd.xml": manual.ODD})
        manual.site_of(self.folder / "odd", "--chip", self.folder / "odd.xml")
        manual.site_of(self.folder / "both", "--chip", manual.CHIP, "--soft", manual.SOFT)
        manual.site_of(self.folder / "both", "--chip", manual.CHIP, "--soft", manual.SOFT, "--single")
        pages = sorted(map(str, self.folder.rglob("*.html")))
        self.assertGreater(len(pages), 15)
        done = subprocess.run([validator, "--formatter=text", "--config", self.folder / ".htmlvalidate.json", *pages],
                              capture_output=True, text=True)
        self.assertEqual(done.stdout, "")
        self.assertEqual(done.returncode, 0, done.stderr)


class Accessible(manual.Opened):
    def test_judged_accessible(self):
        axe = PACKAGES / "axe-core/axe.min.js"
        if not axe.exists():
            self.skipTest("axe-core is not in build/node")
        for page in ("both/index.html", "both/UART0.html", "odd/_Con.html", "odd/TABLE.html", "both/types.html",
                     "both/enums.html", "both/variables.html", "both/type-pin.html"):
            for scheme in ("light", "dark"):
                self.browser.prefer(scheme)
                self.open(page)
                self.browser.run("document.querySelector('.decode')?.click(); document.querySelector('.tool')?.click()")
                if "index" in page:
                    self.search("c", 3)
                found = self.browser.run_until_called(axe.read_text() + """; const done = arguments[arguments.length - 1];
                    axe.run(document, {resultTypes: ['violations'], preload: false}).then(all => done(all.violations.map(it => [it.id,
                        it.nodes.slice(0, 2).map(node => node.html.slice(0, 120) + node.failureSummary)])))""")
                self.assertEqual(found, [], (page, scheme))
        self.browser.prefer("light")


if __name__ == "__main__":
    support.main(__doc__)
