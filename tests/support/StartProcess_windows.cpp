#include "support/StartProcess.h"

namespace testsupport {

bool StartProcess(const std::wstring& commandLine, STARTUPINFOW& startup,
                  PROCESS_INFORMATION& process) {
  constexpr int kTries = 5;
  constexpr DWORD kPause = 50;  // milliseconds
  const BOOL inherits = (startup.dwFlags & STARTF_USESTDHANDLES) != 0;
  for (int i = 0; i < kTries; ++i) {
    std::wstring changeable = commandLine;  // the system writes into it
    if (CreateProcessW(nullptr, changeable.data(), nullptr, nullptr, inherits, 0, nullptr, nullptr,
                       &startup, &process)) {
      return true;
    }
    Sleep(kPause);
  }
  return false;
}

}  // namespace testsupport
