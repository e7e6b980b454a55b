#include "Camera.h"
#include "MatrixStack.h"

#include <QMatrix4x4>
#include <QQuaternion>

#include <gtest/gtest.h>

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

} // namespace

TEST(CameraMath, PerspectiveMatrixFromHandWorkedValues)
{
    // fov 90: t = tan(45 deg) = 1; aspect 2 -> m00 = 0.5; near 1, far 3:
    // m22 = -(3 + 1) / 2 = -2, m32 = -(2 * 3 * 1) / 2 = -3.
    expectMatrixNear(perspectiveMatrix(90, 2, 1, 3),
                     {0.5f, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0});
    // The shadow pass: 1 / tan(22.5 deg), -(252 / 248), -(1000 / 248).
    const float f = 2.4142136f;
    expectMatrixNear(perspectiveMatrix(45, 1, 2, 250),
                     {f, 0, 0, 0, 0, f, 0, 0, 0, 0, -1.016129f, -1, 0, 0, -4.032258f, 0});
}

TEST(CameraProjection, OrthoAndPerspectiveArePublishedToTheStackWhenThereIsOne)
{
    Camera camera;
    // Without a stack the projection stays local.
    ASSERT_EQ(MatrixStack::instance(), nullptr);
    // l 0, r 100, b 0, t 50: dx = 100 * 0.002 = 0.2, dy = 0.1;
    // m30 = -(100 * 0.002) / 0.2 = -1, m31 = -(50 * 0.002) / 0.1 = -1.
    camera.setOrtho(0, 100, 0, 50);
    expectMatrixNear(camera.projection, {10, 0, 0, 0, 0, 20, 0, 0, 0, 0, -0.001f, 0, -1, -1, 0, 1},
                     1e-4f);

    MatrixStack stack;
    // A centred box: dx = 0.4 -> m00 = 5; dy = 0.2 -> m11 = 10.
    camera.setOrtho(-100, 100, -50, 50);
    expectMatrixNear(camera.projection, {5, 0, 0, 0, 0, 10, 0, 0, 0, 0, -0.001f, 0, 0, 0, 0, 1},
                     1e-4f);
    expectMatrixNear(stack.projection, camera.projection, 0);
    camera.fov = 90;
    camera.aspect = 2;
    camera.near = 1;
    camera.far = 3;
    camera.setPerspective();
    expectMatrixNear(camera.projection, perspectiveMatrix(90, 2, 1, 3), 0);
    expectMatrixNear(stack.projection, camera.projection, 0);
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
    expectVectorNear(camera.eye, {1, 14, 3});
    // Columns (1,0,0), (0,0,1), (0,-1,0); translation (-1, 3, -14).
    const Matrix expected = {1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, -1, 3, -14, 1};
    expectMatrixNear(camera.view, expected);

    // 1 * axisX + 2 * axisY + 3 * axisZ.
    const float delta[3] = {1, 2, 3};
    camera.move(delta);
    expectVectorNear(camera.target, {2, 5, 1});
    expectVectorNear(camera.eye, {2, 17, 1});
}

TEST(CameraOrientation, EulerAnglesTurnAsXTimesYTimesZLikeQt)
{
    struct Case
    {
        float x, y, z;
    };
    // {90, 90, 0} tells the order apart: qX * qY has z = +0.5, qY * qX -0.5.
    const Case cases[] = {{90, 90, 0}, {28, -25, 0}, {20, 30, 40}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.x << " " << c.y << " " << c.z);
        Camera camera;
        camera.target = {0.5f, -1, 2};
        camera.distance = 12;
        const float angles[3] = {c.x, c.y, c.z};
        camera.setOrientation(angles);

        const QQuaternion q = QQuaternion::fromAxisAndAngle(1, 0, 0, c.x) *
                              QQuaternion::fromAxisAndAngle(0, 1, 0, c.y) *
                              QQuaternion::fromAxisAndAngle(0, 0, 1, c.z);
        EXPECT_NEAR(camera.orientation.x, q.x(), tolerance);
        EXPECT_NEAR(camera.orientation.y, q.y(), tolerance);
        EXPECT_NEAR(camera.orientation.z, q.z(), tolerance);
        EXPECT_NEAR(camera.orientation.w, q.scalar(), tolerance);
        expectVectorNear(camera.axisX, rotationRow(q, 0));
        expectVectorNear(camera.axisY, rotationRow(q, 1));
        const Vector3 z = rotationRow(q, 2);
        expectVectorNear(camera.axisZ, z);
        expectVectorNear(camera.eye, {0.5f + 12 * z[0], -1 + 12 * z[1], 2 + 12 * z[2]}, 1e-4f);

        // The view turns the world by q and then backs off along z by the distance.
        QMatrix4x4 view;
        view.translate(0, 0, -12);
        view.rotate(q);
        view.translate(-0.5f, 1, -2);
        expectMatrixNear(camera.view, fromQt(view), 1e-4f);
    }
}

TEST(CameraMath, LookAtAndRotateMatchQt)
{
    Matrix down = identityMatrix();
    down[14] = -5;
    expectMatrixNear(lookAt({0, 0, 5}, {0, 0, 0}, {0, 1, 0}), down);
    QMatrix4x4 look;
    look.lookAt(QVector3D(2.75f, 7.8f, 16.0f), QVector3D(0, 0, 0), QVector3D(0, 1, 0));
    expectMatrixNear(lookAt({2.75f, 7.8f, 16.0f}, {0, 0, 0}, {0, 1, 0}), fromQt(look));

    // The axis is normalised first, so its length does not matter.
    const Matrix quarterTurn = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    expectMatrixNear(rotate(identityMatrix(), 90, {0, 0, 2}), quarterTurn);
    // The rotation multiplies on the right.
    QMatrix4x4 start;
    start.translate(1, 2, 3);
    start.scale(2, 1, 0.5f);
    QMatrix4x4 rotated = start;
    rotated.rotate(30, 1, 2, 2);
    expectMatrixNear(rotate(fromQt(start), 30, {1, 2, 2}), fromQt(rotated));
    // No axis, no turn.
    expectMatrixNear(rotate(identityMatrix(), 45, {0, 0, 0}), identityMatrix(), 0);
}

TEST(CameraMatrixStack, StartsWithIdentityAndFixedBias)
{
    {
        MatrixStack stack;
        EXPECT_EQ(MatrixStack::instance(), &stack);
        expectMatrixNear(stack.projection, identityMatrix(), 0);
        expectMatrixNear(stack.view, identityMatrix(), 0);
        expectMatrixNear(stack.depthProjection, identityMatrix(), 0);
        expectMatrixNear(stack.depthView, identityMatrix(), 0);
        const Matrix3 identity3 = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        EXPECT_EQ(stack.normalMatrix, identity3);
        // Clip space -1..1 onto texture space 0..1.
        const Matrix bias = {0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0, 0.5f, 0.5f, 0.5f, 1};
        EXPECT_EQ(stack.depthBias, bias);
    }
    EXPECT_EQ(MatrixStack::instance(), nullptr);
}

TEST(CameraMatrixStack, NormalMatrixIsTheInverseTransposeOfTheView)
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

    QMatrix4x4 general;
    general.translate(1, -2, 3);
    general.rotate(35, 1, 2, 3);
    general.scale(2, 0.5f, 3);
    stack.setView(fromQt(general));
    const QMatrix3x3 fromQtNormal = general.normalMatrix();
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(stack.normalMatrix[i], fromQtNormal.constData()[i], tolerance) << i;
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
