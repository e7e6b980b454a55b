// The viewport with a real context under Xvfb: start-up, the shadow map, the
// frame through the widget and off-screen, checked by pixels.

#include "RenderWidget.h"

#include "GlErrors.h"
#include "LogCapture.h"
#include "MatrixStack.h"
#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "StartupError.h"
#include "TestRoot.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace {

const QColor clearColour(30, 60, 90);
const QColor quadColour(230, 40, 20);

bool sameColour(QRgb pixel, const QColor& colour, int tolerance = 2)
{
    return std::abs(qRed(pixel) - colour.red()) <= tolerance &&
           std::abs(qGreen(pixel) - colour.green()) <= tolerance &&
           std::abs(qBlue(pixel) - colour.blue()) <= tolerance;
}

// Three flat squares of side 4 through the origin, one in each axis plane,
// in one colour: whatever the camera's angle, the centre of the view (the
// target, the origin) shows them, and the corners do not.
class ColouredSquares
{
public:
    void draw(RenderWidget& widget, RenderWidget::ScenePass pass)
    {
        QOpenGLFunctions_3_2_Core* gl = widget.glFunctions();
        passes.push_back(pass);
        GLint bound = 0;
        gl->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
        framebuffers.push_back(bound);
        if (pass == RenderWidget::ShadowPass)
            return;
        if (!vao)
            upload(gl);

        QOpenGLShaderProgram* program = ShaderLoader::instance()->program(Wireframe)->program.get();
        program->bind();
        const MatrixStack* stack = MatrixStack::instance();
        const Matrix mvp = matrixProduct(stack->projection, stack->view);
        gl->glUniformMatrix4fv(program->uniformLocation("ModelViewProj"), 1, GL_FALSE, mvp.data());
        gl->glUniform4f(program->uniformLocation("diffuseColor"), float(quadColour.redF()),
                        float(quadColour.greenF()), float(quadColour.blueF()), 1.0f);
        // Seen from either side.
        gl->glDisable(GL_CULL_FACE);
        gl->glBindVertexArray(vao);
        gl->glDrawArrays(GL_TRIANGLES, 0, 18);
        gl->glBindVertexArray(0);
        gl->glEnable(GL_CULL_FACE);
        program->release();
    }

    std::vector<RenderWidget::ScenePass> passes;
    std::vector<GLint> framebuffers;

private:
    // The buffers go with the widget's context.
    void upload(QOpenGLFunctions_3_2_Core* gl)
    {
        const float s = 2.0f;
        const float vertices[] = {
            -s, -s, 0,  s, -s, 0,  s, s, 0, -s, -s, 0,  s, s, 0, -s, s,  0, // xy
            0,  -s, -s, 0, s,  -s, 0, s, s, 0,  -s, -s, 0, s, s, 0,  -s, s, // yz
            -s, 0,  -s, s, 0,  -s, s, 0, s, -s, 0,  -s, s, 0, s, -s, 0,  s, // xz
        };
        gl->glGenVertexArrays(1, &vao);
        gl->glBindVertexArray(vao);
        gl->glGenBuffers(1, &vbo);
        gl->glBindBuffer(GL_ARRAY_BUFFER, vbo);
        gl->glBufferData(GL_ARRAY_BUFFER, sizeof(vertices), vertices, GL_STATIC_DRAW);
        gl->glEnableVertexAttribArray(0); // iVertPos
        gl->glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
        gl->glBindVertexArray(0);
    }

    GLuint vao = 0;
    GLuint vbo = 0;
};

class RenderWidgetTest : public testing::Test
{
protected:
    RenderWidgetTest()
    {
        settings.shaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150");
        settings.shadowMap = 1024;
        settings.msaa = QStringLiteral("Disabled");
        settings.viewportColor = clearColour;
        settings.showShadows = false;
        settings.screenshotAlpha = false;
        // No backdrop: these tests look at the viewport alone.
        root.writeFile(QStringLiteral("data/garages.cfg"), "<garages.cfg/>");
        root.enter();
    }
    ~RenderWidgetTest() override { resetStartupState(); }

