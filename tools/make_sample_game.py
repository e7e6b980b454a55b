#!/usr/bin/env python3
"""Writes a small but complete installation of the game Gavrel into a folder.

    python3 tools/make_sample_game.py --out DIR [--scale N] [--force] [--with-broken]

The installation is built from the game's file formats alone (plain and
packed XML, zip archives below res/packages/, loose files below res/, gettext
catalogues compiled with GNU msgfmt); nothing here imports or calls Ferrox
code, so Ferrox's readers can be tested against it. The packed XML writer is
gavrel_packed_xml.py beside this script.

Layout of the script: one function per kind of content (marker, version file,
each archive, loose files, archive list, game data: nations, vehicle lists
and files, camouflage, categories, catalogues, the nation list; bulk archives
and nations for benchmarks), then generate() which puts them together, and
main() which handles the command line and the stamp. Everything is deterministic: the same arguments give
byte-identical files (fixed zip timestamps and attributes, seeded random
numbers, fixed member order).
"""
import argparse
import hashlib
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import zipfile
import zlib
from dataclasses import dataclass
from functools import lru_cache
from pathlib import Path

# The packed XML writer lives beside this script; make it importable from any
# working directory.
sys.path.insert(0, str(Path(__file__).resolve().parent))
from gavrel_packed_xml import Element, Floats, encode, plain_text  # noqa: E402
import gavrel_dds  # noqa: E402
import gavrel_geometry  # noqa: E402

# Files whose bytes decide the output; their digest goes into the stamp.
GENERATOR_SOURCES = ("make_sample_game.py", "gavrel_packed_xml.py", "gavrel_geometry.py",
                     "gavrel_dds.py")

# Bump when the output changes in a way a stamp digest would not show.
GENERATOR_VERSION = 3
STAMP_NAME = ".ferrox-sample-stamp"
ZIP_DATE = (2020, 1, 1, 0, 0, 0)
STORED = zipfile.ZIP_STORED
DEFLATED = zipfile.ZIP_DEFLATED

MARKER_NAME = "Gavrel.exe"
RESOURCES_LIST_NAME = "ferrox-resources.cfg"
TANK_LIST_NAME = "ferrox-tank_list.cfg"
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
        path.write_bytes(placeholder("res", name, note))


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
        *shared_model_members(),
        text_member(a, "system/Data/Material_Kinds.xml", compress=DEFLATED),
    ]


def tank_members(archive, nation, tank):
    """Model parts of one vehicle (.primitives deflated, .visual and .model
    stored) and the textures they name, beside them in the same archive."""
    members = []
    for path, data in vehicle_model_files(nation, tank) + vehicle_texture_files(nation, tank):
        compress = DEFLATED if path.endswith(".primitives") else STORED
        members.append(Member(path, data, compress))
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


# Model parts of vehicles whose model folder is not named like their tag;
# they go into the archive after the parts of SAMPLE_TANKS.
EXTRA_MODEL_FOLDERS = {"vehicles_level_02.pkg": [("Caldera", "C03_Wyvern")]}


def small_packages():
    """The scale-1 archives in search order, each as (file name, members);
    the game data files of the sample nations follow each archive's own
    members."""
    packages = [
        ("shared_content.pkg", shared_content_members()),
        *[(name, vehicles_level_members(name, tanks + EXTRA_MODEL_FOLDERS.get(name, [])))
          for name, tanks in SAMPLE_TANKS.items()],
        ("gui.pkg", gui_members()),
        ("hangar_premium.pkg", hangar_members("hangar_premium.pkg", "Hangar_Premium", 96 * 1024)),
        ("hangar_basic.pkg", hangar_members("hangar_basic.pkg", "Hangar_Basic")),
    ]
    return [(name, members + game_data_members(SAMPLE_NATIONS, name))
            for name, members in packages]


# ------------------------------------------------------- models and textures
# Real geometry (gavrel_geometry.py), .visual documents and DDS textures
# (gavrel_dds.py). Sizes are metres in the game's own axes: y up, the
# vehicle's front towards +z, standing on y = 0 and centred on x = 0.

NATION_COLOURS = {  # dominant colour of every diffuse texture of a nation
    "Ardenia": (110, 120, 60),   # olive
    "Borvia": (190, 165, 110),   # sand
    "Caldera": (95, 110, 130),   # grey-blue
    "Drevnia": (120, 40, 35),    # dark red
}
PANEL_SPACING = 32               # texels between panel lines at 128 x 128
DIFFUSE_SIZE = 128
DETAIL_SIZE = 64                 # normal, gloss and track maps
TRACK_COLOUR = (52, 50, 46)
EFFECT_DIR = "shaders/std_effects/"

# Placement of the parts: the hull's turret ring and the turret's gun pivot.
TURRET_JOINT = (0.0, 1.2, -0.3)
GUN_JOINT = (0.0, 0.3, 0.95)
# A node no part hangs on, to carry a non-uniform scale the reader must keep.
SCALED_NODE = ("HP_Emblem_Front", (1.0, 2.0, 0.5), (0.0, 0.9, 2.7))

