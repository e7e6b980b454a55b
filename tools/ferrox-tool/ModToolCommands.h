#pragma once

struct ToolArguments;

// obj GAME_DIR NAME --out DIR [--state intact|destroyed|collision]: the OBJ
// files of the vehicle's four parts below DIR, as the program exports them
// into the mod folder.
int objCommand(const ToolArguments& arguments);

// uv GAME_DIR NAME --out DIR [--format png|tiff|svg] [--scale 1-4]
// [--line-width W]: the UV template of every texture of the vehicle, below
// DIR under the texture's own path.
int uvCommand(const ToolArguments& arguments);

// extract GAME_DIR NAME --mod DIR [--overwrite]: the vehicle's textures out
// of the archives into the mod folder; existing files stay unless
// --overwrite.
int extractCommand(const ToolArguments& arguments);
