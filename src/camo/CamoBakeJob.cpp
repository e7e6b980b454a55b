#include "CamoBakeJob.h"

#include "CamoLoader.h"
#include "Constants.h"
#include "GlFunctions.h"
#include "Log.h"
#include "MessageBoxes.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "StatusMessages.h"
#include "TextureLoader.h"
#include "VertexBuffer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>
#include <QSaveFile>
#include <QTemporaryFile>

namespace {

// EXT_texture_filter_anisotropic, which the 3.2 core headers do not name.
constexpr GLenum TextureMaxAnisotropy = 0x84FE;
constexpr GLenum MaxTextureMaxAnisotropy = 0x84FF;
constexpr float ColourScale = 0.003921569f;

// x, y, z, u, v of the four corners, as a triangle strip.
constexpr float QuadVertices[] = {1, 1, 0, 1, 1, -1, 1, 0, 0, 1, 1, -1, 0, 1, 0, -1, -1, 0, 0, 0};

QString setting(QString Settings::*member)
{
    const Settings* settings = Settings::instance();
    return settings ? settings->*member : QString();
}

void makeQuad(VertexBuffer& quad)
{
    auto* position = new VertexAttribute;
    position->kind = VertexAttribute::Float3;
    position->location = SlotPosition;
    auto* uv = new VertexAttribute;
    uv->kind = VertexAttribute::Float2;
    uv->location = SlotTexCoord0;
    quad.setAttributes({position, uv});
    quad.create(4, QuadVertices);
}

// Mipmapped and filtered as the game's textures, though the pass reads only
// the base level.
void prepareTarget(QOpenGLFunctions_3_2_Core* gl, QOpenGLFramebufferObject& target)
{
    gl->glBindTexture(GL_TEXTURE_2D, target.texture());
    GLfloat anisotropy = 0;
    gl->glGetFloatv(MaxTextureMaxAnisotropy, &anisotropy);
    if (gl->glGetError() == GL_NO_ERROR && anisotropy > 0)
        gl->glTexParameterf(GL_TEXTURE_2D, TextureMaxAnisotropy, anisotropy);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    gl->glGenerateMipmap(GL_TEXTURE_2D);
    gl->glBindTexture(GL_TEXTURE_2D, 0);
}

void setUniforms(QOpenGLFunctions_3_2_Core* gl, ShaderProgram& program,
                 const CamoBakeInputs& inputs)
{
    gl->glUniform1i(program.uniformLocation(QStringLiteral("diffuseMap0")), 0);
    gl->glUniform1i(program.uniformLocation(QStringLiteral("exclusionMap")), 1);
    gl->glUniform1i(program.uniformLocation(QStringLiteral("camoMap")), 2);
    const Vector4& t = inputs.tiling;
    gl->glUniform4f(program.uniformLocation(QStringLiteral("camoTiling")), t[0], t[1], t[2], t[3]);
    for (size_t i = 0; i < inputs.colors.size(); ++i) {
        const Vector4& c = inputs.colors[i];
        gl->glUniform4f(program.uniformLocation(QStringLiteral("camoColor") + QString::number(i)),
                        c[0] * ColourScale, c[1] * ColourScale, c[2] * ColourScale,
                        c[3] * ColourScale);
    }
}

void bindUnit(QOpenGLFunctions_3_2_Core* gl, int unit, unsigned int id)
{
    if (TextureLoader* textures = TextureLoader::instance()) {
        textures->bindTexture(unit, id);
        return;
    }
    gl->glActiveTexture(GL_TEXTURE0 + GLenum(unit));
    gl->glBindTexture(GL_TEXTURE_2D, id);
}

void swapRedBlue(QByteArray& pixels)
{
    char* p = pixels.data();
    for (qsizetype i = 0; i + 3 < pixels.size(); i += 4)
        std::swap(p[i], p[i + 2]);
}

} // namespace

QByteArray renderCamoBake(const CamoBakeInputs& inputs, QSize size)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    const ShaderLoader* shaders = ShaderLoader::instance();
    ShaderProgram* program = shaders ? shaders->camoSaverProgram() : nullptr;
    if (!gl || !program || size.isEmpty())
        return QByteArray();

    QOpenGLFramebufferObject target(size, QOpenGLFramebufferObject::Depth);
    if (!target.isValid())
        return QByteArray();
    prepareTarget(gl, target);
    VertexBuffer quad;
    makeQuad(quad);

    GLint viewport[4] = {0, 0, 0, 0};
    gl->glGetIntegerv(GL_VIEWPORT, viewport);
    gl->glViewport(0, 0, size.width(), size.height());
    target.bind();
    gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    gl->glDisable(GL_BLEND);
    quad.bind();
    program->program->bind();
    bindUnit(gl, 0, inputs.diffuse);
    bindUnit(gl, 1, inputs.exclusionMask);
    bindUnit(gl, 2, inputs.pattern);
    setUniforms(gl, *program, inputs);
    gl->glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    quad.unbind();
    gl->glActiveTexture(GL_TEXTURE0);
    program->program->release();

    QByteArray pixels(qsizetype(size.width()) * size.height() * 4, Qt::Uninitialized);
    gl->glPixelStorei(GL_PACK_ALIGNMENT, 4);
    gl->glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    // The compressor takes BGRA.
    swapRedBlue(pixels);
    target.release();
    gl->glViewport(0, 0, viewport[2], viewport[3]);
    return pixels;
}

