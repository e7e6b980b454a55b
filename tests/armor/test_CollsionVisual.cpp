// The collision model's visual against the regular one, on the same files.

#include "CollsionVisual.h"

#include "LogCapture.h"
#include "MeshGeometry.h"
#include "PrimitiveParser.h"
#include "PrimitivesBuilder.h"
#include "SceneFixture.h"

#include <gtest/gtest.h>

#include <memory>

using namespace primitives;

// A geometry naming a "uv2" stream that the primitives lack: the regular
// visual warns of it, the collision visual, which never reads a second uv,
// says nothing of it.
TEST(CollsionVisualTest, AMissingUvStreamIsNoConcernOfTheCollisionModel)
{
    GameTree game;
    SceneFixture scene{game.path()};
    if (!scene.ready())
        GTEST_SKIP() << "no OpenGL 3.2 core context";
    QList<Vertex> vertices;
    QList<quint32> indices;
    quadGrid(1, 0, 1, vertices, indices);
    game.writeFile("res/models/Plates.primitives",
                   file({{"Plates.vertices", xyznuvChunk(vertices)},
                         {"Plates.indices", indexChunk(indices, {{0, 2, 0, 4}})}}));
    game.writeFile("res/models/Plates.visual",
                   "<root.visual><renderSet><geometry><vertices>Plates.vertices</vertices>"
                   "<primitive>Plates.indices</primitive><stream>uv2</stream>"
                   "<primitiveGroup>0<material><identifier>armor_1</identifier></material>"
                   "</primitiveGroup></geometry></renderSet></root.visual>");

    const std::pair<const char*, bool> cases[] = {{"regular", true}, {"collision", false}};
    for (const auto& [kind, warns] : cases) {
        SCOPED_TRACE(kind);
        std::unique_ptr<Visual> visual =
            warns ? std::make_unique<Visual>() : std::make_unique<CollsionVisual>();
        PrimitiveParser parser;
        QVector<MeshGeometry*> geometries;
        QVector<UvGroup> uvGroups;
        LogCapture log;
        ASSERT_TRUE(parser.load("models/Plates.model"));
        ASSERT_TRUE(
            visual->load(&parser, "models/Plates.model", geometries, uvGroups, false, false));
        EXPECT_EQ(geometries.value(0) ? geometries[0]->positions.size() : 0, 4);
        EXPECT_EQ(log.lines.filter("uv2").isEmpty(), !warns) << log.lines.join('\n').toStdString();
        visual.reset();
        qDeleteAll(geometries);
    }
}
