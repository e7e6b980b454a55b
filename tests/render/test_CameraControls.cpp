#include "CameraControls.h"
#include "LogCapture.h"
#include "MatrixStack.h"
#include "QtPrinters.h"

#include <QFile>
#include <QQuaternion>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr float tolerance = 1e-5f;

void expectVectorNear(const Vector3& actual, const Vector3& expected, float tol = tolerance)
{
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(actual[i], expected[i], tol) << "component " << i;
}

// The camera axes are the rows of the rotation of qX * qY * qZ.
Vector3 expectedAxisZ(float x, float y, float z)
{
    const QQuaternion q = QQuaternion::fromAxisAndAngle(1, 0, 0, x) *
                          QQuaternion::fromAxisAndAngle(0, 1, 0, y) *
                          QQuaternion::fromAxisAndAngle(0, 0, 1, z);
    const QMatrix3x3 m = q.toRotationMatrix();
    return {m(2, 0), m(2, 1), m(2, 2)};
}

// Orientation a bare camera gets for these angles.
Quaternion orientationFor(float x, float y, float z)
{
    Camera reference;
    const float angles[3] = {x, y, z};
    reference.setOrientation(angles);
    return reference.orientation;
}

void expectOrientation(const Quaternion& actual, const Quaternion& expected)
{
    EXPECT_NEAR(actual.x, expected.x, 1e-6f);
    EXPECT_NEAR(actual.y, expected.y, 1e-6f);
    EXPECT_NEAR(actual.z, expected.z, 1e-6f);
    EXPECT_NEAR(actual.w, expected.w, 1e-6f);
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

class CameraControlsTest : public ::testing::Test
{
protected:
    CameraControlsTest()
    {
        // An 800 x 400 viewport: aspect 2, ortho box (-400, 400, 200, -200).
        controls.resize(800, 400);
        controls.resetCamera();
        recordSignals();
    }

    // Every signal by name and value, in the order they arrive.
    void recordSignals()
    {
        auto record = [this](const char* name) {
            return [this, name](auto value) {
                events.append(QString::fromLatin1(name) + QLatin1Char('=') +
                              QString::number(value));
            };
        };
        CameraControls* c = &controls;
        QObject::connect(c, &CameraControls::cameraFovChanged, c, record("fov"));
        QObject::connect(c, &CameraControls::cameraZoomChanged, c, record("zoom"));
        QObject::connect(c, &CameraControls::cameraRotationXChanged, c, record("rx"));
        QObject::connect(c, &CameraControls::cameraRotationYChanged, c, record("ry"));
        QObject::connect(c, &CameraControls::cameraRotationZChanged, c, record("rz"));
        QObject::connect(c, &CameraControls::cameraPositionXChanged, c, record("px"));
        QObject::connect(c, &CameraControls::cameraPositionYChanged, c, record("py"));
        QObject::connect(c, &CameraControls::cameraPositionZChanged, c, record("pz"));
        QObject::connect(c, &CameraControls::cameraTypeIndexChanged, c, record("type"));
        QObject::connect(c, &CameraControls::cameraViewIndexChanged, c, record("view"));
    }

    // One left drag: press at pressMs, move by (dx, dy) pixels, release at releaseMs.
    void drag(Qt::MouseButton button, double dx, double dy, qint64 pressMs, qint64 releaseMs)
    {
        const double x = controls.lastMouseX, y = controls.lastMouseY;
        controls.press(button, Qt::NoModifier, pressMs, false);
        controls.move(x + dx, y + dy, button);
        controls.release(releaseMs);
    }

    MatrixStack stack;
    Camera camera;
    CameraControls controls{camera};
    QStringList events;
};

} // namespace

TEST_F(CameraControlsTest, ResetSetsTheStartView)
{
    controls.setPositionX(3);
    controls.setZoom(30);
    controls.setFov(80);
    controls.spin = {1, 2, 3};
    events.clear();

    controls.resetCamera();
    expectVectorNear(controls.position, {0, 0, 0}, 0);
    expectVectorNear(controls.rotation, {28, -25, 0}, 0);
    expectVectorNear(controls.spin, {0, 0, 0}, 0);
    EXPECT_EQ(controls.zoom, 12);
    EXPECT_EQ(controls.fov, 55);
    EXPECT_EQ(camera.distance, 12);
    expectVectorNear(camera.target, {0, 0, 0}, 0);
    const Vector3 z = expectedAxisZ(28, -25, 0);
    expectVectorNear(camera.eye, {12 * z[0], 12 * z[1], 12 * z[2]}, 1e-4f);
}

