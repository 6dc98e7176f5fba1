#include "lut/ColorField3DLut.h"

#include <array>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include "VeloraPlatform/VeloraPlatform.h"
#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/TextField.h"
#include "lut/GammaCurve.h"
#include "lut/LutBlock.h"

// From the gamma LUT's file to the panel. The firmware has one gamma LUT for the panel; a preset
// mode bends it by its own gamma and coefficients when it is loaded. User modes have a file of
// their own and take it as it stands.
namespace velora {
namespace {

std::string UserGammaFile(const std::string& id) {
  return std::string(userGammaLutDir) + "\\" + id + ".bin";
}

DecodedLut NewGammaLut() {
  return DecodedLut(new (std::nothrow) double[LutValueCount(kGammaEntries)]);
}

RgbGains GainsOf(const WhitePointFineTueInfo& record) { return {record.r, record.g, record.b}; }

}  // namespace

bool ColorField3DLut::SetDisplayerByGammaLut(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::SetDisplayerByGammaLut");
  try {
    log.Info(L"SetDisplayer by GammaLut, modeGamma is ", mode);
    if (!SyncGammaLutDataTable(mode)) {
      log.Error(L"SyncGammaLutDataTable Failed");
      return false;
    }
    WhitePointFineTueInfo whitePoint = GetPresetModeWhitePoint(mode);
    if (HasGains(GainsOf(whitePoint))) {
      if (EditGammaLutByWhitePoint(whitePoint) != 0) {
        log.Error(L"Edit gamma lut by white point fail, mode: ", mode);
        return false;
      }
      return true;
    }
    // Not checked, unlike a tuned LUT and a user's.
    const int result = PlatformSetGammaLut(lutDataGammaTable_[mode].get(), kGammaEntries);
    if (result != 0) {
      log.Error(L"PlatformSetGammaLut Failed, ret is ", result);
    }
    return result == 0;
  } catch (const std::exception& exception) {
    log.Error(L"SetDisplayerByGammaLut exception:", exception.what(), L", modeGamma:", mode);
    return false;
  }
}

// One flag and one file serve all modes: what the first one finds of the panel holds for the
// others.
bool ColorField3DLut::SyncGammaLutDataTable(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::SyncGammaLutDataTable");
  if (lutDataGammaTable_[mode] != nullptr) {
    return true;
  }
  if (IsLcdChangedGamma() != 0) {
    log.Info(L"LCD changed!");
    gammaFromGolden_ = true;
    SwitchGammaLutFile(true);
    if (IsGammaLutBinFileNeedUpdate() != 0 && !UpdateGammaLutBinFile()) {
      log.Error(L"UpdateGammaLutBinFile Failed!");
      return false;
    }
  }
  LutBuffer buffer;
  if (!ReadGammaLutDataFile(buffer)) {
    log.Error(L"ReadGammaLutDataFile Failed!");
    return false;
  }
  if (!ParseOneLutDataFileGamma(mode, BytesOf(buffer), buffer.size())) {
    log.Error(L"ParseOneLutDataFileGamma Failed! mode:", mode);
    return false;
  }
  return true;
}

bool ColorField3DLut::ParseOneLutDataFileGamma(ColorFieldMode mode, const uint8_t* data,
                                               size_t length) {
  constexpr FunctionLog log("ColorField3DLut::ParseOneLutDataFileGamma");
  if (data == nullptr || length < kGammaBlockSize) {
    log.Error(L"GammaLutDataFile Error!mode:", mode);
    return false;
  }
  DecodedLut lut = NewGammaLut();
  if (lut == nullptr) {
    log.Error(L"pLutDataGamma is nullptr!mode:", mode);
    return false;
  }
  DecodeLut({data, length}, kGammaEntries, lut.get());
  // A mode that was never registered has zeros here, which bend every value to the maximum.
  const auto& [r, g, b] = modeTemperTable_[mode];
  const double exponent = modeGammaTable_[mode] / kFirmwareGamma;
  log.Info(L"Coefficient_RGB ", r, L" ", g, L" ", b, L" ", exponent);
  BendGammaLut({r, g, b}, exponent, lut.get());
  lutDataGammaTable_[mode] = std::move(lut);
  return true;
}

bool ColorField3DLut::SetDisplayerByUserGammaLut(const std::string& id, bool reload) {
  constexpr FunctionLog log("ColorField3DLut::SetDisplayerByUserGammaLut");
  if (reload) {
    DropCachedLut(userLutDataGammaTable_, id);
  }
  if (userLutDataGammaTable_[id] == nullptr && !GetGammaLutDataFromBin(id)) {
    log.Error(L"get gammalut from bin failed");
    return false;
  }
  WhitePointFineTueInfo whitePoint = GetUsrModeWhitePoint(id);
  if (HasGains(GainsOf(whitePoint))) {
    if (EditGammaLutByWhitePoint(whitePoint) != 0) {
      log.Error(L"SetDisplayerByUserGammaLut fail, id: ", id);
      return false;
    }
    return true;
  }
  const double* lut = userLutDataGammaTable_[id].get();
  if (!IsGammaLutDataValid(lut)) {
    log.Error(L"GammaLut data error, can not enable color mode");
    return false;
  }
  if (PlatformSetGammaLut(lut, kGammaEntries) != 0) {
    log.Error(L"PlatformSetGammaLut set userGammaLut Failed");
    return false;
  }
  return true;
}

// Some of the texts speak of 3D; they are the ones that support looks for.
bool ColorField3DLut::GetGammaLutDataFromBin(const std::string& id) {
  constexpr FunctionLog log("ColorField3DLut::GetGammaLutDataFromBin");
  const std::string path = UserGammaFile(id);
  LutBuffer buffer;
  if (!Read3DLutDataFormFile(path, kGammaBlockSize, buffer)) {
    log.Error(L"Read3DLutDataFormFile Failed, ", path);
    return false;
  }
  if (!IsLutDataValid3D(buffer)) {
    log.Error(L"IsLutDataValid3D Failed, ", path);
    return false;
  }
  if (!ParseUserLutGamma(id, BytesOf(buffer), buffer.size())) {
    log.Error(L"ParseUserLutDataFile3D Failed, ", path);
    return false;
  }
  return true;
}

bool ColorField3DLut::ParseUserLutGamma(const std::string& id, const uint8_t* data, size_t length) {
  constexpr FunctionLog log("ColorField3DLut::ParseUserLutGamma");
  if (data == nullptr || length < kGammaBlockSize) {
    log.Error(L"LutDataFile Error! file:", UserGammaFile(id));
    return false;
  }
  DecodedLut lut = NewGammaLut();
  if (lut == nullptr) {
    log.Error(L"pLutData3D is nullptr! file:", UserGammaFile(id));
    return false;
  }
  DecodeLut({data, length}, kGammaEntries, lut.get());
  userLutDataGammaTable_[id] = std::move(lut);
  return true;
}

bool ColorField3DLut::IsGammaLutDataValid(const double* lut) {
  constexpr FunctionLog log("ColorField3DLut::IsGammaLutDataValid");
  if (lut == nullptr) {
    log.Error(L"GammaLut data is null");
    return false;
  }
  if (!IsLastTripleLit(lut, kGammaEntries)) {
    log.Error(L"GammaLut data is invalid");
    return false;
  }
  return true;
}

double* ColorField3DLut::FindGammalutByMode(const WhitePointFineTueInfo& record) {
  constexpr FunctionLog log("ColorField3DLut::FindGammalutByMode");
  if (record.mode == USRDESIGN_MODE) {
    const auto row = userLutDataGammaTable_.find(std::string(FieldText(record.id)));
    return row == userLutDataGammaTable_.end() ? nullptr : row->second.get();
  }
  if (!SyncGammaLutDataTable(record.mode)) {
    log.Error(L"SyncGammaLutDataTable Failed");
    return nullptr;
  }
  return lutDataGammaTable_[record.mode].get();
}

}  // namespace velora
