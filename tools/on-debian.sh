#!/bin/bash
# Runs a command of this source tree on another release of Debian, in a folder that debootstrap fills. Needs root.
# See --help.
set -euo pipefail

usage() {
    cat <<'TEXT'
usage: tools/on-debian.sh [--cache DIR] [--mirror URL] [--time-limit DURATION] SUITE COMMAND [ARGUMENT...]

Runs COMMAND in the top folder of this source tree, as root, on the Debian release SUITE (bookworm, trixie, ...):

  tools/on-debian.sh trixie ./test.sh
  tools/on-debian.sh trixie tools/with-wine.sh ctest --preset checked -R '^ui.dialog_texts'

The first call fetches the release (about a minute); what a command installs stays there for the next one. The tree
is seen there as /source, read-only but for its build folder, which is one of its own: build/debian/SUITE.build. The
command gets no standard input and a fresh environment; variables go in front of it: SUITE env CC=... COMMAND.

  --cache DIR      where the releases are kept, as DIR/SUITE; several trees can share them (default: build/debian)
  --mirror URL     where Debian packages come from (default: http://deb.debian.org/debian)
  --time-limit DURATION
                   ends the command after that time, such as 90s, 20m or 3h (the default); 0 means never
  --help           this text

Several calls may run at once. The exit code is that of COMMAND; 124 says that its time was up.
TEXT
}

die() { echo "on-debian.sh: $*" >&2; exit 1; }

source=$(cd "$(dirname "$0")/.." && pwd)
readonly source
arguments=("$@")
cache=$source/build/debian
mirror=http://deb.debian.org/debian
limit=3h
while [[ ${1-} == -* ]]; do
    case $1 in
        -h | --help) usage; exit 0 ;;
        --cache) cache=$(realpath -m -- "${2:?--cache needs a folder}"); shift 2 ;;
        --mirror) mirror=${2:?--mirror needs an address}; shift 2 ;;
        --time-limit) limit=${2:?--time-limit needs a duration}; shift 2 ;;
        *) die "unknown option '$1', see --help" ;;
    esac
done
[[ $# -ge 2 ]] || { usage >&2; exit 1; }
suite=$1
shift
[[ $suite =~ ^[a-z]+$ ]] || die "'$suite' is no name of a Debian release"
[[ $EUID -eq 0 ]] || die "needs root rights"

# What is mounted from here on is seen by this process and its children alone, and goes with the last of them, however
# they end: 'rm -rf build' never meets a mount.
if [[ ${QX_OWN_MOUNTS-} != "$$" ]]; then
    QX_OWN_MOUNTS=$$ exec unshare --mount --propagation private -- "$0" "${arguments[@]}"
fi

readonly system=$cache/$suite
readonly output=$source/build/debian/$suite.build
mkdir -p "$cache" "$output"

install_debootstrap() {
    command -v debootstrap >/dev/null && return
    echo "on-debian.sh: installing debootstrap" >&2
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends debootstrap
}

# The folder gets its name when it is complete; who comes meanwhile waits.
make_system() {
    (
        flock 9
        [[ ! -d $system ]] || exit 0
        install_debootstrap
        echo "on-debian.sh: fetching Debian '$suite'" >&2
        rm -rf "$system.new"
        debootstrap --variant=minbase "$suite" "$system.new" "$mirror" >"$system.log" 2>&1 ||
            die "cannot fetch Debian '$suite', see $system.log"
        mkdir "$system.new/source"
        mv "$system.new" "$system"
    ) </dev/null >&2 9>"$system.lock"
}

mount_folders() {
    mount --rbind /proc "$system/proc"
    mount --rbind /dev "$system/dev"
    mount --bind -o ro "$source" "$system/source"
    mount --bind "$output" "$system/source/build"
    # The names of today's network, which may be another one than that of the first call.
    cp -L --remove-destination /etc/resolv.conf "$system/etc/resolv.conf"
}

make_system
mount_folders

environment=(HOME=/root LANG=C.UTF-8 "TERM=${TERM:-dumb}"
    PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin)
for name in http_proxy https_proxy no_proxy; do
    if [[ -n ${!name-} ]]; then environment+=("$name=${!name}"); fi
done
# The time limit is sent to the whole process group; with-wine.sh then still takes its session down.
# shellcheck disable=SC2016 # expanded inside
exec timeout --kill-after=1m "$limit" chroot "$system" \
    /usr/bin/env -i "${environment[@]}" /bin/sh -c 'cd /source && exec "$@"' sh "$@" </dev/null
