// Runs the whole program in this process, pointed at a private tree, with
// message boxes answered by a recorder. Each case runs in a process of its
// own (CTest starts one per case), as the program does.

#include "DialogAnswer.h"
#include "FerroxMain.h"
#include "MainWindow.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "StartupError.h"
#include "TestRoot.h"

#include <QFile>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace {
QByteArray settingsFor(const QString& gamePath)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE settings.cfg>\n<Settings>\n"
           " <Paths><GavrelPath>" +
           gamePath.toUtf8() +
           "</GavrelPath></Paths>\n"
           " <RendererSystems><Renderer><ShaderDir>../data/shaders/glsl150</ShaderDir></Renderer>"
           "</RendererSystems>\n"
           " <RendererCommon><ShadowMap>1024</ShadowMap></RendererCommon>\n</Settings>\n";
}

QStringList logLines(const TestRoot& root)
{
    QFile file(root.dataDirectory() + QStringLiteral("/Ferrox.log"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(QStringLiteral("\r\n"))) {
        if (!line.isEmpty())
            lines.append(line.section(QLatin1Char('['), 1).prepend(QLatin1Char('[')));
    }
    return lines;
}

class StartupTest : public testing::Test
{
protected:
    // Runs the program; when it starts, the window closes itself once the
    // event loop runs, which ends the run.
    int run()
    {
        int argc = 1;
        char name[] = "ferrox";
        char* argv[] = {name, nullptr};
        StartOptions options;
        options.applicationDirectory = root.binDirectory();
        options.onStarted = [this](MainWindow& window) {
            windowSeenRunning = mainWindow == &window && window.statusBar() != nullptr;
            statusMessage = window.statusBar()->currentMessage();
            QTimer::singleShot(0, &window, &QWidget::close);
        };
        const int code = runFerrox(argc, argv, options);
        root.leave();
        return code;
    }

    TestRoot root;
    MessageBoxRecorder boxes;
    bool windowSeenRunning = false;
    QString statusMessage;
};
} // namespace

TEST_F(StartupTest, StartsOnAGameAndShutsDownInOrder)
{
    ASSERT_TRUE(QFile::exists(QStringLiteral(FERROX_SAMPLE_GAME_DIR "/Gavrel.exe")));
    root.writeFile(QStringLiteral("data/settings.cfg"),
                   settingsFor(QStringLiteral(FERROX_SAMPLE_GAME_DIR)));

    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(windowSeenRunning);
    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_EQ(mainWindow, nullptr);

    const QStringList lines = logLines(root);
    ASSERT_GE(lines.size(), 8);
    EXPECT_EQ(lines.mid(5, 2), (QStringList{QStringLiteral("[ Info ] Loading settings file."),
                                            QStringLiteral("[ Info ] Loading zip archives.")}));
    EXPECT_TRUE(lines.contains(QStringLiteral("[ Info ] Gavrel Version: v.0.9.14 #417")));
    // The vehicle table is built inside the viewport's GL start-up, once the
    // window stands and before the loop runs.
    QList<int> order;
    for (const char* line : {"Creating connection to database.", "Initialising OpenGL.",
                             "Building database.", "OpenGL Initialising complete."})
        order.append(int(lines.indexOf(QStringLiteral("[ Info ] ") + QLatin1String(line))));
    EXPECT_GT(order[0], 0);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end())) << order.size();
    EXPECT_EQ(lines.filter(QStringLiteral("[ Info ] Database rebuilt in: ")).size(), 1);
    EXPECT_EQ(statusMessage, QStringLiteral("Database rebuilt."));
    EXPECT_EQ(lines.mid(lines.size() - 2),
              (QStringList{QStringLiteral("[ Info ] Database shutdown."),
                           QStringLiteral("[ Info ] Log shutting down.")}));
    // The sample's one nation without a camouflage catalogue is the only
    // complaint.
    EXPECT_EQ(lines.filter(QRegularExpression(QStringLiteral("^\\[ (Error|Warning) \\]"))),
              QStringList{QStringLiteral("[ Warning ] Could not load camo xml file: Caldera")});
}

TEST_F(StartupTest, FirstRunWritesSettingsAndOpensNoArchives)
{
    // The first run leads into the preferences; this user cancels them.
    const DialogAnswer cancel(QStringLiteral("PreferencesDialog"), false);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(cancel.shown, 1);
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].icon, QMessageBox::Warning);
    EXPECT_TRUE(QFile::exists(root.dataDirectory() + QStringLiteral("/settings.cfg")));

    const QStringList lines = logLines(root);
    EXPECT_TRUE(lines.contains(
        QStringLiteral("[ Warning ] Could not locate settings file, creating a new one.")));
    EXPECT_FALSE(lines.contains(QStringLiteral("[ Info ] Loading zip archives.")));
    EXPECT_FALSE(lines.contains(QStringLiteral("[ Info ] Building database.")));
    EXPECT_TRUE(lines.contains(QStringLiteral("[ Info ] Gavrel Version: Gavrel not found")));
}

TEST_F(StartupTest, UnwritableUserDirectoryEndsInOneFatalErrorBox)
{
    // A file in place of the user directory: neither root nor anyone else
    // can create or write into it.
    QDir(root.dataDirectory()).removeRecursively();
    root.writeFile(QStringLiteral("data"), "not a folder");

    EXPECT_EQ(run(), 1);
    EXPECT_FALSE(windowSeenRunning);

    QList<MessageBoxRequest> fatal;
    std::copy_if(boxes.boxes.begin(), boxes.boxes.end(), std::back_inserter(fatal),
                 [](const auto& box) { return box.title == QStringLiteral("Fatal Error"); });
    ASSERT_EQ(fatal.size(), 1);
    EXPECT_EQ(fatal[0].icon, QMessageBox::Critical);
    EXPECT_EQ(fatal[0].buttons, QMessageBox::Ok);
    const QString access = QStringLiteral(",this is most likely a permissions issue.\nPlease check "
                                          "that you have sufficient write access to: ") +
                           root.dataDirectory();
    EXPECT_EQ(fatal[0].text.indexOf(QStringLiteral("Could not create user directory") + access), 0);
    EXPECT_GT(fatal[0].text.indexOf(QStringLiteral("Could not open log file") + access), 0);
    EXPECT_TRUE(fatal[0].text.endsWith(QStringLiteral("Could not open settings file.")));
}

TEST_F(StartupTest, BrokenSettingsFileEndsTheRunBeforeTheLoop)
{
    root.writeFile(QStringLiteral("data/settings.cfg"), "<Settings>");
    EXPECT_EQ(run(), 1);
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].title, QStringLiteral("Fatal Error"));
    EXPECT_EQ(boxes.boxes[0].text, QStringLiteral("Could not set XML content."));
    EXPECT_EQ(logLines(root).last(), QStringLiteral("[ Info ] Log shutting down."));
}
