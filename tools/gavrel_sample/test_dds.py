"""The DDS writer against test_support's decoder; the program's own textures."""
import struct
import sys
import unittest

from . import dds
from .test_support import REPO_DATA, TOOLS, read_dds

sys.path.insert(0, str(TOOLS))
import make_program_textures  # noqa: E402


def image(width, height, alpha=lambda x, y: 255):
    return [(min(255, 40 + 9 * x), min(255, 200 - 5 * y), 90, alpha(x, y))
            for y in range(height) for x in range(width)]


class DdsWriterTest(unittest.TestCase):
    def test_formats_decode_close_to_the_source_and_program_textures_are_current(self):
        two_colours = [(200, 30, 30, 255) if i % 3 else (30, 30, 200, 255) for i in range(16)]
        graded_alpha = image(8, 8, lambda x, y: 4 * (8 * y + x) + 2)
        holes = image(4, 4, lambda x, y: 0 if x == y else 255)
        for fmt, size, source, mips, tolerance in (
                ("DXT1", (64, 16), image(64, 16), 7, 30), ("DXT1", (4, 4), two_colours, 3, 8),
                ("DXT1", (4, 4), holes, 3, 30), ("DXT5", (8, 8), graded_alpha, 4, 24),
                ("DXT3", (8, 8), graded_alpha, 4, 24), ("BGRA32", (16, 4), image(16, 4), 5, 0),
                ("BGR24", (4, 4), image(4, 4), 3, 0)):
            with self.subTest(fmt=fmt, size=size):
                data = dds.dds(fmt, *size, source)
                info = read_dds(data)
                self.assertEqual((info["width"], info["height"], info["mips"], info["length"]),
                                 size + (mips, len(data)))
                self.assertEqual(info["format"], fmt.replace("BGRA", "RGB").replace("BGR2", "RGB2"))
                for d, s in zip(info["pixels"], source):  # DXT1 keeps one bit of alpha
                    s = (s if s[3] else d[:3] + (0,)) if fmt == "DXT1" else s
                    self.assertTrue(all(abs(a - b) <= tolerance for a, b in zip(d, s)), (d, s))
        self.assertLessEqual(*struct.unpack_from("<HH", dds.dds("DXT1", 4, 4, holes), 128))
        for name, data in make_program_textures.program_textures().items():
            self.assertEqual((REPO_DATA / name).read_bytes(), data, "run make_program_textures.py")
