#!/usr/bin/env bash
# Installs what Lumiquilt needs on Debian 12 (when missing) and builds it.
#   scripts/setup.sh [build-folder] [extra cmake arguments...]
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-$root/build}"
shift || true

packages=(cmake ninja-build g++ qt6-base-dev libgl-dev libgtest-dev xvfb xauth fonts-dejavu-core
          imagemagick desktop-file-utils appstream libglib2.0-bin man-db
          libjpeg-turbo-progs)
# The fuzz programs (scripts/fuzz.sh) need clang and its libFuzzer; nothing else does.
fuzz=0
for arg in "$@"; do
    if [ "$arg" = "-DLUMIQUILT_FUZZ=ON" ]; then
        fuzz=1
    fi
done
if [ "$fuzz" -eq 1 ]; then
    packages+=(clang libclang-rt-14-dev)
fi
missing=()
for p in "${packages[@]}"; do
    dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ "${#missing[@]}" -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -q
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

cmake -S "$root" -B "$build" -G Ninja "$@" >/dev/null
if [ "$fuzz" -eq 1 ]; then
    cmake --build "$build" --target fuzz_targets
else
    cmake --build "$build"
fi
