import unittest
from collections import Counter

from .collision import proving_ground_hull, vehicle_plates
from .game_data import PROVING_GROUND_PLATES
from .vehicles import HEAVY_COLLISION_DETAIL


def open_edges(mesh):
    """Edges of each group used by other than exactly two triangles, by the
    positions of their ends (faces of a box share corners, not vertices)."""
    result = []
    for start, count, _, _ in mesh.groups():
        edges = Counter()
        for t in range(start, start + 3 * count, 3):
            corners = [tuple(round(c, 5) for c in mesh.vertices[i][0])
                       for i in mesh.indices[t:t + 3]]
            for a, b in ((0, 1), (1, 2), (2, 0)):
                edges[frozenset((corners[a], corners[b]))] += 1
        result += [e for e, n in edges.items() if n != 2]
    return result


class CollisionModelTest(unittest.TestCase):
    def test_plates_are_closed_and_named_after_the_armour(self):
        cases = [("Chassis", ["leftTrack", "rightTrack"]),
                 ("Hull", ["armor_2", "armor_1", "armor_3", "armor_4", "surveyingDevice"]),
                 ("Turret_02", ["turret_side", "turret_front"]), ("Gun_03", ["gun"])]
        for part, names in cases:
            with self.subTest(part):
                mesh, groups = vehicle_plates(part, 1)
                self.assertEqual((groups, len(mesh.groups())), (names, len(names)))
                self.assertEqual(open_edges(mesh), [])
        mesh, names = proving_ground_hull()
        self.assertEqual(names, [name for name, _, _ in PROVING_GROUND_PLATES])
        self.assertEqual(open_edges(mesh), [])

    def test_heavy_collision_models_pass_twenty_thousand_triangles(self):
        parts = ["Chassis", "Hull", "Turret_01", "Gun_01"]
        meshes = [vehicle_plates(p, HEAVY_COLLISION_DETAIL)[0] for p in parts]
        self.assertGreaterEqual(sum(len(m.indices) // 3 for m in meshes), 20000)
        self.assertLess(max(max(m.indices) for m in meshes), 0x10000)


if __name__ == "__main__":
    unittest.main()
