#!/bin/bash
# The time that the upgrade of an older file takes, beside copying the same file with sync, and the
# upgrade's greatest memory.
#
#   bench/upgrade.sh [ROWS [ROUNDS]]              1,000,000 rows, 5 rounds without arguments
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/../scripts/common.sh"

rows=${1:-1000000}
rounds=${2:-5}
need_packages "${build_packages[@]}" libbenchmark-dev time
build_tree native maketraces upgrade_bench

original=$build/bench-older-$rows.mdb
copy=$build/bench-copy.mdb
trap 'rm -f "$copy" "$copy-journal"' EXIT
[ -e "$original" ] ||
    "$build/native/bin/maketraces" "$original" --rows "$rows" --seed 1 --format older

milliseconds() { echo $(($(date +%s%N) / 1000000)); }
median() { sort -n | sed -n "$(((rounds + 1) / 2))p"; }

copies='' upgrades='' memory=0
for ((round = 0; round < rounds; ++round)); do
    rm -f "$copy"
    sync
    start=$(milliseconds)
    cp "$original" "$copy"
    sync "$copy"
    copies+="$(($(milliseconds) - start))"$'\n'

    start=$(milliseconds)
    kilobytes=$(/usr/bin/time -f %M "$build/native/bin/upgrade_bench" "$copy" 2>&1 >/dev/null)
    upgrades+="$(($(milliseconds) - start))"$'\n'
    [ "$kilobytes" -le "$memory" ] || memory=$kilobytes
done
copying=$(printf %s "$copies" | median)
upgrading=$(printf %s "$upgrades" | median)
echo "$rows rows, $(stat -c %s "$original") bytes, upgraded $(stat -c %s "$copy") bytes, median of $rounds:"
echo "copy with sync $copying ms, upgrade $upgrading ms ($((upgrading * 100 / copying)) %), $memory KB at most"
