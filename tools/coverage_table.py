#!/usr/bin/env python3
"""Prints what tools/coverage.sh has counted: lines and branches of src/, folder by folder. Run it where src/ lies."""
import argparse
import collections
import itertools
import json
import pathlib
import re
import subprocess
import sys

HEADINGS = ('folder', 'lines', 'run', '', 'branches', 'taken', '')


class File:
    """Of one source file: how often each line was run and each branch taken, in all objects that hold its code."""

    def __init__(self, source=()):
        # What ends at a brace is destroyed there, which nobody wrote, and often for the sake of an exception alone.
        self.braces = {number for number, text in enumerate(source, start=1) if text.strip() in ('}', '};')}
        # Whether an exception is of the kind that a handler takes: it is a line, and what it does has branches.
        self.handlers = {number for number, text in enumerate(source, start=1) if re.match(r'[\s}]*catch\b', text)}
        self.lines = collections.Counter()
        self.functions = {}
        self.branches = {}

    def add(self, report):
        starts = {f['name']: (f['start_line'], f['start_column']) for f in report['functions']}
        names = {f['name']: f['demangled_name'] for f in report['functions']}
        for line in report['lines']:
            number, function = line['line_number'], line.get('function_name')
            if number in self.braces:
                continue
            self.lines[number] += line['count']
            self.functions[number] = plain_name(names.get(function, ''))
            if number in self.handlers:
                continue
            counts = [branch['count'] for branch in without_exceptions(line['branches'])]
            # What a template was made for is one function, unless that has other branches.
            place = number, starts.get(function), len(counts)
            before = self.branches.get(place, [0] * len(counts))
            self.branches[place] = [a + b for a, b in zip(before, counts)]

    def never_run(self):
        return sorted(number for number, count in self.lines.items() if count == 0)

    def never_taken(self):
        """How many branches of how many, for each line that has such. A line never run counts as well."""
        of = collections.defaultdict(lambda: [0, 0])
        for (number, _, _), counts in self.branches.items():
            of[number][0] += counts.count(0)
            of[number][1] += len(counts)
        return {number: tuple(missing) for number, missing in sorted(of.items()) if missing[0]}

    def totals(self):
        branches = list(itertools.chain.from_iterable(self.branches.values()))
        return collections.Counter(lines=len(self.lines), run=len(self.lines) - len(self.never_run()),
                                   branches=len(branches), taken=len(branches) - branches.count(0))


def plain_name(demangled):
    return re.sub(r'\(anonymous namespace\)::|\bqx::|\[abi:\w+\]|\(.*', '', demangled)


def without_exceptions(branches):
    """A call from which an exception may escape ends in a branch that nobody wrote: on, or to the handlers."""
    kept = []
    for branch in branches:
        if not branch['throw']:
            kept.append(branch)
        elif kept and kept[-1]['fallthrough']:
            kept.pop()
    return kept


def count(gcov, build):
    """The files of src/ by name, with what all programs together ran of them."""
    files = {}
    objects = sorted(build.glob('**/*.gcno'))
    reports = subprocess.run([gcov, '--branch-probabilities', '--json-format', '--stdout', '--relative-only', *objects],
                             check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    for report in reports.splitlines():
        for file in json.loads(report)['files']:
            name = file['file']
            if not name.startswith('src/'):
                continue
            if name not in files:
                files[name] = File(pathlib.Path(name).read_text(encoding='utf-8').splitlines())
            files[name].add(file)
    return files


def share(part, whole):
    return f'{100 * part / whole:.1f} %' if whole else ''


def table(files):
    folders = collections.defaultdict(collections.Counter)
    for name, file in sorted(files.items()):
        folders[str(pathlib.PurePosixPath(name).parent)] += file.totals()
        folders['all'] += file.totals()
    folders['all'] = folders.pop('all') # the last
    rows = [(name, *(str(of[key]) for key in ('lines', 'run')), share(of['run'], of['lines']),
             *(str(of[key]) for key in ('branches', 'taken')), share(of['taken'], of['branches']))
            for name, of in folders.items()]
    widths = [max(len(row[i]) for row in [HEADINGS, *rows]) for i in range(len(HEADINGS))]
    return ['  '.join([row[0].ljust(widths[0]), *(cell.rjust(width) for cell, width in zip(row[1:], widths[1:]))])
            for row in [HEADINGS, *rows]]


def runs_of(file):
    """Lines never run, each function's in one go: (first, last, function)."""
    code = sorted(file.lines)
    missing = set(file.never_run())
    for (is_missing, function), numbers in itertools.groupby(code, lambda n: (n in missing, file.functions[n])):
        numbers = list(numbers)
        if is_missing:
            yield numbers[0], numbers[-1], function


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--lines', action='store_true', help='the lines that were never run, too')
    parser.add_argument('--branches', action='store_true', help='the lines with branches that were never taken, too')
    parser.add_argument('gcov', help='the program, of the compiler')
    parser.add_argument('build', type=pathlib.Path, help='its folder')
    arguments = parser.parse_args()
    files = count(arguments.gcov, arguments.build)
    if not files:
        sys.exit('nothing was counted')
    if arguments.lines:
        for name, file in sorted(files.items()):
            for first, last, function in runs_of(file):
                print(f'{name}:{first}' + (f'-{last}' if last != first else '') + f': {function}')
    if arguments.branches:
        for name, file in sorted(files.items()):
            for number, (missing, of) in file.never_taken().items():
                print(f'{name}:{number}: {missing} of {of} branches, {file.functions[number]}')
    print('\n'.join(table(files)))


if __name__ == '__main__':
    main()
