#!/bin/bash
# Builds the fuzz targets and runs each for a while, all in all MINUTES (default: 10), from the inputs in fuzz/corpus/.
# What is found on the way is kept in build/fuzz/corpus/; an input that breaks a target stays in build/fuzz/findings/.
#
#   tools/fuzz.sh [MINUTES] [TARGET...]     TARGET without _fuzz: csv_text
#
# After a long run this keeps the smallest inputs that reach all that was reached, for a commit:
#
#   build/fuzz/csv_text_fuzz -merge=1 fuzz/corpus/csv_text build/fuzz/corpus/csv_text
set -euo pipefail
. "$(dirname "$0")/help.sh"
cd "$(dirname "$0")/.."

minutes=${1:-10}
shift || true
targets=("$@")
if [[ ${#targets[@]} -eq 0 ]]; then
    mapfile -t targets < <(sed -n 's/^qx_fuzz(\([a-z_]*\).*/\1/p' fuzz/CMakeLists.txt)
fi
seconds=$(awk "BEGIN { print int($minutes * 60 * $(nproc) / ${#targets[@]}) + 1 }")

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
mkdir -p build/fuzz/findings

# The inputs that are kept are looked at first, also when there are more than the time is for.
run() { # TARGET SECONDS
    local found=build/fuzz/corpus/$1
    mkdir -p "$found"
    "build/fuzz/$1_fuzz" -max_total_time="$2" -max_len=4096 -timeout=10 -artifact_prefix="build/fuzz/findings/$1-" \
        -print_final_stats=1 "$found" "fuzz/corpus/$1" >"build/fuzz/$1.log" 2>&1 ||
        { tail -n 40 "build/fuzz/$1.log"; echo "fuzz.sh: $1: failed" >&2; return 1; }
    echo "fuzz.sh: $1: $(sed -n 's/^stat::number_of_executed_units: *//p' "build/fuzz/$1.log") inputs"
}
export -f run
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run {} '"$seconds"
