#include "ShaderLoader.h"

#include "GlTestContext.h"
#include "ImageCheck.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "Settings.h"

#include <QDir>
#include <QFile>
#include <QMatrix4x4>
#include <QOpenGLExtraFunctions>
#include <QOpenGLShaderProgram>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace {

const QString sourceShaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150");

QOpenGLExtraFunctions& gl()
{
    return *QOpenGLContext::currentContext()->extraFunctions();
}

int attributeLocation(const ShaderProgram* program, const char* name)
{
    return gl().glGetAttribLocation(program->program->programId(), name);
}

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(content);
}

class ShaderLoaderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(context.valid);
        settings.shaderDir = sourceShaderDir;
    }

    // Loads from the shader folder; `broken` names files of a copy to
    // replace (empty content: remove).
    bool load(const QList<std::pair<QString, QByteArray>>& broken = {})
    {
        if (!broken.isEmpty()) {
            const QDir source(sourceShaderDir);
            for (const QString& file : source.entryList(QDir::Files))
                QFile::copy(source.filePath(file), copy.filePath(file));
            settings.shaderDir = copy.path();
            for (const auto& [name, content] : broken)
                content.isEmpty() ? void(QFile::remove(copy.filePath(name)))
                                  : writeFile(copy.filePath(name), content);
        }
        loader = std::make_unique<ShaderLoader>();
        return loader->loadShaders();
    }

    LogCapture logs;
    Settings settings{QString()};
    QTemporaryDir copy;
    GlTestContext context;
    // Programs are GL objects: they go first, while the context is current.
    std::unique_ptr<ShaderLoader> loader;
};

TEST_F(ShaderLoaderTest, BuildsEveryProgramWithItsSlotsAndUniforms)
{
    ASSERT_TRUE(load()) << logs.lines.join('\n').toStdString();
    for (int id = 0; id < ShaderCount; ++id) {
        ShaderProgram* program = loader->program(id);
        ASSERT_NE(program, nullptr) << "id " << id;
        EXPECT_TRUE(program->program->isLinked()) << "id " << id;
    }
    for (int outside : {15, -1})
        EXPECT_EQ(loader->program(outside), nullptr) << outside;
    ASSERT_NE(loader->camoSaverProgram(), nullptr);
    ASSERT_NE(loader->lineProgram(), nullptr);
    EXPECT_EQ(loader->lineProgram()->uniforms.keys(), QStringList{"ModelViewProj"});

    // Every program reads what the vertex layouts feed at its fixed slot
    // and uses the uniforms its callers set.
    const char* const slotNames[] = {"iVertPos", "iTexCoord0", "iTexCoord1", "iTexCoord2",
                                     "iNormal",  "iBinormal",  "iTangent",   "iGeneric0"};
    // clang-format off
    const std::pair<QList<int>, QList<int>> read[] = {
        {{Bumped, BumpedPbs}, {1, 4, 5, 6}}, {{BumpedDual, BumpedPbsDual, NoLightingDual}, {1, 2}},
        {{LightingOnly, CollisionLighting}, {4}}, {{Grid}, {7}}};
    const QStringList lit = {"ModelViewProj", "ModelView", "Model", "NormalMatrix", "View",
        "DepthBias", "lightPos", "lightDiffuse", "lightAmbient", "alphaRef", "shadowMap",
        "shadowEnabled", "shadowSamples", "shadowDivide", "diffuseMap0"};
    const QStringList camo = {"camoEnabled", "camoTiling", "camoColor0", "camoColor1",
        "camoColor2", "camoColor3", "camoMap", "exclusionMap"};
    const std::pair<QList<int>, QStringList> set[] = {
        {{Bumped, BumpedDual, BumpedPbs, BumpedPbsDual, LightingOnly, LightingOnlyAlpha}, lit + camo},
        {{Bumped, BumpedDual}, {"normalMap", "specularMap", "dxt1NormalMap"}},
        {{BumpedPbs, BumpedPbsDual}, {"normalMap", "dxt1NormalMap", "glossMap", "detailMap",
                                      "detailMetallic", "detailTile", "detailPower"}},
        {{BumpedDual, BumpedPbsDual, NoLightingDual}, {"diffuseMap1"}},
        {{NoLighting, NoLightingDual, NoLightingAlpha},
         QStringList{"ModelViewProj", "diffuseMap0", "diffuseColor", "alphaRef"} + camo},
        {{Wireframe, CollisionNoLighting, CollisionLighting}, {"ModelViewProj", "diffuseColor"}},
        {{CollisionLighting}, {"NormalMatrix", "lightPos", "lightDiffuse", "lightAmbient"}},
        {{Depth}, {"ModelViewProj"}}, {{Font}, {"diffuseMap0"}}};
    // clang-format on
    for (int id = 0; id < ShaderCount; ++id)
        EXPECT_EQ(attributeLocation(loader->program(id), "iVertPos"), 0) << "id " << id;
    for (const auto& [ids, attributes] : read)
        for (int id : ids)
            for (int slot : attributes)
                EXPECT_EQ(attributeLocation(loader->program(id), slotNames[slot]), slot)
                    << shaderName(id).toStdString() << " " << slotNames[slot];
    EXPECT_EQ(attributeLocation(loader->camoSaverProgram(), "iTexCoord0"), 1);
    EXPECT_EQ(attributeLocation(loader->lineProgram(), "iColorPos"), 1);
    for (const auto& [ids, names] : set)
        for (int id : ids)
            for (const QString& name : names)
                EXPECT_GE(loader->program(id)->uniforms.value(name, -1), 0)
                    << shaderName(id).toStdString() << " " << name.toStdString();
    for (const QString& name : camo.mid(1) + QStringList{"diffuseMap0"})
        EXPECT_GE(loader->camoSaverProgram()->uniforms.value(name, -1), 0) << name.toStdString();
}

