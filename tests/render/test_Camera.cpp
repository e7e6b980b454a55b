#include "Camera.h"
#include "MatrixStack.h"

#include <QMatrix4x4>
#include <QQuaternion>

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr float tolerance = 1e-5f;

void expectMatrixNear(const Matrix& actual, const Matrix& expected, float tol = tolerance)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(actual[i], expected[i], tol) << "element " << i;
}

// QMatrix4x4 keeps its data column after column, as Matrix does.
Matrix fromQt(const QMatrix4x4& m)
{
    Matrix result;
    std::copy(m.constData(), m.constData() + 16, result.begin());
    return result;
}

void expectVectorNear(const Vector3& actual, const Vector3& expected, float tol = tolerance)
{
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(actual[i], expected[i], tol) << "component " << i;
}

// Row r of the rotation matrix of q: the camera axes are the rows.
Vector3 rotationRow(const QQuaternion& q, int r)
{
    const QMatrix3x3 m = q.toRotationMatrix();
    return {m(r, 0), m(r, 1), m(r, 2)};
}

QQuaternion eulerXYZ(float x, float y, float z)
{
    return QQuaternion::fromAxisAndAngle(1, 0, 0, x) * QQuaternion::fromAxisAndAngle(0, 1, 0, y) *
           QQuaternion::fromAxisAndAngle(0, 0, 1, z);
}

} // namespace

TEST(CameraMath, IdentityMatrixHasOnesOnTheDiagonal)
{
    const Matrix m = identityMatrix();
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], (i % 5 == 0) ? 1.0f : 0.0f) << i;
}

TEST(CameraMath, PerspectiveMatrixFromHandWorkedValues)
{
    // fov 90: t = tan(45 deg) = 1; aspect 2 -> m00 = 0.5; near 1, far 3:
    // m22 = -(3 + 1) / 2 = -2, m32 = -(2 * 3 * 1) / 2 = -3.
    const Matrix m = perspectiveMatrix(90, 2, 1, 3);
    Matrix expected{};
    expected[0] = 0.5f;
    expected[5] = 1;
    expected[10] = -2;
    expected[11] = -1; // column 2, row 3
    expected[14] = -3; // column 3, row 2
    expectMatrixNear(m, expected);
}

TEST(CameraMath, PerspectiveMatrixOfTheShadowPass)
{
    // fov 45, aspect 1, near 2, far 250: 1 / tan(22.5 deg) = 2.4142136,
    // -(252 / 248) = -1.016129, -(1000 / 248) = -4.032258.
    const Matrix m = perspectiveMatrix(45, 1, 2, 250);
    EXPECT_NEAR(m[0], 2.4142136f, 1e-5f);
    EXPECT_NEAR(m[5], 2.4142136f, 1e-5f);
    EXPECT_NEAR(m[10], -1.016129f, 1e-6f);
    EXPECT_NEAR(m[11], -1, 1e-6f);
    EXPECT_NEAR(m[14], -4.032258f, 1e-5f);
    EXPECT_EQ(m[15], 0);
}

TEST(CameraProjection, SetPerspectiveFillsAndPublishesTheProjection)
{
    MatrixStack stack;
    Camera camera;
    camera.fov = 90;
    camera.aspect = 2;
    camera.near = 1;
    camera.far = 3;
    camera.setPerspective();
    EXPECT_NEAR(camera.projection[0], 0.5f, tolerance);
    EXPECT_NEAR(camera.projection[14], -3, tolerance);
    expectMatrixNear(stack.projection, camera.projection, 0);
}

TEST(CameraProjection, SetOrthoCentredBox)
{
    MatrixStack stack;
    Camera camera;
    // dx = 200 * 0.002 = 0.4 -> m00 = 5; dy = 100 * 0.002 = 0.2 -> m11 = 10.
    camera.setOrtho(-100, 100, -50, 50);
    Matrix expected{};
    expected[0] = 5;
    expected[5] = 10;
    expected[10] = -0.001f;
    expected[15] = 1;
    expectMatrixNear(camera.projection, expected);
    expectMatrixNear(stack.projection, expected);
}

