#include "DdsImage.h"

#include "DdsBuilder.h"
#include "ImageCheck.h"
#include "LogCapture.h"
#include "ToolRunner.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

namespace {
QByteArray dx10(quint32 dxgi, int dataBytes)
{
    QByteArray header(20, '\0');
    qToLittleEndian(dxgi, header.data());
    return makeDds(4, 4, 1, "DX10", header + QByteArray(dataBytes, '\0'));
}

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray result;
    for (int v : values)
        result.append(char(v));
    return result;
}
} // namespace

TEST(DdsImage, DetectsFormatFromCodesDxgiAndBitCounts)
{
    const QByteArray data(256, '\0'); // enough for 4 x 4 in any format
    auto coded = [&](const char* code) { return makeDds(4, 4, 1, code, data); };
    auto numeric = [&](quint32 code) { return makeDds(4, 4, 1, "", data, {{CodeAt, code}}); };
    auto bits = [&](quint32 count, quint32 red, quint32 blue, quint32 alpha) {
        return makeDds(
            4, 4, 1, "", data,
            {{BitCountAt, count}, {RedMaskAt, red}, {BlueMaskAt, blue}, {AlphaMaskAt, alpha}});
    };
    using F = DdsFormat;
    // clang-format off
    const std::pair<QByteArray, DdsFormat> cases[] = {
        {coded("DXT1"), F::DXT1}, {coded("DXT3"), F::DXT3}, {coded("DXT5"), F::DXT5},
        {coded("ATI1"), F::ATI1N}, {coded("ATI2"), F::ATI2N}, {numeric(34), F::RG16},
        {numeric(36), F::RGBA16}, {numeric(111), F::R16F}, {numeric(113), F::RGBA16F},
        {numeric(116), F::RGBA32F}, {dx10(2, 256), F::RGBA32F}, {dx10(24, 64), F::RGB10A2},
        {dx10(26, 64), F::RG11B10F}, {dx10(49, 32), F::RG8}, {dx10(67, 64), F::RGB9E5},
        {dx10(83, 16), F::ATI2N}, {bits(8, 0, 0, 0), F::R8}, {bits(16, 0, 0, 0xF000), F::RGBA4},
        {bits(16, 0, 31, 0xFF00), F::RG8}, {bits(16, 0, 31, 0), F::RGB565},
        {bits(16, 0, 0, 0), F::R16}, {bits(24, 0, 0, 0), F::RGB8},
        {bits(32, 0x3FF00000, 0, 0), F::RGB10A2}, {bits(32, 0xFF, 0, 0), F::RGBA8}};
    // clang-format on
    for (const auto& [file, format] : cases) {
        DdsImage image;
        EXPECT_TRUE(image.parse(file));
        EXPECT_EQ(image.format, format) << ddsFormatName(format);
    }
}

TEST(DdsImage, CountsLevelsFacesAndSlices)
{
    DdsImage image;
    ASSERT_TRUE(image.parse(makeDds(2, 2, 2, "DXT1", QByteArray(16, '\0'))));
    EXPECT_EQ(image.dataSize(0, 1), 8);
    EXPECT_EQ(image.dataSize(1, 1), 8);
    EXPECT_EQ(image.dataSize(0, 1, DdsFormat::RGBA8), 16);

    ASSERT_TRUE(image.parse(makeDds(2, 2, 0, "DXT1", QByteArray(8, '\0'))));
    EXPECT_EQ(image.mipCount, 1);
    // Red and blue swap only for blue-first files.
    for (const quint32 blueMask : {255u, 1u << 16}) {
        const QByteArray pixel = bytes({1, 2, 3, 4});
        ASSERT_TRUE(
            image.parse(makeDds(1, 1, 1, "", pixel, {{BitCountAt, 32}, {BlueMaskAt, blueMask}})));
        EXPECT_EQ(image.pixels, blueMask == 255 ? bytes({3, 2, 1, 4}) : pixel);
    }
    const DdsFields volume = {{BitCountAt, 8}, {DepthAt, 4}};
    ASSERT_TRUE(image.parse(makeDds(4, 4, 3, "", QByteArray(64 + 8 + 1, '\0'), volume)));
    EXPECT_EQ(image.depth, 4);
    EXPECT_EQ(image.dataSize(0, 3), 73);

    // A cube map's file holds face after face; in memory each level holds
    // its six faces together. Byte value: face * 16 + level.
    QByteArray file;
    for (int face = 0; face < 6; ++face)
        for (int level = 0; level < 2; ++level)
            file += QByteArray(8, char(face * 16 + level));
    ASSERT_TRUE(image.parse(makeDds(4, 4, 2, "DXT1", file, {{Caps2At, 0x200}})));
    EXPECT_EQ(image.depth, 0);
    ASSERT_EQ(image.dataSize(0, 2), 96);
    for (int level = 0; level < 2; ++level)
        for (int face = 0; face < 6; ++face)
            EXPECT_EQ(image.pixels.at((level * 6 + face) * 8), char(face * 16 + level));
}

