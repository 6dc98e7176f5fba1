// An export is its entry line, its singleton and a forward.
#include "frame/Log.h"
#include "settings/Singleton.h"
#include "settings/WhitePointReg.h"
#include "velora/VeloraCtlApi.h"

using velora::FunctionLog;
using velora::Singleton;
using velora::WhitePointReg;

// --- Users ---

// The other settings stay with the user of their construction.
void SwitchUser() {
  FunctionLog(__func__).Info();
  Singleton<WhitePointReg>::GetInstance().SwitchUser();
}

// --- White point ---

int GetWhitePointStatus(int defaultWhitePointEnable) {
  FunctionLog(__func__).Info(L"defaultWhitePointEnable:", defaultWhitePointEnable);
  return Singleton<WhitePointReg>::GetInstance().GetWhitePointStatus(defaultWhitePointEnable);
}

ResultT SetWhitePointStatus(int whitePointEnable) {
  FunctionLog(__func__).Info(L"whitePointEnable:", whitePointEnable);
  return Singleton<WhitePointReg>::GetInstance().SetWhitePointStatus(whitePointEnable);
}
