#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "virtualnotebook/Factory.h"

namespace testsupport {

// The profile of a user's mode by its layout alone, without lcms2: what its proof looks at is where
// and what the library's own has there, all else is a pattern.
inline virtualnotebook::Bytes MakeUserProfile(const std::string& name) {
  constexpr size_t kTextOffset = 292;
  constexpr size_t kSizeWithoutText = 544;
  const size_t textSize = 2 * name.size();
  const size_t size = kSizeWithoutText + (textSize + 3) / 4 * 4;
  virtualnotebook::Bytes file(size);
  for (size_t i = 0; i < size; ++i) {
    file[i] = static_cast<uint8_t>(7 * i + 3);
  }
  const auto putNumber = [&file](size_t offset, size_t value) {
    for (size_t i = 0; i < 4; ++i) {
      file[offset + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
    }
  };
  const auto putText = [&file](size_t offset, const char* text) {
    std::copy_n(text, 4, file.begin() + static_cast<ptrdiff_t>(offset));
  };
  putNumber(0, size);
  putText(4, "MSFT");
  putText(80, "MSFT");
  putNumber(128, 11);  // tags
  putText(132, "desc");
  putNumber(136, 264);
  putNumber(140, 28 + textSize);
  putText(264, "mluc");
  for (size_t i = 0; i < name.size(); ++i) {
    file[kTextOffset + 2 * i] = 0;
    file[kTextOffset + 2 * i + 1] = static_cast<uint8_t>(name[i]);
  }
  const virtualnotebook::Bytes hash = virtualnotebook::Sha256(file);
  file.insert(file.end(), hash.begin(), hash.end());
  return file;
}

}  // namespace testsupport
