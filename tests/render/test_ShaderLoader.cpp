#include "ShaderLoader.h"

#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "Settings.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QMatrix3x3>
#include <QMatrix4x4>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFramebufferObject>
#include <QOpenGLShaderProgram>
#include <QTemporaryDir>
#include <QVector3D>

#include <gtest/gtest.h>

#include <vector>

namespace {

const QString sourceShaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150");

const char* const slotNames[] = {"iVertPos",  "iTexCoord0", "iTexCoord1", "iTexCoord2",
                                 "iNormal",   "iBinormal",  "iTangent",   "iGeneric0",
                                 "iGeneric1", "iGeneric2",  "iGeneric3"};

QSurfaceFormat coreFormat()
{
    QSurfaceFormat format;
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    return format;
}

QOpenGLExtraFunctions& gl()
{
    return *QOpenGLContext::currentContext()->extraFunctions();
}

int attributeLocation(const ShaderProgram* program, const char* name)
{
    return gl().glGetAttribLocation(program->program->programId(), name);
}

int activeUniformCount(const ShaderProgram* program)
{
    GLint count = 0;
    gl().glGetProgramiv(program->program->programId(), GL_ACTIVE_UNIFORMS, &count);
    return count;
}

// Copies the shipped shader directory, so a test may break files in it.
QString copyShaderDir(const QTemporaryDir& target)
{
    const QDir source(sourceShaderDir);
    for (const QString& file : source.entryList(QDir::Files))
        QFile::copy(source.filePath(file), target.filePath(file));
    return target.path();
}

class ShaderLoaderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        surface.setFormat(coreFormat());
        surface.create();
        context.setFormat(coreFormat());
        ASSERT_TRUE(context.create());
        ASSERT_TRUE(context.makeCurrent(&surface));
        ASSERT_GE(context.format().version(), qMakePair(3, 2));
        settings.shaderDir = sourceShaderDir;
    }

    // Programs are GL objects: they go while the context is still current.
    void TearDown() override
    {
        loader.reset();
        context.doneCurrent();
    }

    ShaderLoader& loadedShaders()
    {
        loader = std::make_unique<ShaderLoader>();
        EXPECT_TRUE(loader->loadShaders()) << logs.lines.join('\n').toStdString();
        return *loader;
    }

    LogCapture logs;
    Settings settings{QString()};
    QOffscreenSurface surface;
    QOpenGLContext context;
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
    ASSERT_NE(shaders.camoSaverProgram(), nullptr);
    ASSERT_NE(shaders.lineProgram(), nullptr);
    EXPECT_TRUE(shaders.camoSaverProgram()->name.isEmpty());
    EXPECT_EQ(shaders.camoSaverProgram()->uniforms.size(), 9);
    EXPECT_EQ(shaders.lineProgram()->uniforms.keys(), QStringList{"ModelViewProj"});
    EXPECT_FALSE(logs.lines.join('\n').contains("[Error]")) << logs.lines.join('\n').toStdString();
    EXPECT_EQ(ShaderLoader::instance(), loader.get());
}

TEST_F(ShaderLoaderTest, TableProgramsUseTheFixedAttributeSlots)
{
    ShaderLoader& shaders = loadedShaders();
    for (int id = 0; id < ShaderCount; ++id) {
        for (int slot = 0; slot < 11; ++slot) {
            const int location = attributeLocation(shaders.program(id), slotNames[slot]);
            if (location != -1) {
                EXPECT_EQ(location, slot) << shaderName(id).toStdString() << " " << slotNames[slot];
            }
        }
        EXPECT_EQ(attributeLocation(shaders.program(id), "iVertPos"), 0) << "id " << id;
    }
    // Attributes the vertex layouts feed must be read where they matter.
    for (const char* name : {"iTexCoord0", "iNormal", "iBinormal", "iTangent"}) {
        EXPECT_NE(attributeLocation(shaders.program(Bumped), name), -1) << name;
        EXPECT_NE(attributeLocation(shaders.program(BumpedPbs), name), -1) << name;
    }
    EXPECT_EQ(attributeLocation(shaders.program(BumpedDual), "iTexCoord1"), 2);
    EXPECT_EQ(attributeLocation(shaders.program(BumpedPbsDual), "iTexCoord1"), 2);
    EXPECT_EQ(attributeLocation(shaders.program(NoLightingDual), "iTexCoord1"), 2);
    EXPECT_EQ(attributeLocation(shaders.program(LightingOnly), "iNormal"), 4);
    EXPECT_EQ(attributeLocation(shaders.program(CollisionLighting), "iNormal"), 4);
    EXPECT_EQ(attributeLocation(shaders.program(Grid), "iGeneric0"), 7);
}

