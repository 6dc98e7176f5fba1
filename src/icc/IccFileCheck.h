#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace velora {

// Proves that a preset ICC profile is unchanged: its SHA-256 must be the one that the digest file
// lists for its name.
class IccFileCheck {
 public:
  // True when the file matches its digest record.
  bool CompareSha256(const std::string& iccPath, const std::string& digestPath) const;

  bool GetSha256Value(const std::string& path, uint8_t* hash, size_t size) const;

  // 0 when the digest file could be read, whether or not it has a record for the profile (without
  // one, hash stays as it was); -1 otherwise.
  int GetSha256DataFromDigestFile(uint8_t* hash, size_t size, const std::string& digestPath,
                                  const std::string& iccPath) const;
  int GetFileNameFromPath(const std::string& path, std::string& name) const;
};

}  // namespace velora