    // Shows a 160 x 120 viewport; QOpenGLWidget starts its GL there.
    RenderWidget& start()
    {
        log.lines.clear();
        widget.reset();
        widget = std::make_unique<RenderWidget>();
        widget->resize(160, 120);
        widget->show();
        if (!widget->isValid())
            QCoreApplication::processEvents();
        return *widget;
    }

    void addSquares()
    {
        widget->addSceneDrawable(
            [this](RenderWidget::ScenePass pass) { squares.draw(*widget, pass); });
    }

    TestRoot root;
    LogCapture log;
    MessageBoxRecorder boxes;
    Settings settings{QString()};
    ColouredSquares squares;
    std::unique_ptr<RenderWidget> widget;
};

} // namespace

TEST_F(RenderWidgetTest, StartsACoreContextWithTheGlStateAndTheShaders)
{
    RenderWidget& view = start();
    ASSERT_TRUE(view.isValid());
    ASSERT_TRUE(view.initialised);
    const QSurfaceFormat granted = view.context()->format();
    EXPECT_GE(granted.majorVersion() * 10 + granted.minorVersion(), 32);
    EXPECT_EQ(granted.profile(), QSurfaceFormat::CoreProfile);
    EXPECT_GE(granted.depthBufferSize(), 24);

    const QStringList& lines = log.lines;
    ASSERT_FALSE(lines.isEmpty());
    EXPECT_EQ(lines.first(), QStringLiteral("[Info] Initialising OpenGL."));
    EXPECT_EQ(lines.last(), QStringLiteral("[Info] OpenGL Initialising complete."));
    for (const char* prefix : {"[Info] OpenGL Vendor: ", "[Info] OpenGL Renderer: ",
                               "[Info] OpenGL Version: ", "[Info] GLSL Version: "})
        EXPECT_EQ(lines.filter(QLatin1String(prefix)).size(), 1) << prefix;
    EXPECT_EQ(lines.filter(QStringLiteral("[Error]")), QStringList());
    EXPECT_EQ(lines.filter(QStringLiteral("[Warning]")), QStringList());
    EXPECT_FALSE(startupErrorPending());
    EXPECT_TRUE(boxes.boxes.isEmpty());

    view.makeCurrent();
    QOpenGLFunctions_3_2_Core* gl = view.glFunctions();
    ASSERT_NE(gl, nullptr);
    EXPECT_TRUE(gl->glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(gl->glIsEnabled(GL_CULL_FACE));
    const std::pair<GLenum, GLint> state[] = {
        {GL_DEPTH_FUNC, GL_LESS}, {GL_CULL_FACE_MODE, GL_BACK}, {GL_FRONT_FACE, GL_CCW}};
    for (auto [name, expected] : state) {
        GLint value = 0;
        gl->glGetIntegerv(name, &value);
        EXPECT_EQ(value, expected) << name;
    }
    EXPECT_EQ(view.viewportColor.rgb(), clearColour.rgb());
    EXPECT_FLOAT_EQ(view.light.position[0], 2.75f);
    EXPECT_FLOAT_EQ(view.light.position[1], 7.8f);
    EXPECT_FLOAT_EQ(view.light.position[2], 16.0f);
    EXPECT_FLOAT_EQ(view.light.ambient[0], 127.0f / 255.0f);
    EXPECT_EQ(MatrixStack::instance()->parent(), &view);
    // A program that failed would have logged an error above.
    EXPECT_NE(ShaderLoader::instance(), nullptr);
}

TEST_F(RenderWidgetTest, MissingShadersEndTheStartWithOneError)
{
    QTemporaryDir empty;
    settings.shaderDir = empty.path();
    RenderWidget& view = start();
    EXPECT_TRUE(view.isValid());
    EXPECT_TRUE(log.contains(QStringLiteral("[Error] Shader initialization failed.")));
    ASSERT_TRUE(startupErrorPending());
    EXPECT_EQ(takeStartupError(), QStringLiteral("Shader initialization failed."));
}

TEST_F(RenderWidgetTest, RenderToImageDrawsTheSceneOpaqueOrTransparentAndRestoresTheView)
{
    RenderWidget& view = start();
    addSquares();
    view.makeCurrent();
    const int frames = view.framesRun;
    const QImage image = view.renderToImage(200, 100, false);
    ASSERT_EQ(image.size(), QSize(200, 100));
    EXPECT_TRUE(sameColour(image.pixel(100, 50), quadColour));
    for (const QPoint& at : {QPoint(1, 1), QPoint(198, 98)}) {
        EXPECT_TRUE(sameColour(image.pixel(at), clearColour)) << at.x() << "," << at.y();
        EXPECT_EQ(qAlpha(image.pixel(at)), 255);
    }
    EXPECT_EQ(view.viewWidth, 160);
    EXPECT_EQ(view.viewHeight, 120);
    EXPECT_EQ(view.controls.width, 160);
    // Back on the widget's own framebuffer.
    GLint bound = 0;
    view.glFunctions()->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    EXPECT_EQ(GLuint(bound), view.defaultFramebufferObject());
    // The statistics are the frame's, not the image's.
    EXPECT_EQ(view.framesRun, frames);

    const QImage transparent = view.renderToImage(50, 30, true);
    ASSERT_EQ(transparent.size(), QSize(50, 30));
    EXPECT_EQ(qAlpha(transparent.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(transparent.pixel(49, 29)), 0);
    // Until the next frame sets it from ScreenshotAlpha again.
    EXPECT_EQ(view.viewportColor.alpha(), 0);
    (void)view.grabFramebuffer();
    EXPECT_EQ(view.viewportColor.alpha(), 255);
}

TEST_F(RenderWidgetTest, TheWidgetsOwnFrameShowsTheSceneUntilADrawableIsRemoved)
{
    RenderWidget& view = start();
    addSquares();
    int calls = 0;
    const int id = view.addSceneDrawable([&](RenderWidget::ScenePass) { ++calls; });
    const QImage image = view.grabFramebuffer();
    ASSERT_EQ(image.size(), QSize(160, 120));
    EXPECT_TRUE(sameColour(image.pixel(80, 60), quadColour));
    EXPECT_TRUE(sameColour(image.pixel(1, 1), clearColour));
    EXPECT_TRUE(sameColour(image.pixel(158, 118), clearColour));
    EXPECT_GE(view.framesRun, 1);
    EXPECT_GE(view.framesRequested, 1);
    // Without shadows there is only the colour pass.
    ASSERT_FALSE(squares.passes.empty());
    EXPECT_EQ(squares.passes.back(), RenderWidget::ColourPass);
    EXPECT_EQ(std::count(squares.passes.begin(), squares.passes.end(), RenderWidget::ShadowPass),
              0);
    EXPECT_EQ(calls, 1);

    view.removeSceneDrawable(id);
    const size_t drawn = squares.passes.size();
    (void)view.grabFramebuffer();
    EXPECT_GT(squares.passes.size(), drawn);
    EXPECT_EQ(calls, 1);

    // Each frame asks for the next through the event loop; no timer paces it.
    const int before = view.framesRun;
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.framesRun >= before + 3; }, 10000));
}

