#pragma once

#include "lut/LutBlock.h"

// What happens to a decoded gamma LUT, kGammaEntries triples of R, G, B, on its way to the
// platform: a preset mode's curve, and the gains of a fine-tuned white point. Values are on the
// scale 0 to 4095; nothing rounds them, and nothing keeps them there.
namespace velora {

inline constexpr double kGammaMaxValue = 4095;

// The gamma that the firmware's LUT is a panel curve for.
inline constexpr double kFirmwareGamma = 2.2;

struct RgbGains {
  double r;
  double g;
  double b;
};

// Bends the curve in place: value * gain, then kGammaMaxValue * (value / kGammaMaxValue) ^
// exponent. So the gains are bent too.
void BendGammaLut(const RgbGains& gains, double exponent, double* lut);

// The two ways of it, with the same results. The second needs a processor with AVX2, an x87 that
// works with all of its 64 bits, and an exponent within these bounds.
void BendGammaLutPlain(const RgbGains& gains, double exponent, double* lut);
void BendGammaLutAvx2(const RgbGains& gains, double exponent, double* lut);
inline constexpr double kLeastExponentForAvx2 = 0.5;
inline constexpr double kGreatestExponentForAvx2 = 1.5;

// A gain of this or less means that no fine tuning is set.
inline constexpr double kNoGain = 1e-16;

// All three are set.
bool HasGains(const RgbGains& gains);

// Each is within 0.9 - 0.00001 to 1 + 0.00001, both included.
bool AreGainsValid(const RgbGains& gains);

// out = in * gains; in and out may be the same array.
void MultiplyGammaLut(const double* in, const RgbGains& gains, double* out);

// Whether the last triple of a LUT has no component below 1e-16: a display would stay dark.
bool IsLastTripleLit(const double* lut, int entries);

}  // namespace velora
