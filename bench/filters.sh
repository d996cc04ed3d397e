#!/bin/bash
# The unique traces and the filter of an older file that cannot be upgraded, beside an upgraded copy.
#
#   bench/filters.sh [ROWS [ROUNDS]]              1,000,000 rows, 5 rounds without arguments
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/../scripts/common.sh"

rows=${1:-1000000}
rounds=${2:-5}
need_packages "${build_packages[@]}" libbenchmark-dev
build_tree native maketraces upgrade_bench filters_bench

original=$build/bench-older-$rows.mdb
upgraded=$build/bench-upgraded.mdb
evidence=$build/bench-evidence.mdb
trap 'rm -f "$upgraded" "$upgraded-journal" "$evidence"' EXIT
[ -e "$original" ] ||
    "$build/native/bin/maketraces" "$original" --rows "$rows" --seed 1 --format older
cp "$original" "$upgraded"
cp "$original" "$evidence"
chmod a-w "$evidence"
"$build/native/bin/upgrade_bench" "$upgraded"

for ((round = 0; round < rounds; ++round)); do # in turn, so that both meet the same noise
    for file in "$upgraded" "$evidence"; do
        echo "$(basename "$file"):"
        "$build/native/bin/filters_bench" "$file" | sed 's/^/    /'
    done
done
cmp "$original" "$evidence" && echo "the file that cannot be upgraded has not changed"
