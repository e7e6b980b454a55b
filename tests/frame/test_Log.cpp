#include "Log.h"
#include "QtPrinters.h"
#include "StartupError.h"
#include "TestRoot.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {
QString readLogFile(const TestRoot& root)
{
    QFile file(root.dataDirectory() + "/Ferrox.log");
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
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

TEST_F(LogTest, EachRunWritesHeaderThenUtf8MessagesWithUnpaddedTimeAndCrLf)
{
    {
        Log log;
        Log::log("Loading zip archives.", Log::Info);
        Log::log("careful", Log::Warning);
        Log::log("broken", Log::Error);
        Log::log("Škoda Ж", Log::Info);
    }
    const QString text = readLogFile(root);
    ASSERT_TRUE(text.endsWith("\r\n"));
    EXPECT_FALSE(text.contains(QRegularExpression("[^\r]\n")));

    const QStringList lines = text.chopped(2).split("\r\n");
    ASSERT_EQ(lines.size(), 10);
    const QRegularExpression timeMark(
        "^(0|[1-9][0-9]?):(0|[1-9][0-9]?):(0|[1-9][0-9]?)\\[ (Info|Warning|Error) \\] ");
    for (const QString& line : lines)
        EXPECT_TRUE(timeMark.match(line).hasMatch()) << line.toStdString();

    const char* header[] = {"OS Version: .+", "Ferrox Version: 1\\.0\\.17 x64",
                            "Cpu Count: [1-9][0-9]*", "QT Version: 6\\..*", "Local Language: .+"};
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(QRegularExpression(QString("\\[ Info \\] ") + header[i] + "$")
                        .match(lines[i])
                        .hasMatch())
            << lines[i].toStdString();
    EXPECT_EQ(lines.mid(5).replaceInStrings(QRegularExpression("^[0-9:]*"), ""),
              (QStringList{"[ Info ] Loading zip archives.", "[ Warning ] careful",
                           "[ Error ] broken", "[ Info ] Škoda Ж", "[ Info ] Log shutting down."}));

    // A new run empties the previous file.
    {
        Log log;
    }
    EXPECT_FALSE(readLogFile(root).contains("careful"));
    EXPECT_EQ(readLogFile(root).count("OS Version: "), 1);
}

TEST_F(LogTest, KeepsTextPerLevelAndWritesEachLineAtOnce)
{
    Log log;
    QSignalSpy changed(&log, &Log::logChanged);
    Log::log("first warning", Log::Warning);
    EXPECT_TRUE(readLogFile(root).endsWith("[ Warning ] first warning\r\n"));
    Log::log("an error", Log::Error);
    Log::log("second\nwarning", Log::Warning);
    EXPECT_EQ(changed.count(), 3);

    // The text of a level lists the newest first; all text keeps the order.
    EXPECT_EQ(log.text(Log::Warning),
              "[ Warning ] second\nwarning\r\n[ Warning ] first warning\r\n");
    EXPECT_EQ(log.text(Log::Error), "[ Error ] an error\r\n");
    EXPECT_TRUE(log.allText.endsWith(
        "[ Warning ] first warning\r\n[ Error ] an error\r\n[ Warning ] second\nwarning\r\n"));
    EXPECT_FALSE(log.allText.contains(":["));
}
