#include "GlContext.h"

#include "Log.h"

#include <QOpenGLContext>

#include <cstdio>
#include <cstdlib>

namespace {

struct Owner
{
    QOpenGLContext* context = nullptr;
    GlContext::MakeCurrent makeCurrent;
    GlContext::MismatchHandler onMismatch;
};

Owner& registration()
{
    static Owner value;
    return value;
}

void abortOnMismatch(const QString& caller)
{
    const QString text =
        QStringLiteral("GL work without the viewport's context current, in ") + caller;
    Log::log(text, Log::Error);
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    std::abort();
}

} // namespace

void GlContext::setOwner(QOpenGLContext* context, MakeCurrent makeCurrent)
{
    registration().context = context;
    registration().makeCurrent = std::move(makeCurrent);
}

void GlContext::clearOwner(QOpenGLContext* context)
{
    if (registration().context != context)
        return;
    registration().context = nullptr;
    registration().makeCurrent = nullptr;
}

QOpenGLContext* GlContext::owner()
{
    return registration().context;
}

bool GlContext::makeOwnerCurrent()
{
    const Owner& registered = registration();
    if (!registered.context || !registered.makeCurrent)
        return false;
    if (QOpenGLContext::currentContext() != registered.context)
        registered.makeCurrent();
    return true;
}

bool GlContext::checking()
{
#ifdef FERROX_GL_CONTEXT_CHECK
    return true;
#else
    return false;
#endif
}

void GlContext::check(const char* caller)
{
    const Owner& registered = registration();
    if (!registered.context || QOpenGLContext::currentContext() == registered.context)
        return;
    const QString name = QString::fromUtf8(caller);
    if (registered.onMismatch)
        registered.onMismatch(name);
    else
        abortOnMismatch(name);
}

void GlContext::setMismatchHandler(MismatchHandler handler)
{
    registration().onMismatch = std::move(handler);
}
