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

ResultT SetUserColorField(const char* id) {
  FunctionLog(__func__).Info(L"id:", id);
  return ColorFieldApi::GetInstance().SetUserColorField(id);
}

ResultT WhitePointFineTue(WhitePointFineTueInfo* whitePoint) {
  FunctionLog(__func__).Info(L"whitePoint:", L"R:", whitePoint->r, L", G:", whitePoint->g, L", B:",
                             whitePoint->b);
  return ColorFieldApi::GetInstance().WhitePointFineTue(whitePoint);
}

ResultT SaveUserSelfColor(const UserDesignInfo* userDesignInfo) {
  FunctionLog(__func__).Info(L"userDesignInfo:", userDesignInfo);
  return ColorFieldApi::GetInstance().SaveUserSelfColor(*userDesignInfo);
}

ResultT EditUserColorField(const UserDesignInfo* userDesignInfo, const char* oldId) {
  FunctionLog(__func__).Info(L"userDesignInfo:", userDesignInfo, L", oldId:", oldId);
  return ColorFieldApi::GetInstance().EditUserColorField(*userDesignInfo, oldId);
}

ResultT DeleteUserSelfColor(const char* id) {
  FunctionLog(__func__).Info(L"id:", id);
  return ColorFieldApi::GetInstance().DeleteUserSelfColor(id);
}

int SyncSysColorField() {
  FunctionLog(__func__).Info();
  return ColorFieldApi::GetInstance().SyncSysColorField();
}

bool SyncCurrentModeIccFile() {
  FunctionLog(__func__).Info();
  return ColorFieldApi::GetInstance().SyncCurrentModeIccFile();
}

ResultT ResetColorField() {
  FunctionLog(__func__).Info();
  return ColorFieldApi::GetInstance().ResetColorField();
}
