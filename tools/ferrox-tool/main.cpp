// ferrox-tool: the game readers of Ferrox on the command line, for modders
// and for tests.

#include "ArchiveCommands.h"
#include "ArmorCommand.h"
#include "CamoCommands.h"
#include "GameTextCommands.h"
#include "GeometryCommands.h"
#include "GltfCommand.h"
#include "ModToolCommands.h"
#include "RenderCommand.h"
#include "SettingsCommands.h"
#include "TankCommand.h"
#include "ToolContext.h"
#include "WeakSpotsCommand.h"
#include "XmlCommands.h"

#include "Constants.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <algorithm>
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
    {"gltf",
     "gltf GAME_DIR NAME --out FILE.glb|FILE.gltf [--state intact|destroyed|collision]\n"
     "     [--turret NAME] [--gun NAME] [--yaw DEG] [--turret-yaw DEG] [--gun-pitch DEG]\n"
     "     [--camo SEASON:ROW] [--mod DIR]\n"
     "                                the vehicle as glTF 2.0: its parts as a node tree,\n"
     "                                its materials as PBR, its armour in the collision\n"
     "                                state (needs OpenGL)",
     gltfCommand},
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
     "      [--norm DEG] [--shell NAME] [--pen MM] [--distance M] [--turret NAME]\n"
     "      [--gun NAME] [--yaw DEG] [--turret-yaw DEG] [--gun-pitch DEG] [--json]\n"
     "                                one shell through the vehicle's collision models, in\n"
     "                                the program's mirrored space, reported plate by plate\n"
     "                                (default 88 mm AP, 2 degrees; needs OpenGL); --shell\n"
     "                                fires one of the fitted gun's shells at --distance\n"
     "                                (default 100 m), --pen gives a penetration in mm\n"
     "armor GAME_DIR NAME --table     the armour tables: part, material, thickness, spaced,\n"
     "                                colour",
     armorCommand},
    {"weakspots",
     "weakspots GAME_DIR NAME (--shell NAME | --pen MM [--calibre MM] [--type T])\n"
     "      [--distance M] --out FILE [--size WxH] [--camera FILE] [--yaw DEG]\n"
     "      [--turret-yaw DEG] [--gun-pitch DEG] [--json]\n"
     "                                the chance to penetrate along each pixel's view ray\n"
     "                                as a picture (red 0, yellow, green 1; default\n"
     "                                1024x768, the viewport's start camera); --json: the\n"
     "                                silhouette's share at each verdict (needs OpenGL)",
     weakSpotsCommand},
};

// Commands that need an OpenGL context, and so a GUI application.
bool needsGui(const QString& name)
{
    static const QStringList names = {QStringLiteral("tank"),    QStringLiteral("render"),
                                      QStringLiteral("bake"),    QStringLiteral("obj"),
                                      QStringLiteral("gltf"),    QStringLiteral("uv"),
                                      QStringLiteral("extract"), QStringLiteral("armor"),
                                      QStringLiteral("weakspots")};
    return names.contains(name);
}

void printUsage(std::FILE* stream)
{
    std::fprintf(stream, "usage: ferrox-tool COMMAND ARGUMENTS [--resources FILE]\n"
                         "       ferrox-tool help [COMMAND] | --help | --version\n\ncommands:\n");
    for (const Command& command : commands)
        std::fprintf(stream, "  %s\n", command.usage);
}

const Command* findCommand(const QString& name)
{
    for (const Command& command : commands)
        if (name == QLatin1String(command.name))
            return &command;
    return nullptr;
}

void printCommandUsage(const Command& command, std::FILE* stream)
{
    std::fprintf(stream, "usage: ferrox-tool %s\n", command.usage);
}

bool asksForHelp(const QString& argument)
{
    return argument == QLatin1String("--help") || argument == QLatin1String("-h");
}

// help, --help, help COMMAND, --version: what people ask any command-line
// program first. Answered on standard output with exit code 0; -1 when the
// arguments ask something else.
int answerQuestion(const QStringList& arguments)
{
    const QString& first = arguments.first();
    if (first == QLatin1String("--version")) {
        std::printf("ferrox-tool %s\n", Ferrox::ApplicationVersion);
        return 0;
    }
    if (asksForHelp(first) || (first == QLatin1String("help") && arguments.size() == 1)) {
        printUsage(stdout);
        return 0;
    }
    if (first != QLatin1String("help"))
        return -1;
    if (const Command* command = findCommand(arguments[1])) {
        printCommandUsage(*command, stdout);
        return 0;
    }
    printError(QStringLiteral("unknown command: ") + arguments[1]);
    printUsage(stderr);
    return 2;
}
} // namespace

int main(int argc, char** argv)
{
    // A question about a command needs no window system.
    const bool question = std::any_of(argv + 1, argv + argc, [](const char* argument) {
        return asksForHelp(QString::fromLocal8Bit(argument));
    });
    const bool gui = argc > 1 && !question && needsGui(QString::fromLocal8Bit(argv[1]));
    std::unique_ptr<QCoreApplication> application(gui ? new QGuiApplication(argc, argv)
                                                      : new QCoreApplication(argc, argv));
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        printUsage(stderr);
        return 2;
    }
    const int answered = answerQuestion(arguments);
    if (answered >= 0)
        return answered;

    const QString name = arguments.takeFirst();
    const Command* command = findCommand(name);
    if (!command) {
        printError(QStringLiteral("unknown command: ") + name);
        printUsage(stderr);
        return 2;
    }
    if (std::any_of(arguments.begin(), arguments.end(), asksForHelp)) {
        printCommandUsage(*command, stdout);
        return 0;
    }
    QString error;
    const ToolArguments parsed = ToolArguments::parse(arguments, &error);
    if (!error.isEmpty()) {
        printError(error);
        printCommandUsage(*command, stderr);
        return 2;
    }
    return command->run(parsed);
}
