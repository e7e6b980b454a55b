"""Textures of the sample installation: every picture is a function of a
few numbers, cached, so vehicles of one nation share the work."""
import random
import struct
from functools import lru_cache

from . import dds as gavrel_dds
from .packed_xml import encode

NATION_COLOURS = {  # dominant colour of every diffuse texture of a nation
    "Ardenia": (110, 120, 60),   # olive
    "Borvia": (190, 165, 110),   # sand
    "Caldera": (95, 110, 130),   # grey-blue
    "Drevnia": (120, 40, 35),    # dark red
    "Hostile": (140, 128, 96),   # khaki
}
PANEL_SPACING = 32               # texels between panel lines at 128 x 128
DIFFUSE_SIZE = 128
DETAIL_SIZE = 64                 # normal, gloss and track maps
TRACK_COLOUR = (52, 50, 46)

def lighter(colour, amount=0.45):
    return tuple(round(c + (255 - c) * amount) for c in colour)


def darker(colour, amount=0.8):
    return tuple(round(c * amount) for c in colour)


def on_line(x, y, spacing, width=2):
    return x % spacing < width or y % spacing < width


@lru_cache(maxsize=None)
def panel_pixels(colour, size, spacing):
    """The nation colour with light panel lines every spacing texels."""
    base, line = tuple(colour) + (255,), lighter(colour) + (255,)
    return tuple(line if on_line(x, y, spacing) else base
                 for y in range(size) for x in range(size))


@lru_cache(maxsize=None)
def normal_pixels(size, spacing, dxt5):
    """A flat surface with grooves along the panel lines. DXT5 keeps x in
    alpha and y in green; the DXT1 form keeps x in red and y in green."""
    def encode_component(v):
        return max(0, min(255, round((v * 0.5 + 0.5) * 255)))
    pixels = []
    for y in range(size):
        for x in range(size):
            nx = 0.4 if x % spacing == 0 else -0.4 if x % spacing == 1 else 0.0
            ny = 0.4 if y % spacing == 0 else -0.4 if y % spacing == 1 else 0.0
            ex, ey = encode_component(nx), encode_component(ny)
            pixels.append((128, ey, 128, ex) if dxt5 else (ex, ey, 0, 255))
    return tuple(pixels)


@lru_cache(maxsize=None)
def gloss_pixels(size, spacing):
    """Metal in red, gloss in green: dull seams on a semi-gloss plate."""
    return tuple((40, 90, 0, 255) if on_line(x, y, spacing) else (40, 170, 0, 255)
                 for y in range(size) for x in range(size))


@lru_cache(maxsize=None)
def specular_pixels(size, spacing):
    """Grey specular strength for the older effects, which take a specular
    map's colour as the highlight's: dull seams on a semi-gloss plate."""
    return tuple((90, 90, 90, 255) if on_line(x, y, spacing) else (170, 170, 170, 255)
                 for y in range(size) for x in range(size))


@lru_cache(maxsize=None)
def track_pixels(size):
    """Dark links with lighter cleats and a see-through hole in each link."""
    pixels = []
    for y in range(size):
        for x in range(size):
            if 6 <= x % 16 < 10 and 6 <= y % 8 < 8:
                pixels.append((0, 0, 0, 0))
            elif y % 8 < 2:
                pixels.append(lighter(TRACK_COLOUR, 0.3) + (255,))
            else:
                pixels.append(TRACK_COLOUR + (255,))
    return tuple(pixels)


@lru_cache(maxsize=None)
def texture(fmt, kind, size, colour=None, levels=None):
    """One DDS file by what it shows: 'panel' (needs colour), 'normal5',
    'normal1', 'gloss', 'specular', 'track'."""
    spacing = PANEL_SPACING * size // DIFFUSE_SIZE
    pixels = {
        "panel": lambda: panel_pixels(colour, size, spacing),
        "normal5": lambda: normal_pixels(size, max(spacing, 4), True),
        "normal1": lambda: normal_pixels(size, max(spacing, 4), False),
        "gloss": lambda: gloss_pixels(size, max(spacing, 4)),
        "specular": lambda: specular_pixels(size, max(spacing, 4)),
        "track": lambda: track_pixels(size),
    }[kind]()
    return gavrel_dds.dds(fmt, size, size, list(pixels), levels)


def texformat_file(hd_path):
    return encode({"mip_info": {"mip": hd_path}})


def dds_bytes(seed, size=8):
    """An uncompressed 32-bit DDS texture (blue first in memory, then green,
    red, alpha), each channel a different stripe pattern."""
    header = bytearray(128)
    header[0:4] = b"DDS "
    struct.pack_into("<7I", header, 4, 124, 0x100F, size, size, size * 4, 0, 1)
    struct.pack_into("<8I", header, 76, 32, 0x41, 0, 32,
                     0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000)
    struct.pack_into("<I", header, 108, 0x1000)
    rng = random.Random(seed)
    shift = rng.randrange(size)
    pixels = bytearray()
    for y in range(size):
        for x in range(size):
            pixels += bytes((255 if (x + shift) % 4 < 2 else 0,
                             255 if (y + shift) % 4 < 2 else 0,
                             255 if (x + y) % 3 == 0 else 0,
                             255 if (x * y + shift) % 5 == 0 else 0))
    return bytes(header) + bytes(pixels)



@lru_cache(maxsize=None)
def burnt_pixels(colour, size, spacing):
    """The panel picture after a fire: charred to a third of its colour,
    with black soot blotches and rust streaks."""
    rng = random.Random(f"burnt {colour} {size}")
    soot = {(rng.randrange(size), rng.randrange(size), rng.randrange(3, 9))
            for _ in range(size // 6)}
    charred, rust = darker(colour, 0.35), (92, 52, 30)
    pixels = []
    for y in range(size):
        for x in range(size):
            if any((x - sx) ** 2 + (y - sy) ** 2 < r * r for sx, sy, r in soot):
                pixels.append((18, 16, 14, 255))
            elif x % spacing in (5, 6) and (y // 4) % 3 == 0:
                pixels.append(rust + (255,))
            else:
                pixels.append(charred + (255,))
    return tuple(pixels)


@lru_cache(maxsize=None)
def mask_pixels(size):
    """A camouflage exclusion mask: white where the pattern may go, black
    blocks where it may not."""
    return tuple((0, 0, 0, 255) if (x // 8 + y // 8) % 3 == 0 else (255, 255, 255, 255)
                 for y in range(size) for x in range(size))


@lru_cache(maxsize=None)
def extra_texture(fmt, kind, size, colour=None):
    spacing = max(PANEL_SPACING * size // DIFFUSE_SIZE, 4)
    pixels = {"burnt": lambda: burnt_pixels(colour, size, spacing),
              "mask": lambda: mask_pixels(size)}[kind]()
    return gavrel_dds.dds(fmt, size, size, list(pixels))


def large_panel(size, colour):
    """A one-level 32-bit BGRA panel texture built row by row, fast enough
    for the sizes of the heavy benchmark vehicle."""
    spacing = PANEL_SPACING * size // DIFFUSE_SIZE
    base, line = bytes(colour[2::-1]) + b"\xff", bytes(lighter(colour)[2::-1]) + b"\xff"
    plain = b"".join(line if x % spacing < 2 else base for x in range(size))
    lined = line * size
    pixels = b"".join(lined if y % spacing < 2 else plain for y in range(size))
    return gavrel_dds.header("BGRA32", size, size, 1, len(pixels)) + pixels
