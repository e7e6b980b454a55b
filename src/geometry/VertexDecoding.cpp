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

// The scales are stored and multiplied, not divided, so that the results
// are bit for bit the same on every machine.
constexpr float ElevenBitScale = 0.0009775171f; // 1/1023
constexpr float TenBitScale = 0.0019569471f;    // 1/511
constexpr float ByteScale = 0.003921569f;       // 1/255

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

Vector3 mirrored(Vector3 vector)
{
    vector[0] *= -1.0f;
    return vector;
}

Vector3 floatsAt(const char* data)
{
    return {floatAt(data), floatAt(data + 4), floatAt(data + 8)};
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

DecodedVertex decodeRecord(VertexFormat format, const char* record)
{
    DecodedVertex vertex;
    vertex.position = mirrored(floatsAt(record));
    if (format == VertexFormat::XyzNuv) {
        vertex.normal = mirrored(floatsAt(record + 12));
        vertex.uv = {floatAt(record + 24), floatAt(record + 28)};
        return vertex;
    }
    vertex.normal = mirrored(decodePackedVector(wordAt(record + 12)));
    vertex.uv = {floatAt(record + 16), floatAt(record + 20)};
    if (format == VertexFormat::XyzNuvTb) {
        vertex.tangent = mirrored(decodePackedVector(wordAt(record + 24)));
        vertex.binormal = mirrored(decodePackedVector(wordAt(record + 28)));
        return vertex;
    }
    for (int i = 0; i < 3; ++i)
        vertex.bones[size_t(i)] = quint8(record[24 + i]);
    const float w0 = float(quint8(record[27])) * ByteScale;
    const float w1 = float(quint8(record[28])) * ByteScale;
    vertex.weights = {w0, w1, 1.0f - w0 - w1};
    vertex.tangent = mirrored(decodePackedVector(wordAt(record + 29)));
    vertex.binormal = mirrored(decodePackedVector(wordAt(record + 33)));
    return vertex;
}

// Writes one interleaved vertex in the order of glVertexLayout.
float* writeVertex(float* output, VertexFormat format, const DecodedVertex& vertex,
                   const Vector2* secondUv)
{
    output = put(output, vertex.position);
    output = put(output, vertex.normal);
    output = put(output, vertex.uv);
    if (format == VertexFormat::XyzNuv)
        return output;
    output = put(output, vertex.tangent);
    output = put(output, vertex.binormal);
    if (format == VertexFormat::XyzNuvIiiWwTb)
        return put(output, vertex.weights);
    if (secondUv)
        output = put(output, *secondUv);
    return output;
}

void appendToGeometry(MeshGeometry& geometry, VertexFormat format, const DecodedVertex& vertex)
{
    geometry.positions.append(vertex.position);
    geometry.normals.append(vertex.normal);
    geometry.uvs.append(vertex.uv);
    if (format == VertexFormat::XyzNuvIiiWwTb) {
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
} // namespace

VertexFormat vertexFormatFromName(const QByteArray& lowerCaseName)
{
    if (lowerCaseName == "xyznuv")
        return VertexFormat::XyzNuv;
    if (lowerCaseName == "xyznuvtb")
        return VertexFormat::XyzNuvTb;
    if (lowerCaseName == "xyznuviiiwwtb")
        return VertexFormat::XyzNuvIiiWwTb;
    return VertexFormat::Unknown;
}

int fileStride(VertexFormat format)
{
    switch (format) {
    case VertexFormat::XyzNuv:
    case VertexFormat::XyzNuvTb:
        return 32;
    case VertexFormat::XyzNuvIiiWwTb:
        return 37;
    case VertexFormat::Unknown:
        break;
    }
    return 0;
}

Vector3 decodePackedVector(quint32 word)
{
    // Shifting the field to the top and back sign-extends it.
    const qint32 x = qint32(word << 21) >> 21;
    const qint32 y = qint32(word << 10) >> 21;
    const qint32 z = qint32(word) >> 22;
    return {float(x) * ElevenBitScale, float(y) * ElevenBitScale, float(z) * TenBitScale};
}

QList<VertexAttribute*> glVertexLayout(VertexFormat format, bool withStream)
{
    QList<VertexAttribute*> list;
    if (format == VertexFormat::Unknown)
        return list;
    list << attribute(VertexAttribute::Float3, SlotPosition)
         << attribute(VertexAttribute::Float3, SlotNormal)
         << attribute(VertexAttribute::Float2, SlotTexCoord0);
    if (format == VertexFormat::XyzNuv)
        return list;
    list << attribute(VertexAttribute::Float3, SlotTangent)
         << attribute(VertexAttribute::Float3, SlotBinormal);
    if (format == VertexFormat::XyzNuvIiiWwTb)
        list << attribute(VertexAttribute::Float3, SlotGeneric0);
    else if (withStream)
        list << attribute(VertexAttribute::Float2, SlotTexCoord1);
    return list;
}

int glFloatsPerVertex(VertexFormat format, bool withStream)
{
    switch (format) {
    case VertexFormat::XyzNuv:
        return 8;
    case VertexFormat::XyzNuvTb:
        return withStream ? 16 : 14;
    case VertexFormat::XyzNuvIiiWwTb:
        return 17;
    case VertexFormat::Unknown:
        break;
    }
    return 0;
}

bool readVertexChunkHeader(const QByteArray& chunkBytes, VertexChunkHeader& header)
{
    const QByteArray field = chunkBytes.left(FormatFieldSize);
    const qsizetype end = field.indexOf('\0');
    header.formatName = (end < 0 ? field : field.left(end)).toLower();
    header.format = vertexFormatFromName(header.formatName);
    header.vertexCount = 0;
    if (chunkBytes.size() < HeaderSize) {
        Log::log(QStringLiteral("Vertex chunk too short for its header: %1 bytes")
                     .arg(chunkBytes.size()),
                 Log::Warning);
        return false;
    }
    header.vertexCount = wordAt(chunkBytes.constData() + FormatFieldSize);
    return true;
}

quint32 vertexRecordsPresent(const VertexChunkHeader& header, const QByteArray& chunkBytes)
{
    const int stride = fileStride(header.format);
    if (stride == 0 || chunkBytes.size() < HeaderSize)
        return 0;
    return quint32(std::min<qint64>(header.vertexCount, (chunkBytes.size() - HeaderSize) / stride));
}

bool decodeVertices(const VertexChunkHeader& header, const QByteArray& chunkBytes,
                    const QVector<Vector2>& stream, MeshGeometry& geometry, float* output)
{
    if (header.format == VertexFormat::Unknown)
        return false;
    const bool withStream = header.format == VertexFormat::XyzNuvTb && !stream.isEmpty();
    const int floatsPerVertex = glFloatsPerVertex(header.format, withStream);
    const int stride = fileStride(header.format);
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
    const char* records = chunkBytes.constData() + HeaderSize;
    const Vector2 noUv{};
    for (quint32 i = 0; i < present; ++i) {
        const DecodedVertex vertex = decodeRecord(header.format, records + qint64(i) * stride);
        const Vector2* secondUv = nullptr;
        if (withStream)
            secondUv = i < quint32(stream.size()) ? &stream[int(i)] : &noUv;
        writeVertex(output + qint64(i) * floatsPerVertex, header.format, vertex, secondUv);
        appendToGeometry(geometry, header.format, vertex);
    }
    // The rest of the caller's room, if any, stays defined.
    const qint64 missing = qint64(header.vertexCount) - present;
    if (missing > 0)
        std::fill_n(output + qint64(present) * floatsPerVertex, missing * floatsPerVertex, 0.0f);
    return complete;
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
