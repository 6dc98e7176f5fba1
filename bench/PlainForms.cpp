#include "PlainForms.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

namespace bench {
namespace {

constexpr int kGridStep = 64;
constexpr size_t kBlockHeader = 128;

// The code of a grid point when a LUT is calculated: 0, 64 ... 512, 575 ... 1023.
double CodeAt(int point) { return std::round(kGridMaximum * point / (kGridPoints - 1)); }

double LightOf(double code, double gamma) {
  return static_cast<float>(std::pow(code / kGridMaximum, gamma));
}

double CodeOf(double light, double gamma) {
  const double code = static_cast<float>(std::pow(std::max(light, 0.0), 1 / gamma));
  return std::min(code, 1.0) * kGridMaximum;
}

}  // namespace

// Along the axes in the order of the fractions, the largest first: each corner on the way has the
// difference of two neighbouring fractions for its weight.
Lut PlainCompose(const Lut& first, const Lut& second) {
  constexpr std::array<int, 3> kStrides = {kGridPoints * kGridPoints, kGridPoints, 1};
  Lut result(first.size());
  for (size_t entry = 0; entry < first.size(); entry += 3) {
    int corner = 0;
    std::array<int, 3> fractions;
    for (size_t c = 0; c < 3; ++c) {
      const int code = std::min(static_cast<int>(first[entry + c]), static_cast<int>(kGridMaximum));
      corner += code / kGridStep * kStrides[c];
      fractions[c] = code % kGridStep;
    }
    std::array<size_t, 3> axes = {0, 1, 2};
    for (const size_t axis : {0U, 1U, 0U}) {
      if (fractions[axes[axis]] < fractions[axes[axis + 1]]) {
        std::swap(axes[axis], axes[axis + 1]);
      }
    }
    std::array<int, 3> sum = {};
    int left = kGridStep;
    for (size_t step = 0; step < 4; ++step) {
      const int beyond = step < 3 ? fractions[axes[step]] : 0;
      for (size_t c = 0; c < 3; ++c) {
        sum[c] += (left - beyond) * static_cast<int>(second[static_cast<size_t>(corner) * 3 + c]);
      }
      left = beyond;
      corner += step < 3 ? kStrides[axes[step]] : 0;
    }
    for (size_t c = 0; c < 3; ++c) {
      result[entry + c] = (sum[c] + kGridStep / 2) / kGridStep;
    }
  }
  return result;
}

Lut PlainGenerate(const std::array<double, 9>& matrix, double targetGamma, double panelGamma) {
  Lut lut;
  lut.reserve(3 * kGridEntries);
  for (int r = 0; r < kGridPoints; ++r) {
    for (int g = 0; g < kGridPoints; ++g) {
      for (int b = 0; b < kGridPoints; ++b) {
        const double light[3] = {LightOf(CodeAt(r), targetGamma), LightOf(CodeAt(g), targetGamma),
                                 LightOf(CodeAt(b), targetGamma)};
        for (size_t c = 0; c < 3; ++c) {
          const double* const row = &matrix[3 * c];
          lut.push_back(
              CodeOf(row[0] * light[0] + row[1] * light[1] + row[2] * light[2], panelGamma));
        }
      }
    }
  }
  return lut;
}

Lut PlainDecode(std::span<const uint8_t> block, int entries) {
  const auto count = static_cast<size_t>(entries);
  Lut lut;
  lut.reserve(3 * count);
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* const word = &block[kBlockHeader + 4 * i];
    const uint8_t extension = block[kBlockHeader + 4 * count + i];
    lut.push_back(extension * 256 + word[0]);
    lut.push_back(word[1] * 16 + word[2] / 16);
    lut.push_back(word[2] % 16 * 256 + word[3]);
  }
  return lut;
}

Lut PlainBend(const Lut& lut, const std::array<double, 3>& gains, double exponent) {
  Lut result(lut.size());
  for (size_t i = 0; i < lut.size(); ++i) {
    const double value = lut[i] * gains[i % 3];
    result[i] = kGammaMaximum * std::pow(value / kGammaMaximum, exponent);
  }
  return result;
}

// VESA E-EDID 1.4, section 3: ten-bit coordinates have their low bits apart.
PlainEdid PlainParseEdid(std::span<const uint8_t> edid) {
  PlainEdid result;
  const int letters = edid[8] * 256 + edid[9];
  for (size_t i = 0; i < 3; ++i) {
    result.vendor[i] = static_cast<char>('@' + (letters >> (10 - 5 * i) & 31));
  }
  std::copy_n(&edid[12], 4, result.serialNumber.begin());
  result.week = edid[16];
  result.year = 1990 + edid[17];
  result.gamma = 1 + edid[23] / 100.0;
  for (size_t i = 0; i < 8; ++i) {
    const int lowBits = edid[25 + i / 4] >> (6 - 2 * (i % 4)) & 3;
    result.chromaticities[i] = (edid[27 + i] * 4 + lowBits) / 1024.0;
  }
  return result;
}

double LargestDifference(std::span<const double> a, std::span<const double> b) {
  return std::transform_reduce(
      a.begin(), a.end(), b.begin(), 0.0, [](double x, double y) { return std::max(x, y); },
      [](double x, double y) { return std::fabs(x - y); });
}

}  // namespace bench
