#!/bin/bash
# Makes a Debian machine ready to build and test: installs the packages that are missing and generates the locales
# of the languages that it is asked for. Does nothing, quickly, when everything is there.
#
#   tools/setup.sh [--checks] [--reproducible] [LANG...]
#
# --checks: what tools/check.sh and tools/fuzz.sh need, too. --reproducible: what tools/reproducible.sh shows
# differences with. Languages are named as tools/with-wine.sh takes them; by default those that tests are run in.
set -euo pipefail
. "$(dirname "$0")/help.sh"
cd "$(dirname "$0")/.."

packages=(
    cmake ninja-build g++-mingw-w64-x86-64 python3 git              # building
    clang lld llvm libwine-dev                                      # building as driver developers do
    googletest nlohmann-json3-dev libcli11-dev                      # libraries of the tests and of the tools
    fp-utils gcab unzip                                             # compiling and packing the help, unpacking packages
    wine wine64 xvfb                                                # running and looking at it
    fonts-wine fonts-dejavu-extra fonts-noto-core fonts-noto-cjk fonts-tlwg-waree-ttf
    locales
    python3-polib                                                   # texts as PO files
)
readonly checking=(
    clang-format-19 clang-tidy-19 shellcheck pyflakes3
    clang libclang-rt-dev                                           # fuzz targets
    hunspell                                                        # and the dictionaries
)
readonly comparing=(diffoscope-minimal)
readonly tested=(en de de-AT he ja th)

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

# Waits for another installation that is going on.
apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive flock /var/cache/apt apt-get -qq -o DPkg::Lock::Timeout=600 "$@"
}

install_missing_packages() {
    local missing=() package
    for package in "${packages[@]}"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [[ ${#missing[@]} -gt 0 ]] || return 0

    echo "setup.sh: installing ${missing[*]}"
    apt_get update
    apt_get install -y --no-install-recommends -o Dpkg::Options::=--force-confold "${missing[@]}"
}

# Wine takes its user-interface language from the locale.
generate_missing_locales() {
    local language locale definition
    for language in "$@"; do
        locale=$(strings/languages.py locale "$language")
        [[ $(env LC_ALL="$locale" locale charmap 2>/dev/null) == UTF-8 ]] && continue
        definition=${locale/.UTF-8/}
        # Wine wants to be told a script that goes without saying elsewhere (sr_RS@cyrillic).
        [[ -f /usr/share/i18n/locales/$definition ]] || definition=${definition%@*}
        if [[ ! -f /usr/share/i18n/locales/$definition ]]; then
            echo "setup.sh: Debian has no locale for the language '$language'" >&2
            exit 1
        fi
        echo "setup.sh: generating locale $locale"
        as_root localedef -i "$definition" -f UTF-8 "$locale"
    done
}

checks=no
while [[ ${1-} == --* ]]; do
    case $1 in
        --checks) checks=yes; packages+=("${checking[@]}") ;;
        --reproducible) packages+=("${comparing[@]}") ;;
        *) echo "setup.sh: '$1' is no option of it" >&2; exit 1 ;;
    esac
    shift
done
install_missing_packages
if [[ $checks == yes ]]; then
    mapfile -t packages < <(strings/languages.py spelling | cut -d ' ' -f 2 | sort -u)
    install_missing_packages
fi
if [[ $# -eq 0 ]]; then set -- "${tested[@]}"; fi
generate_missing_locales "$@"
