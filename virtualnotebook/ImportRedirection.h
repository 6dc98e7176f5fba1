#pragma once

#include <windows.h>

#include <span>
#include <vector>

namespace virtualnotebook {

// A function that a module may import, and what is to be called in its place.
struct ImportedFunction {
  const char* library;  // "kernel32.dll"; case does not matter
  const char* symbol;   // the name it is imported by; C++ functions: the mangled one
  const char* name;     // what records and faults call it
  void* standIn;
  void** original;  // receives the real function where the module imports it
};

// Points a module's imports of the given functions at their stand-ins, and back again at the end of
// its life. A function that the module does not import is skipped. The module stays loaded until
// then, also when its owner frees it meanwhile.
class ImportRedirection {
 public:
  ImportRedirection(HMODULE module, std::span<const ImportedFunction> functions);
  ~ImportRedirection();  // NOLINT(bugprone-exception-escape): as at the definition
  ImportRedirection(const ImportRedirection&) = delete;
  ImportRedirection& operator=(const ImportRedirection&) = delete;

 private:
  struct Slot {
    void** address;
    void* original;
  };

  HMODULE module_ = nullptr;
  std::vector<Slot> slots_;
};

}  // namespace virtualnotebook
