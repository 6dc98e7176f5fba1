#include "lut/LutComposition.h"

#include <algorithm>
#include <memory>
#include <new>

#include "frame/Avx2.h"
#include "frame/IntegerCast.h"
#include "lut/LutBlock.h"

namespace velora {
namespace {

// A value is a grid coordinate and, in its low bits, the way to the next grid point.
constexpr uint32_t kFractionBits = 6;
constexpr uint32_t kGridStep = 1u << kFractionBits;
constexpr uint32_t kFractionMask = kGridStep - 1;

// Distance of the neighbouring entry along each axis.
constexpr uint32_t kRedStride = kGridSize * kGridSize;
constexpr uint32_t kGreenStride = kGridSize;
constexpr uint32_t kBlueStride = 1;

// Distance of a cell's corners, named by their offsets along red, green and blue, from corner 000.
constexpr uint32_t k001 = kBlueStride;
constexpr uint32_t k010 = kGreenStride;
constexpr uint32_t k011 = kGreenStride + kBlueStride;
constexpr uint32_t k100 = kRedStride;
constexpr uint32_t k101 = kRedStride + kBlueStride;
constexpr uint32_t k110 = kRedStride + kGreenStride;
constexpr uint32_t k111 = kRedStride + kGreenStride + kBlueStride;

// Where a point lies in its cell: the weights of four corners, whose sum is kGridStep. Corners 000
// and 111 are always two of them.
struct Tetrahedron {
  uint32_t w0;  // of 000
  uint32_t w1;
  uint32_t corner1;
  uint32_t w2;
  uint32_t corner2;
  uint32_t w3;  // of 111
};

// The tetrahedron runs from 000 to 111 along the axes in the order of their fractions, the largest
// first; corner2 ends the first step, corner1 the second. The order of the tests settles which
// tetrahedron a point on a shared face belongs to.
Tetrahedron TetrahedronAt(uint32_t fr, uint32_t fg, uint32_t fb) {
  if (fb <= fg && fr <= fb) return {kGridStep - fg, fb - fr, k011, fg - fb, k010, fr};
  if (fb > fr && fg <= fr) return {kGridStep - fb, fr - fg, k101, fb - fr, k001, fg};
  if (fg < fb && fr < fg) return {kGridStep - fb, fg - fr, k011, fb - fg, k001, fr};
  if (fg < fr && fb <= fg) return {kGridStep - fr, fg - fb, k110, fr - fg, k100, fb};
  if (fr <= fg && fb < fr) return {kGridStep - fg, fr - fb, k110, fg - fr, k010, fb};
  return {kGridStep - fr, fb - fg, k101, fr - fb, k100, fg};
}

// A value as a grid coordinate and fraction. A block with a good hash can hold more than the 10
// bits of a LUT's values: such a value stands for the largest. So does what no block can hold, a
// value below 0 and no number: nothing may index beyond the grid.
int32_t OnGrid(double value) {
  const auto integer = static_cast<uint32_t>(TruncateToInt32(value));
  return static_cast<int32_t>(std::min<uint32_t>(integer, k3DMaxValue));
}

}  // namespace

void TetrahedralLookup(const int32_t rgb[3], const RgbTriple* lut, int32_t out[3]) {
  const auto r = static_cast<uint32_t>(rgb[0]);
  const auto g = static_cast<uint32_t>(rgb[1]);
  const auto b = static_cast<uint32_t>(rgb[2]);
  const Tetrahedron point = TetrahedronAt(r & kFractionMask, g & kFractionMask, b & kFractionMask);
  const uint32_t entry = (r >> kFractionBits) * kRedStride + (g >> kFractionBits) * kGreenStride +
                         (b >> kFractionBits) * kBlueStride;
  const RgbTriple* const cell = lut + entry;
  for (int c = 0; c < 3; ++c) {
    const uint32_t sum = point.w0 * static_cast<uint32_t>(cell[0][c]) +
                         point.w1 * static_cast<uint32_t>(cell[point.corner1][c]) +
                         point.w2 * static_cast<uint32_t>(cell[point.corner2][c]) +
                         point.w3 * static_cast<uint32_t>(cell[k111][c]);
    out[c] = static_cast<int32_t>((sum + kGridStep / 2) >> kFractionBits);
  }
}

bool ComposeLutsPlain(const double* first, const double* second, double* result) {
  constexpr size_t kEntries = k3DEntries;
  const std::unique_ptr<RgbTriple[]> lut(new (std::nothrow) RgbTriple[kEntries]);
  if (!lut) {
    return false;
  }
  for (size_t i = 0; i < kEntries; ++i) {
    for (size_t c = 0; c < 3; ++c) {
      lut[i][c] = TruncateToInt32(second[3 * i + c]);
    }
  }
  for (size_t i = 0; i < kEntries; ++i) {
    const double* entry = first + 3 * i;
    const int32_t rgb[3] = {OnGrid(entry[0]), OnGrid(entry[1]), OnGrid(entry[2])};
    int32_t out[3];
    TetrahedralLookup(rgb, lut.get(), out);
    for (size_t c = 0; c < 3; ++c) {
      result[3 * i + c] = out[c];
    }
  }
  return true;
}

double* ComposeLuts(const double* first, const double* second) {
  std::unique_ptr<double[]> result(new (std::nothrow) double[LutValueCount(k3DEntries)]);
  if (!result) {
    return nullptr;
  }
  const bool composed = (HasAvx2() && ComposeLutsAvx2(first, second, result.get())) ||
                        ComposeLutsPlain(first, second, result.get());
  return composed ? result.release() : nullptr;
}

}  // namespace velora
