#!/usr/bin/env bash
# Compares what two builds of lumiquilt-cli write, byte for byte: for every method at
# increments 1, 20 and 200, the BMP file (and PNG and GIF at 20), the report, the
# score line and standard error. For a change that must leave every output as it was.
#   bench/same_bytes.sh OLD-CLI NEW-CLI FIRST
set -uo pipefail
old="$1"
new="$2"
first="$3"
out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT
diffs=0
runs=0
for m in 0 1 2 3 4 5 6; do
    for i in 1 20 200; do
        exts="bmp"
        [ "$i" = 20 ] && exts="bmp png gif"
        for ext in $exts; do
            for b in old new; do
                bin="$old"
                [ "$b" = new ] && bin="$new"
                "$bin" montage "$first" -m "$m" -i "$i" -o "$out/$b.$ext" --report "$out/$b.txt" \
                    --score >"$out/$b.score" 2>"$out/$b.err"
            done
            runs=$((runs + 1))
            for f in "$ext" txt score err; do
                if ! cmp -s "$out/old.$f" "$out/new.$f"; then
                    echo "differs: method $m increment $i .$ext ($f)"
                    diffs=$((diffs + 1))
                fi
            done
        done
    done
done
echo "$first: $runs runs each, $diffs differences"
[ "$diffs" -eq 0 ]
