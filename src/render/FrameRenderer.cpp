#include "FrameRenderer.h"

#include "Garage.h"
#include "GlFunctions.h"
#include "MaterialLoader.h"
#include "MatrixStack.h"
#include "Settings.h"
#include "TextureLoader.h"

#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions_3_2_Core>

#include <algorithm>

FrameRenderer::FrameRenderer()
{
    font.setPointSize(10);
    font.setStyleStrategy(QFont::PreferAntialias);
}

void FrameRenderer::setInitialGlState()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    gl->glEnable(GL_DEPTH_TEST);
    gl->glDepthFunc(GL_LESS);
    gl->glEnable(GL_CULL_FACE);
    gl->glCullFace(GL_BACK);
    gl->glFrontFace(GL_CCW);
    gl->glDisable(GL_MULTISAMPLE);
}

int FrameRenderer::maxImageSize()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    GLint texture = 0, renderbuffer = 0, viewport[2] = {0, 0};
    gl->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &texture);
    gl->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &renderbuffer);
    gl->glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return std::min({texture, renderbuffer, viewport[0], viewport[1]});
}

void FrameRenderer::create(int shadowMapSide, QObject* garageParent)
{
    scene.createBackdrop(gridSize, garageParent);
    if (MaterialLoader* materials = MaterialLoader::instance())
        materials->light = &light;
    buildShadowMap(shadowMapSide);
    controls.resetCamera();
    scene.createOverlays();
}

void FrameRenderer::release()
{
    scene.release();
    shadowMap.release();
    if (MaterialLoader* materials = MaterialLoader::instance();
        materials && materials->light == &light)
        materials->light = nullptr;
}

void FrameRenderer::buildShadowMap(int side)
{
    shadowMap.build(side);
    // Materials bind it to unit 7 as shadowMap.
    if (TextureLoader* textures = TextureLoader::instance())
        textures->shadowTexture = shadowMap.texture;
}

void FrameRenderer::resize(int width, int height)
{
    viewWidth = width;
    viewHeight = height;
    controls.resize(width, height);
    if (QOpenGLFunctions_3_2_Core* gl = glFunctions())
        gl->glViewport(0, 0, width, height);
}

bool FrameRenderer::shadowsWanted() const
{
    // 0 = full materials; before the loader exists the scene is lit fully.
    const MaterialLoader* materials = MaterialLoader::instance();
    const int lightingMode = materials ? materials->lightingMode : 0;
    const Settings* settings = Settings::instance();
    return lightingMode == 0 && settings && settings->showShadows && shadowMap.framebuffer;
}

void FrameRenderer::draw(bool transparent)
{
    drawPasses(transparent, multisample);
}

QImage FrameRenderer::renderToImage(int width, int height, bool transparent)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    const int keptWidth = viewWidth;
    const int keptHeight = viewHeight;
    GLint previous = 0;
    gl->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);

    GLint samples = imageSamples;
    if (samples < 0)
        gl->glGetIntegerv(GL_SAMPLES, &samples);
    QOpenGLFramebufferObjectFormat format;
    format.setAttachment(QOpenGLFramebufferObject::Depth);
    format.setSamples(samples);
    format.setMipmap(false);
    QOpenGLFramebufferObject target(width, height, format);
    target.bind();
    resize(width, height);
    drawPasses(transparent, true);

    QImage image = target.toImage();
    target.release();
    gl->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(previous));
    // A renderer that never had a size (off-screen) keeps the image's.
    if (keptWidth > 0 && keptHeight > 0)
        resize(keptWidth, keptHeight);
    return image;
}

void FrameRenderer::drawPasses(bool transparent, bool enableMultisample)
{
    if (shadowsWanted()) {
        // Only the vehicle casts shadows.
        shadowMap.render(
            light.position, [this] { scene.draw(ShadowPass); }, viewWidth, viewHeight);
    }
    clearWithViewportColor(transparent);
    if (enableMultisample)
        glFunctions()->glEnable(GL_MULTISAMPLE);
    drawScene();
    drawOverlay();
}

void FrameRenderer::clearWithViewportColor(bool transparent)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    viewportColor.setAlphaF(transparent ? 0.0f : 1.0f);
    gl->glClearColor(float(viewportColor.redF()), float(viewportColor.greenF()),
                     float(viewportColor.blueF()), float(viewportColor.alphaF()));
    gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    MatrixStack::instance()->setView(camera.view);
}

void FrameRenderer::drawScene()
{
    if (gridShown)
        scene.gridMesh.draw();
    // An orthographic camera never shows the backdrop.
    if (camera.projectionType == 1 && garageShown) {
        if (Garage* garage = garageInUse())
            garage->draw();
    }
    scene.draw(ColourPass);
    if (armorMode)
        drawArmorRay();
}

void FrameRenderer::drawArmorRay()
{
    scene.rayLines.addLine(scene.rayEnd, scene.rayStart, QColor(QStringLiteral("yellow")));
    scene.rayLines.draw();
    scene.hitMarker.draw();
}

void FrameRenderer::drawOverlay()
{
    OverlayFacts facts;
    facts.showTankInfo = tankInfoShown;
    facts.showRenderInfo = renderInfoShown;
    if (vehicleFacts)
        vehicleFacts(facts);
    facts.fpsAverage = statistics.fpsAverage;
    facts.frameTimeMs = statistics.frameTimeMs;
    const Garage* garage = garageInUse();
    facts.sceneTriangles = garageShown && garage ? garage->triangleCount() : 0;
    facts.font = font;
    scene.imageLayer.draw(viewWidth, viewHeight);
    scene.overlay.render(facts, viewWidth, viewHeight);
}
