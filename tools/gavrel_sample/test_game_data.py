"""Game data of the shared scale-1 installation: packed files, vehicle
lists, categories, and the references between files."""
import unittest

from .packed_xml import encode
from .test_packed_xml import as_encoder_tree
from .test_support import PACKED_MAGIC, load_xml, shared_installation, text

CATEGORIES = {"lightTank", "mediumTank", "heavyTank", "AT-SPG", "SPG"}


class GameDataTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.game = shared_installation()

    def test_every_packed_file_reads_and_round_trips(self):
        files = {name: data for name, data in self.game.files(("",)).items()
                 if data.startswith(PACKED_MAGIC)}
        self.assertGreater(len(files), 80)
        for name, data in files.items():
            with self.subTest(name=name):
                self.assertEqual(encode(as_encoder_tree(load_xml(data))), data)

    def test_every_key_translates_and_every_texture_and_visual_exists(self):
        checked = 0
        for name, data in self.game.files((".xml", ".visual", ".model", ".texformat")).items():
            for element in load_xml(data).iter():
                value, target = text(element), None
                if value.startswith("#") and ":" in value:
                    self.assertTrue(self.game.translate(value), (name, value))
                elif value.endswith((".dds", ".tga")):
                    target = value[:-4] + ".dds"
                elif element.tag == "nodefullVisual":
                    target = value + ".visual"
                self.assertTrue(target is None or self.game.place(target), (name, value))
                checked += 1
        self.assertGreater(checked, 1000)

    def test_vehicle_lists_cover_categories_tiers_and_names(self):
        rows = {}
        for nation, model, entry in self.game.vehicles():
            self.assertEqual(text(entry, "userString"), f"#{nation}_vehicles:{model}")
            name = self.game.translate(text(entry, "userString"))
            self.assertTrue(self.game.translate(text(entry, "description")).startswith(name + ": "))
            if model != "Observer" and "training" not in model:
                rows[model] = (name, text(entry, "tags").split()[0], text(entry, "level"))
        self.assertEqual(len(rows), 25)
        self.assertEqual({row[1] for row in rows.values()}, CATEGORIES)
        self.assertEqual({int(row[2]) for row in rows.values() if row[2]}, set(range(1, 11)))
        self.assertEqual([m for m, row in rows.items() if row[0] == "Sentinel"],
                         ["B08_Sentinel", "D07_Sentinel"])
        self.assertEqual(self.game.translate("#menu:nations/caldera"), "Caldera")
        tags = self.game.xml("scripts/item_defs/item_types.xml").find("vehicle/tags")
        self.assertEqual({tag.tag for tag in tags}, CATEGORIES)
