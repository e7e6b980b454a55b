#include "VertexDecoding.h"

#include "Log.h"
#include "MeshGeometry.h"
#include "ReadFailure.h"
#include "VertexBuffer.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {
constexpr int FormatFieldSize = 64;
constexpr int HeaderSize = 68;
// A processed chunk: two headers of a name and a count each.
constexpr int ProcessedHeaderSize = 2 * HeaderSize;

// The scales are stored and multiplied, not divided, so that the results
// are bit for bit the same on every machine.
constexpr float ElevenBitScale = 0.0009775171f; // 1/1023
constexpr float TenBitScale = 0.0019569471f;    // 1/511
constexpr float ByteScale = 0.003921569f;       // 1/255

// How a record stores its normal, tangent and binormal.
enum class VectorCoding
{
    Floats,       // three floats (normal only)
    PackedWord,   // 11/11/10 signed fields
    UnsignedBytes // x, y, z bytes over -1..1
};

// Where each field of a record lies; -1 for a field the format lacks.
struct RecordLayout
{
    VertexFormat format;
    const char* name;
    bool processed; // found only behind a "BPVT" header
    int stride;
    VectorCoding coding;
    int uv;
    int tangent;
    int binormal;
    int bones; // three index bytes, then two weight bytes
};

// clang-format off
constexpr RecordLayout recordLayouts[] = {
    {VertexFormat::XyzNuv,        "xyznuv",          false, 32, VectorCoding::Floats,        24, -1, -1, -1},
    {VertexFormat::XyzNuvTb,      "xyznuvtb",        false, 32, VectorCoding::PackedWord,    16, 24, 28, -1},
    {VertexFormat::XyzNuvIiiWwTb, "xyznuviiiwwtb",   false, 37, VectorCoding::PackedWord,    16, 29, 33, 24},
    {VertexFormat::XyzNuvPc,      "set3/xyznuvpc",   true,  24, VectorCoding::UnsignedBytes, 16, -1, -1, -1},
    {VertexFormat::XyzNuvTbPc,    "set3/xyznuvtbpc", true,  32, VectorCoding::UnsignedBytes, 16, 24, 28, -1},
};
// clang-format on

const RecordLayout* layoutOf(VertexFormat format)
{
    for (const RecordLayout& layout : recordLayouts)
        if (layout.format == format)
            return &layout;
    return nullptr;
}

VertexFormat formatFromName(const QByteArray& lowerCaseName, bool processed)
{
    for (const RecordLayout& layout : recordLayouts)
        if (layout.processed == processed && lowerCaseName == layout.name)
            return layout.format;
    return VertexFormat::Unknown;
}

