#!/usr/bin/env bash
# tests/e2e/links.sh BUILD_FOLDER
# Edits the list of links with the real mouse and keyboard, in the host's window on a virtual display with a window
# manager: adds three links, recolours the heading, moves one link up, removes one, presses OK, and compares
# linklist.xml and the decoded bookPlugin.js with what was typed. Prints every check. Leaves pictures at
# BUILD_FOLDER/Testing/links-editor.png and links-chooser.png.
# Exit status: 0 all held, 1 some did not, 77 a tool is missing.
set -euo pipefail

# shellcheck source=tests/e2e/session.sh
. "$(dirname "${BASH_SOURCE[0]}")/session.sh"

type_into() { # type_into FIELD TEXT
    click "$1"
    xdotool key ctrl+a type --delay 20 -- "$2"
}
in_document() { grep -qF -- "$1" "$workspace/linklist.xml"; }
is_gone() { ! in_document "$1"; }
is_everywhere() { [ "$(xdotool search --onlyvisible --name '^Color$' get_desktop_for_window 2>/dev/null)" = -1 ]; }
forget() { sed -i "/^$1 /d" "$geometry"; }
# before A B: A stands before B in the document.
before() { awk -v RS='\0' -v a="$1" -v b="$2" '{ exit !(index($0, a) && index($0, a) < index($0, b)) }' "$workspace/linklist.xml"; }
click_row() {
    local at
    at=$(row_at "$1")
    # shellcheck disable=SC2086 # two words
    xdotool mousemove --sync $at click 1
}

add() { # add TITLE LINK WRITTEN-TITLE WRITTEN-LINK
    click btnAdd
    check "a new link is saved at once" wait_until 5 in_document '<title type="text">title</title>'
    type_into txtContent "$1"
    type_into txtLink "$2"
    xdotool key Return
    check "the title $1 is on disk" wait_until 5 in_document ">$3</title>"
    check "the link $2 is on disk as $4" wait_until 5 in_document ">$4</link>"
}

start_display
start_host || { echo "FAIL  the window did not come up"; cat "$scratch/host.log"; exit 1; }
grow
mkdir -p "$build/Testing"

add 'Tom & "Jerry"' 'example.com/a b' 'Tom &amp; "Jerry"' 'http://example.com/a%20b'
add '<b>bold</b>' 'https://example.com/?q=1' '&lt;b&gt;bold&lt;/b&gt;' 'https://example.com/?q=1'
add 'Last one' 'mailto:me' 'Last one' 'http://mailto:me'
import -window root "$build/Testing/links-editor.png"

click btnTitleFontColor
check "the colour chooser opens" wait_until 10 shows txtColorValue
check "it stands on every workspace" wait_until 5 is_everywhere
type_into txtColorValue '0x1E6B52'
sleep 0.5
import -window root "$build/Testing/links-chooser.png"
click btnColorChoose
check "the heading's colour is on disk" wait_until 5 in_document '<color type="color">0x1E6B52</color>'

check "the last link stands below the bold one" before 'bold' 'Last one'
click btnMoveUp
check "it moves up" wait_until 5 before 'Last one' 'bold'

click_row 0
click btnRemove
check "removing asks" wait_until 10 shows btnAlertSecond
click btnAlertSecond
sleep 0.3
check "Cancel keeps the link" in_document 'About the author'
forget btnAlertFirst
click btnRemove
check "removing asks again" wait_until 10 shows btnAlertFirst
click btnAlertFirst
check "OK removes it" wait_until 5 is_gone 'About the author'

press_ok
cat >"$scratch/compare.mjs" <<'SCRIPT'
import { readFileSync } from 'node:fs';
const { properties: { extended } } = JSON.parse(readFileSync(0, 'utf8'));
const told = JSON.stringify([extended.title.color, extended.body.content.map(({ title, link }) => [title, link])]);
const typed = JSON.stringify(['#1E6B52', [
  ['More from this series', 'http://example.com/series'],
  ['Write to us', 'http://example.com/contact'],
  ['Tom & "Jerry"', 'http://example.com/a%20b'],
  ['Last one', 'http://mailto:me'],
  ['<b>bold</b>', 'https://example.com/?q=1'],
]]);
if (told !== typed) {
  console.log(`      published ${told}\n      typed     ${typed}`);
  process.exit(1);
}
SCRIPT
published_is_typed() { node "$tests/js/evaluate.mjs" "$workspace/bookPlugin.js" | node "$scratch/compare.mjs"; }
check "the published configuration is what was typed" published_is_typed
conclude
