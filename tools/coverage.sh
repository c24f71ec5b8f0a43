#!/bin/bash
# Runs tests on a build that counts, and prints which share of the lines and branches of src/ they ran, by folder.
# Options that are none of these are passed on to ctest.
#
#   tools/coverage.sh [--add] [--lines] [--branches] [CTEST-OPTION...]
#   tools/coverage.sh --report [--lines] [--branches]
#
#   --add       adds to what was counted before, with other tests
#   --report    runs nothing: prints what was counted before
#   --lines     lists the lines that were never run, too
#   --branches  lists the lines with branches that were never taken, too
#
# Branches that are only there for exceptions do not count. What a process has counted is written at its end: one that
# is killed leaves nothing.
set -euo pipefail
. "$(dirname "$0")/help.sh"
cd "$(dirname "$0")/.."

readonly build=build/coverage gcov=x86_64-w64-mingw32-gcov-win32
clear=yes run=yes
listing=() options=()
for option in "$@"; do
    case $option in
        --add) clear=no ;;
        --report) run=no ;;
        --lines | --branches) listing+=("$option") ;;
        *) options+=("$option") ;;
    esac
done

failed=0
if [[ $run == yes ]]; then
    cmake --preset coverage >/dev/null
    cmake --build --preset coverage
    if [[ $clear == yes ]]; then find "$build" -name '*.gcda' -delete; fi
    # Two processes that end at the same moment would write over each other: each has files of its own, by its number
    # and the display that it runs on, in which the objects are called as in the build.
    processes=$PWD/$build/processes above=${PWD//[^\/]/}//
    rm -rf "$processes"
    mkdir "$processes"
    # A test that fails for the sake of the counting has counted all the same.
    GCOV_PREFIX="Z:$processes/%q{QX_WINE_SESSION}/%p" GCOV_PREFIX_STRIP=${#above} tools/with-wine.sh \
        ctest --preset coverage --parallel "$(($(nproc) + 1))" "${options[@]}" || failed=$?
    python3 tools/coverage_counts.py "$build" "$processes"
    rm -rf "$processes"
fi
python3 tools/coverage_table.py "${listing[@]}" "$gcov" "$build"
exit "$failed"
