#include "XmlCommands.h"

#include "ToolContext.h"

int xmlCommand(const ToolArguments&)
{
    printError(QStringLiteral("xml: not built yet"));
    return 2;
}
