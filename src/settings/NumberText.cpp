#include "settings/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace velora {
namespace {

std::from_chars_result FromChars(std::string_view text, double& value, std::chars_format format) {
  return std::from_chars(text.data(), text.data() + text.size(), value, format);
}

bool Contains(std::string_view set, char c) { return set.find(c) != std::string_view::npos; }

// The text up to the first character that no number contains.
std::string Ascii(std::wstring_view text) {
  std::string ascii;
  for (const wchar_t c : text) {
    if (c >= 0x80) {
      break;
    }
    ascii.push_back(static_cast<char>(c));
  }
  return ascii;
}

// "0x" alone is not hexadecimal but the number 0 and trailing text.
bool IsHexadecimal(std::string_view text) {
  return (text.starts_with("0x") || text.starts_with("0X")) && text.size() > 2 &&
         Contains("0123456789abcdefABCDEF.", text[2]);
}

// The number at the start of the text: sign, digits with a point, exponent. Empty without digits,
// and for an exponent that has none.
std::string_view ScanNumber(std::string_view text) {
  size_t end = 0;
  const auto take = [&text, &end](std::string_view set) {
    const bool isTaken = end < text.size() && Contains(set, text[end]);
    end += isTaken ? 1 : 0;
    return isTaken;
  };
  const auto takeDigits = [&take] {
    bool isTaken = false;
    while (take("0123456789")) {
      isTaken = true;
    }
    return isTaken;
  };
  take("+-");
  const bool hasWhole = takeDigits();
  const bool hasFraction = take(".") && takeDigits();
  if (!hasWhole && !hasFraction) {
    return {};
  }
  if (take("eE")) {
    take("+-");
    if (!takeDigits()) {
      return {};
    }
  }
  return text.substr(0, end);
}

}  // namespace

std::wstring FormatDouble(double value) {
  // Sign, digits of the largest double, point, decimals.
  constexpr size_t kLongest = 1 + (std::numeric_limits<double>::max_exponent10 + 1) + 1 + 6;
  std::array<char, kLongest> text;
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6);
  return {text.data(), end};
}

double ParseDouble(std::wstring_view text) {
  const std::string ascii = Ascii(text);
  std::string_view number = ascii;
  number.remove_prefix(std::min(number.find_first_not_of(" \t\n\v\f\r"), number.size()));
  const bool isNegative = number.starts_with('-');
  if (isNegative || number.starts_with('+')) {
    number.remove_prefix(1);
  }
  const bool isHexadecimal = IsHexadecimal(number);
  double value = 0;
  auto error = std::errc::invalid_argument;
  if (isHexadecimal) {
    // from_chars would take a second sign of the exponent, too.
    number = number.substr(2, number.find("+-") - 2);
    error = FromChars(number, value, std::chars_format::hex).ec;
  } else if (!number.starts_with('-')) {  // from_chars would take a second sign
    error = FromChars(number, value, std::chars_format::general).ec;
  }
  if (error == std::errc::result_out_of_range) {
    throw std::out_of_range("stod argument out of range");
  }
  if (error == std::errc::invalid_argument && !isHexadecimal) {
    throw std::invalid_argument("invalid stod argument");
  }
  return isNegative ? -value : value;
}

void ExtractDouble(std::wstring_view text, double& value) {
  const auto isSpace = [](wchar_t c) { return std::isspace(c, std::locale::classic()); };
  const auto start = std::ranges::find_if_not(text, isSpace);
  if (start == text.end()) {
    return;
  }
  const std::string ascii = Ascii({start, text.end()});
  std::string_view number = ScanNumber(ascii);
  const bool isNegative = number.starts_with('-');
  if (isNegative || number.starts_with('+')) {
    number.remove_prefix(1);
  }
  value = 0;
  const bool hasNegativeExponent = Contains(number, '-');
  if (FromChars(number, value, std::chars_format::general).ec == std::errc::result_out_of_range &&
      !hasNegativeExponent) {
    value = std::numeric_limits<double>::max();
  }
  if (isNegative) {
    value = -value;
  }
}

template <typename T>
void ExtractInteger(std::wstring_view text, T& value) {
  std::wistringstream stream{std::wstring(text)};
  stream.imbue(std::locale::classic());
  stream >> value;
}

template void ExtractInteger(std::wstring_view, int&);
template void ExtractInteger(std::wstring_view, unsigned long&);

}  // namespace velora
