#include "FileManager.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "ReadFailure.h"
#include "Settings.h"
#include "TestRoot.h"
#include "ZipBuilder.h"

#include <QFile>
#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <memory>

namespace {
class FileManagerTest : public testing::Test
{
protected:
    void SetUp() override
    {
        root.enter();
        settings.gavrelPath = game.path();
        settings.modPath = mods.path();
        settings.validateGavrelPath(settings.gavrelPath);
    }

    // Writes the archives into the game and lists them, in this order.
    void installArchives(const QList<QPair<QString, ZipBuilder>>& archives)
    {
        QStringList names;
        for (const auto& [name, builder] : archives) {
            builder.writeTo(game.packagePath(name));
            names.append(name);
        }
        root.writeResources(names);
        files.loadZipFiles();
    }

    QByteArray read(const QString& name)
    {
        std::unique_ptr<QIODevice> device(files.getFile(name));
        return device ? device->readAll() : QByteArray("<null>");
    }

    TestRoot root;
    GameTree game;
    GameTree mods{false};
    LogCapture log;
    MessageBoxRecorder boxes;
    Settings settings{QString()};
    FileManager files;
};
} // namespace

TEST_F(FileManagerTest, SearchOrderIsPlainPathModFolderLooseResThenArchives)
{
    installArchives({{"a.pkg", ZipBuilder().add("gui/Note.txt", "archive", ZipBuilder::Deflated)}});
    EXPECT_EQ(read("gui/Note.txt"), QByteArray("archive"));

    game.writeFile("res/gui/Note.txt", "loose");
    EXPECT_EQ(read("gui/Note.txt"), QByteArray("loose"));
    // Loose files need their exact case, archive members do not.
    EXPECT_EQ(read("GUI/note.txt"), QByteArray("archive"));
    EXPECT_EQ(read("gui/absent.txt"), QByteArray("<null>"));
    EXPECT_TRUE(log.contains("[Warning] Could not open file: gui/absent.txt"));

    mods.writeFile("gui/Note.txt", "mod");
    EXPECT_EQ(read("gui/Note.txt"), QByteArray("mod"));

    root.writeFile("bin_x64/gui/Note.txt", "beside the program");
    EXPECT_EQ(read("gui/Note.txt"), QByteArray("beside the program"));
}

TEST_F(FileManagerTest, FirstListedArchiveWinsAndHandsOutBuffersThatOutliveIt)
{
    installArchives({{"first.pkg", ZipBuilder().add("Shared/Item.xml", "first").add("empty", "")},
                     {"second.pkg", ZipBuilder()
                                        .add("shared/item.xml", "second", ZipBuilder::Deflated)
                                        .add("Only/In/Second.bin", QByteArray(100000, 'x'),
                                             ZipBuilder::Deflated)}});
    EXPECT_EQ(read("SHARED/ITEM.XML"), QByteArray("first"));
    EXPECT_EQ(read("empty"), QByteArray());
    std::unique_ptr<QIODevice> data(files.getFile("only\\in\\second.BIN"));
    files.clearArchives();
    ASSERT_TRUE(data);
    EXPECT_EQ(data->readAll(), QByteArray(100000, 'x'));
}

TEST_F(FileManagerTest, ArchiveListComesFromZipElementsAndSkipsBadArchives)
{
    ZipBuilder().add("one.txt", "1").writeTo(game.packagePath("one.pkg"));
    game.writeFile("res/packages/not_a_zip.pkg", QByteArray(300, 'z'));
    root.writeFile("data/resources.cfg",
                   "<any><group><Zip>one.pkg</Zip><Other>x.pkg</Other></group>"
                   "<Zip>missing.pkg</Zip><Zip>not_a_zip.pkg</Zip><Zip>one.pkg</Zip></any>");
    files.loadZipFiles();
    EXPECT_EQ(files.archiveCount(), 2);
    for (const QString name : {"missing.pkg", "not_a_zip.pkg"})
        EXPECT_TRUE(log.contains("[Warning] Failed to add archive: " + game.packagePath(name)));

    // Quiet drops the warning of a missing file only.
    log.lines.clear();
    EXPECT_FALSE(files.addArchive(game.packagePath("missing.pkg"), true));
    EXPECT_TRUE(log.lines.isEmpty());

    // A list that does not parse, or none at all, leaves no archives.
    const std::pair<const char*, const char*> lists[] = {
        {"<resources><Zip>one.pkg</Zip>", "[Error] Could not set XML content."},
        {nullptr, "[Error] Could not open resource file."}};
    for (const auto& [content, message] : lists) {
        if (content)
            root.writeFile("data/resources.cfg", content);
        else
            QFile::remove(root.dataDirectory() + "/resources.cfg");
        files.loadZipFiles();
        EXPECT_EQ(files.archiveCount(), 0);
        EXPECT_TRUE(log.contains(message));
    }
}

