#include "colormath/ColorTemperatureTrans.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <string>

#include "support/LogCapture.h"

namespace velora {
namespace {

// Strengths as doubles of the widened single-precision values.
constexpr double k82 = 0.8199999928474426;
constexpr double k88 = 0.8799999952316284;
constexpr double k90 = 0.8999999761581421;
constexpr double k92 = 0.9200000166893005;
constexpr double k93 = 0.9300000071525574;
constexpr double k94 = 0.9399999976158142;
constexpr double k95 = 0.949999988079071;

ColorTemperatureRgb Rim(const ColorTemperatureTrans& trans, double theta) {
  ColorTemperatureRgb rgb = {-1, -1, -1};
  trans.GainCalc(1.0, theta, &rgb);
  return rgb;
}

void ExpectRgb(const ColorTemperatureRgb& rgb, double r, double g, double b) {
  EXPECT_EQ(rgb.r, r);
  EXPECT_EQ(rgb.g, g);
  EXPECT_EQ(rgb.b, b);
}

void ExpectHues(const ColorTemperatureTrans& trans, double r, double g, double b, double c,
                double m, double y) {
  ExpectRgb(Rim(trans, 0), c, 1, 1);
  ExpectRgb(Rim(trans, 60), b, b, 1);
  ExpectRgb(Rim(trans, 120), 1, m, 1);
  ExpectRgb(Rim(trans, 180), 1, r, r);
  ExpectRgb(Rim(trans, 240), 1, 1, y);
  ExpectRgb(Rim(trans, 300), g, 1, g);
}

class ColorTemperatureTransTest : public testing::Test {
 protected:
  // The gains of a point, (-1, -1, -1) where none are written.
  ColorTemperatureRgb Gains(double x, double y, double radius) {
    ColorTemperatureRgb rgb = {-1, -1, -1};
    trans.PointToGains({x, y}, radius, &rgb);
    return rgb;
  }
  void ExpectUnchanged(double x, double y, double radius) {
    ExpectRgb(Gains(x, y, radius), -1, -1, -1);
  }

