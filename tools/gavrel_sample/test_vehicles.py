"""Models of the shared installation: vehicle parts, textures, garages."""
import math
import unittest
import xml.etree.ElementTree as ElementTree
import zipfile

from .test_support import (REPO_DATA, load_xml, read_chunks, read_dds,
                           read_indices, read_vertices, shared_installation, text, translation)

SAMPLE_MODELS = ["vehicles/Ardenia/A01_Talon", "vehicles/Borvia/B01_Kestrel",
                 "vehicles/Caldera/C02_Basilisk", "vehicles/Drevnia/D02_Ironmoth",
                 "vehicles/Caldera/C03_Wyvern"]
# part: (vertex format, index format, primitive groups, uv2 stream)
PART_LAYOUTS = {"Chassis": ("xyznuvtb", "list", 2, ""), "Hull": ("xyznuvtb", "list", 1, "uv2"),
                "Turret_01": ("xyznuviiiwwtb", "list32", 1, ""), "Gun_01": ("xyznuv", "list", 1, "")}
NATION_COLOURS = {"Ardenia": (110, 120, 60), "Borvia": (190, 165, 110),
                  "Caldera": (95, 110, 130), "Drevnia": (120, 40, 35)}


def find_translation(root, identifier):
    found = [n for n in root.iter("node") if text(n, "identifier").lower() == identifier.lower()]
    return translation(found[0]) if found else None


class ModelsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.game = shared_installation()

    def geometry(self, base, read=None):
        """(visual, chunks, vertex format, vertices, index format, indices, groups)
        of the model base.{visual,primitives}; checks that the groups hold
        whole triangles of their own vertices and normals are unit vectors."""
        read = read or self.game.read
        visual = load_xml(read(base + ".visual"))
        chunks = read_chunks(read(base + ".primitives"))
        vfmt, vertices = read_vertices(chunks[text(visual, "renderSet/geometry/vertices")])
        ifmt, indices, groups = read_indices(chunks[text(visual, "renderSet/geometry/primitive")])
        self.assertEqual(sum(g[1] for g in groups) * 3, len(indices))
        for start, triangles, first, count in groups:
            used = indices[start:start + 3 * triangles]
            self.assertTrue(first <= min(used) and max(used) < first + count)
        self.assertTrue(all(abs(math.hypot(*normal) - 1) < 0.01 for _, normal in vertices))
        return visual, chunks, vfmt, vertices, ifmt, indices, groups

    def assert_faces_outward(self, indices, vertices):
        """Triangles as the program draws them (x negated, each triangle
        reversed) run counter-clockwise seen along their normals."""
        for t in range(0, len(indices), 3):
            (a, na), (b, nb), (c, nc) = [((-p[0], p[1], p[2]), (-n[0], n[1], n[2])) for p, n in
                                         (vertices[indices[t + k]] for k in (2, 1, 0))]
            ab, ac = [q - p for p, q in zip(a, b)], [q - p for p, q in zip(a, c)]
            face = (ab[1] * ac[2] - ab[2] * ac[1], ab[2] * ac[0] - ab[0] * ac[2],
                    ab[0] * ac[1] - ab[1] * ac[0])
            self.assertGreater(sum(f * (x + y + z) for f, x, y, z in zip(face, na, nb, nc)), 0)

    def test_vehicle_parts_follow_their_layout(self):
        joints = {"Hull": "HP_turretJoint", "Turret_01": "HP_gunJoint"}  # to the part above
        for folder in SAMPLE_MODELS:
            for part, (fmt, index_format, group_count, stream) in PART_LAYOUTS.items():
                with self.subTest(model=folder, part=part):
                    visual, chunks, vfmt, vertices, ifmt, indices, groups = \
                        self.geometry(f"{folder}/normal/lod0/{part}")
                    self.assertEqual((vfmt.lower(), ifmt, len(groups)),
                                     (fmt, index_format, group_count))
                    self.assertEqual(text(visual, "renderSet/geometry/stream"), stream)
                    self.assertEqual(len(chunks.get(stream, b"")), 8 * len(vertices) if stream else 0)
                    if part in joints:  # the joint sits on this part
                        position = find_translation(visual, joints[part])
                        self.assertTrue(0 < position[1] <= max(v[0][1] for v in vertices) + 0.01)
                    if folder == SAMPLE_MODELS[0]:
                        self.assert_faces_outward(indices, vertices)
        self.assertEqual(self.geometry(f"{SAMPLE_MODELS[4]}/normal/lod0/Gun_01")[2], "XYZNUV")

    def test_diffuse_textures_show_the_nation_colour(self):
        for folder in SAMPLE_MODELS:
            for part in PART_LAYOUTS:
                info = read_dds(self.game.read(f"{folder}/{part}_AM.dds"))
                self.assertEqual(1 << (info["mips"] - 1), info["width"])
                colours = [p[:3] for p in info["pixels"]]
                dominant = max(set(colours), key=colours.count)
                self.assertGreater(colours.count(dominant), 0.7 * len(colours))
                expected = NATION_COLOURS[folder.split("/")[1]]
                self.assertTrue(all(abs(a - b) <= 6 for a, b in zip(dominant, expected)), folder)

    def test_garages_name_existing_models_outside_the_vehicle_area(self):
        for garage in ElementTree.parse(REPO_DATA / "garages.cfg").getroot():
            archives = [zipfile.ZipFile(self.game.res / "packages" / z.text)
                        for z in garage.iter("Zip")]
            for mesh in garage.iter("Mesh"):
                base = mesh.findtext("File")[:-len(".model")]
                owner = [a for a in archives if base + ".visual" in a.namelist()]
                self.assertEqual(len(owner), 1, base)
                _, _, _, vertices, _, indices, _ = self.geometry(base, owner[0].read)
                self.assert_faces_outward(indices, vertices)
                position, scale, rotation = ([float(v) for v in (mesh.findtext(tag) or default)
                                              .split()] for tag, default in (
                    ("Position", "0 0 0"), ("Scale", "1 1 1"), ("Rotation", "0 1 0 0")))
                self.assertEqual(rotation[:3], [0, 1, 0])  # only turns about y are laid out
                turn = math.radians(rotation[3])
                for p, _ in vertices:
                    x, y, z = (p[i] * scale[i] for i in range(3))
                    x, z = (x * math.cos(turn) + z * math.sin(turn) + position[0],
                            -x * math.sin(turn) + z * math.cos(turn) + position[2])
                    self.assertFalse(abs(x) < 4 and abs(z) < 5 and y + position[1] > 0.01, base)
            for archive in archives:
                archive.close()
