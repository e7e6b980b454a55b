"""Writer of Gavrel's .primitives geometry container, and simple shape
builders (boxes, prisms, cylinders) for the sample installation's models.
Python 3 standard library only.

Coordinates are the game's own: the reader mirrors x and reverses every
triangle, two flips that cancel, so triangles are written counter-clockwise
seen from outside here, exactly as they must appear after loading. Normals
point outward.
"""
import math
import struct
from functools import lru_cache

MAGIC = 0x42A14E65

FORMAT_STRIDES = {"xyznuv": 32, "xyznuvtb": 32, "xyznuviiiwwtb": 37}


# ------------------------------------------------------------ small vectors

def sub(a, b):
    return tuple(x - y for x, y in zip(a, b))


def add(a, b):
    return tuple(x + y for x, y in zip(a, b))


def scale(a, s):
    return tuple(x * s for x in a)


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def normalize(a):
    length = math.sqrt(dot(a, a))
    return tuple(x / length for x in a) if length else (0.0, 0.0, 0.0)


# ------------------------------------------------------------ encoding

def pack_component(value, bits, factor):
    limit = (1 << (bits - 1)) - 1
    field = max(-limit, min(limit, round(value * factor)))
    return field & ((1 << bits) - 1)


@lru_cache(maxsize=4096)
def pack_vector(v):
    """Three signed fields in one word: x in bits 0-10 and y in 11-21
    (value x 1023), z in 22-31 (value x 511)."""
    return (pack_component(v[0], 11, 1023) | pack_component(v[1], 11, 1023) << 11
            | pack_component(v[2], 10, 511) << 22)


def format_field(name):
    data = name.encode("ascii")
    if len(data) >= 64:
        raise ValueError("format name too long")
    return data + bytes(64 - len(data))


def vertex_record(fmt, vertex):
    pos, normal, uv, tangent, binormal = vertex
    kind = fmt.lower()
    if kind == "xyznuv":
        return struct.pack("<8f", *pos, *normal, *uv)
    if kind == "xyznuvtb":
        return struct.pack("<3fI2fII", *pos, pack_vector(normal), *uv,
                           pack_vector(tangent), pack_vector(binormal))
    if kind == "xyznuviiiwwtb":
        # one bone, full weight: the model is rigid
        return struct.pack("<3fI2f3B2BII", *pos, pack_vector(normal), *uv,
                           0, 0, 0, 255, 0, pack_vector(tangent), pack_vector(binormal))
    raise ValueError(f"unknown vertex format {fmt}")


def vertex_chunk(fmt, vertices):
    return (format_field(fmt) + struct.pack("<I", len(vertices))
            + b"".join(vertex_record(fmt, v) for v in vertices))


# ------------------------------------------------------------ processed form

# Current clients ship models as <name>.visual_processed and
# <name>.primitives_processed. Their vertex chunks carry two headers: "BPVT"
# + the old format name with a count of 0, then the "set3/..." format and
# the real count, then the records. Vectors are three unsigned bytes.
PROCESSED_FORMATS = {"xyznuv": ("xyznuv", "set3/xyznuvpc"),
                     "xyznuvtb": ("xyznuvtb", "set3/xyznuvtbpc"),
                     # rigid models lose their bone bytes
                     "xyznuviiiwwtb": ("xyznuvtb", "set3/xyznuvtbpc")}
PROCESSED_STRIDES = {"set3/xyznuvpc": 24, "set3/xyznuvtbpc": 32}
PROCESSED_SUFFIX = "_processed"


def byte_vector(v):
    """x, y, z each mapped from -1..1 onto 0..255 (b / 255 * 2 - 1 reads it
    back); byte 3 is 0."""
    return bytes(max(0, min(255, round((c + 1) / 2 * 255))) for c in v) + b"\0"


def processed_vertex_record(fmt, vertex):
    pos, normal, uv, tangent, binormal = vertex
    record = struct.pack("<3f", *pos) + byte_vector(normal) + struct.pack("<2f", *uv)
    if fmt == "set3/xyznuvtbpc":
        record += byte_vector(tangent) + byte_vector(binormal)
    return record


