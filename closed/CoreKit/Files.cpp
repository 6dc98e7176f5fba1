#include <windows.h>

#include <aclapi.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "CoreKit/CoreKit.h"
#include "common/Text.h"
#include "common/UsersAccess.h"

namespace CoreKit {
namespace {

bool IsLegalPath(std::wstring_view path) {
  constexpr std::wstring_view kIllegal = L"<>\"|?*";
  if (path.empty()) {
    return false;
  }
  for (size_t i = 0; i < path.size(); ++i) {
    const bool driveColon = i == 1;
    if (path[i] < L' ' || kIllegal.find(path[i]) != std::wstring_view::npos ||
        (path[i] == L':' && !driveColon)) {
      return false;
    }
  }
  return true;
}

}  // namespace

// Looks at the path's characters, not at its bytes: in some code pages the second byte of a
// character looks like one of the illegal ones or like a backslash.
std::string GetCanonicalizedFilePath(const std::string& path) {
  const std::wstring given = closed::FromCodePage(path);
  if (!IsLegalPath(given)) {
    return {};
  }
  wchar_t full[MAX_PATH];
  const DWORD length = GetFullPathNameW(given.c_str(), MAX_PATH, full, nullptr);
  if (length == 0 || length >= MAX_PATH) {
    return {};
  }
  const std::wstring_view result(full, length);
  return result.starts_with(L"\\\\.\\") ? std::string() : closed::ToCodePage(result);
}

int EnableFileUsersPriviledge(const std::string& path) {
  constexpr int kFailed = 1;
  std::wstring name = closed::FromCodePage(path);
  const DWORD attributes = GetFileAttributesW(name.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return kFailed;
  }
  PACL present = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                            nullptr, &present, nullptr, &descriptor) != ERROR_SUCCESS) {
    return kFailed;
  }
  const closed::OwnedLocal<void> owner(descriptor);
  if (!present) {
    return 0;  // No list at all: everybody has full access, and a list would take it away.
  }
  const DWORD inheritance =
      attributes & FILE_ATTRIBUTE_DIRECTORY ? SUB_CONTAINERS_AND_OBJECTS_INHERIT : NO_INHERITANCE;
  const closed::OwnedLocal<ACL> merged = closed::MergeUsersAccess(present, inheritance);
  if (!merged) {
    return kFailed;
  }
  return SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                               nullptr, merged.get(), nullptr) == ERROR_SUCCESS
             ? 0
             : kFailed;
}

}  // namespace CoreKit
