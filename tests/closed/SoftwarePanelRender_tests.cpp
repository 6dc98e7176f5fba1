#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "VeloraPlatform/SoftwarePanel.h"

namespace {

using softwarepanel::Render;
using softwarepanel::State;
using Pixel = std::array<uint8_t, 3>;
using Rgb = std::array<double, 3>;

// A state on the heap: it is too large for some stacks.
class SoftwarePanelRender : public testing::Test {
 protected:
  Pixel Show(const Pixel& pixel) const {
    Pixel shown = {1, 2, 3};
    Render(*state_, pixel, shown);
    return shown;
  }

  // f: grid position of each axis in 0 to 1 -> values in 0 to 1.
  void Set3DLut(const std::function<Rgb(const Rgb&)>& f) const {
    size_t i = 0;
    for (int r = 0; r < 17; ++r) {
      for (int g = 0; g < 17; ++g) {
        for (int b = 0; b < 17; ++b) {
          for (const double value : f({r / 16.0, g / 16.0, b / 16.0})) {
            state_->lut3D[i++] = value * 1023;
          }
        }
      }
    }
    state_->has3DLut = 1;
  }

  void SetGammaLut(const std::function<double(int level, int channel)>& f) const {
    for (int i = 0; i < 1024 * 3; ++i) {
      state_->gammaLut[i] = f(i / 3, i % 3);
    }
    state_->hasGammaLut = 1;
  }

  const std::unique_ptr<State> state_ = std::make_unique<State>();
};

// Every level in each channel, and some mixed colours.
std::vector<uint8_t> TestPixels() {
  std::vector<uint8_t> pixels;
  for (int level = 0; level < 256; ++level) {
    const auto value = static_cast<uint8_t>(level);
    pixels.insert(pixels.end(), {value, 0, 0, 0, value, 0, 0, 0, value, value, value, value});
    pixels.insert(pixels.end(),
                  {value, static_cast<uint8_t>(level * 7), static_cast<uint8_t>(255 - level)});
  }
  return pixels;
}

}  // namespace

TEST_F(SoftwarePanelRender, NothingSetShowsTheImageItself) {
  const std::vector<uint8_t> pixels = TestPixels();
  std::vector<uint8_t> shown(pixels.size());
  Render(*state_, pixels, shown);
  EXPECT_EQ(shown, pixels);
}

TEST_F(SoftwarePanelRender, NeutralPartsShowTheImageItself) {
  SetGammaLut([](int level, int) { return level * 4095.0 / 1023; });
  Set3DLut([](const Rgb& rgb) { return rgb; });
  state_->matrix[0] = state_->matrix[4] = state_->matrix[8] = 1;
  state_->hasMatrix = 1;
  state_->temperature3D = {1, 1, 1, 0, 0.5};
  state_->temperatureKind = softwarepanel::kTemperature3D;
  const std::vector<uint8_t> pixels = TestPixels();
  std::vector<uint8_t> shown(pixels.size());
  Render(*state_, pixels, shown);
  EXPECT_EQ(shown, pixels);
}

TEST_F(SoftwarePanelRender, GammaLut_IsReadAtTheTenBitLevelOfEachChannel) {
  SetGammaLut([](int level, int channel) {
    return channel == 0 ? 4095.0 - level * 4095.0 / 1023 : channel == 1 ? 0.0 : level * 2.0;
  });
  EXPECT_EQ(Show({0, 0, 0}), (Pixel{255, 0, 0}));
  EXPECT_EQ(Show({255, 255, 255}), (Pixel{0, 0, 127}));  // 2046 of 4095 of 255: 127.4
  // 100 is level 401.2: 401. Red (1023 - 401) / 1023 * 255 = 155.04, blue 802 / 4095 * 255 = 49.9.
  EXPECT_EQ(Show({100, 100, 100}), (Pixel{155, 0, 50}));
}