TEST(ShaderLoaderSource, DefinesGoAtPositionTwelveWhateverTheFileSays)
{
    // A stage file must start with exactly "#version 150\n" for its defines to
    // land after it.
    // clang-format off
    const std::tuple<QByteArray, QStringList, QString> cases[] = {
        {"#version 150\nrest", {"\n#define LIGHTING_BUMP", "\n#define DUAL_TEXTURE"},
         "#version 150\n#define LIGHTING_BUMP\n#define DUAL_TEXTURE\nrest"},
        {"#version 150\nrest", {}, "#version 150\nrest"},
        {"#version 330 core\nx", {"\n#define GRID"}, "#version 330\n#define GRID core\nx"}};
    // clang-format on
    QTemporaryDir dir;
    const QString path = dir.filePath("stage.vert");
    for (const auto& [file, defines, expected] : cases) {
        writeFile(path, file);
        EXPECT_EQ(ShaderLoader::stageSource(path, defines), expected);
    }
}

TEST_F(ShaderLoaderTest, EveryBrokenProgramIsReportedAndTheOthersStillBuilt)
{
    MessageBoxRecorder boxes;
    EXPECT_FALSE(load({{"font.vert", {}},
                       {"wireframe.frag", "#version 150\nvoid main() { this is not glsl; }\n"},
                       {"depth.vert", "#version 150\nvoid notMain() {}\n"}}));
    const QString message = "Failed to open shader: " + copy.filePath("font.vert");
    EXPECT_TRUE(logs.contains("[Error] " + message)) << logs.lines.join('\n').toStdString();
    EXPECT_EQ(logs.lines.filter("[Error] Shader load error: ").size(), 2); // font, wireframe
    EXPECT_EQ(logs.lines.filter("[Error] Failed to link shader: ").size(), 1);
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].icon, QMessageBox::Critical);
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(message)) << boxes.boxes[0].text.toStdString();
    // Ids 2 and 3 are built after Font: the failure did not stop the loop.
    for (int id = 0; id < ShaderCount; ++id)
        EXPECT_EQ(loader->program(id) == nullptr, id == Font || id == Wireframe || id == Depth)
            << "id " << id;
    EXPECT_EQ(loader->camoSaverProgram(), nullptr);
    EXPECT_EQ(loader->lineProgram(), nullptr);
}

// ---- Rendering for real: off-screen target, pixels read back. ----

