#!/bin/bash
# Plays whole sessions of the module, each with one call of the system failing, and prints scenario by scenario what
# came out: + as asked, - less (refused, or kept as it was, and whole), ! wrong. Every core plays a scenario of its own.
#
#   tools/faults.sh [--on] [--calls] [--ends] [SCENARIO...]
#
# Without --calls one call of each place in the code is played, in both ways; some minutes per scenario. With it each
# call is, which takes hours. With --ends calls do not fail, but are the last of their process, which ends before or
# after them; and every folder that a power cut in the session may leave is judged. The plans and reports are kept in
# build/faults. With --on, what an interrupted run of the same build has played is not played again.
set -euo pipefail
. "$(dirname "$0")/help.sh"
. "$(dirname "$0")/cores.sh"

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

QX_FAULTS=places
tests=every_call
on=
while [[ ${1-} == -* ]]; do
    case $1 in
        --calls) QX_FAULTS=calls ;;
        --ends) tests=last_instant ;;
        --on) on=yes ;;
        *) echo 'usage: tools/faults.sh [--on] [--calls] [--ends] [SCENARIO...]' >&2; exit 2 ;;
    esac
    shift
done

cmake --preset checked >/dev/null
cmake --build --preset checked --target fault_tests
[[ $on ]] || rm -rf build/faults
mkdir -p build/faults
export QX_FAULTS QX_FAULTS_REPORT=$root/build/faults QX_SOURCE_DIR=$root QX_BINARY_DIR=$root/build/checked/bin tests

mapfile -t cores < <(usable_cores)

run() { # CORE OPTION...
    local core=$1
    shift
    taskset -c "$core" tools/with-wine.sh --desk "faults$core" --blind \
        wine64 build/checked/bin/tests/fault_tests.exe "$tests" "$@" | tr -d '\r'
}

play() ( # SCENARIO CORE..., one of those that are played at the same time, each on the core of its slot
    set -o pipefail
    status=0
    local slots=("${@:2}")
    said=$(run "${slots[QX_SLOT]}" --gtest_filter="*/$1:") || status=$?
    echo "$said"
    exit "$status"
)
export -f run play

if [[ $# -eq 0 ]]; then
    mapfile -t all < <(run "${cores[0]}" --gtest_list_tests | sed -n 's/^ .*\/\([a-z_]*\).*/\1/p' | sort -u)
    set -- "${all[@]}"
fi
printf '%s\n' "$@" | xargs -P "${#cores[@]}" -I SCENARIO --process-slot-var=QX_SLOT \
    bash -c 'play "$@"' play SCENARIO "${cores[@]}"
