#!/usr/bin/env bash
# Whether scripts/leftovers tells each thing that a command leaves behind, and clears it away. Prints what is wrong.
set -euo pipefail
# shellcheck source=scripts/leftovers
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/leftovers"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
temporary=$folder/tmp
mistakes=0

mistaken() {
    echo "$1"
    sed 's/^/    /' "$folder/said"
    mistakes=$((mistakes + 1))
}

# expect STATUS WHAT-IS-SAID SCRIPT: the status of the script's run, and a pattern for the last line about it.
expect() {
    local status=0
    leaving_nothing "$temporary" bash -c "$3" >"$folder/said" 2>&1 || status=$?
    [ "$status" = "$1" ] || mistaken "status $status and not $1: $3"
    # shellcheck disable=SC2053 # a pattern
    [[ $(tail -n 1 "$folder/said") == $2 ]] || mistaken "does not say $2: $3"
    [ ! -e "$temporary" ] || mistaken "leaves the temporary folder: $3"
}

expect 0 '' 'true'
expect 3 '' 'exit 3'
expect 0 '' 'touch "$TMPDIR/file" && rm "$TMPDIR/file"'
expect 1 "file $temporary/a file" 'touch "$TMPDIR/a file"'
expect 3 "file $temporary/.hidden" 'mkdir "$TMPDIR/.hidden"; exit 3'
expect 0 '' 'sleep 0.5 >/dev/null 2>&1 &'
expect 1 'process * sleep 3600 ' 'sleep 3600 >/dev/null 2>&1 & echo $! >'"'$folder/id'"
lives() { kill -0 "$(<"$folder/id")" 2>/dev/null; }
for try in {1..300}; do
    lives || break
    sleep 0.1
done
[ "$try" -lt 300 ] || mistaken "a process lives on"

# Where a socket's path would be too long.
temporary=$folder/$(printf '%070d' 0)
expect 0 '/*' 'test -d "$TMPDIR" && echo "$TMPDIR"'
other=$(<"$folder/said")
[ ${#other} -le 62 ] || mistaken "a temporary folder of too long a name"
[ ! -e "$other" ] || mistaken "leaves the other temporary folder"

[ "$mistakes" = 0 ]