TEST(CameraProjection, SetOrthoOffCentreBoxTranslates)
{
    Camera camera;
    // l 0, r 100, b 0, t 50: dx = 0.2, dy = 0.1; m30 = -(100 * 0.002) / 0.2 = -1,
    // m31 = -(50 * 0.002) / 0.1 = -1.
    camera.setOrtho(0, 100, 0, 50);
    EXPECT_NEAR(camera.projection[0], 10, 1e-4f);
    EXPECT_NEAR(camera.projection[5], 20, 1e-4f);
    EXPECT_NEAR(camera.projection[12], -1, tolerance);
    EXPECT_NEAR(camera.projection[13], -1, tolerance);
    EXPECT_EQ(camera.projection[14], 0);
    EXPECT_EQ(camera.projection[15], 1);
}

TEST(CameraProjection, WithoutAStackTheProjectionStaysLocal)
{
    ASSERT_EQ(MatrixStack::instance(), nullptr);
    Camera camera;
    camera.setOrtho(-100, 100, -50, 50);
    EXPECT_NEAR(camera.projection[0], 5, tolerance);
}

TEST(CameraState, ResetRestoresTheStartValues)
{
    Camera camera;
    const float angles[3] = {30, 40, 50};
    camera.target = {1, 2, 3};
    camera.distance = 7;
    camera.setOrientation(angles);
    camera.aspect = 3;
    camera.setOrtho(-10, 10, -10, 10);

    camera.reset();
    expectVectorNear(camera.target, {0, 0, 0}, 0);
    expectVectorNear(camera.eye, {0, 0, 0}, 0);
    expectVectorNear(camera.axisX, {1, 0, 0}, 0);
    expectVectorNear(camera.axisY, {0, 1, 0}, 0);
    expectVectorNear(camera.axisZ, {0, 0, 1}, 0);
    expectVectorNear(camera.forward, {0, 0, 1}, 0);
    EXPECT_EQ(camera.orientation.w, 1);
    EXPECT_EQ(camera.orientation.x, 0);
    expectMatrixNear(camera.view, identityMatrix(), 0);
    expectMatrixNear(camera.projection, identityMatrix(), 0);
    EXPECT_EQ(camera.aspect, 1);
    EXPECT_EQ(camera.distance, 1);
}

TEST(CameraOrientation, QuaternionIsXTimesYTimesZ)
{
    // qX(90) * qY(90) = (s,0,0,s) * (0,s,0,s) with s = sqrt(1/2):
    // w = s*s = 0.5, x = s*s, y = s*s, z = +s*s. The other order gives z = -0.5.
    Camera camera;
    const float angles[3] = {90, 90, 0};
    camera.setOrientation(angles);
    EXPECT_NEAR(camera.orientation.x, 0.5f, tolerance);
    EXPECT_NEAR(camera.orientation.y, 0.5f, tolerance);
    EXPECT_NEAR(camera.orientation.z, 0.5f, tolerance);
    EXPECT_NEAR(camera.orientation.w, 0.5f, tolerance);
    // Rx(90) * Ry(90) has the rows (0,0,1), (1,0,0), (0,1,0).
    expectVectorNear(camera.axisX, {0, 0, 1});
    expectVectorNear(camera.axisY, {1, 0, 0});
    expectVectorNear(camera.axisZ, {0, 1, 0});
}

