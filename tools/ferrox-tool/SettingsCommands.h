#pragma once

struct ToolArguments;

// ferrox-tool init-settings GAME_DIR: writes a first settings.cfg for the
// program beside this tool, pointing at GAME_DIR, unless one exists.
int initSettingsCommand(const ToolArguments& arguments);
