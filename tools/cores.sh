# shellcheck shell=bash
# Read in by scripts that play on all cores, a row of plays on each.

# Prints the numbers of the cores that the script may use. What it plays should stay on one: a round between two
# processes, as player and wineserver have them all the time, is several times as quick when they share a core.
usable_cores() {
    taskset -cp $$ | sed 's/.*: //' | tr ',' '\n' | while IFS=- read -r first last; do seq "$first" "${last:-$first}"; done
}
