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

// What became of the shell at a plate, when it had a penetration value.
enum PenetrationVerdict
{
    NoVerdict = 0,
    Penetrated = 1,
    NotPenetrated = 2,
    RicochetVerdict = 3
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
    // Set, with the fields below, only when the shell had a penetration.
    bool hasPenetration = false;
    float penetrationBefore = 0; // mm left when the shell reaches the plate
    float penetrationAfter = 0;  // mm left behind it; 0 when stopped
    int verdict = NoVerdict;
    // Of the +-25 % roll of penetration: the fraction that gets through
    // this plate and everything before it; 0 after a ricochet.
    float chance = 0;
};

using RayResultsList = QVector<RayResult>;

Q_DECLARE_METATYPE(RayResultsList)
