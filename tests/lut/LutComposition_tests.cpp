#include "lut/LutComposition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "lut/LutBlock.h"
#include "support/FailingNew.h"
#include "support/GuardedBuffer.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;
using Triple = std::array<int, 3>;
using Lut = std::vector<double>;

size_t EntryAt(int r, int g, int b) { return static_cast<size_t>(r * 289 + g * 17 + b); }

// An integer LUT whose last entry ends at a page without access: a look-up beyond the grid crashes.
class IntegerLut {
 public:
  explicit IntegerLut(const std::vector<int32_t>& values)
      : buffer_({reinterpret_cast<const uint8_t*>(values.data()), values.size() * 4}) {}

  const RgbTriple* data() const { return reinterpret_cast<const RgbTriple*>(buffer_.data()); }
  Triple At(int r, int g, int b) const {
    const RgbTriple& entry = data()[EntryAt(r, g, b)];
    return {entry[0], entry[1], entry[2]};
  }

 private:
  GuardedBuffer buffer_;
};

std::vector<int32_t> RandomValues(unsigned seed) {
  std::mt19937 random(seed);
  std::vector<int32_t> values(4913 * 3);
  for (int32_t& value : values) {
    value = static_cast<int32_t>(random() % 1024);
  }
  return values;
}

Triple LookUp(const IntegerLut& lut, Triple rgb) {
  const int32_t in[3] = {rgb[0], rgb[1], rgb[2]};
  int32_t out[3] = {-1, -1, -1};
  TetrahedralLookup(in, lut.data(), out);
  return {out[0], out[1], out[2]};
}

// The plain way: walk from the lower corner to the upper one along the axes in the given order,
// and weight each corner by how far the walk goes on before its next turn.
Triple WalkAlong(const IntegerLut& lut, Triple rgb, Triple axes) {
  Triple corner;
  Triple fraction;
  for (size_t i = 0; i < 3; ++i) {
    corner[i] = rgb[i] / 64;
    fraction[i] = rgb[i] % 64;
  }
  std::array<double, 3> sum{};
  double position = 1;
  for (size_t step = 0; step <= 3; ++step) {
    const double next = step < 3 ? fraction[static_cast<size_t>(axes[step])] / 64.0 : 0;
    const Triple entry = lut.At(corner[0], corner[1], corner[2]);
    for (size_t c = 0; c < 3; ++c) {
      sum[c] += (position - next) * entry[c];
    }
    position = next;
    if (step < 3) {
      ++corner[static_cast<size_t>(axes[step])];
    }
  }
  Triple result;
  for (size_t c = 0; c < 3; ++c) {
    result[c] = static_cast<int>(std::floor(sum[c] + 0.5));  // exact: all are multiples of 1/64
  }
  return result;
}

// All orders of the axes by falling fraction; where fractions are equal there are several, one for
// each tetrahedron that the point belongs to.
std::vector<Triple> OrdersOf(Triple rgb) {
  std::vector<Triple> orders;
  Triple axes = {0, 1, 2};
  do {
    const auto fraction = [&](size_t i) { return rgb[static_cast<size_t>(axes[i])] % 64; };
    if (fraction(0) >= fraction(1) && fraction(1) >= fraction(2)) {
      orders.push_back(axes);
    }
  } while (std::next_permutation(axes.begin(), axes.end()));
  return orders;
}

Triple OracleLookUp(const IntegerLut& lut, Triple rgb) {
  return WalkAlong(lut, rgb, OrdersOf(rgb).front());
}

// Every point of one cell. On shared faces the tetrahedra agree (the corner that they dispute has
// weight 0), so the order of the look-up's tests can't show in its results.
void ExpectOracleInWholeCell(const IntegerLut& lut, int r, int g, int b) {
  for (int fr = 0; fr < 64; ++fr) {
    for (int fg = 0; fg < 64; ++fg) {
      for (int fb = 0; fb < 64; ++fb) {
        const Triple rgb = {64 * r + fr, 64 * g + fg, 64 * b + fb};
        const Triple result = LookUp(lut, rgb);
        for (const Triple& order : OrdersOf(rgb)) {
          ASSERT_EQ(result, WalkAlong(lut, rgb, order)) << rgb[0] << " " << rgb[1] << " " << rgb[2];
        }
      }
    }
  }
}

TEST(LutComposition, TetrahedralLookup_AllPointsOfTheFirstCell) {
  ExpectOracleInWholeCell(IntegerLut(RandomValues(1)), 0, 0, 0);
}

TEST(LutComposition, TetrahedralLookup_AllPointsOfTheLastCell) {
  ExpectOracleInWholeCell(IntegerLut(RandomValues(2)), 15, 15, 15);
}

TEST(LutComposition, TetrahedralLookup_AllPointsOfAnInnerCell) {
  ExpectOracleInWholeCell(IntegerLut(RandomValues(3)), 3, 11, 6);
}

