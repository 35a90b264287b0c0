#!/usr/bin/env bash
# Sets the machine up and runs every check: formatting, GCC and Clang with warnings as errors, the
# sanitizers, 32-bit and 64-bit ARM under qemu-user, and a short run of each fuzz target.
# Usage: scripts/test.sh [STEP ...], steps: format release debug clang asan-ubsan fuzz armhf arm64; all but
# debug without any
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)

check_format() {
  git ls-files '*.h' '*.cpp' '*.c' | xargs clang-format --dry-run -Werror
}

check_preset() {
  cmake --preset "$1"
  cmake --build --preset "$1"
  ctest --preset "$1" -j "$jobs"
}

steps=("$@")
if [ ${#steps[@]} -eq 0 ]; then
  steps=(format release clang asan-ubsan fuzz armhf arm64)
fi

scripts/install-packages.sh test
for step in "${steps[@]}"; do
  echo "== $step"
  case $step in
    format) check_format ;;
    # From the seeds; a crash or a leak ends the run with an error.
    fuzz) FUZZ_FRESH=1 scripts/fuzz.sh ;;
    release | debug | clang | asan-ubsan | armhf | arm64) check_preset "$step" ;;
    *) echo "unknown step: $step" >&2; exit 1 ;;
  esac
done
echo "All checks passed: ${steps[*]}"
