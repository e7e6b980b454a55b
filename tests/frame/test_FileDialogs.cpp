#include "FileDialogs.h"
#include "QtPrinters.h"
#include "Settings.h"

#include <QApplication>
#include <QFileDialog>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

namespace {
// Answers the next modal file dialog from inside its own event loop.
void answerNextDialog(std::function<void(QFileDialog&)> answer)
{
    auto* poll = new QTimer;
    QObject::connect(poll, &QTimer::timeout, poll, [poll, answer]() {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        poll->stop();
        poll->deleteLater();
        answer(*dialog);
    });
    poll->start(10);
}
} // namespace

TEST(FileDialogsTest, HandlerAnswersWithoutADialog)
{
    FileDialogRequest seen;
    setFileDialogHandler([&seen](const FileDialogRequest& request) {
        seen = request;
        return QStringLiteral("/chosen/file.png");
    });
    const QString path = chooseSaveFile(nullptr, QStringLiteral("Save"), QStringLiteral("/start"),
                                        QStringLiteral("Images (*.png)"),
                                        {QStringLiteral("/a"), QStringLiteral("/b")});
    setFileDialogHandler({});

    EXPECT_EQ(path, QStringLiteral("/chosen/file.png"));
    EXPECT_EQ(seen.kind, FileDialogRequest::SaveFile);
    EXPECT_EQ(seen.caption, QStringLiteral("Save"));
    EXPECT_EQ(seen.filter, QStringLiteral("Images (*.png)"));
    EXPECT_EQ(seen.history.size(), 2);
}

// With the native dialog turned off the program's own dialog is shown, with
// the history it was given.
TEST(FileDialogsTest, OwnDialogCarriesHistoryAndReturnsTheSelection)
{
    QTemporaryDir folder;
    QFile(folder.filePath(QStringLiteral("pick.txt"))).open(QIODevice::WriteOnly);
    Settings settings{QString()};
    settings.nativeFileDialog = false;

    QStringList history;
    QFileDialog::AcceptMode mode = QFileDialog::AcceptSave;
    answerNextDialog([&](QFileDialog& dialog) {
        history = dialog.history();
        mode = dialog.acceptMode();
        dialog.selectFile(folder.filePath(QStringLiteral("pick.txt")));
        static_cast<QDialog&>(dialog).accept();
    });
    const QString path = chooseOpenFile(nullptr, QStringLiteral("Open"), folder.path(),
                                        QStringLiteral("Text (*.txt)"), {QStringLiteral("/h")});

    EXPECT_EQ(path, folder.filePath(QStringLiteral("pick.txt")));
    EXPECT_TRUE(history.contains(QStringLiteral("/h")));
    EXPECT_EQ(mode, QFileDialog::AcceptOpen);

    answerNextDialog([](QFileDialog& dialog) { dialog.reject(); });
    EXPECT_TRUE(chooseDirectory(nullptr, QStringLiteral("Dir"), folder.path(), {}).isEmpty());
}
