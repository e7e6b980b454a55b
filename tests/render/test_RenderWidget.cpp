// The frame with a real context under Xvfb, off-screen without any widget and
// through the viewport with its start-up and frame loop, checked by pixels.

#include "RenderWidget.h"

#include "GlErrors.h"
#include "GlFunctions.h"
#include "ImageCheck.h"
#include "LogCapture.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "SceneFixture.h"
#include "StartupError.h"

#include <QApplication>
#include <QOpenGLFunctions_3_2_Core>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

namespace {

const QColor clearColour(30, 60, 90);
const QColor quadColour(230, 40, 20);

// Paints the middle ninth of the target in quadColour in the colour pass
// (a scissored clear from the viewport it is given), and records each pass
// with the framebuffer it drew into.
class MiddlePatch
{
public:
    void draw(ScenePass pass)
    {
        QOpenGLFunctions_3_2_Core* gl = glFunctions();
        GLint bound = 0, viewport[4] = {};
        gl->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
        gl->glGetIntegerv(GL_VIEWPORT, viewport);
        passes.push_back(pass);
        framebuffers.push_back(GLuint(bound));
        if (pass == ShadowPass)
            return;
        gl->glEnable(GL_SCISSOR_TEST);
        gl->glScissor(viewport[2] / 3, viewport[3] / 3, viewport[2] / 3, viewport[3] / 3);
        gl->glClearColor(float(quadColour.redF()), float(quadColour.greenF()),
                         float(quadColour.blueF()), 1.0f);
        gl->glClear(GL_COLOR_BUFFER_BIT);
        gl->glDisable(GL_SCISSOR_TEST);
    }

    std::vector<ScenePass> passes;
    std::vector<GLuint> framebuffers;
};

// Pixels of image inside area that are not the clear colour.
int pixelsOtherThanClear(const QImage& image, const QRect& area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            count += sameColour(image.pixel(x, y), clearColour, 8) ? 0 : 1;
    return count;
}

// The first value of a GL state on the current context.
GLint glInteger(GLenum name)
{
    GLint values[2] = {};
    glFunctions()->glGetIntegerv(name, values);
    return values[0];
}

} // namespace

