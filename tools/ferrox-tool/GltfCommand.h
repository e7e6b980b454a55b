#pragma once

struct ToolArguments;

// gltf GAME_DIR NAME --out FILE.glb|FILE.gltf [--state intact|destroyed|collision]
// [--turret NAME] [--gun NAME] [--yaw DEG] [--turret-yaw DEG] [--gun-pitch DEG]
// [--camo SEASON:ROW] [--mod DIR]: the vehicle as a glTF 2.0 asset, as the
// window's "Export glTF..." writes it.
int gltfCommand(const ToolArguments& arguments);
