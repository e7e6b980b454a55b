#include "ShaderLoader.h"

#include "GlErrors.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "Settings.h"

#include <QFile>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>

#include <array>

namespace {

const char* const programNames[ShaderCount] = {
    "Bumped",       "BumpedDual",        "BumpedPbs",           "BumpedPbsDual",  "Grid",
    "LightingOnly", "LightingOnlyAlpha", "NoLighting",          "NoLightingDual", "NoLightingAlpha",
    "Wireframe",    "CollisionLighting", "CollisionNoLighting", "Depth",          "Font"};

// The define strings carry their line break in front and none behind: the
// rest of the file's first line ends the last one.
const QString dualTexture = QStringLiteral("\n#define DUAL_TEXTURE");
const QString lightingBasic = QStringLiteral("\n#define LIGHTING_BASIC");
const QString alphaStatic = QStringLiteral("\n#define ALPHA_STATIC");
const QString grid = QStringLiteral("\n#define GRID");
const QString lightingBump = QStringLiteral("\n#define LIGHTING_BUMP");

struct ProgramFiles
{
    const char* vertexFile;
    QStringList vertexDefines;
    const char* fragmentFile;
    QStringList fragmentDefines;
};

// Indexed by ShaderId.
const std::array<ProgramFiles, ShaderCount>& programFiles()
{
    static const std::array<ProgramFiles, ShaderCount> table = {{
        {"/lighting.vert", {lightingBump}, "/lighting.frag", {lightingBump}},
        {"/lighting.vert",
         {lightingBump, dualTexture},
         "/lighting.frag",
         {lightingBump, dualTexture}},
        {"/pbs.vert", {}, "/pbs.frag", {}},
        {"/pbs.vert", {dualTexture}, "/pbs.frag", {dualTexture}},
        {"/noLighting.vert", {grid}, "/noLighting.frag", {grid}},
        {"/lighting.vert", {lightingBasic}, "/lighting.frag", {lightingBasic}},
        {"/lighting.vert", {lightingBump}, "/lighting.frag", {lightingBasic, alphaStatic}},
        {"/noLighting.vert", {}, "/noLighting.frag", {}},
        {"/noLighting.vert", {dualTexture}, "/noLighting.frag", {dualTexture}},
        {"/noLighting.vert", {}, "/noLighting.frag", {alphaStatic}},
        {"/wireframe.vert", {}, "/wireframe.frag", {}},
        {"/collision.vert", {lightingBasic}, "/collision.frag", {lightingBasic}},
        {"/collision.vert", {}, "/collision.frag", {}},
        {"/depth.vert", {}, "/depth.frag", {}},
        {"/font.vert", {}, "/font.frag", {}},
    }};
    return table;
}

const int buildOrder[ShaderCount] = {8, 0, 1, 4, 5, 6, 7, 9, 10, 12, 11, 13, 14, 2, 3};

// The vertex buffer layouts rely on these slot numbers.
const std::array<const char*, 11> tableAttributes = {
    "iVertPos", "iTexCoord0", "iTexCoord1", "iTexCoord2", "iNormal",  "iBinormal",
    "iTangent", "iGeneric0",  "iGeneric1",  "iGeneric2",  "iGeneric3"};

const char* const tableUniforms[] = {
    "diffuseMap0",   "diffuseMap1",    "depthMap",      "alphaRef",      "normalMap",
    "specularMap",   "shadowMap",      "NormalMatrix",  "ModelView",     "ModelView3",
    "Model",         "View",           "ModelViewProj", "DepthBias",     "diffuseColor",
    "lightPos",      "lightSpec",      "lightDiffuse",  "lightAmbient",  "camoTiling",
    "camoColor0",    "camoColor1",     "camoColor2",    "camoColor3",    "camoEnabled",
    "exclusionMap",  "camoMap",        "shadowDivide",  "shadowSamples", "shadowEnabled",
    "dxt1NormalMap", "detailMetallic", "detailTile",    "detailPower",   "glossMap",
    "detailMap"};

const char* const camoSaverUniforms[] = {"diffuseMap0", "exclusionMap", "camoMap",
                                         "TexCoord0",   "camoTiling",   "camoColor0",
                                         "camoColor1",  "camoColor2",   "camoColor3"};

void bindAttribute(QOpenGLShaderProgram& program, int slot, const char* name)
{
    QOpenGLContext::currentContext()->functions()->glBindAttribLocation(program.programId(), slot,
                                                                        name);
}

template <std::size_t N> void addUniforms(ShaderProgram& program, const char* const (&names)[N])
{
    for (const char* uniformName : names)
        program.addUniform(QLatin1String(uniformName));
}

// Builds one of the two programs outside the table: fragment stage first,
// compile results not checked, then two attribute slots and the link.
std::unique_ptr<ShaderProgram> buildOutsideProgram(const QString& shaderDir, const QString& file,
                                                   const char* secondAttribute,
                                                   const QString& failureText)
{
    auto result = std::make_unique<ShaderProgram>(QString());
    QOpenGLShaderProgram& program = *result->program;
    program.addShaderFromSourceCode(QOpenGLShader::Fragment,
                                    ShaderLoader::stageSource(shaderDir + file + ".frag", {}));
    program.addShaderFromSourceCode(QOpenGLShader::Vertex,
                                    ShaderLoader::stageSource(shaderDir + file + ".vert", {}));
    bindAttribute(program, 0, "iVertPos");
    bindAttribute(program, 1, secondAttribute);
    if (!program.link()) {
        Log::log(failureText + result->log(), Log::Error);
        return nullptr;
    }
    return result;
}

} // namespace

