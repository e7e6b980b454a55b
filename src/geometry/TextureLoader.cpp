#include "TextureLoader.h"

#include "BinaryReader.h"
#include "DdsImage.h"
#include "FileManager.h"
#include "GlFunctions.h"
#include "Log.h"
#include "PackedXmlReader.h"
#include "Settings.h"

#include <QDir>
#include <QFile>
#include <QIODevice>
#include <QOpenGLFunctions_3_2_Core>

#include <nvtt/nvtt.h>

#include <algorithm>
#include <memory>

namespace {
// EXT_texture_filter_anisotropic, which the 3.2 core headers do not name.
constexpr GLenum TextureMaxAnisotropy = 0x84FE;
constexpr GLenum MaxTextureMaxAnisotropy = 0x84FF;

constexpr int DdsHeaderSize = 128;

QString modPath()
{
    const Settings* settings = Settings::instance();
    return settings ? settings->modPath : QString();
}

// The name of the file that announces a high-definition base level.
QString sidecarName(const QString& key)
{
    QString sidecar = key;
    sidecar.replace(QStringLiteral(".dds"), QStringLiteral(".texformat"), Qt::CaseInsensitive);
    return sidecar;
}

// The text of the first "mip" element in the first element below the root.
QString highDefinitionName(QIODevice* sidecar, const QString& sidecarName)
{
    BinaryReader reader(sidecar);
    PackedXmlReader xml(&reader);
    const QDomDocument document = xml.read(sidecarName);
    return document.documentElement()
        .firstChildElement()
        .firstChildElement(QStringLiteral("mip"))
        .text()
        .trimmed();
}
} // namespace

TextureLoader::TextureLoader(QObject* parent)
    : QObject(parent), minFilter(GL_LINEAR_MIPMAP_LINEAR), magFilter(GL_LINEAR)
{
    Log::log(QStringLiteral("Creating texture loader."), Log::Info);
    if (Settings* settings = Settings::instance())
        connect(settings, &Settings::textureFilterChanged, this, &TextureLoader::filterChanged);
    filterChanged();

    // While this first load runs noTexture is still 0, so a missing fallback
    // file leaves noTexture at 0: materials then sample no texture at all.
    noTexture = loadPermanentTexture(QStringLiteral("../data/NoTexture.dds"));
    gridTexture = loadPermanentTexture(QStringLiteral("../data/grid.dds"));
}

TextureLoader::~TextureLoader()
{
    clearTankTextures();
    if (QOpenGLFunctions_3_2_Core* gl = glFunctions()) {
        for (unsigned int id : std::as_const(permanentTextures))
            gl->glDeleteTextures(1, &id);
    }
    permanentTextures.clear();
    Log::log(QStringLiteral("Texture Loader shutdown."), Log::Info);
}

QString TextureLoader::normalisedName(const QString& name)
{
    const QStringList parts = name.split(QLatin1Char('.'));
    QString key = name;
    if (parts.size() == 1)
        key += QStringLiteral(".dds");
    else if (parts.at(1) == QLatin1String("tga"))
        key = parts.at(0) + QStringLiteral(".dds");
    return key.trimmed();
}

float TextureLoader::driverMaxAnisotropy() const
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return 0;
    GLfloat maximum = 0;
    gl->glGetFloatv(MaxTextureMaxAnisotropy, &maximum);
    // A driver without the extension answers GL_INVALID_ENUM; drop it so the
    // next error check does not blame its caller.
    while (gl->glGetError() != GL_NO_ERROR) {
    }
    return maximum;
}

void TextureLoader::filterChanged()
{
    const Settings* settings = Settings::instance();
    const QString filter = settings ? settings->textureFilter : QString();
    anisotropy = 0;

    static const struct
    {
        const char* name;
        float level;
    } anisotropicLevels[] = {{"Anisotropic 2x", 2},
                             {"Anisotropic 4x", 4},
                             {"Anisotropic 8x", 8},
                             {"Anisotropic 16x", 16}};

    if (filter == QLatin1String("Bilinear")) {
        minFilter = GL_NEAREST_MIPMAP_NEAREST;
        magFilter = GL_NEAREST;
        return;
    }
    if (filter == QLatin1String("Trilinear")) {
        minFilter = GL_LINEAR_MIPMAP_LINEAR;
        magFilter = GL_LINEAR;
        return;
    }
    for (const auto& entry : anisotropicLevels) {
        if (filter == QLatin1String(entry.name)) {
            minFilter = GL_LINEAR_MIPMAP_LINEAR;
            magFilter = GL_LINEAR;
            anisotropy = std::min(entry.level, driverMaxAnisotropy());
            return;
        }
    }
}

unsigned int TextureLoader::loadTexture(const QString& name)
{
    return loadThroughCache(tankTextures, name);
}

unsigned int TextureLoader::loadPermanentTexture(const QString& name)
{
    return loadThroughCache(permanentTextures, name);
}

unsigned int TextureLoader::loadUncached(const QString& name)
{
    return loadFile(name);
}

unsigned int TextureLoader::loadThroughCache(QMap<QString, unsigned int>& cache,
                                             const QString& name)
{
    const QString key = normalisedName(name);
    const auto found = cache.constFind(key);
    if (found != cache.constEnd())
        return found.value();

    Log::log(QStringLiteral("Loading Texture: ") + QDir::toNativeSeparators(key), Log::Info);
    const unsigned int id = loadFile(key);
    // Failures stay out of the cache so that the next request searches again.
    if (id == noTexture)
        return id;
    cache.insert(key, id);
    return id;
}

