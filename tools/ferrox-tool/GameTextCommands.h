#pragma once

struct ToolArguments;

// ferrox-tool translate GAME_DIR KEY
int translateCommand(const ToolArguments& arguments);
// ferrox-tool tanks GAME_DIR [--nation N] [--category C] [--tier T] [--filter TEXT]
int tanksCommand(const ToolArguments& arguments);
