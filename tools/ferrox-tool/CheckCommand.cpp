#include "GeometryCommands.h"

#include "BinaryReader.h"
#include "Constants.h"
#include "DdsImage.h"
#include "FileManager.h"
#include "IndexBuffer.h"
#include "Log.h"
#include "MeshGeometry.h"
#include "ModelFiles.h"
#include "PackedXmlReader.h"
#include "PrimitiveParser.h"
#include "ReadFailure.h"
#include "TextureLoader.h"
#include "ToolContext.h"
#include "VertexDecoding.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMap>
#include <QRegularExpression>
#include <QSet>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

// What went wrong with the file being checked: the readers' log lines and
// failures, gathered while it is read.
QStringList problems;

void recordLogLine(const QString& message, int level)
{
    if (level >= Log::Warning)
        problems.append(message);
}

void recordFailure(const ReadFailure& failure)
{
    if (failure.failed())
        problems.append(failure.message());
}

enum class Kind
{
    Other,
    Xml,
    Visual,
    Primitives,
    Dds
};

Kind kindOf(const QString& name)
{
    QString suffix = QFileInfo(name).suffix().toLower();
    // Current clients' models: the same files with "_processed" appended.
    if (suffix.endsWith(processedSuffix))
        suffix.chop(processedSuffix.size());
    if (suffix == QLatin1String("visual"))
        return Kind::Visual;
    if (suffix == QLatin1String("xml") || suffix == QLatin1String("model") ||
        suffix == QLatin1String("texformat"))
        return Kind::Xml;
    if (suffix == QLatin1String("primitives"))
        return Kind::Primitives;
    if (suffix == QLatin1String("dds"))
        return Kind::Dds;
    return Kind::Other;
}

// Every file name Ferrox could be asked for: the mod folder's, the loose
// files below res/ and the archives' members, once each (archive lookups
// ignore case, so names are compared that way).
QStringList installationNames(ToolContext& context, const QString& modDirectory)
{
    QStringList names;
    QSet<QString> seen;
    auto add = [&](const QString& name) {
        if (!name.endsWith(QLatin1Char('/')) && !seen.contains(name.toLower())) {
            seen.insert(name.toLower());
            names.append(name);
        }
    };
    auto addFolder = [&](const QString& folder, bool skipPackages) {
        if (folder.isEmpty())
            return;
        const QDir root(folder);
        QDirIterator it(root.path(), QDir::Files, QDirIterator::Subdirectories);
        QStringList found;
        while (it.hasNext()) {
            const QString name = root.relativeFilePath(it.next());
            if (!(skipPackages && name.startsWith(QLatin1String("packages/"))))
                found.append(name);
        }
        found.sort();
        for (const QString& name : found)
            add(name);
    };
    addFolder(modDirectory, false);
    addFolder(context.gameDirectory() + QStringLiteral("/res"), true);
    FileManager& files = context.files();
    for (int i = 0; i < files.archiveCount(); ++i)
        for (const ZipArchive::Member& member : files.archive(i).members())
            add(QString::fromLocal8Bit(member.name));
    return names;
}

// The garage archives are not in the resource list; Ferrox adds them when
// the backdrops load, so their files belong to what it reads.
void addGarageArchives(ToolContext& context)
{
    QFile file(QString::fromLatin1(Ferrox::DataDirectory) +
               QString::fromLatin1(Ferrox::GarageListName));
    QDomDocument document;
    if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file))
        return;
    const QDomNodeList zips = document.elementsByTagName(QString::fromLatin1(Ferrox::ArchiveTag));
    for (int i = 0; i < zips.size(); ++i) {
        const QString name = zips.at(i).toElement().text().trimmed();
        if (!name.isEmpty())
            context.files().addArchive(
                context.gameDirectory() + QString::fromLatin1(Ferrox::PackageFolder) + name, true);
    }
}

QDomDocument readDocument(const QByteArray& bytes, const QString& name)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    ReadFailure failure;
    const QDomDocument document = reader.read(name, failure);
    recordFailure(failure);
    return document;
}

bool checkXml(const QByteArray& bytes, const QString& name)
{
    const int before = int(problems.size());
    const QDomDocument document = readDocument(bytes, name);
    if (document.documentElement().isNull() && problems.size() == before)
        problems.append(QStringLiteral("not a readable XML document"));
    return problems.size() == before;
}

// Read as the viewport reads it: a file that parses but that the upload
// refuses is not shown either.
bool checkDds(const QByteArray& bytes)
{
    DdsImage image;
    if (!image.parse(bytes)) {
        if (problems.isEmpty())
            problems.append(QStringLiteral("not a readable DDS texture"));
        return false;
    }
    const QString problem = ddsUploadProblem(image);
    if (problem.isEmpty())
        return true;
    problems.append(problem);
    return false;
}

