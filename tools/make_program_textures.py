#!/usr/bin/env python3
"""Draws the two textures that ship with the program into data/:

    NoTexture.dds  64 x 64 magenta and black checker (8 texel squares), DXT1,
                   full mip chain: what a material shows when its texture
                   cannot be loaded
    grid.dds       256 x 256 light grey with darker lines every 32 texels,
                   DXT1, full mip chain: the texture of the default material

    python3 tools/make_program_textures.py [--out DIR]   (default: data/)

Run by hand; the files are committed. The output is deterministic.
"""
import argparse
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from gavrel_sample import dds as gavrel_dds  # noqa: E402

MAGENTA = (255, 0, 255, 255)
BLACK = (0, 0, 0, 255)
GRID_BACKGROUND = (200, 200, 200, 255)
GRID_LINE = (120, 120, 120, 255)


def checker(size=64, square=8):
    return [MAGENTA if (x // square + y // square) % 2 == 0 else BLACK
            for y in range(size) for x in range(size)]


def grid(size=256, cell=32, width=2):
    return [GRID_LINE if x % cell < width or y % cell < width else GRID_BACKGROUND
            for y in range(size) for x in range(size)]


def program_textures():
    return {"NoTexture.dds": gavrel_dds.dds("DXT1", 64, 64, checker()),
            "grid.dds": gavrel_dds.dds("DXT1", 256, 256, grid())}


def main(argv=None):
    parser = argparse.ArgumentParser(description="Writes data/NoTexture.dds and data/grid.dds.")
    parser.add_argument("--out", type=Path,
                        default=Path(__file__).resolve().parent.parent / "data")
    args = parser.parse_args(argv)
    args.out.mkdir(parents=True, exist_ok=True)
    for name, data in program_textures().items():
        (args.out / name).write_bytes(data)
    return 0


if __name__ == "__main__":
    sys.exit(main())
