#!/bin/sh
# Builds the fuzzers with clang and runs each for a while on top of its saved inputs.
#
#   scripts/fuzz.sh [SECONDS [NAME...]]
#
# New inputs are kept in build/fuzz/found/NAME; what goes wrong is left in build/fuzz as crash-*,
# timeout-* or oom-*. An input that showed a defect belongs into tests/fuzz/corpus/NAME.
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-60}
[ $# -gt 0 ] && shift
build=${VORELLE_FUZZ_BUILD:-build/fuzz}

cmake --preset native-asan -B "$build" -DVORELLE_FUZZ=ON -DVORELLE_BENCH=OFF \
    -DCMAKE_C_COMPILER="${CC:-clang-14}" -DCMAKE_CXX_COMPILER="${CXX:-clang++-14}" >/dev/null
if [ $# -eq 0 ]; then
    set -- $(ls tests/fuzz | sed -n 's/_fuzz\.cpp$//p')
fi
for name in "$@"; do
    ninja -C "$build" "${name}_fuzz" >/dev/null
    mkdir -p "$build/found/$name"
    echo "== $name"
    (cd "$build" && timeout -k 5 $((seconds + 60)) "bin/${name}_fuzz" -max_total_time="$seconds" \
        -timeout=10 -rss_limit_mb=1024 -malloc_limit_mb=64 -print_final_stats=1 \
        "found/$name" "$OLDPWD/tests/fuzz/corpus/$name" 2>&1 | grep -E \
        'ERROR|SUMMARY|violated|Test unit|number_of_executed|DONE' || true)
done
