"""Self-check of tools/make_sample_game.py: runs it as a build would and reads
what it wrote with the standard library's own zip and XML readers.

    python3 -m unittest tools/test_make_sample_game.py
"""
import filecmp
import gettext
import io
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
        self.assertEqual(listed_packages(self.out / "ferrox-resources.cfg"), SCALE1_PACKAGES)
        on_disk = sorted(p.name for p in self.packages.iterdir())
        self.assertEqual(on_disk, sorted(SCALE1_PACKAGES))
        self.assertFalse((self.packages / "broken_not_a_zip.pkg").exists())

    def test_repository_resource_list_matches_the_sample(self):
        self.assertEqual(listed_packages(REPO_RESOURCES), SCALE1_PACKAGES)

    def test_every_package_is_a_sound_zip_with_mixed_compression_and_folders(self):
        for package in SCALE1_PACKAGES:
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
                if info.filename.endswith((".txt", ".xml", ".primitives", ".visual")) \
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
        if raw not in (b"\x00", b"\x01"):
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
        self.assertEqual(listed_packages(out / "ferrox-resources.cfg"), SCALE1_PACKAGES)
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
        self.assertEqual(packages[-1], "bulk_vehicle_defs.pkg")
        bulk = packages[len(SCALE1_PACKAGES):-1]
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


if __name__ == "__main__":
    unittest.main()
