"""Self-check of tools/make_sample_game.py: runs it as a build would and reads
what it wrote with the standard library's own zip and XML readers.

    python3 -m unittest tools/test_make_sample_game.py
"""
import filecmp
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
import zipfile
from pathlib import Path

TOOLS = Path(__file__).resolve().parent
GENERATOR = TOOLS / "make_sample_game.py"
REPO_RESOURCES = TOOLS.parent / "data" / "resources.cfg"

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
        bulk = packages[len(SCALE1_PACKAGES):]
        self.assertEqual(len(bulk), 3)
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


if __name__ == "__main__":
    unittest.main()
