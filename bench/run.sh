#!/usr/bin/env bash
# Builds the benchmarks, generates the large installation they read
# (tools/make_sample_game.py --scale 100) and runs every one of them, under
# an Xvfb server of its own when there is no display (the frame and model
# benchmarks need GL). Arguments go to every benchmark.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/build.sh
BUILD_DIR=${FERROX_BUILD_DIR:-build}
python3 tools/make_sample_game.py --out "$BUILD_DIR/bench-game" --scale "${FERROX_BENCH_SCALE:-100}"

run_all() {
  local status=0
  for bench in "$BUILD_DIR"/bench/bench_*; do
    [ -f "$bench" ] && [ -x "$bench" ] || continue
    echo "== $(basename "$bench")"
    "$bench" "$@" || { echo "!! $(basename "$bench") failed"; status=1; }
  done
  return $status
}
export -f run_all
export BUILD_DIR
bash scripts/xvfb.sh bash -c 'run_all "$@"' run_all "$@"