TEST(CameraOrientation, NinetyDegreesAboutXLooksDown)
{
    Camera camera;
    camera.target = {1, 2, 3};
    camera.distance = 12;
    const float angles[3] = {90, 0, 0};
    camera.setOrientation(angles);
    // Rx(90) rows: (1,0,0), (0,0,-1), (0,1,0).
    expectVectorNear(camera.axisX, {1, 0, 0});
    expectVectorNear(camera.axisY, {0, 0, -1});
    expectVectorNear(camera.axisZ, {0, 1, 0});
    expectVectorNear(camera.forward, {0, -1, 0});
    expectVectorNear(camera.eye, {1, 14, 3}, 1e-5f);
    // Columns (1,0,0), (0,0,1), (0,-1,0); translation (-1, 3, -14).
    const Matrix expected = {1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, -1, 3, -14, 1};
    expectMatrixNear(camera.view, expected, 1e-5f);
}

TEST(CameraOrientation, ResetRotationAtZoomTwelveMatchesQt)
{
    Camera camera;
    camera.target = {0.5f, -1, 2};
    camera.distance = 12;
    const float angles[3] = {28, -25, 0};
    camera.setOrientation(angles);

    const QQuaternion q = eulerXYZ(28, -25, 0);
    expectVectorNear(camera.axisX, rotationRow(q, 0));
    expectVectorNear(camera.axisY, rotationRow(q, 1));
    expectVectorNear(camera.axisZ, rotationRow(q, 2));
    const Vector3 z = rotationRow(q, 2);
    expectVectorNear(camera.eye, {0.5f + 12 * z[0], -1 + 12 * z[1], 2 + 12 * z[2]}, 1e-4f);

    // The view turns the world by q and then backs off along z by the distance.
    QMatrix4x4 view;
    view.translate(0, 0, -12);
    view.rotate(q);
    view.translate(-0.5f, 1, -2);
    expectMatrixNear(camera.view, fromQt(view), 1e-4f);
}

TEST(CameraOrientation, RollIsAppliedLast)
{
    Camera camera;
    const float angles[3] = {20, 30, 40};
    camera.setOrientation(angles);
    const QQuaternion q = eulerXYZ(20, 30, 40);
    EXPECT_NEAR(camera.orientation.x, q.x(), tolerance);
    EXPECT_NEAR(camera.orientation.y, q.y(), tolerance);
    EXPECT_NEAR(camera.orientation.z, q.z(), tolerance);
    EXPECT_NEAR(camera.orientation.w, q.scalar(), tolerance);
}

TEST(CameraMove, MovesAlongTheCameraAxes)
{
    Camera camera;
    camera.distance = 2;
    const float angles[3] = {90, 0, 0};
    camera.setOrientation(angles);
    const float delta[3] = {1, 2, 3};
    camera.move(delta);
    // 1 * (1,0,0) + 2 * (0,0,-1) + 3 * (0,1,0)
    expectVectorNear(camera.target, {1, 3, -2});
    expectVectorNear(camera.eye, {1, 5, -2});
}

TEST(CameraMath, LookAtStraightDownZ)
{
    const Matrix m = lookAt({0, 0, 5}, {0, 0, 0}, {0, 1, 0});
    Matrix expected = identityMatrix();
    expected[14] = -5;
    expectMatrixNear(m, expected);
}

TEST(CameraMath, LookAtMatchesQt)
{
    const Vector3 eye = {2.75f, 7.8f, 16.0f};
    const Matrix m = lookAt(eye, {0, 0, 0}, {0, 1, 0});
    QMatrix4x4 expected;
    expected.lookAt(QVector3D(2.75f, 7.8f, 16.0f), QVector3D(0, 0, 0), QVector3D(0, 1, 0));
    expectMatrixNear(m, fromQt(expected));
}

TEST(CameraMath, RotateNinetyAboutZTurnsXIntoY)
{
    // The axis is normalised first, so its length does not matter.
    const Matrix m = rotate(identityMatrix(), 90, {0, 0, 2});
    const Matrix expected = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    expectMatrixNear(m, expected);
}

