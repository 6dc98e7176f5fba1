#include "settings/PrinterReg.h"

#include "frame/IntegerCast.h"
#include "frame/Log.h"
#include "settings/Gains.h"

namespace velora {

PrinterReg& PrinterReg::GetInstance() {
  static PrinterReg instance;
  return instance;
}

ResultT PrinterReg::SetPrinterCcts(float cct) {
  constexpr FunctionLog log("PrinterReg::SetPrinterCcts");
  const auto kelvin = static_cast<uint32_t>(TruncateToInt32(cct));
  if (RegWriteValue(HKEY_LOCAL_MACHINE, regPath_, L"SensorCCT", kelvin) != ResultOk) {
    log.Error(L"Save Printer SensorCCT fail");
    return ResultFailed;
  }
  log.Info(L"Save SetPrinterCcts = ", cct, L" OK");
  return ResultOk;
}

ResultT PrinterReg::SetPrinterRGB(double r, double g, double b) {
  return WriteGains(*this, HKEY_LOCAL_MACHINE, regPath_, r, g, b);
}

}  // namespace velora
