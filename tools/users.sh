#!/bin/bash
# Lets random users play the whole sheet of the module, each 1000 events long, against a model of what they know: one
# after the other on each of two desks per core, as now and then a user only waits. When something is not as the model
# says, prints what, and the events that lead there, as few as are needed for it.
#
#   tools/users.sh [EVENTS]               so many in all (default: 100000), by the users 1, 2, 3, ...
#   tools/users.sh --from USER [EVENTS]   by the users from that one on
#   tools/users.sh --replay FILE USER     events that were printed, one per line, again
set -euo pipefail
. "$(dirname "$0")/help.sh"
. "$(dirname "$0")/cores.sh"

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

usage() { sed -n 's/^#   //p' "$0" >&2; exit 2; }
is_number() { [[ ${1-} =~ ^[1-9][0-9]*$ ]]; }

from=1
case ${1-} in
    --from) from=${2-}; shift 2 || usage ;;
    --replay) [[ $# -eq 3 ]] || usage; script=$(realpath "$2"); from=$3; shift 3 ;;
    -*) usage ;;
esac
events=${1-100000}
if ! is_number "$from" || ! is_number "$events"; then usage; fi

cmake --preset checked >/dev/null
cmake --build --preset checked --target model_tests
export QX_SOURCE_DIR=$root QX_BINARY_DIR=$root/build/checked/bin QX_WINE=wine64

play() { # DESK FIRST COUNT
    QX_USERS=$2,$3 taskset -c "${cores[$1 % ${#cores[@]}]}" tools/with-wine.sh --desk "users$1" --blind \
        wine64 build/checked/bin/tests/model_tests.exe sheet_model
}

mapfile -t cores < <(usable_cores)
desks=$((2 * ${#cores[@]}))
if [[ -n ${script-} ]]; then
    QX_SCRIPT=Z:$script play 0 "$from" 1
    exit
fi
users=$(((events + 999) / 1000))
each=$(((users + desks - 1) / desks))
players=()
for ((desk = 0; desk < desks; ++desk)); do
    count=$((each < users ? each : users))
    ((count > 0)) || break
    play "$desk" "$from" "$count" &
    players+=($!)
    from=$((from + count)) users=$((users - count))
done
status=0
for player in "${players[@]}"; do
    wait "$player" || status=1
done
exit "$status"
