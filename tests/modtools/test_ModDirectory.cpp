#include "ModDirectory.h"

#include "LogCapture.h"
#include "QtPrinters.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

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

// Opening folders and files, and the editor's one argument, are tested from
// the window in test_ModTools.cpp, on a mod folder whose path holds a blank.
TEST(ModDirectory, AMissingImageEditorIsLogged)
{
    QTemporaryDir folder;
    LogCapture log;
    EXPECT_FALSE(openInImageEditor(folder.filePath("no-editor"), folder.filePath("Hull AM.dds")));
    EXPECT_TRUE(log.contains("[Warning] Failed to open external image editor: " +
                             folder.filePath("no-editor")));
}

} // namespace
