#!/bin/bash
# Changes one operator, constant, condition or statement of the module at a time, runs the tests that can reach it, and
# prints the changes that no test noticed. The work is done in a copy of the sources in build/mutate, with a Wine session
# for each change that is being tried. What came out is kept in build/mutate/results.jsonl, and no change is tried twice.
#
#   tools/mutate.sh [OPTION...] [FILE|FOLDER...]      of src, by default all of it
#
#   --seed N     another sample (default: 1)
#   --count N    how many changes there are to be (default: 20); those that do not compile do not count
#   --units N    leaves out headers that more files than these include (default: 40)
#   --desks N    how many changes are tried at the same time (default: one per processor; waiting tests leave room for more)
#   --longest S  leaves out tests that usually take more than S seconds, and those that are labelled long, unless they
#                have the file's name; what no test noticed can then be tried --again with them
#   --again      tries once more what was not noticed, with the tests of today
#   --all        with all tests, not only those that mutate.py names for the file
#   --report     prints what is known, and tries nothing
#
# A change is noticed when one of its tests fails, crashes or hangs twice with it, and passes right after without it.
set -euo pipefail
. "$(dirname "$0")/help.sh"
cd "$(dirname "$0")/.."

exec python3 -B tools/mutate.py "$@"
