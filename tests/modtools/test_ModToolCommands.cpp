#include "QtPrinters.h"
#include "TestFiles.h"
#include "ToolRunner.h"

#include <QDir>
#include <QHash>
#include <QImageReader>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

namespace {

const QString& Game = SampleGame;
const QString Talon = QStringLiteral("vehicles/Ardenia/A01_Talon/");

struct ObjCounts
{
    int vertices = -1;
    int faces = -1;
};

// Faces, and the distinct vertices they use: position, texture coordinate
// and normal together.
ObjCounts ourCounts(const QByteArray& text)
{
    QHash<QByteArray, QList<QByteArray>> lines;
    QList<QByteArray> faces;
    for (const QByteArray& line : text.split('\n')) {
        const QByteArray key = line.left(line.indexOf(' '));
        (key == "f" ? faces : lines[key]).append(line.mid(key.size()));
    }
    QSet<QByteArray> used;
    for (const QByteArray& face : faces) {
        for (const QByteArray& corner : face.simplified().split(' ')) {
            const int i = corner.left(corner.indexOf('/')).toInt() - 1;
            used.insert(lines["v"].value(i) + lines["vt"].value(i) + lines["vn"].value(i));
        }
    }
    return {int(used.size()), int(faces.size())};
}

// Assimp's reading, with only identical vertices joined: our vertices come
// back one for one.
ObjCounts assimpCounts(const QString& assimp, const QString& obj, const QString& dump)
{
    QProcess process;
    process.start(assimp, {"dump", obj, dump, "-jiv"});
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return {};
    QFile file(dump);
    file.open(QIODevice::ReadOnly);
    QXmlStreamReader xml(&file);
    ObjCounts counts;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == u"Positions")
            counts.vertices = xml.attributes().value("num").toInt();
        else if (xml.name() == u"FaceList")
            counts.faces = xml.attributes().value("num").toInt();
    }
    return counts;
}

TEST(ObjCommand, EveryFileOfTheSampleReadsBackInAssimp)
{
    const QString assimp = QStandardPaths::findExecutable("assimp");
    if (assimp.isEmpty())
        GTEST_SKIP() << "assimp (assimp-utils) is not installed";
    QTemporaryDir out;
    const std::pair<QString, QString> states[] = {{"intact", "normal/lod0/"},
                                                  {"destroyed", "crash/lod0/"},
                                                  {"collision", "collision_client/"}};
    for (const auto& [state, folder] : states) {
        const ToolResult result =
            runTool({"obj", Game, "Talon", "--out", out.path() + "/new/mods", "--state", state});
        if (noOpenGl(result))
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
        const QStringList files = filesBelow(out.path() + "/new/mods/" + Talon + folder);
        EXPECT_EQ(files,
                  (QStringList{"Chassis_0.obj", "Gun_01_0.obj", "Hull_0.obj", "Turret_01_0.obj"}));
        for (const QString& file : files) {
            const QString path = out.path() + "/new/mods/" + Talon + folder + file;
            const ObjCounts ours = ourCounts(readFile(path));
            EXPECT_GT(ours.faces, 0) << path.toStdString();
            const ObjCounts theirs = assimpCounts(assimp, path, out.filePath("dump.xml"));
            EXPECT_EQ(theirs.vertices, ours.vertices) << path.toStdString();
            EXPECT_EQ(theirs.faces, ours.faces) << path.toStdString();
        }
    }
}

