// An export is its entry line, its singleton and a forward.
#include "frame/Log.h"
#include "settings/ColorFieldReg.h"
#include "settings/ColorTemperatureReg.h"
#include "settings/EyeProtectReg.h"
#include "settings/NaturalColorReg.h"
#include "settings/Singleton.h"
#include "settings/WhitePointReg.h"
#include "velora/VeloraCtlApi.h"

using velora::ColorFieldReg;
using velora::ColorTemperatureReg;
using velora::EyeProtectReg;
using velora::FunctionLog;
using velora::NaturalColorReg;
using velora::Singleton;
using velora::WhitePointReg;

// --- Users ---

// The other settings stay with the user of their construction.
void SwitchUser() {
  FunctionLog(__func__).Info();
  Singleton<WhitePointReg>::GetInstance().SwitchUser();
}

// --- White point ---

int GetWhitePointStatus(int defaultWhitePointEnable) {
  FunctionLog(__func__).Info(L"defaultWhitePointEnable:", defaultWhitePointEnable);
  return Singleton<WhitePointReg>::GetInstance().GetWhitePointStatus(defaultWhitePointEnable);
}

ResultT SetWhitePointStatus(int whitePointEnable) {
  FunctionLog(__func__).Info(L"whitePointEnable:", whitePointEnable);
  return Singleton<WhitePointReg>::GetInstance().SetWhitePointStatus(whitePointEnable);
}

// --- Eye protection ---

int GetEyeProtectStatus(int defaultEyeProtectEnable) {
  FunctionLog(__func__).Info(L"defaultEyeProtectEnable:", defaultEyeProtectEnable);
  return Singleton<EyeProtectReg>::GetInstance().GetEyeProtectStatus(defaultEyeProtectEnable);
}

ResultT SetEyeProtectStatus(int eyeProtectEnable) {
  FunctionLog(__func__).Info(L"eyeProtectEnable:", eyeProtectEnable);
  return Singleton<EyeProtectReg>::GetInstance().SetEyeProtectStatus(eyeProtectEnable);
}

int GetEyeProtectValue(int defaultSliderValue) {
  FunctionLog(__func__).Info(L"defaultSliderValue:", defaultSliderValue);
  return Singleton<EyeProtectReg>::GetInstance().GetEyeProtectValue(defaultSliderValue);
}

ResultT SetEyeProtectValue(int eyeProtectValue) {
  FunctionLog(__func__).Info(L"eyeProtectValue:", eyeProtectValue);
  return Singleton<EyeProtectReg>::GetInstance().SetEyeProtectValue(eyeProtectValue);
}

int GetPSRStatusValue(int defaultPSREnable) {
  FunctionLog(__func__).Info(L"defaultPSREnable:", defaultPSREnable);
  return Singleton<EyeProtectReg>::GetInstance().GetPSRStatusValue(defaultPSREnable);
}

ResultT SetPSRStatusValue(int PSREnable) {
  FunctionLog(__func__).Info(L"PSREnable:", PSREnable);
  return Singleton<EyeProtectReg>::GetInstance().SetPSRStatusValue(PSREnable);
}

double GetRhineValue(double defaultRhineValue) {
  FunctionLog(__func__).Info(L"defaultRhineValue:", defaultRhineValue);
  return Singleton<EyeProtectReg>::GetInstance().GetRhineValue(defaultRhineValue);
}

ResultT SetRhineValue(double rhineValue) {
  FunctionLog(__func__).Info(L"rhineValue:", rhineValue);
  return Singleton<EyeProtectReg>::GetInstance().SetRhineValue(rhineValue);
}

int GetColorBlueValue(int value) {
  FunctionLog(__func__).Info(L"value:", value);
  return Singleton<EyeProtectReg>::GetInstance().GetColorBlueValue(value);
}

double TransEyeProtectSliderValue(int sliderValue) {
  FunctionLog(__func__).Info(L"sliderValue:", sliderValue);
  return Singleton<EyeProtectReg>::GetInstance().TransEyeProtectSliderValue(sliderValue);
}

