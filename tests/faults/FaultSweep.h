// A fault at every call: each call of the system or of a closed library that an export makes fails
// once, in each way that the function has of failing.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "support/Registry.h"
#include "virtualnotebook/HostedLibrary.h"

namespace faults {

// What a function gives when it fails, and leaves as the last error.
struct FaultKind {
  uint64_t result;
  DWORD lastError = 0;
};

// All ways in which a function of the notebook's imports can fail; none for one that cannot.
const std::vector<FaultKind>& FaultKindsOf(const std::string& function);

// The fault of one run.
struct Fault {
  std::string function;  // empty: the run has no fault
  unsigned n = 0;        // the n-th call of it; 0: every one
  FaultKind kind = {};
  virtualnotebook::Call call;  // that failed, the first one for n = 0
  unsigned nOfItsKind = 0;     // among the calls of the function with the same arguments
  // Of the call that opened the file or key, or ran the query, that this one is about.
  std::vector<std::wstring> opener = {};

  bool IsOf(const std::string& name) const { return function == name; }
  // An argument of the call or of its opener contains the text.
  bool Names(const std::wstring& text) const;
};
std::string Describe(const Fault& fault);

struct Sweep {
  std::string name;                                   // as the table of the faults has it
  std::function<virtualnotebook::Notebook&()> start;  // makes everything as it is ahead of the call
  std::function<void()> call;
  std::function<void(const Fault&)> check;  // after each call; the faults are cleared
  std::vector<std::string> without = {};    // functions that are left alone
  bool also0 = true;                        // runs in which every call of a function fails, too
  // Replies that hold for what does not fail, for calls that would take a run's time.
  std::function<void(virtualnotebook::Notebook&)> answer = {};
};

// Makes the first, second, ... call of each function fail, in each way, until a run passes without
// a fault; check sees each run, and the first and the last ones of each function are without. The
// number of faults goes into a table that is printed at the end of the program.
void RunSweep(const Sweep& sweep);

// For sweeps of another shape.
void CountFaults(const std::string& name, size_t faults);

// The library as a new host process has it.
class FreshLibrary {
 public:
  FreshLibrary();

  virtualnotebook::HostedLibrary* operator->() { return &*library_; }
  virtualnotebook::Notebook& notebook() { return library_->notebook; }

 private:
  std::optional<virtualnotebook::HostedLibrary> library_;
};

// Registry keys and files that this process has open. (The system itself comes and goes with
// threads and events.)
std::set<HANDLE> OpenHandles();
void CloseHandles(const std::set<HANDLE>& handles);  // that the library has left open

// A key with all below it, by path; no row for a key that is not there.
using RegistryTree = std::map<std::wstring, testsupport::RegistryValues>;
RegistryTree ReadTree(HKEY root, const std::wstring& path);
void WriteTree(HKEY root, const RegistryTree& tree);

}  // namespace faults
