#include "settings/MultiUserReg.h"

#include <iterator>

#include "CoreKit/CoreKit.h"
#include "frame/Log.h"
#include "settings/FeatureManager.h"

namespace velora {
namespace {

// Sub key of each feature's settings, indexed by FeatureType.
constexpr const wchar_t* kFeatureKeys[] = {
    L"SOFTWARE\\Norvex\\Velora\\WhitePoint",
    L"SOFTWARE\\Norvex\\Velora\\EyeProtect",
    L"SOFTWARE\\Norvex\\Velora\\ColorTemperature",
    L"SOFTWARE\\Norvex\\Velora\\ColorField",
    L"SOFTWARE\\Norvex\\Velora\\NaturalColor",
    L"SOFTWARE\\Norvex\\Velora\\DpInOut",
    L"SOFTWARE\\Norvex\\Velora\\Esd",
    L"SOFTWARE\\Norvex\\Velora\\ColorField\\UserDesign",
    L"SOFTWARE\\Norvex\\Velora\\ColorField\\WhitePointFineTue",
};
static_assert(std::size(kFeatureKeys) == kFeatureCount);

// CoreKit answers in an int of which only the low byte is set.
bool IsAdministrator() { return static_cast<unsigned char>(CoreKit::IsAdminPrivilege()) != 0; }

}  // namespace

MultiUserReg::MultiUserReg(FeatureType featureType) {
  constexpr FunctionLog log("MultiUserReg::MultiUserReg");
  if (FeatureManager::GetInstance().IsMultiUser(featureType) != 0) {
    isMultiUser_ = true;
    if (IsAdministrator()) {
      isAdmin_ = true;
      ResolveUser();
    } else {
      rootKey_ = HKEY_CURRENT_USER;
    }
    log.Info(L"FeatureType ", featureType, L" is multi user!");
  } else {
    rootKey_ = HKEY_LOCAL_MACHINE;
    log.Info(L"FeatureType ", featureType, L" is single user!");
  }
  regPath_ += kFeatureKeys[featureType];
  log.Info(L"reg path:", regPath_);
}

// The feature key is not appended again: hosts rely on values at the root of the user's hive.
void MultiUserReg::SwitchUser() {
  if (!isMultiUser_ || !isAdmin_) {
    return;
  }
  ResolveUser();
  constexpr FunctionLog log("MultiUserReg::SwitchUser");
  log.Info(L"reg path:", regPath_);
}

// A failed look-up leaves the path alone: reads and writes then fail as the registry makes them
// fail.
void MultiUserReg::ResolveUser() {
  rootKey_ = HKEY_USERS;
  std::wstring sid;
  if (CoreKit::GetUserSIDBySessionId(CoreKit::GetLogonSessionId(), sid) == 0) {
    regPath_ = sid + L"\\";
  }
}

}  // namespace velora
