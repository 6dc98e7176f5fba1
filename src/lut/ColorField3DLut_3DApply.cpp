#include "lut/ColorField3DLut.h"

#include <exception>
#include <new>
#include <utility>

#include "VeloraPlatform/VeloraPlatform.h"
#include "frame/Log.h"
#include "frame/ModeNames.h"
#include "lut/LutBlock.h"

namespace velora {

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
  DecodedLut lut(new (std::nothrow) double[LutValueCount(k3DEntries)]);
  if (lut == nullptr) {
    log.Error(L"pLutData3D is nullptr!mode:", mode);
    return false;
  }
  DecodeLut({data, length}, k3DEntries, lut.get());
  lutData3DTable_[mode] = std::move(lut);
  return true;
}

}  // namespace velora