TEST(DdsImage, RejectsDamagedHeadersWithOneWarning)
{
    // Enough data for every claimed size, so only the limits can refuse.
    const QByteArray plenty(40000, '\0');
    const DdsFields r8 = {{BitCountAt, 8}};
    const QByteArray damaged[] = {
        makeDds(8, 8, 2, "DXT1", QByteArray(39, '\0')), // one byte short
        makeDds(4, 4, 1, "DXT1", {}).left(127),
        dx10(71, 0).left(140),
        QByteArray("XDS ") + makeDds(4, 4, 1, "DXT1", plenty).mid(4),
        makeDds(0, 4, 1, "DXT1", plenty),
        makeDds(40000, 1, 1, "", plenty, r8),
        makeDds(1, 1, 1, "", plenty, {{BitCountAt, 8}, {DepthAt, 3000}}),
        makeDds(4, 4, 4, "DXT1", plenty), // a 4 x 4 chain has three levels
        dx10(100, 256),                   // unknown codes
        makeDds(4, 4, 1, "", plenty, {{BitCountAt, 12}}),
    };
    for (const QByteArray& file : damaged) {
        LogCapture log;
        DdsImage image;
        EXPECT_FALSE(image.parse(file));
        EXPECT_EQ(log.lines.size(), 1);
        EXPECT_TRUE(log.lines.value(0).startsWith(QLatin1String("[Warning] ")));
    }
}

TEST(DdsImage, DecodesColourAndAlphaBlocks)
{
    // Colour blocks with row 0 indices 0, 1, 2, 3: c0 = c1 = pure red
    // (0xF800), c0 = white > c1 = black, c0 < c1 (black, white).
    const QByteArray equal = bytes({0x00, 0xF8, 0x00, 0xF8, 0xE4, 0, 0, 0});
    const QByteArray ordered = bytes({0xFF, 0xFF, 0x00, 0x00, 0xE4, 0, 0, 0});
    const QByteArray reversed = bytes({0x00, 0x00, 0xFF, 0xFF, 0xE4, 0, 0, 0});
    // Alpha blocks with indices 0..7 over the first eight pixels: 3-bit
    // fields, lowest first; a0 > a1 or a0 <= a1.
    const QByteArray indices = bytes({0x88, 0xC6, 0xFA, 0, 0, 0});
    const QByteArray high = bytes({200, 100}) + indices, low = bytes({100, 200}) + indices;
    const QByteArray black(8, '\0');
    using F = DdsFormat;
    // Code, data, format; the bytes compared are every step-th from `from`.
    const std::tuple<const char*, QByteArray, DdsFormat, int, int, QByteArray> cases[] = {
        // DXT1 takes the three-colour form for c0 <= c1: index 3 black.
        {"DXT1", equal, F::RGB8, 0, 1, bytes({248, 0, 0, 248, 0, 0, 248, 0, 0, 0, 0, 0})},
        // Four colours with thirds; green 63 << 2.
        {"DXT1", ordered, F::RGB8, 0, 1,
         bytes({248, 252, 248, 0, 0, 0, 165, 168, 165, 83, 84, 83})},
        {"DXT1", reversed, F::RGB8, 6, 1, bytes({124, 126, 124, 0, 0, 0})},
        // DXT3 always takes thirds; alpha nibbles of row 0, lowest first: 0, 1, 2, 15.
        {"DXT3", bytes({0x10, 0xF2, 0, 0, 0, 0, 0, 0}) + reversed, F::RGBA8, 0, 1,
         bytes({0, 0, 0, 0, 248, 252, 248, 17, 83, 84, 83, 34, 165, 168, 165, 255})},
        // Eight steps, or six steps and 0, 255.
        {"DXT5", high + black, F::RGBA8, 3, 4, bytes({200, 100, 185, 171, 157, 142, 128, 114})},
        {"DXT5", low + black, F::RGBA8, 3, 4, bytes({100, 200, 120, 140, 160, 180, 0, 255})},
        // The first block of ATI2N data is the second channel.
        {"ATI2", bytes({10, 10, 0, 0, 0, 0, 0, 0, 20, 20, 0, 0, 0, 0, 0, 0}), F::RG8, 0, 1,
         bytes({20, 10, 20, 10})},
    };
    for (const auto& [code, data, format, from, step, expected] : cases) {
        SCOPED_TRACE(code);
        DdsImage image;
        ASSERT_TRUE(image.parse(makeDds(4, 4, 1, code, data)) && image.decompress());
        EXPECT_EQ(image.format, format);
        QByteArray got;
        for (int i = from; i < image.pixels.size() && got.size() < expected.size(); i += step)
            got += image.pixels.at(i);
        EXPECT_EQ(got, expected);
    }
    // A 2 x 2 level keeps only its four pixels of the block.
    DdsImage small;
    ASSERT_TRUE(small.parse(makeDds(2, 2, 1, "ATI1", high)) && small.decompress());
    EXPECT_EQ(small.format, DdsFormat::R8);
    EXPECT_EQ(small.pixels, bytes({200, 100, 157, 142}));
}

