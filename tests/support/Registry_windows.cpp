#include "support/Registry.h"

#include <windows.h>

#include <sddl.h>

#include <array>
#include <cstring>
#include <stdexcept>

namespace testsupport {
namespace {

constexpr DWORD kLongestName = 256;    // characters
constexpr DWORD kLongestValue = 4096;  // bytes

void Require(bool condition, const char* what) {
  if (!condition) {
    throw std::runtime_error(what);
  }
}

// Past the import table, where the notebook counts the product's closes.
void Close(HKEY key) {
  static const auto close = reinterpret_cast<decltype(&RegCloseKey)>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"advapi32.dll"), "RegCloseKey")));
  close(key);
}

}  // namespace

RegistryValue DwordValue(uint32_t number) {
  RegistryValue value{REG_DWORD, std::vector<uint8_t>(sizeof number)};
  std::memcpy(value.bytes.data(), &number, sizeof number);
  return value;
}

RegistryValue TextValue(const std::wstring& text) {
  RegistryValue value{REG_SZ, std::vector<uint8_t>((text.size() + 1) * sizeof(wchar_t))};
  std::memcpy(value.bytes.data(), text.c_str(), value.bytes.size());
  return value;
}

RegistryValues ReadKey(HKEY root, const std::wstring& path) {
  RegistryValues values;
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return values;
  }
  for (DWORD i = 0;; ++i) {
    std::array<wchar_t, kLongestName> name;
    DWORD nameLength = kLongestName;
    RegistryValue value{REG_NONE, std::vector<uint8_t>(kLongestValue)};
    DWORD size = kLongestValue;
    if (RegEnumValueW(key, i, name.data(), &nameLength, nullptr, &value.type, value.bytes.data(),
                      &size) != ERROR_SUCCESS) {
      break;
    }
    value.bytes.resize(size);
    values[{name.data(), nameLength}] = std::move(value);
  }
  Close(key);
  return values;
}

bool KeyExists(HKEY root, const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return false;
  }
  Close(key);
  return true;
}

void WriteValue(HKEY root, const std::wstring& path, const std::wstring& name,
                const RegistryValue& value) {
  // The system completes a text when it finds a terminator behind it.
  std::vector<uint8_t> guarded = value.bytes;
  guarded.insert(guarded.end(), 2 * sizeof(wchar_t), 0xbd);
  Require(RegSetKeyValueW(root, path.c_str(), name.c_str(), value.type, guarded.data(),
                          static_cast<DWORD>(value.bytes.size())) == ERROR_SUCCESS,
          "RegSetKeyValueW");
}

void MakeKey(HKEY root, const std::wstring& path) {
  HKEY key = nullptr;
  Require(RegCreateKeyW(root, path.c_str(), &key) == ERROR_SUCCESS, "RegCreateKeyW");
  Close(key);
}

std::wstring CurrentUserSid() {
  HANDLE token = nullptr;
  Require(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token), "OpenProcessToken");
  std::array<uint8_t, 256> user;
  DWORD size = 0;
  Require(GetTokenInformation(token, TokenUser, user.data(), user.size(), &size),
          "GetTokenInformation");
  wchar_t* text = nullptr;
  Require(ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, &text),
          "ConvertSidToStringSidW");
  std::wstring sid(text);
  LocalFree(text);
  return sid;
}

}  // namespace testsupport
