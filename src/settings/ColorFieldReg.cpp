#include "settings/ColorFieldReg.h"

#include "frame/Constants.h"

namespace velora {
namespace {

constexpr wchar_t kCurrentMode[] = L"CurrentMode";
constexpr wchar_t kResetMode[] = L"ResetMode";
constexpr wchar_t kSetType[] = L"SetType";

}  // namespace

ColorFieldReg::ColorFieldReg() : IniHelper(kIniFilePath), MultiUserReg(FEATURE_TYPE_COLOR_FIELD) {}

int ColorFieldReg::GetColorFieldCurrentMode(int defaultMode) const {
  return RegReadValue(rootKey_, regPath_, kCurrentMode, defaultMode);
}

ResultT ColorFieldReg::SetColorFieldCurrentMode(int mode) {
  return RegWriteValue(rootKey_, regPath_, kCurrentMode, static_cast<uint32_t>(mode));
}

int ColorFieldReg::GetColorFieldResetMode(int defaultMode) const {
  return RegReadValue(rootKey_, regPath_, kResetMode, defaultMode);
}

ResultT ColorFieldReg::SetColorFieldResetMode(int config) {
  return RegWriteValue(rootKey_, regPath_, kResetMode, static_cast<uint32_t>(config));
}

int ColorFieldReg::GetColorFieldSetType(int defaultType) const {
  return RegReadValue(rootKey_, regPath_, kSetType, defaultType);
}

ResultT ColorFieldReg::SetColorFieldSetType(int setType) {
  return RegWriteValue(rootKey_, regPath_, kSetType, static_cast<uint32_t>(setType));
}

}  // namespace velora
