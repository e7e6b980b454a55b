#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (ASan and UBSan on) and runs each
# for the given number of seconds (default 60), starting from the seed
# corpus under fuzz/corpus/<target without "fuzz_">.
#   fuzz/run.sh [SECONDS] [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."

SECONDS_EACH=${1:-60}
shift || true
BUILD_DIR=${FERROX_FUZZ_BUILD_DIR:-build-fuzz}

bash scripts/install-deps.sh
if [ ! -f "$BUILD_DIR/build.ninja" ]; then
  CC=clang CXX=clang++ cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DFERROX_FUZZ=ON -DFERROX_BUILD_TESTS=OFF -DFERROX_BUILD_BENCH=OFF
fi

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=($(sed -n 's/^ferrox_fuzz_target(\([a-z_]*\) .*/\1/p' fuzz/CMakeLists.txt))
fi
cmake --build "$BUILD_DIR" --target "${targets[@]}"

for target in "${targets[@]}"; do
  seeds="fuzz/corpus/${target#fuzz_}"
  work="$BUILD_DIR/fuzz/corpus-run/${target#fuzz_}"
  mkdir -p "$work"
  echo "== $target for ${SECONDS_EACH}s"
  "$BUILD_DIR/fuzz/$target" -max_total_time="$SECONDS_EACH" -rss_limit_mb=2048 -timeout=10 \
    -print_final_stats=1 "$work" "$seeds"
done
