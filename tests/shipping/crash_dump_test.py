"""A crash of the module, as it comes back from the field: the dump leads to the line.

usage: crash_dump_test.py MODULE HOST      HOST makes the module crash and leaves a dump
"""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(os.environ["QX_SOURCE_DIR"])
CRASHING_LINE = "*size = g_size;"
CRASHING_FILE = "src/entry/escape_data.cpp"
module, host = sys.argv[1:3]


def symbolize(*arguments):
    return subprocess.run([SOURCES / "tools/symbolize.sh", "--symbols", module + ".debug", *arguments],
                          capture_output=True, text=True)


def place_of_crash():
    lines = (SOURCES / CRASHING_FILE).read_text().splitlines()
    return f"{CRASHING_FILE}:{1 + next(i for i, line in enumerate(lines) if CRASHING_LINE in line)}"


class ACrash(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.dump = Path(cls.folder.name) / "crash.dmp"
        run = subprocess.run([os.environ["QX_WINE"], host, "Z:" + module, "Z:" + str(cls.dump)],
                             capture_output=True, text=True)
        assert run.returncode == 42, (run.returncode, run.stderr)
        base, address = (int(line, 16) for line in run.stdout.split())
        cls.offset = address - base

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def test_is_found_from_its_dump(self):
        found = symbolize(self.dump)
        self.assertEqual(found.returncode, 0, found.stderr)
        line, = [line for line in found.stdout.splitlines() if line.startswith("at ")]
        self.assertIn("qx::FetchEscapeData", line)
        self.assertTrue(line.endswith(place_of_crash()), line)
        self.assertRegex(found.stdout, r"(?m)^from .*  BGetStoredExtEscapeData  src/entry/exports\.cpp:\d+$")

    def test_is_found_from_its_offset(self):
        for address in f"{self.offset:#x}", f"{self.offset:016x}", f"qxfaxui+{self.offset:#x}":
            found = symbolize(address)
            self.assertTrue(found.stdout.startswith("qxfaxui.dll+"), found.stderr)
            self.assertTrue(found.stdout.splitlines()[0].endswith(place_of_crash()), found.stdout)

    def test_is_not_looked_for_in_the_symbols_of_another_build(self):
        other = Path(self.folder.name) / "qxfaxui.dll.debug"
        data = bytearray(Path(module + ".debug").read_bytes())
        data[data.index(b"RSDS") + 4] ^= 1
        header = int.from_bytes(data[0x3C:0x40], "little")
        data[header + 8] ^= 1  # the time of the build, where a dump has no build id
        other.write_bytes(data)
        found = symbolize("--symbols", other, self.dump)
        self.assertEqual(found.returncode, 1)
        self.assertIn("another build", found.stderr)

    def test_is_not_read_from_a_damaged_dump(self):
        for damaged in self.dump.read_bytes()[:200], b"MDMP", b"", b"no dump at all":
            path = Path(self.folder.name) / "damaged.dmp"
            path.write_bytes(damaged)
            found = symbolize(path)
            self.assertEqual(found.returncode, 1, damaged)
            self.assertNotIn("Traceback", found.stderr)


class TheModule(unittest.TestCase):
    def test_names_no_path_of_the_building_machine(self):
        for path in module, module + ".debug":
            self.assertNotIn(str(SOURCES).encode(), Path(path).read_bytes(), path)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
