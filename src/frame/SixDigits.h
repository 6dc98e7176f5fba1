#pragma once

#include <cstddef>

namespace velora {

inline constexpr size_t kSixDigitsSize = 16;  // "-1.23457e+308" is the longest

// The text of a number with six significant digits, as a stream has it by default, to text,
// kSixDigitsSize characters without a terminator; its end. No locale has an influence.
char* WriteSixDigits(double value, char* text);

}  // namespace velora
