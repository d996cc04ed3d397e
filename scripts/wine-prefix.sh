#!/bin/bash
# Makes the Wine prefixes, once: build/wine-test (no screen, for the tests) and build/wine-run
# (X11, for ./run). Both are copies of one template that share its files by hard links.
#
#   scripts/wine-prefix.sh test|run
#
# A change of this script or of its registry files makes them anew.
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"

recipe=$(cat "$root"/scripts/wine-prefix.sh "$root"/scripts/wine-*.reg | cksum)

is_made() { [ "$(cat "$build/wine-$1/.recipe" 2>/dev/null)" = "$recipe" ]; }
mark_made() { printf '%s\n' "$recipe" >"$build/wine-$1/.recipe"; }

# import NAME: Wine's regedit reads typed data right only from UTF-16 files with a byte order mark.
import() {
    local file=$WINEPREFIX/import.reg
    { printf '\xff\xfe' && sed 's/$/\r/' "$root/scripts/wine-$1.reg" | iconv -f UTF-8 -t UTF-16LE; } \
        >"$file"
    timeout -k 2 60 wine regedit /S "$(windows_path "$file")"
    rm "$file"
}

make_template() {
    is_made template && return
    step "Making the Wine prefix (about 15 s, once)"
    rm -rf "$build"/wine-{template,test,run}
    use_wine template
    timeout -k 2 180 wineboot -i >"$build/wine-template.log" 2>&1 ||
        fail "wineboot failed: $build/wine-template.log"
    # This Wine does not find the faces of fonts-wine where Debian puts them.
    cp /usr/share/wine/fonts/*.ttf /usr/share/wine/fonts/*.fon "$WINEPREFIX/drive_c/windows/Fonts/"
    import base
    timeout -k 2 60 wineserver -w # the registry is on disk when the server has ended
    mark_made template
}

# Wine rewrites its registry files in place, so these must not be shared between the copies.
copy_template() {
    is_made "$1" && return
    local from=$build/wine-template to=$build/wine-$1 name
    rm -rf "$to"
    cp -alT "$from" "$to" 2>/dev/null || { rm -rf "$to" && cp -aT "$from" "$to"; }
    rm "$to/.recipe"
    for name in system user userdef; do
        cp --remove-destination "$from/$name.reg" "$to/$name.reg"
    done
    if [ -e "$root/scripts/wine-$1.reg" ]; then
        use_wine "$1"
        import "$1"
        timeout -k 2 60 wineserver -w
    fi
    mark_made "$1"
}

is_made "$1" && exit
make_template
copy_template "$1"
