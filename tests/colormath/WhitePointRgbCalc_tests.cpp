#include "colormath/WhitePointRgbCalc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "colormath/UserDesignMath.h"
#include "support/LogCapture.h"

namespace velora {
namespace {

// sRGB primaries with one y for green and blue, as the class takes them, and a D65 white.
constexpr WhitePointInfo kD65Panel = {3127, 3290, 6400, 3300, 3000, 6000, 1500, 600};

TEST(WhitePointRgbCalc, NativeD65NeedsNoGain) {
  double rgb[3];
  EXPECT_EQ(WhitePointRgbCalc().GetWhitePointRgb(rgb, kD65Panel), rgb);
  for (double gain : rgb) EXPECT_NEAR(gain, 1.0, 1e-6);
  EXPECT_EQ(std::max({rgb[0], rgb[1], rgb[2]}), 1.0);
}

// Against Cramer's rule on r R + g G + b B = D65, in units of the native white's parts.
TEST(WhitePointRgbCalc, GainsOfAWarmPanel) {
  WhitePointInfo info = kD65Panel;
  info.whiteX = 3457;
  info.whiteY = 3585;
  double rgb[3];
  WhitePointRgbCalc().GetWhitePointRgb(rgb, info);
  const double p[3][3] = {{0.64, 0.30, 0.15}, {0.33, 0.60, 0.60}, {0.03, 0.10, 0.25}};
  const auto det = [](const double m[3][3]) {
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
  };
  const auto solve = [&](const double w[3], double out[3]) {
    for (int column = 0; column < 3; ++column) {
      double m[3][3];
      for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) m[i][j] = j == column ? w[i] : p[i][j];
      }
      out[column] = det(m) / det(p);
    }
  };
  const double native[3] = {0.3457 / 0.3585, 1, (1 - 0.3457 - 0.3585) / 0.3585};
  const double d65[3] = {0.3127 / 0.329, 1, (1 - 0.3127 - 0.329) / 0.329};
  double nativeParts[3];
  double d65Parts[3];
  solve(native, nativeParts);
  solve(d65, d65Parts);
  double expected[3];
  for (int c = 0; c < 3; ++c) expected[c] = std::pow(d65Parts[c] / nativeParts[c], 1 / 2.2);
  const double top = std::max({expected[0], expected[1], expected[2]});
  for (int c = 0; c < 3; ++c) EXPECT_NEAR(rgb[c], expected[c] / top, 1e-6) << c;
  EXPECT_EQ(std::max({rgb[0], rgb[1], rgb[2]}), 1.0);
}

// One y for two primaries.
TEST(WhitePointRgbCalc, BluesYIsGreens) {
  WhitePointInfo other = kD65Panel;
  other.whiteX = 3300;
  double before[3];
  WhitePointRgbCalc().GetWhitePointRgb(before, other);
  other.blueY = 9999;
  double after[3];
  WhitePointRgbCalc().GetWhitePointRgb(after, other);
  EXPECT_TRUE(std::equal(before, before + 3, after));

  other.greenY = 5000;
  double matrix[9] = {};
  WhitePointRgbCalc().CalcRgbToXyzMatrix(other, matrix);
  // In a column y / x is that of the primary.
  EXPECT_NEAR(matrix[4] / matrix[1], 0.5 / 0.3, 1e-12);
  EXPECT_NEAR(matrix[5] / matrix[2], 0.5 / 0.15, 1e-12);
}

TEST(WhitePointRgbCalc, WhiteWithoutYDividesByZero) {
  WhitePointInfo info = kD65Panel;
  info.whiteY = 0;
  double rgb[3] = {};
  WhitePointRgbCalc().GetWhitePointRgb(rgb, info);
  EXPECT_TRUE(std::isnan(rgb[0]) || std::isnan(rgb[1]) || std::isnan(rgb[2]));
}

TEST(WhitePointRgbCalc, MatInvert) {
  const double matrix[9] = {2, 0, 0, 0, 4, 0, 1, 0, 0.5};
  double inverse[9] = {};
  WhitePointRgbCalc().MatInvert(matrix, inverse);
  const double expected[9] = {0.5, 0, 0, 0, 0.25, 0, -1, 0, 2};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(inverse[i], expected[i]) << i;
}

// A determinant of 1e-7 is refused here and taken by the user design.
TEST(WhitePointRgbCalc, MatInvert_LimitOfTheDeterminant) {
  const testsupport::LogCapture log;
  const double matrix[9] = {1e-7, 0, 0, 0, 1, 0, 0, 0, 1};
  double inverse[9] = {7, 7, 7, 7, 7, 7, 7, 7, 7};
  WhitePointRgbCalc().MatInvert(matrix, inverse);
  for (double element : inverse) EXPECT_EQ(element, 7);
  ASSERT_EQ(log.Lines().size(), 1u);
  EXPECT_EQ(log.Lines()[0].level, 3);
  EXPECT_EQ(log.Lines()[0].text,
            L"determinant is zero, determinant:1e-07(WhitePointRgbCalc::MatInvert)");

  InvertDesignMatrix(matrix, inverse);
  EXPECT_NEAR(inverse[0], 1e7, 1);
  EXPECT_EQ(log.Lines().size(), 1u);

  const double atTheLimit[9] = {1e-6, 0, 0, 0, 1, 0, 0, 0, 1};
  WhitePointRgbCalc().MatInvert(atTheLimit, inverse);
  EXPECT_NEAR(inverse[0], 1e6, 1);
}

TEST(WhitePointRgbCalc, RgbGammaEncode_SinglePrecisionAndLargestIsOne) {
  const auto encoded = [](double value) {
    return static_cast<double>(static_cast<float>(std::pow(value, 0.45454545454545453) * 255.0));
  };
  for (int largest = 0; largest < 3; ++largest) {
    SCOPED_TRACE(largest);
    double linear[3] = {0.25, 0.375, 0.5};
    linear[largest] = 1.0;
    double rgb[3];
    WhitePointRgbCalc().RgbGammaEncode(rgb, linear);
    for (int c = 0; c < 3; ++c) {
      EXPECT_EQ(rgb[c], encoded(linear[c]) / 255.0) << c;
    }
    EXPECT_EQ(rgb[largest], 1.0);
  }
}

}  // namespace
}  // namespace velora
