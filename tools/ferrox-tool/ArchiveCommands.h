#pragma once

struct ToolArguments;

// ferrox-tool ls GAME_DIR [SUBSTRING]
int listCommand(const ToolArguments& arguments);
// ferrox-tool cat GAME_DIR NAME [--mod MOD_DIR]
int catCommand(const ToolArguments& arguments);
