#!/bin/bash
# Checks the source tree without running anything of it. What it needs is installed by 'tools/setup.sh --checks'.
#
#   tools/check.sh [FILE...]          format, scripts and spelling of everything, or of these files
#   tools/check.sh --lints [FILE...]  clang-tidy, too: some ten seconds of one core for each source file that has changed,
#                                     by itself or in what it includes, since it was last found clean
#   tools/check.sh --fix              formats the sources instead
set -euo pipefail
. "$(dirname "$0")/help.sh"
cd "$(dirname "$0")/.."

# Formats differ from version to version; this one is in Debian 12 and 13.
readonly clang=19
fix=no lints=no
case ${1-} in
    --fix) fix=yes; shift ;;
    --lints) lints=yes; shift ;;
esac

mapfile -t files < <(git ls-files -- "$@")
files_named() { # PATTERN: those of the files to check whose name matches the regular expression
    printf '%s\n' "${files[@]}" | grep -E -- "$1" || true
}

mapfile -t sources < <(files_named '\.(c|cpp|h)$')
if [[ $fix == yes ]]; then exec "clang-format-$clang" -i "${sources[@]}"; fi

failed=0
check() { # WHAT COMMAND...
    echo "check.sh: $1"
    "${@:2}" || { echo "check.sh: $1: failed" >&2; failed=1; }
}

on_each() { # COMMAND... with each line of the standard input, as many at once as there are cores
    xargs -r -P "$(nproc)" -n 1 "$@"
}

# With the headers of the cross compiler.
tidy() {
    local build=build/checked cross=x86_64-w64-mingw32 gcc include
    [[ -f $build/compile_commands.json ]] || cmake --preset checked >/dev/null
    gcc=$(dirname "$("$cross-g++-posix" -print-libgcc-file-name)")
    local arguments=("--extra-arg-before=--target=$cross" --extra-arg=-Wno-unused-command-line-argument
        --extra-arg=-Wno-unknown-warning-option --extra-arg=-Wno-ignored-gch)
    for include in "$gcc/include/c++" "$gcc/include/c++/$cross" "/usr/$cross/include" /usr/share/mingw-w64/include \
        "$PWD/$build/header_libraries"; do
        arguments+=("--extra-arg=-isystem$include")
    done
    files_named '^(src|host|admin)/.*\.cpp$' |
        on_each tools/lint.py build/lints "clang-tidy-$clang" -p "$build" --quiet "${arguments[@]}"
}

python() { files_named '\.py$' | xargs -r pyflakes3; }
shell() { { files_named '\.sh$'; files_named '^\.ci/run$'; } | xargs -r shellcheck --severity=warning; }
# All of it, once a text has changed: what a word list says counts for every file.
spelling() { [[ -z $(files_named '^(strings|help)/') ]] || tools/spell.sh; }

check format "clang-format-$clang" --dry-run -Werror "${sources[@]}"
check shell shell
check python python
check spelling spelling
if [[ $lints == yes ]]; then check tidy tidy; fi
exit "$failed"
