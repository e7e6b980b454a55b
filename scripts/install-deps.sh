#!/usr/bin/env bash
# Installs the Debian packages Ferrox needs to build, run and test.
# Idempotent: apt-get update runs only when something is missing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-base-dev-tools libqt6opengl6-dev libqt6sql6-sqlite
  qt6-svg-dev qt6-tools-dev-tools qt6-l10n-tools libgl-dev
  libzzip-dev libbullet-dev libnvtt-dev zlib1g-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth libgl1-mesa-dri
  python3 python3-markdown gettext imagemagick libnvtt-bin
  assimp-utils librsvg2-bin qt6-image-formats-plugins
  libtinygltf-dev nodejs npm f3d
)

# The glTF validator the tests run comes from npm, into the project's own
# folder tools/gltf-validator (node_modules), at the version its lock names.
install_validator() {
  local folder="$(dirname "$0")/../tools/gltf-validator"
  if [ ! -f "$folder/node_modules/gltf-validator/package.json" ]; then
    (cd "$folder" && npm ci --no-audit --no-fund --loglevel=error)
  fi
}

# A node from another source may bring its own npm, which Debian's npm
# package then conflicts with: the command counts.
present() {
  case "$1" in
    nodejs) command -v node >/dev/null ;;
    npm) command -v npm >/dev/null ;;
    *) dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "install ok installed" ;;
  esac
}

missing=()
for p in "${packages[@]}"; do
  if ! present "$p"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  install_validator
  exit 0
fi

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
install_validator
