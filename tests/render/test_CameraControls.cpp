#include "CameraControls.h"
#include "LogCapture.h"
#include "MathChecks.h"
#include "MatrixStack.h"
#include "QtPrinters.h"

#include <QFile>
#include <QQuaternion>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// The camera's z axis is the third row of the rotation of qX * qY * qZ.
Vector3 expectedAxisZ(float x, float y, float z)
{
    const QQuaternion q = QQuaternion::fromAxisAndAngle(1, 0, 0, x) *
                          QQuaternion::fromAxisAndAngle(0, 1, 0, y) *
                          QQuaternion::fromAxisAndAngle(0, 0, 1, z);
    const QMatrix3x3 m = q.toRotationMatrix();
    return {m(2, 0), m(2, 1), m(2, 2)};
}

// Checks the camera was turned as a bare camera turns for these angles.
void expectOrientation(const Quaternion& actual, float x, float y, float z)
{
    Camera reference;
    const float angles[3] = {x, y, z};
    reference.setOrientation(angles);
    const Quaternion& e = reference.orientation;
    expectNear(std::array<float, 4>{actual.x, actual.y, actual.z, actual.w}, {e.x, e.y, e.z, e.w},
               1e-6f);
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

    // One drag in two moves: press at pressMs, move by (dx, dy) pixels, release at releaseMs.
    void drag(Qt::MouseButton button, double dx, double dy, qint64 pressMs, qint64 releaseMs)
    {
        const double x = controls.lastMouseX, y = controls.lastMouseY;
        controls.press(button, Qt::NoModifier, pressMs, false);
        controls.move(x + dx / 2, y + dy / 2, button);
        controls.move(x + dx, y + dy, button);
        controls.release(releaseMs);
    }

    // The view numbers round-tripped through a .Camera file in dir.
    QString viewFile(const QByteArray& content)
    {
        const QString path = dir.filePath("view.Camera");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path;
    }

    MatrixStack stack;
    Camera camera;
    CameraControls controls{camera};
    QStringList events;
    QTemporaryDir dir;
};

} // namespace

TEST_F(CameraControlsTest, ResetSetsTheStartViewAndAnnouncesItInOrder)
{
    controls.setZoom(30);
    controls.spin = {1, 2, 3};
    events.clear();

    controls.resetCamera();
    expectNear(controls.position, {0, 0, 0}, 0);
    expectNear(controls.rotation, {28, -25, 0}, 0);
    expectNear(controls.spin, {0, 0, 0}, 0);
    EXPECT_EQ(controls.zoom, 12);
    EXPECT_EQ(controls.fov, 55);
    EXPECT_EQ(camera.distance, 12);
    expectNear(camera.target, {0, 0, 0}, 0);
    const Vector3 z = expectedAxisZ(28, -25, 0);
    expectNear(camera.eye, {12 * z[0], 12 * z[1], 12 * z[2]}, 1e-4f);
    EXPECT_EQ(events, QStringList({"fov=55", "zoom=12", "rx=28", "ry=-25", "rz=0", "px=0", "py=0",
                                   "pz=0"}));

    EXPECT_EQ(camera.projectionType, 1);
    expectNear(camera.projection, perspectiveMatrix(55, 2, 0.1f, 400));
    EXPECT_EQ(stack.projection, camera.projection);

    // Perspective follows a new aspect; the box is half the pixels each way.
    controls.resize(640, 480);
    const float box[4] = {-320, 320, 240, -240};
    EXPECT_TRUE(std::equal(box, box + 4, controls.ortho));
    expectNear(camera.projection, perspectiveMatrix(55, 640.0f / 480, 0.1f, 400));
}

TEST_F(CameraControlsTest, OrthographicProjectionFromTheBoxAndOnlyKnownTypes)
{
    // zoom 12, aspect 2 -> k = 6: l -2400, r 2400, t 1200, b -1200.
    // dx = 4800 * 0.002 = 9.6, dy = 2400 * 0.002 = 4.8.
    controls.setCameraType(1);
    EXPECT_EQ(camera.projectionType, 0);
    EXPECT_EQ(controls.typeIndex, 1);
    const Matrix ortho = {2 / 9.6f, 0, 0, 0, 0, 2 / 4.8f, 0, 0, 0, 0, -0.001f, 0, 0, 0, 0, 1};
    expectNear(camera.projection, ortho);
    EXPECT_EQ(stack.projection, camera.projection);

    // Zooming out widens the box: zoom 13 -> dx = 4800 * 13 / 12 * 0.002 = 10.4.
    controls.wheel(-120);
    EXPECT_NEAR(camera.projection[0], 2 / 10.4f, 1e-6f);

    for (int unknown : {2, -1}) {
        controls.setCameraType(unknown);
        EXPECT_EQ(camera.projectionType, 0) << unknown;
        EXPECT_EQ(controls.typeIndex, 1) << unknown;
    }
    controls.setCameraType(0);
    EXPECT_EQ(camera.projectionType, 1);
    EXPECT_EQ(controls.typeIndex, 0);
}