HD_TEXTURE_TANK = "A01_Talon"          # Hull_AM has a .texformat and an HD file
UNCOMPRESSED_GUN_TANK = "B01_Kestrel"  # Gun_01_AM is 32-bit BGRA
RGB24_GLOSS_TANK = "C02_Basilisk"      # *_GMM are 24-bit BGR
UPPER_CASE_GUN_TANK = "C03_Wyvern"     # Gun_01 vertex format "XYZNUV"
PLAIN_VISUAL_TANK = "D02_Ironmoth"     # visuals as text XML


def chassis_mesh():
    """Group 0: a low body between the tracks and the road wheels; group 1:
    the two track blocks, whose top and bottom repeat the texture four times."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.box((-1.05, 0.3, -2.8), (1.05, 0.8, 2.8))
    for side in (-1.0, 1.0):
        for z in (-2.2, -1.1, 0.0, 1.1, 2.2):
            inner, outer = 1.42 * side, 1.52 * side
            mesh.cylinder("x", (0.0, 0.36, z), 0.32, min(inner, outer), max(inner, outer),
                          segments=12)
    mesh.begin_group()
    for side in (-1.0, 1.0):
        x0, x1 = sorted((1.0 * side, 1.42 * side))
        mesh.box((x0, 0.0, -3.0), (x1, 0.85, 3.0), uv_rect=(0.0, 0.0, 1.0, 4.0))
    return mesh


def hull_mesh():
    """A box whose front slopes forward and down to a nose."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    profile = [(-2.9, 0.42), (2.3, 0.42), (3.0, 0.75), (2.5, 1.2), (-2.9, 1.2)]
    mesh.prism(profile, -1.45, 1.45)
    return mesh


def turret_mesh():
    """A squat cylinder on the ring with a mantlet block in front."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.cylinder("y", (0.0, 0.0, 0.0), 1.05, 0.0, 0.6, segments=20)
    mesh.box((-0.35, 0.1, 0.8), (0.35, 0.5, 1.15))
    return mesh


def gun_mesh():
    """A barrel along +z from the pivot, with a thicker muzzle end."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.cylinder("z", (0.0, 0.0, 0.0), 0.08, 0.0, 3.0, segments=12)
    mesh.cylinder("z", (0.0, 0.0, 0.0), 0.12, 2.7, 3.1, segments=12)
    return mesh


def primitives_bytes(part, mesh, fmt, wide, with_uv2=False):
    chunks = [(f"{part}.vertices", gavrel_geometry.vertex_chunk(fmt, mesh.vertices)),
              (f"{part}.indices", gavrel_geometry.index_chunk(mesh.indices, mesh.groups(), wide))]
    if with_uv2:
        chunks.append(("uv2", gavrel_geometry.uv_stream_chunk(mesh.uv2())))
    return gavrel_geometry.primitives_file(chunks)


def transform(translation=(0.0, 0.0, 0.0), scale=(1.0, 1.0, 1.0)):
    sx, sy, sz = scale
    return Floats(sx, 0, 0, 0, sy, 0, 0, 0, sz, *translation)


def node(identifier, children=(), translation=(0.0, 0.0, 0.0), scale=(1.0, 1.0, 1.0)):
    return Element(None, [("identifier", identifier),
                          ("transform", transform(translation, scale))]
                   + [("node", child) for child in children])


def texture_property(name, path):
    return ("property", Element(name, {"Texture": path}))


def flag_property(name, kind, value):
    return ("property", Element(name, {kind: value}))


def material(identifier, effect, properties, effect_last=False):
    fx = [("fx", EFFECT_DIR + effect)]
    head = [("identifier", identifier)]
    return Element(None, head + properties + fx if effect_last else head + fx + properties)


def geometry(part, groups, stream=None):
    """groups: the material of group 0, 1, ..."""
    children = [("vertices", f"{part}.vertices"), ("primitive", f"{part}.indices")]
    if stream:
        children.append(("stream", stream))
    children += [("primitiveGroup", Element(number, {"material": m}))
                 for number, m in enumerate(groups)]
    return Element(None, children)


def visual_tree(root_children, render_node, part, groups, stream=None):
    return Element(None, [
        ("node", node("Scene Root", root_children)),
        ("renderSet", Element(None, [
            ("treatAsWorldSpaceObject", False),
            ("node", render_node),
            ("geometry", geometry(part, groups, stream)),
        ])),
    ])


def tank_folder(nation, tank):
    return f"vehicles/{nation}/{tank}"


def part_materials(nation, tank):
    """{part: [material of each group]} of one vehicle."""
    base = tank_folder(nation, tank)
    chassis_body = material("chassis_body", "PBS_ext_dual.fx", [
        texture_property("diffuseMap", f"{base}/Chassis_AM.dds"),
        texture_property("diffuseMap2", f"{base}/Chassis_Dirt_AM.dds"),
        texture_property("normalMap", f"{base}/Chassis_ANM.dds"),
        texture_property("metallicGlossMap", f"{base}/Chassis_GMM.dds"),
        flag_property("g_useNormalPackDXT1", "Bool", False),
    ])
    tracks = material("tracks", "lightonly_alpha.fx", [
        texture_property("diffuseMap", f"{base}/Track_AM.tga"),
        flag_property("alphaTestEnable", "Bool", True),
        flag_property("alphaReference", "Int", 128),
        flag_property("doubleSided", "Bool", True),
    ])
    hull = material("hull", "PBS_tank.fx", [
        texture_property("diffuseMap", f"{base}/Hull_AM.dds"),
        texture_property("normalMap", f"{base}/Hull_ANM.dds"),
        texture_property("metallicGlossMap", f"{base}/Hull_GMM.dds"),
        flag_property("g_useNormalPackDXT1", "Bool", False),
    ])
    turret = material("turret", "normalmap_specmap.fx", [
        texture_property("diffuseMap", f"{base}/Turret_01_AM.tga"),
        texture_property("normalMap", f"{base}/Turret_01_ANM.dds"),
        texture_property("specularMap", f"{base}/Turret_01_GMM.dds"),
        flag_property("g_useNormalPackDXT1", "Bool", True),
    ], effect_last=True)
    gun = material("gun", "lightonly.fx", [
        texture_property("diffuseMap", f"{base}/Gun_01_AM.dds"),
    ])
    return {"Chassis": [chassis_body, tracks], "Hull": [hull], "Turret_01": [turret],
            "Gun_01": [gun]}