TEST_F(CameraControlsTest, ResetEmitsFovZoomRotationPositionInOrder)
{
    QSignalSpy fovSpy(&controls, &CameraControls::cameraFovChanged);
    controls.resetCamera();
    ASSERT_EQ(fovSpy.count(), 1);
    EXPECT_EQ(fovSpy.at(0).at(0).toInt(), 55);
    const QStringList expected = {"fov=55", "zoom=12", "rx=28", "ry=-25",
                                  "rz=0",   "px=0",    "py=0",  "pz=0"};
    EXPECT_EQ(events, expected);
}

TEST_F(CameraControlsTest, ResetBuildsThePerspectiveProjection)
{
    // t = tan(27.5 deg) = 0.52056705, aspect 2: m00 = 1 / (2t), m11 = 1 / t,
    // m22 = -400.1 / 399.9, m32 = -80 / 399.9.
    const float t = 0.52056705f;
    EXPECT_EQ(camera.projectionType, 1);
    EXPECT_NEAR(camera.projection[0], 1 / (2 * t), 1e-5f);
    EXPECT_NEAR(camera.projection[5], 1 / t, 1e-5f);
    EXPECT_NEAR(camera.projection[10], -1.00050013f, 1e-6f);
    EXPECT_NEAR(camera.projection[11], -1, 0);
    EXPECT_NEAR(camera.projection[14], -0.20005001f, 1e-6f);
    EXPECT_EQ(camera.projection[15], 0);
    EXPECT_EQ(camera.aspect, 2);
    EXPECT_EQ(stack.projection, camera.projection);
}

TEST_F(CameraControlsTest, OrthographicProjectionFromTheBox)
{
    // zoom 12, aspect 2 -> k = 6: l -2400, r 2400, t 1200, b -1200.
    // dx = 4800 * 0.002 = 9.6, dy = 2400 * 0.002 = 4.8.
    controls.setCameraType(1);
    EXPECT_EQ(camera.projectionType, 0);
    EXPECT_EQ(controls.typeIndex, 1);
    EXPECT_NEAR(camera.projection[0], 2 / 9.6f, 1e-6f);
    EXPECT_NEAR(camera.projection[5], 2 / 4.8f, 1e-6f);
    EXPECT_NEAR(camera.projection[10], -0.001f, 1e-9f);
    EXPECT_EQ(camera.projection[11], 0);
    EXPECT_NEAR(camera.projection[12], 0, 1e-6f);
    EXPECT_NEAR(camera.projection[13], 0, 1e-6f);
    EXPECT_EQ(camera.projection[15], 1);
    EXPECT_EQ(stack.projection, camera.projection);

    // Zooming out widens the box: zoom 13 -> dx = 4800 * 13 / 12 * 0.002 = 10.4.
    controls.wheel(-120);
    EXPECT_NEAR(camera.projection[0], 2 / 10.4f, 1e-6f);
}

TEST_F(CameraControlsTest, CameraTypeOutsideTheListLeavesTheType)
{
    controls.setCameraType(1);
    controls.setCameraType(2);
    EXPECT_EQ(camera.projectionType, 0);
    EXPECT_EQ(controls.typeIndex, 1);
    controls.setCameraType(-1);
    EXPECT_EQ(camera.projectionType, 0);
    controls.setCameraType(0);
    EXPECT_EQ(camera.projectionType, 1);
    EXPECT_EQ(controls.typeIndex, 0);
}

TEST_F(CameraControlsTest, ResizeSetsTheOrthoBoxFromThePixelSize)
{
    controls.resize(640, 480);
    EXPECT_EQ(controls.ortho[0], -320);
    EXPECT_EQ(controls.ortho[1], 320);
    EXPECT_EQ(controls.ortho[2], 240);
    EXPECT_EQ(controls.ortho[3], -240);
    // Perspective follows the new aspect 4 / 3.
    EXPECT_NEAR(camera.projection[0], 1 / (0.52056705f * (640.0f / 480.0f)), 1e-5f);
}

