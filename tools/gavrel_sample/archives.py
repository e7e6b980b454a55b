"""Zip archives of the sample installation: members with fixed dates and
attributes, folder entries, placeholder texts that say where their bytes
came from, tiny PNG icons, and the contents of the scale-1 archives that
are neither models nor game data."""
import random
import struct
import zipfile
import zlib
from dataclasses import dataclass

ZIP_DATE = (2020, 1, 1, 0, 0, 0)
STORED = zipfile.ZIP_STORED
DEFLATED = zipfile.ZIP_DEFLATED

NATIONS = ["Ardenia", "Borvia", "Caldera", "Drevnia",
           "Estmark", "Fennlund", "Gorvath", "Hollin"]
CODENAMES = ["Talon", "Warden", "Kestrel", "Harrow", "Basilisk", "Ironmoth",
             "Bastion", "Falchion", "Corvid", "Marauder", "Sentinel", "Hornet",
             "Pike", "Lance", "Halberd", "Mantlet", "Rook", "Vulture", "Cinder",
             "Gorge", "Thistle", "Badger", "Wyvern", "Anvil"]
MAP_NAMES = ["Saltmarsh", "Ember_Pass", "Grey_Ridge", "Old_Quarry",
             "Frostmere", "Redwater", "Kettle_Hills", "Ashfield"]


@dataclass(frozen=True)
class Member:
    name: str
    data: bytes
    compress: int = STORED

# ---------------------------------------------------------------- helpers

def describe(archive, name, note=""):
    """Placeholder text that tells where a byte stream came from."""
    text = f"Ferrox sample member\narchive: {archive}\nname: {name}\n"
    if note:
        text += note + "\n"
    return text.encode("utf-8")


def placeholder(archive, name, note=""):
    """describe(), as an XML document when the name says XML, so that every
    .xml file of the installation parses."""
    text = describe(archive, name, note)
    if name.lower().endswith(".xml"):
        return b"<placeholder>\n" + text + b"</placeholder>\n"
    return text


def text_member(archive, name, note="", compress=STORED):
    return Member(name, placeholder(archive, name, note), compress)


def png_bytes(origin, size=4):
    """A real, tiny PNG (one colour taken from the name) whose tEXt chunk
    holds the archive and member name in clear."""
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF))
    colour = zlib.crc32(origin.encode("utf-8")).to_bytes(4, "big")[:3]
    raw = b"".join(b"\0" + colour * size for _ in range(size))
    return (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0))
            + chunk(b"tEXt", b"Comment\0" + origin.encode("utf-8"))
            + chunk(b"IDAT", zlib.compress(raw, 9))
            + chunk(b"IEND", b""))


def png_member(archive, name):
    return Member(name, png_bytes(f"{archive}:{name}"), STORED)


def with_directories(members):
    """Inserts a directory entry ("folder/") before the first member of each
    folder, the way zip tools write a folder tree."""
    seen = set()
    result = []
    for member in members:
        parts = member.name.split("/")[:-1]
        for depth in range(1, len(parts) + 1):
            folder = "/".join(parts[:depth]) + "/"
            if folder not in seen:
                seen.add(folder)
                result.append(Member(folder, b"", STORED))
        result.append(member)
    return result


def write_package(path, members):
    """A standard zip archive with fixed timestamps and attributes."""
    with zipfile.ZipFile(path, "w") as archive:
        for member in with_directories(members):
            info = zipfile.ZipInfo(member.name, date_time=ZIP_DATE)
            info.create_system = 3  # Unix, so the attributes below mean the same everywhere
            if member.name.endswith("/"):
                info.external_attr = (0o40755 << 16) | 0x10
                info.compress_type = STORED
            else:
                info.external_attr = 0o100644 << 16
                info.compress_type = member.compress
            archive.writestr(info, member.data)


# ------------------------------------------------------- scale-1 archives
# Each archive mixes ZIP_STORED and ZIP_DEFLATED members; the compression of
# every member is given where it is listed.

def large_table_text(size):
    """Non-trivial repeating text (numbered rows) of exactly size bytes."""
    rows = []
    total = 0
    index = 0
    while total < size:
        nation = NATIONS[index % len(NATIONS)]
        codename = CODENAMES[(index * 7) % len(CODENAMES)]
        row = (f"{index:06d} {nation:<9} {codename:<9} hull {20 + index % 90:3d}/"
               f"{15 + index % 60:3d}/{10 + index % 40:3d} mm  engine {300 + index % 700:4d} hp"
               f"  crew {3 + index % 3}\n")
        rows.append(row)
        total += len(row)
        index += 1
    return "".join(rows).encode("ascii")[:size]


def hangar_members(archive, space, large_stored_size=0):
    base = f"spaces/{space}"
    members = [
        text_member(archive, f"{base}/space.settings", compress=STORED),
        text_member(archive, f"{base}/Environments/Default/Environment.xml", compress=DEFLATED),
        text_member(archive, f"{base}/0000fffeo.chunk", compress=DEFLATED),
        text_member(archive, f"{base}/0000fffeo.cdata", compress=STORED),
    ]
    if large_stored_size:
        noise = random.Random(space).randbytes(large_stored_size)
        members.append(Member(f"{base}/Large_Stored_Terrain.bin", noise, STORED))
    return members


# Model parts of vehicles whose model folder is not named like their tag;
