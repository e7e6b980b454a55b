"""The hangar models of the two garages (garage_premium.pkg and
garage_basic.pkg, named by the program's garages.cfg, not by resources.cfg)
and the shared models of shared_content.pkg."""
from . import geometry as gavrel_geometry
from .archives import DEFLATED, STORED, Member
from .models import (flag_property, material, model_file, node, primitives_bytes,
                     processed_primitives_bytes, texture_property, visual_tree)
from .packed_xml import encode
from .textures import DETAIL_SIZE, texture

GARAGE_COLOURS = {
    "Concrete": (150, 150, 146),  # floors
    "Brick": (140, 82, 64),       # back wall
    "Steel": (92, 98, 104),       # pillars, fence
    "Lamp": (235, 228, 190),
    "Wood": (150, 112, 64),       # crates
}


def slab_mesh():
    """A 20 x 20 m slab, top face at y = 0, texture repeated across it."""
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.box((-10.0, -0.2, -10.0), (10.0, 0.0, 10.0), uv_rect=(0.0, 0.0, 1.0, 1.0))
    return mesh


def box_mesh(lo, hi):
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.box(lo, hi)
    return mesh


def lamp_mesh():
    mesh = gavrel_geometry.MeshBuilder()
    mesh.begin_group()
    mesh.cylinder("y", (0.0, 0.0, 0.0), 0.35, 0.0, 0.25, segments=12)
    mesh.cylinder("y", (0.0, 0.0, 0.0), 0.04, 0.25, 1.5, segments=6)
    return mesh


# (name, mesh, vertex format, texture colour name, bumped) of each model
GARAGE_MODELS = {
    "Hangar_Premium": [
        ("Floor", slab_mesh, "xyznuvtb", "Concrete", True),
        ("Back_Wall", lambda: box_mesh((-10.0, 0.0, -9.8), (10.0, 6.0, -9.4)),
         "xyznuvtb", "Brick", True),
        ("Pillar", lambda: box_mesh((-0.3, 0.0, -0.3), (0.3, 6.0, 0.3)), "xyznuv", "Steel", False),
        ("Lamp", lamp_mesh, "xyznuv", "Lamp", False),
    ],
    "Hangar_Basic": [
        ("Floor", slab_mesh, "xyznuvtb", "Concrete", True),
        ("Crate", lambda: box_mesh((-0.6, 0.0, -0.6), (0.6, 1.2, 0.6)), "xyznuv", "Wood", False),
        ("Fence", lambda: box_mesh((-9.0, 0.0, -0.05), (9.0, 1.8, 0.05)), "xyznuv", "Steel", False),
    ],
}
# Models written in the current clients' processed form.
PROCESSED_GARAGE_MODELS = {("Hangar_Premium", "Floor")}
GARAGE_PACKAGES = {"Hangar_Premium": "garage_premium.pkg", "Hangar_Basic": "garage_basic.pkg"}


def garage_members(space):
    base = f"spaces/{space}"
    members = []
    textures = {}
    for name, make_mesh, fmt, colour_name, bumped in GARAGE_MODELS[space]:
        diffuse = f"{base}/textures/{colour_name}_AM.dds"
        textures[diffuse] = texture("DXT1", "panel", DETAIL_SIZE, GARAGE_COLOURS[colour_name])
        properties = [texture_property("diffuseMap", diffuse)]
        effect = "lightonly.fx"
        if bumped:
            normal = f"{base}/textures/{colour_name}_NM.dds"
            textures[normal] = texture("DXT1", "normal1", DETAIL_SIZE)
            properties += [texture_property("normalMap", normal),
                           flag_property("g_useNormalPackDXT1", "Bool", True)]
            effect = "normalmap_specmap.fx"
        model = f"{base}/models/{name}"
        tree = visual_tree([node(name)], name, name,
                           [material(name.lower(), effect, properties)])
        if (space, name) in PROCESSED_GARAGE_MODELS:
            suffix = gavrel_geometry.PROCESSED_SUFFIX
            members += [
                Member(model + ".model", model_file(model + ".visual"), STORED),
                Member(model + ".visual" + suffix, encode(tree), STORED),
                Member(model + ".primitives" + suffix,
                       processed_primitives_bytes(name, make_mesh(), fmt, False), DEFLATED),
            ]
            continue
        members += [
            Member(model + ".model", model_file(model + ".visual"), STORED),
            Member(model + ".visual", encode(tree), STORED),
            Member(model + ".primitives",
                   primitives_bytes(name, make_mesh(), fmt, False), DEFLATED),
        ]
    members += [Member(path, data, STORED) for path, data in textures.items()]
    return members


def shared_model_members():
    """A loose track block and a steel plate model of the shared archive."""
    track = gavrel_geometry.MeshBuilder()
    track.begin_group()
    track.box((-0.21, 0.0, -3.0), (0.21, 0.85, 3.0), uv_rect=(0.0, 0.0, 1.0, 4.0))
    plate = box_mesh((-1.0, 0.0, -1.0), (1.0, 0.05, 1.0))
    base = "vehicles/Common/Materials/Steel_Plate"
    tree = visual_tree([node("plate")], "plate", "Steel_Plate", [material(
        "steel_plate", "lightonly.fx", [texture_property("diffuseMap", base + ".dds")])])
    return [
        Member("vehicles/Common/Shared_Track.primitives",
               primitives_bytes("Shared_Track", track, "xyznuvtb", False), DEFLATED),
        Member(base + ".visual", encode(tree), STORED),
        Member(base + ".primitives", primitives_bytes("Steel_Plate", plate, "xyznuv", False),
               DEFLATED),
        Member(base + ".dds", texture("DXT1", "panel", DETAIL_SIZE, GARAGE_COLOURS["Steel"]),
               STORED),
    ]


