#!/bin/bash
# The time in which the trace grid paints a whole frame of 1280 by 900 pixels, and a page further
# down, under Wine, with a million rows.
#
#   bench/grid_frame.sh [FRAMES]                  60 frames without an argument
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/../scripts/common.sh"

frames=${1:-60}
need_packages "${build_packages[@]}" "${wine_packages[@]}" libbenchmark-dev
build_tree native maketraces
build_tree windows VorelleDiagnosticViewer windowprobe
"$root/scripts/wine-prefix.sh" test
use_wine test
trap stop_wine EXIT

file=$build/bench-newer-1000000.mdb
[ -e "$file" ] || "$build/native/bin/maketraces" "$file" --rows 1000000 --seed 1 --format newer
probe() { timeout -k 2 150 wine "$build/windows/bin/windowprobe.exe" "$@"; }
(probe open "$(windows_path "$build/windows/bin/VorelleDiagnosticViewer.exe")" \
    "$(windows_path "$file")" >/dev/null 2>&1 &)
until probe wait-loaded 60; do sleep 0.2; done
probe resize 1280 900
read -r paint page < <(probe frame "$frames")
probe close
echo "1000000 rows, median of $frames: all painted anew in $paint ms, a page further down in $page ms"
