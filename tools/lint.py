#!/usr/bin/env python3
"""Runs clang-tidy on one file, unless it has found the file clean before: with all of ours that it includes, with the
checks and with the options as they are now. For tools/check.sh, in the top folder.

usage: lint.py MARKS CLANG-TIDY OPTION... FILE    MARKS: the folder that remembers the clean ones
"""

import hashlib
import re
import subprocess
import sys
from pathlib import Path

ROOTS = [Path("src"), Path("include"), Path(".")]


def with_all_it_includes(file, found):
    """Adds the file and, through its includes, those of this tree."""
    if file in found or not file.is_file():
        return
    found.add(file)
    for name in re.findall(r'^\s*#\s*include\s+["<]([^">]+)', file.read_text(encoding="utf-8"), re.MULTILINE):
        for root in [file.parent, *ROOTS]:
            with_all_it_includes(root / name, found)


def main():
    marks, command = Path(sys.argv[1]), sys.argv[2:]
    version = subprocess.run([command[0], "--version"], capture_output=True, check=True).stdout
    looked_at = {Path(".clang-tidy"), Path("CMakeLists.txt")}
    with_all_it_includes(Path(command[-1]), looked_at)
    state = hashlib.sha256(version + repr(command).encode())
    for file in sorted(looked_at):
        state.update(file.read_bytes())
    mark = marks / state.hexdigest()
    if mark.exists():
        return 0
    result = subprocess.run(command).returncode
    if result == 0:
        marks.mkdir(parents=True, exist_ok=True)
        mark.touch()
    return result


if __name__ == "__main__":
    sys.exit(main())
