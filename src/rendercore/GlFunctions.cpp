#include "GlFunctions.h"

#include "GlContext.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLVersionFunctionsFactory>

QOpenGLFunctions_3_2_Core* glFunctions(const char* caller)
{
#ifdef FERROX_GL_CONTEXT_CHECK
    GlContext::check(caller);
#else
    (void)caller;
#endif
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context)
        return nullptr;
    // The factory caches one object per context, so asking each time is cheap.
    auto* functions = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_3_2_Core>(context);
    if (!functions || !functions->initializeOpenGLFunctions())
        return nullptr;
    return functions;
}
