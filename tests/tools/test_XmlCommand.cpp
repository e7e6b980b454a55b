// ferrox-tool xml: a game document printed as Ferrox reads it, from a file on
// disk or looked up in a game installation.

#include "QtPrinters.h"
#include "TestRoot.h"
#include "ToolRunner.h"
#include "ZipBuilder.h"

#include <gtest/gtest.h>

namespace {
// Root "x", one child "a" holding the integer 5: the smallest packed file
// with content, written out byte by byte.
const QByteArray workedExample =
    QByteArray::fromHex("454ea162 00 6100 00 0100 00000010 0000 01000020 05");
const QByteArray hullText = "<Hull.visual><a>5</a>\n</Hull.visual>\n";
} // namespace

// From disk (a relative path counts from where the tool was started, also
// when it moves to its own folder to look names up), loose in the game or
// from an archive, whose lookups ignore case; the root's tag keeps the name
// as given. A failure of the reader reaches standard error with exit code 1,
// and what was read before it is still printed.
TEST(XmlCommandTest, PrintsTheDocumentOrTheReasonItCannot)
{
    GameTree folder(false);
    GameTree game;
    GameTree notAGame(false);
    const QString here = folder.path();
    auto file = [&](const QString& name) { return here + '/' + name; };
    folder.writeFile("sub/Hull.model", workedExample);
    folder.writeFile("plain.xml", "<root>\n <name>two\n lines</name>\n</root>\n");
    folder.writeFile("cut.xml", workedExample.chopped(1));
    folder.writeFile("broken.xml", "<root><open></root>");
    folder.writeFile("empty.xml", QByteArray());
    folder.writeFile("none.cfg", "<list></list>"); // keeps lookups to the trees made here
    folder.writeFile("own.cfg", "<list><Zip>own.pkg</Zip></list>");
    game.writeFile("res/scripts/loose.xml", workedExample);
    ZipBuilder()
        .add("scripts/Packed.xml", workedExample, ZipBuilder::Deflated)
        .writeTo(game.packagePath("own.pkg"));
    const QStringList none = {"--resources", file("none.cfg")};
    const QString readInt = "Error reading data: readInt()";

    const struct
    {
        QStringList arguments;
        QString workingDirectory;
        int exitCode;
        QByteArray error;    // empty: nothing on standard error
        QByteArray outStart; // empty: nothing on standard output
    } cases[] = {
        // clang-format off
        {{file("sub/Hull.model")}, {}, 0, {}, hullText},
        {{"sub/Hull.model"}, here, 0, {}, hullText},
        {QStringList{"sub/Hull.model", game.path()} + none, here, 0, {}, hullText},
        {{file("plain.xml")}, {}, 0, {}, "<root>\n <name>two lines</name>\n</root>\n"},
        {QStringList{"scripts/loose.xml", game.path()} + none, {}, 0, {}, "<loose.xml><a>5</a>\n"},
        {{"SCRIPTS/packed.xml", game.path(), "--resources", file("own.cfg")}, {}, 0, {},
         "<packed.xml><a>5</a>\n"},
        {{file("absent.xml")}, {}, 1, "absent.xml", {}},
        {QStringList{"scripts/absent.xml", game.path()} + none, {}, 1, "scripts/absent.xml", {}},
        {QStringList{"scripts/absent.xml", notAGame.path()} + none, {}, 1, "Gavrel.exe", {}},
        {{file("cut.xml")}, {}, 1, "Error reading data: readCharSigned()\n", "<cut.xml>"},
        {{file("broken.xml")}, {}, 1, "broken.xml", {}},
        {{file("empty.xml")}, {}, 1, readInt.toUtf8() + "\n", {}},
        {{}, {}, 2, "usage", {}},
        {{"a", "b", "c"}, {}, 2, "usage", {}}};
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const ToolResult result = runTool(QStringList{"xml"} + c.arguments, c.workingDirectory);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_TRUE(c.error.isEmpty() ? result.err.isEmpty() : result.err.contains(c.error))
            << result.err.toStdString();
        EXPECT_TRUE(c.outStart.isEmpty() ? result.out.isEmpty() : result.out.startsWith(c.outStart))
            << result.out.toStdString();
    }
}
