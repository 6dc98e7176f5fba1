#include "lut/GammaCurve.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace velora {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<double> Ramp() {
  std::vector<double> lut;
  for (int i = 0; i < kGammaEntries; ++i) {
    lut.insert(lut.end(), {i * 4.0, i * 3.0, i * 2.0});
  }
  return lut;
}

TEST(GammaCurve, BendGammaLut_GainsThenPower) {
  std::vector<double> lut = Ramp();
  BendGammaLut({0.5, 0.25, 1.0}, 2.0, lut.data());
  for (size_t i = 0; i < kGammaEntries; ++i) {
    const auto x = static_cast<double>(i);
    // (gain * value)^2 / 4095, near enough by hand
    EXPECT_NEAR(lut[3 * i], x * 2 * x * 2 / 4095, 1e-9) << i;
    EXPECT_NEAR(lut[3 * i + 1], x * 0.75 * x * 0.75 / 4095, 1e-9) << i;
    EXPECT_NEAR(lut[3 * i + 2], x * 2 * x * 2 / 4095, 1e-9) << i;
  }
}

TEST(GammaCurve, BendGammaLut_ExponentOneKeepsTheCurve) {
  std::vector<double> lut = Ramp();
  BendGammaLut({1, 1, 1}, kFirmwareGamma / 2.2, lut.data());
  const std::vector<double> ramp = Ramp();
  for (size_t i = 0; i < lut.size(); ++i) EXPECT_NEAR(lut[i], ramp[i], 1e-9) << i;
}

TEST(GammaCurve, BendGammaLut_ExponentZeroIsTheMaximumEverywhere) {
  std::vector<double> lut = Ramp();
  BendGammaLut({0, 0, 0}, 0, lut.data());
  for (double value : lut) EXPECT_EQ(value, 4095.0);
}

TEST(GammaCurve, BendGammaLut_NothingIsCutOff) {
  std::vector<double> lut = Ramp();
  BendGammaLut({2, 1, 1}, 1, lut.data());
  EXPECT_NEAR(lut[3 * 1023], 8184, 1e-9);
}

TEST(GammaCurve, AreGainsValid_TheLimitsAreIncluded) {
  const auto low = std::bit_cast<double>(uint64_t{0x3FECCCB7D41743EA});
  const auto high = std::bit_cast<double>(uint64_t{0x3FF0000A7C5AC472});
  const double below = std::nextafter(low, 0);
  const double above = std::nextafter(high, 2);
  EXPECT_TRUE(AreGainsValid({low, 1, high}));
  EXPECT_EQ(below, 0.89999) << "the double of the decimal is one step outside";
  for (double bad : {below, above, 0.89998, 1.00002, 0.0, 1e-16, -1.0, 1e300}) {
    EXPECT_FALSE(AreGainsValid({bad, 1, 1})) << bad;
    EXPECT_FALSE(AreGainsValid({1, bad, 1})) << bad;
    EXPECT_FALSE(AreGainsValid({1, 1, bad})) << bad;
  }
  EXPECT_TRUE(AreGainsValid({kNan, kNan, kNan})) << "neither below nor above";
}

TEST(GammaCurve, HasGains_EachMustBeAbove1e16) {
  const double above = std::nextafter(1e-16, 1);
  EXPECT_TRUE(HasGains({above, above, above}));
  for (double none : {1e-16, 0.0, -1.0, kNan}) {
    EXPECT_FALSE(HasGains({none, 1, 1})) << none;
    EXPECT_FALSE(HasGains({1, none, 1})) << none;
    EXPECT_FALSE(HasGains({1, 1, none})) << none;
  }
}

TEST(GammaCurve, MultiplyGammaLut_PerChannelWithoutRoundingOrLimit) {
  const std::vector<double> in = Ramp();
  std::vector<double> out(in.size(), -1);
  MultiplyGammaLut(in.data(), {1.00001, 0.95, 1}, out.data());
  for (size_t i = 0; i < kGammaEntries; ++i) {
    EXPECT_EQ(out[3 * i], in[3 * i] * 1.00001) << i;
    EXPECT_EQ(out[3 * i + 1], in[3 * i + 1] * 0.95) << i;
    EXPECT_EQ(out[3 * i + 2], in[3 * i + 2]) << i;
  }
}

TEST(GammaCurve, IsLastTripleLit_LooksAtTheLastTripleOnly) {
  for (int entries : {kGammaEntries, k3DEntries}) {
    std::vector<double> lut(LutValueCount(entries), 0.0);
    for (size_t c = 0; c < 3; ++c) lut[lut.size() - 3 + c] = 1e-16;
    EXPECT_TRUE(IsLastTripleLit(lut.data(), entries));
    for (size_t c = 0; c < 3; ++c) {
      lut[lut.size() - 3 + c] = std::nextafter(1e-16, 0);
      EXPECT_FALSE(IsLastTripleLit(lut.data(), entries)) << c;
      lut[lut.size() - 3 + c] = -5;
      EXPECT_FALSE(IsLastTripleLit(lut.data(), entries)) << c;
      lut[lut.size() - 3 + c] = kNan;
      EXPECT_TRUE(IsLastTripleLit(lut.data(), entries)) << "not below";
      lut[lut.size() - 3 + c] = 1;
    }
  }
}

}  // namespace
}  // namespace velora
