#!/bin/bash
# Installs what is missing, builds the checked configuration and runs the tests under Wine on a virtual display.
# Options are passed on to ctest:
#
#   ./test.sh               all tests but the long ones
#   ./test.sh -L long       those: plays of many sessions and processes
#   ./test.sh -L quick      only those that open no window
#   ./test.sh -R ui.        only those whose name matches
#
# With QX_THOROUGH=1 those that never have enough go on for longer.
set -euo pipefail
. "$(dirname "$0")/tools/help.sh"
cd "$(dirname "$0")"

tools/setup.sh
cmake --preset checked >/dev/null
tools/with-wine.sh true & # what each run of it begins with is made meanwhile: it is mostly waiting
prefix=$!
cmake --build --preset checked
wait "$prefix"
# One more than there are cores: a dialog often waits for the display.
[[ $# -gt 0 ]] || set -- --label-exclude '^long$'
tools/with-wine.sh ctest --preset checked --parallel "$(($(nproc) + 1))" "$@"
