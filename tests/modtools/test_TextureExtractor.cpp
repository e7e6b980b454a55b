#include "TextureExtractor.h"

#include "FileManager.h"
#include "LogCapture.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "TestFiles.h"
#include "TestRoot.h"
#include "ZipBuilder.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace {

const QString Diffuse = "vehicles/A/Hull_AM.dds";
const QString Normal = "vehicles/A/Hull_ANM.dds";
const QString Gloss = "vehicles/A/sub/Hull_GMM.dds";
const QString Missing = "vehicles/A/Nowhere_AM.dds";
// Named as visuals may name it; the archive holds the ".dds".
const QString GlossAsTga = "vehicles/A/sub/Hull_GMM.tga";

// Three textures in an archive; the mod folder already holds its own copy
// of the diffuse one, and a loose copy of the normal map lies in the game's
// res folder: neither may become the source.
class TextureExtractorTest : public testing::Test
{
protected:
    void SetUp() override
    {
        root.enter();
        settings.gavrelPath = game.path();
        settings.modPath = mods.path();
        settings.validateGavrelPath(game.path());
        ZipBuilder()
            .add(Diffuse.toLatin1(), "game diffuse")
            .add(Normal.toLatin1(), "game normal", ZipBuilder::Deflated)
            .add(Gloss.toLatin1(), "game gloss")
            .writeTo(game.packagePath("textures.pkg"));
        root.writeResources({"textures.pkg"});
        game.writeFile("res/" + Normal, "loose normal");
        files.loadZipFiles();
        mods.writeFile(Diffuse, "mod diffuse");
    }

    QByteArray inMods(const QString& texture) { return readFile(mods.path() + '/' + texture); }

    TestRoot root;
    GameTree game;
    GameTree mods{false};
    LogCapture log;
    Settings settings{QString()};
    FileManager files;
};

TEST_F(TextureExtractorTest, PromptsDecideOverExistingFilesAlone)
{
    struct Case
    {
        bool prompt;
        bool answer;
        QByteArray diffuseAfter;
    };
    const Case cases[] = {
        {true, false, "mod diffuse"},
        {true, true, "game diffuse"},
        {false, false, "game diffuse"}, // silent: never asked
    };
    for (const Case& c : cases) {
        mods.writeFile(Diffuse, "mod diffuse");
        QFile::remove(mods.path() + '/' + Normal);
        QDir(mods.path() + "/vehicles/A/sub").removeRecursively();
        TextureExtractor extractor(mods.path());
        QStringList questions;
        extractor.confirmOverwrite = [&](const QString& question, const QString&) {
            questions.append(question);
            return c.answer;
        };
        EXPECT_EQ(extractor.extract({Diffuse, Normal, Missing, GlossAsTga}, c.prompt),
                  TextureExtractor::Outcome::Completed);
        const QString existing = QDir::toNativeSeparators(mods.path() + '/' + Diffuse);
        EXPECT_EQ(questions, c.prompt ? QStringList{"WARNING! " + existing +
                                                    " already exists.\nAre you sure you want "
                                                    "to overwrite this file?"}
                                      : QStringList());
        EXPECT_EQ(inMods(Diffuse), c.diffuseAfter);
        // The archive's bytes, never the loose file's, in folders made anew.
        EXPECT_EQ(inMods(Normal), "game normal");
        EXPECT_EQ(inMods(Gloss), "game gloss");
        EXPECT_EQ(extractor.skipped,
                  c.diffuseAfter == "mod diffuse" ? QStringList{Diffuse} : QStringList());
        EXPECT_EQ(extractor.missing, QStringList{Missing});
    }
    EXPECT_TRUE(log.contains("[Info] Extracting texture: " + QDir::toNativeSeparators(Gloss) +
                             " to: " + QDir::toNativeSeparators(mods.path() + '/')));
}

TEST_F(TextureExtractorTest, CancelEndsTheRunAndKeepsWhatWasWritten)
{
    TextureExtractor extractor(mods.path());
    QList<int> steps;
    extractor.progress = [&](int index, int count) {
        steps.append(index * 10 + count);
        return index < 1;
    };
    EXPECT_EQ(extractor.extract({Normal, Gloss, Diffuse}, false),
              TextureExtractor::Outcome::Cancelled);
    EXPECT_EQ(steps, (QList<int>{3, 13}));
    EXPECT_EQ(inMods(Normal), "game normal");
    EXPECT_EQ(inMods(Gloss), "<missing>");
    EXPECT_EQ(inMods(Diffuse), "mod diffuse");

    // No textures: nothing to do, and done.
    EXPECT_EQ(extractor.extract({}, true), TextureExtractor::Outcome::Completed);
}

TEST_F(TextureExtractorTest, AFileInTheWayOfAFolderFailsTheRun)
{
    mods.writeFile("vehicles/A/sub", "a file, not a folder");
    TextureExtractor extractor(mods.path());
    EXPECT_EQ(extractor.extract({Normal, Gloss, Diffuse}, false),
              TextureExtractor::Outcome::Failed);
    EXPECT_EQ(extractor.written, QStringList{Normal});
    EXPECT_TRUE(
        log.contains("[Info] Failed to create directory: " + mods.path() + "/vehicles/A/sub"));
}

} // namespace
