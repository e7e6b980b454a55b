"""DDS writer for the sample installation: DXT1, DXT3 and DXT5 block
encoders, uncompressed 32-bit BGRA and 24-bit BGR, and box-filtered mip
chains. Python 3 standard library only.

An image is (width, height, pixels) with pixels a list of (r, g, b, a)
tuples, row by row from the top. Widths and heights are powers of two.

The encoders aim at clean, predictable output rather than best quality:
the sample textures are flat colours with a few lines, so a block holds at
most a handful of colours and the endpoint pair is simply the two colours
furthest apart. Blocks are memoised, which makes the flat textures cheap.
"""
import struct
from functools import lru_cache

DDSD_CAPS, DDSD_HEIGHT, DDSD_WIDTH, DDSD_PITCH = 0x1, 0x2, 0x4, 0x8
DDSD_PIXELFORMAT, DDSD_MIPMAPCOUNT, DDSD_LINEARSIZE = 0x1000, 0x20000, 0x80000
DDPF_ALPHAPIXELS, DDPF_FOURCC, DDPF_RGB = 0x1, 0x4, 0x40
DDSCAPS_COMPLEX, DDSCAPS_TEXTURE, DDSCAPS_MIPMAP = 0x8, 0x1000, 0x400000

# Alpha below this is "transparent" for the one-bit alpha of DXT1.
DXT1_ALPHA_CUT = 128

FORMATS = ("DXT1", "DXT3", "DXT5", "BGRA32", "BGR24")


# ------------------------------------------------------------ mip chain

