#pragma once

#include "GlContext.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QSurfaceFormat>

#include <memory>

// An off-screen OpenGL 3.2 core context made current for the life of the
// object, with an optional colour+depth framebuffer to draw into. Needs a
// QGuiApplication (the suites run under Xvfb).
class GlTestContext
{
public:
    GlTestContext()
    {
        QSurfaceFormat format;
        format.setVersion(3, 2);
        format.setProfile(QSurfaceFormat::CoreProfile);
        format.setDepthBufferSize(24);
        surface.setFormat(format);
        surface.create();
        context.setFormat(format);
        valid = context.create() && context.makeCurrent(&surface) &&
                context.format().version() >= qMakePair(3, 2);
        if (valid)
            GlContext::setOwner(&context, [this] { context.makeCurrent(&surface); });
    }
    ~GlTestContext()
    {
        if (!valid)
            return;
        context.makeCurrent(&surface);
        target.reset();
        context.doneCurrent();
        GlContext::clearOwner(&context);
    }

    // A w x h target with a depth buffer, bound for drawing.
    QOpenGLFramebufferObject& makeTarget(int width, int height)
    {
        QOpenGLFramebufferObjectFormat format;
        format.setAttachment(QOpenGLFramebufferObject::Depth);
        target = std::make_unique<QOpenGLFramebufferObject>(width, height, format);
        target->bind();
        return *target;
    }

    bool valid = false;
    QOffscreenSurface surface;
    QOpenGLContext context;
    std::unique_ptr<QOpenGLFramebufferObject> target;
};
