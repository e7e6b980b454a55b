#include "DdsImage.h"

#include "DdsBuilder.h"
#include "LogCapture.h"
#include "ToolRunner.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

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
        dx10(99, 256),                    // unknown codes
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

// Decoders against an independent encoder: ImageMagick writes the files,
// which the library and the tool read back.
TEST(DdsRoundTrip, DecodesWhatImageMagickEncodesAsTheToolDoes)
{
    if (!QFile::exists("/usr/bin/convert"))
        GTEST_SKIP() << "ImageMagick (/usr/bin/convert) is not installed";
    QTemporaryDir dir;
    QImage source(32, 16, QImage::Format_RGBA8888);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 32; ++x)
            source.setPixelColor(x, y, QColor(x * 8, y * 16, (x + y) * 5, 255));
    ASSERT_TRUE(source.save(dir.filePath("source.png")));

    // Compression, mip levels, largest mean and single channel difference.
    // Five- and six-bit end points widened without replicating bits lose up
    // to 7 levels besides the encoder's own error.
    const std::tuple<QString, int, double, int> cases[] = {
        {"none", 1, 0, 0}, {"dxt1", 4, 6, 32}, {"dxt5", 4, 6, 32}};
    QByteArray pixels;
    for (const auto& [compression, mips, mean, largest] : cases) {
        SCOPED_TRACE(compression.toStdString());
        const QString out = dir.filePath(compression + ".dds");
        ASSERT_EQ(QProcess::execute("/usr/bin/convert",
                                    {dir.filePath("source.png"), "-define",
                                     "dds:compression=" + compression, "-define",
                                     "dds:mipmaps=" + QString::number(mips - 1), out}),
                  0);
        QFile file(out);
        DdsImage image;
        ASSERT_TRUE(file.open(QIODevice::ReadOnly) && image.parse(file.readAll()) &&
                    image.decompress() && image.toRgba8());
        EXPECT_EQ(image.mipCount, mips);
        pixels = image.pixels.left(32 * 16 * 4);
        double sum = 0;
        int worst = 0;
        for (int i = 0; i < pixels.size(); ++i) {
            const int d = std::abs(int(source.constBits()[i]) - uchar(pixels[i]));
            sum += d;
            worst = std::max(worst, d);
        }
        EXPECT_LE(sum / pixels.size(), mean);
        EXPECT_LE(worst, largest);
    }

    const QString png = dir.filePath("out.png");
    const ToolResult run = runTool({"dds", dir.filePath("dxt5.dds"), "--png", png});
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