TEST_F(RenderWidgetTest, PausedDrawsNothingAndAsksForNothing)
{
    RenderWidget& view = start();
    addSquares();
    ASSERT_TRUE(sameColour(view.grabFramebuffer().pixel(1, 1), clearColour));

    view.paused = true;
    const int frames = view.framesRun;
    const int requests = view.framesRequested;
    const size_t drawn = squares.passes.size();
    view.setViewportColor(QColor(Qt::green));
    const QImage held = view.grabFramebuffer();
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents();
    EXPECT_EQ(view.framesRun, frames);
    EXPECT_EQ(view.framesRequested, requests);
    EXPECT_EQ(squares.passes.size(), drawn);
    // The last frame stays on show.
    EXPECT_TRUE(sameColour(held.pixel(1, 1), clearColour));

    view.paused = false;
    EXPECT_TRUE(sameColour(view.grabFramebuffer().pixel(1, 1), QColor(Qt::green)));
}

TEST_F(RenderWidgetTest, AMinimisedWindowStopsTheLoop)
{
    RenderWidget& view = start();
    (void)view.grabFramebuffer();
    view.showMinimized();
    ASSERT_TRUE(view.isMinimized());
    const int frames = view.framesRun;
    const int requests = view.framesRequested;
    (void)view.grabFramebuffer();
    EXPECT_EQ(view.framesRun, frames);
    EXPECT_EQ(view.framesRequested, requests);

    view.showNormal();
    (void)view.grabFramebuffer();
    EXPECT_EQ(view.framesRun, frames + 1);
}

