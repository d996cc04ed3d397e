#!/bin/bash
# Looks for texts in all records, the case of letters ignored, beside grep -i -F on the exported text
# in a UTF-8 locale: one that no record has, one that few have and one that four of five have. The
# records are sorted so that those which are looked at first have none of them: every search goes
# through the whole file. Prints the median of each in milliseconds and the ratios.
#
#   bench/find.sh [ROWS [ROUNDS]]          1,000,000 rows and 5 rounds without arguments
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/../scripts/common.sh"

rows=${1:-1000000}
rounds=${2:-5}
file=$build/bench-find-$rows.mdb
text=$build/bench-find-$rows.txt
need_packages "${build_packages[@]}" libbenchmark-dev
build_tree native jetsql maketraces find_time
bin=$build/native/bin
if [ ! -e "$text" ]; then
    rm -f "$file"
    "$bin/maketraces" "$file" --rows "$rows" --seed 1 --format older
    "$bin/jetsql" "$file" "UPDATE tblTraces SET Port = 9999, Trace = '-' WHERE TraceNumber < 1300" \
        >/dev/null
    "$bin/jetsql" "$file" 'SELECT Trace FROM tblTraces' >"$text"
fi

median() { sort -n | sed -n "$(((rounds + 1) / 2))p"; }

# milliseconds COMMAND...: the median of as many runs as there are rounds.
milliseconds() {
    local begin end round
    for ((round = 0; round < rounds; ++round)); do
        begin=$(date +%s%N)
        # Into a file: grep ends at the first match when nobody listens. Nothing found is no failure.
        "$@" >"$build/bench-find.out" || true
        end=$(date +%s%N)
        echo $(((end - begin) / 1000000))
    done | median
}

sparse_time=
for wanted in 'no trace says this' 'extension 4603' 're'; do
    count=$(grep -c -i -F "$wanted" "$text" || true)
    peer=$(milliseconds grep -c -i -F "$wanted" "$text")
    time=$("$bin/find_time" "$file" "$wanted" 'Port DESC' "$rounds" | cut -d' ' -f2)
    [ "$wanted" = 'extension 4603' ] && sparse_time=$time
    awk -v wanted="$wanted" -v count="$count" -v rows="$rows" -v peer="$peer" -v time="$time" \
        -v sparse="$sparse_time" 'BEGIN {
            printf "\"%s\" (%.1f %% of the records): grep %d ms, find %.1f ms, ratio %.1f", wanted,
                100 * count / rows, peer, time, peer / time
            if (sparse != "" && sparse != time) printf ", %.2f times the sparse search", time / sparse
            print "" }'
done
