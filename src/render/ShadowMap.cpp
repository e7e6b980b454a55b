#include "ShadowMap.h"

#include "GlErrors.h"
#include "GlFunctions.h"
#include "Log.h"
#include "MatrixStack.h"

#include <QOpenGLFunctions_3_2_Core>

namespace {

GLuint boundFramebuffer(QOpenGLFunctions_3_2_Core* gl)
{
    GLint bound = 0;
    gl->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    return GLuint(bound);
}

} // namespace

void ShadowMap::build(int newSide)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;
    Log::log(QStringLiteral("Creating Shadow Map Texture."), Log::Info);
    side = newSide;
    // In a widget this is its own framebuffer, not 0: Qt composes from it.
    const GLuint previous = boundFramebuffer(gl);

    if (texture)
        gl->glDeleteTextures(1, &texture);
    if (!framebuffer)
        gl->glGenFramebuffers(1, &framebuffer);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);

    gl->glGenTextures(1, &texture);
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT16, side, side, 0, GL_DEPTH_COMPONENT,
                     GL_FLOAT, nullptr);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    // The compare mode stays as the shaders' samplers expect it.
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
    gl->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, texture, 0);
    gl->glDrawBuffer(GL_NONE);
    if (gl->glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        Log::log(QStringLiteral("Failed to create FBO."), Log::Error);

    gl->glBindTexture(GL_TEXTURE_2D, 0);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, previous);
    checkGlErrors(QStringLiteral("FBO"));
    Log::log(QStringLiteral("Shadow Map size: ") + QString::number(side) + QStringLiteral(" x ") +
                 QString::number(side),
             Log::Info);
}

void ShadowMap::release()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;
    if (texture)
        gl->glDeleteTextures(1, &texture);
    if (framebuffer)
        gl->glDeleteFramebuffers(1, &framebuffer);
    texture = 0;
    framebuffer = 0;
}

void ShadowMap::render(const Vector3& lightPosition, const std::function<void()>& drawCasters,
                       int viewWidth, int viewHeight)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    // Back to the target the pass found: the widget's framebuffer in a frame,
    // the image's off-screen.
    const GLuint target = boundFramebuffer(gl);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl->glViewport(0, 0, side, side);
    gl->glClear(GL_DEPTH_BUFFER_BIT);

    MatrixStack* stack = MatrixStack::instance();
    stack->depthProjection = perspectiveMatrix(45.0f, 1.0f, 2.0f, 250.0f);
    stack->depthView = lookAt(lightPosition, Vector3{0, 0, 0}, Vector3{0, 1, 0});
    drawCasters();

    gl->glBindFramebuffer(GL_FRAMEBUFFER, target);
    gl->glViewport(0, 0, viewWidth, viewHeight);
}
