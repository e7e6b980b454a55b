#pragma once

#include <QString>

class CamoLoader;
struct ToolArguments;

// camo GAME_DIR [NATION]: every nation's camouflage catalogue as Ferrox
// reads it during the table's rebuild: per pattern its season, name,
// texture, colours and tilings; NATION (display name or folder, any case)
// keeps one nation.
int camoCommand(const ToolArguments& arguments);

// bake GAME_DIR NAME --mod DIR [--camo SEASON:ROW] [--overwrite]: the
// camouflage bake of "Bake and Export" without the window. Files that
// exist are kept unless --overwrite; DIR inside the game folder is refused.
int bakeCommand(const ToolArguments& arguments);

// Applies "SEASON:ROW" (row counted within the season) with the overlay on;
// false, with the reason on standard error, for a text of another form or
// a row the season doesn't have.
bool applyCamoChoice(CamoLoader& camo, const QString& choice);
