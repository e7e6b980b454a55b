#pragma once

#include "WeakSpotJob.h"

#include <QByteArray>
#include <QImage>
#include <QObject>
#include <QTimer>

class QCheckBox;
class QProgressBar;
class RenderWidget;

// The "Weak spots" switch of the armour inspector: in armour mode the
// viewport shows the chance to penetrate along each pixel's view ray, for
// the shell the inspector fires, with a legend. The map is computed off the
// GUI thread once the view has rested (camera, vehicle rotations, turret,
// gun and shell unchanged for one look), and hidden while the view moves.
class WeakSpotDisplay : public QObject
{
    Q_OBJECT
public:
    static constexpr int RestMs = 300;

    WeakSpotDisplay(RenderWidget* viewport, QCheckBox* toggle, QProgressBar* progress,
                    QObject* parent);

    // Starts the map for the view as it stands, when the switch is on in
    // armour mode with a vehicle; otherwise hides it.
    void refresh();
    // The last map finished, without its legend.
    const QImage& map() const { return lastMap; }
    // The map with the legend in its lower left corner.
    static QImage withLegend(const QImage& map);

    WeakSpotJob job;

private:
    void toggled(bool on);
    void look();
    void show(const QImage& map);
    void hide();
    bool active() const;
    QByteArray viewKey() const;

    RenderWidget* viewport;
    QCheckBox* toggle;
    QProgressBar* progress;
    QTimer restTimer;
    QByteArray lastKey;
    QByteArray startedKey;
    QImage lastMap;
};
