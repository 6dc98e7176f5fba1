// User-designed modes and the fine tuning of the white point. A record that is only passed on shows
// as its address; the gains of a fine tuning are read for the entry line.
#include "frame/Log.h"
#include "settings/Singleton.h"
#include "settings/UserDesignReg.h"
#include "settings/WhitePointFineTueReg.h"
#include "velora/VeloraCtlApi.h"

using velora::FunctionLog;
using velora::Singleton;
using velora::UserDesignReg;
using velora::WhitePointFineTueReg;

ResultT DeleteUserDesignReg(UserDesignInfo* userDesignInfo) {
  FunctionLog(__func__).Info(L"userDesignInfo:", userDesignInfo);
  return Singleton<UserDesignReg>::GetInstance().DeleteUserDesignReg(userDesignInfo);
}

ResultT EditUserSerialNumReg(UserDesignInfo* userDesignInfo) {
  FunctionLog(__func__).Info(L"userDesignInfo:", userDesignInfo);
  return Singleton<UserDesignReg>::GetInstance().EditUserSerialNumReg(userDesignInfo);
}

int GetUserRegHkey() {
  FunctionLog(__func__).Info();
  return Singleton<UserDesignReg>::GetInstance().GetUserRegHkey();
}

ResultT GetWhitePointTueValue(WhitePointFineTueInfo* whitePoint) {
  FunctionLog(__func__).Info(L"whitePoint:", L"R:", whitePoint->r, L", G:", whitePoint->g, L", B:",
                             whitePoint->b);
  return Singleton<WhitePointFineTueReg>::GetInstance().GetWhitePointTueValue(whitePoint);
}

ResultT SetWhitePointTueValue(WhitePointFineTueInfo* whitePoint) {
  FunctionLog(__func__).Info(L"whitePoint:", L"R:", whitePoint->r, L", G:", whitePoint->g, L", B:",
                             whitePoint->b);
  return Singleton<WhitePointFineTueReg>::GetInstance().SetWhitePointTueValue(whitePoint);
}
