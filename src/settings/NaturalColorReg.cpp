#include "settings/NaturalColorReg.h"

#include "frame/Constants.h"
#include "settings/Gains.h"

namespace velora {
namespace {

constexpr wchar_t kIsEnable[] = L"IsEnable";
constexpr wchar_t kSensorColor[] = L"SensorColor";

}  // namespace

NaturalColorReg::NaturalColorReg()
    : MultiUserReg(FEATURE_TYPE_NATURAL_COLOR), IniHelper(kIniFilePath) {}

int NaturalColorReg::GetNatureColorStatus(int defaultStatus) {
  int status = 0;
  if (RegReadValue(rootKey_, regPath_, kIsEnable, &status, true) == ResultOk) {
    return status;
  }
  status = GetUnsigned(L"NATURECOLOR", L"IsNatureColor", defaultStatus) != 0 ? 1 : 0;
  SetNatureColorStatus(status);
  return status;
}

ResultT NaturalColorReg::SetNatureColorStatus(int status) {
  return RegWriteValue(rootKey_, regPath_, kIsEnable, static_cast<uint32_t>(status));
}

void NaturalColorReg::GetSensorColor(double* value, double defaultValue) const {
  if (RegReadValue(rootKey_, regPath_, kSensorColor, value) != ResultOk) {
    *value = defaultValue;
  }
}

ResultT NaturalColorReg::SetSensorColor(double value) {
  return RegWriteValue(rootKey_, regPath_, kSensorColor, value);
}

ResultT NaturalColorReg::GetNaturalColorRGB(double* r, double* g, double* b) const {
  return ReadGains(*this, rootKey_, regPath_, r, g, b);
}

ResultT NaturalColorReg::SetNaturalColorRGB(double r, double g, double b) {
  return WriteGains(*this, rootKey_, regPath_, r, g, b);
}

}  // namespace velora
