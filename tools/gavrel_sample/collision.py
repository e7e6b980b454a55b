"""Collision models: a closed, coarse mesh per vehicle part whose primitive
groups are the armour plates, each group's material identifier naming an
armour material of the vehicle file. The proving-ground vehicle's hull is
a row of plates at known angles and thicknesses."""
import math

from . import geometry as gavrel_geometry
from . import shapes
from .game_data import PROVING_GROUND, PROVING_GROUND_PLATES
from .models import material, model_file, node, primitives_bytes, visual_tree, xml_file

FORMAT = "xyznuv"


def plate_group(mesh, *boxes):
    mesh.begin_group()
    for lo, hi in boxes:
        mesh.box(lo, hi)


def chassis_plates(detail, body=(1.0, 1.0, 1.0)):
    """The two track runs."""
    mesh = shapes.scaled_builder(detail, body)
    plate_group(mesh, ((1.0, 0.0, -3.0), (1.42, 0.85, 3.0)))
    plate_group(mesh, ((-1.42, 0.0, -3.0), (-1.0, 0.85, 3.0)))
    return mesh, ["leftTrack", "rightTrack"]


def hull_plates(detail, body=(1.0, 1.0, 1.0), superstructure=""):
    """Body (sides and roof, and a superstructure's plates), a sloped
    glacis, side skirts and a spaced front plate, and a surveying device on
    the roof."""
    mesh = shapes.scaled_builder(detail, body)
    mesh.begin_group()
    mesh.prism([(-2.9, 0.04), (2.3, 0.04), (2.3, 0.82), (-2.9, 0.82)], -1.0, 1.0)
    for lo, hi in shapes.SUPERSTRUCTURE_PLATES.get(superstructure, []):
        mesh.box(lo, hi)
    mesh.begin_group()
    mesh.prism([(2.3, 0.04), (3.0, 0.37), (2.5, 0.82), (2.3, 0.82)], -1.0, 1.0)
    plate_group(mesh, ((1.45, 0.3, -2.5), (1.5, 0.8, 2.5)), ((-1.5, 0.3, -2.5), (-1.45, 0.8, 2.5)))
    plate_group(mesh, ((-0.9, 0.1, 3.1), (0.9, 0.3, 3.15)))
    plate_group(mesh, ((0.3, 0.82, -1.0), (0.6, 1.0, -0.7)))
    return mesh, ["armor_2", "armor_1", "armor_3", "armor_4", "surveyingDevice"]


def turret_plates(detail, kind="cast"):
    mesh = gavrel_geometry.MeshBuilder(detail)
    side, front = shapes.TURRET_PLATES[kind]
    plate_group(mesh, side)
    plate_group(mesh, front)
    return mesh, ["turret_side", "turret_front"]


GUN_LENGTHS = {"Gun_01": 3.0, "Gun_02": 3.6, "Gun_03": 2.2}


def gun_plates(length, detail):
    mesh = gavrel_geometry.MeshBuilder(detail)
    plate_group(mesh, ((-0.1, -0.1, 0.0), (0.1, 0.1, length)))
    return mesh, ["gun"]


def slab(mesh, angle, thickness, length, centre, x0, x1):
    """A flat plate whose face normal stands angle degrees above the
    vehicle's forward axis (+z), so that a shell flying level from the
    front meets it at that angle."""
    a = math.radians(angle)
    normal = (math.cos(a), math.sin(a))      # (z, y)
    along = (-math.sin(a), math.cos(a))
    zc, yc = centre
    corners = [(zc + sa * along[0] * length / 2 + sn * normal[0] * thickness / 2,
                yc + sa * along[1] * length / 2 + sn * normal[1] * thickness / 2)
               for sa, sn in ((-1, -1), (-1, 1), (1, 1), (1, -1))]
    mesh.prism(corners, x0, x1)


# Where the proving ground's plates stand in the hull: side by side across
# x, level with y = PLATE_HEIGHT, centred at z = PLATE_FRONT.
PLATE_HEIGHT = 1.0
PLATE_FRONT = 3.5
PLATE_WIDTH = 1.0


def proving_ground_hull(detail=1):
    mesh = gavrel_geometry.MeshBuilder(detail)
    names = []
    for column, (name, _, angle) in enumerate(PROVING_GROUND_PLATES):
        x0 = -1.5 + column * PLATE_WIDTH
        mesh.begin_group()
        slab(mesh, angle, 0.1, 1.6, (PLATE_FRONT, PLATE_HEIGHT), x0, x0 + PLATE_WIDTH)
        names.append(name)
    return mesh, names


def vehicle_plates(part, detail, shape=shapes.STANDARD):
    if part == "Chassis":
        return chassis_plates(detail, shape.body)
    if part == "Hull":
        return hull_plates(detail, shape.body, shape.superstructure)
    if part.startswith("Turret"):
        return turret_plates(detail, shape.turret)
    if shape != shapes.STANDARD:
        return gun_plates(shape.gun_length, detail)
    return gun_plates(GUN_LENGTHS.get(part, 3.0), detail)


def collision_files(folder, part, mesh, names):
    """(path, bytes) of the .model, .visual and .primitives of one part's
    collision model below folder/collision_client."""
    base = f"{folder}/collision_client/{part}"
    materials = [material(name, "lightonly.fx", []) for name in names]
    tree = visual_tree([node(part)], part, part, materials)
    return [(base + ".model", model_file(base + ".visual")),
            (base + ".visual", xml_file(f"{part}.visual", tree, False)),
            (base + ".primitives", primitives_bytes(part, mesh, FORMAT, False))]


def collision_model_files(folder, parts, detail=1, shape=shapes.STANDARD):
    files = []
    for part in parts:
        mesh, names = vehicle_plates(part, detail, shape)
        files += collision_files(folder, part, mesh, names)
    return files


def proving_ground_files(nation_data_path):
    """The proving ground's own hull; its other parts are those it borrows."""
    mesh, names = proving_ground_hull()
    return collision_files(f"{nation_data_path}/{PROVING_GROUND}", "Hull", mesh, names)
