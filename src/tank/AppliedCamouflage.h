#pragma once

#include "Maths.h"

#include <QString>

#include <array>

// The camouflage applied to the loaded vehicle, as the vehicle's meshes read
// it on every draw. The camouflage library, which sits above the tank
// assembly, owns the one object of this kind and fills it; while none exists
// no part shows a camouflage.
class AppliedCamouflage
{
public:
    // The object that exists, or null.
    static const AppliedCamouflage* active() { return current; }

    // Camouflage is drawn at all (the "Camo Overlay" choice).
    bool enabled = false;
    QString chassisExclusionMask;
    QString hullExclusionMask;
    // GL name of the applied pattern's texture; owned by the catalogue.
    unsigned int textureId = 0;
    Vector4 tiling{0, 0, 0, 0};
    // Red, green, blue and strength of each pattern channel, 0 to 255.
    std::array<Vector4, 4> colors{};

protected:
    AppliedCamouflage() { current = this; }
    ~AppliedCamouflage()
    {
        if (current == this)
            current = nullptr;
    }
    AppliedCamouflage(const AppliedCamouflage&) = delete;
    AppliedCamouflage& operator=(const AppliedCamouflage&) = delete;

private:
    static inline AppliedCamouflage* current = nullptr;
};
