"""The window icons: every listed name is drawn, as a PNG that shows
something, and no two icons look alike."""
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib
from pathlib import Path

SCRIPT = Path(__file__).resolve().parent / "make_icons.py"


def rgba_rows(data):
    width, height = struct.unpack(">II", data[16:24])
    idat, offset = b"", 8
    while offset < len(data):
        length, kind = struct.unpack(">I4s", data[offset:offset + 8])
        if kind == b"IDAT":
            idat += data[offset + 8:offset + 8 + length]
        offset += 12 + length
    raw = zlib.decompress(idat)
    stride = width * 4 + 1
    return width, height, [raw[y * stride + 1:(y + 1) * stride] for y in range(height)]


class WindowIconTest(unittest.TestCase):
    def test_every_listed_icon_is_drawn_and_distinct(self):
        names = subprocess.run([sys.executable, SCRIPT, "--list"], check=True,
                               capture_output=True, text=True).stdout.split()
        self.assertIn("tank.png", names)
        with tempfile.TemporaryDirectory() as out:
            subprocess.run([sys.executable, SCRIPT, "--window", out], check=True)
            self.assertEqual(sorted(p.name for p in Path(out).iterdir()), sorted(names))
            seen = {}
            for name in names:
                data = (Path(out) / name).read_bytes()
                self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n", name)
                width, height, rows = rgba_rows(data)
                self.assertEqual((width, height), (32, 32), name)
                opaque = sum(row[x + 3] > 128 for row in rows for x in range(0, len(row), 4))
                # Neither empty nor a plain square.
                self.assertGreater(opaque, 32 * 32 // 10, name)
                self.assertNotIn(data, seen, f"{name} looks like {seen.get(data)}")
                seen[data] = name


if __name__ == "__main__":
    unittest.main()
