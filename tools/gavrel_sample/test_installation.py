"""The generator as the build runs it: marker, lists, archives, stamp and re-runs,
and --scale (bulk archives and nations, the heavy vehicle, identical output)."""
import filecmp
import os
import shutil
import struct
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
import zipfile
from pathlib import Path

from .test_support import (REPO_DATA, VEHICLE_DEFS, Installation, file_members, generate,
                           listed_packages, read_chunks, run, shared_installation,
                           tank_list, text)

SCALE1_PACKAGES = ["shared_content.pkg", "vehicles_level_01.pkg", "vehicles_level_02.pkg",
                   "gui.pkg", "hangar_premium.pkg", "hangar_basic.pkg"]
GENERATED_PACKAGES = SCALE1_PACKAGES + ["garage_premium.pkg", "garage_basic.pkg"]
SAMPLE_TANK_LIST = [(n, f"{VEHICLE_DEFS}/{n}", f"vehicles/{n.capitalize()}")
                    for n in ("ardenia", "borvia", "caldera", "drevnia")]


class InstallationTest(unittest.TestCase):
    def setUp(self):
        self.temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
        self.addCleanup(shutil.rmtree, self.temp, ignore_errors=True)

    def test_marker_lists_and_archives_fit_the_repository(self):
        out = shared_installation().out
        raw = ElementTree.parse(out / "version.xml").getroot().find("version").text
        self.assertEqual((" ".join(raw.split()), tank_list(out / "ferrox-tank_list.cfg")),
                         ("v.0.9.14 #417", SAMPLE_TANK_LIST))
        self.assertEqual(listed_packages(REPO_DATA / "resources.cfg"), SCALE1_PACKAGES)
        self.assertEqual((out / "ferrox-tank_list.cfg").read_bytes(),
                         (REPO_DATA / "tank_list.cfg").read_bytes())
        zips = {Path(a.filename).name: a for a in shared_installation().archives}
        self.assertEqual(list(zips), GENERATED_PACKAGES)
        for package, archive in zips.items():
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

    def test_only_an_empty_or_own_folder_is_written(self):
        foreign = self.temp / "foreign"
        foreign.mkdir()
        (foreign / "precious.txt").write_text("not ours")
        (self.temp / "file").write_text("not a folder")
        for out, arguments in ((foreign, ()), (foreign, ("--force",)), (self.temp / "file", ()),
                               (self.temp / "new", ("--mod-out", str(foreign)))):
            self.assertEqual(run(out, *arguments).returncode, 2)
        self.assertEqual(os.listdir(foreign), ["precious.txt"])

    def test_reruns_rewrite_only_when_needed(self):
        out = generate(self.temp / "game")
        sentinel = out / "sentinel.txt"
        sentinel.write_text("left by the test")
        generate(out)
        self.assertTrue(sentinel.exists(), "a matching stamp must not rewrite")
        # without msgfmt an up-to-date folder is fine; a rewrite stops before it removes anything
        no_tools = {"PATH": str(self.temp / "no-bin")}
        self.assertEqual(run(out, env=no_tools).returncode, 0)
        self.assertEqual(run(out, "--force", env=no_tools).returncode, 3)
        self.assertTrue(sentinel.exists())
        generate(out, "--with-broken")  # other arguments rewrite
        self.assertFalse(sentinel.exists())
        self.assertFalse(zipfile.is_zipfile(out / "res" / "packages" / "broken_not_a_zip.pkg"))
        (out / ".ferrox-sample-stamp").write_text("incomplete\n")  # an interrupted run is redone
        (out / "res" / "packages" / "gui.pkg").write_bytes(b"half written")
        generate(out, "--with-broken")
        self.assertTrue(zipfile.is_zipfile(out / "res" / "packages" / "gui.pkg"))

    def test_scale_gives_identical_bulk_archives_and_nations_on_every_run(self):
        out, second = (generate(self.temp / name, "--scale", "3") for name in ("one", "two"))
        files = [str(p.relative_to(out)) for p in out.rglob("*") if p.is_file()]
        self.assertEqual(filecmp.cmpfiles(out, second, files, shallow=False)[1:], ([], []))
        self.assertEqual(len(files), sum(p.is_file() for p in second.rglob("*")))
        bulk = [f"bulk_content_{i:03d}.pkg" for i in range(3)]
        self.assertEqual(listed_packages(out / "ferrox-resources.cfg"), SCALE1_PACKAGES + bulk
                         + ["bulk_vehicle_defs.pkg"] + GENERATED_PACKAGES[len(SCALE1_PACKAGES):])
        game = Installation(out)
        heavy = [name for name in game.index if "/z00_0000_talon/" in name]
        primitives = [read_chunks(game.read(n)) for n in heavy if n.endswith(".primitives")]
        self.assertGreater(sum(struct.unpack_from("<I", chunk, 64)[0] for c in primitives
                               for name, chunk in c.items() if name.endswith(".indices")),
                           3 * 500_000)
        self.assertGreater(sum(len(game.read(n)) for n in heavy), 40_000_000)
        self.assertEqual(tank_list(out / "ferrox-tank_list.cfg")[:4], SAMPLE_TANK_LIST)
        rows = [(n, m) for n, m, e in game.vehicles() if n.startswith("bulk_nation_")
                and game.translate(text(e, "userString"))
                and game.place(f"{VEHICLE_DEFS}/{n}/{m}.xml")]
        self.assertEqual(len(rows), 3 * 8)
