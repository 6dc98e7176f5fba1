// Stands in for the settings' header of this name, which needs the registry.
#pragma once

#include "velora/VeloraCtlApi.h"

namespace velora {

class PrinterReg {
 public:
  static PrinterReg& GetInstance();

  ResultT SetPrinterCcts(float cct);
};

}  // namespace velora