TEST(UvCommand, EveryTemplateIsItsTextureTimesTheScale)
{
    QTemporaryDir out;
    const ToolResult result =
        runTool({"uv", Game, "Talon", "--out", out.path(), "--scale", "2", "--line-width", "1"});
    if (noOpenGl(result))
        GTEST_SKIP() << "no OpenGL 3.2 core context";
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QStringList written = QString::fromUtf8(result.out).split('\n', Qt::SkipEmptyParts);
    ASSERT_FALSE(written.isEmpty());
    EXPECT_EQ(filesBelow(out.path()).size(), written.size());
    static const QRegularExpression sizeText("(\\d+) x (\\d+)");
    for (const QString& file : written) {
        QString texture = QDir(out.path()).relativeFilePath(file);
        texture.replace(".png", ".dds");
        const QRegularExpressionMatch size =
            sizeText.match(QString::fromUtf8(runTool({"dds", texture, Game}).out));
        ASSERT_TRUE(size.hasMatch()) << texture.toStdString();
        EXPECT_EQ(QImageReader(file).size(),
                  QSize(size.captured(1).toInt() * 2, size.captured(2).toInt() * 2))
            << file.toStdString();
    }
    EXPECT_EQ(runTool({"uv", Game, "Talon", "--out", out.path(), "--scale", "5"}).exitCode, 1);
}

TEST(ExtractCommand, CopiesTheArchiveBytesAndKeepsChangedFilesUnlessTold)
{
    QTemporaryDir mods;
    const ToolResult first = runTool({"extract", Game, "Talon", "--mod", mods.path()});
    if (noOpenGl(first))
        GTEST_SKIP() << "no OpenGL 3.2 core context";
    ASSERT_EQ(first.exitCode, 0) << first.err.toStdString();
    const QStringList files = filesBelow(mods.path());
    ASSERT_FALSE(files.isEmpty());
    EXPECT_EQ(QString::fromUtf8(first.out).count("extracted: "), files.size());
    for (const QString& file : files)
        EXPECT_EQ(readFile(mods.filePath(file)), runTool({"cat", Game, file}).out)
            << file.toStdString();

    const QString changed = mods.filePath(files.first());
    QFile(changed).open(QIODevice::WriteOnly);
    const ToolResult kept = runTool({"extract", Game, "Talon", "--mod", mods.path()});
    EXPECT_TRUE(kept.out.contains("kept: " + files.first().toUtf8()));
    EXPECT_EQ(QFileInfo(changed).size(), 0);
    EXPECT_EQ(runTool({"extract", Game, "Talon", "--mod", mods.path(), "--overwrite"}).exitCode, 0);
    EXPECT_EQ(readFile(changed), runTool({"cat", Game, files.first()}).out);
}

// Every tool of the mod workflow, asked to write beside or into the game,
// leaves the game folder as it was.
TEST(ModTools, NothingIsWrittenIntoTheGameFolder)
{
    const QByteArray before = folderDigest(Game);
    QTemporaryDir out;
    const QList<QStringList> commands = {
        {"render", Game, "Talon", "--out", out.filePath("shot.png"), "--size", "64x48",
         "--transparent"},
        {"obj", Game, "Talon", "--out", out.filePath("obj"), "--state", "destroyed"},
        {"uv", Game, "Talon", "--out", out.filePath("uv"), "--format", "svg"},
        {"uv", Game, "Talon", "--out", out.filePath("uv"), "--format", "tiff", "--scale", "3"},
        {"extract", Game, "Talon", "--mod", out.filePath("mods")},
        {"extract", Game, "Talon", "--mod", out.filePath("mods"), "--overwrite"},
    };
    for (const QStringList& command : commands) {
        const ToolResult result = runTool(command);
        if (noOpenGl(result))
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        EXPECT_EQ(result.exitCode, 0) << command.join(' ').toStdString() << "\n"
                                      << result.err.toStdString();
    }
    const QList<QStringList> refused = {
        {"obj", Game, "Talon", "--out", Game + "/res_mods"},
        {"obj", Game, "Talon", "--out", Game + "/res/../new"},
        {"uv", Game, "Talon", "--out", Game},
        {"extract", Game, "Talon", "--mod", Game + "/res"},
        {"render", Game, "Talon", "--out", Game + "/shot.png"},
    };
    for (const QStringList& command : refused) {
        const ToolResult result = runTool(command);
        EXPECT_EQ(result.exitCode, 1) << command.join(' ').toStdString();
        EXPECT_TRUE(result.err.contains("never writes into the game folder"))
            << result.err.toStdString();
    }
    EXPECT_EQ(folderDigest(Game), before);
}

} // namespace
