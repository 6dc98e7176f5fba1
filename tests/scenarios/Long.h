#pragma once

#include <cstdlib>

namespace scenarios {

// Whether tools/endure runs the tests: those that go on for as long as they are told then take
// their time.
inline bool IsLongRun() { return std::getenv("VELORA_LONG_RUN") != nullptr; }

}  // namespace scenarios
