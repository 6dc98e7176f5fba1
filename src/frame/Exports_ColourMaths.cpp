// The colour circle, and the fusion of the features that tint the panel.
#include "colormath/FusionAlgorithm.h"
#include "frame/Log.h"
#include "settings/ColorTemperatureReg.h"
#include "settings/Singleton.h"
#include "velora/VeloraCtlApi.h"

using velora::ColorTemperatureReg;
using velora::FunctionLog;
using velora::Singleton;

void TransColorTemperatureConfigToRGB(const ColorTemperatureConfig* config, double radius,
                                      ColorTemperatureRgb* rgb) {
  FunctionLog(__func__).Info(L"config:x:", config->x, L", y:", config->y, L", radius:", radius,
                             L", rgb:r:", rgb->r, L", g:", rgb->g, L", b:", rgb->b);
  Singleton<ColorTemperatureReg>::GetInstance().TransColorTemperatureConfigToRGB(config, radius,
                                                                                 rgb);
}

void Fusion(uint32_t feature, const FusionInfo* input, Color3DInfo* output) {
  velora::FusionAlgorithm().Fusion(feature, input, output);
}
