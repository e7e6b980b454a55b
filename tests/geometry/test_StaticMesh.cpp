#include "StaticMesh.h"

#include "Camera.h"
#include "GlFunctions.h"
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

// The mean colour of a square of the image around its centre.
QColor meanCentre(const QImage& image, int half)
{
    long r = 0, g = 0, b = 0, n = 0;
    for (int y = image.height() / 2 - half; y < image.height() / 2 + half; ++y)
        for (int x = image.width() / 2 - half; x < image.width() / 2 + half; ++x) {
            const QColor c = image.pixelColor(x, y);
            r += c.red(), g += c.green(), b += c.blue(), ++n;
        }
    return QColor(int(r / n), int(g / n), int(b / n));
}

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

    // Unlit: the diffuse texture's own colour. Ardenia's paint is olive.
    scene.materials->lightingMode = 1;
    const QColor unlit = meanCentre(renderFromAbove(mesh, 96), 4);
    EXPECT_GT(unlit.green(), unlit.blue() + 25) << unlit.name().toStdString();
    EXPECT_GT(unlit.red(), unlit.blue() + 15) << unlit.name().toStdString();

    // Lit, no shadows: still the model, not the background.
    scene.materials->lightingMode = 0;
    const QImage lit = renderFromAbove(mesh, 96);
    EXPECT_GT(qGray(lit.pixel(48, 48)), 20);
    // Outside the hull the clear colour stays.
    EXPECT_EQ(lit.pixelColor(1, 1), QColor(Qt::black));
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
    EXPECT_EQ(meanCentre(renderFromAbove(mesh, 64), 4), QColor(Qt::black));

    mesh.unload();
    EXPECT_TRUE(mesh.geometries.isEmpty());
    EXPECT_TRUE(mesh.parser->chunks.isEmpty());
    EXPECT_EQ(mesh.visual->triangleCount(), 0);
}

TEST_F(StaticMeshTest, FailedLoadFailsAgainOnReloadAndExportsNothing)
{
    LogCapture log;
    const QString warning = "[Warning] Failed loading: vehicles/Nowhere/Gone.primitives";
    StaticMesh mesh;
    EXPECT_FALSE(mesh.load(QStringLiteral("vehicles/Nowhere/Gone.model"), identityMatrix()));
    EXPECT_TRUE(log.contains(warning));
    log.lines.clear();
    EXPECT_FALSE(mesh.reload());
    EXPECT_TRUE(log.contains(warning));
    EXPECT_FALSE(mesh.exportObj());
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
