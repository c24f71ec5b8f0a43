#!/bin/bash
# Runs a command where Windows programs run: a Wine prefix of this source tree, with a wineserver and a virtual display
# of its own. The user's prefix and display are never touched.
#
#   tools/with-wine.sh [--lang LANG] [--desk NAME] [--dpi N] [--display | --blind] COMMAND [ARGUMENT...]
#
#   --lang LANG  language of Windows' user interface (default: en): a code of strings/languages.toml, or one with a
#                region, such as de-AT. The command finds it in QX_LANG
#   --desk NAME  a prefix, wineserver and display apart from those of other desks, for runs that must not meet
#   --dpi N      dots per inch of the screen (default: 96), on a desk of their own. The command finds them in QX_DPI
#   --display    use the display in $DISPLAY instead of a virtual one
#   --blind      no display: the windows are there and nothing is drawn, which is quicker
#
# The prefixes are kept in build/wine/ (one per language and desk). Commands that run at the same time share prefix, display and
# wineserver; who finishes last takes them down. A command that itself calls with-wine.sh finds them running, and those
# of another language stay up until the outermost call ends.
set -euo pipefail
. "$(dirname "$0")/help.sh" "${1-}" # what follows may be the command's

readonly usage='usage: tools/with-wine.sh [--lang LANG] [--desk NAME] [--dpi N] [--display | --blind] COMMAND [ARGUMENT...]'
root=$(cd "$(dirname "$0")/.." && pwd)
readonly root
readonly home=$root/build/wine

die() { echo "with-wine.sh: $*" >&2; exit 1; }

lang=en
desk=
dpi=96
own_display=yes
while [[ ${1-} == --* ]]; do
    case $1 in
        --lang) lang=${2-}; shift 2 || die "$usage" ;;
        --desk) desk=-${2-}; shift 2 || die "$usage" ;;
        --dpi) dpi=${2-}; shift 2 || die "$usage" ;;
        --display) own_display=no; shift ;;
        --blind) own_display=none; shift ;;
        *) die "$usage" ;;
    esac
done
[[ $# -gt 0 ]] || die "$usage"
[[ $dpi =~ ^[1-9][0-9]+$ ]] || die "--dpi needs a number"
[[ $dpi == 96 ]] || desk+=-dpi$dpi

# hhctrl.ocx: a test puts another help viewer into the system folder; without this Wine would go on using its own.
export WINEARCH=win64 WINEDEBUG=${WINEDEBUG--all} WINEDLLOVERRIDES='mscoree,mshtml=;hhctrl.ocx=n,b'
# The real 64-bit loader: Debian's wrapper script complains about a missing 32-bit half with every call.
PATH=$PATH:/usr/lib/wine
command -v wine64 >/dev/null || die "Wine is not installed: run tools/setup.sh"

[[ $own_display != no || -n ${DISPLAY-} ]] || die "--display needs a display: DISPLAY is not set"
session=$lang$desk
case $own_display in
    no) session+=-on-display ;;
    none) session+=-blind; unset DISPLAY ;;
esac
dir=$home/$session
export WINEPREFIX=$dir/prefix

# Inside a call for the same session everything is there already.
if [[ ${QX_WINE_SESSION-} == "$dir" ]]; then exec "$@"; fi

# Wine takes its language from the locale; without it the run would be one in English.
locale=$("$root/strings/languages.py" locale "$lang") || exit 1
[[ $(env LC_ALL="$locale" locale charmap 2>/dev/null) == UTF-8 ]] ||
    die "the locale $locale of language '$lang' is missing: run 'tools/setup.sh $lang'"
export LC_ALL=$locale QX_LANG=$lang QX_DPI=$dpi
unset LANGUAGE

# ---- the template prefix -------------------------------------------------------------------------------------------

# A fixed resolution, fonts that look good and have all the scripts, no window manager to wait for, no crash dialog
# (a crash must fail a run, not hang it).
template_settings() {
    cat <<'REG'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine]
"Version"="win10"

[HKEY_CURRENT_USER\Software\Wine\X11 Driver]
"Managed"="N"

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

[HKEY_CURRENT_USER\Control Panel\Desktop]
"LogPixels"=dword:00000060
"FontSmoothing"="2"
"FontSmoothingType"=dword:00000001
"FontSmoothingOrientation"=dword:00000001

[HKEY_CURRENT_USER\Software\Wine\Fonts\Replacements]
"Tahoma"="DejaVu Sans Condensed"
"Segoe UI"="DejaVu Sans Condensed"
"MS UI Gothic"="Noto Sans CJK JP"

[HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\FontSubstitutes]
"Tahoma"="DejaVu Sans Condensed"
"MS Shell Dlg"="DejaVu Sans Condensed"
"MS Shell Dlg 2"="DejaVu Sans Condensed"

[HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink]
"DejaVu Sans Condensed"=hex(7):4e,6f,74,6f,53,61,6e,73,43,4a,4b,2d,52,65,67,75,6c,61,72,2e,74,74,63,2c,4e,6f,74,6f,20,53,61,6e,73,20,43,4a,4b,20,4a,50,00,00
REG
}

stop_wineserver() { WINEPREFIX=$1 wineserver -k 2>/dev/null || true; WINEPREFIX=$1 wineserver -w 2>/dev/null || true; }

make_template() {
    template_settings >"$home/settings.reg"
    wine64 wineboot --init
    wine64 regedit /S "$(wine64 winepath -w "$home/settings.reg")"
    wineserver -w
    # The caption buttons are drawn with a font that Debian's Wine does not look for.
    cp /usr/share/wine/fonts/marlett.ttf "$WINEPREFIX/drive_c/windows/Fonts/"
    # Wine makes the user's folders links into the home directory: nothing of ours may go there.
    local link
    find "$WINEPREFIX/drive_c/users" -type l | while read -r link; do
        rm "$link"
        mkdir "$link"
    done
}

prepare_template() {
    local stamp=$home/template.stamp building=$home/template.new
    local wanted
    wanted=$(template_settings; declare -f make_template choose_dialog_font)
    [[ -f $stamp && $(<"$stamp") == "$wanted" ]] && return

    [[ ! -d $building ]] || stop_wineserver "$building"
    rm -rf "$building" "$home/template" "$stamp"
    # No display is needed here; the graphics driver is chosen anew by the first process of each session.
    (
        exec 7>&- 8>&- 9>&-
        export WINEPREFIX=$building LC_ALL=en_US.UTF-8
        unset DISPLAY
        make_template
    ) </dev/null >"$home/template.log" 2>&1 || die "cannot make a Wine prefix, see $home/template.log"
    mv "$building" "$home/template"
    echo "$wanted" >"$stamp"
}

prepare_prefix() {
    (
        exec 7>"$home/template.lock"
        flock 7
        prepare_template
    )
    [[ -f $WINEPREFIX/.copied && ! $home/template.stamp -nt $WINEPREFIX/.copied ]] && return
    rm -rf "$WINEPREFIX"
    # Wine's own programs, nearly all of it, are never written to: a prefix needs no copies of them.
    mkdir "$WINEPREFIX"
    (cd "$home/template" && find . -type f ! -name '*.dll' ! -name '*.exe' -print0 | tar -c --null -T -) |
        tar -x -C "$WINEPREFIX"
    cp -al --no-clobber "$home/template/." "$WINEPREFIX/"
    # On the user's display the window manager is there, and has its say.
    [[ $own_display != no ]] || sed -i 's/^"Managed"="N"/"Managed"="Y"/' "$WINEPREFIX/user.reg"
    [[ $own_display != none ]] ||
        printf '\n[%s]\n%s\n' 'Software\\Wine\\Drivers' '"Graphics"="null"' \
            'Software\\Microsoft\\Windows\\CurrentVersion\\ThemeManager' '"ThemeActive"="0"' >>"$WINEPREFIX/user.reg"
    sed -i "s/^\"LogPixels\"=dword:.*/\"LogPixels\"=dword:$(printf %08x "$dpi")/" "$WINEPREFIX/user.reg"
    touch "$WINEPREFIX/.copied"
}

# ---- a session: display and wineserver of one prefix ------------------------------------------------------------

display_is_alive() {
    local pid
    [[ -f $dir/display && -f $dir/xvfb.pid ]] || return 1
    pid=$(<"$dir/xvfb.pid")
    [[ -r /proc/$pid/cmdline ]] && tr '\0' ' ' <"/proc/$pid/cmdline" | grep -qF -- "-fbdir $dir "
}

start_display() {
    # As large for what it shows as any: with more dots per inch there are more of them.
    local screen=$((1280 * dpi / 96))x$((1024 * dpi / 96))x24
    rm -f "$dir/display" "$dir/xvfb.pid" "$dir/display.pipe"
    mkfifo "$dir/display.pipe"
    # The folder in -fbdir marks the server as ours. Its own session: Ctrl+C must reach only the command.
    setsid Xvfb -displayfd 6 -screen 0 "$screen" -nolisten tcp -noreset -fbdir "$dir" -ac \
        6>"$dir/display.pipe" 7>&- 8>&- 9>&- </dev/null >"$dir/xvfb.log" 2>&1 &
    local pid=$! number
    read -r -t 20 number <"$dir/display.pipe" || die "Xvfb does not start, see $dir/xvfb.log"
    rm "$dir/display.pipe"
    echo "$pid" >"$dir/xvfb.pid"
    echo ":$number" >"$dir/display"
}

