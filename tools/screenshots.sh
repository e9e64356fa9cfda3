#!/usr/bin/env bash
# Runs Lumiquilt on the sample series under Xvfb and takes screenshots of the main
# window, a montage, each top-level menu and a picture window's popup, for a person
# to look at. Needs xvfb, xdotool and imagemagick.
#   tools/screenshots.sh [output-folder]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
out="${1:-$root/screenshots}"
mkdir -p "$out"
export LUMIQUILT_INI="$out/screenshots.ini"
rm -f "$LUMIQUILT_INI"

xvfb-run -a -s '-screen 0 1280x1024x24' bash -c '
    set -u
    out="$1"; bin="$2"; first="$3"
    shot() { sleep 0.7; import -window root "$out/$1.png"; }
    key() { xdotool key "$1"; }
    "$bin/lumiquilt" "$first" -i20 2>/dev/null &
    sleep 3
    shot 01-loaded
    xdotool mousemove 1030 35 click 1; sleep 2
    shot 02-montage
    # The menus, by their places on the bar.
    n=3
    for x in 52 135 248 360 460 520; do
        xdotool mousemove $x 8 click 1
        shot "0$n-menu-$x"; key Escape; n=$((n + 1))
    done
    # The popup of the montage window: right click on its picture.
    xdotool mousemove 1000 300 click 3
    shot 09-montage-popup; key Escape
    kill %1
' _ "$out" "$root/build/bin" "$root/samples/coffee1.jpg"
echo "Screenshots in $out"
