#!/usr/bin/env bash
# Sets the machine up, builds the engine and renders the hello scene into out/hello.png.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-packages.sh build
cmake --preset release -DZORVAN_TESTS=OFF -DZORVAN_BENCH=OFF -DZORVAN_WERROR=OFF -B build/hello >/dev/null
cmake --build build/hello
mkdir -p out
build/hello/bin/zorvan render examples/hello.json out/hello.png
echo "The picture is in $PWD/out/hello.png"
