#include "common/Text.h"

#include "CoreKit/CoreKit.h"

namespace CoreKit {

std::string BytesToHexString(const uint8_t* bytes, size_t count) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; bytes && i < count; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0xF];
  }
  return text;
}

std::wstring StringToWString(const std::string& text) { return closed::FromCodePage(text); }

std::string WStringToString(const std::wstring& text) { return closed::ToCodePage(text); }

}  // namespace CoreKit
