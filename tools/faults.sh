#!/bin/bash
# Plays whole sessions of the module, each with one call of the system failing, and prints scenario by scenario what
# came out: + as asked, - less (refused, or kept as it was, and whole), ! wrong.
#
#   tools/faults.sh [--calls] [SCENARIO...]
#
# Without --calls one call of each place in the code fails, alone and with all later ones of its function; some minutes
# per scenario. With it each call does, which takes hours. The plans and reports are kept in build/faults.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

QX_FAULTS=places
if [[ ${1-} == --calls ]]; then
    QX_FAULTS=calls
    shift
fi
[[ ${1-} != -* ]] || { echo 'usage: tools/faults.sh [--calls] [SCENARIO...]' >&2; exit 2; }
filter='*'
if [[ $# -gt 0 ]]; then
    filter=$(printf '*/%s:' "$@")
fi

cmake --preset checked >/dev/null
cmake --build --preset checked --target fault_tests
rm -rf build/faults
mkdir -p build/faults
export QX_FAULTS QX_FAULTS_REPORT=$root/build/faults QX_SOURCE_DIR=$root QX_BINARY_DIR=$root/build/checked/bin
tools/with-wine.sh --desk faults wine64 build/checked/bin/tests/fault_tests.exe every_call --gtest_filter="$filter"