TEST(DdsImage, UnpacksPackedFormatsAndConvertsToRgba8WithRounding)
{
    const float r32f[] = {-1.0f, 0.5f, 0.2f, 7.0f};
    const QByteArray floats(reinterpret_cast<const char*>(r32f), sizeof r32f);
    const auto unpack = &DdsImage::unpack, toRgba8 = &DdsImage::toRgba8;
    using F = DdsFormat;
    // Format, width and pixels of one row; the step, and what it leaves.
    const std::tuple<F, int, QByteArray, bool (DdsImage::*)(), F, QByteArray> cases[] = {
        // White; 1, 2, 1.
        {F::RGB565, 2, bytes({0xFF, 0xFF, 0x41, 0x08}), unpack, F::RGB8,
         bytes({255, 255, 255, 8, 8, 8})},
        {F::RGBA4, 2, bytes({0x12, 0x34, 0xF0, 0x0F}), unpack, F::RGBA8,
         bytes({4 * 17, 1 * 17, 2 * 17, 3 * 17, 255, 255, 0, 0})},
        // 1023, 1, 0, 2 into 16-bit words 65535, 64, 0, 43690.
        {F::RGB10A2, 1, bytes({0xFF, 0x07, 0x00, 0x80}), unpack, F::RGBA16,
         bytes({0xFF, 0xFF, 64, 0, 0, 0, 0xAA, 0xAA})},
        // Floats 256, 128, 2; a zero exponent gives black.
        {F::RGBE8, 1, bytes({128, 64, 1, 137}), unpack, F::RGB32F,
         bytes({0, 0, 0x80, 0x43, 0, 0, 0, 0x43, 0, 0, 0, 0x40})},
        {F::RGBE8, 1, bytes({128, 64, 1, 0}), unpack, F::RGB32F, QByteArray(12, '\0')},
        {F::R32F, 4, floats, toRgba8, F::RGBA8,
         bytes({0, 0, 0, 255, 128, 128, 128, 255, 51, 51, 51, 255, 255, 255, 255, 255})},
        // 0.5, -1.0
        {F::RG16F, 1, bytes({0x00, 0x38, 0x00, 0xBC}), toRgba8, F::RGBA8, bytes({128, 0, 0, 255})},
        {F::RGBA16, 1, bytes({0xFF, 0xFF, 0x00, 0x80, 0x00, 0x00, 0x01, 0x01}), toRgba8, F::RGBA8,
         bytes({255, 128, 0, 1})},
    };
    for (const auto& [format, width, pixels, step, after, expected] : cases) {
        SCOPED_TRACE(ddsFormatName(format));
        DdsImage image;
        std::tie(image.width, image.height, image.format, image.pixels) =
            std::tuple(width, 1, format, pixels);
        ASSERT_TRUE((image.*step)());
        EXPECT_EQ(image.format, after);
        EXPECT_EQ(image.pixels, expected);
    }
    DdsImage image;
    image.format = DdsFormat::RGB9E5;
    EXPECT_FALSE(image.unpack());
    image.format = DdsFormat::DXT1;
    EXPECT_FALSE(image.toRgba8());
}

