"""Processed parts in the formats of newer clients, beyond the two that the
other processed parts use: the chassis skinned (set3/xyznuviiiwwtbpc, drawn
in its bind pose) and the hull's second uv in a processed stream chunk
(set3/uv2pc) named "uv2"."""
import struct

from . import geometry as gavrel_geometry

SKINNED_FORMAT = "set3/xyznuviiiwwtbpc"
UV2_STREAM_FORMAT = "set3/uv2pc"
# Strides of the set3 formats, for readers of the sample.
SET3_STRIDES = {"set3/xyznuvpc": 24, "set3/xyznuvtbpc": 32, SKINNED_FORMAT: 40}

# Bone indices: a pad, then the indices times 3 in reverse order; weights:
# two pads, then the second and the first weight. Every vertex follows bone
# 0 in full.
BONES = bytes([0, 0, 0, 0])
WEIGHTS = bytes([0, 0, 0, 255])


def skinned_record(vertex):
    pos, normal, uv, tangent, binormal = vertex
    byte_vector = gavrel_geometry.byte_vector
    return (struct.pack("<3f", *pos) + byte_vector(normal) + struct.pack("<2f", *uv)
            + BONES + WEIGHTS + byte_vector(tangent) + byte_vector(binormal))


def skinned_vertex_chunk(vertices):
    return (gavrel_geometry.double_header("BPVTxyznuviiiwwtb", SKINNED_FORMAT, len(vertices))
            + b"".join(skinned_record(v) for v in vertices))


def uv2_stream_chunk(pairs):
    return (gavrel_geometry.double_header("BPVSuv2", UV2_STREAM_FORMAT, len(pairs))
            + b"".join(struct.pack("<2f", *pair) for pair in pairs))


def stream_name(part):
    """The stream a processed part's visual names."""
    return "uv2" if part == "Hull" else "colour"


def processed_primitives_bytes(part, mesh, fmt, wide):
    """The .primitives_processed of a part: the chassis skinned, the hull
    with a uv2 stream beside its colour stream, the others as before."""
    if part == "Chassis":
        vertices = skinned_vertex_chunk(mesh.vertices)
    else:
        vertices = gavrel_geometry.processed_vertex_chunk(fmt, mesh.vertices)
    chunks = [(f"{part}.vertices", vertices),
              (f"{part}.indices", gavrel_geometry.index_chunk(mesh.indices, mesh.groups(), wide)),
              ("colour", gavrel_geometry.colour_stream_chunk(len(mesh.vertices)))]
    if part == "Hull":
        chunks.append(("uv2", uv2_stream_chunk(mesh.uv2())))
    return gavrel_geometry.primitives_file(chunks + gavrel_geometry.bsp2_chunks())
