// Switching to a user-designed mode: its profile, and its two LUTs by way of the platform, whatever
// the machine's way for preset modes is.
#include "colorfield/ColorFieldApi.h"

#include "frame/Log.h"
#include "frame/TextField.h"

namespace velora {
namespace {

// An id is the mode's name, this mark, and a suffix.
constexpr char kSuffixMark = '%';

}  // namespace

ResultT ColorFieldApi::SetUserColorField(const std::string& id) {
  constexpr FunctionLog log("ColorFieldApi::SetUserColorField");
  std::wstring currentIcc;
  const ResultT queried = GetDefaultIccFile(currentIcc);
  if (queried != ResultOk) {
    log.Error(L"GetDefaultIccFile Failed, ret is", queried, L"currentIccFileName:", currentIcc);
    return ResultColorFieldError;
  }
  const ResultT enabled = EnableUserColorField(id, false);
  if (enabled != ResultOk) {
    log.Error(L"EnableColorFieldMode error,ret is :", enabled);
    ResetOsIccField(currentIcc);
    return enabled;
  }
  return ResultOk;
}

ResultT ColorFieldApi::EnableUserColorField(const std::string& id, bool reload) {
  constexpr FunctionLog log("ColorFieldApi::EnableUserColorField");
  const std::string modeName = id.substr(0, id.find(kSuffixMark));
  const ResultT profile = EnableUsrICCProfile(modeName);
  if (profile != ResultOk) {
    log.Error(L"EnableUsrICCProfile Failed, id is", modeName);
    return profile;
  }
  // The 3D LUT follows also where the gamma LUT failed.
  const bool gamma = colorField3DLut_.SetDisplayerByUserGammaLut(id, reload);
  const bool lut3D = colorField3DLut_.SetDisplayerByUser3DLut(id, reload);
  if (!gamma || !lut3D) {
    // The profile stays associated: only SetUserColorField puts the old one back.
    log.Error(L"EnableUsrBinProfile Failed, id is", id);
    return ResultColorFieldError;
  }
  userDesignReg_.SetCurrentUsrMode(modeName);
  return ResultOk;
}

ResultT ColorFieldApi::EnableUsrICCProfile(const std::string& modeName) {
  constexpr FunctionLog log("ColorFieldApi::EnableUsrICCProfile");
  std::string iccPath;
  if (!FindIccFilePathByModeName(modeName, iccPath)) {
    log.Error(L"FindIccFilePathByModeName failed, modeName is ", modeName);
    return ResultFailed;
  }
  std::wstring currentIcc;
  const ResultT queried = GetDefaultIccFile(currentIcc);
  if (queried != ResultOk) {
    log.Error(L"GetDefaultIccFile Failed, ret is", queried, L"currentIccFileName:", currentIcc);
    return ResultFailed;
  }
  if (!IsIccAlreadyAssociated(currentIcc, iccPath)) {
    const ResultT associated = SetUsrIccFileWithCheck(iccPath, modeName);
    if (associated != ResultOk) {
      log.Error(L"SetUsrIccFileWithCheck Failed, ret is", associated);
      return associated;
    }
  }
  return ResultOk;
}

ResultT ColorFieldApi::WhitePointFineTue(WhitePointFineTueInfo* whitePoint) {
  constexpr FunctionLog log("ColorFieldApi::WhitePointFineTue");
  const ResultT result = colorField3DLut_.EditGammaLutByWhitePoint(*whitePoint);
  if (result != ResultOk) {
    log.Error(L"WhitePoint fine tue error, mode: ", whitePoint->mode, L", id: ",
              FieldText(whitePoint->id));
  }
  return result;
}

}  // namespace velora
