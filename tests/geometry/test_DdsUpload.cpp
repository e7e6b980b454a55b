#include "DdsImage.h"

#include "DdsBuilder.h"
#include "GlFunctions.h"
#include "GlTestContext.h"
#include "LogCapture.h"

#include <QBuffer>
#include <QOpenGLFunctions_3_2_Core>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

namespace {
constexpr GLenum compressedDxt1 = 0x83F0;
constexpr GLenum compressedDxt5 = 0x83F3;

// A DXT1 chain whose every block holds its own bytes, so levels can be told
// apart after a read-back.
QByteArray dxtFile(int width, int height, int mips, const char* code = "DXT1")
{
    DdsImage sizes;
    sizes.width = width;
    sizes.height = height;
    sizes.format = qstrcmp(code, "DXT1") == 0 ? DdsFormat::DXT1 : DdsFormat::DXT5;
    QByteArray data(sizes.dataSize(0, mips), '\0');
    for (int i = 0; i < data.size(); ++i)
        data[i] = char(i * 7 + width);
    return makeDds(width, height, mips, code, data);
}

class DdsUpload : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!context.valid)
            GTEST_SKIP() << "no OpenGL 3.2 context";
        gl = glFunctions();
        ASSERT_NE(gl, nullptr);
        gl->glGenTextures(1, &texture);
        gl->glBindTexture(GL_TEXTURE_2D, texture);
    }
    void TearDown() override
    {
        if (gl)
            gl->glDeleteTextures(1, &texture);
    }

    bool upload(QByteArray file, QByteArray hdFile = {})
    {
        QBuffer device(&file), hdDevice(&hdFile);
        device.open(QIODevice::ReadOnly);
        hdDevice.open(QIODevice::ReadOnly);
        return uploadDdsWithHd(&device, hdFile.isEmpty() ? nullptr : &hdDevice);
    }

    GLint levelParameter(int level, GLenum name)
    {
        GLint value = -1;
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, level, name, &value);
        return value;
    }

    GLint maxLevel()
    {
        GLint value = -1;
        gl->glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, &value);
        return value;
    }

    QByteArray compressedLevel(int level)
    {
        QByteArray data(levelParameter(level, GL_TEXTURE_COMPRESSED_IMAGE_SIZE), '\0');
        gl->glGetCompressedTexImage(GL_TEXTURE_2D, level, data.data());
        return data;
    }

    // The bytes of one level of a parsed file.
    static QByteArray fileLevel(const QByteArray& file, int level)
    {
        DdsImage image;
        image.parse(file);
        return image.pixels.mid(image.dataSize(0, level), image.dataSize(level, 1));
    }

    GlTestContext context;
    QOpenGLFunctions_3_2_Core* gl = nullptr;
    GLuint texture = 0;
};
} // namespace

TEST_F(DdsUpload, UploadsPlainAndPackedPixels)
{
    // Three-pixel rows are not 4-byte aligned.
    const QByteArray rgb = QByteArray::fromHex("0102030405060708090a0b0c0d0e0f101112");
    ASSERT_TRUE(upload(makeDds(3, 2, 1, "", rgb, {{BitCountAt, 24}})));
    QByteArray back(18, '\0');
    gl->glPixelStorei(GL_PACK_ALIGNMENT, 1);
    gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, back.data());
    EXPECT_EQ(back, rgb);

    // RGB565 goes to the driver as 8-bit RGBA.
    ASSERT_TRUE(upload(makeDds(1, 2, 1, "", QByteArray::fromHex("1f001f00"),
                               {{BitCountAt, 16}, {BlueMaskAt, 31}})));
    EXPECT_EQ(levelParameter(0, GL_TEXTURE_INTERNAL_FORMAT), GLint(GL_RGBA8));
    QByteArray pixels(8, '\0');
    gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    EXPECT_EQ(pixels, QByteArray::fromHex("0000ffff0000ffff"));

    // Single-channel data goes as grey RGBA.
    ASSERT_TRUE(upload(makeDds(1, 2, 1, "", QByteArray::fromHex("40c0"), {{BitCountAt, 8}})));
    gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    EXPECT_EQ(pixels, QByteArray::fromHex("404040ffc0c0c0ff"));

    // The shared-exponent formats have no way to the driver; the check
    // command reports the same.
    LogCapture log;
    QByteArray dx10(20, '\0');
    qToLittleEndian(quint32(67), dx10.data());
    const QByteArray shared = makeDds(1, 2, 1, "DX10", dx10 + QByteArray(8, '\0'));
    EXPECT_FALSE(upload(shared));
    EXPECT_TRUE(
        log.contains(QStringLiteral("[Warning] No OpenGL upload for DDS texture format RGB9E5")));
    DdsImage parsed;
    ASSERT_TRUE(parsed.parse(shared));
    EXPECT_EQ(ddsUploadProblem(parsed), "no OpenGL upload for DDS texture format RGB9E5");
    EXPECT_EQ(gl->glGetError(), GLenum(GL_NO_ERROR));
}

