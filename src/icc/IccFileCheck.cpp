#include "icc/IccFileCheck.h"

#include <array>
#include <memory>
#include <new>
#include <span>

#include "CoreKit/CoreKit.h"
#include "frame/BoundedCopy.h"
#include "frame/Log.h"
#include "frame/Sha256.h"
#include "frame/SharedFile.h"
#include "icc/DigestFile.h"

namespace velora {
namespace {

constexpr uint64_t kMaxFileSize = 0xFFFFFFFF;

using Hash = std::array<uint8_t, kDigestHashSize>;

}  // namespace

bool IccFileCheck::CompareSha256(const std::string& iccPath, const std::string& digestPath) const {
  constexpr FunctionLog log("IccFileCheck::CompareSha256");
  if (iccPath.empty() || digestPath.empty()) {
    log.Error(L"input string is empty");
    return false;
  }
  Hash computed{};
  if (!GetSha256Value(iccPath, computed.data(), computed.size())) {
    log.Error(L"GetSha256Value failed.");
    return false;
  }
  // Stays zero, and so matches no file, when the digest file has no record or can't be read.
  Hash expected{};
  GetSha256DataFromDigestFile(expected.data(), expected.size(), digestPath, iccPath);
  return computed == expected;
}

bool IccFileCheck::GetSha256Value(const std::string& path, uint8_t* hash, size_t size) const {
  constexpr FunctionLog log("IccFileCheck::GetSha256Value");
  if (hash == nullptr || size < kDigestHashSize) {
    return false;
  }
  const std::string canonicalPath = CoreKit::GetCanonicalizedFilePath(path);
  if (canonicalPath.empty()) {
    log.Error(L"IccFilePath error");
    return false;
  }
  const SharedFile file = SharedFile::OpenForReading(canonicalPath);
  if (!file.IsOpen()) {
    log.Error(L"Open iccFile failed!fileName:", path);
    return false;
  }
  uint64_t length = 0;
  if (!file.GetSize(length) || length > kMaxFileSize || length == 0) {
    return false;
  }
  const std::unique_ptr<uint8_t[]> data(new (std::nothrow) uint8_t[length]);
  if (data == nullptr) {
    log.Error(L"pData is nullptr!");
    return false;
  }
  if (file.ReadAt(0, {data.get(), length}) != length) {
    return false;
  }
  return Sha256({data.get(), length}, hash);
}

int IccFileCheck::GetSha256DataFromDigestFile(uint8_t* hash, size_t size,
                                              const std::string& digestPath,
                                              const std::string& iccPath) const {
  constexpr FunctionLog log("IccFileCheck::GetSha256DataFromDigestFile");
  const std::string canonicalPath = CoreKit::GetCanonicalizedFilePath(digestPath);
  if (hash == nullptr || size < kDigestHashSize || canonicalPath.empty() || iccPath.empty()) {
    return -1;
  }
  std::string name;
  if (GetFileNameFromPath(iccPath, name) != 0) {
    return -1;
  }
  const SharedFile file = SharedFile::OpenForReading(canonicalPath);
  if (!file.IsOpen()) {
    log.Error(L"Open digestFile Failed!digestFileName:", digestPath);
    return -1;
  }
  DigestRecord record{};
  const std::span<uint8_t> bytes(reinterpret_cast<uint8_t*>(&record), sizeof record);
  // The first record that holds the name wins.
  for (uint64_t offset = 0; file.ReadAt(offset, bytes) == sizeof record; offset += sizeof record) {
    if (HoldsName(record, name)) {
      memcpy_s(hash, kDigestHashSize, record.sha256, kDigestHashSize);
      break;
    }
  }
  return 0;
}

int IccFileCheck::GetFileNameFromPath(const std::string& path, std::string& name) const {
  if (path.empty()) {
    return -1;
  }
  size_t separator = path.rfind('\\');
  if (separator == std::string::npos) {
    separator = path.rfind('/');
  }
  // Without either npos + 1 is 0: all of it.
  name = path.substr(separator + 1);
  return 0;
}

}  // namespace velora
