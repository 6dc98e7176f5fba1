#pragma once

#include <cstdint>
#include <string>

#include "settings/IniHelper.h"
#include "settings/MultiUserReg.h"
#include "settings/RegisterHelper.h"
#include "settings/WhitePointFineTueReg.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// The user-designed colour modes, for all users of the machine: a key for each, named after its id,
// and the value "CurrentUsrMode" with the id of the current one.
//
// Threads: one at a time in an object, which keeps the record it works on.
class UserDesignReg : public RegisterHelper, public IniHelper, public MultiUserReg {
 public:
  UserDesignReg();

  // Writes a mode; one of the same id is overwritten. ResultFailed: a value could not be written;
  // those ahead of it stay.
  ResultT AddUserDesignReg(const UserDesignInfo* info);

  // Writes a mode that may have got a new id: then the old key goes first, and the fine tuning of
  // the white point moves after the write. Where the new id is that of another mode, that mode is
  // overwritten and the old key stays. Results as above.
  ResultT EditUserDesignReg(const UserDesignInfo* info, const std::string& oldId);

  // Writes the mode's "SerialNum" alone. ResultFailed: an empty id, or the write failed.
  ResultT EditUserSerialNumReg(const UserDesignInfo* info);

  // Deletes a mode and its fine tuning. ResultOk also where there is no such mode; ResultFailed:
  // the key stays, as one with sub keys does; ResultKeyNotFound: no modes at all.
  ResultT DeleteUserDesignReg(const UserDesignInfo* info);

  // The root of the modes: 1 HKEY_CURRENT_USER, 2 HKEY_LOCAL_MACHINE, 3 HKEY_USERS.
  int GetUserRegHkey() const;

  // The id of the current mode; empty where none is stored.
  std::string GetCurrentUsrMode() const;
  ResultT SetCurrentUsrMode(const std::string& id);

 private:
  // A number whose meaning is the host's; of an enumeration's type, so that a failure line shows
  // its sign.
  enum class Choice : int32_t {};

  // UserDesignInfo with wide texts.
  struct WideUserDesignInfo {
    double serialNum;
    Choice mode;
    std::wstring description;
    std::wstring id;
    std::wstring modeName;
    Choice gamut;
    Choice whitePointMode;
    double whitePointX;
    double whitePointY;
    std::wstring whitePointXStr;
    std::wstring whitePointYStr;
    Choice gammaMode;
    double gamma;
    std::wstring gammaStr;
    std::wstring iccPath;
    std::wstring threeDLutPath;
    std::wstring gammaPath;
  };

  static WideUserDesignInfo Widen(const UserDesignInfo& info);
  ResultT WriteUserDesignReg(const UserDesignInfo* info);
  std::wstring ModeKey(const std::wstring& id) const;

  WideUserDesignInfo wideInfo_{};  // of the operation at work
  WhitePointFineTueReg whitePointFineTueReg_;
};

}  // namespace velora