QIODevice* TextureLoader::openTexture(const QString& key)
{
    FileManager* files = FileManager::instance();
    QIODevice* device = nullptr;
    if (fromArchives)
        device = files ? files->openArchiveFile(key) : nullptr;
    else
        device = FileManager::openPlainFile(modPath() + key);
    if (!device && files)
        device = files->getFile(key);
    if (!device && files)
        device = files->getFile(modPath() + key);
    return device;
}

QIODevice* TextureLoader::openHighDefinition(const QString& key)
{
    FileManager* files = FileManager::instance();
    const QString sidecar = sidecarName(key);
    const bool exists =
        QFile::exists(modPath() + sidecar) || (files && files->existsInArchives(sidecar));
    if (!exists || !files)
        return nullptr;

    const auto openResource = [this, files](const QString& name) {
        return fromArchives ? files->openArchiveFile(name) : files->getFile(name);
    };
    const std::unique_ptr<QIODevice> sidecarDevice(openResource(sidecar));
    if (!sidecarDevice)
        return nullptr;
    const QString hdName = highDefinitionName(sidecarDevice.get(), sidecar);
    return hdName.isEmpty() ? nullptr : openResource(hdName);
}

unsigned int TextureLoader::loadFile(const QString& key)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    const std::unique_ptr<QIODevice> device(gl ? openTexture(key) : nullptr);
    if (!device) {
        Log::log(QStringLiteral("Could not open texture: ") + key, Log::Warning);
        return noTexture;
    }

    GLuint id = 0;
    gl->glGenTextures(1, &id);
    gl->glBindTexture(GL_TEXTURE_2D, id);

    const std::unique_ptr<QIODevice> hdDevice(openHighDefinition(key));
    const bool uploaded =
        hdDevice ? uploadDdsWithHd(device.get(), hdDevice.get()) : uploadDds(device.get());
    if (!uploaded) {
        Log::log(QStringLiteral("Failed to load texture: ") + key, Log::Warning);
        gl->glDeleteTextures(1, &id);
        gl->glBindTexture(GL_TEXTURE_2D, 0);
        return noTexture;
    }
    gl->glBindTexture(GL_TEXTURE_2D, 0);
    return id;
}

unsigned int TextureLoader::textureByName(const QString& name, bool loadIfMissing)
{
    // The id under key; found tells whether the key is in the cache at all.
    const auto lookUp = [this, loadIfMissing](const QString& key, bool& found) -> unsigned int {
        const auto entry = tankTextures.constFind(key);
        found = entry != tankTextures.constEnd();
        if (!found)
            return 0;
        if (entry.value() != 0)
            return entry.value();
        // An entry without a texture is loaded when the caller allows it.
        return loadIfMissing ? loadTexture(key) : 0;
    };

    bool found = false;
    unsigned int id = lookUp(name, found);
    if (found)
        return id;

    QString slashed = name;
    slashed.replace(QLatin1Char('\\'), QLatin1Char('/'));
    id = lookUp(slashed, found);
    if (found)
        return id;

    Log::log(QStringLiteral("Filename not found in cache:") + name, Log::Error);
    return loadIfMissing ? loadTexture(name) : 0;
}

QString TextureLoader::textureName(unsigned int id) const
{
    for (auto entry = tankTextures.constBegin(); entry != tankTextures.constEnd(); ++entry) {
        if (entry.value() == id)
            return entry.key();
    }
    return QString();
}

void TextureLoader::bindTexture(int unit, unsigned int id)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;
    gl->glActiveTexture(GL_TEXTURE0 + GLenum(unit));
    gl->glBindTexture(GL_TEXTURE_2D, id);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GLint(minFilter));
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GLint(magFilter));
    if (anisotropy != 0)
        gl->glTexParameteri(GL_TEXTURE_2D, TextureMaxAnisotropy, GLint(anisotropy));
}

void TextureLoader::clearTankTextures()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    for (unsigned int id : std::as_const(tankTextures)) {
        // The fallback is shared by every cache and must outlive a vehicle.
        if (id != noTexture && gl)
            gl->glDeleteTextures(1, &id);
    }
    tankTextures.clear();
}

QSize TextureLoader::ddsSize(const QString& name)
{
    FileManager* files = FileManager::instance();
    const std::unique_ptr<QIODevice> device(files ? files->getFile(name) : nullptr);
    if (!device)
        return QSize(0, 0);
    int width = 0;
    int height = 0;
    if (!readDdsSize(device->read(DdsHeaderSize), width, height))
        return QSize(0, 0);
    return QSize(width, height);
}

bool TextureLoader::writeDds(const QString& path, const void* pixels, int width, int height,
                             bool generateMipmaps)
{
    if (!pixels || width <= 0 || height <= 0)
        return false;

    nvtt::InputOptions input;
    input.setTextureLayout(nvtt::TextureType_2D, width, height, 1);
    input.setMipmapData(pixels, width, height, 1, 0, 0);
    input.setMipmapGeneration(generateMipmaps, -1);

    nvtt::OutputOptions output;
    const QByteArray fileName = path.toLatin1();
    output.setFileName(fileName.constData());

    nvtt::CompressionOptions compression;
    compression.setFormat(nvtt::Format_DXT1);

    nvtt::Compressor compressor;
    // Takes effect only where a CUDA device exists.
    compressor.enableCudaAcceleration(true);
    return compressor.process(input, compression, output);
}