TEST_F(CameraControlsTest, ViewPresetsTurnTheCameraAroundTheTarget)
{
    struct Case
    {
        int index;
        Vector3 rotation;
        Vector3 eye;
    };
    // Top, Bottom, Left (Ry(-90) third row (1, 0, 0)), Right, Front, Back.
    // clang-format off
    const Case cases[] = {{1, {90, 0, 0}, {1, 12, 0}}, {2, {-90, 0, 0}, {1, -12, 0}},
                          {3, {0, -90, 0}, {13, 0, 0}}, {4, {0, 90, 0}, {-11, 0, 0}},
                          {5, {0, 0, 0}, {1, 0, 12}}, {6, {0, 180, 0}, {1, 0, -12}}};
    // clang-format on
    controls.setPositionX(1);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.index);
        events.clear();
        controls.setViewPreset(c.index);
        expectNear(controls.rotation, c.rotation, 0);
        expectNear(camera.eye, c.eye, 1e-4f);
        EXPECT_EQ(camera.distance, 12);
        EXPECT_EQ(events, QStringList({"rx=" + QString::number(c.rotation[0]),
                                       "ry=" + QString::number(c.rotation[1]), "rz=0"}));
    }

    // An unknown index does nothing; zero is a reset.
    events.clear();
    controls.setViewPreset(7);
    EXPECT_TRUE(events.isEmpty());
    expectNear(controls.rotation, {0, 180, 0}, 0);
    controls.setZoom(20);
    controls.setViewPreset(0);
    expectNear(controls.rotation, {28, -25, 0}, 0);
    EXPECT_EQ(controls.zoom, 12);
}

TEST_F(CameraControlsTest, WheelStepsAndClampsZoomAndTheSlotsSetFovAndZoom)
{
    controls.wheel(120);
    EXPECT_EQ(camera.distance, 11);
    controls.wheel(-1);
    controls.wheel(-1);
    controls.wheel(0);
    EXPECT_EQ(controls.zoom, 13);
    for (int i = 0; i < 60; ++i)
        controls.wheel(-120);
    EXPECT_EQ(camera.distance, 50);
    for (int i = 0; i < 60; ++i)
        controls.wheel(120);
    EXPECT_EQ(controls.zoom, 1);
    EXPECT_EQ(events.first(), "zoom=11");
    EXPECT_EQ(events.last(), "zoom=1");

    events.clear();
    controls.setFov(90);
    EXPECT_NEAR(camera.projection[0], 0.5f, 1e-5f); // tan(45 deg) = 1, aspect 2
    controls.setZoom(20);
    const Vector3 z = expectedAxisZ(28, -25, 0);
    expectNear(camera.eye, {20 * z[0], 20 * z[1], 20 * z[2]}, 1e-4f);
    EXPECT_EQ(events, QStringList({"fov=90", "zoom=20"}));
}

TEST_F(CameraControlsTest, OrbitTurnsThreeTenthsOfADegreePerPixelAndWrapsPastHalfATurn)
{
    controls.move(100, 100, Qt::NoButton); // hover: only the position is kept
    EXPECT_TRUE(events.isEmpty());
    controls.press(Qt::LeftButton, Qt::NoModifier, 0, false);
    controls.move(110, 120, Qt::LeftButton);
    expectNear(controls.rotation, {34, -22, 0});
    expectNear(controls.dragSum, {6, 3, 0});
    expectOrientation(camera.orientation, 34, -22, 0);
    EXPECT_EQ(events, QStringList({"rx=34", "ry=-22", "rz=0"}));
    EXPECT_EQ(controls.lastMouseX, 110);
    EXPECT_EQ(controls.lastMouseY, 120);

    // The drag sum does not wrap, so a flick across 180 keeps its speed.
    controls.setRotationX(-170);
    controls.setRotationY(170);
    controls.press(Qt::LeftButton, Qt::NoModifier, 0, false);
    controls.move(160, 70, Qt::LeftButton); // +15 about y, -15 about x
    expectNear(controls.rotation, {175, -175, 0}, 1e-4f);
    expectNear(controls.dragSum, {-15, 15, 0});
    expectOrientation(camera.orientation, 175, -175, 0);
    controls.release(250);
    EXPECT_NEAR(controls.spin[1], 60, 1e-4f);
}

