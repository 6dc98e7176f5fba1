#include "lut/ColorField3DLut.h"

#include <exception>
#include <new>
#include <string>
#include <utility>

#include "VeloraPlatform/VeloraPlatform.h"
#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/ModeNames.h"
#include "lut/GammaCurve.h"
#include "lut/LutBlock.h"

namespace velora {
namespace {

// The mode of the firmware's base LUT, which a user's LUT is composed with.
constexpr ColorFieldMode kBaseLutMode = 0;

std::string User3DFile(const std::string& id) {
  return std::string(user3DLutDir) + "\\" + id + ".bin";
}

DecodedLut New3DLut() { return DecodedLut(new (std::nothrow) double[LutValueCount(k3DEntries)]); }

}  // namespace

bool ColorField3DLut::SetDisplayerBy3DLut(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::SetDisplayerBy3DLut");
  try {
    log.Info(L"SetDisplayer by 3DLut, mode is ", mode);
    if (mode == kNoMode) {
      const int result = PlatformReset3DLut();
      if (result != 0) {
        // The text of the other branch, less its last blank.
        log.Error(L"PlatformSet3DLut Failed, ret is", result);
      }
      return result == 0;
    }
    if (!Sync3DLutDataTable(mode)) {
      log.Error(L"Sync3DLutDataTable Failed");
      return false;
    }
    const int result = PlatformSet3DLut(lutData3DTable_[mode].get(), k3DEntries);
    if (result != 0) {
      log.Error(L"PlatformSet3DLut Failed, ret is ", result);
    }
    return result == 0;
  } catch (const std::exception& exception) {
    log.Error(L"SetDisplayerBy3DLut exception:", exception.what(), L", mode:", mode);
    return false;
  }
}

// A mode that was decoded once is never looked at again, neither its file nor the panel. Nothing is
// rolled back on failure: a mode that moved to the golden file stays there.
bool ColorField3DLut::Sync3DLutDataTable(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::Sync3DLutDataTable");
  if (lutData3DTable_[mode] != nullptr) {
    return true;
  }
  if (IsLcdChanged(mode) != 0) {
    log.Info(L"LCD changed! mode:", mode);
    modeFromGolden_[mode] = true;
    SwitchLutFileTable(mode);
    if (IsThreeLutBinFileNeedUpdate(mode) != 0 && !UpdateThreeLutBinFile3D(mode)) {
      log.Error(L"UpdateThreeLutBinFile3D Failed! mode:", mode);
      return false;
    }
  }
  FusionEbookProc(mode);  // the file is good without it too
  LutBuffer buffer;
  if (!Get3DLutDataFormFileByFieldMode(mode, buffer)) {
    log.Error(L"ReadLutDataFile Failed! mode:", mode);
    return false;
  }
  if (!ParseOneLutDataFile3D(mode, BytesOf(buffer), buffer.size())) {
    log.Error(L"ParseOneLutDataFile3D Failed! mode:", mode);
    return false;
  }
  return true;
}

bool ColorField3DLut::ParseOneLutDataFile3D(ColorFieldMode mode, const uint8_t* data,
                                            size_t length) {
  constexpr FunctionLog log("ColorField3DLut::ParseOneLutDataFile3D");
  if (data == nullptr || length < k3DBlockSize) {
    log.Error(L"LutDataFile Error!mode:", mode);
    return false;
  }
  DecodedLut lut = New3DLut();
  if (lut == nullptr) {
    log.Error(L"pLutData3D is nullptr!mode:", mode);
    return false;
  }
  DecodeLut({data, length}, k3DEntries, lut.get());
  lutData3DTable_[mode] = std::move(lut);
  return true;
}

// The composed LUT is not kept: each application reads the firmware and composes again.
bool ColorField3DLut::SetDisplayerByUser3DLut(const std::string& id, bool reload) {
  constexpr FunctionLog log("ColorField3DLut::SetDisplayerByUser3DLut");
  if (reload) {
    DropCachedLut(userLutData3DTable_, id);
  }
  if (userLutData3DTable_[id] == nullptr && !Get3DLutDataFromBin(id)) {
    log.Error(L"Get 3dlut from bin failed");
    return false;
  }
  const double* user = userLutData3DTable_[id].get();
  DecodedLut base = New3DLut();
  if (base == nullptr) {
    log.Error(L"biosThreeDLut is null");
    return false;
  }
  // The base LUT's header is the one that is compared with the panel.
  const bool factoryPanel =
      GetLcdEdidData() && GetBiosLutData3D(kBaseLutMode, base.get()) && IsLcdDataValid() == 0;
  DecodedLut fused;
  if (factoryPanel) {
    fused = FusionLutData3D(user, base.get());
    if (!IsThreeDLutDataValid(fused.get())) {
      log.Error(L"3DLut data error, can not enable color mode");
      return false;
    }
  } else {
    log.Info(L"Screen has been replaced");
  }
  base.reset();
  if (PlatformSet3DLut(factoryPanel ? fused.get() : user, k3DEntries) != 0) {
    log.Error(L"PlatformSet3DLut set userColorField Failed");
    return false;
  }
  return true;
}

bool ColorField3DLut::Get3DLutDataFromBin(const std::string& id) {
  constexpr FunctionLog log("ColorField3DLut::Get3DLutDataFromBin");
  const std::string path = User3DFile(id);
  LutBuffer buffer;
  if (!Read3DLutDataFormFile(path, k3DBlockSize, buffer)) {
    log.Error(L"read 3dlut data Failed, bin path: ", path);
    return false;
  }
  if (!IsLutDataValid3D(buffer)) {
    log.Error(L"3dlut data error, bin path: ", path);
    return false;
  }
  if (!ParseUserLut3D(id, BytesOf(buffer), buffer.size())) {
    log.Error(L"parse user 3dlut failed, bin path: ", path);
    return false;
  }
  return true;
}

bool ColorField3DLut::ParseUserLut3D(const std::string& id, const uint8_t* data, size_t length) {
  constexpr FunctionLog log("ColorField3DLut::ParseUserLut3D");
  if (data == nullptr || length < k3DBlockSize) {
    log.Error(L"LutDataFile Error! file:", User3DFile(id));
    return false;
  }
  DecodedLut lut = New3DLut();
  if (lut == nullptr) {
    log.Error(L"pLutData3D is nullptr! file:", User3DFile(id));
    return false;
  }
  DecodeLut({data, length}, k3DEntries, lut.get());
  userLutData3DTable_[id] = std::move(lut);
  return true;
}

bool ColorField3DLut::IsThreeDLutDataValid(const double* lut) {
  constexpr FunctionLog log("ColorField3DLut::IsThreeDLutDataValid");
  if (lut == nullptr) {
    log.Error(L"3DLut data is null");
    return false;
  }
  if (!IsLastTripleLit(lut, k3DEntries)) {
    log.Error(L"3DLut data is invalid");
    return false;
  }
  return true;
}

// The array stays behind, a small loss once an edited mode: what was handed out of it stays good.
void ColorField3DLut::DropCachedLut(std::map<std::string, DecodedLut>& table,
                                    const std::string& id) {
  const auto row = table.find(id);
  if (row != table.end()) {
    row->second.release();
    table.erase(row);
  }
}

}  // namespace velora
