#!/usr/bin/env python3
"""Writes a small but complete installation of the game Gavrel into a folder.

    python3 tools/make_sample_game.py --out DIR [--scale N] [--force] [--with-broken]

The installation is built from the game's file formats alone (plain XML, zip
archives below res/packages/, loose files below res/); nothing here imports or
calls Ferrox code, so Ferrox's readers can be tested against it.

Layout of the script: one function per kind of content (marker, version file,
each archive, loose files, archive list, bulk archives for benchmarks), then
generate() which puts them together, and main() which handles the command
line and the stamp. Everything is deterministic: the same arguments give
byte-identical files (fixed zip timestamps and attributes, seeded random
numbers, fixed member order).
"""
import argparse
import hashlib
import random
import shutil
import struct
import sys
import zipfile
import zlib
from dataclasses import dataclass
from pathlib import Path

# Bump when the output changes in a way a stamp digest would not show.
GENERATOR_VERSION = 1
STAMP_NAME = ".ferrox-sample-stamp"
ZIP_DATE = (2020, 1, 1, 0, 0, 0)
STORED = zipfile.ZIP_STORED
DEFLATED = zipfile.ZIP_DEFLATED

MARKER_NAME = "Gavrel.exe"
RESOURCES_LIST_NAME = "ferrox-resources.cfg"
GAME_VERSION_TEXT = "\tv.0.9.14 \n #417\t"  # read back simplified: "v.0.9.14 #417"
BROKEN_PACKAGE = "broken_not_a_zip.pkg"

# Bulk archives (--scale N >= 2): N archives after the small ones, each with
# this many file members (directory entries come on top).
BULK_MEMBERS_PER_ARCHIVE = 2000
BULK_EXACT_DUPLICATES = 30       # names repeated from the previous bulk archive
BULK_CASE_DUPLICATES = 10        # ... and names repeated with other letter case
BULK_TANKS_PER_ARCHIVE = 50
BULK_MAPS_PER_ARCHIVE = 2

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


def text_member(archive, name, note="", compress=STORED):
    return Member(name, describe(archive, name, note), compress)


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


# ------------------------------------------------------ installation files

def write_marker(out):
    """The executable whose presence marks a game folder (content unused)."""
    (out / MARKER_NAME).write_bytes(
        b"MZ" + bytes(62)
        + b"\r\nFerrox sample installation of Gavrel: placeholder executable.\r\n")


def write_version(out):
    (out / "version.xml").write_text(
        f"<version.xml>\n\t<version>{GAME_VERSION_TEXT}</version>\n</version.xml>\n",
        encoding="utf-8", newline="\n")


def write_resources_list(path, packages):
    """The archive list in the program's format: <Zip> elements in search order."""
    lines = ['<?xml version="1.0" encoding="UTF-8"?>', "<resources>"]
    lines += [f" <Zip>{name}</Zip>" for name in packages]
    lines += ["</resources>", ""]
    path.write_text("\n".join(lines), encoding="utf-8", newline="\n")


def write_loose_files(res):
    """Files lying directly below res/; one also exists in gui.pkg under the
    same name with other content (the loose file must win)."""
    files = {
        "text/Loose_Note.txt": "a loose note below res/",
        "gui/Loose_Override.txt": "from the loose res folder (overrides gui.pkg)",
        "scripts/Item_Defs/Loose_Items.xml": "a loose definition file",
    }
    for name, note in files.items():
        path = res / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(describe("res", name, note))


def write_broken_package(packages_dir):
    """A .pkg that is not a zip at all (only with --with-broken)."""
    line = b"This file is not a zip archive; readers must refuse it.\n"
    (packages_dir / BROKEN_PACKAGE).write_bytes((line * 6)[:300])


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


def shared_content_members():
    a = "shared_content.pkg"
    return [
        text_member(a, "text/Readme_Shared.txt", "from shared_content", STORED),
        text_member(a, "text/Case_Twin.txt", "case twin from shared_content", STORED),
        Member("text/Empty_Member.txt", b"", STORED),
        Member("text/Large_Deflated_Table.txt", large_table_text(200 * 1024), DEFLATED),
        text_member(a, "vehicles/Common/Shared_Track.primitives", compress=DEFLATED),
        text_member(a, "vehicles/Common/Materials/Steel_Plate.visual", compress=STORED),
        text_member(a, "system/Data/Material_Kinds.xml", compress=DEFLATED),
    ]


def tank_members(archive, nation, tank):
    """Model parts of one vehicle: .primitives deflated, .visual stored."""
    members = []
    for part in ("Hull", "Chassis", "Turret_01", "Gun_01"):
        base = f"vehicles/{nation}/{tank}/normal/lod0/{part}"
        members.append(text_member(archive, base + ".primitives", compress=DEFLATED))
        members.append(text_member(archive, base + ".visual", compress=STORED))
    return members


def vehicles_level_members(archive, tanks):
    members = []
    for nation, tank in tanks:
        members += tank_members(archive, nation, tank)
    return members


