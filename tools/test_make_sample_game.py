"""Self-check of tools/make_sample_game.py: runs it as a build would and reads
what it wrote with the standard library's zip and XML readers and with small
readers of its own.

    python3 -m unittest tools/test_make_sample_game.py
"""
import filecmp
import gettext
import io
import math
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import xml.etree.ElementTree as ElementTree
import zipfile
from pathlib import Path

TOOLS = Path(__file__).resolve().parent
GENERATOR = TOOLS / "make_sample_game.py"
REPO_DATA = TOOLS.parent / "data"
REPO_RESOURCES = REPO_DATA / "resources.cfg"
REPO_TANK_LIST = REPO_DATA / "tank_list.cfg"
REPO_GARAGES = REPO_DATA / "garages.cfg"

sys.path.insert(0, str(TOOLS))
import gavrel_dds  # noqa: E402  (the writers under test)
import gavrel_geometry  # noqa: E402
import gavrel_packed_xml as packed  # noqa: E402
import make_program_textures  # noqa: E402

SCALE1_PACKAGES = ["shared_content.pkg", "vehicles_level_01.pkg", "vehicles_level_02.pkg",
                   "gui.pkg", "hangar_premium.pkg", "hangar_basic.pkg"]
GARAGE_PACKAGES = ["garage_premium.pkg", "garage_basic.pkg"]  # listed last, not in data/
GENERATED_PACKAGES = SCALE1_PACKAGES + GARAGE_PACKAGES
BROKEN_PACKAGE = "broken_not_a_zip.pkg"
BULK_FILES_PER_ARCHIVE = 2000
BULK_VEHICLES_PER_SCALE = 8
VEHICLE_DEFS = "scripts/item_defs/vehicles"


def run(out, *arguments, env=None):
    return subprocess.run([sys.executable, str(GENERATOR), "--out", str(out), *arguments],
                          capture_output=True, text=True, timeout=300, env=env)


def generate(out, *arguments):
    result = run(out, *arguments)
    if result.returncode != 0:
        raise AssertionError(result.stderr)
    return out


def listed_packages(config_path):
    return [element.text for element in ElementTree.parse(config_path).getroot().iter("Zip")]


def file_members(archive):
    return [info for info in archive.infolist() if not info.is_dir()]


def tree_files(folder):
    return sorted(p.relative_to(folder).as_posix() for p in folder.rglob("*") if p.is_file())


def has_mixed_case(names):
    return any(n != n.lower() and n != n.upper() for n in names)


# ------------------------------------------------------------ packed XML
# A small reader of the packed form, written here from the file layout and
# independent of the writer: it checks every offset, type and length it meets
# and refuses anything left over.

PACKED_MAGIC = b"\x45\x4E\xA1\x62"


class PackedError(Exception):
    pass


class Node:
    """One element: the type and value of its own value, and its children.
    record: it was stored as a nested element record (type 0)."""

    def __init__(self, tag, kind=1, value="", record=True):
        self.tag, self.kind, self.value, self.record = tag, kind, value, record
        self.children = []

    def child(self, *path):
        node = self
        for tag in path:
            node = next((c for c in node.children if c.tag == tag), None)
            if node is None:
                return None
        return node

    def text(self, *path):
        """The value as a reader shows it as text ('' when missing)."""
        node = self.child(*path)
        show = {2: str, 3: lambda v: " ".join(f"{x:.6g}" for x in v),
                4: lambda v: "true" if v else "false"}
        return "" if node is None else show.get(node.kind, lambda v: v)(node.value)

    def tags(self):
        return [c.tag for c in self.children]


def read_leaf(raw, kind):
    if (kind not in range(1, 6) or kind == 2 and len(raw) not in (1, 2, 4)
            or kind == 3 and len(raw) % 4
            or kind == 4 and raw not in (b"", b"\x01")):  # false is stored without bytes
        raise PackedError(f"value type {kind} of {len(raw)} bytes")
    return {1: lambda: raw.decode("utf-8"), 2: lambda: int.from_bytes(raw, "little", signed=True),
            3: lambda: struct.unpack(f"<{len(raw) // 4}f", raw), 4: lambda: raw == b"\x01",
            5: lambda: bytes(raw)}[kind]()


def read_record(data, pos, names, node):
    if pos + 6 > len(data):
        raise PackedError("record header beyond the end")
    count, own = struct.unpack_from("<hI", data, pos)
    pos += 6
    count = max(count, 0)
    if pos + 6 * count > len(data):
        raise PackedError("child entries beyond the end")
    entries = [struct.unpack_from("<hI", data, pos + 6 * i) for i in range(count)]
    start = pos = pos + 6 * count
    own_end, own_kind = own & 0x0FFFFFFF, own >> 28
    if own_kind == 0 or start + own_end > len(data):
        raise PackedError("bad own value")
    node.kind, node.value = own_kind, read_leaf(data[start:start + own_end], own_kind)
    pos, previous = start + own_end, own_end
    for index, word in entries:
        end, kind = word & 0x0FFFFFFF, word >> 28
        if not 0 <= index < len(names):
            raise PackedError(f"name index {index} outside the table")
        child = Node(names[index], record=(kind == 0))
        if kind == 0:
            pos = read_record(data, pos, names, child)
            if pos - start != end:
                raise PackedError("element end offset differs from the record's size")
        else:
            if end < previous or start + end > len(data):
                raise PackedError("value end offset out of order or beyond the end")
            child.kind, child.value = kind, read_leaf(data[pos:start + end], kind)
            pos = start + end
        previous = end
        node.children.append(child)
    return pos


def decode_packed(data, root_tag="root"):
    if data[:4] != PACKED_MAGIC or len(data) < 6:
        raise PackedError("no magic")
    pos, names = 5, []
    while data[pos]:
        end = data.index(b"\0", pos)
        names.append(data[pos:end].decode("utf-8"))
        pos = end + 1
    pos += 1
    root = Node(root_tag)
    if read_record(data, pos, names, root) != len(data):
        raise PackedError("bytes left after the root record")
    return root


def node_from_text_xml(element):
    node = Node(element.tag, 1, (element.text or "").strip())
    node.children = [node_from_text_xml(child) for child in element]
    return node


def load_xml(data, root_tag="root"):
    """A Node tree of a packed or a plain text file."""
    if data.startswith(PACKED_MAGIC):
        return decode_packed(data, root_tag)
    return node_from_text_xml(ElementTree.fromstring(data))


def as_encoder_tree(node):
    """The decoded tree in the writer's terms, for a round trip."""
    def leaf(kind, value):
        return packed.Floats(value) if kind == 3 else value
    own = None if (node.kind == 1 and node.value == "") else leaf(node.kind, node.value)
    return packed.Element(own, [(c.tag, as_encoder_tree(c) if c.record else leaf(c.kind, c.value))
                                for c in node.children])


