"""Game data: packed files, references between files, the vehicle files' cases."""
import unittest

from .packed_xml import encode
from .test_packed_xml import as_encoder_tree
from .test_support import PACKED_MAGIC, VEHICLE_DEFS, load_xml, shared_installation, text

class GameDataTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.game = shared_installation()

    def test_every_packed_file_reads_and_round_trips(self):
        files = {name: data for name, data in self.game.files(("",)).items()
                 if data.startswith(PACKED_MAGIC)}
        self.assertGreater(len(files), 80)
        for name, data in files.items():
            self.assertEqual(encode(as_encoder_tree(load_xml(data))), data, name)

    def test_every_key_translates_and_every_texture_and_visual_exists(self):
        checked = 0
        for name, data in self.game.files((".xml", ".visual", ".visual_processed", ".model",
                                          ".texformat")).items():
            for element in load_xml(data).iter():
                value, target = text(element), None
                if value.startswith("#") and ":" in value:
                    self.assertTrue(self.game.translate(value), (name, value))
                elif value.endswith((".dds", ".tga")):
                    target = value[:-4] + ".dds"
                elif element.tag == "nodefullVisual":
                    target = self.game.model_name(value + ".visual")
                self.assertTrue(target is None or self.game.place(target), (name, value))
                checked += 1
        self.assertGreater(checked, 1000)

    def turrets(self, nation, model, mod=None):
        """{turret name: [(gun tag, shared, gun)]} merged as the program does, and the root."""
        name = f"{VEHICLE_DEFS}/{nation}/{model}.xml"
        root = load_xml(mod.read_bytes()) if mod else self.game.xml(name)
        shared_file = self.game.xml(f"{VEHICLE_DEFS}/{nation}/components/guns.xml")
        merged = {}
        for turret in root.findall("turrets0/*"):
            guns = merged.setdefault(self.game.translate(text(turret, "userString")), [])
            for gun in turret.findall("guns/*"):
                shared = text(gun).lower().startswith("shared")
                own = shared_file.find(f"shared/{gun.tag}") if shared else gun
                self.assertTrue(self.game.translate(text(own, "userString") if shared
                                                    else f"#{nation}_vehicles:{gun.tag}"))
                self.assertTrue(text(own, "pitchLimits"))
                guns.append((gun.tag, shared, gun))
            for path in [text(turret, "models/undamaged")] + [
                    text(g, "models/destroyed") for g in turret.findall("guns/*")]:
                self.assertTrue(self.game.place(self.game.model_name(
                    path[:-len("model")] + "visual")), path)
        return merged, root

    def test_vehicle_files_cover_the_cases_of_the_tank_loader(self):
        talon, root = self.turrets("ardenia", "A01_Talon")
        self.assertEqual([len(guns) for guns in talon.values()], [2, 2])
        self.assertTrue(text(root, "camouflage/exclusionMask"))
        tags = {tag: gun for guns in talon.values() for tag, _, gun in guns}
        self.assertEqual([c.tag for c in tags["A01_Talon_Gun_L2"].find("extraPitchLimits")],
                         ["front", "back", "side"])
        self.assertEqual(text(tags["A01_Talon_Gun_L2"], "turretYawLimits"), "-30 30")
        self.assertEqual({shared for guns in talon.values() for _, shared, _ in guns},
                         {True, False})
        turret2 = root.findall("turrets0/*")[1]
        self.assertEqual((text(turret2, "yawLimits"),
                          len(text(turret2, "camouflage/tiling").split())), ("", 4))
        kestrel, root = self.turrets("borvia", "B01_Kestrel")
        self.assertEqual((len(root.find("turrets0")), [len(g) for g in kestrel.values()]), (2, [2]))
        self.assertTrue(text(root, "hull/camouflage/exclusionMask"))
        ironmoth = self.game.read(f"{VEHICLE_DEFS}/drevnia/d02_ironmoth.xml")
        self.assertEqual((ironmoth.startswith(PACKED_MAGIC),
                          len(self.turrets("drevnia", "D02_Ironmoth")[0])), (False, 2))
        mod = self.game.out.parent / "game-mod" / f"{VEHICLE_DEFS}/caldera/c02_basilisk.xml"
        basilisk, root = self.turrets("caldera", "C02_Basilisk", mod)
        self.assertEqual((text(root, "hull/maxHealth"), list(basilisk)[0]),
                         ("4321", "Basilisk turret (mod)"))