// What a command-line tool does: an off-screen context, the managers, and
// the viewport's frame without a widget or a main window.
TEST(OffscreenFrameTest, DrawsTheShadowAndColourPassesIntoAnImageWithoutAWidget)
{
    SceneFixture scene{QString()};
    ASSERT_TRUE(scene.ready());
    scene.root.writeFile(QStringLiteral("data/garages.cfg"), "<garages.cfg/>");
    scene.settings->showShadows = true;
    FrameRenderer::setInitialGlState();
    FrameRenderer frame;
    frame.viewportColor = clearColour;
    frame.tankInfoShown = false;
    frame.create(256);
    MiddlePatch patch;
    frame.scene.add([&](ScenePass pass) { patch.draw(pass); });
    const GLuint before = GLuint(glInteger(GL_FRAMEBUFFER_BINDING));

    const QImage image = frame.renderToImage(120, 90, false);
    EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
    ASSERT_EQ(image.size(), QSize(120, 90));
    EXPECT_PIXEL(image, 60, 45, quadColour);
    EXPECT_PIXEL(image, 118, 88, clearColour);
    EXPECT_EQ(qAlpha(image.pixel(118, 88)), 255);
    // The casters draw into the shadow map from the light, the scene into
    // the image; the framebuffer bound before is bound again.
    ASSERT_EQ(patch.passes, (std::vector<ScenePass>{ShadowPass, ColourPass}));
    EXPECT_EQ(patch.framebuffers[0], frame.shadowMap.framebuffer);
    EXPECT_NE(patch.framebuffers[1], frame.shadowMap.framebuffer);
    EXPECT_EQ(GLuint(glInteger(GL_FRAMEBUFFER_BINDING)), before);
    EXPECT_EQ(MatrixStack::instance()->depthView,
              lookAt(frame.light.position, {0, 0, 0}, {0, 1, 0}));

    // Transparent: only the clear colour loses its alpha.
    const QImage transparent = frame.renderToImage(50, 30, true);
    EXPECT_EQ(qAlpha(transparent.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(transparent.pixel(25, 15)), 255);
    frame.release();
}

class RenderWidgetTest : public testing::Test
{
protected:
    RenderWidgetTest()
    {
        settings.shaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150");
        settings.shadowMap = 1024;
        settings.msaa = QStringLiteral("Disabled");
        settings.viewportColor = clearColour;
        // No backdrop: these tests look at the viewport alone.
        root.writeFile(QStringLiteral("data/garages.cfg"), "<garages.cfg/>");
        root.enter();
    }
    ~RenderWidgetTest() override { resetStartupState(); }

    // Shows a 160 x 120 viewport; QOpenGLWidget starts its GL there.
    RenderWidget& start()
    {
        log.lines.clear();
        widget = std::make_unique<RenderWidget>();
        widget->resize(160, 120);
        widget->show();
        if (!widget->isValid())
            QCoreApplication::processEvents();
        return *widget;
    }

    TestRoot root;
    LogCapture log;
    MessageBoxRecorder boxes;
    Settings settings{QString()};
    MiddlePatch patch;
    std::unique_ptr<RenderWidget> widget;
};

TEST_F(RenderWidgetTest, StartsACoreContextWithTheGlStateAndTheShadersAndLogsGlErrors)
{
    RenderWidget& view = start();
    const QStringList& lines = log.lines;
    EXPECT_EQ(lines.value(0), "[Info] Initialising OpenGL.");
    EXPECT_EQ(lines.value(lines.size() - 1), "[Info] OpenGL Initialising complete.");
    for (const char* level : {"[Error]", "[Warning]"})
        EXPECT_EQ(lines.filter(QLatin1String(level)), QStringList());

    view.makeCurrent();
    const std::pair<GLenum, GLint> state[] = {{GL_DEPTH_TEST, 1},      {GL_DEPTH_FUNC, GL_LESS},
                                              {GL_CULL_FACE, 1},       {GL_CULL_FACE_MODE, GL_BACK},
                                              {GL_FRONT_FACE, GL_CCW}, {GL_MULTISAMPLE, 0}};
    for (auto [name, expected] : state)
        EXPECT_EQ(glInteger(name), expected) << name;
    // The largest screenshot keeps to every GL limit.
    const GLint limits[] = {glInteger(GL_MAX_TEXTURE_SIZE), glInteger(GL_MAX_RENDERBUFFER_SIZE),
                            glInteger(GL_MAX_VIEWPORT_DIMS)};
    EXPECT_EQ(view.maxImageSize(), *std::min_element(std::begin(limits), std::end(limits)));

    // Each pending GL error is logged by name, once.
    log.lines.clear();
    glFunctions()->glEnable(0xFFFF);
    checkGlErrors(QStringLiteral("X"));
    checkGlErrors(QStringLiteral("Y"));
    EXPECT_EQ(log.lines, QStringList{"[Error] OpenGL error. Caller: X gl err: GL_INVALID_ENUM"});
    EXPECT_EQ(glErrorName(1287), QStringLiteral("UNKOWN GL ERROR."));
}

// Each "Hide Elements" box sends its checked state: true hides the element.
TEST_F(RenderWidgetTest, HideElementBoxesHideTheirElementInTheFrame)
{
    using Slot = void (RenderWidget::*)(bool);
    const std::tuple<const char*, Slot, QRect> cases[] = {
        {"Grid", &RenderWidget::showGrid, QRect(0, 0, 160, 120)},
        {"TankInfo", &RenderWidget::toggleText, QRect(0, 0, 100, 60)},
        {"RenderStats", &RenderWidget::toggleRenderInfo, QRect(0, 0, 100, 60)}};
    RenderWidget& view = start();
    for (auto [box, slot, area] : cases) {
        SCOPED_TRACE(box);
        for (const auto& each : cases)
            (view.*std::get<Slot>(each))(true);
        (view.*slot)(false);
        const QImage shown = view.grabFramebuffer();
        EXPECT_GT(pixelsOtherThanClear(shown, area), 20)
            << saveFailedImage(shown, box).toStdString();
        (view.*slot)(true);
        const QImage hidden = view.grabFramebuffer();
        EXPECT_EQ(pixelsOtherThanClear(hidden, QRect(0, 0, 160, 120)), 0)
            << saveFailedImage(hidden, box).toStdString();
    }
}

TEST_F(RenderWidgetTest, TheWidgetsFrameAndItsImageShowTheScene)
{
    RenderWidget& view = start();
    const auto drawPatch = [this](ScenePass pass) { patch.draw(pass); };
    view.removeSceneDrawable(view.addSceneDrawable(drawPatch));
    EXPECT_PIXEL(view.grabFramebuffer(), 80, 60, clearColour);
    view.addSceneDrawable(drawPatch);
    const QImage image = view.grabFramebuffer();
    EXPECT_PIXEL(image, 80, 60, quadColour);
    EXPECT_PIXEL(image, 1, 1, clearColour);
    // Without shadows there is only the colour pass, into the widget's target.
    EXPECT_EQ(patch.passes, std::vector<ScenePass>{ColourPass});
    EXPECT_EQ(patch.framebuffers.back(), view.defaultFramebufferObject());

    // Each frame asks for the next through the event loop; no timer paces it.
    const int before = view.framesRun;
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.framesRun >= before + 3; }, 10000));

    // An image of the same frame leaves the view, its target and the
    // statistics as they were, and the alpha at 0 until the next frame.
    const int frames = view.framesRun;
    EXPECT_PIXEL(view.renderToImage(200, 100, true), 100, 50, quadColour);
    EXPECT_EQ(view.controls.width, 160);
    EXPECT_EQ(GLuint(glInteger(GL_FRAMEBUFFER_BINDING)), view.defaultFramebufferObject());
    EXPECT_EQ(view.framesRun, frames);
    EXPECT_EQ(view.viewportColor.alpha(), 0);
    (void)view.grabFramebuffer();
    EXPECT_EQ(view.viewportColor.alpha(), 255);
}

