// ferrox-tool render as a modder runs it: a separate process on the sample
// installation, from a working directory of its own.

#include "ImageCheck.h"
#include "ToolRunner.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString sampleGame = QStringLiteral(FERROX_SAMPLE_GAME_DIR);

bool noOpenGl(const ToolResult& result)
{
    return result.err.contains("No OpenGL");
}

TEST(RenderCommandTest, WritesAPictureOfTheAskedSizeShowingTheVehicle)
{
    QTemporaryDir folder;
    const ToolResult result =
        runTool({"render", sampleGame, "Kestrel", "--out", "kestrel.png", "--size", "200x150",
                 "--no-garage", "--state", "destroyed", "--turret-yaw", "45"},
                folder.path());
    if (noOpenGl(result))
        GTEST_SKIP() << "no OpenGL 3.2 core context";
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();

    const QImage image(folder.filePath("kestrel.png"));
    ASSERT_EQ(image.size(), QSize(200, 150));
    // Without the garage the background is the viewport's dark grey.
    int vehiclePixels = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            vehiclePixels += !sameColour(image.pixel(x, y), QColor(Qt::darkGray));
    EXPECT_GT(vehiclePixels, 200 * 150 / 20) << saveFailedImage(image).toStdString();
    EXPECT_LT(vehiclePixels, 200 * 150 / 2) << saveFailedImage(image).toStdString();
}

TEST(RenderCommandTest, RefusesWhatItCannotDoWithExitCodeOneAndWritesNothing)
{
    QTemporaryDir folder;
    const QString inGame = sampleGame + QStringLiteral("/res/talon.png");
    const struct
    {
        QStringList arguments;
        QString out;
        const char* message;
    } cases[] = {
        {{"render", sampleGame, "Talon", "--out", inGame}, inGame, "never writes into the game"},
        {{"render", sampleGame, "Nobody", "--out", "a.png"}, "a.png", "Not in the vehicle table"},
        {{"render", sampleGame, "Harrow", "--out", "a.png"},
         "a.png",
         "Failed to parse xml file for tank: Harrow"},
        {{"render", sampleGame, "Talon", "--out", "a.png", "--size", "0x10"}, "a.png", "--size"},
        {{"render", sampleGame, "Talon", "--out", "a.png", "--state", "wrecked"},
         "a.png",
         "--state"},
        {{"render", sampleGame, "Talon", "--out", "a.png", "--turret", "Nope"},
         "a.png",
         "No turret named: Nope"},
        {{"render", sampleGame, "Talon", "--out", "no/such/folder/a.png"},
         "no/such/folder/a.png",
         "No folder"},
        {{"render", sampleGame, "Talon", "--out", "a.unknownformat"},
         "a.unknownformat",
         "No image format"},
        // The tank command shows the same failure as text, not as a box.
        {{"tank", sampleGame, "Harrow"}, QString(), "Failed to parse xml file for tank: Harrow"},
    };
    for (const auto& entry : cases) {
        const ToolResult result = runTool(entry.arguments, folder.path());
        if (noOpenGl(result))
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        const std::string label = entry.arguments.join(' ').toStdString();
        EXPECT_EQ(result.exitCode, 1) << label << "\n" << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(entry.message)) << label << "\n"
                                                        << result.err.toStdString();
        if (!entry.out.isEmpty())
            EXPECT_FALSE(QFile::exists(QDir(folder.path()).absoluteFilePath(entry.out))) << label;
    }
}

} // namespace
