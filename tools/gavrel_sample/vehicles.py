"""The vehicles' model parts (chassis, hull, turret, gun) with their
materials and textures, and the archive members they make."""
import math
import zlib

from . import geometry as gavrel_geometry
from . import shapes
from .collision import collision_model_files, proving_ground_files
from .game_data import SAMPLE_NATIONS, has_class_shape
from .archives import DEFLATED, STORED, Member
from .models import (flag_property, material, model_file, node, primitives_bytes,
                     processed_primitives_bytes, texture_property, visual_tree, xml_file)
from .textures import (DETAIL_SIZE, DIFFUSE_SIZE, NATION_COLOURS, darker, extra_texture,
                       large_panel, texformat_file, texture)


# Placement of the parts: the hull's turret ring and the turret's gun pivot.
TURRET_JOINT = (0.0, 1.2, -0.3)
GUN_JOINT = (0.0, 0.3, 0.95)
# A node no part hangs on, to carry a non-uniform scale the reader must keep.
SCALED_NODE = ("HP_Emblem_Front", (1.0, 2.0, 0.5), (0.0, 0.9, 2.7))

HD_TEXTURE_TANK = "A01_Talon"          # Hull_AM has a .texformat and an HD file
UNCOMPRESSED_GUN_TANK = "B01_Kestrel"  # Gun_01_AM is 32-bit BGRA
RGB24_GLOSS_TANK = "C02_Basilisk"      # *_GMM are 24-bit BGR
UPPER_CASE_GUN_TANK = "C03_Wyvern"     # Gun_01 vertex format "XYZNUV"
PLAIN_VISUAL_TANK = "D02_Ironmoth"     # visuals as text XML
PROCESSED_TANK = "B01_Kestrel"         # .visual_processed / .primitives_processed


def chassis_mesh(detail=1, body=(1.0, 1.0, 1.0)):
    """Group 0: a low body between the tracks, five road wheels a side, a
    drive sprocket in front and an idler behind; group 1: the two track
    runs with sloped ends, whose long faces repeat the texture four times.
    body stretches it for the vehicle's class."""
    mesh = shapes.scaled_builder(detail, body)
    mesh.begin_group()
    mesh.box((-1.05, 0.3, -2.8), (1.05, 0.8, 2.8))
    for side in (-1.0, 1.0):
        inner, outer = sorted((1.42 * side, 1.52 * side))
        for z in (-2.2, -1.1, 0.0, 1.1, 2.2):
            mesh.cylinder("x", (0.0, 0.36, z), 0.32, inner, outer, segments=12)
        for z, radius in ((2.72, 0.26), (-2.72, 0.24)):  # sprocket, idler
            mesh.cylinder("x", (0.0, 0.56, z), radius, inner, outer, segments=12)
    mesh.begin_group()
    run = [(-2.55, 0.0), (2.55, 0.0), (3.0, 0.5), (2.8, 0.85), (-2.8, 0.85), (-3.0, 0.5)]
    for side in (-1.0, 1.0):
        x0, x1 = sorted((1.0 * side, 1.42 * side))
        mesh.prism(run, x0, x1, uv_rect=(0.0, 0.0, 1.0, 4.0))
    return mesh


def hull_mesh(detail=1, body=(1.0, 1.0, 1.0), superstructure=""):
    """A lower hull between the tracks with a sloped lower front plate, the
    upper hull over the tracks with a sloped glacis and rear, an engine deck
    and a driver's hatch; a casemate or an open compartment on top."""
    mesh = shapes.scaled_builder(detail, body)
    mesh.begin_group()
    mesh.prism([(-2.9, 0.42), (2.3, 0.42), (3.0, 0.75), (2.9, 0.9), (-2.95, 0.9)], -1.0, 1.0)
    mesh.prism([(-2.95, 0.9), (2.9, 0.9), (2.5, 1.2), (-2.6, 1.2)], -1.45, 1.45)
    mesh.prism([(-2.5, 1.2), (-1.0, 1.2), (-1.1, 1.32), (-2.4, 1.32)], -1.0, 1.0)
    mesh.cylinder("y", (0.55, 0.0, 1.7), 0.22, 1.2, 1.27, segments=10)
    if superstructure:
        shapes.SUPERSTRUCTURES[superstructure](mesh)
    return mesh


