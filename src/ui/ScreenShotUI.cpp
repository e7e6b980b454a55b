#include "ScreenShotUI.h"

#include "Constants.h"
#include "FileDialogs.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "RenderWidget.h"
#include "Screenshots.h"
#include "Settings.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPalette>
#include <QProgressDialog>
#include <QThread>

namespace {
// The preset the dialog opens with, 1080p.
constexpr int StartPreset = 1;
} // namespace

ScreenShotUI::ScreenShotUI(QWidget* parent, RenderWidget* widget)
    : QDialog(parent, Qt::WindowTitleHint | Qt::WindowSystemMenuHint), renderWidget(widget)
{
    ui.setupUi(this);
    setFixedSize(606, 386);
    const int limit = Screenshots::sizeLimit(renderWidget ? renderWidget->maxImageSize() : 0);
    ui.widthSpinBox->setMaximum(limit);
    ui.heightSpinBox->setMaximum(limit);
    for (const Screenshots::Preset& preset : Screenshots::presets())
        ui.presetComboBox->addItem(preset.text);
    ui.presetComboBox->setCurrentIndex(StartPreset);
    if (renderWidget) {
        frame = renderWidget->grabFramebuffer().convertToFormat(QImage::Format_RGB32);
        renderWidget->paused = true;
    }
    // The preview's size is known only once the layout has run.
    ui.previewWidget->installEventFilter(this);
    loadPresetChanged(StartPreset);
}

bool ScreenShotUI::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == ui.previewWidget && event->type() == QEvent::Resize)
        showPreview();
    return QDialog::eventFilter(watched, event);
}

void ScreenShotUI::showPreview()
{
    if (frame.isNull())
        return;
    QPalette palette;
    palette.setBrush(backgroundRole(),
                     QBrush(frame.scaled(ui.previewWidget->size(), Qt::IgnoreAspectRatio,
                                         Qt::SmoothTransformation)));
    ui.previewWidget->setAutoFillBackground(true);
    ui.previewWidget->setPalette(palette);
}

void ScreenShotUI::loadPresetChanged(int index)
{
    // The boxes' maximum already clamps a preset the GPU can't reach.
    const QSize size =
        Screenshots::presetSize(index, renderWidget ? renderWidget->maxImageSize() : 0);
    if (size.isEmpty())
        return;
    ui.widthSpinBox->setValue(size.width());
    ui.heightSpinBox->setValue(size.height());
}

void ScreenShotUI::accept()
{
    const int width = ui.widthSpinBox->value();
    const int height = ui.heightSpinBox->value();
    const Settings* settings = Settings::instance();
    QString format;
    const QString file = Screenshots::withFormatSuffix(
        chooseSaveFile(this, tr("Save Screenshot"), settings ? settings->screenshotPath : QString(),
                       QStringLiteral("Png (*.png);;Tiff (*.tiff)"), {}, &format),
        format);
    if (file.isEmpty())
        return;
    const bool transparent = ui.transparencyCheckBox->isChecked();

    QProgressDialog progress(tr("Saving Screenshot"), QString(), 0, 2, this);
    progress.setWindowModality(Qt::WindowModal);
    progress.setValue(0);
    progress.show();
    progress.activateWindow();
    QCoreApplication::processEvents();
    // Gives the progress dialog its first paint before the GPU is busy.
    QThread::msleep(15);

    QImage image =
        renderWidget ? renderWidget->renderToImage(width, height, transparent) : QImage();
    progress.setValue(1);
    QString error;
    const bool saved =
        !image.isNull() && Screenshots::save(image, file, ui.qualityDial->value(), &error);
    progress.setValue(2);
    const QString title = QLatin1String(Ferrox::ApplicationName);
    if (saved) {
        informationBox(this, title, tr("Screenshot save operation complete."), QMessageBox::Ok);
    } else {
        Log::log(QStringLiteral("QImageWriter failure on image: ") + file, Log::Error);
        Log::log(QStringLiteral("Failure String: ") + error, Log::Error);
        warningBox(this, title, tr("Screenshot save operation failed."), QMessageBox::Ok,
                   QMessageBox::NoButton);
    }
    image = QImage();
    close();
}