TEST_F(RenderWidgetTest, PausedOrMinimisedTheLoopDrawsAndAsksForNothing)
{
    RenderWidget& view = start();
    (void)view.grabFramebuffer();
    for (bool minimised : {false, true}) {
        SCOPED_TRACE(minimised ? "minimised" : "paused");
        auto stop = [&](bool on) {
            if (minimised)
                on ? view.showMinimized() : view.showNormal();
            else
                view.paused = on;
        };
        stop(true);
        ASSERT_EQ(view.isMinimized(), minimised);
        const int frames = view.framesRun;
        const int requests = view.framesRequested;
        const QColor shown = view.viewportColor;
        view.setViewportColor(minimised ? QColor(Qt::blue) : QColor(Qt::green));
        const QImage held = view.grabFramebuffer();
        for (int i = 0; i < 20; ++i)
            QCoreApplication::processEvents();
        EXPECT_EQ(view.framesRun, frames);
        EXPECT_EQ(view.framesRequested, requests);
        EXPECT_PIXEL(held, 1, 1, shown); // the last frame stays on show
        stop(false);
        EXPECT_PIXEL(view.grabFramebuffer(), 1, 1, view.viewportColor);
        EXPECT_GT(view.framesRun, frames);
    }
}

TEST_F(RenderWidgetTest, ShadowMapIsACompleteDepthTargetRebuiltForANewSize)
{
    RenderWidget& view = start();
    view.makeCurrent();
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    gl->glBindFramebuffer(GL_FRAMEBUFFER, view.shadowFbo);
    EXPECT_EQ(gl->glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
    gl->glBindFramebuffer(GL_FRAMEBUFFER, view.defaultFramebufferObject());

    auto level = [&](GLenum name) {
        GLint value = 0;
        gl->glBindTexture(GL_TEXTURE_2D, view.shadowTexture);
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, name, &value);
        return value;
    };
    EXPECT_EQ(level(GL_TEXTURE_WIDTH), 1024);
    GLint compare = 0;
    gl->glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, &compare);
    EXPECT_EQ(compare, GL_LEQUAL);

    settings.setShadowMapSize(512);
    view.makeCurrent();
    EXPECT_EQ(level(GL_TEXTURE_WIDTH), 512);
}

TEST(SurfaceFormatTest, TakesSamplesAndSwapFromTheSettings)
{
    Settings settings{QString()};
    const int unchanged = QSurfaceFormat::defaultFormat().samples();
    const std::pair<const char*, int> samples[] = {
        {"2x", 2}, {"4x", 4}, {"8x", 8}, {"16x", 16}, {"Disabled", 0}, {"lots", unchanged}};
    for (auto [msaa, count] : samples) {
        settings.msaa = QLatin1String(msaa);
        settings.vsync = count % 2;
        const QSurfaceFormat format = ferroxSurfaceFormat(settings);
        EXPECT_EQ(format.samples(), count) << msaa;
        EXPECT_EQ(format.swapInterval(), count % 2) << msaa;
    }
}

