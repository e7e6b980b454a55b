#include "Penetration.h"

#include <algorithm>

namespace {

constexpr float decimetre = 0.1f; // scene units are metres

} // namespace

float penetrationChance(float nominal, float needed)
{
    if (nominal <= 0)
        return 0;
    const float low = 0.75f * nominal;
    const float high = 1.25f * nominal;
    return std::clamp((high - needed) / (high - low), 0.0f, 1.0f);
}

void applyPenetration(RayResultsList& walked, float nominal, float lossPerDecimetre)
{
    float remaining = nominal;
    bool pastFirstPlate = false;
    bool ricocheted = false;
    float air = 0; // since the last plate that took penetration
    for (int i = 0; i < walked.size(); ++i) {
        if (i > 0 && pastFirstPlate)
            air += walked[i - 1].freeTravel;
        RayResult& plate = walked[i];
        if (plate.exitHit)
            continue;
        if (lossPerDecimetre > 0) {
            // Linear in the air crossed, of what the last plate left.
            remaining -= remaining * std::min(lossPerDecimetre * air / decimetre, 1.0f);
        }
        air = 0;
        plate.hasPenetration = true;
        plate.penetrationBefore = remaining;
        const float needed = nominal - remaining + plate.effective;
        if (plate.ricochet || ricocheted) {
            plate.verdict = plate.ricochet ? RicochetVerdict : NotPenetrated;
            plate.penetrationAfter = 0;
            plate.chance = 0;
            ricocheted = true;
        } else {
            plate.penetrationAfter = std::max(remaining - plate.effective, 0.0f);
            plate.verdict = plate.penetrationAfter > 0 ? Penetrated : NotPenetrated;
            plate.chance = penetrationChance(nominal, needed);
        }
        remaining = plate.penetrationAfter;
        pastFirstPlate = true;
    }
}

const RayResult* firstRegularPlate(const RayResultsList& results)
{
    for (const RayResult& result : results)
        if (result.hasPenetration && !result.spaced)
            return &result;
    return nullptr;
}