TEST_F(DdsUpload, PassesDxtLevelsUnchangedAndPutsAnHdBaseLevelInFrontOrWarns)
{
    const QByteArray file = dxtFile(8, 4, 4);
    ASSERT_TRUE(upload(file));
    EXPECT_EQ(maxLevel(), 3);
    EXPECT_EQ(levelParameter(0, GL_TEXTURE_INTERNAL_FORMAT), GLint(compressedDxt1));
    for (int level = 0; level < 4; ++level) {
        EXPECT_EQ(levelParameter(level, GL_TEXTURE_WIDTH), std::max(1, 8 >> level));
        EXPECT_EQ(compressedLevel(level), fileLevel(file, level)) << level;
    }

    const QByteArray regular = dxtFile(8, 8, 4);
    const QByteArray hd = dxtFile(16, 16, 1);
    ASSERT_TRUE(upload(regular, hd));
    EXPECT_EQ(maxLevel(), 4);
    EXPECT_EQ(levelParameter(0, GL_TEXTURE_WIDTH), 16);
    EXPECT_EQ(compressedLevel(0), fileLevel(hd, 0));
    for (int level = 1; level <= 4; ++level) {
        EXPECT_EQ(levelParameter(level, GL_TEXTURE_WIDTH), 8 >> (level - 1));
        EXPECT_EQ(compressedLevel(level), fileLevel(regular, level - 1)) << level;
    }

    // One regular level and an HD file make two levels.
    ASSERT_TRUE(upload(dxtFile(8, 8, 1), dxtFile(16, 16, 1)));
    EXPECT_EQ(maxLevel(), 1);

    // Files that cannot make one chain show the regular file alone, with
    // one line saying why: an HD file of another format, a regular file
    // saved uncompressed.
    const QByteArray rgba =
        makeDds(8, 8, 1, "", QByteArray(8 * 8 * 4, '\x7f'), {{BitCountAt, 32}, {RedMaskAt, 0xFF}});
    const std::tuple<QByteArray, QByteArray, GLenum, QString> fallbacks[] = {
        {dxtFile(8, 8, 2), dxtFile(16, 16, 1, "DXT5"), compressedDxt1,
         "its format DXT5 differs from the regular texture's DXT1"},
        {rgba, dxtFile(16, 16, 1), GL_RGBA8,
         "the regular texture is RGBA8, not block-compressed data the driver takes as it is"},
    };
    LogCapture log;
    for (const auto& [regularFile, hdFile, internalFormat, why] : fallbacks) {
        log.lines.clear();
        ASSERT_TRUE(upload(regularFile, hdFile));
        EXPECT_EQ(levelParameter(0, GL_TEXTURE_WIDTH), 8);
        EXPECT_EQ(levelParameter(0, GL_TEXTURE_INTERNAL_FORMAT), GLint(internalFormat));
        EXPECT_EQ(log.lines,
                  QStringList{"[Warning] HD texture not merged, the regular texture is shown "
                              "alone: " +
                              why});
    }

    // An HD file with mips is used with a warning; one no larger than the
    // regular base level is skipped.
    log.lines.clear();
    ASSERT_TRUE(upload(regular, dxtFile(16, 16, 3)));
    EXPECT_EQ(maxLevel(), 4);
    EXPECT_EQ(log.lines, QStringList{QStringLiteral(
                             "[Warning] HD texture has mip maps, this texture should only contain "
                             "base level 0 and no further mip maps.")});
    log.lines.clear();
    ASSERT_TRUE(upload(regular, dxtFile(16, 8, 1)));
    EXPECT_EQ(maxLevel(), 3);
    EXPECT_EQ(compressedLevel(0), fileLevel(regular, 0));
    EXPECT_EQ(log.lines, QStringList{QStringLiteral(
                             "[Warning] Regular texture is the same size(or larger) than the HD "
                             "texture, skipping HD texture.")});
    EXPECT_EQ(gl->glGetError(), GLenum(GL_NO_ERROR));
}

namespace {
// Blocks of every bit pattern the generator gives: a fixed sequence, the
// same on every run.
QByteArray pseudoRandomBlocks(int count, quint32 seed)
{
    QByteArray blocks(count * 16, '\0');
    for (char& byte : blocks) {
        seed = seed * 1664525u + 1013904223u;
        byte = char(seed >> 24);
    }
    return blocks;
}

QByteArray dx10File(int width, int height, quint32 dxgi, const QByteArray& data)
{
    QByteArray header(20, '\0');
    qToLittleEndian(dxgi, header.data());
    qToLittleEndian(quint32(3), header.data() + 4);
    return makeDds(width, height, 1, "DX10", header + data);
}
} // namespace

