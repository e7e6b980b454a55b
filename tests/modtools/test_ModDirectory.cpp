#include "ModDirectory.h"

#include "LogCapture.h"
#include "QtPrinters.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

// Takes the URLs the program opens, so that nothing real opens.
class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    UrlRecorder() { QDesktopServices::setUrlHandler("file", this, "openUrl"); }
    ~UrlRecorder() override { QDesktopServices::unsetUrlHandler("file"); }
    QList<QUrl> urls;

public slots:
    void openUrl(const QUrl& url) { urls.append(url); }
};

const QString Tank = "vehicles/Ardenia/A01_Talon";

TEST(ModDirectory, CreatesOnceAndNamesTheExportFolders)
{
    QTemporaryDir mods;
    LogCapture log;
    const ModDirectory directory(mods.path() + "/res_mods", Tank);
    const QString path = mods.path() + "/res_mods/" + Tank;
    EXPECT_EQ(directory.path(), path);
    EXPECT_FALSE(directory.exists());
    EXPECT_EQ(directory.create(), ModDirectory::Creation::Created);
    EXPECT_TRUE(QFileInfo(path).isDir());
    EXPECT_EQ(directory.create(), ModDirectory::Creation::AlreadyExists);
    EXPECT_TRUE(log.contains("[Info] Created directory: " + path));

    const QString folders[] = {"normal/lod0", "crash/lod0", "collision"};
    for (int state = 0; state < 3; ++state)
        EXPECT_EQ(directory.exportDirectory(state), path + '/' + folders[state]);

    // A file where a folder should be.
    QFile blocker(mods.path() + "/blocked");
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    const ModDirectory blocked(mods.path() + "/blocked", Tank);
    EXPECT_EQ(blocked.create(), ModDirectory::Creation::Failed);
    EXPECT_TRUE(log.contains("[Warning] Failed to create directory: " + blocked.path()));
    EXPECT_EQ(ModDirectory::fileInModFolder(mods.path(), "a/b.dds"), mods.path() + "/a/b.dds");
}

TEST(ModDirectory, FoldersAndFilesOpenThroughTheDesktop)
{
    QTemporaryDir mods;
    UrlRecorder recorder;
    const ModDirectory directory(mods.path(), Tank);
    EXPECT_TRUE(directory.open());
    // No image editor set: the system's viewer for the file's type.
    EXPECT_TRUE(openInImageEditor(QString(), mods.path() + "/a b.dds"));
    EXPECT_EQ(recorder.urls, (QList<QUrl>{QUrl::fromLocalFile(mods.path() + '/' + Tank),
                                          QUrl::fromLocalFile(mods.path() + "/a b.dds")}));
}

TEST(ModDirectory, TheImageEditorGetsTheFileAsItsOneArgument)
{
    QTemporaryDir folder;
    const QString editor = folder.filePath("editor.sh");
    const QString record = folder.filePath("arguments.txt");
    QFile script(editor);
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\nprintf '%s|' \"$@\" > \"" + record.toUtf8() + ".part\"\nmv \"" +
                 record.toUtf8() + ".part\" \"" + record.toUtf8() + "\"\n");
    script.close();
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    UrlRecorder recorder;
    const QString texture = folder.filePath("mods/Hull AM.dds");
    EXPECT_TRUE(openInImageEditor(editor, texture));
    // The editor runs on its own; its record appears whole when it is done.
    EXPECT_TRUE(QTest::qWaitFor([&] { return QFile::exists(record); }, 30000));
    QFile arguments(record);
    ASSERT_TRUE(arguments.open(QIODevice::ReadOnly));
    EXPECT_EQ(arguments.readAll(), texture.toUtf8() + "|");
    EXPECT_TRUE(recorder.urls.isEmpty());

    LogCapture log;
    EXPECT_FALSE(openInImageEditor(folder.filePath("no-editor"), texture));
    EXPECT_TRUE(log.contains("[Warning] Failed to open external image editor: " +
                             folder.filePath("no-editor")));
}

} // namespace

#include "test_ModDirectory.moc"
