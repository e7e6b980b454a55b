#include "CamoListUI.h"

#include "CamoList.h"

#include <QColorDialog>
#include <QLabel>

CamoListUI::CamoListUI(QWidget* parent) : QListView(parent)
{
    setIconSize(QSize(65, 65));
    setViewMode(QListView::IconMode);
    setUniformItemSizes(true);
    setSelectionRectVisible(true);
    setMovement(QListView::Static);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setResizeMode(QListView::Adjust);
    setSpacing(2);
    connect(this, &QAbstractItemView::clicked, this, &CamoListUI::imageClicked);
}

CamoListUI::~CamoListUI()
{
    // The model goes with the list; the view must not point at it then.
    if (list) {
        QItemSelectionModel* selection = selectionModel();
        setModel(nullptr);
        delete selection;
    }
}

void CamoListUI::follow(const QList<QLabel*>& swatches)
{
    swatchLabels = swatches;
    list = std::make_unique<CamoList>();
    connect(list.get(), &CamoList::swatchChanged, this, &CamoListUI::paintSwatch);
    connect(list.get(), &CamoList::refreshed, this, &CamoListUI::showRows);
    // Clearing the rows loses the current cell; a refresh that keeps the
    // row needs it from before.
    connect(&list->model, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        earlierRow = currentIndex().row();
        earlierColumn = currentIndex().column();
    });
    setModel(&list->model);
}

void CamoListUI::imageClicked(const QModelIndex& index)
{
    if (list && index.isValid())
        list->clickRow(index.row());
}

void CamoListUI::changeColor0()
{
    changeColor(0);
}

void CamoListUI::changeColor1()
{
    changeColor(1);
}

void CamoListUI::changeColor2()
{
    changeColor(2);
}

void CamoListUI::changeColor3()
{
    changeColor(3);
}

void CamoListUI::changeColor(int channel)
{
    if (!list)
        return;
    QColorDialog dialog(list->color(channel), this);
    dialog.setOption(QColorDialog::ShowAlphaChannel);
    if (dialog.exec() == QDialog::Accepted)
        list->setColor(channel, dialog.selectedColor());
}

void CamoListUI::paintSwatch(int channel, const QColor& colour)
{
    if (QLabel* label = swatchLabels.value(channel))
        label->setPalette(QPalette(colour));
}

void CamoListUI::showRows(bool reset)
{
    const QAbstractItemModel* rows = model();
    setCurrentIndex(reset ? rows->index(0, 0) : rows->index(earlierRow, earlierColumn));
}
