#pragma once

#include "Maths.h"

#include <QCursor>

#include <functional>

class CameraControls;
class QMouseEvent;
class QWheelEvent;
class QWidget;

// The viewport's pointer: mouse and wheel to the camera controls, the cursor
// that tells what a drag does, and in armour mode the Ctrl + left click that
// fires a shell through the point under the cursor.
class ViewportInput
{
public:
    // Where a press fires the armour ray; from is the camera's eye, to the
    // unit direction times 1000. Runs with the program's GL context current.
    using RayFired = std::function<void(const Vector3& from, const Vector3& to)>;

    ViewportInput(QWidget& viewport, CameraControls& controls);

    void press(QMouseEvent* event, qint64 nowMs, bool armorMode, const RayFired& fire);
    void release(qint64 nowMs, bool armorMode);
    void move(QMouseEvent* event);
    void wheel(QWheelEvent* event);
    // The idle cursor, or the cross-hair in armour mode.
    void showModeCursor(bool armorMode);

    // The eye and the far direction through the pixel (x, y) of a viewport
    // of w x h pixels, whose depth buffer reads depth there (1 for none).
    static void rayThroughPixel(const CameraControls& controls, double x, double y, int w, int h,
                                float depth, Vector3* from, Vector3* to);

private:
    enum CursorKind
    {
        SizeAllCursor,
        OrbitCursor,
        IdleCursor,
        RollCursor,
        ArmorCursor,
        CursorCount
    };

    void fireRay(const RayFired& fire);

    QWidget& viewport;
    CameraControls& controls;
    QCursor cursors[CursorCount];
};
