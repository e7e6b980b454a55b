// ferrox-tool: the game readers of Ferrox on the command line, for modders
// and for tests.

#include "ArchiveCommands.h"
#include "ArmorCommand.h"
#include "CamoCommands.h"
#include "GameTextCommands.h"
#include "GeometryCommands.h"
#include "ModToolCommands.h"
#include "RenderCommand.h"
#include "SettingsCommands.h"
#include "TankCommand.h"
#include "ToolContext.h"
#include "XmlCommands.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <cstdio>
#include <memory>

namespace {
struct Command
{
    const char* name;
    const char* usage;
    int (*run)(const ToolArguments&);
};

const Command commands[] = {
    {"ls", "ls GAME_DIR [SUBSTRING]       members of the archives and loose res files",
     listCommand},
    {"cat", "cat GAME_DIR NAME [--mod DIR]  the bytes Ferrox reads for NAME", catCommand},
    {"init-settings",
     "init-settings GAME_DIR [--mod DIR]  a first settings.cfg for the program beside "
     "this tool, unless one exists",
     initSettingsCommand},
    {"xml", "xml FILE_OR_NAME [GAME_DIR]   the document as Ferrox reads it", xmlCommand},
    {"translate", "translate GAME_DIR KEY       the display text for a catalogue key",
     translateCommand},
    {"tanks",
     "tanks GAME_DIR [--nation N] [--category C] [--tier T] [--filter TEXT]\n"
     "      [--tank-list FILE] [--resources FILE]\n"
     "                                the vehicle table, tab-separated",
     tanksCommand},
    {"primitives",
     "primitives FILE_OR_NAME [GAME_DIR] [--vertices N]\n"
     "                                the chunks of a .primitives file; with --vertices,\n"
     "                                the first N vertices of each vertex chunk as Ferrox\n"
     "                                holds them (mirrored)",
     primitivesCommand},
    {"dds",
     "dds FILE_OR_NAME [GAME_DIR] [--png OUT]\n"
     "                                format, size and levels; the base level as PNG",
     ddsCommand},
    {"check",
     "check GAME_DIR [--mod DIR]    reads every XML, visual, primitives and DDS file;\n"
     "                                lists the ones that fail (exit code 1)",
     checkCommand},
    {"tank",
     "tank GAME_DIR NAME [--mod DIR] [--json] [--tank-list FILE]\n"
     "                                the vehicle Ferrox assembles for a display name:\n"
     "                                file, parts, turrets and guns, textures (needs OpenGL)",
     tankCommand},
    {"render",
     "render GAME_DIR NAME --out FILE [--size WxH] [--state intact|destroyed|collision]\n"
     "       [--turret NAME] [--gun NAME] [--yaw DEG] [--turret-yaw DEG] [--gun-pitch DEG]\n"
     "       [--camera FILE.Camera] [--no-garage] [--transparent] [--mod DIR]\n"
     "       [--camo SEASON:ROW]\n"
     "                                a picture of the vehicle as the viewport draws it\n"
     "                                (default 1024x768, the viewport's start camera;\n"
     "                                needs OpenGL)",
     renderCommand},
    {"camo",
     "camo GAME_DIR [NATION]         the camouflage catalogues: nation, season, pattern,\n"
     "                                texture, colours, tilings",
     camoCommand},
    {"bake",
     "bake GAME_DIR NAME --mod DIR [--camo SEASON:ROW] [--overwrite]\n"
     "                                the camouflage bake of the vehicle into DIR, as\n"
     "                                \"Bake and Export\" (needs OpenGL)",
     bakeCommand},
    {"obj",
     "obj GAME_DIR NAME --out DIR [--state intact|destroyed|collision] [--mod DIR]\n"
     "                                the OBJ files of the vehicle's parts below DIR\n"
     "                                (needs OpenGL)",
     objCommand},
    {"uv",
     "uv GAME_DIR NAME --out DIR [--format png|tiff|svg] [--scale 1-4] [--line-width W]\n"
     "                                the UV template of every texture of the vehicle\n"
     "                                (needs OpenGL)",
     uvCommand},
    {"extract",
     "extract GAME_DIR NAME --mod DIR [--overwrite]\n"
     "                                the vehicle's textures out of the archives into\n"
     "                                the mod folder; existing files stay unless\n"
     "                                --overwrite (needs OpenGL)",
     extractCommand},
    {"armor",
     "armor GAME_DIR NAME --from X,Y,Z --to X,Y,Z [--calibre MM] [--type AP|APCR|HE|HEAT]\n"
     "      [--norm DEG] [--turret NAME] [--gun NAME] [--yaw DEG] [--turret-yaw DEG]\n"
     "      [--gun-pitch DEG] [--json]\n"
     "                                one shell through the vehicle's collision models, in\n"
     "                                the program's mirrored space, reported plate by plate\n"
     "                                (default 88 mm AP, 2 degrees; needs OpenGL)\n"
     "armor GAME_DIR NAME --table     the armour tables: part, material, thickness, spaced,\n"
     "                                colour",
     armorCommand},
};

// Commands that need an OpenGL context, and so a GUI application.
bool needsGui(const QString& name)
{
    static const QStringList names = {QStringLiteral("tank"), QStringLiteral("render"),
                                      QStringLiteral("bake"), QStringLiteral("obj"),
                                      QStringLiteral("uv"),   QStringLiteral("extract"),
                                      QStringLiteral("armor")};
    return names.contains(name);
}

void printUsage()
{
    std::fprintf(stderr, "usage: ferrox-tool COMMAND ARGUMENTS [--resources FILE]\n\ncommands:\n");
    for (const Command& command : commands)
        std::fprintf(stderr, "  %s\n", command.usage);
}
} // namespace

int main(int argc, char** argv)
{
    const bool gui = argc > 1 && needsGui(QString::fromLocal8Bit(argv[1]));
    std::unique_ptr<QCoreApplication> application(gui ? new QGuiApplication(argc, argv)
                                                      : new QCoreApplication(argc, argv));
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        printUsage();
        return 2;
    }

    const QString name = arguments.takeFirst();
    for (const Command& command : commands) {
        if (name != QLatin1String(command.name))
            continue;
        QString error;
        const ToolArguments parsed = ToolArguments::parse(arguments, &error);
        if (!error.isEmpty()) {
            printError(error);
            return 2;
        }
        return command.run(parsed);
    }
    printError(QStringLiteral("unknown command: ") + name);
    printUsage();
    return 2;
}
