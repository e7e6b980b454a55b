#pragma once

#include "RayResult.h"

#include <QCoreApplication>
#include <QString>

// What the "Armor Inspector" dock prints for one shot: per plate, nearest
// first, a block of paragraphs in the colour of its category with the
// material, the angles, the thicknesses, a ricochet and the free travel to
// the next plate. The dock puts it into armorResultsText with one
// appendHtml after clearing the field.
class ArmorReport
{
    Q_DECLARE_TR_FUNCTIONS(ArmorWidget)
public:
    static QString html(const RayResultsList& results);
};
