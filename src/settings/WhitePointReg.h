#pragma once

#include "settings/MultiUserReg.h"
#include "settings/RegisterHelper.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Settings of the white point correction.
class WhitePointReg : public RegisterHelper, public MultiUserReg {
 public:
  WhitePointReg();

  int GetWhitePointStatus(int defaultWhitePointEnable) const;
  ResultT SetWhitePointStatus(int whitePointEnable);

  // The gains of the white point, as Gains.h has them.
  ResultT GetWhitePointRGB(double* r, double* g, double* b) const;
  ResultT SetWhitePointRGB(double r, double g, double b);
};

}  // namespace velora