def vehicle_parts(tank):
    """(part, mesh, vertex format, 32-bit indices, uv2 stream, root children,
    render node) of each part."""
    gun_format = "XYZNUV" if tank == UPPER_CASE_GUN_TANK else "xyznuv"
    emblem, emblem_scale, emblem_at = SCALED_NODE
    hull_children = [node("hull", [node("HP_turretJoint", translation=TURRET_JOINT),
                                   node(emblem, translation=emblem_at, scale=emblem_scale)])]
    return [
        ("Chassis", chassis_mesh(), "xyznuvtb", False, False, [node("tank")], "tank"),
        ("Hull", hull_mesh(), "xyznuvtb", False, True, hull_children, "hull"),
        ("Turret_01", turret_mesh(), "xyznuviiiwwtb", True, False,
         [node("turret", [node("HP_gunJoint", translation=GUN_JOINT)])], "turret"),
        ("Gun_01", gun_mesh(), gun_format, False, False, [node("gun")], "gun"),
    ]


def model_file(visual_path):
    """The .model beside a visual: the program never opens it."""
    stem = visual_path.rsplit(".", 1)[0]
    return encode({"nodefullVisual": stem})


def vehicle_model_files(nation, tank):
    """(path, bytes) of the .model, .visual and .primitives of every part."""
    materials = part_materials(nation, tank)
    files = []
    for part, mesh, fmt, wide, uv2, root_children, render_node in vehicle_parts(tank):
        base = f"{tank_folder(nation, tank)}/normal/lod0/{part}"
        tree = visual_tree(root_children, render_node, part, materials[part],
                           "uv2" if uv2 else None)
        files += [(base + ".model", model_file(base + ".visual")),
                  (base + ".visual", xml_file(f"{part}.visual", tree, tank == PLAIN_VISUAL_TANK)),
                  (base + ".primitives", primitives_bytes(part, mesh, fmt, wide, uv2))]
    return files


# ---- textures: every picture is a function of a few numbers, cached, so
# vehicles of one nation share the work.

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
    'normal1', 'gloss', 'track'."""
    spacing = PANEL_SPACING * size // DIFFUSE_SIZE
    pixels = {
        "panel": lambda: panel_pixels(colour, size, spacing),
        "normal5": lambda: normal_pixels(size, max(spacing, 4), True),
        "normal1": lambda: normal_pixels(size, max(spacing, 4), False),
        "gloss": lambda: gloss_pixels(size, max(spacing, 4)),
        "track": lambda: track_pixels(size),
    }[kind]()
    return gavrel_dds.dds(fmt, size, size, list(pixels), levels)


def texformat_file(hd_path):
    return encode({"mip_info": {"mip": hd_path}})


def vehicle_texture_files(nation, tank):
    """(path, bytes) of the textures that the vehicle's visuals name."""
    base = tank_folder(nation, tank)
    colour = NATION_COLOURS[nation]
    gloss = "BGR24" if tank == RGB24_GLOSS_TANK else "DXT3"
    gun = "BGRA32" if tank == UNCOMPRESSED_GUN_TANK else "DXT1"
    files = [
        ("Chassis_AM.dds", texture("DXT1", "panel", DIFFUSE_SIZE, colour)),
        ("Chassis_Dirt_AM.dds", texture("DXT1", "panel", DETAIL_SIZE, darker(colour))),
        ("Chassis_ANM.dds", texture("DXT5", "normal5", DETAIL_SIZE)),
        ("Chassis_GMM.dds", texture(gloss, "gloss", DETAIL_SIZE)),
        ("Track_AM.dds", texture("DXT1", "track", DETAIL_SIZE)),
        ("Hull_AM.dds", texture("DXT1", "panel", DIFFUSE_SIZE, colour)),
        ("Hull_ANM.dds", texture("DXT5", "normal5", DETAIL_SIZE)),
        ("Hull_GMM.dds", texture(gloss, "gloss", DETAIL_SIZE)),
        ("Turret_01_AM.dds", texture("DXT1", "panel", DIFFUSE_SIZE, colour)),
        ("Turret_01_ANM.dds", texture("DXT1", "normal1", DETAIL_SIZE)),
        ("Turret_01_GMM.dds", texture(gloss, "gloss", DETAIL_SIZE)),
        ("Gun_01_AM.dds", texture(gun, "panel", DETAIL_SIZE, colour)),
    ]
    if tank == HD_TEXTURE_TANK:
        hd = f"{base}/Hull_AM_hd.dds"
        files += [("Hull_AM.texformat", texformat_file(hd)),
                  ("Hull_AM_hd.dds", texture("DXT1", "panel", 2 * DIFFUSE_SIZE, colour, 1))]
    return [(f"{base}/{name}", data) for name, data in files]