def downsample(width, height, pixels):
    """Next mip level by a 2 x 2 box filter (a side of 1 stays 1)."""
    w2, h2 = max(1, width // 2), max(1, height // 2)
    out = []
    for y in range(h2):
        for x in range(w2):
            xs = {min(2 * x, width - 1), min(2 * x + 1, width - 1)}
            ys = {min(2 * y, height - 1), min(2 * y + 1, height - 1)}
            taps = [pixels[sy * width + sx] for sy in ys for sx in xs]
            out.append(tuple((sum(p[c] for p in taps) + len(taps) // 2) // len(taps)
                             for c in range(4)))
    return w2, h2, out


def mip_chain(width, height, pixels, levels=None):
    """[(w, h, pixels)] from the full image down to 1 x 1, or `levels` long."""
    chain = [(width, height, pixels)]
    while (chain[-1][0] > 1 or chain[-1][1] > 1) and (levels is None or len(chain) < levels):
        chain.append(downsample(*chain[-1]))
    return chain


# ------------------------------------------------------------ colour blocks

def to565(colour):
    r, g, b = colour[:3]
    return ((r * 31 + 127) // 255) << 11 | ((g * 63 + 127) // 255) << 5 | (b * 31 + 127) // 255


def from565(value):
    r, g, b = value >> 11, (value >> 5) & 63, value & 31
    return ((r * 255 + 15) // 31, (g * 255 + 31) // 63, (b * 255 + 15) // 31)


def palette(c0, c1, three_colour):
    a, b = from565(c0), from565(c1)
    if three_colour:
        return [a, b, tuple((x + y) // 2 for x, y in zip(a, b)), None]
    return [a, b, tuple((2 * x + y) // 3 for x, y in zip(a, b)),
            tuple((x + 2 * y) // 3 for x, y in zip(a, b))]


def distance(p, q):
    return sum((x - y) * (x - y) for x, y in zip(p[:3], q[:3]))


def endpoints(colours):
    """The two colours of the set that lie furthest apart."""
    colours = sorted(set(colours))
    best = (colours[0], colours[0])
    best_d = -1
    for i, p in enumerate(colours):
        for q in colours[i:]:
            d = distance(p, q)
            if d > best_d:
                best, best_d = (p, q), d
    return best


@lru_cache(maxsize=None)
def colour_block(block, allow_transparent):
    """8-byte colour block of 16 RGBA pixels. With allow_transparent (DXT1),
    a block with pixels below the alpha cut uses the three-colour form whose
    index 3 is transparent black; otherwise the four-colour form, c0 > c1."""
    transparent = allow_transparent and any(p[3] < DXT1_ALPHA_CUT for p in block)
    opaque = [p for p in block if not transparent or p[3] >= DXT1_ALPHA_CUT]
    if not opaque:
        return struct.pack("<HHI", 0, 0, 0xFFFFFFFF)
    e0, e1 = endpoints(opaque)
    c0, c1 = to565(e0), to565(e1)
    if transparent:
        if c0 > c1:
            c0, c1 = c1, c0
    elif c0 < c1:
        c0, c1 = c1, c0
    if c0 == c1 and not transparent:
        return struct.pack("<HHI", c0, c1, 0)
    colours = palette(c0, c1, transparent or c0 <= c1)
    bits = 0
    for i, p in enumerate(block):
        if transparent and p[3] < DXT1_ALPHA_CUT:
            index = 3
        else:
            index = min((k for k in range(4) if colours[k] is not None),
                        key=lambda k: distance(p, colours[k]))
        bits |= index << (2 * i)
    return struct.pack("<HHI", c0, c1, bits)


def explicit_alpha_block(block):
    """DXT3: sixteen 4-bit alphas, lowest bits first."""
    bits = 0
    for i, p in enumerate(block):
        bits |= ((p[3] + 8) // 17) << (4 * i)
    return struct.pack("<Q", bits)


def alpha_values(a0, a1):
    if a0 > a1:
        return [a0, a1] + [((8 - i) * a0 + (i - 1) * a1) // 7 for i in range(2, 8)]
    return [a0, a1] + [((6 - i) * a0 + (i - 1) * a1) // 5 for i in range(2, 6)] + [0, 255]


@lru_cache(maxsize=None)
def interpolated_alpha_block(alphas):
    """DXT5 alpha block in the eight-value form (a0 > a1) whenever the block
    has more than one alpha."""
    a0, a1 = max(alphas), min(alphas)
    values = alpha_values(a0, a1)
    bits = 0
    for i, a in enumerate(alphas):
        index = min(range(8), key=lambda k: abs(values[k] - a))
        bits |= index << (3 * i)
    return bytes((a0, a1)) + bits.to_bytes(6, "little")


def blocks(width, height, pixels):
    """The 4 x 4 blocks of an image, row by row; edges repeat the last pixel."""
    for by in range(0, height, 4):
        for bx in range(0, width, 4):
            yield tuple(pixels[min(by + y, height - 1) * width + min(bx + x, width - 1)]
                        for y in range(4) for x in range(4))


def encode_level(fmt, width, height, pixels):
    if fmt == "BGRA32":
        return b"".join(bytes((p[2], p[1], p[0], p[3])) for p in pixels)
    if fmt == "BGR24":
        return b"".join(bytes((p[2], p[1], p[0])) for p in pixels)
    out = []
    for block in blocks(width, height, pixels):
        if fmt == "DXT1":
            out.append(colour_block(block, True))
        elif fmt == "DXT3":
            out.append(explicit_alpha_block(block) + colour_block(block, False))
        elif fmt == "DXT5":
            out.append(interpolated_alpha_block(tuple(p[3] for p in block))
                       + colour_block(block, False))
        else:
            raise ValueError(f"unknown format {fmt}")
    return b"".join(out)


# ------------------------------------------------------------ file

def header(fmt, width, height, levels, top_size):
    flags = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH | DDSD_PIXELFORMAT
    flags |= DDSD_LINEARSIZE if fmt.startswith("DXT") else DDSD_PITCH
    caps = DDSCAPS_TEXTURE
    if levels > 1:
        flags |= DDSD_MIPMAPCOUNT
        caps |= DDSCAPS_COMPLEX | DDSCAPS_MIPMAP
    pitch = top_size if fmt.startswith("DXT") else width * (4 if fmt == "BGRA32" else 3)
    data = bytearray(128)
    data[0:4] = b"DDS "
    struct.pack_into("<7I", data, 4, 124, flags, height, width, pitch, 0, levels)
    if fmt.startswith("DXT"):
        pixel_format = (32, DDPF_FOURCC, int.from_bytes(fmt.encode(), "little"), 0, 0, 0, 0, 0)
    elif fmt == "BGRA32":
        pixel_format = (32, DDPF_RGB | DDPF_ALPHAPIXELS, 0, 32,
                        0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000)
    else:
        pixel_format = (32, DDPF_RGB, 0, 24, 0x00FF0000, 0x0000FF00, 0x000000FF, 0)
    struct.pack_into("<8I", data, 76, *pixel_format)
    struct.pack_into("<4I", data, 108, caps, 0, 0, 0)
    return bytes(data)


def dds(fmt, width, height, pixels, levels=None):
    """A whole DDS file: levels None gives the full chain down to 1 x 1."""
    if fmt not in FORMATS:
        raise ValueError(f"unknown format {fmt}")
    if len(pixels) != width * height:
        raise ValueError("pixel count does not match the size")
    chain = mip_chain(width, height, pixels, levels)
    data = [encode_level(fmt, *level) for level in chain]
    return header(fmt, width, height, len(chain), len(data[0])) + b"".join(data)


def level_size(fmt, width, height):
    """Bytes of one level of the given size."""
    if fmt.startswith("DXT"):
        block = 8 if fmt == "DXT1" else 16
        return ((width + 3) // 4) * ((height + 3) // 4) * block
    return width * height * (4 if fmt == "BGRA32" else 3)
