#!/usr/bin/env bash
# Builds the fuzz targets with the sanitizers, makes their seeds, and runs the targets side by side on all
# cores. Corpora grow in build/fuzz-corpus/TARGET from run to run, and begin with the seeds.
# Usage: scripts/fuzz.sh [MINUTES [TARGET ...]]: minutes for each target, 1 without; all targets without any,
# which are named with or without "fuzz_".
# Environment: FUZZ_SECONDS: seconds in place of MINUTES; FUZZ_RUNS: ends a target after so many executions as
# well; FUZZ_FRESH: begins with the seeds alone, and keeps nothing but crashes; FUZZ_JOBS: targets at a time.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  echo "usage: scripts/fuzz.sh [MINUTES [TARGET ...]]; got MINUTES \"$1\", expected a whole number from 1" >&2
  exit 1
}

minutes=${1:-1}
case $minutes in
  *[!0-9]* | 0*) usage "$minutes" ;;
esac
seconds=${FUZZ_SECONDS:-$((60 * minutes))}
jobs=${FUZZ_JOBS:-$(nproc)}
runs=${FUZZ_RUNS:--1}
fresh=${FUZZ_FRESH:-}
shift $(($# > 0))

build=$PWD/build/asan-ubsan
corpora=$PWD/build/fuzz-corpus
artifacts=$PWD/build/fuzz-artifacts

cmake --preset asan-ubsan >/dev/null
cmake --build --preset asan-ubsan --target fuzz

targets=()
if [ $# -eq 0 ]; then
  mapfile -t targets < <(find "$build/bin" -maxdepth 1 -name 'fuzz_*' -type f -executable -printf '%f\n' | sort)
  [ ${#targets[@]} -gt 0 ] || { echo "no fuzz targets were built" >&2; exit 1; }
fi
for name in "$@"; do
  name=fuzz_${name#fuzz_}
  [ -x "$build/bin/$name" ] || { echo "there is no fuzz target $name" >&2; exit 1; }
  targets+=("$name")
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Targets run in the background and would not hear of it.
trap 'trap "" TERM; kill 0; exit 130' INT
mkdir -p "$artifacts"

# The number behind the last NAME: of a log, or a dash.
figure() {
  local found
  found=$(grep -o "$2: *[0-9]*" "$1" | tail -n 1 | grep -o '[0-9]*$' || true)
  echo "${found:--}"
}

row() {
  printf '%-26s %12s %8s %7s %9s %9s\n' "$@"
}

# Runs one target and prints its row. What may be named in inputs lies in the folder where it runs.
run_target() {
  local name=$1 log=$work/$1.log corpus=$corpora/$1 options=() status=0
  [ -z "$fresh" ] || corpus=$work/$name
  mkdir -p "$corpus" "$build/seeds/$name" "$build/seeds/files"
  mapfile -t options <"$build/bin/$name.options"
  (
    cd "$build/seeds/files"
    # Where memory came from is told when an artifact is run again; to keep it for every allocation, and to weigh
    # inputs by their rarest branches, takes two thirds of the time and reaches no more.
    export ASAN_OPTIONS=malloc_context_size=0
    exec "$build/bin/$name" "${options[@]}" -max_total_time="$seconds" -runs="$runs" -timeout=30 \
      -rss_limit_mb=4096 -print_final_stats=1 -reload=0 -entropic=0 -artifact_prefix="$artifacts/$name-" \
      "$corpus" "$build/seeds/$name"
  ) >"$log" 2>&1 || status=$?
  row "$name" "$(figure "$log" stat::number_of_executed_units)" "$(figure "$log" stat::average_exec_per_sec)" \
    "$(figure "$log" cov)" "$(figure "$log" ft)" "$(figure "$log" stat::peak_rss_mb)"
  [ $status -eq 0 ] || fail_target "$name" "$log"
}

fail_target() {
  local name=$1 log=$2 input
  cat "$log" >&2
  input=$(grep -o "Test unit written to .*" "$log" | tail -n 1 | sed 's/^Test unit written to //' || true)
  {
    echo "FAIL $name"
    [ -z "$input" ] || echo "again with: cd $build/seeds/files && $build/bin/$name $input"
  } | tee -a "$work/failures" >&2
}

row target executions exec/s edges features "RSS (MB)"
for name in "${targets[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do
    wait -n || true
  done
  run_target "$name" &
done
wait
if [ -s "$work/failures" ]; then
  cat "$work/failures" >&2
  exit 1
fi
