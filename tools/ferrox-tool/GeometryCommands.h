#pragma once

struct ToolArguments;

// primitives FILE_OR_NAME [GAME_DIR] [--vertices N]: the chunks of a
// .primitives file, and the first N decoded vertices of each vertex chunk.
int primitivesCommand(const ToolArguments& arguments);
// dds FILE_OR_NAME [GAME_DIR] [--png OUT]: format, size, levels; the base
// level as PNG.
int ddsCommand(const ToolArguments& arguments);
// check GAME_DIR [--mod DIR]: reads every XML, visual, primitives and DDS
// file and lists the ones that fail.
int checkCommand(const ToolArguments& arguments);
