#include "frame/SharedFile.h"

#include <io.h>

#include <utility>

namespace velora {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE Open(const std::string& path, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES* const defaultSecurity = nullptr;
  const HANDLE noTemplate = nullptr;
  return CreateFileA(path.c_str(), access, kShareAll, defaultSecurity, disposition,
                     FILE_ATTRIBUTE_NORMAL, noTemplate);
}

OVERLAPPED At(uint64_t offset) {
  OVERLAPPED position{};
  position.Offset = static_cast<DWORD>(offset);
  position.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return position;
}

}  // namespace

bool FileExists(const std::string& path) {
  constexpr int kExistence = 0;
  return _access(path.c_str(), kExistence) == 0;
}

SharedFile SharedFile::OpenForReading(const std::string& path) {
  return SharedFile(Open(path, GENERIC_READ, OPEN_EXISTING));
}

SharedFile SharedFile::OpenForUpdating(const std::string& path) {
  return SharedFile(Open(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING));
}

SharedFile SharedFile::Create(const std::string& path) {
  return SharedFile(Open(path, GENERIC_WRITE, CREATE_ALWAYS));
}

SharedFile SharedFile::OpenForAppending(const std::string& path) {
  return SharedFile(Open(path, GENERIC_WRITE, OPEN_ALWAYS));
}

SharedFile::SharedFile(SharedFile&& other) noexcept
    : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}

SharedFile::~SharedFile() {
  if (IsOpen()) {
    CloseHandle(handle_);
  }
}

bool SharedFile::GetSize(uint64_t& size) const {
  LARGE_INTEGER bytes{};
  if (!GetFileSizeEx(handle_, &bytes)) {
    return false;
  }
  size = static_cast<uint64_t>(bytes.QuadPart);
  return true;
}

size_t SharedFile::ReadAt(uint64_t offset, std::span<uint8_t> bytes) const {
  OVERLAPPED position = At(offset);
  DWORD count = 0;
  if (!ReadFile(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, &position)) {
    return 0;
  }
  return count;
}

bool SharedFile::WriteAt(uint64_t offset, std::span<const uint8_t> bytes) const {
  OVERLAPPED position = At(offset);
  DWORD count = 0;
  return WriteFile(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, &position) &&
         count == bytes.size();
}

bool SharedFile::Append(std::span<const uint8_t> bytes) const {
  uint64_t end = 0;
  return GetSize(end) && WriteAt(end, bytes);
}

}  // namespace velora
