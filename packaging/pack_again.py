#!/usr/bin/env python3
"""Packs ZIP files again so that nothing in them is of the machine or the moment that they were packed on: entries in the
order of their names, of one time, without the times of reading and changing that CPack's library adds.

usage: pack_again.py SECONDS FILE...     SECONDS since 1970: the time of the sources
"""
import datetime
import os
import sys
import zipfile


def pack_again(file, time):
    unfinished = f'{file}.new'
    with zipfile.ZipFile(file) as old, zipfile.ZipFile(unfinished, 'w', zipfile.ZIP_DEFLATED) as new:
        for entry in sorted(old.infolist(), key=lambda entry: entry.filename):
            packed = zipfile.ZipInfo(entry.filename, time.timetuple()[:6])
            packed.external_attr = entry.external_attr
            packed.compress_type = entry.compress_type
            new.writestr(packed, old.read(entry))
    os.replace(unfinished, file)


def main():
    time = datetime.datetime.fromtimestamp(int(sys.argv[1]), datetime.timezone.utc)
    for file in sys.argv[2:]:
        pack_again(file, time)


if __name__ == '__main__':
    main()
