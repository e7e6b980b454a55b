#include "Camera.h"

#include "MatrixStack.h"

#include <cmath>

namespace {

// Hamilton product a * b.
Quaternion multiply(const Quaternion& a, const Quaternion& b)
{
    Quaternion q;
    q.w = a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z;
    q.x = a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y;
    q.y = a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x;
    q.z = a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w;
    return q;
}

// Rotation about one unit axis (0 = x, 1 = y, 2 = z) by degrees.
Quaternion axisQuaternion(int axis, float degrees)
{
    const float half = degrees * degToRad * 0.5f;
    Quaternion q;
    q.w = std::cos(half);
    const float s = std::sin(half);
    if (axis == 0)
        q.x = s;
    else if (axis == 1)
        q.y = s;
    else
        q.z = s;
    return q;
}

void publishProjection(const Matrix& projection)
{
    if (MatrixStack* stack = MatrixStack::instance())
        stack->projection = projection;
}

} // namespace

Camera::Camera()
{
    reset();
}

void Camera::reset()
{
    target = {0, 0, 0};
    eye = {0, 0, 0};
    axisX = {1, 0, 0};
    axisY = {0, 1, 0};
    axisZ = {0, 0, 1};
    forward = {0, 0, 1};
    orientation = Quaternion();
    view = identityMatrix();
    projection = identityMatrix();
    aspect = 1;
    distance = 1;
}

void Camera::setOrientation(const float eulerDegrees[3])
{
    const Quaternion qX = axisQuaternion(0, eulerDegrees[0]);
    const Quaternion qY = axisQuaternion(1, eulerDegrees[1]);
    const Quaternion qZ = axisQuaternion(2, eulerDegrees[2]);
    orientation = multiply(multiply(qX, qY), qZ);
    update();
}

void Camera::update()
{
    const float x = orientation.x, y = orientation.y, z = orientation.z, w = orientation.w;
    // Columns of the rotation; its rows are the camera axes in world space.
    const Vector3 c0 = {1 - 2 * y * y - 2 * z * z, 2 * x * y + 2 * w * z, 2 * x * z - 2 * w * y};
    const Vector3 c1 = {2 * x * y - 2 * w * z, 1 - 2 * x * x - 2 * z * z, 2 * w * x + 2 * y * z};
    const Vector3 c2 = {2 * x * z + 2 * w * y, 2 * y * z - 2 * w * x, 1 - 2 * x * x - 2 * y * y};

    axisX = {c0[0], c1[0], c2[0]};
    axisY = {c0[1], c1[1], c2[1]};
    axisZ = {c0[2], c1[2], c2[2]};
    forward = {-axisZ[0], -axisZ[1], -axisZ[2]};
    for (int i = 0; i < 3; ++i)
        eye[i] = target[i] + distance * axisZ[i];

    view = {c0[0],
            c0[1],
            c0[2],
            0,
            c1[0],
            c1[1],
            c1[2],
            0,
            c2[0],
            c2[1],
            c2[2],
            0,
            -dot(eye, axisX),
            -dot(eye, axisY),
            -dot(eye, axisZ),
            1};
}

void Camera::setPerspective()
{
    projection = perspectiveMatrix(fov, aspect, near, far);
    publishProjection(projection);
}

void Camera::setOrtho(float left, float right, float bottom, float top)
{
    // The box is in pixels; s brings it down to scene units.
    const float s = 0.002f;
    const float dx = (right - left) * s;
    const float dy = (top - bottom) * s;
    projection.fill(0);
    projection[0] = 2 / dx;
    projection[5] = 2 / dy;
    projection[10] = -0.001f;
    projection[12] = -((left + right) * s) / dx;
    projection[13] = -((bottom + top) * s) / dy;
    projection[14] = 0;
    projection[15] = 1;
    publishProjection(projection);
}

void Camera::move(const float delta[3])
{
    for (int i = 0; i < 3; ++i)
        target[i] += delta[0] * axisX[i] + delta[1] * axisY[i] + delta[2] * axisZ[i];
    update();
}
