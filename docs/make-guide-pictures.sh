#!/usr/bin/env bash
# Makes the pictures of docs/user-guide.md from the sample installation, with
# the program's own renderer and tools, so that they show what the program
# does today. Run it from anywhere after building ferrox-tool, ferrox_data
# and sample_game (capture_window too, for the window picture):
#
#   cmake --build build --target ferrox-tool ferrox_data sample_game capture_window
#   bash scripts/xvfb.sh docs/make-guide-pictures.sh
#
# It needs a display for OpenGL 3.2: under scripts/xvfb.sh on a machine
# without one. Writes docs/images/guide/ and refreshes docs/images/main-window.png.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${FERROX_BUILD:-$root/build}
tool=$build/bin_x64/ferrox-tool
game=$build/sample-game
out=$root/docs/images/guide
size=800x450

if [ ! -x "$tool" ] || [ ! -d "$game" ]; then
  echo "build ferrox-tool, ferrox_data and sample_game first" >&2
  exit 2
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out"

# Qt writes the UV templates uncompressed and the renders at its default
# level: the same pixels, deflated at level 9, keep the repository small.
recompress() {
  python3 - "$@" <<'EOF'
import struct, sys, zlib

def chunks(data):
    pos = 8
    while pos < len(data):
        (length,) = struct.unpack(">I", data[pos:pos + 4])
        yield data[pos + 4:pos + 8], data[pos + 8:pos + 8 + length]
        pos += 12 + length

for path in sys.argv[1:]:
    data = open(path, "rb").read()
    parts = list(chunks(data))
    pixels = zlib.decompress(b"".join(body for kind, body in parts if kind == b"IDAT"))
    result, written = bytearray(data[:8]), False
    for kind, body in parts:
        if kind == b"IDAT":
            if written:
                continue
            body, written = zlib.compress(pixels, 9), True
        result += struct.pack(">I", len(body)) + kind + body
        result += struct.pack(">I", zlib.crc32(kind + body) & 0xFFFFFFFF)
    open(path, "wb").write(bytes(result))
EOF
}

# A saved camera view as "Save View" writes it.
camera() { # file target rotation zoom type
  printf '<Camera>\n <Target>%s</Target>\n <Rotation>%s</Rotation>\n <Fov>55</Fov>\n <Zoom>%s</Zoom>\n <Type>%s</Type>\n</Camera>\n' \
    "$2" "$3" "$4" "$5" >"$1"
}
camera "$work/close.Camera" "0 0.8 0" "24 -35 0" 9 0
camera "$work/top.Camera" "0 0 0" "90 0 0" 18 1
camera "$work/side.Camera" "0 0.8 0" "10 -90 0" 9 0

render() { # picture name, then the options of ferrox-tool render
  local picture=$1
  shift
  "$tool" render "$game" "$@" --size "$size" --out "$out/$picture"
}

# Viewing
render view-start.png Talon
render view-turned.png Talon --camera "$work/close.Camera" --yaw 35 --turret-yaw -40 --gun-pitch 8
render view-turret2.png Talon --camera "$work/close.Camera" --turret "Talon turret 2" --gun "Talon gun 3"
render view-destroyed.png Talon --camera "$work/close.Camera" --state destroyed
render view-top.png Talon --camera "$work/top.Camera" --turret-yaw 30
render view-no-garage.png Kestrel --camera "$work/close.Camera" --no-garage

# Armour inspection
render armour-collision.png Talon --camera "$work/close.Camera" --state collision
render armour-proving-ground.png "Proving Ground" --camera "$work/close.Camera" --state collision

# Camouflage
render camo-summer.png Talon --camera "$work/close.Camera" --camo summer:0
render camo-desert.png Talon --camera "$work/close.Camera" --camo desert:1 --turret-yaw 25

# glTF export: the viewport's picture and F3D's of the exported file, in the
# same pose, side by side in the guide. F3D (Debian's f3d) renders the .glb
# with its own PBR shading under its default light.
render gltf-viewport.png Talon --camera "$work/close.Camera" --yaw 35 --turret-yaw -40 \
  --gun-pitch 8 --camo summer:0 --no-garage
"$tool" gltf "$game" Talon --yaw 35 --turret-yaw -40 --gun-pitch 8 --camo summer:0 \
  --out "$work/talon.glb"
if command -v f3d >/dev/null; then
  f3d --output="$out/gltf-f3d.png" --resolution="${size/x/,}" --up=+Y \
    --camera-position=7,5,9 --camera-focal-point=0,0.8,0 "$work/talon.glb"
else
  echo "f3d is not installed: gltf-f3d.png left as it was" >&2
fi

# Screenshots: the dialog's render at any size, here with a transparent background
"$tool" render "$game" Basilisk --camera "$work/close.Camera" --no-garage --transparent \
  --size 800x450 --out "$out/screenshot-transparent.png"

# Mod tools: textures out of the archives, one of them as a picture, its UV template
"$tool" extract "$game" Talon --mod "$work/mod" >/dev/null
"$tool" dds "$work/mod/vehicles/Ardenia/A01_Talon/Hull_AM_hd.dds" --png "$out/texture-hull.png" >/dev/null
"$tool" uv "$game" Talon --out "$work/uv" --scale 4 --line-width 1
cp "$work/uv/vehicles/Ardenia/A01_Talon/Chassis_AM.png" "$out/uv-chassis.png"

recompress "$out"/*.png

# The window itself, with the sample's Talon loaded
capture=$build/tests/capture_window
if [ -x "$capture" ]; then
  (cd "$root" && "$capture" --screenshot docs/images/main-window.png)
  recompress "$root/docs/images/main-window.png"
fi

du -ch "$out"/*.png | tail -n 1
