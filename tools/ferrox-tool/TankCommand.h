#pragma once

struct ToolArguments;

// tank GAME_DIR NAME [--mod DIR] [--json] [--tank-list FILE]: the vehicle
// Ferrox assembles for a display name: file, parts, turrets, textures.
int tankCommand(const ToolArguments& arguments);
