#include "scenarios/HostProcess.h"

#include <stdexcept>

#include "support/StartProcess.h"

namespace scenarios {
namespace {

constexpr DWORD kPatience = 120000;  // milliseconds for whatever a test waits for
constexpr DWORD kPoll = 5;           // milliseconds

std::wstring PathOf(const wchar_t* program) {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::wstring text = path;
  return text.substr(0, text.rfind(L'\\') + 1) + program;
}

// A pipe of which the other process inherits one end.
void MakePipe(HANDLE& readEnd, HANDLE& writeEnd, HANDLE& ownEnd) {
  SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
  if (!CreatePipe(&readEnd, &writeEnd, &inherited, 0) ||
      !SetHandleInformation(ownEnd, HANDLE_FLAG_INHERIT, 0)) {
    throw std::runtime_error("no pipe");
  }
}

}  // namespace

HostProcess::HostProcess(const wchar_t* program) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  MakePipe(startup.hStdInput, input_, input_);
  MakePipe(output_, startup.hStdOutput, output_);
  PROCESS_INFORMATION process{};
  const bool started = testsupport::StartProcess(L"\"" + PathOf(program) + L"\"", startup, process);
  CloseHandle(startup.hStdInput);
  CloseHandle(startup.hStdOutput);
  if (!started) {
    throw std::runtime_error("the host can't be started");
  }
  CloseHandle(process.hThread);
  process_ = process.hProcess;
}

HostProcess::~HostProcess() {
  Kill();
  CloseHandle(input_);
  CloseHandle(output_);
  CloseHandle(process_);
}

int HostProcess::Call(const std::string& command) { return std::stoi(Ask(command)); }

std::string HostProcess::Ask(const std::string& command) {
  Send(command);
  return Receive();
}

void HostProcess::Send(const std::string& command) const {
  const std::string line = command + "\n";
  DWORD written = 0;
  if (!WriteFile(input_, line.data(), static_cast<DWORD>(line.size()), &written, nullptr)) {
    throw std::runtime_error("the host takes no commands");
  }
}

std::string HostProcess::Receive() {
  std::string line;
  while (line.empty() || line.back() != '\n') {
    char c = 0;
    DWORD read = 0;
    if (!HasAnswered(kPatience) || !ReadFile(output_, &c, 1, &read, nullptr) || read != 1) {
      throw std::runtime_error("the host does not answer");
    }
    line += c;
  }
  return line.substr(0, line.find_first_of("\r\n"));
}

bool HostProcess::HasAnswered(DWORD milliseconds) const {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  DWORD available = 0;
  while (PeekNamedPipe(output_, nullptr, 0, nullptr, &available, nullptr) && available == 0 &&
         GetTickCount64() < end) {
    Sleep(kPoll);
  }
  return available > 0;
}

void HostProcess::Kill() const {
  TerminateProcess(process_, 0);
  WaitForSingleObject(process_, kPatience);
}

DWORD RunTest(const std::wstring& name) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const std::wstring command =
      L"\"" + std::wstring(program) + L"\" --gtest_also_run_disabled_tests --gtest_filter=" + name;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!testsupport::StartProcess(command, startup, process)) {
    return GetLastError();
  }
  DWORD result = WAIT_FAILED;
  if (WaitForSingleObject(process.hProcess, kPatience) != WAIT_OBJECT_0) {
    TerminateProcess(process.hProcess, WAIT_TIMEOUT);
  }
  GetExitCodeProcess(process.hProcess, &result);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return result;
}

}  // namespace scenarios
