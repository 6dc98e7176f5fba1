#include "colormath/FusionAlgorithm.h"

#include <algorithm>
#include <iterator>

#include "VeloraPlatform/VeloraPlatform.h"
#include "colormath/WhitePointRgbCalc.h"
#include "frame/Log.h"
#include "settings/EyeProtectReg.h"
#include "settings/NaturalColorReg.h"
#include "settings/Singleton.h"
#include "settings/WhitePointReg.h"

namespace velora {
namespace {

constexpr double kCircleRadius = 80.0;
constexpr int kNoSlider = -1;
constexpr int kDefaultSlider = 185;
constexpr int kNoHandleType = 0;

// The platforms whose display takes fused gains.
constexpr uint32_t kFusingPlatforms[] = {1, 2, 4};

template <typename Gains>
void Merge(const Gains& gain, Color3DInfo& output) {
  output.r *= gain.r;
  output.g *= gain.g;
  output.b *= gain.b;
}

// Would tell the current white point; nothing does, and the branch behind it stays closed.
bool IsWhitePointInfoValid(const WhitePointInfo&) { return false; }

}  // namespace

constinit const FusionAlgorithm::FeatureHandler FusionAlgorithm::fusionFeatureTable[3] = {
    {FEATURE_TYPE_WHITEPOINT, &FusionAlgorithm::FusionWhitePoint},
    {FEATURE_TYPE_TEMPERATURE, &FusionAlgorithm::FusionColorTemperature},
    {FEATURE_TYPE_NATURAL_COLOR, &FusionAlgorithm::FusionNaturalColor},
};

void FusionAlgorithm::Fusion(uint32_t feature, const FusionInfo* input, Color3DInfo* output) const {
  constexpr FunctionLog log("FusionAlgorithm::Fusion");
  *output = {.r = 1.0, .g = 1.0, .b = 1.0, .colorBlue = 0, .protectValue = 0.0};
  const auto* row = std::ranges::find(fusionFeatureTable, feature, &FeatureHandler::feature);
  if (row == std::end(fusionFeatureTable)) {
    log.Error(L"Fusion Feature not defined in fusionFeatureTable! feature:", feature);
    return;
  }
  (this->*row->fuse)(*input, *output);
}

void FusionAlgorithm::FusionWhitePoint(const FusionInfo& input, Color3DInfo& output) const {
  if (!IsNeedFusion(FEATURE_TYPE_WHITEPOINT)) {
    return;
  }
  MergeWhitePoint(input.status, output);
  MergeColorTemperature(output);
  if (GetNatureColorStatus(0) == 1) {
    MergeNaturalColor(1, output);
  }
}

void FusionAlgorithm::FusionColorTemperature(const FusionInfo& input, Color3DInfo& output) const {
  output = input.colorInfo;
  if (!IsNeedFusion(FEATURE_TYPE_TEMPERATURE)) {
    return;
  }
  ColorTemperatureRgb gain;
  if (GetEyeProtectGain(input.colorInfo.colorBlue, gain)) {
    Merge(gain, output);
    output.colorBlue = 0;  // it is part of the gains now
  }
  if (GetWhitePointStatus(0) == 1) {
    MergeWhitePoint(1, output);
  }
  if (GetNatureColorStatus(0) == 1) {
    MergeNaturalColor(1, output);
  }
}

void FusionAlgorithm::FusionNaturalColor(const FusionInfo& input, Color3DInfo& output) const {
  output.r = input.colorInfo.r;
  output.g = input.colorInfo.g;
  output.b = input.colorInfo.b;
  // Ahead of the platform test, unlike in the other two.
  MergeColorTemperature(output);
  if (IsNeedFusion(FEATURE_TYPE_NATURAL_COLOR) && GetWhitePointStatus(0) == 1) {
    MergeWhitePoint(1, output);
  }
}

void FusionAlgorithm::MergeColorTemperature(Color3DInfo& output) const {
  if (IsFeatureSupport(FEATURE_TYPE_TEMPERATURE) == 0) {
    return;
  }
  Color3DInfo info = {};
  GetColorTemperatureInfo(info);
  output.colorBlue = info.colorBlue;
  output.protectValue = info.protectValue;
  Merge(info, output);
}

void FusionAlgorithm::GetColorTemperatureInfo(Color3DInfo& info) const {
  constexpr FunctionLog log("FusionAlgorithm::GetColorTemperatureInfo");
  info.protectValue = GetProtectValue();
  info.colorBlue = static_cast<uint32_t>(GetColorBlueValue(GetEyeProtectStatus(0)));
  ColorTemperatureConfig point = {};
  if (GetColorTemperatureConfig(&point) != ResultOk) {
    info.r = info.g = info.b = 1.0;
    log.Error(L"GetColorTemperatureConfig failed when feature fusion!");
    return;
  }
  ColorTemperatureRgb rgb = {1.0, 1.0, 1.0};
  TransColorTemperatureConfigToRGB(&point, kCircleRadius, &rgb);
  info.r = rgb.r;
  info.g = rgb.g;
  info.b = rgb.b;
  ColorTemperatureRgb gain;
  if (GetEyeProtectGain(info.colorBlue, gain)) {
    Merge(gain, info);
    info.colorBlue = 0;
  }
}

double FusionAlgorithm::GetProtectValue() const {
  constexpr FunctionLog log("FusionAlgorithm::GetProtectValue");
  int slider = GetEyeProtectValue(kNoSlider);
  if (slider == kNoSlider) {
    slider = kDefaultSlider;
    log.Warn(L"Set slider value to default value 185");
  }
  return TransEyeProtectSliderValue(slider);
}

bool FusionAlgorithm::GetEyeProtectGain(uint32_t colorBlue, ColorTemperatureRgb& gain) const {
  gain = {1.0, 1.0, 1.0};
  if (colorBlue == 0) {
    return false;
  }
  const EyeProtectReg& settings = Singleton<EyeProtectReg>::GetInstance();
  if (settings.GetEyeProtectHandleType(kNoHandleType) == kNoHandleType) {
    return false;
  }
  return settings.GetEyeProtectRGB(&gain.r, &gain.g, &gain.b) == ResultOk;
}

void FusionAlgorithm::MergeWhitePoint(uint32_t status, Color3DInfo& output) const {
  if (IsFeatureSupport(FEATURE_TYPE_WHITEPOINT) == 0 || status != 1) {
    return;
  }
  WhitePointReg& settings = Singleton<WhitePointReg>::GetInstance();
  ColorTemperatureRgb gain = {1.0, 1.0, 1.0};
  if (settings.GetWhitePointRGB(&gain.r, &gain.g, &gain.b) == ResultOk) {
    Merge(gain, output);
    return;
  }
  const WhitePointInfo info = {};
  if (IsWhitePointInfoValid(info)) {
    double calculated[3];
    WhitePointRgbCalc().GetWhitePointRgb(calculated, info);
    gain = {calculated[0], calculated[1], calculated[2]};
    settings.SetWhitePointRGB(gain.r, gain.g, gain.b);
    Merge(gain, output);
  }
}

ResultT FusionAlgorithm::MergeNaturalColor(uint32_t status, Color3DInfo& output) const {
  if (IsFeatureSupport(FEATURE_TYPE_NATURAL_COLOR) == 0 || status != 1) {
    return ResultOk;
  }
  const NaturalColorReg& settings = Singleton<NaturalColorReg>::GetInstance();
  ColorTemperatureRgb gain = {1.0, 1.0, 1.0};
  const ResultT result = settings.GetNaturalColorRGB(&gain.r, &gain.g, &gain.b);
  if (result == ResultOk) {
    Merge(gain, output);
  }
  return result;
}

bool FusionAlgorithm::IsNeedFusion(uint32_t feature) const {
  constexpr FunctionLog log("FusionAlgorithm::IsNeedFusion");
  if (std::ranges::find(fusionFeatureTable, feature, &FeatureHandler::feature) ==
      std::end(fusionFeatureTable)) {
    return false;
  }
  PlatformInfo platform = {6, 2};
  if (GetPlatform(&platform) != 0) {
    log.Error(L"GetPlatform failed! No need to fusion feature:", feature);
    return false;
  }
  if (std::ranges::find(kFusingPlatforms, platform.platformType) == std::end(kFusingPlatforms)) {
    log.Error(
        L"Feature Fusion just support on platform PLATFORM_INTEL_TGL or PLATFORM_INTEL_ADL or "
        L"PLATFORM_QCOM, not support on:",
        platform.platformType);
    return false;
  }
  return true;
}

}  // namespace velora
