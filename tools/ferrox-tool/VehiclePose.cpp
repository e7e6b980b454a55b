#include "VehiclePose.h"

#include "TankLoader.h"
#include "ToolContext.h"
#include "TurretGunChooser.h"

#include <QFileInfo>
#include <QStringList>

namespace {

bool fail(const QString& message)
{
    printError(message);
    return false;
}

// A turret or gun is named by its display name or its tag.
template <typename Record>
const Record* findNamed(const QVector<Record>& records, const QString& key)
{
    for (const Record& record : records)
        if (record.name == key || record.tag == key)
            return &record;
    return nullptr;
}

QString turretChoices(const TurretGunChooser& chooser)
{
    QStringList lines;
    for (const Turret& turret : chooser.turrets) {
        QStringList guns;
        for (const Gun& gun : turret.guns)
            guns.append(gun.name);
        lines.append(QStringLiteral("  %1: %2").arg(turret.name, guns.join(QStringLiteral(", "))));
    }
    return QStringLiteral("\nturrets and their guns:\n") + lines.join(QLatin1Char('\n'));
}

// The turret asked for (or the current one) with the gun asked for (or its
// first); a gun alone may be found on another turret, which then comes too.
bool findFitting(const TurretGunChooser& chooser, const VehiclePose& request, const Turret** turret,
                 const Gun** gun)
{
    *turret = request.turret.isEmpty() ? chooser.currentTurret()
                                       : findNamed(chooser.turrets, request.turret);
    if (!*turret)
        return fail(QStringLiteral("No turret named: ") + request.turret + turretChoices(chooser));
    if (request.gun.isEmpty()) {
        *gun = &(*turret)->guns.first();
        return true;
    }
    *gun = findNamed((*turret)->guns, request.gun);
    for (int i = 0; !*gun && request.turret.isEmpty() && i < chooser.turrets.size(); ++i) {
        *turret = &chooser.turrets[i];
        *gun = findNamed((*turret)->guns, request.gun);
    }
    if (!*gun)
        return fail(QStringLiteral("No gun named: ") + request.gun + turretChoices(chooser));
    return true;
}

} // namespace

bool readVehiclePose(const ToolArguments& arguments, VehiclePose* pose)
{
    pose->turret = arguments.option(QStringLiteral("turret"));
    pose->gun = arguments.option(QStringLiteral("gun"));
    return readState(arguments.option(QStringLiteral("state")), &pose->state) &&
           readNumberOption(arguments, "yaw", "degrees", &pose->yaw) &&
           readNumberOption(arguments, "turret-yaw", "degrees", &pose->turretYaw) &&
           readNumberOption(arguments, "gun-pitch", "degrees", &pose->gunPitch);
}

bool readState(const QString& text, int* state)
{
    if (text.isEmpty() || text == QLatin1String("intact"))
        *state = Intact;
    else if (text == QLatin1String("destroyed"))
        *state = Destroyed;
    else if (text == QLatin1String("collision"))
        *state = Collision;
    else
        return fail(QStringLiteral("--state is intact, destroyed or collision, not: ") + text);
    return true;
}

bool fitTurretAndGun(TankLoader& loader, const VehiclePose& request)
{
    if (request.turret.isEmpty() && request.gun.isEmpty())
        return true;
    const Turret* turret = nullptr;
    const Gun* gun = nullptr;
    if (!findFitting(*loader.chooser, request, &turret, &gun))
        return false;
    // Copies: a failed part empties the chooser's list.
    const QString turretName = turret->name;
    const QString gunName = gun->name;
    loader.loadTurretGun(turretName, gunName);
    if (!loader.loaded)
        return fail(QStringLiteral("Ferrox cannot fit ") + turretName + QStringLiteral(" with ") +
                    gunName);
    return true;
}

void placeVehicle(TankLoader& loader, const VehiclePose& pose)
{
    loader.damageMode = pose.state;
    loader.setTankRotation(pose.yaw);
    loader.setTurretRotation(pose.turretYaw);
    loader.setGunRotation(pose.gunPitch);
}

// Its folder resolved, and the file's own link followed if it is one.
QString resolvedPath(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists())
        return info.canonicalFilePath();
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    return folder.isEmpty() ? QString() : folder + QLatin1Char('/') + info.fileName();
}

bool insideFolder(const QString& path, const QString& folder)
{
    const QString root = QFileInfo(folder).canonicalFilePath();
    return !root.isEmpty() && (path == root || path.startsWith(root + QLatin1Char('/')));
}
