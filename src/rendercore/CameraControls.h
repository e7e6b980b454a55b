#pragma once

#include "Camera.h"

#include <QObject>
#include <QString>

// The view numbers the user sees (target position, rotation, zoom, field of
// view) and how mouse, wheel, presets and .Camera files change them. The
// viewport forwards its input here; the camera follows these numbers, with
// rotations in the 0.1 degree steps the camera controls show.
class CameraControls : public QObject
{
    Q_OBJECT
public:
    explicit CameraControls(Camera& camera, QObject* parent = nullptr);

    // Viewport size in pixels; sets the orthographic box and the projection.
    void resize(int width, int height);
    void updateProjection();

    // Mouse input, with the clock reading of the viewport in ms. press()
    // answers true when the press fires an armour ray (Ctrl + left in armour mode).
    bool press(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers, qint64 nowMs,
               bool armorMode);
    void move(double x, double y, Qt::MouseButtons buttons);
    void release(qint64 nowMs);
    void wheel(int delta);
    // One frame of auto rotation, dtMs since the last frame.
    void autoRotateStep(qint64 dtMs);

    // The .Camera file; false when it cannot be opened (logged) or is no XML.
    bool saveView(const QString& path) const;
    bool loadView(const QString& path);

    Camera& camera;
    Vector3 position{};
    Vector3 rotation{};
    Vector3 spin{};
    Vector3 dragSum{};
    float zoom = 12;
    float fov = 55;
    bool panning = false;
    float invertX = 1;
    float invertY = 1;
    int width = 1;
    int height = 1;
    float ortho[4] = {}; // left, right, top, bottom
    double lastMouseX = 0;
    double lastMouseY = 0;
    qint64 pressMs = 0;
    // Index of the type box: 0 perspective, 1 orthographic.
    int typeIndex = 0;

public slots:
    void setPositionX(double value);
    void setPositionY(double value);
    void setPositionZ(double value);
    void setRotationX(double value);
    void setRotationY(double value);
    void setRotationZ(double value);
    void setFov(int value);
    void setZoom(int value);
    void resetCamera();
    void setCameraType(int index);
    void setViewPreset(int index);

signals:
    void cameraZoomChanged(int);
    void cameraFovChanged(int);
    void cameraRotationXChanged(double);
    void cameraRotationYChanged(double);
    void cameraRotationZChanged(double);
    void cameraPositionXChanged(double);
    void cameraPositionYChanged(double);
    void cameraPositionZChanged(double);
    void cameraTypeIndexChanged(int);
    void cameraViewIndexChanged(int);

private:
    // The camera turns to the rotation as the dock shows it: clamped to
    // -180..180 and rounded to one decimal, i.e. in 0.1 degree steps. The
    // stored rotation keeps its full value so small steps still add up.
    void applyOrientation();
    void emitRotation();
    void emitPosition(const Vector3& value);
    void orbit(double dx, double dy);
    void pan(double dx, double dy);
    void roll(double dy);
    void setPosition(int axis, double value);
};