TEST_F(ShaderLoaderTest, OutsideProgramsUseTheirOwnSlots)
{
    ShaderLoader& shaders = loadedShaders();
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
    for (int id : {Bumped, BumpedDual, BumpedPbs, BumpedPbsDual, LightingOnly, LightingOnlyAlpha}) {
        expectActive(shaders.program(id), lit);
        expectActive(shaders.program(id), camouflage);
    }
    for (int id : {Bumped, BumpedDual})
        expectActive(shaders.program(id), {"normalMap", "specularMap", "dxt1NormalMap"});
    for (int id : {BumpedPbs, BumpedPbsDual})
        expectActive(shaders.program(id), {"normalMap", "dxt1NormalMap", "glossMap", "detailMap",
                                           "detailMetallic", "detailTile", "detailPower"});
    for (int id : {BumpedDual, BumpedPbsDual, NoLightingDual})
        expectActive(shaders.program(id), {"diffuseMap1"});
    for (int id : {NoLighting, NoLightingDual, NoLightingAlpha}) {
        expectActive(shaders.program(id),
                     {"ModelViewProj", "diffuseMap0", "diffuseColor", "alphaRef"});
        expectActive(shaders.program(id), camouflage);
    }
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

TEST_F(ShaderLoaderTest, GridMatrixIsTheOnlyUniformAtLocationZero)
{
    ShaderProgram* grid = loadedShaders().program(Grid);
    EXPECT_EQ(activeUniformCount(grid), 1);
    EXPECT_EQ(grid->program->uniformLocation("mvp"), 0);
    EXPECT_FALSE(grid->uniforms.contains("mvp"));
    EXPECT_EQ(grid->uniformLocation("mvp"), 0);
}

TEST(ShaderLoaderSource, InsertsDefinesAfterTheVersionLine)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("stage.vert");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#version 150\nrest");
    file.close();

    EXPECT_EQ(
        ShaderLoader::stageSource(path, {"\n#define LIGHTING_BUMP", "\n#define DUAL_TEXTURE"}),
        "#version 150\n#define LIGHTING_BUMP\n#define DUAL_TEXTURE\nrest");
    EXPECT_EQ(ShaderLoader::stageSource(path, {}), "#version 150\nrest");
}

TEST(ShaderLoaderSource, PositionTwelveIsTakenWhateverTheFileSays)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("stage.frag");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#version 330 core\nx");
    file.close();

    EXPECT_EQ(ShaderLoader::stageSource(path, {"\n#define GRID"}),
              "#version 330\n#define GRID core\nx");
}