// Decodes a vertex chunk as the viewport would, without GL; the decoded
// vertex count, or -1 when the chunk fails.
qint64 checkVertexChunk(const PrimitiveChunk& chunk)
{
    VertexChunkHeader header;
    if (!readVertexChunkHeader(chunk.data, header)) {
        problems.append(QStringLiteral("vertex chunk ") + chunk.name + QStringLiteral(": ") +
                        header.problem);
        return -1;
    }
    if (header.format == VertexFormat::Unknown) {
        problems.append(QStringLiteral("vertex chunk ") + chunk.name +
                        QStringLiteral(": format not supported: ") +
                        QString::fromLatin1(header.formatName));
        return -1;
    }
    const qint64 needed =
        qint64(header.vertexCount) * fileStride(header.format) + header.recordOffset;
    if (needed > chunk.data.size()) {
        problems.append(QStringLiteral("vertex chunk ") + chunk.name +
                        QStringLiteral(": shorter than its vertex count"));
        return -1;
    }
    std::vector<float> output(size_t(header.vertexCount) *
                              size_t(glFloatsPerVertex(header.format, false)));
    MeshGeometry geometry;
    if (!decodeVertices(header, chunk.data, {}, geometry, output.data()))
        return -1;
    return header.vertexCount;
}

// Every index below vertexCount and every group inside the index data;
// vertexCount < 0 skips the vertex test.
bool checkIndexChunk(const PrimitiveChunk& chunk, qint64 vertexCount)
{
    MeshGeometry geometry;
    DecodedIndices decoded;
    if (!decodeIndexChunk(chunk.data, geometry, decoded)) {
        recordFailure(decoded.failure);
        return false;
    }
    const qint64 count = decoded.is32Bit ? geometry.indices32.size() : geometry.indices16.size();
    for (const PrimitiveGroup& group : decoded.groups) {
        if (group.startIndex < 0 || group.primitiveCount < 0 ||
            qint64(group.startIndex) + qint64(group.primitiveCount) * 3 > count) {
            problems.append(QStringLiteral("index chunk ") + chunk.name +
                            QStringLiteral(": a primitive group reaches past the indices"));
            return false;
        }
    }
    if (vertexCount < 0)
        return true;
    for (qint64 i = 0; i < count; ++i) {
        const quint32 index = decoded.is32Bit ? geometry.indices32[i] : geometry.indices16[i];
        if (index >= vertexCount) {
            problems.append(QStringLiteral("index chunk ") + chunk.name +
                            QStringLiteral(": index ") + QString::number(index) +
                            QStringLiteral(" past the vertex data"));
            return false;
        }
    }
    return true;
}

bool looksLikeIndexChunk(const PrimitiveChunk& chunk)
{
    return chunk.data.startsWith("list");
}

bool parsePrimitives(const QByteArray& bytes, PrimitiveParser& parser)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    ReadFailure failure;
    if (parser.parse(&buffer, failure))
        return true;
    recordFailure(failure);
    if (problems.isEmpty())
        problems.append(QStringLiteral("chunk table unreadable"));
    return false;
}

bool checkPrimitives(const QByteArray& bytes)
{
    PrimitiveParser parser;
    if (!parsePrimitives(bytes, parser))
        return false;
    bool ok = true;
    for (const PrimitiveChunk* chunk : parser.chunks) {
        if (chunk->name.endsWith(QLatin1String(".vertices")))
            ok = checkVertexChunk(*chunk) >= 0 && ok;
        else if (looksLikeIndexChunk(*chunk))
            ok = checkIndexChunk(*chunk, -1) && ok;
    }
    return ok;
}

QString cleaned(const QString& text)
{
    return text.simplified().remove(QLatin1Char(' '));
}

class Checker
{
public:
    explicit Checker(FileManager& fileManager) : files(fileManager) {}

    bool check(const QString& name)
    {
        ReadFailure failure;
        std::unique_ptr<QIODevice> device(files.getFile(name, failure));
        if (!device) {
            problems.append(QStringLiteral("cannot be opened"));
            return false;
        }
        recordFailure(failure);
        const QByteArray bytes = device->readAll();
        switch (kindOf(name)) {
        case Kind::Xml:
            return checkXml(bytes, name);
        case Kind::Visual:
            return checkXml(bytes, name) && checkVisual(readDocument(bytes, name), name);
        case Kind::Primitives:
            return checkPrimitives(bytes);
        case Kind::Dds:
            return checkDds(bytes);
        case Kind::Other:
            break;
        }
        return true;
    }

private:
    bool exists(const QString& name)
    {
        auto found = existing.constFind(name);
        if (found != existing.constEnd())
            return *found;
        ReadFailure failure;
        std::unique_ptr<QIODevice> device(files.getFile(name, failure));
        recordFailure(failure);
        existing.insert(name, device != nullptr);
        return device != nullptr;
    }

