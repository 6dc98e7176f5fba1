#include "frame/Log.h"

#include <algorithm>
#include <charconv>

#include "CoreKit/CoreKit.h"
#include "frame/SixDigits.h"

namespace velora {
namespace {

constexpr size_t kMostDigits = 20;  // of 64 bits in decimal, with the sign

}  // namespace

void LogLine::AppendNarrow(std::string_view text) {
  const size_t at = text_.size();
  text_.resize(at + text.size());
  std::ranges::transform(text, text_.data() + at, [](char c) {
    return static_cast<wchar_t>(static_cast<unsigned char>(c));
  });
}

// A stream would switch the C locale of the whole process, when a host has set one.
void LogLine::AppendDouble(double value) {
  std::array<char, kSixDigitsSize> digits;
  AppendNarrow({digits.data(), WriteSixDigits(value, digits.data())});
}

void LogLine::AppendPointer(const void* pointer) {
  AppendNarrow(pointer == nullptr ? "" : "0x");
  AppendUnsigned(reinterpret_cast<uintptr_t>(pointer), 16);
}

void LogLine::AppendSigned(int64_t number) {
  std::array<char, kMostDigits> digits;
  AppendNarrow({digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr});
}

void LogLine::AppendUnsigned(uint64_t number, int base) {
  std::array<char, kMostDigits> digits;
  AppendNarrow({digits.data(), std::to_chars(digits.begin(), digits.end(), number, base).ptr});
}

void LogLine::Send(LogLevel level) const { LcdLogMessage(level, text_.c_str()); }

}  // namespace velora
