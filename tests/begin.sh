#!/bin/bash
# Runs a test program. On a busy machine Wine may end one before it has begun, without a word, once in thousands of
# starts: such a one is started again.
#
#   tests/begin.sh COMMAND [ARGUMENT...]     the program makes the file that it finds in QX_BEGUN
set -euo pipefail

begun=$(mktemp)
trap 'rm -f "$begun"' EXIT
export QX_BEGUN=$begun
for attempt in first second; do
    rm -f "$begun"
    status=0
    "$@" || status=$?
    if [[ $status -eq 0 || -e $begun ]]; then exit "$status"; fi
    echo "begin.sh: the $attempt start came to nothing (exit code $status): $*" >&2
done
exit "$status"
