#pragma once

#include "Maths.h"

#include <QHash>
#include <QImage>
#include <QString>
#include <QVector>

#include <array>

// One camouflage pattern of a nation's catalogue. Colours are on the file's
// scale, 0 to 255.
struct CamoOption
{
    // The nation's base colour, the same in all its patterns.
    Vector4 armorColor{0, 0, 0, 0};
    QString name;
    // Red, green, blue and strength of the channels c0 to c3.
    std::array<Vector4, 4> colors{};
    QString texture;
    // GL texture name; the catalogue that holds the option owns it.
    unsigned int textureId = 0;
    // 128 x 128, the file's colours mixed over the base colour.
    QImage preview;
    // Per vehicle: key is the lower-case stem of the vehicle file.
    QHash<QString, Vector4> tiling;
    // "summer", "winter" or "desert" as the file has it.
    QString group;
    QString description;

    // The tiling for one vehicle; all zero for a vehicle the file omits.
    Vector4 tilingFor(const QString& key) const { return tiling.value(key, Vector4{0, 0, 0, 0}); }
};

// One nation's catalogue, options in file order.
struct CamoNation
{
    QString nation;
    QVector<CamoOption> options;

    // The options of one season, in catalogue order.
    QVector<const CamoOption*> season(const QString& group) const
    {
        QVector<const CamoOption*> found;
        for (const CamoOption& option : options)
            if (option.group == group)
                found.append(&option);
        return found;
    }
};
