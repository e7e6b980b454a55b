// The glTF export read back by readers that are not ours: tinygltf for the
// node tree, vertices and materials, the Khronos validator and Assimp for
// every file of the sample installation.

#include "DdsBuilder.h"
#include "LoaderFixture.h"
#include "LogCapture.h"
#include "MathChecks.h"
#include "PbrMapping.h"
#include "QtPrinters.h"
#include "TankGame.h"
#include "TankMesh.h"
#include "ToolRunner.h"
#include "VehicleGltf.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <tiny_gltf.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <tuple>

using namespace tankgame;

namespace {

const char* const PartNames[] = {"Chassis", "Hull", "Turret", "Gun"};

tinygltf::Model readBack(const QString& path)
{
    tinygltf::TinyGLTF reader;
    tinygltf::Model model;
    std::string error, warning;
    const bool read = path.endsWith(QLatin1String(".glb"))
                          ? reader.LoadBinaryFromFile(&model, &error, &warning, path.toStdString())
                          : reader.LoadASCIIFromFile(&model, &error, &warning, path.toStdString());
    EXPECT_TRUE(read) << path.toStdString() << ": " << error;
    return model;
}

int nodeNamed(const tinygltf::Model& model, const char* name)
{
    for (size_t i = 0; i < model.nodes.size(); ++i)
        if (model.nodes[i].name == name)
            return int(i);
    ADD_FAILURE() << "no node " << name;
    return 0;
}

// T x R x S of a node, the quaternion turned into a matrix here rather than
// by the code under test.
Matrix localMatrix(const tinygltf::Node& node)
{
    Matrix out = identityMatrix();
    if (node.rotation.size() == 4) {
        const double x = node.rotation[0], y = node.rotation[1], z = node.rotation[2],
                     w = node.rotation[3];
        out = {float(1 - 2 * (y * y + z * z)),
               float(2 * (x * y + z * w)),
               float(2 * (x * z - y * w)),
               0,
               float(2 * (x * y - z * w)),
               float(1 - 2 * (x * x + z * z)),
               float(2 * (y * z + x * w)),
               0,
               float(2 * (x * z + y * w)),
               float(2 * (y * z - x * w)),
               float(1 - 2 * (x * x + y * y)),
               0,
               0,
               0,
               0,
               1};
    }
    if (node.scale.size() == 3)
        out = matrixProduct(
            out, scalingMatrix({float(node.scale[0]), float(node.scale[1]), float(node.scale[2])}));
    if (node.translation.size() == 3)
        out =
            matrixProduct(translationMatrix({float(node.translation[0]), float(node.translation[1]),
                                             float(node.translation[2])}),
                          out);
    return out;
}

void collectWorld(const tinygltf::Model& model, int node, const Matrix& parent,
                  QVector<Matrix>& world)
{
    world[node] = matrixProduct(parent, localMatrix(model.nodes[size_t(node)]));
    for (int child : model.nodes[size_t(node)].children)
        collectWorld(model, child, world[node], world);
}

QVector<Matrix> worldMatrices(const tinygltf::Model& model)
{
    QVector<Matrix> world(int(model.nodes.size()), identityMatrix());
    for (int root : model.scenes.at(0).nodes)
        collectWorld(model, root, identityMatrix(), world);
    return world;
}

// The elements of a float accessor, or the indices of an index accessor
// (as floats), with the accessor's own stride.
QVector<std::array<float, 4>> elements(const tinygltf::Model& model, int index)
{
    const tinygltf::Accessor& accessor = model.accessors.at(size_t(index));
    const tinygltf::BufferView& view = model.bufferViews.at(size_t(accessor.bufferView));
    const unsigned char* data =
        model.buffers.at(size_t(view.buffer)).data.data() + view.byteOffset + accessor.byteOffset;
    const int components = tinygltf::GetNumComponentsInType(accessor.type);
    const int size = tinygltf::GetComponentSizeInBytes(accessor.componentType);
    const size_t stride = view.byteStride ? view.byteStride : size_t(components * size);
    QVector<std::array<float, 4>> out;
    for (size_t i = 0; i < accessor.count; ++i) {
        std::array<float, 4> element{};
        for (int c = 0; c < components; ++c) {
            const unsigned char* at = data + i * stride + size_t(c * size);
            if (accessor.componentType == TINYGLTF_COMPONENT_TYPE_FLOAT)
                std::memcpy(&element[size_t(c)], at, 4);
            else if (accessor.componentType == TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT)
                element[size_t(c)] = float(*reinterpret_cast<const quint16*>(at));
            else
                element[size_t(c)] = float(*reinterpret_cast<const quint32*>(at));
        }
        out.append(element);
    }
    return out;
}

Vector3 xyz(const std::array<float, 4>& v)
{
    return {v[0], v[1], v[2]};
}

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

// The box tank with a metal hull whose diffuse map is missing.
class GltfBoxTankTest : protected BoxTankGame, public LoaderFixture
{
protected:
    GltfBoxTankTest() : LoaderFixture(game.path(), game.resourcesPath(), game.tankListPath()) {}
    void SetUp() override
    {
        LoaderFixture::SetUp();
        if (!scene.ready())
            return;
        game.writeVehicle(TankGame::vehicleText());
        writeRes(Folder + "Hull_GMM.dds", dxt1Dds(8, 8));
        writeRes(Folder + "Hull.visual",
                 QStringLiteral(
                     "<Hull.visual>%1<renderSet><node>hull</node><geometry><vertices>"
                     "Hull.vertices</vertices><primitive>Hull.indices</primitive><primitiveGroup>0"
                     "<material><identifier>Hull</identifier><fx>shaders/std_effects/PBS_tank.fx"
                     "</fx><property>diffuseMap<Texture>%2Missing_AM.dds</Texture></property>"
                     "<property>metallicGlossMap<Texture>%2Hull_GMM.dds</Texture></property>"
                     "</material></primitiveGroup></geometry></renderSet></Hull.visual>")
                     .arg(node("Scene Root",
                               node("hull", node("HP_turretJoint", "", transform("0.5 1.2 -0.3")))),
                          Folder)
                     .toUtf8());
        ASSERT_TRUE(loader->load(QStringLiteral("Box Tank")));
    }
    void writeRes(const QString& relative, const QByteArray& bytes)
    {
        QFile file(game.path() + "/res/" + relative);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir out;
};

// "Faces:", "Vertices:" and the like of `assimp info`.
int assimpCount(const QByteArray& info, const char* key)
{
    const QRegularExpression pattern(QLatin1String("\n") + QLatin1String(key) +
                                     QLatin1String(":\\s+(\\d+)"));
    const QRegularExpressionMatch match = pattern.match(QString::fromUtf8(info));
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

// The share of triangles whose corners, counter-clockwise, face away from
// their normals: none on a sound model, all on a mirrored one (the sample's
// crushed guns bend a few).
double backFacing(const tinygltf::Model& model)
{
    int count = 0, all = 0;
    for (const tinygltf::Mesh& mesh : model.meshes)
        for (const tinygltf::Primitive& primitive : mesh.primitives) {
            const auto p = elements(model, primitive.attributes.at("POSITION"));
            const auto n = elements(model, primitive.attributes.at("NORMAL"));
            const auto index = elements(model, primitive.indices);
            for (int i = 0; i + 2 < index.size(); i += 3) {
                const int a = int(index[i][0]), b = int(index[i + 1][0]), c = int(index[i + 2][0]);
                const Vector3 u{p[b][0] - p[a][0], p[b][1] - p[a][1], p[b][2] - p[a][2]};
                const Vector3 v{p[c][0] - p[a][0], p[c][1] - p[a][1], p[c][2] - p[a][2]};
                const Vector3 normal{n[a][0] + n[b][0] + n[c][0], n[a][1] + n[b][1] + n[c][1],
                                     n[a][2] + n[b][2] + n[c][2]};
                count += dot(cross(u, v), normal) < 0 ? 1 : 0;
                ++all;
            }
        }
    return all ? double(count) / all : 1.0;
}

// Every armour plate carries a row of `armor --table`: name, thickness,
// spacing, and the row's colour as its linear base colour.
void expectArmorOfTable(const tinygltf::Model& model, const QByteArray& table)
{
    for (const tinygltf::Material& material : model.materials) {
        const tinygltf::Value& extras = material.extras;
        const QString name = QString::fromStdString(extras.Get("armor").Get<std::string>());
        const QByteArray row = QStringLiteral("%1\t%2\t%3\t")
                                   .arg(name)
                                   .arg(extras.Get("thickness_mm").GetNumberAsDouble())
                                   .arg(extras.Get("spaced").Get<bool>() ? "spaced" : "regular")
                                   .toUtf8();
        const qsizetype at = table.indexOf(row);
        ASSERT_GE(at, 0) << row.toStdString();
        const QColor colour(QString::fromUtf8(table.mid(at + row.size(), 7)));
        const double expected[] = {colour.redF(), colour.greenF(), colour.blueF()};
        for (int c = 0; c < 3; ++c) {
            const double srgb = expected[c];
            const double linear =
                srgb <= 0.04045 ? srgb / 12.92 : std::pow((srgb + 0.055) / 1.055, 2.4);
            EXPECT_NEAR(material.pbrMetallicRoughness.baseColorFactor[size_t(c)], linear, 1e-3)
                << name.toStdString();
        }
    }
}

} // namespace

// Every vehicle of the sample's table that the program assembles, in every
// state, as .glb and as .gltf: the validator finds no error and no warning,
// Assimp reads the triangles and vertices the vehicle has, front faces look
// the way the normals do, and armour plates carry the armour table.
TEST(GltfSampleTest, EveryAssembledVehicleInEveryStatePassesTheValidatorAndAssimp)
{
    const ToolResult table = runTool({"tanks", SampleGame});
    ASSERT_EQ(table.exitCode, 0) << table.err.toStdString();
    QTemporaryDir out;
    QStringList files, assembled;
    const char* const states[] = {"intact", "destroyed", "collision"};
    for (const QByteArray& line : table.out.split('\n')) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() < 5)
            continue;
        const QString name = QString::fromUtf8(fields[4]);
        SCOPED_TRACE(name.toStdString());
        // One vehicle's runs at once: the tool's start-up is most of each.
        QList<QStringList> runs{{"tank", SampleGame, name, "--json"},
                                {"armor", SampleGame, name, "--table"}};
        QStringList vehicleFiles;
        for (const char* stateName : states)
            for (const char* suffix : {".glb", ".gltf"}) {
                vehicleFiles.append(out.filePath(QStringLiteral("%1_%2%3").arg(
                    QString::fromUtf8(fields[3]), stateName, suffix)));
                runs.append(
                    {"gltf", SampleGame, name, "--state", stateName, "--out", vehicleFiles.last()});
            }
        const QList<ToolResult> results = runTools(runs);
        const ToolResult& tank = results[0];
        if (noOpenGl(tank))
            GTEST_SKIP() << "no OpenGL";
        // A vehicle the program cannot assemble has nothing to export.
        if (tank.exitCode != 0) {
            EXPECT_TRUE(tank.err.contains("cannot assemble")) << tank.err.toStdString();
            continue;
        }
        assembled.append(name);
        const QJsonArray parts = QJsonDocument::fromJson(tank.out).object()["parts"].toArray();
        ASSERT_EQ(results[1].exitCode, 0) << results[1].err.toStdString();
        for (int k = 0; k < vehicleFiles.size(); ++k) {
            const int state = k / 2;
            const QString& file = vehicleFiles[k];
            SCOPED_TRACE(file.toStdString());
            ASSERT_EQ(results[2 + k].exitCode, 0) << results[2 + k].err.toStdString();
            files.append(file);
            const tinygltf::Model model = readBack(file);
            EXPECT_LT(backFacing(model), 0.05);
            QProcess assimp;
            assimp.start(QStringLiteral("assimp"),
                         {QStringLiteral("info"), file, QStringLiteral("--raw")});
            ASSERT_TRUE(assimp.waitForFinished(60000));
            const QByteArray info = assimp.readAllStandardOutput();
            if (state == 2) {
                // A mesh for each plate, as the two readers agree.
                size_t triangles = 0;
                for (const tinygltf::Mesh& mesh : model.meshes)
                    triangles +=
                        model.accessors.at(size_t(mesh.primitives.at(0).indices)).count / 3;
                EXPECT_EQ(assimpCount(info, "Meshes"), int(model.meshes.size()));
                EXPECT_EQ(assimpCount(info, "Faces"), int(triangles));
                expectArmorOfTable(model, results[1].out);
                continue;
            }
            int triangles = 0, vertices = 0;
            for (const QJsonValue& part : parts) {
                if (part["state"].toInt() != state)
                    continue;
                triangles += part["triangles"].toInt();
                vertices += part["vertices"].toInt();
            }
            EXPECT_EQ(assimpCount(info, "Faces"), triangles) << info.toStdString();
            EXPECT_EQ(assimpCount(info, "Vertices"), vertices) << info.toStdString();
        }
    }
    for (const char* working : {"Talon", "Kestrel", "Proving Ground"})
        EXPECT_TRUE(assembled.contains(QLatin1String(working))) << working;

