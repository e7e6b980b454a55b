#pragma once

#include <QString>

// Facts about the build and the machine, for the log header, the About box
// and the settings.
QString architectureName();
QString qtVersionString();
QString osVersionName();

// The program's own data directory: the working directory with the
// executable's "bin_<arch>" folder name taken out and "data" appended.
QString userDirectory();

// The game's version from <game>/version.xml, or "Gavrel not found".
QString gameVersionString();
