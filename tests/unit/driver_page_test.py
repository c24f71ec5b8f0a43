"""What the driver developer's page says about the sources is what they do."""
import re
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
PAGE = (SOURCES / "docs/driver_developers.md").read_text(encoding="utf-8")
LITERAL = r'L"((?:[^"\\]|\\.)*)"'


def module_sources():
    return {path.relative_to(SOURCES): path.read_text(encoding="utf-8")
            for path in sorted((SOURCES / "src").rglob("*.cpp"))}


class Traces(unittest.TestCase):
    def test_all_go_through_one_function_that_names_the_module(self):
        direct = [str(path) for path, text in module_sources().items() if "OutputDebugString" in text]
        self.assertEqual(direct, ["src/base/trace.cpp"])

    def test_are_those_that_the_page_lists(self):
        written = {trace.strip() for text in module_sources().values()
                   for trace in re.findall(rf"\bTrace\(\{{{LITERAL}", text)}
        listed = {line.removesuffix(" ...").removesuffix("...").strip()
                  for line in re.findall(r"^\| `([^`]+)` \|", PAGE[PAGE.index("### Traces"):PAGE.index("## The image")],
                                         re.MULTILINE)}
        self.assertEqual({trace.removesuffix(":") for trace in written}, {trace.removesuffix(":") for trace in listed})


class DriverStrings(unittest.TestCase):
    def test_are_those_that_the_page_lists(self):
        session = (SOURCES / "src/entry/send_session.cpp").read_text(encoding="utf-8")
        given = set(re.findall(r"\d+", re.search(r"kDriverStrings\[\] = \{(.*?)\}", session, re.DOTALL)[1]))
        sentence = PAGE[PAGE.index("printed as they stand:"):PAGE.index("## The contract")]
        self.assertEqual(set(re.findall(r"\b(5\d{3}) \"", sentence)), given)


class Links(unittest.TestCase):
    def test_lead_somewhere(self):
        for page in [SOURCES / "README.md", SOURCES / "CONTRIBUTING.md", *(SOURCES / "docs").glob("*.md")]:
            for target in re.findall(r"\]\(([^)#:]+)\)", page.read_text(encoding="utf-8")):
                self.assertTrue((page.parent / target).exists(), f"{page.name}: {target}")


if __name__ == "__main__":
    unittest.main()
