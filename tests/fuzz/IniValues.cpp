// The values of an INI file, and the numbers that the registry keeps as texts: whatever the text
// is, it reads as a stream of the C++ library reads it, and as strtod.
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "fuzz/Fuzz.h"
#include "settings/NumberText.h"

namespace {

constexpr size_t kLongestValue = 259;  // characters, of an INI value that is read

bool AreAlike(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

// Bytes are characters; those from 0xE0 on stand for characters beyond one byte.
std::wstring TextOf(fuzz::Input input) {
  std::wstring text;
  for (const uint8_t byte : input.TakeBytes(kLongestValue)) {
    text.push_back(byte < 0xE0 ? byte : static_cast<wchar_t>(byte * 256 + 5));
  }
  return text;
}

void CheckExtractDouble(const std::wstring& text) {
  double value = 42;
  velora::ExtractDouble(text, value);
  double expected = 42;
  std::wistringstream stream(text);
  stream.imbue(std::locale::classic());
  stream >> expected;
  fuzz::Require(AreAlike(value, expected), "a double reads as from a stream");
}

// By hand: blanks, a sign, decimal digits; the limit of the type where they are too many. A sign
// takes an unsigned number from 0.
template <typename Integer>
Integer PlainInteger(const std::wstring& text, Integer before) {
  using Limits = std::numeric_limits<Integer>;
  const size_t start = text.find_first_not_of(L" \t\n\v\f\r");
  if (start == std::wstring::npos) {
    return before;
  }
  size_t i = start;
  const bool isNegative = text[i] == L'-';
  if (text[i] == L'-' || text[i] == L'+') {
    ++i;
  }
  constexpr bool kIsSigned = Limits::is_signed;
  __extension__ using Wide = unsigned __int128;
  const Wide limit = static_cast<Wide>(Limits::max()) + (kIsSigned && isNegative ? 1 : 0);
  Wide number = 0;
  bool isBeyond = false;
  for (; i < text.size() && text[i] >= L'0' && text[i] <= L'9'; ++i) {
    number = number * 10 + static_cast<Wide>(text[i] - L'0');
    isBeyond = isBeyond || number > limit;
    number = isBeyond ? limit : number;
  }
  if (isBeyond) {
    return kIsSigned && isNegative ? Limits::min() : Limits::max();
  }
  return static_cast<Integer>(isNegative ? -number : number);
}

template <typename Integer>
void CheckExtractInteger(const std::wstring& text) {
  Integer value = 42;
  velora::ExtractInteger(text, value);
  fuzz::Require(value == PlainInteger<Integer>(text, 42), "an integer reads as by hand");
}

// As strtod reads it, with its errors. In range, other than with glibc's, are the smallest numbers,
// which are inexact and no more than that, and a NaN whatever number it carries.
void CheckParseDouble(const std::wstring& text) {
  errno = 0;
  wchar_t* end = nullptr;
  const double expected = std::wcstod(text.c_str(), &end);
  const bool isNumber = end != text.c_str();
  const bool isInRange =
      errno != ERANGE || std::isnan(expected) || (expected != 0 && std::fabs(expected) < 1);
  try {
    const double value = velora::ParseDouble(text);
    fuzz::Require(isNumber && isInRange && AreAlike(value, expected), "as strtod reads it");
  } catch (const std::invalid_argument&) {
    fuzz::Require(!isNumber, "strtod finds no number either");
  } catch (const std::out_of_range&) {
    fuzz::Require(isNumber && !isInRange, "strtod finds it out of range too");
  }
}

void CheckFormatDouble(double value) {
  char expected[400];
  std::snprintf(expected, sizeof expected, "%f", value);
  const std::wstring text = velora::FormatDouble(value);
  fuzz::Require(std::string(text.begin(), text.end()) == expected, "printf writes the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::wstring text = TextOf({data, size});
  CheckExtractDouble(text);
  CheckExtractInteger<int>(text);
  CheckExtractInteger<unsigned long>(text);
  CheckParseDouble(text);
  CheckFormatDouble(fuzz::Input(data, size).Take<double>());
  return 0;
}
