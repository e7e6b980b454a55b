#pragma once

#include <QtGlobal>

// The frame rate and frame time the overlay shows, from a performance
// counter read once a frame. Times are in ms since startCount.
class FrameStatistics
{
public:
    // One more frame, ended at counterNow (in counts of frequency per
    // second). The average moves once more than a second has passed.
    void update(qint64 counterNow);

    float fpsNow = 0;
    float fpsAverage = 0;
    float statTimeMs = 0;
    float frameTimeMs = 0;
    float lastStatMs = 0;
    int framesSinceStat = 0;
    qint64 startCount = 0;
    qint64 nowCount = 0;
    qint64 frequency = 1000000000; // the counter counts nanoseconds
};
