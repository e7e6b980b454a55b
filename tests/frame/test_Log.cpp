#include "Log.h"
#include "QtPrinters.h"
#include "StartupError.h"
#include "TestRoot.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {
QString readLogFile(const TestRoot& root)
{
    QFile file(root.dataDirectory() + QStringLiteral("/Ferrox.log"));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

QStringList fileLines(const TestRoot& root)
{
    QStringList lines = readLogFile(root).split(QStringLiteral("\r\n"));
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

// A line without its leading time.
QString withoutTime(const QString& line)
{
    return line.section(QLatin1Char('['), 1).prepend(QLatin1Char('['));
}

class LogTest : public testing::Test
{
protected:
    void SetUp() override
    {
        resetStartupState();
        root.enter();
    }
    void TearDown() override { resetStartupState(); }

    TestRoot root;
};
} // namespace

TEST_F(LogTest, WritesHeaderThenMessagesWithUnpaddedTimeAndCrLf)
{
    {
        Log log;
        Log::log(QStringLiteral("Loading zip archives."), Log::Info);
        Log::log(QStringLiteral("careful"), Log::Warning);
        Log::log(QStringLiteral("broken"), Log::Error);
    }
    const QString text = readLogFile(root);
    ASSERT_TRUE(text.endsWith(QStringLiteral("\r\n")));
    EXPECT_FALSE(text.contains(QRegularExpression(QStringLiteral("[^\r]\n"))));

    const QStringList lines = fileLines(root);
    ASSERT_EQ(lines.size(), 9);
    const QRegularExpression timeMark(QStringLiteral(
        "^(0|[1-9][0-9]?):(0|[1-9][0-9]?):(0|[1-9][0-9]?)\\[ (Info|Warning|Error) \\] "));
    for (const QString& line : lines)
        EXPECT_TRUE(timeMark.match(line).hasMatch()) << line.toStdString();

    EXPECT_TRUE(withoutTime(lines[0]).startsWith(QStringLiteral("[ Info ] OS Version: ")));
    EXPECT_EQ(withoutTime(lines[1]), QStringLiteral("[ Info ] Ferrox Version: 1.0.17 x64"));
    EXPECT_TRUE(withoutTime(lines[2]).contains(
        QRegularExpression(QStringLiteral("^\\[ Info \\] Cpu Count: [1-9][0-9]*$"))));
    EXPECT_TRUE(withoutTime(lines[3]).startsWith(QStringLiteral("[ Info ] QT Version: 6.")));
    EXPECT_TRUE(withoutTime(lines[4]).startsWith(QStringLiteral("[ Info ] Local Language: ")));
    EXPECT_EQ(withoutTime(lines[5]), QStringLiteral("[ Info ] Loading zip archives."));
    EXPECT_EQ(withoutTime(lines[6]), QStringLiteral("[ Warning ] careful"));
    EXPECT_EQ(withoutTime(lines[7]), QStringLiteral("[ Error ] broken"));
    EXPECT_EQ(withoutTime(lines[8]), QStringLiteral("[ Info ] Log shutting down."));
}

TEST_F(LogTest, EachLineIsOnDiskWhenLogReturns)
{
    Log log;
    Log::log(QStringLiteral("flushed at once"), Log::Info);
    EXPECT_TRUE(readLogFile(root).endsWith(QStringLiteral("[ Info ] flushed at once\r\n")));
}

TEST_F(LogTest, TextOfALevelListsNewestFirstAndAllTextKeepsOrder)
{
    Log log;
    Log::log(QStringLiteral("first warning"), Log::Warning);
    Log::log(QStringLiteral("an error"), Log::Error);
    Log::log(QStringLiteral("second warning"), Log::Warning);

    EXPECT_EQ(log.text(Log::Warning),
              QStringLiteral("[ Warning ] second warning\r\n[ Warning ] first warning\r\n"));
    EXPECT_EQ(log.text(Log::Error), QStringLiteral("[ Error ] an error\r\n"));
    EXPECT_TRUE(log.allText.endsWith(QStringLiteral(
        "[ Warning ] first warning\r\n[ Error ] an error\r\n[ Warning ] second warning\r\n")));
    EXPECT_FALSE(log.allText.contains(QLatin1Char(':') + QStringLiteral("[")));
}

TEST_F(LogTest, SignalsOncePerMessage)
{
    Log log;
    QSignalSpy spy(&log, &Log::logChanged);
    Log::log(QStringLiteral("one"), Log::Info);
    Log::log(QStringLiteral("two\nlines"), Log::Error);
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(LogTest, NonAsciiMessageIsUtf8InTheFile)
{
    {
        Log log;
        Log::log(QStringLiteral("Škoda Ж"), Log::Info);
    }
    QFile file(root.dataDirectory() + QStringLiteral("/Ferrox.log"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("\xC5\xA0koda \xD0\x96"));
}

TEST_F(LogTest, NewRunEmptiesThePreviousFile)
{
    {
        Log log;
        Log::log(QStringLiteral("from the first run"), Log::Info);
    }
    {
        Log log;
    }
    const QString text = readLogFile(root);
    EXPECT_FALSE(text.contains(QStringLiteral("from the first run")));
    EXPECT_EQ(text.count(QStringLiteral("OS Version: ")), 1);
}

TEST_F(LogTest, WithoutALogMessagesGoToTheFallbackSink)
{
    QStringList seen;
    Log::setFallbackSink([&seen](const QString& message, int level) {
        seen.append(QString::number(level) + message);
    });
    Log::log(QStringLiteral("no log yet"), Log::Warning);
    {
        Log log;
        Log::log(QStringLiteral("to the log"), Log::Info);
    }
    Log::log(QStringLiteral("log gone"), Log::Error);
    Log::setFallbackSink({});

    EXPECT_EQ(seen, QStringList({QStringLiteral("1no log yet"), QStringLiteral("2log gone")}));
    EXPECT_EQ(Log::instance(), nullptr);
}

TEST_F(LogTest, UnwritableUserDirectoryGathersBothStartupMessages)
{
    // A file where the user directory should be cannot be entered, even by
    // root, for whom permission bits would not count.
    QDir(root.dataDirectory()).removeRecursively();
    root.writeFile(QStringLiteral("data"), "not a folder");

    Log log;
    Log::log(QStringLiteral("kept in memory"), Log::Info);

    ASSERT_TRUE(startupErrorPending());
    const QString text = takeStartupError();
    const QString created = QStringLiteral("Could not create user directory,this is most likely a "
                                           "permissions issue.\nPlease check "
                                           "that you have sufficient write access to: ") +
                            root.dataDirectory();
    const QString opened = QStringLiteral("Could not open log file,this is most likely a "
                                          "permissions issue.\nPlease check that you "
                                          "have sufficient write access to: ") +
                           root.dataDirectory();
    EXPECT_EQ(text, created + opened);
    EXPECT_TRUE(log.allText.contains(QStringLiteral("kept in memory")));
}

TEST_F(LogTest, ReportsAfterStartupFinishedAreDropped)
{
    markStartupFinished();
    reportStartupError(QStringLiteral("too late"));
    EXPECT_FALSE(startupErrorPending());
    EXPECT_TRUE(takeStartupError().isEmpty());
}
