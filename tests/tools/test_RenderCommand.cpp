// ferrox-tool render as a modder runs it: a separate process on the sample
// installation, from a working directory of its own.

#include "ImageCheck.h"
#include "ToolRunner.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <tuple>

#include <gtest/gtest.h>

namespace {

TEST(RenderCommandTest, WritesAPictureOfTheAskedSizeShowingTheVehicle)
{
    QTemporaryDir folder;
    const ToolResult result =
        runTool({"render", SampleGame, "Kestrel", "--out", "kestrel.png", "--size", "200x150",
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

// Writing into the game folder is refused in ModTools.NothingIsWrittenIntoTheGameFolder.
TEST(RenderCommandTest, RefusesWhatItCannotDoWithExitCodeOneAndWritesNothing)
{
    QTemporaryDir folder;
    // Options after "render <game>", the file named by --out, the reason.
    const std::tuple<QStringList, QString, const char*> cases[] = {
        // clang-format off
        {{"Nobody", "--out", "a.png"}, "a.png", "Not in the vehicle table"},
        {{"Talon", "--out", "a.png", "--size", "0x10"}, "a.png", "--size"},
        {{"Talon", "--out", "a.png", "--state", "wrecked"}, "a.png", "--state"},
        {{"Talon", "--out", "a.png", "--turret", "Nope"}, "a.png", "No turret named: Nope"},
        {{"Talon", "--out", "no/such/folder/a.png"}, "no/such/folder/a.png", "No folder"},
        {{"Talon", "--out", "a.unknownformat"}, "a.unknownformat", "No image format"},
        // clang-format on
    };
    for (const auto& [options, out, message] : cases) {
        const ToolResult result =
            runTool(QStringList{"render", SampleGame} + options, folder.path());
        if (noOpenGl(result))
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        SCOPED_TRACE(options.join(' ').toStdString());
        EXPECT_EQ(result.exitCode, 1) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(message)) << result.err.toStdString();
        EXPECT_FALSE(QFile::exists(QDir(folder.path()).absoluteFilePath(out)));
    }
    // A vehicle that cannot be assembled is refused as well; the tank command
    // shows the same failure as text, not as a box.
    const QString failure = QStringLiteral("Failed to parse xml file for tank: No Turret");
    const ToolResult render =
        runTool(QStringList{"render", HostileGame, "No Turret", "--out", "a.png"} + hostileLists(),
                folder.path());
    EXPECT_EQ(render.exitCode, 1);
    EXPECT_TRUE(render.err.contains(failure.toUtf8())) << render.err.toStdString();
    EXPECT_FALSE(QFile::exists(QDir(folder.path()).absoluteFilePath("a.png")));
    const ToolResult tank =
        runTool(QStringList{"tank", HostileGame, "No Turret"} + hostileLists(), folder.path());
    EXPECT_EQ(tank.exitCode, 1);
    EXPECT_TRUE(tank.err.contains(failure.toUtf8()));
}

} // namespace
