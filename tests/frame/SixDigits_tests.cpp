#include "frame/SixDigits.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace velora {
namespace {

std::string Written(double value) {
  std::array<char, kSixDigitsSize + 1> text;
  text.fill('#');
  char* const end = WriteSixDigits(value, text.data());
  EXPECT_EQ(text.back(), '#');
  return {text.data(), end};
}

std::string ByLibrary(double value) {
  std::array<char, 64> text;
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 6);
  return {text.data(), end};
}

void ExpectLibrary(double value) {
  ASSERT_EQ(Written(value), ByLibrary(value)) << std::hexfloat << value;
  ASSERT_EQ(Written(-value), ByLibrary(-value)) << std::hexfloat << value;
}

TEST(SixDigits, Texts) {
  EXPECT_EQ(Written(0.5), "0.5");
  EXPECT_EQ(Written(0.3125), "0.3125");
  EXPECT_EQ(Written(0.9990234375), "0.999023");
  EXPECT_EQ(Written(1.0), "1");
  EXPECT_EQ(Written(-2.2), "-2.2");
  EXPECT_EQ(Written(6500.0), "6500");
  EXPECT_EQ(Written(123456.0), "123456");
  EXPECT_EQ(Written(100000.0), "100000");
  EXPECT_EQ(Written(999999.0), "999999");
  EXPECT_EQ(Written(999999.5), "1e+06");
  EXPECT_EQ(Written(0.0001), "0.0001");
  EXPECT_EQ(Written(0.00012345678), "0.000123457");
  EXPECT_EQ(Written(0.00009999999), "0.0001");
  EXPECT_EQ(Written(0.00009), "9e-05");
  EXPECT_EQ(Written(0.9999995), "1");  // the double is a little above
  EXPECT_EQ(Written(0.0), "0");
  EXPECT_EQ(Written(-0.0), "-0");
}

// Half-way exactly: to the even digit.
TEST(SixDigits, Halves) {
  EXPECT_EQ(Written(100000.5), "100000");
  EXPECT_EQ(Written(100001.5), "100002");
  EXPECT_EQ(Written(0.0078125), "0.0078125");
  EXPECT_EQ(Written(8.0 / 1024 + 0.25), "0.257812");   // 0.2578125
  EXPECT_EQ(Written(24.0 / 1024 + 0.25), "0.273438");  // 0.2734375
}

TEST(SixDigits, AllCoordinatesOfAnEdid) {
  for (int i = 0; i < 1024; ++i) ExpectLibrary(i / 1024.0);
}

TEST(SixDigits, RandomNumbersOfTheUsualSize) {
  std::mt19937_64 random;
  for (int i = 0; i < 300'000; ++i) {
    const double mantissa = 1 + static_cast<double>(random() >> 12) * 0x1p-52;
    ExpectLibrary(std::ldexp(mantissa, static_cast<int>(random() % 36) - 15));
  }
}

TEST(SixDigits, AnyBits) {
  std::mt19937_64 random;
  for (int i = 0; i < 100'000; ++i) {
    const auto value = std::bit_cast<double>(uint64_t{random()});
    if (!std::isnan(value)) ExpectLibrary(value);
  }
  ExpectLibrary(std::numeric_limits<double>::infinity());
  EXPECT_EQ(Written(std::numeric_limits<double>::quiet_NaN()), "nan");
}

// The doubles next to the middle between two numbers of six digits, and next to each power of ten.
TEST(SixDigits, RoundingBoundaries) {
  std::mt19937_64 random;
  for (int i = 0; i < 40'000; ++i) {
    const double number = static_cast<double>(100'000 + random() % 900'000) + 0.5 * (i % 8 != 0);
    double value = number / std::pow(10, i % 10);
    for (int k = 0; k < 3; ++k) value = std::nextafter(value, 0);
    for (int k = 0; k < 7; ++k, value = std::nextafter(value, 1e9)) ExpectLibrary(value);
  }
  for (int exponent = -6; exponent < 8; ++exponent) {
    double value = std::pow(10, exponent);
    for (int k = 0; k < 20; ++k) value = std::nextafter(value, 0);
    for (int k = 0; k < 40; ++k, value = std::nextafter(value, 1e9)) ExpectLibrary(value);
  }
}

}  // namespace
}  // namespace velora
