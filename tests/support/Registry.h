#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The registry as it is, past the code under test: by functions that the product does not import,
// so that a notebook neither records them nor makes them fail.
namespace testsupport {

struct RegistryValue {
  DWORD type;
  std::vector<uint8_t> bytes;

  friend bool operator==(const RegistryValue&, const RegistryValue&) = default;
};

RegistryValue DwordValue(uint32_t number);
RegistryValue TextValue(const std::wstring& text);  // REG_SZ with its terminator

// What a key holds, by value name; nothing for a missing key.
using RegistryValues = std::map<std::wstring, RegistryValue>;
RegistryValues ReadKey(HKEY root, const std::wstring& path);
bool KeyExists(HKEY root, const std::wstring& path);

void WriteValue(HKEY root, const std::wstring& path, const std::wstring& name,
                const RegistryValue& value);
void MakeKey(HKEY root, const std::wstring& path);
// The textual SID of the user who runs the tests: its hive lies under HKEY_USERS.
std::wstring CurrentUserSid();

}  // namespace testsupport
