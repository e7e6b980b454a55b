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

TEST_F(ShaderLoaderTest, BuildsAllTableProgramsAndTheTwoOutsideOnes)
{
    ASSERT_TRUE(load()) << logs.lines.join('\n').toStdString();
    for (int id = 0; id < ShaderCount; ++id) {
        ShaderProgram* program = loader->program(id);
        ASSERT_NE(program, nullptr) << "id " << id;
        EXPECT_TRUE(program->program->isLinked()) << "id " << id;
        EXPECT_EQ(program->name, shaderName(id));
        EXPECT_EQ(program->uniforms.size(), 36) << "id " << id;
    }
    EXPECT_EQ(shaderName(LightingOnlyAlpha), "LightingOnlyAlpha");
    for (int outside : {15, -1}) {
        EXPECT_EQ(loader->program(outside), nullptr) << outside;
        EXPECT_TRUE(shaderName(outside).isEmpty()) << outside;
    }
    ASSERT_NE(loader->camoSaverProgram(), nullptr);
    ASSERT_NE(loader->lineProgram(), nullptr);
    EXPECT_EQ(loader->camoSaverProgram()->uniforms.size(), 9);
    EXPECT_EQ(loader->lineProgram()->uniforms.keys(), QStringList{"ModelViewProj"});
    EXPECT_EQ(ShaderLoader::instance(), loader.get());

    // A name nobody added is entered at 0; addUniform asks GL again.
    ShaderProgram* bumped = loader->program(Bumped);
    EXPECT_EQ(bumped->uniformLocation("neverAdded"), 0);
    EXPECT_TRUE(bumped->uniforms.contains("neverAdded"));
    bumped->addUniform("neverAdded");
    EXPECT_EQ(bumped->uniformLocation("neverAdded"), -1);
    EXPECT_EQ(bumped->uniformLocation("lightSpec"), -1); // resolved, set by nobody
}

TEST_F(ShaderLoaderTest, ProgramsUseTheFixedAttributeSlotsAndTheUniformsCallersSet)
{
    ASSERT_TRUE(load());
    const char* const slotNames[] = {"iVertPos", "iTexCoord0", "iTexCoord1", "iTexCoord2",
                                     "iNormal",  "iBinormal",  "iTangent",   "iGeneric0"};
    // What the vertex layouts feed must be read at its fixed slot.
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
    const std::tuple<QByteArray, QStringList, QString> cases[] = {
        {"#version 150\nrest",
         {"\n#define LIGHTING_BUMP", "\n#define DUAL_TEXTURE"},
         "#version 150\n#define LIGHTING_BUMP\n#define DUAL_TEXTURE\nrest"},
        {"#version 150\nrest", {}, "#version 150\nrest"},
        {"#version 330 core\nx", {"\n#define GRID"}, "#version 330\n#define GRID core\nx"},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath("stage.vert");
    for (const auto& [file, defines, expected] : cases) {
        writeFile(path, file);
        EXPECT_EQ(ShaderLoader::stageSource(path, defines), expected);
    }

    // So every shipped file must start with exactly that line.
    const QDir shipped(sourceShaderDir);
    const QStringList files = shipped.entryList({"*.vert", "*.frag"}, QDir::Files);
    EXPECT_EQ(files.size(), 18);
    for (const QString& name : files) {
        QFile file(shipped.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        EXPECT_EQ(file.read(13), QByteArray("#version 150\n")) << name.toStdString();
    }
}

TEST_F(ShaderLoaderTest, MissingFileReportsButTriesEveryOtherProgram)
{
    MessageBoxRecorder boxes;
    EXPECT_FALSE(load({{"font.vert", {}}}));
    const QString message = "Failed to open shader: " + copy.filePath("font.vert");
    EXPECT_TRUE(logs.contains("[Error] " + message)) << logs.lines.join('\n').toStdString();
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].icon, QMessageBox::Critical);
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(message)) << boxes.boxes[0].text.toStdString();
    // Ids 2 and 3 are built after Font: the failure did not stop the loop.
    for (int id = 0; id < ShaderCount; ++id)
        EXPECT_EQ(loader->program(id) == nullptr, id == Font) << "id " << id;
    EXPECT_EQ(loader->camoSaverProgram(), nullptr);
    EXPECT_EQ(loader->lineProgram(), nullptr);
}

