#pragma once

#include "FrameRenderer.h"
#include "GlContext.h"
#include "SurfaceFormat.h"
#include "ViewportInput.h"

#include <QElapsedTimer>
#include <QImage>
#include <QOpenGLWidget>

#include <functional>
#include <vector>

class Garage;
class MaterialLoader;
class QOpenGLFunctions_3_2_Core;
class TextureLoader;

// The program's one OpenGL viewport: GL start-up, the frame loop, the scene
// check boxes and the camera controls, and the input. The frame itself is
// drawn by the FrameRenderer it owns; the fields below under the viewport's
// names are that renderer's. Every GL call of the program happens on the GUI
// thread with this widget's context current.
class RenderWidget : public QOpenGLWidget
{
    Q_OBJECT
public:
    using ScenePass = ::ScenePass;
    static constexpr ScenePass ShadowPass = ::ShadowPass;
    static constexpr ScenePass ColourPass = ::ColourPass;
    using SceneDrawable = ::SceneDrawable;

    explicit RenderWidget(QWidget* parent = nullptr);
    ~RenderWidget() override;

    // Runs GL work that starts outside a frame (a slot, an event handler, a
    // dialog) with the viewport's context current, and returns its answer.
    // The window's only way into GL: see GlContext.
    template <typename Work> decltype(auto) withContext(Work&& work)
    {
        GlContextScope scope;
        return work();
    }

    // Renders the scene off-screen at width x height and returns the image.
    // Makes the context current.
    QImage renderToImage(int width, int height, bool transparent);
    // Stores the clear colour and emits viewportColorChanged.
    void setViewportColor(const QColor& color);
    // The largest image renderToImage can produce on this GL.
    int maxImageSize() const { return maxImageSide; }

    // Makes a manager of the scene that this library does not know (the
    // vehicle's TankLoader, which the user interface installs): called once
    // from initializeGL with the context current, after MaterialLoader and
    // before TextureLoader, as the program's start order has it. The object
    // it returns (null for none) becomes the widget's child and is deleted,
    // with the context current, before the TextureLoader.
    using SceneLoaderMaker = std::function<QObject*(RenderWidget& widget)>;
    void addSceneLoaderMaker(SceneLoaderMaker maker) { loaderMakers.push_back(std::move(maker)); }
    // Runs by sceneReload after the garages, with the context current: an
    // installed loader loads what it shows again (the vehicle, from the
    // files as they are now).
    void addSceneReloader(std::function<void()> reloader)
    {
        sceneReloaders.push_back(std::move(reloader));
    }

    // Ctrl + left click in armour mode: a shell from the camera's eye (from)
    // through the point under the cursor; to is the unit direction times
    // 1000, not added to the eye. The armour inspection installs it.
    std::function<void(const Vector3& from, const Vector3& to)> rayFired;

    // Adds a drawable to the scene; the answer removes it again.
    int addSceneDrawable(SceneDrawable drawable) { return frame.scene.add(std::move(drawable)); }
    void removeSceneDrawable(int id) { frame.scene.remove(id); }

    // The entry points, valid once initialised is true.
    QOpenGLFunctions_3_2_Core* glFunctions() const { return gl; }
    // Runs the frame statistics for a counter reading (in counts of
    // frequency per second), as each frame does.
    void updateFrameStatistics(qint64 counterNow) { frame.statistics.update(counterNow); }

    FrameRenderer frame;

    bool initialised = false;
    bool paused = false;
    bool autoRotate = false;
    // Frames run and next frames asked for since construction.
    int framesRun = 0;
    int framesRequested = 0;
    qint64 lastFrameMs = 0;

