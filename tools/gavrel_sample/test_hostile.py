"""The hostile installation: every case is broken in the one way its name
says, and in no other."""
import atexit
import shutil
import tempfile
import unittest
import zipfile
import zlib
from pathlib import Path

from .test_support import VEHICLE_DEFS, Installation, generate, read_dds, text

HOSTILE_DEFS = f"{VEHICLE_DEFS}/hostile"
SOUND_FOLDER = "vehicles/Hostile/H00_Sound_Vehicle"


class HostileInstallationTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temp = Path(tempfile.mkdtemp(prefix="ferrox-hostile-test-"))
        atexit.register(shutil.rmtree, temp, ignore_errors=True)
        cls.game = Installation(generate(temp / "hostile", "--hostile"))

    def vehicle(self, model):
        return self.game.xml(f"{HOSTILE_DEFS}/{model}.xml")

    def masks(self, root):
        return {text(e) for e in root.iter("exclusionMask")}

    def test_each_case_is_broken_as_named_and_the_sound_vehicle_is_whole(self):
        listed = [tag for _, tag, _ in self.game.vehicles()]
        self.assertEqual(listed, [
            "H00_Sound_Vehicle", "H01_No_Turret", "H02_Turret_Without_Gun",
            "H04_Empty_Document", "H05_Missing_Model", "H06_Truncated_Member",
            "H07_Broken_DDS", "H08_No_Vehicle_File", "H09_Mask_Count_Mismatch",
            "G01_Missing_Gun_File", "N01_No_Camouflage_Catalogue", "N02_Sound_Vehicle_Twin"])
        sound = self.vehicle("H00_Sound_Vehicle")
        self.assertEqual(len(self.masks(sound)), 3)  # vehicle, turret, gun: as many as maps
        for element in sound.iter():
            if text(element).endswith((".model", ".dds")):
                name = text(element)
                name = name[:-len("model")] + "visual" if name.endswith(".model") else name
                self.assertTrue(self.game.place(name), name)

        self.assertIsNone(self.vehicle("H01_No_Turret").find("turrets0"))
        self.assertEqual([t.find("guns") for t in
                          self.vehicle("H02_Turret_Without_Gun").find("turrets0")], [None])
        self.assertEqual(self.game.read(f"{HOSTILE_DEFS}/H04_Empty_Document.xml"), b"")
        missing = text(self.vehicle("H05_Missing_Model"), "hull/models/undamaged")
        self.assertFalse(self.game.place(missing[:-len("model")] + "visual"))
        self.assertFalse(self.game.place(f"{HOSTILE_DEFS}/H08_No_Vehicle_File.xml"))
        self.assertEqual(len(self.masks(self.vehicle("H09_Mask_Count_Mismatch"))), 1)
        self.assertFalse(self.game.place(f"{VEHICLE_DEFS}/hostile_guns/components/guns.xml"))
        self.assertTrue(self.game.place(f"{VEHICLE_DEFS}/hostile_guns/G01_Missing_Gun_File.xml"))
        self.assertTrue((self.game.res / HOSTILE_DEFS / "customization.xml").exists())
        self.assertFalse((self.game.res / VEHICLE_DEFS / "no_catalogue" / "customization.xml")
                         .exists())

    def test_the_truncated_member_and_the_broken_dds_fail_independent_readers(self):
        name = "vehicles/Hostile/H06_Truncated_Member/normal/lod0/Hull.primitives"
        archive, info = self.game.index[name.lower()]
        self.assertEqual(info.compress_type, zipfile.ZIP_DEFLATED)
        self.assertLess(info.compress_size * 2, info.file_size)
        with self.assertRaises((zipfile.BadZipFile, zlib.error, EOFError)):
            archive.read(info)
        sound = self.game.read(f"{SOUND_FOLDER}/normal/lod0/Hull.primitives")
        self.assertEqual(info.file_size, len(sound))
        self.assertEqual(info.CRC, zlib.crc32(sound))

        broken = self.game.read("vehicles/Hostile/H07_Broken_DDS/Hull_AM.dds")
        header = read_dds(broken)
        self.assertEqual(header["length"], len(self.game.read(f"{SOUND_FOLDER}/Hull_AM.dds")))
        self.assertLess(len(broken), header["length"])


if __name__ == "__main__":
    unittest.main()
