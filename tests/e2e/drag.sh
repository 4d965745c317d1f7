#!/usr/bin/env bash
# tests/e2e/drag.sh BUILD_FOLDER [--plain|--compositor|--modal]...
# Drags rows of the list with the real mouse, in the host's window on a virtual display with a window manager, and
# with a compositor where that is asked for: to other places in the list, out of it onto the bare desktop, onto another
# program's window and onto another plug-in window's list, out and back in, past its edge to the pixel; with Escape or another button,
# with the program below closed and with the plug-in's own window closed in the middle of it. After each drag
# linklist.xml is compared with this script's own account of the list, and a click on the other program's window must
# reach it. Prints every check. Leaves a picture of the puff of smoke at BUILD_FOLDER/Testing/drag-puff.png.
# Exit status: 0 all held, 1 some did not, 77 a tool is missing.
set -euo pipefail
arguments=" $* "
# shellcheck disable=SC2034 # read by session.sh
screen=2600x1000x24
# shellcheck source=tests/e2e/session.sh
. "$(dirname "${BASH_SOURCE[0]}")/session.sh"

host_arguments=()
if [[ $arguments == *" --modal "* ]]; then
    host_arguments=(--modal)
fi
by=$scratch/bystander
letters='A B C D E F G H I J K L M N O P'
item() { printf '<item><link type="text">http://example.com/%s</link><title type="text">%s</title></item>' "$1" "$1"; }
write_document() { # write_document FILE LETTER...
    local file=$1 items='' letter
    shift
    for letter; do items+=$(item "$letter"); done
    sed "s|<body><fontSize type=\"number\">12</fontSize><color type=\"color\">0x1F4E79</color><content>.*</content></body>|<body><fontSize type=\"number\">12</fontSize><color type=\"color\">0x1F4E79</color><content>$items</content></body>|" \
        "$tests/../Resources/data/linklist.xml" >"$file"
}
titles() { grep -o '<item>.*</item>' "$1" | grep -o '<title type="text">[^<]*' | sed 's/.*>//' | paste -sd ' '; }
list() { titles "$workspace/linklist.xml"; }
list_is() { [ "$(list)" = "$1" ]; }

