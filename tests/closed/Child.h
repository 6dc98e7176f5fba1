#pragma once

#include <windows.h>

#include <string>

#include "common/Owned.h"

namespace closedtests {

constexpr DWORD kPatience = 60000;  // milliseconds for whatever a test waits for

// Directory of the test programs, with a backslash.
inline std::wstring ProgramDirectory() {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::wstring text = path;
  return text.substr(0, text.rfind(L'\\') + 1);
}

inline std::wstring ChildPath() { return ProgramDirectory() + L"closed_tests_child.exe"; }

// A run of the child program (ChildProgram.cpp).
class Child {
 public:
  explicit Child(const std::wstring& arguments) {
    std::wstring commandLine = L"child " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(ChildPath().c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                       nullptr, &startup, &process)) {
      process_.reset(process.hProcess);
      CloseHandle(process.hThread);
    }
  }

  // The child's result once it has ended; STILL_ACTIVE if it does not.
  DWORD Wait() const {
    DWORD result = STILL_ACTIVE;
    if (process_ && WaitForSingleObject(process_.get(), kPatience) == WAIT_OBJECT_0) {
      GetExitCodeProcess(process_.get(), &result);
    }
    return result;
  }

  bool HasEnded() const { return WaitForSingleObject(process_.get(), 0) == WAIT_OBJECT_0; }

  // Ends the child where it stands.
  void Kill() const {
    TerminateProcess(process_.get(), 99);
    WaitForSingleObject(process_.get(), kPatience);
  }

 private:
  closed::OwnedHandle process_;
};

}  // namespace closedtests
