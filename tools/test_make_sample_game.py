"""Self-check of tools/make_sample_game.py: runs it as a build would and reads
what it wrote with the standard library's own zip and XML readers.

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
REPO_RESOURCES = TOOLS.parent / "data" / "resources.cfg"
REPO_TANK_LIST = TOOLS.parent / "data" / "tank_list.cfg"

sys.path.insert(0, str(TOOLS))
import gavrel_packed_xml as packed  # noqa: E402  (the encoder under test)

SCALE1_PACKAGES = ["shared_content.pkg", "vehicles_level_01.pkg", "vehicles_level_02.pkg",
                   "gui.pkg", "hangar_premium.pkg", "hangar_basic.pkg"]
GARAGE_PACKAGES = ["garage_premium.pkg", "garage_basic.pkg"]  # listed last, not in data/
GENERATED_PACKAGES = SCALE1_PACKAGES + GARAGE_PACKAGES
BULK_FILES_PER_ARCHIVE = 2000


def run(out, *arguments):
    return subprocess.run([sys.executable, str(GENERATOR), "--out", str(out), *arguments],
                          capture_output=True, text=True, timeout=300)


def listed_packages(config_path):
    root = ElementTree.parse(config_path).getroot()
    return [element.text for element in root.iter("Zip")]


def file_members(archive):
    return [info for info in archive.infolist() if not info.is_dir()]


def tree_files(folder):
    return sorted(p.relative_to(folder).as_posix() for p in folder.rglob("*") if p.is_file())


class TempDirTest(unittest.TestCase):
    def setUp(self):
        self.temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
        self.addCleanup(shutil.rmtree, self.temp, ignore_errors=True)

    def generate(self, name, *arguments):
        out = self.temp / name
        result = run(out, *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return out


class SmallInstallationTest(unittest.TestCase):
    """Read-only checks on one scale-1 installation."""

    @classmethod
    def setUpClass(cls):
        cls.temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
        cls.out = cls.temp / "game"
        result = run(cls.out)
        if result.returncode != 0:
            shutil.rmtree(cls.temp, ignore_errors=True)
            raise AssertionError(result.stderr)
        cls.packages = cls.out / "res" / "packages"

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.temp, ignore_errors=True)

    def open(self, package):
        archive = zipfile.ZipFile(self.packages / package)
        self.addCleanup(archive.close)
        return archive

    def test_marker_and_version(self):
        self.assertTrue((self.out / "Gavrel.exe").is_file())
        self.assertTrue((self.out / "Gavrel.exe").read_bytes().startswith(b"MZ"))
        root = ElementTree.parse(self.out / "version.xml").getroot()
        self.assertEqual(root.tag, "version.xml")
        raw = root.find("version").text
        self.assertIn("\n", raw)
        self.assertNotEqual(raw, raw.strip())
        self.assertEqual(" ".join(raw.split()), "v.0.9.14 #417")

    def test_resource_list_names_every_package_in_order(self):
        self.assertEqual(listed_packages(self.out / "ferrox-resources.cfg"), GENERATED_PACKAGES)
        on_disk = sorted(p.name for p in self.packages.iterdir())
        self.assertEqual(on_disk, sorted(GENERATED_PACKAGES))
        self.assertFalse((self.packages / "broken_not_a_zip.pkg").exists())

    def test_repository_resource_list_matches_the_sample(self):
        self.assertEqual(listed_packages(REPO_RESOURCES), SCALE1_PACKAGES)

    def test_every_package_is_a_sound_zip_with_mixed_compression_and_folders(self):
        for package in GENERATED_PACKAGES:
            with self.subTest(package=package):
                archive = self.open(package)
                self.assertIsNone(archive.testzip())
                kinds = {info.compress_type for info in file_members(archive)}
                self.assertEqual(kinds, {zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED})
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
                self.assertTrue(any(n != n.lower() and n != n.upper() for n in names))

    def test_text_members_name_their_origin(self):
        for package in SCALE1_PACKAGES:
            archive = self.open(package)
            for info in file_members(archive):
                if info.filename.startswith("scripts/item_defs/vehicles/"):
                    continue  # game data, checked by GameDataTest
                if info.filename.endswith((".txt", ".xml")) \
                        and info.file_size and "Large_" not in info.filename:
                    data = archive.read(info)
                    self.assertIn(f"archive: {package}".encode(), data, info.filename)
                    self.assertIn(f"name: {info.filename}".encode(), data, info.filename)

    def test_same_name_in_two_archives_differs(self):
        shared = self.open("shared_content.pkg").read("text/Readme_Shared.txt")
        gui = self.open("gui.pkg").read("text/Readme_Shared.txt")
        self.assertIn(b"from shared_content", shared)
        self.assertIn(b"from gui", gui)
        self.assertNotIn(b"from gui", shared)

    def test_names_differing_only_in_case(self):
        shared = self.open("shared_content.pkg")
        gui = self.open("gui.pkg")
        self.assertIn("text/Case_Twin.txt", shared.namelist())
        self.assertNotIn("text/CASE_TWIN.txt", shared.namelist())
        self.assertIn("text/CASE_TWIN.txt", gui.namelist())
        self.assertNotIn("text/Case_Twin.txt", gui.namelist())
        self.assertNotEqual(shared.read("text/Case_Twin.txt"), gui.read("text/CASE_TWIN.txt"))

    def test_empty_members(self):
        stored = self.open("shared_content.pkg").getinfo("text/Empty_Member.txt")
        self.assertEqual((stored.file_size, stored.compress_type), (0, zipfile.ZIP_STORED))
        deflated = self.open("gui.pkg").getinfo("text/Empty_Deflated.txt")
        self.assertEqual((deflated.file_size, deflated.compress_type), (0, zipfile.ZIP_DEFLATED))
        self.assertEqual(self.open("gui.pkg").read(deflated), b"")

    def test_large_members(self):
        archive = self.open("shared_content.pkg")
        info = archive.getinfo("text/Large_Deflated_Table.txt")
        self.assertEqual(info.compress_type, zipfile.ZIP_DEFLATED)
        self.assertGreater(info.file_size, 64 * 1024)
        self.assertLess(info.compress_size, info.file_size)
        data = archive.read(info)
        self.assertEqual(len(data), info.file_size)
        self.assertGreater(len(set(data.splitlines())), 1000)  # not one line repeated
        stored = self.open("hangar_premium.pkg").getinfo(
            "spaces/Hangar_Premium/Large_Stored_Terrain.bin")
        self.assertEqual(stored.compress_type, zipfile.ZIP_STORED)
        self.assertGreater(stored.file_size, 64 * 1024)

    def test_loose_files_and_override(self):
        res = self.out / "res"
        self.assertTrue((res / "text" / "Loose_Note.txt").is_file())
        loose = (res / "gui" / "Loose_Override.txt").read_bytes()
        packed = self.open("gui.pkg").read("gui/Loose_Override.txt")
        self.assertIn(b"loose res folder", loose)
        self.assertIn(b"archive: gui.pkg", packed)
        self.assertNotEqual(loose, packed)

    def test_icons_are_png(self):
        archive = self.open("gui.pkg")
        name = "gui/Maps/Icons/vehicle/ardenia-A01_Talon.png"
        data = archive.read(name)
        self.assertTrue(data.startswith(b"\x89PNG\r\n\x1a\n"))
        self.assertIn(f"gui.pkg:{name}".encode(), data)


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
        if node is None:
            return ""
        if node.kind == 2:
            return str(node.value)
        if node.kind == 3:
            return " ".join(f"{v:.6g}" for v in node.value)
        if node.kind == 4:
            return "true" if node.value else "false"
        return node.value

    def tags(self):
        return [c.tag for c in self.children]


def read_leaf(raw, kind):
    if kind == 1:
        return raw.decode("utf-8")
    if kind == 2:
        if len(raw) not in (1, 2, 4):
            raise PackedError(f"integer of {len(raw)} bytes")
        return int.from_bytes(raw, "little", signed=True)
    if kind == 3:
        if len(raw) % 4:
            raise PackedError(f"floats of {len(raw)} bytes")
        return struct.unpack(f"<{len(raw) // 4}f", raw)
    if kind == 4:
        if raw not in (b"", b"\x01"):  # false is stored without bytes
            raise PackedError(f"boolean bytes {raw!r}")
        return raw == b"\x01"
    if kind == 5:
        return bytes(raw)
    raise PackedError(f"value type {kind}")


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
    while True:
        end = data.index(b"\0", pos)
        if end == pos:
            pos += 1
            break
        names.append(data[pos:end].decode("utf-8"))
        pos = end + 1
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
        if kind == 3:
            return packed.Floats(value)
        return value
    own = None if (node.kind == 1 and node.value == "") else leaf(node.kind, node.value)
    return packed.Element(own, [(c.tag, as_encoder_tree(c) if c.record else leaf(c.kind, c.value))
                                for c in node.children])


class PackedEncoderTest(unittest.TestCase):
    def test_worked_example_bytes(self):
        self.assertEqual(packed.encode({"a": 5}), bytes.fromhex(
            "45 4E A1 62 00 61 00 00 01 00 00 00 00 10 00 00 01 00 00 20 05"))

    def test_empty_root_has_empty_table(self):
        self.assertEqual(packed.encode({}), bytes.fromhex("45 4E A1 62 00 00 00 00 00 00 00 10"))

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

    def test_value_and_children_in_one_element(self):
        data = packed.encode({"g": packed.Element("shared", {"b": True})})
        nested = (bytes.fromhex("01 00 06 00 00 10 01 00 07 00 00 40") + b"shared\x01")
        self.assertEqual(data, PACKED_MAGIC + b"\0g\0b\0\0" + bytes.fromhex("01 00 00 00 00 10")
                         + b"\0\0" + struct.pack("<I", len(nested)) + nested)
        gun = decode_packed(data).child("g")
        self.assertEqual((gun.kind, gun.value, gun.text("b")), (1, "shared", "true"))

    def test_types_and_siblings_after_a_nested_record(self):
        matrix = packed.Floats(range(12))
        tree = packed.Element(None, [
            ("e", {"x": 1, "deep": {"y": -300}}),
            ("f", packed.Floats(1.5, 0, -2)),
            ("m", matrix),
            ("s", "text with blanks"),
            ("b", False),
            ("blob", b"\x00\xff\x10"),
            ("e", "a repeated name"),
            ("empty", ""),
        ])
        data = packed.encode(tree)
        root = decode_packed(data)
        self.assertEqual(root.tags(), ["e", "f", "m", "s", "b", "blob", "e", "empty"])
        self.assertEqual(root.child("e", "deep", "y").value, -300)
        self.assertEqual([c.kind for c in root.children], [1, 3, 3, 1, 4, 5, 1, 1])
        self.assertEqual((root.text("b"), root.children[4].value), ("false", False))
        self.assertEqual(root.text("f"), "1.5 0 -2")
        self.assertEqual(root.child("m").value, tuple(float(v) for v in range(12)))
        self.assertEqual(root.children[6].value, "a repeated name")
        self.assertEqual(root.child("blob").value, b"\x00\xff\x10")
        self.assertEqual(root.text("empty"), "")
        self.assertEqual(packed.encode(as_encoder_tree(root)), data)
        names = data[5:data.index(b"\0\0", 5) + 1].split(b"\0")[:-1]
        self.assertEqual(len(names), len(set(names)))  # each name stored once

    def test_plain_text_of_the_same_tree(self):
        text = packed.plain_text("x.xml", {"m": packed.Floats(range(12)),
                                           "g": packed.Element("shared", {"b": True}),
                                           "blob": b"ab", "q": "Kestrel's & <co>"})
        root = ElementTree.fromstring(text)
        self.assertEqual(root.tag, "x.xml")
        self.assertEqual(root.find("m/row3").text, "9 10 11")
        self.assertEqual(root.find("g").text.strip(), "shared")
        self.assertEqual(root.find("g/b").text, "true")
        self.assertEqual(root.find("blob").text, "YWI=")
        self.assertEqual(root.find("q").text, "Kestrel's & <co>")


# ------------------------------------------------------------ catalogues

MO_MAGIC = 0x950412DE


def mo_header(data):
    magic, revision, count, keys, texts, hash_size, hash_at = struct.unpack_from("<7I", data, 0)
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
CATEGORY_NAMES = {"lightTank": "Light Tanks", "mediumTank": "Medium Tanks",
                  "heavyTank": "Heavy Tanks", "AT-SPG": "Tank Destroyers", "SPG": "Artillery"}
BULK_VEHICLES_PER_SCALE = 8


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
        result = []
        for folder, res_path, _ in tank_list(self.out / "ferrox-tank_list.cfg"):
            for entry in self.xml(f"{res_path}/list.xml").children:
                result.append((res_path.rsplit("/", 1)[-1], entry.tag, entry))
        return result


class GameDataTest(unittest.TestCase):
    """The nations, vehicle lists, vehicle files, camouflage, categories and
    catalogues of one scale-1 installation."""

    @classmethod
    def setUpClass(cls):
        cls.temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
        cls.out = cls.temp / "game"
        result = run(cls.out)
        if result.returncode != 0:
            shutil.rmtree(cls.temp, ignore_errors=True)
            raise AssertionError(result.stderr)
        cls.game = Installation(cls.out)

    @classmethod
    def tearDownClass(cls):
        cls.game.close()
        shutil.rmtree(cls.temp, ignore_errors=True)

    def rows(self):
        """What the vehicle table gets: nation, model, display name, category, tier."""
        rows = []
        for nation, model, entry in self.game.vehicles():
            if is_table_vehicle(model):
                rows.append((nation, model, self.game.translate(entry.text("userString")),
                             entry.text("tags").split()[0], entry.text("level")))
        return rows

    def test_tank_list_names_the_nations_in_order(self):
        expected = [(folder, f"scripts/item_defs/vehicles/{folder}", data)
                    for folder, data, _ in SAMPLE_NATIONS]
        self.assertEqual(tank_list(self.out / "ferrox-tank_list.cfg"), expected)
        self.assertEqual(tank_list(REPO_TANK_LIST), expected)
        self.assertEqual((self.out / "ferrox-tank_list.cfg").read_bytes(),
                         REPO_TANK_LIST.read_bytes())
        # every child node of the root is a nation: no comments or text inside it
        root = ElementTree.parse(REPO_TANK_LIST,
                                 ElementTree.XMLParser(target=ElementTree.TreeBuilder(
                                     insert_comments=True))).getroot()
        self.assertEqual(len(list(root)), len(SAMPLE_NATIONS))

    def test_where_the_nation_files_lie(self):
        game = self.game
        base = "scripts/item_defs/vehicles"
        self.assertEqual(game.place(f"{base}/ardenia/list.xml"), "loose")
        self.assertEqual(game.place(f"{base}/borvia/list.xml"), "loose")
        self.assertEqual(game.place(f"{base}/caldera/list.xml"), "shared_content.pkg")
        self.assertFalse((game.res / base / "caldera" / "list.xml").exists())
        self.assertEqual(game.place(f"{base}/drevnia/list.xml"), "loose")
        for folder, packed_form in (("ardenia", True), ("borvia", True), ("caldera", True),
                                    ("drevnia", False)):
            self.assertEqual(game.read(f"{base}/{folder}/list.xml").startswith(PACKED_MAGIC),
                             packed_form, folder)
            self.assertEqual(game.place(f"{base}/{folder}/customization.xml"), "loose")
            self.assertEqual(game.place(f"{base}/{folder}/components/guns.xml"),
                             "vehicles_level_01.pkg" if folder in ("ardenia", "borvia")
                             else "vehicles_level_02.pkg")
        self.assertFalse(game.read(f"{base}/drevnia/customization.xml").startswith(PACKED_MAGIC))
        self.assertTrue(game.read(f"{base}/ardenia/customization.xml").startswith(PACKED_MAGIC))
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
                root = decode_packed(data)
                self.assertEqual(packed.encode(as_encoder_tree(root)), data)

    def test_vehicle_lists_hold_the_unusual_entries(self):
        by_model = {(nation, model): entry for nation, model, entry in self.game.vehicles()}
        self.assertIn(("ardenia", "Observer"), by_model)
        self.assertIn(("borvia", "Observer"), by_model)
        self.assertIn(("ardenia", "A00_training_dummy"), by_model)
        self.assertIn(("borvia", "B02_Training_Hauler"), by_model)
        self.assertEqual(by_model[("borvia", "B05_Prototype")].text("level"), "")
        self.assertIsNone(by_model[("borvia", "B05_Prototype")].child("level"))
        self.assertEqual(by_model[("ardenia", "A06_Corvid")].text("notInShop"), "true")
        for (nation, model), entry in by_model.items():
            self.assertEqual(entry.text("userString"), f"#{nation}_vehicles:{model}")
            self.assertEqual(entry.text("description"), f"#{nation}_vehicles:{model}_descr")

    def test_table_rows_cover_categories_tiers_and_names(self):
        rows = self.rows()
        names = [name for _, _, name, _, _ in rows]
        self.assertNotIn(None, names)
        self.assertEqual({category for *_, category, _ in rows}, set(CATEGORY_NAMES))
        tiers = {int(tier) for *_, tier in rows if tier}
        self.assertEqual(tiers, set(range(1, 11)))
        for folder, _, _ in SAMPLE_NATIONS:
            own = {int(t) for nation, *_, t in rows if nation == folder and t}
            self.assertLess(len(own), 10, f"{folder} should miss some tiers")
        self.assertIn("B02_Training_Hauler", [model for _, model, *_ in rows])
        self.assertEqual(len(rows), 25)
        sentinels = [(nation, model) for nation, model, name, *_ in rows if name == "Sentinel"]
        self.assertEqual(sentinels, [("borvia", "B08_Sentinel"), ("drevnia", "D07_Sentinel")])
        self.assertIn("Kestrel's Wrath", names)
        self.assertIn("Škorpion", names)
        self.assertIn("Жук", names)
        self.assertTrue(all(ord(c) < 128 for c in
                            self.game.read("scripts/item_defs/vehicles/drevnia/list.xml")
                            .decode("utf-8")))

    def test_vehicle_files_name_their_models(self):
        for nation, model, entry in self.game.vehicles():
            if model == "Observer":
                continue
            with self.subTest(model=model):
                name = f"scripts/item_defs/vehicles/{nation}/{model}.xml"
                self.assertIn(self.game.place(name.lower()),
                              ("vehicles_level_01.pkg", "vehicles_level_02.pkg"))
                root = self.game.xml(name)
                hull = root.text("hull", "models", "undamaged")
                parts = hull.split("/")
                self.assertEqual(parts[0], "vehicles")
                self.assertEqual(parts[1], nation.capitalize())
                self.assertEqual(parts[3:], ["normal", "lod0", "Hull.model"])
                folder = "C03_Wyvern" if model == "C03_Wyvern_v2" else model
                self.assertEqual(parts[2], folder)
                chassis = root.child("chassis").children[0]
                self.assertTrue(chassis.text("models", "undamaged").endswith("/Chassis.model"))
                turret = root.child("turrets0").children[0]
                self.assertTrue(turret.text("models", "undamaged").endswith("/Turret_01.model"))
                self.assertIsNotNone(self.game.translate(turret.text("userString")))
                gun = turret.child("guns").children[0]
                self.assertEqual(gun.text(), "shared")
                shared = self.game.xml(f"scripts/item_defs/vehicles/{nation}/components/guns.xml")
                self.assertIsNotNone(shared.child("shared", gun.tag), gun.tag)
                self.assertEqual(len(root.text("hull", "turretPositions", "turret").split()), 3)
        plain = self.game.read("scripts/item_defs/vehicles/drevnia/d10_anvil.xml")
        self.assertFalse(plain.startswith(PACKED_MAGIC))
        # the model files exist for the four first vehicles and for the one
        # whose folder differs from its tag
        for hull in ("vehicles/Ardenia/A01_Talon", "vehicles/Borvia/B01_Kestrel",
                     "vehicles/Caldera/C02_Basilisk", "vehicles/Drevnia/D02_Ironmoth",
                     "vehicles/Caldera/C03_Wyvern"):
            self.assertIsNotNone(self.game.place(f"{hull}/normal/lod0/Hull.primitives"), hull)

    def test_item_types(self):
        root = self.game.xml("scripts/item_defs/item_types.xml")
        tags = root.child("vehicle", "tags")
        self.assertEqual(tags.tags(), list(CATEGORY_NAMES))
        for key, name in CATEGORY_NAMES.items():
            self.assertEqual(tags.text(key, "userString"), f"#item_types:{key}")
            self.assertEqual(self.game.translate(f"#item_types:{key}"), name)

    def test_customization(self):
        for folder, _, _ in SAMPLE_NATIONS:
            with self.subTest(nation=folder):
                root = self.game.xml(f"scripts/item_defs/vehicles/{folder}/customization.xml")
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
                    self.assertEqual([c.tag for c in pattern.child("colors").children][:1], ["c0"])
                    for colour in pattern.child("colors").children:
                        self.assertEqual(len(colour.text().split()), 4)
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

    def test_list_keys_translate_through_the_hash_table(self):
        for nation, model, entry in self.game.vehicles():
            with self.subTest(model=model):
                name = self.game.translate(entry.text("userString"))
                self.assertTrue(name)
                description = self.game.translate(entry.text("description"))
                self.assertTrue(description.startswith(name + ": "), description)
        self.assertEqual(self.game.translate("#drevnia_vehicles:D03_Zhuk"), "Жук")
        self.assertEqual(self.game.translate("#borvia_vehicles:B04_Skorpion"), "Škorpion")
        self.assertEqual(self.game.translate("#ardenia_vehicles:A03_Kestrels_Wrath"),
                         "Kestrel's Wrath")


class StampTest(TempDirTest):
    def test_up_to_date_folder_is_left_alone(self):
        out = self.generate("game")
        sentinel = out / "sentinel.txt"
        sentinel.write_text("left by the test")
        self.assertEqual(run(out).returncode, 0)
        self.assertTrue(sentinel.exists(), "a matching stamp must not rewrite")

    def test_force_rewrites_from_scratch(self):
        out = self.generate("game")
        (out / "sentinel.txt").write_text("left by the test")
        self.assertEqual(run(out, "--force").returncode, 0)
        self.assertFalse((out / "sentinel.txt").exists())
        self.assertTrue((out / "res" / "packages" / "gui.pkg").is_file())

    def test_other_arguments_rewrite(self):
        out = self.generate("game")
        (out / "sentinel.txt").write_text("left by the test")
        self.assertEqual(run(out, "--with-broken").returncode, 0)
        self.assertFalse((out / "sentinel.txt").exists())
        broken = out / "res" / "packages" / "broken_not_a_zip.pkg"
        self.assertTrue(broken.is_file())
        self.assertFalse(zipfile.is_zipfile(broken))
        self.assertEqual(listed_packages(out / "ferrox-resources.cfg"), GENERATED_PACKAGES)
        # and back: the broken file goes away again
        self.assertEqual(run(out).returncode, 0)
        self.assertFalse(broken.exists())

    def test_interrupted_run_is_redone(self):
        out = self.generate("game")
        (out / ".ferrox-sample-stamp").write_text("incomplete\n")
        (out / "res" / "packages" / "gui.pkg").write_bytes(b"half written")
        self.assertEqual(run(out).returncode, 0)
        with zipfile.ZipFile(out / "res" / "packages" / "gui.pkg") as archive:
            self.assertIsNone(archive.testzip())

    def test_foreign_folder_is_refused_and_kept(self):
        out = self.temp / "foreign"
        out.mkdir()
        (out / "precious.txt").write_text("not ours")
        for arguments in ((), ("--force",)):
            result = run(out, *arguments)
            self.assertEqual(result.returncode, 2)
            self.assertIn("refusing", result.stderr)
            self.assertEqual(tree_files(out), ["precious.txt"])

    def test_a_file_in_the_way_is_refused(self):
        out = self.temp / "file"
        out.write_text("not a folder")
        self.assertEqual(run(out).returncode, 2)
        self.assertEqual(out.read_text(), "not a folder")

    def test_empty_folder_is_filled(self):
        out = self.temp / "empty"
        out.mkdir()
        self.assertEqual(run(out).returncode, 0)
        self.assertTrue((out / "Gavrel.exe").is_file())


class DeterminismTest(TempDirTest):
    def test_two_runs_give_identical_files(self):
        first = self.generate("first", "--scale", "2", "--with-broken")
        second = self.generate("second", "--scale", "2", "--with-broken")
        files = tree_files(first)
        self.assertEqual(files, tree_files(second))
        self.assertIn("res/packages/gui.pkg", files)
        self.assertIn("res/packages/bulk_content_001.pkg", files)
        match, mismatch, errors = filecmp.cmpfiles(first, second, files, shallow=False)
        self.assertEqual((mismatch, errors), ([], []))
        self.assertEqual(len(match), len(files))

    def test_zip_entries_carry_the_fixed_date(self):
        # runs a few seconds apart compare equal above only if no clock is read
        out = self.generate("dated")
        for package in SCALE1_PACKAGES:
            with zipfile.ZipFile(out / "res" / "packages" / package) as archive:
                dates = {info.date_time for info in archive.infolist()}
                self.assertEqual(dates, {(2020, 1, 1, 0, 0, 0)}, package)


class ScaleTest(TempDirTest):
    def test_scale_three(self):
        out = self.generate("scale3", "--scale", "3")
        packages = listed_packages(out / "ferrox-resources.cfg")
        self.assertEqual(packages[:len(SCALE1_PACKAGES)], SCALE1_PACKAGES)
        self.assertEqual(packages[-3:], ["bulk_vehicle_defs.pkg"] + GARAGE_PACKAGES)
        bulk = packages[len(SCALE1_PACKAGES):-3]
        self.assertEqual(bulk, [f"bulk_content_{i:03d}.pkg" for i in range(3)])
        self.assertEqual(sorted(p.name for p in (out / "res" / "packages").iterdir()),
                         sorted(packages))

        seen = {}          # exact name -> archives
        folded = {}        # lower-cased name -> spellings
        for package in bulk:
            with zipfile.ZipFile(out / "res" / "packages" / package) as archive:
                self.assertIsNone(archive.testzip())
                members = file_members(archive)
                self.assertEqual(len(members), BULK_FILES_PER_ARCHIVE)
                self.assertEqual(len({m.filename for m in members}), BULK_FILES_PER_ARCHIVE)
                deflated = sum(m.compress_type == zipfile.ZIP_DEFLATED for m in members)
                self.assertGreater(deflated, BULK_FILES_PER_ARCHIVE // 20)
                self.assertLess(deflated, BULK_FILES_PER_ARCHIVE // 2)
                self.assertLessEqual(max(m.file_size for m in members), 8192)
                self.assertGreaterEqual(min(m.file_size for m in members), 10)
                self.assertTrue(any(m.filename.startswith("vehicles/") and
                                    "/normal/lod0/" in m.filename for m in members))
                self.assertTrue(any(m.filename.startswith("gui/Maps/Icons/vehicle/")
                                    for m in members))
                self.assertTrue(any(m.filename.startswith("spaces/") for m in members))
                for m in members:
                    seen.setdefault(m.filename, []).append(package)
                    folded.setdefault(m.filename.lower(), set()).add(m.filename)

        exact_twins = [name for name, where in seen.items() if len(where) > 1]
        case_twins = [spellings for spellings in folded.values() if len(spellings) > 1]
        self.assertGreater(len(exact_twins), 10)
        self.assertGreater(len(case_twins), 5)
        self.assertTrue(any(n != n.lower() and n != n.upper() for n in seen))

        # a repeated name carries the content of its own archive
        name = exact_twins[0]
        first, second = seen[name][:2]
        with zipfile.ZipFile(out / "res" / "packages" / first) as a, \
                zipfile.ZipFile(out / "res" / "packages" / second) as b:
            self.assertNotEqual(a.read(name), b.read(name))


class ScaleGameDataTest(TempDirTest):
    def check_bulk_nations(self, out, scale):
        """Every listed nation has its list, catalogue and vehicle files; gives
        the number of vehicles the table would hold."""
        nations = tank_list(out / "ferrox-tank_list.cfg")
        sample = [(f, f"scripts/item_defs/vehicles/{f}", d) for f, d, _ in SAMPLE_NATIONS]
        self.assertEqual(nations[:len(sample)], sample)
        bulk = nations[len(sample):]
        self.assertTrue(bulk)
        self.assertEqual([tag for tag, _, _ in bulk],
                         [f"bulk_nation_{i:02d}" for i in range(len(bulk))])
        game = Installation(out)
        self.addCleanup(game.close)
        menu = game.catalogue("menu")
        rows = 0
        bulk_rows = 0
        for nation, model, entry in game.vehicles():
            if not is_table_vehicle(model):
                continue
            rows += 1
            if nation.startswith("bulk_nation_"):
                bulk_rows += 1
                self.assertTrue(game.translate(entry.text("userString")))
                self.assertIn(entry.text("tags").split()[0], CATEGORY_NAMES)
                self.assertIn(int(entry.text("level")), range(1, 11))
                name = f"scripts/item_defs/vehicles/{nation}/{model}.xml"
                self.assertEqual(game.place(name.lower()), "bulk_vehicle_defs.pkg")
        for tag, res_path, data_path in bulk:
            self.assertEqual(res_path, f"scripts/item_defs/vehicles/{tag}")
            self.assertEqual(data_path, f"vehicles/{tag.capitalize().replace('_n', '_N')}")
            self.assertEqual(game.place(f"{res_path}/list.xml"), "loose")
            self.assertEqual(game.place(f"{res_path}/customization.xml"), "loose")
            self.assertTrue(mo_lookup(menu, f"nations/{tag}"))
            camo = game.xml(f"{res_path}/customization.xml")
            for pattern in camo.child("camouflages").children:
                self.assertTrue(game.read(pattern.text("texture")).startswith(b"DDS "))
        self.assertEqual(bulk_rows, scale * BULK_VEHICLES_PER_SCALE)
        return rows

    def test_scale_three_adds_nations(self):
        out = self.generate("scale3", "--scale", "3")
        self.assertEqual(self.check_bulk_nations(out, 3), 25 + 24)

    @unittest.skipIf(os.environ.get("FERROX_SKIP_SLOW_TESTS"), "slow: --scale 100")
    def test_scale_hundred_has_several_hundred_vehicles(self):
        started = time.monotonic()
        out = self.generate("scale100", "--scale", "100")
        elapsed = time.monotonic() - started
        rows = self.check_bulk_nations(out, 100)
        self.assertGreaterEqual(rows, 500)
        self.assertLessEqual(rows, 1000)
        self.assertLess(elapsed, 120, "generation of --scale 100 became slow")


class MissingToolTest(TempDirTest):
    def test_without_msgfmt_the_generator_stops_with_a_message(self):
        out = self.generate("game")
        empty_bin = self.temp / "bin"
        empty_bin.mkdir()
        result = subprocess.run([sys.executable, str(GENERATOR), "--out", str(out), "--force"],
                                capture_output=True, text=True, timeout=300,
                                env={"PATH": str(empty_bin)})
        self.assertEqual(result.returncode, 3)
        self.assertIn("msgfmt", result.stderr)
        self.assertIn("gettext", result.stderr)
        # the earlier output stays as it was
        self.assertTrue((out / "res" / "text" / "LC_MESSAGES" / "menu.mo").is_file())
        # an up-to-date folder needs no msgfmt
        result = subprocess.run([sys.executable, str(GENERATOR), "--out", str(out)],
                                capture_output=True, text=True, timeout=300,
                                env={"PATH": str(empty_bin)})
        self.assertEqual(result.returncode, 0, result.stderr)


# ------------------------------------------------ geometry, textures, garages
# Small readers written from the file formats, independent of the writers.

import gavrel_dds  # noqa: E402  (the writers under test)
import gavrel_geometry  # noqa: E402
import make_program_textures  # noqa: E402

PRIMITIVES_MAGIC = 0x42A14E65
REPO_GARAGES = TOOLS.parent / "data" / "garages.cfg"
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
        position = struct.unpack_from("<3f", payload, at)
        if fmt.lower() == "xyznuv":
            normal, uv = struct.unpack_from("<3f", payload, at + 12), \
                struct.unpack_from("<2f", payload, at + 24)
        else:
            normal = unpack_vector(struct.unpack_from("<I", payload, at + 12)[0])
            uv = struct.unpack_from("<2f", payload, at + 16)
        result.append((position, normal, uv))
    return fmt, result


def expand565(value):
    r, g, b = value >> 11, (value >> 5) & 63, value & 31
    return ((r << 3) | (r >> 2), (g << 2) | (g >> 4), (b << 3) | (b >> 2))


def decode_colour_block(block, four_colour_only=False):
    c0, c1, bits = struct.unpack("<HHI", block)
    a, b = expand565(c0), expand565(c1)
    if c0 > c1 or four_colour_only:
        table = [a + (255,), b + (255,), tuple((2 * x + y) // 3 for x, y in zip(a, b)) + (255,),
                 tuple((x + 2 * y) // 3 for x, y in zip(a, b)) + (255,)]
    else:
        table = [a + (255,), b + (255,), tuple((x + y) // 2 for x, y in zip(a, b)) + (255,),
                 (0, 0, 0, 0)]
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
        self.assertEqual(pack((1, 0, 0)), 1023)
        self.assertEqual(pack((0, -1, 0)), (2048 - 1023) << 11)
        self.assertEqual(pack((0, 0, 1)), 511 << 22)
        self.assertEqual(pack((0, 0, -1)), (1024 - 511) << 22)
        self.assertEqual(pack((3, 0, 0)), 1023)  # clamped
        for v in ((0.6, -0.8, 0.0), (0.267, 0.535, -0.802)):
            self.assertTrue(all(abs(x - y) < 1 / 500 for x, y in zip(unpack_vector(pack(v)), v)))


class DdsWriterTest(unittest.TestCase):
    def image(self, width, height, alpha=lambda x, y: 255):
        return [(min(255, 40 + 9 * x), min(255, 200 - 5 * y), 90, alpha(x, y))
                for y in range(height) for x in range(width)]

    def assert_close(self, decoded, source, tolerance, channels=3):
        for d, s in zip(decoded, source):
            for c in range(channels):
                self.assertLessEqual(abs(d[c] - s[c]), tolerance, (d, s))

    def test_dxt1_blocks_decode_close_to_the_source(self):
        source = self.image(8, 4)
        info = read_dds(gavrel_dds.dds("DXT1", 8, 4, source, levels=1))
        self.assertEqual(info["format"], "DXT1")
        self.assert_close(info["pixels"], source, 24)
        two_colours = [(200, 30, 30, 255) if i % 3 else (30, 30, 200, 255) for i in range(16)]
        info = read_dds(gavrel_dds.dds("DXT1", 4, 4, two_colours, levels=1))
        self.assert_close(info["pixels"], two_colours, 8)

    def test_dxt1_transparent_pixels_use_the_three_colour_form(self):
        source = self.image(4, 4, lambda x, y: 0 if x == y else 255)
        data = gavrel_dds.dds("DXT1", 4, 4, source, levels=1)
        c0, c1 = struct.unpack_from("<HH", data, 128)
        self.assertLessEqual(c0, c1)
        pixels = read_dds(data)["pixels"]
        self.assertEqual([p[3] for p in pixels], [0 if s[3] == 0 else 255 for s in source])
        self.assert_close([p for p, s in zip(pixels, source) if s[3]],
                          [s for s in source if s[3]], 30)

    def test_dxt5_and_dxt3_keep_alpha(self):
        source = self.image(4, 4, lambda x, y: 16 * (4 * y + x) + 10)
        data = gavrel_dds.dds("DXT5", 4, 4, source, levels=1)
        self.assertGreater(data[128], data[129])  # eight-value alpha form
        self.assert_close(read_dds(data)["pixels"], source, 24, channels=4)
        self.assert_close(read_dds(gavrel_dds.dds("DXT3", 4, 4, source, levels=1))["pixels"],
                          source, 24, channels=4)

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
                committed = (TOOLS.parent / "data" / name).read_bytes()
                self.assertEqual(committed, data, "run tools/make_program_textures.py")
                info = read_dds(committed)
                self.assertEqual(info["format"], "DXT1")
                self.assertEqual(1 << (info["mips"] - 1), info["width"])


class ModelFilesTest(unittest.TestCase):
    """Vehicle and garage models and their textures in one installation."""

    @classmethod
    def setUpClass(cls):
        cls.temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
        cls.out = cls.temp / "game"
        result = run(cls.out)
        if result.returncode != 0:
            shutil.rmtree(cls.temp, ignore_errors=True)
            raise AssertionError(result.stderr)
        cls.game = Installation(cls.out)

    @classmethod
    def tearDownClass(cls):
        cls.game.close()
        shutil.rmtree(cls.temp, ignore_errors=True)

    def model(self, base):
        """(visual Node, {chunk name: payload}) of the model base.{visual,primitives}."""
        return (self.game.xml(base + ".visual"), read_chunks(self.game.read(base + ".primitives")))

    def geometry_of(self, visual, chunks):
        geometry = visual.child("renderSet", "geometry")
        fmt, vertices = read_vertices(chunks[geometry.text("vertices")])
        index_fmt, indices, groups = read_indices(chunks[geometry.text("primitive")])
        return geometry, fmt, vertices, index_fmt, indices, groups

    def all_visuals(self):
        return sorted({info.filename for archive in self.game.archives
                       for info in file_members(archive) if info.filename.endswith(".visual")})

    def test_vehicle_parts_follow_their_layout(self):
        for folder in SAMPLE_MODELS:
            for part, (fmt, wide, group_count, uv2) in PART_LAYOUTS.items():
                with self.subTest(model=folder, part=part):
                    visual, chunks = self.model(f"{folder}/normal/lod0/{part}")
                    geometry, vfmt, vertices, ifmt, indices, groups = \
                        self.geometry_of(visual, chunks)
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
        wyvern_gun = read_chunks(self.game.read(f"{SAMPLE_MODELS[4]}/normal/lod0/Gun_01.primitives"))
        self.assertEqual(read_vertices(wyvern_gun["Gun_01.vertices"])[0], "XYZNUV")

    def test_triangles_face_outward_after_mirroring(self):
        bases = [f"{SAMPLE_MODELS[0]}/normal/lod0/{part}" for part in PART_LAYOUTS]
        bases.append("spaces/Hangar_Premium/models/Floor")
        for base in bases:
            with self.subTest(model=base):
                _, _, vertices, _, indices, _ = self.geometry_of(*self.model(base))
                for corners in mirrored_triangles(indices, vertices):
                    (a, na), (b, nb), (c, nc) = corners
                    ab = [q - p for p, q in zip(a, b)]
                    ac = [q - p for p, q in zip(a, c)]
                    face = (ab[1] * ac[2] - ab[2] * ac[1], ab[2] * ac[0] - ab[0] * ac[2],
                            ab[0] * ac[1] - ab[1] * ac[0])
                    mean = [x + y + z for x, y, z in zip(na, nb, nc)]
                    self.assertGreater(sum(f * m for f, m in zip(face, mean)), 0, corners)

    def test_vehicle_stands_on_the_ground_at_its_size(self):
        points = [v[0] for part in ("Chassis", "Hull") for v in self.geometry_of(
            *self.model(f"{SAMPLE_MODELS[0]}/normal/lod0/{part}"))[2]]
        low, high = ([f(p[i] for p in points) for i in range(3)] for f in (min, max))
        self.assertAlmostEqual(low[1], 0.0, places=4)
        self.assertAlmostEqual(low[0], -high[0], places=4)
        self.assertTrue(2.5 <= high[0] - low[0] <= 3.5 and 5.5 <= high[2] - low[2] <= 6.5)

    def test_joints_sit_on_the_part_below(self):
        for folder in SAMPLE_MODELS:
            for below, joint in (("Hull", "HP_turretJoint"), ("Turret_01", "HP_gunJoint")):
                with self.subTest(model=folder, joint=joint):
                    visual, chunks = self.model(f"{folder}/normal/lod0/{below}")
                    position = find_translation(visual.child("node"), joint)
                    self.assertIsNotNone(position)
                    _, _, vertices, _, _, _ = self.geometry_of(visual, chunks)
                    top = max(v[0][1] for v in vertices)
                    self.assertTrue(0 < position[1] <= top + 0.01, (position, top))

    def test_every_visual_names_its_nodes_chunks_and_existing_textures(self):
        visuals = self.all_visuals()
        self.assertGreaterEqual(len(visuals), 5 * 4 + 7 + 1)
        for name in visuals:
            with self.subTest(visual=name):
                data = self.game.read(name)
                self.assertEqual(data.startswith(PACKED_MAGIC), "D02_Ironmoth" not in name)
                visual = load_xml(data, name.rsplit("/", 1)[-1])
                root = visual.child("node")
                self.assertEqual(root.text("identifier"), "Scene Root")
                render_set = visual.child("renderSet")
                self.assertIsNotNone(find_translation(root, render_set.text("node")))
                chunks = read_chunks(self.game.read(name[:-len(".visual")] + ".primitives"))
                _, _, _, _, _, groups = self.geometry_of(visual, chunks)
                for group in render_set.child("geometry").children:
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
                    counts = {}
                    for p in info["pixels"]:
                        counts[p[:3]] = counts.get(p[:3], 0) + 1
                    dominant = max(counts, key=counts.get)
                    self.assertGreater(counts[dominant], 0.7 * len(info["pixels"]))
                    self.assertTrue(all(abs(a - b) <= 6 for a, b in
                                        zip(dominant, NATION_COLOURS[nation])), dominant)
        kestrel_gun = read_dds(self.game.read(f"{SAMPLE_MODELS[1]}/Gun_01_AM.dds"))
        self.assertEqual(kestrel_gun["format"], "RGB32")
        self.assertGreater(kestrel_gun["mips"], 1)

    def test_texformat_names_a_one_level_hd_texture(self):
        base = f"{SAMPLE_MODELS[0]}/Hull_AM"
        sidecar = self.game.xml(base + ".texformat")
        hd_name = sidecar.children[0].text("mip")
        hd, regular = read_dds(self.game.read(hd_name)), read_dds(self.game.read(base + ".dds"))
        self.assertEqual(self.game.place(hd_name), self.game.place(base + ".dds"))
        self.assertEqual((hd["format"], hd["mips"]), ("DXT1", 1))
        self.assertEqual((hd["width"], hd["height"]), (2 * regular["width"], 2 * regular["height"]))

    def test_garages_name_existing_models_outside_the_vehicle_area(self):
        root = ElementTree.parse(REPO_GARAGES).getroot()
        repo_list = listed_packages(REPO_RESOURCES)
        for garage in ("Premium", "Basic"):
            element = root.find(garage)
            zips = [z.text for z in element.iter("Zip")]
            self.assertTrue(zips)
            archives = {}
            for name in zips:
                self.assertNotIn(name, repo_list)
                archives[name] = zipfile.ZipFile(self.out / "res" / "packages" / name)
                self.addCleanup(archives[name].close)
            meshes = list(element.iter("Mesh"))
            files = [m.findtext("File") for m in meshes]
            self.assertLess(len(set(files)), len(files))  # one model placed twice
            for mesh, model in zip(meshes, files):
                with self.subTest(garage=garage, model=model):
                    base = model[:-len(".model")]
                    owner = [a for a in archives.values() if base + ".visual" in a.namelist()]
                    self.assertEqual(len(owner), 1)
                    chunks = read_chunks(owner[0].read(base + ".primitives"))
                    visual = load_xml(owner[0].read(base + ".visual"))
                    _, _, vertices, _, _, _ = self.geometry_of(visual, chunks)
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
