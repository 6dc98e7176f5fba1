#pragma once

#include "settings/IniHelper.h"
#include "settings/MultiUserReg.h"
#include "settings/RegisterHelper.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Settings and state of natural colour.
class NaturalColorReg : public RegisterHelper, public MultiUserReg, public IniHelper {
 public:
  NaturalColorReg();

  // On or off. The first read logs what is missing and stores what it gives: 1 for a non-zero value
  // of the INI file or default, else 0.
  int GetNatureColorStatus(int defaultStatus);
  ResultT SetNatureColorStatus(int status);

  // The colour temperature now on the display, in kelvin; defaultValue where none is stored.
  void GetSensorColor(double* value, double defaultValue) const;
  ResultT SetSensorColor(double value);

  // The gains of natural colour, as Gains.h has them.
  ResultT GetNaturalColorRGB(double* r, double* g, double* b) const;
  ResultT SetNaturalColorRGB(double r, double g, double b);
};

}  // namespace velora
