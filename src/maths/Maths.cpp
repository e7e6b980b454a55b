#include "Maths.h"

#include <cmath>

float dot(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector3 cross(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector3 normalised(const Vector3& v)
{
    const float length = std::sqrt(dot(v, v));
    if (length == 0)
        return v;
    return {v[0] / length, v[1] / length, v[2] / length};
}

void multiplyMatrix(Matrix& m, const Matrix& other)
{
    Matrix result{};
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r) {
            float sum = 0.0f;
            for (int k = 0; k < 4; ++k)
                sum += m[4 * k + r] * other[4 * c + k];
            result[4 * c + r] = sum;
        }
    }
    m = result;
}

Matrix identityMatrix()
{
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

Matrix matrixProduct(const Matrix& a, const Matrix& b)
{
    Matrix result = a;
    multiplyMatrix(result, b);
    return result;
}

Matrix translationMatrix(const Vector3& by)
{
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, by[0], by[1], by[2], 1};
}

Matrix scalingMatrix(const Vector3& by)
{
    return {by[0], 0, 0, 0, 0, by[1], 0, 0, 0, 0, by[2], 0, 0, 0, 0, 1};
}

Matrix lookAt(const Vector3& eye, const Vector3& target, const Vector3& up)
{
    const Vector3 f = normalised({target[0] - eye[0], target[1] - eye[1], target[2] - eye[2]});
    const Vector3 s = normalised(cross(f, up));
    const Vector3 u = cross(s, f);
    return {s[0], u[0], -f[0], 0, s[1],         u[1],         -f[1],       0,
            s[2], u[2], -f[2], 0, -dot(s, eye), -dot(u, eye), dot(f, eye), 1};
}

Matrix rotate(const Matrix& matrix, float degrees, const Vector3& axis)
{
    // A zero axis has no direction to turn about; the matrix stays as it is
    // rather than filling with NaN.
    if (dot(axis, axis) == 0)
        return matrix;
    const Vector3 n = normalised(axis);
    const float x = n[0], y = n[1], z = n[2];
    const float angle = degrees * degToRad;
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    const float k = 1 - c;
    const Matrix r = {x * x * k + c,
                      y * x * k + z * s,
                      z * x * k - y * s,
                      0,
                      x * y * k - z * s,
                      y * y * k + c,
                      z * y * k + x * s,
                      0,
                      x * z * k + y * s,
                      y * z * k - x * s,
                      z * z * k + c,
                      0,
                      0,
                      0,
                      0,
                      1};
    Matrix result = matrix;
    multiplyMatrix(result, r);
    return result;
}

Matrix perspectiveMatrix(float fovDegrees, float aspect, float near, float far)
{
    const float t = std::tan(fovDegrees * degToRad * 0.5f);
    Matrix m{};
    m[0] = 1 / (t * aspect);
    m[5] = 1 / t;
    m[10] = -(far + near) / (far - near);
    m[11] = -1;
    m[14] = -(2 * far * near) / (far - near);
    return m;
}
