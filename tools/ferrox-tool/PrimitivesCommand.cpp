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

#include <cstdio>
#include <memory>

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

// What a chunk holds, as far as its own bytes tell; empty when unknown.
QString describeChunk(const PrimitiveChunk& chunk, QStringList& groupLines)
{
    if (chunk.name == QLatin1String("uv2"))
        return QStringLiteral("uv2 %1 pairs").arg(chunk.data.size() / 8);
    // Both headers are longer than this; a shorter chunk is some other data.
    if (chunk.data.size() < 68)
        return QString();
    if (formatField(chunk.data).startsWith("list") && chunk.data.size() >= 72)
        return describeIndices(chunk, groupLines);
    VertexChunkHeader header;
    readVertexChunkHeader(chunk.data, header);
    if (header.format != VertexFormat::Unknown)
        return QStringLiteral("vertices %1 %2")
            .arg(QString::fromLatin1(header.formatName))
            .arg(header.vertexCount);
    return QString();
}

int printChunks(QIODevice& device, const QString& name)
{
    PrimitiveParser parser;
    ReadFailure failure;
    const bool parsed = parser.parse(&device, failure);
    // What was read before a failed table check is still worth seeing.
    for (const PrimitiveChunk* chunk : std::as_const(parser.chunks)) {
        QStringList groupLines;
        const QString description = describeChunk(*chunk, groupLines);
        QString line = chunk->name + QLatin1Char(' ') + QString::number(chunk->size);
        if (!description.isEmpty())
            line += QLatin1Char(' ') + description;
        printLine(line);
        for (const QString& groupLine : std::as_const(groupLines))
            printLine(groupLine);
    }
    std::fflush(stdout);
    if (!parsed) {
        if (failure.failed())
            printError(failure.message());
        printError(QStringLiteral("Not a readable .primitives file: ") + name);
        return 1;
    }
    return 0;
}

} // namespace

int primitivesCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() < 1 || arguments.positional.size() > 2) {
        printError(QStringLiteral("usage: ferrox-tool primitives FILE_OR_NAME [GAME_DIR] [--mod "
                                  "DIR] [--resources FILE]"));
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
    return printChunks(device, name);
}
