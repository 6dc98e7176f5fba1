// The stored mode, the system's profile and the output, brought in line in each direction.
#include "colorfield/ColorFieldApi.h"

#include <algorithm>

#include "CoreKit/CoreKit.h"
#include "VeloraPlatform/VeloraPlatform.h"
#include "frame/Log.h"
#include "frame/ModeNames.h"
#include "frame/TextField.h"

namespace velora {
namespace {

constexpr ColorFieldMode kUnknownMode = -1;

// Of the stored reset values: nothing usable is stored.
constexpr ColorFieldMode kNoResetMode = -1;
constexpr int kNoSetType = 4;

}  // namespace

// The system is right: the output follows its profile. The profile itself is left alone, save for
// what a user mode does.
ColorFieldMode ColorFieldApi::SyncSysColorField() {
  constexpr FunctionLog log("ColorFieldApi::SyncSysColorField");
  std::wstring iccName;
  const ResultT queried = GetDefaultIccFile(iccName);
  if (queried != ResultOk) {
    log.Error(L"GetDefaultIccFile Failed, ret is", queried, L"currentIccFileName:", iccName);
    return kUnknownMode;
  }
  log.Info(L"targetIccFileName is ", iccName);
  if (iccName.empty()) {
    return GetColorFieldCurrentMode(kUnknownMode);
  }

  const auto preset = FindPresetByIcc(CoreKit::WStringToString(iccName));
  // A user mode wins over a preset.
  std::string id;
  if (FindUserModeByIcc(iccName, id)) {
    if (EnableUserColorField(id, false) == ResultOk) {
      log.Info(L"Current mode change to USRDESIGN_MODE");
      return USRDESIGN_MODE;
    }
    log.Error(L"Find mode by icc, mode id is", id, L", but enable failed");
  }

  // A profile that nobody registered means the default mode.
  const ColorFieldMode mode = preset != modeIccVec_.end() ? preset->mode : defaultMode_;
  if (mode == GetColorFieldCurrentMode(kUnknownMode)) {
    return mode;  // the output is taken to be right already
  }
  const ResultT enabled = EnableColorFieldMode(mode);
  if (enabled != ResultOk) {
    log.Error(L"EnableColorFieldMode:", mode, L" failed,ret is ", enabled);
    return kUnknownMode;
  }
  return mode;
}

std::vector<ColorFieldModeInfo>::const_iterator ColorFieldApi::FindPresetByIcc(
    const std::string& iccName) const {
  return std::ranges::find_if(modeIccVec_, [&iccName](const ColorFieldModeInfo& row) {
    return FieldText(row.iccPath).find(iccName) != std::string_view::npos;
  });
}

// The settings are right: a monitor without any profile gets the stored mode's. Whether a profile
// that is there is the right one is not looked at.
bool ColorFieldApi::SyncCurrentModeIccFile() {
  constexpr FunctionLog log("ColorFieldApi::SyncCurrentModeIccFile");
  std::wstring iccName;
  if (GetDefaultIccFile(iccName) != ResultOk) {
    log.Info(L"Get DefaultIcc Fail!");
    return true;
  }
  log.Info(L"targetIccFileName is ", iccName);
  if (!iccName.empty()) {
    return true;
  }
  const ColorFieldMode mode = GetColorFieldCurrentMode(kNoMode);
  return mode == USRDESIGN_MODE ? AssociateCurrentUserMode(log) : AssociatePreset(mode, log);
}

bool ColorFieldApi::AssociatePreset(ColorFieldMode mode, const FunctionLog& log) {
  std::string path;
  if (!FindIccFilePathByMode(mode, path)) {
    log.Error(L"Can not find icc by mode");
    return false;
  }
  if (SetOsIccFileWithCheck(path) != ResultOk) {
    log.Error(L"SetOsIccFileWithCheck Failed");
    return false;
  }
  return true;
}

bool ColorFieldApi::AssociateCurrentUserMode(const FunctionLog& log) {
  const std::string name = userDesignReg_.GetCurrentUsrMode();
  std::string path;
  if (!FindIccFilePathByModeName(name, path)) {
    log.Error(L"Can not find icc by modeName");
    return false;
  }
  if (SetUsrIccFileWithCheck(path, name) != ResultOk) {
    log.Error(L"SetUsrIccFileWithCheck Failed");
    return false;
  }
  return true;
}

// By the stored set type, not by the one that the host registered with. The profile stays, and so
// does a gamma LUT.
ResultT ColorFieldApi::ResetColorField() const {
  constexpr FunctionLog log("ColorFieldApi::ResetColorField");
  const ColorFieldMode resetMode = GetColorFieldResetMode(kNoMode);
  const int setType = GetColorFieldSetType(kNoSetType);
  if (resetMode == kNoResetMode || setType == kNoSetType) {
    log.Info(L"Reset color field failed,resetMode:", resetMode, L"setType:", setType);
    return ResultNotSet;
  }
  // An error's level, though nothing is wrong: support finds the line by it.
  log.Error(L"setType:", setType, L", resetMode:", resetMode);
  switch (setType) {
    case SetTypeDdcci:
      return EnableColorFieldByDdcci(resetMode);
    case SetType3DLut:
    case SetTypeGammaLut:
      return PlatformReset3DLut();
    case SetTypePccMatrix:
      return PlatformResetPccMatrixInfo();
    default:
      log.Error(L"PC Displayer ColorField Mode Not Support on this version, resetMode is ",
                resetMode);
      return ResultColorFieldError;
  }
}

}  // namespace velora