class PackedEncoderTest(unittest.TestCase):
    def test_exact_bytes(self):
        nested = bytes.fromhex("01 00 06 00 00 10 01 00 07 00 00 40") + b"shared\x01"
        for tree, expected in (
                ({"a": 5}, bytes.fromhex(
                    "45 4E A1 62 00 61 00 00 01 00 00 00 00 10 00 00 01 00 00 20 05")),
                ({}, bytes.fromhex("45 4E A1 62 00 00 00 00 00 00 00 10")),
                # an element with a value of its own and children
                ({"g": packed.Element("shared", {"b": True})},
                 PACKED_MAGIC + b"\0g\0b\0\0" + bytes.fromhex("01 00 00 00 00 10") + b"\0\0"
                 + struct.pack("<I", len(nested)) + nested)):
            with self.subTest(tree=tree):
                self.assertEqual(packed.encode(tree), expected)
        gun = decode_packed(expected).child("g")
        self.assertEqual((gun.kind, gun.value, gun.text("b")), (1, "shared", "true"))

    def test_integers_take_the_fewest_bytes(self):
        for value, raw in ((0, "00"), (127, "7f"), (-128, "80"), (128, "80 00"),
                           (-32768, "00 80"), (32767, "ff 7f"), (32768, "00 80 00 00"),
                           (-2 ** 31, "00 00 00 80")):
            with self.subTest(value=value):
                data = packed.encode({"i": value})
                raw = bytes.fromhex(raw)
                self.assertEqual(data[-len(raw):], raw)
                self.assertEqual(struct.unpack_from("<I", data, 16)[0], (2 << 28) | len(raw))
                self.assertEqual(decode_packed(data).child("i").value, value)
        with self.assertRaises(ValueError):
            packed.encode({"i": 2 ** 31})

    def test_types_and_siblings_after_a_nested_record(self):
        data = packed.encode(packed.Element(None, [
            ("e", {"x": 1, "deep": {"y": -300}}), ("f", packed.Floats(1.5, 0, -2)),
            ("m", packed.Floats(range(12))), ("s", "text with blanks"), ("b", False),
            ("blob", b"\x00\xff\x10"), ("e", "a repeated name"), ("empty", "")]))
        root = decode_packed(data)
        self.assertEqual(root.child("e", "deep", "y").value, -300)
        self.assertEqual([(c.tag, c.kind, c.value) for c in root.children[1:]], [
            ("f", 3, (1.5, 0.0, -2.0)), ("m", 3, tuple(float(v) for v in range(12))),
            ("s", 1, "text with blanks"), ("b", 4, False), ("blob", 5, b"\x00\xff\x10"),
            ("e", 1, "a repeated name"), ("empty", 1, "")])
        self.assertEqual((root.children[0].kind, root.text("b"), root.text("f")),
                         (1, "false", "1.5 0 -2"))
        self.assertEqual(packed.encode(as_encoder_tree(root)), data)
        names = data[5:data.index(b"\0\0", 5) + 1].split(b"\0")[:-1]
        self.assertEqual(len(names), len(set(names)))  # each name stored once

    def test_plain_text_of_the_same_tree(self):
        root = ElementTree.fromstring(packed.plain_text("x.xml", {
            "m": packed.Floats(range(12)), "g": packed.Element("shared", {"b": True}),
            "blob": b"ab", "q": "Kestrel's & <co>"}))
        self.assertEqual(root.tag, "x.xml")
        self.assertEqual([root.find(p).text.strip() for p in ("m/row3", "g", "g/b", "blob", "q")],
                         ["9 10 11", "shared", "true", "YWI=", "Kestrel's & <co>"])


# ------------------------------------------------------------ catalogues

MO_MAGIC = 0x950412DE


def mo_header(data):
    magic, _, count, keys, texts, hash_size, hash_at = struct.unpack_from("<7I", data, 0)
    return {"magic": magic, "count": count, "keys": keys, "texts": texts,
            "hash_size": hash_size, "hash_at": hash_at}


def mo_hash(key):
    h = 0
    for byte in key.encode("utf-8"):
        h = ((h << 4) + byte) & 0xFFFFFFFF
        g = h & 0xF0000000
        if g:
            h ^= g >> 24
            h ^= g
    return h


def mo_lookup(data, key):
    """The text of key through the file's hash table (None when the probe
    sequence ends on an empty slot), comparing keys without regard to case."""
    header = mo_header(data)
    size = header["hash_size"]
    h = mo_hash(key)
    index, step = h % size, 1 + h % (size - 2)
    first = index
    while True:
        slot = struct.unpack_from("<I", data, header["hash_at"] + 4 * index)[0]
        if slot == 0:
            return None
        length, offset = struct.unpack_from("<II", data, header["keys"] + 8 * (slot - 1))
        if data[offset:offset + length].decode("utf-8").lower() == key.lower():
            length, offset = struct.unpack_from("<II", data, header["texts"] + 8 * (slot - 1))
            return data[offset:offset + length].decode("utf-8")
        index = (index + step) % size
        if index == first:
            return None


# The nations and the unusual entries that tests (here and in C++) rely on;
# tools/README.md lists the same.
SAMPLE_NATIONS = [  # folder, DataPath, display name
    ("ardenia", "vehicles/Ardenia", "Ardenia"),
    ("borvia", "vehicles/Borvia", "Borvia"),
    ("caldera", "vehicles/Caldera", "Caldera"),
    ("drevnia", "vehicles/Drevnia", "Drevnia"),
]
SAMPLE_TANK_LIST = [(folder, f"{VEHICLE_DEFS}/{folder}", data) for folder, data, _ in SAMPLE_NATIONS]
CATEGORY_NAMES = {"lightTank": "Light Tanks", "mediumTank": "Medium Tanks",
                  "heavyTank": "Heavy Tanks", "AT-SPG": "Tank Destroyers", "SPG": "Artillery"}


def tank_list(path):
    root = ElementTree.parse(path).getroot()
    return [(child.tag, child.findtext("ResPath"), child.findtext("DataPath")) for child in root]


def is_table_vehicle(model):
    return model != "Observer" and "training" not in model


class Installation:
    """Reads resources of a generated installation as the program looks them
    up: loose below res/ first, then the archives in list order, in any case."""

    def __init__(self, out):
        self.out = out
        self.res = out / "res"
        self.archives = [zipfile.ZipFile(out / "res" / "packages" / name)
                         for name in listed_packages(out / "ferrox-resources.cfg")]
        self.index = {}
        for archive in self.archives:
            for info in file_members(archive):
                self.index.setdefault(info.filename.lower(), (archive, info))

    def close(self):
        for archive in self.archives:
            archive.close()

    def package(self, name):
        return zipfile.ZipFile(self.res / "packages" / name)

    def place(self, name):
        """'loose', the archive's file name, or None."""
        if (self.res / name).is_file():
            return "loose"
        hit = self.index.get(name.lower())
        return Path(hit[0].filename).name if hit else None

    def read(self, name):
        if (self.res / name).is_file():
            return (self.res / name).read_bytes()
        archive, info = self.index[name.lower()]
        return archive.read(info)

    def xml(self, name):
        return load_xml(self.read(name), name.rsplit("/", 1)[-1])

    def catalogue(self, name):
        return (self.res / "text" / "LC_MESSAGES" / f"{name}.mo").read_bytes()

    def translate(self, text):
        """#catalogue:key through the catalogue's hash table."""
        catalogue, key = text.lstrip("#").split(":", 1)
        return mo_lookup(self.catalogue(catalogue), key)

    def vehicles(self):
        """(nation folder, model, list entry Node) of every nation's list."""
        return [(res_path.rsplit("/", 1)[-1], entry.tag, entry)
                for _, res_path, _ in tank_list(self.out / "ferrox-tank_list.cfg")
                for entry in self.xml(f"{res_path}/list.xml").children]


_shared = {}


def shared_installation():
    """One scale-1 installation for every test that only reads it."""
    if not _shared:
        temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
        _shared["temp"] = temp
        _shared["game"] = Installation(generate(temp / "game"))
    return _shared["game"]


def tearDownModule():
    if "game" in _shared:
        _shared["game"].close()
    if "temp" in _shared:
        shutil.rmtree(_shared["temp"], ignore_errors=True)


class SharedInstallationTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.game = shared_installation()
        cls.out = cls.game.out

    def open(self, package):
        archive = self.game.package(package)
        self.addCleanup(archive.close)
        return archive


class ArchivesTest(SharedInstallationTest):
    def test_marker_version_and_resource_list(self):
        self.assertTrue((self.out / "Gavrel.exe").read_bytes().startswith(b"MZ"))
        root = ElementTree.parse(self.out / "version.xml").getroot()
        self.assertEqual(root.tag, "version.xml")
        raw = root.find("version").text
        self.assertIn("\n", raw)  # padded with blanks and line breaks
        self.assertNotEqual(raw, raw.strip())
        self.assertEqual(" ".join(raw.split()), "v.0.9.14 #417")
        self.assertEqual(listed_packages(self.out / "ferrox-resources.cfg"), GENERATED_PACKAGES)
        self.assertEqual(listed_packages(REPO_RESOURCES), SCALE1_PACKAGES)
        self.assertEqual(sorted(p.name for p in (self.game.res / "packages").iterdir()),
                         sorted(GENERATED_PACKAGES))

    def test_every_package_is_a_sound_zip_with_mixed_compression_and_folders(self):
        for package in GENERATED_PACKAGES:
            with self.subTest(package=package):
                archive = self.open(package)
                self.assertIsNone(archive.testzip())
                kinds = {info.compress_type for info in file_members(archive)}
                self.assertEqual(kinds, {zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED})
                # no clock is read, so runs seconds apart give the same bytes
                self.assertEqual({info.date_time for info in archive.infolist()},
                                 {(2020, 1, 1, 0, 0, 0)})
                names = archive.namelist()
                folders = [n for n in names if n.endswith("/")]
                self.assertTrue(folders)
                for name in names:
                    # every folder of a member has its own entry, listed before it
                    parts = name.rstrip("/").split("/")[:-1]
                    for depth in range(1, len(parts) + 1):
                        folder = "/".join(parts[:depth]) + "/"
                        self.assertIn(folder, folders)
                        self.assertLess(names.index(folder), names.index(name))
                self.assertTrue(has_mixed_case(names))

    def test_text_members_name_their_origin(self):
        for package in SCALE1_PACKAGES:
            archive = self.open(package)
            for info in file_members(archive):
                if info.filename.startswith(VEHICLE_DEFS + "/"):
                    continue  # game data, checked by GameDataTest
                if info.filename.endswith((".txt", ".xml")) \
                        and info.file_size and "Large_" not in info.filename:
                    data = archive.read(info)
                    self.assertIn(f"archive: {package}".encode(), data, info.filename)
                    self.assertIn(f"name: {info.filename}".encode(), data, info.filename)

    def test_twin_names_across_archives(self):
        shared, gui = self.open("shared_content.pkg"), self.open("gui.pkg")
        same = shared.read("text/Readme_Shared.txt"), gui.read("text/Readme_Shared.txt")
        self.assertIn(b"from shared_content", same[0])
        self.assertIn(b"from gui", same[1])
        self.assertNotIn(b"from gui", same[0])
        # names differing only in case
        self.assertEqual([n for n in shared.namelist() if n.lower() == "text/case_twin.txt"],
                         ["text/Case_Twin.txt"])
        self.assertEqual([n for n in gui.namelist() if n.lower() == "text/case_twin.txt"],
                         ["text/CASE_TWIN.txt"])
        self.assertNotEqual(shared.read("text/Case_Twin.txt"), gui.read("text/CASE_TWIN.txt"))

    def test_empty_and_large_members(self):
        for package, name, kind, empty in (
                ("shared_content.pkg", "text/Empty_Member.txt", zipfile.ZIP_STORED, True),
                ("gui.pkg", "text/Empty_Deflated.txt", zipfile.ZIP_DEFLATED, True),
                ("shared_content.pkg", "text/Large_Deflated_Table.txt", zipfile.ZIP_DEFLATED, False),
                ("hangar_premium.pkg", "spaces/Hangar_Premium/Large_Stored_Terrain.bin",
                 zipfile.ZIP_STORED, False)):
            with self.subTest(name=name):
                archive = self.open(package)
                info = archive.getinfo(name)
                data = archive.read(info)
                self.assertEqual(info.compress_type, kind)
                self.assertEqual(len(data), info.file_size)
                self.assertTrue(info.file_size == 0 if empty else info.file_size > 64 * 1024)
        table = self.open("shared_content.pkg").getinfo("text/Large_Deflated_Table.txt")
        self.assertLess(table.compress_size, table.file_size)
        lines = self.open("shared_content.pkg").read(table).splitlines()
        self.assertGreater(len(set(lines)), 1000)  # not one line repeated

    def test_loose_files_override_and_icons(self):
        self.assertTrue((self.game.res / "text" / "Loose_Note.txt").is_file())
        loose = (self.game.res / "gui" / "Loose_Override.txt").read_bytes()
        in_archive = self.open("gui.pkg").read("gui/Loose_Override.txt")
        self.assertIn(b"loose res folder", loose)
        self.assertIn(b"archive: gui.pkg", in_archive)
        self.assertNotEqual(loose, in_archive)
        icon = "gui/Maps/Icons/vehicle/ardenia-A01_Talon.png"
        data = self.open("gui.pkg").read(icon)
        self.assertTrue(data.startswith(b"\x89PNG\r\n\x1a\n"))
        self.assertIn(f"gui.pkg:{icon}".encode(), data)


