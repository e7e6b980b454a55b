#!/usr/bin/env bash
# Builds everything and runs every test headless under Xvfb.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/build.sh
BUILD_DIR=${FERROX_BUILD_DIR:-build}
python3 -m unittest discover -s tools -p 'test_*.py'
bash scripts/xvfb.sh \
  ctest --test-dir "$BUILD_DIR" --output-on-failure --parallel "$(nproc)"
