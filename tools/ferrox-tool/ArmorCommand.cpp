#include "ArmorCommand.h"

#include "ArmorCollisionState.h"
#include "ArmorReport.h"
#include "CollisionArmor.h"
#include "OffscreenVehicle.h"
#include "Physics.h"
#include "TankLoader.h"
#include "ToolContext.h"
#include "TurretGunChooser.h"

#include <QColor>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <cstdio>

namespace {

const QStringList shellTypes = {QStringLiteral("AP"), QStringLiteral("APCR"), QStringLiteral("HE"),
                                QStringLiteral("HEAT")};

struct Shot
{
    Vector3 from{0, 0, 0};
    Vector3 to{0, 0, 0};
    ShellParamaters shell;
    float yaw = 0;
    float turretYaw = 0;
    float gunPitch = 0;
};

bool fail(const QString& message)
{
    printError(message);
    return false;
}

bool readPoint(const ToolArguments& arguments, const char* name, Vector3* point)
{
    const QString text = arguments.option(QLatin1String(name));
    const QStringList parts = text.split(QLatin1Char(','));
    bool ok = parts.size() == 3;
    for (int i = 0; ok && i < 3; ++i) {
        (*point)[i] = parts[i].trimmed().toFloat(&ok);
        ok = ok && std::isfinite((*point)[i]);
    }
    if (!ok)
        return fail(QStringLiteral("--") + QLatin1String(name) + QStringLiteral(" wants X,Y,Z: ") +
                    text);
    return true;
}

// The fitted gun's shell asked for by --shell (element or translated name):
// its type, calibre and normalisation, and its penetration at --distance,
// each unless given on its own.
bool applyGunShell(const ToolArguments& arguments, const TurretGunChooser& chooser,
                   ShellParamaters* shell)
{
    const QString key = arguments.option(QStringLiteral("shell"));
    if (key.isEmpty())
        return true;
    const Turret* turret = chooser.currentTurret();
    const Gun* gun = turret ? turret->gun(chooser.currentGunName) : chooser.currentGun();
    const Shell* found = nullptr;
    for (const Shell& candidate : gun ? gun->shells : QVector<Shell>())
        if (candidate.tag == key || candidate.name == key)
            found = &candidate;
    if (!found)
        return fail(QStringLiteral("The fitted gun has no shell named: ") + key);
    float distance = 100;
    if (!readNumberOption(arguments, "distance", "metres", &distance))
        return false;
    if (!arguments.hasOption(QStringLiteral("type")))
        shell->type = found->shellType();
    if (!arguments.hasOption(QStringLiteral("calibre")))
        shell->calibre = found->calibre;
    if (!arguments.hasOption(QStringLiteral("norm")))
        shell->normalization = found->normalization();
    if (!arguments.hasOption(QStringLiteral("pen")))
        shell->penetration = found->penetrationAt(distance);
    shell->lossPerDecimetre = found->lossFactorByDistance;
    return true;
}

bool readShot(const ToolArguments& arguments, Shot* shot)
{
    return readPoint(arguments, "from", &shot->from) && readPoint(arguments, "to", &shot->to) &&
           readNumberOption(arguments, "yaw", "a number", &shot->yaw) &&
           readNumberOption(arguments, "turret-yaw", "a number", &shot->turretYaw) &&
           readNumberOption(arguments, "gun-pitch", "a number", &shot->gunPitch);
}

template <typename Record>
const Record* findNamed(const QVector<Record>& records, const QString& key)
{
    for (const Record& record : records)
        if (record.name == key || record.tag == key)
            return &record;
    return nullptr;
}

// The turret asked for (or the present one) with the gun asked for (or
// its first).
bool fitTurretAndGun(TankLoader& loader, const ToolArguments& arguments)
{
    const QString turretKey = arguments.option(QStringLiteral("turret"));
    const QString gunKey = arguments.option(QStringLiteral("gun"));
    if (turretKey.isEmpty() && gunKey.isEmpty())
        return true;
    const Turret* turret = turretKey.isEmpty() ? loader.chooser->currentTurret()
                                               : findNamed(loader.chooser->turrets, turretKey);
    if (!turret)
        return fail(QStringLiteral("No turret named: ") + turretKey);
    const Gun* gun = gunKey.isEmpty() ? &turret->guns.first() : findNamed(turret->guns, gunKey);
    if (!gun)
        return fail(QStringLiteral("No gun named: ") + gunKey);
    const QString turretName = turret->name;
    const QString gunName = gun->name;
    loader.loadTurretGun(turretName, gunName);
    return loader.loaded || fail(QStringLiteral("Ferrox cannot fit ") + turretName +
                                 QStringLiteral(" with ") + gunName);
}

QJsonArray jsonPoint(const Vector3& point)
{
    return {point[0], point[1], point[2]};
}

QString verdictName(int verdict)
{
    switch (verdict) {
    case Penetrated:
        return QStringLiteral("Penetrated");
    case NotPenetrated:
        return QStringLiteral("Not penetrated");
    case RicochetVerdict:
        return QStringLiteral("Ricochet");
    default:
        return QString();
    }
}

QByteArray resultsJson(const RayResultsList& results)
{
    QJsonArray list;
    for (const RayResult& result : results) {
        QJsonObject plate{{"name", result.name},
                          {"armor", result.armor},
                          {"effective", result.effective},
                          {"angle", result.angle},
                          {"normalizedAngle", result.normalizedAngle},
                          {"ricochet", result.ricochet},
                          {"freeTravel", result.freeTravel},
                          {"spaced", result.spaced},
                          {"category", result.category},
                          {"hitPoint", jsonPoint(result.hitPoint)}};
        if (result.hasPenetration) {
            plate.insert("penetrationBefore", result.penetrationBefore);
            plate.insert("penetrationAfter", result.penetrationAfter);
            plate.insert("verdict", verdictName(result.verdict));
            plate.insert("chance", result.chance);
        }
        list.append(plate);
    }
    return QJsonDocument(list).toJson(QJsonDocument::Indented);
}

QString colourName(const Colour& colour)
{
    return QColor::fromRgbF(colour[0], colour[1], colour[2]).name();
}

QString armorTable(const CollisionArmor& armor)
{
    QString text;
    auto add = [&](const char* part, const ArmorValue& value) {
        const bool surveying = value.name.contains(QLatin1String("surveyingDevice"));
        text += QStringLiteral("%1\t%2\t%3\t%4\t%5\n")
                    .arg(QLatin1String(part), value.name, QString::number(value.value, 'g', 6),
                         value.spaced ? QStringLiteral("spaced") : QStringLiteral("regular"),
                         colourName(armor.colourFor(value.value, value.spaced, surveying)));
    };
    for (const ArmorValue* value : armor.chassisArmor)
        add("chassis", *value);
    for (const ArmorValue* value : armor.hullArmor)
        add("hull", *value);
    for (const OwnedArmorValue* value : armor.turretArmor)
        add("turret", *value);
    for (const OwnedArmorValue* value : armor.gunArmor)
        add("gun", *value);
    return text;
}

void print(const QByteArray& text)
{
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
}

const char* usage = "usage: ferrox-tool armor GAME_DIR NAME --from X,Y,Z --to X,Y,Z "
                    "[--shell NAME] [--pen MM] [--distance M] "
                    "[--calibre MM] [--type AP|APCR|HE|HEAT] [--norm DEG] [--turret NAME] "
                    "[--gun NAME] [--yaw DEG] [--turret-yaw DEG] [--gun-pitch DEG] [--json]\n"
                    "       ferrox-tool armor GAME_DIR NAME --table";

} // namespace

