// A name, its length ahead of it, and a digest file. The library's test of a record is compared
// with a search in what of the record is a text.
#include "icc/DigestFile.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "fuzz/Fuzz.h"
#include "support/GuardedBuffer.h"

namespace {

bool PlainHoldsName(std::span<const uint8_t> record, const std::string& name) {
  constexpr size_t kNameBytes = 62;
  std::string text(record.begin(), record.begin() + kNameBytes);
  text = text.substr(0, text.find('\0'));
  const std::string wanted = name.substr(0, name.find('\0'));
  return text.find(wanted) != std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const auto nameBytes = input.TakeBytes(input.Take<uint8_t>());
  const std::string name(nameBytes.begin(), nameBytes.end());
  std::span<const uint8_t> file = input.Rest();
  for (; file.size() >= sizeof(velora::DigestRecord);
       file = file.subspan(sizeof(velora::DigestRecord))) {
    const auto bytes = file.first(sizeof(velora::DigestRecord));
    const testsupport::GuardedBuffer guarded(bytes);
    const auto& record = *reinterpret_cast<const velora::DigestRecord*>(guarded.data());
    fuzz::Require(velora::HoldsName(record, name) == PlainHoldsName(bytes, name),
                  "the record holds the name as the plain form finds it");
    fuzz::Require(std::ranges::equal(record.sha256, bytes.subspan(67, 32)), "the hash's place");
    if (velora::HoldsName(record, name) && !name.starts_with('\0') && !name.empty()) {
      fuzz::Require(velora::HoldsName(record, name.substr(1)), "a part of a part is a part");
    }
  }
  return 0;
}
