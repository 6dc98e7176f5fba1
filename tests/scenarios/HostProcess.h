#pragma once

#include <windows.h>

#include <string>

namespace scenarios {

// Programs that have the shipped library loaded and do as they are told.
inline constexpr wchar_t kHost[] = L"scenario_tests_host.exe";  // host/HostProgram.cpp
inline constexpr wchar_t kMachineHost[] =
    L"scenario_tests_machine_host.exe";  // machinehost/MachineHostProgram.cpp

// One of them as another process. Whatever goes wrong with it throws std::runtime_error.
class HostProcess {
 public:
  explicit HostProcess(const wchar_t* program = kHost);
  ~HostProcess();  // ends it
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;

  // A command, and the number that it answers, or all of the answer.
  int Call(const std::string& command);
  std::string Ask(const std::string& command);

  // The same in two steps, for what takes its time.
  void Send(const std::string& command) const;
  std::string Receive();

  // Whether an answer comes within the time.
  bool HasAnswered(DWORD milliseconds) const;

  // Ends the process where it stands.
  void Kill() const;

 private:
  HANDLE process_ = nullptr;
  HANDLE input_ = nullptr;   // of the process
  HANDLE output_ = nullptr;  // of the process
};

// Runs one test of this program in a process of its own, disabled or not; its exit code.
DWORD RunTest(const std::wstring& name);

}  // namespace scenarios
