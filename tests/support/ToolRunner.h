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
// Several runs at once, each as runTool runs it; the results in order.
QList<ToolResult> runTools(const QList<QStringList>& runs);

// The sample installation the tool commands run on.
inline const QString SampleGame = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
// The hostile installation: a sound vehicle and one broken vehicle per case.
inline const QString HostileGame = QStringLiteral(FERROX_SAMPLE_HOSTILE_DIR);
// The options that make the tool read the hostile installation's own
// archive and nation lists.
inline QStringList hostileLists()
{
    return {QStringLiteral("--resources"), HostileGame + QStringLiteral("/ferrox-resources.cfg"),
            QStringLiteral("--tank-list"), HostileGame + QStringLiteral("/ferrox-tank_list.cfg")};
}

// The tool found no OpenGL 3.2 core context to draw with.
inline bool noOpenGl(const ToolResult& result)
{
    return result.err.contains("No OpenGL");
}
