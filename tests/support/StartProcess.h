#pragma once

#include <windows.h>

#include <string>

namespace testsupport {

// CreateProcessW, with what the tests give it; handles are inherited where startup has some. Tried
// again a few times: Wine fails to start one process in a thousand, while others come and go. False
// with the last error when that does not help.
bool StartProcess(const std::wstring& commandLine, STARTUPINFOW& startup,
                  PROCESS_INFORMATION& process);

}  // namespace testsupport
