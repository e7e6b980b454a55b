#include "GltfCommand.h"

#include "CamoCommands.h"
#include "OffscreenVehicle.h"
#include "Physics.h"
#include "TankLoader.h"
#include "ToolContext.h"
#include "VehicleGltf.h"
#include "VehiclePose.h"

#include <QFileInfo>

namespace {

bool fail(const QString& message)
{
    printError(message);
    return false;
}

// FILE made absolute (loading the game moves the working directory) and
// checked before anything is loaded; the game folder is never written to.
bool readOutFile(const QString& text, const QString& gameDirectory, QString* out)
{
    if (text.isEmpty())
        return fail(QStringLiteral("gltf needs --out FILE.glb or --out FILE.gltf"));
    const QString suffix = QFileInfo(text).suffix().toLower();
    if (suffix != QLatin1String("glb") && suffix != QLatin1String("gltf"))
        return fail(QStringLiteral("--out ends in .glb or .gltf: ") + text);
    *out = QFileInfo(text).absoluteFilePath();
    const QString resolved = resolvedPath(*out);
    if (resolved.isEmpty())
        return fail(QStringLiteral("No folder to write into: ") + QFileInfo(text).absolutePath());
    if (insideFolder(resolved, gameDirectory))
        return fail(QStringLiteral("Ferrox never writes into the game folder: ") + text);
    if (QFileInfo(resolved).isDir())
        return fail(QStringLiteral("--out is a folder: ") + text);
    return true;
}

} // namespace

int gltfCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2) {
        printError(QStringLiteral(
            "usage: ferrox-tool gltf GAME_DIR NAME --out FILE.glb|FILE.gltf "
            "[--state intact|destroyed|collision] [--turret NAME] [--gun NAME] [--yaw DEG] "
            "[--turret-yaw DEG] [--gun-pitch DEG] [--camo SEASON:ROW] [--mod DIR]"));
        return 2;
    }
    QString out;
    VehiclePose pose;
    if (!readOutFile(arguments.option(QStringLiteral("out")), arguments.positional[0], &out) ||
        !readVehiclePose(arguments, &pose))
        return 1;
    // The collision state needs the armour inspection and its ray world.
    Physics physics;
    OffscreenVehicle vehicle;
    vehicle.withCamouflage = arguments.hasOption(QStringLiteral("camo"));
    vehicle.installArmor = pose.state == Collision;
    if (!vehicle.load(arguments))
        return 1;
    TankLoader& loader = vehicle.loader();
    if (!fitTurretAndGun(loader, pose))
        return 1;
    if (vehicle.withCamouflage &&
        !applyCamoChoice(*vehicle.camouflage(), arguments.option(QStringLiteral("camo"))))
        return 1;
    placeVehicle(loader, pose);
    QString error;
    if (!exportVehicleGltf(loader, out, &error)) {
        printError(QStringLiteral("Cannot export the glTF file: ") + error);
        return 1;
    }
    return 0;
}
