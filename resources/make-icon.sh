#!/usr/bin/env bash
# Draws the program's icon: trace lines on a sheet, one of them under a lens.
# Usage: resources/make-icon.sh   (needs ImageMagick; writes resources/viewer.ico)
set -euo pipefail
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

convert -size 256x256 xc:none \
    -fill '#f7f9fc' -stroke '#3b5b8c' -strokewidth 10 -draw 'roundrectangle 28,14 204,242 16,16' \
    -stroke none -fill '#9db4d6' \
    -draw 'rectangle 56,52 176,66' -draw 'rectangle 56,84 150,98' \
    -draw 'rectangle 56,148 140,162' -draw 'rectangle 56,180 120,194' \
    -fill '#d9534f' -draw 'rectangle 56,116 176,130' \
    -fill '#ffffffc0' -stroke '#24406b' -strokewidth 14 -draw 'circle 166,158 166,112' \
    -strokewidth 22 -draw 'line 200,194 236,232' \
    -stroke none -fill '#d9534f' -draw 'rectangle 134,151 198,165' \
    "$work/256.png"
for size in 16 24 32 48 64; do
    convert "$work/256.png" -filter Lanczos -resize "${size}x${size}" "$work/$size.png"
done
convert "$work"/{16,24,32,48,64,256}.png viewer.ico
