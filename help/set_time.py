#!/usr/bin/env python3
"""Gives a compiled help file a time of its own making, so that the same sources compile to the same bytes.

usage: set_time.py HELP.CHM SECONDS       SECONDS since 1970

The compiler writes the clock into the file's header and into the entry of #SYSTEM that tells when it was compiled;
viewers only compare the two.
"""
import struct
import sys
from pathlib import Path

HEADER_TIME = 0x10
SYSTEM = b"\x03\0\0\0\x0a\0\x04\0"  # #SYSTEM: version 3, then entry 10, which has 4 bytes


def main(path, seconds):
    seconds = int(seconds)
    data = bytearray(Path(path).read_bytes())
    if data[:4] != b"ITSF" or data.count(SYSTEM) != 1:
        sys.exit(f"set_time.py: {path}: not as this project's help compiler writes it")
    struct.pack_into(">I", data, HEADER_TIME, seconds & 0xFFFFFFFF)
    struct.pack_into("<I", data, data.index(SYSTEM) + len(SYSTEM), seconds & 0xFFFFFFFF)
    Path(path).write_bytes(data)


if __name__ == "__main__":
    main(*sys.argv[1:])
