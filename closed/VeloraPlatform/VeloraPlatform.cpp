#include "VeloraPlatform/VeloraPlatform.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "VeloraPlatform/SoftwarePanel.h"

// Results besides 0.
enum : int {
  kOk = 0,
  kRefused = 1,  // bad arguments, a stop without a start, or no shared memory for the panel
};

// The records cross a boundary between compilers: their layout is binding.
static_assert(sizeof(Color3DInfo) == 40 && offsetof(Color3DInfo, colorBlue) == 24 &&
              offsetof(Color3DInfo, protectValue) == 32);
static_assert(sizeof(Color2DInfo) == 8 && offsetof(Color2DInfo, colorBlue) == 4);
static_assert(sizeof(PlatformInfo) == 8 && sizeof(PlatformPccMatrix) == 72);

namespace {

using softwarepanel::State;

constexpr uint32_t kSliderMaximum = 366;
constexpr uint32_t kColorBlueMaximum = 255;

softwarepanel::SoftwarePanel& Panel() {
  static softwarepanel::SoftwarePanel panel;
  return panel;
}

template <typename Change>
int Update(Change change) {
  return Panel().Update(change) ? kOk : kRefused;
}

// False for not a number.
bool IsWithin(double value, double maximum) { return value >= 0 && value <= maximum; }

// A LUT of the right length with values in range, as a span; empty otherwise.
std::span<const double> CheckedLut(const double* lut, int count, size_t entries, double maximum) {
  if (!lut || count != static_cast<int>(entries)) {
    return {};
  }
  const std::span<const double> values(lut, entries * 3);
  const bool good = std::all_of(values.begin(), values.end(),
                                [=](double value) { return IsWithin(value, maximum); });
  return good ? values : std::span<const double>();
}

}  // namespace

int PlatformInit(void) {
  return Update([](State& state) {
    ++state.initCount;
    return true;
  });
}

int PlatformFini(void) {
  return Update([](State& state) {
    if (state.initCount == 0) {
      return false;
    }
    --state.initCount;
    return true;
  });
}

int GetPlatform(PlatformInfo* info) {
  if (!info || !Panel().IsOn()) {
    return kRefused;
  }
  State state;
  Panel().Read(state);
  *info = {state.platformType, state.platformSecond};
  return kOk;
}

int PlatformSet3DLut(const double* lut, int count) {
  const auto values =
      CheckedLut(lut, count, softwarepanel::kLut3DEntries, softwarepanel::kLut3DMaximum);
  if (values.empty()) {
    return kRefused;
  }
  return Update([values](State& state) {
    std::copy(values.begin(), values.end(), state.lut3D);
    state.has3DLut = 1;
    return true;
  });
}

int PlatformReset3DLut(void) {
  return Update([](State& state) {
    state.has3DLut = 0;
    return true;
  });
}

int PlatformSetGammaLut(const double* lut, int count) {
  const auto values =
      CheckedLut(lut, count, softwarepanel::kGammaEntries, softwarepanel::kGammaMaximum);
  if (values.empty()) {
    return kRefused;
  }
  return Update([values](State& state) {
    std::copy(values.begin(), values.end(), state.gammaLut);
    state.hasGammaLut = 1;
    return true;
  });
}

int PlatformSetPccMatrixInfo(const PlatformPccMatrix* matrix) {
  if (!matrix || !std::all_of(std::begin(matrix->values), std::end(matrix->values),
                              [](double value) { return std::isfinite(value); })) {
    return kRefused;
  }
  return Update([matrix](State& state) {
    std::copy(std::begin(matrix->values), std::end(matrix->values), state.matrix);
    state.hasMatrix = 1;
    return true;
  });
}

int PlatformResetPccMatrixInfo(void) {
  return Update([](State& state) {
    state.hasMatrix = 0;
    return true;
  });
}

int PlatformSet2DColorTemperature(const Color2DInfo* info) {
  if (!info || info->temperature > kSliderMaximum || info->colorBlue > kColorBlueMaximum) {
    return kRefused;
  }
  return Update([info](State& state) {
    state.temperature2D = *info;
    state.temperatureKind = softwarepanel::kTemperature2D;
    return true;
  });
}

int PlatformSet3DColorTemperature(const Color3DInfo* info) {
  if (!info || !IsWithin(info->r, 1) || !IsWithin(info->g, 1) || !IsWithin(info->b, 1) ||
      info->colorBlue > kColorBlueMaximum || !IsWithin(info->protectValue, 1)) {
    return kRefused;
  }
  return Update([info](State& state) {
    state.temperature3D = *info;
    state.temperatureKind = softwarepanel::kTemperature3D;
    return true;
  });
}
