#include "ViewportInput.h"

#include "CameraControls.h"
#include "GlFunctions.h"

#include <QMatrix4x4>
#include <QMouseEvent>
#include <QOpenGLFunctions_3_2_Core>
#include <QPixmap>
#include <QVector4D>
#include <QWheelEvent>
#include <QWidget>

#include <algorithm>

ViewportInput::ViewportInput(QWidget& widget, CameraControls& cameraControls)
    : viewport(widget), controls(cameraControls)
{
    // The drawn ones have their hot spot in the middle, where a press orbits
    // round and a shot goes.
    cursors[SizeAllCursor] = QCursor(Qt::SizeAllCursor);
    cursors[OrbitCursor] = QCursor(QPixmap(QStringLiteral(":/icons/Orbit.png")));
    cursors[IdleCursor] = QCursor(Qt::OpenHandCursor);
    cursors[RollCursor] = QCursor(Qt::SizeVerCursor);
    cursors[ArmorCursor] = QCursor(QPixmap(QStringLiteral(":/icons/cross_hair.png")));
    viewport.setCursor(cursors[IdleCursor]);
}

void ViewportInput::press(QMouseEvent* event, qint64 nowMs, bool armorMode, const RayFired& fire)
{
    if (controls.press(event->buttons(), event->modifiers(), nowMs, armorMode)) {
        fireRay(fire);
        return;
    }
    if (event->modifiers() == Qt::ControlModifier)
        return;
    if (event->buttons() == Qt::RightButton)
        viewport.setCursor(cursors[SizeAllCursor]);
    else if (event->buttons() == Qt::LeftButton)
        viewport.setCursor(cursors[OrbitCursor]);
    else if (event->buttons() == Qt::MiddleButton)
        viewport.setCursor(cursors[RollCursor]);
}

void ViewportInput::release(qint64 nowMs, bool armorMode)
{
    controls.release(nowMs);
    showModeCursor(armorMode);
}

void ViewportInput::move(QMouseEvent* event)
{
    controls.move(event->position().x(), event->position().y(), event->buttons());
}

void ViewportInput::wheel(QWheelEvent* event)
{
    controls.wheel(event->angleDelta().y());
}

void ViewportInput::showModeCursor(bool armorMode)
{
    viewport.setCursor(cursors[armorMode ? ArmorCursor : IdleCursor]);
}

// The depth under the cursor is read from the frame last drawn, so the ray
// ends where the user sees a surface.
void ViewportInput::fireRay(const RayFired& fire)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!fire || !gl)
        return;
    const double x = controls.lastMouseX;
    const double y = controls.lastMouseY;
    const int h = viewport.rect().height();
    float depth = 1;
    gl->glReadPixels(int(x), int(h - y), 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    Vector3 from{};
    Vector3 to{};
    rayThroughPixel(controls, x, y, viewport.rect().width(), h, depth, &from, &to);
    fire(from, to);
}

void ViewportInput::rayThroughPixel(const CameraControls& controls, double x, double y, int w,
                                    int h, float depth, Vector3* from, Vector3* to)
{
    const Camera& camera = controls.camera;
    QMatrix4x4 viewProjection;
    const Matrix product = matrixProduct(camera.projection, camera.view);
    std::copy(product.begin(), product.end(), viewProjection.data());
    const QVector4D device(float(x / w * 2 - 1), float((h - y) / h * 2 - 1), depth * 2 - 1, 1);
    const QVector4D world = viewProjection.inverted() * device;
    const Vector3 point{world.x() / world.w(), world.y() / world.w(), world.z() / world.w()};
    const Vector3 direction =
        normalised({point[0] - camera.eye[0], point[1] - camera.eye[1], point[2] - camera.eye[2]});
    *from = camera.eye;
    *to = {direction[0] * 1000, direction[1] * 1000, direction[2] * 1000};
}
