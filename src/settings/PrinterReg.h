#pragma once

#include <string>

#include "settings/RegisterHelper.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// What the printer link reads of the display: always in the machine's hive.
class PrinterReg : public RegisterHelper {
 public:
  static PrinterReg& GetInstance();

  // The ambient colour temperature in kelvin; stored without its fraction.
  ResultT SetPrinterCcts(float cct);

  // A copy of the gains sent to the platform, as Gains.h has them.
  ResultT SetPrinterRGB(double r, double g, double b);

 private:
  const std::wstring regPath_ = L"SOFTWARE\\Norvex\\Velora\\Printer";
};

}  // namespace velora