# ---- the hangar models of the two garages (garage_premium.pkg and
# garage_basic.pkg, named by the program's garages.cfg, not by resources.cfg)

GARAGE_COLOURS = {
    "Concrete": (150, 150, 146),  # floors
    "Brick": (140, 82, 64),       # back wall
    "Steel": (92, 98, 104),       # pillars, fence
    "Lamp": (235, 228, 190),
    "Wood": (150, 112, 64),       # crates
}


def slab_mesh():
    """A 20 x 20 m slab, top face at y = 0, texture repeated across it."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.box((-10.0, -0.2, -10.0), (10.0, 0.0, 10.0), uv_rect=(0.0, 0.0, 1.0, 1.0))
    return mesh


def box_mesh(lo, hi):
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.box(lo, hi)
    return mesh


def lamp_mesh():
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.cylinder("y", (0.0, 0.0, 0.0), 0.35, 0.0, 0.25, segments=12)
    mesh.cylinder("y", (0.0, 0.0, 0.0), 0.04, 0.25, 1.5, segments=6)
    return mesh


# (name, mesh, vertex format, texture colour name, bumped) of each model
GARAGE_MODELS = {
    "Hangar_Premium": [
        ("Floor", slab_mesh, "xyznuvtb", "Concrete", True),
        ("Back_Wall", lambda: box_mesh((-10.0, 0.0, -9.8), (10.0, 6.0, -9.4)),
         "xyznuvtb", "Brick", True),
        ("Pillar", lambda: box_mesh((-0.3, 0.0, -0.3), (0.3, 6.0, 0.3)), "xyznuv", "Steel", False),
        ("Lamp", lamp_mesh, "xyznuv", "Lamp", False),
    ],
    "Hangar_Basic": [
        ("Floor", slab_mesh, "xyznuvtb", "Concrete", True),
        ("Crate", lambda: box_mesh((-0.6, 0.0, -0.6), (0.6, 1.2, 0.6)), "xyznuv", "Wood", False),
        ("Fence", lambda: box_mesh((-9.0, 0.0, -0.05), (9.0, 1.8, 0.05)), "xyznuv", "Steel", False),
    ],
}
GARAGE_PACKAGES = {"Hangar_Premium": "garage_premium.pkg", "Hangar_Basic": "garage_basic.pkg"}


def garage_members(space):
    base = f"spaces/{space}"
    members = []
    textures = {}
    for name, make_mesh, fmt, colour_name, bumped in GARAGE_MODELS[space]:
        diffuse = f"{base}/textures/{colour_name}_AM.dds"
        textures[diffuse] = texture("DXT1", "panel", DETAIL_SIZE, GARAGE_COLOURS[colour_name])
        properties = [texture_property("diffuseMap", diffuse)]
        effect = "lightonly.fx"
        if bumped:
            normal = f"{base}/textures/{colour_name}_NM.dds"
            textures[normal] = texture("DXT1", "normal1", DETAIL_SIZE)
            properties += [texture_property("normalMap", normal),
                           flag_property("g_useNormalPackDXT1", "Bool", True)]
            effect = "normalmap_specmap.fx"
        model = f"{base}/models/{name}"
        tree = visual_tree([node(name)], name, name,
                           [material(name.lower(), effect, properties)])
        members += [
            Member(model + ".model", model_file(model + ".visual"), STORED),
            Member(model + ".visual", encode(tree), STORED),
            Member(model + ".primitives",
                   primitives_bytes(name, make_mesh(), fmt, False), DEFLATED),
        ]
    members += [Member(path, data, STORED) for path, data in textures.items()]
    return members


def shared_model_members():
    """A loose track block and a steel plate model of the shared archive."""
    track = gavrel_geometry.MeshBuilder()
    track.begin_group()
    track.box((-0.21, 0.0, -3.0), (0.21, 0.85, 3.0), uv_rect=(0.0, 0.0, 1.0, 4.0))
    plate = box_mesh((-1.0, 0.0, -1.0), (1.0, 0.05, 1.0))
    base = "vehicles/Common/Materials/Steel_Plate"
    tree = visual_tree([node("plate")], "plate", "Steel_Plate", [material(
        "steel_plate", "lightonly.fx", [texture_property("diffuseMap", base + ".dds")])])
    return [
        Member("vehicles/Common/Shared_Track.primitives",
               primitives_bytes("Shared_Track", track, "xyznuvtb", False), DEFLATED),
        Member(base + ".visual", encode(tree), STORED),
        Member(base + ".primitives", primitives_bytes("Steel_Plate", plate, "xyznuv", False),
               DEFLATED),
        Member(base + ".dds", texture("DXT1", "panel", DETAIL_SIZE, GARAGE_COLOURS["Steel"]),
               STORED),
    ]


# ------------------------------------------------------------ game data
# Nations, their vehicle lists, vehicle definitions, camouflage catalogues,
# the category file and the text catalogues. Where each file goes (loose
# below res/ or inside an archive, packed or plain text) is fixed per nation.

LIGHT, MEDIUM, HEAVY, TD, ARTY = "lightTank", "mediumTank", "heavyTank", "AT-SPG", "SPG"
CATEGORIES = [  # key in list.xml tags and item_types.xml, display name
    (LIGHT, "Light Tanks"), (MEDIUM, "Medium Tanks"), (HEAVY, "Heavy Tanks"),
    (TD, "Tank Destroyers"), (ARTY, "Artillery"),
]
CATEGORY_ROLES = {LIGHT: "role_scout", MEDIUM: "role_medium_universal",
                  HEAVY: "role_heavy_assault", TD: "role_ATSPG_support", ARTY: "role_SPG"}
MENU_ALL_KEY = "carousel_tank_filter/all"
MENU_ALL_TEXT = "All"
SEASONS = ("summer", "winter", "desert")

# Where files go. "loose": below res/ as a file; a .pkg name: in that archive.
# "plain": text XML; otherwise packed.
LOOSE = "loose"


@dataclass(frozen=True)
class Vehicle:
    model: str                 # element tag in list.xml, name of the vehicle file
    name: str                  # display name (in the nation's catalogue)
    category: str              # first word of tags
    tier: object = None        # level; None: the element has no level
    folder: str = ""           # model folder below DataPath, when not the tag
    not_in_shop: bool = False
    plain_file: bool = False   # vehicle file as text XML

    @property
    def model_folder(self):
        return self.folder or self.model


@dataclass(frozen=True)
class Nation:
    folder: str                # last folder of ResPath, lower case
    data_name: str             # last folder of DataPath
    display: str               # translation of #menu:nations/<folder>
    vehicles: tuple
    list_place: str = LOOSE    # LOOSE or an archive name
    list_plain: bool = False
    camo_plain: bool = False
    defs_archive: str = ""     # archive of the vehicle files and components/guns.xml
    armor_color: tuple = (90, 96, 70, 255)

    @property
    def res_path(self):
        return f"scripts/item_defs/vehicles/{self.folder}"

    @property
    def data_path(self):
        return f"vehicles/{self.data_name}"

    @property
    def catalogue(self):
        return f"{self.folder}_vehicles"


# Entries that a vehicle list holds but that are no vehicles of the table.
OBSERVER = Vehicle("Observer", "Observer", LIGHT, 1)
TRAINING_DUMMY = Vehicle("A00_training_dummy", "Training Dummy", LIGHT, 1)

SAMPLE_NATIONS = (
    Nation("ardenia", "Ardenia", "Ardenia", (
        TRAINING_DUMMY,
        Vehicle("A01_Talon", "Talon", LIGHT, 1),
        Vehicle("A03_Kestrels_Wrath", "Kestrel's Wrath", TD, 3),
        Vehicle("A05_Harrow", "Harrow", MEDIUM, 5),
        Vehicle("A06_Corvid", "Corvid", ARTY, 6, not_in_shop=True),
        Vehicle("A07_Bastion", "Bastion", HEAVY, 7),
        Vehicle("A10_Falchion", "Falchion", MEDIUM, 10),
        OBSERVER,
    ), defs_archive="vehicles_level_01.pkg", armor_color=(96, 102, 72, 255)),
    Nation("borvia", "Borvia", "Borvia", (
        Vehicle("B01_Kestrel", "Kestrel", LIGHT, 1),
        Vehicle("B02_Training_Hauler", "Training Hauler", LIGHT, 2),
        Vehicle("B04_Skorpion", "Škorpion", TD, 4),
        Vehicle("B05_Prototype", "Prototype", MEDIUM, None),
        Vehicle("B06_Marauder", "Marauder", MEDIUM, 6),
        Vehicle("B08_Sentinel", "Sentinel", HEAVY, 8),
        Vehicle("B09_Hornet", "Hornet", ARTY, 9),
        OBSERVER,
    ), defs_archive="vehicles_level_01.pkg", armor_color=(84, 92, 88, 255)),
    Nation("caldera", "Caldera", "Caldera", (
        Vehicle("C02_Basilisk", "Basilisk", MEDIUM, 2),
        Vehicle("C03_Wyvern_v2", "Wyvern", LIGHT, 3, folder="C03_Wyvern"),
        Vehicle("C05_Ridgeback", "Ridgeback", HEAVY, 5),
        Vehicle("C07_Cinder", "Cinder", ARTY, 7),
        Vehicle("C08_Pike", "Pike", TD, 8),
        Vehicle("C10_Halberd", "Halberd", HEAVY, 10),
    ), list_place="shared_content.pkg", defs_archive="vehicles_level_02.pkg",
        armor_color=(110, 98, 70, 255)),
    Nation("drevnia", "Drevnia", "Drevnia", (
        Vehicle("D02_Ironmoth", "Ironmoth", MEDIUM, 2),
        Vehicle("D03_Zhuk", "Жук", LIGHT, 3),
        Vehicle("D04_Gorge", "Gorge", ARTY, 4),
        Vehicle("D07_Sentinel", "Sentinel", TD, 7),
        Vehicle("D09_Vulture", "Vulture", HEAVY, 9),
        Vehicle("D10_Anvil", "Anvil", TD, 10, plain_file=True),
    ), list_plain=True, camo_plain=True, defs_archive="vehicles_level_02.pkg",
        armor_color=(78, 88, 64, 255)),
)

# Scale >= 2: extra nations with this many vehicles per unit of scale, in
# nations of at most BULK_VEHICLES_PER_NATION; their vehicle files and their
# camouflage texture go into one more archive, listed last.
BULK_VEHICLES_PER_SCALE = 8
BULK_VEHICLES_PER_NATION = 40
BULK_DEFS_PACKAGE = "bulk_vehicle_defs.pkg"


def bulk_nations(scale):
    if scale < 2:
        return ()
    total = scale * BULK_VEHICLES_PER_SCALE
    count = -(-total // BULK_VEHICLES_PER_NATION)
    categories = [key for key, _ in CATEGORIES]
    nations = []
    for n in range(count):
        vehicles = []
        for number in range(n * BULK_VEHICLES_PER_NATION,
                            min(total, (n + 1) * BULK_VEHICLES_PER_NATION)):
            codename = CODENAMES[number % len(CODENAMES)]
            vehicles.append(Vehicle(f"Z{n:02d}_{number:04d}_{codename}",
                                    f"{codename} {number:04d}",
                                    categories[number % len(categories)],
                                    1 + number % 10))
        nations.append(Nation(f"bulk_nation_{n:02d}", f"Bulk_Nation_{n:02d}",
                              f"Bulk Nation {n:02d}", tuple(vehicles),
                              defs_archive=BULK_DEFS_PACKAGE,
                              armor_color=(60 + n % 40, 80, 60, 255)))
    return tuple(nations)


def all_nations(scale):
    return SAMPLE_NATIONS + bulk_nations(scale)


def is_table_vehicle(vehicle):
    """What the vehicle table keeps: no observer, no lower-case training entry."""
    return vehicle.model != "Observer" and "training" not in vehicle.model


def vehicle_list_tree(nation):
    """list.xml: one child per vehicle, its tag the model name. Keys are
    spelt as in the catalogue: a catalogue's hash table is built over the
    exact bytes of each key, so a key in another case is found only when
    its probe sequence happens to pass the entry."""
    children = []
    for v in nation.vehicles:
        entry = [("userString", f"#{nation.catalogue}:{v.model}"),
                 ("description", f"#{nation.catalogue}:{v.model}_descr")]
        if v.tier is not None:
            entry.append(("level", v.tier))
        entry.append(("tags", f"{v.category} {CATEGORY_ROLES[v.category]}"))
        if v.not_in_shop:
            entry.append(("notInShop", True))
        children.append((v.model, Element(None, entry)))
    return Element(None, children)


def gun_tag(vehicle):
    return f"{vehicle.model}_Gun"


def turret_tag(vehicle):
    return f"{vehicle.model}_Turret"


def vehicle_tree(nation, vehicle):
    """A vehicle file: hull, chassis and one turret with one gun, with model
    paths below DataPath/<model folder>, positions, hit points and armour."""
    root = f"{nation.data_path}/{vehicle.model_folder}"
    tier = vehicle.tier or 1

    def models(part):
        return {"undamaged": f"{root}/normal/lod0/{part}.model",
                "destroyed": f"{root}/crash/lod0/{part}.model"}

    def hit_tester(part, path=None):
        return {"collisionModel": path or f"{root}/collision_client/{part}.model"}

    digest = hashlib.sha256(f"{nation.folder}/{vehicle.model}".encode("utf-8")).digest()
    hull = {
        "models": models("Hull"),
        "hitTester": hit_tester("Hull"),
        "maxHealth": 120 + 60 * tier,
        "turretPositions": {"turret": Floats(0.0, 1.1 + 0.05 * tier, -0.25)},
        "emblemSlots": {"slot": {
            "transform": Floats(1, 0, 0, 0, 1, 0, 0, 0, 1, 0.5, 1.25, 2.0),
            "size": Floats(0.6),
            "hideIfDamaged": True,
        }},
        "fingerprint": digest[:8],
        "armor": Element(None, [
            ("armor_1", 20 + 5 * tier),
            ("armor_2", Floats(15.0 + 4 * tier)),
            # spaced armour: a value of its own and a child element
            ("armor_3", Element(8 + tier, {"vehicleDamageFactor": 0})),
        ]),
    }
    chassis_collision = None
    if vehicle.model == "A01_Talon":  # a doubled slash the reader folds
        chassis_collision = f"{root}//collision_client/Chassis.model"
    chassis = {f"{vehicle.model}_Chassis": {
        "models": models("Chassis"),
        "hitTester": hit_tester("Chassis", chassis_collision),
        "maxHealth": 80 + 20 * tier,
        "hullPosition": Floats(0.0, 0.38, 0.0),
        "armor": {"leftTrack": 10, "rightTrack": 10},
    }}
    gun = Element("shared", {  # takes name and limits from components/guns.xml
        "models": models("Gun_01"),
        "hitTester": hit_tester("Gun_01"),
        "armor": {"gun": 15 + 3 * tier},
    })
    turret = {
        "userString": f"#{nation.catalogue}:{turret_tag(vehicle)}",
        "models": models("Turret_01"),
        "hitTester": hit_tester("Turret_01"),
        "maxHealth": 60 + 15 * tier,
        "gunPosition": Floats(0.0, 0.42, 0.95),
        "guns": {gun_tag(vehicle): gun},
        "armor": {"turret_front": 30 + 6 * tier, "turret_side": 20 + 4 * tier},
    }
    if vehicle.category in (TD, ARTY):
        turret["yawLimits"] = "-12 12"
    return {"hull": hull, "chassis": chassis, "turrets0": {turret_tag(vehicle): turret}}


def guns_tree(nation):
    """components/guns.xml: shared/<gun tag> with name and limits."""
    shared = {}
    for v in nation.vehicles:
        entry = {"userString": f"#{nation.catalogue}:{gun_tag(v)}",
                 "pitchLimits": "-20 8" if v.category != ARTY else "-45 0"}
        if v.category in (TD, ARTY):
            entry["turretYawLimits"] = "-12 12"
        shared[gun_tag(v)] = entry
    return {"shared": shared}


def camo_texture_path(nation, season):
    if nation.defs_archive == BULK_DEFS_PACKAGE:
        return f"vehicles/camouflage/bulk/{season.capitalize()}_01.dds"
    return f"vehicles/camouflage/{nation.folder}/{season.capitalize()}_01.dds"


def camo_texture_archive(nation):
    return BULK_DEFS_PACKAGE if nation.defs_archive == BULK_DEFS_PACKAGE else "shared_content.pkg"


def camo_key(nation, season):
    return f"camo/{nation.folder}_{season}"


def customization_tree(nation):
    """customization.xml: the nation's base colour and its patterns, one per
    season, and an event pattern marked notInShop (false, which still counts)."""
    patterns = []
    tiled = [v.model for v in nation.vehicles if is_table_vehicle(v)][:3]
    for number, season in enumerate(SEASONS):
        base = 40 * number
        patterns.append((f"{nation.folder}_{season}", {
            "texture": camo_texture_path(nation, season),
            "group": season,
            "description": f"#{nation.catalogue}:{camo_key(nation, season)}",
            "colors": {
                "c0": Floats(60 + base, 70, 40, 255),
                "c1": Floats(110, 100 + base, 60, 255),
                "c2": Floats(30, 40, 30 + base, 255),
                "c3": Floats(0, 0, 0, 0),
            },
            "tiling": {model: Floats(1.0 + 0.25 * i, 1.0, 0.0, 0.0)
                       for i, model in enumerate(tiled)},
        }))
    patterns.append((f"{nation.folder}_event", {
        "texture": camo_texture_path(nation, "summer"),
        "group": "summer",
        "description": f"#{nation.catalogue}:{camo_key(nation, 'event')}",
        "notInShop": False,
        "colors": {"c0": Floats(200, 20, 20, 255)},
    }))
    return {"armorColor": Floats(nation.armor_color), "camouflages": Element(None, patterns)}


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


def item_types_tree():
    return {"vehicle": {"tags": {key: {"userString": f"#item_types:{key}"}
                                 for key, _ in CATEGORIES}}}


def xml_file(name, tree, plain):
    """The bytes of a file named name (root tag from its last component)."""
    return plain_text(name.rsplit("/", 1)[-1], tree) if plain else encode(tree)


def nation_files(nation):
    """(res-relative name, bytes, place) of one nation's data files; place is
    LOOSE or an archive name."""
    files = [
        (f"{nation.res_path}/list.xml",
         xml_file("list.xml", vehicle_list_tree(nation), nation.list_plain), nation.list_place),
        (f"{nation.res_path}/customization.xml",
         xml_file("customization.xml", customization_tree(nation), nation.camo_plain), LOOSE),
        (f"{nation.res_path}/components/guns.xml",
         encode(guns_tree(nation)), nation.defs_archive),
    ]
    for v in nation.vehicles:
        if v.model == "Observer":
            continue
        files.append((f"{nation.res_path}/{v.model}.xml",
                      xml_file(f"{v.model}.xml", vehicle_tree(nation, v), v.plain_file),
                      nation.defs_archive))
    return files


def game_data_members(nations, archive):
    """Archive members of the game data that go into archive."""
    members = [Member(name, data, DEFLATED)
               for nation in nations for name, data, place in nation_files(nation)
               if place == archive]
    textures = {camo_texture_path(nation, season): None  # ordered, no repeats
                for nation in nations if camo_texture_archive(nation) == archive
                for season in SEASONS}
    members += [Member(path, dds_bytes(path), STORED) for path in textures]
    return members


def write_game_data_files(res, nations):
    """The loose game data below res/: item_types.xml and each nation's
    loose files."""
    path = res / "scripts" / "item_defs" / "item_types.xml"
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(encode(item_types_tree()))
    for nation in nations:
        for name, data, place in nation_files(nation):
            if place == LOOSE:
                target = res / name
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(data)


def write_tank_list(path, nations):
    """The program's list of nations: ResPath and DataPath of each, in order."""
    lines = ['<?xml version="1.0" encoding="UTF-8"?>',
             "<!-- The game's nations, in the order the vehicle table is built.",
             "     ResPath: folder of the nation's list.xml and customization.xml below res/;",
             "     DataPath: folder of its models below the archives' root. The list",
             "     follows the installation that is read (the sample installation's",
             "     nations). Every child node of the root is taken as a nation, so no",
             "     comments go inside it. -->",
             "<tank_list.cfg>"]
    for nation in nations:
        lines += [f" <{nation.folder}>",
                  f"  <ResPath>{nation.res_path}</ResPath>",
                  f"  <DataPath>{nation.data_path}</DataPath>",
                  f" </{nation.folder}>"]
    lines += ["</tank_list.cfg>", ""]
    path.write_text("\n".join(lines), encoding="utf-8", newline="\n")


