#!/bin/bash
# Builds and runs the benchmarks, pinned to one core, and prints one table. See --help.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
    cat <<'TEXT'
usage: tools/bench.sh [--markdown FILE] [NAME...]

Runs every benchmark, or those named (session, name_box, phone_book, phone_book_lists, contacts, csv), and prints each
piece of work beside the part of it that nobody can avoid. A benchmark that is over a limit runs again, up to three
times: the machine can only add to a time, and a limit counts as broken when no run keeps it.

  --markdown FILE  writes the table to FILE as Markdown as well; in docs/performance.md it takes the place of the last
  --help           this text

Exit codes: 0 all limits are kept, 1 one is broken in three runs of three, or a benchmark could not be run.
TEXT
}

die() { echo "bench.sh: $*" >&2; exit 1; }

wine_version() { PATH=$PATH:/usr/lib/wine wine64 --version; }
system_name() { (. /etc/os-release && echo "$PRETTY_NAME"); }

readonly runs=3 folder=build/release/bin/bench results=build/bench
markdown=
names=()
while [[ $# -gt 0 ]]; do
    case $1 in
        --markdown) markdown=${2-}; shift 2 || die '--markdown needs a file' ;;
        -h | --help) usage; exit ;;
        -*) die "unknown option $1" ;;
        *) names+=("$1"); shift ;;
    esac
done
cmake --preset release >&2
cmake --build --preset release --target bench >&2
if [[ ${#names[@]} -eq 0 ]]; then # csv is only there with its library
    for program in "$folder"/*_bench.exe; do
        names+=("$(basename "$program" _bench.exe)")
    done
fi
mkdir -p "$results"

# On one core with the wineserver and the display: a round between them then costs always the same.
readonly over=1 # what a benchmark answers whose ratios are not all within their limits
for name in "${names[@]}"; do
    rm -f "$results/$name".*.json
    for ((run = 1, status = over; run <= runs && status == over; ++run)); do
        echo "$name, run $run" >&2
        status=0
        taskset -c 0 tools/with-wine.sh --desk bench wine64 "$folder/${name}_bench.exe" \
            --json "$results/$name.$run.json" >&2 || status=$?
        ((status == 0 || status == over)) || die "$name ended with $status"
    done
done
machine="Measured on $(date +%F) with $(wine_version) on $(system_name), pinned to one core."
python3 tools/bench_table.py ${markdown:+--markdown "$markdown" --machine "$machine"} "$results" "${names[@]}"
