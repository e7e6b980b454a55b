#include "DdsImage.h"

#include "BptcBlocks.h"
#include "DdsBlocks.h"
#include "Log.h"

#include <QtEndian>
#include <QtNumeric>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

namespace {
constexpr int headerSize = 128;
constexpr int dx10HeaderSize = 20;
// Far beyond any texture of the game; anything larger is a damaged header,
// and refusing it keeps every size computation small.
constexpr int maxDimension = 32768;
constexpr int maxDepth = 2048;
constexpr int maxMipCount = 32;
constexpr quint32 cubeMapFlag = 0x200;

constexpr quint32 fourCc(const char (&code)[5])
{
    return quint32(uchar(code[0])) | quint32(uchar(code[1])) << 8 | quint32(uchar(code[2])) << 16 |
           quint32(uchar(code[3])) << 24;
}

quint32 readU32(const QByteArray& bytes, int offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

DdsFormat formatFromFourCc(quint32 code)
{
    switch (code) {
    case fourCc("DXT1"):
        return DdsFormat::DXT1;
    case fourCc("DXT3"):
        return DdsFormat::DXT3;
    case fourCc("DXT5"):
        return DdsFormat::DXT5;
    case fourCc("ATI1"):
        return DdsFormat::ATI1N;
    case fourCc("ATI2"):
        return DdsFormat::ATI2N;
    case 34:
        return DdsFormat::RG16;
    case 36:
        return DdsFormat::RGBA16;
    case 111:
        return DdsFormat::R16F;
    case 112:
        return DdsFormat::RG16F;
    case 113:
        return DdsFormat::RGBA16F;
    case 114:
        return DdsFormat::R32F;
    case 115:
        return DdsFormat::RG32F;
    case 116:
        return DdsFormat::RGBA32F;
    default:
        return DdsFormat::Unknown;
    }
}

DdsFormat formatFromDxgi(quint32 dxgi)
{
    switch (dxgi) {
    case 2:
        return DdsFormat::RGBA32F;
    case 6:
        return DdsFormat::RGB32F;
    case 10:
        return DdsFormat::RGBA16F;
    case 11:
        return DdsFormat::RGBA16;
    case 16:
        return DdsFormat::RG32F;
    case 24:
        return DdsFormat::RGB10A2;
    case 26:
        return DdsFormat::RG11B10F;
    case 27: // typeless
    case 28:
    case 29: // sRGB
    case 87: // the B8G8R8 group: swapped while parsing
    case 88:
    case 90:
    case 91:
        return DdsFormat::RGBA8;
    case 34:
        return DdsFormat::RG16F;
    case 35:
        return DdsFormat::RG16;
    case 41:
        return DdsFormat::R32F;
    case 49:
        return DdsFormat::RG8;
    case 54:
        return DdsFormat::R16F;
    case 56:
        return DdsFormat::R16;
    case 61:
        return DdsFormat::R8;
    case 67:
        return DdsFormat::RGB9E5;
    // The typeless and sRGB variants hold the same blocks; the program
    // reads every texture as linear data.
    case 70:
    case 71:
    case 72:
        return DdsFormat::DXT1;
    case 73:
    case 74:
    case 75:
        return DdsFormat::DXT3;
    case 76:
    case 77:
    case 78:
        return DdsFormat::DXT5;
    case 79:
    case 80:
        return DdsFormat::ATI1N;
    case 81:
        return DdsFormat::BC4S;
    case 82:
    case 83:
        return DdsFormat::ATI2N;
    case 84:
        return DdsFormat::BC5S;
    case 94:
    case 95:
        return DdsFormat::BC6HU;
    case 96:
        return DdsFormat::BC6HS;
    case 97:
    case 98:
    case 99:
        return DdsFormat::BC7;
    default:
        return DdsFormat::Unknown;
    }
}

// DXGI formats that store blue first, and of those the ones whose fourth
// byte is padding.
bool dxgiBlueFirst(quint32 dxgi)
{
    return dxgi == 87 || dxgi == 88 || dxgi == 90 || dxgi == 91;
}

bool dxgiNoAlpha(quint32 dxgi)
{
    return dxgi == 88;
}

DdsFormat formatFromBitCount(quint32 bitCount, quint32 redMask, quint32 blueMask, quint32 alphaMask)
{
    switch (bitCount) {
    case 8:
        return DdsFormat::R8;
    case 16:
        if (alphaMask == 0xF000)
            return DdsFormat::RGBA4;
        if (alphaMask == 0xFF00)
            return DdsFormat::RG8;
        return blueMask == 31 ? DdsFormat::RGB565 : DdsFormat::R16;
    case 24:
        return DdsFormat::RGB8;
    case 32:
        return redMask == 0x3FF00000 ? DdsFormat::RGB10A2 : DdsFormat::RGBA8;
    default:
        return DdsFormat::Unknown;
    }
}

// How the channels of a plain pixel format are stored.
enum class ChannelKind
{
    Unorm8,
    Unorm16,
    Half,
    Float
};

bool isPlainFormat(DdsFormat format)
{
    return format >= DdsFormat::R8 && format <= DdsFormat::RGBA32F;
}

int channelCount(DdsFormat format)
{
    switch (format) {
    case DdsFormat::R8:
    case DdsFormat::R16:
    case DdsFormat::R16F:
    case DdsFormat::R32F:
        return 1;
    case DdsFormat::RG8:
    case DdsFormat::RG16:
    case DdsFormat::RG16F:
    case DdsFormat::RG32F:
        return 2;
    case DdsFormat::RGB8:
    case DdsFormat::RGB32F:
        return 3;
    default:
        return 4;
    }
}

ChannelKind channelKind(DdsFormat format)
{
    switch (format) {
    case DdsFormat::R8:
    case DdsFormat::RG8:
    case DdsFormat::RGB8:
    case DdsFormat::RGBA8:
        return ChannelKind::Unorm8;
    case DdsFormat::R16:
    case DdsFormat::RG16:
    case DdsFormat::RGBA16:
        return ChannelKind::Unorm16;
    case DdsFormat::R16F:
    case DdsFormat::RG16F:
    case DdsFormat::RGBA16F:
        return ChannelKind::Half;
    default:
        return ChannelKind::Float;
    }
}

int channelBytes(ChannelKind kind)
{
    switch (kind) {
    case ChannelKind::Unorm8:
        return 1;
    case ChannelKind::Unorm16:
    case ChannelKind::Half:
        return 2;
    case ChannelKind::Float:
        return 4;
    }
    return 1;
}

float halfToFloat(quint16 bits)
{
    const int exponent = (bits >> 10) & 31;
    const int mantissa = bits & 1023;
    float value;
    if (exponent == 0)
        value = std::ldexp(float(mantissa), -24);
    else if (exponent == 31)
        value = mantissa ? qQNaN() : qInf();
    else
        value = std::ldexp(float(mantissa | 1024), exponent - 25);
    return (bits & 0x8000) ? -value : value;
}

float readChannel(const uchar* p, ChannelKind kind)
{
    switch (kind) {
    case ChannelKind::Unorm8:
        return p[0] * (1.0f / 255.0f);
    case ChannelKind::Unorm16:
        return qFromLittleEndian<quint16>(p) * (1.0f / 65535.0f);
    case ChannelKind::Half:
        return halfToFloat(qFromLittleEndian<quint16>(p));
    case ChannelKind::Float:
        return qFromLittleEndian<float>(p);
    }
    return 0.0f;
}

// NaN counts as 0, so that damaged float data still gives a defined byte.
uchar toByte(float value)
{
    if (!(value > 0.0f))
        return 0;
    if (value > 1.0f)
        value = 1.0f;
    return uchar(value * 255.0f + 0.5f);
}

// Bytes of one face or slice of a level of the given size.
qint64 surfaceBytes(qint64 width, qint64 height, DdsFormat format)
{
    if (isBlockFormat(format))
        return (width + 3) / 4 * ((height + 3) / 4) * ddsFormatBytes(format);
    return width * height * ddsFormatBytes(format);
}

int levelCountFor(int size)
{
    int levels = 1;
    while (size > 1) {
        size >>= 1;
        ++levels;
    }
    return levels;
}

int halved(int size, int level)
{
    return level >= 31 ? 1 : std::max(1, size >> level);
}

DdsFormat decompressedFormat(DdsFormat format)
{
    switch (format) {
    case DdsFormat::DXT1:
        return DdsFormat::RGB8;
    case DdsFormat::DXT3:
    case DdsFormat::DXT5:
        return DdsFormat::RGBA8;
    case DdsFormat::ATI1N:
        return DdsFormat::R8;
    case DdsFormat::ATI2N:
    case DdsFormat::BC5S:
        return DdsFormat::RG8;
    case DdsFormat::BC4S:
        return DdsFormat::R8;
    case DdsFormat::BC6HU:
    case DdsFormat::BC6HS:
        return DdsFormat::RGBA16F;
    case DdsFormat::BC7:
        return DdsFormat::RGBA8;
    default:
        return format;
    }
}

void decodeHalfBlock(const uchar* block, bool signedFloats, uchar* tile)
{
    quint16 halves[64];
    decodeBc6hBlock(block, signedFloats, halves);
    for (int i = 0; i < 64; ++i)
        qToLittleEndian(halves[i], tile + 2 * i);
}

// One 4 x 4 block of `format` into a tile of decompressedFormat pixels.
void decodeBlock(DdsFormat format, const uchar* block, uchar* tile)
{
    switch (format) {
    case DdsFormat::DXT1:
        decodeColourBlock(block, true, tile, 3);
        break;
    case DdsFormat::DXT3:
        decodeExplicitAlphaBlock(block, tile, 4, 3);
        decodeColourBlock(block + 8, false, tile, 4);
        break;
    case DdsFormat::DXT5:
        decodeAlphaBlock(block, tile, 4, 3);
        decodeColourBlock(block + 8, false, tile, 4);
        break;
    case DdsFormat::ATI1N:
        decodeAlphaBlock(block, tile, 1, 0);
        break;
    case DdsFormat::ATI2N:
        // The file stores the second channel first.
        decodeAlphaBlock(block, tile, 2, 1);
        decodeAlphaBlock(block + 8, tile, 2, 0);
        break;
    case DdsFormat::BC4S:
        decodeSignedAlphaBlock(block, tile, 1, 0);
        break;
    case DdsFormat::BC5S:
        decodeSignedAlphaBlock(block, tile, 2, 1);
        decodeSignedAlphaBlock(block + 8, tile, 2, 0);
        break;
    case DdsFormat::BC6HU:
    case DdsFormat::BC6HS:
        decodeHalfBlock(block, format == DdsFormat::BC6HS, tile);
        break;
    case DdsFormat::BC7:
        decodeBc7Block(block, tile);
        break;
    default:
        break;
    }
}

// One face or slice; blocks at the right and bottom edge of small levels
// are clipped to the pixels that exist.
void decodeSurface(DdsFormat format, const uchar* source, int width, int height, uchar* target)
{
    const int blockBytes = ddsFormatBytes(format);
    const int pixelBytes = ddsFormatBytes(decompressedFormat(format));
    uchar tile[16 * 8]; // up to four half floats a pixel
    for (int blockY = 0; blockY < height; blockY += 4) {
        const int rows = std::min(4, height - blockY);
        for (int blockX = 0; blockX < width; blockX += 4) {
            decodeBlock(format, source, tile);
            source += blockBytes;
            const int columns = std::min(4, width - blockX);
            for (int y = 0; y < rows; ++y) {
                uchar* row = target + (qint64(blockY + y) * width + blockX) * pixelBytes;
                std::memcpy(row, tile + y * 4 * pixelBytes, size_t(columns * pixelBytes));
            }
        }
    }
}

// Exchanges red and blue of 8-bit RGB or RGBA pixels (pixelBytes 3 or 4)
// in place. Four-byte pixels are handled as whole words, which keeps a
// 2048 x 2048 texture to a few milliseconds; a trailing partial pixel stays.
void swapRedBlue8(char* data, qint64 size, int pixelBytes)
{
    const qint64 end = size - pixelBytes;
    if (pixelBytes == 4) {
        for (qint64 offset = 0; offset <= end; offset += 4) {
            // Read and written little-endian, so byte 0 is the low byte.
            const quint32 pixel = qFromLittleEndian<quint32>(data + offset);
            const quint32 swapped =
                (pixel & 0xFF00FF00u) | ((pixel & 0xFFu) << 16) | ((pixel >> 16) & 0xFFu);
            qToLittleEndian(swapped, data + offset);
        }
        return;
    }
    for (qint64 offset = 0; offset <= end; offset += pixelBytes)
        std::swap(data[offset], data[offset + 2]);
}

bool rejectFile(const QString& reason)
{
    Log::log(QStringLiteral("Invalid DDS file: ") + reason, Log::Warning);
    return false;
}
} // namespace

int ddsFormatBytes(DdsFormat format)
{
    switch (format) {
    case DdsFormat::R8:
        return 1;
    case DdsFormat::RG8:
    case DdsFormat::R16:
    case DdsFormat::R16F:
    case DdsFormat::RGB565:
    case DdsFormat::RGBA4:
        return 2;
    case DdsFormat::RGB8:
        return 3;
    case DdsFormat::RGBA8:
    case DdsFormat::RG16:
    case DdsFormat::RG16F:
    case DdsFormat::R32F:
    case DdsFormat::RGBE8:
    case DdsFormat::RGB9E5:
    case DdsFormat::RG11B10F:
    case DdsFormat::RGB10A2:
        return 4;
    case DdsFormat::RGBA16:
    case DdsFormat::RGBA16F:
    case DdsFormat::RG32F:
        return 8;
    case DdsFormat::RGB32F:
        return 12;
    case DdsFormat::RGBA32F:
        return 16;
    case DdsFormat::DXT1:
    case DdsFormat::ATI1N:
        return 8;
    case DdsFormat::BC4S:
        return 8;
    case DdsFormat::DXT3:
    case DdsFormat::DXT5:
    case DdsFormat::ATI2N:
    case DdsFormat::BC5S:
    case DdsFormat::BC6HU:
    case DdsFormat::BC6HS:
    case DdsFormat::BC7:
        return 16;
    case DdsFormat::Unknown:
        return 0;
    }
    return 0;
}

bool isBlockFormat(DdsFormat format)
{
    return format >= DdsFormat::DXT1 && format <= DdsFormat::BC7;
}

const char* ddsFormatName(DdsFormat format)
{
    static const char* const names[] = {
        "Unknown", "R8",       "RG8",     "RGB8",  "RGBA8",   "R16",    "RG16",    "RGBA16",
        "R16F",    "RG16F",    "RGBA16F", "R32F",  "RG32F",   "RGB32F", "RGBA32F", "RGBE8",
        "RGB9E5",  "RG11B10F", "RGB565",  "RGBA4", "RGB10A2", "DXT1",   "DXT3",    "DXT5",
        "ATI1N",   "ATI2N",    "BC4S",    "BC5S",  "BC6HU",   "BC6HS",  "BC7"};
    const int index = int(format);
    return index >= 0 && index < int(sizeof names / sizeof names[0]) ? names[index] : "Unknown";
}

bool DdsImage::parse(QByteArray bytes)
{
    if (bytes.size() < headerSize || !bytes.startsWith("DDS "))
        return rejectFile(QStringLiteral("no DDS header"));

    DdsImage image;
    image.height = int(std::min<quint32>(readU32(bytes, 12), INT_MAX));
    image.width = int(std::min<quint32>(readU32(bytes, 16), INT_MAX));
    const quint32 headerDepth = readU32(bytes, 24);
    const quint32 headerMipCount = readU32(bytes, 28);
    const quint32 code = readU32(bytes, 84);
    const quint32 caps2 = readU32(bytes, 112);

    int dataOffset = headerSize;
    bool blueFirst = false;
    bool noAlpha = false;
    if (code == fourCc("DX10")) {
        if (bytes.size() < headerSize + dx10HeaderSize)
            return rejectFile(QStringLiteral("truncated DX10 header"));
        const quint32 dxgi = readU32(bytes, headerSize);
        image.format = formatFromDxgi(dxgi);
        blueFirst = dxgiBlueFirst(dxgi);
        noAlpha = dxgiNoAlpha(dxgi);
        dataOffset += dx10HeaderSize;
    } else {
        image.format = formatFromFourCc(code);
        if (image.format == DdsFormat::Unknown)
            image.format = formatFromBitCount(readU32(bytes, 88), readU32(bytes, 92),
                                              readU32(bytes, 100), readU32(bytes, 104));
    }
    if (image.format == DdsFormat::Unknown)
        return rejectFile(QStringLiteral("unknown pixel format"));

    if (image.width < 1 || image.height < 1 || image.width > maxDimension ||
        image.height > maxDimension || headerDepth > quint32(maxDepth))
        return rejectFile(QStringLiteral("impossible size"));
    image.depth = (caps2 & cubeMapFlag) ? 0 : std::max(1, int(headerDepth));

    // A chain longer than the size allows would make the driver refuse the
    // extra levels, so such a header is treated as damaged.
    const int longestSide = std::max({image.width, image.height, image.depth});
    if (headerMipCount > quint32(std::min(maxMipCount, levelCountFor(longestSide))))
        return rejectFile(QStringLiteral("more mip levels than the size allows"));
    image.mipCount = std::max(1, int(headerMipCount));

    const qint64 size = image.dataSize(0, image.mipCount);
    if (size < 0 || size > bytes.size() - dataOffset)
        return rejectFile(QStringLiteral("pixel data shorter than the header claims"));

    // Blue in the lowest byte: stored as BGR(A), kept as RGB(A).
    const bool swapped =
        blueFirst || ((image.format == DdsFormat::RGB8 || image.format == DdsFormat::RGBA8) &&
                      code != fourCc("DX10") && readU32(bytes, 100) == 255);
    if (image.depth == 0) {
        // Files hold all levels of one face, then the next face; the level
        // is what GL uploads, so its faces are put side by side.
        image.pixels.resize(size);
        const qint64 faceChain = size / 6;
        qint64 target = 0;
        qint64 levelOffset = 0;
        for (int level = 0; level < image.mipCount; ++level) {
            const qint64 faceBytes =
                surfaceBytes(image.levelWidth(level), image.levelHeight(level), image.format);
            for (int face = 0; face < 6; ++face) {
                std::memcpy(image.pixels.data() + target,
                            bytes.constData() + dataOffset + face * faceChain + levelOffset,
                            size_t(faceBytes));
                target += faceBytes;
            }
            levelOffset += faceBytes;
        }
    } else {
        // The file's own bytes become the pixels: dropping the header from
        // the front of an unshared array moves its start, not its data, so a
        // file handed over whole is not copied.
        bytes.remove(0, dataOffset);
        bytes.truncate(size);
        image.pixels = std::move(bytes);
    }
    if (swapped)
        image.swapRedBlue();
    if (noAlpha)
        for (qint64 alpha = 3; alpha < image.pixels.size(); alpha += 4)
            image.pixels[alpha] = char(0xFF);

    *this = std::move(image);
    return true;
}

qint64 DdsImage::dataSize(int firstLevel, int levels, DdsFormat countedFormat) const
{
    if (countedFormat == DdsFormat::Unknown)
        countedFormat = format;
    if (firstLevel < 0 || levels < 0 || width < 0 || height < 0 || depth < 0)
        return -1;
    const int faces = depth == 0 ? 6 : 1;
    qint64 total = 0;
    for (qint64 level = firstLevel; level < qint64(firstLevel) + levels; ++level) {
        const int l = int(std::min<qint64>(level, 31));
        qint64 bytes = surfaceBytes(halved(width, l), halved(height, l), countedFormat);
        if (__builtin_mul_overflow(bytes, qint64(faces * halved(std::max(depth, 1), l)), &bytes) ||
            __builtin_add_overflow(total, bytes, &total))
            return -1;
        // From here on every level is one pixel; the rest follows at once.
        if (l == 31) {
            const qint64 remaining = qint64(firstLevel) + levels - level - 1;
            if (__builtin_mul_overflow(bytes, remaining, &bytes) ||
                __builtin_add_overflow(total, bytes, &total))
                return -1;
            break;
        }
    }
    return total;
}

int DdsImage::levelWidth(int level) const
{
    return halved(width, std::max(level, 0));
}

int DdsImage::levelHeight(int level) const
{
    return halved(height, std::max(level, 0));
}

bool DdsImage::decompress()
{
    if (!isBlockFormat(format))
        return true;
    const DdsFormat target = decompressedFormat(format);
    const qint64 sourceSize = dataSize(0, mipCount);
    const qint64 targetSize = dataSize(0, mipCount, target);
    if (sourceSize < 0 || targetSize < 0 || pixels.size() < sourceSize)
        return false;

    QByteArray result(targetSize, Qt::Uninitialized);
    const uchar* source = reinterpret_cast<const uchar*>(pixels.constData());
    uchar* output = reinterpret_cast<uchar*>(result.data());
    for (int level = 0; level < mipCount; ++level) {
        const int w = levelWidth(level);
        const int h = levelHeight(level);
        const int surfaces = depth == 0 ? 6 : halved(depth, level);
        for (int surface = 0; surface < surfaces; ++surface) {
            decodeSurface(format, source, w, h, output);
            source += surfaceBytes(w, h, format);
            output += surfaceBytes(w, h, target);
        }
    }
    pixels = std::move(result);
    format = target;
    return true;
}

bool DdsImage::unpack()
{
    DdsFormat target;
    switch (format) {
    case DdsFormat::RGB565:
        target = DdsFormat::RGB8;
        break;
    case DdsFormat::RGBA4:
        target = DdsFormat::RGBA8;
        break;
    case DdsFormat::RGB10A2:
        target = DdsFormat::RGBA16;
        break;
    case DdsFormat::RGBE8:
        target = DdsFormat::RGB32F;
        break;
    default:
        return false;
    }
    const qint64 sourceSize = dataSize(0, mipCount);
    if (sourceSize < 0 || pixels.size() < sourceSize)
        return false;
    const qint64 count = sourceSize / ddsFormatBytes(format);
    QByteArray result(count * ddsFormatBytes(target), Qt::Uninitialized);
    const uchar* in = reinterpret_cast<const uchar*>(pixels.constData());
    uchar* out = reinterpret_cast<uchar*>(result.data());

    for (qint64 i = 0; i < count; ++i) {
        switch (format) {
        case DdsFormat::RGB565: {
            const int v = qFromLittleEndian<quint16>(in + 2 * i);
            out[3 * i] = uchar((v >> 11) * 2106 >> 8);
            out[3 * i + 1] = uchar(((v >> 5) & 63) * 1037 >> 8);
            out[3 * i + 2] = uchar((v & 31) * 2106 >> 8);
            break;
        }
        case DdsFormat::RGBA4: {
            const int p0 = in[2 * i];
            const int p1 = in[2 * i + 1];
            out[4 * i] = uchar((p1 & 15) * 17);
            out[4 * i + 1] = uchar((p0 >> 4) * 17);
            out[4 * i + 2] = uchar((p0 & 15) * 17);
            out[4 * i + 3] = uchar((p1 >> 4) * 17);
            break;
        }
        case DdsFormat::RGB10A2: {
            const quint32 v = qFromLittleEndian<quint32>(in + 4 * i);
            quint16 channels[4];
            for (int c = 0; c < 3; ++c)
                channels[c] = quint16(quint64((v >> (10 * c)) & 1023) * 0x400FC4 >> 16);
            channels[3] = quint16((v >> 30) * 21845);
            for (int c = 0; c < 4; ++c)
                qToLittleEndian(channels[c], out + 8 * i + 2 * c);
            break;
        }
        default: { // RGBE8
            const uchar* p = in + 4 * i;
            for (int c = 0; c < 3; ++c) {
                const float value = p[3] == 0 ? 0.0f : std::ldexp(float(p[c]), p[3] - 136);
                qToLittleEndian(value, out + 12 * i + 4 * c);
            }
            break;
        }
        }
    }
    pixels = std::move(result);
    format = target;
    return true;
}

bool DdsImage::toRgba8()
{
    if (format == DdsFormat::RGBA8)
        return true;
    if (!isPlainFormat(format))
        return false;
    const qint64 sourceSize = dataSize(0, mipCount);
    if (sourceSize < 0 || pixels.size() < sourceSize)
        return false;
    const int pixelBytes = ddsFormatBytes(format);
    const qint64 count = sourceSize / pixelBytes;
    QByteArray result(count * 4, Qt::Uninitialized);
    const uchar* in = reinterpret_cast<const uchar*>(pixels.constData());
    uchar* out = reinterpret_cast<uchar*>(result.data());

    if (format == DdsFormat::RGB8) {
        for (qint64 i = 0; i < count; ++i) {
            std::memcpy(out + 4 * i, in + 3 * i, 3);
            out[4 * i + 3] = 255;
        }
    } else {
        const ChannelKind kind = channelKind(format);
        const int step = channelBytes(kind);
        const int channels = channelCount(format);
        for (qint64 i = 0; i < count; ++i) {
            const uchar* pixel = in + i * pixelBytes;
            // Two-channel data has no blue; it stays 0.
            float rgba[4] = {0.0f, 0.0f, 0.0f, 1.0f};
            for (int c = 0; c < channels; ++c)
                rgba[c] = readChannel(pixel + c * step, kind);
            if (channels == 1)
                rgba[1] = rgba[2] = rgba[0];
            for (int c = 0; c < 4; ++c)
                out[4 * i + c] = toByte(rgba[c]);
        }
    }
    pixels = std::move(result);
    format = DdsFormat::RGBA8;
    return true;
}

bool DdsImage::swapRedBlue()
{
    if (!isPlainFormat(format))
        return false;
    // One- and two-channel pixels have no third channel to exchange.
    if (channelCount(format) < 3)
        return true;
    const int pixelBytes = ddsFormatBytes(format);
    const int step = channelBytes(channelKind(format));
    if (step == 1) {
        swapRedBlue8(pixels.data(), pixels.size(), pixelBytes);
        return true;
    }
    char* data = pixels.data();
    const qint64 end = pixels.size() - pixelBytes;
    for (qint64 offset = 0; offset <= end; offset += pixelBytes) {
        char swap[4];
        std::memcpy(swap, data + offset, size_t(step));
        std::memmove(data + offset, data + offset + 2 * step, size_t(step));
        std::memcpy(data + offset + 2 * step, swap, size_t(step));
    }
    return true;
}

bool readDdsSize(const QByteArray& header, int& width, int& height)
{
    width = 0;
    height = 0;
    if (header.size() < 20 || !header.startsWith("DDS "))
        return false;
    height = int(std::min<quint32>(readU32(header, 12), INT_MAX));
    width = int(std::min<quint32>(readU32(header, 16), INT_MAX));
    return true;
}
