#!/usr/bin/env bash
# Installs, from Debian's own packages, what the build and the tests need and this machine lacks.
# Usage: scripts/install-packages.sh build|test
set -euo pipefail

build=(g++ cmake ninja-build pkg-config nlohmann-json3-dev libcli11-dev libpng-dev libjpeg62-turbo-dev
  libfreetype-dev libgles-dev libegl-dev libgl1-mesa-dri libegl1 libgles2 libsdl2-dev fonts-dejavu-core
  fonts-liberation2)
test=(clang llvm clang-format libclang-rt-14-dev libgtest-dev googletest libbenchmark-dev python3
  g++-arm-linux-gnueabihf g++-aarch64-linux-gnu qemu-user ffmpeg astcenc xvfb xdotool)

packages=("${build[@]}")
if [ "${1:-build}" = test ]; then
  packages+=("${test[@]}")
fi

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed'; then
    missing+=("$package")
  fi
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
