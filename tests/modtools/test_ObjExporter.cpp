#include "ObjExporter.h"

#include "Database.h"
#include "MeshGeometry.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "SceneFixture.h"
#include "TankGame.h"
#include "TankLoader.h"
#include "TankMesh.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

// Positions as stored: x already mirrored. Numbers that show the format:
// exponent form, no trailing zeros, a negated zero written as 0.
MeshGeometry* smallGeometry(const QString& name)
{
    auto* geometry = new MeshGeometry;
    geometry->name = name;
    geometry->positions = {{1234567, 0.5f, 1}, {0, -2, 0.25f}, {-1e-7f, 3, 100000}};
    geometry->normals = {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}};
    geometry->uvs = {{0.25f, 0.5f}, {1, 0}, {0.125f, 1}};
    geometry->indices16 = {0, 2, 1};
    return geometry;
}

const QByteArray Coordinates = "# Texture Coords\nvt 0.25 -0.5\nvt 1 0\nvt 0.125 -1\n";
const QByteArray Faces = "# Faces\nf 1/1/1 3/3/3 2/2/2\n";

Matrix placedMatrix()
{
    return matrixProduct(translationMatrix({1, 2, 3}), scalingMatrix({2, 2, 2}));
}

// The abstract mesh with nothing but its geometries.
class PlainMesh : public Mesh
{
public:
    void unload() override {}
    bool exportObj() override { return false; }
    void draw(bool, int, Material*, ShaderProgram*) override {}
    bool reload() override { return false; }
};

TEST(ObjExporter, TextPlacesPositionsAndNormalsAndNegatesV)
{
    const std::unique_ptr<MeshGeometry> geometry(smallGeometry("hull_geom"));
    const QByteArray identity = "#Ferrox Obj Exporter\n# Vertices\n"
                                "v 1.23457e+06 0.5 1 1\nv 0 -2 0.25 1\nv -1e-07 3 100000 1\n"
                                "# Normals\nvn 0 0 1 1\nvn 1 0 0 1\nvn 0 1 0 1\n" +
                                Coordinates + "g hull_geom\n" + Faces;
    // The translation moves positions, never normals.
    const QByteArray placed = "#Ferrox Obj Exporter\n# Vertices\n"
                              "v 2.46914e+06 3 5 1\nv 1 -2 3.5 1\nv 1 8 200003 1\n"
                              "# Normals\nvn 0 0 2 1\nvn 2 0 0 1\nvn 0 2 0 1\n" +
                              Coordinates + "g hull_geom\n" + Faces;
    EXPECT_EQ(ObjExporter::text(*geometry, identityMatrix()), identity);
    EXPECT_EQ(ObjExporter::text(*geometry, placedMatrix()), placed);
}

TEST(ObjExporter, EachGeometryIsAFileOfItsOwnInDirectoriesMadeForIt)
{
    QTemporaryDir root;
    const QString mods = root.path() + "/fresh/mods";
    PlainMesh mesh;
    mesh.path = "vehicles/Testland/T01/normal/lod0/Hull.model";
    mesh.geometries = {smallGeometry("first"), smallGeometry("second")};
    ObjExporter exporter(mods);
    ASSERT_TRUE(exporter.exportMesh(mesh, placedMatrix()));
    for (int i = 0; i < 2; ++i) {
        const QString file =
            mods + QString("/vehicles/Testland/T01/normal/lod0/Hull_%1.obj").arg(i);
        EXPECT_EQ(exporter.fileName(mesh.path, i), file);
        EXPECT_EQ(readFile(file), ObjExporter::text(*mesh.geometries[i], placedMatrix()));
    }

    // A file that cannot be written stops the export; the files before it
    // stand, and no half-written file is left.
    QDir(mods).mkpath("vehicles/Testland/T01/normal/lod0/Turret_1.obj");
    mesh.path = "vehicles/Testland/T01/normal/lod0/Turret.model";
    EXPECT_FALSE(exporter.exportMesh(mesh, identityMatrix()));
    EXPECT_EQ(readFile(exporter.fileName(mesh.path, 0)),
              ObjExporter::text(*mesh.geometries[0], identityMatrix()));
    EXPECT_EQ(QDir(mods + "/vehicles/Testland/T01/normal/lod0").entryList(QDir::Files).size(), 3);

    PlainMesh empty;
    empty.path = "vehicles/None.model";
    EXPECT_TRUE(exporter.exportMesh(empty, identityMatrix()));
    EXPECT_FALSE(QFile::exists(exporter.fileName(empty.path, 0)));
}

struct BoxTankGame
{
    tankgame::TankGame game;
};

// The box tank of the tank suite, loaded, exported into a mod folder that
// does not exist yet.
class TankExport : protected BoxTankGame, public testing::Test
{
protected:
    void SetUp() override
    {
        if (!scene.ready())
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        scene.settings->modPath = mods.path() + "/res_mods";
        database.tankListPath = game.tankListPath();
        database.rebuildDatabase();
        loader = std::make_unique<TankLoader>();
        game.writeVehicle(tankgame::TankGame::vehicleText());
        ASSERT_TRUE(loader->load("Box Tank"));
        // Turned, to show that the export leaves the rotations out.
        loader->setTankRotation(30);
        loader->setTurretRotation(20);
    }
    void TearDown() override
    {
        if (scene.ready())
            scene.gl.context.makeCurrent(&scene.gl.surface);
        loader.reset();
    }

    SceneFixture scene{game.path(), game.resourcesPath()};
    Database database;
    MessageBoxRecorder boxes;
    QTemporaryDir mods;
    std::unique_ptr<TankLoader> loader;
};

TEST_F(TankExport, FourPartsOfTheShownStateComeOutAssembledAtZeroRotation)
{
    for (int state : {Intact, Destroyed}) {
        loader->damageMode = state;
        ASSERT_TRUE(loader->exportAll());
        // A frame at zero rotation places each part where the export did.
        loader->setTankRotation(0);
        loader->setTurretRotation(0);
        loader->hideChassis = loader->hideHull = loader->hideTurret = loader->hideGun = true;
        loader->render(1);
        for (int part = 0; part < TankLoader::PartCount; ++part) {
            const TankMesh* mesh = loader->mesh(part, state);
            ASSERT_EQ(mesh->geometries.size(), 1);
            const QString file = ObjExporter(scene.settings->modPath).fileName(mesh->path, 0);
            EXPECT_EQ(readFile(file), ObjExporter::text(*mesh->geometries[0], mesh->placement))
                << file.toStdString();
        }
        loader->setTankRotation(30);
        loader->setTurretRotation(20);
    }
    EXPECT_TRUE(
        QFile::exists(scene.settings->modPath + "/vehicles/Testland/T01_Box/crash/Turret_0.obj"));

    // No mod folder, or no meshes of the collision state here: nothing is
    // written.
    scene.settings->modPath.clear();
    EXPECT_FALSE(loader->exportAll());
    EXPECT_FALSE(QDir::current().exists("vehicles"));
    loader->damageMode = Collision;
    EXPECT_FALSE(loader->exportAll());
    loader->unload();
    loader->loaded = false;
    EXPECT_FALSE(loader->exportAll());
}

} // namespace