// Position, UV, normal, tangent, binormal.
using Vertex = std::array<float, 14>;

// A quad over x0..x1 of clip space at z 0, with UVs 0..1 whatever its
// positions and the given shading normal.
std::vector<Vertex> quad(float x0, float x1, float normalZ = 1)
{
    std::vector<Vertex> vertices;
    const float corners[6][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}};
    for (auto [u, v] : corners)
        vertices.push_back({u ? x1 : x0, v * 2 - 1, 0, u, v, 0, 0, normalZ, 1, 0, 0, 0, 1, 0});
    return vertices;
}

template <typename T> void setUniform(ShaderProgram* shader, const char* name, const T& value)
{
    shader->program->setUniformValue(shader->uniformLocation(name), value);
}

class ShaderLoaderPixelTest : public ShaderLoaderTest
{
protected:
    void SetUp() override
    {
        ShaderLoaderTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        ASSERT_TRUE(load());
        target = &context.makeTarget(64, 64);
        gl().glViewport(0, 0, 64, 64);
    }

    // A 1x1 texture of one RGBA colour, bound on the given unit.
    void bindTexel(int unit, quint8 r, quint8 g, quint8 b, quint8 a)
    {
        GLuint texture = 0;
        gl().glGenTextures(1, &texture);
        gl().glActiveTexture(GL_TEXTURE0 + unit);
        gl().glBindTexture(GL_TEXTURE_2D, texture);
        const quint8 texel[4] = {r, g, b, a};
        gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texel);
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    }

    // Clears, draws through the attribute slots the vertex layouts use, and
    // answers the image.
    QImage draw(const std::vector<Vertex>& vertices)
    {
        gl().glClearColor(0, 0, 0, 0);
        gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        GLuint vao = 0, vbo = 0;
        gl().glGenVertexArrays(1, &vao);
        gl().glGenBuffers(1, &vbo);
        gl().glBindVertexArray(vao);
        gl().glBindBuffer(GL_ARRAY_BUFFER, vbo);
        gl().glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(Vertex)),
                          vertices.data(), GL_STATIC_DRAW);
        // Slot, floats, first float.
        const int layout[5][3] = {{0, 3, 0}, {1, 2, 3}, {4, 3, 5}, {6, 3, 8}, {5, 3, 11}};
        for (auto [slot, size, first] : layout) {
            gl().glEnableVertexAttribArray(slot);
            gl().glVertexAttribPointer(slot, size, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                                       reinterpret_cast<const void*>(first * sizeof(float)));
        }
        gl().glDrawArrays(GL_TRIANGLES, 0, GLsizei(vertices.size()));
        gl().glBindVertexArray(0);
        return target->toImage();
    }

    // Binds the program with identity matrices, a white light straight in
    // front at z 10 and an ambient term of 0.2.
    void bindLit(ShaderProgram* shader)
    {
        EXPECT_TRUE(shader->program->bind());
        for (const char* matrix : {"ModelViewProj", "ModelView", "Model", "View", "DepthBias"})
            setUniform(shader, matrix, QMatrix4x4());
        setUniform(shader, "NormalMatrix", QMatrix3x3());
        setUniform(shader, "lightPos", QVector3D(0, 0, 10));
        setUniform(shader, "lightDiffuse", QVector3D(1, 1, 1));
        setUniform(shader, "lightAmbient", QVector3D(0.2f, 0.2f, 0.2f));
        setUniform(shader, "alphaRef", 0.0f);
        for (const char* unit : {"shadowEnabled", "camoEnabled", "diffuseMap0"})
            setUniform(shader, unit, 0);
    }

    QOpenGLFramebufferObject* target = nullptr;
};