TEST(ShaderLoaderSource, EveryShippedFileStartsWithTheVersionLine)
{
    const QDir dir(sourceShaderDir);
    const QStringList files = dir.entryList({"*.vert", "*.frag"}, QDir::Files);
    EXPECT_EQ(files.size(), 18);
    for (const QString& name : files) {
        QFile file(dir.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        EXPECT_EQ(file.read(13), QByteArray("#version 150\n")) << name.toStdString();
    }
}

TEST_F(ShaderLoaderTest, MissingFileReportsButTriesEveryOtherProgram)
{
    QTemporaryDir dir;
    settings.shaderDir = copyShaderDir(dir);
    const QString missing = dir.filePath("font.vert");
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

    EXPECT_EQ(loader->program(Font), nullptr);
    // Ids 2 and 3 are built after Font: the failure did not stop the loop.
    for (int id = 0; id < ShaderCount; ++id) {
        if (id != Font)
            EXPECT_NE(loader->program(id), nullptr) << "id " << id;
    }
    EXPECT_EQ(loader->camoSaverProgram(), nullptr);
    EXPECT_EQ(loader->lineProgram(), nullptr);
}

TEST_F(ShaderLoaderTest, BrokenStagesAreAllLogged)
{
    QTemporaryDir dir;
    settings.shaderDir = copyShaderDir(dir);
    QFile broken(dir.filePath("wireframe.frag"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
    broken.write("#version 150\nvoid main() { this is not glsl; }\n");
    broken.close();
    QFile unlinkable(dir.filePath("depth.vert"));
    ASSERT_TRUE(unlinkable.open(QIODevice::WriteOnly | QIODevice::Truncate));
    unlinkable.write("#version 150\nvoid notMain() {}\n");
    unlinkable.close();

    loader = std::make_unique<ShaderLoader>();
    EXPECT_FALSE(loader->loadShaders());
    EXPECT_EQ(logs.lines.filter("[Error] Shader load error: ").size(), 1);
    EXPECT_EQ(logs.lines.filter("[Error] Failed to link shader: ").size(), 1);
    EXPECT_EQ(loader->program(Wireframe), nullptr);
    EXPECT_EQ(loader->program(Depth), nullptr);
    EXPECT_NE(loader->program(BumpedPbsDual), nullptr);
}

TEST(ShaderLoaderNames, TableNamesAndNothingAbove)
{
    EXPECT_EQ(shaderName(Bumped), "Bumped");
    EXPECT_EQ(shaderName(LightingOnlyAlpha), "LightingOnlyAlpha");
    EXPECT_EQ(shaderName(CollisionNoLighting), "CollisionNoLighting");
    EXPECT_EQ(shaderName(Font), "Font");
    EXPECT_TRUE(shaderName(15).isEmpty());
    EXPECT_TRUE(shaderName(-1).isEmpty());
}

TEST_F(ShaderLoaderTest, IdsOutsideTheTableHaveNoProgram)
{
    ShaderLoader& shaders = loadedShaders();
    EXPECT_EQ(shaders.program(15), nullptr);
    EXPECT_EQ(shaders.program(-1), nullptr);
}

TEST_F(ShaderLoaderTest, UnknownUniformNameIsEnteredAtZeroAndStays)
{
    ShaderProgram* bumped = loadedShaders().program(Bumped);
    EXPECT_FALSE(bumped->uniforms.contains("neverAdded"));
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
void appendQuad(std::vector<Vertex>& vertices, float x0, float x1, const QVector3D& normal)
{
    const float corners[6][2] = {{x0, -1}, {x1, -1}, {x1, 1}, {x0, -1}, {x1, 1}, {x0, 1}};
    for (const auto& c : corners)
        vertices.push_back({{c[0], c[1], 0},
                            {(c[0] + 1) / 2, (c[1] + 1) / 2},
                            {normal.x(), normal.y(), normal.z()},
                            {1, 0, 0},
                            {0, 1, 0}});
}

class ShaderLoaderPixelTest : public ShaderLoaderTest
{
protected:
    void SetUp() override
    {
        ShaderLoaderTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        loadedShaders();
        QOpenGLFramebufferObjectFormat format;
        format.setAttachment(QOpenGLFramebufferObject::CombinedDepthStencil);
        target = std::make_unique<QOpenGLFramebufferObject>(64, 64, format);
        ASSERT_TRUE(target->bind());
        gl().glViewport(0, 0, 64, 64);
        gl().glClearColor(0, 0, 0, 0);
        gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        gl().glDisable(GL_DEPTH_TEST);
        gl().glDisable(GL_CULL_FACE);
    }

    void TearDown() override
    {
        for (GLuint texture : textures)
            gl().glDeleteTextures(1, &texture);
        gl().glDeleteBuffers(1, &vbo);
        gl().glDeleteVertexArrays(1, &vao);
        target.reset();
        ShaderLoaderTest::TearDown();
    }

    // A 1x1 texture of one RGBA colour, bound on the given unit.
    void bindTexel(int unit, quint8 r, quint8 g, quint8 b, quint8 a)
    {
        GLuint texture = 0;
        gl().glGenTextures(1, &texture);
        textures.push_back(texture);
        gl().glActiveTexture(GL_TEXTURE0 + unit);
        gl().glBindTexture(GL_TEXTURE_2D, texture);
        const quint8 texel[4] = {r, g, b, a};
        gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texel);
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }

    // Draws through the attribute slots the vertex layouts use.
    void draw(const std::vector<Vertex>& vertices)
    {
        gl().glGenVertexArrays(1, &vao);
        gl().glBindVertexArray(vao);
        gl().glGenBuffers(1, &vbo);
        gl().glBindBuffer(GL_ARRAY_BUFFER, vbo);
        gl().glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(Vertex)),
                          vertices.data(), GL_STATIC_DRAW);
        attribute(0, 3, offsetof(Vertex, position));
        attribute(1, 2, offsetof(Vertex, uv));
        attribute(4, 3, offsetof(Vertex, normal));
        attribute(6, 3, offsetof(Vertex, tangent));
        attribute(5, 3, offsetof(Vertex, binormal));
        gl().glDrawArrays(GL_TRIANGLES, 0, GLsizei(vertices.size()));
        gl().glBindVertexArray(0);
    }

    QImage pixels() const { return target->toImage(); }

    // Binds Bumped with identity matrices, a light straight in front at z 10,
    // white diffuse, no specular and the given normal map texel on unit 1.
    QOpenGLShaderProgram& bindBumped(ShaderProgram* bumped, const quint8 (&normal)[4],
                                     int dxt1NormalMap)
    {
        QOpenGLShaderProgram& p = *bumped->program;
        EXPECT_TRUE(p.bind());
        bindTexel(0, 255, 255, 255, 255);
        bindTexel(1, normal[0], normal[1], normal[2], normal[3]);
        bindTexel(2, 0, 0, 0, 255);
        p.setUniformValue(bumped->uniformLocation("diffuseMap0"), 0);
        p.setUniformValue(bumped->uniformLocation("normalMap"), 1);
        p.setUniformValue(bumped->uniformLocation("specularMap"), 2);
        p.setUniformValue(bumped->uniformLocation("dxt1NormalMap"), dxt1NormalMap);
        for (const char* matrix : {"ModelViewProj", "ModelView", "Model", "View", "DepthBias"})
            p.setUniformValue(bumped->uniformLocation(matrix), QMatrix4x4());
        p.setUniformValue(bumped->uniformLocation("NormalMatrix"), QMatrix3x3());
        p.setUniformValue(bumped->uniformLocation("lightPos"), QVector3D(0, 0, 10));
        p.setUniformValue(bumped->uniformLocation("lightDiffuse"), QVector3D(1, 1, 1));
        p.setUniformValue(bumped->uniformLocation("lightAmbient"), QVector3D(0.2f, 0.2f, 0.2f));
        p.setUniformValue(bumped->uniformLocation("alphaRef"), 0.0f);
        p.setUniformValue(bumped->uniformLocation("shadowEnabled"), 0);
        p.setUniformValue(bumped->uniformLocation("camoEnabled"), 0);
        return p;
    }

    std::unique_ptr<QOpenGLFramebufferObject> target;
    std::vector<GLuint> textures;
    GLuint vbo = 0;
    GLuint vao = 0;

private:
    void attribute(int slot, int size, std::size_t offset)
    {
        gl().glEnableVertexAttribArray(slot);
        gl().glVertexAttribPointer(slot, size, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                                   reinterpret_cast<const void*>(offset));
    }
};

TEST_F(ShaderLoaderPixelTest, NoLightingTintsTheDiffuseTexture)
{
    ShaderProgram* unlit = loader->program(NoLighting);
    ASSERT_TRUE(unlit->program->bind());
    bindTexel(0, 255, 255, 255, 255);
    QOpenGLShaderProgram& p = *unlit->program;
    p.setUniformValue(unlit->uniformLocation("diffuseMap0"), 0);
    p.setUniformValue(unlit->uniformLocation("ModelViewProj"), QMatrix4x4());
    p.setUniformValue(unlit->uniformLocation("diffuseColor"), 1.0f, 0.0f, 0.0f, 1.0f);
    p.setUniformValue(unlit->uniformLocation("alphaRef"), 0.0f);
    p.setUniformValue(unlit->uniformLocation("camoEnabled"), 0);
    std::vector<Vertex> quad;
    appendQuad(quad, -1, 1, {0, 0, 1});
    draw(quad);
    p.release();

    EXPECT_EQ(pixels().pixel(32, 32), qRgba(255, 0, 0, 255));
}

TEST_F(ShaderLoaderPixelTest, BumpedLightsTheSideFacingTheLight)
{
    ShaderProgram* bumped = loader->program(Bumped);
    QOpenGLShaderProgram& p = bindBumped(bumped, {128, 128, 255, 255}, 1);
    std::vector<Vertex> quads;
    appendQuad(quads, -1, 0, {0, 0, 1}); // faces the light
    appendQuad(quads, 0, 1, {0, 0, -1}); // faces away
    draw(quads);
    p.release();

    const QImage image = pixels();
    EXPECT_GT(qRed(image.pixel(16, 32)), 230);
    // Only the ambient term, 0.2 of white.
    EXPECT_NEAR(qRed(image.pixel(48, 32)), 51, 3);
}

TEST_F(ShaderLoaderPixelTest, BumpedReadsThePackedNormalFromAlphaAndGreen)
{
    // x in alpha, y in green: flat. Read as red/green it would tilt the
    // normal fully sideways, away from the light.
    QOpenGLShaderProgram& p = bindBumped(loader->program(Bumped), {0, 128, 255, 128}, 0);
    std::vector<Vertex> quad;
    appendQuad(quad, -1, 1, {0, 0, 1});
    draw(quad);
    p.release();

    EXPECT_GT(qRed(pixels().pixel(32, 32)), 230);
}

TEST_F(ShaderLoaderPixelTest, BumpedFollowsTheNormalMap)
{
    // x = -1 in red: the shading normal lies in the surface, at right
    // angles to the light, so only the ambient term is left.
    QOpenGLShaderProgram& p = bindBumped(loader->program(Bumped), {0, 128, 128, 255}, 1);
    std::vector<Vertex> quad;
    appendQuad(quad, -1, 1, {0, 0, 1});
    draw(quad);
    p.release();

    EXPECT_NEAR(qRed(pixels().pixel(32, 32)), 51, 6);
}

TEST_F(ShaderLoaderPixelTest, NoLightingWithoutTintShowsTheTexture)
{
    ShaderProgram* unlit = loader->program(NoLighting);
    ASSERT_TRUE(unlit->program->bind());
    bindTexel(0, 10, 200, 30, 255);
    QOpenGLShaderProgram& p = *unlit->program;
    p.setUniformValue(unlit->uniformLocation("diffuseMap0"), 0);
    p.setUniformValue(unlit->uniformLocation("ModelViewProj"), QMatrix4x4());
    p.setUniformValue(unlit->uniformLocation("diffuseColor"), 0.0f, 0.0f, 0.0f, 0.0f);
    std::vector<Vertex> quad;
    appendQuad(quad, -1, 1, {0, 0, 1});
    draw(quad);
    p.release();

    EXPECT_EQ(pixels().pixel(32, 32), qRgba(10, 200, 30, 255));
}

TEST_F(ShaderLoaderPixelTest, AlphaVariantCutsWithoutAReference)
{
    // LightingOnlyAlpha pairs the bump vertex stage with the basic
    // fragment stage; it must link and draw, and cut texels below 0.5.
    ShaderProgram* alpha = loader->program(LightingOnlyAlpha);
    ASSERT_TRUE(alpha->program->bind());
    QOpenGLShaderProgram& p = *alpha->program;
    bindTexel(0, 255, 255, 255, 100);
    p.setUniformValue(alpha->uniformLocation("diffuseMap0"), 0);
    for (const char* matrix : {"ModelViewProj", "ModelView", "Model", "View"})
        p.setUniformValue(alpha->uniformLocation(matrix), QMatrix4x4());
    p.setUniformValue(alpha->uniformLocation("NormalMatrix"), QMatrix3x3());
    p.setUniformValue(alpha->uniformLocation("lightPos"), QVector3D(0, 0, 10));
    p.setUniformValue(alpha->uniformLocation("lightDiffuse"), QVector3D(1, 1, 1));
    p.setUniformValue(alpha->uniformLocation("alphaRef"), 0.0f);
    std::vector<Vertex> quad;
    appendQuad(quad, -1, 1, {0, 0, 1});
    draw(quad);
    EXPECT_EQ(pixels().pixel(32, 32), qRgba(0, 0, 0, 0));

    // A reference below the texel's alpha lets it through.
    p.setUniformValue(alpha->uniformLocation("alphaRef"), 0.3f);
    gl().glBindVertexArray(vao);
    gl().glDrawArrays(GL_TRIANGLES, 0, 6);
    gl().glBindVertexArray(0);
    p.release();
    EXPECT_GT(qRed(pixels().pixel(32, 32)), 230);
}

TEST_F(ShaderLoaderPixelTest, CamoSaverPaintsWhereTheMaskAllows)
{
    ShaderProgram* saver = loader->camoSaverProgram();
    ASSERT_TRUE(saver->program->bind());
    QOpenGLShaderProgram& p = *saver->program;
    bindTexel(0, 200, 200, 200, 255); // diffuse
    bindTexel(2, 255, 0, 0, 0);       // pattern: channel r only
    p.setUniformValue(saver->uniformLocation("diffuseMap0"), 0);
    p.setUniformValue(saver->uniformLocation("exclusionMap"), 1);
    p.setUniformValue(saver->uniformLocation("camoMap"), 2);
    p.setUniformValue(saver->uniformLocation("camoTiling"), 1.0f, 1.0f, 0.0f, 0.0f);
    p.setUniformValue(saver->uniformLocation("camoColor0"), 0.0f, 1.0f, 0.0f, 1.0f);
    p.setUniformValue(saver->uniformLocation("camoColor1"), 1.0f, 0.0f, 0.0f, 1.0f);
    p.setUniformValue(saver->uniformLocation("camoColor2"), 1.0f, 0.0f, 0.0f, 1.0f);
    p.setUniformValue(saver->uniformLocation("camoColor3"), 1.0f, 0.0f, 0.0f, 1.0f);

    // Mask red 255: painted with colour 0. The quad covers UV 0..1 whatever
    // its positions say, since the bake draws in UV space.
    bindTexel(1, 255, 0, 0, 255);
    std::vector<Vertex> quad;
    appendQuad(quad, 5, 7, {0, 0, 1});
    for (Vertex& v : quad) {
        v.uv[0] = v.position[0] == 5 ? 0.0f : 1.0f;
        v.uv[1] = (v.position[1] + 1) / 2;
    }
    draw(quad);
    EXPECT_EQ(pixels().pixel(32, 32), qRgba(0, 255, 0, 255));

    // Mask red 0: the diffuse texel stays as it was.
    bindTexel(1, 0, 255, 255, 255);
    gl().glBindVertexArray(vao);
    gl().glDrawArrays(GL_TRIANGLES, 0, 6);
    gl().glBindVertexArray(0);
    p.release();
    EXPECT_EQ(pixels().pixel(32, 32), qRgba(200, 200, 200, 255));
}

} // namespace