// Archives the list does not name are opened after the listed ones, in
// name order, and the log says which.
TEST_F(FileManagerTest, ArchivesBeyondTheListFollowItInNameOrder)
{
    for (const char* name : {"b.pkg", "c.pkg", "a.pkg"})
        ZipBuilder()
            .add("all.txt", name)
            .add(QByteArray("only_") + name, name)
            .writeTo(game.packagePath(name));
    game.writeFile("res/packages/readme.txt", "not an archive");
    root.writeResources({"c.pkg", "gone.pkg"});
    files.loadZipFiles();
    EXPECT_EQ(files.archiveCount(), 3);
    EXPECT_EQ(files.unlistedArchives, (QStringList{"a.pkg", "b.pkg"}));
    EXPECT_TRUE(log.contains("[Info] Found 2 archives not in resources.cfg: a.pkg, b.pkg"));
    auto content = [this](const QString& name) {
        std::unique_ptr<QIODevice> device(files.getFile(name));
        return device ? device->readAll() : QByteArray();
    };
    EXPECT_EQ(content("all.txt"), "c.pkg");
    EXPECT_EQ(content("only_b.pkg"), "b.pkg");

    // With no archive left out, nothing is said.
    log.lines.clear();
    root.writeResources({"a.pkg", "b.pkg", "c.pkg"});
    files.loadZipFiles();
    EXPECT_TRUE(files.unlistedArchives.isEmpty());
    EXPECT_TRUE(log.lines.filter("Found").isEmpty());
    EXPECT_EQ(content("all.txt"), "a.pkg");
}

// A member whose data ends before its recorded size must not be read past
// the archive: the bytes that exist are handed out with "Size mismatch",
// as a closing box or as the failure handed back to the caller.
TEST_F(FileManagerTest, TruncatedOrCorruptMembersGiveSizeMismatch)
{
    const ZipBuilder::Entry cutStored{
        "cut_stored.bin", QByteArray(5000, 's'), ZipBuilder::Stored, 5000, 1000, {}};
    const ZipBuilder::Entry lyingSize{
        // claims almost 2 GiB
        "lying_size.txt", QByteArray(2000, 'd'), ZipBuilder::Deflated, 0x7FFFFFF0, -1, {}};
    const ZipBuilder::Entry garbage{
        "garbage.txt", QByteArray(4000, 'g'), ZipBuilder::Deflated, -1, -1, QByteArray(64, '\xFF')};
    installArchives(
        {{"bad.pkg", ZipBuilder().add(cutStored).add(lyingSize).add(garbage).add("ok.txt", "ok")}});

    const std::pair<const char*, QByteArray> cases[] = {{"cut_stored.bin", QByteArray(1000, 's')},
                                                        {"lying_size.txt", QByteArray(2000, 'd')},
                                                        {"garbage.txt", QByteArray()},
                                                        {"ok.txt", "ok"}};
    for (const auto& [name, start] : cases) {
        SCOPED_TRACE(name);
        const bool whole = name == QLatin1String("ok.txt");
        ReadFailure failure;
        std::unique_ptr<QIODevice> handedBack(files.getFile(name, failure));
        ASSERT_TRUE(handedBack);
        EXPECT_EQ(failure.message(), whole ? QString() : QStringLiteral("Size mismatch"));
        const QByteArray bytes = handedBack->readAll();
        EXPECT_TRUE(bytes.startsWith(start));
        EXPECT_EQ(read(name), bytes);
        ASSERT_EQ(boxes.boxes.size(), whole ? 0 : 1);
        if (!whole) {
            EXPECT_EQ(boxes.boxes.takeFirst().text, "Size mismatch\nApplication will now close.");
        }
    }
}

