#!/bin/bash
# Runs clang-tidy over the product's sources: portable ones as the native build compiles them, the
# rest as the Windows build does. Both builds must have been made before; a source is checked
# again when it, a header it includes or the list of checks has changed.
#
#   scripts/tidy.sh [PATH-PATTERN]      all sources, or those whose path matches the pattern
#   scripts/tidy.sh --recent            those that the newest commit or the work since has touched
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
need_packages clang-tidy-14 "${build_packages[@]}"

stamps=$build/tidy
pattern=${1:-}
if [ "$pattern" = --recent ]; then
    # Ten minutes on two cores for all of them are too long for every run; each commit's are not.
    cd "$root"
    pattern=$({ git diff --name-only HEAD~1 2>/dev/null || true; } | { grep '\.cpp$' || true; } | paste -sd'|' -)
    [ -n "$pattern" ] || exit 0
    pattern="^($pattern)\$"
fi
gcc_headers=$(x86_64-w64-mingw32-g++-posix -print-file-name=include)/c++
windows_arguments=(--target=x86_64-w64-windows-gnu
    -isystem "$gcc_headers" -isystem "$gcc_headers/x86_64-w64-mingw32")
export stamps root build

# sources TREE: the product's files that the tree compiles and the pattern names, relative to the
# root. A tree may well have none of the named ones.
sources() {
    sed -n 's/^  "file": "\(.*\)".*/\1/p' "$build/$1/compile_commands.json" |
        sed -n "s|^$root/||p" | grep -E '^(engine|toolkit|src|tools)/' |
        { grep -E "$pattern" || true; } | sort -u
}

# changed TREE: of the sources on stdin those whose last good check is older than something they
# are made of. Ninja knows what each object was made of; the source comes first. Paths seen from the
# tree are a compiler cache's.
changed() {
    local file
    declare -A parts=()
    while IFS=$'\t' read -r file part; do
        parts[$file]+=$part$'\n'
    done < <(ninja -C "$build/$1" -t deps | awk -v root="$root/" '
        /^[^ ]/ { source = ""; next }
        { sub(/^    \.\.\/\.\.\//, "    " root) }
        index($0, "    " root) == 1 {
            path = substr($0, 5 + length(root))
            if (source == "") source = path
            print source "\t" path
        }')
    while read -r file; do
        local stamp=$stamps/$1/$file.ok part fresh=yes
        [ -n "${parts[$file]:-}" ] && [ "$stamp" -nt "$root/.clang-tidy" ] || fresh=no
        while [ "$fresh" = yes ] && read -r part; do
            [ -z "$part" ] || [ "$stamp" -nt "$root/$part" ] || fresh=no
        done <<<"${parts[$file]:-}"
        [ "$fresh" = yes ] || printf '%s\n' "$file"
    done
}

# check TREE FILE [ARGUMENT...]: prints findings; a good file leaves a stamp.
# shellcheck disable=SC2317  # called by the shells that xargs starts
check() {
    local tree=$1 file=$2 stamp=$stamps/$1/$2.ok output argument
    local extra=(--extra-arg=-Wno-unknown-warning-option) # some of g++'s own
    shift 2
    for argument in "$@"; do extra+=("--extra-arg=$argument"); done
    mkdir -p "${stamp%/*}"
    : >"$stamp.new" # changes from here on count as later than the check
    if output=$(timeout -k 2 300 clang-tidy-14 --quiet -p "$build/$tree" "${extra[@]}" \
        "$root/$file" 2>&1); then
        mv "$stamp.new" "$stamp"
    else
        printf '%s\n%s\n' "$file" "$output"
        rm -f "$stamp" "$stamp.new"
        return 1
    fi
}
export -f check

# check_all TREE [ARGUMENT...]: the changed sources on stdin, as many at a time as there are cores.
check_all() {
    local tree=$1
    shift
    # shellcheck disable=SC2016  # expanded by the inner shell
    changed "$tree" | xargs -r -P "$(nproc)" -d '\n' -I {} \
        bash -c 'file=$1; tree=$2; shift 2; check "$tree" "$file" "$@"' - {} "$tree" "$@"
}

code=0
sources native | check_all native || code=1
comm -13 <(sources native) <(sources windows) | check_all windows "${windows_arguments[@]}" || code=1
exit "$code"
