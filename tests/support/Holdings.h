#pragma once

#include <cstddef>
#include <initializer_list>
#include <iosfwd>

namespace testsupport {

// What this process holds of the system.
struct Holdings {
  size_t handles = 0;
  size_t keys = 0;  // of those, open registry keys
  size_t threads = 0;
  size_t blocks = 0;  // of all heaps
  size_t bytes = 0;   // in them

  static Holdings Now();

  // The same with so many times these blocks more.
  Holdings With(size_t times, std::initializer_list<size_t> sizes) const;

  friend bool operator==(const Holdings&, const Holdings&) = default;
};

void PrintTo(const Holdings& held, std::ostream* out);

}  // namespace testsupport