TEST_F(ShaderLoaderTest, BrokenStagesAreAllLogged)
{
    EXPECT_FALSE(load({{"wireframe.frag", "#version 150\nvoid main() { this is not glsl; }\n"},
                       {"depth.vert", "#version 150\nvoid notMain() {}\n"}}));
    EXPECT_EQ(logs.lines.filter("[Error] Shader load error: ").size(), 1);
    EXPECT_EQ(logs.lines.filter("[Error] Failed to link shader: ").size(), 1);
    EXPECT_EQ(loader->program(Wireframe), nullptr);
    EXPECT_EQ(loader->program(Depth), nullptr);
    EXPECT_NE(loader->program(BumpedPbsDual), nullptr);
}

// ---- Rendering for real: off-screen target, pixels read back. ----

struct Vertex
{
    float position[3];
    float uv[2];
    float normal[3];
    float tangent[3];
    float binormal[3];
};

// A quad over x0..x1 of clip space, at z 0, with the given shading normal.
std::vector<Vertex> quad(float x0, float x1, float normalZ = 1)
{
    std::vector<Vertex> vertices;
    const float corners[6][2] = {{x0, -1}, {x1, -1}, {x1, 1}, {x0, -1}, {x1, 1}, {x0, 1}};
    for (const auto& c : corners)
        vertices.push_back({{c[0], c[1], 0},
                            {(c[0] + 1) / 2, (c[1] + 1) / 2},
                            {0, 0, normalZ},
                            {1, 0, 0},
                            {0, 1, 0}});
    return vertices;
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
        gl().glDisable(GL_DEPTH_TEST);
        gl().glDisable(GL_CULL_FACE);
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
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
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
        const std::tuple<int, int, std::size_t> layout[] = {{0, 3, offsetof(Vertex, position)},
                                                            {1, 2, offsetof(Vertex, uv)},
                                                            {4, 3, offsetof(Vertex, normal)},
                                                            {6, 3, offsetof(Vertex, tangent)},
                                                            {5, 3, offsetof(Vertex, binormal)}};
        for (auto [slot, size, offset] : layout) {
            gl().glEnableVertexAttribArray(slot);
            gl().glVertexAttribPointer(slot, size, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                                       reinterpret_cast<const void*>(offset));
        }
        gl().glDrawArrays(GL_TRIANGLES, 0, GLsizei(vertices.size()));
        gl().glBindVertexArray(0);
        return target->toImage();
    }

    // Binds the program with identity matrices, a white light straight in
    // front at z 10 and an ambient term of 0.2.
    QOpenGLShaderProgram& bindLit(ShaderProgram* shader)
    {
        QOpenGLShaderProgram& p = *shader->program;
        EXPECT_TRUE(p.bind());
        for (const char* matrix : {"ModelViewProj", "ModelView", "Model", "View", "DepthBias"})
            p.setUniformValue(shader->uniformLocation(matrix), QMatrix4x4());
        p.setUniformValue(shader->uniformLocation("NormalMatrix"), QMatrix3x3());
        p.setUniformValue(shader->uniformLocation("lightPos"), QVector3D(0, 0, 10));
        p.setUniformValue(shader->uniformLocation("lightDiffuse"), QVector3D(1, 1, 1));
        p.setUniformValue(shader->uniformLocation("lightAmbient"), QVector3D(0.2f, 0.2f, 0.2f));
        p.setUniformValue(shader->uniformLocation("alphaRef"), 0.0f);
        for (const char* unit : {"shadowEnabled", "camoEnabled", "diffuseMap0"})
            p.setUniformValue(shader->uniformLocation(unit), 0);
        return p;
    }

    QOpenGLFramebufferObject* target = nullptr;
};

TEST_F(ShaderLoaderPixelTest, NoLightingShowsTheTextureTintedByTheDiffuseColour)
{
    ShaderProgram* unlit = loader->program(NoLighting);
    QOpenGLShaderProgram& p = *unlit->program;
    ASSERT_TRUE(p.bind());
    p.setUniformValue(unlit->uniformLocation("diffuseMap0"), 0);
    p.setUniformValue(unlit->uniformLocation("ModelViewProj"), QMatrix4x4());
    p.setUniformValue(unlit->uniformLocation("alphaRef"), 0.0f);
    p.setUniformValue(unlit->uniformLocation("camoEnabled"), 0);
    bindTexel(0, 255, 255, 255, 255);
    p.setUniformValue(unlit->uniformLocation("diffuseColor"), QVector4D(1, 0, 0, 1));
    EXPECT_PIXEL(draw(quad(-1, 1)), 32, 32, QColor(255, 0, 0), 0);
    // Alpha 0: no tint.
    bindTexel(0, 10, 200, 30, 255);
    p.setUniformValue(unlit->uniformLocation("diffuseColor"), QVector4D(0, 0, 0, 0));
    EXPECT_PIXEL(draw(quad(-1, 1)), 32, 32, QColor(10, 200, 30), 0);
    p.release();
}

