#!/usr/bin/env bash
# Builds the fuzz programs with clang (libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) in build-fuzz/ and runs one of them on its corpus.
#   scripts/fuzz.sh TARGET [SECONDS] [libFuzzer options...]   (SECONDS: 60 by default)
#   scripts/fuzz.sh all [SECONDS]                             each target in turn
# Targets: profile_file command_line series_name picture gif_encoder properties_report.
# New inputs gather in build-fuzz/corpus/TARGET. An input that breaks a promise is
# saved in build-fuzz/crashes/TARGET/; once the fault is fixed, keep it in
# tests/data/fuzz/TARGET/crashes/, where the ordinary tests replay it.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="$root/build-fuzz"
targets=(profile_file command_line series_name picture gif_encoder properties_report)

usage() {
    echo "usage: scripts/fuzz.sh TARGET|all [SECONDS] [libFuzzer options...]" >&2
    echo "targets: ${targets[*]}" >&2
    exit 2
}

[ $# -ge 1 ] || usage
target="$1"
seconds="${2:-60}"
shift
if [ $# -ge 1 ]; then
    shift
fi
case "$seconds" in '' | *[!0-9]*) usage ;; esac
if [ "$target" != all ] && [[ " ${targets[*]} " != *" $target "* ]]; then
    usage
fi

# A shared machine: two compile jobs unless told otherwise.
export CMAKE_BUILD_PARALLEL_LEVEL="${CMAKE_BUILD_PARALLEL_LEVEL:-2}"
"$root/scripts/setup.sh" "$build" -DLUMIQUILT_FUZZ=ON -DLUMIQUILT_BUILD_TESTS=OFF \
    -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo

# A smaller quarantine for freed memory: the machine is shared.
export ASAN_OPTIONS="${ASAN_OPTIONS:-quarantine_size_mb=64}"

run() {
    local name="$1"
    shift
    local kept="$root/tests/data/fuzz/$name"
    mkdir -p "$build/corpus/$name" "$build/crashes/$name"
    local corpora=("$build/corpus/$name" "$kept/seeds")
    [ -d "$kept/crashes" ] && corpora+=("$kept/crashes")
    echo "== $name for $seconds s"
    # The picture decoders are Qt's and give the fuzzer no coverage to steer by, so
    # the seeds stay in play even where they add none of ours.
    "$build/bin/fuzz_$name" "${corpora[@]}" -max_total_time="$seconds" -timeout=10 \
        -rss_limit_mb=2048 -keep_seed=1 -artifact_prefix="$build/crashes/$name/" \
        -print_final_stats=1 "$@"
}

if [ "$target" = all ]; then
    for name in "${targets[@]}"; do
        run "$name" "$@"
    done
else
    run "$target" "$@"
fi
