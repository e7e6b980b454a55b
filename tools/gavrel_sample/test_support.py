"""Readers of packed XML, .primitives and DDS written from the file layouts, apart
from the writers; one shared scale-1 installation for the checks that only read."""
import atexit
import gettext
import shutil
import struct
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
import zipfile
from functools import lru_cache
from pathlib import Path

from .current_formats import SET3_STRIDES

TOOLS = Path(__file__).resolve().parent.parent
REPO_DATA = TOOLS.parent / "data"
VEHICLE_DEFS = "scripts/item_defs/vehicles"
PACKED_MAGIC = b"\x45\x4E\xA1\x62"


def run(out, *arguments, env=None):
    return subprocess.run([sys.executable, str(TOOLS / "make_sample_game.py"), "--out", str(out),
                           *arguments], capture_output=True, text=True, timeout=300, env=env)


def generate(out, *arguments):
    result = run(out, *arguments)
    assert result.returncode == 0, result.stderr
    return out


def listed_packages(config_path):
    return [element.text for element in ElementTree.parse(config_path).getroot().iter("Zip")]


def tank_list(path):
    return [(n.tag, n.findtext("ResPath"), n.findtext("DataPath"))
            for n in ElementTree.parse(path).getroot()]


def file_members(archive):
    return [info for info in archive.infolist() if not info.is_dir()]


# Packed XML becomes ElementTree elements; attrib["packed"] = (record, type, value).

def set_value(element, record, kind, raw):
    if (kind not in range(1, 6) or kind == 2 and len(raw) not in (1, 2, 4)
            or kind == 3 and len(raw) % 4 or kind == 4 and raw not in (b"", b"\x01")):
        raise ValueError(f"value type {kind} of {len(raw)} bytes")
    value = {1: lambda: raw.decode("utf-8"), 2: lambda: int.from_bytes(raw, "little", signed=True),
             3: lambda: struct.unpack(f"<{len(raw) // 4}f", raw), 4: lambda: raw == b"\x01",
             5: lambda: bytes(raw)}[kind]()
    element.attrib["packed"] = (record, kind, value)
    element.text = {2: str, 3: lambda v: " ".join(f"{x:.6g}" for x in v),
                    4: lambda v: "true" if v else "false", 5: repr}.get(kind, str)(value)


def read_record(data, pos, names, element):
    count, own = struct.unpack_from("<hI", data, pos)
    entries = [struct.unpack_from("<hI", data, pos + 6 + 6 * i) for i in range(max(count, 0))]
    start = pos + 6 + 6 * len(entries)
    pos = previous = start + (own & 0x0FFFFFFF)
    if own >> 28 == 0 or pos > len(data):
        raise ValueError("bad own value")
    set_value(element, True, own >> 28, data[start:pos])
    for index, word in entries:
        end, kind = start + (word & 0x0FFFFFFF), word >> 28
        child = ElementTree.SubElement(element, names[index])
        if kind == 0:
            pos = read_record(data, pos, names, child)
        else:
            set_value(child, False, kind, data[pos:end])
            pos = end
        if pos != end or end < previous or end > len(data):
            raise ValueError("end offset out of order, beyond the end or not the record's size")
        previous = end
    return pos


def load_xml(data):
    """An ElementTree element of a packed or a plain text file."""
    if not data.startswith(PACKED_MAGIC):
        return ElementTree.fromstring(data)
    end = data.index(b"\0\0", 5) + 1 if data[5] else 5
    names = [n.decode("utf-8") for n in data[5:end].split(b"\0")[:-1]] if data[5] else []
    root = ElementTree.Element("root")
    if read_record(data, end + 1, names, root) != len(data):
        raise ValueError("bytes left after the root record")
    return root


def text(element, path=None):
    found = element if path is None else element.find(path)
    return "" if found is None else (found.text or "").strip()


def translation(node):
    """Translation of a node's transform, packed (12 floats) or plain (row3)."""
    transform = node.find("transform")
    packed = transform.attrib.get("packed")
    return packed[2][9:12] if packed else tuple(map(float, text(transform, "row3").split()))


