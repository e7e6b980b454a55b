// Index and vertex chunks from arbitrary bytes. The first byte chooses the
// reader; for vertices, the rest is split into a vertex chunk (plain or
// processed) and a uv2 stream (plain or with a processed header). Nothing may be read outside the
// chunk, and the decoded lists must agree with the counts reported.

#include "IndexBuffer.h"
#include "MeshGeometry.h"
#include "ReadFailure.h"
#include "VertexDecoding.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {
void decodeIndices(const QByteArray& chunk)
{
    MeshGeometry geometry;
    DecodedIndices decoded;
    if (decodeIndexChunk(chunk, geometry, decoded) == decoded.failure.failed())
        __builtin_trap(); // a chunk cut short says why, a whole one has no failure
    const qsizetype width = decoded.is32Bit ? 4 : 2;
    if (geometry.indices16.size() != qsizetype(geometry.triangleCount) * 3 ||
        decoded.glBytes.size() != geometry.indices16.size() * width ||
        geometry.indices16.size() > chunk.size())
        __builtin_trap();
    if (decoded.is32Bit && geometry.indices32.size() != geometry.indices16.size())
        __builtin_trap();
}

void decodeVertexChunk(const QByteArray& chunk, const QByteArray& streamBytes)
{
    VertexChunkHeader header;
    const bool readable = readVertexChunkHeader(chunk, header);
    if (readable != header.problem.isEmpty())
        __builtin_trap(); // a refused header says why
    const quint32 present = vertexRecordsPresent(header, chunk);
    // A processed chunk is read whole or not at all.
    if (readable && header.processed() && header.format != VertexFormat::Unknown &&
        present != header.vertexCount)
        __builtin_trap();
    // The caller's buffer is sized by what the chunk holds, as the buffer
    // manager does.
    header.vertexCount = present;
    QVector<Vector2> stream;
    const bool withStream = takesUvStream(header.format) && !streamBytes.isEmpty();
    ReadFailure failure;
    if (withStream &&
        !readUvStream(streamValues(streamBytes), header.vertexCount, stream, failure) &&
        !failure.failed())
        __builtin_trap(); // a short stream says why
    const int floats = glFloatsPerVertex(header.format, withStream);
    std::vector<float> output(size_t(header.vertexCount) * size_t(floats));
    MeshGeometry geometry;
    decodeVertices(header, chunk, stream, geometry, output.data());
    if (readable && header.format != VertexFormat::Unknown &&
        geometry.positions.size() != qsizetype(header.vertexCount))
        __builtin_trap();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool quiet = [] {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        return true;
    }();
    Q_UNUSED(quiet);
    if (size < 1)
        return 0;

    const QByteArray rest(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    if ((data[0] & 1) == 0) {
        decodeIndices(rest);
        return 0;
    }
    // The second byte says how many of the last bytes form the stream.
    const qsizetype streamSize =
        rest.isEmpty() ? 0 : qMin<qsizetype>(quint8(rest[0]) * 8, rest.size() - 1);
    const QByteArray body = rest.mid(1);
    decodeVertexChunk(body.left(body.size() - streamSize), body.right(streamSize));
    return 0;
}
