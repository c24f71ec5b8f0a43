#!/bin/bash
# Installs what is missing, builds, prepares a private Wine prefix with a fax printer and sends a fax through the
# stand-in driver. See --help.
set -euo pipefail
cd "$(dirname "$0")"

usage() {
    cat <<'TEXT'
usage: ./run.sh [--lang LANG] [--script FILE] [--shots DIR] [OPTION...]

Shows the send-fax dialogs as a driver does, then prints the job record as JSON.

With a display the dialogs open there and wait for you. Without one (or with --script) a script of user actions
plays on a virtual display: by default one that sends a fax with a cover page to two recipients, and leaves pictures
of what was on screen in build/shots/.

  --lang LANG     language of Windows' user interface: en, de, de-AT (any region), ...; 'strings/languages.py codes'
                  lists them. qps shows English with accents, longer and in brackets: what has none does not come
                  from the string library, and a bracket that is missing was cut off
  --script FILE   user actions to play instead of waiting for you (host/scripts/ has examples)
  --shots DIR     folder for the script's pictures (default: build/shots)
  --printer-OPTION [VALUE]
                  how the printer is set up, such as --printer-billing-code-enabled 1 or --printer-no-text-library;
                  'faxhost.exe provision --help' lists the options
  --help          this text

Exit codes: 0 sent, 2 cancelled, 1 failed.
TEXT
}

lang=en
script=
shots=build/shots
provision=()
send=()
while [[ $# -gt 0 ]]; do
    case $1 in
        -h | --help) usage; exit 0 ;;
        --lang) lang=${2:?--lang needs a language}; shift 2 ;;
        --script) script=${2:?--script needs a file}; shift 2 ;;
        --shots) shots=${2:?--shots needs a folder}; shift 2 ;;
        --printer-*)
            provision+=("--${1#--printer-}")
            shift
            if [[ $# -gt 0 && $1 != --* ]]; then provision+=("$1"); shift; fi ;;
        *) send+=("$1"); shift ;;
    esac
done

if [[ $lang == qps ]]; then provision+=(--text-library build/release/bin/pseudo/QXTEXT64.DLL); fi

display=()
if [[ -n ${DISPLAY-} && -z $script ]]; then
    display=(--display)
else
    mkdir -p "$shots"
    send+=(--script "${script:-host/scripts/two_recipients.txt}" --shots "$shots")
fi

{
    tools/setup.sh "$lang"
    cmake --preset release
    cmake --build --preset release
} >&2 # the output is the job

in_wine() { tools/with-wine.sh --lang "$lang" "${display[@]}" "$@"; }
in_wine wine64 build/release/bin/faxhost.exe provision "${provision[@]}" >&2
in_wine wine64 build/release/bin/faxhost.exe send "${send[@]}"
