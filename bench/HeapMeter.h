// Tells how much heap a module has taken.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

#include "virtualnotebook/ImportRedirection.h"

namespace bench {

// Counts the blocks that a module takes from the C runtime's heap and gives back, as long as the
// object lives; its static libraries are part of the module. One at a time, one thread.
class HeapMeter {
 public:
  explicit HeapMeter(HMODULE module);

  void Reset() const;

  // Above what was out at the reset, in bytes: the most at one time, and what is left, which is
  // negative where older blocks came back.
  int64_t Peak() const;
  int64_t Kept() const;

 private:
  std::unique_ptr<virtualnotebook::ImportRedirection> redirection_;
};

}  // namespace bench