TEST(LutComposition, TetrahedralLookup_RandomPointsOfTheWholeGrid) {
  const IntegerLut lut(RandomValues(4));
  std::mt19937 random(5);
  const auto value = [&random] { return static_cast<int>(random() % 1024); };
  for (int i = 0; i < 200000; ++i) {
    const Triple rgb = {value(), value(), value()};
    ASSERT_EQ(LookUp(lut, rgb), OracleLookUp(lut, rgb));
  }
}

// The weights of the first cell's corners 000, 001, 010, ... 111 at a point: each corner in turn
// holds the only value that is not 0, and holds 64, so that its weight comes out.
std::array<int, 8> WeightsAt(Triple rgb) {
  std::array<int, 8> weights;
  for (int corner = 0; corner < 8; ++corner) {
    std::vector<int32_t> values(4913 * 3);
    values[3 * EntryAt(corner >> 2, corner >> 1 & 1, corner & 1)] = 64;
    weights[static_cast<size_t>(corner)] = LookUp(IntegerLut(values), rgb)[0];
  }
  return weights;
}

TEST(LutComposition, TetrahedralLookup_WeightsOfEachTetrahedron) {
  using Weights = std::array<int, 8>;
  // Corners                                000 001 010 011 100 101 110 111
  EXPECT_EQ(WeightsAt({8, 32, 18}), (Weights{32, 0, 14, 10, 0, 0, 0, 8}));  // g > b > r
  EXPECT_EQ(WeightsAt({18, 8, 32}), (Weights{32, 14, 0, 0, 0, 10, 0, 8}));  // b > r > g
  EXPECT_EQ(WeightsAt({8, 18, 32}), (Weights{32, 14, 0, 10, 0, 0, 0, 8}));  // b > g > r
  EXPECT_EQ(WeightsAt({32, 18, 8}), (Weights{32, 0, 0, 0, 14, 0, 10, 8}));  // r > g > b
  EXPECT_EQ(WeightsAt({18, 32, 8}), (Weights{32, 0, 14, 0, 0, 0, 10, 8}));  // g > r > b
  EXPECT_EQ(WeightsAt({32, 8, 18}), (Weights{32, 0, 0, 0, 14, 10, 0, 8}));  // r > b > g
}

