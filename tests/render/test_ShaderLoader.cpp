#include "ShaderLoader.h"

#include "GlTestContext.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "Settings.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QMatrix4x4>
#include <QOpenGLExtraFunctions>
#include <QOpenGLShaderProgram>
#include <QTemporaryDir>
#include <QVector4D>

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

    ShaderLoader& loadedShaders()
    {
        loader = std::make_unique<ShaderLoader>();
        EXPECT_TRUE(loader->loadShaders()) << logs.lines.join('\n').toStdString();
        return *loader;
    }

    // A copy of the shipped shader directory, so a test may break files in it.
    QDir copiedShaderDir()
    {
        const QDir source(sourceShaderDir);
        for (const QString& file : source.entryList(QDir::Files))
            QFile::copy(source.filePath(file), copy.filePath(file));
        settings.shaderDir = copy.path();
        return QDir(copy.path());
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
    ShaderLoader& shaders = loadedShaders();
    for (int id = 0; id < ShaderCount; ++id) {
        ShaderProgram* program = shaders.program(id);
        ASSERT_NE(program, nullptr) << "id " << id;
        EXPECT_TRUE(program->program->isLinked()) << "id " << id;
        EXPECT_EQ(program->name, shaderName(id));
        EXPECT_FALSE(program->hasGeometryStage);
        EXPECT_EQ(program->uniforms.size(), 36) << "id " << id;
    }
    EXPECT_EQ(shaderName(LightingOnlyAlpha), "LightingOnlyAlpha");
    for (int outside : {15, -1}) {
        EXPECT_EQ(shaders.program(outside), nullptr) << outside;
        EXPECT_TRUE(shaderName(outside).isEmpty()) << outside;
    }
    ASSERT_NE(shaders.camoSaverProgram(), nullptr);
    ASSERT_NE(shaders.lineProgram(), nullptr);
    EXPECT_TRUE(shaders.camoSaverProgram()->name.isEmpty());
    EXPECT_EQ(shaders.camoSaverProgram()->uniforms.size(), 9);
    EXPECT_EQ(shaders.lineProgram()->uniforms.keys(), QStringList{"ModelViewProj"});
    EXPECT_EQ(logs.lines.filter("[Error]"), QStringList());
    EXPECT_EQ(ShaderLoader::instance(), loader.get());
}

TEST_F(ShaderLoaderTest, ProgramsUseTheFixedAttributeSlots)
{
    const char* const slotNames[] = {"iVertPos", "iTexCoord0", "iTexCoord1", "iTexCoord2",
                                     "iNormal",  "iBinormal",  "iTangent",   "iGeneric0"};
    ShaderLoader& shaders = loadedShaders();
    for (int id = 0; id < ShaderCount; ++id) {
        EXPECT_EQ(attributeLocation(shaders.program(id), "iVertPos"), 0) << "id " << id;
        for (int slot = 1; slot < 8; ++slot) {
            const int location = attributeLocation(shaders.program(id), slotNames[slot]);
            EXPECT_TRUE(location == -1 || location == slot)
                << shaderName(id).toStdString() << " " << slotNames[slot] << " at " << location;
        }
    }
    // What the vertex layouts feed must be read where it matters.
    const std::pair<int, const char*> used[] = {
        {Bumped, "iTexCoord0"},         {Bumped, "iNormal"},
        {Bumped, "iBinormal"},          {Bumped, "iTangent"},
        {BumpedPbs, "iTexCoord0"},      {BumpedPbs, "iNormal"},
        {BumpedPbs, "iBinormal"},       {BumpedPbs, "iTangent"},
        {BumpedDual, "iTexCoord1"},     {BumpedPbsDual, "iTexCoord1"},
        {NoLightingDual, "iTexCoord1"}, {LightingOnly, "iNormal"},
        {CollisionLighting, "iNormal"}, {Grid, "iGeneric0"}};
    for (auto [id, name] : used)
        EXPECT_NE(attributeLocation(shaders.program(id), name), -1) << id << " " << name;

    // The two programs outside the table have their own.
    EXPECT_EQ(attributeLocation(shaders.camoSaverProgram(), "iTexCoord0"), 1);
    const int camoPosition = attributeLocation(shaders.camoSaverProgram(), "iVertPos");
    EXPECT_TRUE(camoPosition == -1 || camoPosition == 0) << camoPosition;
    EXPECT_EQ(attributeLocation(shaders.lineProgram(), "iVertPos"), 0);
    EXPECT_EQ(attributeLocation(shaders.lineProgram(), "iColorPos"), 1);
}

