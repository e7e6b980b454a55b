#pragma once

#include <QMetaType>

// The shell the armour inspector fires: what the "Armor Inspector" panel
// holds, passed by value from the window to the ray test.
struct ShellParamaters
{
    float calibre = 88.0f;      // mm
    float normalization = 2.0f; // degrees
    int type = 0;               // index in the shell type box: AP, APCR, HE, HEAT
    // Nominal penetration at the chosen distance, mm; 0 when the shell has
    // none, and the walk then reports no penetration.
    float penetration = 0;
    // The fraction of its remaining penetration a HEAT shell loses per
    // 10 cm of free travel after the first plate.
    float lossPerDecimetre = 0;
};

Q_DECLARE_METATYPE(ShellParamaters)
