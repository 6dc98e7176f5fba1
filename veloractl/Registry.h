// The library's registry keys, looked at without a change.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "veloractl/Report.h"

namespace veloractl {

inline constexpr wchar_t kVeloraKey[] = L"SOFTWARE\\Norvex\\Velora";

// A key as documents have it: "HKEY_LOCAL_MACHINE\SOFTWARE\Norvex\Velora".
std::string NameOfKey(HKEY root, const std::wstring& path);

// The path of a key below another.
std::wstring Below(const std::wstring& path, const std::wstring& child);

// A number or a text; null for other types and where there is no such value.
Json ReadRegistry(HKEY root, const std::wstring& path, const std::wstring& name);

std::vector<std::wstring> SubKeys(HKEY root, const std::wstring& path);

// All values and keys below it, by their names; null where the key isn't there. Bytes are
// hexadecimal text.
Json ReadTree(HKEY root, const std::wstring& path);

}  // namespace veloractl
