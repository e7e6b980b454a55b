#include "GeometryCommands.h"

int ddsCommand(const ToolArguments&)
{
    return 2;
}