namespace {
// A 16-byte block written field by field from the lowest bit up.
class BlockWriter
{
public:
    BlockWriter& put(quint32 value, int bits)
    {
        for (int i = 0; i < bits; ++i, ++position)
            if ((value >> i) & 1)
                block[position / 8] = char(block[position / 8] | (1 << (position % 8)));
        return *this;
    }
    QByteArray bytes() const
    {
        EXPECT_EQ(position, 128);
        return block;
    }

private:
    QByteArray block = QByteArray(16, '\0');
    int position = 0;
};

// The base level of a one-block DX10 file of `dxgi`, decoded.
QByteArray decodedBlock(quint32 dxgi, const QByteArray& block)
{
    QByteArray header(20, '\0');
    qToLittleEndian(dxgi, header.data());
    DdsImage image;
    EXPECT_TRUE(image.parse(makeDds(4, 4, 1, "DX10", header + block)));
    EXPECT_TRUE(image.decompress());
    return image.pixels;
}

} // namespace

// Blocks laid out from the formats' published bit tables, with answers
// worked out from the published end point widening, weights and
// partitions.
TEST(DdsImage, DecodesBptcBlocksWithKnownAnswers)
{
    // BC7 mode 6: one subset, 7-bit RGBA end points with a p-bit each,
    // 4-bit indices (3 for the anchor); index i at pixel i.
    BlockWriter mode6;
    mode6.put(1 << 6, 7);
    for (const auto& [first, second] : {std::pair{127, 0}, {0, 127}, {64, 32}, {127, 127}})
        mode6.put(first, 7).put(second, 7);
    mode6.put(1, 1).put(0, 1).put(0, 3);
    for (int pixel = 1; pixel < 16; ++pixel)
        mode6.put(pixel, 4);
    // clang-format off
    EXPECT_EQ(decodedBlock(98, mode6.bytes()), bytes({
        255, 1, 129, 255,  239, 17, 125, 255,  219, 37, 120, 255,  203, 52, 116, 255,
        187, 68, 112, 255, 171, 84, 108, 255,  151, 104, 103, 255, 135, 120, 99, 255,
        120, 135, 94, 254, 104, 151, 90, 254,  84, 171, 85, 254,   68, 187, 81, 254,
        52, 203, 77, 254,  36, 218, 73, 254,   16, 238, 68, 254,   0, 254, 64, 254}));
    // clang-format on

    // BC7 mode 1, partition 0 (the two left columns subset 0), 6-bit end
    // points, one shared p-bit per subset, anchors at pixels 0 and 15;
    // index (pixel & 3).
    BlockWriter mode1;
    mode1.put(2, 2).put(0, 6);
    for (const auto& ends : {std::array<int, 4>{63, 0, 0, 63}, {0, 63, 0, 63}, {0, 0, 63, 63}})
        for (int value : ends)
            mode1.put(value, 6);
    mode1.put(1, 1).put(0, 1);
    for (int pixel = 0; pixel < 16; ++pixel)
        mode1.put(pixel & 3, pixel == 0 || pixel == 15 ? 2 : 3);
    QByteArray row = bytes({255, 2, 2, 255, 219, 38, 2, 255, 71, 71, 253, 255, 107, 107, 253, 255});
    EXPECT_EQ(decodedBlock(98, mode1.bytes()), row + row + row + row);

    // BC6H mode 11: one subset of 10-bit unsigned end points, untransformed,
    // (1023, 0, 512) to (0, 1023, 0); index i at pixel i. Half floats, and
    // alpha 1.
    BlockWriter mode11;
    mode11.put(3, 5).put(1023, 10).put(0, 10).put(512, 10).put(0, 10).put(1023, 10).put(0, 10);
    mode11.put(0, 3);
    for (int pixel = 1; pixel < 16; ++pixel)
        mode11.put(pixel, 4);
    // clang-format off
    const quint16 halves[16][3] = {
        {0x7bff, 0x0, 0x3e0f}, {0x743f, 0x7c0, 0x3a2e}, {0x6a8f, 0x1170, 0x3555},
        {0x62cf, 0x1930, 0x3174}, {0x5b0f, 0x20f0, 0x2d93}, {0x534f, 0x28b0, 0x29b2},
        {0x499f, 0x3260, 0x24d9}, {0x41df, 0x3a20, 0x20f8}, {0x3a20, 0x41df, 0x1d17},
        {0x3260, 0x499f, 0x1936}, {0x28b0, 0x534f, 0x145d}, {0x20f0, 0x5b0f, 0x107c},
        {0x1930, 0x62cf, 0xc9b}, {0x1170, 0x6a8f, 0x8ba}, {0x7c0, 0x743f, 0x3e0},
        {0x0, 0x7bff, 0x0}};
    // clang-format on
    QByteArray expected(16 * 8, '\0');
    for (int pixel = 0; pixel < 16; ++pixel) {
        for (int c = 0; c < 3; ++c)
            qToLittleEndian(halves[pixel][c], expected.data() + 8 * pixel + 2 * c);
        qToLittleEndian(quint16(0x3C00), expected.data() + 8 * pixel + 6);
    }
    EXPECT_EQ(decodedBlock(95, mode11.bytes()), expected);

    // Reserved modes give defined blocks: transparent black for BC7, opaque
    // black for BC6H.
    EXPECT_EQ(decodedBlock(98, QByteArray(16, '\0')), QByteArray(64, '\0'));
    QByteArray reserved(16, '\xFF');
    const QByteArray black = decodedBlock(96, reserved);
    for (int pixel = 0; pixel < 16; ++pixel)
        EXPECT_EQ(black.mid(8 * pixel, 8), QByteArray::fromHex("000000000000003c"));
}

