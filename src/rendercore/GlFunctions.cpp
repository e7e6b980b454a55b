#include "GlFunctions.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLVersionFunctionsFactory>

QOpenGLFunctions_3_2_Core* glFunctions()
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context)
        return nullptr;
    // The factory caches one object per context, so asking each time is cheap.
    auto* functions = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_3_2_Core>(context);
    if (!functions || !functions->initializeOpenGLFunctions())
        return nullptr;
    return functions;
}
