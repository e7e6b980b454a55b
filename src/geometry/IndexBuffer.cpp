#include "IndexBuffer.h"

#include "GlFunctions.h"
#include "Log.h"
#include "MeshGeometry.h"

#include <QOpenGLFunctions_3_2_Core>
#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {
constexpr int FormatFieldSize = 64;
constexpr int HeaderSize = 72;
constexpr int GroupSize = 16;

const QString ShortWordRead = QStringLiteral("Error reading data: readInt()");

// The format name ends at its NUL or at the end of the field, whichever
// comes first; a chunk cut inside the field gives what is there.
QByteArray formatName(const QByteArray& chunk)
{
    const QByteArray field = chunk.left(FormatFieldSize);
    const qsizetype end = field.indexOf('\0');
    return end < 0 ? field : field.left(end);
}

quint32 wordAt(const char* data)
{
    return qFromLittleEndian<quint32>(data);
}

quint32 indexAt(const char* indices, qint64 position, bool is32Bit)
{
    if (is32Bit)
        return qFromLittleEndian<quint32>(indices + position * 4);
    return qFromLittleEndian<quint16>(indices + position * 2);
}

// Writes the triangles' indices, winding reversed, into the geometry's lists
// (after what they hold) and into glBytes in the chunk's own width: sized
// once and filled in place, as a large model has millions of them.
void copyReversedTriangles(const char* indices, qint64 triangles, bool is32Bit,
                           MeshGeometry& geometry, QByteArray& glBytes)
{
    const qint64 count = triangles * 3;
    const qint64 first16 = geometry.indices16.size();
    geometry.indices16.resize(first16 + count);
    quint16* low = geometry.indices16.data() + first16;
    quint32* wide = nullptr;
    if (is32Bit) {
        const qint64 first32 = geometry.indices32.size();
        geometry.indices32.resize(first32 + count);
        wide = geometry.indices32.data() + first32;
    }
    glBytes.resize(count * (is32Bit ? 4 : 2));
    char* gl = glBytes.data();
    for (qint64 triangle = 0; triangle < triangles; ++triangle) {
        for (int corner = 2; corner >= 0; --corner) {
            const qint64 position = triangle * 3 + corner;
            const quint32 index = indexAt(indices, position, is32Bit);
            *low++ = quint16(index);
            if (is32Bit) {
                *wide++ = index;
                std::memcpy(gl, &index, 4);
                gl += 4;
            } else {
                const quint16 narrow = quint16(index);
                std::memcpy(gl, &narrow, 2);
                gl += 2;
            }
        }
    }
}
} // namespace

// Indices are stored as the file has them, even those at or above the
// vertex count: the GL draw tolerates them, and every CPU reader of
// MeshGeometry (OBJ export, UV tool, collision) must check an index against
// positions.size() before using it. A surplus of one or two indices beyond
// the last whole triangle is dropped, and the triangle count and the GL
// bytes cover only the triangles that are really in the chunk, so neither
// can point past the lists.
bool decodeIndexChunk(const QByteArray& chunkBytes, MeshGeometry& geometry, DecodedIndices& out)
{
    out = DecodedIndices();
    out.is32Bit = formatName(chunkBytes).contains("list32");
    geometry.triangleCount = 0;
    if (chunkBytes.size() < HeaderSize) {
        Log::log(
            QStringLiteral("Index chunk too short for its header: %1 bytes").arg(chunkBytes.size()),
            Log::Warning);
        out.failure.record(ShortWordRead);
        return false;
    }

    const char* data = chunkBytes.constData();
    const qint64 indexCount = wordAt(data + 64);
    const qint64 groupCount = wordAt(data + 68);
    const qint64 width = out.is32Bit ? 4 : 2;
    bool complete = true;

    const qint64 indicesPresent = std::min(indexCount, (chunkBytes.size() - HeaderSize) / width);
    if (indicesPresent < indexCount) {
        Log::log(QStringLiteral("Index chunk holds %1 of its %2 indices")
                     .arg(indicesPresent)
                     .arg(indexCount),
                 Log::Warning);
        out.failure.record(out.is32Bit ? QStringLiteral("Error reading data: readIntUnsigned()")
                                       : QStringLiteral("Error reading data: readShortUnsigned()"));
        complete = false;
    }
    const qint64 triangles = indicesPresent / 3;
    geometry.triangleCount = quint32(triangles);
    copyReversedTriangles(data + HeaderSize, triangles, out.is32Bit, geometry, out.glBytes);

    const qint64 groupStart = HeaderSize + indexCount * width;
    const qint64 groupBytes = std::max<qint64>(0, chunkBytes.size() - groupStart);
    const qint64 groupsPresent = std::min(groupCount, groupBytes / GroupSize);
    if (groupsPresent < groupCount) {
        Log::log(QStringLiteral("Index chunk holds %1 of its %2 primitive groups")
                     .arg(groupsPresent)
                     .arg(groupCount),
                 Log::Warning);
        out.failure.record(ShortWordRead);
        complete = false;
    }
    for (qint64 number = 0; number < groupsPresent; ++number) {
        const char* record = data + groupStart + number * GroupSize;
        PrimitiveGroup group;
        group.startIndex = qint32(wordAt(record));
        group.primitiveCount = qint32(wordAt(record + 4));
        group.startVertex = qint32(wordAt(record + 8));
        group.vertexCount = qint32(wordAt(record + 12));
        out.groups.append(group);
    }
    return complete;
}

