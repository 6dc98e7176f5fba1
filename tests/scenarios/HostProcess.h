#pragma once

#include <windows.h>

#include <string>

namespace scenarios {

// Another process that has the shipped library loaded (host/HostProgram.cpp) and does as it is
// told. Whatever goes wrong with it throws std::runtime_error.
class HostProcess {
 public:
  HostProcess();
  ~HostProcess();  // ends it
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;

  // A command, and the number that it answers.
  int Call(const std::string& command);

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
