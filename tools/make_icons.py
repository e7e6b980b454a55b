#!/usr/bin/env python3
"""Draws the program's icons (a steel-blue shield with an orange "F") as PNG
files into icons/. Run once after changing the drawing; the PNGs are
committed."""
import math
import struct
import sys
import zlib
from pathlib import Path


def png_bytes(width, height, pixels):
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF))
    raw = b"".join(b"\0" + bytes(pixels[y * width * 4:(y + 1) * width * 4])
                   for y in range(height))
    return (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def inside_shield(u, v):
    if v < 0.08 or v > 0.95 or u < 0.1 or u > 0.9:
        return False
    if v < 0.6:
        return True
    # the lower part narrows to a point
    half = 0.4 * (0.95 - v) / 0.35
    return abs(u - 0.5) <= half


def inside_letter(u, v):
    stem = 0.34 <= u <= 0.46 and 0.22 <= v <= 0.78
    top = 0.34 <= u <= 0.68 and 0.22 <= v <= 0.33
    middle = 0.34 <= u <= 0.62 and 0.45 <= v <= 0.55
    return stem or top or middle


def draw(size):
    samples = 4
    pixels = bytearray(size * size * 4)
    for y in range(size):
        for x in range(size):
            r = g = b = a = 0.0
            for sy in range(samples):
                for sx in range(samples):
                    u = (x + (sx + 0.5) / samples) / size
                    v = (y + (sy + 0.5) / samples) / size
                    if inside_letter(u, v):
                        c = (240, 140, 30)
                    elif inside_shield(u, v):
                        shade = 0.75 + 0.25 * math.cos(v * math.pi)
                        c = (70 * shade, 100 * shade, 140 * shade)
                    else:
                        continue
                    r += c[0]; g += c[1]; b += c[2]; a += 255
            n = samples * samples
            pixels[(y * size + x) * 4:(y * size + x) * 4 + 4] = bytes(
                int(min(255, v / n)) for v in (r, g, b, a))
    # colour channels were summed over covered samples only: undo the
    # premultiplication so edges keep their colour
    for i in range(0, len(pixels), 4):
        alpha = pixels[i + 3]
        if alpha:
            for k in range(3):
                pixels[i + k] = min(255, pixels[i + k] * 255 // alpha)
    return png_bytes(size, size, pixels)


def main():
    out = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent / "icons")
    out.mkdir(parents=True, exist_ok=True)
    for size in (16, 32, 128):
        (out / f"ferrox_ico_{size}.png").write_bytes(draw(size))


if __name__ == "__main__":
    main()
