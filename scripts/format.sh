#!/bin/bash
# Formats all sources; with --check only says which are not formatted (exit 1).
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
need_packages clang-format-14

mode=(-i)
[ "${1:-}" = --check ] && mode=(--dry-run -Werror)
cd "$root"
find engine toolkit src tools tests bench \( -name '*.h' -o -name '*.cpp' \) -print0 |
    xargs -0 -r clang-format-14 --style=file "${mode[@]}"