bool saveCamoBake(const QString& path, const QByteArray& bgra, QSize size)
{
    if (size.isEmpty() || bgra.size() < qsizetype(size.width()) * size.height() * 4)
        return false;
    // The compressor writes a file itself; it goes to a scratch file first,
    // so that the target is replaced in one step or not at all.
    QTemporaryFile scratch(QDir::tempPath() + QStringLiteral("/ferrox-bake-XXXXXX.dds"));
    if (!scratch.open())
        return false;
    scratch.close();
    if (!TextureLoader::writeDds(scratch.fileName(), bgra.constData(), size.width(), size.height(),
                                 true))
        return false;
    if (!scratch.open())
        return false;
    const QByteArray compressed = scratch.readAll();
    QSaveFile file(path);
    return !compressed.isEmpty() && file.open(QIODevice::WriteOnly) &&
           file.write(compressed) == compressed.size() && file.commit();
}

bool isInsideFolder(const QString& path, const QString& folder)
{
    if (folder.isEmpty())
        return false;
    const QString cleanFolder = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    const QString cleanPath = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    // Symbolic links of existing folders resolved too.
    const QString realFolder = QFileInfo(cleanFolder).canonicalFilePath();
    QString realPath = cleanPath;
    for (QFileInfo existing(cleanPath); !existing.filePath().isEmpty();
         existing = QFileInfo(existing.path())) {
        if (existing.exists()) {
            const QString rest = cleanPath.mid(existing.absoluteFilePath().size());
            realPath = existing.canonicalFilePath() + rest;
            break;
        }
        if (existing.isRoot() || existing.path() == existing.filePath())
            break;
    }
    const auto within = [](const QString& candidate, const QString& base) {
        return !base.isEmpty() &&
               (candidate == base || candidate.startsWith(base + QLatin1Char('/')));
    };
    return within(cleanPath, cleanFolder) || within(realPath, realFolder);
}

CamoBakeJob::CamoBakeJob(const QString& diffusePath, const QString& maskPath,
                         const Vector4& jobTiling)
    : diffuse(diffusePath), exclusionMask(maskPath), tiling(jobTiling)
{
}

QString CamoBakeJob::outputPath() const
{
    return QDir::toNativeSeparators(setting(&Settings::modPath) + QLatin1Char('/') +
                                    TextureLoader::normalisedName(diffuse));
}

bool CamoBakeJob::confirmOverwrite(const QString& path) const
{
    const QString text = QStringLiteral("WARNING! ") + path +
                         QStringLiteral(" already exists.\nAre you sure you want to overwrite "
                                        "this file?");
    return warningBox(nullptr, QLatin1String(Ferrox::ApplicationName), text,
                      QMessageBox::Ok | QMessageBox::Cancel,
                      QMessageBox::Cancel) == QMessageBox::Ok;
}

CamoBakeJob::Result CamoBakeJob::run()
{
    const QString path = outputPath();
    const QString saving = QStringLiteral("Saving baked camo file: ");
    Log::log(saving + path, Log::Info);
    showStatusMessage(saving + path, 0);
    if (isInsideFolder(path, setting(&Settings::gavrelPath))) {
        Log::log(QStringLiteral("Refusing to write into the game folder: ") + path, Log::Warning);
        return Failed;
    }
    if (QFile::exists(path)) {
        if (!confirmOverwrite(path))
            return Refused;
        // The old result must not be the source of the new one.
        QFile::remove(path);
    }
    const Result result = bake(path);
    Log::log(saving + QStringLiteral("Done"), Log::Info);
    showStatusMessage(saving + QStringLiteral("Done"), 0);
    return result;
}

CamoBakeJob::Result CamoBakeJob::bake(const QString& path)
{
    TextureLoader* textures = TextureLoader::instance();
    const CamoLoader* camo = CamoLoader::instance();
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    const QString source = TextureLoader::normalisedName(diffuse);
    const QSize size = textures ? textures->ddsSize(source) : QSize();
    if (!textures || !camo || !gl || size.isEmpty()) {
        Log::log(QStringLiteral("Not a DDS texture, not baked: ") + diffuse, Log::Warning);
        return Failed;
    }
    if (!QDir().mkpath(QFileInfo(path).path())) {
        Log::log(QStringLiteral("Failed to create directory: ") + QFileInfo(path).path(),
                 Log::Warning);
        return Failed;
    }
    // Straight from the files: the vehicle's cache may hold an older bake.
    CamoBakeInputs inputs;
    inputs.diffuse = textures->loadUncached(source);
    inputs.exclusionMask = textures->loadTexture(exclusionMask);
    inputs.pattern = camo->textureId;
    inputs.tiling = tiling;
    inputs.colors = camo->colors;
    const QByteArray pixels = renderCamoBake(inputs, size);
    if (inputs.diffuse != textures->noTexture)
        gl->glDeleteTextures(1, &inputs.diffuse);
    if (!saveCamoBake(path, pixels, size)) {
        Log::log(QStringLiteral("Failed to save camo bake file: ") + path, Log::Warning);
        return Failed;
    }
    return Written;
}
