"""The module's file as Windows' loader sees it: what it exports, what it needs, and how it may be loaded."""
import re
import subprocess
import sys

WINDOWS_LIBRARIES = {
    "advapi32.dll", "comctl32.dll", "comdlg32.dll", "gdi32.dll", "imm32.dll", "kernel32.dll", "msvcrt.dll",
    "ole32.dll", "oleaut32.dll", "oleacc.dll", "setupapi.dll", "shell32.dll", "user32.dll", "winspool.drv",
}
EXPORTS = {"DisplayFaxUI", "BStoreExtEscapeData", "BGetStoredExtEscapeData"}
PROTECTIONS = {"HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"}


def main(module):
    dump = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", module], check=True, capture_output=True,
                          text=True).stdout
    problems = []
    imported = {name.lower() for name in re.findall(r"DLL Name: (\S+)", dump)}
    if not imported or imported - WINDOWS_LIBRARIES:
        problems.append(f"imports other than Windows' own: {sorted(imported - WINDOWS_LIBRARIES)}")
    table = dump.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    exported = set(re.findall(r"\[\s*\d+\]\s+(\S+)", table))
    if exported != EXPORTS:
        problems.append(f"exports: {sorted(exported)}")
    flags = set(re.findall(r"^\s+(\w+)$", dump, re.MULTILINE))
    if not PROTECTIONS <= flags:
        problems.append(f"missing protections: {sorted(PROTECTIONS - flags)}")
    resources = dump[dump.find("The .rsrc Resource Directory section"):]
    for kind, name in (("0x000010", "version information"), ("0x000018", "manifest")):
        if not re.search(rf"Entry: ID: {kind}\b", resources):
            problems.append(f"no {name}")
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
