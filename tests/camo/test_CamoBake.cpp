#include "../tank/LoaderFixture.h"
#include "CamoBakeJob.h"
#include "CamoExports.h"
#include "CamoLoader.h"
#include "GlFunctions.h"
#include "ImageCheck.h"
#include "Material.h"
#include "TankMesh.h"
#include "TestFiles.h"
#include "ToolRunner.h"
#include "Visual.h"

#include <QDir>
#include <QFile>
#include <QOpenGLFunctions_3_2_Core>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

const QString Game = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
const QString KestrelFolder = QStringLiteral("vehicles/Borvia/B01_Kestrel/");
const QStringList KestrelPaintable = {"Hull_AM.dds", "Chassis_AM.dds", "Turret_01_AM.dds",
                                      "Gun_01_AM.dds"};
const QColor Sand(190, 165, 110); // Borvia's diffuse colour
const QColor Paint(255, 0, 255);  // the test's pattern colour
const QColor OldBake(0, 0, 255);  // a file already in the mod folder

// The base level of a DDS file as ImageMagick, which shares no code with
// Ferrox, decodes it; null if it can't.
QImage decodedByImageMagick(const QString& path)
{
    QProcess convert;
    convert.start(QStringLiteral("convert"), {path + "[0]", QStringLiteral("png:-")});
    if (!convert.waitForFinished(60000) || convert.exitCode() != 0)
        return QImage();
    return QImage::fromData(convert.readAllStandardOutput(), "PNG");
}

QString compressionOf(const QString& path)
{
    QProcess identify;
    identify.start(QStringLiteral("identify"), {QStringLiteral("-verbose"), path});
    identify.waitForFinished(60000);
    for (const QString& line : QString::fromUtf8(identify.readAllStandardOutput()).split('\n'))
        if (line.trimmed().startsWith("Compression:"))
            return line.section(':', 1).trimmed();
    return QString();
}

int mipCountOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray header = file.read(32);
    return header.size() < 32 ? 0 : qFromLittleEndian<quint32>(header.constData() + 28);
}

class CamoBakeTest : public SampleTankLoaderTest
{
protected:
    CamoBakeTest()
    {
        if (scene.settings)
            scene.settings->modPath = mod.path();
    }
    void SetUp() override
    {
        SampleTankLoaderTest::SetUp();
        if (IsSkipped())
            return;
        if (QStandardPaths::findExecutable("convert").isEmpty())
            GTEST_SKIP() << "ImageMagick's convert is not installed";
        // The catalogues' patterns go to the camouflage loader: read again.
        camo = std::make_unique<CamoLoader>();
        database.rebuildDatabase();
    }
    void TearDown() override
    {
        if (scene.ready()) {
            scene.gl.context.makeCurrent(&scene.gl.surface);
            glFunctions()->glDeleteTextures(1, &pattern);
        }
        camo.reset();
        SampleTankLoaderTest::TearDown();
    }
    // The vehicle with the overlay on and a pattern of one full channel
    // painted in Paint: every texel the mask lets through shows it.
    void load(const QString& name)
    {
        ASSERT_TRUE(loader->load(name));
        ASSERT_FALSE(camo->texture.isEmpty());
        camo->enabled = true;
        QOpenGLFunctions_3_2_Core* gl = glFunctions();
        const uchar red[4] = {255, 0, 0, 0};
        gl->glGenTextures(1, &pattern);
        gl->glBindTexture(GL_TEXTURE_2D, pattern);
        gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, red);
        gl->glGenerateMipmap(GL_TEXTURE_2D);
        camo->textureId = pattern;
        camo->colors = {Vector4{255, 0, 255, 255}, Vector4{0, 0, 0, 0}, Vector4{0, 0, 0, 0},
                        Vector4{0, 0, 0, 0}};
        camo->tiling = {1, 1, 0, 0};
    }
    QString modFile(const QString& name) const
    {
        return QDir::toNativeSeparators(mod.path() + "/" + KestrelFolder + name);
    }
    // The mask is white with black 8-texel blocks where (x / 8 + y / 8) % 3
    // is 0, at a quarter (the gun: half) of the diffuse texture's size.
    void expectBaked(const QString& name, const QColor& excluded)
    {
        SCOPED_TRACE(name.toStdString());
        const QString path = modFile(name);
        EXPECT_EQ(compressionOf(path), "DXT1");
        const QImage image = decodedByImageMagick(path);
        ASSERT_FALSE(image.isNull());
        const int block = image.width() / 4;
        EXPECT_EQ(mipCountOf(path), int(std::log2(image.width())) + 1);
        EXPECT_PIXEL(image, block / 2, block / 2, excluded, 8);
        EXPECT_PIXEL(image, block + block / 2, block / 2, Paint, 8);
        EXPECT_PIXEL(image, block / 2, block + block / 2, Paint, 8);
    }

    QTemporaryDir mod;
    std::unique_ptr<CamoLoader> camo;
    unsigned int pattern = 0;
};

