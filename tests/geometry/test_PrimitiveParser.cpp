#include "FileManager.h"
#include "GlFunctions.h"
#include "GlTestContext.h"
#include "IndexBuffer.h"
#include "LogCapture.h"
#include "MeshGeometry.h"
#include "MessageBoxRecorder.h"
#include "PrimitiveParser.h"
#include "PrimitivesBuilder.h"
#include "QtPrinters.h"
#include "TestRoot.h"
#include "ToolRunner.h"

#include <QBuffer>
#include <QOpenGLFunctions_3_2_Core>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using primitives::formatName;
using primitives::indexChunk;
using primitives::word;

namespace {
// Padding bytes are not zero, so a reader that leans on them is caught.
QByteArray tableEntry(quint32 sizeWord, const QByteArray& name)
{
    return primitives::tableEntry(sizeWord, name, '\xEE');
}
QByteArray container(const QList<primitives::Chunk>& chunks)
{
    return primitives::file(chunks, '\xEE');
}

bool parseBytes(PrimitiveParser& parser, QByteArray bytes)
{
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    return parser.parse(&device);
}

// The GL buffer's contents, or nothing when its size is not `size`.
QByteArray bufferBytes(const IndexBuffer& index, int size)
{
    if (int(index.buffer->byteSize) != size)
        return {};
    QByteArray bytes(size, '\0');
    QOpenGLFunctions_3_2_Core* f = glFunctions();
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, index.buffer->name);
    f->glGetBufferSubData(GL_ELEMENT_ARRAY_BUFFER, 0, size, bytes.data());
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    return bytes;
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}
} // namespace

TEST(PrimitiveParser, TableLengthDecidesBetweenFailureAndAnEmptyTable)
{
    LogCapture log;
    const QByteArray body = word(primitivesMagic) + QByteArray(20, 'x');
    PrimitiveParser parser;
    EXPECT_FALSE(parseBytes(parser, body + word(0)));
    for (quint32 length = 1; length <= 7; ++length)
        EXPECT_TRUE(parseBytes(parser, body + word(length))) << length;
    EXPECT_TRUE(parser.chunks.isEmpty());
    EXPECT_FALSE(parseBytes(parser, body + word(1000)));
    EXPECT_FALSE(parseBytes(parser, body + word(0xFFFFFFFF)));

    ASSERT_TRUE(parseBytes(
        parser,
        container({{"five", "12345"}, {"empty", ""}, {"abcde", "after"}, {"five", "second"}})));
    ASSERT_EQ(parser.chunks.size(), 4);
    EXPECT_TRUE(parser.chunks[1]->data.isEmpty());
    EXPECT_EQ(parser.chunks[2]->data, QByteArray("after"));
    EXPECT_EQ(parser.chunk(QStringLiteral("five"))->data, QByteArray("12345"));
    EXPECT_EQ(parser.chunk(QStringLiteral("FIVE")), nullptr);

    // Bit 31 of the size is a flag.
    QByteArray flagged = word(primitivesMagic) + "data" + tableEntry(0x80000004, "f");
    ASSERT_TRUE(parseBytes(parser, flagged + word(quint32(flagged.size() - 8))));
    ASSERT_EQ(parser.chunks.size(), 1);
    EXPECT_EQ(parser.chunks[0]->data, QByteArray("data"));

    // A payload running into the table ends the walk; earlier chunks stay.
    QByteArray overlong =
        word(primitivesMagic) + "good" + tableEntry(4, "good") + tableEntry(400, "bad");
    EXPECT_FALSE(parseBytes(parser, overlong + word(quint32(overlong.size() - 8))));
    ASSERT_EQ(parser.chunks.size(), 1);
    EXPECT_EQ(parser.chunks[0]->name, QStringLiteral("good"));
}