void expectActive(const ShaderProgram* program, const QStringList& names)
{
    for (const QString& name : names)
        EXPECT_GE(program->uniforms.value(name, -1), 0)
            << program->name.toStdString() << " " << name.toStdString();
}

TEST_F(ShaderLoaderTest, UniformsTheCallersSetAreActive)
{
    ShaderLoader& shaders = loadedShaders();
    const QStringList lit = {"ModelViewProj", "ModelView",    "Model",      "NormalMatrix",
                             "View",          "DepthBias",    "lightPos",   "lightDiffuse",
                             "lightAmbient",  "alphaRef",     "shadowMap",  "shadowEnabled",
                             "shadowSamples", "shadowDivide", "diffuseMap0"};
    const QStringList camouflage = {"camoEnabled", "camoTiling", "camoColor0", "camoColor1",
                                    "camoColor2",  "camoColor3", "camoMap",    "exclusionMap"};
    for (int id : {Bumped, BumpedDual, BumpedPbs, BumpedPbsDual, LightingOnly, LightingOnlyAlpha})
        expectActive(shaders.program(id), lit + camouflage);
    for (int id : {Bumped, BumpedDual})
        expectActive(shaders.program(id), {"normalMap", "specularMap", "dxt1NormalMap"});
    for (int id : {BumpedPbs, BumpedPbsDual})
        expectActive(shaders.program(id), {"normalMap", "dxt1NormalMap", "glossMap", "detailMap",
                                           "detailMetallic", "detailTile", "detailPower"});
    for (int id : {BumpedDual, BumpedPbsDual, NoLightingDual})
        expectActive(shaders.program(id), {"diffuseMap1"});
    for (int id : {NoLighting, NoLightingDual, NoLightingAlpha})
        expectActive(shaders.program(id),
                     QStringList{"ModelViewProj", "diffuseMap0", "diffuseColor", "alphaRef"} +
                         camouflage);
    expectActive(shaders.program(Wireframe), {"ModelViewProj", "diffuseColor"});
    expectActive(shaders.program(CollisionNoLighting), {"ModelViewProj", "diffuseColor"});
    expectActive(shaders.program(CollisionLighting),
                 {"ModelViewProj", "ModelView", "Model", "NormalMatrix", "View", "diffuseColor",
                  "lightPos", "lightDiffuse", "lightAmbient"});
    expectActive(shaders.program(Depth), {"ModelViewProj"});
    expectActive(shaders.program(Font), {"diffuseMap0"});
    expectActive(shaders.camoSaverProgram(),
                 {"diffuseMap0", "exclusionMap", "camoMap", "camoTiling", "camoColor0",
                  "camoColor1", "camoColor2", "camoColor3"});
    expectActive(shaders.lineProgram(), {"ModelViewProj"});
    // Resolved for every program, set by nobody.
    EXPECT_EQ(shaders.program(Bumped)->uniforms.value("lightSpec", 0), -1);
}

TEST_F(ShaderLoaderTest, UnknownUniformNamesAreEnteredAtZero)
{
    // The grid's one matrix is at location 0, where an unknown name lands too.
    ShaderProgram* grid = loadedShaders().program(Grid);
    GLint active = 0;
    gl().glGetProgramiv(grid->program->programId(), GL_ACTIVE_UNIFORMS, &active);
    EXPECT_EQ(active, 1);
    EXPECT_EQ(grid->program->uniformLocation("mvp"), 0);
    EXPECT_FALSE(grid->uniforms.contains("mvp"));
    EXPECT_EQ(grid->uniformLocation("mvp"), 0);

    ShaderProgram* bumped = loader->program(Bumped);
    EXPECT_EQ(bumped->uniformLocation("neverAdded"), 0);
    EXPECT_TRUE(bumped->uniforms.contains("neverAdded"));
    bumped->uniformLocation("neverAdded") = 5;
    EXPECT_EQ(bumped->uniformLocation("neverAdded"), 5);
    // addUniform asks GL again and replaces what was stored.
    bumped->addUniform("neverAdded");
    EXPECT_EQ(bumped->uniformLocation("neverAdded"), -1);
    bumped->uniformLocation("diffuseMap0") = 99;
    bumped->addUniform("diffuseMap0");
    EXPECT_EQ(bumped->uniformLocation("diffuseMap0"),
              bumped->program->uniformLocation("diffuseMap0"));
}

