#include "ToolContext.h"

#include "FileManager.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "Settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace {
bool fatalSeen = false;

// Boxes cannot be shown here: their text goes to standard error.
int answerOnStandardError(const MessageBoxRequest& request)
{
    if (request.icon == QMessageBox::Critical)
        fatalSeen = true;
    printError(request.text);
    return QMessageBox::Ok;
}

QString programResourcesFile()
{
    return QDir(QCoreApplication::applicationDirPath())
        .filePath(QStringLiteral("../data/resources.cfg"));
}
} // namespace

void printError(const QString& message)
{
    std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
}

ToolArguments ToolArguments::parse(const QStringList& arguments, QString* error)
{
    ToolArguments result;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        const bool takesValue =
            argument == QLatin1String("--resources") || argument == QLatin1String("--mod");
        if (takesValue) {
            if (i + 1 >= arguments.size()) {
                *error = argument + QStringLiteral(" needs a value");
                return result;
            }
            const QString value = arguments[++i];
            if (argument == QLatin1String("--resources"))
                result.resourcesFile = value;
            else
                result.modDirectory = value;
        } else if (argument.startsWith(QLatin1String("--"))) {
            result.flags.append(argument);
        } else {
            result.positional.append(argument);
        }
    }
    return result;
}

QString ToolArguments::option(const QString& name) const
{
    const QString prefix = QStringLiteral("--") + name + QLatin1Char('=');
    for (const QString& flag : flags) {
        if (flag.startsWith(prefix))
            return flag.mid(prefix.size());
    }
    return QString();
}

ToolContext::ToolContext(const QString& gameDirectory, const ToolArguments& arguments)
{
    setMessageBoxHandler(answerOnStandardError);

    settings = std::make_unique<Settings>(QString());
    settings->gavrelPath = QFileInfo(gameDirectory).absoluteFilePath();
    settings->modPath = arguments.modDirectory.isEmpty()
                            ? QString()
                            : QFileInfo(arguments.modDirectory).absoluteFilePath();
    settings->validateGavrelPath(settings->gavrelPath);

    fileManager = std::make_unique<FileManager>();
    fileManager->resourcesConfigPath = arguments.resourcesFile.isEmpty()
                                           ? programResourcesFile()
                                           : QFileInfo(arguments.resourcesFile).absoluteFilePath();

    // Ferrox looks a bare name up relative to its own folder first; so does
    // the tool, whatever folder it was started from.
    QDir::setCurrent(QCoreApplication::applicationDirPath());
    fileManager->loadZipFiles();
}

ToolContext::~ToolContext() = default;

bool ToolContext::gameDirectoryValid() const
{
    return settings->gavrelPathValid;
}

QString ToolContext::gameDirectory() const
{
    return settings->gavrelPath;
}

bool ToolContext::fatalErrorSeen()
{
    return fatalSeen;
}
