#pragma once

struct ToolArguments;

// ferrox-tool xml FILE_OR_NAME [GAME_DIR]
int xmlCommand(const ToolArguments& arguments);
