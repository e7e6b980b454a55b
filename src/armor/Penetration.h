#pragma once

#include "RayResult.h"

// The shell's penetration along a walked ray: each plate, exit hits aside,
// takes its effective thickness from what is left; a HEAT shell also loses
// the fraction lossPerDecimetre of its remaining penetration per 10 cm
// (0.1 scene units) of free travel after the first plate. Fills the
// penetration fields of every plate that is not an exit hit.
void applyPenetration(RayResultsList& walked, float nominal, float lossPerDecimetre);

// The fraction of the uniform roll between 0.75 and 1.25 times nominal
// that exceeds needed; 0 for a nominal of 0.
float penetrationChance(float nominal, float needed);

// The plate whose chance the inspector reports: the first one that is not
// spaced, or null when the list has none or no penetration.
const RayResult* firstRegularPlate(const RayResultsList& results);
