// The preset profiles' digest file.
#include "virtualnotebook/Factory.h"

#include <algorithm>
#include <stdexcept>

namespace virtualnotebook {

Bytes MakeDigestFile(const std::map<std::string, Bytes>& files) {
  constexpr size_t kRecordSize = 102;
  constexpr size_t kNameSize = 63;
  constexpr size_t kHashOffset = 67;
  Bytes out;
  for (const auto& [name, content] : files) {
    if (name.size() >= kNameSize) {
      throw std::invalid_argument("a digest record cannot hold the name " + name);
    }
    Bytes record(kRecordSize, 0);
    std::copy(name.begin(), name.end(), record.begin());
    const Bytes hash = Sha256(content);
    std::copy(hash.begin(), hash.end(), record.begin() + kHashOffset);
    out.insert(out.end(), record.begin(), record.end());
  }
  return out;
}

}  // namespace virtualnotebook
