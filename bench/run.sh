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

# The loop runs inside the Xvfb session as a script of its own: xvfb-run
# goes through /bin/sh, which does not carry exported shell functions.
bash scripts/xvfb.sh bash -c '
  status=0
  for bench in "$0"/bench/bench_*; do
    [ -f "$bench" ] && [ -x "$bench" ] || continue
    echo "== $(basename "$bench")"
    "$bench" "$@" || { echo "!! $(basename "$bench") failed"; status=1; }
  done
  exit $status' "$BUILD_DIR" "$@"
