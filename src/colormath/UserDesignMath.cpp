#include "colormath/UserDesignMath.h"

#include <array>
#include <cmath>

#include "colormath/Matrix3x3.h"
#include "frame/Avx2.h"
#include "frame/Log.h"

namespace velora {
namespace {

constexpr size_t kGridPoints = 17;
constexpr double kLutMaximum = 1023.0;
constexpr int kGammaLevels = 1024;
constexpr double kGammaStep = 4;
constexpr double kGammaMaximum = 4095.0;
constexpr double kJustBelowOne = 0.9999999999999999;  // the double next to 1

// The rounding is part of the tables' values.
double ToSinglePrecision(double value) { return static_cast<float>(value); }

// 0, 64, 128 ... 512, 575 ... 1023: halves round up, so that the steps are not all equal.
double GridValue(size_t point) {
  return static_cast<double>(std::lround(kLutMaximum * (static_cast<double>(point) / 16.0)));
}

double Denormalize(double linear, double gamma) {
  double value = ToSinglePrecision(std::pow(linear < kDesignZero ? 0.0 : linear, 1.0 / gamma));
  if (value > kJustBelowOne) {
    value = 1.0;
  }
  if (value < kDesignZero) {
    value = 0.0;
  }
  return value * kLutMaximum;
}

}  // namespace

void InvertDesignMatrix(const double* in, double* out) {
  constexpr FunctionLog log("UsrDesignAlgo::MatInvert");
  const double determinant = Determinant(in);
  if (std::fabs(determinant) < kDesignZero) {
    log.Error(L"Determinant is zero, determinant:", determinant);
    return;
  }
  MatInvertBy(determinant, in, out);
}

void CalcColorSpaceConversionRgbToXyz(const ChromaticityGamut& gamut, double* matrix) {
  constexpr FunctionLog log("UsrDesignAlgo::CalcColorSpaceConversionRgbToXyz");
  for (double coordinate : {gamut.whiteX, gamut.whiteY, gamut.redX, gamut.redY, gamut.greenX,
                            gamut.greenY, gamut.blueX, gamut.blueY}) {
    if (coordinate < kDesignZero) {
      log.Error(L"Coordinate is Zero!");
      return;
    }
  }
  const double red[] = {gamut.redX, gamut.redY, 1 - gamut.redX - gamut.redY};
  const double green[] = {gamut.greenX, gamut.greenY, 1 - gamut.greenX - gamut.greenY};
  const double blue[] = {gamut.blueX, gamut.blueY, 1 - gamut.blueX - gamut.blueY};
  SetMatColumn(0, red, matrix);
  SetMatColumn(1, green, matrix);
  SetMatColumn(2, blue, matrix);
  const double white[] = {gamut.whiteX / gamut.whiteY, 1.0,
                          (1 - gamut.whiteX - gamut.whiteY) / gamut.whiteY};
  double inverse[9] = {};
  InvertDesignMatrix(matrix, inverse);
  double scale[3];
  MatVecMultiply(inverse, white, scale);
  ScaleMatColumns(scale, matrix);
}

void RgbNormalization(double* rgb, double gamma) {
  for (int c = 0; c < 3; ++c) {
    rgb[c] = ToSinglePrecision(std::pow(rgb[c] / kLutMaximum, gamma));
  }
}

void RgbDenormalization(double* rgb, double gamma, double* out) {
  constexpr FunctionLog log("UsrDesignAlgo::RgbDenormalization");
  if (gamma < kDesignZero) {
    log.Error(L"Gamma is Zero!");
    return;
  }
  for (int c = 0; c < 3; ++c) {
    if (rgb[c] < kDesignZero) {
      rgb[c] = 0.0;
    }
    out[c] = Denormalize(rgb[c], gamma);
  }
}

void DenormalizePlain(std::span<double> values, double gamma) {
  for (double& value : values) {
    value = Denormalize(value, gamma);
  }
}

void FillUser3DLut(const double* targetToPanel, double targetGamma, double panelGamma,
                   double* lut) {
  // An entry's three powers are those of its grid points: 17 of them instead of 14739. So are the
  // products of its matrix multiplication, whose order of additions is kept.
  std::array<double, kGridPoints> linear;
  std::array<std::array<double, 3>, kGridPoints> blueShare;
  for (size_t point = 0; point < kGridPoints; ++point) {
    double value[3] = {GridValue(point), 0, 0};
    RgbNormalization(value, targetGamma);
    linear[point] = value[0];
    for (size_t c = 0; c < 3; ++c) {
      blueShare[point][c] = targetToPanel[3 * c + 2] * linear[point];
    }
  }
  double* value = lut;
  for (double r : linear) {
    for (double g : linear) {
      double redGreenShare[3];
      for (size_t c = 0; c < 3; ++c) {
        redGreenShare[c] = targetToPanel[3 * c] * r + targetToPanel[3 * c + 1] * g;
      }
      for (const auto& blue : blueShare) {
        *value++ = redGreenShare[0] + blue[0];
        *value++ = redGreenShare[1] + blue[1];
        *value++ = redGreenShare[2] + blue[2];
      }
    }
  }
  const bool isFast =
      HasAvx2() && panelGamma >= kLeastGammaForAvx2 && panelGamma <= kGreatestGammaForAvx2;
  (isFast ? DenormalizeAvx2 : DenormalizePlain)({lut, value}, panelGamma);
}

bool FillUserGammaLut(const double* targetToPanel, double panelGamma, double* lut) {
  constexpr FunctionLog log("UsrDesignAlgo::GammaLutCal");
  constexpr double kWhite[3] = {1.0, 1.0, 1.0};
  double factor[3];
  MatVecMultiply(targetToPanel, kWhite, factor);
  for (double& channel : factor) {
    channel = std::pow(channel, 1.0 / panelGamma);
  }
  // A channel that is no number is passed over here, and stays what it is in the table.
  const double top = std::fmax(std::fmax(factor[0], factor[1]), factor[2]);
  if (top < kDesignZero) {
    log.Error(L"Gamma transfer factor is zero!");
    return false;
  }
  for (double& channel : factor) {
    channel /= top;
  }
  for (int i = 0; i < kGammaLevels; ++i) {
    const double level = i < kGammaLevels - 1 ? kGammaStep * i : kGammaMaximum;
    for (double channel : factor) {
      *lut++ = level * channel;
    }
  }
  return true;
}

}  // namespace velora
