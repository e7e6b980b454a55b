#pragma once

// Writes small .primitives files for tests, straight from the file layout:
// chunk payloads padded to 4 bytes, then the chunk table, then its length.

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QtEndian>

#include <array>
#include <cmath>
#include <cstring>
#include <initializer_list>

namespace primitives {

inline void appendU32(QByteArray& out, quint32 value)
{
    const quint32 little = qToLittleEndian(value);
    out.append(reinterpret_cast<const char*>(&little), 4);
}

inline void appendFloat(QByteArray& out, float value)
{
    quint32 bits;
    std::memcpy(&bits, &value, 4);
    appendU32(out, bits);
}

inline QByteArray word(quint32 value)
{
    QByteArray out;
    appendU32(out, value);
    return out;
}

inline QByteArray floats(std::initializer_list<float> values)
{
    QByteArray out;
    for (float value : values)
        appendFloat(out, value);
    return out;
}

inline void padTo4(QByteArray& out, char fill = '\0')
{
    while (out.size() % 4)
        out.append(fill);
}

inline QByteArray formatName(const QByteArray& name)
{
    QByteArray field = name;
    field.resize(64, '\0');
    return field;
}

using Chunk = QPair<QByteArray, QByteArray>; // name, payload

// One entry of the chunk table; the top bit of sizeWord is a flag.
inline QByteArray tableEntry(quint32 sizeWord, const QByteArray& name, char fill = '\0')
{
    QByteArray entry;
    appendU32(entry, sizeWord);
    entry.append(QByteArray(16, '\0'));
    appendU32(entry, quint32(name.size()));
    entry.append(name);
    padTo4(entry, fill);
    return entry;
}

// `fill` pads payloads and names, so a reader that leans on zero padding
// can be caught.
inline QByteArray file(const QList<Chunk>& chunks, char fill = '\0')
{
    QByteArray out;
    appendU32(out, 0x42A14E65);
    QByteArray table;
    for (const Chunk& chunk : chunks) {
        out.append(chunk.second);
        padTo4(out, fill);
        table.append(tableEntry(quint32(chunk.second.size()), chunk.first, fill));
    }
    out.append(table);
    appendU32(out, quint32(table.size()));
    return out;
}

struct Vertex
{
    std::array<float, 3> position;
    std::array<float, 3> normal;
    std::array<float, 2> uv;
};

// An "xyznuv" vertex chunk (float normals).
inline QByteArray xyznuvChunk(const QList<Vertex>& vertices)
{
    QByteArray out = formatName("xyznuv");
    appendU32(out, quint32(vertices.size()));
    for (const Vertex& v : vertices) {
        for (float f : v.position)
            appendFloat(out, f);
        for (float f : v.normal)
            appendFloat(out, f);
        for (float f : v.uv)
            appendFloat(out, f);
    }
    return out;
}

// The vector of processed chunks: x, y, z as unsigned bytes over -1..1,
// byte 3 zero.
inline quint32 byteVector(const std::array<float, 3>& v)
{
    auto byte = [](float value) { return quint32(std::lround((value + 1.0f) * 127.5f)); };
    return byte(v[0]) | byte(v[1]) << 8 | byte(v[2]) << 16;
}

// A processed chunk's two headers: the outer name ("BPVT..." or
// "BPVS...") with a count of 0, then the inner name and the real count.
inline QByteArray processedHeader(const QByteArray& outer, const QByteArray& inner, quint32 count)
{
    QByteArray out = formatName(outer);
    appendU32(out, 0);
    out += formatName(inner);
    appendU32(out, count);
    return out;
}

// A processed "set3/xyznuvpc" vertex chunk.
inline QByteArray xyznuvpcChunk(const QList<Vertex>& vertices)
{
    QByteArray out = processedHeader("BPVTxyznuv", "set3/xyznuvpc", quint32(vertices.size()));
    for (const Vertex& v : vertices) {
        for (float f : v.position)
            appendFloat(out, f);
        appendU32(out, byteVector(v.normal));
        for (float f : v.uv)
            appendFloat(out, f);
    }
    return out;
}

struct Group
{
    qint32 startIndex, primitiveCount, startVertex, vertexCount;
};

inline QByteArray indexChunk(const QList<quint32>& indices, const QList<Group>& groups,
                             bool wide = false)
{
    QByteArray out = formatName(wide ? "list32" : "list");
    appendU32(out, quint32(indices.size()));
    appendU32(out, quint32(groups.size()));
    for (quint32 index : indices) {
        if (wide) {
            appendU32(out, index);
        } else {
            const quint16 little = qToLittleEndian(quint16(index));
            out.append(reinterpret_cast<const char*>(&little), 2);
        }
    }
    for (const Group& g : groups) {
        appendU32(out, quint32(g.startIndex));
        appendU32(out, quint32(g.primitiveCount));
        appendU32(out, quint32(g.startVertex));
        appendU32(out, quint32(g.vertexCount));
    }
    return out;
}

// A flat grid of quads in the xz plane, facing +y, with uvs spread over
// [u0, u0 + span]: 2 * cells * cells triangles.
inline void quadGrid(int cells, float u0, float span, QList<Vertex>& vertices,
                     QList<quint32>& indices)
{
    const quint32 base = quint32(vertices.size());
    for (int z = 0; z <= cells; ++z)
        for (int x = 0; x <= cells; ++x)
            vertices.append(Vertex{{float(x), 0, float(z)},
                                   {0, 1, 0},
                                   {u0 + span * x / cells, u0 + span * z / cells}});
    const int row = cells + 1;
    for (int z = 0; z < cells; ++z)
        for (int x = 0; x < cells; ++x) {
            const quint32 a = base + quint32(z * row + x);
            indices << a << a + 1 << a + quint32(row);
            indices << a + 1 << a + quint32(row) + 1 << a + quint32(row);
        }
}

} // namespace primitives
