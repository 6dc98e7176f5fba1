#include "settings/IniHelper.h"

#include <windows.h>

#include <array>
#include <string_view>
#include <type_traits>

#include "frame/Log.h"
#include "settings/NumberText.h"

namespace velora {
namespace {

constexpr DWORD kMaxText = 260;  // characters, with the terminator

template <typename T>
void Extract(std::wstring_view text, T* value) {
  if constexpr (std::is_same_v<T, double>) {
    ExtractDouble(text, *value);
  } else {
    ExtractInteger(text, *value);
  }
}

}  // namespace

template <typename T>
int IniHelper::GetValue(const std::wstring& section, const std::wstring& key, T* value) const {
  std::array<wchar_t, kMaxText> text;
  const DWORD length = GetPrivateProfileStringW(section.c_str(), key.c_str(), L"", text.data(),
                                                kMaxText, filePath_.c_str());
  if (length == 0) {
    constexpr FunctionLog log("IniHelper::GetValue");
    log.Info(L"get key:", key, L" from section:", section, L" failed in file:", filePath_);
    return 1;
  }
  Extract({text.data(), length}, value);
  return 0;
}

template int IniHelper::GetValue(const std::wstring&, const std::wstring&, unsigned long*) const;
template int IniHelper::GetValue(const std::wstring&, const std::wstring&, int*) const;
template int IniHelper::GetValue(const std::wstring&, const std::wstring&, double*) const;

int IniHelper::GetUnsigned(const std::wstring& section, const std::wstring& key,
                           int defaultValue) const {
  auto value = static_cast<unsigned long>(defaultValue);
  GetValue(section, key, &value);
  return static_cast<int>(value);
}

}  // namespace velora
