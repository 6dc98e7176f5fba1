#pragma once

#include <cstdint>

namespace velora {

// A panel: CIE xy of its white, red, green and blue, each coordinate multiplied by 10000.
struct WhitePointInfo {
  int32_t whiteX;
  int32_t whiteY;
  int32_t redX;
  int32_t redY;
  int32_t greenX;
  int32_t greenY;
  int32_t blueX;
  int32_t blueY;  // never read: green's y stands for it
};

// The gains that bring a panel's native white to D65. Has no state.
class WhitePointRgbCalc {
 public:
  // Three gains, the largest 1; gives rgb. Nothing guards against a white of y 0 or primaries that
  // span no colour space: gains that are no numbers come out.
  double* GetWhitePointRgb(double* rgb, const WhitePointInfo& info) const;

  // 3 x 3 matrices, row by row.
  void CalcRgbToXyzMatrix(const WhitePointInfo& info, double* matrix) const;
  void MatInvert(const double* in, double* out) const;  // out stays for a determinant below 1e-6
  // Encodes with a gamma of 2.2 and scales so that the largest is 1.
  void RgbGammaEncode(double* rgb, const double* linear) const;
};

}  // namespace velora
