#!/usr/bin/env bash
# tests/e2e/position.sh BUILD_FOLDER
# Presses, drags and releases each of the frame's nine parts with the real mouse, in the host's window on a virtual
# display with a window manager. After each release settings.dat, the four fields and config.js are compared with
# where the frame must be by this script's own arithmetic. Prints every check. Leaves a picture of the first drag,
# taken with the button down, at BUILD_FOLDER/Testing/position-drag.png.
# Exit status: 0 all held, 1 some did not, 77 a tool is missing.
set -euo pipefail

# shellcheck source=tests/e2e/session.sh
. "$(dirname "${BASH_SOURCE[0]}")/session.sh"

# The frame's sides in points of the page, y-up, and the page's size.
read_page() {
    read -r page_x page_y page_w page_h <<<"$(place positionView)"
    read -r left bottom right top <<<"$(awk -v w="$page_w" -v h="$page_h" \
        'BEGIN { printf "%.17g %.17g %.17g %.17g", w * 0.2, h * 0.3, w * 0.7, h * 0.8 }')"
}

# Where on the screen a part of the frame is: PART is its column and row, each 0 near, 1 middle, 2 far.
part_at() {
    awk -v c="$1" -v r="$2" -v l="$left" -v b="$bottom" -v R="$right" -v t="$top" \
        -v px="$page_x" -v py="$page_y" -v ph="$page_h" '
        function middle(near, far, which) { return which == 0 ? near + 3.5 : which == 2 ? far - 3.5 : (near + far) / 2 }
        BEGIN { printf "%d %d", px + middle(l, R, c), py + ph - middle(b, t, r) }'
}

moved() { awk -v a="$1" -v d="$2" 'BEGIN { printf "%.17g", a + d }'; }
# The margins that the sides stand for, unrounded: left top right bottom.
margins() {
    awk -v l="$left" -v b="$bottom" -v R="$right" -v t="$top" -v w="$page_w" -v h="$page_h" \
        'BEGIN { printf "%.9f %.9f %.9f %.9f", l / w * 100, 100 - t / h * 100, 100 - R / w * 100, b / h * 100 }'
}

state() { stat -c '%i %y' "$settings"; }
is_changed() { [ "$(state)" != "$1" ]; }
is_unchanged() { [ "$(state)" = "$1" ]; }
is_six_lines() { awk '/^-?[0-9]+\.[0-9]$/ && NR < 6 || /^1$/ && NR == 6 { good++ } END { exit !(NR == 6 && good == 6) }' "$settings"; }
# Each margin in the file is the frame's, rounded to one decimal.
settings_are_the_frames() {
    # shellcheck disable=SC2046 # four words
    set -- $(margins)
    awk -v m="$*" '
        BEGIN { split(m, want, " ") }
        NR <= 4 { off = $0 - want[NR]; if (off < 0) off = -off; if (off > 0.0501) bad = 1 }
        END { exit bad || NR != 6 }' "$settings"
}
# left, top, width and height of the player's configuration, by the file's own margins.
configuration_is_the_files() {
    local found
    found=$(sed -n 's/.*"basic":{"left":"\([-0-9.]*\)%","top":"\([-0-9.]*\)%","width":"\([-0-9.]*\)%","height":"\([-0-9.]*\)%"}.*/\1 \2 \3 \4/p' \
        "$workspace/config.js")
    awk -v found="$found" '
        { m[NR] = $0 }
        END {
            if (split(found, got, " ") != 4) exit 1
            want[1] = m[1]; want[2] = m[2]; want[3] = 100 - m[1] - m[3]; want[4] = 100 - m[2] - m[4]
            for (i = 1; i <= 4; i++) { off = got[i] - want[i]; if (off > 0.01 || off < -0.01) exit 1 }
        }' "$settings"
}
field_shows() { # the field with the focus, by copying from it
    xdotool key ctrl+a key ctrl+c
    [ "$("$build/tests/e2e_clipboard")" = "$1" ]
}
fields_are_the_files() {
    local name line=0 text
    for name in txtLeft txtTop txtRight txtBottom; do
        line=$((line + 1))
        text=$(sed -n "${line}p" "$settings")
        click "$name"
        wait_until 10 field_shows "$text" || { echo "      $name does not show $text"; return 1; }
    done
}

# drag NAME COLUMN ROW DX DY: by so many points to the right and up, in steps.
drag() {
    local name=$1 column=$2 row=$3 dx=$4 dy=$5 x y before step steps=10
    before=$(state)
    read -r x y <<<"$(part_at "$column" "$row")"
    xdotool mousemove --sync "$x" "$y" mousedown 1
    for ((step = 1; step <= steps; step++)); do
        xdotool mousemove --sync $((x + dx * step / steps)) $((y - dy * step / steps)) sleep 0.02
    done
    sleep 0.3
    check "$name: nothing is written while the button is down" is_unchanged "$before"
    [ "$name" != inside ] || import -window root "$build/Testing/position-drag.png"
    xdotool mouseup 1

    if [ "$column$row" = 11 ]; then
        left=$(moved "$left" "$dx") right=$(moved "$right" "$dx")
        bottom=$(moved "$bottom" "$dy") top=$(moved "$top" "$dy")
    else
        case $column in 0) left=$(moved "$left" "$dx") ;; 2) right=$(moved "$right" "$dx") ;; esac
        case $row in 0) bottom=$(moved "$bottom" "$dy") ;; 2) top=$(moved "$top" "$dy") ;; esac
    fi
    check "$name: settings.dat is written at the release" wait_until 5 is_changed "$before"
    check "$name: it holds the frame's margins: $(margins)" wait_until 5 settings_are_the_frames
    check "$name: it holds six valid lines: $(paste -sd ' ' "$settings")" is_six_lines
    check "$name: config.js says the same" wait_until 5 configuration_is_the_files
    check "$name: the four fields show it" fields_are_the_files
}

start_display
mkdir "$workspace"
printf '20.0\n20.0\n30.0\n30.0\n0.0\n1' >"$settings"
start_host || { echo "FAIL  the window did not come up"; cat "$scratch/host.log"; exit 1; }
mkdir -p "$build/Testing"
read_page
echo "      the page is $page_w x $page_h points, the frame starts at $left $bottom to $right $top"
drag inside 1 1 12 -7
drag left 0 1 -9 11
drag right 2 1 14 -6
drag top 1 2 5 8
drag bottom 1 0 -4 -9
drag top-left 0 2 7 -5
drag top-right 2 2 -11 6
drag bottom-left 0 0 -6 13
drag bottom-right 2 0 10 -8

press_ok
check "the published settings are the last drag's" settings_are_the_frames
conclude
