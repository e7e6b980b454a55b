#include "UvGenerateUI.h"

#include "Constants.h"
#include "FileDialogs.h"
#include "MessageBoxes.h"
#include "ModDirectory.h"
#include "RenderWidget.h"
#include "Settings.h"
#include "TankLoader.h"
#include "TextureLoader.h"
#include "UvMapFile.h"

#include <QColorDialog>
#include <QCoreApplication>
#include <QFileInfo>
#include <QLabel>
#include <QPalette>
#include <QProgressDialog>

namespace {
constexpr int PreviewSide = 512;

void showColour(QLabel* swatch, const QColor& colour)
{
    QPalette palette = swatch->palette();
    palette.setColor(QPalette::Window, colour);
    swatch->setPalette(palette);
    swatch->setAutoFillBackground(true);
}
} // namespace

UvGenerateUI::UvGenerateUI(QWidget* parent, TankLoader* tankLoader, RenderWidget* widget)
    : QDialog(parent), loader(tankLoader), renderWidget(widget)
{
    ui.setupUi(this);
    setFixedSize(717, 540);
    showColour(ui.viewportLabel_2, style.line);
    showColour(ui.viewportLabel_3, style.fill);
    showColour(ui.viewportLabel, style.background);
}

void UvGenerateUI::setUvData(const QVector<UvGroup>& uvGroups, const QStringList& textures)
{
    map.setData(uvGroups, textures);
    ui.tabWidget->clear();
    ui.tabWidget->setTabsClosable(true);
    for (const QString& texture : textures) {
        auto* tab = new QWidget;
        tab->setObjectName(UvMap::tabName(texture));
        ui.tabWidget->addTab(tab, UvMap::tabName(texture));
    }
}

void UvGenerateUI::collect()
{
    if (!loader)
        return;
    // The turrets and guns that aren't mounted are loaded into GL for the
    // occasion.
    const GlContextScope viewport;
    const UvMap collected = UvMap::collect(*loader);
    setUvData(collected.groups, collected.textures);
}

QSize UvGenerateUI::textureSize(const QString& texture)
{
    auto found = sizes.constFind(texture);
    if (found != sizes.constEnd())
        return *found;
    TextureLoader* textures = TextureLoader::instance();
    const QSize size = textures ? textures->ddsSize(texture) : QSize();
    sizes.insert(texture, size);
    return size;
}

void UvGenerateUI::generate()
{
    images.clear();
    sizes.clear();
    collect();
    for (const QString& texture : map.textures)
        images.append(map.preview(texture, textureSize(texture), style));
    for (int i = 0; i < ui.tabWidget->count() && i < images.size(); ++i) {
        QPalette palette;
        palette.setBrush(backgroundRole(),
                         QBrush(images[i].scaled(PreviewSide, PreviewSide, Qt::KeepAspectRatio,
                                                 Qt::SmoothTransformation)));
        QWidget* tab = ui.tabWidget->widget(i);
        tab->setPalette(palette);
        tab->setAutoFillBackground(true);
    }
    generated = true;
}

void UvGenerateUI::chooseColour(QColor& colour, QLabel* swatch)
{
    const QColor chosen = QColorDialog::getColor(swatch->palette().color(QPalette::Window), this);
    if (!chosen.isValid())
        return;
    colour = chosen;
    showColour(swatch, colour);
}

void UvGenerateUI::changeFillColour()
{
    chooseColour(style.fill, ui.viewportLabel_3);
}

void UvGenerateUI::changeBrushColour()
{
    chooseColour(style.line, ui.viewportLabel_2);
}

void UvGenerateUI::changeBackgroundColour()
{
    chooseColour(style.background, ui.viewportLabel);
}

void UvGenerateUI::changeLineWidth(double width)
{
    style.lineWidth = float(width);
}

void UvGenerateUI::closeTab(int index)
{
    ui.tabWidget->removeTab(index);
}

void UvGenerateUI::warn(const QString& text)
{
    warningBox(this, tr("Warning"), text, QMessageBox::Ok, QMessageBox::NoButton);
}

void UvGenerateUI::saveActive()
{
    saveActive(true);
}

void UvGenerateUI::saveActive(bool showComplete)
{
    if (!generated) {
        warn(tr("You must generate a UV Map first."));
        return;
    }
    const QWidget* tab = ui.tabWidget->currentWidget();
    const QString texture = tab ? map.textureForTab(tab->objectName()) : QString();
    if (texture.isEmpty()) {
        warn(tr("Could not match texture name."));
        return;
    }
    if (savePaths({texture}) && showComplete)
        informationBox(this, QLatin1String(Ferrox::ApplicationName),
                       tr("UV Map save operation complete."), QMessageBox::Ok);
}

void UvGenerateUI::save()
{
    if (!generated) {
        warn(tr("You must generate a UV Map first."));
        return;
    }
    const int current = ui.tabWidget->currentIndex();
    for (int i = 0; i < ui.tabWidget->count(); ++i) {
        ui.tabWidget->setCurrentIndex(i);
        saveActive(false);
    }
    ui.tabWidget->setCurrentIndex(current);
    informationBox(this, QLatin1String(Ferrox::ApplicationName),
                   tr("UV Map save operation complete."), QMessageBox::Ok);
}

bool UvGenerateUI::savePaths(const QStringList& textures)
{
    for (const QString& texture : textures) {
        if (!savePath(texture)) {
            const auto format = UvMapFile::Format(ui.formatMultCombo->currentIndex());
            warn(tr("Failed to generate UV map for texuture.") + QStringLiteral(": ") +
                 UvMapFile::proposedName(texture, format));
            return false;
        }
    }
    return true;
}

bool UvGenerateUI::savePath(const QString& texture)
{
    const int scale = UvMapFile::scaleOfIndex(ui.resMultCombo->currentIndex());
    const auto format = UvMapFile::Format(ui.formatMultCombo->currentIndex());
    const QString proposed = UvMapFile::proposedName(texture, format);
    const QString fileName = QFileInfo(proposed).fileName();
    const Settings* settings = Settings::instance();
    const QString start = settings && !settings->modPath.isEmpty()
                              ? ModDirectory::fileInModFolder(settings->modPath, proposed)
                              : proposed;
    const QString file = chooseSaveFile(this, tr("Save UV Map") + QStringLiteral(": ") + fileName,
                                        start, UvMapFile::filter(format), {});
    // A cancelled chooser skips this texture only.
    if (file.isEmpty())
        return true;

    QProgressDialog progress(tr("Saving UV Map") + QStringLiteral(": ") + fileName, QString(), 0, 2,
                             this);
    progress.setWindowModality(Qt::WindowModal);
    progress.show();
    progress.activateWindow();
    QCoreApplication::processEvents();
    progress.setValue(1);
    const bool saved =
        UvMapFile::save(map, texture, textureSize(texture), scale, format, style, file);
    progress.setValue(2);
    return saved;
}
