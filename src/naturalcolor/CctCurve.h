#pragma once

#include <optional>
#include <vector>

#include "velora/VeloraCtlApi.h"

// The factory's curve: the room's colour temperature, in kelvin, to the display's gains. The points
// ascend in cct. All arithmetic is in single precision.
namespace velora {

using CctCurve = std::vector<CctAlgoInfo>;

// low if it is above value, high if value is above it, else value, a NaN included.
float Clamp(float low, float value, float high);

// A colour temperature that the curve, which is not empty, reaches.
float ClampToCurve(const CctCurve& curve, float cct);

// The colour temperature at which the display stays as it is: that of the first point whose gains
// are all 1, without their fractions.
std::optional<float> FindNeutralCct(const CctCurve& curve);

// The gains at a colour temperature, on the straight line between its two neighbours. False, with
// the gains untouched, for an empty curve.
bool CalcCctRgb(const CctCurve& curve, float cct, float& r, float& g, float& b);

}  // namespace velora
