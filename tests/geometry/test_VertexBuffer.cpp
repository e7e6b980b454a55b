#include "BufferManager.h"
#include "GlFunctions.h"
#include "GlTestContext.h"
#include "LogCapture.h"
#include "MeshGeometry.h"
#include "MessageBoxRecorder.h"
#include "PrimitivesBuilder.h"
#include "ReadFailure.h"
#include "VertexBuffer.h"
#include "VertexDecoding.h"

#include <QMap>
#include <QOpenGLFunctions_3_2_Core>

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace {
using namespace primitives;

QByteArray vertexChunk(const char* format, quint32 count, const QByteArray& records)
{
    return formatName(format) + word(count) + records;
}

// x field 1023, y field -1024, z field 511.
constexpr quint32 PackedSample = 1023u | (1024u << 11) | (511u << 22);

QByteArray tbRecord(float x)
{
    return floats({x, 2, 3}) + word(PackedSample) + floats({0.25f, 0.75f}) + word(PackedSample) +
           word(0xFFFFFFFF);
}

QByteArray skinnedRecord(quint8 weight0, quint8 weight1)
{
    return floats({1, 2, 3}) + word(PackedSample) + floats({0.5f, 0.5f}) + "\x07\x08\x09" +
           char(weight0) + char(weight1) + word(PackedSample) + word(0xFFFFFFFF);
}

std::vector<float> readBack(const VertexBuffer& buffer)
{
    std::vector<float> data(buffer.byteSize / 4);
    QOpenGLFunctions_3_2_Core* f = glFunctions();
    f->glBindBuffer(GL_ARRAY_BUFFER, buffer.vbo);
    f->glGetBufferSubData(GL_ARRAY_BUFFER, 0, buffer.byteSize, data.data());
    f->glBindBuffer(GL_ARRAY_BUFFER, 0);
    return data;
}

QList<int> attributeSlots(const VertexBuffer& buffer)
{
    QList<int> result;
    for (const VertexAttribute* attribute : buffer.attributes)
        result << attribute->location;
    return result;
}

class BufferManagerTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(gl.valid); }

    GlTestContext gl;
    BufferManager manager;
};
} // namespace