    // The frame's state, under the names the rest of the program uses.
    bool& multisample = frame.multisample;
    bool& armorMode = frame.armorMode;
    bool& tankInfoShown = frame.tankInfoShown;
    bool& renderInfoShown = frame.renderInfoShown;
    bool& gridShown = frame.gridShown;
    bool& garageShown = frame.garageShown;
    bool& premiumScene = frame.premiumScene;
    int& gridSize = frame.gridSize;
    Vector3& ambient = frame.ambient;
    SceneLight& light = frame.light;
    QColor& viewportColor = frame.viewportColor;
    QFont& font = frame.font;
    Camera& camera = frame.camera;
    CameraControls& controls = frame.controls;
    // Frame statistics: times in ms since the start count.
    float& fpsNow = frame.statistics.fpsNow;
    float& fpsAverage = frame.statistics.fpsAverage;
    float& statTimeMs = frame.statistics.statTimeMs;
    float& frameTimeMs = frame.statistics.frameTimeMs;
    float& lastStatMs = frame.statistics.lastStatMs;
    int& framesSinceStat = frame.statistics.framesSinceStat;
    qint64& startCount = frame.statistics.startCount;
    qint64& nowCount = frame.statistics.nowCount;
    qint64& frequency = frame.statistics.frequency;
    // The scene's own drawables beside the vehicle, built in initializeGL.
    Garage*& premiumGarage = frame.scene.premiumGarage;
    Garage*& basicGarage = frame.scene.basicGarage;
    GridMesh& gridMesh = frame.scene.gridMesh;
    TextOverlay& overlay = frame.scene.overlay;
    LineBuffer& rayLines = frame.scene.rayLines;
    MarkerSphere& hitMarker = frame.scene.hitMarker;
    Vector3& rayStart = frame.scene.rayStart;
    Vector3& rayEnd = frame.scene.rayEnd;
    unsigned int& shadowFbo = frame.shadowMap.framebuffer;
    unsigned int& shadowTexture = frame.shadowMap.texture;
    // The size the viewport was given by the last resizeGL, in pixels.
    int& viewWidth = frame.viewWidth;
    int& viewHeight = frame.viewHeight;

signals:
    void cameraZoomChanged(int);
    void cameraFovChanged(int);
    void viewportColorChanged(QColor);
    void cameraRotationXChanged(double);
    void cameraRotationYChanged(double);
    void cameraRotationZChanged(double);
    void cameraPositionXChanged(double);
    void cameraPositionYChanged(double);
    void cameraPositionZChanged(double);

public slots:
    void setcameraPositionX(double value);
    void setcameraPositionY(double value);
    void setcameraPositionZ(double value);
    void setcameraRotationX(double value);
    void setcameraRotationY(double value);
    void setcameraRotationZ(double value);
    void setCameraFov(int value);
    void setCameraZoom(int value);
    void setAutoRotation(bool val);
    void resetCamera();
    // The "Hide Elements" boxes: checked (true) hides.
    void showGrid(bool hidden);
    void showGarage(bool hidden);
    void toggleGarage(bool premium);
    void changeAmbientLight();
    void toggleText(bool hidden);
    void toggleRenderInfo(bool hidden);
    void makeFbo();
    void sceneReload();
    void mouseInverted();
    void cameraTypeChanged(int index);
    void cameraViewChanged(int index);
    void saveCameraView();
    void loadCameraView();
    void armorToggle(bool val);

protected:
    void initializeGL() override;
    void resizeGL(int w, int h) override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    bool checkContextVersion();
    bool loadFunctions();
    void logDriver();
    bool loadShaders();
    int probeSamples(int requested);
    void checkSamplesGranted();
    void setAmbientLevel(int position);

    void runFrame();
    void requestNextFrame();
    void createSceneLoaders();
    void releaseScene();
    int shadowMapSide() const;

    QOpenGLFunctions_3_2_Core* gl = nullptr;
    QElapsedTimer clock;
    QElapsedTimer counter;
    ViewportInput input{*this, controls};
    int maxImageSide = 0;
    int requestedSamples = 0;
    int grantedSamples = 0;
    MaterialLoader* materialLoader = nullptr;
    TextureLoader* textureLoader = nullptr;
    std::vector<SceneLoaderMaker> loaderMakers;
    std::vector<std::function<void()>> sceneReloaders;
    std::vector<QObject*> sceneLoaders;
};
