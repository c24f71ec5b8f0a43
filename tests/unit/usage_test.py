"""Every script tells how it is used when it is asked, and does nothing else."""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
SCRIPTS = [SOURCES / "run.sh", SOURCES / "test.sh", SOURCES / ".ci/run",
           *(script for script in sorted((SOURCES / "tools").glob("*.sh")) if os.access(script, os.X_OK))]


class Usage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        for program in ("bash", "cat", "dirname", "sed"):
            os.symlink(shutil.which(program), Path(folder.name) / program)
        os.symlink(sys.executable, Path(folder.name) / "python3")
        # Nothing that builds, tests or installs.
        self.environment = {"PATH": folder.name, "PYTHONDONTWRITEBYTECODE": "1"}

    def test_is_told_and_nothing_done(self):
        self.assertGreater(len(SCRIPTS), 10)
        for script in SCRIPTS:
            for option in ("--help", "-h"):
                with self.subTest(script=script.name, option=option):
                    told = subprocess.run([f"./{script.name}", option], cwd=script.parent, env=self.environment,
                                          capture_output=True, encoding="utf-8", timeout=60)
                    self.assertEqual((told.returncode, told.stderr), (0, ""))
                    self.assertIn(str(script.relative_to(SOURCES)), told.stdout)


if __name__ == "__main__":
    unittest.main()
