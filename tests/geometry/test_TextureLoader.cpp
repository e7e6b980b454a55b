#include "TextureLoader.h"

#include "DdsBuilder.h"
#include "DdsImage.h"
#include "FileManager.h"
#include "GlFunctions.h"
#include "GlTestContext.h"
#include "LogCapture.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "TestRoot.h"
#include "ZipBuilder.h"

#include <QFile>
#include <QOpenGLFunctions_3_2_Core>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace {
constexpr GLenum TextureMaxAnisotropy = 0x84FE;
constexpr GLenum MaxTextureMaxAnisotropy = 0x84FF;

QOpenGLFunctions_3_2_Core& gl()
{
    return *glFunctions();
}

GLint levelWidth(unsigned int id, int level)
{
    GLint width = 0;
    gl().glBindTexture(GL_TEXTURE_2D, id);
    gl().glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_WIDTH, &width);
    return width;
}

class TextureLoaderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(context.valid);
        root.writeFile(QStringLiteral("data/NoTexture.dds"), dxt1Dds(2, 2));
        root.writeFile(QStringLiteral("data/grid.dds"), dxt1Dds(8, 8));
        root.writeResources({QStringLiteral("textures.pkg")});
        root.enter();
        settings.gavrelPath = game.path();
        settings.modPath = mod.path() + QLatin1Char('/');
    }

    // Opens the archive written so far and makes the loader.
    void start(const ZipBuilder& archive = ZipBuilder())
    {
        ASSERT_TRUE(archive.writeTo(game.packagePath(QStringLiteral("textures.pkg"))));
        files.loadZipFiles();
        loader = std::make_unique<TextureLoader>();
    }

    int countLines(const QString& line) const { return int(logs.lines.count(line)); }

    GlTestContext context;
    LogCapture logs;
    TestRoot root;
    GameTree game;
    GameTree mod{false};
    Settings settings{QString()};
    FileManager files;
    std::unique_ptr<TextureLoader> loader;
};
} // namespace

TEST_F(TextureLoaderTest, StartsWithFallbackAndGridAndCachesByKey)
{
    start(ZipBuilder().add("maps/a.dds", dxt1Dds(4, 4)).add("maps/b.dds", dxt1Dds(4, 4)));
    EXPECT_EQ(levelWidth(loader->noTexture, 0), 2);
    EXPECT_EQ(levelWidth(loader->gridTexture, 0), 8);

    const unsigned int id = loader->loadTexture("maps/a.tga");
    EXPECT_NE(id, loader->noTexture);
    EXPECT_EQ(loader->loadTexture("  maps/a.dds "), id);
    EXPECT_EQ(loader->tankTextures.keys(), QStringList{"maps/a.dds"});
    EXPECT_EQ(countLines("[Info] Loading Texture: maps/a.dds"), 1);
    // Keys: no extension gains .dds; only a .tga after the first dot turns into .dds.
    EXPECT_EQ(TextureLoader::normalisedName("maps/a"), "maps/a.dds");
    EXPECT_EQ(TextureLoader::normalisedName("maps/v1.2/a.tga"), "maps/v1.2/a.tga");
    const unsigned int permanent = loader->loadPermanentTexture("maps/a.dds");

    // Failures are not cached: each request searches and warns again.
    EXPECT_EQ(loader->loadTexture("maps/missing"), loader->noTexture);
    EXPECT_EQ(loader->loadTexture("maps/missing"), loader->noTexture);
    EXPECT_EQ(countLines("[Warning] Could not open texture: maps/missing.dds"), 2);

    loader->tankTextures.insert("guarded.dds", loader->noTexture);
    loader->clearTankTextures();
    EXPECT_FALSE(gl().glIsTexture(id));
    EXPECT_TRUE(gl().glIsTexture(loader->noTexture));
    EXPECT_TRUE(gl().glIsTexture(permanent));

    // The cache answers to either slash, and loads on request only.
    const unsigned int again = loader->loadTexture("maps/a.dds");
    EXPECT_EQ(loader->textureByName("maps\\a.dds", false), again);
    EXPECT_EQ(loader->textureByName("maps/b.dds", false), 0u);
    EXPECT_TRUE(logs.contains("[Error] Filename not found in cache:maps/b.dds"));
    EXPECT_EQ(levelWidth(loader->textureByName("maps/b.dds", true), 0), 4);
}

