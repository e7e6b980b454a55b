#pragma once

#include "Singleton.h"

#include <QList>
#include <QListView>

#include <memory>

class CamoList;
class QLabel;

// The pattern previews of the "Camo" panel: shows the season's rows of a
// CamoList, applies a clicked row, paints the four colour swatches and
// runs the colour dialogs behind the swatches' buttons. The list can only
// follow the camouflage once the viewport's GL has made the CamoLoader, so
// the window calls follow() after that.
class CamoListUI : public QListView, public Singleton<CamoListUI>
{
    Q_OBJECT
public:
    static constexpr int Channels = 4;

    explicit CamoListUI(QWidget* parent = nullptr);
    ~CamoListUI() override;

    // Shows the pattern list of the present CamoLoader; the swatches are the
    // panel's colour labels of channel 0 to 3.
    void follow(const QList<QLabel*>& swatches);
    // Null until follow().
    CamoList* patterns() const { return list.get(); }

public slots:
    void imageClicked(const QModelIndex& index);
    void changeColor0();
    void changeColor1();
    void changeColor2();
    void changeColor3();

private:
    void changeColor(int channel);
    void paintSwatch(int channel, const QColor& colour);
    void showRows(bool reset);

    std::unique_ptr<CamoList> list;
    QList<QLabel*> swatchLabels;
    // The current cell before the rows were made anew.
    int earlierRow = -1;
    int earlierColumn = -1;
};
