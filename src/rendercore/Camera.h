#pragma once

#include "Maths.h"

// A plain orbit camera: it looks at target from distance along its own z axis.
class Camera
{
public:
    Camera();

    void reset();
    // Euler angles in degrees, applied as qX * qY * qZ; then update().
    void setOrientation(const float eulerDegrees[3]);
    // Axes, eye and view from orientation, target and distance.
    void update();
    // Fill projection from fov/aspect/near/far (or the box) and copy it to
    // MatrixStack::projection when the stack exists.
    void setPerspective();
    void setOrtho(float left, float right, float bottom, float top);
    // target += delta.x * axisX + delta.y * axisY + delta.z * axisZ, then update().
    void move(const float delta[3]);

    Matrix view;
    Matrix projection;
    Vector3 target;
    Vector3 eye;
    Vector3 axisX, axisY, axisZ;
    Vector3 forward;
    Quaternion orientation;
    float aspect = 1;
    float fov = 55;
    float near = 0.1f;
    float far = 400;
    int projectionType = 1; // 1 perspective, 0 orthographic
    float distance = 1;
};
