#include "GlErrors.h"

#include "Log.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

QString glErrorName(int code)
{
    switch (code) {
    case 0:
        return QStringLiteral("GL_NO_ERROR");
    case 1280:
        return QStringLiteral("GL_INVALID_ENUM");
    case 1281:
        return QStringLiteral("GL_INVALID_VALUE");
    case 1282:
        return QStringLiteral("GL_INVALID_OPERATION");
    case 1283:
        return QStringLiteral("GL_STACK_OVERFLOW");
    case 1284:
        return QStringLiteral("GL_STACK_UNDERFLOW");
    case 1285:
        return QStringLiteral("GL_OUT_OF_MEMORY");
    case 1286:
        return QStringLiteral("GL_INVALID_FRAMEBUFFER_OPERATION");
    default:
        return QStringLiteral("UNKOWN GL ERROR.");
    }
}

void checkGlErrors(const QString& caller)
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context)
        return;
    QOpenGLFunctions* gl = context->functions();
    // A lost context answers GL_CONTEXT_LOST for ever; the bound keeps the
    // loop finite there (the queue itself holds at most one error per kind).
    for (int guard = 0; guard < 64; ++guard) {
        const GLenum code = gl->glGetError();
        if (code == GL_NO_ERROR)
            return;
        Log::log(QStringLiteral("OpenGL error. Caller: ") + caller + QStringLiteral(" gl err: ") +
                     glErrorName(int(code)),
                 Log::Error);
    }
}
