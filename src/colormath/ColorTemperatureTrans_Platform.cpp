#include "colormath/ColorTemperatureTrans.h"

#include "VeloraPlatform/VeloraPlatform.h"
#include "frame/Log.h"

namespace velora {

void ColorTemperatureTrans::TransColorTemperatureConfigToRGB(const ColorTemperatureConfig* config,
                                                             double radius,
                                                             ColorTemperatureRgb* rgb) {
  if (!isAlphaInit) {
    InitAlphaInfo();
  }
  PointToGains(*config, radius, rgb);
}

void ColorTemperatureTrans::InitAlphaInfo() {
  constexpr FunctionLog log("ColorTemperatureTrans::InitAlphaInfo");
  PlatformInfo platform = {6, 2};
  if (GetPlatform(&platform) != 0) {
    log.Error(L"GetPlatform failed!");
  }
  if (!SetAlphas(platform.platformType)) {
    log.Error(L"Alpha Info not define in alphaInfoTable! platform type:", platform.platformType);
    return;  // the next transform looks again
  }
  isAlphaInit = true;
}

}  // namespace velora
