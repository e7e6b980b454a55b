#include "ToolRunner.h"

#include <QProcess>

#include <memory>
#include <vector>

namespace {

ToolResult finished(QProcess& process)
{
    process.waitForFinished(60000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

ToolResult runTool(const QStringList& arguments, const QString& workingDirectory)
{
    QProcess process;
    if (!workingDirectory.isEmpty())
        process.setWorkingDirectory(workingDirectory);
    process.start(QStringLiteral(FERROX_BIN_DIR "/ferrox-tool"), arguments);
    return finished(process);
}

QList<ToolResult> runTools(const QList<QStringList>& runs)
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (const QStringList& arguments : runs) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(QStringLiteral(FERROX_BIN_DIR "/ferrox-tool"), arguments);
    }
    QList<ToolResult> results;
    for (const auto& process : processes)
        results.append(finished(*process));
    return results;
}
