#include "SurfaceFormat.h"

#include "Settings.h"

int msaaSampleCount(const QString& msaa)
{
    if (msaa == QLatin1String("2x"))
        return 2;
    if (msaa == QLatin1String("4x"))
        return 4;
    if (msaa == QLatin1String("8x"))
        return 8;
    if (msaa == QLatin1String("16x"))
        return 16;
    return 0;
}

QSurfaceFormat ferroxSurfaceFormat(const Settings& settings)
{
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setAlphaBufferSize(8);
    format.setSwapBehavior(QSurfaceFormat::DoubleBuffer);
    format.setDepthBufferSize(24);
    format.setStencilBufferSize(0);
    format.setSwapInterval(settings.vsync);
    if (settings.msaa == QLatin1String("Disabled"))
        format.setSamples(0);
    else if (const int samples = msaaSampleCount(settings.msaa))
        format.setSamples(samples);
    return format;
}