TEST(PrimitiveParser, BadStartsAndFileNamesFailWithTheirMessages)
{
    PrimitiveParser parser;
    LogCapture log;
    EXPECT_FALSE(parseBytes(parser, word(0x12345678) + word(0)));
    EXPECT_TRUE(log.contains(QStringLiteral("[Warning] Binary header incorrect.")));
    MessageBoxRecorder boxes;
    EXPECT_FALSE(parseBytes(parser, QByteArray("\x65\x4E", 2)));
    EXPECT_EQ(boxes.boxes.size(), 1);

    // Only the exact-case ".model" extension is replaced.
    QTemporaryDir directory;
    const QString base = directory.filePath(QStringLiteral("Hull"));
    writeFile(base + QStringLiteral(".primitives"), container({{"Hull.vertices", "v"}}));
    FileManager files;
    EXPECT_TRUE(parser.load(base + QStringLiteral(".model")));
    EXPECT_FALSE(parser.load(base + QStringLiteral(".MODEL")));
}

TEST(IndexBuffer, ReversesWindingKeepsGroupsAndKeepsWhatFitsOfATruncatedChunk)
{
    MeshGeometry geometry;
    DecodedIndices decoded;
    // Seven indices: the last one is no triangle and is dropped.
    EXPECT_TRUE(decodeIndexChunk(indexChunk({0, 1, 2, 3, 4, 5, 6}, {{0, 2, 10, 5}, {3, 1, -1, 2}}),
                                 geometry, decoded));
    EXPECT_FALSE(decoded.is32Bit);
    EXPECT_EQ(geometry.triangleCount, 2u);
    EXPECT_EQ(geometry.indices16, (QVector<quint16>{2, 1, 0, 5, 4, 3}));
    ASSERT_EQ(decoded.groups.size(), 2);
    EXPECT_EQ(decoded.groups[1].startVertex, -1);

    LogCapture log;
    const QByteArray whole = indexChunk({1, 2, 3, 4, 5, 6}, {{0, 2, 0, 7}}, true);
    for (int size : {0, 40, 71, 72, 80, 96, int(whole.size()) - 1}) {
        MeshGeometry cut;
        DecodedIndices cutIndices;
        EXPECT_FALSE(decodeIndexChunk(whole.left(size), cut, cutIndices)) << size;
        EXPECT_EQ(qsizetype(cut.triangleCount) * 3, cut.indices16.size());
        EXPECT_LE(cut.indices32.size() * 4, qMax(0, size - 72));
        EXPECT_TRUE(cutIndices.groups.isEmpty());
    }
    // A count far beyond the chunk.
    QByteArray huge = whole;
    qToLittleEndian<quint32>(0xFFFFFFFF, huge.data() + 64);
    geometry = MeshGeometry();
    EXPECT_FALSE(decodeIndexChunk(huge, geometry, decoded));
    // The group bytes now count as indices: ten of them, three triangles.
    EXPECT_EQ(geometry.triangleCount, 3u);
}

TEST(IndexBuffer, GlBufferHoldsTheChunkWidth)
{
    GlTestContext gl;
    ASSERT_TRUE(gl.valid);
    MeshGeometry geometry, narrowGeometry;
    IndexBuffer wide(indexChunk({1, 70000, 3}, {{0, 1, 2, 5}, {0, 1, 4, 2}}, true), &geometry);
    EXPECT_EQ(wide.vertexCount, 7u);
    EXPECT_EQ(geometry.indices32, (QVector<quint32>{3, 70000, 1}));
    EXPECT_EQ(bufferBytes(wide, 12), word(3) + word(70000) + word(1));

    IndexBuffer narrow(indexChunk({1, 2, 3}, {}), &narrowGeometry);
    EXPECT_EQ(bufferBytes(narrow, 6), QByteArray::fromHex("030002000100"));
}

