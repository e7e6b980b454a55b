// The reader against the generated sample installation, which was written by
// an independent zip writer: every member of every listed archive reads back
// whole, through the index and through the walk alike.

#include "FileManager.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "TestRoot.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <memory>

namespace {
class SampleInstallationTest : public testing::Test
{
protected:
    void SetUp() override
    {
        root.enter();
        settings.gavrelPath = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
        ASSERT_TRUE(settings.validateGavrelPath(settings.gavrelPath));
        files.loadZipFiles();
    }

    TestRoot root;
    LogCapture log;
    MessageBoxRecorder boxes;
    Settings settings{QString()};
    FileManager files;
};

QString scrambleCase(const QString& name, QRandomGenerator& random)
{
    QString result = name;
    for (QChar& c : result) {
        if (random.bounded(2))
            c = c.isUpper() ? c.toLower() : c.toUpper();
    }
    return result;
}
} // namespace

TEST_F(SampleInstallationTest, EveryMemberReadsWholeThroughIndexAndWalk)
{
    QRandomGenerator random(7);
    int checked = 0;
    for (int a = 0; a < files.archiveCount(); ++a) {
        for (const ZipArchive::Member& member : files.archive(a).members()) {
            const QString name = QString::fromLocal8Bit(member.name);
            const QString asked = scrambleCase(name, random);
            files.setLookupStrategy(FileManager::LookupStrategy::Walk);
            std::unique_ptr<QIODevice> walked(files.openArchiveFile(asked));
            files.setLookupStrategy(FileManager::LookupStrategy::Index);
            std::unique_ptr<QIODevice> indexed(files.openArchiveFile(asked));
            ASSERT_TRUE(walked && indexed) << asked.toStdString();
            const QByteArray content = indexed->readAll();
            EXPECT_EQ(content, walked->readAll()) << asked.toStdString();
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

TEST_F(SampleInstallationTest, DuplicatesResolveToTheFirstListedArchive)
{
    std::unique_ptr<QIODevice> shared(files.getFile(QStringLiteral("text/Readme_Shared.txt")));
    ASSERT_TRUE(shared);
    EXPECT_TRUE(shared->readAll().contains("from shared_content"));
    std::unique_ptr<QIODevice> loose(files.getFile(QStringLiteral("gui/Loose_Override.txt")));
    std::unique_ptr<QIODevice> packed(
        files.openArchiveFile(QStringLiteral("gui/Loose_Override.txt")));
    ASSERT_TRUE(loose && packed);
    EXPECT_NE(loose->readAll(), packed->readAll());
}
