#pragma once

#include "Camera.h"
#include "CameraControls.h"
#include "GridMesh.h"
#include "LineBuffer.h"
#include "MarkerSphere.h"
#include "SceneLight.h"
#include "TextOverlay.h"

#include <QColor>
#include <QCursor>
#include <QElapsedTimer>
#include <QFont>
#include <QImage>
#include <QOpenGLWidget>
#include <QSurfaceFormat>

#include <functional>
#include <map>

class Garage;
class MaterialLoader;
class QOpenGLFunctions_3_2_Core;
class Settings;
class TextureLoader;

// The samples an MSAA setting asks for: "2x", "4x", "8x", "16x" give 2 to 16,
// any other text 0.
int msaaSampleCount(const QString& msaa);

// The context the viewport asks for: 3.2 core, 24-bit depth, alpha, no
// stencil, double buffered, swap interval from VSync, samples from MSAA
// ("Disabled" none; an unknown text keeps the default format's samples).
QSurfaceFormat ferroxSurfaceFormat(const Settings& settings);

// The program's one OpenGL viewport: GL start-up, the frame loop with its
// shadow and colour passes, the shadow map, the camera and the light. Every GL
// call of the program happens on the GUI thread with this widget's context
// current.
class RenderWidget : public QOpenGLWidget
{
    Q_OBJECT
public:
    // The two passes a scene drawable is called for. The numbers are the ones
    // the vehicle's render(int) takes.
    enum ScenePass
    {
        ShadowPass = 0,
        ColourPass = 1
    };
    // Draws into whatever framebuffer is bound, with the matrices of
    // MatrixStack. Called in the shadow pass (only casters need to draw
    // there) and in the colour pass where the vehicle is drawn.
    using SceneDrawable = std::function<void(ScenePass pass)>;

    explicit RenderWidget(QWidget* parent = nullptr);
    ~RenderWidget() override;

    // Renders the scene off-screen at width x height and returns the image.
    // Needs the context current (makeCurrent()).
    QImage renderToImage(int width, int height, bool transparent);
    // Stores the clear colour and emits viewportColorChanged.
    void setViewportColor(const QColor& color);
    // The largest image renderToImage can produce on this GL.
    int maxImageSize() const { return maxImageSide; }

    // Adds a drawable to the scene; the answer removes it again.
    int addSceneDrawable(SceneDrawable drawable);
    void removeSceneDrawable(int id);

    // The entry points, valid once initialised is true.
    QOpenGLFunctions_3_2_Core* glFunctions() const { return gl; }
    // Runs the frame statistics for a counter reading (in counts of
    // frequency per second), as each frame does.
    void updateFrameStatistics(qint64 counterNow);

    bool initialised = false;
    bool paused = false;
    bool autoRotate = false;
    bool multisample = false;
    bool armorMode = false;
    // The scene check boxes; the slots below set them.
    bool tankInfoShown = true;
    bool renderInfoShown = false;
    bool gridShown = false;
    bool garageShown = false;
    bool premiumScene = true;
    int gridSize = 20;
    Vector3 ambient{0.49803922f, 0.49803922f, 0.49803922f};
    SceneLight light;
    QColor viewportColor;
    QFont font;

    Camera camera;
    CameraControls controls{camera};

    // Frame statistics: times in ms since the start count.
    float fpsNow = 0;
    float fpsAverage = 0;
    float statTimeMs = 0;
    float frameTimeMs = 0;
    float lastStatMs = 0;
    int framesSinceStat = 0;
    qint64 startCount = 0;
    qint64 nowCount = 0;
    qint64 frequency = 1000000000; // the counter counts nanoseconds
    // Frames run and next frames asked for since construction.
    int framesRun = 0;
    int framesRequested = 0;

    // The scene's own drawables beside the vehicle, built in initializeGL.
    Garage* premiumGarage = nullptr;
    Garage* basicGarage = nullptr;
    GridMesh gridMesh;
    TextOverlay overlay;
    LineBuffer rayLines;
    MarkerSphere hitMarker;
    // The armour ray's ends. Physics will own them; until then the ray
    // stays a point at the origin.
    Vector3 rayStart{0, 0, 0};
    Vector3 rayEnd{0, 0, 0};

    unsigned int shadowFbo = 0;
    unsigned int shadowTexture = 0;
    // The size the viewport was given by the last resizeGL, in pixels.
    int viewWidth = 0;
    int viewHeight = 0;
    qint64 lastFrameMs = 0;

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
    enum CursorKind
    {
        SizeAllCursor,
        OrbitCursor,
        IdleCursor,
        RollCursor,
        ArmorCursor,
        CursorCount
    };

    bool checkContextVersion();
    bool loadFunctions();
    void logDriver();
    void setInitialGlState();
    bool loadShaders();
    int probeSamples(int requested);
    void checkSamplesGranted();
    void computeMaxImageSize();
    void setAmbientLevel(int position);
    void applyViewportSize(int w, int h);

    // The frame's steps.
    void runFrame();
    void renderShadowPass();
    void clearWithViewportColor(bool transparent);
    void renderScene();
    void drawScene(ScenePass pass);
    void requestNextFrame();
    bool shadowsWanted() const;
    int lightingMode() const;

    void createSceneLoaders();
    void createSceneObjects();
    void initOverlays();
    void releaseScene();
    void drawGarage();
    void drawArmorRay();
    void drawOverlay(int w, int h);
    // The garage the SceneSet setting picks.
    Garage* garageInUse() const;
    // Physics: fire a ray from the camera through the last mouse position.
    void fireRayHook() {}

    QOpenGLFunctions_3_2_Core* gl = nullptr;
    QElapsedTimer clock;
    QElapsedTimer counter;
    QCursor cursors[CursorCount];
    std::map<int, SceneDrawable> drawables;
    int nextDrawableId = 1;
    int maxImageSide = 0;
    int requestedSamples = 0;
    int grantedSamples = 0;
    MaterialLoader* materialLoader = nullptr;
    TextureLoader* textureLoader = nullptr;
};