  ColorTemperatureTrans trans;
  testsupport::LogCapture log;
};

TEST_F(ColorTemperatureTransTest, ConstructorsStrengths) {
  ExpectHues(trans, k93, k92, k88, k92, k93, k90);
}

TEST_F(ColorTemperatureTransTest, SetAlphas_RowsBitByBit) {
  ASSERT_TRUE(trans.SetAlphas(0));
  ExpectHues(trans, k95, k94, k82, k93, k94, k90);
  for (uint32_t type : {1u, 2u, 3u, 5u, 6u}) {
    ColorTemperatureTrans other;
    ASSERT_TRUE(other.SetAlphas(0));
    ASSERT_TRUE(other.SetAlphas(type)) << type;
    ExpectHues(other, k93, k92, k88, k92, k93, k90);
  }
  for (uint32_t type : {4u, 7u, 0xFFFFFFFFu}) {
    EXPECT_FALSE(trans.SetAlphas(type)) << type;
    ExpectHues(trans, k95, k94, k82, k93, k94, k90);
  }
}

// Between two hues, and between white and the rim, a straight line; against a plain second form.
TEST_F(ColorTemperatureTransTest, GainCalc_StraightLines) {
  const double hues[7][3] = {{k92, 1, 1}, {k88, k88, 1}, {1, k93, 1}, {1, k93, k93},
                             {1, 1, k90}, {k92, 1, k92}, {k92, 1, 1}};
  for (int degrees = 0; degrees < 360; degrees += 5) {
    for (double rho : {0.001, 0.25, 0.5, 1.0}) {
      ColorTemperatureRgb rgb = {};
      trans.GainCalc(rho, degrees, &rgb);
      const int sector = degrees / 60;
      const double t = degrees / 60.0 - sector;
      double expected[3];
      for (int c = 0; c < 3; ++c) {
        const double rim = hues[sector][c] * (1 - t) + hues[sector + 1][c] * t;
        expected[c] = 1.0 * (1 - rho) + rim * rho;
      }
      ExpectRgb(rgb, expected[0], expected[1], expected[2]);
    }
  }
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ColorTemperatureTransTest, GainCalc_RhoOutOfRange) {
  const struct {
    double rho;
    std::wstring text;
  } rows[] = {{0.0, L"0"},
              {-0.5, L"-0.5"},
              {std::nextafter(1.0, 2), L"1"},
              {2.0, L"2"},
              {std::numeric_limits<double>::quiet_NaN(), L"nan"}};
  for (const auto& row : rows) {
    const size_t before = log.Lines().size();
    ColorTemperatureRgb rgb = {-1, -1, -1};
    trans.GainCalc(row.rho, 90, &rgb);
    ExpectRgb(rgb, -1, -1, -1);
    ASSERT_EQ(log.Lines().size(), before + 1);
    EXPECT_EQ(log.Lines().back().level, 3);
    EXPECT_EQ(log.Lines().back().text, L"Invalid rho value, valid range:(0, 1]! rho:" + row.text +
                                           L"(ColorTemperatureTrans::GainCalc)");
  }
}

TEST_F(ColorTemperatureTransTest, GainCalc_SectorOutOfRange) {
  const struct {
    double theta;
    const wchar_t* sector;
  } rows[] = {{360, L"6"},
              {-1, L"-1"},
              {1e300, L"-2147483648"},
              {std::numeric_limits<double>::quiet_NaN(), L"-2147483648"}};
  for (const auto& row : rows) {
    const size_t before = log.Lines().size();
    ColorTemperatureRgb rgb = {-1, -1, -1};
    trans.GainCalc(0.5, row.theta, &rgb);
    ExpectRgb(rgb, -1, -1, -1);
    ASSERT_EQ(log.Lines().size(), before + 1);
    EXPECT_EQ(log.Lines().back().level, 3);
    EXPECT_EQ(log.Lines().back().text, L"Invalid theta type:" + std::wstring(row.sector) +
                                           L"(ColorTemperatureTrans::GainCalc)");
  }
}

TEST_F(ColorTemperatureTransTest, PointToGains_TheCentre) {
  ExpectUnchanged(80, 80, 80);
  ExpectUnchanged(80 + 1e-7, 80, 80);
  ExpectUnchanged(80, 80 - 1e-7, 80);
  ExpectUnchanged(0, 0, 0);
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_NE(Gains(80 + 2e-6, 80, 80).r, -1) << "no longer the centre";
}

TEST_F(ColorTemperatureTransTest, PointToGains_TheCentresEdge) {
  ExpectUnchanged(1e-6, 0, 0);
  EXPECT_NE(Gains(1.005e-6, 0, 0).r, -1);
}

// Where one arcsine takes over from the other.
TEST_F(ColorTemperatureTransTest, PointToGains_JustBelowTheHorizontal) {
  const ColorTemperatureRgb rgb = Gains(80.3, 80.4, 80);
  ColorTemperatureRgb expected;
  trans.GainCalc(0.5 / 80, 36.86989764584402, &expected);  // 3, 4, 5
  EXPECT_NEAR(rgb.r, expected.r, 1e-12);
  EXPECT_NEAR(rgb.g, expected.g, 1e-12);
  EXPECT_NEAR(rgb.b, expected.b, 1e-12);
}

TEST_F(ColorTemperatureTransTest, PointToGains_NearTheRim) {
  EXPECT_EQ(Gains(80, 80 - 80 * 1.005, 80).g, k93);
  EXPECT_NEAR(Gains(80, 80 - 80 * 0.995, 80).g, 1 - (1 - k93) * 0.995, 1e-12);
}

TEST_F(ColorTemperatureTransTest, PointToGains_TheRimsTopIsRed) {
  ExpectRgb(Gains(80, 0, 80), 1.0, 0.9300000071525574, 0.9300000071525574);
}

TEST_F(ColorTemperatureTransTest, PointToGains_StraightSidewaysIs90And270) {
  const auto sideways = [&](double theta) {
    ColorTemperatureRgb rgb;
    trans.GainCalc(1.0, theta, &rgb);
    return rgb;
  };
  const ColorTemperatureRgb right = sideways(90);
  const ColorTemperatureRgb left = sideways(270);
  ExpectRgb(Gains(160, 80, 80), right.r, right.g, right.b);
  ExpectRgb(Gains(0, 80, 80), left.r, left.g, left.b);
}

TEST_F(ColorTemperatureTransTest, PointToGains_TheRimsBottomIsCyan) {
  ExpectRgb(Gains(80, 160, 80), k92, 1, 1);
}

// Each quarter's direction: +y is 0 degrees, +x is 90.
TEST_F(ColorTemperatureTransTest, PointToGains_AnglesAgainstTheArctangent) {
  for (int degrees = 1; degrees < 360; degrees += 7) {
    const double radians = degrees * 3.141592653589793 / 180;
    const ColorTemperatureRgb rgb =
        Gains(80 + 40 * std::sin(radians), 80 + 40 * std::cos(radians), 80);
    ColorTemperatureRgb expected;
    trans.GainCalc(0.5, degrees, &expected);
    EXPECT_NEAR(rgb.r, expected.r, 1e-12) << degrees;
    EXPECT_NEAR(rgb.g, expected.g, 1e-12) << degrees;
    EXPECT_NEAR(rgb.b, expected.b, 1e-12) << degrees;
  }
}

TEST_F(ColorTemperatureTransTest, PointToGains_BeyondTheRimIsTheRim) {
  const ColorTemperatureRgb rim = Gains(80, 0, 80);
  ExpectRgb(Gains(80, -500, 80), rim.r, rim.g, rim.b);
}

TEST_F(ColorTemperatureTransTest, PointToGains_RadiusZero) {
  // The centre is the origin, the distance counts as it is.
  EXPECT_EQ(Gains(0, -0.5, 0).r, 1.0);
  EXPECT_NEAR(Gains(0, -0.5, 0).g, 0.5 + k93 * 0.5, 1e-15);
  ExpectRgb(Gains(0, -7, 0), 1.0, k93, k93);
  EXPECT_NEAR(Gains(0, -0.5, 1e-6).g, Gains(0, -0.5, 0).g, 1e-6) << "counts as 0";
}

TEST_F(ColorTemperatureTransTest, PointToGains_NegativeRadius) {
  ExpectUnchanged(0, 0, -80);
  ASSERT_EQ(log.Lines().size(), 1u);
  EXPECT_EQ(log.Lines()[0].text.substr(0, 51),
            L"Invalid rho value, valid range:(0, 1]! rho:-1.41421");
}

// Just left of straight down the angle rounds to a whole turn.
TEST_F(ColorTemperatureTransTest, PointToGains_JustLeftOfStraightDown) {
  ExpectUnchanged(-1e-15, 80, 0);
  ASSERT_EQ(log.Lines().size(), 1u);
  EXPECT_EQ(log.Lines()[0].text, L"Invalid theta type:6(ColorTemperatureTrans::GainCalc)");
}

TEST_F(ColorTemperatureTransTest, PointToGains_WhatIsNoNumber) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  ExpectUnchanged(nan, 80, 80);
  ExpectUnchanged(80, nan, 80);
  ExpectUnchanged(0, 0, nan);
  ExpectUnchanged(infinity, 0, 80);
  EXPECT_EQ(log.Lines().size(), 4u) << "each is refused with a line";
}

}  // namespace
}  // namespace velora
