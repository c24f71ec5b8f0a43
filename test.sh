#!/bin/bash
# Installs what is missing, builds the checked configuration and runs every test under Wine on a virtual display.
# Options are passed on to ctest:
#
#   ./test.sh               all tests
#   ./test.sh -L quick      only those that open no window
#   ./test.sh -R ui.        only those whose name matches
set -euo pipefail
cd "$(dirname "$0")"

tools/setup.sh
cmake --preset checked >/dev/null
cmake --build --preset checked
tools/with-wine.sh ctest --preset checked --parallel "$(nproc)" "$@"