TEST_F(CamoBakeTest, EveryPaintableTextureIsBakedUnderTheModFolderAndKeepsExcludedTexels)
{
    // An earlier result in the mod folder, which the vehicle's textures
    // then come from: it must not be the source of the new one.
    QDir().mkpath(mod.path() + "/" + KestrelFolder);
    const QByteArray blue = QByteArray("\xff\0\0\xff", 4).repeated(128 * 128);
    ASSERT_TRUE(TextureLoader::writeDds(modFile("Hull_AM.dds"), blue.constData(), 128, 128, true));
    load("Kestrel");
    const CamoBakeReport report = exportCamoBake();
    QStringList expected;
    for (const QString& name : KestrelPaintable)
        expected.append(modFile(name));
    EXPECT_EQ(report.written, expected);
    EXPECT_TRUE(report.failed.isEmpty());
    ASSERT_EQ(boxes.boxes.size(), 2);
    EXPECT_EQ(boxes.boxes[0].text,
              "WARNING! " + modFile("Hull_AM.dds") +
                  " already exists.\nAre you sure you want to overwrite this file?");
    EXPECT_EQ(boxes.boxes[1].text, "Camouflage bake export complete.");
    for (const QString& name : KestrelPaintable)
        expectBaked(name, Sand);
}

TEST_F(CamoBakeTest, ARefusedOverwriteKeepsThatFileAndTheBakeGoesOn)
{
    load("Kestrel");
    ASSERT_EQ(bakeCamouflage().written.size(), 4);
    QFile::remove(modFile("Gun_01_AM.dds"));
    QFile chassis(modFile("Chassis_AM.dds"));
    ASSERT_TRUE(chassis.open(QIODevice::WriteOnly));
    chassis.write("kept");
    chassis.close();
    camo->colors[0] = {0, 255, 0, 255};
    int prompts = 0;
    setMessageBoxHandler([&prompts](const MessageBoxRequest& request) {
        const bool prompt = request.buttons.testFlag(QMessageBox::Cancel);
        // Cancel the second prompt (the chassis) only.
        return int(prompt && ++prompts == 2 ? QMessageBox::Cancel : QMessageBox::Ok);
    });
    const CamoBakeReport report = bakeCamouflage();
    setMessageBoxHandler({});
    EXPECT_EQ(prompts, 3); // the gun's file was gone: no prompt
    EXPECT_EQ(report.refused, QStringList{modFile("Chassis_AM.dds")});
    EXPECT_EQ(report.written.size(), 3);
    ASSERT_TRUE(chassis.open(QIODevice::ReadOnly));
    EXPECT_EQ(chassis.readAll(), "kept");
    EXPECT_PIXEL(decodedByImageMagick(modFile("Gun_01_AM.dds")), 24, 8, QColor(0, 255, 0), 8);
}

