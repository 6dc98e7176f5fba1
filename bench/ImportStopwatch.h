// Tells what a module takes of its own from what the functions that it calls take.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "virtualnotebook/ImportRedirection.h"

namespace bench {

// Ticks of the processor's time stamp counter.
using Ticks = uint64_t;
Ticks Now();
double Seconds(Ticks ticks);

// Stops the time that one thread spends in the functions that a module imports, as long as the
// object lives; put in front of a notebook, in its stand-ins. The C runtime, locks and what else
// never leaves the process count as the module's own. A call from within a call, by a callback, is
// part of the outer one. One at a time.
class ImportStopwatch {
 public:
  explicit ImportStopwatch(HMODULE module);
  ~ImportStopwatch();
  ImportStopwatch(const ImportStopwatch&) = delete;
  ImportStopwatch& operator=(const ImportStopwatch&) = delete;

  struct Function {
    std::string library;
    std::string name;  // C++ functions: mangled
    Ticks ticks;
    uint64_t calls;
  };

  // Back to zero; from now on of the calling thread, and not of any before that. Not from within a
  // call.
  void Reset();

  // From now on of the calling thread, perhaps from within one of its calls, which goes uncounted.
  // No other thread that was followed may be in a call.
  void Follow() const;

  // In all functions together, without what stopping the time takes.
  Ticks Spent() const;
  uint64_t Calls() const;

  // What stopping the time has added to the module's own.
  Ticks Overhead() const;

  // Those that were called.
  std::vector<Function> Functions() const;

 private:
  void Calibrate();

  std::vector<virtualnotebook::ImportedFunction> functions_;
  void* code_ = nullptr;
  std::unique_ptr<virtualnotebook::ImportRedirection> redirection_;
  Ticks insidePerCall_ = 0;
  Ticks outsidePerCall_ = 0;
};

}  // namespace bench
