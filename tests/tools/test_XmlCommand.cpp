// ferrox-tool xml: a game document printed as Ferrox reads it, from a file on
// disk or looked up in a game installation.

#include "QtPrinters.h"
#include "TestRoot.h"
#include "ToolRunner.h"
#include "ZipBuilder.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
ToolResult runXml(const QStringList& arguments, const QString& workingDirectory = QString())
{
    return runTool(QStringList{QStringLiteral("xml")} + arguments, workingDirectory);
}

// Root "x", one child "a" holding the integer 5: the smallest packed file
// with content, written out byte by byte.
const QByteArray workedExample = QByteArray::fromHex("454ea162"
                                                     "00"
                                                     "6100"
                                                     "00"
                                                     "0100"
                                                     "00000010"
                                                     "0000"
                                                     "01000020"
                                                     "05");

void writeFile(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

class XmlCommandTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        // An empty archive list keeps the lookups to the trees made here.
        resources = folder.filePath(QStringLiteral("none.cfg"));
        writeFile(resources, "<list></list>");
    }

    QTemporaryDir folder;
    QString resources;
};
} // namespace

TEST_F(XmlCommandTest, PrintsAPackedFileFromDisk)
{
    const QString path = folder.filePath(QStringLiteral("sub/Hull.model"));
    writeFile(path, workedExample);

    const ToolResult result = runXml({path});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, QByteArray("<Hull.visual><a>5</a>\n</Hull.visual>\n"));
    EXPECT_TRUE(result.err.isEmpty());

    // A relative path counts from where the tool was started.
    const ToolResult relative = runXml({QStringLiteral("sub/Hull.model")}, folder.path());
    EXPECT_EQ(relative.exitCode, 0);
    EXPECT_EQ(relative.out, result.out);
}

TEST_F(XmlCommandTest, PrintsPlainTextSimplified)
{
    const QString path = folder.filePath(QStringLiteral("plain.xml"));
    writeFile(path, "<root>\n <name>two\n lines</name>\n</root>\n");
    const ToolResult result = runXml({path});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, QByteArray("<root>\n <name>two lines</name>\n</root>\n"));
}

TEST_F(XmlCommandTest, LooksNamesUpInTheGameLikeTheProgram)
{
    GameTree game;
    game.writeFile(QStringLiteral("res/scripts/loose.xml"), workedExample);
    ZipBuilder()
        .add("scripts/Packed.xml", workedExample, ZipBuilder::Deflated)
        .writeTo(game.packagePath(QStringLiteral("own.pkg")));
    const QString list = folder.filePath(QStringLiteral("own.cfg"));
    writeFile(list, "<list><Zip>own.pkg</Zip></list>");

    const ToolResult loose = runXml({QStringLiteral("scripts/loose.xml"), game.path(),
                                     QStringLiteral("--resources"), resources});
    ASSERT_EQ(loose.exitCode, 0) << loose.err.toStdString();
    EXPECT_EQ(loose.out, QByteArray("<loose.xml><a>5</a>\n</loose.xml>\n"));

    // Archive lookups ignore case; the root's tag keeps the name as given.
    const ToolResult archived = runXml(
        {QStringLiteral("SCRIPTS/packed.xml"), game.path(), QStringLiteral("--resources"), list});
    ASSERT_EQ(archived.exitCode, 0) << archived.err.toStdString();
    EXPECT_EQ(archived.out, QByteArray("<packed.xml><a>5</a>\n</packed.xml>\n"));

    // A file beside the caller is found although the tool moves elsewhere.
    writeFile(folder.filePath(QStringLiteral("here.xml")), workedExample);
    const ToolResult here =
        runXml({QStringLiteral("here.xml"), game.path(), QStringLiteral("--resources"), resources},
               folder.path());
    EXPECT_EQ(here.exitCode, 0) << here.err.toStdString();
    EXPECT_TRUE(here.out.startsWith("<here.xml>"));
}

TEST_F(XmlCommandTest, MissingFilesFail)
{
    const ToolResult onDisk = runXml({folder.filePath(QStringLiteral("absent.xml"))});
    EXPECT_EQ(onDisk.exitCode, 1);
    EXPECT_TRUE(onDisk.err.contains("absent.xml"));
    EXPECT_TRUE(onDisk.out.isEmpty());

    GameTree game;
    const ToolResult inGame = runXml({QStringLiteral("scripts/absent.xml"), game.path(),
                                      QStringLiteral("--resources"), resources});
    EXPECT_EQ(inGame.exitCode, 1);
    EXPECT_TRUE(inGame.err.contains("scripts/absent.xml"));

    QTemporaryDir notAGame;
    const ToolResult noGame = runXml({QStringLiteral("scripts/absent.xml"), notAGame.path(),
                                      QStringLiteral("--resources"), resources});
    EXPECT_EQ(noGame.exitCode, 1);
    EXPECT_TRUE(noGame.err.contains("Gavrel.exe"));

    EXPECT_EQ(runXml({}).exitCode, 2);
    EXPECT_EQ(runXml({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}).exitCode, 2);
}

TEST_F(XmlCommandTest, UnreadableDocumentsFailWithTheReason)
{
    // Cut inside the child's value: the box text reaches standard error and
    // what was read before it is still printed.
    const QString cut = folder.filePath(QStringLiteral("cut.xml"));
    writeFile(cut, workedExample.left(workedExample.size() - 1));
    const ToolResult truncated = runXml({cut});
    EXPECT_EQ(truncated.exitCode, 1);
    EXPECT_TRUE(truncated.err.contains("Error reading data: readCharSigned()"))
        << truncated.err.toStdString();
    EXPECT_TRUE(truncated.out.startsWith("<cut.xml>"));

    const QString broken = folder.filePath(QStringLiteral("broken.xml"));
    writeFile(broken, "<root><open></root>");
    const ToolResult unparsed = runXml({broken});
    EXPECT_EQ(unparsed.exitCode, 1);
    EXPECT_TRUE(unparsed.err.contains("broken.xml"));

    const QString empty = folder.filePath(QStringLiteral("empty.xml"));
    writeFile(empty, QByteArray());
    const ToolResult nothing = runXml({empty});
    EXPECT_EQ(nothing.exitCode, 1);
    EXPECT_TRUE(nothing.err.contains("Error reading data: readInt()"));
}
