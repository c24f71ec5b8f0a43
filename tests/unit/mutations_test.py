"""The changes that tools/mutate.sh tries: what is found in a source, and what is left alone."""

import sys
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCES / "tools"))

import mutations  # noqa: E402


def changed(source):
    """Each line that a change makes another, as it is then."""
    lines = []
    for mutation in mutations.mutations("some.cpp", source):
        lines += [line.strip() for line in mutation.apply(source).splitlines() if line not in source.splitlines()]
    return lines


class WhatIsChanged(unittest.TestCase):
    def test_operators_between_spaces(self):
        self.assertEqual(changed("bool x = a == b && c < d;"),
                         ["bool x = a != b && c < d;", "bool x = a == b || c < d;", "bool x = a == b && c <= d;"])

    def test_signs_that_are_part_of_types_and_names_are_not(self):
        for line in ["template <class T> void F(T&& a, const T* b, std::vector<int>& c);", "bool operator==(const T&);",
                     "int* p = -q;", "a->b();"]:
            self.assertEqual(changed(line), [])

    def test_negations_steps_and_jumps(self):
        self.assertEqual(changed("x = !a;"), ["x = a;"])
        self.assertEqual(changed("++a;"), ["--a;"])
        self.assertEqual(changed("break;"), ["continue;"])
        self.assertEqual(changed("const bool x = true;"), ["const bool x = false;"])

    def test_integers_but_no_extents(self):
        self.assertEqual(changed("const int x = 1'000u;"), ["const int x = 1001u;"])
        self.assertEqual(changed("const int x = 0xFF;"), ["const int x = 0x100;"])
        self.assertEqual(changed("const wchar_t x = y[0];"), ["const wchar_t x = y[1];"])
        self.assertEqual(changed("wchar_t x[20];"), [])
        self.assertEqual(changed("const double x = 1.5;"), [])

    def test_not_what_nobody_could_notice(self):
        self.assertEqual(changed("SendMessageW(window, WM_CLOSE, 0, 0);"), [])
        self.assertEqual(changed("PostThread(window, 0);"), ["PostThread(window, 1);"])
        self.assertEqual(changed("void F()\n{\n    a.reserve(b);\n}"), [])
        self.assertEqual(changed("void F()\n{\n    SendMessageW(list, LVM_SETITEMCOUNT, size, 0);\n}"), [])

    def test_not_what_is_no_code(self):
        for line in ["// a == b", "/* a == b\n c == d */", "#if a == b", '#define X \\\n a == b',
                     'const auto x = L"a == \\" 1";', "const auto x = R\"(a == \" b)\";", "const char x = '1';",
                     "static_assert(sizeof a == 8);"]:
            self.assertEqual(changed(line), [])

    def test_calls_and_assignments_in_functions(self):
        self.assertEqual(changed("void F()\n{\n    a.b(c);\n    d = e;\n    G g(h);\n    if (i)\n        j();\n}"),
                         ["{}", "{}", "if (!(i))", "{}"])

    def test_statements_of_lambdas(self):
        self.assertEqual(changed("void F()\n{\n    G([&] {\n        h();\n    });\n}"), ["{}", "{}"])

    def test_declarations_stay(self):
        self.assertEqual(changed("class A {\n    A();\n    void B();\n};\nvoid F();"), [])

    def test_answers_of_functions_that_return_a_bool(self):
        self.assertEqual(changed("bool F()\n{\n    return a;\n}"), ["return !(a);"])
        self.assertEqual(changed("int F(bool)\n{\n    return a;\n}"), [])
        self.assertEqual(changed("bool F()\n{\n    return a == b;\n}"), ["return a != b;"])


class TheKey(unittest.TestCase):
    def keys(self, source):
        return [mutation.key for mutation in mutations.mutations("some.cpp", source)]

    def test_stays_when_other_lines_change(self):
        self.assertEqual(self.keys("x = !a;"), self.keys("// more\n\nx = !a;"))

    def test_tells_equal_lines_apart(self):
        self.assertEqual(len(set(self.keys("x = !a;\nx = !a;"))), 2)


if __name__ == "__main__":
    unittest.main()
