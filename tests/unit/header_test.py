"""The driver's header under every compiler, language and version that a driver may be built with, without a warning."""
import itertools
import os
import re
import subprocess
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
HEADER = SOURCES / "include/qxfax/send_fax.h"
LAYOUT = SOURCES / "docs/record_layout.txt"
PAGES = [SOURCES / "README.md", *sorted((SOURCES / "docs").glob("*.md"))]
# Headers of Windows that a compiler in Microsoft's manner understands.
MICROSOFT = ["-imsvc/usr/include/wine/wine/msvcrt", "-imsvc/usr/include/wine/wine/windows",
             # One name that clang has of itself is defined once more there.
             "-D_InterlockedCompareExchange128=InterlockedCompareExchange128_"]
STRICT = ["-Wall", "-Wextra", "-pedantic-errors", "-Wshadow", "-Wconversion", "-Werror", "-Wno-unused-parameter"]
GNU = {"c": ["c89", "c99", "c11", "c17", "c2x"], "c++": ["c++11", "c++14", "c++17", "c++20", "c++2b"]}
# Visual Studio 2015, 2017, 2019, 2022
VERSIONS = ["19.00", "19.16", "19.29", "19.40"]
CL = {"c": ["", "/std:c11", "/std:c17"], "c++": ["/std:c++14", "/std:c++17", "/std:c++20", "/std:c++latest"]}

FOLDER = tempfile.TemporaryDirectory()

USER = """
FaxJobData g_job;
DWORD UseTheHeader(HANDLE printer, FaxRecipient* recipient);
DWORD UseTheHeader(HANDLE printer, FaxRecipient* recipient)
{
    BYTE block[4] = {0};
    void* copy = block;
    DWORD size = 0;
    QxFaxInitJob(&g_job);
    DisplayFaxUI(printer, &g_job);
    if (!g_job.Cancelled && QxFaxFindString(&g_job, 5320) != NULL)
        QxFaxAsciiDigits(g_job.BillingCode);
    QxFaxFreeRecipient(recipient);
    QxFaxReleaseJob(&g_job);
    if (BStoreExtEscapeData(block, sizeof block) && BGetStoredExtEscapeData(NULL, &size))
        BGetStoredExtEscapeData(&copy, &size);
    return size + QXFAX_VERSION;
}
"""
# What the examples of the pages leave to the reader.
READERS_OWN = """
void SubmitFax(FaxJobData* job);
void SendTo(const WCHAR* name, const WCHAR* number);
void Example(HANDLE printer);
void Example(HANDLE printer)
"""


def layout():
    """(record, field, offset, size) of each line of the checked-in layout; the field is None for a whole record."""
    rows = [re.fullmatch(r"(\w+) +(\(whole\)|\w+) .*?(\d+) +(\d+)", line)
            for line in LAYOUT.read_text().splitlines() if not line.startswith("#")]
    return [(row[1], None if row[2] == "(whole)" else row[2], int(row[3]), int(row[4])) for row in rows]


def layout_checks():
    checks = []
    for record, field, offset, size in layout():
        if field is None:
            checks.append(f"sizeof({record}) == {size}")
        else:
            checks.append(f"offsetof({record}, {field}) == {offset} && sizeof((({record}*)0)->{field}) == {size}")
    return "".join(f"typedef char Check{i}[({check}) ? 1 : -1];\n" for i, check in enumerate(checks))


def compile_all(commands):
    """(command, output) of each that fails."""
    def run(command):
        done = subprocess.run(command, capture_output=True, text=True, cwd=FOLDER.name)
        return (" ".join(command), done.stdout + done.stderr) if done.returncode != 0 or done.stderr else None
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return [failure for failure in pool.map(run, commands) if failure]


def gnu(compiler, language, standard, source, *more):
    return [*compiler, "-x", language, f"-std={standard}", *STRICT, "-fsyntax-only", f"-I{SOURCES}/include", *more, source]


def gcc(language):
    return [f"x86_64-w64-mingw32-{'g++' if language == 'c++' else 'gcc'}-win32"]


CLANG = ["clang", "--target=x86_64-w64-mingw32", "-Wno-language-extension-token"]


def cl(language, standard, source, *more, target="x86_64"):
    return ["clang", "--driver-mode=cl", f"--target={target}-pc-windows-msvc", "/nologo", "/W4", "/WX", "/Zs", *MICROSOFT,
            "/TP" if language == "c++" else "/TC", *([standard] if standard else []), f"-I{SOURCES}/include", *more, source]


