"""The module's file as Windows' loader sees it: what it exports, what it needs, and how it may be loaded.

usage: module_image_test.py MODULE [LIBRARY...]

The static libraries that the module is made of are linked into programs with another kind of threads, too: nothing in
them may depend on the kind.
"""
import re
import subprocess
import sys

WINDOWS_LIBRARIES = {
    "advapi32.dll", "comctl32.dll", "comdlg32.dll", "gdi32.dll", "imm32.dll", "kernel32.dll", "msvcrt.dll",
    "ole32.dll", "oleaut32.dll", "oleacc.dll", "setupapi.dll", "shell32.dll", "user32.dll", "winspool.drv",
}
EXPORTS = {"DisplayFaxUI", "BStoreExtEscapeData", "BGetStoredExtEscapeData"}
# What the C++ library makes of one of its threads, locks or files, whose insides belong to a kind of threads.
THREAD_KIND = re.compile(r"\b(?:pthread_\w+|__gthr\w+|__emutls\w+|std::(?:\w+_)?mutex|std::j?thread|"
                         r"std::condition_variable|std::basic_[io]?f(?:ilebuf|stream))\b")
PROTECTIONS = {"HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"}


def thread_kinds(library):
    symbols = subprocess.run(["x86_64-w64-mingw32-nm", "--demangle", library], check=True, capture_output=True,
                             text=True).stdout
    if not symbols:
        return ["no symbols at all"]
    return sorted(set(THREAD_KIND.findall(symbols)))


def main(module, *libraries):
    dump = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", module], check=True, capture_output=True,
                          text=True).stdout
    problems = []
    imported = {name.lower() for name in re.findall(r"DLL Name: (\S+)", dump)}
    if not imported or imported - WINDOWS_LIBRARIES:
        problems.append(f"imports other than Windows' own: {sorted(imported - WINDOWS_LIBRARIES)}")
    if "VectoredExceptionHandler" in dump:
        problems.append("a thread library in it handles exceptions of the whole process")
    table = dump.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    # Newer binutils print the ordinal and the hint before the name.
    exported = set(re.findall(r"^\s*\[\s*\d+\](?: \+base\[\s*\d+\]\s+[0-9a-f]{4})?\s+(\S+)$", table, re.MULTILINE))
    if exported != EXPORTS:
        problems.append(f"exports: {sorted(exported)}")
    flags = set(re.findall(r"^\s+(\w+)$", dump, re.MULTILINE))
    if not PROTECTIONS <= flags:
        problems.append(f"missing protections: {sorted(PROTECTIONS - flags)}")
    resources = dump[dump.find("The .rsrc Resource Directory section"):]
    for kind, name in (("0x000010", "version information"), ("0x000018", "manifest")):
        if not re.search(rf"Entry: ID: {kind}\b", resources):
            problems.append(f"no {name}")
    problems += [f"{library}: {kinds}" for library in libraries if (kinds := thread_kinds(library))]
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
