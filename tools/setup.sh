#!/bin/bash
# Makes a Debian machine ready to build and test: installs the packages that are missing and generates the locales
# that the tests of other languages need. Does nothing, quickly, when everything is there.
#
#   tools/setup.sh
set -euo pipefail

readonly packages=(
    cmake ninja-build g++-mingw-w64-x86-64 python3                  # building
    googletest nlohmann-json3-dev libcli11-dev                      # libraries of the tests and of the stand-in driver
    fp-utils gcab                                                   # compiling and packing the help
    wine wine64 xvfb                                                # running and looking at it
    fonts-wine fonts-dejavu-extra fonts-noto-core fonts-noto-cjk
    locales
)
# Wine takes its user-interface language from the locale.
readonly locales=(de_DE de_AT he_IL ja_JP en_US)

as_root() {
    if [[ $EUID -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "setup.sh: '$*' needs root rights: run tools/setup.sh as root once." >&2
        exit 1
    fi
}

install_missing_packages() {
    local missing=() package
    for package in "${packages[@]}"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [[ ${#missing[@]} -gt 0 ]] || return 0

    echo "setup.sh: installing ${missing[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends -o Dpkg::Options::=--force-confold "${missing[@]}"
}

generate_missing_locales() {
    local present locale
    present=$(locale -a)
    for locale in "${locales[@]}"; do
        grep -qix "$locale\.utf-\?8" <<<"$present" && continue
        echo "setup.sh: generating locale $locale.UTF-8"
        as_root localedef -i "$locale" -f UTF-8 "$locale.UTF-8"
    done
}

install_missing_packages
generate_missing_locales
