#pragma once

#include <QString>
#include <QStringList>

// The two camouflage exports of the "Camo" panel, written under the mod
// folder: the bake draws the applied pattern into copies of the loaded
// vehicle's paintable diffuse textures, the pattern export copies the
// applied pattern's texture out of the archives. Boxes go through
// MessageBoxes.h, so that a tool or a test answers them.

// What one bake did, file by file (output paths).
struct CamoBakeReport
{
    bool started = false; // false: refused as a whole (mode, lists), nothing written
    QStringList written;
    QStringList refused;
    QStringList failed;
};

// The checks both exports make, in order; the text of the first that
// fails (for an information box), or empty.
QString camoExportProblem();

// The bake of the loaded vehicle with the applied pattern.
CamoBakeReport bakeCamouflage();

// "Bake and Export": the checks, then the bake. The window's button slot.
CamoBakeReport exportCamoBake();

// "Export Camo Pattern": the checks, then the applied pattern's file copied
// out of the archives (never the mod folder) to the same relative path
// under the mod folder. The output path, or empty when nothing was written.
QString exportCamoPattern();