TEST_F(CamoBakeTest, NothingIsBakedOutsideTheIntactStateOrForUnmatchedMasks)
{
    const struct
    {
        const char* tank;
        int mode;
        QString box;
    } cases[] = {
        {"Kestrel", Destroyed, "Camo bake is only available in UnDamaged mode."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tank);
        load(c.tank);
        loader->damageMode = c.mode;
        boxes.boxes.clear();
        const CamoBakeReport report = exportCamoBake();
        EXPECT_FALSE(report.started);
        ASSERT_EQ(boxes.boxes.size(), 1);
        EXPECT_EQ(boxes.boxes[0].text, c.box);
        EXPECT_TRUE(QDir(mod.path() + "/vehicles").isEmpty() ||
                    QDir(mod.path() + "/vehicles/Borvia/B01_Kestrel").isEmpty());
        glFunctions()->glDeleteTextures(1, &pattern);
        pattern = 0;
    }
}

TEST_F(CamoBakeTest, ExportsCheckTheirPreconditionsAndThePatternComesFromTheArchivesOnly)
{
    // Refusals without a vehicle or the overlay: tests/ui, the export buttons.
    const auto lastBox = [this] {
        return boxes.boxes.isEmpty() ? QString() : boxes.boxes.last().text;
    };
    ASSERT_TRUE(loader->load("Kestrel"));
    camo->enabled = true;
    scene.settings->modPath.clear();
    EXPECT_TRUE(exportCamoPattern().isEmpty());
    EXPECT_EQ(lastBox(), "You must select a mod folder in the application preferences.");
    scene.settings->modPath = mod.path();

    const QString patternPath = "vehicles/camouflage/borvia/Summer_01.dds";
    EXPECT_EQ(camo->texture, patternPath);
    const QString written = exportCamoPattern();
    EXPECT_EQ(written, QDir::toNativeSeparators(mod.path() + "/" + patternPath));
    std::unique_ptr<QIODevice> original(scene.files->openArchiveFile(patternPath));
    QFile copy(written);
    ASSERT_TRUE(original && copy.open(QIODevice::ReadOnly));
    EXPECT_EQ(copy.readAll(), original->readAll());
    EXPECT_EQ(lastBox(), "Export completed.");

    // A pattern that lies only in the mod folder is not found.
    camo->texture = "vehicles/camouflage/borvia/Only_In_Mod.dds";
    QFile::copy(written, mod.path() + "/" + camo->texture);
    EXPECT_TRUE(exportCamoPattern().isEmpty());
    EXPECT_EQ(lastBox(), "Failed to find: " + camo->texture + " in any zip archives.");
}

// Which groups of the vehicle's parts show the camouflage after a frame.
TEST_F(CamoBakeTest, PartsShowTheCamouflageOnlyIntactAndNotOnTracksBottomsOrEquipment)
{
    load("Kestrel");
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    scene.gl.makeTarget(16, 16);
    const auto groupsOf = [this](int part) {
        QList<Material*> materials;
        for (const RenderSet* set : loader->mesh(part, loader->damageMode)->visual->renderSets)
            for (const RenderGeometry* geometry : set->geometries)
                for (const GroupMaterials* group : geometry->groups)
                    materials += group->materials;
        return materials;
    };
    const auto camouflaged = [&](int part, const QString& rename) {
        Material* material = groupsOf(part).first();
        if (!rename.isEmpty())
            material->name = rename;
        material->camoEnabled = !material->camoEnabled;
        loader->render(1);
        return material->camoEnabled;
    };
    const struct
    {
        int part;
        const char* rename;
        int mode;
        bool overlay;
        bool shown;
    } cases[] = {
        {TankLoader::HullPart, "", Intact, true, true},
        {TankLoader::TurretPart, "", Intact, true, true},
        {TankLoader::GunPart, "", Intact, true, true},
        // The Kestrel has no vehicle mask, so its chassis has none.
        {TankLoader::ChassisPart, "", Intact, true, false},
        {TankLoader::HullPart, "hull_bottom", Intact, true, false},
        {TankLoader::HullPart, "tracks", Intact, true, false},
        {TankLoader::HullPart, "equipment_box", Intact, true, false},
        {TankLoader::HullPart, "Track", Intact, true, true}, // case counts
        {TankLoader::HullPart, "hull", Intact, false, false},
        {TankLoader::HullPart, "", Destroyed, true, false},
        {TankLoader::TurretPart, "", Destroyed, true, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.part) + " " + c.rename + " " + std::to_string(c.mode));
        loader->damageMode = c.mode;
        camo->enabled = c.overlay;
        EXPECT_EQ(camouflaged(c.part, c.rename), c.shown);
    }
    EXPECT_EQ(gl->glGetError(), GLenum(GL_NO_ERROR));
}

