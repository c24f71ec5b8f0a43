#!/usr/bin/env python3
"""Packs files into a cabinet, all with the same time, so that the same files make the same bytes.

usage: make_cabinet.py GCAB CABINET SECONDS FILE...       SECONDS since 1970
"""
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def main(gcab, cabinet, seconds, *files):
    with tempfile.TemporaryDirectory() as folder:
        copies = [shutil.copy(file, folder) for file in files]
        for copy in copies:  # not the originals: the build tells by their times what is to be made again
            os.utime(copy, (int(seconds), int(seconds)))
        Path(cabinet).unlink(missing_ok=True)
        subprocess.run([gcab, "--create", "--zip", "--nopath", cabinet, *copies], check=True,
                       env={**os.environ, "TZ": "UTC0"})


if __name__ == "__main__":
    main(*sys.argv[1:])
