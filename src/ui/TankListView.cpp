#include "TankListView.h"

#include "CommonMessages.h"
#include "Constants.h"
#include "EditTextureUI.h"
#include "Log.h"
#include "MainWindow.h"
#include "MessageBoxes.h"
#include "ModDirectory.h"
#include "RenderWidget.h"
#include "Settings.h"
#include "TankInfo.h"
#include "TankLoader.h"
#include "TextureExtractor.h"
#include "UvGenerateUI.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QProgressDialog>

namespace {
QString programName()
{
    return QLatin1String(Ferrox::ApplicationName);
}

void warn(const QString& text)
{
    warningBox(mainWindow, programName(), text, QMessageBox::Ok, QMessageBox::NoButton);
}

void inform(const QString& text)
{
    informationBox(mainWindow, programName(), text, QMessageBox::Ok);
}

// A question with Ok and Cancel, Cancel the default; true for Ok.
bool confirm(const QString& text)
{
    return warningBox(mainWindow, programName(), text, QMessageBox::Ok | QMessageBox::Cancel,
                      QMessageBox::Cancel) == QMessageBox::Ok;
}

TankLoader* tankLoader()
{
    return TankLoader::instance();
}
} // namespace

TankListView::TankListView(QWidget* parent) : QListView(parent)
{
    contextMenu = new QMenu(tr("Context menu"), this);
    const std::pair<const char*, const char*> entries[] = {
        {QT_TR_NOOP("Open tank directory"), SLOT(openDirectory())},
        {QT_TR_NOOP("Create tank directory"), SLOT(createDirectory())},
        {QT_TR_NOOP("Extract all tank textures"), SLOT(extractTextures())},
        {QT_TR_NOOP("Edit tank textures"), SLOT(editTexture())},
        {QT_TR_NOOP("Generate UV Map"), SLOT(generateUVMap())},
        {QT_TR_NOOP("Export tank mesh"), SLOT(exportTankMesh())},
    };
    for (const auto& [text, slot] : entries) {
        auto* action = new QAction(tr(text), this);
        connect(action, SIGNAL(triggered()), this, slot);
        contextMenu->addAction(action);
    }
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, SIGNAL(customContextMenuRequested(QPoint)), this,
            SLOT(showContextMenuForWidget(QPoint)));
}

void TankListView::followFilter(QWidget* filter)
{
    filterBox = filter;
    filter->installEventFilter(this);
}

bool TankListView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != filterBox || event->type() != QEvent::KeyPress)
        return QListView::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool intoList = key->modifiers() == Qt::NoModifier &&
                          (key->key() == Qt::Key_Down || key->key() == Qt::Key_Tab);
    if (!intoList || !model() || model()->rowCount() == 0)
        return false;
    if (!currentIndex().isValid())
        setCurrentIndex(model()->index(0, 0));
    setFocus(Qt::TabFocusReason);
    return true;
}

void TankListView::keyPressEvent(QKeyEvent* event)
{
    QListView::keyPressEvent(event);
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && mainWindow)
        mainWindow->loadTank();
}

void TankListView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && mainWindow)
        mainWindow->loadTank();
}

void TankListView::showContextMenuForWidget(const QPoint& pos)
{
    contextMenu->exec(mapToGlobal(pos));
}

bool TankListView::selectedTank(bool needsModFolder, QString& name)
{
    const Settings* settings = Settings::instance();
    if (needsModFolder && (!settings || settings->modPath.isEmpty())) {
        warn(commonMessages->selectModFolder);
        return false;
    }
    const QVariant selected = currentIndex().data(Qt::DisplayRole);
    if (selected.isNull()) {
        warn(commonMessages->selectTank);
        return false;
    }
    name = selected.toString();
    // A failed load leaves the tool working on the vehicle that was in view.
    TankLoader* loader = tankLoader();
    if (loader && loader->name != name) {
        const GlContextScope viewport;
        loader->load(name);
    }
    return true;
}

