"""The archives of the shared scale-1 installation."""
import unittest
import zipfile
from pathlib import Path

from .test_support import file_members, shared_installation

SCALE1_PACKAGES = ["shared_content.pkg", "vehicles_level_01.pkg", "vehicles_level_02.pkg",
                   "gui.pkg", "hangar_premium.pkg", "hangar_basic.pkg"]
GENERATED_PACKAGES = SCALE1_PACKAGES + ["garage_premium.pkg", "garage_basic.pkg"]


class ArchivesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.game = shared_installation()
        cls.zips = {Path(a.filename).name: a for a in cls.game.archives}

    def test_every_package_is_a_sound_zip_with_mixed_compression_and_folders(self):
        self.assertEqual(list(self.zips), GENERATED_PACKAGES)
        for package, archive in self.zips.items():
            with self.subTest(package=package):
                self.assertIsNone(archive.testzip())
                self.assertEqual({info.compress_type for info in file_members(archive)},
                                 {zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED})
                self.assertEqual({info.date_time for info in archive.infolist()},
                                 {(2020, 1, 1, 0, 0, 0)})  # no clock is read
                names = archive.namelist()
                for name in names:  # every folder has its own entry, before its members
                    parts = name.rstrip("/").split("/")[:-1]
                    for depth in range(1, len(parts) + 1):
                        self.assertLess(names.index("/".join(parts[:depth]) + "/"),
                                        names.index(name))

    def test_members_of_the_same_or_folded_name_tell_their_origin(self):
        shared, gui = self.zips["shared_content.pkg"], self.zips["gui.pkg"]
        for archive, name, origin in (
                (shared, "text/Readme_Shared.txt", b"from shared_content"),
                (gui, "text/Readme_Shared.txt", b"archive: gui.pkg"),
                (shared, "text/Case_Twin.txt", b"case twin from shared_content"),
                (gui, "text/CASE_TWIN.txt", b"case twin from gui"),
                (gui, "gui/Loose_Override.txt", b"name: gui/Loose_Override.txt"),
                (gui, "gui/Maps/Icons/vehicle/ardenia-A01_Talon.png", b"\x89PNG\r\n\x1a\n")):
            self.assertIn(origin, archive.read(name))
        self.assertIn(b"loose res folder", (self.game.res / "gui/Loose_Override.txt").read_bytes())
        self.assertEqual([n for n in gui.namelist() if n.lower() == "text/case_twin.txt"],
                         ["text/CASE_TWIN.txt"])

    def test_empty_and_large_members(self):
        for package, name, kind, empty in (
                ("shared_content.pkg", "text/Empty_Member.txt", zipfile.ZIP_STORED, True),
                ("gui.pkg", "text/Empty_Deflated.txt", zipfile.ZIP_DEFLATED, True),
                ("shared_content.pkg", "text/Large_Deflated_Table.txt", zipfile.ZIP_DEFLATED, False),
                ("hangar_premium.pkg", "spaces/Hangar_Premium/Large_Stored_Terrain.bin",
                 zipfile.ZIP_STORED, False)):
            info = self.zips[package].getinfo(name)
            self.assertEqual((info.compress_type, info.file_size == 0, info.file_size > 65536),
                             (kind, empty, not empty))
        table = self.zips["shared_content.pkg"].read("text/Large_Deflated_Table.txt")
        self.assertGreater(len(set(table.splitlines())), 1000)  # not one line repeated
