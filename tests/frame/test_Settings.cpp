#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "SettingsFormat.h"
#include "StartupError.h"
#include "TestRoot.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {
class SettingsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        resetStartupState();
        root.enter();
    }
    void TearDown() override { resetStartupState(); }

    TestRoot root;
    MessageBoxRecorder boxes;
};
} // namespace

TEST_F(SettingsTest, FirstRunWarnsAndWritesTheWholeTableInOrder)
{
    Settings settings;
    settings.loadOrCreate();

    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(
        "Could not locate settings file, creating a new one.\nThe preferences"));
    EXPECT_TRUE(settings.firstRun);
    EXPECT_TRUE(QDir(root.dataDirectory() + "/screenshots").exists());

    // Every key in its section, in the order other versions write them.
    QFile file(root.dataDirectory() + "/settings.cfg");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    QStringList tags;
    for (const auto& match : QRegularExpression("<(\\w+)>").globalMatch(text))
        tags.append(match.captured(1));
    EXPECT_EQ(tags.join(' '),
              "Settings Version Paths GavrelPath ModPath ImageEditor Screenshots RendererSystems "
              "Renderer Name ShaderDir RendererCommon TextureFilter MSAA ShadowMap "
              "ShadowMapSamples VSync SceneSettings MouseInvertX MouseInvertY ViewportColor "
              "AmbientLight ShowHangar ShowGrid ShowTankInfo ShowShadows SceneSet Lighting "
              "ScreenshotAlpha ScreenshotTimeStamp ShowRenderInfo OverwriteTextures VerticalTabs "
              "NativeFileDialog DisableTranslate");
    for (const QString& line : QStringList{
             "<GavrelPath>c:\\Games\\Gavrel</GavrelPath>", "<ModPath></ModPath>",
             "<Screenshots>" + root.dataDirectory() + "/screenshots</Screenshots>",
             "<TextureFilter>Anisotropic 4x</TextureFilter>",
             "<ShadowMapSamples>8</ShadowMapSamples>",
             "<ViewportColor>128 128 128 255</ViewportColor>", "<ShowGrid>false</ShowGrid>"})
        EXPECT_TRUE(text.contains("  " + line + "\n")) << line.toStdString();
}

TEST_F(SettingsTest, SavedValuesReadBackInANewObject)
{
    {
        Settings settings;
        settings.loadOrCreate();
        settings.setShadowMapSamples(2.5f);
        settings.setViewportColor(QColor(1, 2, 3, 4));
        settings.setMouseInvert(true, false);
        settings.setLighting("Ärger & <tags>");
        settings.save();
    }
    boxes.boxes.clear();
    Settings settings;
    settings.loadOrCreate();
    EXPECT_TRUE(boxes.boxes.isEmpty());
    EXPECT_FLOAT_EQ(settings.shadowMapSamples, 2.5f);
    EXPECT_EQ(settings.viewportColor, QColor(1, 2, 3, 4));
    EXPECT_TRUE(settings.mouseInvertX);
    EXPECT_EQ(settings.lighting, "Ärger & <tags>");
}

TEST_F(SettingsTest, KeysAreFoundWhateverTheirOrderAndMissingOnesReadEmpty)
{
    root.writeFile("data/settings.cfg", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                        "<!DOCTYPE settings.cfg>\n<Settings>\n"
                                        " <SceneSettings>\n"
                                        "  <ShowGrid>TRUE</ShowGrid>\n"
                                        "  <ShowHangar>is true</ShowHangar>\n"
                                        "  <ShowTankInfo>1</ShowTankInfo>\n"
                                        "  <AmbientLight>bright</AmbientLight>\n"
                                        "  <ViewportColor>10.9 20 30</ViewportColor>\n"
                                        " </SceneSettings>\n"
                                        " <Paths><ModPath>/m</ModPath></Paths>\n</Settings>\n");
    Settings settings;
    settings.loadOrCreate();
    EXPECT_TRUE(settings.showGrid);
    EXPECT_TRUE(settings.showHangar);
    EXPECT_FALSE(settings.viewportColor.isValid());
    EXPECT_EQ(settings.modPath, "/m");
    EXPECT_EQ(settings.shadowMap, 0);
    EXPECT_FALSE(startupErrorPending());

    using namespace SettingsFormat;
    EXPECT_EQ(readColor("10.9 20 30 40"), QColor(10, 20, 30, 40));
    EXPECT_FALSE(readColor("10 20 30 40 50").isValid());
    EXPECT_FALSE(readColor("10  20 30 40").isValid());
    EXPECT_EQ(floatText(0.1234567f), "0.123457");
    EXPECT_FALSE(readBool("yes"));
    EXPECT_EQ(readInt(" 12"), 12);
    EXPECT_EQ(readInt("12px"), 0);
}

TEST_F(SettingsTest, GamePathIsAnnouncedOnlyWhenValidOnceOnSaveAndWhileLoading)
{
    GameTree game;
    GameTree notAGame(false);
    {
        Settings settings;
        settings.loadOrCreate();
        QSignalSpy changed(&settings, &Settings::gavrelPathChanged);
        settings.setGavrelPath(notAGame.path());
        settings.save();
        EXPECT_EQ(changed.count(), 0);
        settings.setGavrelPath(game.path());
        EXPECT_EQ(changed.count(), 0);
        settings.save();
        EXPECT_EQ(changed.count(), 1);
        settings.save();
        EXPECT_EQ(changed.count(), 1);
    }
    Settings settings;
    QSignalSpy changed(&settings, &Settings::gavrelPathChanged);
    settings.loadOrCreate();
    EXPECT_EQ(changed.count(), 1);
    EXPECT_TRUE(settings.gavrelPathValid);
}

// An unreadable file is a startup error: ui/test_Startup runs that to the
// fatal box.
TEST_F(SettingsTest, AFailedWriteShowsTheClosingBox)
{
    Settings settings(root.filePath("no/such/folder/settings.cfg"));
    settings.save();
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].text, "Could not open settings file.\nApplication will now close.");
}
