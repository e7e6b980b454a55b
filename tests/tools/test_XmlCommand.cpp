// ferrox-tool xml: a game document printed as Ferrox reads it, from a file on
// disk or looked up in a game installation.

#include "QtPrinters.h"
#include "TestRoot.h"
#include "ToolRunner.h"
#include "ZipBuilder.h"

#include <gtest/gtest.h>

namespace {
ToolResult runXml(const QStringList& arguments, const QString& workingDirectory = QString())
{
    return runTool(QStringList{"xml"} + arguments, workingDirectory);
}

// Root "x", one child "a" holding the integer 5: the smallest packed file
// with content, written out byte by byte.
const QByteArray workedExample =
    QByteArray::fromHex("454ea162 00 6100 00 0100 00000010 0000 01000020 05");

class XmlCommandTest : public testing::Test
{
protected:
    // An empty archive list keeps the lookups to the trees made here.
    void SetUp() override { folder.writeFile("none.cfg", "<list></list>"); }

    QString file(const QString& name) const { return folder.path() + '/' + name; }

    GameTree folder{false};
    GameTree game;
    const QString resources = file("none.cfg");
};
} // namespace

TEST_F(XmlCommandTest, PrintsPackedAndPlainFilesFromDisk)
{
    folder.writeFile("sub/Hull.model", workedExample);
    const ToolResult result = runXml({file("sub/Hull.model")});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, QByteArray("<Hull.visual><a>5</a>\n</Hull.visual>\n"));
    EXPECT_TRUE(result.err.isEmpty());

    // A relative path counts from where the tool was started.
    const ToolResult relative = runXml({"sub/Hull.model"}, folder.path());
    EXPECT_EQ(relative.exitCode, 0);
    EXPECT_EQ(relative.out, result.out);

    folder.writeFile("plain.xml", "<root>\n <name>two\n lines</name>\n</root>\n");
    const ToolResult plain = runXml({file("plain.xml")});
    ASSERT_EQ(plain.exitCode, 0) << plain.err.toStdString();
    EXPECT_EQ(plain.out, QByteArray("<root>\n <name>two lines</name>\n</root>\n"));
}

TEST_F(XmlCommandTest, LooksNamesUpInTheGameLikeTheProgram)
{
    game.writeFile("res/scripts/loose.xml", workedExample);
    ZipBuilder()
        .add("scripts/Packed.xml", workedExample, ZipBuilder::Deflated)
        .writeTo(game.packagePath("own.pkg"));
    folder.writeFile("own.cfg", "<list><Zip>own.pkg</Zip></list>");

    const ToolResult loose = runXml({"scripts/loose.xml", game.path(), "--resources", resources});
    ASSERT_EQ(loose.exitCode, 0) << loose.err.toStdString();
    EXPECT_EQ(loose.out, QByteArray("<loose.xml><a>5</a>\n</loose.xml>\n"));

    // Archive lookups ignore case; the root's tag keeps the name as given.
    const ToolResult archived =
        runXml({"SCRIPTS/packed.xml", game.path(), "--resources", file("own.cfg")});
    ASSERT_EQ(archived.exitCode, 0) << archived.err.toStdString();
    EXPECT_EQ(archived.out, QByteArray("<packed.xml><a>5</a>\n</packed.xml>\n"));

    // A file beside the caller is found although the tool moves elsewhere.
    folder.writeFile("here.xml", workedExample);
    const ToolResult here =
        runXml({"here.xml", game.path(), "--resources", resources}, folder.path());
    EXPECT_EQ(here.exitCode, 0) << here.err.toStdString();
    EXPECT_TRUE(here.out.startsWith("<here.xml>"));
}

TEST_F(XmlCommandTest, MissingOrUnreadableDocumentsFailWithTheReason)
{
    // Cut inside the child's value: the box text reaches standard error and
    // what was read before it is still printed.
    folder.writeFile("cut.xml", workedExample.left(workedExample.size() - 1));
    folder.writeFile("broken.xml", "<root><open></root>");
    folder.writeFile("empty.xml", QByteArray());
    GameTree notAGame(false);
    const struct
    {
        QStringList arguments;
        int exitCode;
        QByteArray error;
        QByteArray outStart;
    } cases[] = {
        {{file("absent.xml")}, 1, "absent.xml", ""},
        {{"scripts/absent.xml", game.path(), "--resources", resources},
         1,
         "scripts/absent.xml",
         ""},
        {{"scripts/absent.xml", notAGame.path(), "--resources", resources}, 1, "Gavrel.exe", ""},
        {{file("cut.xml")}, 1, "Error reading data: readCharSigned()", "<cut.xml>"},
        {{file("broken.xml")}, 1, "broken.xml", ""},
        {{file("empty.xml")}, 1, "Error reading data: readInt()", ""},
        {{}, 2, "", ""},
        {{"a", "b", "c"}, 2, "", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const ToolResult result = runXml(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_TRUE(result.err.contains(c.error)) << result.err.toStdString();
        // An empty start asks for no output at all.
        EXPECT_TRUE(c.outStart.isEmpty() ? result.out.isEmpty() : result.out.startsWith(c.outStart))
            << result.out.toStdString();
    }
}
