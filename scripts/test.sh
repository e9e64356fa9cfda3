#!/usr/bin/env bash
# Sets up, builds and runs every test.
#   scripts/test.sh            the ordinary build
#   scripts/test.sh --sanitize with AddressSanitizer and UndefinedBehaviorSanitizer
#   scripts/test.sh --threads  with ThreadSanitizer (the series is read on two threads)
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="$root/build"
extra=()
if [ "${1:-}" = "--sanitize" ]; then
    build="$root/build-sanitize"
    extra=(-DLUMIQUILT_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
elif [ "${1:-}" = "--threads" ]; then
    build="$root/build-tsan"
    extra=(-DLUMIQUILT_SANITIZE_THREAD=ON -DCMAKE_BUILD_TYPE=Debug)
fi
"$root/scripts/setup.sh" "$build" "${extra[@]}"
cd "$build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j2
