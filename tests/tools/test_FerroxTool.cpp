// ferrox-tool as a modder runs it: a separate process on the sample
// installation, from a working directory of its own.

#include "Constants.h"
#include "QtPrinters.h"
#include "TestRoot.h"
#include "ToolRunner.h"
#include "ZipBuilder.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QList<QByteArray> lines(const QByteArray& text)
{
    QList<QByteArray> result = text.split('\n');
    if (!result.isEmpty() && result.last().isEmpty())
        result.removeLast();
    return result;
}
} // namespace

TEST(FerroxToolTest, ListsArchiveMembersAndLooseFilesWithTheirSource)
{
    const ToolResult all = runTool({"ls", SampleGame});
    ASSERT_EQ(all.exitCode, 0) << all.err.toStdString();
    const QList<QByteArray> listed = lines(all.out);
    for (const char* line :
         {"text/Readme_Shared.txt\tshared_content.pkg", "text/Readme_Shared.txt\tgui.pkg",
          "gui/Loose_Override.txt\tres", "gui/Loose_Override.txt\tgui.pkg"})
        EXPECT_TRUE(listed.contains(line)) << line;
    for (const QByteArray& line : listed) {
        EXPECT_EQ(line.count('\t'), 1) << line.toStdString();
        EXPECT_FALSE(line.startsWith("packages/")) << line.toStdString();
        EXPECT_FALSE(line.split('\t').first().endsWith('/')) << line.toStdString();
    }

    const ToolResult filtered = runTool({"ls", SampleGame, "README_SHARED"});
    ASSERT_EQ(filtered.exitCode, 0);
    EXPECT_EQ(lines(filtered.out).size(), 2);
}

TEST(FerroxToolTest, CatFollowsTheProgramsSearchOrder)
{
    QTemporaryDir elsewhere;
    const ToolResult shared =
        runTool({"cat", SampleGame, "TEXT/readme_shared.txt"}, elsewhere.path());
    ASSERT_EQ(shared.exitCode, 0) << shared.err.toStdString();
    EXPECT_TRUE(shared.out.contains("from shared_content"));

    const ToolResult loose = runTool({"cat", SampleGame, "gui/Loose_Override.txt"});
    ASSERT_EQ(loose.exitCode, 0);
    QFile looseFile(SampleGame + "/res/gui/Loose_Override.txt");
    ASSERT_TRUE(looseFile.open(QIODevice::ReadOnly));
    EXPECT_EQ(loose.out, looseFile.readAll());

    GameTree mod(false);
    mod.writeFile("text/Readme_Shared.txt", "from the mod folder");
    const ToolResult modded =
        runTool({"cat", SampleGame, "text/Readme_Shared.txt", "--mod", mod.path()});
    EXPECT_EQ(modded.out, QByteArray("from the mod folder"));
}

// Wrong use gives 2; a folder that is no game, a game without item types or
// a name found nowhere gives 1; each with the reason on standard error and
// nothing on standard output.
TEST(FerroxToolTest, RefusalsSayWhy)
{
    QTemporaryDir notAGame;
    GameTree withoutItemTypes;
    const struct
    {
        QStringList arguments;
        int exitCode;
        const char* error;
    } cases[] = {{{"cat", SampleGame, "no/such/file.xml"}, 1, "no/such/file.xml"},
                 {{"ls", notAGame.path()}, 1, "Gavrel.exe"},
                 {{"check", notAGame.path()}, 1, "Gavrel.exe"},
                 {{"tanks", notAGame.path()}, 1, "Not a Gavrel installation"},
                 {{"tanks", withoutItemTypes.path()}, 1, "Could not build the database."},
                 {{"frobnicate"}, 2, "unknown command"},
                 // Unknown commands and options come with the usage.
                 {{"--frobnicate"}, 2, "commands:"},
                 {{"help", "frobnicate"}, 2, "commands:"},
                 {{"tanks", SampleGame, "--frobnicate"}, 2, "usage: ferrox-tool tanks"},
                 {{"gltf", SampleGame, "Talon", "--out", "talon.obj"}, 1, ".glb or .gltf"},
                 {{"gltf", SampleGame, "Talon", "--out", "/no/such/folder/t.glb"},
                  1,
                  "No folder to write into"},
                 {{"gltf", SampleGame, "Talon", "--out", SampleGame + "/t.glb"},
                  1,
                  "never writes into the game folder"},
                 {{"cat", SampleGame}, 2, "usage"},
                 {{"check"}, 2, "usage"},
                 {{"translate", SampleGame}, 2, "usage"},
                 {{"tanks"}, 2, "usage"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const ToolResult result = runTool(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_TRUE(result.out.isEmpty());
        EXPECT_TRUE(result.err.contains(c.error)) << result.err.toStdString();
    }
}

// What people ask any command-line program first is answered on standard
// output with exit code 0.
TEST(FerroxToolTest, HelpAndVersionAnswerOnStandardOutput)
{
    const struct
    {
        QStringList arguments;
        QByteArray answer;
    } cases[] = {{{"--help"}, "commands:"},
                 {{"-h"}, "commands:"},
                 {{"help"}, "commands:"},
                 {{"help", "gltf"}, "usage: ferrox-tool gltf GAME_DIR NAME --out FILE.glb"},
                 {{"gltf", "--help"}, "usage: ferrox-tool gltf GAME_DIR NAME --out FILE.glb"},
                 {{"--version"}, "ferrox-tool " + QByteArray(Ferrox::ApplicationVersion) + "\n"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const ToolResult result = runTool(c.arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_TRUE(result.out.contains(c.answer)) << result.out.toStdString();
        EXPECT_TRUE(result.err.isEmpty()) << result.err.toStdString();
    }
}

TEST(FerroxToolTest, ResourcesOptionChoosesTheArchiveListAndCorruptMembersFail)
{
    GameTree game;
    const ZipBuilder::Entry cut{"cut.bin", QByteArray(3000, 'c'), ZipBuilder::Stored, 3000, 100,
                                {}};
    ZipBuilder().add("Only/Here.txt", "here").add(cut).writeTo(game.packagePath("own.pkg"));
    GameTree lists(false);
    lists.writeFile("mine.cfg", "<list><Zip>own.pkg</Zip></list>");
    const QStringList withList = {"--resources", lists.path() + "/mine.cfg"};

    const ToolResult listed = runTool(QStringList{"cat", game.path(), "only/here.txt"} + withList);
    EXPECT_EQ(listed.exitCode, 0) << listed.err.toStdString();
    EXPECT_EQ(listed.out, QByteArray("here"));
    EXPECT_EQ(runTool({"cat", game.path(), "only/here.txt"}).exitCode, 1);

    const ToolResult corrupt = runTool(QStringList{"cat", game.path(), "cut.bin"} + withList);
    EXPECT_EQ(corrupt.exitCode, 1);
    EXPECT_TRUE(corrupt.err.contains("Size mismatch"));
}
