// .primitives containers from arbitrary bytes: the table walk must stay
// inside the file, and every chunk it yields must hold exactly its size.
// Every chunk then goes through the vertex decoder as a model's vertex
// chunk would, plain or processed.

#include "MeshGeometry.h"
#include "PrimitiveParser.h"
#include "ReadFailure.h"
#include "VertexDecoding.h"

#include <QBuffer>
#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {
void decodeAsVertices(const QByteArray& chunk)
{
    VertexChunkHeader header;
    if (!readVertexChunkHeader(chunk, header) || header.format == VertexFormat::Unknown)
        return;
    header.vertexCount = vertexRecordsPresent(header, chunk);
    std::vector<float> output(size_t(header.vertexCount) *
                              size_t(glFloatsPerVertex(header.format, false)));
    MeshGeometry geometry;
    decodeVertices(header, chunk, {}, geometry, output.data());
    if (geometry.positions.size() != qsizetype(header.vertexCount))
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

    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);

    PrimitiveParser parser;
    ReadFailure failure;
    parser.parse(&device, failure);
    for (const PrimitiveChunk* chunk : parser.chunks) {
        if (chunk->data.size() != qsizetype(chunk->size) || chunk->size > quint32(size))
            __builtin_trap(); // a payload is a copy of bytes that are there
        if (parser.chunk(chunk->name) == nullptr)
            __builtin_trap(); // every chunk can be found by its name
        decodeAsVertices(chunk->data);
    }
    parser.chunk(QStringLiteral("Hull.vertices"));
    parser.chunk(QStringLiteral("uv2"));
    return 0;
}
