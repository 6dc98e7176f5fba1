#include "colormath/UserDesignMath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "colormath/Matrix3x3.h"
#include "support/LogCapture.h"

namespace velora {
namespace {

// A wide panel, white not quite D65.
constexpr ChromaticityGamut kPanel = {0.31, 0.33, 0.68, 0.31, 0.25, 0.70, 0.15, 0.055};

using Matrix = std::array<double, 9>;

Matrix ToXyz(const ChromaticityGamut& gamut) {
  Matrix m = {};
  CalcColorSpaceConversionRgbToXyz(gamut, m.data());
  return m;
}

Matrix TargetToPanel(ChromaticityGamut target, const ChromaticityGamut& panel, bool panelWhite) {
  if (panelWhite) {
    target.whiteX = panel.whiteX;
    target.whiteY = panel.whiteY;
  }
  const Matrix panelToXyz = ToXyz(panel);
  Matrix xyzToPanel = {};
  InvertDesignMatrix(panelToXyz.data(), xyzToPanel.data());
  Matrix out;
  MatMultiply(xyzToPanel.data(), ToXyz(target).data(), out.data());
  return out;
}

// The plain way: all powers at each of the 4913 points.
std::vector<double> Plain3DLut(const Matrix& m, double targetGamma, double panelGamma) {
  const double grid[17] = {0,   64,  128, 192, 256, 320, 384, 448, 512,
                           575, 639, 703, 767, 831, 895, 959, 1023};
  std::vector<double> lut;
  for (double r : grid) {
    for (double g : grid) {
      for (double b : grid) {
        double linear[3] = {r, g, b};
        for (double& value : linear) {
          value = static_cast<float>(std::pow(value / 1023.0, targetGamma));
        }
        for (int row = 0; row < 3; ++row) {
          const double* k = &m[static_cast<size_t>(3 * row)];
          double value = k[0] * linear[0] + k[1] * linear[1] + k[2] * linear[2];
          if (value < 1e-16) value = 0.0;
          value = static_cast<float>(std::pow(value, 1.0 / panelGamma));
          if (value > 0.9999999999999999) value = 1.0;
          if (value < 1e-16) value = 0.0;
          lut.push_back(value * 1023.0);
        }
      }
    }
  }
  return lut;
}

std::vector<double> User3DLut(const Matrix& m, double targetGamma, double panelGamma) {
  std::vector<double> lut(14739, -1.0);
  FillUser3DLut(m.data(), targetGamma, panelGamma, lut.data());
  return lut;
}

// --- Gamuts ---

TEST(TargetGamuts, SixRowsAndNoOther) {
  const double rows[6][6] = {
      {0.64, 0.33, 0.3, 0.6, 0.15, 0.06},   {0.68, 0.32, 0.265, 0.69, 0.15, 0.06},
      {0.64, 0.33, 0.21, 0.71, 0.15, 0.06}, {0.708, 0.292, 0.17, 0.797, 0.131, 0.046},
      {0.64, 0.33, 0.29, 0.6, 0.15, 0.06},  {0.63, 0.34, 0.31, 0.595, 0.155, 0.07},
  };
  for (int i = 0; i < 6; ++i) {
    const ChromaticityGamut* gamut = FindTargetGamut(i + 1);
    ASSERT_NE(gamut, nullptr);
    EXPECT_EQ(*gamut, (ChromaticityGamut{0.3127, 0.329, rows[i][0], rows[i][1], rows[i][2],
                                         rows[i][3], rows[i][4], rows[i][5]}));
  }
  for (int number : {0, 7, -1, 1000}) EXPECT_EQ(FindTargetGamut(number), nullptr);
}

// --- Matrices ---

TEST(UserDesignMath, InvertDesignMatrix) {
  const double matrix[9] = {2, 0, 0, 0, 4, 0, 1, 0, 0.5};
  double inverse[9] = {};
  InvertDesignMatrix(matrix, inverse);
  const double expected[9] = {0.5, 0, 0, 0, 0.25, 0, -1, 0, 2};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(inverse[i], expected[i]) << i;
}

TEST(UserDesignMath, InvertDesignMatrix_Singular) {
  const testsupport::LogCapture log;
  const double matrix[9] = {1e-17, 0, 0, 0, 1, 0, 0, 0, 1};
  double inverse[9] = {7, 7, 7, 7, 7, 7, 7, 7, 7};
  InvertDesignMatrix(matrix, inverse);
  for (double element : inverse) EXPECT_EQ(element, 7);
  EXPECT_EQ(log.Lines(),
            (std::vector<testsupport::Line>{
                {3, L"Determinant is zero, determinant:1e-17(UsrDesignAlgo::MatInvert)"}}));
}

// The white is the sum of the columns, and each column has its primary's chromaticity.
TEST(UserDesignMath, CalcColorSpaceConversionRgbToXyz) {
  const Matrix m = ToXyz(kPanel);
  const double xyz[3] = {m[0] + m[1] + m[2], m[3] + m[4] + m[5], m[6] + m[7] + m[8]};
  EXPECT_NEAR(xyz[0], 0.31 / 0.33, 1e-12);
  EXPECT_NEAR(xyz[1], 1, 1e-12);
  EXPECT_NEAR(xyz[2], 0.36 / 0.33, 1e-12);
  const double xy[3][2] = {{0.68, 0.31}, {0.25, 0.70}, {0.15, 0.055}};
  for (size_t c = 0; c < 3; ++c) {
    const double sum = m[c] + m[3 + c] + m[6 + c];
    EXPECT_NEAR(m[c] / sum, xy[c][0], 1e-12);
    EXPECT_NEAR(m[3 + c] / sum, xy[c][1], 1e-12);
  }
}

// The published matrix of sRGB, IEC 61966-2-1.
TEST(UserDesignMath, CalcColorSpaceConversionRgbToXyz_Srgb) {
  const Matrix m = ToXyz(kTargetGamuts[0]);
  const double published[9] = {0.4124, 0.3576, 0.1805, 0.2126, 0.7152,
                               0.0722, 0.0193, 0.1192, 0.9505};
  for (size_t i = 0; i < 9; ++i) EXPECT_NEAR(m[i], published[i], 1e-4) << i;
}

TEST(UserDesignMath, CalcColorSpaceConversionRgbToXyz_EachCoordinateOfZero) {
  double ChromaticityGamut::*const coordinates[] = {
      &ChromaticityGamut::whiteX, &ChromaticityGamut::whiteY, &ChromaticityGamut::redX,
      &ChromaticityGamut::redY,   &ChromaticityGamut::greenX, &ChromaticityGamut::greenY,
      &ChromaticityGamut::blueX,  &ChromaticityGamut::blueY};
  for (auto coordinate : coordinates) {
    for (double zero : {0.0, -0.1, 0.9e-16}) {
      const testsupport::LogCapture log;
      ChromaticityGamut gamut = kPanel;
      gamut.*coordinate = zero;
      Matrix m;
      m.fill(7);
      CalcColorSpaceConversionRgbToXyz(gamut, m.data());
      for (double element : m) EXPECT_EQ(element, 7);
      EXPECT_EQ(log.Lines(),
                (std::vector<testsupport::Line>{
                    {3, L"Coordinate is Zero!(UsrDesignAlgo::CalcColorSpaceConversionRgbToXyz)"}}));
    }
  }
}

TEST(UserDesignMath, CalcColorSpaceConversionRgbToXyz_NoColourSpaceIsAllZeros) {
  const testsupport::LogCapture log;
  const ChromaticityGamut flat = {0.31, 0.33, 0.25, 0.25, 0.25, 0.25, 0.25, 0.25};
  Matrix m;
  m.fill(7);
  CalcColorSpaceConversionRgbToXyz(flat, m.data());
  for (double element : m) EXPECT_EQ(element, 0);
  ASSERT_EQ(log.Lines().size(), 1u);
  EXPECT_EQ(log.Lines()[0].text, L"Determinant is zero, determinant:0(UsrDesignAlgo::MatInvert)");
}

// --- 3D LUT ---

TEST(UserDesignMath, RgbNormalization_RoundsToSinglePrecision) {
  double rgb[3] = {0, 512, 1023};
  RgbNormalization(rgb, 2.2);
  EXPECT_EQ(rgb[0], 0);
  EXPECT_EQ(rgb[1], static_cast<double>(static_cast<float>(std::pow(512 / 1023.0, 2.2))));
  EXPECT_NE(rgb[1], std::pow(512 / 1023.0, 2.2));
  EXPECT_EQ(rgb[2], 1);
}

TEST(UserDesignMath, RgbDenormalization) {
  double rgb[3] = {-0.25, 0.5, 1.5};
  double out[3];
  RgbDenormalization(rgb, 2.0, out);
  EXPECT_EQ(rgb[0], 0.0) << "cleared in the input";
  EXPECT_EQ(out[0], 0.0);
  EXPECT_EQ(out[1], static_cast<double>(static_cast<float>(std::sqrt(0.5))) * 1023.0);
  EXPECT_EQ(out[2], 1023.0);
}

TEST(UserDesignMath, RgbDenormalization_GammaOfZero) {
  for (double gamma : {0.0, -1.0, 0.9e-16}) {
    const testsupport::LogCapture log;
    double rgb[3] = {-1, 0.5, 2};
    double out[3] = {7, 7, 7};
    RgbDenormalization(rgb, gamma, out);
    for (double value : out) EXPECT_EQ(value, 7);
    EXPECT_EQ(rgb[0], -1);
    EXPECT_EQ(log.Lines(), (std::vector<testsupport::Line>{
                               {3, L"Gamma is Zero!(UsrDesignAlgo::RgbDenormalization)"}}));
  }
}

// What is as small as the limit is not zero.
TEST(UserDesignMath, TheLimitOfZero) {
  constexpr double kLimit = 1e-16;
  const Matrix in = {kLimit, 0, 0, 0, 1, 0, 0, 0, 1};
  Matrix inverse = {};
  InvertDesignMatrix(in.data(), inverse.data());
  EXPECT_EQ(inverse[0], 1 / kLimit);

  ChromaticityGamut gamut = kPanel;
  gamut.redX = kLimit;
  EXPECT_NE(ToXyz(gamut), Matrix{});

  double rgb[3] = {kLimit, 0.5 * kLimit, 1};
  double out[3] = {-1, -1, -1};
  RgbDenormalization(rgb, 1.0, out);
  EXPECT_EQ(rgb[0], kLimit);
  EXPECT_EQ(rgb[1], 0);

  double white[3] = {1, 1, 1};
  RgbDenormalization(white, kLimit, out);
  EXPECT_EQ(out[0], 1023);
}

// A channel above the limit whose power is below it.
TEST(UserDesignMath, RgbDenormalization_DarkIsBlack) {
  double rgb[3] = {1e-9, 1e-9, 1e-9};
  double out[3] = {-1, -1, -1};
  RgbDenormalization(rgb, 0.5, out);
  EXPECT_EQ(rgb[0], 1e-9);
  EXPECT_EQ(out[0], 0);
}

TEST(UserDesignMath, FillUser3DLut_SameBitsAsThePlainWay) {
  for (int number = 1; number <= 7; ++number) {
    const ChromaticityGamut& target = number < 7 ? *FindTargetGamut(number) : kPanel;
    const Matrix m = TargetToPanel(target, kPanel, true);
    for (const auto& [targetGamma, panelGamma] :
         {std::pair{2.2, 2.2}, std::pair{1.8, 2.2}, std::pair{2.4, 1.0}}) {
      EXPECT_EQ(User3DLut(m, targetGamma, panelGamma), Plain3DLut(m, targetGamma, panelGamma))
          << number;
    }
  }
}

// The panel's gamma may be any that an EDID can say, and others.
TEST(UserDesignMath, FillUser3DLut_SameBitsForEachPanelGamma) {
  for (int byte = -50; byte < 256; ++byte) {
    const Matrix m = TargetToPanel(*FindTargetGamut(byte & 3 ? 4 : 2), kPanel, true);
    const double panelGamma = (byte + 100) / 100.0;
    const double targetGamma = byte % 2 == 0 ? 2.2 : 2.4;
    ASSERT_EQ(User3DLut(m, targetGamma, panelGamma), Plain3DLut(m, targetGamma, panelGamma))
        << panelGamma;
  }
  for (const double panelGamma : {1e-10, 0.1, 16.5, 1e10}) {
    const Matrix m = TargetToPanel(*FindTargetGamut(3), kPanel, true);
    EXPECT_EQ(User3DLut(m, 2.2, panelGamma), Plain3DLut(m, 2.2, panelGamma)) << panelGamma;
  }
}

TEST(UserDesignMath, FillUser3DLut_NeutralAxisStaysNeutralAndRises) {
  for (const ChromaticityGamut& target : kTargetGamuts) {
    const std::vector<double> lut = User3DLut(TargetToPanel(target, kPanel, true), 2.2, 2.2);
    double before = -1;
    for (size_t i = 0; i < 17; ++i) {
      const double* entry = &lut[3 * (i * 289 + i * 17 + i)];
      EXPECT_NEAR(entry[0], entry[1], 1e-3);
      EXPECT_NEAR(entry[0], entry[2], 1e-3);
      EXPECT_GT(entry[1], before);
      before = entry[1];
    }
    EXPECT_EQ(lut[0] + lut[1] + lut[2], 0.0);
  }
}

TEST(UserDesignMath, FillUser3DLut_ThePanelsOwnGamutIsTheIdentity) {
  const std::vector<double> lut = User3DLut(TargetToPanel(kPanel, kPanel, true), 2.2, 2.2);
  for (size_t entry = 0; entry < 4913; ++entry) {
    const size_t index[3] = {entry / 289, entry / 17 % 17, entry % 17};
    for (size_t c = 0; c < 3; ++c) {
      EXPECT_NEAR(lut[3 * entry + c],
                  std::round(1023.0 * static_cast<double>(index[c]) / 16 + 1e-9), 0.05)
          << entry;
    }
  }
  EXPECT_NEAR(lut[14736], 1023, 1e-3);
}

TEST(UserDesignMath, FillUser3DLut_ClipsWhatThePanelCannotShow) {
  // BT.2020 green on this panel: red and blue below 0, green above 1.
  const std::vector<double> lut =
      User3DLut(TargetToPanel(*FindTargetGamut(4), kPanel, true), 2.2, 2.2);
  const double* green = &lut[3 * (16 * 17)];
  EXPECT_EQ(green[0], 0.0);
  EXPECT_EQ(green[1], 1023.0);
  for (double value : lut) {
    EXPECT_GE(value, 0.0);
    EXPECT_LE(value, 1023.0);
  }
}

// --- Gamma LUT ---

TEST(UserDesignMath, FillUserGammaLut_StraightLines) {
  const Matrix m = {0.5, 0, 0, 0, 0.25, 0, 0, 0, 0.125};
  std::vector<double> lut(3072, -1);
  ASSERT_TRUE(FillUserGammaLut(m.data(), 1.0, lut.data()));
  for (size_t i = 0; i < 1023; ++i) {
    EXPECT_EQ(lut[3 * i], 4.0 * static_cast<double>(i));
    EXPECT_EQ(lut[3 * i + 1], 2.0 * static_cast<double>(i));
    EXPECT_EQ(lut[3 * i + 2], 1.0 * static_cast<double>(i));
  }
  EXPECT_EQ(lut[3069], 4095.0);
  EXPECT_EQ(lut[3070], 4095.0 / 2);
  EXPECT_EQ(lut[3071], 4095.0 / 4);
}

// Whichever channel is the largest reaches the top.
TEST(UserDesignMath, FillUserGammaLut_LargestChannel) {
  std::vector<double> lut(3072);
  const Matrix green = {0.5, 0, 0, 0, 1, 0, 0, 0, 0.25};
  ASSERT_TRUE(FillUserGammaLut(green.data(), 1.0, lut.data()));
  EXPECT_EQ(lut[3070], 4095);
  const Matrix blue = {0.5, 0, 0, 0, 0.25, 0, 0, 0, 1};
  ASSERT_TRUE(FillUserGammaLut(blue.data(), 1.0, lut.data()));
  EXPECT_EQ(lut[3071], 4095);
}

TEST(UserDesignMath, FillUserGammaLut_ThePanelsOwnWhiteIsNeutral) {
  std::vector<double> lut(3072);
  ASSERT_TRUE(
      FillUserGammaLut(TargetToPanel(kTargetGamuts[1], kPanel, true).data(), 2.2, lut.data()));
  for (size_t i = 0; i < 3072; ++i) {
    const size_t level = i / 3;
    EXPECT_NEAR(lut[i], level == 1023 ? 4095.0 : 4.0 * static_cast<double>(level), 1e-9) << i;
  }
}

TEST(UserDesignMath, FillUserGammaLut_NegativeChannelIsNoNumberInThatChannelOnly) {
  for (size_t bad = 0; bad < 3; ++bad) {
    Matrix m = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    m[4 * bad] = -1;
    std::vector<double> lut(3072);
    ASSERT_TRUE(FillUserGammaLut(m.data(), 2.2, lut.data()));
    for (size_t c = 0; c < 3; ++c) {
      if (c == bad) {
        EXPECT_TRUE(std::isnan(lut[3069 + c]));
      } else {
        EXPECT_EQ(lut[3069 + c], 4095.0);
      }
    }
  }
}

TEST(UserDesignMath, FillUserGammaLut_WhiteWithoutLight) {
  const testsupport::LogCapture log;
  const Matrix m = {};
  std::vector<double> lut(3072, 7);
  EXPECT_FALSE(FillUserGammaLut(m.data(), 2.2, lut.data()));
  EXPECT_EQ(lut, std::vector<double>(3072, 7));
  EXPECT_EQ(log.Lines(), (std::vector<testsupport::Line>{
                             {3, L"Gamma transfer factor is zero!(UsrDesignAlgo::GammaLutCal)"}}));
}

}  // namespace
}  // namespace velora
