#include "Visual.h"

#include "DdsBuilder.h"
#include "IndexBuffer.h"
#include "LogCapture.h"
#include "Material.h"
#include "MeshGeometry.h"
#include "PrimitiveParser.h"
#include "PrimitivesBuilder.h"
#include "SceneFixture.h"
#include "VertexBuffer.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace primitives;

const QString nodeTree =
    QStringLiteral("<node><identifier> Scene Root </identifier>"
                   "<transform><row0>2 0.5 0</row0><row1>0 3 0</row1><row2>0 0 4</row2>"
                   "<row3>1.5 2 -3</row3></transform>"
                   "<node><identifier>Hull</identifier>"
                   "<node><identifier>HP_turretJoint</identifier>"
                   "<transform><row0>1 0 0</row0><row1>0 1 0</row1><row2>0 0 1</row2>"
                   "<row3>0.25 1.5 -0.5</row3></transform></node></node>"
                   "<node><identifier>two words</identifier></node>"
                   "<other><identifier>ignored</identifier></other></node>");

QString geometry(const QString& vertices, const QString& indices, const QString& extra)
{
    return QStringLiteral("<geometry><vertices> %1 </vertices><primitive>%2</primitive>%3"
                          "</geometry>")
        .arg(vertices, indices, extra);
}

QString group(const QString& number, const QString& material = QString())
{
    return QStringLiteral("<primitiveGroup>%1<material>%2</material></primitiveGroup>")
        .arg(number, material);
}

class VisualTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!scene.ready())
            GTEST_SKIP() << "no OpenGL 3.2 core context";
    }
    void TearDown() override
    {
        visual.reset();
        qDeleteAll(geometries);
    }

    // Writes Model.primitives and Model.visual below res/ and loads them.
    bool load(const QList<Chunk>& chunks, const QString& body, bool collectUvs = false)
    {
        game.writeFile(QStringLiteral("res/models/Model.primitives"), file(chunks));
        game.writeFile(QStringLiteral("res/models/Model.visual"),
                       "<root.visual>" + body.toUtf8() + "</root.visual>");
        if (!parser.load(QStringLiteral("models/Model.model")))
            return false;
        return visual->load(&parser, QStringLiteral("models/Model.model"), geometries, uvGroups,
                            collectUvs, true);
    }

    GameTree game;
    SceneFixture scene{game.path()};
    PrimitiveParser parser;
    std::unique_ptr<Visual> visual = std::make_unique<Visual>();
    QVector<MeshGeometry*> geometries;
    QVector<UvGroup> uvGroups;
};

QList<Chunk> oneQuadGrid(int cells, float u0, float span, const QList<Group>& groups)
{
    QList<Vertex> vertices;
    QList<quint32> indices;
    quadGrid(cells, u0, span, vertices, indices);
    return {{"Body.vertices", xyznuvChunk(vertices)},
            {"Body.indices", indexChunk(indices, groups)}};
}

TEST_F(VisualTest, NodeTreeKeepsTranslationAndScaleAndRenderSetsFindNodes)
{
    const QList<Chunk> chunks = oneQuadGrid(2, 0, 1, {{0, 8, 0, 9}});
    ASSERT_TRUE(
        load(chunks, nodeTree + QStringLiteral("<renderSet><node>hp_TURRETjoint</node>"
                                               "<node>two words</node><node>nowhere</node>"
                                               "<node>scene root</node>%1</renderSet>")
                                    .arg(geometry("Body.vertices", "Body.indices", group("0")))));

    const Node* root = visual->rootNode;
    EXPECT_EQ(root->identifier, QStringLiteral("Scene Root"));
    // The 0.5 of row0 is a rotation/shear term: dropped.
    EXPECT_EQ(root->transform, (Matrix{2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, -1.5f, 2, -3, 1}));
    ASSERT_EQ(root->children.size(), 2);

    const Node* joint = root->find(QStringLiteral("HP_TURRETJOINT"));
    ASSERT_NE(joint, nullptr);
    EXPECT_EQ(joint->translation, (Vector3{-0.25f, 1.5f, -0.5f}));

    ASSERT_EQ(visual->renderSets.size(), 1);
    const RenderSet* set = visual->renderSets.first();
    // Found case-insensitively; a name with blanks loses them and is not
    // found; an unknown name and the root's own name give the root.
    EXPECT_EQ(set->nodes, (QList<Node*>{const_cast<Node*>(joint), visual->rootNode,
                                        visual->rootNode, visual->rootNode}));
    ASSERT_EQ(geometries.size(), 1);
    EXPECT_EQ(geometries.first()->positions.size(), 9);
}