class GameDataTest(SharedInstallationTest):
    """Nations, vehicle lists, vehicle files, camouflage, categories and catalogues."""

    def test_tank_list_names_the_nations_in_order(self):
        self.assertEqual(tank_list(self.out / "ferrox-tank_list.cfg"), SAMPLE_TANK_LIST)
        self.assertEqual((self.out / "ferrox-tank_list.cfg").read_bytes(),
                         REPO_TANK_LIST.read_bytes())
        # every child node of the root is a nation: no comments inside it
        root = ElementTree.parse(REPO_TANK_LIST, ElementTree.XMLParser(
            target=ElementTree.TreeBuilder(insert_comments=True))).getroot()
        self.assertEqual(len(list(root)), len(SAMPLE_NATIONS))

    def test_where_the_nation_files_lie(self):
        game = self.game
        for folder, list_place, guns, packed_list, packed_camo in (
                ("ardenia", "loose", "vehicles_level_01.pkg", True, True),
                ("borvia", "loose", "vehicles_level_01.pkg", True, True),
                ("caldera", "shared_content.pkg", "vehicles_level_02.pkg", True, True),
                ("drevnia", "loose", "vehicles_level_02.pkg", False, False)):
            with self.subTest(nation=folder):
                base = f"{VEHICLE_DEFS}/{folder}"
                self.assertEqual(game.place(f"{base}/list.xml"), list_place)
                self.assertEqual(game.place(f"{base}/components/guns.xml"), guns)
                self.assertEqual(game.place(f"{base}/customization.xml"), "loose")
                self.assertEqual(game.read(f"{base}/list.xml").startswith(PACKED_MAGIC),
                                 packed_list)
                self.assertEqual(game.read(f"{base}/customization.xml").startswith(PACKED_MAGIC),
                                 packed_camo)
        self.assertTrue(game.read("scripts/item_defs/item_types.xml").startswith(PACKED_MAGIC))
        self.assertTrue((game.res / "scripts/item_defs/item_types.xml").is_file())

    def test_every_packed_file_reads_and_round_trips(self):
        files = {}
        for path in self.game.res.rglob("*"):
            if path.is_file() and path.read_bytes().startswith(PACKED_MAGIC):
                files[f"res/{path.relative_to(self.game.res).as_posix()}"] = path.read_bytes()
        for archive in self.game.archives:
            for info in file_members(archive):
                data = archive.read(info)
                if data.startswith(PACKED_MAGIC):
                    files[f"{Path(archive.filename).name}:{info.filename}"] = data
        # 3 packed lists, 3 packed camouflage files, item types, 4 gun files and
        # every vehicle file but one
        self.assertGreaterEqual(len(files), 3 + 3 + 1 + 4 + 24)
        for name, data in files.items():
            with self.subTest(name=name):
                self.assertEqual(packed.encode(as_encoder_tree(decode_packed(data))), data)

    def test_vehicle_lists_hold_the_unusual_entries(self):
        by_model = {(nation, model): entry for nation, model, entry in self.game.vehicles()}
        for key in (("ardenia", "Observer"), ("borvia", "Observer"),
                    ("ardenia", "A00_training_dummy"), ("borvia", "B02_Training_Hauler")):
            self.assertIn(key, by_model)
        self.assertIsNone(by_model[("borvia", "B05_Prototype")].child("level"))
        self.assertEqual(by_model[("ardenia", "A06_Corvid")].text("notInShop"), "true")
        for (nation, model), entry in by_model.items():
            with self.subTest(model=model):
                self.assertEqual(entry.text("userString"), f"#{nation}_vehicles:{model}")
                self.assertEqual(entry.text("description"), f"#{nation}_vehicles:{model}_descr")
                name = self.game.translate(entry.text("userString"))
                self.assertTrue(name)
                description = self.game.translate(entry.text("description"))
                self.assertTrue(description.startswith(name + ": "), description)

    def test_table_rows_cover_categories_tiers_and_names(self):
        rows = [(nation, model, self.game.translate(entry.text("userString")),
                 entry.text("tags").split()[0], entry.text("level"))
                for nation, model, entry in self.game.vehicles() if is_table_vehicle(model)]
        self.assertEqual(len(rows), 25)
        self.assertIn("B02_Training_Hauler", [model for _, model, *_ in rows])
        self.assertEqual({category for *_, category, _ in rows}, set(CATEGORY_NAMES))
        self.assertEqual({int(tier) for *_, tier in rows if tier}, set(range(1, 11)))
        for folder, _, _ in SAMPLE_NATIONS:
            own = {int(t) for nation, *_, t in rows if nation == folder and t}
            self.assertLess(len(own), 10, f"{folder} should miss some tiers")
        sentinels = [(nation, model) for nation, model, name, *_ in rows if name == "Sentinel"]
        self.assertEqual(sentinels, [("borvia", "B08_Sentinel"), ("drevnia", "D07_Sentinel")])
        names = {name for _, _, name, _, _ in rows}
        self.assertLessEqual({"Kestrel's Wrath", "Škorpion", "Жук"}, names)
        self.assertTrue(self.game.read(f"{VEHICLE_DEFS}/drevnia/list.xml").isascii())

    def test_vehicle_files_name_their_models(self):
        for nation, model, entry in self.game.vehicles():
            if model == "Observer":
                continue
            with self.subTest(model=model):
                name = f"{VEHICLE_DEFS}/{nation}/{model}.xml"
                self.assertIn(self.game.place(name.lower()),
                              ("vehicles_level_01.pkg", "vehicles_level_02.pkg"))
                root = self.game.xml(name)
                folder = "C03_Wyvern" if model == "C03_Wyvern_v2" else model
                self.assertEqual(root.text("hull", "models", "undamaged"),
                                 f"vehicles/{nation.capitalize()}/{folder}/normal/lod0/Hull.model")
                chassis = root.child("chassis").children[0]
                self.assertTrue(chassis.text("models", "undamaged").endswith("/Chassis.model"))
                turret = root.child("turrets0").children[0]
                self.assertTrue(turret.text("models", "undamaged").endswith("/Turret_01.model"))
                self.assertIsNotNone(self.game.translate(turret.text("userString")))
                gun = turret.child("guns").children[0]
                self.assertEqual(gun.text(), "shared")
                shared = self.game.xml(f"{VEHICLE_DEFS}/{nation}/components/guns.xml")
                self.assertIsNotNone(shared.child("shared", gun.tag), gun.tag)
                self.assertEqual(len(root.text("hull", "turretPositions", "turret").split()), 3)
        plain = self.game.read(f"{VEHICLE_DEFS}/drevnia/d10_anvil.xml")
        self.assertFalse(plain.startswith(PACKED_MAGIC))

    def test_item_types(self):
        tags = self.game.xml("scripts/item_defs/item_types.xml").child("vehicle", "tags")
        self.assertEqual(tags.tags(), list(CATEGORY_NAMES))
        for key, name in CATEGORY_NAMES.items():
            self.assertEqual(tags.text(key, "userString"), f"#item_types:{key}")
            self.assertEqual(self.game.translate(f"#item_types:{key}"), name)

    def test_customization(self):
        for folder, _, _ in SAMPLE_NATIONS:
            with self.subTest(nation=folder):
                root = self.game.xml(f"{VEHICLE_DEFS}/{folder}/customization.xml")
                self.assertEqual(len(root.text("armorColor").split()), 4)
                patterns = root.child("camouflages").children
                groups = [p.text("group") for p in patterns if p.child("notInShop") is None]
                self.assertEqual(groups, ["summer", "winter", "desert"])
                self.assertEqual([p.text("notInShop") for p in patterns
                                  if p.child("notInShop")], ["false"])
                for pattern in patterns:
                    texture = self.game.read(pattern.text("texture"))
                    self.assertTrue(texture.startswith(b"DDS "))
                    self.assertEqual(len(texture), 128 + 8 * 8 * 4)
                    self.assertIsNotNone(self.game.translate(pattern.text("description")))
                    colours = pattern.child("colors").children
                    self.assertEqual(colours[0].tag, "c0")
                    self.assertTrue(all(len(c.text().split()) == 4 for c in colours))
                tiling = patterns[0].child("tiling").children
                self.assertTrue(tiling)
                self.assertTrue(all(len(t.text().split()) == 4 for t in tiling))

    def test_catalogue_files(self):
        folder = self.game.res / "text" / "LC_MESSAGES"
        names = sorted(p.name for p in folder.iterdir())
        self.assertEqual(names, sorted(["menu.mo", "item_types.mo"]
                                       + [f"{n}_vehicles.mo" for n, _, _ in SAMPLE_NATIONS]))
        for name in names:
            with self.subTest(catalogue=name):
                data = (folder / name).read_bytes()
                header = mo_header(data)
                self.assertEqual(header["magic"], MO_MAGIC)
                self.assertGreater(header["count"], 1)
                self.assertGreater(header["hash_size"], 2)
                translations = gettext.GNUTranslations(io.BytesIO(data))
                self.assertEqual(translations.info()["content-type"],
                                 "text/plain; charset=UTF-8")
                # every key reads through the hash table, in its own case
                keys = [k for k in translations._catalog if k]
                self.assertEqual(len(keys), header["count"] - 1)
                for key in keys:
                    self.assertEqual(mo_lookup(data, key), translations.gettext(key), key)
        menu = gettext.GNUTranslations(io.BytesIO(self.game.catalogue("menu")))
        self.assertEqual(menu.gettext("carousel_tank_filter/all"), "All")
        for folder_name, _, display in SAMPLE_NATIONS:
            self.assertEqual(menu.gettext(f"nations/{folder_name}"), display)
        self.assertIsNone(mo_lookup(self.game.catalogue("menu"), "nations/no_such_nation"))


