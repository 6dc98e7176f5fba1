#include "lut/GammaCurve.h"

#include <cmath>
#include <cstdint>

#include "frame/Avx2.h"

namespace velora {
namespace {

// A tenth down with a hundred-thousandth of tolerance at either end. The lower end is the
// difference as it comes out, one unit in the last place above the double of 0.89999.
constexpr double kLowestGain = 0.9 - 0.00001;
constexpr double kHighestGain = 1.0 + 0.00001;
constexpr double kDark = 1e-16;

// Whether the x87 works with all of its 64 bits. Windows starts threads with 53, and this tool
// chain's power then has another error, and other results.
bool HasExtendedPrecision() {
  constexpr unsigned kPrecisionControl = 0x300;
  uint16_t controlWord = 0;
  asm("fnstcw %0" : "=m"(controlWord));
  return (controlWord & kPrecisionControl) == kPrecisionControl;
}

// Not a number passes: it is neither below nor above.
bool IsGainValid(double gain) { return !(gain < kLowestGain || gain > kHighestGain); }

}  // namespace

void BendGammaLut(const RgbGains& gains, double exponent, double* lut) {
  const bool isFast = HasAvx2() && HasExtendedPrecision() && exponent >= kLeastExponentForAvx2 &&
                      exponent <= kGreatestExponentForAvx2;
  (isFast ? BendGammaLutAvx2 : BendGammaLutPlain)(gains, exponent, lut);
}

void BendGammaLutPlain(const RgbGains& gains, double exponent, double* lut) {
  const auto bend = [exponent](double value) {
    return kGammaMaxValue * std::pow(value / kGammaMaxValue, exponent);
  };
  for (int i = 0; i < kGammaEntries; ++i, lut += 3) {
    lut[2] = bend(lut[2] * gains.b);
    lut[1] = bend(lut[1] * gains.g);
    lut[0] = bend(lut[0] * gains.r);
  }
}

bool HasGains(const RgbGains& gains) {
  return gains.r > kNoGain && gains.g > kNoGain && gains.b > kNoGain;
}

bool AreGainsValid(const RgbGains& gains) {
  return IsGainValid(gains.r) && IsGainValid(gains.g) && IsGainValid(gains.b);
}

void MultiplyGammaLut(const double* in, const RgbGains& gains, double* out) {
  for (int i = 0; i < kGammaEntries; ++i, in += 3, out += 3) {
    out[0] = in[0] * gains.r;
    out[1] = in[1] * gains.g;
    out[2] = in[2] * gains.b;
  }
}

bool IsLastTripleLit(const double* lut, int entries) {
  const double* last = lut + LutValueCount(entries - 1);
  return !(last[0] < kDark || last[1] < kDark || last[2] < kDark);
}

}  // namespace velora