TEST_F(ShaderLoaderPixelTest, BumpedLightsByTheNormalMapReadFromTheRightChannels)
{
    struct Case
    {
        const char* what;
        quint8 normalTexel[4];
        int dxt1NormalMap;
        float surfaceZ;
        int grey, tolerance;
    };
    // Lit fully: above 230. Only the ambient term, 0.2 of white: about 51.
    const Case cases[] = {
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
    QOpenGLShaderProgram& p = bindLit(bumped);
    p.setUniformValue(bumped->uniformLocation("normalMap"), 1);
    p.setUniformValue(bumped->uniformLocation("specularMap"), 2);
    bindTexel(0, 255, 255, 255, 255);
    bindTexel(2, 0, 0, 0, 255); // no specular
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const quint8* n = c.normalTexel;
        bindTexel(1, n[0], n[1], n[2], n[3]);
        p.setUniformValue(bumped->uniformLocation("dxt1NormalMap"), c.dxt1NormalMap);
        EXPECT_PIXEL(draw(quad(-1, 1, c.surfaceZ)), 32, 32, QColor(c.grey, c.grey, c.grey),
                     c.tolerance);
    }
    p.release();
}

TEST_F(ShaderLoaderPixelTest, AlphaVariantCutsWithoutAReference)
{
    // LightingOnlyAlpha pairs the bump vertex stage with the basic
    // fragment stage; it must link and draw, and cut texels below 0.5.
    ShaderProgram* alpha = loader->program(LightingOnlyAlpha);
    QOpenGLShaderProgram& p = bindLit(alpha);
    bindTexel(0, 255, 255, 255, 100);
    const QImage cut = draw(quad(-1, 1));
    EXPECT_PIXEL(cut, 32, 32, QColor(0, 0, 0), 0);
    EXPECT_EQ(qAlpha(cut.pixel(32, 32)), 0);
    // A reference below the texel's alpha lets it through.
    p.setUniformValue(alpha->uniformLocation("alphaRef"), 0.3f);
    EXPECT_PIXEL(draw(quad(-1, 1)), 32, 32, QColor(243, 243, 243), 12);
    p.release();
}

TEST_F(ShaderLoaderPixelTest, CamoSaverPaintsWhereTheMaskAllows)
{
    ShaderProgram* saver = loader->camoSaverProgram();
    QOpenGLShaderProgram& p = *saver->program;
    ASSERT_TRUE(p.bind());
    bindTexel(0, 200, 200, 200, 255); // diffuse
    bindTexel(2, 255, 0, 0, 0);       // pattern: channel r only
    p.setUniformValue(saver->uniformLocation("diffuseMap0"), 0);
    p.setUniformValue(saver->uniformLocation("exclusionMap"), 1);
    p.setUniformValue(saver->uniformLocation("camoMap"), 2);
    p.setUniformValue(saver->uniformLocation("camoTiling"), 1.0f, 1.0f, 0.0f, 0.0f);
    p.setUniformValue(saver->uniformLocation("camoColor0"), 0.0f, 1.0f, 0.0f, 1.0f);
    for (const char* other : {"camoColor1", "camoColor2", "camoColor3"})
        p.setUniformValue(saver->uniformLocation(other), 1.0f, 0.0f, 0.0f, 1.0f);

    // The quad covers UV 0..1 whatever its positions say, since the bake
    // draws in UV space.
    std::vector<Vertex> offScreen = quad(5, 7);
    for (Vertex& v : offScreen) {
        v.uv[0] = v.position[0] == 5 ? 0.0f : 1.0f;
        v.uv[1] = (v.position[1] + 1) / 2;
    }
    bindTexel(1, 255, 0, 0, 255); // mask red 255: painted with colour 0
    EXPECT_PIXEL(draw(offScreen), 32, 32, QColor(0, 255, 0), 0);
    bindTexel(1, 0, 255, 255, 255); // mask red 0: the diffuse texel stays
    EXPECT_PIXEL(draw(offScreen), 32, 32, QColor(200, 200, 200), 0);
    p.release();
}

} // namespace
