#include "lut/ColorField3DLut.h"

#include <new>
#include <string>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "frame/Log.h"
#include "frame/ModeNames.h"
#include "frame/Sha256.h"
#include "frame/SharedFile.h"
#include "lut/LutBlock.h"
#include "lut/LutComposition.h"

// The e-book mode's bin file carries the golden file's LUT, composed once with the panel's own base
// LUT. A mark behind the file's hash tells later runs that this was done; rebuilding the file
// removes it.
namespace velora {
namespace {

constexpr size_t kHashOffset = k3DBlockSize - kSha256Size;
constexpr size_t kMarkOffset = k3DBlockSize;
constexpr uint8_t kFusedMark = 0x7F;

// A file that can't be opened, or ends before the mark, counts as not fused.
bool IsFused(const std::string& path) {
  uint8_t mark = 0;
  const SharedFile file = SharedFile::OpenForUpdating(path);
  if (file.IsOpen()) {
    file.ReadAt(kMarkOffset, {&mark, 1});
  }
  return mark == kFusedMark;
}

DecodedLut NewZero3DLut() {
  return DecodedLut(new (std::nothrow) double[LutValueCount(k3DEntries)]());
}

}  // namespace

bool ColorField3DLut::FusionEbookProc(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::FusionEbookProc");
  if (mode != kEbookMode) {
    log.Info(L"Not e-book mode.");
    return false;
  }
  constexpr wchar_t kNotSupported[] = L"Get BIOS data is error.Not supported EbookFusion.";
  const DecodedLut ebook = NewZero3DLut();
  const DecodedLut base = NewZero3DLut();
  if (ebook == nullptr || base == nullptr) {
    log.Info(kNotSupported);
    return false;
  }
  // The sRGB block's result does not matter. The base block decides, and its header is the one that
  // stays for the comparison with the panel.
  constexpr ColorFieldMode kBaseLutMode = 0;
  GetBiosLutData3D(SrgbMode, base.get());
  if (!GetBiosLutData3D(kBaseLutMode, base.get())) {
    log.Info(kNotSupported);
    return false;
  }
  log.Info(L"Supported EbookFusion.");
  const std::string path = CoreKit::GetCanonicalizedFilePath(lutFileTable[kEbookMode]);
  if (path.empty()) {
    log.Info(L"lutFileTable error");
    return false;
  }
  if (!IsFused(path)) {
    // Whatever the golden file gives: without it the zeros are composed and written like a good
    // LUT.
    GetGoldenFileLutData3D(kEbookMode, ebook.get());
    const DecodedLut fused = FusionLutData3D(ebook.get(), base.get());
    if (fused == nullptr) {
      log.Error(L"res is null.");
      return false;
    }
    CreateThreeLutBinFile3D(fused.get());
    return true;
  }
  log.Info(L"Has fused.");
  if (GetLcdEdidData() && IsLcdDataValid() == 0) {
    return false;
  }
  // Fused for another panel: the plain golden LUT takes its place, and the mark stays.
  GetGoldenFileLutData3D(kEbookMode, ebook.get());
  CreateThreeLutBinFile3D(ebook.get());
  log.Info(L"Get LCD EDID Data error.");  // the one text for both causes
  return false;
}

DecodedLut ColorField3DLut::FusionLutData3D(const double* first, const double* second) {
  constexpr FunctionLog log("ColorField3DLut::FusionLutData3D");
  DecodedLut outLut(ComposeLuts(first, second));
  if (outLut == nullptr) {
    log.Error(L"outLut is null");
  }
  return outLut;
}

bool ColorField3DLut::CreateThreeLutBinFile3D(const double* lut) {
  constexpr FunctionLog log("ColorField3DLut::CreateThreeLutBinFile3D");
  const auto row = lutFileTable.find(kEbookMode);
  if (row == lutFileTable.end()) {
    log.Info(L"CreateLutDataFile3D error,Lut Type error! type:", biosHeaderV2_.GetLutType());
    return false;
  }
  const std::string path = CoreKit::GetCanonicalizedFilePath(row->second);
  if (path.empty()) {
    log.Info(L"lutFileTable error");
    return false;
  }
  {
    const SharedFile file = SharedFile::OpenForUpdating(path);
    if (!file.IsOpen()) {
      log.Info(L"Open binfile error", path);
      return false;
    }
    std::vector<uint8_t> payload(LutDataLength(k3DEntries));
    EncodeLut(lut, k3DEntries, payload.data());
    // Half a LUT with a new hash and the mark would pass for a fused one for good.
    if (!file.WriteAt(kBlockHeaderSize, payload)) {
      return false;
    }
  }
  RehashEbookBin(path);
  return true;
}

// Where a step fails, the old hash stays and keeps the new payload from being used.
void ColorField3DLut::RehashEbookBin(const std::string& path) {
  std::vector<uint8_t> hashed(kHashOffset);
  {
    const SharedFile file = SharedFile::OpenForUpdating(path);
    if (!file.IsOpen() || file.ReadAt(0, hashed) < hashed.size()) {
      return;
    }
  }
  uint8_t hashAndMark[kSha256Size + 1];
  if (!Sha256(hashed, hashAndMark)) {
    return;
  }
  hashAndMark[kSha256Size] = kFusedMark;
  const SharedFile file = SharedFile::OpenForUpdating(path);
  if (file.IsOpen()) {
    file.WriteAt(kHashOffset, hashAndMark);
  }
}

}  // namespace velora
