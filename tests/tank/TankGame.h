#pragma once

// A small hand-built game folder with one vehicle, "Box Tank", of four
// plain-text parts in two states, a vehicle table built over it, and the
// shared gun file. Vehicle files are written per test, plain or packed,
// loose, in an archive or in a mod folder.

#include "PackedXmlWriter.h"
#include "PrimitivesBuilder.h"
#include "TestRoot.h"
#include "ZipBuilder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

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
    QString diffuse; // texture path of the diffuseMap property
    QString extraProperties;
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
        writeData("tank_list.cfg",
                  "<tank_list.cfg><testland><ResPath>scripts/item_defs/vehicles/testland"
                  "</ResPath><DataPath>vehicles/Testland</DataPath></testland></tank_list.cfg>");
        writeData("resources.cfg", "<resources><Zip>test.pkg</Zip></resources>");

        const QString tex = Folder;
        const QList<PartModel> parts = {
            {"Chassis", node("tank", "", transform("0 0 0", "1 2 1")), "tank", 1, "",
             "<property>normalMap<Texture>" + tex +
                 "Chassis_ANM.dds</Texture></property><property>metallicGlossMap<Texture>"
                 "</Texture></property>"},
            {"Hull", node("hull", node("HP_turretJoint", "", transform("0.5 1.2 -0.3"))), "hull", 2,
             tex + "Hull_AM.dds", ""},
            {"Turret", node("turret", node("HP_gunJoint", "", transform("0.2 0.3 0.95"))), "turret",
             3, "VEHICLES/Testland/T01_Box/hull_am.DDS", ""},
            {"Gun", node("gun"), "gun", 4, tex + "Gun_AM", ""},
            {"BigGun", node("gun"), "gun", 5, tex + "Gun_AM.dds", ""},
        };
        for (PartModel part : parts) {
            writePart(Folder, part);
            if (part.file == "Hull")
                part.diffuse = tex + "Hull_crash_AM.dds";
            writePart(Folder + "crash/", part);
        }
        archive.add((Folder + "Hull_AM.texformat").toLatin1(),
                    "<Hull_AM.texformat><mip_info><mip>" + (Folder + "Hull_AM_hd.dds").toLatin1() +
                        "</mip></mip_info></Hull_AM.texformat>");
        writeArchive();
    }

    static QString turretText(const QString& tag, const QString& guns,
                              const QString& model = "Turret")
    {
        return QStringLiteral("<%1><userString>%2</userString><models><undamaged>%3%4.model"
                              "</undamaged><destroyed>%3crash/%4.model</destroyed></models>"
                              "<maxHealth>100</maxHealth><yawLimits>-30 40</yawLimits>"
                              "<gunPosition>0 0.3 1</gunPosition><guns>%5</guns></%1>")
            .arg(tag, TurretName, Folder, model, guns);
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
                   "<t01_box.xml><camouflage><exclusionMask>%1mask.dds</exclusionMask>"
                   "</camouflage><hull><models><undamaged>%1%3.model</undamaged><destroyed>"
                   "%1crash/%3.model</destroyed></models><maxHealth>300</maxHealth>"
                   "<turretPositions><turret>0.25 1.5 -0.5</turret></turretPositions></hull>"
                   "<chassis><T01_Box_Chassis><models><undamaged>%1Chassis.model</undamaged>"
                   "<destroyed>%1crash/Chassis.model</destroyed></models><maxHealth>200"
                   "</maxHealth><hullPosition>0.1 0.4 0</hullPosition></T01_Box_Chassis>"
                   "</chassis><turrets0>%2</turrets0></t01_box.xml>")
            .arg(Folder, turrets, hullModel);
    }

    enum Place
    {
        Loose,
        InArchive,
        InMod
    };
    void writeVehicle(const QString& text, bool packed = false, Place place = Loose)
    {
        const QByteArray bytes = packed ? packedxml::pack(text) : text.toUtf8();
        if (place == Loose)
            writeRes(VehiclePath, bytes);
        else if (place == InMod)
            write(mod.path() + '/' + VehiclePath, bytes);
        else {
            archive.add(VehiclePath.toLatin1(), bytes);
            writeArchive();
        }
    }
    void writeGunFile()
    {
        writeRes(GunFilePath, "<guns.xml><shared><T01_Big_Gun><userString>" + BigGunName.toUtf8() +
                                  "</userString><pitchLimits>-15 5</pitchLimits><turretYawLimits>"
                                  "-12 15</turretYawLimits></T01_Big_Gun></shared></guns.xml>");
    }
    void writeFile(const QString& relative, const QByteArray& content)
    {
        game.writeFile(relative, content);
    }
    void removeRes(const QString& relative) { QFile::remove(path() + "/res/" + relative); }

    QString path() const { return game.path(); }
    QString modPath() const { return mod.path(); }
    QString tankListPath() const { return data.path() + "/tank_list.cfg"; }
    QString resourcesPath() const { return data.path() + "/resources.cfg"; }

private:
    static void write(const QString& file, const QByteArray& content)
    {
        QDir().mkpath(QFileInfo(file).path());
        QFile out(file);
        out.open(QIODevice::WriteOnly);
        out.write(content);
    }
    void writeRes(const QString& relative, const QByteArray& content)
    {
        game.writeFile("res/" + relative, content);
    }
    void writeData(const QString& name, const QByteArray& content)
    {
        write(data.path() + '/' + name, content);
    }
    void writeArchive() { write(path() + "/res/packages/test.pkg", archive.build()); }
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
        const QString diffuse = part.diffuse.isEmpty() ? QString()
                                                       : "<property>diffuseMap<Texture>" +
                                                             part.diffuse + "</Texture></property>";
        writeRes(folder + part.file + ".visual",
                 QStringLiteral("<%1.visual>%2<renderSet><node>%3</node><geometry><vertices>"
                                "%1.vertices</vertices><primitive>%1.indices</primitive>"
                                "<primitiveGroup>0<material><identifier>%1</identifier>%4%5"
                                "<fx>shaders/std_effects/lightonly.fx</fx></material>"
                                "</primitiveGroup></geometry></renderSet></%1.visual>")
                     .arg(part.file, node("Scene Root", part.tree), part.setNode, diffuse,
                          part.extraProperties)
                     .toUtf8());
    }

    GameTree game;
    QTemporaryDir data;
    QTemporaryDir mod;
    ZipBuilder archive;
};

} // namespace tankgame
