#include "settings/ColorTemperatureReg.h"

#include <algorithm>
#include <cmath>

#include "frame/Constants.h"
#include "frame/Log.h"
#include "settings/Slider.h"

namespace velora {
namespace {

constexpr wchar_t kTemperatureValue[] = L"TemperatureValue";
constexpr wchar_t kTemperatureType[] = L"TemperatureType";
constexpr wchar_t kX[] = L"X";
constexpr wchar_t kY[] = L"Y";
constexpr wchar_t kCircle[] = L"CIRCLE";

// The types as the settings application numbers them.
enum ColorTemperatureType { TypeDefault = 0, TypeWarm = 1, TypeCold = 2, TypeUnknown = 255 };

// The colour temperature circle.
constexpr double kCenter = 80;
constexpr double kRadius = 80;
constexpr double kMaxScale = 1.0;      // share of the radius
constexpr double kLeastScale = 0.01F;  // up to here a point is the centre; single precision

}  // namespace

ColorTemperatureReg::ColorTemperatureReg()
    : MultiUserReg(FEATURE_TYPE_TEMPERATURE), IniHelper(kIniFilePath) {}

int ColorTemperatureReg::GetTemperatureValue(int defaultTemperatureValue) {
  int position = 0;
  if (RegReadValue(rootKey_, regPath_, kTemperatureValue, &position, false) == ResultOk) {
    return position;
  }
  position = GetUnsigned(L"TEMPERATURE", L"CurrentTemperatureSlider", defaultTemperatureValue);
  SetTemperatureValue(position);
  return position;
}

ResultT ColorTemperatureReg::SetTemperatureValue(int value) {
  if (!IsSliderPosition(value)) {
    constexpr FunctionLog log("ColorTemperatureReg::SetTemperatureValue");
    log.Error(L"exceed temperatureValue:", value, L", valid range:[", kSliderMin, L", ", kSliderMax,
              L"]");
    return ResultOutOfRange;
  }
  return RegWriteValue(rootKey_, regPath_, kTemperatureValue, static_cast<uint32_t>(value));
}

int ColorTemperatureReg::GetColorTemperatureType(int) {
  int type = 0;
  if (RegReadValue(rootKey_, regPath_, kTemperatureType, &type, false) == ResultOk) {
    return type;
  }
  const bool isDefault = GetUnsigned(kCircle, L"IsIntelDefault", 0) != 0;
  const bool isCold = GetUnsigned(kCircle, L"IsIntelCold", 0) != 0;
  const bool isWarm = GetUnsigned(kCircle, L"IsIntelWarm", 0) != 0;
  type = isDefault ? TypeDefault : isCold ? TypeCold : isWarm ? TypeWarm : TypeUnknown;
  SetColorTemperatureType(type);
  return type;
}

ResultT ColorTemperatureReg::SetColorTemperatureType(int colorType) {
  return RegWriteValue(rootKey_, regPath_, kTemperatureType, static_cast<uint32_t>(colorType));
}

ResultT ColorTemperatureReg::GetColorTemperatureConfig(ColorTemperatureConfig* colorConfig) {
  ColorTemperatureConfig stored{};
  if (RegReadValue(rootKey_, regPath_, kX, &stored.x) == ResultOk &&
      RegReadValue(rootKey_, regPath_, kY, &stored.y) == ResultOk) {
    *colorConfig = stored;
    return ResultOk;
  }
  if (GetDefaultColorConfig(colorConfig) != ResultOk) {
    return ResultFailed;
  }
  SetColorTemperatureConfig(colorConfig);
  return ResultOk;
}

ResultT ColorTemperatureReg::SetColorTemperatureConfig(const ColorTemperatureConfig* colorConfig) {
  const ResultT result = RegWriteValue(rootKey_, regPath_, kX, colorConfig->x);
  return result == ResultOk ? RegWriteValue(rootKey_, regPath_, kY, colorConfig->y) : result;
}

ResultT ColorTemperatureReg::GetDefaultColorConfig(ColorTemperatureConfig* colorConfig) const {
  double angle = 0;  // radians
  double scale = 0;
  const int angleMissing = GetValue(kCircle, L"Angle", &angle);
  const int scaleMissing = GetValue(kCircle, L"RadiusScale", &scale);
  if (angleMissing != 0 || scaleMissing != 0) {
    return ResultFailed;
  }
  scale = std::min(scale, kMaxScale);
  *colorConfig = {kCenter, kCenter};
  if (std::fabs(scale) > kLeastScale) {
    colorConfig->x = kRadius * scale * std::cos(angle) + kCenter;
    colorConfig->y = kCenter - kRadius * scale * std::sin(angle);
  }
  return ResultOk;
}

}  // namespace velora