def turret_mesh(detail=1):
    return shapes.turret_mesh("cast", detail)


def welded_turret_mesh(detail=1):
    return shapes.turret_mesh("welded", detail)


def gun_mesh(length=3.0, radius=0.08, detail=1):
    """A barrel along +z from the pivot: a sleeve at the mantlet, the tube,
    and a muzzle brake at the end."""
    mesh = gavrel_geometry.MeshBuilder(detail)
    mesh.begin_group()
    mesh.cylinder("z", (0.0, 0.0, 0.0), radius * 1.7, 0.0, 0.5, segments=12)
    mesh.cylinder("z", (0.0, 0.0, 0.0), radius, 0.0, length, segments=12)
    mesh.cylinder("z", (0.0, 0.0, 0.0), radius * 1.5, length - 0.3, length + 0.1, segments=12)
    return mesh


def battered(mesh, seed, shift=(0.0, 0.0, 0.0), sag=0.0):
    """The mesh after the vehicle burnt out: every corner dented by up to
    4 cm (points in the same place move alike, so no seams open), the part
    moved by shift and its front sagging by sag per metre of z."""
    salt = zlib.crc32(seed.encode("utf-8")) % 1000 / 10.0

    def noise(p, k):  # repeatable in [-1, 1) from the rounded point alone
        x, y, z = (round(c, 3) for c in p)
        wave = math.sin(x * 12.9898 + y * 78.233 + z * 37.719 + salt + 17.0 * k)
        return wave * 43758.5453 % 2 - 1

    def dent(p):
        return tuple(c + 0.04 * noise(p, k) + s for k, (c, s) in enumerate(zip(p, shift)))
    result = gavrel_geometry.MeshBuilder()
    result.indices, result.group_starts = mesh.indices, mesh.group_starts
    for position, *rest in mesh.vertices:
        x, y, z = dent(position)
        result.vertices.append(((x, y - sag * max(z, 0.0), z), *rest))
    return result


def tank_folder(nation, tank):
    return f"vehicles/{nation}/{tank}"


STATES = {"normal": "", "crash": "_crash"}  # model folder: suffix of the diffuse texture
TEXTURE_KINDS = {"Chassis": "Chassis", "Hull": "Hull", "Turret_01": "Turret",
                 "Turret_02": "Turret", "Gun_01": "Gun", "Gun_02": "Gun", "Gun_03": "Gun"}
NO_EXTENSION_GUN_TANK = "C02_Basilisk"  # the guns' diffuse map is named without ".dds"
LOWER_CASE_SHARED_TANK = "C03_Wyvern"   # turrets use the hull's diffuse map, in lower case


def diffuse_name(tank, kind, state):
    """Diffuse map of a part: burnt in the crash state; the turret's and
    gun's intact maps as the odd vehicles name them."""
    if state == "crash":
        return f"{kind}_crash_AM.dds"
    if kind == "Turret":
        return "hull_am.dds" if tank == LOWER_CASE_SHARED_TANK else "Turret_01_AM.tga"
    if kind == "Gun":
        return "Gun_01_AM" if tank == NO_EXTENSION_GUN_TANK else "Gun_01_AM.dds"
    return f"{kind}_AM.dds"


