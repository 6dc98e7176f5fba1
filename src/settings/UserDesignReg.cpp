#include "settings/UserDesignReg.h"

#include "CoreKit/CoreKit.h"
#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/TextField.h"

namespace velora {
namespace {

constexpr wchar_t kSerialNum[] = L"SerialNum";
constexpr wchar_t kCurrentUsrMode[] = L"CurrentUsrMode";

// Numbers of GetUserRegHkey.
enum UserRegHkey { CurrentUser = 1, LocalMachine = 2, Users = 3 };

template <size_t N>
std::wstring WideText(const char (&field)[N]) {
  return CoreKit::StringToWString(std::string(FieldText(field)));
}

}  // namespace

UserDesignReg::UserDesignReg() : IniHelper(kIniFilePath), MultiUserReg(FEATURE_TYPE_USER_DESIGN) {}

ResultT UserDesignReg::AddUserDesignReg(const UserDesignInfo* info) {
  const ResultT result = WriteUserDesignReg(info);
  if (result != ResultOk) {
    constexpr FunctionLog log("UserDesignReg::AddUserDesignReg");
    log.Error(L"Add user design reg data failed, id: ", FieldText(info->id));
  }
  return result;
}

ResultT UserDesignReg::EditUserDesignReg(const UserDesignInfo* info, const std::string& oldId) {
  constexpr FunctionLog log("UserDesignReg::EditUserDesignReg");
  const std::wstring wideOldId = CoreKit::StringToWString(oldId);
  // The new key tells whether the id has changed: an id that another mode has counts as unchanged.
  if (!IsRegKeyExists(rootKey_, ModeKey(WideText(info->id)))) {
    log.Info(L"Id have changed, need delete old reg value");
    RegDeleteKeyW(rootKey_, regPath_, wideOldId);
  }
  const ResultT result = WriteUserDesignReg(info);
  if (result != ResultOk) {
    log.Error(L"Edit user design reg data failed, id: ", FieldText(info->id));
    return result;
  }
  whitePointFineTueReg_.EditUsrModeWhitePointId(wideOldId, wideInfo_.id);
  return ResultOk;
}

ResultT UserDesignReg::EditUserSerialNumReg(const UserDesignInfo* info) {
  constexpr FunctionLog log("UserDesignReg::EditUserSerialNumReg");
  wideInfo_ = Widen(*info);
  if (wideInfo_.id.empty()) {
    log.Error(L"Edit user design serial num failed, id is empty");
    return ResultFailed;
  }
  if (RegWriteValue(rootKey_, ModeKey(wideInfo_.id), kSerialNum, wideInfo_.serialNum) != ResultOk) {
    log.Error(L"Edit user design serial num failed, id: ", wideInfo_.id);
    return ResultFailed;
  }
  return ResultOk;
}

ResultT UserDesignReg::DeleteUserDesignReg(const UserDesignInfo* info) {
  constexpr FunctionLog log("UserDesignReg::DeleteUserDesignReg");
  wideInfo_ = Widen(*info);
  const std::wstring key = ModeKey(wideInfo_.id);
  if (!IsRegKeyExists(rootKey_, key)) {
    log.Info(L"IsRegKeyExists false, path", key);
    return ResultOk;
  }
  if (const ResultT result = RegDeleteKeyW(rootKey_, regPath_, wideInfo_.id); result != ResultOk) {
    log.Error(L"RegDeleteKey Error, path", key);
    return result;
  }
  whitePointFineTueReg_.DeleteUsrModeWhitePoint(wideInfo_.id);
  return ResultOk;
}

int UserDesignReg::GetUserRegHkey() const {
  constexpr FunctionLog log("UserDesignReg::GetUserRegHkey");
  if (rootKey_ == HKEY_CURRENT_USER) {
    log.Info(L"hkey is HKEY_CURRENT_USER");
    return CurrentUser;
  }
  if (rootKey_ == HKEY_LOCAL_MACHINE) {
    log.Info(L"hkey is HKEY_LOCAL_MACHINE");
    return LocalMachine;
  }
  log.Info(L"hkey is HKEY_USERS");
  return Users;
}

std::string UserDesignReg::GetCurrentUsrMode() const {
  std::wstring id;
  if (RegReadValue(rootKey_, regPath_, kCurrentUsrMode, id, true) != ResultOk) {
    constexpr FunctionLog log("UserDesignReg::GetCurrentUsrMode");
    log.Error(L"Get currentUsrMode fail, path", regPath_);
    return {};
  }
  return CoreKit::WStringToString(id);
}

ResultT UserDesignReg::SetCurrentUsrMode(const std::string& id) {
  const ResultT result =
      RegWriteValue(rootKey_, regPath_, kCurrentUsrMode, CoreKit::StringToWString(id));
  if (result != ResultOk) {
    constexpr FunctionLog log("UserDesignReg::SetCurrentUsrMode");
    log.Error(L"SetCurrentUsrMode Error, id: ", id);
  }
  return result;
}

UserDesignReg::WideUserDesignInfo UserDesignReg::Widen(const UserDesignInfo& info) {
  return {.serialNum = info.serialNum,
          .mode = Choice{info.mode},
          .description = WideText(info.description),
          .id = WideText(info.id),
          .modeName = WideText(info.modeName),
          .gamut = Choice{info.gamut},
          .whitePointMode = Choice{info.whitePointMode},
          .whitePointX = info.whitePointX,
          .whitePointY = info.whitePointY,
          .whitePointXStr = WideText(info.whitePointXStr),
          .whitePointYStr = WideText(info.whitePointYStr),
          .gammaMode = Choice{info.gammaMode},
          .gamma = info.gamma,
          .gammaStr = WideText(info.gammaStr),
          .iccPath = WideText(info.iccPath),
          .threeDLutPath = WideText(info.threeDLutPath),
          .gammaPath = WideText(info.gammaPath)};
}

// In this order; the first failure ends it, and what is written stays.
ResultT UserDesignReg::WriteUserDesignReg(const UserDesignInfo* info) {
  wideInfo_ = Widen(*info);
  const std::wstring key = ModeKey(wideInfo_.id);
  ResultT result = ResultOk;
  const auto write = [&](const wchar_t* name, const auto& value) {
    if (result == ResultOk) {
      result = RegWriteValue(rootKey_, key, name, value);
    }
  };
  write(kSerialNum, wideInfo_.serialNum);
  write(L"Mode", wideInfo_.mode);
  write(L"Gammut", wideInfo_.gamut);
  write(L"WhitePointX", wideInfo_.whitePointX);
  write(L"WhitePointY", wideInfo_.whitePointY);
  write(L"Gamma", wideInfo_.gamma);
  write(L"WhitePointMode", wideInfo_.whitePointMode);
  write(L"GammaMode", wideInfo_.gammaMode);
  write(L"Id", wideInfo_.id);
  write(L"ModeName", wideInfo_.modeName);
  write(L"Description", wideInfo_.description);
  write(L"IccPath", wideInfo_.iccPath);
  write(L"ThreeDLutPath", wideInfo_.threeDLutPath);
  write(L"GammaPath", wideInfo_.gammaPath);
  write(L"WhitePointXStr", wideInfo_.whitePointXStr);
  write(L"WhitePointYStr", wideInfo_.whitePointYStr);
  write(L"GammaStr", wideInfo_.gammaStr);
  return result;
}

std::wstring UserDesignReg::ModeKey(const std::wstring& id) const { return regPath_ + L"\\" + id; }

}  // namespace velora