    QProcess validator;
    validator.start(QStringLiteral("node"),
                    QStringList{QStringLiteral(FERROX_GLTF_VALIDATOR)} + files);
    ASSERT_TRUE(validator.waitForFinished(300000));
    const QByteArray report = validator.readAllStandardOutput() + validator.readAllStandardError();
    EXPECT_EQ(validator.exitCode(), 0) << report.toStdString();
    EXPECT_EQ(report.count(" errors 0 warnings 0 "), files.size()) << report.toStdString();
}

// Each part's vertices, taken through the node tree, land where the frame
// draws the game's vertex (x negated); the angles are the nodes' rotations
// about the pivots, so the meshes stay the same whatever the angles.
TEST_F(GltfBoxTankTest, PartsSitWhereTheViewportPutsThemAndTurnAboutTheirNodes)
{
    const int cells[] = {1, 2, 3, 4};
    QVector<std::array<float, 4>> restingTurret;
    // Vehicle, turret and gun angles.
    const std::tuple<float, float, float> poses[] = {{0, 0, 0}, {30, 45, 10}, {-70, -20, -5}};
    for (const auto& [vehicle, turret, gun] : poses) {
        SCOPED_TRACE(testing::Message() << vehicle << " " << turret << " " << gun);
        loader->setTankRotation(vehicle);
        loader->setTurretRotation(turret);
        loader->setGunRotation(gun);
        const QString file = out.filePath("box.glb");
        QString error;
        ASSERT_TRUE(exportVehicleGltf(*loader, file, &error)) << error.toStdString();
        walkChain();
        loader->hideChassis = loader->hideHull = loader->hideTurret = loader->hideGun = false;
        const tinygltf::Model model = readBack(file);
        const QVector<Matrix> world = worldMatrices(model);
        for (int which = 0; which < TankLoader::PartCount; ++which) {
            SCOPED_TRACE(PartNames[which]);
            const int node = nodeNamed(model, PartNames[which]);
            const tinygltf::Mesh& mesh = model.meshes.at(size_t(model.nodes[size_t(node)].mesh));
            ASSERT_EQ(mesh.primitives.size(), 1u);
            const auto positions = elements(model, mesh.primitives[0].attributes.at("POSITION"));
            QList<primitives::Vertex> written;
            QList<quint32> indices;
            primitives::quadGrid(cells[which], 0, 1, written, indices);
            ASSERT_EQ(positions.size(), written.size());
            for (int k = 0; k < written.size(); ++k) {
                const Vector3 mirrored{-written[k].position[0], written[k].position[1],
                                       written[k].position[2]};
                expectNear(transformed(world[node], xyz(positions[k])),
                           transformed(part(which)->placement, mirrored), 1e-4f);
            }
            if (which == TankLoader::TurretPart) {
                if (restingTurret.isEmpty())
                    restingTurret = positions;
                EXPECT_EQ(positions, restingTurret);
                const double half = turret * 0.5 * M_PI / 180;
                ASSERT_EQ(model.nodes[size_t(node)].rotation.size(), turret == 0 ? 0u : 4u);
                if (turret != 0) {
                    EXPECT_NEAR(model.nodes[size_t(node)].rotation[1], std::sin(half), 1e-5);
                    EXPECT_NEAR(model.nodes[size_t(node)].rotation[3], std::cos(half), 1e-5);
                }
            }
        }
    }
}

