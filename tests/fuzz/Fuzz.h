// What every fuzzer here uses. A fuzzer is one file with LLVMFuzzerTestOneInput: libFuzzer calls it
// with inputs that it makes, RunFiles.cpp with files. It ends the process on the first broken
// promise.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

using Bytes = std::vector<uint8_t>;

inline void Require(bool kept, const char* promise) {
  if (!kept) {
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
  }
}

// An input as a row of values; zeros where it has come to its end.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : rest_(data, size) {}

  bool IsEmpty() const { return rest_.empty(); }

  template <typename Value>
  Value Take() {
    Value value{};
    const std::span<const uint8_t> bytes = TakeBytes(sizeof value);
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<uint8_t*>(&value));
    return value;
  }
  std::span<const uint8_t> TakeBytes(size_t count) {
    const auto bytes = rest_.first(count < rest_.size() ? count : rest_.size());
    rest_ = rest_.subspan(bytes.size());
    return bytes;
  }
  std::span<const uint8_t> Rest() const { return rest_; }

 private:
  std::span<const uint8_t> rest_;
};

}  // namespace fuzz
