// ferrox-tool as a modder runs it: a separate process on the sample
// installation, from a working directory of its own.

#include "QtPrinters.h"
#include "TestRoot.h"
#include "ToolRunner.h"
#include "ZipBuilder.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
const QString sampleGame = QStringLiteral(FERROX_SAMPLE_GAME_DIR);

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
    const ToolResult all = runTool({QStringLiteral("ls"), sampleGame});
    ASSERT_EQ(all.exitCode, 0) << all.err.toStdString();
    const QList<QByteArray> listed = lines(all.out);
    EXPECT_TRUE(listed.contains("text/Readme_Shared.txt\tshared_content.pkg"));
    EXPECT_TRUE(listed.contains("text/Readme_Shared.txt\tgui.pkg"));
    EXPECT_TRUE(listed.contains("gui/Loose_Override.txt\tres"));
    EXPECT_TRUE(listed.contains("gui/Loose_Override.txt\tgui.pkg"));
    for (const QByteArray& line : listed) {
        EXPECT_EQ(line.count('\t'), 1) << line.toStdString();
        EXPECT_FALSE(line.startsWith("packages/")) << line.toStdString();
        EXPECT_FALSE(line.split('\t').first().endsWith('/')) << line.toStdString();
    }

    const ToolResult filtered =
        runTool({QStringLiteral("ls"), sampleGame, QStringLiteral("README_SHARED")});
    ASSERT_EQ(filtered.exitCode, 0);
    EXPECT_EQ(lines(filtered.out).size(), 2);
}

TEST(FerroxToolTest, CatFollowsTheProgramsSearchOrder)
{
    QTemporaryDir elsewhere;
    const ToolResult shared =
        runTool({QStringLiteral("cat"), sampleGame, QStringLiteral("TEXT/readme_shared.txt")},
                elsewhere.path());
    ASSERT_EQ(shared.exitCode, 0) << shared.err.toStdString();
    EXPECT_TRUE(shared.out.contains("from shared_content"));

    const ToolResult loose =
        runTool({QStringLiteral("cat"), sampleGame, QStringLiteral("gui/Loose_Override.txt")});
    ASSERT_EQ(loose.exitCode, 0);
    QFile looseFile(sampleGame + QStringLiteral("/res/gui/Loose_Override.txt"));
    ASSERT_TRUE(looseFile.open(QIODevice::ReadOnly));
    EXPECT_EQ(loose.out, looseFile.readAll());

    QTemporaryDir mod;
    QDir().mkpath(mod.filePath(QStringLiteral("text")));
    QFile modFile(mod.filePath(QStringLiteral("text/Readme_Shared.txt")));
    ASSERT_TRUE(modFile.open(QIODevice::WriteOnly));
    modFile.write("from the mod folder");
    modFile.close();
    const ToolResult modded =
        runTool({QStringLiteral("cat"), sampleGame, QStringLiteral("text/Readme_Shared.txt"),
                 QStringLiteral("--mod"), mod.path()});
    EXPECT_EQ(modded.out, QByteArray("from the mod folder"));
}

TEST(FerroxToolTest, CatOfAMissingNameFailsClearly)
{
    const ToolResult missing =
        runTool({QStringLiteral("cat"), sampleGame, QStringLiteral("no/such/file.xml")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.out.isEmpty());
    EXPECT_TRUE(missing.err.contains("no/such/file.xml"));

    QTemporaryDir notAGame;
    const ToolResult invalid = runTool({QStringLiteral("ls"), notAGame.path()});
    EXPECT_EQ(invalid.exitCode, 1);
    EXPECT_TRUE(invalid.err.contains("Gavrel.exe"));

    EXPECT_EQ(runTool({QStringLiteral("frobnicate")}).exitCode, 2);
    EXPECT_EQ(runTool({QStringLiteral("cat"), sampleGame}).exitCode, 2);
}

TEST(FerroxToolTest, ResourcesOptionChoosesTheArchiveList)
{
    GameTree game;
    ZipBuilder().add("Only/Here.txt", "here").writeTo(game.packagePath(QStringLiteral("own.pkg")));
    QTemporaryDir lists;
    const QString list = lists.filePath(QStringLiteral("mine.cfg"));
    QFile file(list);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<list><Zip>own.pkg</Zip></list>");
    file.close();

    const ToolResult withList =
        runTool({QStringLiteral("cat"), game.path(), QStringLiteral("only/here.txt"),
                 QStringLiteral("--resources"), list});
    EXPECT_EQ(withList.exitCode, 0) << withList.err.toStdString();
    EXPECT_EQ(withList.out, QByteArray("here"));

    const ToolResult withoutList =
        runTool({QStringLiteral("cat"), game.path(), QStringLiteral("only/here.txt")});
    EXPECT_EQ(withoutList.exitCode, 1);
}

TEST(FerroxToolTest, CorruptMemberIsReportedAndFailsTheCommand)
{
    GameTree game;
    ZipBuilder::Entry cut;
    cut.name = "cut.bin";
    cut.content = QByteArray(3000, 'c');
    cut.truncateDataTo = 100;
    cut.recordedSize = 3000;
    ZipBuilder().add(cut).writeTo(game.packagePath(QStringLiteral("bad.pkg")));
    QTemporaryDir lists;
    QFile file(lists.filePath(QStringLiteral("bad.cfg")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<list><Zip>bad.pkg</Zip></list>");
    file.close();

    const ToolResult result =
        runTool({QStringLiteral("cat"), game.path(), QStringLiteral("cut.bin"),
                 QStringLiteral("--resources"), lists.filePath(QStringLiteral("bad.cfg"))});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains("Size mismatch"));
}
