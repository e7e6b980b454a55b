#include "GeometryCommands.h"

int checkCommand(const ToolArguments&)
{
    return 2;
}
