#include "DdsImage.h"

#include "DeviceBytes.h"
#include "GlFunctions.h"
#include "Log.h"

#include <QIODevice>
#include <QOpenGLContext>
#include <QOpenGLFunctions_3_2_Core>

#include <cstring>

#ifndef GL_COMPRESSED_RGB_S3TC_DXT1_EXT
#define GL_COMPRESSED_RGB_S3TC_DXT1_EXT 0x83F0
#endif
#ifndef GL_COMPRESSED_RGBA_S3TC_DXT3_EXT
#define GL_COMPRESSED_RGBA_S3TC_DXT3_EXT 0x83F2
#endif
#ifndef GL_COMPRESSED_RGBA_S3TC_DXT5_EXT
#define GL_COMPRESSED_RGBA_S3TC_DXT5_EXT 0x83F3
#endif
#ifndef GL_COMPRESSED_RGBA_BPTC_UNORM
#define GL_COMPRESSED_RGBA_BPTC_UNORM 0x8E8C
#define GL_COMPRESSED_RGB_BPTC_SIGNED_FLOAT 0x8E8E
#define GL_COMPRESSED_RGB_BPTC_UNSIGNED_FLOAT 0x8E8F
#endif

namespace {
struct GlFormat
{
    GLenum internalFormat = 0; // 0: no mapping
    GLenum pixelFormat = 0;
    GLenum type = 0;
};

bool bptcDisabled = false;

GlFormat glFormatFor(DdsFormat format)
{
    switch (format) {
    case DdsFormat::RGB8:
        return {GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE};
    case DdsFormat::RGBA8:
        return {GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE};
    case DdsFormat::RGBA16:
        return {GL_RGBA16, GL_RGBA, GL_UNSIGNED_SHORT};
    case DdsFormat::RGBA16F:
        return {GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT};
    case DdsFormat::RGB32F:
        return {GL_RGB32F, GL_RGB, GL_FLOAT};
    case DdsFormat::RGBA32F:
        return {GL_RGBA32F, GL_RGBA, GL_FLOAT};
    case DdsFormat::DXT1:
        return {GL_COMPRESSED_RGB_S3TC_DXT1_EXT, 0, 0};
    case DdsFormat::DXT3:
        return {GL_COMPRESSED_RGBA_S3TC_DXT3_EXT, 0, 0};
    case DdsFormat::DXT5:
        return {GL_COMPRESSED_RGBA_S3TC_DXT5_EXT, 0, 0};
    case DdsFormat::ATI1N:
        return {GL_COMPRESSED_RED_RGTC1, 0, 0};
    case DdsFormat::ATI2N:
        return {GL_COMPRESSED_RG_RGTC2, 0, 0};
    case DdsFormat::BC4S:
        return {GL_COMPRESSED_SIGNED_RED_RGTC1, 0, 0};
    case DdsFormat::BC5S:
        return {GL_COMPRESSED_SIGNED_RG_RGTC2, 0, 0};
    case DdsFormat::BC6HU:
        return {GL_COMPRESSED_RGB_BPTC_UNSIGNED_FLOAT, 0, 0};
    case DdsFormat::BC6HS:
        return {GL_COMPRESSED_RGB_BPTC_SIGNED_FLOAT, 0, 0};
    case DdsFormat::BC7:
        return {GL_COMPRESSED_RGBA_BPTC_UNORM, 0, 0};
    default:
        return {};
    }
}

bool isBptc(DdsFormat format)
{
    return format == DdsFormat::BC6HU || format == DdsFormat::BC6HS || format == DdsFormat::BC7;
}

// BPTC is core from GL 4.2 and an extension before it.
bool driverHasBptc()
{
    if (bptcDisabled)
        return false;
    const QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context)
        return false;
    const QSurfaceFormat format = context->format();
    return format.version() >= qMakePair(4, 2) ||
           context->hasExtension(QByteArrayLiteral("GL_ARB_texture_compression_bptc"));
}

bool needsUnpacking(DdsFormat format)
{
    switch (format) {
    case DdsFormat::RGBE8:
    case DdsFormat::RGB9E5:
    case DdsFormat::RG11B10F:
    case DdsFormat::RGB565:
    case DdsFormat::RGBA4:
    case DdsFormat::RGB10A2:
        return true;
    default:
        return false;
    }
}

