"""The table of what tests have run: code that several objects hold counts once, and nobody's branches do not count."""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
TOOL = SOURCES / "tools" / "coverage_table.py"


def line(number, count, *branches, function="f"):
    return {"line_number": number, "count": count, "function_name": function, "branches": branches}


def branch(count, throw=False, fallthrough=False):
    return {"count": count, "throw": throw, "fallthrough": fallthrough}


def function(name, start, readable):
    return {"name": name, "demangled_name": readable, "start_line": start, "start_column": 1}


def source(name, *lines, functions=(function("f", 1, "qx::(anonymous namespace)::Function(int, bool)"),)):
    return {"file": name, "functions": functions, "lines": lines}


class TheTable(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def table_of(self, *objects, options=()):
        """objects: of each the sources that it was made of. Those that are not there yet become empty."""
        for file in (file["file"] for files in objects for file in files):
            (self.folder / file).parent.mkdir(parents=True, exist_ok=True)
            (self.folder / file).touch()
        (self.folder / "counted").write_text("\n".join(json.dumps({"files": files}) for files in objects))
        counting = self.folder / "gcov"
        counting.write_text('#!/bin/sh\nexec cat "${0%/*}/counted"\n')
        os.chmod(counting, 0o755)
        ended = subprocess.run([sys.executable, TOOL, *options, counting, self.folder], capture_output=True,
                               encoding="utf-8", cwd=self.folder)
        self.errors = ended.stderr
        return [row.split() for row in ended.stdout.splitlines()]

    def test_a_row_is_a_folder_and_the_last_all_of_them(self):
        table = self.table_of([source("src/a/a.cpp", line(1, 5), line(2, 0)), source("src/b/b.h", line(1, 1))],
                              [source("src/b/b.cpp", line(1, 2, branch(2), branch(0)))])
        self.assertEqual(table[1:], [["src/a", "2", "1", "50.0", "%", "0", "0"],
                                     ["src/b", "2", "2", "100.0", "%", "2", "1", "50.0", "%"],
                                     ["all", "4", "3", "75.0", "%", "2", "1", "50.0", "%"]])

    def test_what_several_objects_hold_is_run_when_one_of_them_runs_it(self):
        table = self.table_of([source("src/a/a.h", line(1, 0, branch(0), branch(3)), line(2, 0))],
                              [source("src/a/a.h", line(1, 7, branch(7), branch(0)))])
        self.assertEqual(table[-1], ["all", "2", "1", "50.0", "%", "2", "2", "100.0", "%"])

    def test_what_a_template_was_made_for_is_one_function(self):
        table = self.table_of([source("src/a/a.h", line(1, 1, branch(1), branch(0), function="f<int>"),
                                      line(1, 1, branch(0), branch(1), function="f<bool>"),
                                      functions=[function("f<int>", 1, "f"), function("f<bool>", 1, "f")])])
        self.assertEqual(table[-1][-4:], ["2", "2", "100.0", "%"])

    def test_branches_for_exceptions_do_not_count(self):
        table = self.table_of([source("src/a/a.cpp", line(1, 1, branch(1, fallthrough=True), branch(0, throw=True),
                                                          branch(1), branch(0)))])
        self.assertEqual(table[-1][-4:], ["2", "1", "50.0", "%"])

    def test_a_brace_alone_is_no_line(self):
        (self.folder / "src/a").mkdir(parents=True)
        (self.folder / "src/a/a.cpp").write_text("{\n    return f() };\n}\n")
        table = self.table_of([source("src/a/a.cpp", line(2, 1), line(3, 0, branch(0), branch(0)))])
        self.assertEqual(table[-1], ["all", "1", "1", "100.0", "%", "0", "0"])

    def test_a_handler_is_a_line_without_branches(self):
        (self.folder / "src/a").mkdir(parents=True)
        (self.folder / "src/a/a.cpp").write_text("try {\n    f();\n} catch (const E&) {\n    g();\n}\n")
        table = self.table_of([source("src/a/a.cpp", line(2, 1), line(3, 0, branch(0), branch(0)), line(4, 0))])
        self.assertEqual(table[-1], ["all", "3", "1", "33.3", "%", "0", "0"])

    def test_only_the_product_counts(self):
        table = self.table_of([source("src/a/a.cpp", line(1, 1)), source("tests/support/a.h", line(1, 0))])
        self.assertEqual(table[-1], ["all", "1", "1", "100.0", "%", "0", "0"])

    def test_missing_lines_are_listed_by_function(self):
        table = self.table_of([source("src/a/a.cpp", line(3, 0), line(5, 0), line(6, 1), line(7, 0))],
                              options=["--lines"])
        self.assertEqual(table[:2], [["src/a/a.cpp:3-5:", "Function"], ["src/a/a.cpp:7:", "Function"]])

    def test_missing_branches_are_listed_by_line(self):
        table = self.table_of([source("src/a/a.cpp", line(3, 1, branch(1), branch(0)), line(4, 1, branch(1)))],
                              options=["--branches"])
        self.assertEqual(table[0], ["src/a/a.cpp:3:", "1", "of", "2", "branches,", "Function"])

    def test_without_a_count_there_is_no_table(self):
        self.assertEqual(self.table_of([source("tests/a.cpp", line(1, 1))]), [])
        self.assertEqual(self.errors, "nothing was counted\n")


if __name__ == "__main__":
    unittest.main()
