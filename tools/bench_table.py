#!/usr/bin/env python3
"""Prints the results of tools/bench.sh as one table: of each comparison its best run."""
import argparse
import json
import pathlib
import sys

HEADINGS = ('work', 'ms', 'what nobody can avoid', 'ms', 'ratio', 'limit')


def best_rows(files):
    """The comparisons of a benchmark in its order, each from the run with its smallest ratio."""
    best = {}
    for file in files:
        for row in json.loads(file.read_text(encoding='utf-8').replace('inf', '1e999')):
            kept = best.setdefault(row['work'], row)
            if row['ratio'] < kept['ratio']:
                best[row['work']] = row
    return list(best.values())


def cells(row):
    limit = '' if row['allowed'] == float('inf') else f"{row['allowed']:.2f}"
    return (row['work'], f"{row['milliseconds']:.3f}", row['unavoidable'], f"{row['unavoidableMilliseconds']:.3f}",
            f"{row['ratio']:.2f}", limit)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--markdown', type=pathlib.Path)
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
        print('  '.join(cell.ljust(width) if i in (0, 2) else cell.rjust(width)
                        for i, (cell, width) in enumerate(zip(line, widths))))
    if arguments.markdown:
        lines = [f"| {' | '.join(line)} |" for line in [HEADINGS, ('---',) * len(HEADINGS), *table]]
        arguments.markdown.write_text('\n'.join(lines) + '\n', encoding='utf-8')
    broken = [row['work'] for row in rows if row['ratio'] > row['allowed']]
    for work in broken:
        print(f'over its limit: {work}', file=sys.stderr)
    return 1 if broken else 0


if __name__ == '__main__':
    sys.exit(main())