bool parseDevice(QIODevice* device, DdsImage& image)
{
    if (!device || !device->isReadable())
        return false;
    return image.parse(takeWholeDevice(device));
}

// Formats that cannot be put into a form the driver takes (the two
// shared-exponent formats unpack cannot widen) fail the one texture, which
// then falls back to the placeholder.
bool refuseFormat(DdsFormat format)
{
    Log::log(QStringLiteral("No OpenGL upload for DDS texture format ") +
                 QLatin1String(ddsFormatName(format)),
             Log::Warning);
    return false;
}

// Rows of RGB8 data are tightly packed; GL's default alignment of 4 would
// read odd-width levels skewed.
class TightUnpacking
{
public:
    explicit TightUnpacking(QOpenGLFunctions_3_2_Core* functions) : gl(functions)
    {
        gl->glGetIntegerv(GL_UNPACK_ALIGNMENT, &previous);
        gl->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    }
    ~TightUnpacking() { gl->glPixelStorei(GL_UNPACK_ALIGNMENT, previous); }

private:
    QOpenGLFunctions_3_2_Core* gl;
    GLint previous = 4;
};

GLenum targetFor(const DdsImage& image)
{
    if (image.depth == 0)
        return GL_TEXTURE_CUBE_MAP;
    if (image.depth > 1)
        return GL_TEXTURE_3D;
    // Block formats only exist for 2D images: a one-pixel-high DXT file is a
    // 2D texture of one row.
    if (image.height > 1 || isBlockFormat(image.format))
        return GL_TEXTURE_2D;
    return GL_TEXTURE_1D;
}

void uploadSurface(QOpenGLFunctions_3_2_Core* gl, GLenum target, int level, const DdsImage& image,
                   const GlFormat& glFormat, int depth, const char* data, qint64 size)
{
    const int w = image.levelWidth(level);
    const int h = image.levelHeight(level);
    const bool compressed = isBlockFormat(image.format);
    if (target == GL_TEXTURE_3D) {
        if (compressed)
            gl->glCompressedTexImage3D(target, level, glFormat.internalFormat, w, h, depth, 0,
                                       GLsizei(size), data);
        else
            gl->glTexImage3D(target, level, GLint(glFormat.internalFormat), w, h, depth, 0,
                             glFormat.pixelFormat, glFormat.type, data);
    } else if (target == GL_TEXTURE_1D) {
        gl->glTexImage1D(target, level, GLint(glFormat.internalFormat), w, 0, glFormat.pixelFormat,
                         glFormat.type, data);
    } else if (compressed) {
        gl->glCompressedTexImage2D(target, level, glFormat.internalFormat, w, h, 0, GLsizei(size),
                                   data);
    } else {
        gl->glTexImage2D(target, level, GLint(glFormat.internalFormat), w, h, 0,
                         glFormat.pixelFormat, glFormat.type, data);
    }
}

// The merge writes every level with glCompressedTexImage2D as the file has
// it, so only plain 2D images in the S3TC formats, and BPTC where the driver
// takes it, can take part.
bool mergeable(const DdsImage& image)
{
    const bool s3tc = image.format == DdsFormat::DXT1 || image.format == DdsFormat::DXT3 ||
                      image.format == DdsFormat::DXT5;
    return image.depth == 1 && (s3tc || (isBptc(image.format) && driverHasBptc()));
}

void uploadCompressedLevel(QOpenGLFunctions_3_2_Core* gl, int glLevel, const DdsImage& image,
                           int level)
{
    const qint64 offset = image.dataSize(0, level);
    const qint64 size = image.dataSize(level, 1);
    gl->glCompressedTexImage2D(GL_TEXTURE_2D, glLevel, glFormatFor(image.format).internalFormat,
                               image.levelWidth(level), image.levelHeight(level), 0, GLsizei(size),
                               image.pixels.constData() + offset);
}