TEST(ShaderLoaderSource, DefinesGoAtPositionTwelveWhateverTheFileSays)
{
    struct Case
    {
        QByteArray file;
        QStringList defines;
        QString expected;
    };
    const Case cases[] = {
        {"#version 150\nrest",
         {"\n#define LIGHTING_BUMP", "\n#define DUAL_TEXTURE"},
         "#version 150\n#define LIGHTING_BUMP\n#define DUAL_TEXTURE\nrest"},
        {"#version 150\nrest", {}, "#version 150\nrest"},
        {"#version 330 core\nx", {"\n#define GRID"}, "#version 330\n#define GRID core\nx"},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath("stage.vert");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file.constData());
        writeFile(path, c.file);
        EXPECT_EQ(ShaderLoader::stageSource(path, c.defines), c.expected);
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
    const QString missing = QDir(copiedShaderDir()).filePath("font.vert");
    ASSERT_TRUE(QFile::remove(missing));
    MessageBoxRecorder boxes;

    loader = std::make_unique<ShaderLoader>();
    EXPECT_FALSE(loader->loadShaders());

    const QString message = "Failed to open shader: " + missing;
    EXPECT_TRUE(logs.contains("[Error] " + message)) << logs.lines.join('\n').toStdString();
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].icon, QMessageBox::Critical);
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(message)) << boxes.boxes[0].text.toStdString();
    const QString errors = logs.lines.filter("[Error]").join('\n');
    EXPECT_TRUE(errors.contains("[Error] Shader load error: ") ||
                errors.contains("[Error] Failed to link shader: "))
        << errors.toStdString();

    // Ids 2 and 3 are built after Font: the failure did not stop the loop.
    for (int id = 0; id < ShaderCount; ++id)
        EXPECT_EQ(loader->program(id) == nullptr, id == Font) << "id " << id;
    EXPECT_EQ(loader->camoSaverProgram(), nullptr);
    EXPECT_EQ(loader->lineProgram(), nullptr);
}

TEST_F(ShaderLoaderTest, BrokenStagesAreAllLogged)
{
    const QDir dir(copiedShaderDir());
    writeFile(dir.filePath("wireframe.frag"), "#version 150\nvoid main() { this is not glsl; }\n");
    writeFile(dir.filePath("depth.vert"), "#version 150\nvoid notMain() {}\n");

    loader = std::make_unique<ShaderLoader>();
    EXPECT_FALSE(loader->loadShaders());
    EXPECT_EQ(logs.lines.filter("[Error] Shader load error: ").size(), 1);
    EXPECT_EQ(logs.lines.filter("[Error] Failed to link shader: ").size(), 1);
    EXPECT_EQ(loader->program(Wireframe), nullptr);
    EXPECT_EQ(loader->program(Depth), nullptr);
    EXPECT_NE(loader->program(BumpedPbsDual), nullptr);
}

// ---- Rendering for real: off-screen target, pixels read back. ----

// One vertex of the test geometry, fed through the fixed slots.
struct Vertex
{
    float position[3];
    float uv[2];
    float normal[3];
    float tangent[3];
    float binormal[3];
};

// A quad over x0..x1 of clip space, at z 0, with the given shading normal.
std::vector<Vertex> quad(float x0, float x1, const QVector3D& normal = {0, 0, 1})
{
    std::vector<Vertex> vertices;
    const float corners[6][2] = {{x0, -1}, {x1, -1}, {x1, 1}, {x0, -1}, {x1, 1}, {x0, 1}};
    for (const auto& c : corners)
        vertices.push_back({{c[0], c[1], 0},
                            {(c[0] + 1) / 2, (c[1] + 1) / 2},
                            {normal.x(), normal.y(), normal.z()},
                            {1, 0, 0},
                            {0, 1, 0}});
    return vertices;
}

