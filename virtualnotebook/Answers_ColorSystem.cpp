// The colour system's associations of the current user. The notebook has none for all users. The
// profiles themselves are real.
#include "virtualnotebook/Answers.h"

#include <algorithm>

#include "virtualnotebook/Recorder.h"

namespace virtualnotebook::answers {
namespace {

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

BOOL Fail(DWORD error) {
  SetLastError(error);
  return FALSE;
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
  const auto found = notebook.profiles.find(device);
  if (scope != WCS_PROFILE_MANAGEMENT_SCOPE_CURRENT_USER || found == notebook.profiles.end() ||
      found->second.empty()) {
    return Fail(ERROR_FILE_NOT_FOUND);
  }
  const std::wstring fileName = BaseName(found->second.front());
  if (size < (fileName.size() + 1) * sizeof(wchar_t)) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  std::copy_n(fileName.c_str(), fileName.size() + 1, name);
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
BOOL InstallColorProfileW(Notebook&, decltype(::InstallColorProfileW)* original,
                          const wchar_t* machine, const wchar_t* profile) {
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

}  // namespace virtualnotebook::answers
