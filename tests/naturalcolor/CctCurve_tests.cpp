#include "naturalcolor/CctCurve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace velora {
namespace {

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr float kEndless = std::numeric_limits<float>::infinity();

const CctCurve kCurve = {
    {3000.0F, 0.5, 0.25, 0.125}, {5000.0F, 1.0, 0.5, 0.25}, {7000.0F, 0.75, 1.0, 1.0}};

struct CurveGains {
  float r = -1.0F;
  float g = -1.0F;
  float b = -1.0F;

  friend bool operator==(const CurveGains&, const CurveGains&) = default;
};

CurveGains At(const CctCurve& curve, float cct) {
  CurveGains gains;
  EXPECT_TRUE(CalcCctRgb(curve, cct, gains.r, gains.g, gains.b));
  return gains;
}

TEST(CctCurve, Clamp) {
  EXPECT_EQ(Clamp(2.0F, 1.0F, 4.0F), 2.0F);
  EXPECT_EQ(Clamp(2.0F, 2.0F, 4.0F), 2.0F);
  EXPECT_EQ(Clamp(2.0F, 3.0F, 4.0F), 3.0F);
  EXPECT_EQ(Clamp(2.0F, 4.0F, 4.0F), 4.0F);
  EXPECT_EQ(Clamp(2.0F, 5.0F, 4.0F), 4.0F);
  EXPECT_EQ(Clamp(4.0F, 3.0F, 2.0F), 4.0F) << "the low bound is asked first";
  EXPECT_TRUE(std::isnan(Clamp(2.0F, kNoNumber, 4.0F)));
}

TEST(CctCurve, ClampToCurve_FirstAndLastPoint) {
  EXPECT_EQ(ClampToCurve(kCurve, -1e30F), 3000.0F);
  EXPECT_EQ(ClampToCurve(kCurve, 3000.5F), 3000.5F);
  EXPECT_EQ(ClampToCurve(kCurve, kEndless), 7000.0F);
}

TEST(CctCurve, FindNeutralCct_FirstPointWhoseGainsAreAllOne) {
  EXPECT_EQ(FindNeutralCct({{1.0F, 1, 1, 0.9}, {2.0F, 1, 1, 1}, {3.0F, 1, 1, 1}}), 2.0F);
}

TEST(CctCurve, FindNeutralCct_FractionsAreCutOff) {
  EXPECT_EQ(FindNeutralCct({{1.0F, 0.999999, 1, 1}, {2.0F, 1.7, 1.999999, 1}}), 2.0F);
  EXPECT_EQ(FindNeutralCct({{1.0F, 1, 2, 1}, {2.0F, 1, 1, -1}}), std::nullopt);
}

TEST(CctCurve, FindNeutralCct_None) {
  EXPECT_EQ(FindNeutralCct({}), std::nullopt);
  EXPECT_EQ(FindNeutralCct(kCurve), std::nullopt);
  const double nan = kNoNumber;
  EXPECT_EQ(FindNeutralCct({{1.0F, nan, 1, 1}}), std::nullopt);
}

TEST(CctCurve, CalcCctRgb_EmptyCurveLeavesTheGains) {
  CurveGains gains;
  EXPECT_FALSE(CalcCctRgb({}, 5000.0F, gains.r, gains.g, gains.b));
  EXPECT_EQ(gains, CurveGains());
}

TEST(CctCurve, CalcCctRgb_PointsGiveTheirOwnGains) {
  EXPECT_EQ(At(kCurve, 3000.0F), (CurveGains{0.5F, 0.25F, 0.125F})) << "the first interval";
  EXPECT_EQ(At(kCurve, 5000.0F), (CurveGains{1.0F, 0.5F, 0.25F}));
  EXPECT_EQ(At(kCurve, 7000.0F), (CurveGains{0.75F, 1.0F, 1.0F}));
}

TEST(CctCurve, CalcCctRgb_BetweenTwoPoints) {
  EXPECT_EQ(At(kCurve, 3500.0F), (CurveGains{0.625F, 0.3125F, 0.15625F}));
  EXPECT_EQ(At(kCurve, 6000.0F), (CurveGains{0.875F, 0.75F, 0.625F}));
}

TEST(CctCurve, CalcCctRgb_BeyondTheEnds) {
  EXPECT_EQ(At(kCurve, 0.0F), At(kCurve, 3000.0F));
  EXPECT_EQ(At(kCurve, -kEndless), At(kCurve, 3000.0F));
  EXPECT_EQ(At(kCurve, 1e9F), At(kCurve, 7000.0F));
}

// No number is in no interval: the first one is taken, and its end.
TEST(CctCurve, CalcCctRgb_NoNumber) {
  EXPECT_EQ(At(kCurve, kNoNumber), (CurveGains{1.0F, 0.5F, 0.25F}));
}

// Nearer to its end than the limit, and an interval no longer than it.
TEST(CctCurve, CalcCctRgb_NoLengthToDivideBy) {
  const CctCurve tiny = {{0.0F, 1, 1, 1}, {2e-6F, 2, 2, 2}, {1.0F, 4, 4, 4}};
  EXPECT_EQ(At(tiny, 1.5e-6F), (CurveGains{2, 2, 2}));
  EXPECT_EQ(At(tiny, 1e-6F), (CurveGains{2, 2, 2})) << "as near as the limit";
  EXPECT_NE(At(tiny, 0.5e-6F), (CurveGains{2, 2, 2}));
  const CctCurve twice = {{5000.0F, 1, 1, 1}, {5000.0F, 2, 2, 2}, {6000.0F, 4, 4, 4}};
  EXPECT_EQ(At(twice, 5000.0F), (CurveGains{1, 1, 1})) << "the first interval";
}

TEST(CctCurve, CalcCctRgb_OnePointGivesItsGains) {
  EXPECT_EQ(At({{5000.0F, 0.5, 0.25, 0.125}}, 4000.0F), (CurveGains{0.5F, 0.25F, 0.125F}));
}

// Each operation once, rounded to single precision behind it.
float Single(double value) { return static_cast<float>(value); }

float PlainGain(const CctAlgoInfo& from, const CctAlgoInfo& to, double CctAlgoInfo::*channel,
                float x) {
  const float y0 = Single(from.*channel);
  const float rise = Single(double{Single(to.*channel)} - y0);
  const float run = Single(double{x} - from.cct);
  const float product = Single(double{rise} * run);
  return Single(double{Single(double{product} / Single(double{to.cct} - from.cct))} + y0);
}

TEST(CctCurve, CalcCctRgb_SinglePrecisionThroughout) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> gain(0.3, 1.0);
  int differsFromDouble = 0;
  for (int round = 0; round < 2000; ++round) {
    const CctCurve curve = {{2713.3F, gain(random), gain(random), gain(random)},
                            {4999.7F, gain(random), gain(random), gain(random)},
                            {8123.9F, gain(random), gain(random), gain(random)}};
    const float cct = std::uniform_real_distribution<float>(2714.0F, 8123.0F)(random);
    const unsigned i = cct > curve[1].cct ? 1 : 0;
    const CurveGains gains = At(curve, cct);
    EXPECT_EQ(gains.r, PlainGain(curve[i], curve[i + 1], &CctAlgoInfo::r, cct));
    EXPECT_EQ(gains.g, PlainGain(curve[i], curve[i + 1], &CctAlgoInfo::g, cct));
    EXPECT_EQ(gains.b, PlainGain(curve[i], curve[i + 1], &CctAlgoInfo::b, cct));
    const double inDouble = (curve[i + 1].r - curve[i].r) * (double{cct} - curve[i].cct) /
                                (double{curve[i + 1].cct} - curve[i].cct) +
                            curve[i].r;
    differsFromDouble += gains.r != Single(inDouble) ? 1 : 0;
  }
  EXPECT_GT(differsFromDouble, 100) << "the precision would not show";
}

}  // namespace
}  // namespace velora