// A texture that cannot be loaded is left out with a log line; the rest of
// the material stays. An output that cannot be written says why and leaves
// nothing.
TEST_F(GltfBoxTankTest, MissingTexturesAreLeftOutAndFailedWritesLeaveNothing)
{
    LogCapture log;
    const QString file = out.filePath("box.gltf");
    QString error;
    ASSERT_TRUE(exportVehicleGltf(*loader, file, &error)) << error.toStdString();
    EXPECT_TRUE(log.lines.join('\n').contains("the baseColor map of material Hull could not be "
                                              "loaded and is left out"))
        << log.lines.join('\n').toStdString();
    const tinygltf::Model model = readBack(file);
    const int hull = nodeNamed(model, "Hull");
    const tinygltf::Material& material = model.materials.at(
        size_t(model.meshes.at(size_t(model.nodes[size_t(hull)].mesh)).primitives[0].material));
    EXPECT_EQ(material.pbrMetallicRoughness.baseColorTexture.index, -1);
    ASSERT_GE(material.pbrMetallicRoughness.metallicRoughnessTexture.index, 0);
    EXPECT_EQ(model.images.size(), 1u);
    EXPECT_TRUE(QFile::exists(out.filePath("box/0_Hull_GMM_metallicRoughness.png")));

    // The folder for the images is taken by a file; a .glb in a folder that
    // is gone.
    QFile blocker(out.filePath("blocked"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    for (const QString& target : {out.filePath("blocked.gltf"), out.filePath("gone/box.glb")}) {
        SCOPED_TRACE(target.toStdString());
        error.clear();
        EXPECT_FALSE(exportVehicleGltf(*loader, target, &error));
        EXPECT_FALSE(error.isEmpty());
        EXPECT_FALSE(QFile::exists(target));
    }
    EXPECT_EQ(QDir(out.path()).entryList(QDir::Files), (QStringList{"blocked", "box.gltf"}));
}

// The normal map as glTF reads it: x and y from the game's packing, z
// rebuilt; metallic to blue, gloss turned into roughness in green.
TEST(PbrMappingTest, MapsConvertTheGamesPackingPixelByPixel)
{
    const struct
    {
        QRgb game; // ARGB
        bool redGreen;
        QRgb normal;
        QRgb metallicRoughness;
    } cases[] = {
        // Flat: x = y = 0 in red-green or in alpha-green; z = 1.
        {qRgba(128, 128, 0, 255), true, qRgb(128, 128, 255), qRgb(0, 127, 128)},
        {qRgba(0, 128, 0, 128), false, qRgb(128, 128, 255), qRgb(0, 127, 0)},
        // Tilted: x 0.6, y -0.796, z what is left (0.08).
        {qRgba(204, 26, 0, 255), true, qRgb(204, 26, 138), qRgb(0, 229, 204)},
        // Over-long x and y: z stops at 0.
        {qRgba(255, 255, 0, 255), true, qRgb(255, 255, 128), qRgb(0, 0, 255)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.game);
        QImage game(1, 1, QImage::Format_ARGB32);
        game.setPixel(0, 0, c.game);
        EXPECT_EQ(PbrMapping::normalMap(game, c.redGreen).pixel(0, 0), c.normal);
        EXPECT_EQ(PbrMapping::metallicRoughness(game).pixel(0, 0), c.metallicRoughness);
    }
}
