#include "ModToolCommands.h"

#include "OffscreenVehicle.h"
#include "Physics.h"
#include "Settings.h"
#include "TankInfo.h"
#include "TankLoader.h"
#include "TextureExtractor.h"
#include "TextureLoader.h"
#include "ToolContext.h"
#include "UvMap.h"
#include "UvMapFile.h"

#include <QDir>
#include <QFileInfo>

#include <cmath>
#include <cstdio>

namespace {

int usage(const char* text)
{
    printError(QStringLiteral("usage: ferrox-tool ") + QLatin1String(text));
    return 2;
}

bool fail(const QString& message)
{
    printError(message);
    return false;
}

// The folder as the file system resolves it, for one that may not exist
// yet: its nearest existing ancestor resolved, the rest appended.
QString resolvedFolder(const QString& path)
{
    QFileInfo info(QFileInfo(path).absoluteFilePath());
    QStringList rest;
    while (!info.exists() && !info.isRoot()) {
        rest.prepend(info.fileName());
        info = QFileInfo(info.absolutePath());
    }
    rest.prepend(info.canonicalFilePath());
    return rest.join(QLatin1Char('/'));
}

// DIR made absolute (the game's loading moves the working directory); the
// game folder is never written to, whatever the user asks.
bool readOutputFolder(const ToolArguments& arguments, const char* option, QString* folder)
{
    const QString text = arguments.option(QLatin1String(option));
    if (text.isEmpty())
        return fail(QStringLiteral("needs --") + QLatin1String(option) + QStringLiteral(" DIR"));
    *folder = QFileInfo(text).absoluteFilePath();
    const QString resolved = resolvedFolder(*folder);
    const QString game = QFileInfo(arguments.positional[0]).canonicalFilePath();
    if (!game.isEmpty() && (resolved == game || resolved.startsWith(game + QLatin1Char('/'))))
        return fail(QStringLiteral("Ferrox never writes into the game folder: ") + text);
    if (QFileInfo(resolved).exists() && !QFileInfo(resolved).isDir())
        return fail(QStringLiteral("Not a folder: ") + text);
    return true;
}

bool readState(const QString& text, int* state)
{
    const QStringList states = {QStringLiteral("intact"), QStringLiteral("destroyed"),
                                QStringLiteral("collision")};
    *state = text.isEmpty() ? Intact : int(states.indexOf(text));
    if (*state < 0)
        return fail(QStringLiteral("--state is intact, destroyed or collision, not: ") + text);
    return true;
}

struct UvRequest
{
    QString out;
    UvMapFile::Format format = UvMapFile::Png;
    int scale = 1;
    UvMapStyle style;
};

bool readUvRequest(const ToolArguments& arguments, UvRequest* request)
{
    if (!readOutputFolder(arguments, "out", &request->out))
        return false;
    const QStringList formats = {QStringLiteral("png"), QStringLiteral("tiff"),
                                 QStringLiteral("svg")};
    const QString format = arguments.option(QStringLiteral("format"));
    const int index = format.isEmpty() ? 0 : int(formats.indexOf(format));
    if (index < 0)
        return fail(QStringLiteral("--format is png, tiff or svg, not: ") + format);
    request->format = UvMapFile::Format(index);
    bool ok = true;
    if (arguments.hasOption(QStringLiteral("scale"))) {
        request->scale = arguments.option(QStringLiteral("scale")).toInt(&ok);
        if (!ok || request->scale < 1 || request->scale > 4)
            return fail(QStringLiteral("--scale is 1, 2, 3 or 4, not: ") +
                        arguments.option(QStringLiteral("scale")));
    }
    if (arguments.hasOption(QStringLiteral("line-width"))) {
        const float width = arguments.option(QStringLiteral("line-width")).toFloat(&ok);
        if (!ok || !std::isfinite(width) || width < 0 || width > 4)
            return fail(QStringLiteral("--line-width is 0 to 4, not: ") +
                        arguments.option(QStringLiteral("line-width")));
        request->style.lineWidth = width;
    }
    return true;
}

void printLine(const QString& text)
{
    std::printf("%s\n", text.toUtf8().constData());
}

} // namespace

int objCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2)
        return usage("obj GAME_DIR NAME --out DIR [--state intact|destroyed|collision]");
    QString out;
    int state = Intact;
    if (!readOutputFolder(arguments, "out", &out) ||
        !readState(arguments.option(QStringLiteral("state")), &state))
        return 1;
    // The collision state needs the armour inspection and its ray world.
    Physics physics;
    OffscreenVehicle vehicle;
    vehicle.installArmor = state == Collision;
    if (!vehicle.load(arguments))
        return 1;
    TankLoader& loader = vehicle.loader();
    if (!loader.chassis.value(state)) {
        printError(QStringLiteral("The vehicle has no meshes of that state here: ") +
                   arguments.option(QStringLiteral("state")));
        return 1;
    }
    // The export writes below the mod folder: here the folder asked for.
    Settings::instance()->modPath = out;
    loader.damageMode = state;
    if (!loader.exportAll()) {
        printError(QStringLiteral("Could not write every OBJ file below: ") + out);
        return 1;
    }
    return 0;
}

int uvCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2)
        return usage("uv GAME_DIR NAME --out DIR [--format png|tiff|svg] [--scale 1-4] "
                     "[--line-width W]");
    UvRequest request;
    if (!readUvRequest(arguments, &request))
        return 1;
    OffscreenVehicle vehicle;
    if (!vehicle.load(arguments))
        return 1;
    const UvMap map = UvMap::collect(vehicle.loader());
    int failures = 0;
    for (const QString& texture : map.textures) {
        const QString file =
            QDir(request.out).filePath(UvMapFile::proposedName(texture, request.format));
        const QSize size = TextureLoader::instance()->ddsSize(texture);
        if (!QDir().mkpath(QFileInfo(file).absolutePath()) ||
            !UvMapFile::save(map, texture, size, request.scale, request.format, request.style,
                             file)) {
            printError(QStringLiteral("Failed to generate UV map for texuture.: ") + texture);
            ++failures;
            continue;
        }
        printLine(file);
    }
    return failures ? 1 : 0;
}

int extractCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2)
        return usage("extract GAME_DIR NAME --mod DIR [--overwrite]");
    QString mod;
    if (!readOutputFolder(arguments, "mod", &mod))
        return 1;
    OffscreenVehicle vehicle;
    if (!vehicle.load(arguments))
        return 1;
    TextureExtractor extractor(mod);
    const TextureExtractor::Outcome outcome = extractor.extract(
        vehicle.loader().info->allTextureFiles, !arguments.hasOption(QStringLiteral("overwrite")));
    for (const QString& texture : extractor.written)
        printLine(QStringLiteral("extracted: ") + texture);
    for (const QString& texture : extractor.skipped)
        printLine(QStringLiteral("kept: ") + texture);
    for (const QString& texture : extractor.missing)
        printLine(QStringLiteral("in no archive: ") + texture);
    if (outcome != TextureExtractor::Outcome::Completed) {
        printError(QStringLiteral("Failed to extract textures: ") + arguments.positional[1]);
        return 1;
    }
    return 0;
}