TEST_F(RenderWidgetTest, ShadowPassDrawsIntoTheShadowMapWithTheLightsMatrices)
{
    settings.showShadows = true;
    RenderWidget& view = start();
    addSquares();
    (void)view.grabFramebuffer();
    ASSERT_GE(squares.passes.size(), 2u);
    EXPECT_EQ(squares.passes[0], RenderWidget::ShadowPass);
    EXPECT_EQ(GLuint(squares.framebuffers[0]), view.shadowFbo);
    EXPECT_EQ(squares.passes[1], RenderWidget::ColourPass);
    EXPECT_EQ(GLuint(squares.framebuffers[1]), view.defaultFramebufferObject());

    const MatrixStack* stack = MatrixStack::instance();
    EXPECT_NEAR(stack->depthProjection[0], 1.0 / std::tan(0.3926991), 1e-4);
    EXPECT_NEAR(stack->depthProjection[10], -1.016129, 1e-5);
    EXPECT_NEAR(stack->depthProjection[11], -1.0, 1e-6);
    EXPECT_NEAR(stack->depthProjection[14], -4.032258, 1e-5);
    const Matrix expectedView = lookAt(view.light.position, {0, 0, 0}, {0, 1, 0});
    for (int i = 0; i < 16; ++i)
        EXPECT_FLOAT_EQ(stack->depthView[i], expectedView[i]) << i;

    // The pass leaves the viewport of the widget behind it.
    view.makeCurrent();
    GLint viewport[4] = {};
    view.glFunctions()->glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], 160);
    EXPECT_EQ(viewport[3], 120);
}

TEST_F(RenderWidgetTest, ShadowMapIsACompleteDepthTargetRebuiltForANewSize)
{
    RenderWidget& view = start();
    EXPECT_TRUE(log.contains(QStringLiteral("[Info] Creating Shadow Map Texture.")));
    EXPECT_TRUE(log.contains(QStringLiteral("[Info] Shadow Map size: 1024 x 1024")));
    EXPECT_FALSE(log.contains(QStringLiteral("[Error] Failed to create FBO.")));
    ASSERT_NE(view.shadowFbo, 0u);
    ASSERT_NE(view.shadowTexture, 0u);

    view.makeCurrent();
    QOpenGLFunctions_3_2_Core* gl = view.glFunctions();
    gl->glBindFramebuffer(GL_FRAMEBUFFER, view.shadowFbo);
    EXPECT_EQ(gl->glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
    gl->glBindFramebuffer(GL_FRAMEBUFFER, view.defaultFramebufferObject());

    auto textureValue = [&](GLenum name, bool level) {
        GLint value = 0;
        gl->glBindTexture(GL_TEXTURE_2D, view.shadowTexture);
        if (level)
            gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, name, &value);
        else
            gl->glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
        gl->glBindTexture(GL_TEXTURE_2D, 0);
        return value;
    };
    EXPECT_EQ(textureValue(GL_TEXTURE_WIDTH, true), 1024);
    EXPECT_EQ(textureValue(GL_TEXTURE_INTERNAL_FORMAT, true), GL_DEPTH_COMPONENT16);
    EXPECT_EQ(textureValue(GL_TEXTURE_COMPARE_FUNC, false), GL_LEQUAL);
    EXPECT_EQ(textureValue(GL_TEXTURE_MIN_FILTER, false), GL_LINEAR);
    EXPECT_EQ(textureValue(GL_TEXTURE_WRAP_S, false), GL_CLAMP_TO_EDGE);

    const GLuint framebuffer = view.shadowFbo;
    settings.setShadowMapSize(512);
    EXPECT_TRUE(log.contains(QStringLiteral("[Info] Shadow Map size: 512 x 512")));
    EXPECT_EQ(view.shadowFbo, framebuffer); // made once
    view.makeCurrent();
    EXPECT_EQ(textureValue(GL_TEXTURE_WIDTH, true), 512);
}

