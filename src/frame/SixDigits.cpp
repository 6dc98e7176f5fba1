#include "frame/SixDigits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace velora {
namespace {

constexpr double kPowersOfTen[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};  // exact

// Digits of a number, and the least and the greatest whole numbers that have as many.
constexpr int kDigits = 6;
constexpr double kLeast = 100000;
constexpr double kGreatest = 999999;

// How near the middle between two numbers of six digits is too near: ten thousand times the error
// of the one multiplication.
constexpr double kDoubt = 1e-6;

// The library of the language decides between digits by the exact value, and chooses the notation.
char* WriteByLibrary(double value, char* text) {
  return std::to_chars(text, text + kSixDigitsSize, value, std::chars_format::general, kDigits).ptr;
}

char* WriteDigits(uint32_t number, char* text) {
  for (int i = kDigits; i-- > 0; number /= 10) {
    text[i] = static_cast<char>('0' + number % 10);
  }
  return text + kDigits;
}

}  // namespace

// Numbers that six digits express without an exponent take a fifth of the library's time. The
// rounding of one multiplication can't change a digit, except near the middle.
char* WriteSixDigits(double value, char* text) {
  const double magnitude = std::fabs(value);
  if (!(magnitude >= 1e-4 && magnitude <= kGreatest)) {
    return WriteByLibrary(value, text);
  }
  int whole = kDigits;  // digits ahead of the point; below 1, less the zeros behind it
  while (magnitude * kPowersOfTen[kDigits - whole] < kLeast) {
    --whole;
  }
  const double scaled = magnitude * kPowersOfTen[kDigits - whole];
  const auto lower = static_cast<uint32_t>(scaled);
  const double rest = scaled - lower;
  if (std::fabs(rest - 0.5) < kDoubt || scaled > kGreatest) {
    return WriteByLibrary(value, text);
  }
  if (value < 0) {
    *text++ = '-';
  }
  char digits[kDigits];
  char* end = WriteDigits(rest < 0.5 ? lower : lower + 1, digits);
  while (end[-1] == '0') {
    --end;
  }
  if (whole <= 0) {
    text = std::fill_n(std::copy_n("0.", 2, text), -whole, '0');
    return std::copy(digits, end, text);
  }
  text = std::copy_n(digits, whole, text);
  if (end > digits + whole) {
    *text++ = '.';
    text = std::copy(digits + whole, end, text);
  }
  return text;
}

}  // namespace velora
