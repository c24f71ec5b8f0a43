#!/usr/bin/env python3
"""Adds up what the processes of tools/coverage.sh have counted, beside the objects that they were made of.

Each process has written files of its own: the compiler's library does not lock what two of them write at once, and its
tool for adding up passes over objects that one program holds without some of their functions.
"""
import argparse
import collections
import itertools
import pathlib
import re
import struct

MAGIC = b'adcg'
SUMMARY, FUNCTION = 0xa1000000, 0x01000000


class Counts:
    """What one object has counted: of each function, in order, what identifies it and its counters; none of one that
    the program has taken from another object."""

    def __init__(self, data):
        self.header, self.summary, self.functions = data[:16], b'', []
        at = 16
        while at + 8 <= len(data):
            tag, length = struct.unpack_from('<Ii', data, at)
            at += 8
            if tag == 0:
                break
            content = data[at:at + max(length, 0)]
            at += len(content)
            if tag == SUMMARY:
                self.summary = content
            elif tag == FUNCTION:
                self.functions.append((content, []) if content else None)
            else: # counters; when all are zero there is nothing but how many, as a negative number
                values = struct.unpack(f'<{len(content) // 8}q', content) if length >= 0 else (0,) * (-length // 8)
                self.functions[-1][1].append((tag, values))

    def add(self, other):
        self.functions = [self.sum(ours, theirs) for ours, theirs in zip(self.functions, other.functions, strict=True)]

    @staticmethod
    def sum(ours, theirs):
        if ours is None or theirs is None:
            return ours or theirs
        return ours[0], [(tag, tuple(map(sum, zip(values, others, strict=True))))
                         for (tag, values), (_, others) in zip(ours[1], theirs[1], strict=True)]

    def data(self):
        parts = [self.header, struct.pack('<II', SUMMARY, len(self.summary)), self.summary]
        for function in self.functions:
            identity, counters = function or (b'', [])
            parts += [struct.pack('<II', FUNCTION, len(identity)), identity]
            for tag, values in counters:
                parts.append(struct.pack(f'<II{len(values)}q', tag, 8 * len(values), *values))
        return b''.join(parts) + bytes(4)


def is_of(counted, notes):
    """Not of an object that has been compiled again, and whole: who is killed at its end has not written all."""
    return counted[:4] == MAGIC and counted[8:12] == notes[8:12] and counted[16:].endswith(bytes(4))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('build', type=pathlib.Path, help='its folder')
    parser.add_argument('processes', type=pathlib.Path, help='the folder of their files, .../NUMBER/src/...')
    arguments = parser.parse_args()
    files = collections.defaultdict(list)
    for file in itertools.chain.from_iterable(arguments.build.glob(f'{top}/**/*.gcda') for top in ('src', 'tests')):
        files[str(file.relative_to(arguments.build))] = [] # of earlier runs
    for file in sorted(arguments.processes.glob('**/*.gcda')):
        files[re.search(r'/[0-9]+/((src|tests)/.*)', str(file))[1]].append(file)
    for name, counted in files.items():
        total = arguments.build / name
        notes = total.with_suffix('.gcno').read_bytes()
        datas = (file.read_bytes() for file in [total, *counted] if file.exists())
        sums = None
        for data in datas:
            if not is_of(data, notes):
                continue
            counts = Counts(data)
            if sums is None:
                sums = counts
            else:
                sums.add(counts)
        total.unlink(missing_ok=True)
        if sums is not None:
            total.write_bytes(sums.data())


if __name__ == '__main__':
    main()