TEST_F(CameraControlsTest, FlickSpinIsDragSumPerSecondOfHold)
{
    struct Case
    {
        double dx, dy;
        qint64 pressMs, releaseMs;
        Vector3 spin;
    };
    // dragSum (6, 3, 0) over 0.5 s; a click without motion stops the spin;
    // held 1 ms; held 0, which counts as 1 ms; held 2 ms.
    // clang-format off
    const Case cases[] = {{10, 20, 0, 500, {12, 6, 0}}, {0, 0, 1000, 1000, {0, 0, 0}},
                          {10, 0, 10, 11, {0, 3000, 0}}, {10, 0, 10, 10, {0, 3000, 0}},
                          {10, 0, 10, 12, {0, 1500, 0}}};
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << c.dx << "," << c.dy << " " << c.pressMs << ".." << c.releaseMs);
        drag(Qt::LeftButton, c.dx, c.dy, c.pressMs, c.releaseMs);
        expectNear(controls.spin, c.spin, 1e-2f);
    }
}

TEST_F(CameraControlsTest, ArmourRayNeedsExactlyCtrlLeftInArmourModeAndAnyPressClearsSpin)
{
    struct Case
    {
        Qt::MouseButtons buttons;
        Qt::KeyboardModifiers modifiers;
        bool armorMode;
        bool fires;
    };
    const auto left = Qt::LeftButton, right = Qt::RightButton;
    const auto ctrl = Qt::ControlModifier, shift = Qt::ShiftModifier;
    // clang-format off
    const Case cases[] = {{left, ctrl, true, true}, {left, ctrl, false, false},
                          {left, ctrl | shift, true, false}, {left | right, ctrl, true, false},
                          {right, ctrl, true, false}, {left, Qt::NoModifier, true, false}};
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << int(c.buttons) << " " << int(c.modifiers) << " " << c.armorMode);
        drag(Qt::LeftButton, 10, 10, 0, 500);
        ASSERT_NE(controls.spin[0], 0);
        EXPECT_EQ(controls.press(c.buttons, c.modifiers, 700, c.armorMode), c.fires);
        expectNear(controls.spin, {0, 0, 0}, 0);
        expectNear(controls.dragSum, {0, 0, 0}, 0);
        EXPECT_EQ(controls.pressMs, 700);
    }
}

TEST_F(CameraControlsTest, PanMovesTheTargetAlongTheCameraAxesAndBlocksThePositionSlots)
{
    controls.setViewPreset(5); // Front: the axes are the world axes
    events.clear();
    controls.press(Qt::RightButton, Qt::NoModifier, 0, false);
    controls.move(150, 300, Qt::RightButton); // 1 and 2 scene units
    expectNear(camera.target, {-1, 2, 0});
    expectNear(controls.position, {-1, 2, 0});
    expectNear(camera.eye, {-1, 2, 12});
    EXPECT_EQ(events, QStringList({"px=-1", "py=2", "pz=0"}));
    controls.setPositionX(5);
    EXPECT_EQ(camera.target[0], -1);

    controls.invertX = controls.invertY = -1;
    controls.move(300, 600, Qt::RightButton);
    expectNear(camera.target, {0, 0, 0});
    controls.setViewPreset(1);                // Top: axisY = (0, 0, -1)
    controls.move(300, 450, Qt::RightButton); // inverted: one unit up the screen
    expectNear(camera.target, {0, 0, -1});

    controls.release(100);
    EXPECT_FALSE(controls.panning);
    controls.setPositionX(5);
    EXPECT_NEAR(camera.target[0], 5, 1e-5f);
    EXPECT_NEAR(camera.eye[0], 5, 1e-4f); // looking straight down from the top
}