TEST_F(SoftwarePanelRender, Lut3D_GridOrderIsRedGreenBlueFastest) {
  Set3DLut([](const Rgb& rgb) { return Rgb{rgb[1], rgb[2], rgb[0]}; });
  EXPECT_EQ(Show({255, 0, 0}), (Pixel{0, 0, 255}));
  EXPECT_EQ(Show({0, 255, 0}), (Pixel{255, 0, 0}));
  EXPECT_EQ(Show({0, 0, 255}), (Pixel{0, 255, 0}));
  EXPECT_EQ(Show({51, 102, 204}), (Pixel{102, 204, 51}));
}

// One white point among black ones, the third on each axis. Level 32 is 2.00784 on the axes, so the
// cell goes from the point (2, 2, 2) to (3, 3, 3).
TEST_F(SoftwarePanelRender, Lut3D_InterpolatesInTheTetrahedron) {
  const auto only = [this](int r, int g, int b) {
    Set3DLut([=](const Rgb& rgb) {
      const bool here = rgb == Rgb{r / 16.0, g / 16.0, b / 16.0};
      return here ? Rgb{1, 1, 1} : Rgb{0, 0, 0};
    });
  };
  // Fractions of the levels 40, 36, 33 between the points 2 and 3: 0.50980, 0.25882, 0.07059.
  // Weights: 1 - 0.50980 = 0.49020, 0.25098, 0.18824, 0.07059; times 255: 125, 64, 48, 18.
  const Pixel pixel = {40, 36, 33};
  const struct {
    int r, g, b;
    uint8_t shown;
  } rows[] = {{2, 2, 2, 125}, {3, 2, 2, 64}, {3, 3, 2, 48}, {3, 3, 3, 18},
              {2, 3, 2, 0},   {2, 2, 3, 0},  {3, 2, 3, 0},  {2, 3, 3, 0}};
  for (const auto& row : rows) {
    only(row.r, row.g, row.b);
    EXPECT_EQ(Show(pixel), (Pixel{row.shown, row.shown, row.shown})) << row.r << row.g << row.b;
  }
  // The same with blue ahead of green ahead of red: the way goes over 223 and 233.
  only(2, 2, 3);
  EXPECT_EQ(Show({33, 36, 40})[0], 64);
  only(2, 3, 3);
  EXPECT_EQ(Show({33, 36, 40})[0], 48);
}

TEST_F(SoftwarePanelRender, Lut3D_FullScaleMeetsTheLastPoint) {
  Set3DLut([](const Rgb& rgb) { return rgb == Rgb{1, 1, 1} ? Rgb{0.2, 0.4, 0.6} : Rgb{1, 1, 1}; });
  EXPECT_EQ(Show({255, 255, 255}), (Pixel{51, 102, 153}));
}

TEST_F(SoftwarePanelRender, Matrix_ByRowsAndCutOff) {
  const double matrix[9] = {0.5, 0.25, 0, 2, 0, 0, 0, -1, 1};
  std::copy(std::begin(matrix), std::end(matrix), state_->matrix);
  state_->hasMatrix = 1;
  EXPECT_EQ(Show({100, 40, 200}), (Pixel{60, 200, 160}));
  EXPECT_EQ(Show({200, 100, 40}), (Pixel{125, 255, 0}));
}

TEST_F(SoftwarePanelRender, Temperature3D_GainsAndEyeProtection) {
  state_->temperatureKind = softwarepanel::kTemperature3D;
  state_->temperature3D = {0.9, 0.8, 0.5, 0, 0.25};
  EXPECT_EQ(Show({200, 200, 200}), (Pixel{180, 160, 100})) << "without colorBlue no protection";
  state_->temperature3D.colorBlue = 255;
  EXPECT_EQ(Show({200, 200, 200}), (Pixel{180, 160, 25}));
  state_->temperature3D.colorBlue = 51;  // a fifth: factor 0.85
  EXPECT_EQ(Show({200, 200, 200}), (Pixel{180, 160, 85}));
}