// Records of 37 bytes put words on odd addresses: always copy, never cast.
float floatAt(const char* data)
{
    const quint32 bits = qFromLittleEndian<quint32>(data);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

quint32 wordAt(const char* data)
{
    return qFromLittleEndian<quint32>(data);
}

// The text of a 64-byte name field up to its NUL, in lower case.
QByteArray nameField(const QByteArray& bytes, int offset)
{
    const QByteArray field = bytes.mid(offset, FormatFieldSize);
    const qsizetype end = field.indexOf('\0');
    return (end < 0 ? field : field.left(end)).toLower();
}

Vector3 mirrored(Vector3 vector)
{
    vector[0] *= -1.0f;
    return vector;
}

Vector3 floatsAt(const char* data)
{
    return {floatAt(data), floatAt(data + 4), floatAt(data + 8)};
}

Vector3 vectorAt(VectorCoding coding, const char* data)
{
    switch (coding) {
    case VectorCoding::Floats:
        return floatsAt(data);
    case VectorCoding::PackedWord:
        return decodePackedVector(wordAt(data));
    case VectorCoding::UnsignedBytes:
        return decodeByteVector(wordAt(data));
    }
    return {};
}

float* put(float* output, const Vector3& vector)
{
    std::copy(vector.begin(), vector.end(), output);
    return output + 3;
}

float* put(float* output, const Vector2& vector)
{
    std::copy(vector.begin(), vector.end(), output);
    return output + 2;
}

// Everything one record gives, before it goes to the GL buffer and to the
// geometry's lists.
struct DecodedVertex
{
    Vector3 position{};
    Vector3 normal{};
    Vector2 uv{};
    Vector3 tangent{};
    Vector3 binormal{};
    Vector3 weights{};
    std::array<quint8, 3> bones{};
};

DecodedVertex decodeRecord(const RecordLayout& layout, const char* record)
{
    DecodedVertex vertex;
    vertex.position = mirrored(floatsAt(record));
    vertex.normal = mirrored(vectorAt(layout.coding, record + 12));
    vertex.uv = {floatAt(record + layout.uv), floatAt(record + layout.uv + 4)};
    if (layout.tangent >= 0) {
        vertex.tangent = mirrored(vectorAt(layout.coding, record + layout.tangent));
        vertex.binormal = mirrored(vectorAt(layout.coding, record + layout.binormal));
    }
    if (layout.bones >= 0) {
        for (int i = 0; i < 3; ++i)
            vertex.bones[size_t(i)] = quint8(record[layout.bones + i]);
        const float w0 = float(quint8(record[layout.bones + 3])) * ByteScale;
        const float w1 = float(quint8(record[layout.bones + 4])) * ByteScale;
        vertex.weights = {w0, w1, 1.0f - w0 - w1};
    }
    return vertex;
}

// Writes one interleaved vertex in the order of glVertexLayout.
float* writeVertex(float* output, const RecordLayout& layout, const DecodedVertex& vertex,
                   const Vector2* secondUv)
{
    output = put(output, vertex.position);
    output = put(output, vertex.normal);
    output = put(output, vertex.uv);
    if (layout.tangent < 0)
        return output;
    output = put(output, vertex.tangent);
    output = put(output, vertex.binormal);
    if (layout.bones >= 0)
        return put(output, vertex.weights);
    if (secondUv)
        output = put(output, *secondUv);
    return output;
}

void appendToGeometry(MeshGeometry& geometry, const RecordLayout& layout,
                      const DecodedVertex& vertex)
{
    geometry.positions.append(vertex.position);
    geometry.normals.append(vertex.normal);
    geometry.uvs.append(vertex.uv);
    if (layout.tangent >= 0) {
        geometry.tangents.append(vertex.tangent);
        geometry.binormals.append(vertex.binormal);
    }
    if (layout.bones >= 0) {
        geometry.boneWeights.append(vertex.weights);
        geometry.boneIndices.append(vertex.bones);
    }
}

VertexAttribute* attribute(int kind, int location)
{
    auto* result = new VertexAttribute;
    result->kind = kind;
    result->location = location;
    return result;
}

bool readProcessedHeader(const QByteArray& chunkBytes, VertexChunkHeader& header)
{
    if (chunkBytes.size() < ProcessedHeaderSize) {
        header.problem =
            QStringLiteral("processed vertex chunk too short for its headers: %1 bytes")
                .arg(chunkBytes.size());
        return false;
    }
    const quint32 firstCount = wordAt(chunkBytes.constData() + FormatFieldSize);
    if (firstCount != 0) {
        header.problem =
            QStringLiteral("processed vertex chunk with %1 vertices in its first header")
                .arg(firstCount);
        return false;
    }
    header.formatName = nameField(chunkBytes, HeaderSize);
    header.format = formatFromName(header.formatName, true);
    header.vertexCount = wordAt(chunkBytes.constData() + HeaderSize + FormatFieldSize);
    header.recordOffset = ProcessedHeaderSize;
    if (header.format == VertexFormat::Unknown)
        return true;
    // The records fill the chunk exactly; any other size means the layout
    // is not the one the name promises.
    const qint64 needed =
        ProcessedHeaderSize + qint64(header.vertexCount) * fileStride(header.format);
    if (needed != chunkBytes.size()) {
        header.problem =
            QStringLiteral("processed vertex chunk %1 of %2 vertices holds %3 bytes, not %4")
                .arg(QString::fromLatin1(header.formatName))
                .arg(header.vertexCount)
                .arg(chunkBytes.size())
                .arg(needed);
        return false;
    }
    return true;
}
} // namespace

VertexFormat vertexFormatFromName(const QByteArray& lowerCaseName)
{
    VertexFormat format = formatFromName(lowerCaseName, false);
    return format != VertexFormat::Unknown ? format : formatFromName(lowerCaseName, true);
}

int fileStride(VertexFormat format)
{
    const RecordLayout* layout = layoutOf(format);
    return layout ? layout->stride : 0;
}

bool hasTangents(VertexFormat format)
{
    const RecordLayout* layout = layoutOf(format);
    return layout && layout->tangent >= 0;
}

bool takesUvStream(VertexFormat format)
{
    const RecordLayout* layout = layoutOf(format);
    return layout && layout->tangent >= 0 && layout->bones < 0;
}

Vector3 decodePackedVector(quint32 word)
{
    // Shifting the field to the top and back sign-extends it.
    const qint32 x = qint32(word << 21) >> 21;
    const qint32 y = qint32(word << 10) >> 21;
    const qint32 z = qint32(word) >> 22;
    return {float(x) * ElevenBitScale, float(y) * ElevenBitScale, float(z) * TenBitScale};
}

Vector3 decodeByteVector(quint32 word)
{
    // Divided, so that 0 and 255 give exactly -1 and 1.
    auto component = [word](int shift) {
        return (float((word >> shift) & 0xFF) * 2.0f - 255.0f) / 255.0f;
    };
    return {component(0), component(8), component(16)};
}

