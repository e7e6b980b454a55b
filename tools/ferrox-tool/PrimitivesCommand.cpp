#include "GeometryCommands.h"

#include "FileManager.h"
#include "IndexBuffer.h"
#include "Log.h"
#include "MeshGeometry.h"
#include "PrimitiveParser.h"
#include "ReadFailure.h"
#include "ToolContext.h"
#include "VertexDecoding.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {
void printLine(const QString& line)
{
    std::fprintf(stdout, "%s\n", line.toUtf8().constData());
}

// The text of a chunk's 64-byte format field, up to its NUL.
QByteArray formatField(const QByteArray& data)
{
    const QByteArray field = data.left(64);
    const qsizetype end = field.indexOf('\0');
    return end < 0 ? field : field.left(end);
}

QString describeIndices(const PrimitiveChunk& chunk, QStringList& groupLines)
{
    MeshGeometry geometry;
    DecodedIndices decoded;
    decodeIndexChunk(chunk.data, geometry, decoded);
    const quint32 indexCount = qFromLittleEndian<quint32>(chunk.data.constData() + 64);
    const quint32 groupCount = qFromLittleEndian<quint32>(chunk.data.constData() + 68);
    for (int i = 0; i < decoded.groups.size(); ++i) {
        const PrimitiveGroup& group = decoded.groups[i];
        groupLines << QStringLiteral("  group %1: start index %2, %3 triangles, start vertex %4, "
                                     "%5 vertices")
                          .arg(i)
                          .arg(group.startIndex)
                          .arg(group.primitiveCount)
                          .arg(group.startVertex)
                          .arg(group.vertexCount);
    }
    return QStringLiteral("indices %1-bit %2 indices %3 groups")
        .arg(decoded.is32Bit ? 32 : 16)
        .arg(indexCount)
        .arg(groupCount);
}

QString numbers(const float* values, int count)
{
    QStringList parts;
    for (int i = 0; i < count; ++i)
        parts << QString::number(values[i], 'g', 6);
    return parts.join(QLatin1Char(' '));
}

// The first `wanted` vertices as Ferrox holds them (mirrored), read back
// from the interleaved GL layout that the decoder writes.
void describeVertices(const VertexChunkHeader& header, const QByteArray& data, int wanted,
                      QStringList& lines)
{
    VertexChunkHeader shown = header;
    shown.vertexCount = std::min<quint32>(vertexRecordsPresent(header, data), quint32(wanted));
    const int floats = glFloatsPerVertex(header.format, false);
    std::vector<float> output(size_t(shown.vertexCount) * size_t(floats));
    MeshGeometry geometry;
    decodeVertices(shown, data, {}, geometry, output.data());
    for (quint32 i = 0; i < shown.vertexCount; ++i) {
        const float* vertex = output.data() + size_t(i) * size_t(floats);
        QString line = QStringLiteral("  vertex %1: position %2 normal %3 uv %4")
                           .arg(i)
                           .arg(numbers(vertex, 3), numbers(vertex + 3, 3), numbers(vertex + 6, 2));
        if (hasOwnSecondUv(header.format))
            line += QStringLiteral(" uv2 %1").arg(numbers(geometry.uv2s[int(i)].data(), 2));
        if (hasTangents(header.format))
            line += QStringLiteral(" tangent %1 binormal %2")
                        .arg(numbers(vertex + 8, 3), numbers(vertex + 11, 3));
        if (isSkinned(header.format)) {
            const auto& bones = geometry.boneIndices[int(i)];
            line += QStringLiteral(" bones %1 %2 %3 weights %4")
                        .arg(bones[0])
                        .arg(bones[1])
                        .arg(bones[2])
                        .arg(numbers(geometry.boneWeights[int(i)].data(), 3));
        }
        lines << line;
    }
}

QString describeVertexChunk(const PrimitiveChunk& chunk, int wantedVertices, QStringList& lines,
                            bool& unreadable)
{
    VertexChunkHeader header;
    const bool readable = readVertexChunkHeader(chunk.data, header);
    if (header.format == VertexFormat::Unknown && !header.processed())
        return QString();
    QString text = QStringLiteral("vertices %1 %2")
                       .arg(QString::fromLatin1(header.formatName))
                       .arg(header.vertexCount);
    if (header.processed())
        text += QStringLiteral(" processed (%1)").arg(QString::fromLatin1(header.processedAs));
    if (!readable || header.format == VertexFormat::Unknown) {
        unreadable = true;
        return text + QStringLiteral(" unreadable: ") +
               (readable ? QStringLiteral("format not supported") : header.problem);
    }
    describeVertices(header, chunk.data, wantedVertices, lines);
    return text;
}

// What a chunk holds, as far as its own bytes tell; empty when unknown.
QString describeChunk(const PrimitiveChunk& chunk, int wantedVertices, QStringList& lines,
                      bool& unreadable)
{
    if (chunk.name == QLatin1String("uv2"))
        return QStringLiteral("uv2 %1 pairs").arg(streamValues(chunk.data).size() / 8);
    // Both headers are longer than this; a shorter chunk is some other data.
    if (chunk.data.size() < 68)
        return QString();
    const QByteArray format = formatField(chunk.data).toLower();
    if (format.startsWith("list") && chunk.data.size() >= 72)
        return describeIndices(chunk, lines);
    if (format.startsWith("bpvs"))
        return QStringLiteral("stream %1 %2 values")
            .arg(QString::fromLatin1(format.mid(4)))
            .arg(streamValues(chunk.data).size() / 4);
    return describeVertexChunk(chunk, wantedVertices, lines, unreadable);
}

int printChunks(QIODevice& device, const QString& name, int wantedVertices)
{
    PrimitiveParser parser;
    ReadFailure failure;
    const bool parsed = parser.parse(&device, failure);
    bool unreadable = false;
    // What was read before a failed table check is still worth seeing.
    for (const PrimitiveChunk* chunk : std::as_const(parser.chunks)) {
        QStringList lines;
        const QString description = describeChunk(*chunk, wantedVertices, lines, unreadable);
        QString line = chunk->name + QLatin1Char(' ') + QString::number(chunk->size);
        if (!description.isEmpty())
            line += QLatin1Char(' ') + description;
        printLine(line);
        for (const QString& extra : std::as_const(lines))
            printLine(extra);
    }
    std::fflush(stdout);
    if (!parsed) {
        if (failure.failed())
            printError(failure.message());
        printError(QStringLiteral("Not a readable .primitives file: ") + name);
        return 1;
    }
    return unreadable ? 1 : 0;
}

} // namespace

int primitivesCommand(const ToolArguments& arguments)
{
    bool countGiven = true;
    const int wantedVertices = arguments.hasOption(QStringLiteral("vertices"))
                                   ? arguments.option(QStringLiteral("vertices")).toInt(&countGiven)
                                   : 0;
    if (arguments.positional.size() < 1 || arguments.positional.size() > 2 || !countGiven ||
        wantedVertices < 0) {
        printError(QStringLiteral("usage: ferrox-tool primitives FILE_OR_NAME [GAME_DIR] "
                                  "[--vertices N] [--mod DIR] [--resources FILE]"));
        return 2;
    }
    // Warnings go to standard error.
    Log::setFallbackSink([](const QString& message, int level) {
        if (level != Log::Info)
            printError(message);
    });
    const QString name = arguments.positional[0];
    QByteArray bytes;
    if (!readFileOrResource(name, arguments.positional.value(1), arguments, bytes))
        return 1;
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    return printChunks(device, name, wantedVertices);
}