# ---- text catalogues

class GenerationError(Exception):
    pass


MSGFMT_MISSING = ("make_sample_game: 'msgfmt' (GNU gettext) is needed to compile the text "
                  "catalogues but was not found; install the package 'gettext' "
                  "(apt-get install -y gettext, or scripts/install-deps.sh)")


def catalogues(nations):
    """{catalogue name: [(key, text), ...]} of every .mo file to write."""
    menu = [(MENU_ALL_KEY, MENU_ALL_TEXT)]
    menu += [(f"nations/{n.folder}", n.display) for n in nations]
    result = {"menu": menu, "item_types": list(CATEGORIES)}
    for nation in nations:
        entries = []
        for v in nation.vehicles:
            tier = "no tier" if v.tier is None else f"tier {v.tier}"
            category = dict(CATEGORIES)[v.category].lower().rstrip("s")
            entries += [
                (v.model, v.name),
                (f"{v.model}_descr", f"{v.name}: a {category} of {nation.display}, {tier}."),
                (turret_tag(v), f"{v.name} turret"),
                (gun_tag(v), f"{v.name} main gun"),
            ]
        entries += [(camo_key(nation, season), f"{nation.display} {season} pattern")
                    for season in SEASONS + ("event",)]
        result[nation.catalogue] = entries
    return result