// The GL objects made here go with the context.
class ShaderLoaderPixelTest : public ShaderLoaderTest
{
protected:
    void SetUp() override
    {
        ShaderLoaderTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        loadedShaders();
        target = &context.makeTarget(64, 64);
        gl().glViewport(0, 0, 64, 64);
        gl().glDisable(GL_DEPTH_TEST);
        gl().glDisable(GL_CULL_FACE);
        clear();
    }

    void clear()
    {
        gl().glClearColor(0, 0, 0, 0);
        gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
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

    // Draws through the attribute slots the vertex layouts use and answers
    // the centre pixel.
    QRgb draw(const std::vector<Vertex>& vertices)
    {
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
        return target->toImage().pixel(32, 32);
    }

    // Binds the program with identity matrices and a white light straight in
    // front at z 10.
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
    struct Case
    {
        quint8 texel[3];
        QVector4D tint; // alpha 0: no tint
        QRgb expected;
    };
    const Case cases[] = {
        {{255, 255, 255}, {1, 0, 0, 1}, qRgba(255, 0, 0, 255)},
        {{10, 200, 30}, {0, 0, 0, 0}, qRgba(10, 200, 30, 255)},
    };
    ShaderProgram* unlit = loader->program(NoLighting);
    QOpenGLShaderProgram& p = *unlit->program;
    ASSERT_TRUE(p.bind());
    p.setUniformValue(unlit->uniformLocation("diffuseMap0"), 0);
    p.setUniformValue(unlit->uniformLocation("ModelViewProj"), QMatrix4x4());
    p.setUniformValue(unlit->uniformLocation("alphaRef"), 0.0f);
    p.setUniformValue(unlit->uniformLocation("camoEnabled"), 0);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        clear();
        bindTexel(0, c.texel[0], c.texel[1], c.texel[2], 255);
        p.setUniformValue(unlit->uniformLocation("diffuseColor"), c.tint);
        EXPECT_EQ(draw(quad(-1, 1)), c.expected);
    }
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
        int minRed, maxRed;
    };
    // Lit fully: above 230. Only the ambient term, 0.2 of white: about 51.
    const Case cases[] = {
        {"flat, facing the light", {128, 128, 255, 255}, 1, 1, 231, 255},
        {"flat, facing away", {128, 128, 255, 255}, 1, -1, 48, 54},
        // x in alpha, y in green: flat. Read as red/green it would tilt the
        // normal fully sideways, away from the light.
        {"packed flat", {0, 128, 255, 128}, 0, 1, 231, 255},
        // x = -1 in red: the shading normal lies in the surface, at right
        // angles to the light.
        {"tilted into the surface", {0, 128, 128, 255}, 1, 1, 45, 57},
    };
    ShaderProgram* bumped = loader->program(Bumped);
    QOpenGLShaderProgram& p = bindLit(bumped);
    p.setUniformValue(bumped->uniformLocation("normalMap"), 1);
    p.setUniformValue(bumped->uniformLocation("specularMap"), 2);
    bindTexel(0, 255, 255, 255, 255);
    bindTexel(2, 0, 0, 0, 255); // no specular
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        clear();
        const quint8* n = c.normalTexel;
        bindTexel(1, n[0], n[1], n[2], n[3]);
        p.setUniformValue(bumped->uniformLocation("dxt1NormalMap"), c.dxt1NormalMap);
        const int red = qRed(draw(quad(-1, 1, {0, 0, c.surfaceZ})));
        EXPECT_GE(red, c.minRed);
        EXPECT_LE(red, c.maxRed);
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
    EXPECT_EQ(draw(quad(-1, 1)), qRgba(0, 0, 0, 0));

    // A reference below the texel's alpha lets it through.
    p.setUniformValue(alpha->uniformLocation("alphaRef"), 0.3f);
    EXPECT_GT(qRed(draw(quad(-1, 1))), 230);
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
    // Mask red 255: painted with colour 0.
    bindTexel(1, 255, 0, 0, 255);
    EXPECT_EQ(draw(offScreen), qRgba(0, 255, 0, 255));
    // Mask red 0: the diffuse texel stays as it was.
    bindTexel(1, 0, 255, 255, 255);
    EXPECT_EQ(draw(offScreen), qRgba(200, 200, 200, 255));
    p.release();
}

} // namespace
