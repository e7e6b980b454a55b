#include "FileManager.h"
#include "GlFunctions.h"
#include "GlTestContext.h"
#include "IndexBuffer.h"
#include "LogCapture.h"
#include "MeshGeometry.h"
#include "MessageBoxRecorder.h"
#include "PrimitiveParser.h"
#include "QtPrinters.h"
#include "TestRoot.h"
#include "ToolRunner.h"

#include <QBuffer>
#include <QOpenGLFunctions_3_2_Core>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

namespace {
QByteArray word(quint32 value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    return QByteArray(bytes, 4);
}

QByteArray padded(QByteArray bytes)
{
    while (bytes.size() % 4)
        bytes.append('\xEE');
    return bytes;
}

QByteArray tableEntry(quint32 sizeWord, const QByteArray& name)
{
    return word(sizeWord) + QByteArray(16, '\0') + word(quint32(name.size())) + padded(name);
}

struct Chunk
{
    QByteArray name;
    QByteArray data;
};

// A container with the payloads in table order and a table of L bytes.
QByteArray container(const QList<Chunk>& chunks)
{
    QByteArray payloads = word(primitivesMagic);
    QByteArray table;
    for (const Chunk& chunk : chunks) {
        payloads += padded(chunk.data);
        table += tableEntry(quint32(chunk.data.size()), chunk.name);
    }
    return payloads + table + word(quint32(table.size()));
}

bool parseBytes(PrimitiveParser& parser, QByteArray bytes)
{
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    return parser.parse(&device);
}

QByteArray formatField(const char* name)
{
    QByteArray field(name);
    field.resize(64, '\0');
    return field;
}

QByteArray indexChunk(const char* format, const QList<quint32>& indices,
                      const QList<QList<qint32>>& groups)
{
    const bool wide = QByteArray(format).contains("list32");
    QByteArray chunk =
        formatField(format) + word(quint32(indices.size())) + word(quint32(groups.size()));
    for (quint32 index : indices)
        chunk += wide ? word(index) : word(index).left(2);
    for (const QList<qint32>& group : groups)
        for (qint32 value : group)
            chunk += word(quint32(value));
    return chunk;
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
    EXPECT_EQ(parser.chunk(QStringLiteral("any")), nullptr);
    EXPECT_TRUE(log.contains(QStringLiteral("[Warning] Could not locate data chunk: any")));
    EXPECT_FALSE(parseBytes(parser, body + word(1000)));
    EXPECT_FALSE(parseBytes(parser, body + word(0xFFFFFFFF)));
}

TEST(PrimitiveParser, PayloadsFollowFromPaddedSizes)
{
    PrimitiveParser parser;
    ASSERT_TRUE(parseBytes(
        parser,
        container({{"five", "12345"}, {"empty", ""}, {"abcde", "after"}, {"five", "second"}})));
    ASSERT_EQ(parser.chunks.size(), 4);
    EXPECT_EQ(parser.chunks[0]->data, QByteArray("12345"));
    EXPECT_EQ(parser.chunks[1]->size, 0u);
    EXPECT_TRUE(parser.chunks[1]->data.isEmpty());
    EXPECT_EQ(parser.chunks[2]->name, QStringLiteral("abcde"));
    EXPECT_EQ(parser.chunks[2]->data, QByteArray("after"));
    EXPECT_EQ(parser.chunk(QStringLiteral("five"))->data, QByteArray("12345"));
    LogCapture log;
    EXPECT_EQ(parser.chunk(QStringLiteral("FIVE")), nullptr);
}

TEST(PrimitiveParser, TableChecks)
{
    // Bit 31 of the size is a flag.
    PrimitiveParser parser;
    QByteArray flagged = word(primitivesMagic) + "data" + tableEntry(0x80000004, "f");
    ASSERT_TRUE(parseBytes(parser, flagged + word(quint32(flagged.size() - 8))));
    ASSERT_EQ(parser.chunks.size(), 1);
    EXPECT_EQ(parser.chunks[0]->size, 4u);
    EXPECT_EQ(parser.chunks[0]->data, QByteArray("data"));

    for (int length : {4096, 4097}) {
        const QByteArray name(length, 'n');
        EXPECT_EQ(parseBytes(parser, container({{name, "abc"}})), length == 4096) << length;
    }

    // A payload running into the table ends the walk; earlier chunks stay.
    QByteArray overlong =
        word(primitivesMagic) + "good" + tableEntry(4, "good") + tableEntry(400, "bad");
    EXPECT_FALSE(parseBytes(parser, overlong + word(quint32(overlong.size() - 8))));
    ASSERT_EQ(parser.chunks.size(), 1);
    EXPECT_EQ(parser.chunks[0]->name, QStringLiteral("good"));
}

TEST(PrimitiveParser, BadStartsFailWithTheirMessages)
{
    PrimitiveParser parser;
    {
        LogCapture log;
        EXPECT_FALSE(parseBytes(parser, word(0x12345678) + word(0)));
        EXPECT_TRUE(log.contains(QStringLiteral("[Warning] Binary header incorrect.")));
    }
    MessageBoxRecorder boxes;
    EXPECT_FALSE(parseBytes(parser, QByteArray("\x65\x4E", 2)));
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(QStringLiteral("Error reading data: readInt()")));
}

