#!/bin/bash
# Builds the release twice, in two folders of different depth and at different times, and compares all that is shipped,
# byte for byte. Prints that all files are identical, or shows what differs (with diffoscope, where it is installed:
# 'tools/setup.sh --reproducible').
#
#   tools/reproducible.sh [KEEP]     KEEP: a folder for both builds (default: one that is removed)
#
# The committed sources are built, not what is changed in the working tree. ccache is not used.
set -euo pipefail
. "$(dirname "$0")/help.sh"
cd "$(dirname "$0")/.."

tools/setup.sh
if [[ $# -gt 0 ]]; then
    mkdir -p "$1"
    work=$(cd "$1" && pwd)
else
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
fi
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH CCACHE_DISABLE=1

build() { # FOLDER TIME_ZONE
    rm -rf "$1"
    mkdir -p "$1"
    git archive HEAD | tar -x -C "$1"
    (
        cd "$1"
        export TZ=$2
        { cmake --preset release && cmake --build --preset release &&
            cpack -G ZIP --config build/release/CPackConfig.cmake; } >build.log 2>&1
    ) || { tail -n 50 "$1/build.log" >&2; exit 1; }
}

echo "reproducible.sh: first build"
build "$work/first" UTC0
echo "reproducible.sh: second build"
build "$work/a/rather/deeper/second" Asia/Tokyo

first=$work/first/build/release second=$work/a/rather/deeper/second/build/release
mapfile -t files < <(cd "$first" && find bin packages -maxdepth 1 -type f | sort)
[[ ${#files[@]} -gt 0 ]] || { echo "reproducible.sh: nothing was built" >&2; exit 1; }
different=0
for file in "${files[@]}"; do
    cmp --silent "$first/$file" "$second/$file" && continue
    different=1
    echo "reproducible.sh: $file differs" >&2
    if command -v diffoscope >/dev/null; then diffoscope "$first/$file" "$second/$file" >&2 || true; fi
done
[[ $different -eq 0 ]] || exit 1
printf '%s\n' "${files[@]}"
echo "reproducible.sh: all ${#files[@]} files are identical"
