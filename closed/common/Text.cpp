#include "common/Text.h"

#include <windows.h>

#include <limits>

namespace closed {
namespace {

constexpr size_t kMostUnits = std::numeric_limits<int>::max();

std::string Narrow(UINT codePage, std::wstring_view text) {
  if (text.empty() || text.size() > kMostUnits) {
    return {};
  }
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(codePage, 0, text.data(), length, narrow.data(), size, nullptr, nullptr);
  return narrow;
}

}  // namespace

std::wstring FromCodePage(std::string_view text) {
  if (text.empty() || text.size() > kMostUnits) {
    return {};
  }
  const int length = static_cast<int>(text.size());
  const int size = MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<size_t>(size), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), size);
  return wide;
}

std::string ToCodePage(std::wstring_view text) { return Narrow(CP_ACP, text); }

std::string ToUtf8(std::wstring_view text) { return Narrow(CP_UTF8, text); }

}  // namespace closed
