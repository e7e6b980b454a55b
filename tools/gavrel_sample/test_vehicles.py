"""Models of the shared installation: vehicle parts, textures, garages."""
import itertools
import math
import unittest
import xml.etree.ElementTree as ElementTree

from .test_support import (REPO_DATA, read_chunks, read_dds,
                           read_geometry, shared_installation, text, translation)

SAMPLE_MODELS = ["vehicles/Ardenia/A01_Talon", "vehicles/Borvia/B01_Kestrel",
                 "vehicles/Caldera/C02_Basilisk", "vehicles/Drevnia/D02_Ironmoth",
                 "vehicles/Caldera/C03_Wyvern"]
# part: (vertex format, index format, primitive groups, uv2 stream, joint to the part above)
PART_LAYOUTS = {"Chassis": ("xyznuvtb", "list", 2, "", ""),
                "Hull": ("xyznuvtb", "list", 1, "uv2", "HP_turretJoint"),
                "Turret_01": ("xyznuviiiwwtb", "list32", 1, "", "HP_gunJoint"),
                "Turret_02": ("xyznuvtb", "list", 1, "", "HP_gunJoint"),
                **{f"Gun_0{n}": ("xyznuv", "list", 1, "", "") for n in (1, 2, 3)}}
# A vehicle of each class, with parts shaped for it.
CLASS_MODELS = {"vehicles/Drevnia/D03_Zhuk": "lightTank",
                "vehicles/Ardenia/A10_Falchion": "mediumTank",
                "vehicles/Ardenia/A07_Bastion": "heavyTank",
                "vehicles/Caldera/C08_Pike": "AT-SPG", "vehicles/Ardenia/A06_Corvid": "SPG"}
# The vehicle written in the processed form: its parts' formats and stream.
PROCESSED_MODEL = "vehicles/Borvia/B01_Kestrel"
PROCESSED_FORMATS = {"xyznuv": "set3/xyznuvpc", "xyznuvtb": "set3/xyznuvtbpc",
                     "xyznuviiiwwtb": "set3/xyznuvtbpc"}
NATION_COLOURS = {"Ardenia": (110, 120, 60), "Borvia": (190, 165, 110),
                  "Caldera": (95, 110, 130), "Drevnia": (120, 40, 35)}


class ModelsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.game = shared_installation()

    def geometry(self, base):
        """The visual, chunks and read_geometry of base; checks groups and normals."""
        visual = self.game.xml(self.game.model_name(base + ".visual"))
        chunks = read_chunks(self.game.read(self.game.model_name(base + ".primitives")))
        vfmt, vertices, ifmt, indices, groups = read_geometry(
            *(chunks[text(visual, f"renderSet/geometry/{tag}")]
              for tag in ("vertices", "primitive")))
        self.assertEqual(sum(g[1] for g in groups) * 3, len(indices))
        for start, triangles, first, count in groups:
            used = indices[start:start + 3 * triangles]
            self.assertTrue(first <= min(used) and max(used) < first + count)
        self.assertTrue(all(abs(math.hypot(*normal) - 1) < 0.01 for _, normal in vertices))
        return visual, chunks, vfmt, vertices, ifmt, indices, groups

    def assert_faces_outward(self, indices, vertices):
        """Drawn as the program does (x negated, triangles reversed): counter-clockwise."""
        for t in range(0, len(indices), 3):
            (a, na), (b, nb), (c, nc) = [((-p[0], p[1], p[2]), (-n[0], n[1], n[2])) for p, n in
                                         (vertices[indices[t + k]] for k in (2, 1, 0))]
            ab, ac = [q - p for p, q in zip(a, b)], [q - p for p, q in zip(a, c)]
            face = (ab[1] * ac[2] - ab[2] * ac[1], ab[2] * ac[0] - ab[0] * ac[2],
                    ab[0] * ac[1] - ab[1] * ac[0])
            self.assertGreater(sum(f * (x + y + z) for f, x, y, z in zip(face, na, nb, nc)), 0)

    def test_vehicle_parts_follow_their_layout_intact_and_burnt_out(self):
        for folder, (part, layout), state in itertools.product(
                SAMPLE_MODELS, PART_LAYOUTS.items(), ("normal", "crash")):
            with self.subTest(model=folder, part=part, state=state):
                fmt, index_format, group_count, stream, joint = layout
                base = f"{folder}/{state}/lod0/{part}"
                visual, chunks, vfmt, vertices, ifmt, indices, groups = self.geometry(base)
                # a stream's bytes: uv2 pairs, or a processed colour per vertex
                stream_size = 8 * len(vertices) if stream else 0
                if folder == PROCESSED_MODEL:
                    fmt, stream, stream_size = PROCESSED_FORMATS[fmt], "colour", \
                        136 + 4 * len(vertices)
                    self.assertTrue({"bsp2", "bsp2_materials"} <= chunks.keys())
                    self.assertFalse(self.game.place(base + ".primitives"))
                self.assertEqual((vfmt.lower(), ifmt, len(groups)),
                                 (fmt, index_format, group_count))
                self.assertEqual(text(visual, "renderSet/geometry/stream"), stream)
                self.assertEqual(len(chunks.get(stream, b"")), stream_size)
                if joint:  # where the part above sits: the turret ring, the mantlet
                    top = max(p[1] for p, _ in vertices)
                    node = next(n for n in visual.iter("node") if text(n, "identifier") == joint)
                    self.assertTrue(0 < translation(node)[1] <= top + 0.01)
                if state == "normal" and folder in (SAMPLE_MODELS[0], PROCESSED_MODEL):
                    self.assert_faces_outward(indices, vertices)
        self.assertEqual(self.geometry(f"{SAMPLE_MODELS[4]}/normal/lod0/Gun_01")[2], "XYZNUV")

    def test_class_shaped_parts_face_outward_and_stack_on_their_joints(self):
        """One vehicle of each class: every part closed towards the outside,
        the turret's joint on the hull (inside its bounds) and the gun's on
        the turret; the heavy tank's hull outgrows the light tank's."""
        hull_lengths = {}
        for folder, category in CLASS_MODELS.items():
            tops = {}
            for part in ("Chassis", "Hull", "Turret_01", "Gun_01"):
                with self.subTest(model=folder, part=part):
                    visual, _, _, vertices, _, indices, _ = self.geometry(
                        f"{folder}/normal/lod0/{part}")
                    self.assert_faces_outward(indices, vertices)
                    points = [p for p, _ in vertices]
                    tops[part] = points, visual
            hull_points, hull_visual = tops["Hull"]
            joint = next(translation(n) for n in hull_visual.iter("node")
                         if text(n, "identifier") == "HP_turretJoint")
            for axis in range(3):
                self.assertTrue(min(p[axis] for p in hull_points) <= joint[axis]
                                <= max(p[axis] for p in hull_points) + 0.01, (folder, axis))
            turret_points, turret_visual = tops["Turret_01"]
            gun_joint = next(translation(n) for n in turret_visual.iter("node")
                             if text(n, "identifier") == "HP_gunJoint")
            self.assertLessEqual(gun_joint[2], max(p[2] for p in turret_points) + 0.01)
            hull_lengths[category] = max(p[2] for p in hull_points) - min(
                p[2] for p in hull_points)
        self.assertLess(hull_lengths["lightTank"], hull_lengths["heavyTank"])

    def test_diffuse_textures_show_the_nation_colour_and_burn_darker(self):
        def colours(name):
            return [p[:3] for p in read_dds(self.game.read(name))["pixels"]]
        for folder, kind in itertools.product(SAMPLE_MODELS, ("Chassis", "Hull", "Turret_01")):
            texels = colours(f"{folder}/{kind}_AM.dds")
            dominant = max(set(texels), key=texels.count)
            self.assertGreater(texels.count(dominant), 0.7 * len(texels))
            expected = NATION_COLOURS[folder.split("/")[1]]
            self.assertTrue(all(abs(a - b) <= 6 for a, b in zip(dominant, expected)), folder)
            burnt = colours(f"{folder}/{kind.split('_')[0]}_crash_AM.dds")
            self.assertLess(sum(map(sum, burnt)) / len(burnt),
                            0.5 * sum(map(sum, texels)) / len(texels))

    def test_garages_name_existing_models_outside_the_vehicle_area(self):
        for garage in ElementTree.parse(REPO_DATA / "garages.cfg").getroot():
            for mesh in garage.iter("Mesh"):
                base = mesh.findtext("File")[:-len(".model")]
                self.assertEqual(self.game.place(self.game.model_name(base + ".visual")),
                                 garage.findtext("Zip"))
                _, _, _, vertices, _, indices, _ = self.geometry(base)
                self.assert_faces_outward(indices, vertices)
                position, scale, rotation = (
                    [float(v) for v in (mesh.findtext(tag) or default).split()] for tag, default
                    in (("Position", "0 0 0"), ("Scale", "1 1 1"), ("Rotation", "0 1 0 0")))
                self.assertEqual(rotation[:3], [0, 1, 0])  # only turns about y are laid out
                turn = math.radians(rotation[3])
                for (x, y, z), _ in vertices:
                    x, y, z = x * scale[0], y * scale[1] + position[1], z * scale[2]
                    x, z = (x * math.cos(turn) + z * math.sin(turn) + position[0],
                            -x * math.sin(turn) + z * math.cos(turn) + position[2])
                    self.assertFalse(abs(x) < 4 and abs(z) < 5 and y > 0.01, base)
