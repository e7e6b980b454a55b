#pragma once

#include <array>

// The program's vectors and matrices. Vectors are plain floats. A matrix is
// 16 floats in the order OpenGL reads them, column after column, with the
// translation in elements 12 to 14, uploaded without transposing; products
// are written projection x view x model, the left factor applied last.
using Vector2 = std::array<float, 2>;
using Vector3 = std::array<float, 3>;
using Vector4 = std::array<float, 4>;
using Matrix = std::array<float, 16>;
// 3 x 3 matrix, column after column, as GL reads a mat3.
using Matrix3 = std::array<float, 9>;

// Rotation as a unit quaternion.
struct Quaternion
{
    float x = 0, y = 0, z = 0, w = 1;
};

float dot(const Vector3& a, const Vector3& b);
Vector3 cross(const Vector3& a, const Vector3& b);
// v scaled to length 1; a zero vector stays as it is.
Vector3 normalised(const Vector3& v);

// m = m x other.
void multiplyMatrix(Matrix& m, const Matrix& other);
Matrix identityMatrix();
// Column-major a x b, as GL reads a mat4.
Matrix matrixProduct(const Matrix& a, const Matrix& b);
Matrix translationMatrix(const Vector3& by);
Matrix scalingMatrix(const Vector3& by);

// A view matrix looking from eye at target.
Matrix lookAt(const Vector3& eye, const Vector3& target, const Vector3& up);
// matrix x R, R the right-handed rotation by degrees about axis (normalised first).
Matrix rotate(const Matrix& matrix, float degrees, const Vector3& axis);
// A perspective projection (fov in degrees), as the viewport and the shadow pass build it.
Matrix perspectiveMatrix(float fovDegrees, float aspect, float near, float far);

// The program's fixed degree-to-radian factor; kept as written so that the
// matrices match those of every other part that uses it.
constexpr float degToRad = 0.017453292f;
