"""Which folder may include which: the arrows between the folders point one way, and a folder's headers are named in full."""

import re
import sys
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]

# Each folder of src with those it stands on directly; it may include those, what they stand on, and itself. From the
# ground up: a folder is listed after all that it uses.
STANDS_ON = {
    "res": [],
    "base": [],
    "record": ["base"],
    "settings": ["record"],
    "text": ["record"],
    "dialog": ["settings", "text", "res"],
    "phonebook/book": ["settings"],
    "phonebook/file": ["phonebook/book"],
    "phonebook/csv": ["phonebook/book"],
    "phonebook/recent": ["phonebook/book"],
    "phonebook/ui": ["phonebook/file", "phonebook/csv", "phonebook/recent", "dialog"],
    "pages": ["phonebook/ui"],
    "entry": ["pages"],
}
# What is not part of the module. The stand-in driver knows no more of it than a driver, and the ids of controls.
OUTSIDE = {
    "host": {"host", "res", "base"},
    "admin": {"admin", "admin/contacts", "host"} | set(STANDS_ON) - {"entry", "pages"},
    "tests": {"support", "faults", "host", "tests", "admin", "admin/contacts"} | set(STANDS_ON),
    "bench": {"bench", "host", "support", "admin/contacts"} | set(STANDS_ON),
    "fuzz": {"fuzz", "support", "admin/contacts"} | set(STANDS_ON),
}


def reach(folder):
    """Everything that the folder may include."""
    found = {folder}
    for below in STANDS_ON[folder]:
        found |= reach(below)
    return found


def folder_of(name):
    """The folder that an included name begins with."""
    return str(Path(name).parent)


def includes(root):
    """(file, line, name) of each #include "name" below a folder of the sources."""
    for path in sorted((SOURCES / root).rglob("*")):
        if path.suffix in {".cpp", ".c", ".h", ".rc", ".dlg"}:
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
                if found := re.match(r'\s*#\s*include\s+"([^"]+)"', line):
                    yield path.relative_to(SOURCES), number, found[1]


class TheArrows(unittest.TestCase):
    def test_point_down(self):
        wrong = [f'{path}:{line}: src/{folder} may not include "{name}"'
                 for folder in STANDS_ON if folder != "res"
                 for path, line, name in includes(f"src/{folder}")
                 if folder_of(name) not in reach(folder)]
        self.assertEqual(wrong, [], "\n".join(wrong))

    def test_do_not_lead_into_the_module_from_outside(self):
        wrong = [f'{path}:{line}: {root} may not include "{name}"'
                 for root, allowed in OUTSIDE.items()
                 for path, line, name in includes(root)
                 if "/" in name and folder_of(name) not in allowed]
        self.assertEqual(wrong, [], "\n".join(wrong))

    def test_every_folder_is_in_the_table(self):
        folders = {str(path.parent.relative_to(SOURCES / "src")) for path in (SOURCES / "src").rglob("*.cpp")}
        self.assertEqual(folders | {"res"}, set(STANDS_ON))

    def test_the_table_has_no_loop(self):
        seen = set()
        for folder, below in STANDS_ON.items():
            self.assertLessEqual(set(below), seen, folder)
            seen.add(folder)

    def test_the_readme_shows_the_same_table(self):
        rows = re.findall(r"^\| `src/([\w/]+)` \|[^|]*\| ([^|]*) \|$", (SOURCES / "README.md").read_text(), re.MULTILINE)
        shown = {folder: re.findall(r"[\w/]+", stands_on) for folder, stands_on in reversed(rows)}
        self.assertEqual(list(shown.items()), list(STANDS_ON.items()))


class TheFiles(unittest.TestCase):
    def test_no_two_include_each_other(self):
        graph = {}
        for path, _, name in includes("src"):
            graph.setdefault(str(path.relative_to("src")), []).append(name)
        finished = set()

        def visit(name, way):
            self.assertNotIn(name, way, " -> ".join([*way, name]))
            if name not in finished:
                for below in graph.get(name, []):
                    visit(below, [*way, name])
                finished.add(name)

        for name in graph:
            visit(name, [])


if __name__ == "__main__":
    sys.exit(unittest.main())