def double_header(outer, inner, count):
    """The two 64-byte names and counts in front of processed data."""
    return (format_field(outer) + struct.pack("<I", 0)
            + format_field(inner) + struct.pack("<I", count))


def processed_vertex_chunk(fmt, vertices):
    """fmt: the old format the model would have; the chunk carries its set3 form."""
    old, new = PROCESSED_FORMATS[fmt.lower()]
    return (double_header("BPVT" + old, new, len(vertices))
            + b"".join(processed_vertex_record(new, v) for v in vertices))


def colour_stream_chunk(count, colour=(255, 255, 255, 255)):
    """A processed "colour" stream: one 4-byte colour per vertex."""
    return double_header("BPVScolour", "colour", count) + bytes(colour) * count


def bsp2_chunks():
    """The chunks that sit beside the geometry in processed files, of no
    use for drawing: a tree of planes and its material list."""
    planes = struct.pack("<4I", 1, 0, 0, 0) + struct.pack("<4f", 0.0, 1.0, 0.0, 0.0)
    return [("bsp2", b"BSP2" + planes), ("bsp2_materials", b"\x01\0\0\0" + b"default\0")]


def index_chunk(indices, groups, wide):
    """groups: (startIndex, primitiveCount, startVertex, vertexCount) each."""
    fmt = "list32" if wide else "list"
    code = "I" if wide else "H"
    if not wide and indices and max(indices) > 0xFFFF:
        raise ValueError("16-bit index list with an index above 65535")
    return (format_field(fmt) + struct.pack("<II", len(indices), len(groups))
            + struct.pack(f"<{len(indices)}{code}", *indices)
            + b"".join(struct.pack("<4I", *g) for g in groups))


def uv_stream_chunk(uvs):
    return b"".join(struct.pack("<2f", *uv) for uv in uvs)


def pad4(data):
    return data + bytes(-len(data) % 4)


def primitives_file(chunks):
    """The container: magic, padded payloads, the table, the table's length.
    chunks: (name, payload) in table order."""
    payloads = b"".join(pad4(payload) for _, payload in chunks)
    table = b""
    for name, payload in chunks:
        raw = name.encode("ascii")
        table += struct.pack("<I", len(payload)) + bytes(16) + struct.pack("<I", len(raw))
        table += pad4(raw)
    return struct.pack("<I", MAGIC) + payloads + table + struct.pack("<I", len(table))


# ------------------------------------------------------------ shapes

