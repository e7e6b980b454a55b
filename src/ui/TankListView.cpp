#include "TankListView.h"

#include "Log.h"
#include "MainWindow.h"

#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>

namespace {
// The mod-folder tools come with their own work; until then the entry
// points exist and say so.
void notThereYet(const char* tool)
{
    Log::log(QLatin1String(tool) + QStringLiteral(": not available yet."), Log::Info);
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

void TankListView::openDirectory()
{
    notThereYet("Open tank directory");
}

void TankListView::editTexture()
{
    notThereYet("Edit tank textures");
}

void TankListView::createDirectory()
{
    notThereYet("Create tank directory");
}

void TankListView::extractTextures()
{
    notThereYet("Extract all tank textures");
}

void TankListView::generateUVMap()
{
    notThereYet("Generate UV Map");
}

void TankListView::exportTankMesh()
{
    notThereYet("Export tank mesh");
}