def languages(standards):
    return [(language, standard) for language, all_of_it in standards.items() for standard in all_of_it]


class TheHeader(unittest.TestCase):
    def setUp(self):
        Path(FOLDER.name, "user.c").write_text('#include "qxfax/send_fax.h"\n' + USER)
        Path(FOLDER.name, "layout.c").write_text("#include <qxfax/send_fax.h>\n" + layout_checks() + "extern int unused;\n")
        Path(FOLDER.name, "packed.c").write_text(
            "#include <windows.h>\n#pragma pack(1)\n#include <qxfax/send_fax.h>\n" + layout_checks() + "extern int unused;\n")

    def passes(self, commands):
        failures = compile_all(commands)
        self.assertEqual(failures, [], "\n".join(f"{command}\n{output}" for command, output in failures))

    def test_compiles_under_gcc_and_clang(self):
        self.passes([gnu(compiler, language, standard, "user.c") for language, standard in languages(GNU)
                     for compiler in (gcc(language), CLANG)])

    def test_compiles_as_under_microsofts_compiler(self):
        self.passes([cl(language, standard, "user.c", "/Zp1", f"-fms-compatibility-version={version}")
                     for version, (language, standard) in itertools.product(VERSIONS, languages(CL))])

    def test_has_the_layout_of_the_text(self):
        self.passes([gnu(compiler, language, standard, source) for language, standard in
                     (("c", "c89"), ("c", "c11"), ("c++", "c++11")) for compiler in (gcc(language), CLANG)
                     for source in ("layout.c", "packed.c")] +
                    [cl(language, "", "layout.c", packing) for language in ("c", "c++") for packing in ("/Zp8", "/Zp1")])

    def test_has_no_field_that_the_text_lacks(self):
        header = re.sub(r"/\*.*?\*/", "", HEADER.read_text(), flags=re.DOTALL)
        fields = [(record, re.match(r"\w+", field[::-1])[0][::-1])
                  for record, body in re.findall(r"typedef struct (\w+) \{(.*?)\n\} \w+;", header, re.DOTALL)
                  for field in re.findall(r"([^;\[]+)(?:\[\d+\])?;", body)]
        self.assertEqual(fields, [(record, field) for record, field, _, _ in layout() if field])

    def test_sees_a_field_that_has_moved(self):
        moved = Path(FOLDER.name, "qxfax")
        moved.mkdir()
        moved.joinpath("version.h").write_text((HEADER.parent / "version.h").read_text())
        moved.joinpath("send_fax.h").write_text(HEADER.read_text().replace("DWORD Reserved1;", "WCHAR* Reserved1;"))
        for language, standard in (("c", "c89"), ("c", "c11"), ("c++", "c++11")):
            (_, output), = compile_all([gnu(gcc(language), language, standard, "user.c", f"-iquote{FOLDER.name}")])
            self.assertIn("FaxJobData_DefaultsSaved", output)

    def test_refuses_other_targets_with_a_sentence(self):
        failures = compile_all(
            [["clang", f"--target={target}-w64-mingw32", "-fsyntax-only", f"-I{SOURCES}/include", "user.c"]
             for target in ("i686", "aarch64")] + [cl("c", "", "user.c", target="i686")])
        self.assertEqual(len(failures), 3)
        for command, output in failures:
            self.assertIn("for 64-bit drivers on x64 alone", output, command)

    def test_examples_of_the_pages_compile(self):
        examples = []
        for page in PAGES:
            for i, block in enumerate(re.findall(r"^```c\n(.*?)^```$", page.read_text(), re.DOTALL | re.MULTILINE)):
                lines = block.splitlines()
                source = "\n".join([line for line in lines if line.startswith("#")] + [READERS_OWN, "{"] +
                                   [line for line in lines if not line.startswith("#")] + ["}", ""])
                examples.append(f"{page.stem}_{i}.c")
                Path(FOLDER.name, examples[-1]).write_text(source)
        self.assertGreaterEqual(len(examples), 2)
        self.passes([gnu(gcc(language), language, standard, example) for example in examples
                     for language, standard in (("c", "c99"), ("c++", "c++11"))])


if __name__ == "__main__":
    unittest.main()