def part_materials(nation, tank, state="normal", shape=shapes.STANDARD):
    """{part: [material of each group]} of one vehicle in one state. A
    class-shaped vehicle paints its running gear from the hull's map, so
    that its paintable maps (hull, turret, gun) pair with its masks
    (vehicle, turret, gun)."""
    base = tank_folder(nation, tank)

    def diffuse(kind):
        return texture_property("diffuseMap", f"{base}/{diffuse_name(tank, kind, state)}")
    chassis_body = material("chassis_body", "PBS_ext_dual.fx", [
        diffuse("Chassis" if shape == shapes.STANDARD else "Hull"),
        texture_property("diffuseMap2", f"{base}/Chassis_Dirt_AM.dds"),
        texture_property("normalMap", f"{base}/Chassis_ANM.dds"),
        texture_property("metallicGlossMap", f"{base}/Chassis_GMM.dds"),
        flag_property("g_useNormalPackDXT1", "Bool", False),
    ])
    tracks = material("tracks", "lightonly_alpha.fx", [
        texture_property("diffuseMap", f"{base}/Track_AM.tga"),
        flag_property("alphaTestEnable", "Bool", True),
        flag_property("alphaReference", "Int", 128),
        flag_property("doubleSided", "Bool", True),
    ])
    hull_properties = [
        diffuse("Hull"),
        texture_property("normalMap", f"{base}/Hull_ANM.dds"),
        texture_property("metallicGlossMap", f"{base}/Hull_GMM.dds"),
        texture_property("metallicDetailMap", f"{base}/Hull_MDM.dds"),
        flag_property("g_useNormalPackDXT1", "Bool", False),
    ]
    if tank == PROCESSED_TANK:  # the current clients' PBS_tank.fx has one more map
        hull_properties.append(texture_property("excludeMaskAndAOMap", f"{base}/Hull_CM.dds"))
    hull = material("hull", "PBS_tank.fx", hull_properties)
    turret = material("turret", "normalmap_specmap.fx", [
        diffuse("Turret"),
        texture_property("normalMap", f"{base}/Turret_01_ANM.dds"),
        texture_property("specularMap", f"{base}/Turret_01_GMM.dds"),
        flag_property("g_useNormalPackDXT1", "Bool", True),
    ], effect_last=True)
    gun = material("gun", "lightonly.fx", [diffuse("Gun")])
    return {"Chassis": [chassis_body, tracks], "Hull": [hull], "Turret_01": [turret],
            "Turret_02": [turret], "Gun_01": [gun], "Gun_02": [gun], "Gun_03": [gun]}


def vehicle_parts(tank, detail=1, shape=shapes.STANDARD):
    """(part, mesh, vertex format, 32-bit indices, uv2 stream, root children,
    render node) of each part; detail above 1 makes every part that much
    finer, with 32-bit indices throughout. The standard shape also has a
    second turret and two more guns; a class's shape has one of each."""
    gun_format = "XYZNUV" if tank == UPPER_CASE_GUN_TANK else "xyznuv"
    emblem, emblem_scale, emblem_at = SCALED_NODE
    hull_children = [node("hull", [
        node("HP_turretJoint", translation=shapes.turret_position(shape)),
        node(emblem, translation=emblem_at, scale=emblem_scale)])]
    turret_children = [node("turret", [node("HP_gunJoint", translation=shape.gun_joint)])]
    wide = detail > 1
    parts = [
        ("Chassis", chassis_mesh(detail, shape.body), "xyznuvtb", wide, False, [node("tank")],
         "tank"),
        ("Hull", hull_mesh(detail, shape.body, shape.superstructure), "xyznuvtb", wide, True,
         hull_children, "hull"),
        ("Turret_01", shapes.turret_mesh(shape.turret, detail), "xyznuviiiwwtb", True, False,
         turret_children, "turret"),
        ("Gun_01", gun_mesh(shape.gun_length, shape.gun_radius, detail), gun_format, wide, False,
         [node("gun")], "gun"),
    ]
    if detail == 1 and shape == shapes.STANDARD:
        parts += [
            ("Turret_02", welded_turret_mesh(), "xyznuvtb", False, False, turret_children,
             "turret"),
            ("Gun_02", gun_mesh(3.6, 0.07), gun_format, False, False, [node("gun")], "gun"),
            ("Gun_03", gun_mesh(2.2, 0.11), gun_format, False, False, [node("gun")], "gun"),
        ]
    return parts


# How each part lies after the fire: (moved by, front sagging per metre).
CRASH_DAMAGE = {"Chassis": ((0.0, -0.05, 0.0), 0.02), "Hull": ((0.0, -0.06, 0.0), 0.03),
                "Turret": ((0.12, -0.04, 0.05), 0.05), "Gun": ((0.0, 0.0, 0.0), 0.12)}


