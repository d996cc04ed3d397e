#!/bin/sh
# Makes engine/jet/collation_data.inc out of a table of character weights.
#
#   scripts/make-collation-data.sh weights.tsv > engine/jet/collation_data.inc
#
# The input is tab-separated, a header line first, then a line for each range of UTF-16 code units:
#
#   from, to   first and last unit, hex
#   class      simple, intl, intlx, surrogate: weights; modifier, unprint: none; ignored: nothing
#   inline     weights of the first unit, hex
#   step       what the inline bytes, read as one number, grow by from unit to unit
#   weights    how many weights the inline bytes are
#   extra      accent bytes (intl, intlx, surrogate) or what a modifier adds, hex
#   code       of unprint: its code; of intlx: its flag
#
# The notation that comes out is described in engine/jet/collation_weights.cpp.
set -eu

[ $# -eq 1 ] || { echo "usage: $0 weights.tsv" >&2; exit 2; }

echo '// Made by scripts/make-collation-data.sh. The notation is described in collation_weights.cpp.'
awk -F '\t' '
function hex(text,    i, value) {
    value = 0
    for (i = 1; i <= length(text); ++i)
        value = value * 16 + index("0123456789ABCDEF", substr(text, i, 1)) - 1
    return value
}

# The second byte of a weight runs from 02 to FF, so a step can carry.
function rank(weight) {
    return length(weight) == 4 ? hex(substr(weight, 1, 2)) * 254 + hex(substr(weight, 3)) - 2 \
                               : hex(weight)
}

function addUnit(unit, class, weight, count, extra, code) {
    kind[unit] = class
    step[unit] = count == 1
    if (class == "ignored") return
    if (class == "modifier") { first[unit] = "^" extra; value[unit] = hex(extra); step[unit] = 1 }
    else if (class == "unprint") { first[unit] = "!" code; value[unit] = hex(code); step[unit] = 1 }
    else {
        first[unit] = weight
        value[unit] = count == 1 ? rank(weight) : weight
        count_of[unit] = count
        # Second bytes 00 and 01 occur at a few surrogates, outside the order that carries.
        if (length(weight) == 4 && hex(substr(weight, 3)) < 2) step[unit] = 0
        if (count == 1 && length(weight) == 2) single[weight] = 1
        if (extra != "") rest[unit] = "/" extra
        if (class == "intlx") rest[unit] = rest[unit] "~" code
    }
    # Units of one run agree in all this.
    alike[unit] = (class ~ /^(modifier|unprint)$/ ? class : length(weight)) rest[unit] count step[unit]
}

# Weights of a letter that expands, parted by points.
function parted(weight,    out, width) {
    out = ""
    while (weight != "") {
        width = substr(weight, 1, 2) in single ? 2 : 4
        out = out (out == "" ? "" : ".") substr(weight, 1, width)
        weight = substr(weight, width + 1)
    }
    return out
}

function runEnd(from,    to, grow) {
    to = from + 1
    if (alike[to] != alike[from] || kind[to] == "ignored") return from
    if (!step[from]) {
        while (alike[to] == alike[from] && first[to] == first[from]) ++to
        runStep = 0
        return to - 1
    }
    grow = value[to] - value[from]
    if (grow < 0 || grow > 9) return from
    while (alike[to] == alike[from] && value[to] == value[from] + grow * (to - from)) ++to
    runStep = grow
    return to - 1
}

# Every line begins with the place of its first unit.
function put(unit, token) {
    if (line != "" && length(line) + length(token) + 1 > 86) {
        printf "    \"%s\",\n", line
        line = ""
    }
    if (line == "" || unit != expected) line = line (line == "" ? "" : " ") sprintf("@%04X", unit)
    line = line " " token
}

NR > 1 {
    low = hex($1); high = hex($2); base = hex($4); format = "%0" length($4) "X"
    for (unit = low; unit <= high; ++unit)
        addUnit(unit, $3, $4 == "" ? "" : sprintf(format, base + $5 * (unit - low)), $6, $7, $8)
}

END {
    alike[65536] = "end"
    expected = -1
    for (unit = 0; unit < 65536; unit = last + 1) {
        last = unit
        if (kind[unit] == "ignored") continue
        runStep = 0
        last = runEnd(unit)
        token = (count_of[unit] > 1 ? parted(first[unit]) : first[unit]) rest[unit]
        if (runStep > 0) token = token "+" runStep
        if (last > unit) token = token "*" (last - unit + 1)
        put(unit, token)
        expected = last + 1
    }
    printf "    \"%s\",\n", line
}' "$1"
