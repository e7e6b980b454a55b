// The garages: placement arithmetic, the list file's failures, and the sample
// installation's hangars loaded and drawn through the viewport.

#include "Garage.h"

#include "BufferManager.h"
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
// Where the matrix takes the point (1, 0, 0): its first column plus its last.
Vector3 onePlusX(const Matrix& m)
{
    return {m[0] + m[12], m[1] + m[13], m[2] + m[14]};
}

QByteArray garageFile(const QByteArray& premiumBody)
{
    return "<garages.cfg><Premium>" + premiumBody + "</Premium></garages.cfg>";
}
} // namespace

TEST(GaragePlacementTest, ScalesRotatesAndTranslatesInThatOrder)
{
    // Written in any order, applied to a point as scale, rotation, position;
    // empty texts leave their steps out.
    const std::pair<const char*, Vector3> cases[] = {
        {"<Mesh><File>a</File></Mesh>", {1, 0, 0}},
        {"<T><Position/><Rotation> </Rotation><Scale/></T>", {1, 0, 0}},
        {"<T><Rotation>0 1 0 90</Rotation></T>", {0, 0, -1}},
        {"<T><Scale>2 2 2</Scale><Rotation>0 1 0 90</Rotation><Position>1 2 3</Position></T>",
         {1, 2, 1}}};
    for (const auto& [xml, point] : cases) {
        QDomDocument document;
        ASSERT_TRUE(document.setContent(QString::fromLatin1(xml)));
        expectNear(onePlusX(garagePlacement(document.documentElement())), point);
    }
}

TEST(GarageFileTest, ListFileFailuresAreLoggedAndLeaveTheGarageEmpty)
{
    TestRoot root;
    root.enter();
    GameTree game;
    LogCapture log;
    Settings settings{QString()};
    settings.gavrelPath = game.path();
    FileManager files;
    const QString archive = QDir::toNativeSeparators(game.packagePath("missing.pkg"));
    const QString loading = "[Info] Loading garage.";
    // The list, empty for no file; whether the basic garage reads it; what is
    // logged. Empty names are skipped without a word.
    const std::tuple<const char*, QByteArray, bool, QStringList> cases[] = {
        {"no file", {}, false, {loading, "[Error] Could not open hangar file."}},
        {"no xml",
         "<garages.cfg><Premium>",
         false,
         {loading, "[Error] Could not set XML content: hangar."}},
        {"missing archive and models",
         garageFile("<Zip>missing.pkg</Zip><Zip></Zip><Mesh><File>spaces/None/a.model</File>"
                    "</Mesh><Mesh><File></File></Mesh><Mesh/>"
                    "<Mesh><File>spaces/None/b.model</File></Mesh>"),
         false,
         {loading, "[Warning] Failed to add zip archive for garage: " + archive,
          "[Warning] Failed to load hangar mesh: spaces/None/a.model",
          "[Warning] Failed to load hangar mesh: spaces/None/b.model"}},
        {"a garage the file does not name",
         garageFile("<Mesh><File>x.model</File></Mesh>"),
         true,
         {loading}},
    };
    for (const auto& [what, list, basic, logged] : cases) {
        SCOPED_TRACE(what);
        QFile::remove(root.filePath("data/garages.cfg"));
        if (!list.isEmpty())
            root.writeFile("data/garages.cfg", list);
        log.lines.clear();
        std::unique_ptr<Garage> garage;
        if (basic)
            garage = std::make_unique<BasicGarage>();
        else
            garage = std::make_unique<PremiumGarage>();
        garage->load();
        EXPECT_TRUE(garage->meshes.isEmpty());
        EXPECT_EQ(garage->triangleCount(), 0);
        EXPECT_EQ(log.lines.filter(QRegularExpression("garage|hangar|\\[Error\\]")), logged);
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
        widget = std::make_unique<RenderWidget>();
        widget->resize(160, 120);
        widget->show(); // QOpenGLWidget starts its GL while it is shown
        ASSERT_TRUE(widget->initialised);
    }
    ~SampleGarageTest() override
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

TEST_F(SampleGarageTest, BothGaragesLoadDoubleSidedModelsAndShowInThePerspectiveViewOnly)
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
    widget->cameraTypeChanged(0);

    EXPECT_TRUE(log.lines.filter("[Warning]").isEmpty()) << log.lines.join('\n').toStdString();
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
    const int triangles = widget->premiumGarage->triangleCount();
    widget->sceneReload();
    EXPECT_EQ(widget->premiumGarage->triangleCount(), triangles);

    // The mesh turns about its own position, the garage moves both.
    root.writeFile("data/garages.cfg",
                   garageFile("<Transform><Position>1 0 0</Position></Transform>"
                              "<Zip>garage_premium.pkg</Zip><Mesh>"
                              "<File>spaces/Hangar_Premium/models/Pillar.model</File>"
                              "<Rotation>0 1 0 90</Rotation><Position>0 0 2</Position></Mesh>"));
    widget->makeCurrent();
    widget->premiumGarage->reload();
    ASSERT_EQ(widget->premiumGarage->meshes.size(), 1);
    expectNear(onePlusX(widget->premiumGarage->meshes[0]->model), {1, 0, 1});
}