def vehicle_model_files(nation, tank, detail=1, shape=shapes.STANDARD):
    """(path, bytes) of the .model, .visual and .primitives of every part,
    intact (normal/lod0) and burnt out (crash/lod0)."""
    plain = tank == PLAIN_VISUAL_TANK
    processed = tank == PROCESSED_TANK
    files = []
    for part, mesh, fmt, wide, uv2, root_children, render_node in vehicle_parts(tank, detail, shape):
        for state in STATES:
            base = f"{tank_folder(nation, tank)}/{state}/lod0/{part}"
            if state == "crash":
                mesh = battered(mesh, f"{tank}/{part}", *CRASH_DAMAGE[TEXTURE_KINDS[part]])
            materials = part_materials(nation, tank, state, shape)[part]
            if processed:  # every part names its colour stream, none a uv2
                suffix = gavrel_geometry.PROCESSED_SUFFIX
                tree = visual_tree(root_children, render_node, part, materials, "colour")
                files += [(base + ".model", model_file(base + ".visual")),
                          (base + ".visual" + suffix, xml_file(f"{part}.visual", tree, plain)),
                          (base + ".primitives" + suffix,
                           processed_primitives_bytes(part, mesh, fmt, wide))]
                continue
            tree = visual_tree(root_children, render_node, part, materials,
                               "uv2" if uv2 else None)
            files += [(base + ".model", model_file(base + ".visual")),
                      (base + ".visual", xml_file(f"{part}.visual", tree, plain)),
                      (base + ".primitives", primitives_bytes(part, mesh, fmt, wide, uv2))]
    return files


def vehicle_texture_files(nation, tank):
    """(path, bytes) of the textures that the vehicle's visuals and file name."""
    base = tank_folder(nation, tank)
    colour = NATION_COLOURS[nation]
    gloss = "BGR24" if tank == RGB24_GLOSS_TANK else "DXT3"
    gun = "BGRA32" if tank == UNCOMPRESSED_GUN_TANK else "DXT1"
    files = [
        ("Chassis_AM.dds", texture("DXT1", "panel", DIFFUSE_SIZE, colour)),
        ("Chassis_Dirt_AM.dds", texture("DXT1", "panel", DETAIL_SIZE, darker(colour))),
        ("Chassis_ANM.dds", texture("DXT5", "normal5", DETAIL_SIZE)),
        ("Chassis_GMM.dds", texture(gloss, "gloss", DETAIL_SIZE)),
        ("Track_AM.dds", texture("DXT1", "track", DETAIL_SIZE)),
        ("Hull_AM.dds", texture("DXT1", "panel", DIFFUSE_SIZE, colour)),
        ("Hull_ANM.dds", texture("DXT5", "normal5", DETAIL_SIZE)),
        ("Hull_GMM.dds", texture(gloss, "gloss", DETAIL_SIZE)),
        ("Hull_MDM.dds", texture("DXT1", "normal1", DETAIL_SIZE)),
        ("Turret_01_AM.dds", texture("DXT1", "panel", DIFFUSE_SIZE, colour)),
        ("Turret_01_ANM.dds", texture("DXT1", "normal1", DETAIL_SIZE)),
        # The turret's effect reads it as a specular map: grey, not metal
        # and gloss in red and green.
        ("Turret_01_GMM.dds", texture(gloss, "specular", DETAIL_SIZE)),
        ("Gun_01_AM.dds", texture(gun, "panel", DETAIL_SIZE, colour)),
    ]
    files += [(f"{kind}_crash_AM.dds", extra_texture("DXT1", "burnt", DETAIL_SIZE, colour))
              for kind in ("Chassis", "Hull", "Turret", "Gun")]
    files += [(f"{kind}_CM.dds", extra_texture("DXT1", "mask", 32))
              for kind in ("Tank", "Hull", "Turret", "Turret_01", "Turret_02", "Gun", "Gun_01")]
    if tank == HD_TEXTURE_TANK:
        hd = f"{base}/Hull_AM_hd.dds"
        files += [("Hull_AM.texformat", texformat_file(hd)),
                  ("Hull_AM_hd.dds", texture("DXT1", "panel", 2 * DIFFUSE_SIZE, colour, 1))]
    return [(f"{base}/{name}", data) for name, data in files]


