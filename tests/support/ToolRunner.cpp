#include "ToolRunner.h"

#include <QProcess>

ToolResult runTool(const QStringList& arguments, const QString& workingDirectory)
{
    QProcess process;
    if (!workingDirectory.isEmpty())
        process.setWorkingDirectory(workingDirectory);
    process.start(QStringLiteral(FERROX_BIN_DIR "/ferrox-tool"), arguments);
    process.waitForFinished(60000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}