TEST_F(VisualTest, GroupsAndTriangleCount)
{
    QList<Chunk> chunks = oneQuadGrid(2, 0, 1, {{0, 4, 0, 9}, {12, 4, 0, 9}, {24, 1, 0, 9}});
    LogCapture log;
    ASSERT_TRUE(load(
        chunks, QStringLiteral("<renderSet>%1</renderSet>")
                    .arg(geometry("Body.vertices", "Body.indices",
                                  group("1", QStringLiteral("<identifier>m7 x9</identifier>")) +
                                      group(" 0 ") + group("5") + group("none")))));

    const RenderGeometry* rendered = visual->renderSets.first()->geometries.first();
    ASSERT_EQ(rendered->groups.size(), 4);
    // The number in front of the material counts, not the digits inside it.
    EXPECT_EQ(rendered->groups[0]->groupIndex, 1);
    EXPECT_EQ(rendered->groups[0]->materials[0]->name, QStringLiteral("m7 x9"));
    EXPECT_EQ(rendered->groups[1]->groupIndex, 0);
    EXPECT_FALSE(rendered->drawable(rendered->groups[3]->groupIndex));
    // Group 2 starts at index 24 of 24: it reaches past the data.
    EXPECT_EQ(rendered->validGroups, (QList<bool>{true, true, false}));
    EXPECT_EQ(log.lines.filter(QLatin1String("primitive group 2 of Body")).size(), 1);
    // Every group of the index buffer counts, named or not.
    EXPECT_EQ(visual->triangleCount(), 9);

    visual->unload();
    EXPECT_EQ(visual->triangleCount(), 0);
}

TEST_F(VisualTest, MissingFilesChunksAndStreamsAreSkippedWithWarnings)
{
    LogCapture log;
    ASSERT_TRUE(load(oneQuadGrid(1, 0, 1, {{0, 2, 0, 4}}),
                     QStringLiteral("<renderSet>%1%2%3</renderSet>")
                         .arg(geometry("Missing.vertices", "Body.indices", group("0")),
                              geometry("Body.vertices", "Body.indices",
                                       QStringLiteral("<stream>uv2</stream>") + group("0")),
                              geometry("Body.vertices", "Body.indices",
                                       QStringLiteral("<stream>colour</stream>")))));

    const RenderSet* set = visual->renderSets.first();
    ASSERT_EQ(set->geometries.size(), 2);
    EXPECT_TRUE(
        log.contains(QStringLiteral("[Warning] Could not locate data chunk: Missing.vertices")));
    EXPECT_TRUE(log.contains(
        QStringLiteral("[Warning] Visual file: models/Model.visual contains a stream tag: uv2 but "
                       "no stream chunk exists by that name in the primitive file.")));
    EXPECT_TRUE(log.lines.filter(QLatin1String("stream tag: colour")).isEmpty());
}

TEST_F(VisualTest, UvGroupsWrapLargeCoordinatesAndSkipSmallAndTrackGroups)
{
    // Any valid texture lets its name reach the cache.
    for (const char* name : {"res/maps/Hull_AM.dds", "res/maps/Track_AM.dds"})
        game.writeFile(name, dxt1Dds(4, 4));
    // A 3 x 3 grid (18 triangles) with uvs from 0.5 to 2.0, split into
    // groups of 10, 9 and (tracks) 18 triangles; only the first is collected.
    const QList<Chunk> chunks =
        oneQuadGrid(3, 0.5f, 1.5f, {{0, 10, 0, 16}, {27, 9, 0, 16}, {0, 18, 0, 16}});
    const QString hull =
        QStringLiteral("<property>diffuseMap<Texture>maps/Hull_AM.tga</Texture></property>");
    const QString track =
        QStringLiteral("<property>diffuseMap<Texture>maps/Track_AM.dds</Texture></property>");
    ASSERT_TRUE(load(chunks,
                     QStringLiteral("<renderSet>%1</renderSet>")
                         .arg(geometry("Body.vertices", "Body.indices",
                                       group("0", hull) + group("1", hull) + group("2", track))),
                     true));

    ASSERT_EQ(uvGroups.size(), 1);
    ASSERT_EQ(uvGroups.first().uvs.size(), 30);
    for (const Vector2& uv : uvGroups.first().uvs)
        EXPECT_TRUE(uv[0] >= 0 && uv[0] <= 1 && uv[1] <= 1) << uv[0] << ", " << uv[1];
    // Vertex 3 of the first row has (2.0, 0.5): wrapped to (0, 0.5); vertex
    // 1 has (1.0, 0.5) and stays, exactly 1 being inside.
    const MeshGeometry& geometry = *geometries.first();
    EXPECT_EQ(geometry.uvs[3], (Vector2{2.0f, 0.5f}));
    EXPECT_TRUE(uvGroups.first().uvs.contains(Vector2{0.0f, 0.5f}));
}

} // namespace
