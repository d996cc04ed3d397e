#!/bin/bash
# scripts/tidy.sh --recent in a small project: after each of these commits it has to check the
# sources and headers that the commit touched, whichever of the two builds compiles them.
set -eu -o pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
project=$(mktemp -d)
trap 'rm -rf "$project"' EXIT
cd "$project"

complain() {
    echo "$*" >&2
    exit 1
}

# build TREE SOURCE: a build that compiles one source.
build() {
    mkdir -p "build/$1"
    printf '[\n{\n  "directory": "%s",\n  "command": "c++ -c %s",\n  "file": "%s/%s"\n}\n]\n' \
        "$project/build/$1" "$project/$2" "$project" "$2" >"build/$1/compile_commands.json"
    printf 'rule compile\n  command = c++ -MD -MF $out.d -c $in -o $out\n  deps = gcc\n  depfile = $out.d\nbuild object.o: compile %s\n' \
        "$project/$2" >"build/$1/build.ninja"
}

# make TREE: so that ninja knows what the source includes.
make() {
    ninja -C "build/$1" --quiet
}

# commit FILE TEXT
commit() {
    mkdir -p "$(dirname "$1")"
    echo "$2" >"$1"
    git add "$1"
    git -c user.name=test -c user.email=test@example.com commit -qm "$1"
}

# expect GOOD|BAD CASE: what the check of the newest commit says.
expect() {
    local answer=GOOD
    scripts/tidy.sh --recent >output 2>&1 || answer=BAD
    [ "$answer" = "$1" ] || complain "$2: $answer instead of $1: $(cat output)"
}

mkdir scripts
cp "$root/scripts/tidy.sh" "$root/scripts/common.sh" scripts
cp "$root/.clang-tidy" .
build native engine/portable.cpp
build windows toolkit/window.cpp
git init -q
commit README.md "A project"

commit engine/portable.cpp "int portable() { return 1; }"
expect GOOD "a source of the native build only"
commit toolkit/window.cpp "int window() { return 1; }"
expect GOOD "a source of the Windows build only"
[ -e build/tidy/windows/toolkit/window.cpp.ok ] || complain "the source was not checked"
commit tests/window_test.cpp "typedef int test;"
expect GOOD "a source that is not the product's"
commit README.md "A small project"
expect GOOD "no source"

commit toolkit/window.cpp "typedef int window;"
expect BAD "a finding in a source of the Windows build"
grep -q '^toolkit/window.cpp' output || complain "the source is not named: $(cat output)"
commit engine/portable.cpp "typedef int number;"
expect BAD "a finding in a source of the native build"

commit toolkit/window.cpp "int window() { return 1; }"
commit engine/portable.cpp '#include "portable.h"'
commit engine/portable.h "int portable();"
make native
expect GOOD "a header of a source that the commit left alone"
commit engine/portable.h "typedef int number;"
expect BAD "a finding in a header"
grep -q '^engine/portable.cpp' output || complain "no source that includes it was checked: $(cat output)"
commit toolkit/alone.h "int alone();"
expect GOOD "a header that no source includes"
commit toolkit/alone.h "typedef int number;"
expect BAD "a finding in a header that no source includes"
