#pragma once

#include <string>
#include <string_view>

// Doubles as text. The C runtime's conversions follow the locale that the host has set, and the
// streams' switch it for the whole process while they run; these do neither.
namespace velora {

// As printf's "%f": six decimals.
std::wstring FormatDouble(double value);

// As std::stod, with its exceptions: the number at the start of the text, behind white space.
double ParseDouble(std::wstring_view text);

// As a stream's >>: value becomes the number at the start of the text, 0 if there is none, the
// largest finite number of its sign beyond the range. Text that is all white space leaves it alone.
// For text of at most 259 characters.
void ExtractDouble(std::wstring_view text, double& value);

// The same for an int or unsigned long; a sign turns an unsigned number within its bits.
template <typename T>
void ExtractInteger(std::wstring_view text, T& value);

}  // namespace velora
