// The garages: placement arithmetic, the list file's failures, and the sample
// installation's hangars loaded and drawn through the viewport.

#include "Garage.h"

#include "BufferManager.h"
#include "Camera.h"
#include "FileManager.h"
#include "ImageCheck.h"
#include "LogCapture.h"
#include "Material.h"
#include "MathChecks.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "RenderWidget.h"
#include "Settings.h"
#include "StartupError.h"
#include "StaticMesh.h"
#include "TestRoot.h"

#include <QCoreApplication>
#include <QDir>
#include <QDomDocument>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <memory>

namespace {

Vector3 transformed(const Matrix& m, const Vector3& p)
{
    Vector3 out{};
    for (int r = 0; r < 3; ++r)
        out[r] = m[r] * p[0] + m[4 + r] * p[1] + m[8 + r] * p[2] + m[12 + r];
    return out;
}

Matrix placement(const QString& xml)
{
    QDomDocument document;
    EXPECT_TRUE(document.setContent(xml));
    return garagePlacement(document.documentElement());
}

QByteArray garageFile(const QByteArray& premiumBody)
{
    return "<garages.cfg><Premium>" + premiumBody + "</Premium></garages.cfg>";
}

} // namespace

TEST(GaragePlacementTest, ScalesRotatesAndTranslatesInThatOrder)
{
    EXPECT_EQ(placement(QStringLiteral("<Mesh><File>a</File></Mesh>")), identityMatrix());
    // Empty texts leave their steps out.
    EXPECT_EQ(placement(QStringLiteral("<T><Position/><Rotation> </Rotation><Scale/></T>")),
              identityMatrix());
    // A quarter turn about the vertical axis.
    expectNear(
        transformed(placement(QStringLiteral("<T><Rotation>0 1 0 90</Rotation></T>")), {1, 0, 0}),
        {0, 0, -1});
    // Written in any order, applied to a point as scale, rotation, position.
    const Matrix m = placement(QStringLiteral("<T><Scale>2 2 2</Scale><Rotation>0 1 0 90</Rotation>"
                                              "<Position>1 2 3</Position></T>"));
    expectNear(transformed(m, {1, 0, 0}), {1, 2, 1});
}

class GarageFileTest : public testing::Test
{
protected:
    GarageFileTest()
    {
        root.enter();
        settings.gavrelPath = game.path();
    }

    TestRoot root;
    GameTree game;
    LogCapture log;
    Settings settings{QString()};
    FileManager files;
};