class MeshBuilder:
    """Vertices (position, normal, uv, tangent, binormal) and a triangle list,
    split into primitive groups in the order they are opened."""

    def __init__(self, divisions=1):
        self.vertices = []
        self.indices = []
        self.group_starts = []
        self.divisions = divisions  # cells a side of each flat face

    def begin_group(self):
        self.group_starts.append((len(self.indices), len(self.vertices)))

    def groups(self):
        """(startIndex, primitiveCount, startVertex, vertexCount) of each group."""
        result = []
        ends = self.group_starts[1:] + [(len(self.indices), len(self.vertices))]
        for (i0, v0), (i1, v1) in zip(self.group_starts, ends):
            result.append((i0, (i1 - i0) // 3, v0, v1 - v0))
        return result

    def add_vertex(self, pos, normal, uv, tangent, binormal):
        self.vertices.append((tuple(pos), normalize(normal), tuple(uv),
                              normalize(tangent), normalize(binormal)))
        return len(self.vertices) - 1

    def add_triangle(self, a, b, c, outward):
        """Indices a, b, c, turned so they run counter-clockwise from outside."""
        pa, pb, pc = (self.vertices[i][0] for i in (a, b, c))
        if dot(cross(sub(pb, pa), sub(pc, pa)), outward) < 0:
            b, c = c, b
        self.indices += [a, b, c]

    def quad(self, corners, normal, uv_rect=(0.0, 0.0, 1.0, 1.0)):
        """A flat face p0 p1 p2 p3 (around its edge); u runs p0 -> p1,
        v runs p0 -> p3. With divisions above 1 the face is a grid of that
        many cells a side (the corners must then form a parallelogram)."""
        if self.divisions > 1:
            return self.grid(corners, normal, uv_rect)
        p0, p1, p2, p3 = corners
        u0, v0, u1, v1 = uv_rect
        tangent = normalize(sub(p1, p0))
        binormal = normalize(sub(p3, p0))
        uvs = ((u0, v0), (u1, v0), (u1, v1), (u0, v1))
        first = len(self.vertices)
        for p, uv in zip(corners, uvs):
            self.add_vertex(p, normal, uv, tangent, binormal)
        self.add_triangle(first, first + 1, first + 2, normal)
        self.add_triangle(first, first + 2, first + 3, normal)

    def grid(self, corners, normal, uv_rect):
        p0, p1, _, p3 = corners
        u0, v0, u1, v1 = uv_rect
        n = self.divisions
        along_u, along_v = sub(p1, p0), sub(p3, p0)
        frame = (normalize(normal), normalize(along_u), normalize(along_v))
        first = len(self.vertices)
        for j in range(n + 1):
            for i in range(n + 1):
                p = tuple(o + a * i / n + b * j / n for o, a, b in zip(p0, along_u, along_v))
                uv = (u0 + (u1 - u0) * i / n, v0 + (v1 - v0) * j / n)
                self.vertices.append((p, frame[0], uv, frame[1], frame[2]))
        # every cell turns the same way: test the first, then write them all
        flip = dot(cross(along_u, along_v), normal) < 0
        for j in range(n):
            for i in range(n):
                a = first + j * (n + 1) + i
                b, c, d = a + 1, a + n + 2, a + n + 1
                self.indices += [a, c, b, a, d, c] if flip else [a, b, c, a, c, d]

    def box(self, lo, hi, uv_rect=(0.0, 0.0, 1.0, 1.0)):
        """An axis-aligned box between corners lo and hi."""
        self.prism([(lo[2], lo[1]), (hi[2], lo[1]), (hi[2], hi[1]), (lo[2], hi[1])],
                   lo[0], hi[0], uv_rect)

    def prism(self, profile, x0, x1, uv_rect=(0.0, 0.0, 1.0, 1.0)):
        """A convex profile of (z, y) points, in order around its edge, swept
        from x0 to x1: side faces plus two flat ends."""
        n = len(profile)
        cz = sum(p[0] for p in profile) / n
        cy = sum(p[1] for p in profile) / n
        for i in range(n):
            (za, ya), (zb, yb) = profile[i], profile[(i + 1) % n]
            edge_mid = ((za + zb) / 2 - cz, (ya + yb) / 2 - cy)
            normal = normalize((0.0, zb - za, -(yb - ya)))
            normal = (0.0, normal[1], normal[2])
            if normal[2] * edge_mid[0] + normal[1] * edge_mid[1] < 0:
                normal = scale(normal, -1)
            self.quad([(x0, ya, za), (x1, ya, za), (x1, yb, zb), (x0, yb, zb)], normal, uv_rect)
        zs = [p[0] for p in profile]
        ys = [p[1] for p in profile]
        zmin, zmax, ymin, ymax = min(zs), max(zs), min(ys), max(ys)
        u0, v0, u1, v1 = uv_rect
        for x, sign in ((x0, -1.0), (x1, 1.0)):
            first = len(self.vertices)
            for z, y in profile:
                uv = (u0 + (u1 - u0) * (z - zmin) / (zmax - zmin),
                      v0 + (v1 - v0) * (y - ymin) / (ymax - ymin))
                self.add_vertex((x, y, z), (sign, 0, 0), uv, (0, 0, 1), (0, 1, 0))
            for i in range(1, n - 1):
                self.add_triangle(first, first + i, first + i + 1, (sign, 0.0, 0.0))

    def cylinder(self, axis, centre, radius, start, end, segments=16,
                 uv_rect=(0.0, 0.0, 1.0, 1.0), end_radius=None):
        """A closed cylinder along axis ("x", "y" or "z") through centre, from
        axial coordinate start to end; smooth sides, flat caps. With
        end_radius, a truncated cone narrowing (or widening) towards end."""
        end_radius = radius if end_radius is None else end_radius
        slope = (radius - end_radius) / (end - start)
        segments *= self.divisions
        k = "xyz".index(axis)
        i, j = [a for a in range(3) if a != k]

        def point(angle, w, r=None):
            if r is None:
                r = radius + (w - start) / (end - start) * (end_radius - radius)
            p = list(centre)
            p[i] += r * math.cos(angle)
            p[j] += r * math.sin(angle)
            p[k] = w
            return tuple(p)

        def direction(values):
            d = [0.0, 0.0, 0.0]
            for axis_index, value in values:
                d[axis_index] = value
            return tuple(d)

        u0, v0, u1, v1 = uv_rect
        along = direction([(k, 1.0)])
        ring = []
        for s in range(segments + 1):
            angle = 2 * math.pi * s / segments
            normal = direction([(i, math.cos(angle)), (j, math.sin(angle)), (k, slope)])
            tangent = direction([(i, -math.sin(angle)), (j, math.cos(angle))])
            u = u0 + (u1 - u0) * s / segments
            ring.append((self.add_vertex(point(angle, start), normal, (u, v0), tangent, along),
                         self.add_vertex(point(angle, end), normal, (u, v1), tangent, along)))
        for s in range(segments):
            (a, b), (c, d) = ring[s], ring[s + 1]
            mid = 2 * math.pi * (s + 0.5) / segments
            outward = direction([(i, math.cos(mid)), (j, math.sin(mid)), (k, slope)])
            self.add_triangle(a, c, d, outward)
            self.add_triangle(a, d, b, outward)
        for w, other in ((start, end), (end, start)):
            normal = scale(along, 1.0 if w > other else -1.0)
            centre_uv = ((u0 + u1) / 2, (v0 + v1) / 2)
            hub = self.add_vertex(point(0.0, w, 0.0), normal, centre_uv,
                                  direction([(i, 1.0)]), direction([(j, 1.0)]))
            rim = []
            for s in range(segments):
                angle = 2 * math.pi * s / segments
                uv = (centre_uv[0] + 0.5 * (u1 - u0) * math.cos(angle),
                      centre_uv[1] + 0.5 * (v1 - v0) * math.sin(angle))
                rim.append(self.add_vertex(point(angle, w), normal, uv,
                                           direction([(i, 1.0)]), direction([(j, 1.0)])))
            for s in range(segments):
                self.add_triangle(hub, rim[s], rim[(s + 1) % segments], normal)

    def uv2(self):
        """A second texture set: the first one halved, as a lightmap would be."""
        return [(v[2][0] * 0.5, v[2][1] * 0.5) for v in self.vertices]


class ScaledMeshBuilder(MeshBuilder):
    """A MeshBuilder whose boxes, prisms and cylinders are stretched by
    factors (x, y, z) before they are built, so that normals follow the
    stretched faces; a cylinder's radius takes the mean of the factors
    across its axis."""

    def __init__(self, divisions=1, factors=(1.0, 1.0, 1.0)):
        super().__init__(divisions)
        self.factors = factors

    def prism(self, profile, x0, x1, uv_rect=(0.0, 0.0, 1.0, 1.0)):
        fx, fy, fz = self.factors
        super().prism([(z * fz, y * fy) for z, y in profile], x0 * fx, x1 * fx, uv_rect)

    def cylinder(self, axis, centre, radius, start, end, segments=16,
                 uv_rect=(0.0, 0.0, 1.0, 1.0), end_radius=None):
        k = "xyz".index(axis)
        across = sum(f for a, f in enumerate(self.factors) if a != k) / 2
        centre = tuple(c * f for c, f in zip(centre, self.factors))
        super().cylinder(axis, centre, radius * across, start * self.factors[k],
                         end * self.factors[k], segments, uv_rect,
                         None if end_radius is None else end_radius * across)
