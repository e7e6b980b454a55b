#include "VehicleFile.h"

#include "BinaryReader.h"
#include "FileManager.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "PackedXmlReader.h"
#include "PackedXmlWriter.h"
#include "QtPrinters.h"
#include "Settings.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <memory>

namespace {

struct Read
{
    QDomDocument document;
    bool plainText = false;
};

Read readBytes(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    Read result;
    result.document = reader.read(QStringLiteral("vehicle.xml"));
    result.plainText = reader.plainText;
    return result;
}

VehicleFile readText(const QString& vehicle, bool packed, const QString& guns = QString())
{
    const Read file = readBytes(packed ? packedxml::pack(vehicle) : vehicle.toUtf8());
    const QDomDocument gunDocument =
        guns.isEmpty() ? QDomDocument()
                       : readBytes(packed ? packedxml::pack(guns) : guns.toUtf8()).document;
    return readVehicleFile(file.document, file.plainText, gunDocument);
}

// A vehicle file around the given turrets0 content.
QString vehicleText(const QString& turrets, const QString& extra = QString())
{
    return QStringLiteral("<v.xml>%2<hull><models><undamaged>h.model</undamaged>"
                          "<destroyed>hd.model</destroyed></models>"
                          "<turretPositions><turret>0.5 1 -2</turret></turretPositions></hull>"
                          "<chassis><C><models><undamaged>c.model</undamaged></models>"
                          "<hitTester><collisionModel>a//b.model</collisionModel></hitTester>"
                          "<hullPosition>0.25 0.4 0</hullPosition></C></chassis>"
                          "<turrets0>%1</turrets0></v.xml>")
        .arg(turrets, extra);
}

const QString gunFileText = QStringLiteral(
    "<guns.xml><shared><SG><userString>#n:Shared_Gun</userString><pitchLimits>-20 8</pitchLimits>"
    "<turretYawLimits>-12 15</turretYawLimits></SG></shared></guns.xml>");

QString turretText(const QString& tag, const QString& userString, const QString& guns,
                   const QString& extra = QString())
{
    return QStringLiteral("<%1><userString>%2</userString><gunPosition>0.1 0.2 0.3</gunPosition>"
                          "%4<guns>%3</guns></%1>")
        .arg(tag, userString, guns, extra);
}

class VehicleFileTest : public testing::TestWithParam<bool>
{
protected:
    // A reader fault would show the closing box; no test may wait on one.
    MessageBoxRecorder boxes;
    void TearDown() override { EXPECT_TRUE(boxes.boxes.isEmpty()); }
};

TEST_P(VehicleFileTest, HullChassisAndPositionsWithXMirrored)
{
    const VehicleFile file =
        readText(vehicleText(turretText("T", "#n:T", "<G><pitchLimits>-10 5</pitchLimits></G>")),
                 GetParam(), gunFileText);
    EXPECT_EQ(file.startIndex, GetParam() ? 1 : 0);
    EXPECT_EQ(file.hull.undamagedModel, "h.model");
    EXPECT_EQ(file.hull.destroyedModel, "hd.model");
    EXPECT_EQ(file.chassis.undamagedModel, "c.model");
    EXPECT_EQ(file.chassis.collisionModel, "a/b.model");
    EXPECT_EQ(file.turretPosition, (Vector3{-0.5f, 1, -2}));
    EXPECT_EQ(file.hullPosition, (Vector3{-0.25f, 0.4f, 0}));
    ASSERT_EQ(file.turrets.size(), 1);
    const Turret& turret = file.turrets[0];
    EXPECT_EQ(turret.tag, "T");
    EXPECT_EQ(turret.gunPosition, (Vector3{-0.1f, 0.2f, 0.3f}));
    EXPECT_EQ(turret.position, file.turretPosition);
    EXPECT_EQ(turret.hullPosition, file.hullPosition);
    // No yawLimits: the turret turns all the way round.
    EXPECT_EQ(turret.yawMin, -180);
    EXPECT_EQ(turret.yawMax, 180);
    ASSERT_EQ(turret.guns.size(), 1);
    // Pitch as the spin box wants it: both negated and swapped.
    EXPECT_EQ(turret.guns[0].pitchMin, -5);
    EXPECT_EQ(turret.guns[0].pitchMax, 10);
    EXPECT_EQ(turret.guns[0].name, "#n:G");
    EXPECT_TRUE(file.assemblyProblem().isEmpty());
}

TEST_P(VehicleFileTest, EqualTurretNamesMergeAndSharedGunsReadTheGunFile)
{
    const QString turrets =
        turretText("T1", "#n:Same", "<G1><pitchLimits>-10 5</pitchLimits></G1>",
                   "<yawLimits>-30 40</yawLimits>") +
        turretText("T2", "#n:Other", "<G2>shared</G2>") +
        turretText("T3", "#n:Same",
                   "<SG>Shared<pitchLimits>-3 2</pitchLimits></SG><SG>shared</SG>");
    const VehicleFile file = readText(vehicleText(turrets), GetParam(), gunFileText);
    ASSERT_EQ(file.turrets.size(), 2);
    const Turret& same = file.turrets[0];
    EXPECT_EQ(same.tag, "T1");
    EXPECT_EQ(same.yawMin, -30);
    EXPECT_EQ(same.yawMax, 40);
    ASSERT_EQ(same.guns.size(), 3);
    EXPECT_EQ(same.guns[1].tag, "SG");
    // A shared gun's own limits win; the name always comes from the gun file.
    EXPECT_EQ(same.guns[1].name, "#n:Shared_Gun");
    EXPECT_EQ(same.guns[1].pitchMin, -2);
    EXPECT_EQ(same.guns[1].pitchMax, 3);
    EXPECT_EQ(same.guns[1].yawMin, -12);
    EXPECT_EQ(same.guns[2].pitchMin, -8);
    EXPECT_EQ(same.guns[2].pitchMax, 20);
    EXPECT_EQ(same.guns[2].yawMax, 15);
    // A shared gun missing from the gun file has no limits and no name.
    const Gun& missing = file.turrets[1].guns[0];
    EXPECT_EQ(missing.name, "");
    EXPECT_EQ(missing.pitchMin, 0);
    EXPECT_TRUE(file.lastGunShared);
}

TEST_P(VehicleFileTest, MasksTilingAndExtraPitchLimits)
{
    LogCapture log;
    const QString guns = QStringLiteral(
        "<G><camouflage><exclusionMask>g.dds</exclusionMask><tiling>2 3 4 5</tiling></camouflage>"
        "<extraPitchLimits><back>1 2 3</back><front>4 5 6</front><side>7</side></extraPitchLimits>"
        "</G><H><camouflage><tiling>2 2 2 2</tiling></camouflage></H>");
    const VehicleFile file =
        readText(vehicleText(turretText("T", "#n:T", guns),
                             "<camouflage><exclusionMask>v.dds</exclusionMask></camouflage>"),
                 GetParam(), gunFileText);
    EXPECT_EQ(file.vehicleMask, "v.dds");
    EXPECT_EQ(file.chassisMask, "v.dds");
    EXPECT_EQ(file.hullMask, "v.dds");
    const Turret& turret = file.turrets[0];
    EXPECT_EQ(turret.exclusionMask, "v.dds");
    EXPECT_EQ(turret.tiling, (Vector4{1, 1, 1, 1}));
    EXPECT_EQ(turret.guns[0].exclusionMask, "g.dds");
    EXPECT_EQ(turret.guns[0].tiling, (Vector4{2, 3, 4, 5}));
    EXPECT_EQ(turret.guns[0].back, (Vector3{1, 2, 3}));
    EXPECT_EQ(turret.guns[0].front, (Vector3{4, 5, 6}));
    // Tiling counts only with a mask of the part's own.
    EXPECT_EQ(turret.guns[1].exclusionMask, "v.dds");
    EXPECT_EQ(turret.guns[1].tiling, (Vector4{1, 1, 1, 1}));
    EXPECT_TRUE(log.contains("[Warning] Found an unsupported pitch node: side on gun: G"));
}

TEST_P(VehicleFileTest, VehiclesThatCannotBeAssembledSayWhy)
{
    const struct
    {
        QString turrets;
        QString problem;
    } cases[] = {
        {"", "the vehicle file has no turret"},
        {turretText("T", "#n:T", ""), "turret T has no gun"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(readText(vehicleText(c.turrets), GetParam()).assemblyProblem(), c.problem);
}

INSTANTIATE_TEST_SUITE_P(PlainAndPacked, VehicleFileTest, testing::Bool(),
                         [](const auto& param) { return param.param ? "Packed" : "Plain"; });

// The sample's vehicle files as the program finds them: packed in an
// archive, and one plain text file.
TEST(SampleVehicleFiles, ReadFromTheArchives)
{
    const QString game = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
    Settings settings{QString()};
    settings.gavrelPath = game;
    FileManager files;
    files.resourcesConfigPath = game + QStringLiteral("/ferrox-resources.cfg");
    files.loadZipFiles();

    const struct
    {
        QString path;
        int startIndex;
        QString gunName;
        float pitchMin, pitchMax, gunYawMin;
    } cases[] = {
        {"scripts/item_defs/vehicles/ardenia/a01_talon.xml", 1, "#ardenia_vehicles:A01_Talon_Gun",
         -8, 20, 0},
        {"scripts/item_defs/vehicles/drevnia/d10_anvil.xml", 0, "#drevnia_vehicles:D10_Anvil_Gun",
         -8, 20, -12},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path.toStdString());
        std::unique_ptr<QIODevice> vehicle(files.getFile(c.path));
        std::unique_ptr<QIODevice> guns(files.getFile(gunFilePath(c.path)));
        ASSERT_TRUE(vehicle && guns);
        const Read vehicleRead = readBytes(vehicle->readAll());
        const VehicleFile file = readVehicleFile(vehicleRead.document, vehicleRead.plainText,
                                                 readBytes(guns->readAll()).document);
        EXPECT_EQ(file.startIndex, c.startIndex);
        ASSERT_EQ(file.turrets.size(), 1);
        ASSERT_EQ(file.turrets[0].guns.size(), 1);
        const Gun& gun = file.turrets[0].guns[0];
        EXPECT_EQ(gun.name, c.gunName);
        EXPECT_EQ(gun.pitchMin, c.pitchMin);
        EXPECT_EQ(gun.pitchMax, c.pitchMax);
        EXPECT_EQ(gun.yawMin, c.gunYawMin);
        EXPECT_TRUE(gun.undamagedModel.endsWith("normal/lod0/Gun_01.model"));
        EXPECT_EQ(file.hullPosition, (Vector3{-0.0f, 0.38f, 0}));
    }
}

} // namespace
