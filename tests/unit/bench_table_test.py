"""The table of the benchmarks: of each comparison its best run, and an error only for a limit that no run kept."""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
TOOL = SOURCES / "tools" / "bench_table.py"


def comparison(work, ratio, allowed=1.5, **more):
    return {"work": work, "measured": 2 * ratio, "unavoidable": "the bare one", "unavoidableMeasured": 2, "unit": "ms",
            "ratio": ratio, "allowed": allowed, "bytesPerEntry": None, **more}


class TheTable(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def table_of(self, *runs, markdown=None):
        for number, rows in enumerate(runs, start=1):
            (self.folder / f"some.{number}.json").write_text(json.dumps(rows), encoding="utf-8")
        options = ["--markdown", markdown, "--machine", "Measured here."] if markdown else []
        return subprocess.run([sys.executable, TOOL, *options, self.folder, "some"], capture_output=True,
                              encoding="utf-8")

    def test_a_limit_that_one_run_keeps_is_kept(self):
        ended = self.table_of([comparison("open", 1.7), comparison("close", 1.2)],
                              [comparison("open", 1.4), comparison("close", 1.6)])
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertIn("1.40", ended.stdout)
        self.assertIn("1.20", ended.stdout)
        self.assertNotIn("1.70", ended.stdout)

    def test_a_limit_that_no_run_keeps_is_broken(self):
        ended = self.table_of([comparison("open", 1.7)], [comparison("open", 1.6)], [comparison("open", 1.8)])
        self.assertEqual(ended.returncode, 1)
        self.assertEqual(ended.stderr, "over its limit: open\n")

    def test_the_same_work_may_be_compared_with_several(self):
        ended = self.table_of([comparison("save", 1.2), comparison("save", 1.9, unavoidable="another")])
        self.assertEqual(ended.returncode, 1)
        self.assertEqual(ended.stdout.count("save"), 2)

    def test_a_row_without_a_limit_only_tells(self):
        ended = self.table_of([comparison("send", 5, allowed=None, bytesPerEntry=214)])
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertIn("214", ended.stdout)

    def test_without_a_result_there_is_no_table(self):
        self.assertNotEqual(self.table_of().returncode, 0)

    def test_a_page_keeps_what_stands_around_its_table(self):
        page = self.folder / "page.md"
        page.write_text("# Before\n<!-- table -->\nold\n<!-- end of the table -->\nafter\n", encoding="utf-8")
        self.table_of([comparison("open", 1.25)], markdown=page)
        text = page.read_text(encoding="utf-8")
        self.assertTrue(text.startswith("# Before\n<!-- table -->\nMeasured here.\n\n| work |"), text)
        self.assertTrue(text.endswith("| 1.25 | 1.50 |  |\n<!-- end of the table -->\nafter\n"), text)
        self.assertNotIn("old", text)

    def test_another_file_becomes_the_table(self):
        file = self.folder / "table.md"
        self.table_of([comparison("open", 1.25)], markdown=file)
        self.assertTrue(file.read_text(encoding="utf-8").startswith("Measured here.\n\n| work |"))


if __name__ == "__main__":
    unittest.main()
