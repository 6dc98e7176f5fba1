#pragma once

#include "settings/IniHelper.h"
#include "settings/MultiUserReg.h"
#include "settings/RegisterHelper.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Settings of the colour mode: plain values, without defaults in the INI file.
class ColorFieldReg : public RegisterHelper, public IniHelper, public MultiUserReg {
 public:
  ColorFieldReg();

  // The colour mode now in force.
  int GetColorFieldCurrentMode(int defaultMode) const;
  ResultT SetColorFieldCurrentMode(int mode);

  // The colour mode to return to on reset.
  int GetColorFieldResetMode(int defaultMode) const;
  ResultT SetColorFieldResetMode(int config);

  // The way of applying a mode, as the reset needs it.
  int GetColorFieldSetType(int defaultType) const;
  ResultT SetColorFieldSetType(int setType);
};

}  // namespace velora
