#!/usr/bin/env bash
# Installs what is missing, then configures and builds Ferrox, its tools, its
# tests and the sample Gavrel installation into build/.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh

BUILD_DIR=${FERROX_BUILD_DIR:-build}
if [ ! -f "$BUILD_DIR/build.ninja" ]; then
  cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
fi
cmake --build "$BUILD_DIR" --parallel "$(nproc)"