TEST(LutComposition, TetrahedralLookup_WeightsOfEqualFractions) {
  using Weights = std::array<int, 8>;
  // Corners                                 000 001 010 011 100 101 110 111
  EXPECT_EQ(WeightsAt({20, 20, 20}), (Weights{44, 0, 0, 0, 0, 0, 0, 20}));
  EXPECT_EQ(WeightsAt({8, 20, 20}), (Weights{44, 0, 0, 12, 0, 0, 0, 8}));
  EXPECT_EQ(WeightsAt({20, 8, 20}), (Weights{44, 0, 0, 0, 0, 12, 0, 8}));
  EXPECT_EQ(WeightsAt({20, 20, 8}), (Weights{44, 0, 0, 0, 0, 0, 12, 8}));
  EXPECT_EQ(WeightsAt({20, 8, 8}), (Weights{44, 0, 0, 0, 12, 0, 0, 8}));
  EXPECT_EQ(WeightsAt({8, 20, 8}), (Weights{44, 0, 12, 0, 0, 0, 0, 8}));
  EXPECT_EQ(WeightsAt({8, 8, 20}), (Weights{44, 12, 0, 0, 0, 0, 0, 8}));
  EXPECT_EQ(WeightsAt({0, 0, 0}), (Weights{64, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(LutComposition, TetrahedralLookup_GridPointsAreExact) {
  const IntegerLut lut(RandomValues(6));
  for (int r = 0; r < 16; ++r) {
    for (int g = 0; g < 16; ++g) {
      for (int b = 0; b < 16; ++b) {
        ASSERT_EQ(LookUp(lut, {64 * r, 64 * g, 64 * b}), lut.At(r, g, b));
      }
    }
  }
}

TEST(LutComposition, TetrahedralLookup_DiagonalOfTheGrid) {
  const IntegerLut lut(RandomValues(7));
  for (int v = 0; v < 1024; ++v) {
    const Triple low = lut.At(v / 64, v / 64, v / 64);
    const Triple high = lut.At(v / 64 + 1, v / 64 + 1, v / 64 + 1);
    Triple expected;
    for (size_t c = 0; c < 3; ++c) {
      expected[c] = ((64 - v % 64) * low[c] + v % 64 * high[c] + 32) / 64;
    }
    ASSERT_EQ(LookUp(lut, {v, v, v}), expected) << v;
  }
}

TEST(LutComposition, TetrahedralLookup_RoundsHalvesUp) {
  std::vector<int32_t> values(4913 * 3);
  values[3 * EntryAt(1, 0, 0)] = 1;
  values[3 * EntryAt(1, 0, 0) + 1] = 3;
  const IntegerLut lut(values);
  EXPECT_EQ(LookUp(lut, {31, 0, 0}), (Triple{0, 1, 0}));  // 0.484 and 1.453
  EXPECT_EQ(LookUp(lut, {32, 0, 0}), (Triple{1, 2, 0}));  // 0.5 and 1.5
  EXPECT_EQ(LookUp(lut, {33, 0, 0}), (Triple{1, 2, 0}));  // 0.516 and 1.547
}

TEST(LutComposition, TetrahedralLookup_IsUnsigned) {
  const IntegerLut lut(std::vector<int32_t>(4913 * 3, -1));
  // 64 * 0xFFFFFFFF + 32 is 0xFFFFFFE0 in 32 bits.
  EXPECT_EQ(LookUp(lut, {0, 0, 0}), (Triple{0x3FFFFFF, 0x3FFFFFF, 0x3FFFFFF}));
}

// --- ComposeLuts ---

Lut ToDoubles(const std::vector<int32_t>& values) { return {values.begin(), values.end()}; }

Lut MakeIdentity() {
  Lut lut;
  for (int r = 0; r < 17; ++r) {
    for (int g = 0; g < 17; ++g) {
      for (int b = 0; b < 17; ++b) {
        for (const int c : {r, g, b}) {
          lut.push_back(std::min(64 * c, 1023));
        }
      }
    }
  }
  return lut;
}

Lut Compose(const Lut& first, const Lut& second) {
  const std::unique_ptr<double[]> result(ComposeLuts(first.data(), second.data()));
  return {result.get(), result.get() + 4913 * 3};
}

TEST(LutComposition, ComposeLuts_AppliesTheSecondToTheFirst) {
  const std::vector<int32_t> first = RandomValues(8);
  const std::vector<int32_t> second = RandomValues(9);
  const IntegerLut lut(second);
  Lut expected;
  for (size_t i = 0; i < first.size(); i += 3) {
    const Triple entry = OracleLookUp(lut, {first[i], first[i + 1], first[i + 2]});
    expected.insert(expected.end(), entry.begin(), entry.end());
  }
  EXPECT_EQ(Compose(ToDoubles(first), ToDoubles(second)), expected);
}

TEST(LutComposition, ComposeLuts_LeavesItsArguments) {
  const Lut first = ToDoubles(RandomValues(10));
  const Lut second = ToDoubles(RandomValues(11));
  const Lut firstCopy = first;
  const Lut secondCopy = second;
  Compose(first, second);
  EXPECT_EQ(first, firstCopy);
  EXPECT_EQ(second, secondCopy);
}

// Exact up to the last grid step, which the identity's cap at 1023 shortens by one.
TEST(LutComposition, ComposeLuts_WithAnIdentityBase) {
  const Lut first = ToDoubles(RandomValues(12));
  const Lut result = Compose(first, MakeIdentity());
  for (size_t i = 0; i < first.size(); ++i) {
    const double v = first[i];
    ASSERT_EQ(result[i], v <= 960 ? v : std::floor(960 + (v - 960) * 63 / 64 + 0.5)) << i;
    ASSERT_LE(std::abs(result[i] - v), 1) << i;
  }
}

// Each grid point but those of the last planes finds its own entry.
TEST(LutComposition, ComposeLuts_OfAnIdentity) {
  const Lut second = ToDoubles(RandomValues(13));
  const Lut result = Compose(MakeIdentity(), second);
  for (int r = 0; r < 16; ++r) {
    for (int g = 0; g < 16; ++g) {
      for (int b = 0; b < 16; ++b) {
        for (size_t c = 0; c < 3; ++c) {
          const size_t i = 3 * EntryAt(r, g, b) + c;
          ASSERT_EQ(result[i], second[i]) << i;
        }
      }
    }
  }
}

TEST(LutComposition, ComposeLuts_CutsFractionsOfBoth) {
  const Lut first = ToDoubles(RandomValues(14));
  const Lut second = ToDoubles(RandomValues(15));
  Lut firstWithFractions = first;
  Lut secondWithFractions = second;
  for (size_t i = 0; i < first.size(); ++i) {
    firstWithFractions[i] += 0.9;
    secondWithFractions[i] += 0.9;
  }
  EXPECT_EQ(Compose(firstWithFractions, secondWithFractions), Compose(first, second));
}

// A failed look-up of the first LUT leaves zeros: the second LUT's first entry everywhere.
TEST(LutComposition, ComposeLuts_OfZeros) {
  const Lut second = ToDoubles(RandomValues(16));
  const Lut result = Compose(Lut(4913 * 3), second);
  for (size_t i = 0; i < result.size(); ++i) {
    ASSERT_EQ(result[i], second[i % 3]) << i;
  }
}

// What an extension byte can make of red: the grid ends at 1023.
TEST(LutComposition, ComposeLuts_KeepsLargeValuesOnTheGrid) {
  Lut second = MakeIdentity();
  second[3 * 4912] = 777;
  Lut largest(4913 * 3, 1023);
  for (const double large : {1024.0, 1087.0, 4095.0, 65535.0}) {
    EXPECT_EQ(Compose(Lut(4913 * 3, large), second), Compose(largest, second)) << large;
  }
}

TEST(LutComposition, ComposeLuts_WithoutMemory) {
  const Lut lut(4913 * 3);
  const testsupport::FailingNew failure(1);
  EXPECT_EQ(ComposeLuts(lut.data(), lut.data()), nullptr);
  EXPECT_TRUE(failure.HasFailed());
}

}  // namespace
}  // namespace velora