def read_chunks(data):
    """{name: payload} of a .primitives file, checking every offset."""
    if len(data) < 8 or struct.unpack_from("<I", data)[0] != 0x42A14E65:
        raise ValueError("no magic")
    end = len(data) - 4
    pos, payload, chunks = end - struct.unpack_from("<I", data, end)[0], 4, {}
    table = pos
    while 4 <= pos < end:
        size, name_length = struct.unpack_from("<I16xI", data, pos)
        chunks[data[pos + 24:pos + 24 + name_length].decode("ascii")] = \
            data[payload:payload + size]
        pos += 24 + (name_length + 3) // 4 * 4
        payload += (size + 3) // 4 * 4
    if pos != end or payload != table:
        raise ValueError("table and payloads do not fill the file")
    return chunks


def unpack_vector(word):
    def field(value, bits, factor):
        return (value - (1 << bits) if value >> (bits - 1) else value) / factor
    return (field(word & 0x7FF, 11, 1023), field((word >> 11) & 0x7FF, 11, 1023),
            field(word >> 22, 10, 511))


def unpack_bytes(data, at):
    """A processed vector: three unsigned bytes over -1..1."""
    return tuple(b / 255 * 2 - 1 for b in data[at:at + 3])


def read_geometry(vertices, indices):
    """(vertex format, [(position, normal)], index format, indices, groups)
    of a vertex and an index chunk, checking their sizes. A processed vertex
    chunk ("BPVT...", count 0) gives its second, set3 format."""
    vfmt, ifmt = (c[:64].split(b"\0")[0].decode("ascii") for c in (vertices, indices))
    header = 68
    if vfmt.startswith("BPVT"):
        if struct.unpack_from("<I", vertices, 64)[0] != 0:
            raise ValueError("processed chunk with a first count")
        vfmt, header = vertices[68:132].split(b"\0")[0].decode("ascii"), 136
    stride = {"xyznuv": 32, "xyznuvtb": 32, "xyznuviiiwwtb": 37,
              **SET3_STRIDES}[vfmt.lower()]
    count, group_count = struct.unpack_from("<II", indices, 64)
    width = 4 if ifmt == "list32" else 2
    if (header + struct.unpack_from("<I", vertices, header - 4)[0] * stride != len(vertices)
            or 72 + count * width + 16 * group_count != len(indices)):
        raise ValueError("chunk size")

    def normal(at):
        if vfmt.lower() == "xyznuv":
            return struct.unpack_from("<3f", vertices, at)
        if vfmt.startswith("set3/"):
            return unpack_bytes(vertices, at)
        return unpack_vector(struct.unpack_from("<I", vertices, at)[0])
    return (vfmt, [(struct.unpack_from("<3f", vertices, at), normal(at + 12))
                   for at in range(header, len(vertices), stride)],
            ifmt, list(struct.unpack_from(f"<{count}{'I' if width == 4 else 'H'}", indices, 72)),
            [struct.unpack_from("<4I", indices, 72 + count * width + 16 * g)
             for g in range(group_count)])


