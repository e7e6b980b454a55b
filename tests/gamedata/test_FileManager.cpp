#include "FileManager.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "TestRoot.h"
#include "ZipBuilder.h"

#include <QBuffer>
#include <QTemporaryDir>

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
    QTemporaryDir mods;
    LogCapture log;
    MessageBoxRecorder boxes;
    Settings settings{QString()};
    FileManager files;
};
} // namespace

TEST_F(FileManagerTest, SearchOrderIsPlainPathModFolderLooseResThenArchives)
{
    installArchives({{QStringLiteral("a.pkg"),
                      ZipBuilder().add("gui/Note.txt", "archive", ZipBuilder::Deflated)}});
    EXPECT_EQ(read(QStringLiteral("gui/Note.txt")), QByteArray("archive"));

    game.writeFile(QStringLiteral("res/gui/Note.txt"), "loose");
    EXPECT_EQ(read(QStringLiteral("gui/Note.txt")), QByteArray("loose"));

    const QString modCopy = mods.filePath(QStringLiteral("gui/Note.txt"));
    QDir().mkpath(mods.filePath(QStringLiteral("gui")));
    {
        QFile file(modCopy);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("mod");
    }
    EXPECT_EQ(read(QStringLiteral("gui/Note.txt")), QByteArray("mod"));

    root.writeFile(QStringLiteral("bin_x64/gui/Note.txt"), "beside the program");
    EXPECT_EQ(read(QStringLiteral("gui/Note.txt")), QByteArray("beside the program"));

    // Removing the shadowing copies brings each earlier source back at once.
    QFile::remove(root.filePath(QStringLiteral("bin_x64/gui/Note.txt")));
    QFile::remove(modCopy);
    EXPECT_EQ(read(QStringLiteral("gui/Note.txt")), QByteArray("loose"));
    QFile::remove(game.path() + QStringLiteral("/res/gui/Note.txt"));
    EXPECT_EQ(read(QStringLiteral("gui/Note.txt")), QByteArray("archive"));
}

TEST_F(FileManagerTest, FirstListedArchiveWinsAndArchiveNamesIgnoreCase)
{
    installArchives(
        {{QStringLiteral("first.pkg"), ZipBuilder().add("Shared/Item.xml", "first")},
         {QStringLiteral("second.pkg"), ZipBuilder()
                                            .add("shared/item.xml", "second", ZipBuilder::Deflated)
                                            .add("Only/In/Second.bin", "2nd")}});
    EXPECT_EQ(read(QStringLiteral("shared/item.xml")), QByteArray("first"));
    EXPECT_EQ(read(QStringLiteral("SHARED/ITEM.XML")), QByteArray("first"));
    EXPECT_EQ(read(QStringLiteral("only\\in\\second.BIN")), QByteArray("2nd"));
    EXPECT_TRUE(files.existsInArchives(QStringLiteral("ONLY/in/Second.bin")));
    EXPECT_FALSE(files.existsInArchives(QStringLiteral("Only/In")));
}

TEST_F(FileManagerTest, LooseFilesNeedTheirExactCase)
{
    game.writeFile(QStringLiteral("res/text/Loose.txt"), "loose");
    root.writeResources({});
    files.loadZipFiles();
    EXPECT_EQ(read(QStringLiteral("text/Loose.txt")), QByteArray("loose"));
    EXPECT_EQ(read(QStringLiteral("text/loose.txt")), QByteArray("<null>"));
    EXPECT_TRUE(log.contains(QStringLiteral("[Warning] Could not open file: text/loose.txt")));
}

TEST_F(FileManagerTest, HandsOutOpenBuffersThatOutliveTheArchives)
{
    installArchives({{QStringLiteral("a.pkg"),
                      ZipBuilder()
                          .add("empty.txt", "")
                          .add("data.bin", QByteArray(100000, 'x'), ZipBuilder::Deflated)}});
    std::unique_ptr<QIODevice> empty(files.getFile(QStringLiteral("empty.txt")));
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->isOpen());
    EXPECT_TRUE(empty->isReadable());
    EXPECT_EQ(empty->size(), 0);

    std::unique_ptr<QIODevice> data(files.getFile(QStringLiteral("data.bin")));
    files.clearArchives();
    ASSERT_TRUE(data);
    EXPECT_EQ(data->pos(), 0);
    EXPECT_EQ(data->readAll(), QByteArray(100000, 'x'));
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