int armorCommand(const ToolArguments& arguments)
{
    const bool table = arguments.hasOption(QStringLiteral("table"));
    const bool shot =
        arguments.hasOption(QStringLiteral("from")) || arguments.hasOption(QStringLiteral("to"));
    if (arguments.positional.size() != 2 || table == shot) {
        printError(QLatin1String(usage));
        return 2;
    }
    Shot request;
    if (shot && !(readShot(arguments, &request) && readShellOptions(arguments, &request.shell)))
        return 1;
    Physics physics;
    OffscreenVehicle vehicle;
    vehicle.installArmor = true;
    if (!vehicle.load(arguments))
        return 1;
    TankLoader& loader = vehicle.loader();
    if (!fitTurretAndGun(loader, arguments))
        return 1;
    if (table) {
        print(armorTable(*CollisionArmor::instance()).toUtf8());
        return 0;
    }
    if (shot && !applyGunShell(arguments, *loader.chooser, &request.shell))
        return 1;
    loader.setTankRotation(request.yaw);
    loader.setTurretRotation(request.turretYaw);
    loader.setGunRotation(request.gunPitch);
    loader.placeCollisionModels();
    physics.setShellParamaters(request.shell);
    physics.fireRay(request.from, request.to);
    print(arguments.hasOption(QStringLiteral("json"))
              ? resultsJson(physics.results)
              : ArmorReport::plainText(physics.results).toUtf8());
    return 0;
}

bool readShellOptions(const ToolArguments& arguments, ShellParamaters* shell)
{
    if (arguments.hasOption(QStringLiteral("type"))) {
        shell->type = int(shellTypes.indexOf(arguments.option(QStringLiteral("type"))));
        if (shell->type < 0)
            return fail(QStringLiteral("--type is AP, APCR, HE or HEAT, not: ") +
                        arguments.option(QStringLiteral("type")));
    }
    return readNumberOption(arguments, "calibre", "a number", &shell->calibre) &&
           readNumberOption(arguments, "norm", "a number", &shell->normalization) &&
           readNumberOption(arguments, "pen", "millimetres", &shell->penetration);
}

bool chooseGunShell(const ToolArguments& arguments, const TurretGunChooser& chooser,
                    ShellParamaters* shell)
{
    return applyGunShell(arguments, chooser, shell);
}
