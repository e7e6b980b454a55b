#include "GameTextCommands.h"

#include "ToolContext.h"

int translateCommand(const ToolArguments&)
{
    printError(QStringLiteral("translate: not built yet"));
    return 2;
}

int tanksCommand(const ToolArguments&)
{
    printError(QStringLiteral("tanks: not built yet"));
    return 2;
}
