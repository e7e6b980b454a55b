#pragma once

struct ToolArguments;

// render GAME_DIR NAME --out FILE [--size WxH] [--state intact|destroyed|collision]
// [--turret NAME] [--gun NAME] [--yaw DEG] [--turret-yaw DEG]
// [--gun-pitch DEG] [--camera FILE.Camera] [--no-garage] [--transparent]
// [--mod DIR] [--camo SEASON:ROW]: a picture of the vehicle as the viewport draws it, written
// off-screen to FILE in the format its suffix names.
int renderCommand(const ToolArguments& arguments);
