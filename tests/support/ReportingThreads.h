// The threads that a module reports telemetry on. Nobody has their handles: they introduce
// themselves when they make their event.
#pragma once

#include <windows.h>

#include <chrono>
#include <cstddef>
#include <mutex>
#include <vector>

#include "virtualnotebook/Notebook.h"
#include "virtualnotebook/Recorder.h"

namespace testsupport {

// Takes the notebook's onCall. Knows all threads but the one that it was made on.
class ReportingThreads {
 public:
  explicit ReportingThreads(virtualnotebook::Notebook& notebook) {
    notebook.onCall = [this](const virtualnotebook::Call& call) {
      if (call.function == "OrbEvent::OrbEvent" && GetCurrentThreadId() != owner_) {
        Introduce();
        const virtualnotebook::NotebookGuard passing(gate_);
      }
    };
  }
  ~ReportingThreads() {
    for (const HANDLE thread : threads_) CloseHandle(thread);
  }
  ReportingThreads(const ReportingThreads&) = delete;
  ReportingThreads& operator=(const ReportingThreads&) = delete;

  // For as long as the result lives no thread gets to its event.
  std::unique_lock<virtualnotebook::NotebookLock> Hold() { return std::unique_lock(gate_); }

  // Waits until this many events have been made and their threads are gone; false: they stay.
  bool End(size_t events) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (Introduced().size() < events) {
      if (std::chrono::steady_clock::now() > limit) return false;
      SwitchToThread();
    }
    for (const HANDLE thread : Introduced()) {
      if (WaitForSingleObjectEx(thread, 20000, FALSE) != WAIT_OBJECT_0) return false;
    }
    return true;
  }

 private:
  void Introduce() {
    HANDLE thread = nullptr;
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &thread, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    const virtualnotebook::NotebookGuard guard(lock_);
    threads_.push_back(thread);
  }
  std::vector<HANDLE> Introduced() {
    const virtualnotebook::NotebookGuard guard(lock_);
    return threads_;
  }

  const DWORD owner_ = GetCurrentThreadId();
  virtualnotebook::NotebookLock lock_;
  std::vector<HANDLE> threads_;
  virtualnotebook::NotebookLock gate_;
};

}  // namespace testsupport
