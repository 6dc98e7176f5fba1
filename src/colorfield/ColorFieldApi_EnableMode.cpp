// The sequence that switches a mode, and the ways in which the output is set.
#include "colorfield/ColorFieldApi.h"

#include "CoreKit/CoreKit.h"
#include "frame/Log.h"

namespace velora {
namespace {

// CoreKit's answer when the display type can't be told.
constexpr unsigned kNoDisplayType = 0xFFFFFFFF;

bool IsDisplayTypeKnown(ColorFieldMode mode, const FunctionLog& log) {
  if (CoreKit::GetDisplayType() == kNoDisplayType) {
    log.Error(L"Display Type not found! mode:", mode);
    return false;
  }
  return true;
}

}  // namespace

ResultT ColorFieldApi::SetColorField(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorFieldApi::SetColorField");
  std::string iccPath;
  if (!FindIccFilePathByMode(mode, iccPath)) {
    // Not the end: the output of a mode without a profile is set all the same.
    log.Error(L"FindIccFilePathByMode failed, mode is ", mode);
  }

  std::wstring currentIcc;
  const ResultT queried = GetDefaultIccFile(currentIcc);
  if (queried != ResultOk) {
    log.Error(L"GetDefaultIccFile Failed, ret is", queried, L"currentIccFileName:", currentIcc);
    return ResultFailed;
  }

  if (IsIccAlreadyAssociated(currentIcc, iccPath)) {
    log.Info(L"Icc Already Associated. iccFileName:", iccPath);
  } else {
    const ResultT associated = SetOsIccFileWithCheck(iccPath);
    if (associated != ResultOk) {
      log.Error(L"SetOsIccFile Failed, ret is", associated);
      return associated;
    }
  }

  const ResultT enabled = EnableColorFieldMode(mode);
  if (enabled != ResultOk) {
    log.Error(L"EnableColorFieldMode error,ret is :", enabled);
    // Also where the profile was not changed above: the undo step doesn't ask.
    ResetOsIccField(currentIcc);
    return enabled;
  }
  log.Info(L"SetColorField mode is :", mode, L",ret is ", enabled);
  return ResultOk;
}

ResultT ColorFieldApi::EnableColorFieldMode(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorFieldApi::EnableColorFieldMode");
  log.Info(L"set colorfield mode is:", mode);
  ResultT result = ResultColorFieldError;
  switch (setType_) {
    case SetTypeDdcci:
      result = EnableColorFieldByDdcci(mode);
      break;
    case SetType3DLut:
      result = EnableColorFieldByDriver(mode);
      break;
    case SetTypePccMatrix:
      result = EnableColorFieldByPcc(mode);
      break;
    case SetTypeGammaLut:
      result = EnableColorFieldByGamma(mode);
      break;
    default:
      log.Error(L"PC Displayer ColorField Mode Not Support on this version.");
      break;
  }
  if (result != ResultOk) {
    log.Error(L"Set Color Filed Failed, ret is ", result);
  }
  return result;
}

ResultT ColorFieldApi::EnableColorFieldByDriver(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorFieldApi::EnableColorFieldByDriver");
  if (!IsDisplayTypeKnown(mode, log)) {
    return ResultFailed;
  }
  if (!colorField3DLut_.SetDisplayerBy3DLut(mode)) {
    log.Error(L"SetDisplayerBy3DLut Failed, mode is ", mode);
    return ResultColorFieldError;
  }
  return ResultOk;
}

ResultT ColorFieldApi::EnableColorFieldByGamma(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorFieldApi::EnableColorFieldByGamma");
  if (!IsDisplayTypeKnown(mode, log)) {
    return ResultFailed;
  }
  if (!colorField3DLut_.SetDisplayerByGammaLut(mode)) {
    log.Error(L"SetDisplayerByGammalut Failed, mode is ", mode);
    return ResultColorFieldError;
  }
  // The gamma LUT stays applied when the 3D LUT fails.
  if (!colorField3DLut_.SetDisplayerBy3DLut(mode)) {
    log.Error(L"SetDisplayerBy3DLut Failed, mode is ", mode);
    return ResultColorFieldError;
  }
  return ResultOk;
}

ResultT ColorFieldApi::EnableColorFieldByPcc(ColorFieldMode mode) const {
  constexpr FunctionLog log("ColorFieldApi::EnableColorFieldByPcc");
  if (!IsDisplayTypeKnown(mode, log)) {
    return ResultFailed;
  }
  PlatformPccMatrix matrix;
  if (!FindPccMatrixByMode(mode, matrix)) {
    return ResultFailed;
  }
  return PlatformSetPccMatrixInfo(&matrix);
}

}  // namespace velora
