#include "CameraControls.h"

#include "Log.h"
#include "XmlHelpers.h"

#include <QDomDocument>
#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <cmath>

namespace {

constexpr float minZoom = 1;
constexpr float maxZoom = 50;
// Degrees of orbit per pixel of a left drag.
constexpr double orbitPerPixel = 0.3;
// Scene units of pan per pixel of a right drag.
constexpr double panPerPixel = 1.0 / 150;
// Degrees of roll per pixel of a middle drag.
constexpr double rollPerPixel = 1.0 / 13;

// Keeps an angle within -180..180 after a single step past either end.
float wrapAngle(float degrees)
{
    if (degrees > 180)
        degrees -= 360;
    if (degrees < -180)
        degrees += 360;
    return degrees;
}

// The angle as the dock's rotation boxes show it: -180..180, one decimal.
// The camera turns to this value, so it moves in 0.1 degree steps.
float shownAngle(float degrees)
{
    const double clamped = std::clamp(double(degrees), -180.0, 180.0);
    return float(std::round(clamped * 10) / 10);
}

QString numberText(float value)
{
    return QString::number(value, 'g', 6);
}

QString vectorText(const Vector3& v)
{
    return numberText(v[0]) + QLatin1Char(' ') + numberText(v[1]) + QLatin1Char(' ') +
           numberText(v[2]);
}

void appendElement(QDomDocument& doc, QDomElement& parent, const QString& name, const QString& text)
{
    QDomElement element = doc.createElement(name);
    element.appendChild(doc.createTextNode(text));
    parent.appendChild(element);
}

QString childText(const QDomElement& root, const QString& name)
{
    return root.firstChildElement(name).text().trimmed();
}

void logOpenFailure()
{
    Log::log(QStringLiteral("Could not open camera file."), Log::Error);
}

} // namespace

CameraControls::CameraControls(Camera& viewCamera, QObject* parent)
    : QObject(parent), camera(viewCamera)
{
}

void CameraControls::resize(int newWidth, int newHeight)
{
    // A minimised or collapsed viewport reports 0; one pixel keeps the
    // aspect and the orthographic box finite.
    width = std::max(1, newWidth);
    height = std::max(1, newHeight);
    ortho[0] = width * -0.5f;
    ortho[1] = width * 0.5f;
    ortho[2] = height * 0.5f;
    ortho[3] = height * -0.5f;
    updateProjection();
}

void CameraControls::updateProjection()
{
    const float aspect = float(width) / float(height);
    if (camera.projectionType == 1) {
        camera.fov = fov;
        camera.near = 0.1f;
        camera.far = 400;
        camera.aspect = aspect;
        camera.setPerspective();
        return;
    }
    const float k = zoom / aspect;
    const float left = ortho[0] * k, right = ortho[1] * k;
    const float top = ortho[2] * k, bottom = ortho[3] * k;
    camera.setOrtho(left, right, bottom, top);
}

void CameraControls::applyOrientation()
{
    const float shown[3] = {shownAngle(rotation[0]), shownAngle(rotation[1]),
                            shownAngle(rotation[2])};
    camera.setOrientation(shown);
}

void CameraControls::emitRotation()
{
    emit cameraRotationXChanged(rotation[0]);
    emit cameraRotationYChanged(rotation[1]);
    emit cameraRotationZChanged(rotation[2]);
}

void CameraControls::emitPosition(const Vector3& value)
{
    emit cameraPositionXChanged(value[0]);
    emit cameraPositionYChanged(value[1]);
    emit cameraPositionZChanged(value[2]);
}

void CameraControls::resetCamera()
{
    // The order matters to listeners: fov and zoom reach the dock before the
    // rotation and position do.
    camera.reset();
    position = {0, 0, 0};
    zoom = 12;
    spin = {0, 0, 0};
    rotation = {28, -25, 0};
    fov = 55;
    updateProjection();
    emit cameraFovChanged(int(fov));
    emit cameraZoomChanged(int(zoom));
    camera.target = position;
    camera.update();
    applyOrientation();
    camera.distance = zoom;
    camera.update();
    emitRotation();
    emitPosition(position);
    updateProjection();
}

void CameraControls::setCameraType(int index)
{
    if (index == 0)
        camera.projectionType = 1;
    else if (index == 1)
        camera.projectionType = 0;
    if (index == 0 || index == 1)
        typeIndex = index;
    updateProjection();
}

void CameraControls::setViewPreset(int index)
{
    if (index == 0) {
        resetCamera();
        return;
    }
    static const Vector3 presets[] = {
        {90, 0, 0},  // Top
        {-90, 0, 0}, // Bottom
        {0, -90, 0}, // Left
        {0, 90, 0},  // Right
        {0, 0, 0},   // Front
        {0, 180, 0}, // Back
    };
    if (index < 1 || index > 6)
        return;
    rotation = presets[index - 1];
    emitRotation();
    applyOrientation();
}

bool CameraControls::press(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers, qint64 nowMs,
                           bool armorMode)
{
    // Any press stops a running flick.
    pressMs = nowMs;
    dragSum = {0, 0, 0};
    spin = {0, 0, 0};
    if (modifiers == Qt::ControlModifier)
        return armorMode && buttons == Qt::LeftButton;
    return false;
}