TEST_F(CameraControlsTest, MiddleDragRollsAndOtherButtonsMoveNothing)
{
    controls.move(40, 40, Qt::LeftButton | Qt::RightButton);
    EXPECT_TRUE(events.isEmpty());
    expectOrientation(camera.orientation, 28, -25, 0);
    EXPECT_EQ(controls.lastMouseX, 40);

    controls.press(Qt::MiddleButton, Qt::NoModifier, 0, false);
    controls.move(40, 66, Qt::MiddleButton);
    EXPECT_NEAR(controls.rotation[2], -2, 1e-5f);
    EXPECT_EQ(events, QStringList({"rz=-2"}));
    expectOrientation(camera.orientation, 28, -25, -2);
    expectNear(controls.dragSum, {0, 0, 0}, 0);

    // The camera turns in the dock's tenths of a degree: one pixel of roll
    // is -1/13 degree, the camera shows -0.1.
    controls.setRotationX(10.04);
    controls.setRotationZ(0);
    controls.move(40, 67, Qt::MiddleButton);
    EXPECT_NEAR(controls.rotation[0], 10.04f, 1e-6f);
    EXPECT_NEAR(controls.rotation[2], -1.0f / 13, 1e-6f);
    expectOrientation(camera.orientation, 10.0f, -25, -0.1f);
}

TEST_F(CameraControlsTest, AutoRotationStepUsesTheSpin)
{
    controls.setRotationY(170);
    controls.spin = {0, 70, 0};
    controls.autoRotateStep(100); // 100 / 7000 * 70 = 1 degree
    EXPECT_NEAR(controls.rotation[1], 171, 1e-4f);
    controls.autoRotateStep(1000); // +10 -> 181 -> -179
    EXPECT_NEAR(controls.rotation[1], -179, 1e-4f);
    expectOrientation(camera.orientation, 28, -179, 0);
    EXPECT_EQ(events, QStringList({"ry=171", "ry=-179"}));
}

TEST_F(CameraControlsTest, LoadedFileSetsTheViewAndSavesBackTheSame)
{
    const QByteArray text = "<Camera>\n <Target>1.5 -2 0.333333</Target>\n"
                            " <Rotation>10.5 -20 30</Rotation>\n <Fov>40</Fov>\n"
                            " <Zoom>20</Zoom>\n <Type>1</Type>\n</Camera>\n";
    controls.setViewPreset(2);
    events.clear();
    ASSERT_TRUE(controls.loadView(viewFile(text)));
    EXPECT_EQ(events, QStringList({"rx=10.5", "ry=-20", "rz=30", "px=1.5", "py=-2", "pz=0.333333",
                                   "fov=40", "zoom=20", "type=1", "view=0"}));
    EXPECT_EQ(camera.projectionType, 0);
    expectNear(camera.target, {1.5f, -2, 0.333333f}, 0);
    EXPECT_EQ(camera.distance, 20);
    expectOrientation(camera.orientation, 10.5f, -20, 30);
    // Orthographic at zoom 20, aspect 2: dx = 800 * 10 * 0.002 = 16.
    EXPECT_NEAR(camera.projection[0], 2 / 16.0f, 1e-6f);
    EXPECT_EQ(stack.projection, camera.projection);

    const QString saved = dir.filePath("saved.Camera");
    ASSERT_TRUE(controls.saveView(saved));
    QFile file(saved);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), text);
    LogCapture log;
    EXPECT_FALSE(controls.saveView(dir.filePath("no/such/dir/view.Camera")));
    EXPECT_EQ(log.lines, QStringList{"[Error] Could not open camera file."});

    // Missing elements and malformed triples read as zeros.
    ASSERT_TRUE(
        controls.loadView(viewFile("<Camera><Zoom>7</Zoom><Rotation>1 2</Rotation></Camera>")));
    EXPECT_EQ(controls.fov, 0);
    expectNear(controls.rotation, {0, 0, 0}, 0);
    expectNear(camera.target, {0, 0, 0}, 0);
    EXPECT_EQ(camera.projectionType, 1);
    EXPECT_EQ(camera.distance, 7);
}

TEST_F(CameraControlsTest, UnreadableFilesChangeNothing)
{
    controls.setZoom(30);
    for (const QString& path : {dir.filePath("absent.Camera"), viewFile("this is <not xml")}) {
        SCOPED_TRACE(path.toStdString());
        LogCapture log;
        events.clear();
        EXPECT_FALSE(controls.loadView(path));
        EXPECT_EQ(log.lines.size(), path.endsWith("absent.Camera") ? 1 : 0);
        EXPECT_TRUE(events.isEmpty());
        EXPECT_EQ(camera.distance, 30);
    }
}