TEST(CamoTool, BakeRefusesTheGameFolderAndCamoListsTheCatalogues)
{
    const QString resources = Game + "/ferrox-resources.cfg";
    const ToolResult refused =
        runTool({"bake", Game, "Kestrel", "--mod", Game + "/res/mods", "--resources", resources});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains("never writes into the game folder")) << refused.err.data();
    EXPECT_FALSE(QFileInfo::exists(Game + "/res/mods"));

    const ToolResult listed = runTool({"camo", Game, "--resources", resources});
    EXPECT_EQ(listed.exitCode, 0) << listed.err.data();
    const QString out = QString::fromUtf8(listed.out);
    EXPECT_TRUE(out.contains("Caldera: 6 patterns")) << out.toStdString();
    const ToolResult hostile = runTool(QStringList{"camo", HostileGame} + hostileLists());
    EXPECT_TRUE(hostile.out.contains("No Catalogue: no camouflage catalogue"))
        << hostile.out.data();
    EXPECT_TRUE(out.contains("Drevnia: 5 patterns\n  summer\tdrevnia_summer_2\t"
                             "vehicles/camouflage/drevnia/Summer_02.dds\n"
                             "    colours: 60 100 40 255 | 110 100 90 255 | 60 40 30 200 | "
                             "20 50 20 128\n"
                             "    tiling: d02_ironmoth 1 2 0 0, d03_zhuk 1.25 2 0 0, "
                             "d04_gorge 1.5 2 0 0\n"))
        << out.toStdString();
}

// Fewer masks than paintable maps: the bake refuses the vehicle and writes
// nothing; the sound vehicle beside it bakes.
TEST(CamoTool, BakeRefusesAVehicleWhoseMasksDoNotMatchItsMaps)
{
    QTemporaryDir mod;
    const ToolResult refused =
        runTool(QStringList{"bake", HostileGame, "Mask Count Mismatch", "--mod", mod.path()} +
                hostileLists());
    if (noOpenGl(refused))
        GTEST_SKIP() << "no OpenGL 3.2 core context";
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains(
        "This tank is currently not supported by the camouflage baking system.\nAborting!"))
        << refused.err.data();
    EXPECT_TRUE(filesBelow(mod.path()).isEmpty());
    const ToolResult baked = runTool(
        QStringList{"bake", HostileGame, "Sound Vehicle", "--mod", mod.path()} + hostileLists());
    EXPECT_EQ(baked.exitCode, 0) << baked.err.data();
    EXPECT_EQ(filesBelow(mod.path()).size(), 3);
}

TEST(CamoTool, RenderDrawsTheChosenPatternOnTheVehicle)
{
    QTemporaryDir out;
    const QStringList common = {
        "render",  Game,          "Kestrel",     "--size",
        "160x120", "--no-garage", "--resources", Game + "/ferrox-resources.cfg",
        "--out"};
    const ToolResult plain = runTool(common + QStringList{out.filePath("plain.png")});
    const ToolResult painted =
        runTool(common + QStringList{out.filePath("camo.png"), "--camo", "summer:1"});
    ASSERT_EQ(plain.exitCode, 0) << plain.err.data();
    ASSERT_EQ(painted.exitCode, 0) << painted.err.data();
    const QImage a(out.filePath("plain.png"));
    const QImage b(out.filePath("camo.png"));
    int changed = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            changed += !sameColour(a.pixel(x, y), QColor(b.pixel(x, y)), 12);
    EXPECT_GT(changed, 200) << saveFailedImage(b, "camo").toStdString();
    const ToolResult wrong =
        runTool(common + QStringList{out.filePath("x.png"), "--camo", "summer:7"});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_TRUE(wrong.err.contains("no row 7")) << wrong.err.data();
}

} // namespace
