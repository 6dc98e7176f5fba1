// What the pure cores take from CoreKit, on this machine, where there is none.
#include "CoreKit/CoreKit.h"

void LcdLogMessage(int, const wchar_t*) {}

std::string CoreKit::BytesToHexString(const uint8_t* bytes, size_t count) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}
