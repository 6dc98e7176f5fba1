#pragma once

#include "colormath/ColorTemperatureTrans.h"
#include "settings/IniHelper.h"
#include "settings/MultiUserReg.h"
#include "settings/RegisterHelper.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Settings of the colour temperature.
class ColorTemperatureReg : public RegisterHelper, public MultiUserReg, public IniHelper {
 public:
  ColorTemperatureReg();

  // Position of the slider, 0 to 366. The first read stores what it gives, the INI file's value or
  // the default; a stored position is given whatever it is. Setting one out of range:
  // ResultOutOfRange.
  int GetTemperatureValue(int defaultTemperatureValue);
  ResultT SetTemperatureValue(int value);

  // 0 default, 1 warm, 2 cold, 255 unknown. The first read stores what it gives: the INI file's
  // type or 255, never the default.
  int GetColorTemperatureType(int defaultColorType);
  ResultT SetColorTemperatureType(int colorType);

  // The point of the colour temperature circle. The first read stores the INI file's point;
  // ResultFailed without one, and the record stays as it was.
  ResultT GetColorTemperatureConfig(ColorTemperatureConfig* colorConfig);
  ResultT SetColorTemperatureConfig(const ColorTemperatureConfig* colorConfig);

  // A point as gains; nothing of it reaches the store.
  void TransColorTemperatureConfigToRGB(const ColorTemperatureConfig* config, double radius,
                                        ColorTemperatureRgb* rgb) {
    colorTemperatureTrans_.TransColorTemperatureConfigToRGB(config, radius, rgb);
  }

 private:
  ResultT GetDefaultColorConfig(ColorTemperatureConfig* colorConfig) const;

  ColorTemperatureTrans colorTemperatureTrans_;
};

}  // namespace velora
