#include "virtualnotebook/Factory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace virtualnotebook {
namespace {

constexpr uint8_t k3DTypes[] = {kBaseLut, kSrgbLut, kP3Lut, kAdobeLut, kEbookLut};

size_t At(size_t r, size_t g, size_t b) { return (r * 289 + g * 17 + b) * 3; }

// What the base LUT, which treats each channel alone, makes of a value of 0 to 1023.
double ThroughBase(const std::vector<double>& base, size_t channel, double value) {
  const auto cell = std::min<size_t>(static_cast<size_t>(value / 64), 15);
  const auto point = [&](size_t i) { return base[At(i, i, i) + channel]; };
  const double low = 64.0 * static_cast<double>(cell), high = std::min(low + 64, 1023.0);
  return point(cell) + (point(cell + 1) - point(cell)) * (value - low) / (high - low);
}

double DecodeSrgb(double x) { return x > 0.04045 ? std::pow((x + 0.055) / 1.055, 2.4) : x / 12.92; }

// A linear channel value as a panel of gamma 2.2 wants it, ahead of its grey tracking.
double Encode(double linear) { return 1023 * std::pow(linear, 1 / 2.2); }

TEST(Factory, MakeIdentityLut_IsSixtyFourAStepCappedAt1023) {
  const std::vector<double> lut = MakeIdentityLut();
  ASSERT_EQ(14739u, lut.size());
  for (size_t r = 0; r < 17; ++r) {
    for (size_t g = 0; g < 17; ++g) {
      for (size_t b = 0; b < 17; ++b) {
        ASSERT_EQ(std::min(64.0 * static_cast<double>(r), 1023.0), lut[At(r, g, b)]);
        ASSERT_EQ(std::min(64.0 * static_cast<double>(g), 1023.0), lut[At(r, g, b) + 1]);
        ASSERT_EQ(std::min(64.0 * static_cast<double>(b), 1023.0), lut[At(r, g, b) + 2]);
      }
    }
  }
}

TEST(Factory, MakeLut_3DHoldsIntegersThatNeverFallAlongGrey) {
  for (uint8_t type : k3DTypes) {
    SCOPED_TRACE(int{type});
    const std::vector<double> lut = MakeLut({}, type);
    ASSERT_EQ(14739u, lut.size());
    for (double value : lut) {
      ASSERT_GE(value, 0);
      ASSERT_LE(value, 1023);
      ASSERT_EQ(std::floor(value), value);
    }
    for (size_t channel = 0; channel < 3; ++channel) {
      EXPECT_EQ(0, lut[channel]);
      for (size_t i = 1; i < 17; ++i) {
        ASSERT_LT(lut[At(i - 1, i - 1, i - 1) + channel], lut[At(i, i, i) + channel]);
      }
    }
  }
}

TEST(Factory, MakeLut_BaseIsNearTheIdentityAndNotIt) {
  const std::vector<double> base = MakeLut({}, kBaseLut), identity = MakeIdentityLut();
  double furthest = 0;
  for (size_t i = 0; i < base.size(); ++i) {
    furthest = std::max(furthest, std::abs(base[i] - identity[i]));
  }
  EXPECT_GT(furthest, 0);
  EXPECT_LE(furthest, 6);  // 2 per cent of x * (1 - x), at most 1023 * 0.02 / 4
  EXPECT_EQ(1023, base[At(16, 16, 16)]);
}

TEST(Factory, MakeLut_BaseIsTheUnitsOwn) {
  PanelDescription other;
  other.serial = {4, 3, 2, 1};
  EXPECT_NE(MakeLut({}, kBaseLut), MakeLut(other, kBaseLut));
  EXPECT_EQ(MakeLut({}, kBaseLut), MakeLut({}, kBaseLut));
}

// On a panel with exactly the target's primaries and white nothing is mixed: each channel is only
// encoded anew.
TEST(Factory, MakeLut_TheTargetsOwnPanelMixesNothing) {
  const std::vector<double> base = MakeLut({}, kBaseLut), p3 = MakeLut({}, kP3Lut);
  for (size_t r = 0; r < 17; r += 4) {
    for (size_t g = 0; g < 17; g += 4) {
      for (size_t b = 0; b < 17; b += 4) {
        const size_t coordinates[] = {r, g, b};
        for (size_t c = 0; c < 3; ++c) {
          const double x = std::min(64.0 * static_cast<double>(coordinates[c]), 1023.0) / 1023;
          ASSERT_NEAR(ThroughBase(base, c, Encode(DecodeSrgb(x))), p3[At(r, g, b) + c], 1.01);
        }
      }
    }
  }
}

// Published figures: sRGB's red, green and blue in Display P3 (CSS Color 4) are
// (0.917488, 0.200287, 0.138561), (0.458402, 0.985265, 0.298295) and (0, 0, 0.959588).
TEST(Factory, MakeLut_SrgbPrimariesOnAP3Panel) {
  const struct {
    size_t r, g, b;
    double p3[3];
  } rows[] = {{16, 0, 0, {0.917488, 0.200287, 0.138561}},
              {0, 16, 0, {0.458402, 0.985265, 0.298295}},
              {0, 0, 16, {0, 0, 0.959588}}};
  const std::vector<double> base = MakeLut({}, kBaseLut), srgb = MakeLut({}, kSrgbLut);
  for (const auto& row : rows) {
    for (size_t c = 0; c < 3; ++c) {
      // Near black the curve is steep: the 1/1000 steps of the published primaries show.
      if (row.p3[c] == 0) continue;
      EXPECT_NEAR(ThroughBase(base, c, Encode(DecodeSrgb(row.p3[c]))),
                  srgb[At(row.r, row.g, row.b) + c], 1.5);
    }
  }
}

TEST(Factory, MakeLut_AdobeGreenIsClippedOnASmallerPanel) {
  PanelDescription narrow;
  narrow.red = {0.640, 0.330};
  narrow.green = {0.300, 0.600};
  const std::vector<double> adobe = MakeLut(narrow, kAdobeLut);
  EXPECT_EQ(0, adobe[At(0, 16, 0)]);
  EXPECT_EQ(1023, adobe[At(0, 16, 0) + 1]);
}

TEST(Factory, MakeLut_WhiteIsD65WhateverThePanelsWhite) {
  PanelDescription blue_white;
  blue_white.white = {0.283, 0.297};  // about 9300 K
  const std::vector<double> srgb = MakeLut(blue_white, kSrgbLut);
  const double* white = &srgb[At(16, 16, 16)];
  EXPECT_EQ(1023, white[0]);
  EXPECT_GT(white[0], white[1]);
  EXPECT_GT(white[1], white[2]);
}

TEST(Factory, MakeLut_EbookIsWarmAndPale) {
  const std::vector<double> ebook = MakeLut({}, kEbookLut);
  const double* white = &ebook[At(16, 16, 16)];
  EXPECT_EQ(1023, white[0]);
  EXPECT_GT(white[0], white[1]);
  EXPECT_GT(white[1], white[2]);
  for (size_t c = 0; c < 3; ++c) {
    EXPECT_GT(ebook[At(16, 0, 0) + c], 300);  // a pure red keeps some of all channels
  }
}

TEST(Factory, MakeLut_GammaIsNearlyStraightAndBentPerChannel) {
  const std::vector<double> lut = MakeLut({}, kGammaLut);
  ASSERT_EQ(3072u, lut.size());
  bool channels_differ = false;
  for (size_t i = 0; i < 1024; ++i) {
    channels_differ |= lut[3 * i] != lut[3 * i + 1] && lut[3 * i + 1] != lut[3 * i + 2];
    for (size_t c = 0; c < 3; ++c) {
      const double value = lut[3 * i + c];
      ASSERT_EQ(std::floor(value), value);
      ASSERT_NEAR(4095.0 / 1023 * static_cast<double>(i), value, 4095 * 0.02 / 4 + 0.5);
      if (i > 0) {
        ASSERT_LT(lut[3 * i + c - 3], value);
      }
    }
  }
  EXPECT_TRUE(channels_differ);
  EXPECT_EQ(0, lut[0]);
  EXPECT_EQ(4095, lut[3069]);
}

TEST(Factory, MakeLut_RefusesWhatIsNoLutOrNoPanel) {
  EXPECT_THROW(MakeLut({}, 3), std::invalid_argument);
  PanelDescription flat;
  flat.green = flat.red;
  EXPECT_THROW(MakeLut(flat, kSrgbLut), std::invalid_argument);
  PanelDescription dark;
  dark.blue = {0, 0};
  EXPECT_THROW(MakeLut(dark, kSrgbLut), std::invalid_argument);
}

TEST(Factory, LightOf_FullScaleIsThePanelsWhiteAndPrimaries) {
  const PanelDescription panel;
  const auto expect = [&](const std::array<double, 3>& rgb, Xy light) {
    EXPECT_NEAR(light.x, LightOf(panel, rgb).x, 1e-12);
    EXPECT_NEAR(light.y, LightOf(panel, rgb).y, 1e-12);
  };
  expect({1, 1, 1}, panel.white);
  expect({0.5, 0.5, 0.5}, panel.white);
  expect({1, 0, 0}, panel.red);
  expect({0, 0.3, 0}, panel.green);
  expect({0, 0, 1}, panel.blue);
}

}  // namespace
}  // namespace virtualnotebook
