#include "lut/ColorField3DLut.h"

#include <memory>
#include <new>
#include <string>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "frame/BoundedCopy.h"
#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/Sha256.h"
#include "frame/SharedFile.h"
#include "lut/LutBlock.h"
#include "panel/ByteOrder.h"

// The LUT files of user modes: blocks with a minimal header, which the reader of firmware blocks
// proves by length and hash. A file is written in three passes, each of which opens it anew; what a
// failure leaves has no hash that holds, and so is never used.
namespace velora {
namespace {

// The fields of a user file's header; all others are zero, as a user's LUT belongs to no panel.
constexpr size_t kTypeOffset = 64;
constexpr size_t kPrecisionOffset = 65;
constexpr size_t kLengthOffset = 66;
constexpr uint8_t kUserLutType = 0x0B;  // no LUT type of the firmware's
constexpr uint8_t kPrecision = 12;      // bits of a component's field

std::string TempFile(const std::string& id, const char* suffix) {
  return std::string(userTempDir) + "\\" + id + suffix;
}

}  // namespace

std::string ColorField3DLut::SaveUser3DLutBin(const double* lut, const std::string& id) {
  constexpr FunctionLog log("ColorField3DLut::SaveUser3DLutBin");
  if (lut == nullptr) {
    log.Error(L"ThreeDLutData is null, save failed");
    return {};
  }
  std::string path = TempFile(id, "_3dlut.bin");
  if (!CreateUserBinFile(path, lut, k3DEntries)) {
    log.Error(L"Create user 3dlut temp bin file fail, bin path :", path);
    return {};
  }
  return path;
}

std::string ColorField3DLut::SaveUserGammaLutBin(const double* lut, const std::string& id) {
  constexpr FunctionLog log("ColorField3DLut::SaveUserGammaLutBin");
  if (lut == nullptr) {
    log.Error(L"selfGammaLutData is null, save failed");
    return {};
  }
  std::string path = TempFile(id, "_gammalut.bin");
  if (!CreateUserBinFile(path, lut, kGammaEntries)) {
    log.Error(L"Create user gammalut temp bin file fail, bin path :", path);
    return {};
  }
  return path;
}

bool ColorField3DLut::CreateUserBinFile(const std::string& path, const double* lut, int count) {
  constexpr FunctionLog log("ColorField3DLut::CreateUserBinFile");
  char head[kBlockHeaderSize] = {};
  const int type = count == k3DEntries ? UserLut3D : UserLutGamma;
  if (!CreateUserLutHead(head, type, static_cast<int>(sizeof head))) {
    log.Error(L"Create user lut head data error");
    return false;
  }
  {
    const SharedFile file = SharedFile::Create(CoreKit::GetCanonicalizedFilePath(path));
    if (!file.IsOpen()) {
      log.Error(L"Open binfile error", path);
      return false;
    }
    file.WriteAt(0, {reinterpret_cast<const uint8_t*>(head), sizeof head});
  }
  if (!WriteLutDataToBin(path, lut, count)) {
    log.Error(L"Add lut data fail, bin file path: ", path);
    return false;
  }
  if (!Sha256UserLut(path, count)) {
    log.Error(L"Add sha256 data fail, bin file path: ", path);
    return false;
  }
  return true;
}

bool ColorField3DLut::CreateUserLutHead(char* head, int type, int length) {
  constexpr FunctionLog log("ColorField3DLut::CreateUserLutHead");
  if (type != UserLut3D && type != UserLutGamma) {
    log.Error(L"Set_Type error, fail to create head");
    return false;
  }
  uint8_t dataLength[4];
  WriteBe32(static_cast<uint32_t>(LutDataLength(type == UserLut3D ? k3DEntries : kGammaEntries)),
            dataLength);
  if (length < static_cast<int>(kLengthOffset + sizeof dataLength)) {
    log.Error(L"Copy lut valid len data error");
    return false;
  }
  memcpy_s(head + kTypeOffset, sizeof kUserLutType, &kUserLutType, sizeof kUserLutType);
  memcpy_s(head + kPrecisionOffset, sizeof kPrecision, &kPrecision, sizeof kPrecision);
  memcpy_s(head + kLengthOffset, sizeof dataLength, dataLength, sizeof dataLength);
  return true;
}

bool ColorField3DLut::WriteLutDataToBin(const std::string& path, const double* lut, int count) {
  constexpr FunctionLog log("ColorField3DLut::WriteLutDataToBin");
  if (lut == nullptr) {
    log.Error(L"Out data is null", path);
    return false;
  }
  const SharedFile file = SharedFile::OpenForAppending(CoreKit::GetCanonicalizedFilePath(path));
  if (!file.IsOpen()) {
    log.Error(L"Open binfile error", path);
    return false;
  }
  std::vector<uint8_t> data(LutDataLength(count));
  EncodeLut(lut, count, data.data());
  file.Append(data);
  return true;
}

bool ColorField3DLut::Sha256UserLut(const std::string& path, int count) {
  constexpr FunctionLog log("ColorField3DLut::Sha256UserLut");
  const SharedFile file = SharedFile::OpenForUpdating(path);
  if (!file.IsOpen()) {
    log.Error(L"Open binfile error", path);
    return false;
  }
  const size_t size = kBlockHeaderSize + LutDataLength(count);
  const std::unique_ptr<uint8_t[]> data(new (std::nothrow) uint8_t[size]());
  if (data == nullptr) {
    log.Error(L"Sha256Data failed to apply for space");
    return false;
  }
  // A file that comes short lacks what could not be written: with a hash it would pass for whole.
  uint8_t hash[kSha256Size];
  return file.ReadAt(0, {data.get(), size}) == size && Sha256({data.get(), size}, hash) &&
         file.WriteAt(size, hash);
}

}  // namespace velora
