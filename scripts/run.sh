#!/usr/bin/env bash
# Builds Ferrox and starts it on the generated sample Gavrel installation.
# A first settings.cfg pointing at the sample is written only when there is
# none yet; a user's own settings are never overwritten.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/build.sh
BUILD_DIR=${FERROX_BUILD_DIR:-build}
"$BUILD_DIR/bin_x64/ferrox-tool" init-settings "$BUILD_DIR/sample-game" --mod "$BUILD_DIR/sample-game-mod"
exec "$BUILD_DIR/bin_x64/ferrox" "$@"
