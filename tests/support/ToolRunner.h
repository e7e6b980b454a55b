#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// ferrox-tool run as a separate process, as a modder runs it.
struct ToolResult
{
    int exitCode = -1; // -1 when the tool crashed or did not finish
    QByteArray out;
    QByteArray err;
};

ToolResult runTool(const QStringList& arguments, const QString& workingDirectory = QString());
