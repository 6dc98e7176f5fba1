// Offsets and sizes that several kinds of file have in common.
#pragma once

#include <cstddef>

namespace veloractl {

inline constexpr size_t kLargestFile = 131072;  // of any data file; the library reads no larger one
inline constexpr size_t kHashSize = 32;         // SHA-256

// In the header of a LUT block, and of a user's LUT file.
inline constexpr size_t kTypeOffset = 64;
inline constexpr size_t kPrecisionOffset = 65;
inline constexpr size_t kLengthOffset = 66;

inline constexpr size_t kTagTable = 128;  // in an ICC profile: ICC.1:2010, 7.3

}  // namespace veloractl
