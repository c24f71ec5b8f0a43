"""What several processes have counted of an object is its sum, and counts of another build of it are none."""

import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
TOOL = SOURCES / "tools" / "coverage_counts.py"
ARCS = 0x01A10000


def counted(stamp, *functions):
    """Of each function its counters, or None when the program has the function of another object."""
    data = b"adcg" + struct.pack("<III", 0x4232302A, stamp, 7) + struct.pack("<IIII", 0xA1000000, 8, 1, 5)
    for number, counters in enumerate(functions):
        data += struct.pack("<II", 0x01000000, 0 if counters is None else 12)
        if counters is None:
            continue
        data += struct.pack("<III", number, 8, 9)
        if any(counters):
            data += struct.pack(f"<II{len(counters)}q", ARCS, 8 * len(counters), *counters)
        else:
            data += struct.pack("<Ii", ARCS, -8 * len(counters))
    return data + bytes(4)


class TheSum(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.write("build/src/a/a.gcno", counted(11))

    def write(self, name, data):
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(data)

    def sum_of(self, *processes):
        for number, data in enumerate(processes):
            self.write(f"processes/en/{32 + number}/src/a/a.gcda", data)
        subprocess.run([sys.executable, TOOL, self.folder / "build", self.folder / "processes"], check=True)
        file = self.folder / "build/src/a/a.gcda"
        return file.read_bytes() if file.exists() else None

    def test_counters_of_processes_add_up(self):
        self.assertEqual(self.sum_of(counted(11, [1, 0, 2 ** 40], [0, 0]), counted(11, [3, 4, 5], [0, 6])),
                         counted(11, [4, 4, 2 ** 40 + 5], [0, 6]))

    def test_what_was_counted_before_stays(self):
        self.write("build/src/a/a.gcda", counted(11, [1, 1]))
        self.assertEqual(self.sum_of(counted(11, [0, 2])), counted(11, [1, 3]))

    def test_a_function_that_a_program_has_from_another_object_is_counted_by_the_others(self):
        self.assertEqual(self.sum_of(counted(11, None, [1]), counted(11, [2], None)), counted(11, [2], [1]))

    def test_what_another_build_has_counted_is_forgotten(self):
        self.write("build/src/a/a.gcda", counted(10, [5]))
        self.assertEqual(self.sum_of(counted(11, [2])), counted(11, [2]))

    def test_what_only_another_build_has_counted_is_nothing(self):
        self.assertIsNone(self.sum_of(counted(10, [2])))
        self.write("build/src/a/a.gcda", counted(10, [5]))
        self.assertIsNone(self.sum_of())

    def test_a_file_that_was_not_written_to_its_end_is_passed_over(self):
        for bytes_written in (4, 16, 50):
            self.assertEqual(self.sum_of(counted(11, [3])[:bytes_written], counted(11, [2])), counted(11, [2]))
            (self.folder / "build/src/a/a.gcda").unlink()


if __name__ == "__main__":
    unittest.main()
