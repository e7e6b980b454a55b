#include "LoaderFixture.h"
#include "MathChecks.h"
#include "QtPrinters.h"
#include "TankGame.h"
#include "TankInfo.h"
#include "TankMesh.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace tankgame;

namespace {

const QString BoxTank = QStringLiteral("Box Tank");

// Triangles of the parts: 2 x cells x cells with 1, 2, 3, 4 cells; the big
// gun has 5.
constexpr int ChassisTriangles = 2, HullTriangles = 8, TurretTriangles = 18, GunTriangles = 32,
              BigGunTriangles = 50,
              AllTriangles = ChassisTriangles + HullTriangles + TurretTriangles + GunTriangles;

// m applied to the point p.
Vector3 transformed(const Matrix& m, const Vector3& p)
{
    Vector3 out;
    for (int row = 0; row < 3; ++row)
        out[row] = m[row] * p[0] + m[4 + row] * p[1] + m[8 + row] * p[2] + m[12 + row];
    return out;
}

// Built before the fixture that reads it.
struct BoxTankGame
{
    TankGame game;
};

// The box tank, loaded.
class TankLoaderTest : protected BoxTankGame, public LoaderFixture
{
protected:
    TankLoaderTest() : LoaderFixture(game.path(), game.resourcesPath(), game.tankListPath()) {}
    void SetUp() override
    {
        LoaderFixture::SetUp();
        if (!scene.ready())
            return;
        game.writeVehicle(TankGame::vehicleText());
        ASSERT_TRUE(loader->load(BoxTank));
    }
};

TEST_F(TankLoaderTest, PartsArePlacedByJointsAndTurnAboutTheirPivotsOnOneChainHiddenOrNot)
{
    for (int state = 0; state < TankLoader::MeshStates; ++state) {
        loader->damageMode = state;
        // The "tank" node scales y by 2: the chassis by its own node and by
        // the vehicle's scale, the hull by the vehicle's alone. The file's
        // turret position (-0.25, 1.5, -0.5) and gun position (0, 0.3, 1)
        // give way to the joints, x mirrored.
        EXPECT_EQ(part(TankLoader::ChassisPart)->model, scalingMatrix({1, 4, 1}));
        EXPECT_EQ(part(TankLoader::HullPart)->model,
                  matrixProduct(translationMatrix({-0.1f, 0.4f, 0}), scalingMatrix({1, 2, 1})));
        EXPECT_EQ(part(TankLoader::HullPart)->offset, (Vector3{-0.1f, 0.4f, 0}));
        EXPECT_EQ(part(TankLoader::TurretPart)->offset, (Vector3{-0.5f, 1.2f, -0.3f}));
        EXPECT_EQ(part(TankLoader::GunPart)->offset, (Vector3{-0.2f, 0.3f, 0.95f}));
    }
    loader->damageMode = 0;
    // Tank, turret and gun angles; turret origin, gun origin and gun tip.
    const std::tuple<float, float, float, Vector3, Vector3, Vector3> cases[] = {
        {0, 0, 0, {-0.6f, 2.8f, -0.3f}, {-0.8f, 3.4f, 0.65f}, {-0.8f, 3.4f, 1.65f}},
        // The gun turns about its own joint: its origin stays, the tip rises.
        {0, 0, 30, {-0.6f, 2.8f, -0.3f}, {-0.8f, 3.4f, 0.65f}, {-0.8f, 4.4f, 1.516f}},
        // clang-format off
        {30, 45, 10, {-.7303f, 2.8f, -.0064f}, {.1355f, 3.4f, .4327f}, {1.0868f, 3.7473f, .6876f}},
        // clang-format on
    };
    for (const auto& [tank, turret, gun, turretOrigin, gunOrigin, gunTip] : cases) {
        SCOPED_TRACE(testing::Message() << tank << " " << turret << " " << gun);
        loader->setTankRotation(tank);
        loader->setTurretRotation(turret);
        loader->setGunRotation(gun);
        walkChain();
        // The chassis leaves the chain as it found it: the hull carries only
        // the vehicle's rotation and its own placement.
        EXPECT_EQ(part(TankLoader::ChassisPart)->placement,
                  matrixProduct(loader->tankRotation, part(TankLoader::ChassisPart)->model));
        EXPECT_EQ(part(TankLoader::HullPart)->placement,
                  matrixProduct(loader->tankRotation, part(TankLoader::HullPart)->model));
        const Matrix& gunPlacement = part(TankLoader::GunPart)->placement;
        expectNear(transformed(part(TankLoader::TurretPart)->placement, {}), turretOrigin, 1e-4f);
        expectNear(transformed(gunPlacement, {0, 0, 0}), gunOrigin, 1e-4f);
        expectNear(transformed(gunPlacement, {0, 0, 1}), gunTip, 1e-4f);
    }

    // Hidden parts leave the triangle count and keep the chain: in a real
    // frame a hidden hull still places the turret and gun.
    const Matrix turretPlaced = part(TankLoader::TurretPart)->placement;
    const Matrix gunPlaced = part(TankLoader::GunPart)->placement;
    // Chassis, hull, turret and gun hidden; triangles drawn.
    const std::tuple<bool, bool, bool, bool, int> hidden[] = {
        {false, false, false, false, AllTriangles},
        {false, true, false, false, AllTriangles - HullTriangles},
        {true, false, true, false, HullTriangles + GunTriangles},
        {true, true, true, true, 0},
    };
    scene.gl.makeTarget(16, 16);
    for (const auto& [chassis, hull, turret, gun, triangles] : hidden) {
        std::tie(loader->hideChassis, loader->hideHull, loader->hideTurret, loader->hideGun) =
            std::tie(chassis, hull, turret, gun);
        EXPECT_EQ(loader->triangleCount(), triangles);
        loader->render(1);
        EXPECT_EQ(part(TankLoader::TurretPart)->placement, turretPlaced);
        EXPECT_EQ(part(TankLoader::GunPart)->placement, gunPlaced);
    }
}

TEST_F(TankLoaderTest, ChoiceLimitsAndWindowFollowTheTurretAndGun)
{
    EXPECT_EQ(loader->vehicleSource, TankLoader::Source::LooseFile);
    EXPECT_EQ(loader->hullHealth, 300);
    EXPECT_EQ(recent, QStringList{BoxTank});
    for (const QString& text : visualTexts)
        EXPECT_TRUE(text.contains("renderSet"));
    EXPECT_EQ(loader->chooser->currentTurretName, TurretName);
    EXPECT_EQ(loader->chooser->currentGunName, GunName);
    // Turret yaw -30..40 turned round for the spin box; pitch -20..8 too.
    EXPECT_EQ(turretRange, (Vector2{-40, 30}));
    EXPECT_EQ(gunRange, (Vector2{-8, 20}));

    // The big gun, shared, from the second element of the same turret name:
    // its own yaw limits stand for the turret's, and a reload keeps it.
    const int bigGunTriangles = AllTriangles - GunTriangles + BigGunTriangles;
    loader->loadTurretGun(TurretName, BigGunName);
    EXPECT_EQ(loader->triangleCount(), bigGunTriangles);
    EXPECT_EQ(turretRange, (Vector2{-15, 12}));
    EXPECT_EQ(gunRange, (Vector2{-5, 15}));
    ASSERT_TRUE(loader->reload());
    EXPECT_EQ(loader->chooser->currentGunName, BigGunName);
    EXPECT_EQ(loader->triangleCount(), bigGunTriangles);

    loader->changeTurret(TurretName);
    EXPECT_EQ(loader->chooser->currentGunName, GunName);
    EXPECT_EQ(gunRange, (Vector2{-8, 20}));
}

TEST_F(TankLoaderTest, FailedLoadsLeaveNothingToDraw)
{
    const QString failure = "Failed to parse xml file for tank: Box Tank";
    game.removeRes(GunFilePath);
    expectFailedLoad(BoxTank, failure + " (no gun file " + GunFilePath + ")", failure);
    game.writeGunFile();
    ASSERT_TRUE(loader->load(BoxTank));
    game.writeVehicle(TankGame::vehicleText(TankGame::defaultTurrets(), "Nothing"));
    expectFailedLoad(BoxTank, "Failed loading: " + Folder + "Nothing.primitives", "");
    // A name the table does not have fails quietly.
    EXPECT_FALSE(loader->load("Nobody"));
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

// The sample's vehicles from wherever the program finds them: packed in an
// archive, plain text, overridden by the mod folder; turrets of one name
// merged.
TEST_F(SampleTankLoaderTest, VehiclesLoadFromArchiveModFolderAndPlainText)
{
    using Source = TankLoader::Source;
    const std::tuple<QString, Source, int, QString> cases[] = {
        {"Talon", Source::Archive, 180, "Talon turret"},
        {"Ironmoth", Source::Archive, 240, "Ironmoth turret"},
        {"Basilisk", Source::ModFolder, 4321, "Basilisk turret (mod)"},
    };
    for (const auto& [name, source, hullHealth, firstTurret] : cases) {
        SCOPED_TRACE(name.toStdString());
        ASSERT_TRUE(loader->load(name));
        EXPECT_EQ(loader->vehicleSource, source);
        EXPECT_EQ(loader->hullHealth, hullHealth);
        EXPECT_EQ(loader->chooser->currentTurretName, firstTurret);
        // Chassis, hull, Turret_01 and Gun_01 as the generator writes them.
        EXPECT_EQ(loader->triangleCount(), 724 + 80 + 132 + 144);
    }
    EXPECT_TRUE(boxes.boxes.isEmpty());
}

// Each vehicle of the hostile installation that cannot be assembled, loaded
// after the sound one: it says why, in the log and in the boxes the
// program shows for its cause, and leaves nothing half loaded.
TEST_F(HostileTankLoaderTest, EachBrokenVehicleFailsWithItsReasonAfterASoundOne)
{
    const QString parse = QStringLiteral("Failed to parse xml file for tank: ");
    const QString closing = QStringLiteral("\nApplication will now close.");
    const QString models = QStringLiteral("vehicles/Hostile/");
    // name, a logged line, the boxes shown
    const std::tuple<QString, QString, QStringList> cases[] = {
        {"No Turret",
         "[Error] " + parse + "No Turret (the vehicle file has no turret)",
         {parse + "No Turret"}},
        {"Turret Without Gun",
         parse + "Turret Without Gun (turret H02_Turret_Without_Gun_Turret has no gun)",
         {parse + "Turret Without Gun"}},
        {"Missing Gun File",
         parse + "Missing Gun File (no gun file "
                 "scripts/item_defs/vehicles/hostile_guns/components/guns.xml)",
         {parse + "Missing Gun File"}},
        {"Empty Document",
         "Could not find the model folder of: Empty Document",
         {"Error reading data: readInt()" + closing}},
        {"No Vehicle File",
         "Could not open file: scripts/item_defs/vehicles/hostile/h08_no_vehicle_file.xml",
         {}},
        {"Missing Model",
         "Failed loading: " + models + "H05_Missing_Model/normal/lod0/Chassis.primitives",
         {}},
        {"Truncated Member",
         "Size mismatch: " + models + "H06_Truncated_Member/normal/lod0/Hull.primitives",
         {"Size mismatch" + closing, "Error reading data: readInt()" + closing}},
    };
    for (const auto& [name, logged, shown] : cases) {
        SCOPED_TRACE(name.toStdString());
        ASSERT_TRUE(loader->load("Sound Vehicle"));
        LogCapture log;
        boxes.boxes.clear();
        EXPECT_FALSE(loader->load(name));
        EXPECT_FALSE(loader->loaded);
        EXPECT_EQ(loader->triangleCount(), 0);
        EXPECT_TRUE(log.lines.join('\n').contains(logged)) << log.lines.join('\n').toStdString();
        QStringList texts;
        for (const auto& box : boxes.boxes)
            texts.append(box.text);
        EXPECT_EQ(texts, shown);
        walkChain();
    }
    // A broken texture costs the vehicle its colour, not its shape.
    LogCapture log;
    ASSERT_TRUE(loader->load("Broken DDS"));
    EXPECT_TRUE(log.lines.join('\n').contains("Failed to load texture: " + models +
                                              "H07_Broken_DDS/Hull_AM.dds"));
    loader->hideChassis = loader->hideHull = loader->hideTurret = loader->hideGun = false;
    EXPECT_GT(loader->triangleCount(), 0);
}

} // namespace