void CameraControls::move(double x, double y, Qt::MouseButtons buttons)
{
    const double dx = x - lastMouseX;
    const double dy = y - lastMouseY;
    if (buttons == Qt::LeftButton)
        orbit(dx, dy);
    else if (buttons == Qt::RightButton)
        pan(dx, dy);
    else if (buttons == Qt::MiddleButton)
        roll(dy);
    lastMouseX = x;
    lastMouseY = y;
}

void CameraControls::orbit(double dx, double dy)
{
    const float stepX = float(dy * orbitPerPixel);
    const float stepY = float(dx * orbitPerPixel);
    rotation[0] = wrapAngle(rotation[0] + stepX);
    rotation[1] = wrapAngle(rotation[1] + stepY);
    // Unwrapped, so that a flick across 180 keeps its full speed.
    dragSum[0] += stepX;
    dragSum[1] += stepY;
    emitRotation();
    applyOrientation();
}

void CameraControls::pan(double dx, double dy)
{
    const float delta[3] = {float(-dx * panPerPixel * invertX), float(dy * panPerPixel * invertY),
                            0};
    camera.move(delta);
    panning = true;
    position = camera.target;
    emitPosition(position);
}

void CameraControls::roll(double dy)
{
    rotation[2] = float(rotation[2] - dy * rollPerPixel);
    emit cameraRotationZChanged(rotation[2]);
    applyOrientation();
}

void CameraControls::release(qint64 nowMs)
{
    qint64 held = nowMs - pressMs;
    if (held < 2)
        held = 1;
    // Degrees per second of the drag just ended.
    const float factor = 1000.0f / float(held);
    for (int i = 0; i < 3; ++i)
        spin[i] = factor * dragSum[i];
    panning = false;
}

void CameraControls::wheel(int delta)
{
    if (delta > 0)
        zoom -= 1;
    else if (delta < 0)
        zoom += 1;
    zoom = std::clamp(zoom, minZoom, maxZoom);
    updateProjection();
    camera.distance = zoom;
    camera.update();
    emit cameraZoomChanged(int(zoom));
}

void CameraControls::autoRotateStep(qint64 dtMs)
{
    rotation[1] = wrapAngle(float(double(rotation[1]) + double(dtMs) * (1.0 / 7000) * spin[1]));
    applyOrientation();
    emit cameraRotationYChanged(rotation[1]);
}

void CameraControls::setPosition(int axis, double value)
{
    // A right drag moves the camera itself; the echo of its own signals must
    // not pull the target back to the rounded numbers of the dock.
    if (panning)
        return;
    position[axis] = float(value);
    camera.target = position;
    camera.update();
}

void CameraControls::setPositionX(double value)
{
    setPosition(0, value);
}

void CameraControls::setPositionY(double value)
{
    setPosition(1, value);
}

void CameraControls::setPositionZ(double value)
{
    setPosition(2, value);
}

void CameraControls::setRotationX(double value)
{
    rotation[0] = float(value);
    applyOrientation();
}

void CameraControls::setRotationY(double value)
{
    rotation[1] = float(value);
    applyOrientation();
}

void CameraControls::setRotationZ(double value)
{
    rotation[2] = float(value);
    applyOrientation();
}

void CameraControls::setFov(int value)
{
    fov = float(value);
    updateProjection();
    emit cameraFovChanged(value);
}

void CameraControls::setZoom(int value)
{
    zoom = float(value);
    camera.distance = zoom;
    camera.update();
    updateProjection();
    emit cameraZoomChanged(value);
}

bool CameraControls::saveView(const QString& path) const
{
    QDomDocument doc;
    QDomElement root = doc.createElement(QStringLiteral("Camera"));
    doc.appendChild(root);
    appendElement(doc, root, QStringLiteral("Target"), vectorText(position));
    appendElement(doc, root, QStringLiteral("Rotation"), vectorText(rotation));
    appendElement(doc, root, QStringLiteral("Fov"), numberText(fov));
    appendElement(doc, root, QStringLiteral("Zoom"), numberText(zoom));
    appendElement(doc, root, QStringLiteral("Type"), QString::number(typeIndex));

    // QSaveFile: an old view is replaced whole or not at all.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        logOpenFailure();
        return false;
    }
    file.write(doc.toString(1).toUtf8());
    if (!file.commit()) {
        logOpenFailure();
        return false;
    }
    return true;
}

bool CameraControls::loadView(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logOpenFailure();
        return false;
    }
    QDomDocument doc;
    if (!doc.setContent(&file))
        return false;
    file.close();

    camera.reset();
    position = {0, 0, 0};
    const QDomElement root = doc.documentElement();
    const int type = childText(root, QStringLiteral("Type")).toInt();
    const Vector3 target = parseVector3(childText(root, QStringLiteral("Target")));
    rotation = parseVector3(childText(root, QStringLiteral("Rotation")));
    zoom = childText(root, QStringLiteral("Zoom")).toFloat();
    fov = childText(root, QStringLiteral("Fov")).toFloat();

    // What the dock's boxes would hand back to the slots, applied directly.
    position = target;
    camera.target = target;
    camera.distance = zoom;
    applyOrientation();

    emitRotation();
    emitPosition(target);
    emit cameraFovChanged(int(fov));
    emit cameraZoomChanged(int(zoom));

    setCameraType(type);
    emit cameraTypeIndexChanged(type);
    emit cameraViewIndexChanged(0);
    updateProjection();
    return true;
}