class StampTest(unittest.TestCase):
    def setUp(self):
        self.temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
        self.addCleanup(shutil.rmtree, self.temp, ignore_errors=True)

    def test_only_an_empty_or_own_folder_is_written(self):
        foreign = self.temp / "foreign"
        foreign.mkdir()
        (foreign / "precious.txt").write_text("not ours")
        for arguments in ((), ("--force",)):
            with self.subTest(arguments=arguments):
                result = run(foreign, *arguments)
                self.assertEqual(result.returncode, 2)
                self.assertIn("refusing", result.stderr)
                self.assertEqual(tree_files(foreign), ["precious.txt"])
        in_the_way = self.temp / "file"
        in_the_way.write_text("not a folder")
        self.assertEqual(run(in_the_way).returncode, 2)
        self.assertEqual(in_the_way.read_text(), "not a folder")

    def test_reruns_rewrite_only_when_needed(self):
        out = self.temp / "empty"
        out.mkdir()
        generate(out)
        self.assertTrue((out / "Gavrel.exe").is_file())
        sentinel = out / "sentinel.txt"
        sentinel.write_text("left by the test")
        generate(out)
        self.assertTrue(sentinel.exists(), "a matching stamp must not rewrite")

        # without msgfmt an up-to-date folder is fine; a rewrite stops before
        # it removes anything
        empty_bin = self.temp / "bin"
        empty_bin.mkdir()
        no_tools = {"PATH": str(empty_bin)}
        result = run(out, env=no_tools)
        self.assertEqual(result.returncode, 0, result.stderr)
        result = run(out, "--force", env=no_tools)
        self.assertEqual(result.returncode, 3)
        self.assertIn("msgfmt", result.stderr)
        self.assertIn("gettext", result.stderr)
        self.assertTrue(sentinel.exists())
        self.assertTrue((out / "res" / "text" / "LC_MESSAGES" / "menu.mo").is_file())

        generate(out, "--force")
        self.assertFalse(sentinel.exists())
        self.assertTrue((out / "res" / "packages" / "gui.pkg").is_file())

        sentinel.write_text("left by the test")
        generate(out, "--with-broken")  # other arguments rewrite
        self.assertFalse(sentinel.exists())
        broken = out / "res" / "packages" / BROKEN_PACKAGE
        self.assertTrue(broken.is_file())
        self.assertFalse(zipfile.is_zipfile(broken))
        self.assertEqual(listed_packages(out / "ferrox-resources.cfg"), GENERATED_PACKAGES)
        generate(out)
        self.assertFalse(broken.exists())

        # an interrupted run is redone
        (out / ".ferrox-sample-stamp").write_text("incomplete\n")
        (out / "res" / "packages" / "gui.pkg").write_bytes(b"half written")
        generate(out)
        with zipfile.ZipFile(out / "res" / "packages" / "gui.pkg") as archive:
            self.assertIsNone(archive.testzip())


