// The jobs in their simplest form: what each calculates, written down without a thought of speed.
// The other contenders' results are compared with these.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace bench {

using Lut = std::vector<double>;  // R, G, B per entry

inline constexpr int kGridPoints = 17;
inline constexpr int kGridEntries = kGridPoints * kGridPoints * kGridPoints;
inline constexpr double kGridMaximum = 1023;
inline constexpr int kGammaLevels = 1024;
inline constexpr double kGammaMaximum = 4095;

// second(first(x)) on the grid, in whole numbers, rounded to nearest.
Lut PlainCompose(const Lut& first, const Lut& second);

// Six powers an entry: each channel's code to light, the matrix, and light to code.
Lut PlainGenerate(const std::array<double, 9>& matrix, double targetGamma, double panelGamma);

// The entries of a block, bit field by bit field.
Lut PlainDecode(std::span<const uint8_t> block, int entries);

// A gamma LUT bent by gains and an exponent.
Lut PlainBend(const Lut& lut, const std::array<double, 3>& gains, double exponent);

struct PlainEdid {
  std::array<char, 3> vendor;
  std::array<uint8_t, 4> serialNumber;
  int week;
  int year;
  double gamma;
  std::array<double, 8> chromaticities;  // red, green, blue, white
};
PlainEdid PlainParseEdid(std::span<const uint8_t> edid);

// The largest difference of two results of the same length.
double LargestDifference(std::span<const double> a, std::span<const double> b);

}  // namespace bench
