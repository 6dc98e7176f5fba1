#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace velora {

bool FileExists(const std::string& path);

// A data file, opened so that it disturbs nobody: other handles may read, write and delete it at
// the same time. Closed with the object. Paths are narrow, in the system code page.
class SharedFile {
 public:
  static SharedFile OpenForReading(const std::string& path);
  static SharedFile OpenForUpdating(const std::string& path);   // reading and writing; must exist
  static SharedFile Create(const std::string& path);            // writing; empties an existing file
  static SharedFile OpenForAppending(const std::string& path);  // at the end; made if absent

  SharedFile(SharedFile&& other) noexcept;
  SharedFile& operator=(SharedFile&&) = delete;
  ~SharedFile();

  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

  // False when the size can't be told.
  bool GetSize(uint64_t& size) const;

  // Reads up to bytes.size() bytes from offset; the count that was read, 0 at the end or on
  // failure.
  size_t ReadAt(uint64_t offset, std::span<uint8_t> bytes) const;

  // Write all bytes; false when the system took fewer.
  bool WriteAt(uint64_t offset, std::span<const uint8_t> bytes) const;
  bool Append(std::span<const uint8_t> bytes) const;

 private:
  explicit SharedFile(HANDLE handle) : handle_(handle) {}

  HANDLE handle_;
};

}  // namespace velora