class ScaleTest(unittest.TestCase):
    """--scale 3 (with the broken package) written twice and compared."""

    @classmethod
    def setUpClass(cls):
        cls.temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
        cls.addClassCleanup(shutil.rmtree, cls.temp, ignore_errors=True)
        cls.out = generate(cls.temp / "first", "--scale", "3", "--with-broken")

    def test_two_runs_give_identical_files(self):
        second = generate(self.temp / "second", "--scale", "3", "--with-broken")
        files = tree_files(self.out)
        self.assertEqual(files, tree_files(second))
        self.assertIn("res/packages/gui.pkg", files)
        self.assertIn("res/packages/bulk_content_001.pkg", files)
        match, mismatch, errors = filecmp.cmpfiles(self.out, second, files, shallow=False)
        self.assertEqual((mismatch, errors), ([], []))
        self.assertEqual(len(match), len(files))

    def test_bulk_archives(self):
        folder = self.out / "res" / "packages"
        packages = listed_packages(self.out / "ferrox-resources.cfg")
        self.assertEqual(packages[:len(SCALE1_PACKAGES)], SCALE1_PACKAGES)
        self.assertEqual(packages[-3:], ["bulk_vehicle_defs.pkg"] + GARAGE_PACKAGES)
        bulk = packages[len(SCALE1_PACKAGES):-3]
        self.assertEqual(bulk, [f"bulk_content_{i:03d}.pkg" for i in range(3)])
        self.assertEqual(sorted(p.name for p in folder.iterdir()),
                         sorted(packages + [BROKEN_PACKAGE]))

        seen = {}          # exact name -> archives
        folded = {}        # lower-cased name -> spellings
        for package in bulk:
            with zipfile.ZipFile(folder / package) as archive:
                self.assertIsNone(archive.testzip())
                members = file_members(archive)
                self.assertEqual(len({m.filename for m in members}), BULK_FILES_PER_ARCHIVE)
                self.assertEqual(len(members), BULK_FILES_PER_ARCHIVE)
                deflated = sum(m.compress_type == zipfile.ZIP_DEFLATED for m in members)
                self.assertTrue(BULK_FILES_PER_ARCHIVE // 20 < deflated
                                < BULK_FILES_PER_ARCHIVE // 2, deflated)
                sizes = [m.file_size for m in members]
                self.assertTrue(10 <= min(sizes) and max(sizes) <= 8192)
                for prefix in ("vehicles/", "gui/Maps/Icons/vehicle/", "spaces/"):
                    self.assertTrue(any(m.filename.startswith(prefix) for m in members), prefix)
                self.assertTrue(any("/normal/lod0/" in m.filename for m in members))
                for m in members:
                    seen.setdefault(m.filename, []).append(package)
                    folded.setdefault(m.filename.lower(), set()).add(m.filename)

        exact_twins = [name for name, where in seen.items() if len(where) > 1]
        self.assertGreater(len(exact_twins), 10)
        self.assertGreater(sum(len(spellings) > 1 for spellings in folded.values()), 5)
        self.assertTrue(has_mixed_case(seen))
        # a repeated name carries the content of its own archive
        name = exact_twins[0]
        with zipfile.ZipFile(folder / seen[name][0]) as a, \
                zipfile.ZipFile(folder / seen[name][1]) as b:
            self.assertNotEqual(a.read(name), b.read(name))

    def check_bulk_nations(self, out, scale):
        """Every listed nation has its list, catalogue and vehicle files; gives
        the number of vehicles the table would hold."""
        nations = tank_list(out / "ferrox-tank_list.cfg")
        self.assertEqual(nations[:len(SAMPLE_TANK_LIST)], SAMPLE_TANK_LIST)
        bulk = nations[len(SAMPLE_TANK_LIST):]
        self.assertEqual([tag for tag, _, _ in bulk],
                         [f"bulk_nation_{i:02d}" for i in range(len(bulk))])
        game = Installation(out)
        self.addCleanup(game.close)
        menu = game.catalogue("menu")
        for tag, res_path, data_path in bulk:
            self.assertEqual(res_path, f"{VEHICLE_DEFS}/{tag}")
            self.assertEqual(data_path, f"vehicles/{tag.capitalize().replace('_n', '_N')}")
            self.assertEqual(game.place(f"{res_path}/list.xml"), "loose")
            self.assertEqual(game.place(f"{res_path}/customization.xml"), "loose")
            self.assertTrue(mo_lookup(menu, f"nations/{tag}"))
            camo = game.xml(f"{res_path}/customization.xml")
            for pattern in camo.child("camouflages").children:
                self.assertTrue(game.read(pattern.text("texture")).startswith(b"DDS "))
        rows = [(nation, model, entry) for nation, model, entry in game.vehicles()
                if is_table_vehicle(model)]
        bulk_rows = [row for row in rows if row[0].startswith("bulk_nation_")]
        self.assertEqual(len(bulk_rows), scale * BULK_VEHICLES_PER_SCALE)
        for nation, model, entry in bulk_rows:
            self.assertTrue(game.translate(entry.text("userString")))
            self.assertIn(entry.text("tags").split()[0], CATEGORY_NAMES)
            self.assertIn(int(entry.text("level")), range(1, 11))
            self.assertEqual(game.place(f"{VEHICLE_DEFS}/{nation}/{model}.xml".lower()),
                             "bulk_vehicle_defs.pkg")
        return len(rows)

    def test_bulk_nations(self):
        self.assertEqual(self.check_bulk_nations(self.out, 3), 25 + 24)

    @unittest.skipIf(os.environ.get("FERROX_SKIP_SLOW_TESTS"), "slow: --scale 100")
    def test_scale_hundred_has_several_hundred_vehicles(self):
        started = time.monotonic()
        out = generate(self.temp / "scale100", "--scale", "100")
        elapsed = time.monotonic() - started
        self.assertTrue(500 <= self.check_bulk_nations(out, 100) <= 1000)
        self.assertLess(elapsed, 120, "generation of --scale 100 became slow")


# ------------------------------------------------ geometry, textures, garages
# Small readers written from the file formats, independent of the writers.

PRIMITIVES_MAGIC = 0x42A14E65
SAMPLE_MODELS = ["vehicles/Ardenia/A01_Talon", "vehicles/Borvia/B01_Kestrel",
                 "vehicles/Caldera/C02_Basilisk", "vehicles/Drevnia/D02_Ironmoth",
                 "vehicles/Caldera/C03_Wyvern"]
# part: (vertex format, 32-bit indices, primitive groups, uv2 stream)
PART_LAYOUTS = {"Chassis": ("xyznuvtb", False, 2, False), "Hull": ("xyznuvtb", False, 1, True),
                "Turret_01": ("xyznuviiiwwtb", True, 1, False), "Gun_01": ("xyznuv", False, 1, False)}
NATION_COLOURS = {"Ardenia": (110, 120, 60), "Borvia": (190, 165, 110),
                  "Caldera": (95, 110, 130), "Drevnia": (120, 40, 35)}


def read_chunks(data):
    """{name: payload} of a .primitives file, checking every offset."""
    if len(data) < 8 or struct.unpack_from("<I", data)[0] != PRIMITIVES_MAGIC:
        raise ValueError("no magic")
    table_length = struct.unpack_from("<I", data, len(data) - 4)[0]
    if table_length > len(data) - 8:
        raise ValueError("table longer than the file")
    pos, end = len(data) - 4 - table_length, len(data) - 4
    payload = 4
    chunks = {}
    while pos < end:
        size, name_length = struct.unpack_from("<I16xI", data, pos)
        name = data[pos + 24:pos + 24 + name_length].decode("ascii")
        pos += 24 + (name_length + 3) // 4 * 4
        if payload + size > len(data) - 4 - table_length:
            raise ValueError("payload runs into the table")
        chunks[name] = data[payload:payload + size]
        payload += (size + 3) // 4 * 4
    if pos != end or payload != len(data) - 4 - table_length:
        raise ValueError("table and payloads do not fill the file")
    return chunks


def signed(value, bits):
    return value - (1 << bits) if value >= 1 << (bits - 1) else value


def unpack_vector(word):
    return (signed(word & 0x7FF, 11) / 1023, signed((word >> 11) & 0x7FF, 11) / 1023,
            signed(word >> 22, 10) / 511)


def read_indices(payload):
    fmt = payload[:64].split(b"\0")[0].decode("ascii")
    count, group_count = struct.unpack_from("<II", payload, 64)
    width = 4 if "list32" in fmt else 2
    indices = struct.unpack_from(f"<{count}{'I' if width == 4 else 'H'}", payload, 72)
    groups = [struct.unpack_from("<4I", payload, 72 + count * width + 16 * g)
              for g in range(group_count)]
    if 72 + count * width + 16 * group_count != len(payload):
        raise ValueError("index chunk size")
    return fmt, list(indices), groups


def read_vertices(payload):
    """(format, [(position, normal, uv)])"""
    fmt = payload[:64].split(b"\0")[0].decode("ascii")
    count = struct.unpack_from("<I", payload, 64)[0]
    stride = {"xyznuv": 32, "xyznuvtb": 32, "xyznuviiiwwtb": 37}[fmt.lower()]
    if 68 + count * stride != len(payload):
        raise ValueError("vertex chunk size")
    result = []
    for i in range(count):
        at = 68 + i * stride
        if fmt.lower() == "xyznuv":
            normal, uv_at = struct.unpack_from("<3f", payload, at + 12), at + 24
        else:
            normal, uv_at = unpack_vector(struct.unpack_from("<I", payload, at + 12)[0]), at + 16
        result.append((struct.unpack_from("<3f", payload, at), normal,
                       struct.unpack_from("<2f", payload, uv_at)))
    return fmt, result


def expand565(value):
    r, g, b = value >> 11, (value >> 5) & 63, value & 31
    return ((r << 3) | (r >> 2), (g << 2) | (g >> 4), (b << 3) | (b >> 2))


def decode_colour_block(block, four_colour_only=False):
    c0, c1, bits = struct.unpack("<HHI", block)
    a, b = expand565(c0), expand565(c1)

    def mix(wa, wb):
        return tuple((wa * x + wb * y) // (wa + wb) for x, y in zip(a, b)) + (255,)
    if c0 > c1 or four_colour_only:
        table = [a + (255,), b + (255,), mix(2, 1), mix(1, 2)]
    else:
        table = [a + (255,), b + (255,), mix(1, 1), (0, 0, 0, 0)]
    return [table[(bits >> (2 * i)) & 3] for i in range(16)]


def decode_alpha_block(block):
    a0, a1 = block[0], block[1]
    bits = int.from_bytes(block[2:8], "little")
    if a0 > a1:
        values = [a0, a1] + [((7 - i) * a0 + i * a1) // 7 for i in range(1, 7)]
    else:
        values = [a0, a1] + [((5 - i) * a0 + i * a1) // 5 for i in range(1, 5)] + [0, 255]
    return [values[(bits >> (3 * i)) & 7] for i in range(16)]


def read_dds(data):
    """Header fields and the decoded top level (RGBA tuples, row by row)."""
    if data[:4] != b"DDS " or struct.unpack_from("<I", data, 4)[0] != 124:
        raise ValueError("not a DDS file")
    height, width = struct.unpack_from("<II", data, 12)
    mips = struct.unpack_from("<I", data, 28)[0]
    flags, fourcc, bits, rmask, gmask, bmask, amask = struct.unpack_from("<I4sIIIII", data, 80)
    info = {"width": width, "height": height, "mips": max(mips, 1),
            "format": fourcc.decode() if flags & 4 else f"RGB{bits}",
            "masks": (rmask, gmask, bmask, amask)}
    block = {"DXT1": 8, "DXT3": 16, "DXT5": 16}.get(info["format"])
    sizes, w, h = [], width, height
    for _ in range(info["mips"]):
        sizes.append(((w + 3) // 4) * ((h + 3) // 4) * block if block else w * h * bits // 8)
        w, h = max(1, w // 2), max(1, h // 2)
    info["length"] = 128 + sum(sizes)
    top = data[128:128 + sizes[0]]
    pixels = [None] * (width * height)
    if block:
        for n in range(len(top) // block):
            chunk = top[n * block:(n + 1) * block]
            if info["format"] == "DXT1":
                texels = decode_colour_block(chunk)
            else:
                texels = decode_colour_block(chunk[8:], True)
                alphas = (decode_alpha_block(chunk[:8]) if info["format"] == "DXT5" else
                          [((int.from_bytes(chunk[:8], "little") >> (4 * i)) & 15) * 17
                           for i in range(16)])
                texels = [t[:3] + (a,) for t, a in zip(texels, alphas)]
            bx, by = n % ((width + 3) // 4) * 4, n // ((width + 3) // 4) * 4
            for i, t in enumerate(texels):
                x, y = bx + i % 4, by + i // 4
                if x < width and y < height:
                    pixels[y * width + x] = t
    else:
        step = bits // 8
        for i in range(width * height):
            p = top[i * step:(i + 1) * step]
            pixels[i] = (p[2], p[1], p[0], p[3] if step == 4 else 255)
    info["pixels"] = pixels
    return info


def mirrored_triangles(indices, vertices):
    """Triangles as the program draws them: x negated, each triangle reversed."""
    def mirror(v):
        return (-v[0], v[1], v[2])
    for t in range(0, len(indices) - 2, 3):
        a, b, c = indices[t + 2], indices[t + 1], indices[t]
        yield [(mirror(vertices[i][0]), mirror(vertices[i][1])) for i in (a, b, c)]


class GeometryWriterTest(unittest.TestCase):
    def test_container_round_trip(self):
        chunks = [("Part.vertices", b"12345"), ("Part.indices", b""), ("uv2", bytes(range(8)))]
        data = gavrel_geometry.primitives_file(chunks)
        self.assertEqual(read_chunks(data), dict(chunks))
        self.assertEqual(len(data) % 4, 0)
        with self.assertRaises(ValueError):
            read_chunks(data[:-1] + b"\xff")

    def test_packed_vector_fields(self):
        pack = gavrel_geometry.pack_vector
        for vector, word in (((1, 0, 0), 1023), ((0, -1, 0), (2048 - 1023) << 11),
                             ((0, 0, 1), 511 << 22), ((0, 0, -1), (1024 - 511) << 22),
                             ((3, 0, 0), 1023)):  # the last one clamped
            self.assertEqual(pack(vector), word, vector)
        for v in ((0.6, -0.8, 0.0), (0.267, 0.535, -0.802)):
            self.assertTrue(all(abs(x - y) < 1 / 500 for x, y in zip(unpack_vector(pack(v)), v)))


class DdsWriterTest(unittest.TestCase):
    def image(self, width, height, alpha=lambda x, y: 255):
        return [(min(255, 40 + 9 * x), min(255, 200 - 5 * y), 90, alpha(x, y))
                for y in range(height) for x in range(width)]

    def assert_close(self, decoded, source, tolerance, channels=3):
        for d, s in zip(decoded, source):
            self.assertTrue(all(abs(d[c] - s[c]) <= tolerance for c in range(channels)), (d, s))

    def decoded(self, fmt, width, height, source):
        return read_dds(gavrel_dds.dds(fmt, width, height, source, levels=1))

    def test_blocks_decode_close_to_the_source(self):
        two_colours = [(200, 30, 30, 255) if i % 3 else (30, 30, 200, 255) for i in range(16)]
        graded_alpha = self.image(4, 4, lambda x, y: 16 * (4 * y + x) + 10)
        for fmt, size, source, tolerance, channels in (
                ("DXT1", (8, 4), self.image(8, 4), 24, 3), ("DXT1", (4, 4), two_colours, 8, 3),
                ("DXT5", (4, 4), graded_alpha, 24, 4), ("DXT3", (4, 4), graded_alpha, 24, 4)):
            with self.subTest(fmt=fmt, size=size):
                info = self.decoded(fmt, *size, source)
                self.assertEqual(info["format"], fmt)
                self.assert_close(info["pixels"], source, tolerance, channels)
        self.assertGreater(*gavrel_dds.dds("DXT5", 4, 4, graded_alpha, levels=1)[128:130])

    def test_dxt1_transparent_pixels_use_the_three_colour_form(self):
        source = self.image(4, 4, lambda x, y: 0 if x == y else 255)
        data = gavrel_dds.dds("DXT1", 4, 4, source, levels=1)
        c0, c1 = struct.unpack_from("<HH", data, 128)
        self.assertLessEqual(c0, c1)
        pixels = read_dds(data)["pixels"]
        self.assertEqual([p[3] for p in pixels], [0 if s[3] == 0 else 255 for s in source])
        self.assert_close([p for p, s in zip(pixels, source) if s[3]],
                          [s for s in source if s[3]], 30)

    def test_mip_chains_and_uncompressed_forms(self):
        for fmt, size, mips in (("DXT1", (64, 16), 7), ("DXT5", (8, 8), 4),
                                ("BGRA32", (16, 4), 5), ("BGR24", (4, 4), 3)):
            with self.subTest(fmt=fmt):
                source = self.image(*size)
                data = gavrel_dds.dds(fmt, *size, source)
                info = read_dds(data)
                self.assertEqual((info["width"], info["height"], info["mips"]), size + (mips,))
                self.assertEqual(info["length"], len(data))
                if not fmt.startswith("DXT"):
                    self.assertEqual(info["masks"][:3], (0xFF0000, 0xFF00, 0xFF))
                    self.assertEqual(info["pixels"], [p[:3] + (255,) for p in source]
                                     if fmt == "BGR24" else source)

    def test_program_textures_are_current(self):
        for name, data in make_program_textures.program_textures().items():
            with self.subTest(name=name):
                committed = (REPO_DATA / name).read_bytes()
                self.assertEqual(committed, data, "run tools/make_program_textures.py")
                info = read_dds(committed)
                self.assertEqual(info["format"], "DXT1")
                self.assertEqual(1 << (info["mips"] - 1), info["width"])


class ModelFilesTest(SharedInstallationTest):
    """Vehicle and garage models and their textures."""

    def geometry(self, base, archive=None):
        """(visual, chunks, geometry Node, vertex format, vertices, index format,
        indices, groups) of the model base.{visual,primitives}."""
        read = archive.read if archive else self.game.read
        visual = load_xml(read(base + ".visual"), base.rsplit("/", 1)[-1] + ".visual")
        chunks = read_chunks(read(base + ".primitives"))
        geometry = visual.child("renderSet", "geometry")
        return (visual, chunks, geometry, *read_vertices(chunks[geometry.text("vertices")]),
                *read_indices(chunks[geometry.text("primitive")]))

    def test_vehicle_parts_follow_their_layout(self):
        joints = {"Hull": "HP_turretJoint", "Turret_01": "HP_gunJoint"}  # to the part above
        for folder in SAMPLE_MODELS:
            for part, (fmt, wide, group_count, uv2) in PART_LAYOUTS.items():
                with self.subTest(model=folder, part=part):
                    visual, chunks, geometry, vfmt, vertices, ifmt, indices, groups = \
                        self.geometry(f"{folder}/normal/lod0/{part}")
                    self.assertEqual(vfmt.lower(), fmt)
                    self.assertEqual(ifmt, "list32" if wide else "list")
                    self.assertEqual(len(groups), group_count)
                    self.assertEqual(len(indices) % 3, 0)
                    self.assertLess(max(indices), len(vertices))
                    self.assertEqual(sum(g[1] for g in groups) * 3, len(indices))
                    for start, triangles, first, count in groups:
                        used = indices[start:start + 3 * triangles]
                        self.assertTrue(first <= min(used) and max(used) < first + count)
                    for _, normal, _ in vertices:
                        self.assertAlmostEqual(math.hypot(*normal), 1.0, delta=0.01)
                    self.assertEqual(geometry.text("stream") == "uv2", uv2)
                    if uv2:
                        self.assertEqual(len(chunks["uv2"]), 8 * len(vertices))
                    if part in joints:  # the joint sits on this part
                        position = find_translation(visual.child("node"), joints[part])
                        top = max(v[0][1] for v in vertices)
                        self.assertTrue(position and 0 < position[1] <= top + 0.01,
                                        (position, top))
        self.assertEqual(self.geometry(f"{SAMPLE_MODELS[4]}/normal/lod0/Gun_01")[3], "XYZNUV")

    def test_triangles_face_outward_after_mirroring(self):
        bases = [f"{SAMPLE_MODELS[0]}/normal/lod0/{part}" for part in PART_LAYOUTS]
        for base in bases + ["spaces/Hangar_Premium/models/Floor"]:
            with self.subTest(model=base):
                _, _, _, _, vertices, _, indices, _ = self.geometry(base)
                for corners in mirrored_triangles(indices, vertices):
                    (a, na), (b, nb), (c, nc) = corners
                    ab = [q - p for p, q in zip(a, b)]
                    ac = [q - p for p, q in zip(a, c)]
                    face = (ab[1] * ac[2] - ab[2] * ac[1], ab[2] * ac[0] - ab[0] * ac[2],
                            ab[0] * ac[1] - ab[1] * ac[0])
                    mean = [x + y + z for x, y, z in zip(na, nb, nc)]
                    self.assertGreater(sum(f * m for f, m in zip(face, mean)), 0, corners)

    def test_vehicle_stands_on_the_ground_at_its_size(self):
        points = [v[0] for part in ("Chassis", "Hull")
                  for v in self.geometry(f"{SAMPLE_MODELS[0]}/normal/lod0/{part}")[4]]
        low, high = ([f(p[i] for p in points) for i in range(3)] for f in (min, max))
        self.assertAlmostEqual(low[1], 0.0, places=4)
        self.assertAlmostEqual(low[0], -high[0], places=4)
        self.assertTrue(2.5 <= high[0] - low[0] <= 3.5 and 5.5 <= high[2] - low[2] <= 6.5)

    def test_every_visual_names_its_nodes_chunks_and_existing_textures(self):
        visuals = sorted({info.filename for archive in self.game.archives
                          for info in file_members(archive) if info.filename.endswith(".visual")})
        self.assertGreaterEqual(len(visuals), 5 * 4 + 7 + 1)
        for name in visuals:
            with self.subTest(visual=name):
                self.assertEqual(self.game.read(name).startswith(PACKED_MAGIC),
                                 "D02_Ironmoth" not in name)
                visual, _, geometry, *_, groups = self.geometry(name[:-len(".visual")])
                root = visual.child("node")
                self.assertEqual(root.text("identifier"), "Scene Root")
                self.assertIsNotNone(find_translation(root, visual.text("renderSet", "node")))
                for group in geometry.children:
                    if group.tag != "primitiveGroup":
                        continue
                    self.assertLess(int(group.text().split()[0]), len(groups))
                    material = group.child("material")
                    self.assertTrue(material.text("fx").startswith("shaders/std_effects/"))
                    for prop in material.children:
                        texture = prop.text("Texture")
                        if prop.tag == "property" and texture:
                            if texture.endswith(".tga"):
                                texture = texture[:-4] + ".dds"
                            self.assertIsNotNone(self.game.place(texture), texture)

    def test_diffuse_textures_show_the_nation_colour(self):
        for folder in SAMPLE_MODELS:
            nation = folder.split("/")[1]
            for part in PART_LAYOUTS:
                with self.subTest(model=folder, part=part):
                    info = read_dds(self.game.read(f"{folder}/{part}_AM.dds"))
                    self.assertEqual(1 << (info["mips"] - 1), info["width"])
                    colours = [p[:3] for p in info["pixels"]]
                    dominant = max(set(colours), key=colours.count)
                    self.assertGreater(colours.count(dominant), 0.7 * len(colours))
                    self.assertTrue(all(abs(a - b) <= 6 for a, b in
                                        zip(dominant, NATION_COLOURS[nation])), dominant)
        kestrel_gun = read_dds(self.game.read(f"{SAMPLE_MODELS[1]}/Gun_01_AM.dds"))
        self.assertEqual(kestrel_gun["format"], "RGB32")
        self.assertGreater(kestrel_gun["mips"], 1)

    def test_texformat_names_a_one_level_hd_texture(self):
        base = f"{SAMPLE_MODELS[0]}/Hull_AM"
        hd_name = self.game.xml(base + ".texformat").children[0].text("mip")
        hd, regular = read_dds(self.game.read(hd_name)), read_dds(self.game.read(base + ".dds"))
        self.assertEqual(self.game.place(hd_name), self.game.place(base + ".dds"))
        self.assertEqual((hd["format"], hd["mips"]), ("DXT1", 1))
        self.assertEqual((hd["width"], hd["height"]), (2 * regular["width"], 2 * regular["height"]))

    def test_garages_name_existing_models_outside_the_vehicle_area(self):
        root = ElementTree.parse(REPO_GARAGES).getroot()
        for garage in ("Premium", "Basic"):
            element = root.find(garage)
            zips = [z.text for z in element.iter("Zip")]
            self.assertTrue(zips)
            self.assertFalse(set(zips) & set(listed_packages(REPO_RESOURCES)))
            archives = [self.open(name) for name in zips]
            meshes = list(element.iter("Mesh"))
            files = [m.findtext("File") for m in meshes]
            self.assertLess(len(set(files)), len(files))  # one model placed twice
            for mesh, model in zip(meshes, files):
                with self.subTest(garage=garage, model=model):
                    base = model[:-len(".model")]
                    owner = [a for a in archives if base + ".visual" in a.namelist()]
                    self.assertEqual(len(owner), 1)
                    vertices = self.geometry(base, owner[0])[4]
                    for x, y, z in placed(mesh, [v[0] for v in vertices]):
                        self.assertFalse(abs(x) < 4 and abs(z) < 5 and y > 0.01, (x, y, z))


def find_translation(node, identifier):
    """Translation of the node of that identifier below or at node, or None."""
    if node.text("identifier").lower() == identifier.lower():
        transform = node.child("transform")
        if transform.kind == 3:
            return transform.value[9:12]
        return tuple(float(v) for v in transform.text("row3").split())
    for child in node.children:
        if child.tag == "node":
            found = find_translation(child, identifier)
            if found is not None:
                return found
    return None


def placed(mesh, points):
    """Points scaled, turned about y and moved as a garages.cfg Mesh says."""
    def vector(tag, default):
        text = mesh.findtext(tag)
        return [float(v) for v in text.split()] if text else default
    position = vector("Position", [0.0, 0.0, 0.0])
    axis_angle = vector("Rotation", [0.0, 1.0, 0.0, 0.0])
    scaling = vector("Scale", [1.0, 1.0, 1.0])
    assert axis_angle[:3] == [0.0, 1.0, 0.0], "only turns about y are laid out here"
    angle = math.radians(axis_angle[3])
    for p in points:
        x, y, z = (p[i] * scaling[i] for i in range(3))
        x, z = x * math.cos(angle) + z * math.sin(angle), -x * math.sin(angle) + z * math.cos(angle)
        yield x + position[0], y + position[1], z + position[2]


if __name__ == "__main__":
    unittest.main()