QString shaderName(int id)
{
    if (id < 0 || id >= ShaderCount)
        return QString();
    return QLatin1String(programNames[id]);
}

ShaderProgram::ShaderProgram(const QString& displayName)
    : name(displayName), program(std::make_unique<QOpenGLShaderProgram>())
{
}

ShaderProgram::~ShaderProgram() = default;

void ShaderProgram::addUniform(const QString& uniformName)
{
    uniforms.insert(uniformName, program->uniformLocation(uniformName));
}

int& ShaderProgram::uniformLocation(const QString& uniformName)
{
    // operator[] enters an unknown name with a value-initialised 0; the grid
    // relies on this to reach its only uniform.
    return uniforms[uniformName];
}

QString ShaderProgram::log() const
{
    return program->log();
}

ShaderLoader::ShaderLoader(QObject* parent) : QObject(parent)
{
    programs.reserve(ShaderCount);
}

ShaderLoader::~ShaderLoader()
{
    qDeleteAll(programs);
}

ShaderProgram* ShaderLoader::program(int id) const
{
    return programs.value(id, nullptr);
}

QString ShaderLoader::stageSource(const QString& path, const QStringList& defines)
{
    QFile file(path);
    QString text;
    if (file.open(QIODevice::ReadOnly)) {
        text = QString::fromUtf8(file.readAll());
    } else {
        const QString message = QStringLiteral("Failed to open shader: ") + path;
        Log::log(message, Log::Error);
        fatalError(message);
    }
    // The file is not checked: whatever its first 12 characters hold stays
    // in front. Padding keeps a short text well defined; it fails to compile.
    qsizetype position = 12;
    if (text.size() < position)
        text = text.leftJustified(position, QLatin1Char(' '));
    for (const QString& define : defines) {
        text.insert(position, define);
        position += define.size();
    }
    return text;
}

bool ShaderLoader::buildProgram(int id, const QString& vertexSource, const QString& fragmentSource,
                                const QString& geometrySource)
{
    auto result = std::make_unique<ShaderProgram>(shaderName(id));
    QOpenGLShaderProgram& program = *result->program;
    bool compiled = program.addShaderFromSourceCode(QOpenGLShader::Vertex, vertexSource) &&
                    program.addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentSource);
    if (compiled && !geometrySource.isEmpty()) {
        result->hasGeometryStage = true;
        compiled = program.addShaderFromSourceCode(QOpenGLShader::Geometry, geometrySource);
    }
    if (!compiled) {
        Log::log(QStringLiteral("Shader load error: ") + result->log(), Log::Error);
        return false;
    }
    for (int slot = 0; slot < int(tableAttributes.size()); ++slot)
        bindAttribute(program, slot, tableAttributes[slot]);
    if (!program.link()) {
        Log::log(QStringLiteral("Failed to link shader: ") + result->log(), Log::Error);
        return false;
    }
    program.bind();
    addUniforms(*result, tableUniforms);
    program.release();
    programs.insert(id, result.release());
    return true;
}

bool ShaderLoader::loadShaders()
{
    const QString shaderDir = Settings::instance()->shaderDir;

    // All 30 sources are read before anything compiles. Two vertex sources
    // are shared instead of read again.
    QString vertexSources[ShaderCount];
    QString fragmentSources[ShaderCount];
    for (int id = 0; id < ShaderCount; ++id) {
        const ProgramFiles& files = programFiles()[id];
        if (id == LightingOnlyAlpha)
            vertexSources[id] = vertexSources[Bumped];
        else if (id == NoLightingAlpha)
            vertexSources[id] = vertexSources[NoLighting];
        else
            vertexSources[id] =
                stageSource(shaderDir + QLatin1String(files.vertexFile), files.vertexDefines);
        fragmentSources[id] =
            stageSource(shaderDir + QLatin1String(files.fragmentFile), files.fragmentDefines);
    }

    // Every program is tried, so one broken file shows all other errors too.
    bool allBuilt = true;
    for (int id : buildOrder)
        allBuilt = buildProgram(id, vertexSources[id], fragmentSources[id], QString()) && allBuilt;
    if (!allBuilt)
        return false;

    camoSaver = buildOutsideProgram(shaderDir, QStringLiteral("/camoSaver"), "iTexCoord0",
                                    QStringLiteral("Failed to link camosaver shader: "));
    if (!camoSaver)
        return false;
    camoSaver->program->bind();
    addUniforms(*camoSaver, camoSaverUniforms);
    camoSaver->program->release();

    line = buildOutsideProgram(shaderDir, QStringLiteral("/line"), "iColorPos",
                               QStringLiteral("Failed to link line shader: "));
    if (!line)
        return false;
    line->program->bind();
    line->addUniform(QStringLiteral("ModelViewProj"));
    line->program->release();

    checkGlErrors(QStringLiteral("ShaderLoader"));
    return true;
}
