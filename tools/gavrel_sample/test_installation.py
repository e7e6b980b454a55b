"""The generator as the build runs it: the marker and lists, the stamp and
re-runs, and --scale (bulk archives and nations, identical output)."""
import filecmp
import shutil
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
import zipfile
from pathlib import Path

from .test_archives import GENERATED_PACKAGES, SCALE1_PACKAGES
from .test_support import (REPO_DATA, VEHICLE_DEFS, Installation, file_members, generate,
                           listed_packages, run, shared_installation, tank_list, text, tree_files)

SAMPLE_TANK_LIST = [(n, f"{VEHICLE_DEFS}/{n}", f"vehicles/{n.capitalize()}")
                    for n in ("ardenia", "borvia", "caldera", "drevnia")]


class InstallationTest(unittest.TestCase):
    def setUp(self):
        self.temp = Path(tempfile.mkdtemp(prefix="ferrox-sample-test-"))
        self.addCleanup(shutil.rmtree, self.temp, ignore_errors=True)

    def test_marker_version_and_the_repository_lists(self):
        out = shared_installation().out
        self.assertTrue((out / "Gavrel.exe").read_bytes().startswith(b"MZ"))
        raw = ElementTree.parse(out / "version.xml").getroot().find("version").text
        self.assertEqual(" ".join(raw.split()), "v.0.9.14 #417")
        self.assertEqual(listed_packages(REPO_DATA / "resources.cfg"), SCALE1_PACKAGES)
        self.assertEqual(tank_list(out / "ferrox-tank_list.cfg"), SAMPLE_TANK_LIST)
        self.assertEqual((out / "ferrox-tank_list.cfg").read_bytes(),
                         (REPO_DATA / "tank_list.cfg").read_bytes())

    def test_only_an_empty_or_own_folder_is_written(self):
        foreign = self.temp / "foreign"
        foreign.mkdir()
        (foreign / "precious.txt").write_text("not ours")
        (self.temp / "file").write_text("not a folder")
        for out, arguments in ((foreign, ()), (foreign, ("--force",)), (self.temp / "file", ())):
            self.assertEqual(run(out, *arguments).returncode, 2)
        self.assertEqual(tree_files(foreign), ["precious.txt"])

    def test_reruns_rewrite_only_when_needed(self):
        out = generate(self.temp / "game")
        sentinel = out / "sentinel.txt"
        sentinel.write_text("left by the test")
        generate(out)
        self.assertTrue(sentinel.exists(), "a matching stamp must not rewrite")
        # without msgfmt an up-to-date folder is fine; a rewrite stops before
        # it removes anything
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
        files = tree_files(out)
        self.assertEqual(files, tree_files(second))
        self.assertEqual(filecmp.cmpfiles(out, second, files, shallow=False)[1:], ([], []))
        bulk = [f"bulk_content_{i:03d}.pkg" for i in range(3)]
        self.assertEqual(listed_packages(out / "ferrox-resources.cfg"), SCALE1_PACKAGES + bulk
                         + ["bulk_vehicle_defs.pkg"] + GENERATED_PACKAGES[len(SCALE1_PACKAGES):])
        seen, folded = {}, {}
        for package in bulk:
            with zipfile.ZipFile(out / "res" / "packages" / package) as archive:
                members = file_members(archive)
                self.assertEqual(len({m.filename for m in members}), 2000)
                deflated = sum(m.compress_type == zipfile.ZIP_DEFLATED for m in members)
                self.assertTrue(100 < deflated < 1000, deflated)
                for m in members:
                    seen.setdefault(m.filename, []).append(package)
                    folded.setdefault(m.filename.lower(), set()).add(m.filename)
        self.assertGreater(sum(len(where) > 1 for where in seen.values()), 10)
        self.assertGreater(sum(len(spellings) > 1 for spellings in folded.values()), 5)
        game = Installation(out)
        self.assertEqual(tank_list(out / "ferrox-tank_list.cfg")[:4], SAMPLE_TANK_LIST)
        bulk_rows = [(n, m, e) for n, m, e in game.vehicles() if n.startswith("bulk_nation_")]
        self.assertEqual(len(bulk_rows), 3 * 8)
        for nation, model, entry in bulk_rows:
            self.assertTrue(game.translate(text(entry, "userString")))
            self.assertTrue(game.translate(f"#menu:nations/{nation}"))
            self.assertEqual(game.place(f"{VEHICLE_DEFS}/{nation}/{model}.xml".lower()),
                             "bulk_vehicle_defs.pkg")
