#!/usr/bin/env bash
# Sets up, builds and starts Lumiquilt on the bundled sample series.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/setup.sh" "$root/build"
bin="$root/build/bin"
first="$root/samples/coffee1.jpg"

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec "$bin/lumiquilt" "$first" -i20
fi

echo "No display here, so Lumiquilt's windows can't open."
echo "To see them on a machine without a screen, run:"
echo "  xvfb-run -s '-screen 0 1280x1024x24' $bin/lumiquilt $first -i20"
echo
echo "Making the sample montage with lumiquilt-cli instead:"
out="$root/build/sample-montage.jpg"
"$bin/lumiquilt-cli" montage "$first" -i 20 -m 0 -o "$out" --report - --score
echo "The montage is in $out"