TEST_F(GarageFileTest, ListFileFailuresAreLoggedAndLeaveTheGarageEmpty)
{
    struct Case
    {
        const char* what;
        QByteArray list; // empty: no file
        bool basic;
        QStringList logged;
    };
    const QString archive =
        QDir::toNativeSeparators(game.path() + QStringLiteral("/res/packages/missing.pkg"));
    const Case cases[] = {
        {"no file", {}, false, {"[Info] Loading garage.", "[Error] Could not open hangar file."}},
        {"no xml",
         "<garages.cfg><Premium>",
         false,
         {"[Info] Loading garage.", "[Error] Could not set XML content: hangar."}},
        // Empty names are skipped without a word.
        {"missing archive and models",
         garageFile("<Zip>missing.pkg</Zip><Zip></Zip><Mesh><File>spaces/None/a.model</File>"
                    "</Mesh><Mesh><File></File></Mesh><Mesh/>"
                    "<Mesh><File>spaces/None/b.model</File></Mesh>"),
         false,
         {"[Info] Loading garage.", "[Warning] Failed to add zip archive for garage: " + archive,
          "[Warning] Failed to load hangar mesh: spaces/None/a.model",
          "[Warning] Failed to load hangar mesh: spaces/None/b.model"}},
        {"a garage the file does not name",
         garageFile("<Mesh><File>x.model</File></Mesh>"),
         true,
         {"[Info] Loading garage."}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        QFile::remove(root.filePath(QStringLiteral("data/garages.cfg")));
        if (!c.list.isEmpty())
            root.writeFile(QStringLiteral("data/garages.cfg"), c.list);
        log.lines.clear();
        std::unique_ptr<Garage> garage;
        if (c.basic)
            garage = std::make_unique<BasicGarage>();
        else
            garage = std::make_unique<PremiumGarage>();
        garage->load();
        EXPECT_TRUE(garage->meshes.isEmpty());
        EXPECT_EQ(garage->triangleCount(), 0);
        EXPECT_EQ(log.lines.filter(QRegularExpression(QStringLiteral("garage|hangar|\\[Error\\]"))),
                  c.logged);
    }
}

// The sample installation's hangars, through a real viewport.
class SampleGarageTest : public testing::Test
{
protected:
    void SetUp() override
    {
        root.enter();
        settings.gavrelPath = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
        settings.shaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150");
        settings.shadowMap = 512;
        settings.msaa = QStringLiteral("Disabled");
        settings.viewportColor = clearColour;
        settings.showShadows = false;
        settings.sceneSet = QStringLiteral("premium");
        if (!QDir(settings.gavrelPath).exists(QStringLiteral("res/packages/garage_premium.pkg")))
            GTEST_SKIP() << "the sample installation is not built (target sample_game)";
        widget = std::make_unique<RenderWidget>();
        widget->resize(160, 120);
        widget->show();
        if (!widget->isValid())
            QCoreApplication::processEvents();
    }
    void TearDown() override
    {
        widget.reset();
        resetStartupState();
    }

    static inline const QColor clearColour{20, 40, 160};
    TestRoot root;
    LogCapture log;
    MessageBoxRecorder boxes;
    Settings settings{QString()};
    FileManager files;
    // Made before the viewport and gone after it, as at start-up.
    BufferManager buffers;
    std::unique_ptr<RenderWidget> widget;
};

TEST_F(SampleGarageTest, BothGaragesLoadDoubleSidedModels)
{
    ASSERT_TRUE(widget->initialised);
    EXPECT_TRUE(log.lines.filter(QStringLiteral("[Warning]")).isEmpty())
        << log.lines.join(QLatin1Char('\n')).toStdString();
    for (Garage* garage : {widget->premiumGarage, widget->basicGarage}) {
        ASSERT_NE(garage, nullptr);
        EXPECT_GT(garage->meshes.size(), 1);
        EXPECT_GT(garage->triangleCount(), 0);
        int materials = 0;
        for (StaticMesh* mesh : garage->meshes)
            for (RenderSet* set : mesh->visual->renderSets)
                for (RenderGeometry* geometry : set->geometries)
                    for (GroupMaterials* group : geometry->groups)
                        for (Material* material : group->materials) {
                            EXPECT_TRUE(material->doubleSided);
                            ++materials;
                        }
        EXPECT_GT(materials, 0);
    }
    // A scene reload replaces the meshes rather than adding to them.
    const int premiumMeshes = int(widget->premiumGarage->meshes.size());
    const int premiumTriangles = widget->premiumGarage->triangleCount();
    widget->sceneReload();
    EXPECT_EQ(widget->premiumGarage->meshes.size(), premiumMeshes);
    EXPECT_EQ(widget->premiumGarage->triangleCount(), premiumTriangles);
}

TEST_F(SampleGarageTest, MeshesArePlacedByGarageTimesMesh)
{
    root.writeFile(QStringLiteral("data/garages.cfg"),
                   garageFile("<Transform><Position>1 0 0</Position></Transform>"
                              "<Zip>garage_premium.pkg</Zip><Mesh>"
                              "<File>spaces/Hangar_Premium/models/Pillar.model</File>"
                              "<Rotation>0 1 0 90</Rotation><Position>0 0 2</Position></Mesh>"));
    widget->makeCurrent();
    widget->premiumGarage->reload();
    ASSERT_EQ(widget->premiumGarage->meshes.size(), 1);
    // The mesh turns about its own position, the garage moves both.
    const Matrix& model = widget->premiumGarage->meshes[0]->model;
    expectNear(transformed(model, {1, 0, 0}), {1, 0, 1});
}

TEST_F(SampleGarageTest, ThePerspectiveViewShowsTheFloorTheOrthographicNone)
{
    widget->showGarage(false);
    widget->toggleText(true); // no overlay text over the floor
    widget->makeCurrent();
    const QImage shown = widget->renderToImage(100, 80, false);
    // The concrete is a neutral grey, nothing like the blue clear colour.
    const int green = qGreen(shown.pixel(50, 78));
    EXPECT_PIXEL(shown, 50, 78, QColor(green, green, green), 15);

    widget->showGarage(true);
    EXPECT_PIXEL(widget->renderToImage(100, 80, false), 50, 78, clearColour, 0);
    widget->showGarage(false);
    widget->cameraTypeChanged(1);
    EXPECT_PIXEL(widget->renderToImage(100, 80, false), 50, 78, clearColour, 0);
}
