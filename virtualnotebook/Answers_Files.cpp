// Files and events, where Notebook::movedFolders and Notebook::eventPrefix say. In a program that
// stands on its own notebook nothing here may call a function that is redirected.
#include "virtualnotebook/Answers.h"

#include <cwctype>

namespace virtualnotebook {
namespace {

constexpr wchar_t kGlobal[] = L"Global\\";

std::wstring Widen(const std::string& text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(
      static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0)), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string Narrow(const std::wstring& text) {
  const int size = static_cast<int>(text.size());
  std::string narrow(static_cast<size_t>(WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr,
                                                             0, nullptr, nullptr)),
                     '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), size, narrow.data(), static_cast<int>(narrow.size()),
                      nullptr, nullptr);
  return narrow;
}

// The path is folder or lies in it, whatever the case.
bool IsWithin(const std::wstring& path, const std::wstring& folder) {
  if (path.size() < folder.size() ||
      (path.size() > folder.size() && path[folder.size()] != L'\\' && folder.back() != L'\\')) {
    return false;
  }
  for (size_t i = 0; i < folder.size(); ++i) {
    if (std::towlower(static_cast<wint_t>(path[i])) !=
        std::towlower(static_cast<wint_t>(folder[i]))) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::wstring Notebook::Moved(const std::wstring& path) const {
  for (const auto& [from, to] : movedFolders) {
    if (IsWithin(path, from)) {
      return to + path.substr(from.size());
    }
  }
  return path;
}

std::string Notebook::Moved(const std::string& path) const {
  return movedFolders.empty() ? path : Narrow(Moved(Widen(path)));
}

}  // namespace virtualnotebook

namespace virtualnotebook::answers {

HANDLE CreateEventW(Notebook& notebook, decltype(::CreateEventW)* original,
                    SECURITY_ATTRIBUTES* security, BOOL manual, BOOL state, const wchar_t* name) {
  if (name == nullptr || notebook.eventPrefix.empty()) {
    return original(security, manual, state, name);
  }
  const std::wstring given = name;
  const std::wstring own =
      notebook.eventPrefix + given.substr(given.starts_with(kGlobal) ? std::size(kGlobal) - 1 : 0);
  return original(security, manual, state, own.c_str());
}

HANDLE CreateFileA(Notebook& notebook, decltype(::CreateFileA)* original, const char* path,
                   DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security, DWORD disposition,
                   DWORD attributes, HANDLE like) {
  if (notebook.movedFolders.empty()) {
    return original(path, access, sharing, security, disposition, attributes, like);
  }
  return original(notebook.Moved(std::string(path)).c_str(), access, sharing, security, disposition,
                  attributes, like);
}

BOOL CopyFileW(Notebook& notebook, decltype(::CopyFileW)* original, const wchar_t* from,
               const wchar_t* to, BOOL keep) {
  if (notebook.movedFolders.empty()) {
    return original(from, to, keep);
  }
  return original(notebook.Moved(std::wstring(from)).c_str(),
                  notebook.Moved(std::wstring(to)).c_str(), keep);
}

DWORD GetPrivateProfileStringW(Notebook& notebook, decltype(::GetPrivateProfileStringW)* original,
                               const wchar_t* section, const wchar_t* key, const wchar_t* fallback,
                               wchar_t* text, DWORD size, const wchar_t* file) {
  if (notebook.movedFolders.empty()) {
    return original(section, key, fallback, text, size, file);
  }
  return original(section, key, fallback, text, size, notebook.Moved(std::wstring(file)).c_str());
}

int Access(Notebook& notebook, decltype(::_access)* original, const char* path, int mode) {
  if (notebook.movedFolders.empty()) {
    return original(path, mode);
  }
  return original(notebook.Moved(std::string(path)).c_str(), mode);
}

int MakeDirectory(Notebook& notebook, decltype(::_mkdir)* original, const char* path) {
  if (notebook.movedFolders.empty()) {
    return original(path);
  }
  return original(notebook.Moved(std::string(path)).c_str());
}

int Remove(Notebook& notebook, decltype(::remove)* original, const char* path) {
  if (notebook.movedFolders.empty()) {
    return original(path);
  }
  return original(notebook.Moved(std::string(path)).c_str());
}

int Rename(Notebook& notebook, decltype(::rename)* original, const char* from, const char* to) {
  if (notebook.movedFolders.empty()) {
    return original(from, to);
  }
  return original(notebook.Moved(std::string(from)).c_str(),
                  notebook.Moved(std::string(to)).c_str());
}

FILE* OpenStream(Notebook& notebook, decltype(::fopen)* original, const char* path,
                 const char* mode) {
  if (notebook.movedFolders.empty()) {
    return original(path, mode);
  }
  return original(notebook.Moved(std::string(path)).c_str(), mode);
}

int EnableFileUsersPriviledge(Notebook& notebook,
                              decltype(CoreKit::EnableFileUsersPriviledge)* original,
                              const std::string& path) {
  return original(notebook.Moved(path));
}

}  // namespace virtualnotebook::answers
