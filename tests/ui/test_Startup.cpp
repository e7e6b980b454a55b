// Start-up and shut-down of the whole program in this process, pointed at a
// private tree, with message boxes answered by a recorder. Each case runs in
// a process of its own (CTest starts one per case), as the program does.

#include "DialogAnswer.h"
#include "Preferences.h"
#include "StartupError.h"
#include "WindowFixture.h"
#include "ui_Preferences.h"

#include <QRegularExpression>
#include <QStatusBar>

#include <algorithm>
#include <iterator>

class StartupTest : public WindowTest
{
};

TEST_F(StartupTest, StartsOnAGameAndShutsDownInOrder)
{
    ASSERT_TRUE(QFile::exists(Game + QStringLiteral("/Gavrel.exe")));
    bool windowSeenRunning = false;
    QString statusMessage;
    EXPECT_EQ(runWindow([&](MainWindow& window) {
                  windowSeenRunning = mainWindow == &window;
                  statusMessage = window.statusBar()->currentMessage();
              }),
              0);
    EXPECT_TRUE(windowSeenRunning);
    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_EQ(mainWindow, nullptr);

    const QStringList lines = logLines();
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
    // The showcase gives nothing to complain about.
    EXPECT_EQ(lines.filter(QRegularExpression(QStringLiteral("^\\[ (Error|Warning) \\]"))),
              QStringList());
}

// The first run writes a settings file and leads into the preferences, once
// the list had its first fill.
TEST_F(StartupTest, FirstRunWritesSettingsAndLeadsIntoThePreferences)
{
    const QString created = QStringLiteral("Could not locate settings file, creating a new one.");
    QFile::remove(userFile(QStringLiteral("settings.cfg")));
    {
        // This user cancels them: no game, no archives.
        const DialogAnswer cancel(QStringLiteral("PreferencesDialog"), false);
        EXPECT_EQ(runWindow([](MainWindow&) {}), 0);
        EXPECT_EQ(cancel.shown, 1);
    }
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].icon, QMessageBox::Warning);
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(created));
    EXPECT_TRUE(QFile::exists(userFile(QStringLiteral("settings.cfg"))));
    const QStringList lines = logLines();
    EXPECT_TRUE(lines.contains(QStringLiteral("[ Warning ] ") + created));
    EXPECT_FALSE(lines.contains(QStringLiteral("[ Info ] Loading zip archives.")));
    EXPECT_FALSE(lines.contains(QStringLiteral("[ Info ] Building database.")));
    EXPECT_TRUE(lines.contains(QStringLiteral("[ Info ] Gavrel Version: Gavrel not found")));

    // This one names the game, which opens before the loop runs.
    QFile::remove(userFile(QStringLiteral("settings.cfg")));
    boxes.boxes.clear();
    bool listFilledWhenShown = false;
    const DialogAnswer accept(QStringLiteral("PreferencesDialog"), true, [&](QDialog& dialog) {
        listFilledWhenShown =
            mainWindow && qobject_cast<QStringListModel*>(mainWindow->ui.mTankListView->model());
        static_cast<Preferences&>(dialog).ui->GavrelPathTxt->setText(Game);
    });
    QStringList namesAtStart;
    runWindow([&](MainWindow& window) { namesAtStart = listedNames(window); });
    EXPECT_EQ(accept.shown, 1);
    EXPECT_TRUE(listFilledWhenShown);
    EXPECT_TRUE(namesAtStart.contains(QStringLiteral("Talon")));
    ASSERT_FALSE(boxes.boxes.isEmpty());
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(created));
    for (const MessageBoxRequest& box : boxes.boxes)
        EXPECT_FALSE(
            box.text.startsWith(QStringLiteral("Gavrel path does not appear to be valid")));
}

TEST_F(StartupTest, UnwritableUserDirectoryEndsInOneFatalErrorBox)
{
    // A file in place of the user directory: neither root nor anyone else
    // can create or write into it.
    QDir(root.dataDirectory()).removeRecursively();
    root.writeFile(QStringLiteral("data"), "not a folder");

    bool windowSeenRunning = false;
    EXPECT_EQ(runWindow([&](MainWindow&) { windowSeenRunning = true; }), 1);
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
    EXPECT_EQ(runWindow([](MainWindow&) {}), 1);
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].title, QStringLiteral("Fatal Error"));
    EXPECT_EQ(boxes.boxes[0].text, QStringLiteral("Could not set XML content."));
    EXPECT_EQ(logLines().last(), QStringLiteral("[ Info ] Log shutting down."));
}
