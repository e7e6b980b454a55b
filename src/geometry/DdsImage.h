#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;

// Pixel formats of DDS files; the last ten are 4 x 4 block formats.
enum class DdsFormat
{
    Unknown = 0,
    R8,
    RG8,
    RGB8,
    RGBA8,
    R16,
    RG16,
    RGBA16,
    R16F,
    RG16F,
    RGBA16F,
    R32F,
    RG32F,
    RGB32F,
    RGBA32F,
    RGBE8,
    RGB9E5,
    RG11B10F,
    RGB565,
    RGBA4,
    RGB10A2,
    DXT1,
    DXT3,
    DXT5,
    ATI1N,
    ATI2N,
    BC4S,  // signed ATI1N
    BC5S,  // signed ATI2N
    BC6HU, // unsigned half floats
    BC6HS, // signed half floats
    BC7
};

// Bytes of one pixel, or of one 4 x 4 block for block formats.
int ddsFormatBytes(DdsFormat format);
bool isBlockFormat(DdsFormat format);
const char* ddsFormatName(DdsFormat format);

// A DDS file in memory: all mip levels, largest first; a cube map holds each
// level's six faces together.
class DdsImage
{
public:
    // False if the magic is wrong, the format unknown, or (unlike the game's
    // own reader) the data is shorter than the header claims.
    // A file moved in whole becomes the pixels without a copy.
    bool parse(QByteArray bytes);
    // Bytes of `levels` levels from firstLevel; format Unknown means the
    // image's own. -1 if the sizes overflow.
    qint64 dataSize(int firstLevel, int levels, DdsFormat format = DdsFormat::Unknown) const;
    int levelWidth(int level) const;
    int levelHeight(int level) const;

    bool decompress();
    bool unpack();
    bool toRgba8();
    bool swapRedBlue();

    QByteArray pixels;
    int width = 0;
    int height = 0;
    int depth = 1; // 0 cube map, 1 plain, above 1 volume
    int mipCount = 1;
    DdsFormat format = DdsFormat::Unknown;
};

// Width and height from a DDS header; (0, 0) unless the bytes start "DDS ".
bool readDdsSize(const QByteArray& header, int& width, int& height);

// Why uploadDds would refuse this parsed image; empty when it uploads. The
// answer depends on the driver only for BPTC data, which is decoded here
// when the driver cannot take it, so it needs no context.
QString ddsUploadProblem(const DdsImage& image);
// For tests: upload BPTC data as if the driver lacked it.
void setBptcUploadDisabled(bool disabled);

// Fill the texture bound to GL_TEXTURE_2D (or the target the image needs)
// from a whole DDS file; the device is read from its start, and a QBuffer is
// left empty (its bytes become the pixels). Need a current context.
bool uploadDds(QIODevice* device);
// The regular chain with a high-definition base level in front of it.
bool uploadDdsWithHd(QIODevice* device, QIODevice* hdDevice);
