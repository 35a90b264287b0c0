#!/usr/bin/env bash
# Sets the machine up and runs every check: formatting, GCC and Clang with warnings as errors, the
# sanitizers, 32-bit and 64-bit ARM under qemu-user, and a short run of each fuzz target.
# Usage: scripts/test.sh [STEP ...], steps: format release debug clang asan-ubsan fuzz armhf arm64; all but
# debug without any
set -euo pipefail
cd "$(dirname "$0")/.."

fuzz_seconds=${FUZZ_SECONDS:-60}
jobs=$(nproc)

check_format() {
  git ls-files '*.h' '*.cpp' '*.c' | xargs clang-format --dry-run -Werror
}

check_preset() {
  cmake --preset "$1"
  cmake --build --preset "$1"
  ctest --preset "$1" -j "$jobs"
}

# Each target starts from an empty corpus; a crash or a leak ends the run with an error.
run_fuzzers() {
  local targets
  targets=$(find build/asan-ubsan/bin -maxdepth 1 -name 'fuzz_*' -type f -executable | sort)
  [ -n "$targets" ] || { echo "no fuzz targets were built" >&2; return 1; }
  echo "$targets" | xargs -P "$jobs" -I{} sh -c '
    log=$(mktemp)
    if "$1" -max_total_time="$2" -rss_limit_mb=4096 -artifact_prefix="$1-" >"$log" 2>&1; then
      echo "ok   $(basename "$1"): $(grep -c "^#" "$log") progress lines, $(tail -n 1 "$log")"
    else
      cat "$log"; echo "FAIL $(basename "$1")"; rm "$log"; exit 255
    fi
    rm "$log"' sh {} "$fuzz_seconds"
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
    fuzz) run_fuzzers ;;
    release | debug | clang | asan-ubsan | armhf | arm64) check_preset "$step" ;;
    *) echo "unknown step: $step" >&2; exit 1 ;;
  esac
done
echo "All checks passed: ${steps[*]}"
