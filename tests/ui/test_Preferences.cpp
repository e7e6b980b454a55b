// The preferences dialog on its own: how it shows the settings, where its
// file dialogs start, and the history of mod folders between dialogs.

#include "Preferences.h"

#include "FileDialogs.h"
#include "Settings.h"
#include "TestRoot.h"
#include "ui_Preferences.h"

#include <QFile>
#include <QSettings>

#include <gtest/gtest.h>

#include <functional>

namespace {
class PreferencesTest : public testing::Test
{
protected:
    PreferencesTest()
    {
        root.enter();
        setFileDialogHandler([this](const FileDialogRequest& request) {
            requests.append(request);
            return answers.isEmpty() ? QString() : answers.takeFirst();
        });
    }
    ~PreferencesTest() override { setFileDialogHandler({}); }

    TestRoot root;
    Settings settings{QString()};
    QStringList answers;
    QList<FileDialogRequest> requests;
};

struct ShownCase
{
    const char* name;
    std::function<void(Settings&)> change;
    // The combos' indices: MSAA, filter, VSync, shadow map, samples.
    int msaa, filter, vsync, shadowMap, samples;
};
} // namespace

TEST_F(PreferencesTest, ShowsTheSettingsAndUnknownValuesAsTheFirstEntry)
{
    const ShownCase cases[] = {
        // clang-format off
        {"first run", [](Settings&) {}, 2, 3, 1, 1, 1},
        {"largest", [](Settings& s) {
             s.msaa = QStringLiteral("16x");
             s.textureFilter = QStringLiteral("Anisotropic 16x");
             s.shadowMap = 4096;
             s.shadowMapSamples = 16.9f; // cut, not rounded
         }, 4, 5, 1, 2, 2},
        {"unknown", [](Settings& s) {
             s.msaa = QStringLiteral("32x");
             s.textureFilter = QStringLiteral("anisotropic 4x");
             s.vsync = 0;
             s.shadowMap = 512;
             s.shadowMapSamples = 3;
         }, 0, 0, 0, 0, 0},
        // clang-format on
    };
    for (const ShownCase& c : cases) {
        SCOPED_TRACE(c.name);
        c.change(settings);
        Preferences dialog;
        const Ui::Preferences& ui = *dialog.ui;
        EXPECT_EQ(ui.MsaaCombo->currentIndex(), c.msaa);
        EXPECT_EQ(ui.TextureFilterCombo->currentIndex(), c.filter);
        EXPECT_EQ(ui.VSyncCombo->currentIndex(), c.vsync);
        EXPECT_EQ(ui.ShadowMapCombo->currentIndex(), c.shadowMap);
        EXPECT_EQ(ui.ShadowSamplesCombo->currentIndex(), c.samples);
        EXPECT_EQ(ui.stackedWidget->currentIndex(), 0);
        EXPECT_EQ(ui.listWidget->currentRow(), -1);
    }
}

TEST_F(PreferencesTest, ChecksTheOppositeBoxesAgainstTheirSettings)
{
    settings.nativeFileDialog = true;
    settings.overwriteTextures = false;
    settings.mouseInvertY = true;
    settings.screenshotTimeStamp = true;
    Preferences dialog;
    EXPECT_FALSE(dialog.ui->nativeFileDialog->isChecked());
    EXPECT_TRUE(dialog.ui->overwriteTexture->isChecked());
    EXPECT_FALSE(dialog.ui->camInvertX->isChecked());
    EXPECT_TRUE(dialog.ui->camInvertY->isChecked());
    EXPECT_EQ(dialog.ui->screenTransparentCombo->currentIndex(), 0);
    EXPECT_EQ(dialog.ui->screenTimeStampCombo->currentIndex(), 1);
}

TEST_F(PreferencesTest, BrowsingStartsAtTheSettingAndCancelKeepsTheText)
{
    settings.gavrelPath = QStringLiteral("/games/gavrel");
    settings.screenshotPath = QStringLiteral("/shots");
    Preferences dialog;
    const struct
    {
        void (Preferences::*open)();
        QLineEdit* edit;
        FileDialogRequest::Kind kind;
        QString start;
    } cases[] = {
        {&Preferences::openGavrelPath, dialog.ui->GavrelPathTxt, FileDialogRequest::Directory,
         QStringLiteral("/games/gavrel")},
        {&Preferences::openModPath, dialog.ui->ModPathTxt, FileDialogRequest::Directory,
         QStringLiteral("/games/gavrel\\res_mods")},
        {&Preferences::openEditorPath, dialog.ui->ImageEditorTxt, FileDialogRequest::OpenFile,
         QString()},
        {&Preferences::openScreenshotPath, dialog.ui->ScreenshotTxt, FileDialogRequest::Directory,
         QStringLiteral("/shots")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.edit->objectName().toStdString());
        const QString before = c.edit->text();
        requests.clear();
        (dialog.*c.open)();
        ASSERT_EQ(requests.size(), 1);
        EXPECT_EQ(requests[0].kind, c.kind);
        EXPECT_EQ(requests[0].startDirectory, c.start);
        EXPECT_EQ(c.edit->text(), before);

        answers = {QStringLiteral("/chosen")};
        (dialog.*c.open)();
        EXPECT_EQ(c.edit->text(), QStringLiteral("/chosen"));
    }
    EXPECT_EQ(requests.last().caption, QStringLiteral("Open Directory"));
}

TEST_F(PreferencesTest, ModFolderHistorySurvivesCancelWithoutDuplicates)
{
    const QString file = Preferences::historyFilePath();
    {
        Preferences dialog;
        dialog.reject();
    }
    EXPECT_FALSE(QFile::exists(file));

    {
        Preferences dialog;
        answers = {QStringLiteral("/mods/a"), QStringLiteral("/mods/b"), QStringLiteral("/mods/a")};
        for (int i = 0; i < 3; ++i)
            dialog.openModPath();
        EXPECT_EQ(requests[1].history, QStringList{QStringLiteral("/mods/a")});
        dialog.reject();
    }
    ASSERT_TRUE(QFile::exists(file));
    const QStringList expected{QStringLiteral("/mods/a"), QStringLiteral("/mods/b")};
    EXPECT_EQ(QSettings(file, QSettings::IniFormat).value(QStringLiteral("HistoryModPath")),
              expected);

    settings.modPath = QStringLiteral("/mods/current");
    Preferences next;
    EXPECT_EQ(next.modPathHistory, expected);
    requests.clear();
    next.openModPath();
    ASSERT_EQ(requests.size(), 1);
    EXPECT_EQ(requests[0].history, expected);
    EXPECT_EQ(requests[0].startDirectory, QStringLiteral("/mods/current"));
}

TEST_F(PreferencesTest, ListRowChoosesThePage)
{
    Preferences dialog;
    for (int row : {2, 1, 0, 2}) {
        dialog.ui->listWidget->setCurrentRow(row);
        EXPECT_EQ(dialog.ui->stackedWidget->currentIndex(), row);
    }
    // Losing the current row leaves the page of the one before.
    dialog.changePage(nullptr, dialog.ui->listWidget->item(1));
    EXPECT_EQ(dialog.ui->stackedWidget->currentIndex(), 1);
}
