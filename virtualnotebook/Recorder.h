// What every stand-in does first: it tells the notebook of the call and asks for a fault.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "virtualnotebook/Given.h"
#include "virtualnotebook/Notebook.h"
#include "virtualnotebook/Wmi.h"

namespace virtualnotebook {

// Guards records, faults and state against the module's own threads. Neither this nor anything else
// that runs inside a stand-in calls a function that can be redirected: in a program that stands on
// its own notebook such a call would come back to the stand-in. (A std::mutex waits by events.)
class NotebookLock {
 public:
  void lock() { AcquireSRWLockExclusive(&lock_); }
  void unlock() { ReleaseSRWLockExclusive(&lock_); }

 private:
  SRWLOCK lock_ = SRWLOCK_INIT;
};

using NotebookGuard = std::lock_guard<NotebookLock>;
NotebookLock& TheLock();

// What a call is to give or throw instead of doing anything.
struct Fault {
  uint64_t result;
  DWORD lastError;
  std::optional<std::string> exception;
};

class Recorder {
 public:
  // The installed notebook, or null.
  static Notebook* Current();

  // Runs onCall and notes the call; a fault that is due.
  static std::optional<Fault> Record(Notebook& notebook, Call call);

  // For those who hold the lock.
  static WmiAnswers& Wmi(Notebook& notebook);
  static GivenHandles& Handles(Notebook& notebook);
  static const std::shared_ptr<SensorBoard>& Sensors(const Notebook& notebook);
};

}  // namespace virtualnotebook