// Puts the image into the form the driver is given: packed pixels and
// one- or two-channel data widened to 8-bit RGBA, BPTC decoded when the
// driver lacks it, the two-channel RGTC blocks' halves exchanged (the file
// stores the second channel first, GL reads the first block as red).
bool prepareForUpload(DdsImage& image)
{
    if (needsUnpacking(image.format))
        return image.unpack() && image.toRgba8();
    if (isBptc(image.format) && !driverHasBptc())
        return image.decompress();
    if (image.format == DdsFormat::ATI2N || image.format == DdsFormat::BC5S) {
        char* data = image.pixels.data();
        for (qint64 block = 0; block + 16 <= image.pixels.size(); block += 16) {
            char first[8];
            std::memcpy(first, data + block, 8);
            std::memmove(data + block, data + block + 8, 8);
            std::memcpy(data + block + 8, first, 8);
        }
        return true;
    }
    if (glFormatFor(image.format).internalFormat == 0)
        return image.toRgba8();
    return true;
}

bool uploadImage(QOpenGLFunctions_3_2_Core* gl, DdsImage& image)
{
    const DdsFormat fileFormat = image.format;
    if (!prepareForUpload(image))
        return refuseFormat(fileFormat);
    const GlFormat glFormat = glFormatFor(image.format);
    if (glFormat.internalFormat == 0)
        return refuseFormat(fileFormat);

    const GLenum target = targetFor(image);
    const TightUnpacking unpacking(gl);
    for (int level = 0; level < image.mipCount; ++level) {
        const char* data = image.pixels.constData() + image.dataSize(0, level);
        const qint64 size = image.dataSize(level, 1);
        if (target == GL_TEXTURE_CUBE_MAP) {
            for (int face = 0; face < 6; ++face)
                uploadSurface(gl, GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face), level, image,
                              glFormat, 1, data + face * (size / 6), size / 6);
        } else {
            const int depth = std::max(1, image.depth >> level);
            uploadSurface(gl, target, level, image, glFormat, depth, data, size);
        }
    }
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, image.mipCount - 1);
    return true;
}

// Why the two files cannot make one chain; empty when they can.
QString mergeProblem(const DdsImage& regular, const DdsImage& hd)
{
    if (!mergeable(regular))
        return QStringLiteral("the regular texture is %1, not block-compressed data the driver "
                              "takes as it is")
            .arg(QLatin1String(ddsFormatName(regular.format)));
    if (hd.format != regular.format)
        return QStringLiteral("its format %1 differs from the regular texture's %2")
            .arg(QLatin1String(ddsFormatName(hd.format)),
                 QLatin1String(ddsFormatName(regular.format)));
    if (!mergeable(hd))
        return QStringLiteral("it is not a plain 2D texture");
    return QString();
}
} // namespace

void setBptcUploadDisabled(bool disabled)
{
    bptcDisabled = disabled;
}

QString ddsUploadProblem(const DdsImage& image)
{
    switch (image.format) {
    case DdsFormat::RGB9E5:
    case DdsFormat::RG11B10F:
    case DdsFormat::Unknown:
        return QStringLiteral("no OpenGL upload for DDS texture format ") +
               QLatin1String(ddsFormatName(image.format));
    default:
        return QString();
    }
}

bool uploadDds(QIODevice* device)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    DdsImage image;
    if (!gl || !parseDevice(device, image))
        return false;
    return uploadImage(gl, image);
}

bool uploadDdsWithHd(QIODevice* device, QIODevice* hdDevice)
{
    if (!hdDevice)
        return uploadDds(device);
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    DdsImage regular;
    DdsImage hd;
    if (!gl || !parseDevice(device, regular) || !parseDevice(hdDevice, hd))
        return false;

    int levels = regular.mipCount + 1;
    if (hd.mipCount > 1)
        Log::log(QStringLiteral("HD texture has mip maps, this texture should only contain base "
                                "level 0 and no further mip maps."),
                 Log::Warning);
    if (hd.width <= regular.width || hd.height <= regular.height) {
        Log::log(QStringLiteral("Regular texture is the same size(or larger) than the HD "
                                "texture, skipping HD texture."),
                 Log::Warning);
        return uploadImage(gl, regular);
    }

    // A texture the modder saved in another form still shows: the regular
    // file alone, never black.
    const QString problem = mergeProblem(regular, hd);
    if (!problem.isEmpty()) {
        Log::log(QStringLiteral("HD texture not merged, the regular texture is shown alone: ") +
                     problem,
                 Log::Warning);
        return uploadImage(gl, regular);
    }

    for (int level = 0; level < levels; ++level) {
        if (level == 0)
            uploadCompressedLevel(gl, 0, hd, 0);
        else
            uploadCompressedLevel(gl, level, regular, level - 1);
    }
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, levels - 1);
    return true;
}
