#!/usr/bin/env python3
"""Prints the results of tools/bench.sh as one table: of each comparison its best run."""
import argparse
import json
import pathlib
import sys

HEADINGS = ('work', 'time', 'what nobody can avoid', 'time', 'ratio', 'limit', 'bytes per entry')
LEFT = (0, 2)
# Between these lines of a Markdown file the table is replaced; a file without them becomes the table.
BEGIN, END = '<!-- table -->', '<!-- end of the table -->'


def best_rows(files):
    """The comparisons of a benchmark in its order, each from the run with its smallest ratio."""
    best = {}
    for file in files:
        for row in json.loads(file.read_text(encoding='utf-8')):
            kept = best.setdefault((row['work'], row['unavoidable']), row)
            if row['ratio'] < kept['ratio']:
                best[row['work'], row['unavoidable']] = row
    return list(best.values())


def is_broken(row):
    return row['allowed'] is not None and row['ratio'] > row['allowed']


def cells(row):
    limit = '' if row['allowed'] is None else f"{row['allowed']:.2f}"
    held = '' if row['bytesPerEntry'] is None else f"{row['bytesPerEntry']:.0f}"
    return (row['work'], f"{row['measured']:.3f} {row['unit']}", row['unavoidable'],
            f"{row['unavoidableMeasured']:.3f} {row['unit']}", f"{row['ratio']:.2f}", limit, held)


def as_markdown(table, machine):
    alignment = tuple(':---' if i in LEFT else '---:' for i in range(len(HEADINGS)))
    lines = [f"| {' | '.join(line)} |" for line in [HEADINGS, alignment, *table]]
    return '\n'.join([machine, '', *lines]) + '\n'


def write_markdown(file, text):
    before, after = '', ''
    if file.exists():
        begin, found, rest = file.read_text(encoding='utf-8').partition(BEGIN + '\n')
        if found and END in rest:
            before, after = begin + found, rest[rest.index(END):]
    file.write_text(before + text + after, encoding='utf-8')


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--markdown', type=pathlib.Path)
    parser.add_argument('--machine', default='', help='a line about the machine, for the Markdown')
    parser.add_argument('results', type=pathlib.Path)
    parser.add_argument('names', nargs='+')
    arguments = parser.parse_args()
    rows = []
    for name in arguments.names:
        found = best_rows(sorted(arguments.results.glob(f'{name}.[0-9].json')))
        if not found:
            sys.exit(f'{name}: no result')
        rows += found
    table = [cells(row) for row in rows]
    widths = [max(len(line[i]) for line in [HEADINGS, *table]) for i in range(len(HEADINGS))]
    for line in [HEADINGS, *table]:
        print('  '.join(cell.ljust(width) if i in LEFT else cell.rjust(width)
                        for i, (cell, width) in enumerate(zip(line, widths))))
    if arguments.markdown:
        write_markdown(arguments.markdown, as_markdown(table, arguments.machine))
    broken = [row['work'] for row in rows if is_broken(row)]
    for work in broken:
        print(f'over its limit: {work}', file=sys.stderr)
    return 1 if broken else 0


if __name__ == '__main__':
    sys.exit(main())
