#!/bin/bash
# Builds and runs the benchmarks, pinned to one core, and prints one table. See --help.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
    cat <<'TEXT'
usage: tools/bench.sh [--markdown FILE] [NAME...]

Runs every benchmark, or those named (session, name_box, phone_book, phone_book_lists, csv), and prints each piece of
work beside the part of it that nobody can avoid. A benchmark that is over a limit runs again, up to three times: the
machine can only add to a time, and a limit counts as broken when no run keeps it.

  --markdown FILE  writes the table to FILE as Markdown as well
  --help           this text

Exit codes: 0 all limits are kept, 1 one is broken in three runs.
TEXT
}

die() { echo "bench.sh: $*" >&2; exit 1; }

readonly runs=3 folder=build/release/bin/bench results=build/bench
markdown=
names=()
while [[ $# -gt 0 ]]; do
    case $1 in
        --markdown) markdown=${2-}; shift 2 || die '--markdown needs a file' ;;
        --help) usage; exit ;;
        -*) die "unknown option $1" ;;
        *) names+=("$1"); shift ;;
    esac
done
cmake --preset release >&2
if [[ ${#names[@]} -eq 0 ]]; then # csv is only there with its library
    mapfile -t names < <(cmake --build --preset release --target help | sed -n 's/^\([a-z_]*\)_bench: phony$/\1/p')
fi
cmake --build --preset release --target "${names[@]/%/_bench}" >&2
mkdir -p "$results"

# On one core with the wineserver and the display: a round between them then costs always the same.
kept=0
for name in "${names[@]}"; do
    rm -f "$results/$name".*.json
    for ((run = 1; ; ++run)); do
        echo "$name, run $run" >&2
        if taskset -c 0 tools/with-wine.sh --desk bench wine64 "$folder/${name}_bench.exe" \
            --json "$results/$name.$run.json" >&2; then
            break
        elif ((run == runs)); then
            kept=1
            break
        fi
    done
done
python3 tools/bench_table.py ${markdown:+--markdown "$markdown"} "$results" "${names[@]}" || kept=1
exit "$kept"
