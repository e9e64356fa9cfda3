#!/usr/bin/env bash
# Looks at an installed tree as a user's system would see it.
#   check_install.sh layout|desktop|metainfo|man PREFIX [SAMPLES]
# Exits 77 (skipped) when the tool a check needs is not installed.
set -euo pipefail
check="$1"
prefix="$2"
need() { command -v "$1" >/dev/null || { echo "skipped: $1 is not installed"; exit 77; }; }
fail() { echo "FAIL: $*"; exit 1; }

case "$check" in
layout)
    samples="$3"
    for f in lumiquilt lumiquilt-cli CSTjpeg; do
        [ -x "$prefix/lib/lumiquilt/$f" ] || fail "lib/lumiquilt/$f missing"
    done
    for f in lumiquilt.html lumiquilt.svg; do
        [ -f "$prefix/lib/lumiquilt/$f" ] || fail "lib/lumiquilt/$f missing"
    done
    for f in lumiquilt lumiquilt-cli; do
        [ -L "$prefix/bin/$f" ] || fail "bin/$f is no link"
        [ "$(readlink -f "$prefix/bin/$f")" = "$(readlink -f "$prefix/lib/lumiquilt/$f")" ] ||
            fail "bin/$f leads elsewhere"
    done
    share="$prefix/share"
    [ -f "$share/icons/hicolor/scalable/apps/org.example.lumiquilt.svg" ] || fail "SVG icon missing"
    for size in 16 24 32 48 64 128 256; do
        png="$share/icons/hicolor/${size}x${size}/apps/org.example.lumiquilt.png"
        [ -f "$png" ] || fail "$png missing"
        # Width and height stand at bytes 16 to 23 of a PNG.
        dims=$(od -An -tu4 --endian=big -j16 -N8 "$png" | tr -s ' ')
        [ "$dims" = " $size $size" ] || fail "$png is not $size by $size ($dims)"
    done
    [ -f "$share/man/man1/lumiquilt.1.gz" ] && [ -f "$share/man/man1/lumiquilt-cli.1.gz" ] ||
        fail "manual pages missing"
    # From PATH, in a folder of the user's: the program finds its series and writes.
    # The series rule reads the first dot of the whole name, so the folder has none.
    work=$(mktemp -d "${TMPDIR:-/tmp}/lumiquiltXXXXXX")
    trap 'rm -rf "$work"' EXIT
    cp "$samples"/coffee[1-5].jpg "$work/"
    (cd "$work" && PATH="$prefix/bin:$PATH" lumiquilt-cli montage coffee1.jpg -i 20 -o m.jpg) ||
        fail "lumiquilt-cli montage failed"
    [ -s "$work/m.jpg" ] || fail "no montage written"
    PATH="$prefix/bin:$PATH" lumiquilt-cli --version | grep -q '^lumiquilt-cli [0-9]' ||
        fail "--version"
    ;;
desktop)
    need desktop-file-validate
    desktop-file-validate "$prefix/share/applications/org.example.lumiquilt.desktop"
    ;;
metainfo)
    need appstreamcli
    appstreamcli validate --no-net "$prefix/share/metainfo/org.example.lumiquilt.metainfo.xml"
    ;;
man)
    need man
    for page in lumiquilt lumiquilt-cli; do
        text=$(MANWIDTH=80 man -l "$prefix/share/man/man1/$page.1.gz" 2>&1)
        grep -q "^NAME" <<<"$text" || fail "$page: no NAME section"
        grep -q "^SYNOPSIS" <<<"$text" || fail "$page: no SYNOPSIS"
    done
    MANWIDTH=80 man -l "$prefix/share/man/man1/lumiquilt-cli.1.gz" | grep -q -- "--version" ||
        fail "lumiquilt-cli page does not name --version"
    ;;
*)
    fail "unknown check $check"
    ;;
esac
echo "ok: $check"