# The list after ROWS were dropped before row ROW, in the words of the rule: dropped ROW ROWS...
dropped() {
    local row=$1 items i moved count
    shift
    read -ra items <<<"$expected"
    for i; do
        count=${#items[@]}
        ((i < count)) || break
        moved=${items[i]}
        if ((i >= row)); then
            unset "items[i]"
            items=("${items[@]}")
            items=("${items[@]:0:row}" "$moved" "${items[@]:row}")
            row=$((row + 1))
        else
            items=("${items[@]:0:row}" "$moved" "${items[@]:row}")
            unset "items[i]"
            items=("${items[@]}")
        fi
    done
    expected="${items[*]}"
}
without() { # without ROW...
    local items i
    read -ra items <<<"$expected"
    for i; do unset "items[i]"; done
    expected="${items[*]}"
}

start_bystander() {
    "$build/tests/e2e_bystander" 2200 120 220 220 "$by" 2>"$scratch/bystander.log" &
    bystander=$!
    processes+=("$bystander")
    wait_until 20 is_said shown "${1:-1}"
}
said() { grep -c "^$1" "$by" || true; }
is_said() { [ "$(said "$1")" = "$2" ]; }
bystander_is_reached() {
    local clicks
    clicks=$(said click)
    xdotool mousemove --sync 2310 230 click 1
    wait_until 5 is_said click $((clicks + 1))
}

hold() { # hold X Y: presses there and begins to drag
    xdotool mousemove --sync "$1" "$2" mousedown 1
    local step
    for step in 1 2 3 4 5; do
        xdotool mousemove $(($1 + 4 * step)) $(($2 + step))
        sleep 0.03
    done
    at_x=$(($1 + 20)) at_y=$(($2 + 5))
}
carry() { # carry X Y: in steps, and rests there
    local step steps=12 from_x=$at_x from_y=$at_y
    for ((step = 1; step <= steps; step++)); do
        xdotool mousemove $((from_x + ($1 - from_x) * step / steps)) $((from_y + ($2 - from_y) * step / steps))
        sleep 0.03
    done
    at_x=$1 at_y=$2
    sleep 0.3
}
jump() { xdotool mousemove "$1" "$2" && at_x=$1 at_y=$2; }
release() { xdotool mouseup 1; }
# shellcheck disable=SC2046 # two words each
hold_row() { hold $(row_at "$1"); }
# shellcheck disable=SC2046
carry_to_row() { carry $(row_at "$1"); }

stays() { # for half a second
    local i
    for i in 1 2 3 4 5 6 7 8 9 10; do
        list_is "$expected" || return 1
        sleep 0.05
    done
}
list_follows() { # list_follows WHAT
    if ! wait_until 5 list_is "$expected"; then
        echo "      the list is $(list), expected $expected"
        check "$1" false
    else
        check "$1" stays
    fi
    check "  and a click on the other window reaches it" bystander_is_reached
}
puff_is_seen() {
    import -window root -crop 64x64+$((desktop_x - 32))+$((desktop_y - 32)) +repage "$scratch/puff.png"
    [ "$(identify -format '%k' "$scratch/puff.png")" -gt 4 ]
}
puff_is_gone() { ! puff_is_seen; }
is_running() { kill -0 "$1" 2>/dev/null; }

start_display
if [[ $arguments == *" --compositor "* ]]; then
    command -v picom >/dev/null || { echo "no picom here"; exit 77; }
    picom --backend xrender --config /dev/null >"$scratch/picom.log" 2>&1 &
    compositor=$!
    processes+=("$compositor")
fi
mkdir -p "$workspace" "$build/Testing"
# shellcheck disable=SC2086 # one letter a word
write_document "$workspace/linklist.xml" $letters
expected=$letters
start_host "${host_arguments[@]}" || { echo "FAIL  the window did not come up"; cat "$scratch/host.log"; exit 1; }
grow
: >"$by"
start_bystander || { echo "FAIL  the other program's window did not come up"; exit 1; }
desktop_x=2310 desktop_y=700
read -r table_x table_y table_w _ <<<"$(place tableView)"
check "the list is what was written" list_is "$expected"
check "a click on the other window reaches it" bystander_is_reached

hold_row 0; carry_to_row 2; release
dropped 2 0; list_follows "one row moves to where it was dropped"

xdotool mousemove --sync $(row_at 0) click 1 keydown shift mousemove --sync $(row_at 2) click 1 keyup shift
hold_row 1; carry_to_row 5; release
dropped 5 0 1 2; list_follows "three rows move"

hold_row 3; carry_to_row 0; release
dropped 0 3; list_follows "a row moves to the top"

hold_row 0; carry "$desktop_x" "$desktop_y"; release
check "the puff of smoke is seen where the row was dropped" wait_until 2 puff_is_seen
import -window root "$build/Testing/drag-puff.png"
without 0; list_follows "a row dropped on the bare desktop is deleted"
check "the puff is gone" wait_until 3 puff_is_gone

hold_row 1; carry 2310 230; release
without 1; list_follows "a row dropped on another program's window is deleted"
check "the other program was offered nothing" is_said 'offered\|drop' 0

xdotool mousemove --sync $(row_at 1) click 1 keydown ctrl mousemove --sync $(row_at 3) click 1 keyup ctrl
hold_row 3; carry "$desktop_x" "$desktop_y"; release
without 1 3; list_follows "two rows dropped outside are both deleted"

hold_row 2; carry $((table_x + table_w + 60)) $((table_y + 60)); release
without 2; list_follows "a row dropped elsewhere in the plug-in's own window is deleted"

hold_row 2; carry "$desktop_x" "$desktop_y"; carry_to_row 0; release
dropped 0 2; list_follows "a row that comes back is moved, not deleted"

hold_row 1; carry "$desktop_x" "$desktop_y"; xdotool key Escape; release
list_follows "Escape outside leaves the row"

hold_row 1; carry_to_row 3; xdotool key Escape; release
list_follows "Escape inside leaves the row"

hold_row 1; carry "$desktop_x" "$desktop_y"; xdotool click 3; sleep 0.2; release
list_follows "another button outside leaves the row"

hold_row 1; carry_to_row 3; xdotool click 3; sleep 0.2; release
list_follows "another button inside leaves the row"

# Out, in, and in again before the window that was raised has been given up; then out for good.
hold_row 1
jump $((table_x + table_w + 12)) $((table_y + 100)); sleep 0.05
jump $((table_x + table_w + 14)) $((table_y + 100)); sleep 0.05
jump $((table_x + table_w - 60)) $((table_y + 100)); sleep 0.02
jump $((table_x + table_w - 64)) $((table_y + 100)); sleep 0.6
carry 2310 230; carry "$desktop_x" "$desktop_y"; release
without 1; list_follows "a row that was out for a moment and goes out again is deleted"
check "the other program was still offered nothing" is_said 'offered\|drop' 0

hold_row 1; carry "$desktop_x" "$desktop_y"
# shellcheck disable=SC2046
jump $(row_at 3); release
dropped 3 1; list_follows "a row thrown back and let go at once is moved"

hold_row 1; carry $((table_x + table_w / 2)) $((table_y + 6)); release
list_follows "a row dropped on the list's header stays"

hold_row 1; carry $((table_x + table_w - 1)) $((table_y + 8)); release
list_follows "a row released on the list's last column of pixels stays"

hold_row 1; carry $((table_x + table_w)) $((table_y + 8)); release
without 1; list_follows "a row released one pixel further is deleted"

hold_row 1; jump $((table_x + table_w)) $((table_y + 60)); release
without 1; list_follows "a row released at once where the pointer leaves the list is deleted"

hold_row 1; jump "$desktop_x" "$desktop_y"; release
without 1; list_follows "a row thrown far out is deleted"

hold_row 1; carry 2310 230
kill "$bystander"; wait "$bystander" 2>/dev/null || true
sleep 0.2
release
start_bystander 2
without 1; list_follows "a row dropped where a program has just closed is deleted"

# A second plug-in window, of another process: the rows of this one mean nothing to its list.
other=$scratch/other
mkdir -p "$other"
write_document "$other/linklist.xml" X Y Z
"$build/linklist-host" --workspace "$other" --print-geometry "$scratch/other-geometry" >"$scratch/other.log" 2>&1 &
other_host=$!
processes+=("$other_host")
wait_until 60 grep -qs '^preview loaded' "$scratch/other-geometry"
read -r other_x other_y other_w _ <<<"$(geometry=$scratch/other-geometry place tableView)"
left_of() { xdotool getwindowgeometry --shell "$(window_of "$1")" | sed -n 's/^X=//p'; }
top_of() { xdotool getwindowgeometry --shell "$(window_of "$1")" | sed -n 's/^Y=//p'; }
other_x=$((other_x - $(left_of "$other_host"))) other_y=$((other_y - $(top_of "$other_host")))
xdotool windowmove "$(window_of "$other_host")" 0 40
wait_until 5 eval '[ "$(left_of "$other_host")" -lt 20 ]'
# A place in its list.
other_x=$((other_x + $(left_of "$other_host") + other_w / 3)) other_y=$((other_y + $(top_of "$other_host") + 60))
click lblPreview # brings this one's window to the front
check "the other plug-in window's list is in sight" test "$other_x" -lt "$(left_of "$host")"
hold_row 1; carry "$other_x" "$other_y"; release
without 1; list_follows "a row dropped on another plug-in window's list is deleted"
check "the other plug-in window's list is as it was" test "$(titles "$other/linklist.xml")" = 'X Y Z'
kill "$other_host"; wait "$other_host" 2>/dev/null || true

hold_row 0
carry "$desktop_x" "$desktop_y"
xdotool key alt+F4
asked() { grep -q '^btnAlertFirst ' "$geometry"; }
check "closing the window in the middle of a drag asks" wait_until 10 asked
release
list_follows "the row stays"
click btnAlertFirst
check "the answer closes the window" wait_until 20 ended
status=0
wait "$host" || status=$?
check "the host ends with status 0" test "$status" = 0
check "the list is kept" list_is "$expected"
conclude
