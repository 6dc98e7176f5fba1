#pragma once

#include <cstdint>

namespace velora {

// Towards zero. What no int32_t holds, and what is no number, becomes the lowest, as in the
// processor's own conversion.
constexpr int32_t TruncateToInt32(double value) {
  constexpr double kBound = 2147483648.0;
  const bool fits = value > -kBound - 1 && value < kBound;
  return fits ? static_cast<int32_t>(value) : INT32_MIN;
}

}  // namespace velora
