#include "BufferManager.h"

#include "GlFunctions.h"
#include "Log.h"
#include "MeshGeometry.h"
#include "ReadFailure.h"
#include "VertexBuffer.h"
#include "VertexDecoding.h"

#include <QOpenGLFunctions_3_2_Core>

#include <vector>

namespace {
// Decodes into the mapped GL buffer; where there is none (no context, a
// failed map, no bytes) into scratch memory, so the geometry is filled all
// the same.
void fillBuffer(const VertexChunkHeader& header, const QByteArray& chunkBytes,
                const QVector<Vector2>& stream, MeshGeometry& geometry, VertexBuffer& buffer)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (gl && buffer.vbo && buffer.byteSize > 0) {
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer.vbo);
        if (void* target = gl->glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY)) {
            decodeVertices(header, chunkBytes, stream, geometry, static_cast<float*>(target));
            gl->glUnmapBuffer(GL_ARRAY_BUFFER);
            gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
            return;
        }
        gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
        Log::log(QStringLiteral("Could not map a vertex buffer"), Log::Warning);
    }
    std::vector<float> scratch(size_t(buffer.byteSize / sizeof(float)) + 1);
    decodeVertices(header, chunkBytes, stream, geometry, scratch.data());
}
} // namespace

BufferManager::BufferManager(QObject* parent) : QObject(parent) {}

BufferManager::~BufferManager()
{
    for (const Entry& entry : std::as_const(buffers))
        delete entry.buffer; // frees its GL objects if a context is current
    buffers.clear();
}

VertexBuffer* BufferManager::createVertexBuffer(const QString& name, const QByteArray& chunkBytes,
                                                MeshGeometry* geometry,
                                                const QByteArray& streamBytes)
{
    auto* buffer = new VertexBuffer;
    buffers.append({buffer, name});

    VertexChunkHeader header;
    if (!readVertexChunkHeader(chunkBytes, header)) {
        // Nothing of a chunk whose header does not fit is drawn: the
        // geometry stays empty and its groups find no vertices.
        Log::log(QStringLiteral("Vertex chunk ") + name + QStringLiteral(": ") + header.problem,
                 Log::Warning);
        return buffer;
    }
    if (header.format == VertexFormat::Unknown) {
        Log::log(QStringLiteral("Vertex format not supported:") +
                     QString::fromLatin1(header.formatName),
                 Log::Error);
        return buffer;
    }

    // A chunk shorter than its count gets a buffer of the records it holds:
    // a count from a damaged file could ask for gigabytes, and no draw can
    // then reach memory that holds nothing decoded.
    const quint32 present = vertexRecordsPresent(header, chunkBytes);
    if (present < header.vertexCount) {
        Log::log(QStringLiteral("Vertex chunk %1 holds %2 of its %3 vertices")
                     .arg(name)
                     .arg(present)
                     .arg(header.vertexCount),
                 Log::Warning);
        header.vertexCount = present;
    }

    const bool withStream = takesUvStream(header.format) && !streamBytes.isEmpty();
    buffer->setAttributes(glVertexLayout(header.format, withStream));

    MeshGeometry scratch;
    MeshGeometry& target = geometry ? *geometry : scratch;
    QVector<Vector2> stream;
    if (withStream) {
        ReadFailure failure;
        readUvStream(streamValues(streamBytes), header.vertexCount, stream, failure);
        failure.showClosingBox();
        target.uv2s += stream;
    }
    buffer->create(header.vertexCount, nullptr);
    // create() may have refused a size; decode no more than it made room for.
    header.vertexCount = buffer->vertexCount;
    fillBuffer(header, chunkBytes, stream, target, *buffer);
    return buffer;
}

void BufferManager::releaseVertexBuffer(VertexBuffer* buffer)
{
    for (int i = 0; i < buffers.size(); ++i) {
        if (buffers[i].buffer == buffer) {
            buffers.removeAt(i);
            delete buffer;
            return;
        }
    }
}
