#include "GeometryCommands.h"

int primitivesCommand(const ToolArguments&)
{
    return 2;
}
