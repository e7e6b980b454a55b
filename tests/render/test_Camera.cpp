#include "Camera.h"
#include "MathChecks.h"
#include "MatrixStack.h"

#include <QQuaternion>

#include <gtest/gtest.h>

namespace {
// Row r of the rotation matrix of q: the camera axes are the rows.
Vector3 rotationRow(const QQuaternion& q, int r)
{
    const QMatrix3x3 m = q.toRotationMatrix();
    return {m(r, 0), m(r, 1), m(r, 2)};
}
} // namespace

TEST(CameraProjection, OrthoAndPerspectiveFromHandWorkedValuesReachTheStackIfAny)
{
    Camera camera;
    ASSERT_EQ(MatrixStack::instance(), nullptr);
    // l 0, r 100, b 0, t 50: dx = 100 * 0.002 = 0.2, dy = 0.1;
    // m30 = -(100 * 0.002) / 0.2 = -1, m31 = -(50 * 0.002) / 0.1 = -1.
    camera.setOrtho(0, 100, 0, 50);
    expectNear(camera.projection, {10, 0, 0, 0, 0, 20, 0, 0, 0, 0, -0.001f, 0, -1, -1, 0, 1},
               1e-4f);

    MatrixStack stack;
    camera.setOrtho(-100, 100, -50, 50);
    expectNear(camera.projection, {5, 0, 0, 0, 0, 10, 0, 0, 0, 0, -0.001f, 0, 0, 0, 0, 1}, 1e-4f);
    EXPECT_EQ(stack.projection, camera.projection);
    camera.fov = 90;
    camera.aspect = 2;
    camera.near = 1;
    camera.far = 3;
    camera.setPerspective();
    // t = tan(45 deg) = 1; aspect 2 -> m00 = 0.5; m22 = -(3 + 1) / 2 = -2,
    // m32 = -(2 * 3 * 1) / 2 = -3.
    expectNear(camera.projection, {0.5f, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0});
    EXPECT_EQ(stack.projection, camera.projection);
}

TEST(CameraOrientation, EulerAnglesTurnAsXTimesYTimesZLikeQt)
{
    struct Case
    {
        float x, y, z;
    };
    // {90, 90, 0} tells the order apart: qX * qY has z = +0.5, qY * qX -0.5.
    const Case cases[] = {{90, 0, 0}, {90, 90, 0}, {28, -25, 0}, {20, 30, 40}};
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
        expectNear(std::array<float, 4>{camera.orientation.x, camera.orientation.y,
                                        camera.orientation.z, camera.orientation.w},
                   {q.x(), q.y(), q.z(), q.scalar()});
        const Vector3 x = rotationRow(q, 0), y = rotationRow(q, 1), z = rotationRow(q, 2);
        expectNear(camera.axisX, x);
        expectNear(camera.axisY, y);
        expectNear(camera.axisZ, z);
        expectNear(camera.forward, {-z[0], -z[1], -z[2]});
        expectNear(camera.eye, {0.5f + 12 * z[0], -1 + 12 * z[1], 2 + 12 * z[2]}, 1e-4f);

        // The view turns the world by q and then backs off along z by the distance.
        QMatrix4x4 view;
        view.translate(0, 0, -12);
        view.rotate(q);
        view.translate(-0.5f, 1, -2);
        expectNear(camera.view, fromQt(view), 1e-4f);

        // A move goes along the camera's own axes: 1 x + 2 y + 3 z.
        const float delta[3] = {1, 2, 3};
        camera.move(delta);
        Vector3 moved;
        for (int i = 0; i < 3; ++i)
            moved[i] = x[i] + 2 * y[i] + 3 * z[i];
        expectNear(camera.target, {0.5f + moved[0], -1 + moved[1], 2 + moved[2]}, 1e-4f);
    }
}

TEST(CameraMath, LookAtAndRotateMatchQt)
{
    QMatrix4x4 look;
    look.lookAt(QVector3D(2.75f, 7.8f, 16.0f), QVector3D(0, 0, 0), QVector3D(0, 1, 0));
    expectNear(lookAt({2.75f, 7.8f, 16.0f}, {0, 0, 0}, {0, 1, 0}), fromQt(look));

    // The axis is normalised first, so its length does not matter.
    expectNear(rotate(identityMatrix(), 90, {0, 0, 2}),
               {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    // The rotation multiplies on the right.
    QMatrix4x4 start;
    start.translate(1, 2, 3);
    start.scale(2, 1, 0.5f);
    QMatrix4x4 rotated = start;
    rotated.rotate(30, 1, 2, 2);
    expectNear(rotate(fromQt(start), 30, {1, 2, 2}), fromQt(rotated));
    // No axis, no turn.
    EXPECT_EQ(rotate(identityMatrix(), 45, {0, 0, 0}), identityMatrix());
}

TEST(CameraMatrixStack, NormalMatrixIsTheInverseTransposeOfTheView)
{
    {
        MatrixStack stack;
        EXPECT_EQ(MatrixStack::instance(), &stack);
        // Clip space -1..1 onto texture space 0..1.
        EXPECT_EQ(stack.depthBias,
                  (Matrix{0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0, 0.5f, 0.5f, 0.5f, 1}));

        // A translation must not matter, a scale must.
        QMatrix4x4 general;
        general.translate(1, -2, 3);
        general.rotate(35, 1, 2, 3);
        general.scale(2, 0.5f, 3);
        stack.setView(fromQt(general));
        const QMatrix3x3 normal = general.normalMatrix();
        Matrix3 expected;
        std::copy(normal.constData(), normal.constData() + 9, expected.begin());
        expectNear(stack.normalMatrix, expected);

        // A singular view keeps the last normal matrix.
        const Matrix3 last = stack.normalMatrix;
        Matrix flat = identityMatrix();
        flat[10] = 0;
        stack.setView(flat);
        EXPECT_EQ(stack.normalMatrix, last);
    }
    EXPECT_EQ(MatrixStack::instance(), nullptr);
}