TEST(VertexDecoding, PackedAndByteVectorsAndShortStreamsSayWhy)
{
    EXPECT_NEAR(decodePackedVector(512u << 22)[2], -1.00196f, 1e-5);
    // Bytes span -1 to 1; byte 3 plays no part.
    EXPECT_EQ(decodeByteVector(0xFF00FF00), (Vector3{-1, 1, -1}));
    for (float component : decodeByteVector(0x00808080))
        EXPECT_FLOAT_EQ(component, 1.0f / 255.0f);

    // Three floats for two vertices: the whole pair is kept, and the failure
    // goes back to the caller with no box of its own.
    MessageBoxRecorder boxes;
    QVector<Vector2> pairs;
    ReadFailure failure;
    EXPECT_FALSE(readUvStream(floats({0.5f, 0.25f, 0.75f}), 2, pairs, failure));
    EXPECT_EQ(pairs, (QVector<Vector2>{{0.5f, 0.25f}}));
    EXPECT_EQ(failure.message(), "Error reading data: readFloat()");
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(BufferManagerTest, LayoutsOfTheThreeFormats)
{
    const QByteArray stream = floats({0.1f, 0.2f});
    // Format, the uv2 stream, stride and attribute locations.
    const std::tuple<const char*, QByteArray, quint32, QList<int>> layouts[] = {
        {"xyznuv", stream, 32, {0, 4, 1}},
        {"XYZNUVTB", {}, 56, {0, 4, 1, 6, 5}},
        {"xyznuvtb", stream, 64, {0, 4, 1, 6, 5, 2}},
        {"xyznuviiiwwtb", stream, 68, {0, 4, 1, 6, 5, 7}}};
    MeshGeometry geometries[4];
    int i = 0;
    for (const auto& [format, uv2, stride, locations] : layouts) {
        SCOPED_TRACE(format);
        VertexBuffer* buffer =
            manager.createVertexBuffer("b", vertexChunk(format, 0, {}), &geometries[i++], uv2);
        EXPECT_EQ(buffer->stride, stride);
        EXPECT_EQ(attributeSlots(*buffer), locations);
    }
    manager.releaseVertexBuffer(manager.buffers.first().buffer);
    EXPECT_EQ(manager.buffers.size(), 3);
}

TEST_F(BufferManagerTest, DecodesMirroredIntoBufferAndGeometry)
{
    MeshGeometry plain;
    const QByteArray plainRecords =
        floats({1, 2, 3, 0.5f, 0.25f, 1, 0.1f, 0.9f}) + floats({-4, 5, 6, 0, 1, 0, 0, 0});
    VertexBuffer* plainBuffer =
        manager.createVertexBuffer("p", vertexChunk("xyznuv", 2, plainRecords), &plain, {});
    ASSERT_EQ(plain.positions.size(), 2);
    EXPECT_EQ(plain.normals[0], (Vector3{-0.5f, 0.25f, 1}));
    const std::vector<float> plainGl = readBack(*plainBuffer);
    EXPECT_EQ(plainGl, (std::vector<float>{-1, 2, 3, -0.5f, 0.25f, 1, 0.1f, 0.9f, 4, 5, 6, -0.0f, 1,
                                           0, 0, 0}));

    MeshGeometry tb;
    VertexBuffer* tbBuffer = manager.createVertexBuffer(
        "t", vertexChunk("xyznuvtb", 1, tbRecord(7)), &tb, floats({0.125f, 0.625f}));
    EXPECT_EQ(tb.uv2s, (QVector<Vector2>{{0.125f, 0.625f}}));
    const std::vector<float> tbGl = readBack(*tbBuffer);
    ASSERT_EQ(tbGl.size(), 16u);
    EXPECT_NEAR(tbGl[3], -1.0f, 1e-6); // normal x negated
    EXPECT_NEAR(tbGl[4], -1.00098f, 1e-5);
    EXPECT_NEAR(tbGl[8], -1.0f, 1e-6);        // tangent x negated
    EXPECT_FLOAT_EQ(tbGl[11], 0.0009775171f); // binormal x of 0xFFFFFFFF
    EXPECT_EQ(tbGl[14], 0.125f);
}

TEST_F(BufferManagerTest, SkinnedRecordsAreUnalignedAndCarryWeights)
{
    MeshGeometry geometry;
    VertexBuffer* buffer = manager.createVertexBuffer(
        "k", vertexChunk("xyznuviiiwwtb", 2, skinnedRecord(255, 0) + skinnedRecord(128, 128)),
        &geometry, floats({1, 1, 1, 1}));
    ASSERT_EQ(geometry.boneWeights.size(), 2);
    EXPECT_EQ(geometry.boneWeights[0], (Vector3{1, 0, 0}));
    EXPECT_EQ(geometry.boneIndices[1], (std::array<quint8, 3>{7, 8, 9}));
    const std::vector<float> data = readBack(*buffer);
    ASSERT_EQ(data.size(), 34u);
    // Second record: tangent at 29, binormal at 33 of a 37-byte record.
    EXPECT_NEAR(data[17 + 8], -1.0f, 1e-6);
    EXPECT_FLOAT_EQ(data[17 + 11], 0.0009775171f);
    EXPECT_FLOAT_EQ(data[17 + 14], 0.5019608f);
}

TEST_F(BufferManagerTest, DamagedChunksSurvive)
{
    LogCapture log;

    MeshGeometry unknown;
    VertexBuffer* unsupported =
        manager.createVertexBuffer("u", vertexChunk("XYZ", 1, QByteArray(40, 0)), &unknown, {});
    EXPECT_TRUE(log.contains(QStringLiteral("[Error] Vertex format not supported:xyz")));
    EXPECT_EQ(unsupported->vertexCount, 0u);

    // Claims a million records, holds one and a half.
    MeshGeometry cut;
    VertexBuffer* truncated = manager.createVertexBuffer(
        "c", vertexChunk("xyznuvtb", 1000000, tbRecord(1) + tbRecord(2).left(16)), &cut, {});
    EXPECT_EQ(cut.positions.size(), 1);
    EXPECT_EQ(truncated->vertexCount, 1u);

    MessageBoxRecorder boxes;
    MeshGeometry shortStream;
    manager.createVertexBuffer("s", vertexChunk("xyznuvtb", 2, tbRecord(1) + tbRecord(2)),
                               &shortStream, floats({0.5f, 0.5f, 0.75f}));
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].text, "Error reading data: readFloat()\nApplication will now close.");
    EXPECT_EQ(shortStream.uv2s.size(), 1);
    EXPECT_EQ(shortStream.positions.size(), 2);
}

