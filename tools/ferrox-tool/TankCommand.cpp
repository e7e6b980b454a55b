#include "TankCommand.h"

#include "MeshGeometry.h"
#include "OffscreenVehicle.h"
#include "TankInfo.h"
#include "TankLoader.h"
#include "TankMesh.h"
#include "ToolContext.h"
#include "TurretGunChooser.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

const char* const PartNames[] = {"chassis", "hull", "turret", "gun"};

void printLine(const QString& text)
{
    std::printf("%s\n", text.toUtf8().constData());
}

QJsonArray numbers(std::initializer_list<float> values)
{
    QJsonArray array;
    for (float value : values)
        array.append(double(value));
    return array;
}

QJsonArray matrixArray(const Matrix& m)
{
    QJsonArray array;
    for (float value : m)
        array.append(double(value));
    return array;
}

int vertexCount(const Mesh& mesh)
{
    int count = 0;
    for (const MeshGeometry* geometry : mesh.geometries)
        count += int(geometry->positions.size());
    return count;
}

QJsonArray partsArray(const TankLoader& loader)
{
    QJsonArray parts;
    for (int state = 0; state < TankLoader::MeshStates; ++state)
        for (int part = 0; part < TankLoader::PartCount; ++part) {
            const TankMesh* mesh = loader.mesh(part, state);
            parts.append(QJsonObject{{"part", PartNames[part]},
                                     {"state", state},
                                     {"model", mesh->path},
                                     {"matrix", matrixArray(mesh->model)},
                                     {"triangles", mesh->visual->triangleCount()},
                                     {"vertices", vertexCount(*mesh)}});
        }
    return parts;
}

QJsonArray shellsArray(const QVector<Shell>& shells)
{
    QJsonArray list;
    for (const Shell& shell : shells)
        list.append(QJsonObject{
            {"tag", shell.tag},
            {"name", shell.name},
            {"kind", shell.kind},
            {"caliber", shell.calibre},
            {"piercingPower", numbers({shell.piercingPower100, shell.piercingPower500})},
            {"speed", shell.speed},
            {"maxDistance", shell.maxDistance},
            {"defaultPortion", shell.defaultPortion},
            {"piercingPowerLossFactorByDistance", shell.lossFactorByDistance}});
    return list;
}

QJsonArray turretsArray(const TurretGunChooser& chooser)
{
    QJsonArray turrets;
    for (const Turret& turret : chooser.turrets) {
        QJsonArray guns;
        for (const Gun& gun : turret.guns)
            guns.append(QJsonObject{{"name", gun.name},
                                    {"tag", gun.tag},
                                    {"pitch", numbers({gun.pitchMin, gun.pitchMax})},
                                    {"yaw", numbers({gun.yawMin, gun.yawMax})},
                                    {"shells", shellsArray(gun.shells)}});
        turrets.append(QJsonObject{{"name", turret.name},
                                   {"tag", turret.tag},
                                   {"yaw", numbers({turret.yawMin, turret.yawMax})},
                                   {"guns", guns}});
    }
    return turrets;
}

QJsonObject texturesObject(const TankInfo& info)
{
    return QJsonObject{{"diffuse", QJsonArray::fromStringList(info.diffuseTextures)},
                       {"normal", QJsonArray::fromStringList(info.normalTextures)},
                       {"specular", QJsonArray::fromStringList(info.specularTextures)},
                       {"metallicGloss", QJsonArray::fromStringList(info.metallicGlossTextures)},
                       {"metallicDetail", QJsonArray::fromStringList(info.metallicDetailTextures)},
                       {"exclusion", QJsonArray::fromStringList(info.exclusionTextures)},
                       {"texformat", QJsonArray::fromStringList(info.texformatFiles)},
                       {"all", QJsonArray::fromStringList(info.allTextureFiles)}};
}

QString jsonNumbers(const QJsonValue& value)
{
    QStringList parts;
    for (const QJsonValue& number : value.toArray())
        parts.append(QString::number(number.toDouble(), 'g', 6));
    return parts.join(QLatin1Char(' '));
}

void printText(const QJsonObject& tank)
{
    printLine(QStringLiteral("name: ") + tank["name"].toString());
    printLine(QStringLiteral("file: ") + tank["file"].toString() + QStringLiteral(" (") +
              tank["source"].toString() + QLatin1Char(')'));
    for (const QJsonValue& value : tank["parts"].toArray()) {
        const QJsonObject part = value.toObject();
        printLine(QStringLiteral("%1 state %2: %3, %4 triangles")
                      .arg(part["part"].toString())
                      .arg(part["state"].toInt())
                      .arg(part["model"].toString())
                      .arg(part["triangles"].toInt()));
        printLine(QStringLiteral("  model: ") + jsonNumbers(part["matrix"]));
    }
    for (const QJsonValue& value : tank["turrets"].toArray()) {
        const QJsonObject turret = value.toObject();
        printLine(QStringLiteral("turret %1 (%2): yaw %3")
                      .arg(turret["name"].toString(), turret["tag"].toString(),
                           jsonNumbers(turret["yaw"])));
        for (const QJsonValue& gunValue : turret["guns"].toArray()) {
            const QJsonObject gun = gunValue.toObject();
            printLine(QStringLiteral("  gun %1 (%2): pitch %3, yaw %4")
                          .arg(gun["name"].toString(), gun["tag"].toString(),
                               jsonNumbers(gun["pitch"]), jsonNumbers(gun["yaw"])));
            for (const QJsonValue& shellValue : gun["shells"].toArray()) {
                const QJsonObject shell = shellValue.toObject();
                printLine(QStringLiteral("    shell %1 (%2): %3, %4 mm, %5 mm at 100 and 500 m")
                              .arg(shell["name"].toString(), shell["tag"].toString(),
                                   shell["kind"].toString(),
                                   QString::number(shell["caliber"].toDouble(), 'g', 6),
                                   jsonNumbers(shell["piercingPower"])));
            }
        }
    }
    const QJsonObject textures = tank["textures"].toObject();
    for (const QString& kind : textures.keys()) {
        printLine(QStringLiteral("textures ") + kind + QLatin1Char(':'));
        for (const QJsonValue& path : textures[kind].toArray())
            printLine(QStringLiteral("  ") + path.toString());
    }
}

} // namespace

int tankCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2) {
        printError(QStringLiteral("usage: ferrox-tool tank GAME_DIR NAME [--mod DIR] [--json] "
                                  "[--tank-list FILE] [--resources FILE]"));
        return 2;
    }
    OffscreenVehicle vehicle;
    if (!vehicle.load(arguments))
        return 1;
    const TankLoader& loader = vehicle.loader();

    const QJsonObject tank{{"name", arguments.positional[1]},
                           {"file", loader.vehicleFilePath},
                           {"source", TankLoader::sourceName(loader.vehicleSource)},
                           {"parts", partsArray(loader)},
                           {"turrets", turretsArray(*loader.chooser)},
                           {"textures", texturesObject(*loader.info)}};
    if (arguments.hasOption(QStringLiteral("json")))
        std::printf("%s\n", QJsonDocument(tank).toJson(QJsonDocument::Compact).constData());
    else
        printText(tank);
    std::fflush(stdout);
    return 0;
}
