"""The vehicles' model parts (chassis, hull, turret, gun) with their
materials and textures, and the archive members they make."""
from . import geometry as gavrel_geometry
from .archives import DEFLATED, STORED, Member
from .models import (flag_property, material, model_file, node, primitives_bytes,
                     texture_property, visual_tree, xml_file)
from .textures import (DETAIL_SIZE, DIFFUSE_SIZE, NATION_COLOURS, darker, texformat_file,
                       texture)


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


def chassis_mesh():
    """Group 0: a low body between the tracks and the road wheels; group 1:
    the two track blocks, whose top and bottom repeat the texture four times."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.box((-1.05, 0.3, -2.8), (1.05, 0.8, 2.8))
    for side in (-1.0, 1.0):
        for z in (-2.2, -1.1, 0.0, 1.1, 2.2):
            inner, outer = 1.42 * side, 1.52 * side
            mesh.cylinder("x", (0.0, 0.36, z), 0.32, min(inner, outer), max(inner, outer),
                          segments=12)
    mesh.begin_group()
    for side in (-1.0, 1.0):
        x0, x1 = sorted((1.0 * side, 1.42 * side))
        mesh.box((x0, 0.0, -3.0), (x1, 0.85, 3.0), uv_rect=(0.0, 0.0, 1.0, 4.0))
    return mesh


def hull_mesh():
    """A box whose front slopes forward and down to a nose."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    profile = [(-2.9, 0.42), (2.3, 0.42), (3.0, 0.75), (2.5, 1.2), (-2.9, 1.2)]
    mesh.prism(profile, -1.45, 1.45)
    return mesh


def turret_mesh():
    """A squat cylinder on the ring with a mantlet block in front."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.cylinder("y", (0.0, 0.0, 0.0), 1.05, 0.0, 0.6, segments=20)
    mesh.box((-0.35, 0.1, 0.8), (0.35, 0.5, 1.15))
    return mesh


def gun_mesh():
    """A barrel along +z from the pivot, with a thicker muzzle end."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.cylinder("z", (0.0, 0.0, 0.0), 0.08, 0.0, 3.0, segments=12)
    mesh.cylinder("z", (0.0, 0.0, 0.0), 0.12, 2.7, 3.1, segments=12)
    return mesh


def tank_folder(nation, tank):
    return f"vehicles/{nation}/{tank}"


def part_materials(nation, tank):
    """{part: [material of each group]} of one vehicle."""
    base = tank_folder(nation, tank)
    chassis_body = material("chassis_body", "PBS_ext_dual.fx", [
        texture_property("diffuseMap", f"{base}/Chassis_AM.dds"),
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
    hull = material("hull", "PBS_tank.fx", [
        texture_property("diffuseMap", f"{base}/Hull_AM.dds"),
        texture_property("normalMap", f"{base}/Hull_ANM.dds"),
        texture_property("metallicGlossMap", f"{base}/Hull_GMM.dds"),
        flag_property("g_useNormalPackDXT1", "Bool", False),
    ])
    turret = material("turret", "normalmap_specmap.fx", [
        texture_property("diffuseMap", f"{base}/Turret_01_AM.tga"),
        texture_property("normalMap", f"{base}/Turret_01_ANM.dds"),
        texture_property("specularMap", f"{base}/Turret_01_GMM.dds"),
        flag_property("g_useNormalPackDXT1", "Bool", True),
    ], effect_last=True)
    gun = material("gun", "lightonly.fx", [
        texture_property("diffuseMap", f"{base}/Gun_01_AM.dds"),
    ])
    return {"Chassis": [chassis_body, tracks], "Hull": [hull], "Turret_01": [turret],
            "Gun_01": [gun]}


def vehicle_parts(tank):
    """(part, mesh, vertex format, 32-bit indices, uv2 stream, root children,
    render node) of each part."""
    gun_format = "XYZNUV" if tank == UPPER_CASE_GUN_TANK else "xyznuv"
    emblem, emblem_scale, emblem_at = SCALED_NODE
    hull_children = [node("hull", [node("HP_turretJoint", translation=TURRET_JOINT),
                                   node(emblem, translation=emblem_at, scale=emblem_scale)])]
    return [
        ("Chassis", chassis_mesh(), "xyznuvtb", False, False, [node("tank")], "tank"),
        ("Hull", hull_mesh(), "xyznuvtb", False, True, hull_children, "hull"),
        ("Turret_01", turret_mesh(), "xyznuviiiwwtb", True, False,
         [node("turret", [node("HP_gunJoint", translation=GUN_JOINT)])], "turret"),
        ("Gun_01", gun_mesh(), gun_format, False, False, [node("gun")], "gun"),
    ]


def vehicle_model_files(nation, tank):
    """(path, bytes) of the .model, .visual and .primitives of every part."""
    materials = part_materials(nation, tank)
    files = []
    for part, mesh, fmt, wide, uv2, root_children, render_node in vehicle_parts(tank):
        base = f"{tank_folder(nation, tank)}/normal/lod0/{part}"
        tree = visual_tree(root_children, render_node, part, materials[part],
                           "uv2" if uv2 else None)
        files += [(base + ".model", model_file(base + ".visual")),
                  (base + ".visual", xml_file(f"{part}.visual", tree, tank == PLAIN_VISUAL_TANK)),
                  (base + ".primitives", primitives_bytes(part, mesh, fmt, wide, uv2))]
    return files


def vehicle_texture_files(nation, tank):
    """(path, bytes) of the textures that the vehicle's visuals name."""
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
        ("Turret_01_AM.dds", texture("DXT1", "panel", DIFFUSE_SIZE, colour)),
        ("Turret_01_ANM.dds", texture("DXT1", "normal1", DETAIL_SIZE)),
        ("Turret_01_GMM.dds", texture(gloss, "gloss", DETAIL_SIZE)),
        ("Gun_01_AM.dds", texture(gun, "panel", DETAIL_SIZE, colour)),
    ]
    if tank == HD_TEXTURE_TANK:
        hd = f"{base}/Hull_AM_hd.dds"
        files += [("Hull_AM.texformat", texformat_file(hd)),
                  ("Hull_AM_hd.dds", texture("DXT1", "panel", 2 * DIFFUSE_SIZE, colour, 1))]
    return [(f"{base}/{name}", data) for name, data in files]


def tank_members(archive, nation, tank):
    """Model parts of one vehicle (.primitives deflated, .visual and .model
    stored) and the textures they name, beside them in the same archive."""
    members = []
    for path, data in vehicle_model_files(nation, tank) + vehicle_texture_files(nation, tank):
        compress = DEFLATED if path.endswith(".primitives") else STORED
        members.append(Member(path, data, compress))
    return members


def vehicles_level_members(archive, tanks):
    members = []
    for nation, tank in tanks:
        members += tank_members(archive, nation, tank)
    return members


SAMPLE_TANKS = {
    "vehicles_level_01.pkg": [("Ardenia", "A01_Talon"), ("Borvia", "B01_Kestrel")],
    "vehicles_level_02.pkg": [("Caldera", "C02_Basilisk"), ("Drevnia", "D02_Ironmoth")],
}


# they go into the archive after the parts of SAMPLE_TANKS.
EXTRA_MODEL_FOLDERS = {"vehicles_level_02.pkg": [("Caldera", "C03_Wyvern")]}


