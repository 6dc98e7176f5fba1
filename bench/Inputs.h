// What the jobs work on; the same on every machine.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "PlainForms.h"

namespace bench {

inline constexpr double kTargetGamma = 2.4;
inline constexpr double kPanelGamma = 2.2;

// Linear DCI-P3 RGB to a panel of about that gamut: every entry has three powers to take.
inline constexpr std::array<double, 9> kTargetToPanel = {0.981, 0.017, 0.002,  0.008, 0.979,
                                                         0.013, 0.004, -0.006, 1.002};

// A target gamut on a panel, whole numbers of 0 to 1023: the first LUT of a composition.
Lut GamutLut();

// A panel's grey tracking, each channel with its own bend: the second one.
Lut GreyTrackingLut();

// Its hash included.
std::vector<uint8_t> Block(const Lut& lut);

// A panel's curve for gamma 2.2: close to a straight line.
Lut GammaLut();

// An EDID 1.4 base block.
std::array<uint8_t, 128> Edid();

}  // namespace bench
