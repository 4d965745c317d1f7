#!/usr/bin/env bash
# tests/e2e/modal.sh BUILD_FOLDER [--managed|--bare]
# While a modal session is open, nothing gets through to the host's own window: neither clicks nor keys, nor does it stay
# in front; before and after the preview appears, with the colour chooser, the removal question and the closing
# question open and after each. When the session has ended, all of it does. On a virtual display with a window manager, or
# with none (--bare). Prints every check and leaves a picture at BUILD_FOLDER/Testing/modal-managed.png or modal-bare.png.
# Exit status: 0 all held, 1 some did not, 77 a tool is missing.
set -euo pipefail

# shellcheck source=tests/e2e/session.sh
. "$(dirname "${BASH_SOURCE[0]}")/session.sh"
way=${2:---managed} log=$scratch/log
case $way in --managed | --bare) ;; *) echo "$way: --managed or --bare" >&2 && exit 2 ;; esac

forget() { sed -i "/^\($1\) /d" "$geometry"; }
says() { grep -qsxF -- "$1" "$log"; }
heard() { grep -csE '^(text|click)' "$log" || true; }
left_is() { [ "$(sed -n 1p "$settings" 2>/dev/null)" = "$1" ]; }
right_is() { [ "$(sed -n 3p "$settings")" = "$1" ]; }
# Whether the window of that title stands above all others.
is_on_top() {
    local top
    top=$(xprop -root _NET_CLIENT_LIST_STACKING | grep -o '0x[0-9a-f]*' | tail -n 1)
    [ "$((top))" = "$(xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -n 1)" ]
}
type_into() {
    click "$1"
    xdotool key ctrl+a type --delay 20 -- "$2"
}
try_host() {
    click hostEditor
    xdotool type --delay 20 -- 9
    click hostButton
}
margin=10
# The host is tried, and then the settings window, which answers: by then what the host got would have been said.
is_blocked() { # is_blocked WHEN
    local before
    before=$(heard)
    try_host
    [ "$way" = --bare ] || check "$1: the settings window comes back on top" wait_until 10 is_on_top 'Plugin Settings'
    margin=$((margin + 1))
    type_into txtLeft "$margin"
    check "$1: the settings window takes keys" wait_until 10 left_is "$margin.0"
    check "$1: the host's window got nothing" test "$(heard)" = "$before"
    check "$1: the session is modal" test "$(grep '^modal' "$log" | tail -n 1)" = "modal PluginSettingsDelegateWindow"
}
# With a question or the chooser open the settings window is blocked, too: the answer is what comes after the try.
is_blocked_behind() { # is_blocked_behind WHEN ANSWER
    local before right
    before=$(heard)
    right=$(sed -n 3p "$settings")
    try_host
    click txtRight
    xdotool type --delay 20 -- 7
    click "$2"
    forget 'btnAlertFirst\|btnAlertSecond\|btnColorChoose'
    check "$1: the host's window got nothing" test "$(heard)" = "$before"
    check "$1: the settings window got nothing" right_is "$right"
}
open_session() {
    forget '[^h].*\|preview loaded'
    click hostButton
    wait_until 60 shows btnOK
}
close_by_box() {
    if [ "$way" = --bare ]; then
        : >"$log.close"
    else
        xdotool key alt+F4
    fi
    check "the close box asks" wait_until 10 shows btnAlertSecond
}

command -v xprop >/dev/null || { echo "no xprop here"; exit 77; }
start_display
[ "$way" = --managed ] || { kill "${processes[1]}" && wait "${processes[1]}" 2>/dev/null || true; }
export XDG_RUNTIME_DIR=$scratch/runtime QT_QPA_PLATFORM=xcb
export QTWEBENGINE_CHROMIUM_FLAGS=--disable-gpu QT_LOGGING_RULES=qt.webenginecontext.info=false
[ "$(id -u)" != 0 ] || export QTWEBENGINE_DISABLE_SANDBOX=1
mkdir -m 0700 "$XDG_RUNTIME_DIR"
mkdir -p "$build/Testing"
"$build/tests/e2e_modalhost" "$build/linklist.bundle" "$workspace" "$geometry" "$log" >"$scratch/host.log" 2>&1 &
processes+=($!)
check "the host's window comes up" wait_until 60 shows hostButton

click hostEditor
xdotool type --delay 20 -- own
check "the host's window takes keys before" wait_until 10 says 'text own'
open_session
is_blocked "before the preview"
check "the preview loads" wait_until 60 grep -qs '^preview loaded' "$geometry"
is_blocked "with the preview"

click btnTitleFontColor
check "the chooser opens" wait_until 10 shows btnColorChoose
is_blocked_behind "with the chooser" btnColorChoose
is_blocked "after the chooser"
import -window root "$build/Testing/modal-${way#--}.png"

click btnAdd
check "a link is added" wait_until 10 grep -qsF '>title</title>' "$workspace/linklist.xml"
click btnRemove
check "removing asks" wait_until 10 shows btnAlertSecond
is_blocked_behind "with the removal question" btnAlertSecond
is_blocked "after the removal question"

close_by_box
is_blocked_behind "with the closing question" btnAlertFirst
check "OK ends the session with 1" wait_until 10 says 'ended 1'
click hostEditor
xdotool key End type --delay 20 -- 1
check "the host's window takes keys after it" wait_until 10 says 'text own1'

open_session
check "the preview loads again" wait_until 60 grep -qs '^preview loaded' "$geometry"
is_blocked "in a second session"
close_by_box
is_blocked_behind "with the second closing question" btnAlertSecond
check "Cancel ends the session with 0" wait_until 10 says 'ended 0'
click hostEditor
xdotool key End type --delay 20 -- 2
check "the host's window takes keys after that, too" wait_until 10 says 'text own12'
conclude
