"""Runs that are killed while they write: every file is the one before or the one now, and whole. What asks a run to end
finds nothing else left behind; after what kills it, the next run does that, and completes."""

import random
import signal
import subprocess
import time

import support
from written import JOBS, WritingCase

ROUNDS = 50
KINDS = (signal.SIGKILL, signal.SIGTERM, signal.SIGKILL, signal.SIGINT, signal.SIGKILL, signal.SIGHUP)


class Kills(WritingCase):
    modules = 60                                # so that a run writes for a while

    def test_kills(self):
        chance, ended, found = random.Random(1), 0, 0
        for turn, job in enumerate(JOBS):
            states = self.states(job)
            self.restore(states[0])
            usual = self.do(job).seconds
            for number in range(turn, ROUNDS, len(JOBS)):
                kind = KINDS[number // len(JOBS) % len(KINDS)]
                with self.subTest(job=job, number=number, kind=kind):
                    self.restore(states[0])
                    stale = (self.out / min(states[0])).with_name(".veldmap-1-1.tmp")
                    stale.write_text("half of a file, from a run of long ago")
                    status = self.killed(job, kind, chance.uniform(0, usual))
                    self.assertIn(status, (0, -kind))
                    ended += status != 0
                    left = self.ended(states)
                    self.assertEqual(left.torn, [])
                    begun = left.names - states[0].keys() - {str(stale.relative_to(self.out))}
                    found += len(begun)
                    if kind != signal.SIGKILL:
                        self.assertEqual(begun, set())
                    self.expect(self.do(job), 0, err=None)
                    self.expect_new(states)
        self.assertGreater(ended, ROUNDS // 10)
        print(f"{ROUNDS} rounds, {ended} ended by a signal, {found} files left to the next run")

    def killed(self, job, kind, seconds):
        """The status of a run that gets a signal after so many seconds."""
        process = subprocess.Popen([self.program, *self.words(job)], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(seconds)
        process.send_signal(kind)
        return process.wait(timeout=300)


if __name__ == "__main__":
    support.main(__doc__.splitlines()[0])
