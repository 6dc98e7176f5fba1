// The proof of a user's profile: a mode name, its length ahead of it, and the file. Compared with
// the plain form as it stands, and with hash and name put right.
#include <algorithm>
#include <string>

#include "fuzz/Fuzz.h"
#include "icc/ICCProfileOperation.h"
#include "support/LogCapture.h"
#include "virtualnotebook/Factory.h"

namespace {

constexpr size_t kHead = velora::ICCProfileOperation::kProfileHead;
constexpr size_t kHash = 32;
constexpr size_t kText = 292;

// Refused: any byte from 128 on makes the size negative or huge.
bool PlainSize(const uint8_t* bytes, uint32_t& size) {
  size = 0;
  for (size_t i = 0; i < 4; ++i) {
    if (bytes[i] > 127) {
      return false;
    }
    size = size * 256 + bytes[i];
  }
  return true;
}

// The name in UTF-16 of its bytes, those beyond ASCII as negative numbers.
fuzz::Bytes PlainText(const std::string& name) {
  fuzz::Bytes text;
  for (const char c : name) {
    const auto byte = static_cast<uint8_t>(c);
    text.push_back(byte > 127 ? 255 : 0);
    text.push_back(byte);
  }
  return text;
}

bool PlainCheck(std::span<const uint8_t> file, const std::string& name) {
  uint32_t size = 0;
  uint32_t tagSize = 0;
  if (!PlainSize(&file[0], size) || size > 1000) {
    return false;
  }
  if (!PlainSize(&file[140], tagSize) || tagSize < 28 || tagSize > 128) {
    return false;
  }
  const uint32_t length = tagSize - 28;
  fuzz::Bytes stored(file.begin() + kText, file.begin() + kText + length);
  if (length % 2 == 1) {
    stored.push_back(0);  // what is cut off counts as 0
  }
  fuzz::Bytes expected = PlainText(name);
  if (expected.size() < stored.size()) {
    return false;
  }
  expected.resize(stored.size());
  return stored == expected &&
         std::ranges::equal(virtualnotebook::Sha256(file.first(size)), file.subspan(size, kHash));
}

void CheckFile(std::span<const uint8_t, kHead> file, const std::string& name) {
  const testsupport::LogCapture log;
  const bool isGood = velora::ICCProfileOperation().CheckProfile(file, name);
  fuzz::Require(isGood == PlainCheck(file, name), "the plain form says the same");
  fuzz::Require(isGood == log.Lines().empty(), "a refusal is logged, and nothing else");
  if (isGood) {
    fuzz::Require(velora::ICCProfileOperation().CheckProfile(file, name + "more"),
                  "a name may go on behind the stored one");
  }
}

void RepairFile(std::span<uint8_t, kHead> file, const std::string& name) {
  uint32_t size = 0;
  if (!PlainSize(&file[0], size) || size > 1000) {
    return;
  }
  const fuzz::Bytes text = PlainText(name.substr(0, 50));
  std::ranges::copy(text, file.begin() + kText);
  std::ranges::copy(virtualnotebook::Sha256(file.first(size)), file.begin() + size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const auto nameBytes = input.TakeBytes(input.Take<uint8_t>());
  const std::string name(nameBytes.begin(), nameBytes.end());
  const auto bytes = input.TakeBytes(kHead);
  std::array<uint8_t, kHead> head = {};
  std::ranges::copy(bytes, head.begin());
  CheckFile(head, name);
  RepairFile(head, name);
  CheckFile(head, name);
  return 0;
}
