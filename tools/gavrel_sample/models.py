"""Models in the game's formats: .primitives files from meshes, .visual
documents (node tree, render set, materials) and the .model beside each
visual. Sizes are metres in the game's own axes: y up, front towards +z."""
from . import geometry as gavrel_geometry
from .packed_xml import Element, Floats, encode, plain_text

EFFECT_DIR = "shaders/std_effects/"


def primitives_bytes(part, mesh, fmt, wide, with_uv2=False):
    chunks = [(f"{part}.vertices", gavrel_geometry.vertex_chunk(fmt, mesh.vertices)),
              (f"{part}.indices", gavrel_geometry.index_chunk(mesh.indices, mesh.groups(), wide))]
    if with_uv2:
        chunks.append(("uv2", gavrel_geometry.uv_stream_chunk(mesh.uv2())))
    return gavrel_geometry.primitives_file(chunks)


def processed_primitives_bytes(part, mesh, fmt, wide):
    """The .primitives_processed form: set3 vertices, the same indices, a
    colour stream and the bsp2 chunks."""
    chunks = [(f"{part}.vertices", gavrel_geometry.processed_vertex_chunk(fmt, mesh.vertices)),
              (f"{part}.indices", gavrel_geometry.index_chunk(mesh.indices, mesh.groups(), wide)),
              ("colour", gavrel_geometry.colour_stream_chunk(len(mesh.vertices)))]
    return gavrel_geometry.primitives_file(chunks + gavrel_geometry.bsp2_chunks())


def transform(translation=(0.0, 0.0, 0.0), scale=(1.0, 1.0, 1.0)):
    sx, sy, sz = scale
    return Floats(sx, 0, 0, 0, sy, 0, 0, 0, sz, *translation)


def node(identifier, children=(), translation=(0.0, 0.0, 0.0), scale=(1.0, 1.0, 1.0)):
    return Element(None, [("identifier", identifier),
                          ("transform", transform(translation, scale))]
                   + [("node", child) for child in children])


def texture_property(name, path):
    return ("property", Element(name, {"Texture": path}))


def flag_property(name, kind, value):
    return ("property", Element(name, {kind: value}))


def material(identifier, effect, properties, effect_last=False):
    fx = [("fx", EFFECT_DIR + effect)]
    head = [("identifier", identifier)]
    return Element(None, head + properties + fx if effect_last else head + fx + properties)


def geometry(part, groups, stream=None):
    """groups: the material of group 0, 1, ..."""
    children = [("vertices", f"{part}.vertices"), ("primitive", f"{part}.indices")]
    if stream:
        children.append(("stream", stream))
    children += [("primitiveGroup", Element(number, {"material": m}))
                 for number, m in enumerate(groups)]
    return Element(None, children)


def visual_tree(root_children, render_node, part, groups, stream=None):
    return Element(None, [
        ("node", node("Scene Root", root_children)),
        ("renderSet", Element(None, [
            ("treatAsWorldSpaceObject", False),
            ("node", render_node),
            ("geometry", geometry(part, groups, stream)),
        ])),
    ])

def model_file(visual_path):
    """The .model beside a visual: the program never opens it."""
    stem = visual_path.rsplit(".", 1)[0]
    return encode({"nodefullVisual": stem})


def xml_file(name, tree, plain):
    """The bytes of a file named name (root tag from its last component)."""
    return plain_text(name.rsplit("/", 1)[-1], tree) if plain else encode(tree)

