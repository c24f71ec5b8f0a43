"""Running a Windows program and waiting for it."""

import os
import pathlib
import subprocess
import sys

WINE = os.environ["QX_WINE"]


def run(program, *arguments, timeout=100, folder=None):
    """What the program answered: returncode, stdout and stderr.

    On a busy machine Wine now and then ends a program that has hardly begun, with code 1 and not a word. Ours say
    something whenever they fail, so what ends that way is started once more, and what Wine wrote is shown.
    """
    for attempt in "first", "second":
        done = subprocess.run([WINE, program, *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              stdin=subprocess.DEVNULL, encoding="utf-8", timeout=timeout, cwd=folder, check=False)
        if (done.returncode, done.stdout, done.stderr) != (1, "", ""):
            break
        print(f"{program} {arguments}: ended without a word, the {attempt} time", file=sys.stderr)
        log = pathlib.Path(os.environ.get("QX_WINE_SESSION", ""), "session.log")
        if log.is_file():
            print(log.read_text(encoding="utf-8", errors="replace"), file=sys.stderr)
    return done
