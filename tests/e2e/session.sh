# shellcheck shell=bash
# What the end-to-end scripts share; they source it with the build folder as the first argument: a virtual display with
# a window manager, the host's window on a workspace of its own, the mouse, and checks that are printed.
set -euo pipefail

build=$(cd "$1" && pwd)
tests=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
for tool in Xvfb openbox xdotool import; do
    command -v "$tool" >/dev/null || { echo "no $tool here"; exit 77; }
done

scratch=$(mktemp -d)
workspace=$scratch/workspace
geometry=$scratch/geometry
settings=$workspace/settings.dat
failures=0
processes=()
finish() {
    local process
    for process in "${processes[@]}"; do
        kill "$process" 2>/dev/null || true
        wait "$process" 2>/dev/null || true
    done
    rm -rf "$scratch"
}
trap finish EXIT

# wait_until SECONDS COMMAND...
wait_until() {
    local tries=$(($1 * 20))
    shift
    until "$@"; do
        ((tries-- > 0)) || return 1
        sleep 0.05
    done
}

check() { # check WHAT COMMAND...
    local what=$1
    shift
    if "$@"; then
        echo "ok    $what"
    else
        echo "FAIL  $what"
        failures=$((failures + 1))
    fi
}

start_display() {
    Xvfb -displayfd 3 -screen 0 "${screen:-1280x960x24}" -nolisten tcp -noreset 3>"$scratch/display" 2>"$scratch/xvfb.log" &
    processes+=($!)
    wait_until 30 test -s "$scratch/display"
    DISPLAY=:$(<"$scratch/display")
    export DISPLAY
    openbox >"$scratch/openbox.log" 2>&1 &
    processes+=($!)
    wait_until 10 xdotool get_desktop >"$scratch/xdotool.log" 2>&1
}

start_host() { # start_host HOST ARGUMENT...
    export XDG_RUNTIME_DIR=$scratch/runtime QT_QPA_PLATFORM=xcb
    export QTWEBENGINE_CHROMIUM_FLAGS=--disable-gpu QT_LOGGING_RULES=qt.webenginecontext.info=false
    [ "$(id -u)" != 0 ] || export QTWEBENGINE_DISABLE_SANDBOX=1
    mkdir -m 0700 "$XDG_RUNTIME_DIR"
    "$build/linklist-host" --workspace "$workspace" --print-geometry "$geometry" "$@" >"$scratch/host.log" 2>&1 &
    host=$!
    processes+=("$host")
    wait_until 60 grep -qs '^preview loaded' "$geometry"
}

# The place of a part of the window, or of a row like tableView[0]: its last line counts; nothing when out of sight.
place() { awk -v name="$1" '$1 == name { line = NF == 5 ? $2 " " $3 " " $4 " " $5 : "" } END { print line }' "$geometry" 2>/dev/null; }
shows() { [ -n "$(place "$1")" ]; }
click() {
    local x y w h
    read -r x y w h <<<"$(place "$1")"
    xdotool mousemove --sync $((x + w / 2)) $((y + h / 2)) click 1
}
window_of() { xdotool search --all --onlyvisible --pid "$1" --name 'Plugin Settings' | head -n 1; }
# Makes the host's window as high as the screen has room for, so that the list shows as many rows as it can.
grow() {
    local window width before
    window=$(window_of "$host")
    width=$(xdotool getwindowgeometry --shell "$window" | sed -n 's/^WIDTH=//p')
    before=$(place btnOK)
    is_elsewhere() { [ "$(place btnOK)" != "$before" ]; }
    xdotool windowmove "$window" x 30 windowsize "$window" "$width" 880
    check "the window takes the screen's height" wait_until 10 is_elsewhere
}
# In the first cell of one of the list's rows.
row_at() {
    local x y w h
    wait_until 5 shows "tableView[$1]" || { echo "row $1 of the list is out of sight" >&2; exit 1; }
    read -r x y w h <<<"$(place "tableView[$1]")"
    echo $((x + w / 4)) $((y + h / 2))
}

ended() { ! kill -0 "$host" 2>/dev/null; }
# Presses OK and waits for the host's end.
press_ok() {
    local status=0
    click btnOK
    check "OK closes the window" wait_until 20 ended
    ended || return 0 # it would be waited for without an end
    wait "$host" || status=$?
    check "the host ends with status 0" test "$status" = 0
}
conclude() {
    echo "      $failures of the checks failed"
    [ "$failures" = 0 ]
}
