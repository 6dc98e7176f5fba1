#include "scenarios/Persistent.h"

#include <windows.h>

#include <filesystem>
#include <system_error>

#include "support/NotebookTest.h"

namespace scenarios {
namespace {

namespace fs = std::filesystem;

constexpr char kDataDirectory[] = "C:\\ProgramData\\Comms\\NxVelora";
constexpr char kColorDirectory[] = "C:\\Windows\\System32\\spool\\drivers\\color";
constexpr wchar_t kKey[] = L"SOFTWARE\\Norvex\\Velora";

bool IsUserProfile(const fs::path& path) { return path.string().ends_with("_usr.icc"); }

void ReadKeys(const std::wstring& path, Persistent& state) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return;
  }
  state.keys[path] = testsupport::ReadKey(HKEY_LOCAL_MACHINE, path);
  wchar_t name[256];
  DWORD size = std::size(name);
  for (DWORD i = 0;
       RegEnumKeyExW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
       ++i, size = std::size(name)) {
    ReadKeys(path + L"\\" + name, state);
  }
  RegCloseKey(key);
}

}  // namespace

Persistent Persistent::Now() {
  Persistent state;
  std::error_code none;
  for (const auto& entry : fs::recursive_directory_iterator(kDataDirectory, none)) {
    const std::string path = entry.path().string();
    if (entry.is_directory()) {
      state.directories.insert(path);
    } else {
      state.files[path] = testsupport::ReadFileBytes(path);
    }
  }
  for (const auto& entry : fs::directory_iterator(kColorDirectory, none)) {
    if (IsUserProfile(entry.path())) {
      state.files[entry.path().string()] = testsupport::ReadFileBytes(entry.path().string());
    }
  }
  ReadKeys(kKey, state);
  return state;
}

void Persistent::Restore() const {
  RemovePersistent();
  for (const std::string& directory : directories) {
    fs::create_directories(directory);
  }
  for (const auto& [path, bytes] : files) {
    testsupport::WriteFileBytes(path, bytes);
  }
  for (const auto& [path, values] : keys) {
    testsupport::MakeKey(HKEY_LOCAL_MACHINE, path);
    for (const auto& [name, value] : values) {
      testsupport::WriteValue(HKEY_LOCAL_MACHINE, path, name, value);
    }
  }
}

void RemovePersistent() {
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(kDataDirectory, none)) {
    fs::remove_all(entry.path(), none);
  }
  for (const auto& entry : fs::directory_iterator(kColorDirectory, none)) {
    if (IsUserProfile(entry.path())) {
      fs::remove(entry.path(), none);
    }
  }
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kKey);
}

}  // namespace scenarios
