#pragma once

// A small hand-built game folder with one vehicle, "Box Tank", of four
// plain-text parts in two states, a vehicle table built over it, and the
// shared gun file. Unlike the sample's vehicles its joints and positions lie
// off the centre line and its chassis node is scaled, so that mirroring and
// scale faults show. Vehicle files are written loose, per test.

#include "PrimitivesBuilder.h"
#include "TestRoot.h"

#include <QFile>

namespace tankgame {

inline const QString Folder = QStringLiteral("vehicles/Testland/T01_Box/");
inline const QString VehiclePath =
    QStringLiteral("scripts/item_defs/vehicles/testland/t01_box.xml");
inline const QString GunFilePath =
    QStringLiteral("scripts/item_defs/vehicles/testland/components/guns.xml");
inline const QString TurretName = QStringLiteral("#testland_vehicles:T01_Turret");
inline const QString GunName = QStringLiteral("#testland_vehicles:T01_Gun");
inline const QString BigGunName = QStringLiteral("#testland_vehicles:Big_Gun");

inline QString transform(const QString& row3, const QString& diagonal = "1 1 1")
{
    const QStringList d = diagonal.split(' ');
    return QStringLiteral("<transform><row0>%1 0 0</row0><row1>0 %2 0</row1><row2>0 0 %3</row2>"
                          "<row3>%4</row3></transform>")
        .arg(d[0], d[1], d[2], row3);
}

// Every node has a transform, as in the game's files: a missing one reads
// as zeros.
inline QString node(const QString& name, const QString& inner = QString(),
                    const QString& nodeTransform = transform("0 0 0"))
{
    return QStringLiteral("<node><identifier>%1</identifier>%2%3</node>")
        .arg(name, nodeTransform, inner);
}

// Triangles per part: 2 x cells x cells.
struct PartModel
{
    QString file;    // below Folder, without extension
    QString tree;    // nodes below "Scene Root"
    QString setNode; // the render set's node
    int cells;
};

class TankGame
{
public:
    TankGame()
    {
        writeRes("scripts/item_defs/item_types.xml",
                 "<item_types.xml><vehicle><tags><lightTank><userString>Light</userString>"
                 "</lightTank></tags></vehicle></item_types.xml>");
        writeRes("scripts/item_defs/vehicles/testland/list.xml",
                 "<list.xml><T01_Box><userString>Box Tank</userString><tags>lightTank</tags>"
                 "<level>1</level></T01_Box></list.xml>");
        writeGunFile();
        data.writeFile(
            "tank_list.cfg",
            "<tank_list.cfg><testland><ResPath>scripts/item_defs/vehicles/testland"
            "</ResPath><DataPath>vehicles/Testland</DataPath></testland></tank_list.cfg>");
        data.writeFile("resources.cfg", "<resources></resources>");

        const QList<PartModel> parts = {
            {"Chassis", node("tank", "", transform("0 0 0", "1 2 1")), "tank", 1},
            {"Hull", node("hull", node("HP_turretJoint", "", transform("0.5 1.2 -0.3"))), "hull",
             2},
            {"Turret", node("turret", node("HP_gunJoint", "", transform("0.2 0.3 0.95"))), "turret",
             3},
            {"Gun", node("gun"), "gun", 4},
            {"BigGun", node("gun"), "gun", 5},
        };
        for (const PartModel& part : parts) {
            writePart(Folder, part);
            writePart(Folder + "crash/", part);
        }
    }

    static QString turretText(const QString& tag, const QString& guns)
    {
        return QStringLiteral("<%1><userString>%2</userString><models><undamaged>%3Turret.model"
                              "</undamaged><destroyed>%3crash/Turret.model</destroyed></models>"
                              "<maxHealth>100</maxHealth><yawLimits>-30 40</yawLimits>"
                              "<gunPosition>0 0.3 1</gunPosition><guns>%4</guns></%1>")
            .arg(tag, TurretName, Folder, guns);
    }
    static QString gunText(const QString& tag, const QString& model, const QString& extra)
    {
        return QStringLiteral("<%1>%4<models><undamaged>%2%3.model</undamaged><destroyed>"
                              "%2crash/%3.model</destroyed></models></%1>")
            .arg(tag, Folder, model, extra);
    }
    // Two turret elements of one name: they make one turret with two guns.
    static QString defaultTurrets()
    {
        return turretText("T01_Turret",
                          gunText("T01_Gun", "Gun", "<pitchLimits>-20 8</pitchLimits>")) +
               turretText("T01_Turret_2", gunText("T01_Big_Gun", "BigGun", "shared"));
    }
    static QString vehicleText(const QString& turrets = defaultTurrets(),
                               const QString& hullModel = "Hull")
    {
        return QStringLiteral(
                   "<t01_box.xml><hull><models><undamaged>%1%3.model</undamaged><destroyed>"
                   "%1crash/%3.model</destroyed></models><maxHealth>300</maxHealth>"
                   "<turretPositions><turret>0.25 1.5 -0.5</turret></turretPositions></hull>"
                   "<chassis><T01_Box_Chassis><models><undamaged>%1Chassis.model</undamaged>"
                   "<destroyed>%1crash/Chassis.model</destroyed></models><maxHealth>200"
                   "</maxHealth><hullPosition>0.1 0.4 0</hullPosition></T01_Box_Chassis>"
                   "</chassis><turrets0>%2</turrets0></t01_box.xml>")
            .arg(Folder, turrets, hullModel);
    }

    void writeVehicle(const QString& text) { writeRes(VehiclePath, text.toUtf8()); }
    void writeGunFile()
    {
        writeRes(GunFilePath, "<guns.xml><shared><T01_Big_Gun><userString>" + BigGunName.toUtf8() +
                                  "</userString><pitchLimits>-15 5</pitchLimits><turretYawLimits>"
                                  "-12 15</turretYawLimits></T01_Big_Gun></shared></guns.xml>");
    }
    void removeRes(const QString& relative) { QFile::remove(path() + "/res/" + relative); }

    QString path() const { return game.path(); }
    QString tankListPath() const { return data.path() + "/tank_list.cfg"; }
    QString resourcesPath() const { return data.path() + "/resources.cfg"; }

private:
    void writeRes(const QString& relative, const QByteArray& content)
    {
        game.writeFile("res/" + relative, content);
    }
    void writePart(const QString& folder, const PartModel& part)
    {
        QList<primitives::Vertex> vertices;
        QList<quint32> indices;
        primitives::quadGrid(part.cells, 0, 1, vertices, indices);
        writeRes(folder + part.file + ".primitives",
                 primitives::file(
                     {{(part.file + ".vertices").toLatin1(), primitives::xyznuvChunk(vertices)},
                      {(part.file + ".indices").toLatin1(),
                       primitives::indexChunk(indices, {{0, 2 * part.cells * part.cells, 0,
                                                         qint32(vertices.size())}})}}));
        writeRes(folder + part.file + ".visual",
                 QStringLiteral("<%1.visual>%2<renderSet><node>%3</node><geometry><vertices>"
                                "%1.vertices</vertices><primitive>%1.indices</primitive>"
                                "<primitiveGroup>0<material><identifier>%1</identifier>"
                                "<fx>shaders/std_effects/lightonly.fx</fx></material>"
                                "</primitiveGroup></geometry></renderSet></%1.visual>")
                     .arg(part.file, node("Scene Root", part.tree), part.setNode)
                     .toUtf8());
    }

    GameTree game;
    GameTree data{false}; // the program's own tank list and archive list
};

} // namespace tankgame