TEST_F(CameraControlsTest, TopLooksDownAndBottomLooksUp)
{
    controls.setPositionX(1);
    controls.setViewPreset(1);
    expectVectorNear(controls.rotation, {90, 0, 0}, 0);
    expectVectorNear(camera.eye, {1, 12, 0}, 1e-5f);
    controls.setViewPreset(2);
    expectVectorNear(controls.rotation, {-90, 0, 0}, 0);
    expectVectorNear(camera.eye, {1, -12, 0}, 1e-5f);
    EXPECT_EQ(camera.distance, 12);
    EXPECT_EQ(events, QStringList({"rx=90", "ry=0", "rz=0", "rx=-90", "ry=0", "rz=0"}));
}

TEST_F(CameraControlsTest, SidePresetsTurnAboutY)
{
    controls.setViewPreset(3);
    expectVectorNear(controls.rotation, {0, -90, 0}, 0);
    expectVectorNear(camera.eye, {12, 0, 0}, 1e-5f); // Ry(-90) third row (1, 0, 0)
    controls.setViewPreset(4);
    expectVectorNear(controls.rotation, {0, 90, 0}, 0);
    expectVectorNear(camera.eye, {-12, 0, 0}, 1e-5f);
    controls.setViewPreset(5);
    expectVectorNear(camera.eye, {0, 0, 12}, 1e-5f);
    controls.setViewPreset(6);
    expectVectorNear(controls.rotation, {0, 180, 0}, 0);
    expectVectorNear(camera.eye, {0, 0, -12}, 1e-4f);
}

TEST_F(CameraControlsTest, PresetZeroResetsAndUnknownIndexDoesNothing)
{
    controls.setViewPreset(1);
    controls.setZoom(20);
    controls.setViewPreset(0);
    expectVectorNear(controls.rotation, {28, -25, 0}, 0);
    EXPECT_EQ(controls.zoom, 12);
    events.clear();
    controls.setViewPreset(7);
    EXPECT_TRUE(events.isEmpty());
    expectVectorNear(controls.rotation, {28, -25, 0}, 0);
}

TEST_F(CameraControlsTest, WheelStepsAndClampsZoom)
{
    controls.wheel(120);
    EXPECT_EQ(controls.zoom, 11);
    EXPECT_EQ(camera.distance, 11);
    controls.wheel(-1);
    controls.wheel(-1);
    EXPECT_EQ(controls.zoom, 13);
    controls.wheel(0);
    EXPECT_EQ(controls.zoom, 13);
    for (int i = 0; i < 60; ++i)
        controls.wheel(-120);
    EXPECT_EQ(controls.zoom, 50);
    EXPECT_EQ(camera.distance, 50);
    for (int i = 0; i < 60; ++i)
        controls.wheel(120);
    EXPECT_EQ(controls.zoom, 1);
    EXPECT_EQ(events.last(), "zoom=1");
    EXPECT_EQ(events.first(), "zoom=11");
}

TEST_F(CameraControlsTest, OrbitTurnsThreeTenthsOfADegreePerPixel)
{
    controls.move(100, 100, Qt::NoButton); // hover: only the position is kept
    EXPECT_TRUE(events.isEmpty());
    controls.press(Qt::LeftButton, Qt::NoModifier, 0, false);
    controls.move(110, 120, Qt::LeftButton);
    expectVectorNear(controls.rotation, {34, -22, 0});
    expectVectorNear(controls.dragSum, {6, 3, 0});
    expectOrientation(camera.orientation, orientationFor(34, -22, 0));
    EXPECT_EQ(events, QStringList({"rx=34", "ry=-22", "rz=0"}));
    EXPECT_EQ(controls.lastMouseX, 110);
    EXPECT_EQ(controls.lastMouseY, 120);
}

TEST_F(CameraControlsTest, FlickSpinIsDragSumPerSecond)
{
    controls.move(100, 100, Qt::NoButton);
    controls.press(Qt::LeftButton, Qt::NoModifier, 0, false);
    controls.move(110, 100, Qt::LeftButton);
    controls.move(110, 120, Qt::LeftButton);
    controls.release(500);
    // dragSum (6, 3, 0) over 0.5 s.
    expectVectorNear(controls.spin, {12, 6, 0});
}

TEST_F(CameraControlsTest, ClickWithoutMotionStopsTheSpin)
{
    drag(Qt::LeftButton, 10, 0, 0, 500);
    ASSERT_NEAR(controls.spin[1], 6, tolerance);
    controls.press(Qt::LeftButton, Qt::NoModifier, 1000, false);
    controls.release(1000);
    expectVectorNear(controls.spin, {0, 0, 0}, 0);
}

