#include "ArchiveCommands.h"

#include "FileManager.h"
#include "ReadFailure.h"
#include "ToolContext.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QIODevice>

#include <cstdio>
#include <memory>

namespace {
void printLine(const QString& name, const QString& source)
{
    std::printf("%s\t%s\n", name.toLocal8Bit().constData(), source.toLocal8Bit().constData());
}

bool matches(const QString& name, const QString& substring)
{
    return substring.isEmpty() || name.contains(substring, Qt::CaseInsensitive);
}

// Loose files below res/, which shadow the archives; the packages folder
// holds the archives themselves and is left out.
void listLooseFiles(const QString& gameDirectory, const QString& substring)
{
    const QDir resources(gameDirectory + QStringLiteral("/res"));
    QStringList names;
    QDirIterator it(resources.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString name = resources.relativeFilePath(it.next());
        if (!name.startsWith(QLatin1String("packages/")) && matches(name, substring))
            names.append(name);
    }
    names.sort();
    for (const QString& name : names)
        printLine(name, QStringLiteral("res"));
}

void listArchiveMembers(FileManager& files, const QString& substring)
{
    for (int i = 0; i < files.archiveCount(); ++i) {
        const ZipArchive& archive = files.archive(i);
        const QString archiveName = QFileInfo(archive.path()).fileName();
        for (const ZipArchive::Member& member : archive.members()) {
            const QString name = QString::fromLocal8Bit(member.name);
            if (!name.endsWith(QLatin1Char('/')) && matches(name, substring))
                printLine(name, archiveName);
        }
    }
}

} // namespace

int listCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() < 1 || arguments.positional.size() > 2) {
        printError(QStringLiteral("usage: ferrox-tool ls GAME_DIR [SUBSTRING] [--resources FILE]"));
        return 2;
    }
    ToolContext context(arguments.positional[0], arguments);
    if (!context.requireGameDirectory())
        return 1;
    const QString substring = arguments.positional.value(1);
    listLooseFiles(context.gameDirectory(), substring);
    listArchiveMembers(context.files(), substring);
    return 0;
}

int catCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2) {
        printError(QStringLiteral(
            "usage: ferrox-tool cat GAME_DIR NAME [--mod MOD_DIR] [--resources FILE]"));
        return 2;
    }
    ToolContext context(arguments.positional[0], arguments);
    if (!context.requireGameDirectory())
        return 1;

    const QString name = arguments.positional[1];
    ReadFailure failure;
    std::unique_ptr<QIODevice> device(context.files().getFile(name, failure));
    if (!device) {
        printError(QStringLiteral("Not found in the mod folder, the game's res folder or any "
                                  "archive: ") +
                   name);
        return 1;
    }
    const QByteArray content = device->readAll();
    std::fwrite(content.constData(), 1, size_t(content.size()), stdout);
    std::fflush(stdout);
    // What could be read is still printed; Ferrox itself would close.
    if (failure.failed()) {
        printError(failure.message());
        return 1;
    }
    return 0;
}