ResultT SetEyeProtectHandleType(int handleType) {
  FunctionLog(__func__).Info(L"handleType:", handleType);
  return Singleton<EyeProtectReg>::GetInstance().SetEyeProtectHandleType(handleType);
}

ResultT SetEyeProtectRGB(double r, double g, double b) {
  FunctionLog(__func__).Info(L"r:", r, L", g:", g, L", b:", b);
  return Singleton<EyeProtectReg>::GetInstance().SetEyeProtectRGB(r, g, b);
}

// --- Colour temperature ---

int GetTemperatureValue(int defaultTemperatureValue) {
  FunctionLog(__func__).Info(L"defaultTemperatureValue:", defaultTemperatureValue);
  return Singleton<ColorTemperatureReg>::GetInstance().GetTemperatureValue(defaultTemperatureValue);
}

ResultT SetTemperatureValue(int value) {
  FunctionLog(__func__).Info(L"temperaturValue:", value);
  return Singleton<ColorTemperatureReg>::GetInstance().SetTemperatureValue(value);
}

int GetColorTemperatureType(int defaultColorType) {
  FunctionLog(__func__).Info(L"defaultColorType:", defaultColorType);
  return Singleton<ColorTemperatureReg>::GetInstance().GetColorTemperatureType(defaultColorType);
}

ResultT SetColorTemperatureType(int colorType) {
  FunctionLog(__func__).Info(L"colorType:", colorType);
  return Singleton<ColorTemperatureReg>::GetInstance().SetColorTemperatureType(colorType);
}

ResultT GetColorTemperatureConfig(ColorTemperatureConfig* colorConfig) {
  FunctionLog(__func__).Info(L"colorConfig:x:", colorConfig->x, L", y:", colorConfig->y);
  return Singleton<ColorTemperatureReg>::GetInstance().GetColorTemperatureConfig(colorConfig);
}

ResultT SetColorTemperatureConfig(const ColorTemperatureConfig* colorConfig) {
  FunctionLog(__func__).Info(L"colorConfig:x:", colorConfig->x, L", y:", colorConfig->y);
  return Singleton<ColorTemperatureReg>::GetInstance().SetColorTemperatureConfig(colorConfig);
}

// --- Natural colour ---

int GetNatureColorStatus(int defaultStatus) {
  FunctionLog(__func__).Info(L"defaultStatus:", defaultStatus);
  return Singleton<NaturalColorReg>::GetInstance().GetNatureColorStatus(defaultStatus);
}

ResultT SetNatureColorStatus(int status) {
  FunctionLog(__func__).Info(L"status:", status);
  return Singleton<NaturalColorReg>::GetInstance().SetNatureColorStatus(status);
}

// --- Colour mode ---

int GetColorFieldCurrentMode(int defaultMode) {
  FunctionLog(__func__).Info(L"defaultMode:", defaultMode);
  return Singleton<ColorFieldReg>::GetInstance().GetColorFieldCurrentMode(defaultMode);
}

ResultT SetColorFieldCurrentMode(int mode) {
  FunctionLog(__func__).Info(L"mode:", mode);
  return Singleton<ColorFieldReg>::GetInstance().SetColorFieldCurrentMode(mode);
}

int GetColorFieldResetMode(int defaultMode) {
  FunctionLog(__func__).Info(L"defaultMode:", defaultMode);
  return Singleton<ColorFieldReg>::GetInstance().GetColorFieldResetMode(defaultMode);
}

ResultT SetColorFieldResetMode(int config) {
  FunctionLog(__func__).Info(L"config:", config);
  return Singleton<ColorFieldReg>::GetInstance().SetColorFieldResetMode(config);
}

int GetColorFieldSetType(int defaultType) {
  FunctionLog(__func__).Info(L"defaultType:", defaultType);
  return Singleton<ColorFieldReg>::GetInstance().GetColorFieldSetType(defaultType);
}

ResultT SetColorFieldSetType(int setType) {
  FunctionLog(__func__).Info(L"setType:", setType);
  return Singleton<ColorFieldReg>::GetInstance().SetColorFieldSetType(setType);
}
