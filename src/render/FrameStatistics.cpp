#include "FrameStatistics.h"

void FrameStatistics::update(qint64 counterNow)
{
    ++framesSinceStat;
    nowCount = counterNow;
    const double scale = 1e6 / double(frequency);
    const float tMs = float((double(nowCount) * scale - double(startCount) * scale) * 0.001);
    frameTimeMs = tMs - statTimeMs;
    statTimeMs = tMs;
    if (tMs - lastStatMs > 1000) {
        fpsNow = float(framesSinceStat) / (tMs - lastStatMs) * 1000;
        fpsAverage = fpsAverage == 0.0f ? fpsNow : (fpsAverage + fpsNow) * 0.5f;
        lastStatMs = tMs;
        framesSinceStat = 0;
    }
}
