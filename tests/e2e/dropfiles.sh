#!/usr/bin/env bash
# tests/e2e/dropfiles.sh BUILD_FOLDER
# Drags files with the real mouse from one program's window onto the drop target of another's, on a virtual display with
# a window manager: pictures among other files, a name with a line break, a remote address, nothing that is accepted,
# and a drag that turns back. Then clicks through the drop target on the button beneath it. Prints every check. Leaves a
# picture of the hovering drag at BUILD_FOLDER/Testing/dropfiles-hover.png.
# Exit status: 0 all held, 1 some did not, 77 a tool is missing.
set -euo pipefail

# shellcheck source=tests/e2e/session.sh
. "$(dirname "${BASH_SOURCE[0]}")/session.sh"

export XDG_RUNTIME_DIR=$scratch/runtime QT_QPA_PLATFORM=xcb
mkdir -m 0700 "$XDG_RUNTIME_DIR"

heard() { grep -qxF -- "$1" "$scratch/target.log"; }
heard_times() { [ "$(grep -cxF -- "$1" "$scratch/target.log")" = "$2" ]; }
answered() { [ "$(grep -v '^window ' "$scratch/source.log" | paste -sd ' ')" = "$1" ]; } # the answers so far
is_up() { grep -qs '^window ' "$1"; }
centre() { # centre LOG: the middle of its program's window, where it is now
    awk '$1 == "window" { place = int($2 + $4 / 2) " " int($3 + $5 / 2) } END { print place }' "$1"
}

move_slowly() { # move_slowly X Y: from where the pointer is, as a hand does
    local x y step
    eval "$(xdotool getmouselocation --shell | grep -E '^[XY]=')"
    x=$X y=$Y
    for step in 1 2 3 4 5 6 7 8 9 10 11 12; do
        xdotool mousemove $((x + ($1 - x) * step / 12)) $((y + ($2 - y) * step / 12))
        sleep 0.03
    done
}
click_there() { xdotool mousemove "$x" "$y" click 1; } # --sync would wait where the pointer is there already
drag_to() { # drag_to X Y: presses on the source and goes there, without letting go
    read -r from_x from_y <<<"$(centre "$scratch/source.log")"
    xdotool mousemove --sync "$from_x" "$from_y" mousedown 1
    move_slowly "$1" "$2"
    sleep 0.3
}

mkdir -p "$build/Testing" "$scratch/folder"
touch "$scratch/a.JPG" "$scratch/b.txt" "$scratch/two"$'\n'"lines.jpg"
ln -s "$scratch/b.txt" "$scratch/link.png"
pictures=("file://$scratch/a.JPG" "file://$scratch/b.txt" "https://example.com/r.jpg" "file://$scratch/folder"
    "file://$scratch/two%0Alines.jpg" "file://$scratch/link.png")

start_display
"$build/tests/e2e_droptarget" >"$scratch/target.log" 2>"$scratch/target.err" &
processes+=($!)
"$build/tests/e2e_dragsource" "${pictures[@]}" + "${pictures[@]}" + "file://$scratch/b.txt" + "https://example.com/r.jpg" \
    >"$scratch/source.log" 2>"$scratch/source.err" &
processes+=($!)
for program in target source; do
    wait_until 30 is_up "$scratch/$program.log" || { echo "FAIL  no $program came up"; cat "$scratch/$program.err"; exit 1; }
done
sleep 0.5 # for the window manager to place them
read -r x y <<<"$(centre "$scratch/target.log")"

click_there
check "a click on the drop target reaches the button beneath" wait_until 5 heard clicked
drag_to "$x" "$y"
check "the frame is drawn while files hover" wait_until 5 heard 'highlight 1'
import -window root "$build/Testing/dropfiles-hover.png"
xdotool mouseup 1
check "the accepted files arrive in their order" wait_until 5 heard \
    "dropped $scratch/a.JPG $scratch/folder $scratch/two%0Alines.jpg $scratch/link.png"
check "the frame goes with the drop" wait_until 5 heard 'highlight 0'
check "the source is told that they were copied" wait_until 5 answered "copy"
click_there
check "after the drop clicks reach the button again" wait_until 5 heard_times clicked 2

drag_to "$x" "$y"
check "the frame is drawn again" wait_until 5 heard_times 'highlight 1' 2
move_slowly "$from_x" "$from_y"
check "the frame goes when the drag leaves" wait_until 5 heard_times 'highlight 0' 2
xdotool mouseup 1
check "dropped elsewhere, they are refused" wait_until 5 answered "copy refused"
click_there
check "after the drag left clicks reach the button again" wait_until 5 heard_times clicked 3

drag_to "$x" "$y"
xdotool mouseup 1
check "files of other types are let go" wait_until 5 heard_times 'highlight 0' 3
click_there
check "and clicks reach the button again" wait_until 5 heard_times clicked 4

drag_to "$x" "$y"
xdotool mouseup 1
# The toolkit tells a source what was offered last, also when the drop was then refused.
check "remote addresses are refused" wait_until 5 answered "copy refused copy refused"

drops=$(grep -c '^dropped' "$scratch/target.log")
check "nothing but the first drop was taken" test "$drops" = 1
check "all files are where they were" test -e "$scratch/a.JPG" -a -e "$scratch/b.txt" -a -L "$scratch/link.png"
conclude