QList<VertexAttribute*> glVertexLayout(VertexFormat format, bool withStream)
{
    QList<VertexAttribute*> list;
    const RecordLayout* layout = layoutOf(format);
    if (!layout)
        return list;
    list << attribute(VertexAttribute::Float3, SlotPosition)
         << attribute(VertexAttribute::Float3, SlotNormal)
         << attribute(VertexAttribute::Float2, SlotTexCoord0);
    if (layout->tangent < 0)
        return list;
    list << attribute(VertexAttribute::Float3, SlotTangent)
         << attribute(VertexAttribute::Float3, SlotBinormal);
    if (layout->bones >= 0)
        list << attribute(VertexAttribute::Float3, SlotGeneric0);
    else if (withStream)
        list << attribute(VertexAttribute::Float2, SlotTexCoord1);
    return list;
}

int glFloatsPerVertex(VertexFormat format, bool withStream)
{
    const RecordLayout* layout = layoutOf(format);
    if (!layout)
        return 0;
    if (layout->tangent < 0)
        return 8;
    if (layout->bones >= 0)
        return 17;
    return withStream ? 16 : 14;
}

bool readVertexChunkHeader(const QByteArray& chunkBytes, VertexChunkHeader& header)
{
    header = VertexChunkHeader();
    const QByteArray firstName = nameField(chunkBytes, 0);
    if (firstName.startsWith("bpvt")) {
        header.processedAs = firstName;
        return readProcessedHeader(chunkBytes, header);
    }
    header.formatName = firstName;
    header.format = formatFromName(firstName, false);
    if (chunkBytes.size() < HeaderSize) {
        header.problem = QStringLiteral("vertex chunk too short for its header: %1 bytes")
                             .arg(chunkBytes.size());
        return false;
    }
    header.vertexCount = wordAt(chunkBytes.constData() + FormatFieldSize);
    return true;
}

quint32 vertexRecordsPresent(const VertexChunkHeader& header, const QByteArray& chunkBytes)
{
    const int stride = fileStride(header.format);
    if (stride == 0 || !header.problem.isEmpty() || chunkBytes.size() < header.recordOffset)
        return 0;
    return quint32(
        std::min<qint64>(header.vertexCount, (chunkBytes.size() - header.recordOffset) / stride));
}

bool decodeVertices(const VertexChunkHeader& header, const QByteArray& chunkBytes,
                    const QVector<Vector2>& stream, MeshGeometry& geometry, float* output)
{
    const RecordLayout* layout = layoutOf(header.format);
    if (!layout)
        return false;
    const bool withStream = takesUvStream(header.format) && !stream.isEmpty();
    const int floatsPerVertex = glFloatsPerVertex(header.format, withStream);
    const quint32 present = vertexRecordsPresent(header, chunkBytes);
    bool complete = true;
    if (present < header.vertexCount) {
        Log::log(QStringLiteral("Vertex chunk holds %1 of its %2 vertices")
                     .arg(present)
                     .arg(header.vertexCount),
                 Log::Warning);
        complete = false;
    }
    if (withStream && quint32(stream.size()) < present)
        complete = false; // readUvStream has said so already

    geometry.positions.reserve(geometry.positions.size() + int(present));
    geometry.normals.reserve(geometry.normals.size() + int(present));
    geometry.uvs.reserve(geometry.uvs.size() + int(present));
    const char* records = chunkBytes.constData() + header.recordOffset;
    const Vector2 noUv{};
    for (quint32 i = 0; i < present; ++i) {
        const DecodedVertex vertex = decodeRecord(*layout, records + qint64(i) * layout->stride);
        const Vector2* secondUv = nullptr;
        if (withStream)
            secondUv = i < quint32(stream.size()) ? &stream[int(i)] : &noUv;
        writeVertex(output + qint64(i) * floatsPerVertex, *layout, vertex, secondUv);
        appendToGeometry(geometry, *layout, vertex);
    }
    // The rest of the caller's room, if any, stays defined.
    const qint64 missing = qint64(header.vertexCount) - present;
    if (missing > 0)
        std::fill_n(output + qint64(present) * floatsPerVertex, missing * floatsPerVertex, 0.0f);
    return complete;
}

QByteArray streamValues(const QByteArray& streamBytes)
{
    if (!nameField(streamBytes, 0).startsWith("bpvs"))
        return streamBytes;
    return streamBytes.mid(ProcessedHeaderSize);
}

bool readUvStream(const QByteArray& streamBytes, quint32 vertexCount, QVector<Vector2>& pairs,
                  ReadFailure& failure)
{
    const qint64 present = std::min<qint64>(vertexCount, streamBytes.size() / 8);
    pairs.reserve(pairs.size() + int(present));
    const char* data = streamBytes.constData();
    for (qint64 i = 0; i < present; ++i)
        pairs.append({floatAt(data + i * 8), floatAt(data + i * 8 + 4)});
    if (present < vertexCount) {
        failure.record(QStringLiteral("Error reading data: readFloat()"));
        return false;
    }
    return true;
}
