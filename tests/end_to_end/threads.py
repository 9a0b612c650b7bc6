"""Commands on several threads: what they write and say is the same with any number of them. Under the thread sanitizer
(preset tsan) a race ends a run with a status of its own."""

import os

import support
from support import archive, options, run

FILES = 12


class Threads(support.Case):
    """A description of several files, some of them at fault, and a real chip."""

    def lay_out_files(self):
        module = ('<module name="m{0}"><comment>Block {0} of {1}</comment>'
                  '<reg32 name="ctrl" protect="rw"><bits name="en" pos="0" access="rw"/><bits name="mode" pos="3:0" access="rw">'
                  '<options linkenum="e{0}"/></bits></reg32><reg16 name="data" count="V{0}" protect="r"/></module>')
        return self.lay_out({
            "root.xml": archive(*(f'<include file="f{at}.xml"/>' for at in range(FILES)), *(
                f'<instance name="M{at}" type="m{at}" address="{0x1000 * (at + 1)}"/>' for at in range(FILES))),
            **{f"f{at}.xml": archive(f'<include file="common.xml"/><var name="V{at}" value="C+{at}"/>'
                                     f'<enum name="e{at}"><entry name="E{at}"/></enum>', module.format(at, FILES))
               for at in range(FILES)},
            "common.xml": archive('<var name="C" value="1"/>')})

    def same_for_all_threads(self, *arguments):
        """With {out} in them the files are compared too."""
        answers = []
        for number in (1, 2, 4):
            out = self.folder / f"out{number}"
            words = [str(word).replace("{out}", str(out)) for word in arguments]
            done = run(words[0], "-j", number, *words[1:], environment={
                **os.environ, "TSAN_OPTIONS": f"exitcode=66:{os.environ.get('TSAN_OPTIONS', '')}"})
            self.assertIn(done.status, (0, 1), done.err[-5000:])
            self.assertNotIn("ThreadSanitizer", done.err)
            answers.append((done.status, done.out, done.err.replace(str(out), "OUT"), support.files_below(out)))
        self.assertEqual(answers[1:], answers[:1] * 2)
        self.assertTrue(answers[0][3] or "{out}" not in " ".join(map(str, arguments)))

    def test_all_commands(self):
        support.LINTED.clear()
        roots = [["--chip", self.lay_out_files()],
                 ["--chip", support.EXAMPLES / "soc.xml", "--soft", support.EXAMPLES / "firmware.xml"]]
        for root in roots:
            with self.subTest(root=str(root[1])):
                self.same_for_all_threads("check", "-Wall", *root)
                self.same_for_all_threads("headers", "--no-lint", "--types", "--globals", "--accessors", *root, "-o", "{out}")
                self.same_for_all_threads("site", "--no-lint", *root, "-o", "{out}")
                self.same_for_all_threads("build", "--no-lint", *root, "--headers", "{out}/h", "--vhdl", "{out}/v",
                                          "--docs", "{out}/d")


if __name__ == "__main__":
    support.main(__doc__.splitlines()[0])