TEST(PrimitiveParser, LoadReplacesTheModelExtensionInExactCaseOnly)
{
    QTemporaryDir directory;
    const QString base = directory.filePath(QStringLiteral("Hull"));
    QFile file(base + QStringLiteral(".primitives"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(container({{"Hull.vertices", "v"}}));
    file.close();

    FileManager files;
    LogCapture log;
    PrimitiveParser parser;
    EXPECT_TRUE(parser.load(base + QStringLiteral(".model")));
    EXPECT_NE(parser.chunk(QStringLiteral("Hull.vertices")), nullptr);
    EXPECT_FALSE(parser.load(base + QStringLiteral(".MODEL")));
    EXPECT_TRUE(log.contains(QStringLiteral("[Warning] Failed loading: ") + base +
                             QStringLiteral(".MODEL")));
}

TEST(IndexBuffer, ReversesWindingAndKeepsGroups)
{
    MeshGeometry geometry;
    DecodedIndices decoded;
    // Seven indices: the last one is no triangle and is dropped.
    EXPECT_TRUE(
        decodeIndexChunk(indexChunk("list", {0, 1, 2, 3, 4, 5, 6}, {{0, 2, 10, 5}, {3, 1, -1, 2}}),
                         geometry, decoded));
    EXPECT_FALSE(decoded.is32Bit);
    EXPECT_EQ(geometry.triangleCount, 2u);
    EXPECT_EQ(geometry.indices16, (QVector<quint16>{2, 1, 0, 5, 4, 3}));
    EXPECT_TRUE(geometry.indices32.isEmpty());
    ASSERT_EQ(decoded.groups.size(), 2);
    EXPECT_EQ(decoded.groups[1].startVertex, -1);

    // "LIST32" is not "list32": the chunk is read as 16-bit.
    MeshGeometry upper;
    decodeIndexChunk(indexChunk("LIST32", {7, 8, 9}, {}), upper, decoded);
    EXPECT_FALSE(decoded.is32Bit);
}

TEST(IndexBuffer, TruncatedChunksKeepWhatFits)
{
    LogCapture log;
    const QByteArray whole = indexChunk("list32", {1, 2, 3, 4, 5, 6}, {{0, 2, 0, 7}});
    for (int size : {0, 40, 71, 72, 80, 96, int(whole.size()) - 1}) {
        MeshGeometry geometry;
        DecodedIndices decoded;
        EXPECT_FALSE(decodeIndexChunk(whole.left(size), geometry, decoded)) << size;
        EXPECT_EQ(qsizetype(geometry.triangleCount) * 3, geometry.indices16.size());
        EXPECT_LE(geometry.indices32.size() * 4, qMax(0, size - 72));
        EXPECT_TRUE(decoded.groups.isEmpty());
    }
    // A count far beyond the chunk.
    QByteArray huge = whole;
    qToLittleEndian<quint32>(0xFFFFFFFF, huge.data() + 64);
    MeshGeometry geometry;
    DecodedIndices decoded;
    EXPECT_FALSE(decodeIndexChunk(huge, geometry, decoded));
    // The group bytes now count as indices: ten of them, three triangles.
    EXPECT_EQ(geometry.triangleCount, 3u);
    EXPECT_FALSE(log.lines.isEmpty());
}

TEST(IndexBuffer, GlBufferHoldsTheChunkWidth)
{
    GlTestContext gl;
    ASSERT_TRUE(gl.valid);
    QOpenGLFunctions_3_2_Core* f = glFunctions();

    MeshGeometry geometry;
    IndexBuffer wide(indexChunk("list32", {1, 70000, 3}, {{0, 1, 2, 5}, {0, 1, 4, 2}}), &geometry);
    EXPECT_TRUE(wide.is32Bit);
    EXPECT_EQ(wide.vertexCount, 7u);
    EXPECT_EQ(geometry.indices32, (QVector<quint32>{3, 70000, 1}));
    EXPECT_EQ(geometry.indices16, (QVector<quint16>{3, quint16(70000 - 65536), 1}));
    ASSERT_EQ(wide.buffer->byteSize, 12u);
    quint32 stored[3] = {};
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, wide.buffer->name);
    f->glGetBufferSubData(GL_ELEMENT_ARRAY_BUFFER, 0, 12, stored);
    EXPECT_EQ(stored[1], 70000u);
    EXPECT_EQ(stored[0], 3u);

    MeshGeometry narrowGeometry;
    IndexBuffer narrow(indexChunk("list", {1, 2, 3}, {}), &narrowGeometry);
    EXPECT_EQ(narrow.vertexCount, 0u);
    ASSERT_EQ(narrow.buffer->byteSize, 6u);
    quint16 shorts[3] = {};
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, narrow.buffer->name);
    f->glGetBufferSubData(GL_ELEMENT_ARRAY_BUFFER, 0, 6, shorts);
    EXPECT_EQ(shorts[0], 3);
    EXPECT_EQ(shorts[2], 1);
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    EXPECT_EQ(f->glGetError(), GLenum(GL_NO_ERROR));

    wide.release();
    wide.release();
    EXPECT_EQ(wide.buffer, nullptr);
}

