#!/bin/bash
# Every public header opens with its purpose, an example and its thread rule. examples.awk says what
# an opening lacks; here it is tried on made-up headers, then on those of the program.
set -eu -o pipefail
tests=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$tests/../.." && pwd)
headers=$(mktemp -d)
trap 'rm -rf "$headers"' EXIT

complain() {
    echo "$*" >&2
    exit 1
}

# findings ROOT HEADER...: what the openings lack, a line each.
findings() {
    awk -v root="$1" -v report=1 -f "$tests/examples.awk" "${@:2}"
}

# header PATH OPENING
header() {
    mkdir -p "$headers/$(dirname "$1")"
    printf '%s\n#pragma once\n\n//   no example: the opening has ended. Any thread.\n' "$2" >"$headers/$1"
}

# expect PATH WHAT-IT-LACKS...
expect() {
    local path=$1 found wanted=
    shift
    found=$(findings "$headers" "$path")
    [ $# -eq 0 ] || wanted=$(printf "$path: %s\n" "$@")
    [ "$found" = "$wanted" ] || complain "$path: found '$found' instead of '$wanted'"
}

example='//   jet::Reader reader{bytes};'
table=$'//   offset  size  meaning\n//   0       2     length'
header good.h "// Reads bytes."$'\n//\n'"$example"$'\n//\n// Any thread may call.'
expect good.h
header wrapped.h "// Reads bytes."$'\n//\n'"$example"$'\n//\n// For the user-interface\n// thread.'
expect wrapped.h
header silent.h "// Reads bytes."$'\n//\n'"$example"
expect silent.h "no thread rule"
header dry.h "// Reads bytes. One thread at a time."
expect dry.h "no example"
header table.h "// Bytes. Any thread."$'\n//\n'"$table"
expect table.h "no example"
header both.h "// Bytes. Any thread."$'\n//\n'"$table"$'\n//\n'"$example"
expect both.h
header bare.h ""
expect bare.h "no purpose" "no example" "no thread rule"
header jet/format/page.h "// A page."$'\n//\n'"$table"
expect jet/format/page.h
header jet/format/bare.h "// A page."
expect jet/format/bare.h "no example" "no thread rule"

cd "$root"
mapfile -t all < <(find engine toolkit src tools -name '*.h' | sort)
[ ${#all[@]} -gt 100 ] || complain "only ${#all[@]} headers found"
code=0
while IFS= read -r finding; do
    echo "$finding" >&2
    code=1
done < <(findings "$root" "${all[@]}")
exit "$code"
