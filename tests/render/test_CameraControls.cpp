#include "CameraControls.h"
#include "LogCapture.h"
#include "MathChecks.h"
#include "QtPrinters.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>

namespace {

class CameraControlsTest : public ::testing::Test
{
protected:
    CameraControlsTest()
    {
        // An 800 x 400 viewport: aspect 2, ortho box (-400, 400, 200, -200).
        controls.resize(800, 400);
        controls.resetCamera();
        // Every signal by name and value, in the order they arrive.
        auto record = [this](const char* name) {
            return [this, name](auto v) { events.append(name + ("=" + QString::number(v))); };
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

    // The camera stands as a bare camera does, turned by these angles at this
    // distance from the same target.
    void expectStance(float x, float y, float z, float distance = 12)
    {
        Camera reference;
        reference.target = camera.target;
        reference.distance = distance;
        const float angles[3] = {x, y, z};
        reference.setOrientation(angles);
        expectNear(camera.axisX, reference.axisX, 1e-6f);
        expectNear(camera.eye, reference.eye, 1e-4f);
        EXPECT_EQ(camera.distance, distance);
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

    QString viewFile(const QByteArray& content)
    {
        const QString path = dir.filePath("view.Camera");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path;
    }

    Camera camera;
    CameraControls controls{camera};
    QStringList events;
    QTemporaryDir dir;
};

} // namespace

TEST_F(CameraControlsTest, ResetSetsTheStartViewAndTheTypeTheProjection)
{
    controls.setZoom(30);
    controls.spin = {1, 2, 3};
    controls.setPositionX(4);
    events.clear();
    controls.resetCamera();
    expectNear(controls.spin, {0, 0, 0}, 0);
    expectNear(camera.target, {0, 0, 0}, 0);
    expectStance(28, -25, 0);
    EXPECT_EQ(events, QStringList({"fov=55", "zoom=12", "rx=28", "ry=-25", "rz=0", "px=0", "py=0",
                                   "pz=0"}));
    EXPECT_EQ(camera.projectionType, 1);
    expectNear(camera.projection, perspectiveMatrix(55, 2, 0.1f, 400));

    controls.resize(640, 480); // perspective follows a new aspect
    expectNear(camera.projection, perspectiveMatrix(55, 640.0f / 480, 0.1f, 400));

    // Orthographic from the box; zoom 12, aspect 2 -> k = 6: l -2400, r 2400, t 1200, b -1200.
    // dx = 4800 * 0.002 = 9.6, dy = 2400 * 0.002 = 4.8.
    controls.resize(800, 400);
    controls.setCameraType(1);
    EXPECT_EQ(camera.projectionType, 0);
    expectNear(camera.projection,
               {2 / 9.6f, 0, 0, 0, 0, 2 / 4.8f, 0, 0, 0, 0, -0.001f, 0, 0, 0, 0, 1});
    // Zooming out widens the box: zoom 13 -> dx = 4800 * 13 / 12 * 0.002 = 10.4.
    controls.wheel(-120);
    EXPECT_NEAR(camera.projection[0], 2 / 10.4f, 1e-6f);

    controls.setCameraType(2); // unknown: no change
    EXPECT_EQ(camera.projectionType, 0);
    controls.setCameraType(0);
    EXPECT_EQ(camera.projectionType, 1);
    EXPECT_EQ(controls.typeIndex, 0);
}

TEST_F(CameraControlsTest, ViewPresetsTurnTheCameraAroundTheTarget)
{
    // Top, Bottom, Left, Right, Front, Back; an unknown index does nothing.
    const Vector3 cases[] = {{90, 0, 0}, {-90, 0, 0}, {0, -90, 0}, {0, 90, 0},
                             {0, 0, 0},  {0, 180, 0}, {0, 180, 0}};
    controls.setPositionX(1);
    for (int index = 1; index <= 7; ++index) {
        SCOPED_TRACE(index);
        const Vector3& r = cases[index - 1];
        events.clear();
        controls.setViewPreset(index);
        expectStance(r[0], r[1], r[2]);
        EXPECT_EQ(events, index == 7 ? QStringList()
                                     : QStringList({"rx=" + QString::number(r[0]),
                                                    "ry=" + QString::number(r[1]), "rz=0"}));
    }
    // Zero is a reset.
    controls.setZoom(20);
    controls.setViewPreset(0);
    expectStance(28, -25, 0);
}

TEST_F(CameraControlsTest, WheelStepsAndClampsZoomAndTheSlotsSetFovAndZoom)
{
    controls.wheel(120);
    EXPECT_EQ(camera.distance, 11);
    for (int delta : {-1, -1, 0})
        controls.wheel(delta);
    EXPECT_EQ(controls.zoom, 13);
    for (int delta : {-120, 120}) {
        for (int i = 0; i < 60; ++i)
            controls.wheel(delta);
        EXPECT_EQ(camera.distance, delta < 0 ? 50 : 1);
    }
    EXPECT_EQ(events.first(), "zoom=11");
    EXPECT_EQ(events.last(), "zoom=1");

    events.clear();
    controls.setFov(90);
    EXPECT_NEAR(camera.projection[0], 0.5f, 1e-5f); // tan(45 deg) = 1, aspect 2
    controls.setZoom(20);
    expectStance(28, -25, 0, 20);
    EXPECT_EQ(events, QStringList({"fov=90", "zoom=20"}));
}

TEST_F(CameraControlsTest, LeftDragOrbitsAndMiddleDragRollsInTheDocksTenthsOfADegree)
{
    controls.move(100, 100, Qt::NoButton);                     // hover: only the position is kept
    controls.move(140, 140, Qt::LeftButton | Qt::RightButton); // no single button: nothing
    EXPECT_TRUE(events.isEmpty());
    controls.press(Qt::LeftButton, Qt::NoModifier, 0, false);
    controls.move(150, 160, Qt::LeftButton); // 0.3 degree per pixel
    expectNear(controls.dragSum, {6, 3, 0});
    expectStance(34, -22, 0);
    EXPECT_EQ(events, QStringList({"rx=34", "ry=-22", "rz=0"}));

    // The drag sum does not wrap, so a flick across 180 keeps its speed.
    controls.setRotationX(-170);
    controls.setRotationY(170);
    controls.press(Qt::LeftButton, Qt::NoModifier, 0, false);
    controls.move(200, 110, Qt::LeftButton); // +15 about y, -15 about x
    expectNear(controls.rotation, {175, -175, 0}, 1e-4f);
    expectNear(controls.dragSum, {-15, 15, 0});
    expectStance(175, -175, 0);
    controls.release(250);
    EXPECT_NEAR(controls.spin[1], 60, 1e-4f);

    // One pixel of roll is -1/13 degree; the camera shows -0.1.
    events.clear();
    controls.setRotationX(10.04);
    controls.setRotationY(-25);
    controls.press(Qt::MiddleButton, Qt::NoModifier, 0, false);
    controls.move(200, 136, Qt::MiddleButton);
    controls.move(200, 137, Qt::MiddleButton);
    expectNear(controls.rotation, {10.04f, -25, -2 - 1.0f / 13}, 1e-5f);
    expectNear(controls.dragSum, {0, 0, 0}, 0);
    expectStance(10.0f, -25, -2.1f);
    EXPECT_EQ(events.first(), "rz=-2");
}

TEST_F(CameraControlsTest, FlickSpinIsDragSumPerSecondOfHoldAndDrivesAutoRotation)
{
    // dragSum (6, 3, 0) over 0.5 s; a click without motion stops the spin;
    // held 1 ms; held 0, which counts as 1 ms; held 2 ms.
    const std::tuple<double, double, qint64, qint64, Vector3> cases[] = {
        {10, 20, 0, 500, {12, 6, 0}},
        {0, 0, 1000, 1000, {0, 0, 0}},
        {10, 0, 10, 11, {0, 3000, 0}},
        {10, 0, 10, 10, {0, 3000, 0}},
        {10, 0, 10, 12, {0, 1500, 0}}};
    for (const auto& [dx, dy, pressMs, releaseMs, spin] : cases) {
        SCOPED_TRACE(testing::Message() << dx << "," << dy << " " << releaseMs);
        drag(Qt::LeftButton, dx, dy, pressMs, releaseMs);
        expectNear(controls.spin, spin, 1e-2f);
    }

    controls.setRotationX(28);
    controls.setRotationY(170);
    controls.spin = {0, 70, 0};
    events.clear();
    controls.autoRotateStep(100);  // 100 / 7000 * 70 = 1 degree
    controls.autoRotateStep(1000); // +10 -> 181 -> -179
    expectStance(28, -179, 0);
    EXPECT_EQ(events, QStringList({"ry=171", "ry=-179"}));
}

TEST_F(CameraControlsTest, ArmourRayNeedsExactlyCtrlLeftInArmourModeAndAnyPressClearsSpin)
{
    const auto left = Qt::LeftButton, right = Qt::RightButton;
    const auto ctrl = Qt::ControlModifier, shift = Qt::ShiftModifier;
    const std::tuple<Qt::MouseButtons, Qt::KeyboardModifiers, bool, bool> cases[] = {
        {left, ctrl, true, true},          {left, ctrl, false, false},
        {left, ctrl | shift, true, false}, {left | right, ctrl, true, false},
        {right, ctrl, true, false},        {left, Qt::NoModifier, true, false}};
    for (const auto& [buttons, modifiers, armorMode, fires] : cases) {
        SCOPED_TRACE(testing::Message()
                     << int(buttons) << " " << int(modifiers) << " " << armorMode);
        drag(Qt::LeftButton, 10, 10, 0, 500);
        ASSERT_NE(controls.spin[0], 0);
        EXPECT_EQ(controls.press(buttons, modifiers, 700, armorMode), fires);
        expectNear(controls.spin, {0, 0, 0}, 0);
        expectNear(controls.dragSum, {0, 0, 0}, 0);
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
    controls.setPositionX(5);
    expectNear(camera.target, {5, 0, -1});
    expectStance(90, 0, 0);
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
    expectNear(camera.target, {1.5f, -2, 0.333333f}, 0);
    expectStance(10.5f, -20, 30, 20);
    // Orthographic at zoom 20, aspect 2: dx = 800 * 10 * 0.002 = 16.
    EXPECT_NEAR(camera.projection[0], 2 / 16.0f, 1e-6f);

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
    expectNear(camera.target, {0, 0, 0}, 0);
    EXPECT_EQ(camera.projectionType, 1);
    expectStance(0, 0, 0, 7);

    // Unreadable files change nothing; only the missing one is logged.
    for (const QString& path : {dir.filePath("absent.Camera"), viewFile("this is <not xml")}) {
        SCOPED_TRACE(path.toStdString());
        log.lines.clear();
        events.clear();
        EXPECT_FALSE(controls.loadView(path));
        EXPECT_EQ(log.lines.size(), path.endsWith("absent.Camera") ? 1 : 0);
        EXPECT_TRUE(events.isEmpty());
        EXPECT_EQ(camera.distance, 7);
    }
}
