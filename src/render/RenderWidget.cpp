#include "RenderWidget.h"

#include "Database.h"
#include "FileDialogs.h"
#include "GlErrors.h"
#include "Log.h"
#include "MaterialLoader.h"
#include "MatrixStack.h"
#include "MessageBoxes.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "StartupError.h"
#include "StatusMessages.h"
#include "TextureLoader.h"

#include <QAbstractSlider>
#include <QLabel>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLVersionFunctionsFactory>
#include <QWheelEvent>

#ifdef Q_OS_LINUX
#include <pthread.h>
#include <sched.h>
#endif

namespace {

constexpr float ambientScale = 0.003921569f;

// Keeps the frame's timer readings on one core, as the frame statistics
// expect: the GUI thread runs on the lowest CPU the process may use.
void pinToLowestCpu()
{
#ifdef Q_OS_LINUX
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (sched_getaffinity(0, sizeof(allowed), &allowed) != 0)
        return;
    for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
        if (!CPU_ISSET(cpu, &allowed))
            continue;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(cpu, &one);
        pthread_setaffinity_np(pthread_self(), sizeof(one), &one);
        return;
    }
#endif
}

// A failure that ends the program. Before the event loop it becomes the
// start-up error, which start-up shows before it stops (a quit asked for
// now would be lost); an error already pending is the cause of this one
// (no data folder, no shaders) and stays the only text. Later it is the
// closing box.
void reportFatal(const QString& text)
{
    Log::log(text, Log::Error);
    if (startupFinished())
        fatalError(text);
    else if (!startupErrorPending())
        reportStartupError(text);
}

QString cameraFileFilter()
{
    return QStringLiteral("Camera (*.Camera)");
}

} // namespace

