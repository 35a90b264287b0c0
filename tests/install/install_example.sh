#!/bin/sh
# Installs the texture library into a temporary folder, builds the example against it in both ways, and
# compares what it prints. Arguments: cmake, build folder, example folder, C compiler, C++ compiler.
set -eu
cmake=$1 build=$2 example=$3 cc=$4 cxx=$5

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
"$cmake" --install "$build" --prefix "$prefix" --component texture >/dev/null

printf '%s\n' '32 x 24 RGB565: 1536 bytes, first pixel 0x0010' '64 x 48 ETC1: 1536 bytes' >"$work/expected"

"$cmake" -S "$example" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
"$cmake" --build "$work/build" >/dev/null
"$work/build/texture" | diff "$work/expected" -

if ! command -v pkg-config >/dev/null; then
  echo "SKIP: pkg-config is not installed"
  exit 77
fi
pc=$(find "$prefix" -name zorvan.pc)
# shellcheck disable=SC2046 # words of flags
"$cc" "$example/main.c" $(PKG_CONFIG_PATH=${pc%/*} pkg-config --define-variable=prefix="$prefix" --cflags --libs zorvan) \
  -o "$work/texture"
"$work/texture" | diff "$work/expected" -
