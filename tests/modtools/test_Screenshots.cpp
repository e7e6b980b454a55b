#include "Screenshots.h"

#include "QtPrinters.h"

#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>

namespace {

TEST(Screenshots, FileNamesAreTheTanksWithAPlainTimeStamp)
{
    const QTime morning(9, 5, 3);
    const std::tuple<QString, bool, QString> cases[] = {
        {"A/B", false, "/shots/A_B.png"},
        {"A/B", true, "/shots/A_B_9-5-3.png"},
        {"a*b<c>d:e|f?g\\h\"i", false, "/shots/a_b_c_d_e_f_g_h_i.png"},
        {"", false, "/shots/.png"},
        {"", true, "/shots/_9-5-3.png"},
    };
    for (const auto& [name, stamp, file] : cases)
        EXPECT_EQ(Screenshots::fileName("/shots", name, stamp, morning), file);
    EXPECT_EQ(Screenshots::fileName("/s", "T", true, QTime(23, 59, 10)), "/s/T_23-59-10.png");
}

TEST(Screenshots, PresetsStayWithinWhatTheGpuRenders)
{
    // maxImageSize, preset index, size.
    const std::tuple<int, int, QSize> cases[] = {
        {4096, 0, {1280, 720}},   {4096, 6, {4096, 4096}},  {4096, 7, {4096, 4096}},
        {16384, 6, {7680, 4320}}, {16384, 7, {8000, 8000}}, {8196, 7, {8000, 8000}},
        {0, 1, {0, 0}},           {16384, 8, {}},
    };
    for (const auto& [limit, index, size] : cases)
        EXPECT_EQ(Screenshots::presetSize(index, limit), size) << limit << " " << index;
    const int limits[][2] = {{16384, 8196}, {8192, 8192}, {0, 0}, {-1, 0}};
    for (const auto& [limit, boxes] : limits)
        EXPECT_EQ(Screenshots::sizeLimit(limit), boxes) << limit;
}

TEST(Screenshots, SavesWholeOrLeavesTheOlderFile)
{
    QTemporaryDir folder;
    QImage image(40, 30, QImage::Format_ARGB32);
    image.fill(QColor(10, 200, 30));
    for (const QString name : {"shot.png", "shot.tiff", "noSuffix"}) {
        QString error;
        ASSERT_TRUE(Screenshots::save(image, folder.filePath(name), 100, &error))
            << error.toStdString();
        EXPECT_EQ(QImageReader(folder.filePath(name)).read().pixel(5, 5), image.pixel(5, 5));
    }
    // An unknown format writes nothing and keeps what stood.
    QFile old(folder.filePath("shot.nope"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("older");
    old.close();
    QString error;
    EXPECT_FALSE(Screenshots::save(image, old.fileName(), 100, &error));
    EXPECT_FALSE(error.isEmpty());
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readAll(), "older");
}

// A shot drawn off-screen at a size the viewport never had, transparent, is
// tested through the screenshot dialog in test_ModTools.cpp.

} // namespace