TEST_F(ShaderLoaderPixelTest, UnlitTintsByTheDiffuseColourAndTheAlphaVariantCutsAtAHalf)
{
    ShaderProgram* unlit = loader->program(NoLighting);
    bindLit(unlit);
    bindTexel(0, 255, 255, 255, 255);
    setUniform(unlit, "diffuseColor", QVector4D(1, 0, 0, 1));
    EXPECT_PIXEL(draw(quad(-1, 1)), 32, 32, QColor(255, 0, 0), 0);
    // Alpha 0: no tint.
    bindTexel(0, 10, 200, 30, 255);
    setUniform(unlit, "diffuseColor", QVector4D(0, 0, 0, 0));
    EXPECT_PIXEL(draw(quad(-1, 1)), 32, 32, QColor(10, 200, 30), 0);

    // LightingOnlyAlpha pairs the bump vertex stage with the basic
    // fragment stage; it must link and draw, and cut texels below 0.5.
    ShaderProgram* alpha = loader->program(LightingOnlyAlpha);
    bindLit(alpha);
    bindTexel(0, 255, 255, 255, 100);
    const QImage cut = draw(quad(-1, 1));
    EXPECT_PIXEL(cut, 32, 32, QColor(0, 0, 0), 0);
    EXPECT_EQ(qAlpha(cut.pixel(32, 32)), 0);
    // A reference below the texel's alpha lets it through.
    setUniform(alpha, "alphaRef", 0.3f);
    EXPECT_PIXEL(draw(quad(-1, 1)), 32, 32, QColor(243, 243, 243), 12);
}

TEST_F(ShaderLoaderPixelTest, BumpedLightsByTheNormalMapReadFromTheRightChannels)
{
    // Lit fully: above 230. Only the ambient term, 0.2 of white: about 51.
    const std::tuple<const char*, std::array<quint8, 4>, int, float, int, int> cases[] = {
        {"flat, facing the light", {128, 128, 255, 255}, 1, 1, 243, 12},
        {"flat, facing away", {128, 128, 255, 255}, 1, -1, 51, 3},
        // x in alpha, y in green: flat. Read as red/green it would tilt the
        // normal fully sideways, away from the light.
        {"packed flat", {0, 128, 255, 128}, 0, 1, 243, 12},
        // x = -1 in red: the shading normal lies in the surface, at right
        // angles to the light.
        {"tilted into the surface", {0, 128, 128, 255}, 1, 1, 51, 6},
    };
    ShaderProgram* bumped = loader->program(Bumped);
    bindLit(bumped);
    setUniform(bumped, "normalMap", 1);
    setUniform(bumped, "specularMap", 2);
    bindTexel(0, 255, 255, 255, 255);
    bindTexel(2, 0, 0, 0, 255); // no specular
    // What, normal texel, dxt1NormalMap, surface normal z, grey, tolerance.
    for (const auto& [what, n, dxt1, surfaceZ, grey, tolerance] : cases) {
        SCOPED_TRACE(what);
        bindTexel(1, n[0], n[1], n[2], n[3]);
        setUniform(bumped, "dxt1NormalMap", dxt1);
        EXPECT_PIXEL(draw(quad(-1, 1, surfaceZ)), 32, 32, QColor(grey, grey, grey), tolerance);
    }
}

TEST_F(ShaderLoaderPixelTest, CamoSaverPaintsWhereTheMaskAllows)
{
    ShaderProgram* saver = loader->camoSaverProgram();
    ASSERT_TRUE(saver->program->bind());
    bindTexel(0, 200, 200, 200, 255); // diffuse
    bindTexel(2, 255, 0, 0, 0);       // pattern: channel r only
    setUniform(saver, "diffuseMap0", 0);
    setUniform(saver, "exclusionMap", 1);
    setUniform(saver, "camoMap", 2);
    setUniform(saver, "camoTiling", QVector4D(1, 1, 0, 0));
    setUniform(saver, "camoColor0", QVector4D(0, 1, 0, 1));
    for (const char* other : {"camoColor1", "camoColor2", "camoColor3"})
        setUniform(saver, other, QVector4D(1, 0, 0, 1));

    // The bake draws in UV space, whatever the positions say.
    const std::vector<Vertex> offScreen = quad(5, 7);
    bindTexel(1, 255, 0, 0, 255); // mask red 255: painted with colour 0
    EXPECT_PIXEL(draw(offScreen), 32, 32, QColor(0, 255, 0), 0);
    bindTexel(1, 0, 255, 255, 255); // mask red 0: the diffuse texel stays
    EXPECT_PIXEL(draw(offScreen), 32, 32, QColor(200, 200, 200), 0);
}

} // namespace
