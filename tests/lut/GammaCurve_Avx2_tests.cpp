// The fast way of bending a gamma LUT against the plain one, bit for bit.
#include "lut/GammaCurve.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "frame/Avx2.h"
#include "support/GuardedBuffer.h"

namespace velora {
namespace {

using Lut = std::vector<double>;

constexpr size_t kValues = LutValueCount(kGammaEntries);
constexpr RgbGains kNoGains = {1, 1, 1};

class GammaCurveAvx2 : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasAvx2()) {
      GTEST_SKIP() << "a processor without AVX2";
    }
  }

  // From low to high, with all bits of the mantissa.
  double Random(double low, double high) {
    return low + (high - low) * (static_cast<double>(random_() >> 11) * 0x1p-53);
  }

  // A level of the firmware's LUT.
  double Level() { return static_cast<double>(random_() % 4096); }

  std::mt19937_64 random_;
};

// The LUT ends at a page without access.
void ExpectPlain(const Lut& lut, const RgbGains& gains, double exponent) {
  Lut plain = lut;
  BendGammaLutPlain(gains, exponent, plain.data());
  const testsupport::GuardedBuffer buffer(
      {reinterpret_cast<const uint8_t*>(lut.data()), kValues * sizeof(double)});
  const auto* fast = reinterpret_cast<double*>(buffer.data());
  BendGammaLutAvx2(gains, exponent, reinterpret_cast<double*>(buffer.data()));
  for (size_t i = 0; i < kValues; ++i) {
    ASSERT_EQ(std::bit_cast<uint64_t>(fast[i]), std::bit_cast<uint64_t>(plain[i]))
        << std::hexfloat << lut[i] << " " << exponent;
  }
}

TEST_F(GammaCurveAvx2, TenMillionRandomValues) {
  Lut lut(kValues);
  for (int i = 0; i < 3300; ++i) {
    for (double& value : lut) {
      value = i % 2 == 0 ? Level() : Random(0, 4095);
    }
    const RgbGains gains = {Random(0.8, 1.01), Random(0.8, 1.01), Random(0.8, 1.01)};
    ExpectPlain(lut, gains, Random(kLeastExponentForAvx2, kGreatestExponentForAvx2));
  }
}

// All levels, by the gammas that modes have.
TEST_F(GammaCurveAvx2, AllLevels) {
  for (int gamma = 110; gamma <= 330; gamma += 4) {
    for (int first = 0; first < 4096; first += kGammaEntries) {
      Lut lut;
      for (int i = first; i < first + kGammaEntries; ++i) {
        lut.insert(lut.end(), 3, i);
      }
      ExpectPlain(lut, {1, 0.97, 0.9}, gamma / 100.0 / kFirmwareGamma);
    }
  }
}

// Exact powers that are half-way between two doubles: cubes of odd numbers of 18 bits have 54.
TEST_F(GammaCurveAvx2, RoundingBoundaries) {
  Lut lut;
  for (uint64_t root = 208065; lut.size() < 20 * kValues; root += 2) {
    const double square = std::ldexp(static_cast<double>(root * root), -36);
    const double value = square * kGammaMaxValue;
    ASSERT_EQ(value / kGammaMaxValue, square);
    lut.insert(lut.end(), {std::nextafter(value, 0), value, std::nextafter(value, 4096)});
  }
  for (size_t i = 0; i < lut.size(); i += kValues) {
    ExpectPlain(Lut(&lut[i], &lut[i] + kValues), kNoGains, 1.5);
  }
}

TEST_F(GammaCurveAvx2, ExactRoots) {
  Lut lut;
  for (size_t i = 0; i < kValues; ++i) {
    const double root = static_cast<double>(i) / 2048;
    lut.push_back(root * root * kGammaMaxValue);
  }
  ExpectPlain(lut, kNoGains, 0.5);
  ExpectPlain(lut, kNoGains, 1.0);
}

// The table goes from 2^-13 to 2.
TEST_F(GammaCurveAvx2, AllMagnitudes) {
  Lut lut;
  for (size_t i = 0; i < kValues; ++i) {
    lut.push_back(std::ldexp(Random(1, 2), 30 - static_cast<int>(i % 60)));
  }
  for (const double exponent : {0.5, 0.75, 1.0, 1.1, 1.25, 1.5}) {
    ExpectPlain(lut, kNoGains, exponent);
  }
}

TEST_F(GammaCurveAvx2, OddValuesInEachLane) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  Lut odd = {0.0, -0.0, 5e-324, -1, 1e300, -1e300, kInfinity, -kInfinity, kNan};
  for (const double edge : {0x1p-13, 1.0, 2.0}) {
    const double value = edge * kGammaMaxValue;
    odd.insert(odd.end(), {std::nextafter(value, 0), value, std::nextafter(value, 1e9)});
  }
  for (size_t lane = 0; lane < 12; ++lane) {
    Lut lut(kValues, 2000);
    for (size_t i = 0; i < odd.size(); ++i) {
      lut[i * 12 + lane] = odd[i];
    }
    Lut plain = lut;
    BendGammaLutPlain(kNoGains, 1.1, plain.data());
    BendGammaLutAvx2(kNoGains, 1.1, lut.data());
    for (size_t i = 0; i < kValues; ++i) {
      EXPECT_TRUE(lut[i] == plain[i] || (std::isnan(lut[i]) && std::isnan(plain[i]))) << i;
    }
  }
}

// The precision that a host's thread may have given the x87: 53 bits of its 64.
class LessPrecision {
 public:
  LessPrecision() {
    asm("fnstcw %0" : "=m"(before_));
    const auto less = static_cast<uint16_t>((before_ & ~0x300) | 0x200);
    asm volatile("fldcw %0" : : "m"(less));
  }
  ~LessPrecision() { asm volatile("fldcw %0" : : "m"(before_)); }
  LessPrecision(const LessPrecision&) = delete;
  LessPrecision& operator=(const LessPrecision&) = delete;

 private:
  uint16_t before_ = 0;
};

// The C library's power is another one there, and decides.
TEST_F(GammaCurveAvx2, AnX87OfLessPrecision) {
  Lut lut(kValues);
  for (double& value : lut) {
    value = Level();
  }
  Lut plain = lut;
  {
    const LessPrecision precision;
    BendGammaLut({0.9, 0.95, 1}, 1.1, lut.data());
    BendGammaLutPlain({0.9, 0.95, 1}, 1.1, plain.data());
  }
  EXPECT_EQ(lut, plain);
}

}  // namespace

// What the fast way is not for: other exponents.
TEST(GammaCurve, BendGammaLut_AnyExponent) {
  for (const double exponent : {0.0, 0.1, 0.49, 1.51, 2.0, 2.4, 3.0, 10.0, -1.0}) {
    Lut lut;
    for (size_t i = 0; i < kValues; ++i) {
      lut.push_back(static_cast<double>(i));
    }
    Lut plain = lut;
    BendGammaLut({0.9, 0.95, 1}, exponent, lut.data());
    BendGammaLutPlain({0.9, 0.95, 1}, exponent, plain.data());
    EXPECT_EQ(lut, plain) << exponent;
  }
}

}  // namespace velora
