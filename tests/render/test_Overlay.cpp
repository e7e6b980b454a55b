// The small drawables beside the scene: the text overlay (painted without GL,
// then drawn through a texture), the floor grid, the ray's lines and the hit
// marker, each checked by pixels of an off-screen target.

#include "GlTestContext.h"
#include "GridMesh.h"
#include "ImageCheck.h"
#include "LineBuffer.h"
#include "LogCapture.h"
#include "MarkerSphere.h"
#include "MatrixStack.h"
#include "QtPrinters.h"
#include "RenderWidget.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "TextOverlay.h"

#include <QFontMetrics>
#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLVersionFunctionsFactory>

#include <gtest/gtest.h>

#include <functional>

namespace {

constexpr bool yellow = false, white = true;

bool textPixel(QRgb p, bool whiteText)
{
    const bool bright = qAlpha(p) > 160 && qRed(p) > 200 && qGreen(p) > 200;
    return bright && (whiteText ? qBlue(p) > 200 : qBlue(p) < 60);
}

// The first and last row holding a text pixel, -1 when none does.
std::pair<int, int> rowsWith(const QImage& image, bool whiteText)
{
    int first = -1, last = -1;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (textPixel(image.pixel(x, y), whiteText)) {
                first = first < 0 ? y : first;
                last = y;
                break;
            }
    return {first, last};
}

} // namespace

TEST(OverlayPaintTest, StatisticsStartAtFifteenAloneAndAtHundredBelowTheVehicle)
{
    TextOverlay overlay;
    OverlayFacts facts;
    facts.showTankInfo = false;
    facts.showRenderInfo = true;
    ASSERT_TRUE(overlay.paint(facts));
    const QFontMetrics metrics(facts.font);
    // Lines are drawn on their baseline: the glyphs rise above it.
    const int alone = rowsWith(overlay.image, yellow).first;
    EXPECT_GE(alone, 15 - metrics.ascent());
    EXPECT_LT(alone, 15);
    EXPECT_EQ(rowsWith(overlay.image, white).first, -1);

    facts.showTankInfo = true;
    ASSERT_TRUE(overlay.paint(facts));
    EXPECT_EQ(rowsWith(overlay.image, yellow).first - alone, 85);
    const auto [firstWhite, lastWhite] = rowsWith(overlay.image, white);
    EXPECT_GE(firstWhite, 15 - metrics.ascent());
    EXPECT_LT(firstWhite, 15);
    // Five lines, the last on baseline 83.
    EXPECT_GT(lastWhite, 83 - metrics.ascent());
    EXPECT_LE(lastWhite, 83 + metrics.descent());

    facts.showTankInfo = false;
    facts.showRenderInfo = false;
    EXPECT_FALSE(overlay.paint(facts));

    // Text longer than the image is cut at its edge.
    facts.showTankInfo = true;
    facts.name = QString(300, QLatin1Char('W'));
    ASSERT_TRUE(overlay.paint(facts));
    ASSERT_EQ(overlay.image.size(), QSize(512, 512));
    EXPECT_NE(rowsWith(overlay.image.copy(511, 0, 1, 512), white).first, -1);
}

TEST(OverlayPaintTest, SwitchesThatChangeTheTextMarkTheOverlayDirty)
{
    RenderWidget view;
    view.overlay.dirty = false;
    view.toggleRenderInfo(true);
    EXPECT_TRUE(view.overlay.dirty);
    view.overlay.dirty = false;
    view.armorToggle(true);
    EXPECT_TRUE(view.overlay.dirty);
}

class OverlayGlTest : public testing::Test
{
protected:
    void SetUp() override
    {
        settings.shaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150");
        ASSERT_TRUE(context.valid);
        ASSERT_TRUE(shaders.loadShaders());
        gl = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_3_2_Core>(&context.context);
        stack.projection = identityMatrix();
        stack.view = identityMatrix();
    }

