#pragma once

#include "settings/IniHelper.h"
#include "settings/MultiUserReg.h"
#include "settings/RegisterHelper.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Settings of eye protection.
class EyeProtectReg : public RegisterHelper, public MultiUserReg, public IniHelper {
 public:
  EyeProtectReg();

  // On or off. The first read stores what it gives: the INI file's value or the default.
  int GetEyeProtectStatus(int defaultEyeProtectEnable);
  ResultT SetEyeProtectStatus(int eyeProtectEnable);

  // Position of the slider, 0 to 366. The first read stores what it gives; a stored position out of
  // range is replaced by the default. Setting one out of range: ResultOutOfRange.
  int GetEyeProtectValue(int defaultSliderValue);
  ResultT SetEyeProtectValue(int eyeProtectValue);

  int GetPSRStatusValue(int defaultPSREnable) const;
  ResultT SetPSRStatusValue(int PSREnable);

  // Base of the slider's strength.
  double GetRhineValue(double defaultRhineValue) const;
  ResultT SetRhineValue(double rhineValue);

  // Whether the gains below are merged into the display's.
  int GetEyeProtectHandleType(int defaultHandleType) const;
  ResultT SetEyeProtectHandleType(int handleType);

  // The gains of eye protection, as Gains.h has them.
  ResultT GetEyeProtectRGB(double* r, double* g, double* b) const;
  ResultT SetEyeProtectRGB(double r, double g, double b);

  // The platform's blue value of a status: 255 for 1, else 0. Touches no store.
  int GetColorBlueValue(int value) const;

  // Strength of eye protection for a slider position, also for one out of range.
  double TransEyeProtectSliderValue(int sliderValue) const;
};

}  // namespace velora
