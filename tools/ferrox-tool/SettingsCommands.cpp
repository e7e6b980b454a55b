#include "SettingsCommands.h"

#include "Settings.h"
#include "ToolContext.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

int initSettingsCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 1) {
        printError(QStringLiteral("usage: ferrox-tool init-settings GAME_DIR [--mod DIR]"));
        return 2;
    }
    const QString gameDirectory = QFileInfo(arguments.positional[0]).absoluteFilePath();
    // The mod folder is where Ferrox looks first and where it writes.
    const QString modDirectory =
        arguments.hasOption(QStringLiteral("mod"))
            ? QFileInfo(arguments.option(QStringLiteral("mod"))).absoluteFilePath()
            : QString();

    // The program's user directory hangs on its executable's folder, which
    // is this tool's folder too.
    QDir::setCurrent(QCoreApplication::applicationDirPath());
    Settings settings;
    if (QFile::exists(settings.filePath())) {
        std::printf("Keeping the existing %s\n", settings.filePath().toLocal8Bit().constData());
        return 0;
    }
    if (!settings.validateGavrelPath(gameDirectory)) {
        printError(QStringLiteral("Not a Gavrel installation (no Gavrel.exe): ") + gameDirectory);
        return 1;
    }
    QDir().mkpath(QFileInfo(settings.filePath()).absolutePath());
    settings.writeDefaults();
    settings.setGavrelPath(gameDirectory);
    if (!modDirectory.isEmpty())
        settings.modPath = modDirectory;
    settings.save();
    std::printf("Wrote %s for %s\n", settings.filePath().toLocal8Bit().constData(),
                gameDirectory.toLocal8Bit().constData());
    return QFile::exists(settings.filePath()) ? 0 : 1;
}
