"""A program that ended without a word is started once more; one that said anything never is."""

import contextlib
import io
import os
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

SOURCES = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCES / "tests" / "support"))
import windows_program

# In place of Wine: notes each start, then does what was asked for that one.
STARTER = """#!/bin/bash
echo "${*:2}" >>"$0.starts"
eval "$(sed -n "$(wc -l <"$0.starts")p" "$0.plays")"
"""


class AProgram(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        (self.folder / "session.log").write_text("what Wine wrote\n")
        starter = self.folder / "starter"
        starter.write_text(STARTER)
        starter.chmod(0o755)
        self.enterContext(mock.patch.object(windows_program, "WINE", starter))
        self.enterContext(mock.patch.dict(os.environ, QX_WINE_SESSION=str(self.folder)))
        self.told = io.StringIO()
        self.enterContext(contextlib.redirect_stderr(self.told))

    def played(self, *plays):
        (self.folder / "starter.plays").write_text("".join(f"{play}\n" for play in plays))
        done = windows_program.run("some.exe", "an argument", 7)
        starts = (self.folder / "starter.starts").read_text().splitlines()
        self.assertEqual(set(starts), {"an argument 7"})
        return (done.returncode, done.stdout, done.stderr), len(starts)

    def test_that_was_ended_before_it_began_is_started_once_more(self):
        self.assertEqual(self.played("exit 1", "echo here"), ((0, "here\n", ""), 2))
        self.assertIn("what Wine wrote", self.told.getvalue())

    def test_that_never_says_a_word_is_told_so(self):
        self.assertEqual(self.played("exit 1", "exit 1", "echo here"), ((1, "", ""), 2))

    def test_that_said_something_or_ended_otherwise_is_not_started_again(self):
        for play, ended in (("echo no >&2; exit 1", (1, "", "no\n")), ("echo no; exit 1", (1, "no\n", "")),
                            ("exit 2", (2, "", "")), ("exit 0", (0, "", ""))):
            with self.subTest(play):
                (self.folder / "starter.starts").unlink(missing_ok=True)
                self.assertEqual(self.played(play, "echo again"), (ended, 1))
        self.assertEqual(self.told.getvalue(), "")


if __name__ == "__main__":
    unittest.main()