RenderWidget::RenderWidget(QWidget* parent) : QOpenGLWidget(parent)
{
    counter.start();
    if (const Settings* settings = Settings::instance())
        setFormat(ferroxSurfaceFormat(*settings));
    // The widget takes the samples off the format it hands to its context
    // and gives them to its framebuffer object; keep the request.
    requestedSamples = format().samples();
    // The widget's framebuffer keeps its contents, so that a paused viewport
    // goes on showing its last frame.
    setUpdateBehavior(QOpenGLWidget::PartialUpdate);
    setAcceptDrops(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setFocusPolicy(Qt::WheelFocus);
    setMouseTracking(true);
    setAutoFillBackground(false);

    clock.start();

    connect(&controls, &CameraControls::cameraZoomChanged, this, &RenderWidget::cameraZoomChanged);
    connect(&controls, &CameraControls::cameraFovChanged, this, &RenderWidget::cameraFovChanged);
    connect(&controls, &CameraControls::cameraRotationXChanged, this,
            &RenderWidget::cameraRotationXChanged);
    connect(&controls, &CameraControls::cameraRotationYChanged, this,
            &RenderWidget::cameraRotationYChanged);
    connect(&controls, &CameraControls::cameraRotationZChanged, this,
            &RenderWidget::cameraRotationZChanged);
    connect(&controls, &CameraControls::cameraPositionXChanged, this,
            &RenderWidget::cameraPositionXChanged);
    connect(&controls, &CameraControls::cameraPositionYChanged, this,
            &RenderWidget::cameraPositionYChanged);
    connect(&controls, &CameraControls::cameraPositionZChanged, this,
            &RenderWidget::cameraPositionZChanged);

    if (Settings* settings = Settings::instance()) {
        connect(settings, &Settings::shadowMapSizeChanged, this, &RenderWidget::makeFbo);
        connect(settings, &Settings::mouseInvertChanged, this, &RenderWidget::mouseInverted);
    }
    mouseInverted();
}

RenderWidget::~RenderWidget()
{
    if (!initialised && !gl)
        return;
    makeCurrent();
    releaseScene();
    doneCurrent();
    GlContext::clearOwner(context());
}

// ---------------------------------------------------------------- start-up

void RenderWidget::initializeGL()
{
    Log::log(QStringLiteral("Initialising OpenGL."), Log::Info);
    startCount = counter.nsecsElapsed();
    GlContext::setOwner(context(), [this] { makeCurrent(); });

    if (!checkContextVersion())
        reportFatal(QStringLiteral("OpenGL 3.2 is required."));
    if (!loadFunctions()) {
        reportFatal(QStringLiteral("Failed to load OpenGL Functions."));
        // Nothing below can run without the entry points.
        return;
    }
    logDriver();
    FrameRenderer::setInitialGlState();

    if (!loadShaders())
        reportFatal(QStringLiteral("Shader initialization failed."));
    createSceneLoaders();

    // The table's rebuild needs the loaders above and the catalogues.
    if (const Settings* settings = Settings::instance(); settings && settings->gavrelPathValid) {
        if (Database* database = Database::instance())
            database->rebuildDatabase();
    }

    // The rebuild may have made another context current (a message box
    // paints and composes on others); the rest needs this one.
    GlContext::makeOwnerCurrent();
    new MatrixStack(this);
    if (const Settings* settings = Settings::instance())
        premiumScene = settings->sceneSet == QLatin1String("premium");
    materialLoader->createDefaultMaterials();
    frame.create(shadowMapSide(), this);
    if (const Settings* settings = Settings::instance())
        setViewportColor(settings->viewportColor);
    else
        setViewportColor(QColor(Qt::darkGray));

    checkGlErrors(QStringLiteral("render init finished"));
    initialised = true;

    grantedSamples = probeSamples(requestedSamples);
    multisample = grantedSamples > 0;
    // Pictures of any size have the viewport's edges, whatever framebuffer
    // is bound when they are asked for.
    frame.imageSamples = grantedSamples;
    checkSamplesGranted();
    maxImageSide = FrameRenderer::maxImageSize();
    // Pinned only now: on Linux a thread started by a pinned thread inherits
    // its mask, and the GL driver's worker threads (llvmpipe rasterises on
    // all CPUs) are started with the context, which now exists.
    pinToLowestCpu();
    Log::log(QStringLiteral("OpenGL Initialising complete."), Log::Info);
}

// The loaders this library does not know (the vehicle's, the camouflage's)
// come from outside, between the materials and the textures.
void RenderWidget::createSceneLoaders()
{
    materialLoader = new MaterialLoader(this);
    for (const SceneLoaderMaker& maker : loaderMakers) {
        if (QObject* loader = maker(*this)) {
            loader->setParent(this);
            sceneLoaders.push_back(loader);
        }
    }
    textureLoader = new TextureLoader(this);
}

// Everything here holds GL objects: the context is current. The vehicle's
// meshes go before the texture caches their materials use.
void RenderWidget::releaseScene()
{
    frame.release();
    for (auto loader = sceneLoaders.rbegin(); loader != sceneLoaders.rend(); ++loader)
        delete *loader;
    sceneLoaders.clear();
    delete textureLoader;
    textureLoader = nullptr;
    delete materialLoader;
    materialLoader = nullptr;
}

bool RenderWidget::checkContextVersion()
{
    const QSurfaceFormat granted = context()->format();
    const bool atLeast32 =
        granted.majorVersion() > 3 || (granted.majorVersion() == 3 && granted.minorVersion() >= 2);
    return atLeast32 && !context()->isOpenGLES();
}

bool RenderWidget::loadFunctions()
{
    gl = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_3_2_Core>(context());
    return gl && gl->initializeOpenGLFunctions();
}

void RenderWidget::logDriver()
{
    auto text = [this](GLenum name) {
        return QString::fromLatin1(reinterpret_cast<const char*>(gl->glGetString(name)));
    };
    Log::log(QStringLiteral("OpenGL Vendor: ") + text(GL_VENDOR), Log::Info);
    Log::log(QStringLiteral("OpenGL Renderer: ") + text(GL_RENDERER), Log::Info);
    Log::log(QStringLiteral("OpenGL Version: ") + text(GL_VERSION), Log::Info);
    Log::log(QStringLiteral("GLSL Version: ") + text(GL_SHADING_LANGUAGE_VERSION), Log::Info);
}

bool RenderWidget::loadShaders()
{
    auto* loader = new ShaderLoader(this);
    return loader->loadShaders();
}

// The widget draws into a framebuffer object Qt makes with the requested
// samples, so the granted count is that of such an object: a probe of the
// same kind answers it before the widget's own exists.
int RenderWidget::probeSamples(int requested)
{
    if (requested <= 0)
        return 0;
    QOpenGLFramebufferObjectFormat probeFormat;
    probeFormat.setAttachment(QOpenGLFramebufferObject::CombinedDepthStencil);
    probeFormat.setSamples(requested);
    QOpenGLFramebufferObject probe(QSize(4, 4), probeFormat);
    GLint granted = 0;
    if (probe.bind()) {
        gl->glGetIntegerv(GL_SAMPLES, &granted);
        probe.release();
    }
    gl->glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
    return granted;
}

void RenderWidget::checkSamplesGranted()
{
    const Settings* settings = Settings::instance();
    if (!settings || settings->msaa == QLatin1String("Disabled"))
        return;
    const int requested = msaaSampleCount(settings->msaa);
    if (grantedSamples < requested)
        Log::log(QStringLiteral("Requested anti alias setting ") + QString::number(requested) +
                     QStringLiteral(" but got ") + QString::number(grantedSamples),
                 Log::Warning);
}

int RenderWidget::shadowMapSide() const
{
    const Settings* settings = Settings::instance();
    return settings ? settings->shadowMap : 2048;
}

void RenderWidget::makeFbo()
{
    if (!gl)
        return;
    withContext([this] { frame.buildShadowMap(shadowMapSide()); });
}

// ---------------------------------------------------------------- the frame

void RenderWidget::resizeGL(int w, int h)
{
    frame.resize(w, h);
}

void RenderWidget::paintGL()
{
    if (paused || !initialised)
        return;
    runFrame();
}

void RenderWidget::runFrame()
{
    // A minimised window stops the loop; the next paint event restarts it,
    // and the first dt then covers the whole pause.
    if (window()->isMinimized())
        return;
    ++framesRun;
    rayLines.clear();

    const qint64 now = clock.elapsed();
    const qint64 dt = now - lastFrameMs;
    if (autoRotate)
        controls.autoRotateStep(dt);
    lastFrameMs += dt;

    // Qt sets the viewport to the widget before each paint; the projection
    // must match a size Qt may have changed without a resize (e.g. a grab).
    const int pixelWidth = int(width() * devicePixelRatioF());
    const int pixelHeight = int(height() * devicePixelRatioF());
    if (pixelWidth != viewWidth || pixelHeight != viewHeight)
        frame.resize(pixelWidth, pixelHeight);

    const Settings* settings = Settings::instance();
    frame.draw(settings && settings->screenshotAlpha);
    updateFrameStatistics(counter.nsecsElapsed());
    requestNextFrame();
}

void RenderWidget::requestNextFrame()
{
    ++framesRequested;
    update();
}

QImage RenderWidget::renderToImage(int width, int height, bool transparent)
{
    return withContext([&] { return frame.renderToImage(width, height, transparent); });
}

void RenderWidget::setViewportColor(const QColor& color)
{
    viewportColor = color;
    emit viewportColorChanged(color);
}

// ---------------------------------------------------------------- slots

void RenderWidget::setcameraPositionX(double value)
{
    controls.setPositionX(value);
}

void RenderWidget::setcameraPositionY(double value)
{
    controls.setPositionY(value);
}

void RenderWidget::setcameraPositionZ(double value)
{
    controls.setPositionZ(value);
}

void RenderWidget::setcameraRotationX(double value)
{
    controls.setRotationX(value);
}

void RenderWidget::setcameraRotationY(double value)
{
    controls.setRotationY(value);
}

void RenderWidget::setcameraRotationZ(double value)
{
    controls.setRotationZ(value);
}

void RenderWidget::setCameraFov(int value)
{
    controls.setFov(value);
}

void RenderWidget::setCameraZoom(int value)
{
    controls.setZoom(value);
}

void RenderWidget::setAutoRotation(bool val)
{
    autoRotate = val;
}

void RenderWidget::resetCamera()
{
    controls.resetCamera();
}

void RenderWidget::showGrid(bool hidden)
{
    gridShown = !hidden;
}

void RenderWidget::showGarage(bool hidden)
{
    garageShown = !hidden;
}

void RenderWidget::toggleGarage(bool premium)
{
    premiumScene = premium;
}

void RenderWidget::changeAmbientLight()
{
    auto* slider = window()->findChild<QAbstractSlider*>(QStringLiteral("AmbientLightSlider"));
    if (!slider)
        return;
    if (auto* label = window()->findChild<QLabel*>(QStringLiteral("AmbientLightValue")))
        label->setText(QString::number(slider->value()));
    setAmbientLevel(slider->value());
}

void RenderWidget::setAmbientLevel(int position)
{
    const float level = float(position) * ambientScale;
    ambient = {level, level, level};
    light.ambient = ambient;
}

void RenderWidget::toggleText(bool hidden)
{
    tankInfoShown = !hidden;
}

void RenderWidget::toggleRenderInfo(bool hidden)
{
    renderInfoShown = !hidden;
    // Switched off, the last statistics would stay in the image.
    overlay.dirty = true;
}

void RenderWidget::sceneReload()
{
    if (!gl)
        return;
    withContext([this] {
        frame.scene.reloadGarages();
        showStatusMessage(tr("Scene Reload done."), 0);
        for (const std::function<void()>& reload : sceneReloaders)
            reload();
    });
}

void RenderWidget::mouseInverted()
{
    const Settings* settings = Settings::instance();
    controls.invertX = settings && settings->mouseInvertX ? -1.0f : 1.0f;
    controls.invertY = settings && settings->mouseInvertY ? -1.0f : 1.0f;
}

void RenderWidget::cameraTypeChanged(int index)
{
    controls.setCameraType(index);
}

void RenderWidget::cameraViewChanged(int index)
{
    controls.setViewPreset(index);
}

void RenderWidget::saveCameraView()
{
    const QString path =
        chooseSaveFile(this, tr("Save Camera File"), QString(), cameraFileFilter(), QStringList());
    if (!path.isEmpty())
        controls.saveView(path);
}

void RenderWidget::loadCameraView()
{
    const QString path =
        chooseOpenFile(this, tr("Open Camera File"), QString(), cameraFileFilter(), QStringList());
    if (!path.isEmpty())
        controls.loadView(path);
}

void RenderWidget::armorToggle(bool val)
{
    armorMode = val;
    rayLines.clear();
    overlay.dirty = true;
    input.showModeCursor(val);
}

// ---------------------------------------------------------------- input

void RenderWidget::mousePressEvent(QMouseEvent* event)
{
    // A press in armour mode reads the depth under the cursor: GL work.
    withContext([&] { input.press(event, clock.elapsed(), armorMode, rayFired); });
}

void RenderWidget::mouseReleaseEvent(QMouseEvent*)
{
    input.release(clock.elapsed(), armorMode);
}

void RenderWidget::mouseMoveEvent(QMouseEvent* event)
{
    input.move(event);
}

void RenderWidget::wheelEvent(QWheelEvent* event)
{
    input.wheel(event);
}
