#include "VehicleFile.h"

#include "BinaryReader.h"
#include "FileManager.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "MoReaderCached.h"
#include "PackedXmlReader.h"
#include "QtPrinters.h"
#include "Settings.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <memory>

namespace {

VehicleFile readDevices(QIODevice& vehicle, QIODevice* guns)
{
    BinaryReader binary(&vehicle);
    PackedXmlReader reader(&binary);
    const QDomDocument document = reader.read(QStringLiteral("vehicle.xml"));
    QDomDocument gunDocument;
    if (guns) {
        BinaryReader gunBinary(guns);
        gunDocument = PackedXmlReader(&gunBinary).read(QStringLiteral("guns.xml"));
    }
    return readVehicleFile(document, reader.plainText, gunDocument);
}

VehicleFile readText(const QString& vehicle)
{
    QByteArray bytes = vehicle.toUtf8();
    QByteArray gunBytes = QByteArrayLiteral(
        "<guns.xml><shared><SG><userString>#n:Shared_Gun</userString><pitchLimits>-20 8"
        "</pitchLimits><turretYawLimits>-12 15</turretYawLimits></SG></shared></guns.xml>");
    QBuffer buffer(&bytes), gunBuffer(&gunBytes);
    buffer.open(QIODevice::ReadOnly);
    gunBuffer.open(QIODevice::ReadOnly);
    return readDevices(buffer, &gunBuffer);
}

// A vehicle file around the given turrets0 content.
QString vehicleText(const QString& turrets)
{
    return QStringLiteral("<v.xml><hull><models><undamaged>h.model</undamaged>"
                          "<destroyed>hd.model</destroyed></models>"
                          "<turretPositions><turret>0.5 1 -2</turret></turretPositions></hull>"
                          "<chassis><C><models><undamaged>c.model</undamaged></models>"
                          "<hullPosition>0.25 0.4 0</hullPosition></C></chassis>"
                          "<turrets0>%1</turrets0></v.xml>")
        .arg(turrets);
}

QString turretText(const QString& tag, const QString& userString, const QString& guns,
                   const QString& extra = QString())
{
    return QStringLiteral("<%1><userString>%2</userString><gunPosition>0.1 0.2 0.3</gunPosition>"
                          "%4<guns>%3</guns></%1>")
        .arg(tag, userString, guns, extra);
}

TEST(VehicleFileText, HullChassisAndPositionsWithXMirrored)
{
    const VehicleFile file =
        readText(vehicleText(turretText("T", "#n:T", "<G><pitchLimits>-10 5</pitchLimits></G>")));
    EXPECT_EQ(file.hull.destroyedModel, "hd.model");
    EXPECT_EQ(file.chassis.undamagedModel, "c.model");
    EXPECT_EQ(file.turretPosition, (Vector3{-0.5f, 1, -2}));
    ASSERT_EQ(file.turrets.size(), 1);
    const Turret& turret = file.turrets[0];
    EXPECT_EQ(turret.gunPosition, (Vector3{-0.1f, 0.2f, 0.3f}));
    // No yawLimits: the turret turns all the way round.
    EXPECT_EQ(turret.yawMin, -180);
    EXPECT_EQ(turret.yawMax, 180);
    EXPECT_EQ(turret.guns.size(), 1);
    // The hull's mirrored position and the pitch turned round for the spin
    // box show in TankLoaderTest's placements and ranges.
    EXPECT_TRUE(file.assemblyProblem().isEmpty());
}

TEST(VehicleFileText, EqualTurretNamesMergeAndSharedGunsReadTheGunFile)
{
    const QString turrets =
        turretText("T1", "#n:Same", "<G1><pitchLimits>-10 5</pitchLimits></G1>",
                   "<yawLimits>-30 40</yawLimits>") +
        turretText("T2", "#n:Other", "<G2>shared</G2>") +
        turretText("T3", "#n:Same",
                   "<SG>Shared<pitchLimits>-3 2</pitchLimits></SG><SG>shared</SG>");
    const VehicleFile file = readText(vehicleText(turrets));
    ASSERT_EQ(file.turrets.size(), 2);
    const Turret& same = file.turrets[0];
    EXPECT_EQ(same.yawMin, -30);
    ASSERT_EQ(same.guns.size(), 3);
    // A shared gun's own limits win; the name always comes from the gun file.
    EXPECT_EQ(same.guns[1].name, "#n:Shared_Gun");
    EXPECT_EQ(same.guns[1].pitchMin, -2);
    EXPECT_EQ(same.guns[1].pitchMax, 3);
    EXPECT_EQ(same.guns[1].yawMin, -12);
    EXPECT_EQ(same.guns[2].pitchMin, -8);
    // A shared gun missing from the gun file has no limits and no name.
    const Gun& missing = file.turrets[1].guns[0];
    EXPECT_EQ(missing.name, "");
    EXPECT_TRUE(file.lastGunShared);
}

// The sample's vehicle files as the program finds them: packed in the
// archives, one in plain text, names translated by the game's catalogues.
TEST(SampleVehicleFiles, ReadFromTheArchives)
{
    const QString game = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
    Settings settings{QString()};
    settings.gavrelPath = game;
    FileManager files;
    files.resourcesConfigPath = game + QStringLiteral("/ferrox-resources.cfg");
    files.loadZipFiles();
    MoReaderCached catalogues;
    MessageBoxRecorder boxes;
    LogCapture log;
    auto read = [&files](const QString& path) {
        std::unique_ptr<QIODevice> vehicle(files.getFile(path));
        std::unique_ptr<QIODevice> guns(files.getFile(gunFilePath(path)));
        EXPECT_TRUE(vehicle && guns) << path.toStdString();
        return vehicle && guns ? readDevices(*vehicle, guns.get()) : VehicleFile();
    };
    const QString v = QStringLiteral("scripts/item_defs/vehicles/");

    const VehicleFile talon = read(v + "ardenia/a01_talon.xml");
    EXPECT_EQ(talon.startIndex, 1);
    ASSERT_EQ(talon.turrets.size(), 2);
    const Turret& first = talon.turrets[0];
    ASSERT_EQ(first.guns.size(), 2);
    const Gun& own = first.guns[1];
    EXPECT_EQ(own.name, "Talon gun L2");
    EXPECT_EQ(own.front, (Vector3{10, -2, 0}));
    EXPECT_EQ(own.back, (Vector3{170, -4, 0}));
    // Tiling counts only with a mask of the part's own; a part without one
    // takes the vehicle's mask.
    const QString folder = QStringLiteral("vehicles/Ardenia/A01_Talon/");
    ASSERT_EQ(talon.turrets[1].guns.size(), 2);
    const Gun& unmasked = talon.turrets[1].guns[1];
    EXPECT_EQ(unmasked.exclusionMask, folder + "Tank_CM.dds");
    EXPECT_EQ(unmasked.tiling, (Vector4{1, 1, 1, 1}));
    EXPECT_EQ(first.guns[0].exclusionMask, folder + "Gun_01_CM.dds");
    EXPECT_EQ(own.exclusionMask, folder + "Gun_CM.dds");
    EXPECT_EQ(own.tiling, (Vector4{2, 1, 0, 0}));

    // Two turret elements that translate alike make one turret.
    const VehicleFile kestrel = read(v + "borvia/b01_kestrel.xml");
    ASSERT_EQ(kestrel.turrets.size(), 1);
    EXPECT_EQ(kestrel.turrets[0].name, "Kestrel turret");
    EXPECT_EQ(kestrel.turrets[0].guns.size(), 2);
    EXPECT_EQ(read(v + "drevnia/d10_anvil.xml").startIndex, 0);
    // Vehicle files that cannot be assembled: HostileTankLoaderTest.
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

} // namespace