TEST_F(CameraControlsTest, VeryShortHoldCountsAsOneMillisecond)
{
    drag(Qt::LeftButton, 10, 0, 10, 11); // held 1 -> factor 1000
    EXPECT_NEAR(controls.spin[1], 3000, 1e-2f);
    drag(Qt::LeftButton, 10, 0, 10, 10); // held 0 -> 1
    EXPECT_NEAR(controls.spin[1], 3000, 1e-2f);
    drag(Qt::LeftButton, 10, 0, 10, 12); // held 2 -> factor 500
    EXPECT_NEAR(controls.spin[1], 1500, 1e-2f);
}

TEST_F(CameraControlsTest, OrbitWrapsPastHalfTurnWhileDragSumDoesNot)
{
    controls.setRotationY(170);
    controls.press(Qt::LeftButton, Qt::NoModifier, 0, false);
    controls.move(50, 0, Qt::LeftButton); // +15 degrees
    EXPECT_NEAR(controls.rotation[1], -175, 1e-4f);
    EXPECT_NEAR(controls.dragSum[1], 15, 1e-5f);
    controls.release(250);
    EXPECT_NEAR(controls.spin[1], 60, 1e-4f);
    expectOrientation(camera.orientation, orientationFor(28, -175, 0));

    controls.setRotationX(-170);
    controls.press(Qt::LeftButton, Qt::NoModifier, 0, false);
    controls.move(50, -50, Qt::LeftButton); // x -15
    EXPECT_NEAR(controls.rotation[0], 175, 1e-4f);
    EXPECT_NEAR(controls.dragSum[0], -15, 1e-5f);
}

TEST_F(CameraControlsTest, CtrlPressOutsideArmourModeFiresNothingButClearsSpin)
{
    drag(Qt::LeftButton, 10, 10, 0, 500);
    ASSERT_NE(controls.spin[0], 0);
    EXPECT_FALSE(controls.press(Qt::LeftButton, Qt::ControlModifier, 700, false));
    expectVectorNear(controls.spin, {0, 0, 0}, 0);
    expectVectorNear(controls.dragSum, {0, 0, 0}, 0);
    EXPECT_EQ(controls.pressMs, 700);
}

TEST_F(CameraControlsTest, ArmourRayNeedsExactlyCtrlAndExactlyLeft)
{
    EXPECT_TRUE(controls.press(Qt::LeftButton, Qt::ControlModifier, 0, true));
    EXPECT_FALSE(controls.press(Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier, 0, true));
    EXPECT_FALSE(controls.press(Qt::LeftButton | Qt::RightButton, Qt::ControlModifier, 0, true));
    EXPECT_FALSE(controls.press(Qt::RightButton, Qt::ControlModifier, 0, true));
    EXPECT_FALSE(controls.press(Qt::LeftButton, Qt::NoModifier, 0, true));
}

TEST_F(CameraControlsTest, PanMovesTheTargetAndBlocksPositionSlots)
{
    controls.setViewPreset(5); // axes are the world axes
    events.clear();
    controls.press(Qt::RightButton, Qt::NoModifier, 0, false);
    controls.move(150, 300, Qt::RightButton); // 1 and 2 scene units
    expectVectorNear(camera.target, {-1, 2, 0});
    expectVectorNear(controls.position, {-1, 2, 0});
    EXPECT_TRUE(controls.panning);
    EXPECT_EQ(events, QStringList({"px=-1", "py=2", "pz=0"}));

    controls.setPositionX(5);
    EXPECT_NEAR(camera.target[0], -1, tolerance);
    controls.release(100);
    EXPECT_FALSE(controls.panning);
    expectVectorNear(controls.spin, {0, 0, 0}, 0);
    controls.setPositionX(5);
    EXPECT_NEAR(camera.target[0], 5, tolerance);
    EXPECT_NEAR(camera.eye[0], 5, tolerance);
}

TEST_F(CameraControlsTest, PanWithInvertedAxes)
{
    controls.setViewPreset(5);
    controls.invertX = -1;
    controls.invertY = -1;
    controls.press(Qt::RightButton, Qt::NoModifier, 0, false);
    controls.move(150, 300, Qt::RightButton);
    expectVectorNear(camera.target, {1, -2, 0});
    expectVectorNear(controls.position, {1, -2, 0});
    expectVectorNear(camera.eye, {1, -2, 12});
}

