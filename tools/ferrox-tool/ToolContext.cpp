#include "ToolContext.h"

#include "FileManager.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "ReadFailure.h"
#include "Settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cmath>
#include <cstdio>
#include <memory>

namespace {
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

void reportToStandardError()
{
    Log::setFallbackSink([](const QString& message, int level) {
        if (level >= Log::Warning)
            printError(
                (level == Log::Error ? QStringLiteral("error: ") : QStringLiteral("warning: ")) +
                message);
    });
    setMessageBoxHandler([](const MessageBoxRequest& request) {
        printError(request.text);
        return int(QMessageBox::Ok);
    });
}

const QStringList ToolArguments::valueOptions = {
    // clang-format off
    QStringLiteral("resources"),
    QStringLiteral("mod"),
    QStringLiteral("nation"),
    QStringLiteral("category"),
    QStringLiteral("tier"),
    QStringLiteral("filter"),
    QStringLiteral("png"),
    QStringLiteral("tank-list"),
    QStringLiteral("out"),
    QStringLiteral("size"),
    QStringLiteral("state"),
    QStringLiteral("turret"),
    QStringLiteral("gun"),
    QStringLiteral("yaw"),
    QStringLiteral("turret-yaw"),
    QStringLiteral("gun-pitch"),
    QStringLiteral("camera"),
    QStringLiteral("camo"),
    QStringLiteral("format"),
    QStringLiteral("scale"),
    QStringLiteral("line-width"),
    QStringLiteral("from"),
    QStringLiteral("to"),
    QStringLiteral("calibre"),
    QStringLiteral("type"),
    QStringLiteral("norm"),
    QStringLiteral("vertices"),
    QStringLiteral("hide"),
    QStringLiteral("draw"),
    QStringLiteral("ray"),
    QStringLiteral("camo-colours"),
    QStringLiteral("shell"),
    QStringLiteral("pen"),
    QStringLiteral("distance"),
    // clang-format on
};

const QStringList ToolArguments::flagOptions = {
    QStringLiteral("json"), QStringLiteral("no-garage"), QStringLiteral("transparent"),
    QStringLiteral("overwrite"), QStringLiteral("table"), QStringLiteral("grid-texture")};

ToolArguments ToolArguments::parse(const QStringList& arguments, QString* error)
{
    ToolArguments result;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (!argument.startsWith(QLatin1String("--"))) {
            result.positional.append(argument);
            continue;
        }
        const QString name = argument.mid(2);
        if (flagOptions.contains(name)) {
            result.options.insert(name, QString());
            continue;
        }
        if (!valueOptions.contains(name)) {
            *error = QStringLiteral("unknown option: ") + argument;
            return result;
        }
        if (i + 1 >= arguments.size()) {
            *error = argument + QStringLiteral(" needs a value");
            return result;
        }
        result.options.insert(name, arguments[++i]);
    }
    result.resourcesFile = result.option(QStringLiteral("resources"));
    result.modDirectory = result.option(QStringLiteral("mod"));
    return result;
}

ToolContext::ToolContext(const QString& gameDirectory, const ToolArguments& arguments)
{
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

bool ToolContext::requireGameDirectory() const
{
    if (gameDirectoryValid())
        return true;
    printError(QStringLiteral("Not a Gavrel installation (no Gavrel.exe): ") + gameDirectory());
    return false;
}

QString ToolContext::gameDirectory() const
{
    return settings->gavrelPath;
}

bool readFileOrResource(const QString& name, const QString& gameDirectory,
                        const ToolArguments& arguments, QByteArray& bytes)
{
    if (QFileInfo(name).isFile()) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            printError(QStringLiteral("Cannot open file: ") + name);
            return false;
        }
        bytes = file.readAll();
        return true;
    }
    if (gameDirectory.isEmpty()) {
        printError(QStringLiteral("No such file, and no GAME_DIR to look it up in: ") + name);
        return false;
    }
    ToolContext context(gameDirectory, arguments);
    if (!context.requireGameDirectory())
        return false;
    ReadFailure failure;
    std::unique_ptr<QIODevice> device(context.files().getFile(name, failure));
    if (!device) {
        printError(
            QStringLiteral("Not found in the mod folder, the game's res folder or any archive: ") +
            name);
        return false;
    }
    // Ferrox would close on a member cut short; its bytes are of no use.
    if (failure.failed()) {
        printError(failure.message());
        return false;
    }
    bytes = device->readAll();
    return true;
}

bool readNumberOption(const ToolArguments& arguments, const char* name, const char* what,
                      float* value)
{
    const QString option = QLatin1String(name);
    if (!arguments.hasOption(option))
        return true;
    bool ok = false;
    const float number = arguments.option(option).toFloat(&ok);
    if (!ok || !std::isfinite(number)) {
        printError(QStringLiteral("--") + option + QStringLiteral(" wants ") + QLatin1String(what) +
                   QStringLiteral(": ") + arguments.option(option));
        return false;
    }
    *value = number;
    return true;
}