# In most languages Wine makes Tahoma the font of dialogs, when a prefix is first used in that language. The Tahoma that
# Debian 13's Wine brings lacks scripts. Some languages need another font than the usual one.
choose_dialog_font() {
    local key='HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontSubstitutes' font
    font=$("$root/strings/languages.py" font "$lang")
    if [[ -n $font ]]; then
        wine64 reg add 'HKCU\Software\Wine\Fonts\Replacements' /v Tahoma /d "$font" /f # of captions
    fi
    if [[ -n $font ]] || wine64 reg query "$key" /v 'MS Shell Dlg' | grep -q Tahoma; then
        wine64 reg add "$key" /v 'MS Shell Dlg' /d "${font:-DejaVu Sans Condensed}" /f
    fi
    touch "$WINEPREFIX/.font-chosen"
}

# Somebody stays on the desktop, and its window is there before any command: whichever process needs it otherwise starts
# its owner, and whoever reads what that process writes waits for the desktop's end, too.
start_desktop() {
    rm -f "$dir/idle.pipe"
    mkfifo "$dir/idle.pipe"
    setsid wine64 cmd <>"$dir/idle.pipe" >"$dir/idle.log" 2>&1 &
    echo 'echo on the desktop' >"$dir/idle.pipe"
    setsid wine64 wineboot
    local tries=0
    until grep -q '>on the desktop' "$dir/idle.log"; do # the prompt stands before it
        ((++tries < 1200)) || die "nobody comes to the desktop"
        sleep 0.1
    done
    setsid wine64 rundll32 user32.dll,GetDesktopWindow
}

start_session() {
    prepare_prefix
    if [[ $own_display == yes ]]; then
        start_display
        DISPLAY=$(<"$dir/display")
        export DISPLAY
    fi
    # The first process decides the language and the graphics driver of the desktop; it must see our environment.
    (
        exec 7>&- 8>&- 9>&-
        setsid wineserver -p
        start_desktop
        [[ -f $WINEPREFIX/.font-chosen ]] || choose_dialog_font
    ) </dev/null >"$dir/session.log" 2>&1 || die "Wine does not start, see $dir/session.log"
    touch "$dir/running"
}

session_is_running() {
    [[ -f $dir/running ]] || return 1
    if [[ $own_display == yes ]]; then display_is_alive; else return 0; fi
}

stop_session() {
    stop_wineserver "$dir/prefix"
    if display_is_alive; then kill "$(<"$dir/xvfb.pid")" 2>/dev/null || true; fi
    rm -f "$dir/running" "$dir/display" "$dir/xvfb.pid"
}

# Descriptor 9: who starts or stops. Descriptor 8: held shared by everybody who uses the session.
join_session() {
    mkdir -p "$dir"
    exec 9>"$dir/lock" 8>"$dir/users"
    flock 9
    if ! session_is_running; then
        stop_session
        start_session
    fi
    flock -s 8
    flock -u 9
    if [[ $own_display == yes ]]; then DISPLAY=$(<"$dir/display"); export DISPLAY; fi
}

stop_session_if_unused() {
    (
        dir=$1
        exec 9>"$dir/lock" 8>"$dir/users"
        flock 9
        if flock -n 8; then stop_session; fi
    )
}

leave_session() {
    local sessions started
    exec 8>&- 9>&-
    mapfile -t sessions < <(sort -u "$QX_WINE_SESSIONS")
    rm -f "$QX_WINE_SESSIONS"
    for started in "$dir" "${sessions[@]}"; do stop_session_if_unused "$started"; done
}

# ---- run -----------------------------------------------------------------------------------------------------------

join_session
export QX_WINE_SESSION=$dir
if [[ -n ${QX_WINE_SESSIONS-} ]]; then
    echo "$dir" >>"$QX_WINE_SESSIONS" # the outermost call takes it down
else
    QX_WINE_SESSIONS=$(mktemp "$home/sessions.XXXXXX")
    export QX_WINE_SESSIONS
    trap leave_session EXIT
fi

status=0
"$@" 7>&- 8>&- 9>&- || status=$?
exit "$status"
