# shellcheck shell=bash
# Read in by scripts whose usage is the comment at their top, before they do anything: prints it, and ends the script,
# when it is asked for.
for argument in "$@"; do
    case $argument in
        -h | --help) sed -n '2,/^set /{/^#/s/^# \{0,1\}//p}' "$0"; exit ;;
    esac
done