def tank_members(archive, nation, tank):
    """Model parts of one vehicle (.primitives deflated, .visual and .model
    stored) and the textures they name, beside them in the same archive."""
    members = []
    shape = MODEL_SHAPES.get(tank, shapes.STANDARD)
    collision = collision_model_files(tank_folder(nation, tank),
                                      [p[0] for p in vehicle_parts(tank, 1, shape)], 1, shape)
    for path, data in (vehicle_model_files(nation, tank, 1, shape)
                       + vehicle_texture_files(nation, tank) + collision):
        compress = DEFLATED if ".primitives" in path else STORED
        members.append(Member(path, data, compress))
    return members


def vehicles_level_members(archive, tanks):
    members = []
    for nation, tank in tanks:
        members += tank_members(archive, nation, tank)
    if archive == PROVING_GROUND_ARCHIVE:
        members += [Member(path, data, DEFLATED if path.endswith(".primitives") else STORED)
                    for path, data in proving_ground_files("vehicles/Drevnia")]
    return members


SAMPLE_TANKS = {
    "vehicles_level_01.pkg": [("Ardenia", "A01_Talon"), ("Borvia", "B01_Kestrel")],
    "vehicles_level_02.pkg": [("Caldera", "C02_Basilisk"), ("Drevnia", "D02_Ironmoth")],
}
# Model parts of vehicles whose model folder is not named like their tag;
# they go into the archive after the parts of SAMPLE_TANKS.
EXTRA_MODEL_FOLDERS = {"vehicles_level_02.pkg": [("Caldera", "C03_Wyvern")]}
# Every other vehicle of the table has parts shaped for its class, in the
# archive of its nation's vehicle files, after the vehicles above.
SHAPED_VEHICLES = [(nation, vehicle) for nation in SAMPLE_NATIONS for vehicle in nation.vehicles
                   if has_class_shape(vehicle)]
MODEL_SHAPES = {vehicle.model_folder: shapes.SHAPES[vehicle.category]
                for _, vehicle in SHAPED_VEHICLES}
CLASS_TANKS = {archive: [(nation.data_name, vehicle.model_folder)
                         for nation, vehicle in SHAPED_VEHICLES
                         if nation.defs_archive == archive]
               for archive in SAMPLE_TANKS}

# The heavy vehicle of --scale: the parts 64 times finer a side, and large
# uncompressed diffuse maps, for a benchmark of loading one vehicle.
HEAVY_DETAIL = 64
# Its collision models: 88 x 16 x 16 triangles, over 20,000.
HEAVY_COLLISION_DETAIL = 16
# The archive of the vehicle whose models the proving ground borrows.
PROVING_GROUND_ARCHIVE = "vehicles_level_02.pkg"
HEAVY_TEXTURE_SIZE = 2048


def heavy_members(data_name, model):
    """Members of the heavy vehicle, model folder vehicles/<data_name>/<model>."""
    colour = NATION_COLOURS["Ardenia"]
    members = [Member(path, data, DEFLATED if path.endswith(".primitives") else STORED)
               for path, data in vehicle_model_files(data_name, model, HEAVY_DETAIL)
               + collision_model_files(tank_folder(data_name, model),
                                       ["Chassis", "Hull", "Turret_01", "Gun_01"],
                                       HEAVY_COLLISION_DETAIL)]
    for path, data in vehicle_texture_files("Ardenia", model):
        name = path.rsplit("/", 1)[-1]
        if name in ("Chassis_AM.dds", "Hull_AM.dds", "Turret_01_AM.dds"):
            data = large_panel(HEAVY_TEXTURE_SIZE, colour)
        members.append(Member(f"{tank_folder(data_name, model)}/{name}", data, STORED))
    return members
