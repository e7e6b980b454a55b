#pragma once

// The oracle of the window scenarios: what the viewport shows after a user's
// action must equal the frame that ferrox-tool renders of the same state in
// another process, on a context of its own, with the viewport's camera and
// size. Both draw through the same frame code, so any difference is the
// window's: GL objects made in the wrong context, a control that reaches
// the wrong part, a state the window forgot.

#include <QImage>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

class MainWindow;

struct FrameDifference
{
    // Mean absolute difference of red, green and blue over the frame, in
    // levels of 255.
    double meanLevels = 0;
    // Share of pixels whose largest channel difference exceeds
    // FrameOracle::StrongLevels.
    double strongShare = 0;
};

class FrameOracle
{
public:
    // Antialiasing and the shadow map's sampling differ by a level or two
    // along edges; a wrong texture, a missing part or a turned turret
    // differs by much more, over many pixels.
    static constexpr double MeanLevelsAllowed = 1.5;
    static constexpr int StrongLevels = 48;
    static constexpr double StrongShareAllowed = 0.002;

    static FrameDifference compare(const QImage& shown, const QImage& expected);
    // The comparison with its verdict; a failure writes both images and
    // their difference, tagged with label.
    static testing::AssertionResult sameImage(const QImage& shown, const QImage& expected,
                                              const QString& label);

    // Renders `ferrox-tool render GAME vehicle toolArguments` at the
    // viewport's size and camera and compares it with the viewport's frame.
    // A failure writes the window's frame, the tool's and their difference
    // under build/tests/failed-images/, tagged with label.
    static testing::AssertionResult sameFrame(MainWindow& window, const QString& vehicle,
                                              const QStringList& toolArguments,
                                              const QString& label);
};

#define EXPECT_SAME_FRAME(window, vehicle, arguments, label)                                       \
    EXPECT_TRUE(FrameOracle::sameFrame((window), (vehicle), (arguments), (label)))