SAMPLE_TANKS = {
    "vehicles_level_01.pkg": [("Ardenia", "A01_Talon"), ("Borvia", "B01_Kestrel")],
    "vehicles_level_02.pkg": [("Caldera", "C02_Basilisk"), ("Drevnia", "D02_Ironmoth")],
}


def gui_members():
    a = "gui.pkg"
    members = [png_member(a, f"gui/Maps/Icons/vehicle/{nation.lower()}-{tank}.png")  # stored
               for tanks in SAMPLE_TANKS.values() for nation, tank in tanks]
    members += [
        text_member(a, "gui/Loose_Override.txt",
                    "from gui.pkg (the loose res file must win)", STORED),
        text_member(a, "gui/Settings/Gui_Settings.xml", compress=DEFLATED),
        text_member(a, "text/Readme_Shared.txt", "from gui", DEFLATED),
        text_member(a, "text/CASE_TWIN.txt", "case twin from gui", DEFLATED),
        Member("text/Empty_Deflated.txt", b"", DEFLATED),
    ]
    return members


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


def small_packages():
    """The scale-1 archives in search order, each as (file name, members)."""
    return [
        ("shared_content.pkg", shared_content_members()),
        *[(name, vehicles_level_members(name, tanks)) for name, tanks in SAMPLE_TANKS.items()],
        ("gui.pkg", gui_members()),
        ("hangar_premium.pkg", hangar_members("hangar_premium.pkg", "Hangar_Premium", 96 * 1024)),
        ("hangar_basic.pkg", hangar_members("hangar_basic.pkg", "Hangar_Basic")),
    ]


# ------------------------------------------------ bulk archives (scale >= 2)

def bulk_package_name(index):
    return f"bulk_content_{index:03d}.pkg"


