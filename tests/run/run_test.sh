#!/bin/bash
# Opens a database of 418 traces with ./run on a virtual screen, as somebody without a display
# would, and looks at what it says and shows. Exit 77: the database is not here.
set -eu -o pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
original=${VORELLE_TESTDATA:-$root/../shared/testdata}/old-basic.mdb
[ -f "$original" ] || exit 77

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
database="$folder/a name - with blanks.mdb"
cp "$original" "$database"
chmod u+w "$database"

complain() {
    echo "$*" >&2
    exit 1
}

unset DISPLAY WAYLAND_DISPLAY
code=0
"$root/run" "$database" 2>&1 | tee "$folder/output" || code=$?
[ "$code" -eq 0 ] || complain "./run ended with $code"
grep -q '^Status bar: .* of 418 ' "$folder/output" || complain "the status bar is not as expected"

screenshot=$(sed -n 's/^Screenshot: //p' "$folder/output")
[ "$screenshot" -nt "$database" ] || complain "there is no new screenshot"
read -r size colours < <(identify -format '%wx%h %k\n' "$screenshot")
[ "$size" = 1280x1024 ] || complain "the screenshot is $size"
[ "$colours" -gt 10 ] || complain "the screenshot has $colours colours only"