TEST_F(FileManagerTest, ArchiveListComesFromZipElementsAtAnyDepth)
{
    ZipBuilder().add("one.txt", "1").writeTo(game.packagePath(QStringLiteral("one.pkg")));
    ZipBuilder().add("two.txt", "2").writeTo(game.packagePath(QStringLiteral("two.pkg")));
    root.writeFile(QStringLiteral("data/resources.cfg"),
                   "<anything><group><Zip>one.pkg</Zip><Other>two.pkg</Other></group>"
                   "<Zip>two.pkg</Zip></anything>");
    files.loadZipFiles();
    ASSERT_EQ(files.archiveCount(), 2);
    EXPECT_TRUE(log.contains(QStringLiteral("[Info] Loading zip archives.")));
    EXPECT_TRUE(log.contains(QStringLiteral("[Info] Adding file archive: ") +
                             game.packagePath(QStringLiteral("one.pkg"))));
}

TEST_F(FileManagerTest, BadOrMissingArchivesAreSkippedWithAWarning)
{
    game.writeFile(QStringLiteral("res/packages/not_a_zip.pkg"), QByteArray(300, 'z'));
    installArchives({{QStringLiteral("good.pkg"), ZipBuilder().add("good.txt", "good")}});
    root.writeResources({QStringLiteral("missing.pkg"), QStringLiteral("not_a_zip.pkg"),
                         QStringLiteral("good.pkg")});
    files.loadZipFiles();

    EXPECT_EQ(files.archiveCount(), 1);
    EXPECT_TRUE(log.contains(QStringLiteral("[Warning] Failed to add archive: ") +
                             game.packagePath(QStringLiteral("missing.pkg"))));
    EXPECT_TRUE(log.contains(QStringLiteral("[Warning] Failed to add archive: ") +
                             game.packagePath(QStringLiteral("not_a_zip.pkg"))));
    EXPECT_EQ(read(QStringLiteral("good.txt")), QByteArray("good"));

    log.lines.clear();
    EXPECT_FALSE(files.addArchive(game.packagePath(QStringLiteral("missing.pkg")), true));
    EXPECT_TRUE(log.lines.isEmpty());
    EXPECT_FALSE(files.addArchive(game.packagePath(QStringLiteral("not_a_zip.pkg")), true));
    EXPECT_EQ(log.lines.size(), 1);
}

TEST_F(FileManagerTest, ArchiveListFailuresLeaveNoArchives)
{
    installArchives({{QStringLiteral("a.pkg"), ZipBuilder().add("a.txt", "a")}});
    ASSERT_EQ(files.archiveCount(), 1);

    root.writeFile(QStringLiteral("data/resources.cfg"), "<resources><Zip>a.pkg</Zip>");
    files.loadZipFiles();
    EXPECT_EQ(files.archiveCount(), 0);
    EXPECT_TRUE(log.contains(QStringLiteral("[Error] Could not set XML content.")));

    QFile::remove(root.dataDirectory() + QStringLiteral("/resources.cfg"));
    files.loadZipFiles();
    EXPECT_EQ(files.archiveCount(), 0);
    EXPECT_TRUE(log.contains(QStringLiteral("[Error] Could not open resource file.")));
}

TEST_F(FileManagerTest, EmptyGamePathLooksDirectlyBelowResPackages)
{
    settings.gavrelPath.clear();
    root.writeResources({QStringLiteral("a.pkg"), QStringLiteral("b.pkg")});
    files.loadZipFiles();
    EXPECT_EQ(files.archiveCount(), 0);
    EXPECT_TRUE(
        log.contains(QStringLiteral("[Warning] Failed to add archive: /res/packages/a.pkg")));
    EXPECT_TRUE(
        log.contains(QStringLiteral("[Warning] Failed to add archive: /res/packages/b.pkg")));
}

