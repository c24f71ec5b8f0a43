#!/bin/bash
# Takes pictures of every page, dialog and message box, language by language. See --help.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
    cat <<'TEXT'
usage: tools/pictures.sh [--out DIR] [--no-text-library] [LANG...]

Plays host/scripts/every_window.txt in each language and leaves, per language, a picture of every window and a contact
sheet, index.html, in DIR/LANG/. Without LANG it takes every language, which is a matter of an hour; a single one takes
about a minute. A window that is missing or that says something else stops the script, and is named.

  LANG               a language, as ./run.sh --lang takes it
  --out DIR          where the pictures go (default: build/pictures)
  --no-text-library  with the texts that are built into the module, in DIR/LANG-built-in/
  --help             this text
TEXT
}

readonly all_windows=host/scripts/every_window.txt
readonly host=build/release/bin/faxhost.exe
readonly printer='Every Window' user=every-window # a user of its own, whose settings and phone book are thrown away

# ---- one language, within its Wine session -------------------------------------------------------------------------

lines() { printf '%s\r\n' "$@"; }
customers() { seq -f 'Customer %.0f' "$1" "$2" | sed 's/ \(.*\)/ \1,555-\1\r/'; }

# What the script imports and names.
make_samples() {
    local folder=$1 headings=Name,Number known='Ann Lee,555-0100' invalid='Peter Hill,no number'
    mkdir -p "$folder"
    rm -f "$folder"/*
    lines "$headings,Firm" "$known," >"$folder/one.csv"
    lines "$headings" "$known" "$invalid" >"$folder/one of each.csv"
    lines "$headings" "$known"{,,} "$invalid"{,,} >"$folder/several.csv"
    { lines "$headings"; customers 101 200; } >"$folder/hundred.csv"
    { lines "$headings"; customers 10001 21000; } >"$folder/too many.csv"
    printf 'Na\x93me,Number\n' >"$folder/garbage.csv" # in an unknown encoding
    : >"$folder/empty.csv"
    printf BM >"$folder/logo.bmp"
}

forget_user() {
    wine64 reg delete "HKCU\\Software\\Quillmarsh\\$user" /f &>/dev/null || true
    find "$WINEPREFIX/drive_c/users" -name "$user.xml" -delete
}

# play SCRIPT FOLDER [PROVISION-OPTION...]
play() {
    local script=$1 folder=$2 status=0
    shift 2
    make_samples "$WINEPREFIX/drive_c/samples"
    forget_user
    if [[ $QX_LANG == qps ]]; then set -- "$@" --text-library "${host%/*}/pseudo/QXTEXT64.DLL"; fi
    wine64 $host provision --printer "$printer" --guid "$user" --no-help --pc-fax-send-operational 0 \
        --notification-available 1 --email-service-operational 1 --billing-code-enabled 1 --billing-code-minlength 4 "$@"
    wine64 $host send --printer "$printer" --script "$script" --shots "$folder" >/dev/null || status=$?
    wine64 $host unprovision --printer "$printer"
    forget_user
    [[ $status -eq 2 ]] # in the end the script cancels the fax
}

if [[ ${1-} == --play ]]; then # this script calls itself
    shift
    play "$@"
    exit
fi

# ---- all languages -------------------------------------------------------------------------------------------------

out=build/pictures
suffix=
provision=()
languages=()
while [[ $# -gt 0 ]]; do
    case $1 in
        -h | --help) usage; exit 0 ;;
        --out) out=${2:?--out needs a folder}; shift 2 ;;
        --no-text-library) provision+=("$1"); suffix=-built-in; shift ;;
        -*) usage >&2; exit 1 ;;
        *) languages+=("$1"); shift ;;
    esac
done
[[ ${#languages[@]} -gt 0 ]] || read -ra languages < <(strings/languages.py codes)

# Some boxes are not shown without texts of the library: their sections say so.
script_for_built_in_texts() {
    awk '/^# ----/ { left_out = /only with the string library/ } !left_out' $all_windows
}

contact_sheet() {
    local title=$1 picture
    cat <<HTML
<!DOCTYPE html>
<meta charset="utf-8"><title>$title</title>
<style>
  body { background: #ddd; font: 14px sans-serif }
  figure { display: inline-block; margin: 8px; vertical-align: top }
</style>
<h1>$title</h1>
HTML
    sed -n 's/^picture //p' "$script" | while read -r picture; do
        echo "<figure><figcaption>$picture</figcaption><img src=\"$picture.png\" alt=\"$picture\"></figure>"
    done
}

tools/setup.sh "${languages[@]}"
cmake --preset release >/dev/null
cmake --build --preset release

mkdir -p "$out"
script=$all_windows
if [[ -n $suffix ]]; then
    script=$out/built_in.txt
    script_for_built_in_texts >"$script"
fi
failed=()
for language in "${languages[@]}"; do
    folder=$out/$language$suffix
    rm -rf "$folder"
    mkdir -p "$folder"
    tools/with-wine.sh --lang "$language" tools/pictures.sh --play "$script" "$folder" "${provision[@]}" ||
        failed+=("$language")
    contact_sheet "$language$suffix" >"$folder/index.html"
    echo "$folder/index.html"
done
if [[ ${#failed[@]} -gt 0 ]]; then
    echo "pictures.sh: the script stopped in: ${failed[*]}" >&2
    exit 1
fi