    // The chunks and textures a visual names must be there and decode.
    bool checkVisual(const QDomDocument& document, const QString& name)
    {
        QString primitivesName = name;
        primitivesName.replace(QRegularExpression(QStringLiteral("\\.visual(_processed)?$"),
                                                  QRegularExpression::CaseInsensitiveOption),
                               QStringLiteral(".primitives"));
        // The program's own lookup, which falls back on the processed name.
        ReadFailure failure;
        std::unique_ptr<QIODevice> device(
            openModelFile(&files, primitivesName, primitivesName, failure));
        recordFailure(failure);
        if (!device) {
            problems.append(QStringLiteral("no primitives file ") + primitivesName);
            return false;
        }
        PrimitiveParser parser;
        if (!parsePrimitives(device->readAll(), parser))
            return false;

        bool ok = true;
        const QDomNodeList geometries = document.elementsByTagName(QStringLiteral("geometry"));
        for (int i = 0; i < geometries.size(); ++i)
            ok = checkGeometry(geometries.at(i).toElement(), parser) && ok;
        const QDomNodeList textures = document.elementsByTagName(QStringLiteral("Texture"));
        for (int i = 0; i < textures.size(); ++i) {
            const QString texture = textures.at(i).toElement().text().trimmed();
            if (texture.isEmpty())
                continue;
            const QString key = TextureLoader::normalisedName(texture);
            if (!exists(key)) {
                problems.append(QStringLiteral("texture not found: ") + key);
                ok = false;
            }
        }
        return ok;
    }

    bool checkGeometry(const QDomElement& geometry, const PrimitiveParser& parser)
    {
        const QString verticesName =
            cleaned(geometry.firstChildElement(QStringLiteral("vertices")).text());
        const QString indicesName =
            cleaned(geometry.firstChildElement(QStringLiteral("primitive")).text());
        const PrimitiveChunk* vertices = findChunk(parser, verticesName);
        const PrimitiveChunk* indices = findChunk(parser, indicesName);
        if (!vertices || !indices)
            return false;
        const qint64 vertexCount = checkVertexChunk(*vertices);
        if (vertexCount < 0 || !checkIndexChunk(*indices, vertexCount))
            return false;

        MeshGeometry scratch;
        DecodedIndices decoded;
        decodeIndexChunk(indices->data, scratch, decoded);
        const QDomNodeList groups = geometry.elementsByTagName(QStringLiteral("primitiveGroup"));
        static const QRegularExpression nonDigits(QStringLiteral("\\D+"));
        for (int i = 0; i < groups.size(); ++i) {
            const QStringList numbers =
                groups.at(i).toElement().text().split(nonDigits, Qt::SkipEmptyParts);
            const int group = numbers.isEmpty() ? -1 : numbers.first().toInt();
            if (group < 0 || group >= decoded.groups.size()) {
                problems.append(
                    QStringLiteral("primitiveGroup ") +
                    (numbers.isEmpty() ? QStringLiteral("without a number") : numbers.first()) +
                    QStringLiteral(" of ") + indicesName + QStringLiteral(" does not exist"));
                return false;
            }
        }
        return true;
    }

    // The chunk by exact name, without the parser's own warning, so the
    // report names the visual's view of the problem.
    static const PrimitiveChunk* findChunk(const PrimitiveParser& parser, const QString& name)
    {
        for (const PrimitiveChunk* chunk : parser.chunks)
            if (chunk->name == name)
                return chunk;
        problems.append(QStringLiteral("chunk not found: ") + name);
        return nullptr;
    }

    FileManager& files;
    QHash<QString, bool> existing;
};

void printFailure(const QString& name)
{
    problems.removeDuplicates();
    const QString line =
        name + QLatin1Char('\t') + problems.join(QStringLiteral("; ")) + QLatin1Char('\n');
    const QByteArray bytes = line.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

} // namespace

int checkCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 1) {
        printError(
            QStringLiteral("usage: ferrox-tool check GAME_DIR [--mod MOD_DIR] [--resources FILE]"));
        return 2;
    }
    ToolContext context(arguments.positional[0], arguments);
    if (!context.requireGameDirectory())
        return 1;
    addGarageArchives(context);
    const QString modDirectory = arguments.modDirectory.isEmpty()
                                     ? QString()
                                     : QFileInfo(arguments.modDirectory).absoluteFilePath();

    Log::setFallbackSink(recordLogLine);
    Checker checker(context.files());
    int checked = 0;
    int failed = 0;
    for (const QString& name : installationNames(context, modDirectory)) {
        if (kindOf(name) == Kind::Other)
            continue;
        problems.clear();
        ++checked;
        if (!checker.check(name) || !problems.isEmpty()) {
            ++failed;
            printFailure(name);
        }
    }
    Log::setFallbackSink({});
    std::fflush(stdout);
    std::fprintf(stderr, "%d files checked, %d failed\n", checked, failed);
    return failed > 0 ? 1 : 0;
}
