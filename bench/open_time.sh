#!/bin/bash
# The time from the start of the program to the first painted page and to the complete load, under
# Wine, for a small and a large file. Prints each round and the medians.
#
#   bench/open_time.sh [ROUNDS]                   5 rounds without arguments
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/../scripts/common.sh"

rounds=${1:-5}
need_packages "${build_packages[@]}" "${wine_packages[@]}" libbenchmark-dev
build_tree native maketraces
build_tree windows VorelleDiagnosticViewer windowprobe keeper
"$root/scripts/wine-prefix.sh" test
use_wine test
trap stop_wine EXIT
(setsid wine "$build/windows/bin/keeper.exe" >/dev/null 2>&1 &)

median() { sort -n | sed -n "$(((rounds + 1) / 2))p"; }

program=$(windows_path "$build/windows/bin/VorelleDiagnosticViewer.exe")
for rows in 10000 1000000; do
    file=$build/bench-newer-$rows.mdb
    [ -e "$file" ] ||
        "$build/native/bin/maketraces" "$file" --rows "$rows" --seed 1 --format newer
    times=''
    for ((round = 0; round <= rounds; ++round)); do # the first one warms up and does not count
        now=$(timeout -k 2 150 wine "$build/windows/bin/windowprobe.exe" time "$program" \
            "$(windows_path "$file")")
        [ "$round" -eq 0 ] || times+="$now"$'\n'
    done
    page=$(awk 'NF { print $1 }' <<<"$times" | median)
    all=$(awk 'NF { print $2 }' <<<"$times" | median)
    echo "$rows rows, median of $rounds: first page after $page ms, loaded after $all ms"
done
