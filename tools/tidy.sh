#!/usr/bin/env bash
# Runs the clang-tidy profile over the sources of the module and of the stand-in driver: tools/tidy.sh [file...]
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/checked
[ -f "$build/compile_commands.json" ] || cmake --preset checked > /dev/null
cross=x86_64-w64-mingw32
gcc=$(dirname "$($cross-g++-posix -print-libgcc-file-name)")
arguments=(--extra-arg-before=--target=$cross --extra-arg=-Wno-unused-command-line-argument)
for include in "$gcc/include/c++" "$gcc/include/c++/$cross" "/usr/$cross/include" "/usr/share/mingw-w64/include"; do
    arguments+=("--extra-arg=-isystem$include")
done

files=("$@")
[ ${#files[@]} -gt 0 ] || mapfile -t files < <(find src host -name '*.cpp' | sort)
printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -n 1 clang-tidy -p "$build" --quiet "${arguments[@]}"