TEST_F(CameraControlsTest, PanFollowsTheCameraAxes)
{
    controls.setViewPreset(1); // Top: axisY = (0, 0, -1)
    controls.press(Qt::RightButton, Qt::NoModifier, 0, false);
    controls.move(0, 150, Qt::RightButton);
    expectVectorNear(camera.target, {0, 0, -1});
}

TEST_F(CameraControlsTest, MiddleDragRolls)
{
    controls.press(Qt::MiddleButton, Qt::NoModifier, 0, false);
    controls.move(0, 26, Qt::MiddleButton);
    EXPECT_NEAR(controls.rotation[2], -2, 1e-5f);
    EXPECT_EQ(events, QStringList({"rz=-2"}));
    expectOrientation(camera.orientation, orientationFor(28, -25, -2));
    expectVectorNear(controls.dragSum, {0, 0, 0}, 0);
}

TEST_F(CameraControlsTest, OtherButtonCombinationsMoveNothing)
{
    const Quaternion before = camera.orientation;
    controls.move(40, 40, Qt::LeftButton | Qt::RightButton);
    EXPECT_TRUE(events.isEmpty());
    expectOrientation(camera.orientation, before);
    EXPECT_EQ(controls.lastMouseX, 40);
}

TEST_F(CameraControlsTest, CameraTurnsInTenthsOfADegree)
{
    controls.setRotationX(10.04);
    EXPECT_NEAR(controls.rotation[0], 10.04f, 1e-6f);
    expectOrientation(camera.orientation, orientationFor(10.0f, -25, 0));

    // A roll of one pixel is -1/13 degree; the camera shows -0.1.
    controls.setRotationX(0);
    controls.press(Qt::MiddleButton, Qt::NoModifier, 0, false);
    controls.move(0, 1, Qt::MiddleButton);
    EXPECT_NEAR(controls.rotation[2], -1.0f / 13, 1e-6f);
    expectOrientation(camera.orientation, orientationFor(0, -25, -0.1f));
}

TEST_F(CameraControlsTest, AutoRotationStepUsesTheSpin)
{
    controls.setRotationY(170);
    controls.spin = {0, 70, 0};
    controls.autoRotateStep(100); // 100 / 7000 * 70 = 1 degree
    EXPECT_NEAR(controls.rotation[1], 171, 1e-4f);
    controls.autoRotateStep(1000); // +10 -> 181 -> -179
    EXPECT_NEAR(controls.rotation[1], -179, 1e-4f);
    expectOrientation(camera.orientation, orientationFor(28, -179, 0));
    EXPECT_EQ(events, QStringList({"ry=171", "ry=-179"}));

    controls.spin = {0, 0, 0};
    controls.autoRotateStep(5000);
    EXPECT_NEAR(controls.rotation[1], -179, 1e-4f);
}

TEST_F(CameraControlsTest, FovAndZoomSlots)
{
    controls.setFov(90);
    EXPECT_EQ(controls.fov, 90);
    EXPECT_EQ(camera.fov, 90);
    // tan(45 deg) = 1, aspect 2.
    EXPECT_NEAR(camera.projection[0], 0.5f, 1e-5f);
    controls.setZoom(20);
    EXPECT_EQ(camera.distance, 20);
    const Vector3 z = expectedAxisZ(28, -25, 0);
    expectVectorNear(camera.eye, {20 * z[0], 20 * z[1], 20 * z[2]}, 1e-4f);
    EXPECT_EQ(events, QStringList({"fov=90", "zoom=20"}));
}

TEST_F(CameraControlsTest, SavedFileHoldsTheViewNumbers)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("view.Camera");
    controls.setPositionX(1.5);
    controls.setPositionY(-2);
    controls.setPositionZ(1.0 / 3);
    controls.setRotationX(10.5);
    controls.setFov(40);
    controls.setZoom(20);
    controls.setCameraType(1);
    ASSERT_TRUE(controls.saveView(path));
    EXPECT_EQ(QString::fromUtf8(readFile(path)), "<Camera>\n"
                                                 " <Target>1.5 -2 0.333333</Target>\n"
                                                 " <Rotation>10.5 -25 0</Rotation>\n"
                                                 " <Fov>40</Fov>\n"
                                                 " <Zoom>20</Zoom>\n"
                                                 " <Type>1</Type>\n"
                                                 "</Camera>\n");
}

