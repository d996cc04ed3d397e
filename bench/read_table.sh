#!/bin/bash
# Reads tblTraces whole and writes it as tab-separated text: jetsql on one thread and on two beside
# mdb-export, in turn on the same file. Prints each one's median and the ratios.
#
#   bench/read_table.sh [ROWS [ROUNDS]]          1,000,000 rows and 5 rounds without arguments
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/../scripts/common.sh"

rows=${1:-1000000}
rounds=${2:-5}
file=$build/bench-$rows.mdb
need_packages "${build_packages[@]}" mdbtools libbenchmark-dev
build_tree native jetsql maketraces
[ -e "$file" ] || "$build/native/bin/maketraces" "$file" --rows "$rows" --seed 1 --format older

# milliseconds COMMAND...
milliseconds() {
    local begin end
    begin=$(date +%s%N)
    "$@" >/dev/null
    end=$(date +%s%N)
    echo $(((end - begin) / 1000000))
}
median() { sort -n | sed -n "$(((rounds + 1) / 2))p"; }

jetsql() { milliseconds "$build/native/bin/jetsql" --threads "$1" "$file" 'SELECT * FROM tblTraces'; }
peer() { milliseconds mdb-export -d '	' -D '%Y-%m-%d %H:%M:%S' "$file" tblTraces; }

times=$(mktemp -d)
trap 'rm -rf "$times"' EXIT
peer >/dev/null # brings the file into memory
for ((round = 0; round < rounds; ++round)); do
    jetsql 1 >>"$times/one"
    jetsql 2 >>"$times/two"
    peer >>"$times/peer"
done
one=$(median <"$times/one") two=$(median <"$times/two") peer=$(median <"$times/peer")
echo "$rows rows, median of $rounds: mdb-export $peer ms, jetsql $one ms on one thread, $two ms on two"
awk -v peer="$peer" -v one="$one" -v two="$two" \
    'BEGIN { printf "ratio: %.1f on one thread, %.1f on two\n", peer / one, peer / two }'