def bulk_tanks(index):
    """(nation, tank) pairs of bulk archive index; numbers are unique overall."""
    tanks = []
    for j in range(BULK_TANKS_PER_ARCHIVE):
        number = index * BULK_TANKS_PER_ARCHIVE + j
        nation = NATIONS[number % len(NATIONS)]
        codename = CODENAMES[(number // len(NATIONS)) % len(CODENAMES)]
        tanks.append((nation, f"{nation[0]}{number:04d}_{codename}"))
    return tanks


def bulk_vehicle_names(tanks):
    names = []
    for nation, tank in tanks:
        root = f"vehicles/{nation}/{tank}"
        for lod in ("lod0", "lod1"):
            for part in ("Hull", "Chassis", "Turret_01", "Gun_01"):
                names.append(f"{root}/normal/{lod}/{part}.primitives")
                names.append(f"{root}/normal/{lod}/{part}.visual")
        for part in ("Hull", "Chassis", "Turret_01", "Gun_01"):
            names.append(f"{root}/collision_client/{part}.model")
        names.append(f"{root}/crash/lod0/Hull.primitives")
        names.append(f"{root}/crash/lod0/Turret_01.primitives")
        names.append(f"{root}/Tracks/Track_AM.dds")
        names.append(f"{root}/Tracks/Track_NM.dds")
    return names


def bulk_gui_names(index, tanks):
    names = []
    for folder in ("vehicle", "vehicle/small", "vehicle/contour"):
        for nation, tank in tanks:
            names.append(f"gui/Maps/Icons/{folder}/{nation.lower()}-{tank}.png")
    for i in range(300):
        word = CODENAMES[i % len(CODENAMES)]
        names.append(f"gui/Maps/Icons/Achievement/{word}Medal_{index:03d}_{i:03d}.png")
    return names


def bulk_space_names(index):
    names = []
    for m in range(BULK_MAPS_PER_ARCHIVE):
        number = index * BULK_MAPS_PER_ARCHIVE + m
        root = f"spaces/{number:03d}_{MAP_NAMES[number % len(MAP_NAMES)]}"
        names.append(f"{root}/space.settings")
        names.append(f"{root}/Environments/Default/Environment.xml")
        for x in range(-6, 6):
            for y in range(-6, 6):
                cell = f"{x & 0xFFFF:04x}{y & 0xFFFF:04x}o"
                names.append(f"{root}/{cell}.chunk")
                names.append(f"{root}/{cell}.cdata")
    return names


def bulk_own_names(index):
    """The names that belong to bulk archive index alone, in archive order:
    60 % vehicles, 20 % gui icons, 20 % map chunks. The first bulk archive
    has no predecessor to repeat names from, so all its names are its own."""
    own = BULK_MEMBERS_PER_ARCHIVE
    if index > 0:
        own -= BULK_EXACT_DUPLICATES + BULK_CASE_DUPLICATES
    vehicles = own * 60 // 100
    gui = own * 20 // 100
    spaces = own - vehicles - gui
    tanks = bulk_tanks(index)
    names = (bulk_vehicle_names(tanks)[:vehicles] + bulk_gui_names(index, tanks)[:gui]
             + bulk_space_names(index)[:spaces])
    assert len(names) == own and len(set(names)) == own
    return names


def other_case(name):
    """The same name with the case of its file name turned over."""
    folder, _, leaf = name.rpartition("/")
    return f"{folder}/{leaf.swapcase()}"


def bulk_names(index):
    """All file names of bulk archive index: its own names, then names that
    bulk archive index - 1 also has (some spelt in another case)."""
    names = bulk_own_names(index)
    if index > 0:
        previous = bulk_own_names(index - 1)
        step = len(previous) // (BULK_EXACT_DUPLICATES + BULK_CASE_DUPLICATES)
        picked = previous[::step][:BULK_EXACT_DUPLICATES + BULK_CASE_DUPLICATES]
        names += picked[:BULK_EXACT_DUPLICATES]
        names += [other_case(n) for n in picked[BULK_EXACT_DUPLICATES:]]
    return names


def filler_pool(seed, size=16384):
    rng = random.Random(seed)
    words = [w.lower() for w in CODENAMES + MAP_NAMES + NATIONS]
    text = []
    length = 0
    while length < size:
        word = rng.choice(words) + (" " if rng.random() < 0.9 else "\n")
        text.append(word)
        length += len(word)
    return "".join(text).encode("ascii")


def bulk_members(index):
    """Members of one bulk archive: tens of bytes to a few KB each, mostly
    stored; about a quarter of the non-image members deflated."""
    archive = bulk_package_name(index)
    rng = random.Random(1000 + index)
    pool = filler_pool(index)
    members = []
    for name in bulk_names(index):
        if name.lower().endswith(".png"):
            members.append(png_member(archive, name))
            continue
        if name.endswith(".primitives") and rng.random() < 0.5:
            size = rng.randrange(1024, 4096)
        else:
            size = rng.randrange(16, 640)
        start = rng.randrange(0, len(pool) - size)
        data = describe(archive, name) + pool[start:start + size]
        compress = DEFLATED if rng.random() < 0.25 else STORED
        members.append(Member(name, data, compress))
    return members


# ------------------------------------------------------------ putting together

def generate(out, scale, with_broken):
    """Writes the whole installation into the (empty) folder out."""
    write_marker(out)
    write_version(out)
    res = out / "res"
    packages_dir = res / "packages"
    packages_dir.mkdir(parents=True)
    listed = []
    for name, members in small_packages():
        write_package(packages_dir / name, members)
        listed.append(name)
    if scale >= 2:
        for index in range(scale):
            name = bulk_package_name(index)
            write_package(packages_dir / name, bulk_members(index))
            listed.append(name)
    write_loose_files(res)
    if with_broken:
        write_broken_package(packages_dir)
    write_resources_list(out / RESOURCES_LIST_NAME, listed)


def stamp_text(scale, with_broken):
    """Generator version, a digest of this script and the arguments: a stamp
    that matches means the folder already holds exactly this output."""
    digest = hashlib.sha256(Path(__file__).read_bytes()).hexdigest()
    return (f"ferrox sample generator {GENERATOR_VERSION}\n"
            f"script sha256 {digest}\n"
            f"scale {scale}\n"
            f"with-broken {int(with_broken)}\n")


def clear_folder(out):
    """Removes what is inside out (never out itself, never through a link)."""
    for entry in out.iterdir():
        if entry.is_dir() and not entry.is_symlink():
            shutil.rmtree(entry)
        else:
            entry.unlink()


def positive_int(text):
    value = int(text)
    if value < 1:
        raise argparse.ArgumentTypeError("must be 1 or more")
    return value


def parse_arguments(argv):
    parser = argparse.ArgumentParser(
        description="Writes a sample installation of the game Gavrel into a folder.")
    parser.add_argument("--out", required=True, type=Path, help="folder to write into")
    parser.add_argument("--scale", type=positive_int, default=1,
                        help="1: the small sample (default); N >= 2 adds N bulk "
                             f"archives of {BULK_MEMBERS_PER_ARCHIVE} members each")
    parser.add_argument("--force", action="store_true",
                        help="rewrite even when the stamp says the folder is up to date")
    parser.add_argument("--with-broken", action="store_true",
                        help=f"also write res/packages/{BROKEN_PACKAGE} (not a zip, not listed)")
    return parser.parse_args(argv)


def main(argv=None):
    args = parse_arguments(argv)
    out = args.out
    stamp_path = out / STAMP_NAME
    wanted = stamp_text(args.scale, args.with_broken)

    if out.exists() and not out.is_dir():
        print(f"make_sample_game: {out} exists and is not a folder", file=sys.stderr)
        return 2
    if out.is_dir():
        has_stamp = stamp_path.is_file()
        if (has_stamp and not args.force and (out / MARKER_NAME).is_file()
                and stamp_path.read_text(encoding="utf-8") == wanted):
            return 0
        if not has_stamp and any(out.iterdir()):
            print(f"make_sample_game: {out} is not empty and was not written by this "
                  "generator; refusing to replace its contents", file=sys.stderr)
            return 2
        clear_folder(out)
    out.mkdir(parents=True, exist_ok=True)

    # A stamp that matches no arguments marks the folder as ours while it is
    # written, so an interrupted run is redone by the next one.
    stamp_path.write_text("incomplete\n", encoding="utf-8")
    generate(out, args.scale, args.with_broken)
    stamp_path.write_text(wanted, encoding="utf-8", newline="\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