TEST_F(RenderWidgetTest, FewerSamplesThanAskedWarnAndMissingShadersEndTheStart)
{
    settings.msaa = QStringLiteral("16x");
    start().makeCurrent();
    const GLint granted = glInteger(GL_SAMPLES);
    EXPECT_EQ(log.lines.filter(QStringLiteral("[Warning]")),
              granted < 16 ? QStringList{"[Warning] Requested anti alias setting 16 but got " +
                                         QString::number(granted)}
                           : QStringList());

    // Without shaders the start ends with one error.
    QTemporaryDir empty;
    settings.shaderDir = empty.path();
    start();
    EXPECT_EQ(takeStartupError(), QStringLiteral("Shader initialization failed."));
}

TEST_F(RenderWidgetTest, InputAndDockSlotsReachTheControlsAndButtonsSetTheCursor)
{
    RenderWidget& view = start();
    QWheelEvent wheel(QPointF(10, 10), view.mapToGlobal(QPointF(10, 10)), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&view, &wheel);
    EXPECT_EQ(view.controls.zoom, 11.0f);

    const QPoint at(20, 20);
    // A drawn cursor: its picture, with the hot spot in the middle.
    const auto drawn = [&view](const char* icon) {
        const QImage image{QString::fromLatin1(icon)};
        const QCursor cursor = view.cursor();
        return !image.isNull() && cursor.shape() == Qt::BitmapCursor &&
               cursor.pixmap().toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied) ==
                   image.convertToFormat(QImage::Format_ARGB32_Premultiplied) &&
               cursor.hotSpot() == QPoint(image.width() / 2, image.height() / 2);
    };
    const std::pair<Qt::MouseButton, Qt::CursorShape> drags[] = {
        {Qt::RightButton, Qt::SizeAllCursor},
        {Qt::MiddleButton, Qt::SizeVerCursor},
        {Qt::LeftButton, Qt::BitmapCursor}};
    for (auto [button, shape] : drags) {
        QTest::mousePress(&view, button, Qt::NoModifier, at);
        EXPECT_EQ(view.cursor().shape(), shape) << button;
        QTest::mouseRelease(&view, button, Qt::NoModifier, at);
        EXPECT_EQ(view.cursor().shape(), Qt::OpenHandCursor) << button;
    }
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_TRUE(drawn(":/icons/Orbit.png"));
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, at);
    view.armorToggle(true);
    EXPECT_TRUE(drawn(":/icons/cross_hair.png"));
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_TRUE(drawn(":/icons/cross_hair.png"));

    // The dock's slots and signals and the mouse settings go through too.
    QSignalSpy rotationX(&view, &RenderWidget::cameraRotationXChanged);
    view.setCameraZoom(20);
    EXPECT_EQ(view.controls.zoom, 20.0f);
    view.cameraViewChanged(1); // Top
    ASSERT_GE(rotationX.count(), 1);
    EXPECT_DOUBLE_EQ(rotationX.last().at(0).toDouble(), 90.0);
    settings.setMouseInvert(true, false);
    EXPECT_EQ(view.controls.invertX, -1.0f);
}

TEST_F(RenderWidgetTest, AutoRotationTurnsBySpinOnly)
{
    RenderWidget& view = start();
    (void)view.grabFramebuffer();
    view.setAutoRotation(true);
    const float still = view.controls.rotation[1];
    // Seven seconds without a frame turn by the drag's spin: nothing without
    // one, 7 degrees with a spin of 7.
    view.lastFrameMs -= 7000;
    (void)view.grabFramebuffer();
    EXPECT_FLOAT_EQ(view.controls.rotation[1], still);
    view.controls.spin = {0, 7, 0};
    view.lastFrameMs -= 7000;
    (void)view.grabFramebuffer();
    EXPECT_GE(view.controls.rotation[1], still + 7.0f - 1e-3f);
}

TEST(FrameStatisticsTest, AverageOncePerSecond)
{
    FrameStatistics statistics;
    statistics.frequency = 1000; // one count per millisecond
    statistics.update(500);
    statistics.update(1000);
    // Exactly one second is not yet "more than".
    EXPECT_EQ(statistics.fpsAverage, 0.0f);
    statistics.update(1500);
    EXPECT_FLOAT_EQ(statistics.fpsNow, 2.0f);
    EXPECT_FLOAT_EQ(statistics.fpsAverage, 2.0f);

    for (qint64 t = 1600; t <= 2600; t += 100)
        statistics.update(t);
    EXPECT_FLOAT_EQ(statistics.frameTimeMs, 100);
    EXPECT_FLOAT_EQ(statistics.fpsNow, 10.0f);
    EXPECT_FLOAT_EQ(statistics.fpsAverage, 6.0f);
}