void TankListView::openDirectory()
{
    QString name;
    if (!selectedTank(true, name))
        return;
    const ModDirectory directory = ModDirectory::forTank(name);
    if (!directory.exists()) {
        if (!confirm(name + tr(" directory does not exist in the mod folder.\n"
                               "Would you like to create it?")))
            return;
        createDirectory();
    }
    directory.open();
}

void TankListView::createDirectory()
{
    QString name;
    if (!selectedTank(true, name))
        return;
    switch (ModDirectory::forTank(name).create()) {
    case ModDirectory::Creation::AlreadyExists:
        inform(commonMessages->directoryExists);
        break;
    case ModDirectory::Creation::Failed:
        warn(commonMessages->createDirectoryFailed);
        break;
    case ModDirectory::Creation::Created:
        inform(tr("Create directory completed."));
        break;
    }
}

void TankListView::extractTextures()
{
    QString name;
    if (!selectedTank(true, name))
        return;
    if (!extractWithProgress()) {
        warn(commonMessages->extractTexturesFailed);
        Log::log(QStringLiteral("Failed to extract textures: ") + name, Log::Warning);
    }
}

bool TankListView::extractWithProgress()
{
    TankLoader* loader = tankLoader();
    if (!loader || !loader->loaded || !loader->info)
        return false;
    const int count = int(loader->info->allTextureFiles.size());
    QProgressDialog progress(tr("Extracting texture files"), tr("Cancel"), 0, count - 1,
                             mainWindow);
    progress.setWindowModality(Qt::WindowModal);
    progress.setValue(0);
    progress.show();
    progress.activateWindow();
    QCoreApplication::processEvents();

    TextureExtractor extractor(Settings::instance()->modPath);
    extractor.confirmOverwrite = [](const QString& question, const QString&) {
        return confirm(question);
    };
    extractor.progress = [&progress](int index, int) {
        progress.setValue(index);
        return !progress.wasCanceled();
    };
    const TextureExtractor::Outcome outcome = extractor.extractTank(*loader);
    progress.close();
    if (outcome != TextureExtractor::Outcome::Completed)
        return false;
    inform(tr("Extraction completed."));
    return true;
}

void TankListView::editTexture()
{
    TankLoader* loader = tankLoader();
    if (loader && loader->damageMode == Collision) {
        warn(tr("Edit texture not available in collision mode."));
        return;
    }
    QString name;
    if (!selectedTank(true, name) || !loader)
        return;
    EditTextureUI dialog(mainWindow, Qt::WindowTitleHint | Qt::WindowSystemMenuHint);
    dialog.fill(*loader);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const Settings* settings = Settings::instance();
    const QString file = ModDirectory::fileInModFolder(settings->modPath, dialog.chosenPath());
    if (!QFileInfo::exists(file)) {
        if (!confirm(name + tr(" textures do not exist in the mod folder.\n"
                               "Would you like to extract them?")))
            return;
        extractTextures();
    }
    openInImageEditor(settings->imageEditor, file);
}

void TankListView::generateUVMap()
{
    QString name;
    if (!selectedTank(false, name))
        return;
    UvGenerateUI dialog(mainWindow, tankLoader(), mainWindow ? mainWindow->renderWidget : nullptr);
    dialog.exec();
}

void TankListView::exportTankMesh()
{
    QString name;
    if (!selectedTank(true, name) || name.isEmpty())
        return;
    TankLoader* loader = tankLoader();
    if (!loader)
        return;
    const QString directory = ModDirectory::forTank(name).exportDirectory(loader->damageMode);
    if (!QFileInfo(directory).isDir() && !ModDirectory::makePath(directory)) {
        warn(commonMessages->createDirectoryFailed);
        return;
    }
    // The box comes either way; what could not be written is in the log.
    if (!loader->exportAll())
        Log::log(QStringLiteral("Export tank mesh: not every OBJ file of ") + name +
                     QStringLiteral(" could be written."),
                 Log::Warning);
    inform(tr("Export tank completed."));
}
