#include "settings/EyeProtectReg.h"

#include "frame/Constants.h"
#include "frame/Log.h"
#include "settings/FeatureManager.h"
#include "settings/Gains.h"
#include "settings/Slider.h"

namespace velora {
namespace {

constexpr wchar_t kIsEnable[] = L"IsEnable";
constexpr wchar_t kProtectValue[] = L"ProtectValue";
constexpr wchar_t kPsrIsEnable[] = L"PSRIsEnable";
constexpr wchar_t kRhineValue[] = L"RhineValue";
constexpr wchar_t kHandleType[] = L"HandleType";
constexpr wchar_t kBlueProtect[] = L"BLUEPROTECT";

// The curve of the slider's strength, in terms of the Rhine value R: from a part of the way between
// R and 1 down to R at kFlatFirst, flat to kFlatLast, down to a part of R at the slider's end. The
// factors are single-precision numbers.
constexpr double kDefaultRhineValue = 0.82F;
constexpr double kRise = 0.65F;
constexpr double kFall = 0.1F;
constexpr int kFlatFirst = 180;
constexpr int kFlatLast = 195;

constexpr int kBlueOn = 255;

}  // namespace

EyeProtectReg::EyeProtectReg() : MultiUserReg(FEATURE_TYPE_EYE_PROTECT), IniHelper(kIniFilePath) {}

int EyeProtectReg::GetEyeProtectStatus(int defaultEyeProtectEnable) {
  int status = 0;
  if (RegReadValue(rootKey_, regPath_, kIsEnable, &status, false) == ResultOk) {
    return status;
  }
  status = GetUnsigned(L"EYEPROTECT", L"IsEnableEyeProtect", defaultEyeProtectEnable);
  SetEyeProtectStatus(status);
  return status;
}

ResultT EyeProtectReg::SetEyeProtectStatus(int eyeProtectEnable) {
  return RegWriteValue(rootKey_, regPath_, kIsEnable, static_cast<uint32_t>(eyeProtectEnable));
}

int EyeProtectReg::GetEyeProtectValue(int defaultSliderValue) {
  int position = defaultSliderValue;
  bool mustStore = false;
  if (RegReadValue(rootKey_, regPath_, kProtectValue, &position, false) != ResultOk) {
    int isInUse = 0;
    GetValue(kBlueProtect, L"CurrentBlueProtect", &isInUse);
    if (isInUse != 0) {
      position = GetUnsigned(kBlueProtect, L"CurrentBlueProtectSlider", position);
    }
    mustStore = true;
  }
  if (!IsSliderPosition(position)) {
    position = defaultSliderValue;
    mustStore = true;
  }
  // A default that is out of range itself is refused here and given to the caller all the same.
  if (mustStore) {
    SetEyeProtectValue(position);
  }
  return position;
}

ResultT EyeProtectReg::SetEyeProtectValue(int eyeProtectValue) {
  if (!IsSliderPosition(eyeProtectValue)) {
    constexpr FunctionLog log("EyeProtectReg::SetEyeProtectValue");
    log.Error(L"exceed eyeProtectSliderValue:", eyeProtectValue, L", valid range:[", kSliderMin,
              L", ", kSliderMax, L"]");
    return ResultOutOfRange;
  }
  return RegWriteValue(rootKey_, regPath_, kProtectValue, static_cast<uint32_t>(eyeProtectValue));
}

int EyeProtectReg::GetPSRStatusValue(int defaultPSREnable) const {
  return RegReadValue(rootKey_, regPath_, kPsrIsEnable, defaultPSREnable);
}

ResultT EyeProtectReg::SetPSRStatusValue(int PSREnable) {
  return RegWriteValue(rootKey_, regPath_, kPsrIsEnable, static_cast<uint32_t>(PSREnable));
}

double EyeProtectReg::GetRhineValue(double defaultRhineValue) const {
  double value = defaultRhineValue;
  RegReadValue(rootKey_, regPath_, kRhineValue, &value);
  return value;
}

ResultT EyeProtectReg::SetRhineValue(double rhineValue) {
  return RegWriteValue(rootKey_, regPath_, kRhineValue, rhineValue);
}

int EyeProtectReg::GetEyeProtectHandleType(int defaultHandleType) const {
  return RegReadValue(rootKey_, regPath_, kHandleType, defaultHandleType);
}

ResultT EyeProtectReg::SetEyeProtectHandleType(int handleType) {
  return RegWriteValue(rootKey_, regPath_, kHandleType, static_cast<uint32_t>(handleType));
}

ResultT EyeProtectReg::GetEyeProtectRGB(double* r, double* g, double* b) const {
  return ReadGains(*this, rootKey_, regPath_, r, g, b);
}

ResultT EyeProtectReg::SetEyeProtectRGB(double r, double g, double b) {
  return WriteGains(*this, rootKey_, regPath_, r, g, b);
}

int EyeProtectReg::GetColorBlueValue(int value) const { return value == 1 ? kBlueOn : 0; }

double EyeProtectReg::TransEyeProtectSliderValue(int sliderValue) const {
  const double rhine = GetRhineValue(kDefaultRhineValue);
  if (FeatureManager::GetInstance().IsFeatureSupport(FEATURE_TYPE_EYE_PROTECT) == 0) {
    return rhine;
  }
  if (sliderValue > kFlatLast) {
    return rhine - (sliderValue - kFlatLast) * (rhine * kFall) / (kSliderMax - kFlatLast);
  }
  if (sliderValue < kFlatFirst) {
    const double rise = (1 - rhine) * kRise;
    return rhine + rise - sliderValue * rise / kFlatFirst;
  }
  return rhine;
}

}  // namespace velora
