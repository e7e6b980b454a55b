#pragma once

#include "Maths.h"

#include <QMetaType>
#include <QString>
#include <QVector>

// The class of a plate that a shell meets; the report colours by it.
enum ArmorCategory
{
    SpacedArmor = 0,
    SurveyArmor = 1,
    TrackArmor = 2,
    GunArmor = 3,
    RegularArmor = 4
};

// One plate a shell met.
struct RayResult
{
    float armor = 0;           // nominal thickness, mm
    float effective = 0;       // along the shell's path after normalisation, mm
    float angle = 0;           // from the plate's normal, degrees, 0 to 90
    float normalizedAngle = 0; // degrees
    float freeTravel = 0;      // scene units to the next hit; 0 on the last
    bool spaced = false;
    bool ricochet = false;
    QString name;
    Vector3 hitPoint{0, 0, 0};
    int category = RegularArmor;
    // The far side of something already counted: walked, not published.
    bool exitHit = false;
};

using RayResultsList = QVector<RayResult>;

Q_DECLARE_METATYPE(RayResultsList)
