// Colour mode control: null records go on to the operation.
#include "colorfield/ColorFieldApi.h"
#include "frame/Log.h"
#include "velora/VeloraCtlApi.h"

using velora::ColorFieldApi;
using velora::FunctionLog;

ResultT InitColorFieldInfo(const ColorFieldInitInfo* info) {
  FunctionLog(__func__).Info(L"info:", info);
  return ColorFieldApi::GetInstance().InitColorFieldInfo(info);
}

ResultT AddColorFieldModeInfo(const ColorFieldModeInfo* modeInfo) {
  FunctionLog(__func__).Info(L"modeInfo:", modeInfo);
  return ColorFieldApi::GetInstance().AddColorFieldModeInfo(modeInfo);
}

ResultT AddUsrDesignInfo(const UserDesignInfo* modeInfo) {
  FunctionLog(__func__).Info(L"modeInfo:", modeInfo);
  return ColorFieldApi::GetInstance().AddUsrDesignInfo(modeInfo);
}

ResultT SetColorField(int mode) {
  FunctionLog(__func__).Info(L"mode:", mode);
  return ColorFieldApi::GetInstance().SetColorField(mode);
}
