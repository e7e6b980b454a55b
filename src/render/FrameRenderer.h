#pragma once

#include "Camera.h"
#include "CameraControls.h"
#include "FrameStatistics.h"
#include "SceneContents.h"
#include "SceneLight.h"
#include "ShadowMap.h"

#include <QColor>
#include <QFont>
#include <QImage>

#include <functional>

class QObject;

// One frame of the scene, drawn into whatever framebuffer is bound on the
// current context: the shadow pass, the clear, the grid, the garage, the
// vehicle and the other drawables, the armour ray and the overlay. It needs
// no widget: the viewport owns one and drives it from its frame loop, and a
// tool can make one on an off-screen context and call renderToImage.
//
// Before create() the context must be current, with setInitialGlState()
// applied, and the managers ShaderLoader (programs loaded), MatrixStack,
// MaterialLoader (default materials made) and TextureLoader must exist. The
// settings (ShowShadows) are read while drawing when Settings exists.
class FrameRenderer
{
public:
    FrameRenderer();
    FrameRenderer(const FrameRenderer&) = delete;
    FrameRenderer& operator=(const FrameRenderer&) = delete;

    // Depth test, back faces culled, counter-clockwise fronts, no multisample.
    static void setInitialGlState();
    // The largest side an off-screen image may have on the current context:
    // the smallest of the texture, renderbuffer and viewport limits.
    static int maxImageSize();

    // The backdrop and grid, the light for the materials, the shadow map of
    // shadowMapSide, the camera's start and the overlays. garageParent: see
    // SceneContents::createBackdrop.
    void create(int shadowMapSide, QObject* garageParent = nullptr);
    // Frees every GL object made by create; the context must be current.
    void release();
    // A new shadow map, handed to TextureLoader for the materials.
    void buildShadowMap(int side);
    // The target size in pixels: the camera's projection and the viewport.
    void resize(int width, int height);

    // One frame into the bound framebuffer at the size of resize(). With
    // transparent the clear colour's alpha is 0 (and stays so).
    void draw(bool transparent);
    // The same frame into a new width x height image. The framebuffer bound
    // before and the size are restored; the statistics are not touched.
    QImage renderToImage(int width, int height, bool transparent);

    // The garage that premiumScene picks.
    Garage* garageInUse() const { return scene.garage(premiumScene); }
    // Full materials (lighting mode 0), ShowShadows on and a shadow map made.
    bool shadowsWanted() const;

    // The scene check boxes.
    bool tankInfoShown = true;
    bool renderInfoShown = false;
    bool gridShown = false;
    bool garageShown = false;
    bool premiumScene = true;
    bool armorMode = false;
    // The context has sample buffers: each frame enables GL_MULTISAMPLE.
    bool multisample = false;
    // Samples of the images renderToImage draws; below 0, those of the
    // framebuffer bound when it is called (the viewport's, in the window). A
    // renderer without a window sets the count the window would have, so
    // that both draw the same edges and the same texture filtering.
    int imageSamples = -1;
    int gridSize = 20;
    Vector3 ambient{0.49803922f, 0.49803922f, 0.49803922f};
    SceneLight light;
    QColor viewportColor;
    QFont font;

    // Fills the vehicle block of the overlay (nation, name, category, tier,
    // hit points, triangles) from the vehicle's loader, which lies above
    // this library; without it the block stays empty.
    std::function<void(OverlayFacts& facts)> vehicleFacts;

    Camera camera;
    CameraControls controls{camera};
    FrameStatistics statistics;
    SceneContents scene;
    ShadowMap shadowMap;
    // The size given by the last resize, in pixels.
    int viewWidth = 0;
    int viewHeight = 0;

private:
    void drawPasses(bool transparent, bool enableMultisample);
    void clearWithViewportColor(bool transparent);
    void drawScene();
    void drawArmorRay();
    void drawOverlay();
};