TEST_F(SoftwarePanelRender, Temperature2D_NeutralInTheMiddle) {
  state_->temperatureKind = softwarepanel::kTemperature2D;
  state_->temperature2D = {183, 0};
  EXPECT_EQ(Show({200, 200, 200}), (Pixel{200, 200, 200}));
  state_->temperature2D = {0, 0};
  EXPECT_EQ(Show({200, 200, 200}), (Pixel{200, 170, 140}));
  state_->temperature2D = {366, 0};
  EXPECT_EQ(Show({200, 200, 200}), (Pixel{140, 170, 200}));
  state_->temperature2D = {122, 0};  // a third of the way to warm
  EXPECT_EQ(Show({200, 200, 200}), (Pixel{200, 190, 180}));
  state_->temperature2D = {183, 255};
  EXPECT_EQ(Show({200, 200, 200}), (Pixel{200, 200, 164})) << "eye protection of 0.82";
}

// Each part changes what the next one gets: another order would show another colour.
TEST_F(SoftwarePanelRender, Order_3DLutThenGammaLutThenMatrixThenGains) {
  Set3DLut([](const Rgb& rgb) { return Rgb{1 - rgb[0], rgb[1], rgb[2]}; });
  SetGammaLut([](int level, int) { return std::min(4095.0, level * 2.0); });  // halves
  const double matrix[9] = {0.5, 0, 0, 1, 0, 0, 0, 0, 1};
  std::copy(std::begin(matrix), std::end(matrix), state_->matrix);
  state_->hasMatrix = 1;
  state_->temperatureKind = softwarepanel::kTemperature3D;
  state_->temperature3D = {1, 0.5, 1, 0, 0};
  // 51 is inverted to 204, level 818.4: 818, so 1636 of 4095 = 0.39951. Red: a half of that, 50.94;
  // green: red of the gamma LUT, halved by its gain, 50.94. Blue 204: 0.39951 of 255, 101.9.
  EXPECT_EQ(Show({51, 0, 204}), (Pixel{51, 51, 102}));
}

TEST_F(SoftwarePanelRender, InPlaceAndUnequalLengths) {
  state_->temperatureKind = softwarepanel::kTemperature3D;
  state_->temperature3D = {0.5, 0.5, 0.5, 0, 0};
  std::vector<uint8_t> image = {200, 100, 50, 20, 10, 6, 99, 99};
  Render(*state_, image, image);
  EXPECT_EQ(image, (std::vector<uint8_t>{100, 50, 25, 10, 5, 3, 99, 99})) << "whole pixels only";
  std::vector<uint8_t> shown(5, 7);
  Render(*state_, image, shown);
  EXPECT_EQ(shown, (std::vector<uint8_t>{50, 25, 13, 7, 7}));
  Render(*state_, {}, {});
}

TEST_F(SoftwarePanelRender, NonsenseInTheStateIsShownAsBlackOrWhite) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  SetGammaLut([=](int, int channel) { return channel == 0 ? nan : channel == 1 ? infinity : -1; });
  EXPECT_EQ(Show({9, 9, 9}), (Pixel{0, 255, 0}));
  std::fill(std::begin(state_->lut3D), std::end(state_->lut3D), nan);
  state_->has3DLut = 1;
  state_->hasGammaLut = 0;
  EXPECT_EQ(Show({9, 9, 9}), (Pixel{0, 0, 0}));
  state_->has3DLut = 0;
  state_->hasGammaLut = 1;
  std::fill(std::begin(state_->matrix), std::end(state_->matrix), infinity);
  state_->hasMatrix = 1;
  EXPECT_EQ(Show({9, 9, 9}), (Pixel{0, 0, 0})) << "infinity times zero";
  state_->hasMatrix = 0;
  state_->temperatureKind = 12345;
  EXPECT_EQ(Show({9, 9, 9}), (Pixel{0, 255, 0}));
}
