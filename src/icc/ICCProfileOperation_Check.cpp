#include "icc/ICCProfileOperation.h"

#include <algorithm>

#include "frame/Log.h"
#include "frame/Sha256.h"

namespace velora {
namespace {

constexpr uint32_t kMaxProfileSize = 1000;  // bytes, without the hash
constexpr size_t kHashSize = 32;
static_assert(kMaxProfileSize + kHashSize == ICCProfileOperation::kProfileHead);

constexpr size_t kDescriptionSizeOffset = 140;
constexpr uint32_t kTextHeadingSize = 28;
constexpr size_t kTextOffset = 292;
constexpr uint32_t kMaxTextSize = 100;  // bytes

// A size as its bytes are combined in this format: signed, so that one of 0x80 or more fills all
// bits above it and the size is beyond every limit.
uint32_t ReadSignedBytes(const uint8_t* bytes) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) {
    const auto extended = static_cast<uint32_t>(int32_t{static_cast<int8_t>(bytes[i])});
    value |= extended << (24 - 8 * i);
  }
  return value;
}

}  // namespace

bool ICCProfileOperation::CheckProfile(std::span<const uint8_t, kProfileHead> file,
                                       const std::string& modeName) const {
  constexpr FunctionLog log("ICCProfileOperation::ICCProfileSha256Check");
  const uint32_t size = ReadSignedBytes(file.data());
  if (size > kMaxProfileSize) {
    log.Error(L"Icc file is abnormoal!");
    return false;
  }
  if (!IsfileMatchId(file, modeName)) {
    log.Error(L"File does not match id");
    return false;
  }
  uint8_t hash[kHashSize];
  if (!Sha256(file.first(size), hash)) {
    log.Error(L"Calculate sha256value failed");
    return false;
  }
  if (!std::ranges::equal(hash, file.subspan(size, kHashSize))) {
    log.Error(L"The sha256 values after and before are different");
    return false;
  }
  return true;
}

// The name is compared byte by byte: one beyond ASCII never matches its own profile, which holds
// real UTF-16.
bool ICCProfileOperation::IsfileMatchId(std::span<const uint8_t, kProfileHead> file,
                                        const std::string& modeName) const {
  constexpr FunctionLog log("ICCProfileOperation::IsfileMatchId");
  const uint32_t length = ReadSignedBytes(&file[kDescriptionSizeOffset]) - kTextHeadingSize;
  bool matches = length <= kMaxTextSize;
  for (uint32_t i = 0; matches && i < length; i += 2) {
    if (i / 2 >= modeName.size()) {
      matches = false;
      break;
    }
    const auto unit = static_cast<uint16_t>(int16_t{static_cast<int8_t>(modeName[i / 2])});
    // An odd length cuts the last pair: its second byte counts as 0.
    const uint8_t low = i + 1 < length ? file[kTextOffset + i + 1] : 0;
    matches = low == (unit & 0xFF) && file[kTextOffset + i] == unit >> 8;
  }
  if (!matches) {
    log.Error(L"IDs are different");
  }
  return matches;
}

}  // namespace velora
