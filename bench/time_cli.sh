#!/usr/bin/env bash
# Whole-process figures as a new user would see them: GNU time's wall clock and
# maximum resident size of `lumiquilt-cli montage FIRST -o out.bmp`, against
# `djpeg -bmp` of the same files one after another (libjpeg-turbo-progs), the
# median of five runs each, taken in turn so that both see the same machine.
#   bench/time_cli.sh CLI FIRST FILE...      e.g.
#   bench/time_cli.sh build/bin/lumiquilt-cli /data/scene1.jpg /data/scene*.jpg
# With BEFORE=another/lumiquilt-cli set, that program runs in every round too, so
# that an older build and this one meet the same machine.
set -euo pipefail

cli="$1"
first="$2"
shift 2
runs=5
out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT

# Prints "seconds kilobytes" of one command under GNU time.
measure() {
    /usr/bin/time -f '%e %M %U %S' -o "$out/time" "$@" >/dev/null 2>"$out/err" || {
        cat "$out/err" >&2
        exit 1
    }
    cat "$out/time"
}

djpegAll() {
    for f in "$@"; do
        djpeg -bmp "$f" >"$out/djpeg.bmp"
    done
}
export -f djpegAll
export out

for ((r = 0; r < runs; ++r)); do
    if [ -n "${BEFORE:-}" ]; then
        measure "$BEFORE" montage "$first" -o "$out/before.bmp" >>"$out/before"
    fi
    measure "$cli" montage "$first" -o "$out/montage.bmp" >>"$out/cli"
    measure bash -c 'djpegAll "$@"' _ "$@" >>"$out/djpeg"
done

median() { sort -n | awk '{a[NR] = $1} END {print a[int((NR + 1) / 2)]}'; }
cliWall=$(cut -d' ' -f1 "$out/cli" | median)
cliRss=$(cut -d' ' -f2 "$out/cli" | median)
djpegWall=$(cut -d' ' -f1 "$out/djpeg" | median)
djpegRss=$(cut -d' ' -f2 "$out/djpeg" | median)
cliCpu=$(awk '{print $3 + $4}' "$out/cli" | median)
djpegCpu=$(awk '{print $3 + $4}' "$out/djpeg" | median)
echo "runs (wall s, max RSS KiB, user s, sys s), cli:" $(tr '\n' ' ' <"$out/cli")
echo "runs (wall s, max RSS KiB, user s, sys s), djpeg:" $(tr '\n' ' ' <"$out/djpeg")
if [ -n "${BEFORE:-}" ]; then
    awk -v bw="$(cut -d' ' -f1 "$out/before" | median)" \
        -v br="$(cut -d' ' -f2 "$out/before" | median)" \
        -v bc="$(awk '{print $3 + $4}' "$out/before" | median)" -v dw="$djpegWall" '
    BEGIN {
        printf "before: montage -o out.bmp        median wall %.2f s  cpu %.2f s  max RSS %.0f MiB\n",
            bw, bc, br / 1024
        printf "ratio before / djpeg              wall %.2f\n", bw / dw
    }'
fi
awk -v cw="$cliWall" -v cr="$cliRss" -v dw="$djpegWall" -v dr="$djpegRss" \
    -v cc="$cliCpu" -v dc="$djpegCpu" 'BEGIN {
    printf "lumiquilt-cli montage -o out.bmp  median wall %.2f s  cpu %.2f s  max RSS %.0f MiB\n",
        cw, cc, cr / 1024
    printf "djpeg -bmp, one after another     median wall %.2f s  cpu %.2f s  max RSS %.0f MiB\n",
        dw, dc, dr / 1024
    printf "ratio cli / djpeg                 wall %.2f  cpu %.2f\n", cw / dw, cc / dc
}'
