#include "StaticMesh.h"

#include "Camera.h"
#include "DdsBuilder.h"
#include "GlFunctions.h"
#include "ImageCheck.h"
#include "LogCapture.h"
#include "PrimitiveParser.h"
#include "PrimitivesBuilder.h"
#include "SceneFixture.h"

#include <QImage>
#include <QOpenGLFunctions_3_2_Core>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <array>
#include <cmath>

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

    // Renders the mesh into a size x size image, from above or from `eye`.
    QImage render(StaticMesh& mesh, int size, const Vector3& eye = {0, 12, 0.001f})
    {
        scene.gl.makeTarget(size, size);
        auto* gl = glFunctions();
        gl->glViewport(0, 0, size, size);
        gl->glEnable(GL_DEPTH_TEST);
        gl->glClearColor(0, 0, 0, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        scene.matrices->projection = perspectiveMatrix(40.0f, 1.0f, 0.5f, 50.0f);
        scene.matrices->setView(lookAt(eye, {0, 0, 0}, {0, 1, 0}));
        mesh.draw(false, 1, nullptr, nullptr);
        return scene.gl.target->toImage();
    }

    // The colour of an area, averaged down to one pixel.
    static QColor mean(const QImage& image, const QRect& area)
    {
        return image.copy(area)
            .scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .pixelColor(0, 0);
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
    const QImage unlit = render(mesh, 96);
    const QColor paint = mean(unlit, {44, 44, 8, 8});
    if (!(paint.green() > paint.blue() + 25 && paint.red() > paint.blue() + 15))
        ADD_FAILURE() << "not olive: " << paint.name().toStdString() << ", saved to "
                      << saveFailedImage(unlit).toStdString();

    // Lit, no shadows: still the model, not the background, which stays
    // outside the hull.
    scene.materials->lightingMode = 0;
    const QImage lit = render(mesh, 96);
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
    EXPECT_PIXEL(render(mesh, 64), 32, 32, Qt::black, 0);

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
    render(mesh, 16);
    EXPECT_TRUE(gl->glIsEnabled(GL_CULL_FACE));
    EXPECT_TRUE(gl->glIsEnabled(GL_BLEND));
}

// A closed drum about the y axis, radius 1 and 2 high, in the processed
// form, its triangles turned counter-clockwise seen from outside.
QByteArray processedDrum()
{
    using namespace primitives;
    QList<Vertex> vertices;
    QList<quint32> indices;
    auto triangle = [&](std::array<Vertex, 3> corners, const std::array<float, 3>& outward) {
        const auto edge = [&corners](int corner, int i) {
            return corners[corner].position[i] - corners[0].position[i];
        };
        float facing = 0; // the cross product of the edges, along outward
        for (int i = 0, j = 1, k = 2; i < 3; ++i, j = (i + 1) % 3, k = (i + 2) % 3)
            facing += (edge(1, j) * edge(2, k) - edge(1, k) * edge(2, j)) * outward[i];
        if (facing < 0)
            std::swap(corners[1], corners[2]);
        for (const Vertex& corner : corners) {
            indices << quint32(vertices.size());
            vertices << corner;
        }
    };
    const int segments = 32;
    for (int i = 0; i < segments; ++i) {
        const float a0 = float(2 * M_PI * i / segments), a1 = float(2 * M_PI * (i + 1) / segments);
        const std::array<float, 3> n0{std::cos(a0), 0, std::sin(a0)},
            n1{std::cos(a1), 0, std::sin(a1)};
        const Vertex low0{{n0[0], -1, n0[2]}, n0, {0, 0}}, low1{{n1[0], -1, n1[2]}, n1, {1, 0}};
        const Vertex high0{{n0[0], 1, n0[2]}, n0, {0, 1}}, high1{{n1[0], 1, n1[2]}, n1, {1, 1}};
        const std::array<float, 3> side{n0[0] + n1[0], 0, n0[2] + n1[2]};
        triangle({low0, low1, high1}, side);
        triangle({low0, high1, high0}, side);
        for (const float y : {-1.0f, 1.0f}) {
            const Vertex centre{{0, y, 0}, {0, y, 0}, {0.5f, 0.5f}};
            triangle({centre, Vertex{{n0[0], y, n0[2]}, {0, y, 0}, {0, 0}},
                      Vertex{{n1[0], y, n1[2]}, {0, y, 0}, {1, 0}}},
                     {0, y, 0});
        }
    }
    const quint32 triangles = quint32(indices.size() / 3);
    return file({{"Drum.vertices", xyznuvpcChunk(vertices)},
                 {"Drum.indices",
                  indexChunk(indices, {{0, qint32(triangles), 0, qint32(vertices.size())}})},
                 {"colour", processedHeader("BPVScolour", "colour", quint32(vertices.size())) +
                                QByteArray(4 * vertices.size(), '\xff')},
                 {"bsp2", QByteArray(24, '\1')},
                 {"bsp2_materials", QByteArray("default")}});
}

TEST_F(StaticMeshTest, ProcessedModelIsBrighterOnTheSideFacingTheLight)
{
    GameTree game;
    scene.settings->modPath = game.path() + QLatin1Char('/');
    scene.settings->showShadows = false;
    game.writeFile(QStringLiteral("drum/Drum.primitives_processed"), processedDrum());
    game.writeFile(QStringLiteral("drum/Drum.dds"), dxt1Dds(4, 4));
    game.writeFile(
        QStringLiteral("drum/Drum.visual_processed"),
        "<Drum.visual><node><identifier>Scene Root</identifier></node><renderSet>"
        "<node>Scene Root</node><geometry><vertices>Drum.vertices</vertices>"
        "<primitive>Drum.indices</primitive><stream>colour</stream><primitiveGroup>0<material>"
        "<fx>shaders/std_effects/lightonly.fx</fx>"
        "<property>diffuseMap<Texture>drum/Drum.dds</Texture></property>"
        "</material></primitiveGroup></geometry></renderSet></Drum.visual>");
    LogCapture log;
    StaticMesh mesh;
    ASSERT_TRUE(mesh.load(QStringLiteral("drum/Drum.model"), identityMatrix()));
    EXPECT_EQ(mesh.visual->path, QStringLiteral("drum/Drum.visual_processed"));
    // The colour stream and the bsp2 chunks are taken without a word.
    EXPECT_TRUE(log.lines.filter(QRegularExpression("^\\[(Warning|Error)\\]")).isEmpty())
        << log.lines.join('\n').toStdString();

    // Seen from the front (+z), lit from +x, then from -x: the side towards
    // the light is the brighter one. Normals that lost their mirroring or
    // were read as packed words would light the wrong side or neither.
    for (const float side : {1.0f, -1.0f}) {
        SCOPED_TRACE(side);
        scene.light.position = {20 * side, 0, 0};
        const QImage image = render(mesh, 96, {0, 0, 8});
        auto brightness = [&image](int x) { return qGray(mean(image, {x - 2, 40, 4, 16}).rgb()); };
        const int lit = brightness(side > 0 ? 58 : 38);
        const int shaded = brightness(side > 0 ? 38 : 58);
        if (!(lit > shaded + 20 && shaded > 0))
            ADD_FAILURE() << "lit " << lit << ", shaded " << shaded << ", saved to "
                          << saveFailedImage(image).toStdString();
    }
}

} // namespace
