#include "UvMapFile.h"

#include "ImageCheck.h"
#include "LogCapture.h"
#include "QtPrinters.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>

namespace {

const QString Hull = "vehicles/A/normal/lod0/Hull_AM.dds";
const QString Other = "vehicles/A/normal/lod0/Other_AM.DDS";
// Not square, so a swapped side shows.
const QSize TextureSize(48, 24);

// One triangle on each texture; the other texture's lies where the hull's
// is not.
UvMap twoTextures()
{
    UvMap map;
    map.setData({{{{0.1f, 0.1f}, {0.9f, 0.1f}, {0.1f, 0.9f}}, Hull},
                 {{{0.5f, 0.5f}, {0.95f, 0.5f}, {0.95f, 0.95f}}, Other}},
                {Hull, Other});
    return map;
}

UvMapStyle style()
{
    UvMapStyle colours;
    colours.line = Qt::red;
    colours.fill = Qt::green;
    colours.background = Qt::blue;
    colours.lineWidth = 2;
    return colours;
}

// The pixel at the fraction (u, v) of the image has colour.
testing::AssertionResult pixelAt(const QImage& image, double u, double v, const QColor& colour)
{
    return pixelIs(image, QPoint(int(u * image.width()), int(v * image.height())), colour);
}

// Inside, on the top edge, outside, and inside only the other texture's
// triangle.
void expectHullTemplate(const QImage& image)
{
    EXPECT_TRUE(pixelAt(image, 0.3, 0.3, Qt::green));
    EXPECT_TRUE(pixelAt(image, 0.5, 0.1, Qt::red));
    EXPECT_TRUE(pixelAt(image, 0.8, 0.8, Qt::blue));
    EXPECT_TRUE(pixelAt(image, 0.85, 0.6, Qt::blue));
}

class UvMapSizes : public testing::TestWithParam<std::tuple<UvMapFile::Format, int>>
{
};

TEST_P(UvMapSizes, SavesAtTheTextureSizeTimesTheScale)
{
    const auto [format, scale] = GetParam();
    QTemporaryDir folder;
    const QString file = folder.filePath(UvMap::tabName(UvMapFile::proposedName(Hull, format)));
    ASSERT_TRUE(UvMapFile::save(twoTextures(), Hull, TextureSize, scale, format, style(), file));
    const QImage image(file);
    EXPECT_EQ(image.size(), TextureSize * scale);
    expectHullTemplate(image);
}

INSTANTIATE_TEST_SUITE_P(Formats, UvMapSizes,
                         testing::Combine(testing::Values(UvMapFile::Png, UvMapFile::Tiff),
                                          testing::Values(1, 4)));

TEST(UvMap, PreviewIsASquareAsWideAsTheTexture)
{
    const QImage preview = twoTextures().preview(Hull, TextureSize, style());
    EXPECT_EQ(preview.size(), QSize(48, 48));
    expectHullTemplate(preview);
}

// An independent renderer draws our SVG as our PNG of the same size.
TEST(UvMap, SvgDrawsAsThePng)
{
    const QString converter = QStandardPaths::findExecutable("rsvg-convert");
    if (converter.isEmpty())
        GTEST_SKIP() << "rsvg-convert (librsvg2-bin) is not installed";
    QTemporaryDir folder;
    const UvMap map = twoTextures();
    ASSERT_TRUE(UvMapFile::save(map, Hull, TextureSize, 4, UvMapFile::Svg, style(),
                                folder.filePath("hull.svg")));
    const QImage ours =
        map.image(Hull, TextureSize * 4, style()).convertToFormat(QImage::Format_RGB32);
    QProcess process;
    process.start(converter, {"-w", "192", "-h", "96", "-b", "blue", "-o",
                              folder.filePath("theirs.png"), folder.filePath("hull.svg")});
    ASSERT_TRUE(process.waitForFinished(60000));
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    const QImage theirs(folder.filePath("theirs.png"));
    ASSERT_EQ(theirs.size(), ours.size());
    expectHullTemplate(theirs);

    // Antialiased edges may differ by a shade; the drawing may not.
    int differing = 0;
    for (int y = 0; y < ours.height(); ++y)
        for (int x = 0; x < ours.width(); ++x)
            differing += !sameColour(theirs.pixel(x, y), ours.pixel(x, y), 48);
    EXPECT_LT(differing, ours.width() * ours.height() / 50);
    if (differing >= ours.width() * ours.height() / 50)
        saveFailedImage(theirs, "rsvg");
}

TEST(UvMapFile, NamesAndScales)
{
    const std::tuple<QString, UvMapFile::Format, QString> names[] = {
        {Hull, UvMapFile::Png, "vehicles/A/normal/lod0/Hull_AM.png"},
        {Other, UvMapFile::Tiff, "vehicles/A/normal/lod0/Other_AM.tiff"},
        {Other, UvMapFile::Svg, "vehicles/A/normal/lod0/Other_AM.svg"},
    };
    for (const auto& [texture, format, expected] : names)
        EXPECT_EQ(UvMapFile::proposedName(texture, format), expected);
    const int scales[][2] = {{0, 1}, {3, 4}, {4, 1}, {-1, 1}};
    for (const auto& [index, scale] : scales)
        EXPECT_EQ(UvMapFile::scaleOfIndex(index), scale) << index;
}

TEST(UvMap, TabFindsTheLastGroupWhosePathContainsItsName)
{
    UvMap map;
    map.setData({{{}, "a/Hull.dds"}, {{}, "b/Hull.dds"}, {{}, "b/Hull.dds.bak"}, {{}, "c/Gun.dds"}},
                {});
    EXPECT_EQ(UvMap::tabName("a/b/Hull.dds"), "Hull.dds");
    EXPECT_EQ(map.textureForTab("Hull.dds"), "b/Hull.dds.bak");
    EXPECT_EQ(map.textureForTab("hull.dds"), "");
}

TEST(UvMapFile, AFailedSaveLeavesTheOlderFile)
{
    QTemporaryDir folder;
    const QString file = folder.filePath("old.png");
    QFile old(file);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("older");
    old.close();
    LogCapture log;
    // A texture whose size could not be read.
    EXPECT_FALSE(
        UvMapFile::save(twoTextures(), Hull, QSize(0, 0), 1, UvMapFile::Png, style(), file));
    EXPECT_TRUE(log.contains("[Warning] Failed to save UV Map: " + file));
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readAll(), "older");
}

} // namespace