// The driver's own BPTC and RGTC decoders are an independent oracle for
// ours: the same blocks uploaded as they are and decoded here must read
// back alike, so a wrong partition, anchor or bit layout shows. Without
// BPTC in the driver the upload takes our decoding.
TEST_F(DdsUpload, BlockFormatsDecodeHereAsTheDriverDecodesThem)
{
    const QByteArray blocks = pseudoRandomBlocks(32 * 32 / 16, 0x5EED);
    // DXGI code, GL type read back, bytes a pixel read back, channels
    // compared, bytes a pixel of our decoding.
    const std::tuple<quint32, GLenum, int, int, int> cases[] = {
        {98, GL_UNSIGNED_BYTE, 4, 4, 4}, // BC7
        {95, GL_HALF_FLOAT, 8, 4, 8},    // BC6H unsigned
        {96, GL_HALF_FLOAT, 8, 4, 8},    // BC6H signed
        {80, GL_UNSIGNED_BYTE, 4, 1, 1}, // BC4
        {83, GL_UNSIGNED_BYTE, 4, 2, 2}, // BC5
    };
    for (const auto& [dxgi, type, pixelBytes, channels, ourBytes] : cases) {
        SCOPED_TRACE(dxgi);
        const QByteArray file =
            dx10File(32, 32, dxgi, dxgi == 80 ? blocks.left(blocks.size() / 2) : blocks);
        const int channelBytes = pixelBytes / 4;
        auto readBack = [&] {
            QByteArray pixels(32 * 32 * pixelBytes, '\0');
            gl->glPixelStorei(GL_PACK_ALIGNMENT, 1);
            gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, type, pixels.data());
            return pixels;
        };
        ASSERT_TRUE(upload(file));
        const QByteArray byDriver = readBack();
        DdsImage ours;
        ASSERT_TRUE(ours.parse(file) && ours.decompress());
        // Our RGTC palette truncates where the driver rounds: one level.
        const int tolerance = type == GL_UNSIGNED_BYTE && channels < 4 ? 1 : 0;
        auto differs = [tolerance](const QByteArray& a, const QByteArray& b) {
            for (int i = 0; i < a.size(); ++i)
                if (std::abs(int(uchar(a[i])) - int(uchar(b[i]))) > tolerance)
                    return true;
            return a.size() != b.size();
        };
        int differing = 0;
        for (int pixel = 0; pixel < 32 * 32; ++pixel) {
            const QByteArray theirs = byDriver.mid(pixel * pixelBytes, channels * channelBytes);
            const QByteArray mine = ours.pixels.mid(pixel * ourBytes, channels * channelBytes);
            if (differs(theirs, mine) && ++differing <= 3)
                ADD_FAILURE() << "pixel " << pixel << ": ours " << mine.toHex().constData()
                              << ", the driver's " << theirs.toHex().constData();
        }
        EXPECT_EQ(differing, 0);

        if (channels == 4) {
            setBptcUploadDisabled(true);
            ASSERT_TRUE(upload(file));
            setBptcUploadDisabled(false);
            EXPECT_EQ(levelParameter(0, GL_TEXTURE_INTERNAL_FORMAT),
                      GLint(type == GL_HALF_FLOAT ? GL_RGBA16F : GL_RGBA8));
            EXPECT_EQ(readBack(), byDriver);
        }
    }

    // Signed RGTC: the driver's -1..1 against our bytes over the same range;
    // its palette truncates where ours rounds, which the mapping onto
    // bytes can widen to two levels.
    for (const auto& [dxgi, channels] : {std::pair{81u, 1}, {84u, 2}}) {
        SCOPED_TRACE(dxgi);
        const QByteArray file =
            dx10File(32, 32, dxgi, dxgi == 81 ? blocks.left(blocks.size() / 2) : blocks);
        ASSERT_TRUE(upload(file));
        std::vector<float> byDriver(32 * 32 * 4);
        gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, byDriver.data());
        DdsImage ours;
        ASSERT_TRUE(ours.parse(file) && ours.decompress());
        int differing = 0;
        for (int i = 0; i < 32 * 32 * channels; ++i) {
            const int pixel = i / channels, channel = i % channels;
            const int expected =
                int(std::lround((byDriver[size_t(4 * pixel + channel)] + 1.0f) * 127.5f));
            if (std::abs(expected - int(uchar(ours.pixels[i]))) > 2 && ++differing <= 3)
                ADD_FAILURE() << "pixel " << pixel << " channel " << channel << ": ours "
                              << int(uchar(ours.pixels[i])) << ", the driver's " << expected;
        }
        EXPECT_EQ(differing, 0);
    }
    EXPECT_EQ(gl->glGetError(), GLenum(GL_NO_ERROR));
}
