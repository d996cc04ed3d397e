#!/bin/bash
# Runs clang-tidy over the product's sources and headers: portable ones as the native build compiles
# them, the rest as the Windows build does. Both builds must have been made before; a source is
# checked again when it, a header it includes or the list of checks has changed. A header is checked
# with a source that includes it, or by itself if there is none.
#
#   scripts/tidy.sh [PATH-PATTERN]      all files, or those whose path matches the pattern
#   scripts/tidy.sh --recent            those that the newest commit or the work since has touched
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
need_packages clang-tidy-14 "${build_packages[@]}"

stamps=$build/tidy
pattern=${1:-}
if [ "$pattern" = --recent ]; then
    # Ten minutes on two cores for all of them are too long for every run; each commit's are not.
    cd "$root"
    pattern=$({ git diff --name-only HEAD~1 2>/dev/null || true; } | { grep -E '\.(cpp|h)$' || true; } | paste -sd'|' -)
    [ -n "$pattern" ] || exit 0
    pattern="^($pattern)\$"
fi
gcc_headers=$(x86_64-w64-mingw32-g++-posix -print-file-name=include)/c++
windows_arguments=(--target=x86_64-w64-windows-gnu
    -isystem "$gcc_headers" -isystem "$gcc_headers/x86_64-w64-mingw32")
export stamps root build

# chosen: of the paths on stdin those of the product that the pattern names.
chosen() {
    { grep -E '^(engine|toolkit|src|tools)/' || true; } | { grep -E "$pattern" || true; } | sort -u
}

# compile_commands TREE: how the tree compiles, for clang: without g++'s precompiled headers, which
# it cannot read.
compile_commands() {
    mkdir -p "$stamps/$1"
    sed 's/ -Winvalid-pch//; s/ -include [^ "]*cmake_pch\.hxx//' "$build/$1/compile_commands.json" \
        >"$stamps/$1/compile_commands.json"
}

# sources TREE: the files that the tree compiles, relative to the root.
sources() {
    sed -n "s|^  \"file\": \"$root/\(.*\)\".*|\1|p" "$build/$1/compile_commands.json" | sort -u
}

# parts TREE: a line "SOURCE<tab>FILE" for every file of the project that a source is made of. Ninja
# knows what each object was made of; the source comes first. Paths seen from the tree are a compiler
# cache's.
parts() {
    ninja -C "$build/$1" -t deps | awk -v root="$root/" '
        /^[^ ]/ { source = ""; next }
        { sub(/^    \.\.\/\.\.\//, "    " root) }
        index($0, "    " root) == 1 {
            path = substr($0, 5 + length(root))
            if (path ~ /^build\//) next
            if (source == "") source = path
            print source "\t" path
        }'
}

# covering TREE: the sources on stdin and further ones of the product, as few as will do, that
# include the headers in the file $headers. Those that no source includes stay in that file.
covering() {
    local rest=$headers.rest
    : >"$rest"
    awk -F'\t' -v rest="$rest" '
        FILENAME == ARGV[1] { need[$1]; next }
        FILENAME == ARGV[2] { print; taken[$1]; next }
        $1 !~ /^(engine|toolkit|src|tools)\/.*\.cpp$/ || !($2 in need) { next }
        $1 in taken { covered[$2]; next }
        !(($1, $2) in seen) { seen[$1, $2]; includes[$1] = includes[$1] "\t" $2 }
        END {
            for (header in covered) delete need[header]
            for (;;) {
                best = ""
                most = 0
                for (source in includes) {
                    count = 0
                    n = split(substr(includes[source], 2), list, "\t")
                    for (i = 1; i <= n; ++i) if (list[i] in need) ++count
                    if (count > most || (count == most && count && source < best)) {
                        best = source
                        most = count
                    }
                }
                if (!most) break
                print best
                n = split(substr(includes[best], 2), list, "\t")
                for (i = 1; i <= n; ++i) delete need[list[i]]
                delete includes[best]
            }
            for (header in need) print header >rest
        }' "$headers" - <(parts "$1")
    mv "$rest" "$headers"
}

# changed TREE: of the sources on stdin those whose last good check is older than something they
# are made of.
changed() {
    local file part
    declare -A parts=()
    while IFS=$'\t' read -r file part; do
        parts[$file]+=$part$'\n'
    done < <(parts "$1")
    while read -r file; do
        local stamp=$stamps/$1/$file.ok fresh=yes
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
    # Some of g++'s own warnings, and a header that is checked by itself.
    local extra=(--extra-arg=-Wno-unknown-warning-option --extra-arg=-Wno-pragma-once-outside-header)
    shift 2
    for argument in "$@"; do extra+=("--extra-arg=$argument"); done
    mkdir -p "${stamp%/*}"
    : >"$stamp.new" # changes from here on count as later than the check
    if output=$(timeout -k 2 300 clang-tidy-14 --quiet -p "$stamps/$tree" "${extra[@]}" \
        "$root/$file" 2>&1); then
        mv "$stamp.new" "$stamp"
    else
        printf '%s\n%s\n' "$file" "$output"
        rm -f "$stamp" "$stamp.new"
        return 1
    fi
}
export -f check

# check_all TREE [ARGUMENT...]: the files on stdin, as many at a time as there are cores.
check_all() {
    local tree=$1
    shift
    # shellcheck disable=SC2016  # expanded by the inner shell
    xargs -r -P "$(nproc)" -d '\n' -I {} \
        bash -c 'file=$1; tree=$2; shift 2; check "$tree" "$file" "$@"' - {} "$tree" "$@"
}

code=0
compile_commands native
compile_commands windows
headers=$(mktemp)
trap 'rm -f "$headers" "$headers".*' EXIT
(cd "$root" && find . -path ./build -prune -o -name '*.h' -print) | sed 's|^\./||' | chosen >"$headers"
sources native | chosen | covering native >"$headers.native"
comm -13 <(sources native) <(sources windows) | chosen | covering windows >"$headers.windows"
changed native <"$headers.native" | check_all native || code=1
{
    changed windows <"$headers.windows"
    cat "$headers"
} | check_all windows "${windows_arguments[@]}" || code=1
exit "$code"