TEST_F(TextureLoaderTest, ModFolderComesFirstUnlessTexturesComeFromArchives)
{
    mod.writeFile("maps/both.dds", dxt1Dds(2, 2));
    start(ZipBuilder()
              .add("maps/both.dds", dxt1Dds(4, 4))
              .add("maps/broken.dds", QByteArray("DDS nonsense")));

    EXPECT_EQ(levelWidth(loader->loadUncached("maps/both.dds"), 0), 2);
    loader->fromArchives = true;
    EXPECT_EQ(levelWidth(loader->loadUncached("maps/both.dds"), 0), 4);

    EXPECT_EQ(loader->loadTexture("maps/broken.dds"), loader->noTexture);
    EXPECT_TRUE(logs.contains("[Warning] Failed to load texture: maps/broken.dds"));
}

TEST_F(TextureLoaderTest, TexformatSidecarPutsTheHdLevelInFront)
{
    const QByteArray sidecar = "<root><texture><mip>maps/hd_big.dds</mip></texture></root>";
    mod.writeFile("maps/modded.texformat", sidecar);
    mod.writeFile("maps/modded.dds", dxt1Dds(8, 8, 4));
    start(ZipBuilder()
              .add("maps/hd.dds", dxt1Dds(8, 8, 4))
              .add("maps/hd.texformat", sidecar)
              .add("maps/hd_big.dds", dxt1Dds(16, 16, 1))
              .add("maps/plain.dds", dxt1Dds(8, 8, 4)));

    for (const char* name : {"maps/hd.dds", "maps/modded.dds"}) {
        const unsigned int id = loader->loadTexture(name);
        EXPECT_EQ(levelWidth(id, 0), 16) << name;
        GLint maxLevel = 0;
        gl().glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, &maxLevel);
        EXPECT_EQ(maxLevel, 4) << name;
    }
    EXPECT_EQ(levelWidth(loader->loadTexture("maps/plain.dds"), 0), 8);
}

TEST_F(TextureLoaderTest, FilterTableFollowsTheSetting)
{
    start(ZipBuilder().add("maps/a.dds", dxt1Dds(4, 4)));
    GLfloat driverMaximum = 0;
    gl().glGetFloatv(MaxTextureMaxAnisotropy, &driverMaximum);
    ASSERT_GT(driverMaximum, 1.0f);
    EXPECT_EQ(loader->anisotropy, std::min(4.0f, driverMaximum));

    settings.setTextureFilter("Bilinear");
    EXPECT_EQ(loader->magFilter, GLenum(GL_NEAREST));
    EXPECT_EQ(loader->anisotropy, 0.0f);

    settings.setTextureFilter("Anisotropic 16x");
    EXPECT_EQ(loader->minFilter, GLenum(GL_LINEAR_MIPMAP_LINEAR));
    EXPECT_EQ(loader->anisotropy, std::min(16.0f, driverMaximum));
    loader->bindTexture(3, loader->loadTexture("maps/a.dds"));
    GLint active = 0, anisotropy = 0;
    gl().glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    gl().glGetTexParameteriv(GL_TEXTURE_2D, TextureMaxAnisotropy, &anisotropy);
    EXPECT_EQ(active, GL_TEXTURE3);
    EXPECT_EQ(anisotropy, GLint(loader->anisotropy));
}

TEST_F(TextureLoaderTest, WriteDdsProducesADxt1FileWithMipmaps)
{
    start();
    QTemporaryDir target;
    const QString path = target.filePath("baked.dds");
    const QByteArray pixels(16 * 8 * 4, '\x80');

    ASSERT_TRUE(TextureLoader::writeDds(path, pixels.constData(), 16, 8, true));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    DdsImage image;
    ASSERT_TRUE(image.parse(file.readAll()));
    EXPECT_EQ(image.format, DdsFormat::DXT1);
    EXPECT_EQ(image.mipCount, 5);
    EXPECT_EQ(loader->ddsSize(path), QSize(16, 8));
}
