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

# The hostile installation's files seed the readers they break: its
# archives (one with a truncated member) the zip reader, and its members,
# taken out with Info-ZIP, the readers of their kinds.
hostile="$BUILD_DIR/sample-hostile"
python3 tools/make_sample_game.py --hostile --out "$hostile"
hostile_seeds="$BUILD_DIR/fuzz/hostile-seeds"
rm -rf "$hostile_seeds"
extract_seeds() { # KIND PATTERN...
  local kind=$1
  shift
  mkdir -p "$hostile_seeds/$kind"
  # unzip reports the truncated member and goes on with the others.
  unzip -q -o -j "$hostile/res/packages/hostile_vehicles.pkg" "$@" -d "$hostile_seeds/$kind" || true
}
extract_seeds dds '*/Hull_AM.dds'
extract_seeds primitives '*/normal/lod0/*.primitives'
extract_seeds vehicle_file 'scripts/item_defs/vehicles/*.xml'
cp -r "$hostile_seeds/vehicle_file" "$hostile_seeds/armor_read"
cp -r "$hostile_seeds/vehicle_file" "$hostile_seeds/packed_xml"
mkdir -p "$hostile_seeds/zip_archive" "$hostile_seeds/camo_catalogue"
cp "$hostile"/res/packages/*.pkg "$hostile_seeds/zip_archive/"
cp "$hostile"/res/scripts/item_defs/vehicles/hostile/customization.xml "$hostile_seeds/camo_catalogue/"

for target in "${targets[@]}"; do
  seeds="fuzz/corpus/${target#fuzz_}"
  extra=()
  [ -d "$hostile_seeds/${target#fuzz_}" ] && extra=("$hostile_seeds/${target#fuzz_}")
  work="$BUILD_DIR/fuzz/corpus-run/${target#fuzz_}"
  mkdir -p "$work"
  echo "== $target for ${SECONDS_EACH}s"
  "$BUILD_DIR/fuzz/$target" -max_total_time="$SECONDS_EACH" -rss_limit_mb=2048 -timeout=10 \
    -print_final_stats=1 "$work" "$seeds" "${extra[@]}"
done
