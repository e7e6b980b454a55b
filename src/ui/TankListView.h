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
    QMenu* contextMenu;
};