    QImage drawn(int side, const std::function<void()>& draw)
    {
        QOpenGLFramebufferObject& target = context.makeTarget(side, side);
        gl->glViewport(0, 0, side, side);
        gl->glClearColor(0, 0, 0, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw();
        return target.toImage();
    }

    LogCapture log;
    Settings settings{QString()};
    GlTestContext context;
    ShaderLoader shaders;
    MatrixStack stack;
    QOpenGLFunctions_3_2_Core* gl = nullptr;
};

TEST_F(OverlayGlTest, OverlayIsDrawnAtTheTopLeftAndUploadedOnlyWhenChanged)
{
    TextOverlay overlay;
    overlay.init();
    OverlayFacts facts;
    facts.nation = QStringLiteral("Testland");
    const QImage image = drawn(600, [&] { overlay.render(facts, 600, 600); });
    EXPECT_EQ(overlay.uploads, 1);
    EXPECT_FALSE(overlay.dirty);

    // Every opaque white pixel of the overlay lands 1 right and 5 down.
    int checked = 0, wrong = 0;
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 200; ++x)
            if (qAlpha(overlay.image.pixel(x, y)) == 255 &&
                textPixel(overlay.image.pixel(x, y), white)) {
                wrong += textPixel(image.pixel(x + 1, y + 5), white) ? 0 : 1;
                ++checked;
            }
    EXPECT_EQ(wrong, 0) << "saved to " << saveFailedImage(image).toStdString();
    EXPECT_GT(checked, 20);
    EXPECT_PIXEL(image, 300, 300, Qt::black);

    // Unchanged, marked dirty, with statistics (they change each frame).
    for (int uploads : {1, 2, 3}) {
        overlay.dirty = uploads == 2;
        facts.showRenderInfo = uploads == 3;
        overlay.render(facts, 600, 600);
        EXPECT_EQ(overlay.uploads, uploads);
    }
    overlay.release();
}

TEST_F(OverlayGlTest, GridRayLinesAndHitMarkerDrawWhereTheyAre)
{
    GridMesh grid;
    grid.create(4);
    // The floor grid has red and blue middle lines and grey others. From
    // above: x to the right, z up the image, a third of clip space per unit.
    stack.view = {1.0f / 3, 0, 0, 0, 0, 0, 0.1f, 0, 0, 1.0f / 3, 0, 0, 0, 0, 0, 1};
    QImage image = drawn(101, [&] { grid.draw(); });
    EXPECT_PIXEL(image, 50, 20, QColor(255, 51, 51), 3);
    EXPECT_PIXEL(image, 20, 50, QColor(77, 77, 255), 3);
    EXPECT_PIXEL(image, 67, 20, QColor(26, 26, 26), 3);
    EXPECT_PIXEL(image, 58, 20, Qt::black);
    grid.release();

    // The ray's lines stay until cleared.
    stack.view = identityMatrix();
    LineBuffer lines;
    lines.init();
    lines.addLine({-0.8f, 0, 0}, {0.8f, 0, 0}, QColor(QStringLiteral("yellow")));
    image = drawn(101, [&] { lines.draw(); });
    for (int x : {15, 50, 85})
        EXPECT_PIXEL(image, x, 50, Qt::yellow, 3);
    EXPECT_PIXEL(image, 50, 30, Qt::black);

    lines.clear();
    EXPECT_PIXEL(drawn(101, [&] { lines.draw(); }), 50, 50, Qt::black);
    lines.release();

    // The hit marker is a dot at its position.
    MarkerSphere marker;
    marker.init(QColor(QStringLiteral("royalblue")));
    marker.setPosition({0.5f, 0, 0});
    image = drawn(101, [&] { marker.draw(); });
    EXPECT_PIXEL(image, 76, 50, QColor(65, 105, 225), 3);
    EXPECT_PIXEL(image, 50, 50, Qt::black);
    EXPECT_PIXEL(image, 76, 44, Qt::black);
    marker.release();
}
