#!/usr/bin/env bash
# Builds the benchmarks, generates the large installation they read
# (tools/make_sample_game.py --scale 100) and runs them.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/build.sh
BUILD_DIR=${FERROX_BUILD_DIR:-build}
python3 tools/make_sample_game.py --out "$BUILD_DIR/bench-game" --scale "${FERROX_BENCH_SCALE:-100}"
for bench in "$BUILD_DIR"/bench/bench_*; do
  [ -x "$bench" ] || continue
  echo "== $(basename "$bench")"
  "$bench" "$@"
done
