#!/bin/bash
# Checks the spelling of the texts and of the help pages in every language that Debian has a dictionary for. Prints what
# is unknown, as LANG: WORD, and fails then. A word that is right goes into strings/spelling/LANG.txt, one of the product
# or of every language into all.txt.
#
#   tools/spell.sh [LANG...]    languages of strings/languages.toml (default: all)
set -euo pipefail
. "$(dirname "$0")/help.sh"
cd "$(dirname "$0")/.."

readonly lists=strings/spelling

# The checker leaves signs at the ends of words; single letters are parts of something.
unknown_words() {
    local language=$1 dictionary=$2
    strings/prose.py "$language" | hunspell -i UTF-8 -d "$dictionary" -l |
        sed -E "s/^[-.’']+//; s/[-.’']+\$//" | { grep -E '..' || true; } | sort -u |
        { grep -vxF -f <(cat $lists/all.txt "$lists/$language.txt" 2>/dev/null) || true; }
}

export LC_ALL=C.UTF-8
found=0
while read -r language package dictionary; do
    [[ $# -eq 0 || " $* " == *" $language "* ]] || continue
    hunspell -d "$dictionary" -l </dev/null &>/dev/null || {
        echo "spell.sh: the dictionary $dictionary is missing: run 'tools/setup.sh --checks', or install $package" >&2
        exit 1
    }
    words=$(unknown_words "$language" "$dictionary")
    [[ -n $words ]] || continue
    found=1
    sed "s/^/$language: /" <<<"$words"
done < <(strings/languages.py spelling)
exit $found
