#include "Preferences.h"

#include "ui_Preferences.h"

#include "CommonMessages.h"
#include "Constants.h"
#include "Environment.h"
#include "FileDialogs.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "Settings.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QSettings>

namespace {
const QString HistoryKey = QStringLiteral("HistoryModPath");
// Where the game installs itself unless told otherwise.
const QString DefaultGamePath = QStringLiteral("c:\\Games\\Gavrel");

// A value that no entry holds shows the first entry.
void selectText(QComboBox* combo, const QString& text)
{
    combo->setCurrentIndex(qMax(0, combo->findText(text)));
}

QString openDirectoryCaption()
{
    return commonMessages ? commonMessages->openDirectory : QStringLiteral("Open Directory");
}

// An empty answer is a cancelled dialog and keeps what the box held.
void setIfChosen(QLineEdit* edit, const QString& chosen)
{
    if (!chosen.isEmpty())
        edit->setText(chosen);
}
} // namespace

QString Preferences::historyFilePath()
{
    return QDir::toNativeSeparators(userDirectory() + QStringLiteral("/historyModPath.list"));
}

Preferences::Preferences(QWidget* parent, Qt::WindowFlags flags)
    : QDialog(parent, flags), ui(std::make_unique<Ui::Preferences>())
{
    ui->setupUi(this);
    ui->buttonBox->button(QDialogButtonBox::Ok)->setText(tr("Ok"));
    ui->buttonBox->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    showSettings();
    loadHistory();
    ui->listWidget->setCurrentRow(-1);
    ui->stackedWidget->setCurrentIndex(0);
}

Preferences::~Preferences()
{
    if (!modPathHistory.isEmpty())
        saveHistory();
}

bool Preferences::applyTo(Settings& settings)
{
    QString gamePath = ui->GavrelPathTxt->text();
    const QString modPath = ui->ModPathTxt->text();
    const QString editorPath = ui->ImageEditorTxt->text();
    const QString screenshotPath = ui->ScreenshotTxt->text();
    const int vsync = ui->VSyncCombo->currentIndex();
    const QString textureFilter = ui->TextureFilterCombo->currentText();
    const QString msaa = ui->MsaaCombo->currentText();
    const int shadowMap = ui->ShadowMapCombo->currentText().toInt();
    const float shadowSamples = ui->ShadowSamplesCombo->currentText().toFloat();

    if (gamePath.isEmpty()) {
        const QString message = tr("Gavrel path is empty, using default path.");
        Log::log(message, Log::Warning);
        warningBox(this, QLatin1String(Ferrox::ApplicationName), message, QMessageBox::Ok,
                   QMessageBox::NoButton);
        gamePath = DefaultGamePath;
    }

    settings.setShadowMapSamples(shadowSamples);
    if (shadowMap != settings.shadowMap)
        settings.setShadowMapSize(shadowMap);
    // Announced by the save below, once the file holds the new path.
    if (gamePath != settings.gavrelPath)
        settings.setGavrelPath(gamePath);
    if (modPath != settings.modPath)
        settings.setModPath(modPath);
    if (editorPath != settings.imageEditor)
        settings.setImageEditorPath(editorPath);

    // The surface's format is fixed when the viewport is made.
    bool restart = false;
    if (msaa != settings.msaa) {
        settings.setMsaa(msaa);
        restart = true;
    }
    if (vsync != settings.vsync) {
        settings.setVsync(vsync);
        restart = true;
    }
    if (textureFilter != settings.textureFilter)
        settings.setTextureFilter(textureFilter);
    if (screenshotPath != settings.screenshotPath)
        settings.setScreenshotPath(screenshotPath);

    settings.setMouseInvert(ui->camInvertX->isChecked(), ui->camInvertY->isChecked());
    settings.setScreenshotAlpha(ui->screenTransparentCombo->currentIndex() != 0);
    settings.setScreenshotTimeStamp(ui->screenTimeStampCombo->currentIndex() != 0);
    settings.setOverwriteTexture(!ui->overwriteTexture->isChecked());
    settings.setVerticalTabs(ui->verticalTabs->isChecked());
    settings.setNativeFileDialog(!ui->nativeFileDialog->isChecked());

    settings.save();
    return restart;
}

void Preferences::showSettings()
{
    const Settings* settings = Settings::instance();
    if (!settings)
        return;
    ui->GavrelPathTxt->setText(settings->gavrelPath);
    ui->ModPathTxt->setText(settings->modPath);
    ui->ImageEditorTxt->setText(settings->imageEditor);
    ui->ScreenshotTxt->setText(settings->screenshotPath);

    ui->VSyncCombo->setCurrentIndex(settings->vsync);
    selectText(ui->MsaaCombo, settings->msaa);
    selectText(ui->TextureFilterCombo, settings->textureFilter);
    selectText(ui->ShadowMapCombo, QString::number(settings->shadowMap));
    selectText(ui->ShadowSamplesCombo, QString::number(int(settings->shadowMapSamples)));
    ui->screenTransparentCombo->setCurrentIndex(settings->screenshotAlpha ? 1 : 0);
    ui->screenTimeStampCombo->setCurrentIndex(settings->screenshotTimeStamp ? 1 : 0);

    ui->camInvertX->setChecked(settings->mouseInvertX);
    ui->camInvertY->setChecked(settings->mouseInvertY);
    ui->verticalTabs->setChecked(settings->verticalTabs);
    // Both boxes ask the opposite of what the setting stores.
    ui->nativeFileDialog->setChecked(!settings->nativeFileDialog);
    ui->overwriteTexture->setChecked(!settings->overwriteTextures);
}

void Preferences::loadHistory()
{
    if (!QFile::exists(historyFilePath()))
        return;
    const QSettings history(historyFilePath(), QSettings::IniFormat);
    modPathHistory = history.value(HistoryKey).toStringList();
}

void Preferences::saveHistory() const
{
    QSettings history(historyFilePath(), QSettings::IniFormat);
    history.setValue(HistoryKey, modPathHistory);
}

void Preferences::openGavrelPath()
{
    const Settings* settings = Settings::instance();
    setIfChosen(ui->GavrelPathTxt,
                chooseDirectory(this, openDirectoryCaption(),
                                settings ? settings->gavrelPath : QString(), {}));
}

void Preferences::openModPath()
{
    const Settings* settings = Settings::instance();
    QString start = settings ? settings->modPath : QString();
    if (start.isEmpty() && settings)
        start = settings->gavrelPath + QStringLiteral("\\res_mods");
    const QString chosen = chooseDirectory(this, openDirectoryCaption(), start, modPathHistory);
    if (chosen.isEmpty())
        return;
    ui->ModPathTxt->setText(chosen);
    modPathHistory.append(chosen);
    modPathHistory.removeDuplicates();
}

void Preferences::openEditorPath()
{
    const QString caption =
        commonMessages ? commonMessages->selectFile : QStringLiteral("Select a file");
    setIfChosen(ui->ImageEditorTxt,
                chooseOpenFile(this, caption, QString(),
                               QStringLiteral("Executable (*.exe);;All Files (*.*)"), {}));
}

void Preferences::openScreenshotPath()
{
    const Settings* settings = Settings::instance();
    setIfChosen(ui->ScreenshotTxt,
                chooseDirectory(this, openDirectoryCaption(),
                                settings ? settings->screenshotPath : QString(), {}));
}

void Preferences::changePage(QListWidgetItem* current, QListWidgetItem* previous)
{
    QListWidgetItem* item = current ? current : previous;
    if (item)
        ui->stackedWidget->setCurrentIndex(ui->listWidget->row(item));
}
