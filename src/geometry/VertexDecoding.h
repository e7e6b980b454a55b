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
    XyzNuv,        // "xyznuv", 32 bytes a record
    XyzNuvTb,      // "xyznuvtb", 32 bytes
    XyzNuvIiiWwTb, // "xyznuviiiwwtb", 37 bytes
    // The "set3/..." formats of processed chunks: position, byte-vector
    // normal, uv, then a second uv ("uv2"), bone indices ("iii": bytes,
    // "i": one float), bone weights ("ww"), tangent and binormal ("tb").
    XyzNuvPc,        // 24 bytes
    XyzNuvTbPc,      // 32
    XyzNuvIiiWwPc,   // 32
    XyzNuvIiiWwTbPc, // 40
    XyzNuvIPc,       // 28
    XyzNuvITbPc,     // 36
    XyzNuv2Pc,       // 32
    XyzNuv2TbPc,     // 40
    XyzNuv2IPc,      // 36
    XyzNuv2ITbPc     // 44
};

// The format named by a vertex chunk's 64-byte header, compared in lower case.
VertexFormat vertexFormatFromName(const QByteArray& lowerCaseName);
// Bytes of one record in the file.
int fileStride(VertexFormat format);
// True for the formats that carry a tangent and a binormal.
bool hasTangents(VertexFormat format);

// A packed normal, tangent or binormal: 11-bit x, 11-bit y, 10-bit z, signed,
// scaled by 1/1023, 1/1023, 1/511. No mirroring here.
Vector3 decodePackedVector(quint32 word);
// The vector of the processed formats: bytes 0 to 2 are x, y, z, unsigned,
// mapped from 0..255 onto -1..1; byte 3 is unused. No mirroring here.
Vector3 decodeByteVector(quint32 word);

// True for the formats that carry bone indices and weights.
bool isSkinned(VertexFormat format);
// True for the formats whose records hold a second uv.
bool hasOwnSecondUv(VertexFormat format);

// The GL attribute layout of a format (new objects for the caller to own):
// position, normal, uv; then tangent and binormal (zero where the records
// have none) for every format with tangents, bones or a second uv; then the
// bone weights of a skinned format; then the second uv, from the records
// or from a stream.
QList<VertexAttribute*> glVertexLayout(VertexFormat format, bool withStream);
// Floats per interleaved GL vertex of that layout.
int glFloatsPerVertex(VertexFormat format, bool withStream);
// Whether a uv2 stream goes into the layout of this format: the plain
// tangent format without bones, and every processed format without a
// second uv of its own.
bool takesUvStream(VertexFormat format);

// The header of a vertex chunk. A plain chunk has a 64-byte format name and
// the vertex count. A processed chunk (current clients) starts with
// "BPVT" + the old format name and a count of 0, followed by a second
// 64-byte name (the "set3/..." format) and the real count: its records
// start at byte 136 and must fill the chunk exactly.
struct VertexChunkHeader
{
    QByteArray formatName;  // lower case; of a processed chunk, the second name
    QByteArray processedAs; // lower case "bpvt..." name; empty for a plain chunk
    VertexFormat format = VertexFormat::Unknown;
    quint32 vertexCount = 0; // as the file says
    int recordOffset = 68;
    QString problem; // why the chunk cannot be read; empty when it can

    bool processed() const { return !processedAs.isEmpty(); }
};
// False, with header.problem set, if the chunk is too short for its header
// or, being processed, is not exactly as long as its records. An unknown
// format name is not a problem here: header.format says Unknown.
bool readVertexChunkHeader(const QByteArray& chunkBytes, VertexChunkHeader& header);
// Whole records of header.format in the chunk, at most header.vertexCount.
quint32 vertexRecordsPresent(const VertexChunkHeader& header, const QByteArray& chunkBytes);
// Decodes the records that are there: false (with a log line) if the chunk
// or the stream is shorter than the count; output must have room for
// header.vertexCount vertices; vertices beyond the data stay zero.
bool decodeVertices(const VertexChunkHeader& header, const QByteArray& chunkBytes,
                    const QVector<Vector2>& stream, MeshGeometry& geometry, float* output);

// The values of a stream chunk: a processed one ("BPVS" + stream name)
// carries the same 136-byte double header as a processed vertex chunk,
// which is left out here; a plain one is all values.
QByteArray streamValues(const QByteArray& streamBytes);
// The uv2 stream's pairs for vertexCount vertices, as many as there are;
// false if short, with the failure recorded for the caller to show.
bool readUvStream(const QByteArray& streamBytes, quint32 vertexCount, QVector<Vector2>& pairs,
                  ReadFailure& failure);