// A member whose data ends before its recorded size must not be read past
// the archive: the closing box comes, and the bytes that exist are handed out.
TEST_F(FileManagerTest, TruncatedOrCorruptMembersGiveSizeMismatch)
{
    ZipBuilder::Entry cutStored;
    cutStored.name = "cut_stored.bin";
    cutStored.content = QByteArray(5000, 's');
    cutStored.truncateDataTo = 1000;
    cutStored.recordedSize = 5000;

    ZipBuilder::Entry lyingSize;
    lyingSize.name = "lying_size.txt";
    lyingSize.content = QByteArray(2000, 'd');
    lyingSize.method = ZipBuilder::Deflated;
    lyingSize.recordedSize = 0x7FFFFFF0; // claims almost 2 GiB

    ZipBuilder::Entry garbage;
    garbage.name = "garbage.txt";
    garbage.content = QByteArray(4000, 'g');
    garbage.method = ZipBuilder::Deflated;
    garbage.replaceData = QByteArray(64, '\xFF');

    installArchives(
        {{QStringLiteral("bad.pkg"),
          ZipBuilder().add(cutStored).add(lyingSize).add(garbage).add("ok.txt", "ok")}});

    const QByteArray cut = read(QStringLiteral("cut_stored.bin"));
    EXPECT_LE(cut.size(), 5000);
    EXPECT_EQ(cut.left(1000), QByteArray(1000, 's'));
    EXPECT_EQ(read(QStringLiteral("lying_size.txt")), QByteArray(2000, 'd'));
    EXPECT_LT(read(QStringLiteral("garbage.txt")).size(), 4000);
    EXPECT_EQ(read(QStringLiteral("ok.txt")), QByteArray("ok"));

    ASSERT_EQ(boxes.boxes.size(), 3);
    for (const MessageBoxRequest& box : boxes.boxes)
        EXPECT_EQ(box.text, QStringLiteral("Size mismatch\nApplication will now close."));
}

// The index must answer exactly as a walk over the archives would, also when
// the first archive that lists a name cannot open it.
TEST_F(FileManagerTest, IndexAndWalkAgreeOnEveryName)
{
    ZipBuilder::Entry brokenHeader;
    brokenHeader.name = "Dup/Broken.txt";
    brokenHeader.content = "unreachable";
    ZipBuilder first;
    first.add("Dup/Item.txt", "first").add(brokenHeader).add("Case/ABC.txt", "upper");
    QByteArray firstBytes = first.build();
    // Ruin the local header signature of the second member.
    const int at = firstBytes.indexOf("Dup/Broken.txt") - 30;
    ASSERT_GE(at, 0);
    firstBytes[at] = 'X';
    QFile file(game.packagePath(QStringLiteral("first.pkg")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(firstBytes);
    file.close();
    ZipBuilder()
        .add("dup/item.txt", "second")
        .add("Dup/Broken.txt", "from second")
        .add("case/abc.TXT", "lower")
        .add("Folder/", "")
        .writeTo(game.packagePath(QStringLiteral("second.pkg")));
    root.writeResources({QStringLiteral("first.pkg"), QStringLiteral("second.pkg")});
    files.loadZipFiles();
    ASSERT_EQ(files.archiveCount(), 2);

    const QStringList names = {
        QStringLiteral("dup/item.txt"),   QStringLiteral("DUP\\ITEM.TXT"),
        QStringLiteral("Dup/Broken.txt"), QStringLiteral("case/Abc.txt"),
        QStringLiteral("Folder/"),        QStringLiteral("folder"),
        QStringLiteral("nowhere.txt"),    QStringLiteral(""),
        QStringLiteral("Dup/"),           QStringLiteral("dup/item.txt/"),
    };
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
    EXPECT_EQ(read(QStringLiteral("dup/broken.txt")), QByteArray("from second"));
}