def colour_table(block, four_colours):
    c0, c1 = struct.unpack_from("<HH", block)
    a, b = ((v >> 11 << 3 | v >> 13, (v >> 5 & 63) << 2 | (v >> 9 & 3),
             (v & 31) << 3 | (v >> 2 & 7)) for v in (c0, c1))
    mix = [tuple((wa * x + wb * y) // (wa + wb) for x, y in zip(a, b)) + (255,)
           for wa, wb in ((2, 1), (1, 2), (1, 1))]
    return [a + (255,), b + (255,)] + (mix[:2] if c0 > c1 or four_colours else [mix[2], (0,) * 4])


def alpha_values(block, kind):
    if kind == "DXT3":
        return [(int.from_bytes(block[:8], "little") >> (4 * i) & 15) * 17 for i in range(16)]
    a0, a1, bits = block[0], block[1], int.from_bytes(block[2:8], "little")
    values = [a0, a1] + ([((7 - i) * a0 + i * a1) // 7 for i in range(1, 7)] if a0 > a1 else
                         [((5 - i) * a0 + i * a1) // 5 for i in range(1, 5)] + [0, 255])
    return [values[bits >> (3 * i) & 7] for i in range(16)]


def read_dds(data):
    """Header fields and the decoded top level (RGBA tuples, row by row)."""
    if data[:4] != b"DDS " or struct.unpack_from("<I", data, 4)[0] != 124:
        raise ValueError("not a DDS file")
    height, width = struct.unpack_from("<II", data, 12)
    mips = max(struct.unpack_from("<I", data, 28)[0], 1)
    flags, fourcc, bits = struct.unpack_from("<I4sI", data, 80)
    kind = fourcc.decode() if flags & 4 else f"RGB{bits}"
    block = {"DXT1": 8, "DXT3": 16, "DXT5": 16}.get(kind)
    sizes = [((max(1, width >> m) + 3) // 4) * ((max(1, height >> m) + 3) // 4) * block if block
             else max(1, width >> m) * max(1, height >> m) * bits // 8 for m in range(mips)]
    top, pixels, step = data[128:128 + sizes[0]], [None] * (width * height), block or bits // 8
    for n in range(len(top) // step):
        chunk = top[n * step:(n + 1) * step]
        if not block:
            pixels[n] = (chunk[2], chunk[1], chunk[0], chunk[3] if step == 4 else 255)
            continue
        table = colour_table(chunk[-8:], kind != "DXT1")
        texels = [table[struct.unpack_from("<I", chunk, step - 4)[0] >> (2 * i) & 3]
                  for i in range(16)]
        if kind != "DXT1":
            texels = [t[:3] + (a,) for t, a in zip(texels, alpha_values(chunk, kind))]
        bx, by = n % ((width + 3) // 4) * 4, n // ((width + 3) // 4) * 4
        for i, t in enumerate(texels):
            if bx + i % 4 < width and by + i // 4 < height:
                pixels[(by + i // 4) * width + bx + i % 4] = t
    return {"width": width, "height": height, "mips": mips, "format": kind,
            "length": 128 + sum(sizes), "pixels": pixels}


class Installation:
    """Reads a generated installation as the program looks things up: loose
    below res/ first, then the archives in list order, in any letter case."""

    def __init__(self, out):
        self.out, self.res, self.index, self.catalogues = out, out / "res", {}, {}
        self.archives = [zipfile.ZipFile(self.res / "packages" / name)
                         for name in listed_packages(out / "ferrox-resources.cfg")]
        for archive in self.archives:
            for info in file_members(archive):
                self.index.setdefault(info.filename.lower(), (archive, info))

    def place(self, name):
        hit = "loose" if (self.res / name).is_file() else self.index.get(name.lower())
        return Path(hit[0].filename).name if isinstance(hit, tuple) else hit

    def model_name(self, name):
        """name, or name + "_processed" where only that exists, as the program
        looks up a model's .visual and .primitives."""
        return name if self.place(name) or not self.place(name + "_processed") \
            else name + "_processed"

    def read(self, name):
        if (self.res / name).is_file():
            return (self.res / name).read_bytes()
        return self.index[name.lower()][0].read(self.index[name.lower()][1])

    def xml(self, name):
        return load_xml(self.read(name))

    def translate(self, text):
        """#catalogue:key, or None; keys match in their exact case."""
        catalogue, key = text.lstrip("#").split(":", 1)
        if catalogue not in self.catalogues:
            with open(self.res / "text" / "LC_MESSAGES" / f"{catalogue}.mo", "rb") as file:
                self.catalogues[catalogue] = gettext.GNUTranslations(file)._catalog
        return self.catalogues[catalogue].get(key)

    def vehicles(self):
        return [(res_path.rsplit("/", 1)[-1], entry.tag, entry)
                for _, res_path, _ in tank_list(self.out / "ferrox-tank_list.cfg")
                for entry in self.xml(f"{res_path}/list.xml")]

    def files(self, suffixes):
        files = {str(p): p.read_bytes() for p in self.res.rglob("*")
                 if p.is_file() and p.name.endswith(suffixes)}
        files.update({f"{Path(a.filename).name}:{info.filename}": a.read(info)
                      for a in self.archives for info in file_members(a)
                      if info.filename.endswith(suffixes)})
        return files


@lru_cache(maxsize=None)
def shared_installation():
    """One scale-1 installation, and its mod folder, for every check that only reads."""
    temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
    atexit.register(shutil.rmtree, temp, ignore_errors=True)
    return Installation(generate(temp / "game", "--mod-out", str(temp / "game-mod")))
