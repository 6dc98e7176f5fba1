// The platform library: its start and stop, and the colour temperature that it shows.
#include "VeloraPlatform/VeloraPlatform.h"
#include "frame/Log.h"
#include "settings/PrinterReg.h"
#include "velora/VeloraCtlApi.h"

using velora::FunctionLog;
using velora::PrinterReg;

int Init() { return PlatformInit(); }

int Fini() { return PlatformFini(); }

int Set2DColorTemperature(const Color2DInfo* colorInfo) {
  FunctionLog(__func__).Info(L"colorInfo:temperature:", colorInfo->temperature, L", colorBlue:",
                             colorInfo->colorBlue);
  return PlatformSet2DColorTemperature(colorInfo);
}

// The display gets the gains whether or not the copy for the printer could be stored.
int Set3DColorTemperature(const Color3DInfo* colorInfo) {
  FunctionLog(__func__).Info(L"colorInfo:r:", colorInfo->r, L", g:", colorInfo->g, L", b:",
                             colorInfo->b, L", colorBlue:", colorInfo->colorBlue,
                             L", protectValue:", colorInfo->protectValue);
  PrinterReg::GetInstance().SetPrinterRGB(colorInfo->r, colorInfo->g, colorInfo->b);
  return PlatformSet3DColorTemperature(colorInfo);
}
