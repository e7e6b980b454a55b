#pragma once

#include <QString>

#include <functional>

// What the tank assembly shows in the main window, reached without depending
// on the window: the window fills these in when it exists; an empty one
// goes nowhere, so the loader works the same in tests and tools. The status
// bar has its own sink (StatusMessages.h), boxes theirs (MessageBoxes.h).
struct TankWindowSink
{
    // The turret or gun spin box: enabled, set to 0, given this range.
    std::function<void(float minimum, float maximum)> turretRange;
    std::function<void(float minimum, float maximum)> gunRange;
    // The text of the visual editor of one part (TankLoader::Part).
    std::function<void(int part, const QString& text)> visualText;
    // A loaded vehicle's display name goes on the recent list.
    std::function<void(const QString& name)> addRecent;
    // The viewport's overlay shows the loaded vehicle's facts anew.
    std::function<void()> renewOverlay;

    void setTurretRange(float minimum, float maximum) const
    {
        if (turretRange)
            turretRange(minimum, maximum);
    }
    void setGunRange(float minimum, float maximum) const
    {
        if (gunRange)
            gunRange(minimum, maximum);
    }
    void setVisualText(int part, const QString& text) const
    {
        if (visualText)
            visualText(part, text);
    }
    void addRecentName(const QString& name) const
    {
        if (addRecent)
            addRecent(name);
    }
    void renewOverlayText() const
    {
        if (renewOverlay)
            renewOverlay();
    }
};
