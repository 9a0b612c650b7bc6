"""Small runs of every command that writes, for the tests that disturb them: what each leaves of the description before and
of the one now, and what may be found after one that did not come to its end."""

import shutil
from pathlib import Path
from typing import NamedTuple

import support
from support import archive, options, run

support.LINTED.clear()                          # the commands below say themselves that they want no lint

PORTS = "".join(f'<reg32 name="r{number}" protect="rw"><bits name="f" pos="3:0" access="rw"/></reg32>'
                for number in range(40))

# The words behind the program; {out} is the directory that is compared.
JOBS = {
    "headers": "headers --no-lint --types --accessors --chip {root} -o {out}",
    "build": "build --no-lint --chip {root} --headers {out}/h --vhdl {out}/v --docs {out}/d",
    "site": "site --no-lint --chip {root} -o {out}",
    "write": "write --chip {root} $M0.r0=A $M0.r1.f=A --image {out}/image.bin --at 0x1000",
    "encrypt": "encrypt {other} {out}/sealed.xmd",
}


class Ended(NamedTuple):
    """What a run left: the names, and those that hold neither what they held before nor what they shall hold."""
    names: set
    torn: list


class WritingCase(support.Case):
    """A description of two states, and the files that each command makes of them."""

    modules = 1                                 # there are, each with an instance

    def setUp(self):
        super().setUp()
        self.out = self.folder / "out"
        bin_folder = Path(options.veldmap).parent
        for pool in ("docpool", "sitepool"):
            shutil.copytree(bin_folder / pool, self.folder / pool)
        self.program = shutil.copy(options.veldmap, self.folder / "veldmap")

    def describe(self, value):
        self.root = self.lay_out({
            "root.xml": archive(f'<var name="A" value="{value}"/>', '<include file="sub/other.xml"/>', *(
                f'<module name="m{number}"><comment>State {value}</comment>{PORTS}</module>'
                f'<instance name="M{number}" type="m{number}" address="{0x1000 * (number + 1)}"/>'
                for number in range(self.modules))),
            "sub/other.xml": archive(f'<var name="B" value="{value}"/>')})

    def words(self, job, *more):
        names = {"root": self.root, "out": self.out, "other": self.folder / "sub/other.xml"}
        command = JOBS[job].format(**names).replace("=A", f"={self.root.read_text().split('value=')[1][1]}")
        return [*command.split(), *more]

    def do(self, job, *more, **settings):
        return run(*self.words(job, *more), program=self.program, **settings)

    def restore(self, files):
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir()
        for name, content in files.items():
            (self.out / name).parent.mkdir(parents=True, exist_ok=True)
            (self.out / name).write_bytes(content)

    def states(self, job):
        """What the command leaves of the two descriptions; the second one is described at the end."""
        made = []
        for value in (1, 2):
            self.describe(value)
            self.restore(made[0] if made else {"image.bin": bytes(64)} if job == "write" else {})
            self.expect(self.do(job), 0, err=None)
            made.append(support.files_below(self.out))
        self.assertEqual(made[0].keys(), made[1].keys())
        self.assertTrue(job == "encrypt" or made[0] != made[1])
        return made

    def ended(self, states):
        """A container begins with a new vector each time: it is whole if it holds one of the two descriptions."""
        left = support.files_below(self.out)
        torn = [name for name, content in left.items() if content not in [state.get(name) for state in states] and
                not (name == "sealed.xmd" and self.sealed_value() in "12")]
        return Ended(set(left), [name for name in torn if not Path(name).name.startswith(".veldmap-")])

    def sealed_value(self):
        return run("eval", "--chip", self.out / "sealed.xmd", "B").out.strip() or "nothing"

    def expect_new(self, states):
        """The command has done all that it shall."""
        left = support.files_below(self.out)
        if "sealed.xmd" in left:
            self.assertEqual((set(left), self.sealed_value()), ({"sealed.xmd"}, "2"))
        else:
            self.assertEqual(left, states[1])
