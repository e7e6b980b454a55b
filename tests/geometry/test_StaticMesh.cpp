#include "StaticMesh.h"

#include "Camera.h"
#include "GlFunctions.h"
#include "ImageCheck.h"
#include "LogCapture.h"
#include "PrimitiveParser.h"
#include "PrimitivesBuilder.h"
#include "SceneFixture.h"

#include <QImage>
#include <QOpenGLFunctions_3_2_Core>

#include <gtest/gtest.h>

namespace {

const QString sampleGame = QStringLiteral(FERROX_SAMPLE_GAME_DIR);
const QString talonHull = QStringLiteral("vehicles/Ardenia/A01_Talon/normal/lod0/Hull.model");

class StaticMeshTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!scene.ready())
            GTEST_SKIP() << "no OpenGL 3.2 core context";
    }

    // Renders the mesh from above into a size x size image.
    QImage renderFromAbove(StaticMesh& mesh, int size)
    {
        scene.gl.makeTarget(size, size);
        auto* gl = glFunctions();
        gl->glViewport(0, 0, size, size);
        gl->glEnable(GL_DEPTH_TEST);
        gl->glClearColor(0, 0, 0, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        scene.matrices->projection = perspectiveMatrix(40.0f, 1.0f, 0.5f, 50.0f);
        scene.matrices->setView(lookAt({0, 12, 0.001f}, {0, 0, 0}, {0, 1, 0}));
        mesh.draw(false, 1, nullptr, nullptr);
        return scene.gl.target->toImage();
    }

    SceneFixture scene{sampleGame, sampleGame + QStringLiteral("/ferrox-resources.cfg")};
};

TEST_F(StaticMeshTest, SampleHullShowsItsTextureWhereItStands)
{
    StaticMesh mesh;
    ASSERT_TRUE(mesh.load(talonHull, identityMatrix()));

    // Unlit: the diffuse texture's own colour, averaged down to one pixel.
    // Ardenia's paint is olive.
    scene.materials->lightingMode = 1;
    const QImage unlit = renderFromAbove(mesh, 96)
                             .copy(44, 44, 8, 8)
                             .scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QColor paint = unlit.pixelColor(0, 0);
    if (!(paint.green() > paint.blue() + 25 && paint.red() > paint.blue() + 15))
        ADD_FAILURE() << "not olive: " << paint.name().toStdString() << ", saved to "
                      << saveFailedImage(unlit).toStdString();

    // Lit, no shadows: still the model, not the background, which stays
    // outside the hull.
    scene.materials->lightingMode = 0;
    const QImage lit = renderFromAbove(mesh, 96);
    if (qGray(lit.pixel(48, 48)) <= 20)
        ADD_FAILURE() << "background at the centre, saved to "
                      << saveFailedImage(lit).toStdString();
    EXPECT_PIXEL(lit, 1, 1, Qt::black, 0);
}

TEST_F(StaticMeshTest, PlacementMovesTheModelAndSurvivesAReload)
{
    StaticMesh mesh;
    Matrix far = identityMatrix();
    far[12] = 40; // off to the side, out of the view
    ASSERT_TRUE(mesh.load(talonHull, far));
    const int triangles = mesh.visual->triangleCount();
    ASSERT_TRUE(mesh.reload());
    EXPECT_EQ(mesh.model, far);
    EXPECT_EQ(mesh.visual->triangleCount(), triangles);
    scene.materials->lightingMode = 1;
    EXPECT_PIXEL(renderFromAbove(mesh, 64), 32, 32, Qt::black, 0);

    mesh.unload();
    EXPECT_TRUE(mesh.geometries.isEmpty());
    EXPECT_EQ(mesh.visual->triangleCount(), 0);

    LogCapture log;
    const QString warning = "[Warning] Failed loading: vehicles/Nowhere/Gone.primitives";
    EXPECT_FALSE(mesh.load(QStringLiteral("vehicles/Nowhere/Gone.model"), identityMatrix()));
    EXPECT_TRUE(log.contains(warning));
    log.lines.clear();
    EXPECT_FALSE(mesh.reload());
    EXPECT_TRUE(log.contains(warning));
}

TEST_F(StaticMeshTest, MeshWithoutRenderSetsLeavesGlStateAlone)
{
    // Nothing to draw: a visual with a node tree and no render set, and a
    // table with one unused chunk (an empty table is no valid file).
    GameTree game;
    StaticMesh mesh;
    scene.settings->modPath = game.path() + QLatin1Char('/');
    game.writeFile(QStringLiteral("empty/Empty.primitives"),
                   primitives::file({{"unused", "abcd"}}));
    game.writeFile(QStringLiteral("empty/Empty.visual"),
                   "<Empty.visual><node><identifier>Scene Root</identifier></node></Empty.visual>");
    ASSERT_TRUE(mesh.load(QStringLiteral("empty/Empty.model"), identityMatrix()));
    auto* gl = glFunctions();
    gl->glEnable(GL_CULL_FACE);
    gl->glEnable(GL_BLEND);
    renderFromAbove(mesh, 16);
    EXPECT_TRUE(gl->glIsEnabled(GL_CULL_FACE));
    EXPECT_TRUE(gl->glIsEnabled(GL_BLEND));
}

} // namespace