TEST_F(RenderWidgetTest, MaxImageSizeKeepsToEveryGlLimit)
{
    RenderWidget& view = start();
    view.makeCurrent();
    QOpenGLFunctions_3_2_Core* gl = view.glFunctions();
    GLint limits[4] = {};
    gl->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limits[0]);
    gl->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &limits[1]);
    gl->glGetIntegerv(GL_MAX_VIEWPORT_DIMS, &limits[2]);
    EXPECT_GT(view.maxImageSize(), 0);
    for (GLint limit : limits)
        EXPECT_LE(view.maxImageSize(), limit);
    EXPECT_NE(std::find(std::begin(limits), std::end(limits), view.maxImageSize()),
              std::end(limits));
}

TEST_F(RenderWidgetTest, GlErrorsAreNamedAndEachPendingOneIsLogged)
{
    const QStringList names = {"GL_NO_ERROR",       "GL_INVALID_ENUM",
                               "GL_INVALID_VALUE",  "GL_INVALID_OPERATION",
                               "GL_STACK_OVERFLOW", "GL_STACK_UNDERFLOW",
                               "GL_OUT_OF_MEMORY",  "GL_INVALID_FRAMEBUFFER_OPERATION"};
    for (int i = 0; i < names.size(); ++i)
        EXPECT_EQ(glErrorName(i == 0 ? 0 : 1279 + i), names[i]);
    EXPECT_EQ(glErrorName(1287), QStringLiteral("UNKOWN GL ERROR."));
    EXPECT_EQ(glErrorName(-1), QStringLiteral("UNKOWN GL ERROR."));

    RenderWidget& view = start();
    view.makeCurrent();
    log.lines.clear();
    view.glFunctions()->glEnable(0xFFFF);
    checkGlErrors(QStringLiteral("X"));
    EXPECT_EQ(log.lines, QStringList{QStringLiteral(
                             "[Error] OpenGL error. Caller: X gl err: GL_INVALID_ENUM")});
    // The queue is drained.
    log.lines.clear();
    checkGlErrors(QStringLiteral("X"));
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST(SurfaceFormatTest, IsCoreWithDepthAndTheSettingsSamplesAndSwap)
{
    const std::pair<const char*, int> samples[] = {{"2x", 2},   {"4x", 4},  {"8x", 8},
                                                   {"16x", 16}, {"32x", 0}, {"Disabled", 0}};
    for (auto [text, count] : samples)
        EXPECT_EQ(msaaSampleCount(QLatin1String(text)), count) << text;

    Settings settings{QString()};
    settings.vsync = 0;
    settings.msaa = QStringLiteral("8x");
    QSurfaceFormat format = ferroxSurfaceFormat(settings);
    EXPECT_EQ(format.version(), qMakePair(3, 2));
    EXPECT_EQ(format.profile(), QSurfaceFormat::CoreProfile);
    EXPECT_EQ(format.depthBufferSize(), 24);
    EXPECT_EQ(format.stencilBufferSize(), 0);
    EXPECT_EQ(format.alphaBufferSize(), 8);
    EXPECT_EQ(format.swapBehavior(), QSurfaceFormat::DoubleBuffer);
    EXPECT_EQ(format.swapInterval(), 0);
    EXPECT_EQ(format.samples(), 8);

    settings.vsync = 1;
    settings.msaa = QStringLiteral("Disabled");
    format = ferroxSurfaceFormat(settings);
    EXPECT_EQ(format.swapInterval(), 1);
    EXPECT_EQ(format.samples(), 0);
    // An unknown text leaves the default format's samples alone.
    settings.msaa = QStringLiteral("lots");
    EXPECT_EQ(ferroxSurfaceFormat(settings).samples(), QSurfaceFormat::defaultFormat().samples());
}

TEST_F(RenderWidgetTest, FewerSamplesThanAskedAreLoggedAsAWarning)
{
    for (int requested : {2, 16}) {
        SCOPED_TRACE(requested);
        settings.msaa = QString::number(requested) + QLatin1Char('x');
        RenderWidget& view = start();
        view.makeCurrent();
        GLint granted = 0;
        view.glFunctions()->glGetIntegerv(GL_SAMPLES, &granted);
        const QStringList warnings = log.lines.filter(QStringLiteral("[Warning]"));
        if (granted < requested)
            EXPECT_EQ(warnings, QStringList{"[Warning] Requested anti alias setting " +
                                            QString::number(requested) + " but got " +
                                            QString::number(granted)});
        else
            EXPECT_EQ(warnings, QStringList());
        EXPECT_EQ(view.multisample, granted > 0);
    }
}

TEST_F(RenderWidgetTest, SlotsSwitchTheSceneAndGoThroughTheControls)
{
    RenderWidget view;
    // The "Hide Elements" boxes: checked hides; each starts the other way.
    view.showGrid(false);
    view.showGarage(false);
    view.toggleText(true);
    view.toggleRenderInfo(false);
    view.toggleGarage(false);
    EXPECT_TRUE(view.gridShown);
    EXPECT_TRUE(view.garageShown);
    EXPECT_FALSE(view.tankInfoShown);
    EXPECT_TRUE(view.renderInfoShown);
    EXPECT_FALSE(view.premiumScene);

    QSignalSpy colour(&view, &RenderWidget::viewportColorChanged);
    view.setViewportColor(QColor(1, 2, 3));
    EXPECT_EQ(view.viewportColor, QColor(1, 2, 3));
    ASSERT_EQ(colour.count(), 1);
    EXPECT_EQ(colour.at(0).at(0).value<QColor>(), QColor(1, 2, 3));

    view.resetCamera();
    QSignalSpy zoom(&view, &RenderWidget::cameraZoomChanged);
    QSignalSpy fov(&view, &RenderWidget::cameraFovChanged);
    view.setCameraZoom(20);
    EXPECT_FLOAT_EQ(view.camera.distance, 20.0f);
    ASSERT_EQ(zoom.count(), 1);
    EXPECT_EQ(zoom.at(0).at(0).toInt(), 20);
    view.setCameraFov(40);
    ASSERT_EQ(fov.count(), 1);
    EXPECT_EQ(fov.at(0).at(0).toInt(), 40);
    view.setcameraPositionX(1.5);
    EXPECT_FLOAT_EQ(view.camera.target[0], 1.5f);
    view.cameraTypeChanged(1);
    EXPECT_EQ(view.camera.projectionType, 0);
    QSignalSpy rotationX(&view, &RenderWidget::cameraRotationXChanged);
    view.cameraViewChanged(1); // Top
    ASSERT_GE(rotationX.count(), 1);
    EXPECT_DOUBLE_EQ(rotationX.last().at(0).toDouble(), 90.0);

    EXPECT_EQ(view.controls.invertX, 1.0f);
    settings.setMouseInvert(true, false);
    EXPECT_EQ(view.controls.invertX, -1.0f);
    EXPECT_EQ(view.controls.invertY, 1.0f);
}

TEST_F(RenderWidgetTest, WheelAndButtonsReachTheControlsAndSetTheCursor)
{
    RenderWidget& view = start();
    EXPECT_EQ(view.cursor().shape(), Qt::OpenHandCursor);
    QSignalSpy zoom(&view, &RenderWidget::cameraZoomChanged);
    QWheelEvent wheel(QPointF(10, 10), view.mapToGlobal(QPointF(10, 10)), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&view, &wheel);
    EXPECT_EQ(view.controls.zoom, 11.0f);
    ASSERT_EQ(zoom.count(), 1);

    const QPoint at(20, 20);
    QTest::mousePress(&view, Qt::RightButton, Qt::NoModifier, at);
    EXPECT_EQ(view.cursor().shape(), Qt::SizeAllCursor);
    QTest::mouseRelease(&view, Qt::RightButton, Qt::NoModifier, at);
    EXPECT_EQ(view.cursor().shape(), Qt::OpenHandCursor);
    QTest::mousePress(&view, Qt::MiddleButton, Qt::NoModifier, at);
    EXPECT_EQ(view.cursor().shape(), Qt::SizeVerCursor);
    QTest::mouseRelease(&view, Qt::MiddleButton, Qt::NoModifier, at);

    view.armorToggle(true);
    EXPECT_NE(view.cursor().shape(), Qt::OpenHandCursor);
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_EQ(view.cursor().shape(), Qt::CrossCursor);
    view.armorToggle(false);
    EXPECT_EQ(view.cursor().shape(), Qt::OpenHandCursor);
}

TEST_F(RenderWidgetTest, AutoRotationTurnsBySpinOnly)
{
    RenderWidget& view = start();
    (void)view.grabFramebuffer();
    view.setAutoRotation(true);
    view.controls.spin = {0, 0, 0};
    const float still = view.controls.rotation[1];
    view.lastFrameMs -= 7000;
    (void)view.grabFramebuffer();
    // No drag, no turn.
    EXPECT_FLOAT_EQ(view.controls.rotation[1], still);

    QSignalSpy turned(&view, &RenderWidget::cameraRotationYChanged);
    view.controls.spin = {0, 7, 0};
    const qint64 before = view.lastFrameMs;
    view.lastFrameMs -= 7000; // seven seconds without a frame: one whole 7 degrees
    (void)view.grabFramebuffer();
    EXPECT_GE(view.controls.rotation[1], still + 7.0f - 1e-3f);
    EXPECT_GE(view.lastFrameMs, before);
    EXPECT_GE(turned.count(), 1);
}

TEST_F(RenderWidgetTest, FrameStatisticsAverageOncePerSecond)
{
    RenderWidget view;
    view.startCount = 0;
    view.frequency = 1000; // one count per millisecond
    view.updateFrameStatistics(500);
    EXPECT_FLOAT_EQ(view.frameTimeMs, 500);
    view.updateFrameStatistics(1000);
    // Exactly one second is not yet "more than".
    EXPECT_EQ(view.fpsAverage, 0.0f);
    EXPECT_EQ(view.framesSinceStat, 2);
    view.updateFrameStatistics(1500);
    EXPECT_FLOAT_EQ(view.fpsNow, 2.0f);
    EXPECT_FLOAT_EQ(view.fpsAverage, 2.0f);
    EXPECT_FLOAT_EQ(view.lastStatMs, 1500);
    EXPECT_EQ(view.framesSinceStat, 0);

    for (qint64 t = 1600; t <= 2600; t += 100)
        view.updateFrameStatistics(t);
    EXPECT_FLOAT_EQ(view.frameTimeMs, 100);
    EXPECT_FLOAT_EQ(view.fpsNow, 10.0f);
    EXPECT_FLOAT_EQ(view.fpsAverage, 6.0f);
    EXPECT_FLOAT_EQ(view.statTimeMs, 2600);
}
