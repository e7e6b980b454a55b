#pragma once

#include "XmlHelpers.h"

// Rotation as a unit quaternion.
struct Quaternion
{
    float x = 0, y = 0, z = 0, w = 1;
};

// 3 x 3 matrix, column after column, as GL reads a mat3.
using Matrix3 = std::array<float, 9>;

Matrix identityMatrix();
// Column-major a x b, as GL reads a mat4.
Matrix matrixProduct(const Matrix& a, const Matrix& b);
Matrix translationMatrix(const Vector3& by);
Matrix scalingMatrix(const Vector3& by);

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

// A view matrix looking from eye at target.
Matrix lookAt(const Vector3& eye, const Vector3& target, const Vector3& up);
// matrix x R, R the right-handed rotation by degrees about axis (normalised first).
Matrix rotate(const Matrix& matrix, float degrees, const Vector3& axis);
// A perspective projection (fov in degrees), as the viewport and the shadow pass build it.
Matrix perspectiveMatrix(float fovDegrees, float aspect, float near, float far);
