#pragma once

#include <QListView>

class QMenu;

// The list of vehicles in the dock "Tanks": Enter, Return or a double click
// with the left button loads the selected vehicle. The tools that work on
// the selected vehicle's files (context menu, the buttons under the list,
// the "Edit" menu) land on its slots.
class TankListView : public QListView
{
    Q_OBJECT
public:
    explicit TankListView(QWidget* parent = nullptr);

    // Down or Tab in the filter box moves into the list, onto its first row
    // when none is current, so that Enter then loads it.
    void followFilter(QWidget* filter);
    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    void showContextMenuForWidget(const QPoint& pos);
    void openDirectory();
    void editTexture();
    void createDirectory();
    void extractTextures();
    void generateUVMap();
    void exportTankMesh();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    // The checks every tool starts with: a mod folder (when needsModFolder),
    // a selected row, and that vehicle in view. False, after its box, when
    // the tool can't go on.
    bool selectedTank(bool needsModFolder, QString& name);
    // The extraction with its progress dialog and overwrite questions.
    bool extractWithProgress();

    QMenu* contextMenu;
    QWidget* filterBox = nullptr;
};
