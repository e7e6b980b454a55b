#pragma once

#include "Maths.h"

#include <QByteArray>
#include <QList>
#include <QString>

class ReadFailure;
struct MeshGeometry;
struct VertexAttribute;

// The vertex formats of .primitives files.
enum class VertexFormat
{
    Unknown,
    XyzNuv,       // "xyznuv", 32 bytes a record
    XyzNuvTb,     // "xyznuvtb", 32 bytes
    XyzNuvIiiWwTb // "xyznuviiiwwtb", 37 bytes
};

// The format named by a vertex chunk's 64-byte header, compared in lower case.
VertexFormat vertexFormatFromName(const QByteArray& lowerCaseName);
// Bytes of one record in the file.
int fileStride(VertexFormat format);

// A packed normal, tangent or binormal: 11-bit x, 11-bit y, 10-bit z, signed,
// scaled by 1/1023, 1/1023, 1/511. No mirroring here.
Vector3 decodePackedVector(quint32 word);

// The GL attribute layout of a format (new objects for the caller to own);
// the second uv only for "xyznuvtb" with a stream.
QList<VertexAttribute*> glVertexLayout(VertexFormat format, bool withStream);
// Floats per interleaved GL vertex of that layout.
int glFloatsPerVertex(VertexFormat format, bool withStream);

// The CPU half of a vertex chunk. Reads the header, checks every count
// against the bytes present, decodes each record mirrored on x into
// `output` (interleaved floats in the GL layout) and into geometry's lists.
struct VertexChunkHeader
{
    QByteArray formatName; // lower case
    VertexFormat format = VertexFormat::Unknown;
    quint32 vertexCount = 0; // as the file says
};
bool readVertexChunkHeader(const QByteArray& chunkBytes, VertexChunkHeader& header);
// Whole records of header.format in the chunk, at most header.vertexCount.
quint32 vertexRecordsPresent(const VertexChunkHeader& header, const QByteArray& chunkBytes);
// Decodes the records that are there: false (with a log line) if the chunk
// or the stream is shorter than the count; output must have room for
// header.vertexCount vertices; vertices beyond the data stay zero.
bool decodeVertices(const VertexChunkHeader& header, const QByteArray& chunkBytes,
                    const QVector<Vector2>& stream, MeshGeometry& geometry, float* output);
// The uv2 stream's pairs for vertexCount vertices, as many as there are;
// false if short, with the failure recorded for the caller to show.
bool readUvStream(const QByteArray& streamBytes, quint32 vertexCount, QVector<Vector2>& pairs,
                  ReadFailure& failure);
