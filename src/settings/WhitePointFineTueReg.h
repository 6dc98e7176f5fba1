#pragma once

#include <string>

#include "settings/IniHelper.h"
#include "settings/MultiUserReg.h"
#include "settings/RegisterHelper.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// The fine tuning of the white point: a triple of gains for each colour mode, for all users of the
// machine. Where a mode has its values "Id", "Mode", "R", "G" and "B":
//
//   mode                 key
//   11                   UserDesignMode\id, below the feature's key
//   1 to 6, 8, 9, 10     PresetMode\name, below the feature's key
//   0, 7                 the root key itself
//   any other            none: std::out_of_range
class WhitePointFineTueReg : public RegisterHelper, public IniHelper, public MultiUserReg {
 public:
  WhitePointFineTueReg();

  // Fills r, g and b for the record's mode and id. The first failure ends it, with ResultFailed;
  // the gains ahead of it are in the record.
  ResultT GetWhitePointTueValue(WhitePointFineTueInfo* whitePoint) const;

  // Stores the record; the first failure ends it, with ResultFailed, and what was written stays.
  ResultT SetWhitePointTueValue(const WhitePointFineTueInfo* whitePoint);
  // The same under another id.
  ResultT SetWhitePointTueValue(const WhitePointFineTueInfo* whitePoint, const std::wstring& newId);

  // Moves the values of a user mode; those of the old id go once the copy is complete. Nothing
  // happens for a mode that was never tuned.
  void EditUsrModeWhitePointId(const std::wstring& oldId, const std::wstring& newId);
  void DeleteUsrModeWhitePoint(const std::wstring& id);

 private:
  std::wstring ModeKey(const WhitePointFineTueInfo& whitePoint) const;
  std::wstring UserModesKey() const;
  std::wstring UserModeKey(const std::wstring& id) const;
};

}  // namespace velora
