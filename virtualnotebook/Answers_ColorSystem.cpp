// The colour system's associations. Those for all users can be asked for and not changed. The
// profiles themselves are real.
#include "virtualnotebook/Answers.h"

#include <algorithm>

#include "virtualnotebook/Recorder.h"

namespace virtualnotebook::answers {
namespace {

constexpr DWORD kMonitorClass = 0x6D6E7472;  // CLASS_MONITOR, "mntr"

bool IsEmpty(const wchar_t* text) { return text == nullptr || *text == L'\0'; }

// The colour system knows profiles by their file name alone.
std::wstring BaseName(const std::wstring& path) {
  return path.substr(path.find_last_of(L"\\/") + 1);
}

bool IsInstalled(const std::wstring& fileName) {
  wchar_t directory[MAX_PATH];
  DWORD size = sizeof directory;
  return GetColorDirectoryW(nullptr, directory, &size) &&
         GetFileAttributesW((std::wstring(directory) + L"\\" + fileName).c_str()) !=
             INVALID_FILE_ATTRIBUTES;
}

// The profiles of a device in a scope, its default first.
std::vector<std::wstring> ProfilesOf(const Notebook& notebook, WCS_PROFILE_MANAGEMENT_SCOPE scope,
                                     const wchar_t* device) {
  const ProfileAssociations& all = scope == WCS_PROFILE_MANAGEMENT_SCOPE_CURRENT_USER
                                       ? notebook.profiles
                                       : notebook.systemProfiles;
  const auto found = all.find(device);
  return found == all.end() ? std::vector<std::wstring>() : found->second;
}

// File names one behind the other, each with its zero, and a zero at the end.
std::wstring TextsOf(const std::vector<std::wstring>& profiles) {
  std::wstring texts;
  for (const std::wstring& profile : profiles) {
    texts += BaseName(profile) + L'\0';
  }
  return texts + L'\0';
}

constexpr wchar_t kProfileFolder[] = L"C:\\Windows\\System32\\spool\\drivers\\color\\";

// A bare name is an installed profile's.
std::wstring MovedProfile(const Notebook& notebook, const std::wstring& profile) {
  return notebook.Moved(BaseName(profile) == profile ? kProfileFolder + profile : profile);
}

// Into the moved folder of profiles.
BOOL InstallMoved(const Notebook& notebook, const std::wstring& profile) {
  const std::wstring installed = MovedProfile(notebook, BaseName(profile));
  const std::wstring from = MovedProfile(notebook, profile);
  if (GetFileAttributesW(from.c_str()) == INVALID_FILE_ATTRIBUTES) {
    return Fail(ERROR_FILE_NOT_FOUND);
  }
  // Not CopyFileW, which is redirected.
  return GetFileAttributesW(installed.c_str()) != INVALID_FILE_ATTRIBUTES ||
         CopyFileExW(from.c_str(), installed.c_str(), nullptr, nullptr, nullptr, 0);
}

}  // namespace

BOOL WcsGetDefaultColorProfile(Notebook& notebook, decltype(::WcsGetDefaultColorProfile)*,
                               WCS_PROFILE_MANAGEMENT_SCOPE scope, const wchar_t* device,
                               COLORPROFILETYPE, COLORPROFILESUBTYPE, DWORD, DWORD size,
                               wchar_t* name) {
  const NotebookGuard guard(TheLock());
  if (IsEmpty(device) || name == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const std::vector<std::wstring> profiles = ProfilesOf(notebook, scope, device);
  if (profiles.empty()) {
    return Fail(ERROR_FILE_NOT_FOUND);
  }
  const std::wstring fileName = BaseName(profiles.front());
  if (size < (fileName.size() + 1) * sizeof(wchar_t)) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  std::copy_n(fileName.c_str(), fileName.size() + 1, name);
  return TRUE;
}

BOOL WcsEnumColorProfilesSize(Notebook& notebook, decltype(::WcsEnumColorProfilesSize)*,
                              WCS_PROFILE_MANAGEMENT_SCOPE scope, ENUMTYPEW* wanted, DWORD* size) {
  const NotebookGuard guard(TheLock());
  if (wanted == nullptr || wanted->dwFields != ET_DEVICENAME || IsEmpty(wanted->pDeviceName) ||
      size == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  *size = static_cast<DWORD>(TextsOf(ProfilesOf(notebook, scope, wanted->pDeviceName)).size() *
                             sizeof(wchar_t));
  return TRUE;
}

BOOL WcsEnumColorProfiles(Notebook& notebook, decltype(::WcsEnumColorProfiles)*,
                          WCS_PROFILE_MANAGEMENT_SCOPE scope, ENUMTYPEW* wanted, BYTE* buffer,
                          DWORD size, DWORD* count) {
  const NotebookGuard guard(TheLock());
  if (wanted == nullptr || wanted->dwFields != ET_DEVICENAME || IsEmpty(wanted->pDeviceName) ||
      buffer == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const std::vector<std::wstring> profiles = ProfilesOf(notebook, scope, wanted->pDeviceName);
  const std::wstring texts = TextsOf(profiles);
  if (size < texts.size() * sizeof(wchar_t)) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  std::copy_n(reinterpret_cast<const BYTE*>(texts.data()), texts.size() * sizeof(wchar_t), buffer);
  if (count != nullptr) {
    *count = static_cast<DWORD>(profiles.size());
  }
  return TRUE;
}

BOOL WcsGetUsePerUserProfiles(Notebook& notebook, decltype(::WcsGetUsePerUserProfiles)*,
                              const wchar_t* device, DWORD deviceClass, BOOL* perUser) {
  const NotebookGuard guard(TheLock());
  if (IsEmpty(device) || deviceClass != kMonitorClass || perUser == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  *perUser = notebook.perUserProfiles;
  return TRUE;
}

BOOL WcsAssociateColorProfileWithDevice(Notebook& notebook,
                                        decltype(::WcsAssociateColorProfileWithDevice)*,
                                        WCS_PROFILE_MANAGEMENT_SCOPE scope, const wchar_t* profile,
                                        const wchar_t* device) {
  const NotebookGuard guard(TheLock());
  if (scope != WCS_PROFILE_MANAGEMENT_SCOPE_CURRENT_USER || IsEmpty(device) || IsEmpty(profile)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  auto& associated = notebook.profiles[device];
  std::erase(associated, BaseName(profile));
  associated.insert(associated.begin(), BaseName(profile));
  return TRUE;
}

BOOL WcsDisassociateColorProfileFromDevice(Notebook& notebook,
                                           decltype(::WcsDisassociateColorProfileFromDevice)*,
                                           WCS_PROFILE_MANAGEMENT_SCOPE scope,
                                           const wchar_t* profile, const wchar_t* device) {
  const NotebookGuard guard(TheLock());
  if (scope != WCS_PROFILE_MANAGEMENT_SCOPE_CURRENT_USER || IsEmpty(device)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const auto found = notebook.profiles.find(device);
  if (IsEmpty(profile) || found == notebook.profiles.end() ||
      std::erase(found->second, BaseName(profile)) == 0) {
    return Fail(ERROR_FILE_NOT_FOUND);
  }
  return TRUE;
}

// Windows takes a profile that is installed already, by its bare file name too. Wine refuses to
// copy over a file, and looks for a bare name in the current directory.
BOOL InstallColorProfileW(Notebook& notebook, decltype(::InstallColorProfileW)* original,
                          const wchar_t* machine, const wchar_t* profile) {
  if (!notebook.movedFolders.empty()) {
    return IsEmpty(profile) ? Fail(ERROR_INVALID_PARAMETER) : InstallMoved(notebook, profile);
  }
  if (original(machine, profile)) {
    return TRUE;
  }
  const DWORD error = GetLastError();
  const bool bareName = !IsEmpty(profile) && BaseName(profile) == profile;
  if (error == ERROR_FILE_EXISTS || (bareName && IsInstalled(profile))) {
    return TRUE;
  }
  return Fail(error);
}

HPROFILE OpenColorProfileW(Notebook& notebook, decltype(::OpenColorProfileW)* original,
                           PROFILE* profile, DWORD access, DWORD sharing, DWORD creation) {
  if (notebook.movedFolders.empty() || profile == nullptr || profile->dwType != PROFILE_FILENAME ||
      profile->pProfileData == nullptr) {
    return original(profile, access, sharing, creation);
  }
  std::wstring path = MovedProfile(notebook, static_cast<wchar_t*>(profile->pProfileData));
  PROFILE moved = {.dwType = PROFILE_FILENAME,
                   .pProfileData = path.data(),
                   .cbDataSize = static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t))};
  return original(&moved, access, sharing, creation);
}

}  // namespace virtualnotebook::answers
