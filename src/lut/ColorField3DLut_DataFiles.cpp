#include "lut/ColorField3DLut.h"

#include <string>

#include "CoreKit/CoreKit.h"
#include "frame/Log.h"
#include "frame/SharedFile.h"
#include "lut/LutBlock.h"

// Bin files are caches: each can be deleted at any time and is rebuilt from its source.
namespace velora {
namespace {

constexpr uint64_t kMaxFileSize = uint64_t{128} * 1024;  // bytes, of any data file

bool WriteBlock(const std::string& path, const LutBuffer& block, const FunctionLog& log,
                const wchar_t* openError) {
  const std::string fileName = CoreKit::GetCanonicalizedFilePath(path);
  if (fileName.empty()) {
    log.Error(L"lutFileTable error");
    return false;
  }
  const SharedFile file = SharedFile::Create(fileName);
  if (!file.IsOpen()) {
    log.Error(openError, fileName);
    return false;
  }
  // A write that breaks off leaves a short file, which the next reader finds by length or hash.
  file.WriteAt(0, {BytesOf(block), block.size()});
  return true;
}

}  // namespace

// Data files of every kind come through here, gamma and golden files too.
bool ColorField3DLut::Read3DLutDataFormFile(const std::string& path, size_t minimum,
                                            LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::Read3DLutDataFormFile");
  const std::string fileName = CoreKit::GetCanonicalizedFilePath(path);
  const SharedFile file = SharedFile::OpenForReading(fileName);
  if (!file.IsOpen()) {
    log.Error(L"Open 3D LUT Data File Failed! fileName:", fileName);
    return false;
  }
  uint64_t size = 0;
  file.GetSize(size);
  if (size > kMaxFileSize) {
    log.Error(L"LUT Data File over max block size! fileName:", fileName);
    return false;
  }
  buffer.assign(size, '\0');
  // A read that comes short is a file that is too short: zeros must not pass for its contents.
  if (size < minimum ||
      file.ReadAt(0, {reinterpret_cast<uint8_t*>(buffer.data()), buffer.size()}) < size) {
    log.Error(L"3D LUT Data File Len Error! fileName:", fileName);
    return false;
  }
  return true;
}

bool ColorField3DLut::Get3DLutDataFormFileByFieldMode(ColorFieldMode mode, LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::Get3DLutDataFormFileByFieldMode");
  const auto file = lutFileTable.find(mode);
  if (file == lutFileTable.end()) {
    log.Error(L"ReadTempLutDataFile error,mode not found!mode:", mode);
    return false;
  }
  return Read3DLutDataFormFile(file->second, k3DBlockSize, buffer);
}

bool ColorField3DLut::ReadGammaLutDataFile(LutBuffer& buffer) {
  return Read3DLutDataFormFile(gammaLutFile_, kGammaBlockSize, buffer);
}

bool ColorField3DLut::CreateLutDataFile3D(ColorFieldMode mode, const LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::CreateLutDataFile3D");
  const auto file = lutFileTable.find(mode);
  if (file == lutFileTable.end()) {
    log.Error(L"CreateLutDataFile3D error,Lut Type error! type:", biosHeaderV2_.GetLutType());
    return false;
  }
  return WriteBlock(file->second, buffer, log, L"Open 3D LUT Data File Failed! fileName:");
}

bool ColorField3DLut::CreateLutDataFileGamma(const LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::CreateLutDataFileGamma");
  return WriteBlock(gammaLutFile_, buffer, log, L"Open Gamma LUT Data File Failed! fileName:");
}

bool ColorField3DLut::IsThreeLutBinFileExist(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::IsThreeLutBinFileExist");
  const auto file = lutFileTable.find(mode);
  if (file == lutFileTable.end()) {
    log.Error(L"Temp bin file not exist! mode not found! mode:", mode);
    return false;
  }
  return FileExists(file->second);
}

bool ColorField3DLut::IsGammaLutBinFileExist() { return FileExists(gammaLutFile_); }

uint8_t ColorField3DLut::IsThreeLutBinFileNeedUpdate(ColorFieldMode mode) {
  LutBuffer buffer;
  const bool good = IsThreeLutBinFileExist(mode) && Get3DLutDataFormFileByFieldMode(mode, buffer) &&
                    IsLutDataValid3D(buffer) &&
                    OneLutTypeIsValid(mode, BytesOf(buffer), buffer.size());
  return good ? 0 : 1;
}

uint8_t ColorField3DLut::IsGammaLutBinFileNeedUpdate() {
  constexpr FunctionLog log("ColorField3DLut::IsGammaLutBinFileNeedUpdate");
  if (!IsGammaLutBinFileExist()) {
    log.Info(L"GammaLutBinFile not Exist");
    return 1;
  }
  LutBuffer buffer;
  const bool good = ReadGammaLutDataFile(buffer) && IsLutDataValid3D(buffer) &&
                    OneLutTypeIsValidGamma(BytesOf(buffer), buffer.size());
  return good ? 0 : 1;
}

}  // namespace velora
