#pragma once

#include "GunShells.h"
#include "ShellParamaters.h"

#include <QObject>
#include <QVector>

class QComboBox;
class QDoubleSpinBox;
class QSpinBox;

// The "Shell:" box of the armour inspector: the fitted gun's shells by
// name, then "Custom", the hand-made shell of the type, calibre and
// normalisation boxes with a penetration box of its own. Picking a game
// shell sets those boxes; its penetration follows "Distance (m):".
class ShellChoice : public QObject
{
    Q_OBJECT
public:
    struct Controls
    {
        QComboBox* shellBox = nullptr;
        QSpinBox* distanceBox = nullptr;
        QDoubleSpinBox* penetrationBox = nullptr;
        QComboBox* typeBox = nullptr;
        QDoubleSpinBox* calibreBox = nullptr;
        QDoubleSpinBox* normalizationBox = nullptr;
    };

    ShellChoice(const Controls& controls, QObject* parent);

    // Refills the box; a shell of the same tag as the chosen one stays
    // chosen, "Custom" stays "Custom", anything else falls to the first.
    void setShells(const QVector<Shell>& list);
    // The chosen game shell; null for "Custom".
    const Shell* chosen() const;
    // The penetration and HEAT loss of the chosen entry at the distance.
    void complete(ShellParamaters& shell) const;

signals:
    // The chosen entry, the distance or the custom penetration changed.
    void changed();

private:
    void pick(int index);

    Controls ui;
    QVector<Shell> shells;
};
