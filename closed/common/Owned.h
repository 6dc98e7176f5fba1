#pragma once

#include <windows.h>

#include <memory>

// Owners of what the system hands out: each closes its own.
namespace closed {

struct HandleCloser {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
// Null where there is none; INVALID_HANDLE_VALUE never gets in.
using OwnedHandle = std::unique_ptr<void, HandleCloser>;

inline OwnedHandle OwnFile(HANDLE file) {
  return OwnedHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

struct LocalFreer {
  void operator()(void* memory) const { LocalFree(memory); }
};
template <typename T>
using OwnedLocal = std::unique_ptr<T, LocalFreer>;

}  // namespace closed
