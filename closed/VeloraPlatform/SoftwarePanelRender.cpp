#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "VeloraPlatform/SoftwarePanel.h"

namespace softwarepanel {
namespace {

using Rgb = std::array<double, 3>;

constexpr double kInputMaximum = 255;

constexpr double kSliderNeutral = 183;  // the middle of 0 to 366
constexpr Rgb kWarmest = {1.0, 0.85, 0.7};
constexpr Rgb kCoolest = {0.7, 0.85, 1.0};
constexpr double kStrengthOf2D = 0.82;
constexpr double kColorBlueOn = 255;

// Cut off at 0 and 1. Not a number gives 0: whoever may write to the shared memory can't stop a
// viewer.
double Unit(double value) { return value > 0 ? std::min(value, 1.0) : 0; }

// Each channel's entry of the gamma LUT, at the nearest of its levels.
Rgb LookUpGamma(const double* lut, const Rgb& rgb) {
  Rgb result;
  for (size_t c = 0; c < 3; ++c) {
    const auto level = static_cast<size_t>(std::lround(rgb[c] * (kGammaEntries - 1)));
    result[c] = Unit(lut[level * 3 + c] / kGammaMaximum);
  }
  return result;
}

// Walks from the cell's lowest corner to its highest along the axes, the one with the largest
// fraction first: the four corners on the way span the tetrahedron that holds the point.
Rgb LookUp3D(const double* lut, const Rgb& rgb) {
  struct Axis {
    double fraction;
    size_t stride;  // in entries
  };
  std::array<Axis, 3> axes = {{{0, kGridPoints * kGridPoints}, {0, kGridPoints}, {0, 1}}};
  size_t entry = 0;
  for (size_t c = 0; c < 3; ++c) {
    const double position = rgb[c] * (kGridPoints - 1);
    const size_t point = std::min(static_cast<size_t>(position), kGridPoints - 2);
    axes[c].fraction = position - static_cast<double>(point);
    entry += point * axes[c].stride;
  }
  std::sort(axes.begin(), axes.end(),
            [](const Axis& a, const Axis& b) { return a.fraction > b.fraction; });

  Rgb result = {};
  double left = 1;  // the weight that is not given to a corner yet
  for (size_t corner = 0; corner < 4; ++corner) {
    const double beyond = corner < 3 ? axes[corner].fraction : 0;
    for (size_t c = 0; c < 3; ++c) {
      result[c] += (left - beyond) * lut[entry * 3 + c] / kLut3DMaximum;
    }
    left = beyond;
    entry += corner < 3 ? axes[corner].stride : 0;
  }
  return {Unit(result[0]), Unit(result[1]), Unit(result[2])};
}

Rgb Multiply(const double* matrix, const Rgb& rgb) {
  Rgb result;
  for (size_t row = 0; row < 3; ++row) {
    result[row] = Unit(matrix[row * 3] * rgb[0] + matrix[row * 3 + 1] * rgb[1] +
                       matrix[row * 3 + 2] * rgb[2]);
  }
  return result;
}

Rgb GainsOfSlider(uint32_t temperature) {
  const double offset = (static_cast<double>(temperature) - kSliderNeutral) / kSliderNeutral;
  const Rgb& end = offset < 0 ? kWarmest : kCoolest;
  Rgb gains;
  for (size_t c = 0; c < 3; ++c) {
    gains[c] = 1 + (end[c] - 1) * std::abs(offset);
  }
  return gains;
}

double EyeProtection(uint32_t colorBlue, double strength) {
  return 1 - (1 - strength) * colorBlue / kColorBlueOn;
}

Rgb MakeGains(const State& state) {
  switch (state.temperatureKind) {
    case kTemperature2D: {
      Rgb gains = GainsOfSlider(state.temperature2D.temperature);
      gains[2] *= EyeProtection(state.temperature2D.colorBlue, kStrengthOf2D);
      return gains;
    }
    case kTemperature3D: {
      const Color3DInfo& info = state.temperature3D;
      return {info.r, info.g, info.b * EyeProtection(info.colorBlue, info.protectValue)};
    }
    default:
      return {1, 1, 1};
  }
}

}  // namespace

void Render(const State& state, std::span<const uint8_t> pixels, std::span<uint8_t> shown) {
  const Rgb gains = MakeGains(state);
  const size_t size = std::min(pixels.size(), shown.size());
  for (size_t i = 0; i + 3 <= size; i += 3) {
    Rgb rgb = {pixels[i] / kInputMaximum, pixels[i + 1] / kInputMaximum,
               pixels[i + 2] / kInputMaximum};
    if (state.has3DLut) {
      rgb = LookUp3D(state.lut3D, rgb);
    }
    if (state.hasGammaLut) {
      rgb = LookUpGamma(state.gammaLut, rgb);
    }
    if (state.hasMatrix) {
      rgb = Multiply(state.matrix, rgb);
    }
    for (size_t c = 0; c < 3; ++c) {
      shown[i + c] = static_cast<uint8_t>(std::lround(Unit(rgb[c] * gains[c]) * 255));
    }
  }
}

}  // namespace softwarepanel
