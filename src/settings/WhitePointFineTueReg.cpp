#include "settings/WhitePointFineTueReg.h"

#include "CoreKit/CoreKit.h"
#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/ModeNames.h"
#include "frame/TextField.h"

namespace velora {
namespace {

constexpr wchar_t kId[] = L"Id";
constexpr wchar_t kMode[] = L"Mode";
constexpr wchar_t kRed[] = L"R";
constexpr wchar_t kGreen[] = L"G";
constexpr wchar_t kBlue[] = L"B";

// Non-zero for an id that is longer than the field. One that fills it has no terminator there.
int CopyId(const std::wstring& id, WhitePointFineTueInfo& whitePoint) {
  return CopyToField(whitePoint.id, CoreKit::WStringToString(id).c_str());
}

}  // namespace

WhitePointFineTueReg::WhitePointFineTueReg()
    : IniHelper(kIniFilePath), MultiUserReg(FEATURE_TYPE_WHITEPOINT_FINE_TUE) {}

// In the line for blue a comma is missing: hosts know the line so.
ResultT WhitePointFineTueReg::GetWhitePointTueValue(WhitePointFineTueInfo* whitePoint) const {
  constexpr FunctionLog log("WhitePointFineTueReg::GetWhitePointTueValue");
  const std::wstring key = ModeKey(*whitePoint);
  const ColorFieldMode mode = whitePoint->mode;
  const std::string id(FieldText(whitePoint->id));
  if (RegReadValue(rootKey_, key, kRed, &whitePoint->r) != ResultOk) {
    log.Error(L"Read reg whitePoint R value fail, mode: ", mode, L", id: ", id);
    return ResultFailed;
  }
  if (RegReadValue(rootKey_, key, kGreen, &whitePoint->g) != ResultOk) {
    log.Error(L"Read reg whitePoint G value fail, mode: ", mode, L", id: ", id);
    return ResultFailed;
  }
  if (RegReadValue(rootKey_, key, kBlue, &whitePoint->b) != ResultOk) {
    log.Error(L"Read reg whitePoint B value fail, mode: ", mode, L"id: ", id);
    return ResultFailed;
  }
  return ResultOk;
}

// The lines for green and blue show the red gain: hosts know the lines so.
ResultT WhitePointFineTueReg::SetWhitePointTueValue(const WhitePointFineTueInfo* whitePoint) {
  constexpr FunctionLog log("WhitePointFineTueReg::SetWhitePointTueValue");
  const std::wstring key = ModeKey(*whitePoint);
  const std::string id(FieldText(whitePoint->id));
  if (RegWriteValue(rootKey_, key, kId, CoreKit::StringToWString(id)) != ResultOk) {
    log.Error(L"Write id to reg fail, id: ", id);
    return ResultFailed;
  }
  if (RegWriteValue(rootKey_, key, kMode, static_cast<uint32_t>(whitePoint->mode)) != ResultOk) {
    log.Error(L"Write mode to reg fail, mode: ", whitePoint->mode);
    return ResultFailed;
  }
  if (RegWriteValue(rootKey_, key, kRed, whitePoint->r) != ResultOk) {
    log.Error(L"Write whitePoint r fail, r: ", whitePoint->r);
    return ResultFailed;
  }
  if (RegWriteValue(rootKey_, key, kGreen, whitePoint->g) != ResultOk) {
    log.Error(L"Write whitePoint g fail, g: ", whitePoint->r);
    return ResultFailed;
  }
  if (RegWriteValue(rootKey_, key, kBlue, whitePoint->b) != ResultOk) {
    log.Error(L"Write whitePoint b fail, b: ", whitePoint->r);
    return ResultFailed;
  }
  return ResultOk;
}

ResultT WhitePointFineTueReg::SetWhitePointTueValue(const WhitePointFineTueInfo* whitePoint,
                                                    const std::wstring& newId) {
  constexpr FunctionLog log("WhitePointFineTueReg::SetWhitePointTueValue");
  WhitePointFineTueInfo renamed{.id = {},
                                .mode = whitePoint->mode,
                                .r = whitePoint->r,
                                .g = whitePoint->g,
                                .b = whitePoint->b};
  if (CopyId(newId, renamed) != 0) {
    log.Error(L"Memcpy id fail, id: ", newId);
    return ResultFailed;
  }
  if (SetWhitePointTueValue(&renamed) != ResultOk) {
    log.Error(L"Set white point tue value fail, id: ", newId);
    return ResultFailed;
  }
  return ResultOk;
}

void WhitePointFineTueReg::EditUsrModeWhitePointId(const std::wstring& oldId,
                                                   const std::wstring& newId) {
  constexpr FunctionLog log("WhitePointFineTueReg::EditUsrModeWhitePointId");
  if (oldId == newId) {
    log.Info(L"oldId is equals newId, not need to edit id value, id: ", newId);
    return;
  }
  if (!IsRegKeyExists(rootKey_, UserModeKey(oldId))) {
    return;
  }
  WhitePointFineTueInfo whitePoint{.id = {}, .mode = USRDESIGN_MODE, .r = 0, .g = 0, .b = 0};
  if (CopyId(oldId, whitePoint) != 0) {
    log.Error(L"Memcpy id fail, id: ", oldId);
    return;
  }
  if (GetWhitePointTueValue(&whitePoint) != ResultOk) {
    log.Error(L"Read white point value fail, id: ", oldId);
    return;
  }
  if (SetWhitePointTueValue(&whitePoint, newId) != ResultOk) {
    log.Error(L"Edit white point id fail, id: ", newId);
    return;
  }
  DeleteUsrModeWhitePoint(oldId);
}

void WhitePointFineTueReg::DeleteUsrModeWhitePoint(const std::wstring& id) {
  if (!IsRegKeyExists(rootKey_, UserModeKey(id))) {
    return;
  }
  if (RegDeleteKeyW(rootKey_, UserModesKey(), id) != ResultOk) {
    constexpr FunctionLog log("WhitePointFineTueReg::DeleteUsrModeWhitePoint");
    log.Error(L"Delete usr design mode white point fine tue value fail, id: ", id);
  }
}

std::wstring WhitePointFineTueReg::ModeKey(const WhitePointFineTueInfo& whitePoint) const {
  switch (whitePoint.mode) {
    case kNoMode:
    case kEbookMode:
      return {};  // no key of their own: the root key takes their values
    case USRDESIGN_MODE:
      return UserModeKey(CoreKit::StringToWString(std::string(FieldText(whitePoint.id))));
    default:
      return regPath_ + L"\\" + kPresetModeKey + L"\\" + ModeName(whitePoint.mode);
  }
}

std::wstring WhitePointFineTueReg::UserModesKey() const {
  return regPath_ + L"\\" + kUserDesignModeKey;
}

std::wstring WhitePointFineTueReg::UserModeKey(const std::wstring& id) const {
  return UserModesKey() + L"\\" + id;
}

}  // namespace velora