namespace {
// The same file with a DX10 header naming `dxgi` in place of its
// four-character code.
QByteArray asDx10(const QByteArray& file, quint32 dxgi)
{
    QByteArray header = file.left(128);
    std::memcpy(header.data() + CodeAt, "DX10", 4);
    QByteArray extension(20, '\0');
    qToLittleEndian(dxgi, extension.data());
    qToLittleEndian(quint32(3), extension.data() + 4); // a 2D texture
    return header + extension + file.mid(128);
}

// Decoded base level as 8-bit RGBA, or a null image.
QImage decodedBase(const QByteArray& file)
{
    DdsImage image;
    if (!image.parse(file) || !image.decompress() || !image.toRgba8())
        return QImage();
    return QImage(reinterpret_cast<const uchar*>(image.pixels.constData()), image.width,
                  image.height, image.width * 4, QImage::Format_RGBA8888)
        .copy();
}

// Mean and largest difference of the channels `channels` of `decoded`
// against `source` channel sourceOf[c]; both images are written when they
// differ by more than allowed.
void expectClose(const QImage& decoded, const QImage& source, const QList<int>& channels,
                 const int sourceOf[4], double mean, int largest, const QString& label)
{
    ASSERT_EQ(decoded.size(), source.size()) << label.toStdString();
    double sum = 0;
    int worst = 0, count = 0;
    for (int i = 0; i < source.width() * source.height(); ++i)
        for (int c : channels) {
            const int d = std::abs(int(source.constBits()[4 * i + sourceOf[c]]) -
                                   int(decoded.constBits()[4 * i + c]));
            sum += d;
            worst = std::max(worst, d);
            ++count;
        }
    EXPECT_LE(sum / count, mean) << label.toStdString();
    EXPECT_LE(worst, largest) << label.toStdString();
    if (sum / count > mean || worst > largest) {
        saveFailedImage(decoded, label + "-decoded");
        saveFailedImage(source, label + "-source");
    }
}

} // namespace

