#pragma once

#include <QMetaType>

// The shell the armour inspector fires: what the "Armor Inspector" panel
// holds, passed by value from the window to the ray test.
struct ShellParamaters
{
    float calibre = 88.0f;      // mm
    float normalization = 2.0f; // degrees
    int type = 0;               // index in the shell type box: AP, APCR, HE, HEAT
};

Q_DECLARE_METATYPE(ShellParamaters)