TEST(PrimitivesTool, ListsChunksAndWhatTheyHold)
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("m.primitives"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    QByteArray vertices = formatField("XYZNUV") + word(2) + QByteArray(64, '\0');
    file.write(container({{"m.vertices", vertices},
                          {"m.indices", indexChunk("list32", {0, 1, 1}, {{0, 1, 0, 2}})},
                          {"uv2", QByteArray(16, '\0')}}));
    file.close();

    const ToolResult result = runTool({QStringLiteral("primitives"), path});
    EXPECT_EQ(result.exitCode, 0) << result.err.constData();
    const QList<QByteArray> lines = result.out.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 4) << result.out.constData();
    EXPECT_EQ(lines[0], "m.vertices 132 vertices xyznuv 2");
    EXPECT_EQ(lines[1], "m.indices 100 indices 32-bit 3 indices 1 groups");
    EXPECT_TRUE(lines[2].contains("start index 0, 1 triangles, start vertex 0, 2 vertices"));
    EXPECT_EQ(lines[3], "uv2 16 uv2 2 pairs");

    // A resource name goes through the game's files.
    GameTree game;
    game.writeFile(QStringLiteral("res/vehicles/m.primitives"), container({{"only", "1234"}}));
    const ToolResult named = runTool(
        {QStringLiteral("primitives"), QStringLiteral("vehicles/m.primitives"), game.path()});
    EXPECT_EQ(named.exitCode, 0) << named.err.constData();
    EXPECT_EQ(named.out, "only 4\n");

    QFile broken(path);
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write(word(primitivesMagic) + word(0));
    broken.close();
    EXPECT_EQ(runTool({QStringLiteral("primitives"), path}).exitCode, 1);
    EXPECT_EQ(runTool({QStringLiteral("primitives")}).exitCode, 2);
}