def po_string(text):
    escaped = (text.replace("\\", "\\\\").replace('"', '\\"')
               .replace("\n", "\\n").replace("\t", "\\t"))
    return f'"{escaped}"'


def po_text(entries):
    lines = ['msgid ""', 'msgstr ""',
             '"Project-Id-Version: Ferrox sample installation\\n"',
             '"Language: en\\n"',
             '"MIME-Version: 1.0\\n"',
             '"Content-Type: text/plain; charset=UTF-8\\n"',
             '"Content-Transfer-Encoding: 8bit\\n"', ""]
    for key, text in entries:
        lines += [f"msgid {po_string(key)}", f"msgstr {po_string(text)}", ""]
    return "\n".join(lines)


def write_catalogues(folder, nations):
    """Compiles one .mo per catalogue into folder with msgfmt; the .po sources
    stay in a temporary folder."""
    msgfmt = shutil.which("msgfmt")
    if not msgfmt:
        raise GenerationError(MSGFMT_MISSING)
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="ferrox-po-") as temp:
        for name, entries in catalogues(nations).items():
            source = Path(temp) / f"{name}.po"
            source.write_text(po_text(entries), encoding="utf-8", newline="\n")
            result = subprocess.run([msgfmt, "-o", str(folder / f"{name}.mo"), str(source)],
                                    capture_output=True, text=True)
            if result.returncode != 0:
                raise GenerationError(f"make_sample_game: msgfmt failed on {name}.po:\n"
                                      + result.stderr)


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
    nations = all_nations(scale)
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
        write_package(packages_dir / BULK_DEFS_PACKAGE,
                      game_data_members(bulk_nations(scale), BULK_DEFS_PACKAGE))
        listed.append(BULK_DEFS_PACKAGE)
    for space, name in GARAGE_PACKAGES.items():
        write_package(packages_dir / name, garage_members(space))
        listed.append(name)
    write_loose_files(res)
    write_game_data_files(res, nations)
    write_catalogues(res / "text" / "LC_MESSAGES", nations)
    if with_broken:
        write_broken_package(packages_dir)
    write_resources_list(out / RESOURCES_LIST_NAME, listed)
    write_tank_list(out / TANK_LIST_NAME, nations)


def stamp_text(scale, with_broken):
    """Generator version, a digest of this script and the arguments: a stamp
    that matches means the folder already holds exactly this output."""
    digest = hashlib.sha256()
    for source in GENERATOR_SOURCES:
        digest.update((Path(__file__).resolve().parent / source).read_bytes())
    return (f"ferrox sample generator {GENERATOR_VERSION}\n"
            f"script sha256 {digest.hexdigest()}\n"
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
                             f"archives of {BULK_MEMBERS_PER_ARCHIVE} members each and "
                             f"{BULK_VEHICLES_PER_SCALE} * N vehicles in extra nations")
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
    if not shutil.which("msgfmt"):  # before anything of an older run goes
        print(MSGFMT_MISSING, file=sys.stderr)
        return 3
    if out.is_dir():
        clear_folder(out)
    out.mkdir(parents=True, exist_ok=True)

    # A stamp that matches no arguments marks the folder as ours while it is
    # written, so an interrupted run is redone by the next one.
    stamp_path.write_text("incomplete\n", encoding="utf-8")
    try:
        generate(out, args.scale, args.with_broken)
    except GenerationError as error:
        print(error, file=sys.stderr)
        return 3
    stamp_path.write_text(wanted, encoding="utf-8", newline="\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
