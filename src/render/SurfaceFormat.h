#pragma once

#include <QString>
#include <QSurfaceFormat>

class Settings;

// The samples an MSAA setting asks for: "2x", "4x", "8x", "16x" give 2 to 16,
// any other text 0.
int msaaSampleCount(const QString& msaa);

// The context the viewport asks for: 3.2 core, 24-bit depth, alpha, no
// stencil, double buffered, swap interval from VSync, samples from MSAA
// ("Disabled" none; an unknown text keeps the default format's samples).
QSurfaceFormat ferroxSurfaceFormat(const Settings& settings);