TEST_F(CameraControlsTest, SaveChangeLoadRestoresTheView)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("view.Camera");
    controls.setPositionX(1.5);
    controls.setPositionY(-2);
    controls.setPositionZ(3.25);
    controls.setRotationX(10.5);
    controls.setRotationY(-20);
    controls.setRotationZ(30);
    controls.setFov(40);
    controls.setZoom(20);
    controls.setCameraType(1);
    ASSERT_TRUE(controls.saveView(path));

    controls.resetCamera();
    controls.setCameraType(0);
    controls.setViewPreset(2);
    controls.setFov(70);
    events.clear();

    ASSERT_TRUE(controls.loadView(path));
    expectVectorNear(controls.position, {1.5f, -2, 3.25f}, 0);
    expectVectorNear(controls.rotation, {10.5f, -20, 30}, 0);
    EXPECT_EQ(controls.fov, 40);
    EXPECT_EQ(controls.zoom, 20);
    EXPECT_EQ(controls.typeIndex, 1);
    EXPECT_EQ(camera.projectionType, 0);
    expectVectorNear(camera.target, {1.5f, -2, 3.25f}, 0);
    EXPECT_EQ(camera.distance, 20);
    expectOrientation(camera.orientation, orientationFor(10.5f, -20, 30));
    // Orthographic at zoom 20, aspect 2: dx = 800 * 10 * 0.002 = 16.
    EXPECT_NEAR(camera.projection[0], 2 / 16.0f, 1e-6f);
    EXPECT_EQ(stack.projection, camera.projection);
    const QStringList expected = {"rx=10.5", "ry=-20", "rz=30",   "px=1.5", "py=-2",
                                  "pz=3.25", "fov=40", "zoom=20", "type=1", "view=0"};
    EXPECT_EQ(events, expected);
}

TEST_F(CameraControlsTest, LoadOfAMissingFileLogsAndKeepsTheView)
{
    LogCapture log;
    QTemporaryDir dir;
    controls.setZoom(30);
    events.clear();
    EXPECT_FALSE(controls.loadView(dir.filePath("absent.Camera")));
    EXPECT_TRUE(log.contains("[Error] Could not open camera file."))
        << log.lines.join('\n').toStdString();
    EXPECT_EQ(controls.zoom, 30);
    EXPECT_EQ(camera.distance, 30);
    EXPECT_TRUE(events.isEmpty());
}

TEST_F(CameraControlsTest, SaveIntoAMissingDirectoryLogs)
{
    LogCapture log;
    QTemporaryDir dir;
    EXPECT_FALSE(controls.saveView(dir.filePath("no/such/dir/view.Camera")));
    EXPECT_TRUE(log.contains("[Error] Could not open camera file."));
}

TEST_F(CameraControlsTest, LoadOfTextThatIsNoXmlChangesNothing)
{
    LogCapture log;
    QTemporaryDir dir;
    const QString path = dir.filePath("broken.Camera");
    writeFile(path, "this is <not xml");
    controls.setPositionX(4);
    controls.setZoom(30);
    events.clear();
    EXPECT_FALSE(controls.loadView(path));
    EXPECT_TRUE(log.lines.isEmpty());
    EXPECT_TRUE(events.isEmpty());
    EXPECT_EQ(controls.zoom, 30);
    EXPECT_NEAR(camera.target[0], 4, 0);
    EXPECT_EQ(camera.distance, 30);
}

TEST_F(CameraControlsTest, MissingElementsReadAsZero)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("partial.Camera");
    writeFile(path, "<Camera>\n <Zoom>7</Zoom>\n <Rotation>1 2</Rotation>\n</Camera>\n");
    controls.setCameraType(1);
    controls.setPositionX(4);
    ASSERT_TRUE(controls.loadView(path));
    EXPECT_EQ(controls.zoom, 7);
    EXPECT_EQ(controls.fov, 0);
    // A malformed triple reads as zeros.
    expectVectorNear(controls.rotation, {0, 0, 0}, 0);
    expectVectorNear(camera.target, {0, 0, 0}, 0);
    EXPECT_EQ(controls.typeIndex, 0);
    EXPECT_EQ(camera.projectionType, 1);
    EXPECT_EQ(camera.distance, 7);
}