TEST(CameraMath, RotateMultipliesOnTheRightLikeQt)
{
    QMatrix4x4 start;
    start.translate(1, 2, 3);
    start.scale(2, 1, 0.5f);
    const Matrix m = rotate(fromQt(start), 30, {1, 2, 2});
    QMatrix4x4 expected = start;
    expected.rotate(30, 1, 2, 2);
    expectMatrixNear(m, fromQt(expected));
}

TEST(CameraMath, RotateAboutZeroAxisKeepsTheMatrix)
{
    const Matrix m = rotate(identityMatrix(), 45, {0, 0, 0});
    expectMatrixNear(m, identityMatrix(), 0);
}

TEST(CameraMatrixStack, StartsWithIdentityAndFixedBias)
{
    MatrixStack stack;
    EXPECT_EQ(MatrixStack::instance(), &stack);
    expectMatrixNear(stack.projection, identityMatrix(), 0);
    expectMatrixNear(stack.view, identityMatrix(), 0);
    expectMatrixNear(stack.depthProjection, identityMatrix(), 0);
    expectMatrixNear(stack.depthView, identityMatrix(), 0);
    const Matrix3 identity3 = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_EQ(stack.normalMatrix, identity3);
    const Matrix bias = {0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0, 0.5f, 0.5f, 0.5f, 1};
    EXPECT_EQ(stack.depthBias, bias);
}

TEST(CameraMatrixStack, BiasMapsClipCornersToTextureCorners)
{
    MatrixStack stack;
    const Matrix& b = stack.depthBias;
    // (-1, -1, -1, 1) -> (0, 0, 0, 1) and (1, 1, 1, 1) -> (1, 1, 1, 1).
    for (float c : {-1.0f, 1.0f}) {
        for (int r = 0; r < 3; ++r) {
            const float mapped = b[r] * c + b[4 + r] * c + b[8 + r] * c + b[12 + r];
            EXPECT_FLOAT_EQ(mapped, (c + 1) / 2);
        }
    }
}

TEST(CameraMatrixStack, InstanceIsGoneAfterDestruction)
{
    {
        MatrixStack stack;
        ASSERT_NE(MatrixStack::instance(), nullptr);
    }
    EXPECT_EQ(MatrixStack::instance(), nullptr);
}

TEST(CameraMatrixStack, NormalMatrixOfAScaledRotatedView)
{
    MatrixStack stack;
    // View = Rz(90) * diag(2, 1, 1), plus a translation that must not matter.
    // M = [[0,-1,0],[2,0,0],[0,0,1]]; inverse = [[0,0.5,0],[-1,0,0],[0,0,1]];
    // transposed = [[0,-1,0],[0.5,0,0],[0,0,1]], columns (0,0.5,0), (-1,0,0), (0,0,1).
    const Matrix view = {0, 2, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 7, 8, 9, 1};
    stack.setView(view);
    EXPECT_EQ(stack.view, view);
    const Matrix3 expected = {0, 0.5f, 0, -1, 0, 0, 0, 0, 1};
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(stack.normalMatrix[i], expected[i], tolerance) << i;
}

TEST(CameraMatrixStack, NormalMatrixMatchesQtForAGeneralView)
{
    MatrixStack stack;
    QMatrix4x4 view;
    view.translate(1, -2, 3);
    view.rotate(35, 1, 2, 3);
    view.scale(2, 0.5f, 3);
    stack.setView(fromQt(view));
    const QMatrix3x3 expected = view.normalMatrix();
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(stack.normalMatrix[i], expected.constData()[i], tolerance) << i;
}

TEST(CameraMatrixStack, SingularViewKeepsTheLastNormalMatrix)
{
    MatrixStack stack;
    const Matrix scale2 = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    stack.setView(scale2);
    Matrix flat = identityMatrix();
    flat[10] = 0;
    stack.setView(flat);
    EXPECT_EQ(stack.view, flat);
    EXPECT_FLOAT_EQ(stack.normalMatrix[0], 0.5f);
    EXPECT_FLOAT_EQ(stack.normalMatrix[8], 0.5f);
}
