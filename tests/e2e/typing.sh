#!/usr/bin/env bash
# tests/e2e/typing.sh BUILD_FOLDER
# Types a long heading with the real keyboard while the preview refreshes fifty times and more, on a virtual display
# with a window manager, and looks at the preview on the screen all the while: not one character may be lost, and no
# picture may be blank. Then prints how long it takes from a key to new pixels. Prints every check. Leaves pictures at
# BUILD_FOLDER/Testing/typing.png and, where one was blank, typing-blank.png.
# Exit status: 0 all held, 1 some did not, 77 a tool is missing.
set -euo pipefail

# shellcheck source=tests/e2e/session.sh
. "$(dirname "${BASH_SOURCE[0]}")/session.sh"

previews() { grep -c '^preview loaded' "$geometry"; }
now() { date +%s%3N; }
heading_is() { grep -qF -- "<content type=\"text\">$1</content>" "$workspace/linklist.xml"; }
first_change_after() { awk -v since="$1" '$1 ~ /^[0-9]+$/ && $1 > since { print $1; exit }' "$scratch/watch"; }
changed_after() { [ -n "$(first_change_after "$1")" ]; }
# Nothing on the screen has changed for a second.
stands_still() { [ $(($(now) - $(awk '$2 == "changed" { t = $1 } END { print t }' "$scratch/watch"))) -gt 1000 ]; }

start_display
start_host || { echo "FAIL  the window did not come up"; cat "$scratch/host.log"; exit 1; }
mkdir -p "$build/Testing"
rm -f "$build/Testing/typing-blank.png"
sleep 1 # the first page is painted

read -r x y w h <<<"$(place iWebView)"
"$build/tests/e2e_watch" "$x" "$y" "$w" "$h" "$build/Testing/typing-blank.png" >"$scratch/watch" 2>"$scratch/watch.log" &
watch=$!
processes+=("$watch")
check "the preview is looked at" wait_until 10 test -s "$scratch/watch"

click txtTitleContent
xdotool key ctrl+a
# Each word takes longer to type than the preview's timer, and the next one waits until it has been loaded.
words='' refreshes=0
loaded_since() { [ "$(previews)" -ge $(($1 + 2)) ]; }
while [ "$refreshes" -lt 50 ]; do
    before=$(previews)
    xdotool type --delay 50 -- "word $refreshes "
    words+="word $refreshes "
    wait_until 20 loaded_since "$before" || break
    refreshes=$((refreshes + 1))
done
echo "      ${#words} characters"
check "fifty refreshes came while typing" test "$refreshes" = 50
check "every character is on disk" wait_until 5 heading_is "$words"
check "the preview comes to rest" wait_until 20 stands_still
import -window root "$build/Testing/typing.png"

# The heading is a letter now, once more and once less: each is seen.
xdotool key ctrl+a type M
check "the preview comes to rest again" wait_until 20 stands_still
times=()
for key in M BackSpace M BackSpace M BackSpace M BackSpace M BackSpace; do
    since=$(now)
    xdotool key "$key"
    wait_until 10 changed_after "$since" || break
    times+=($(($(first_change_after "$since") - since)))
    wait_until 20 stands_still
done
check "every key is seen" test "${#times[@]}" = 10
echo "      from a key to new pixels on the screen, milliseconds: $(printf '%s\n' "${times[@]}" | sort -n | paste -sd ' ')"

kill "$watch"
wait "$watch" || true
echo "      $(tail -n 1 "$scratch/watch")"
check "no picture of the preview was blank" grep -q ' pictures, 0 of them blank' "$scratch/watch"

press_ok
conclude