// The index must answer exactly as a walk over the archives would, also when
// the first archive that lists a name cannot open it.
TEST_F(FileManagerTest, IndexAndWalkAgreeOnEveryName)
{
    QByteArray firstBytes = ZipBuilder()
                                .add("Dup/Item.txt", "first")
                                .add("Dup/Broken.txt", "unreachable")
                                .add("Case/ABC.txt", "upper")
                                .build();
    // Ruin the local header signature of the second member.
    const int at = firstBytes.indexOf("Dup/Broken.txt") - 30;
    ASSERT_GE(at, 0);
    firstBytes[at] = 'X';
    game.writeFile("res/packages/first.pkg", firstBytes);
    ZipBuilder()
        .add("dup/item.txt", "second")
        .add("Dup/Broken.txt", "from second")
        .add("case/abc.TXT", "lower")
        .add("Folder/", "")
        .writeTo(game.packagePath("second.pkg"));
    root.writeResources({"first.pkg", "second.pkg"});
    files.loadZipFiles();
    ASSERT_EQ(files.archiveCount(), 2);

    const QStringList names = {"dup/item.txt", "DUP\\ITEM.TXT", "Dup/Broken.txt", "case/Abc.txt",
                               "Folder/",      "folder",        "nowhere.txt",    "",
                               "Dup/",         "dup/item.txt/"};
    for (const QString& name : names) {
        files.setLookupStrategy(FileManager::LookupStrategy::Walk);
        std::unique_ptr<QIODevice> walked(files.openArchiveFile(name));
        const bool walkedExists = files.existsInArchives(name);
        files.setLookupStrategy(FileManager::LookupStrategy::Index);
        std::unique_ptr<QIODevice> indexed(files.openArchiveFile(name));
        const bool indexedExists = files.existsInArchives(name);

        SCOPED_TRACE(name.toStdString());
        ASSERT_EQ(bool(walked), bool(indexed));
        EXPECT_EQ(walkedExists, indexedExists);
        if (walked) {
            EXPECT_EQ(walked->readAll(), indexed->readAll());
        }
    }
    files.setLookupStrategy(FileManager::LookupStrategy::Index);
    EXPECT_EQ(read("dup/broken.txt"), QByteArray("from second"));
}

// The sample installation was written by an independent zip writer: every
// member of every listed archive reads back whole, through the index and
// through the walk alike, whatever the case of the name asked for.
TEST_F(FileManagerTest, EverySampleMemberReadsWholeThroughIndexAndWalk)
{
    log.lines.clear();
    settings.gavrelPath = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
    ASSERT_TRUE(settings.validateGavrelPath(settings.gavrelPath));
    files.loadZipFiles();
    QRandomGenerator random(7);
    int checked = 0;
    for (int a = 0; a < files.archiveCount(); ++a) {
        for (const ZipArchive::Member& member : files.archive(a).members()) {
            QString asked = QString::fromLocal8Bit(member.name);
            for (QChar& c : asked) {
                if (random.bounded(2))
                    c = c.isUpper() ? c.toLower() : c.toUpper();
            }
            files.setLookupStrategy(FileManager::LookupStrategy::Walk);
            std::unique_ptr<QIODevice> walked(files.openArchiveFile(asked));
            files.setLookupStrategy(FileManager::LookupStrategy::Index);
            std::unique_ptr<QIODevice> indexed(files.openArchiveFile(asked));
            ASSERT_TRUE(walked && indexed) << asked.toStdString();
            EXPECT_EQ(indexed->readAll(), walked->readAll()) << asked.toStdString();
            EXPECT_TRUE(files.existsInArchives(asked)) << asked.toStdString();
            ++checked;
        }
    }
    EXPECT_GT(checked, 20);
    EXPECT_GE(files.archiveCount(), 6);
    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_TRUE(log.lines.filter(QStringLiteral("[Warning]")).isEmpty())
        << log.lines.join('\n').toStdString();
}