// Decoders against two independent encoders: ImageMagick and nvcompress
// write the files from one picture, which the library and the tool read
// back; each file also opens under every DX10 code of its format.
TEST(DdsRoundTrip, DecodesWhatImageMagickAndNvcompressEncode)
{
    if (!QFile::exists("/usr/bin/convert") || !QFile::exists("/usr/bin/nvcompress"))
        GTEST_SKIP() << "ImageMagick (/usr/bin/convert) or nvcompress is not installed";
    QTemporaryDir dir;
    QImage source(32, 16, QImage::Format_RGBA8888);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 32; ++x)
            source.setPixelColor(x, y, QColor(x * 8, y * 16, (x + y) * 5, 255 - x * 4));
    ASSERT_TRUE(source.save(dir.filePath("source.png")));

    // Encoder and its option, channels compared, where the file keeps each
    // of them, largest mean and single channel difference, DX10 codes.
    // Five- and six-bit end points widened without replicating bits lose up
    // to 7 levels besides the encoder's own error. ATI2 keeps the second
    // channel in its first block: red comes back as green.
    const int rgba[4] = {0, 1, 2, 3}, swapped[4] = {1, 0, 2, 3}, alphaFirst[4] = {3, 1, 2, 0};
    const QList<int> rgb{0, 1, 2}, all{0, 1, 2, 3};
    struct Case
    {
        QString encoder, option;
        QList<int> channels;
        const int* sourceOf;
        double mean;
        int largest;
        QList<quint32> dxgi;
    };
    const Case cases[] = {
        {"convert", "none", all, rgba, 0, 0, {87, 90, 91}},
        {"convert", "dxt1", rgb, rgba, 7, 32, {71, 70, 72}},
        {"convert", "dxt5", all, rgba, 7, 32, {77, 76, 78}},
        // nvcompress spends less on colours where alpha is low.
        {"nvcompress", "-bc1", rgb, rgba, 7, 56, {71, 70, 72}},
        {"nvcompress", "-bc2", all, rgba, 7, 56, {74, 73, 75}},
        {"nvcompress", "-bc3", all, rgba, 7, 56, {77, 76, 78}},
        // One channel: nvcompress encodes alpha.
        {"nvcompress", "-bc4", {0}, alphaFirst, 2, 8, {80, 79}},
        {"nvcompress", "-bc5", {0, 1}, swapped, 2, 8, {83, 82}},
    };
    for (const Case& test : cases) {
        const QString label = test.encoder + test.option;
        SCOPED_TRACE(label.toStdString());
        const QString out = dir.filePath(label + ".dds");
        const QStringList arguments =
            test.encoder == "convert"
                ? QStringList{dir.filePath("source.png"),
                              "-define",
                              "dds:compression=" + test.option,
                              "-define",
                              "dds:mipmaps=3",
                              out}
                : QStringList{"-nomips", test.option, dir.filePath("source.png"), out};
        QProcess encoder;
        encoder.start("/usr/bin/" + test.encoder, arguments);
        ASSERT_TRUE(encoder.waitForFinished(60000));
        ASSERT_EQ(encoder.exitCode(), 0) << encoder.readAllStandardError().constData();
        QFile file(out);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        const QImage decoded = decodedBase(bytes);
        expectClose(decoded, source, test.channels, test.sourceOf, test.mean, test.largest, label);
        for (quint32 dxgi : test.dxgi)
            EXPECT_EQ(decodedBase(asDx10(bytes, dxgi)), decoded) << "DXGI " << dxgi;
    }

    // Blue first in memory, with and without alpha.
    QByteArray bgra(32 * 16 * 4, '\0');
    for (int i = 0; i < 32 * 16; ++i)
        for (int c = 0; c < 4; ++c)
            bgra[4 * i + c] = char(source.constBits()[4 * i + (c == 3 ? 3 : 2 - c)]);
    QByteArray header(20, '\0');
    for (quint32 dxgi : {87, 88, 90, 91}) {
        qToLittleEndian(dxgi, header.data());
        const QImage decoded = decodedBase(makeDds(32, 16, 1, "DX10", header + bgra));
        QImage expected = source;
        for (int i = 0; dxgi == 88 && i < 32 * 16; ++i)
            expected.bits()[4 * i + 3] = 255; // the fourth byte is padding
        expectClose(decoded, expected, all, rgba, 0, 0, QString("dxgi%1").arg(dxgi));
    }

    const QImage dxt5 = decodedBase([&] {
        QFile file(dir.filePath("convertdxt5.dds"));
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }());
    const QByteArray pixels(reinterpret_cast<const char*>(dxt5.constBits()), 32 * 16 * 4);
    const QString png = dir.filePath("out.png");
    const ToolResult run = runTool({"dds", dir.filePath("convertdxt5.dds"), "--png", png});
    EXPECT_EQ(run.exitCode, 0) << run.err.constData();
    EXPECT_EQ(run.out.trimmed(), QByteArray("DXT5 32 x 16, 2D, 4 mip levels, 688 bytes"));
    const QImage written = QImage(png).convertToFormat(QImage::Format_RGBA8888);
    ASSERT_EQ(written.size(), QSize(32, 16));
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(written.constBits()), 32 * 16 * 4), pixels);

    EXPECT_EQ(runTool({"dds", dir.filePath("source.png")}).exitCode, 1);
    EXPECT_EQ(runTool({"dds"}).exitCode, 2);
    // Without a file of that name the game is asked for the resource.
    const ToolResult fromGame =
        runTool({"dds", "vehicles/camouflage/ardenia/Summer_01.dds", FERROX_SAMPLE_GAME_DIR});
    EXPECT_EQ(fromGame.exitCode, 0) << fromGame.err.constData();
    EXPECT_TRUE(fromGame.out.contains(" mip levels, ")) << fromGame.out.constData();
}