IndexBuffer::IndexBuffer(const QByteArray& chunkBytes, MeshGeometry* geometry)
{
    MeshGeometry scratch;
    DecodedIndices decoded;
    decodeIndexChunk(chunkBytes, geometry ? *geometry : scratch, decoded);
    decoded.failure.showClosingBox();
    is32Bit = decoded.is32Bit;

    for (const PrimitiveGroup& group : decoded.groups) {
        groups.append(new PrimitiveGroup(group));
        // Summed in 64 bits and capped, so that a huge group cannot wrap
        // round to a small count that a bounds check would let through.
        const quint64 end = quint64(quint32(group.startVertex)) + quint32(group.vertexCount);
        vertexCount = std::max(vertexCount, quint32(std::min<quint64>(end, 0xFFFFFFFFu)));
    }

    buffer = new GlBuffer;
    buffer->byteSize = quint32(decoded.glBytes.size());
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;
    gl->glGenBuffers(1, &buffer->name);
    gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffer->name);
    gl->glBufferData(GL_ELEMENT_ARRAY_BUFFER, buffer->byteSize, nullptr, GL_STATIC_DRAW);
    // A buffer of no bytes cannot be mapped.
    if (buffer->byteSize > 0) {
        void* target = gl->glMapBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_WRITE_ONLY);
        if (target) {
            std::memcpy(target, decoded.glBytes.constData(), buffer->byteSize);
            gl->glUnmapBuffer(GL_ELEMENT_ARRAY_BUFFER);
        } else {
            Log::log(QStringLiteral("Could not map an index buffer"), Log::Warning);
        }
    }
    gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
}

IndexBuffer::~IndexBuffer()
{
    release();
}

void IndexBuffer::release()
{
    if (buffer) {
        // Without a current context the name cannot be freed; the context's
        // own end takes the buffer with it.
        QOpenGLFunctions_3_2_Core* gl = glFunctions();
        if (gl && buffer->name)
            gl->glDeleteBuffers(1, &buffer->name);
        delete buffer;
        buffer = nullptr;
    }
    qDeleteAll(groups);
    groups.clear();
}

void IndexBuffer::drawGroup(const PrimitiveGroup& group) const
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl || !buffer || group.startIndex < 0 || group.primitiveCount <= 0)
        return;
    // A group reaching past the buffer would make GL read beyond it.
    const quint64 end =
        (quint64(group.startIndex) + quint64(group.primitiveCount) * 3) * quint64(indexWidth());
    if (end > buffer->byteSize)
        return;
    gl->glDrawElements(GL_TRIANGLES, group.primitiveCount * 3,
                       is32Bit ? GL_UNSIGNED_INT : GL_UNSIGNED_SHORT,
                       reinterpret_cast<const void*>(quintptr(group.startIndex) * indexWidth()));
}
