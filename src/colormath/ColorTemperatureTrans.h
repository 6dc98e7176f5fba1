#pragma once

#include <cstdint>

#include "velora/VeloraCtlApi.h"

namespace velora {

// From a point of the settings application's colour circle to gains: a colour wheel of six hues,
// linear along the rim by the hue angle and from white at the centre to the rim by the radius. Each
// hue pulls the channels that are not part of it down to its strength, which depends on the
// platform. One thread at a time may be the first; a race of two copies the same row twice.
//
// Sources by topic:
//   ColorTemperatureTrans.cpp           the arithmetic
//   ColorTemperatureTrans_Platform.cpp  the strengths of this platform, the whole way of a point
class ColorTemperatureTrans {
 public:
  ColorTemperatureTrans();

  // The circle has its centre at (radius, radius), y grows downwards. Leaves rgb as it is at the
  // centre and where no gain can be calculated.
  void TransColorTemperatureConfigToRGB(const ColorTemperatureConfig* config, double radius,
                                        ColorTemperatureRgb* rgb);

  // Takes the strengths of the running platform; those of the constructor stay where it has none.
  void InitAlphaInfo();
  bool SetAlphas(uint32_t platformType);  // false for a platform without a row

  // rho: distance from the centre in (0, 1]. theta: hue angle in degrees, [0, 360), cyan at 0, blue
  // at 60, magenta at 120, red at 180, yellow at 240, green at 300.
  void GainCalc(double rho, double theta, ColorTemperatureRgb* rgb) const;

  // The same for a point; see above.
  void PointToGains(const ColorTemperatureConfig& config, double radius,
                    ColorTemperatureRgb* rgb) const;

 private:
  double alphaR;
  double alphaG;
  double alphaB;
  double alphaC;
  double alphaM;
  double alphaY;
  bool isAlphaInit = false;
};

}  // namespace velora
