#include "DdsImage.h"

#include "DdsBuilder.h"
#include "GlFunctions.h"
#include "GlTestContext.h"
#include "LogCapture.h"

#include <QBuffer>
#include <QOpenGLFunctions_3_2_Core>

#include <gtest/gtest.h>

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

    LogCapture log;
    EXPECT_FALSE(upload(makeDds(1, 2, 1, "", QByteArray(2, '\0'), {{BitCountAt, 8}})));
    EXPECT_TRUE(
        log.contains(QStringLiteral("[Warning] No OpenGL upload for DDS texture format R8")));
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
    LogCapture log;
    ASSERT_TRUE(upload(regular, hd));
    EXPECT_TRUE(log.lines.isEmpty());
    EXPECT_EQ(maxLevel(), 4);
    EXPECT_EQ(levelParameter(0, GL_TEXTURE_WIDTH), 16);
    EXPECT_EQ(compressedLevel(0), fileLevel(hd, 0));
    for (int level = 1; level <= 4; ++level) {
        EXPECT_EQ(levelParameter(level, GL_TEXTURE_WIDTH), 8 >> (level - 1));
        EXPECT_EQ(compressedLevel(level), fileLevel(regular, level - 1)) << level;
    }

    // One regular level and an HD file make two levels; the HD level keeps
    // its own format.
    ASSERT_TRUE(upload(dxtFile(8, 8, 1), dxtFile(16, 16, 1, "DXT5")));
    EXPECT_EQ(maxLevel(), 1);
    EXPECT_EQ(levelParameter(0, GL_TEXTURE_INTERNAL_FORMAT), GLint(compressedDxt5));
    EXPECT_EQ(levelParameter(1, GL_TEXTURE_INTERNAL_FORMAT), GLint(compressedDxt1));

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