TEST(PrimitivesTool, ListsChunksWhatTheyHoldAndTheFirstVertices)
{
    QTemporaryDir directory;
    ToolResult result;
    // Writes the file, runs the tool on it and gives the lines it printed.
    const auto run = [&](const QString& name, const QByteArray& bytes, const QStringList& options) {
        writeFile(directory.filePath(name), bytes);
        result = runTool(QStringList{"primitives", directory.filePath(name)} + options);
        return result.out.trimmed().split('\n');
    };
    const QByteArray vertices = formatName("XYZNUV") + word(2) + QByteArray(64, '\0');
    QList<QByteArray> lines =
        run("m.primitives",
            container({{"m.vertices", vertices},
                       {"m.indices", indexChunk({0, 1, 1}, {{0, 1, 0, 2}}, true)},
                       {"uv2", QByteArray(16, '\0')}}),
            {});
    EXPECT_EQ(result.exitCode, 0) << result.err.constData();
    ASSERT_EQ(lines.size(), 4) << result.out.constData();
    EXPECT_EQ(lines[0], "m.vertices 132 vertices xyznuv 2");
    EXPECT_EQ(lines[1], "m.indices 100 indices 32-bit 3 indices 1 groups");
    EXPECT_EQ(lines[3], "uv2 16 uv2 2 pairs");

    run("m.primitives", word(primitivesMagic) + word(0), {});
    EXPECT_EQ(result.exitCode, 1);

    // Position (1, 2, 3), normal bytes (255, 0, 255), uv (0.25, 0.75),
    // tangent (0, 0, 255), binormal (0, 255, 0).
    const QByteArray record = primitives::floats({1, 2, 3}) + word(0x00FF00FF) +
                              primitives::floats({0.25f, 0.75f}) + word(0x00FF0000) +
                              word(0x0000FF00);
    using primitives::processedHeader;
    lines = run(
        "p.primitives_processed",
        container({{"p.vertices",
                    processedHeader("BPVTxyznuvtb", "set3/xyznuvtbpc", 2) + record + record},
                   {"colour", processedHeader("BPVScolour", "colour", 2) + word(0) + word(0)},
                   // Bones 7, 8, 9 (times 3, reversed behind a pad), weights
                   // 51 and 102 (reversed behind two pads).
                   {"k.vertices", processedHeader("BPVTxyznuviiiwwtb", "set3/xyznuviiiwwtbpc", 1) +
                                      record.left(24) + word(27u << 8 | 24u << 16 | 21u << 24) +
                                      word(102u << 16 | 51u << 24) + record.mid(24)},
                   {"u.vertices", processedHeader("BPVTxyznuv", "set3/xyznuv2pc", 1) +
                                      record.left(24) + primitives::floats({0.5f, 0.125f})},
                   {"s.vertices",
                    processedHeader("BPVTxyznuv", "set1/xyznuvpc", 1) + QByteArray(20, '\0')}}),
        {"--vertices", "1"});
    ASSERT_EQ(lines.size(), 8) << result.out.constData();
    EXPECT_EQ(lines[0], "p.vertices 200 vertices set3/xyznuvtbpc 2 processed (bpvtxyznuvtb)");
    // Mirrored on x, as Ferrox draws it.
    const QByteArray first = "  vertex 0: position -1 2 3 normal -1 -1 1 uv 0.25 0.75";
    EXPECT_EQ(lines[1], first + " tangent 1 -1 1 binormal 1 1 -1");
    EXPECT_EQ(lines[2], "colour 144 stream colour 2 values");
    EXPECT_EQ(lines[3], "k.vertices 176 vertices set3/xyznuviiiwwtbpc 1 processed "
                        "(bpvtxyznuviiiwwtb)");
    EXPECT_EQ(lines[4], first + " tangent 1 -1 1 binormal 1 1 -1 bones 7 8 9 weights 0.2 0.4 0.4");
    EXPECT_EQ(lines[5], "u.vertices 168 vertices set3/xyznuv2pc 1 processed (bpvtxyznuv)");
    EXPECT_EQ(lines[6], first + " uv2 0.5 0.125");
    EXPECT_EQ(lines[7], "s.vertices 156 vertices set1/xyznuvpc 1 processed (bpvtxyznuv) "
                        "unreadable: format not supported");
    EXPECT_EQ(result.exitCode, 1);
}