// One record of a "set3/..." format, laid out element by element from the
// format's name: position (1, 2, 3), normal +x, uv (0.25, 0.75); "2": a
// second uv (0.5, 0.125); "iii": bones 7, 8, 9 as a word of a pad and the
// indices times 3, reversed; "i": bone 5 as a float; "ww": weights 51 and
// 102 as a word of two pads and the weights, reversed; "tb": tangent +z,
// binormal -y.
QByteArray set3Record(QByteArray format)
{
    format = format.toLower().mid(int(qstrlen("set3/xyznuv")));
    format.chop(2); // "pc"
    QByteArray record = floats({1, 2, 3}) + word(byteVector({1, 0, 0})) + floats({0.25f, 0.75f});
    auto take = [&format](const char* element) {
        if (!format.startsWith(element))
            return false;
        format.remove(0, int(qstrlen(element)));
        return true;
    };
    if (take("2"))
        record += floats({0.5f, 0.125f});
    if (take("iii"))
        record += QByteArray("\0", 1) + char(9 * 3) + char(8 * 3) + char(7 * 3);
    else if (take("i"))
        record += floats({5});
    if (take("ww"))
        record += QByteArray(2, '\0') + char(102) + char(51);
    if (take("tb"))
        record += word(byteVector({0, 0, 1})) + word(byteVector({0, -1, 0}));
    EXPECT_TRUE(format.isEmpty()) << format.constData();
    return record;
}

// Float offset of each attribute slot in the interleaved layout.
QMap<int, int> slotOffsets(const VertexBuffer& buffer)
{
    QMap<int, int> offsets;
    int offset = 0;
    for (const VertexAttribute* attribute : buffer.attributes) {
        offsets[attribute->location] = offset;
        offset += attribute->kind == VertexAttribute::Float2 ? 2 : 3;
    }
    return offsets;
}

TEST_F(BufferManagerTest, EveryProcessedFormatDecodesMirroredIntoItsLayout)
{
    const QByteArray uv2Stream =
        processedHeader("BPVSuv2", "set3/uv2pc", 2) + floats({0.5f, 0.5f, 0.125f, 1});
    const QList<int> plain{0, 4, 1}, tangents{0, 4, 1, 6, 5}, skinned{0, 4, 1, 6, 5, 7},
        withUv2{0, 4, 1, 6, 5, 2}, skinnedUv2{0, 4, 1, 6, 5, 7, 2};
    // Format, its stride, a uv2 stream, the attribute slots.
    const std::tuple<const char*, int, QByteArray, QList<int>> cases[] = {
        {"set3/xyznuvpc", 24, {}, plain},
        {"SET3/XYZNUVTBPC", 32, {}, tangents},
        {"set3/xyznuviiiwwpc", 32, {}, skinned},
        {"set3/xyznuviiiwwtbpc", 40, {}, skinned},
        {"set3/xyznuvipc", 28, {}, skinned},
        {"set3/xyznuvitbpc", 36, {}, skinned},
        {"set3/xyznuv2pc", 32, {}, withUv2},
        {"set3/xyznuv2tbpc", 40, {}, withUv2},
        {"set3/xyznuv2ipc", 36, {}, skinnedUv2},
        {"set3/xyznuv2itbpc", 44, {}, skinnedUv2},
        // A stream: taken where the records have no second uv of their own.
        {"set3/xyznuvpc", 24, uv2Stream, withUv2},
        {"set3/xyznuvtbpc", 32, uv2Stream, withUv2},
        {"set3/xyznuviiiwwtbpc", 40, uv2Stream, skinnedUv2},
        {"set3/xyznuv2tbpc", 40, uv2Stream, withUv2},
    };
    for (const auto& [format, stride, stream, locations] : cases) {
        const QByteArray name(format);
        SCOPED_TRACE((name + (stream.isEmpty() ? "" : " with a stream")).toStdString());
        const QByteArray records = set3Record(name) + set3Record(name);
        ASSERT_EQ(records.size(), 2 * stride);
        MeshGeometry geometry;
        LogCapture log;
        VertexBuffer* buffer = manager.createVertexBuffer(
            "p", processedHeader("BPVTxyznuv", name, 2) + records, &geometry, stream);
        EXPECT_TRUE(log.lines.isEmpty()) << log.lines.join('\n').toStdString();
        ASSERT_EQ(attributeSlots(*buffer), locations);
        ASSERT_EQ(buffer->vertexCount, 2u);
        EXPECT_EQ(geometry.positions[1], (Vector3{-1, 2, 3}));
        EXPECT_EQ(geometry.uvs[1], (Vector2{0.25f, 0.75f}));

        const QByteArray lower = name.toLower();
        const bool ownUv2 = lower.contains("uv2"), hasTb = lower.contains("tbpc");
        const bool threeBones = lower.contains("iii"), oneBone = !threeBones && lower.contains("i");
        QVector<Vector2> uv2s;
        if (ownUv2)
            uv2s = {{0.5f, 0.125f}, {0.5f, 0.125f}};
        else if (!stream.isEmpty())
            uv2s = {{0.5f, 0.5f}, {0.125f, 1}};
        EXPECT_EQ(geometry.uv2s, uv2s);
        if (threeBones) {
            EXPECT_EQ(geometry.boneIndices[1], (std::array<quint8, 3>{7, 8, 9}));
            EXPECT_NEAR(geometry.boneWeights[1][0], 0.2f, 1e-6);
            EXPECT_NEAR(geometry.boneWeights[1][1], 0.4f, 1e-6);
            EXPECT_NEAR(geometry.boneWeights[1][2], 0.4f, 1e-6);
        } else if (oneBone) {
            EXPECT_EQ(geometry.boneIndices[1], (std::array<quint8, 3>{5, 0, 0}));
            EXPECT_EQ(geometry.boneWeights[1], (Vector3{1, 0, 0}));
        } else {
            EXPECT_TRUE(geometry.boneIndices.isEmpty());
        }

        const std::vector<float> values = readBack(*buffer);
        const QMap<int, int> at = slotOffsets(*buffer);
        const size_t second = values.size() / 2;
        // Normal +x mirrored; the byte 127.5 steps leave y and z at 1/255.
        EXPECT_FLOAT_EQ(values[second + 3], -1.0f);
        EXPECT_NEAR(values[second + 4], 0.0f, 0.004f);
        if (at.contains(SlotTangent)) {
            EXPECT_NEAR(values[second + at[SlotTangent] + 2], hasTb ? 1.0f : 0.0f, 1e-6);
            EXPECT_NEAR(values[second + at[SlotBinormal] + 1], hasTb ? -1.0f : 0.0f, 1e-6);
        }
        if (at.contains(SlotGeneric0)) {
            EXPECT_NEAR(values[second + at[SlotGeneric0]], threeBones ? 0.2f : 1.0f, 1e-6);
        }
        if (at.contains(SlotTexCoord1)) {
            EXPECT_EQ(values[second + at[SlotTexCoord1] + 1], ownUv2 ? 0.125f : 1.0f);
        }
    }
}

