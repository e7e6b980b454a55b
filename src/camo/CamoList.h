#pragma once

#include <QColor>
#include <QObject>
#include <QStandardItemModel>
#include <QString>

// The logic of the pattern list of the "Camo" panel, without the widgets:
// the previews and descriptions of one season as rows of an item model a
// list view shows, a click applying the row's pattern, and the four colour
// swatches. The panel's view shows `model`, forwards its clicks, the season
// radio buttons and the colour dialogs' results here, and paints the
// swatches and the current row as the signals say.
class CamoList : public QObject
{
    Q_OBJECT
public:
    // Follows the CamoLoader that exists now.
    explicit CamoList(QObject* parent = nullptr);

    // Channel 0 to 3 of the applied colours as a swatch shows them.
    QColor color(int channel) const;

    QString season = QStringLiteral("summer");
    // One row per pattern of the season: the preview as icon, the
    // description as tool tip.
    QStandardItemModel model;

signals:
    // Swatch channel shows colour (with its alpha).
    void swatchChanged(int channel, const QColor& colour);
    // The rows were made anew; reset: row 0 becomes current, else the view
    // keeps the row and column it had.
    void refreshed(bool reset);

public slots:
    // The rows of season anew; nothing without a loaded vehicle.
    void refresh(bool reset);
    // "summer", "desert" or "winter": that season's rows, row 0 current;
    // the vehicle keeps its pattern until a row is clicked.
    void setSeason(const QString& name);
    // A click on a row applies that pattern of the season.
    void clickRow(int row);
    // A colour dialog's result goes into the applied colours only (the
    // catalogue keeps the file's), and into the swatch.
    void setColor(int channel, const QColor& colour);

private:
    void paintSwatches();
    void vehicleOfAnotherNation();
};
