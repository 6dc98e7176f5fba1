#include "lut/ColorField3DLut.h"

#include <new>
#include <string>

#include "VeloraPlatform/VeloraPlatform.h"
#include "frame/BoundedCopy.h"
#include "frame/Log.h"
#include "frame/TextField.h"
#include "lut/GammaCurve.h"
#include "lut/LutBlock.h"

// The fine tuning of a mode's white point: gains on a copy of the mode's gamma LUT, just ahead of
// the platform. The cached LUT stays clean, so that a later change of the gains reloads nothing.
namespace velora {

WhitePointFineTueInfo ColorField3DLut::GetPresetModeWhitePoint(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::GetPresetModeWhitePoint");
  WhitePointFineTueInfo record = {};
  record.mode = mode;
  if (GetWhitePointTueValue(&record) != ResultOk) {
    log.Error(L"Get preset mode white point value fail, mode: ", mode);
  }
  return record;
}

WhitePointFineTueInfo ColorField3DLut::GetUsrModeWhitePoint(const std::string& id) {
  constexpr FunctionLog log("ColorField3DLut::GetUsrModeWhitePoint");
  WhitePointFineTueInfo record = {};
  record.mode = USRDESIGN_MODE;
  if (CopyToField(record.id, id.c_str()) != 0) {
    log.Error(L"Memcpy mode id error, get usr mode white point fail, id: ", id);
    return record;
  }
  if (GetWhitePointTueValue(&record) != ResultOk) {
    log.Error(L"Get usr mode white point fail, id: ", id);
  }
  return record;
}

bool ColorField3DLut::IsWhitePointValueValid(const WhitePointFineTueInfo& record) {
  constexpr FunctionLog log("ColorField3DLut::IsWhitePointValueValid");
  if (!AreGainsValid({record.r, record.g, record.b})) {
    log.Error(L"White point value is invalid, r: ", record.r, L", g: ", record.g, L", b: ",
              record.b);
    return false;
  }
  return true;
}

bool ColorField3DLut::FusionGammaLut(const double* in, double* out, WhitePointFineTueInfo& record) {
  constexpr FunctionLog log("ColorField3DLut::FusionGammaLut");
  if (in == nullptr) {
    log.Error(L"Gammalut in is null, fusion fail");
    return false;
  }
  if (!IsWhitePointValueValid(record)) {
    // A bad stored value repairs itself, whatever becomes of the LUT.
    log.Info(L"WhitePoint in is invalid, need reset whitePoint");
    record.r = record.g = record.b = 1.0;
    SetWhitePointTueValue(&record);
  }
  MultiplyGammaLut(in, {record.r, record.g, record.b}, out);
  return true;
}

int ColorField3DLut::EditGammaLutByWhitePoint(WhitePointFineTueInfo& record) {
  constexpr FunctionLog log("ColorField3DLut::EditGammaLutByWhitePoint");
  const std::string id(FieldText(record.id));
  const double* lut = FindGammalutByMode(record);
  const DecodedLut work(new (std::nothrow) double[LutValueCount(kGammaEntries)]);
  if (work == nullptr) {
    log.Error(L"Gammalut create fail, mode: ", record.mode, L", id : ", id);
    return ResultFailed;
  }
  if (!FusionGammaLut(lut, work.get(), record)) {
    log.Error(L"Fusion gammalut data fail, mode: ", record.mode, L", id : ", id);
    return ResultFailed;
  }
  if (!IsGammaLutDataValid(work.get())) {
    log.Error(L"Fusion gammalut data is invalid, mode: ", record.mode, L", id : ", id);
    return ResultFailed;
  }
  const int result = PlatformSetGammaLut(work.get(), kGammaEntries);
  if (result != 0) {
    log.Error(L"PlatformSetGammaLut fail, mode: ", record.mode, L", id : ", id);
  }
  return result;
}

}  // namespace velora