TEST_F(BufferManagerTest, ProcessedChunksThatDoNotFitDrawNothingAndSayWhy)
{
    const QByteArray twoRecords = set3Record("set3/xyznuvtbpc") + set3Record("set3/xyznuvtbpc");
    // What is wrong, the chunk, and the one line logged.
    const std::tuple<const char*, QByteArray, const char*> cases[] = {
        {"short of its headers", processedHeader("BPVTxyznuvtb", "set3/xyznuvtbpc", 2).left(135),
         "[Warning] Vertex chunk c: processed vertex chunk too short for its headers: 135 bytes"},
        {"a first count",
         formatName("BPVTxyznuvtb") + word(2) + formatName("set3/xyznuvtbpc") + word(2) +
             twoRecords,
         "[Warning] Vertex chunk c: processed vertex chunk with 2 vertices in its first header"},
        {"a byte short",
         processedHeader("BPVTxyznuvtb", "set3/xyznuvtbpc", 2) + twoRecords.chopped(1),
         "[Warning] Vertex chunk c: processed vertex chunk set3/xyznuvtbpc of 2 vertices holds 199 "
         "bytes, not 200"},
        {"a byte over", processedHeader("BPVTxyznuvtb", "set3/xyznuvtbpc", 2) + twoRecords + 'x',
         "holds 201 bytes, not 200"},
        {"a count that would wrap",
         processedHeader("BPVTxyznuvtb", "set3/xyznuvtbpc", 0xFFFFFFFF) + twoRecords,
         "holds 200 bytes, not 137438953576"},
        // The set1 formats keep their uv in shorts of a scale we do not know.
        {"set1", processedHeader("BPVTxyznuvtb", "set1/xyznuvtbpc", 1) + twoRecords,
         "[Error] Vertex format not supported:set1/xyznuvtbpc"},
        {"an old name behind the processed header",
         processedHeader("BPVTxyznuvtb", "xyznuvtb", 2) + twoRecords,
         "[Error] Vertex format not supported:xyznuvtb"},
    };
    for (const auto& [what, chunk, logged] : cases) {
        SCOPED_TRACE(what);
        LogCapture log;
        MeshGeometry geometry;
        VertexBuffer* buffer = manager.createVertexBuffer("c", chunk, &geometry, {});
        EXPECT_EQ(buffer->vertexCount, 0u);
        EXPECT_TRUE(buffer->attributes.isEmpty());
        EXPECT_TRUE(geometry.positions.isEmpty());
        EXPECT_EQ(log.lines.filter(QLatin1String(logged)).size(), 1)
            << log.lines.join('\n').toStdString();
    }
}

TEST(BufferManager, ReleaseWithoutContextDoesNotCrash)
{
    auto* gl = new GlTestContext;
    ASSERT_TRUE(gl->valid);
    auto* manager = new BufferManager;
    MeshGeometry geometry;
    VertexBuffer* buffer =
        manager->createVertexBuffer("p", vertexChunk("xyznuv", 0, {}), &geometry, {});
    EXPECT_NE(buffer->vao, 0u);
    gl->context.doneCurrent();
    delete manager;
    delete gl;
}
