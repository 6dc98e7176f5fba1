// The fast way of encoding a LUT's values against the plain one, bit for bit.
#include "colormath/UserDesignMath.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "frame/Avx2.h"
#include "support/GuardedBuffer.h"

namespace velora {
namespace {

// What a panel's EDID can say: its byte and 100, in hundredths.
double EdidGamma(int byte) { return (byte + 100) / 100.0; }

class UserDesignMathAvx2 : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasAvx2()) {
      GTEST_SKIP() << "a processor without AVX2";
    }
  }

  // From 0 to 1, with all bits of the mantissa.
  double Random() { return static_cast<double>(random_() >> 11) * 0x1p-53; }

  std::mt19937_64 random_;
};

std::vector<uint64_t> BitsOf(std::span<const double> values) {
  std::vector<uint64_t> bits;
  for (const double value : values) {
    bits.push_back(std::bit_cast<uint64_t>(value));
  }
  return bits;
}

void ExpectPlain(const std::vector<double>& values, double gamma) {
  std::vector<double> plain = values;
  DenormalizePlain(plain, gamma);
  std::vector<double> fast = values;
  DenormalizeAvx2(fast, gamma);
  if (fast == plain) {
    return;
  }
  for (size_t i = 0; i < values.size(); ++i) {
    ASSERT_EQ(std::bit_cast<uint64_t>(fast[i]), std::bit_cast<uint64_t>(plain[i]))
        << std::hexfloat << values[i] << " " << gamma;
  }
}

TEST_F(UserDesignMathAvx2, TenMillionRandomValues) {
  std::vector<double> values(40'000);
  for (int byte = 0; byte < 256; ++byte) {
    for (double& value : values) {
      value = Random() * 1.1 - 0.05;
    }
    ExpectPlain(values, EdidGamma(byte));
  }
}

// Dark values, down to where the table ends and far beyond.
TEST_F(UserDesignMathAvx2, AllMagnitudes) {
  std::vector<double> values;
  for (int exponent = 0; exponent > -80; --exponent) {
    for (int i = 0; i < 200; ++i) {
      values.push_back(std::ldexp(1 + Random(), exponent));
    }
  }
  for (int byte = 0; byte < 256; byte += 5) {
    ExpectPlain(values, EdidGamma(byte));
  }
}

// Values whose power is half-way between two floats, as near as a double comes to it, and the
// doubles around. There the smallest error of a power would show.
TEST_F(UserDesignMathAvx2, RoundingBoundaries) {
  for (const double gamma : {1.0, 1.5, 1.8, 2.0, 2.2, 2.4, 3.0, 3.55}) {
    std::vector<double> values;
    for (uint32_t step = 0; step < 150'000; ++step) {
      const auto lower = std::bit_cast<float>(std::bit_cast<uint32_t>(1.0F) - 1 - step * 521);
      const double halfWay = (double{lower} + std::nextafter(lower, 2.0F)) / 2;
      double value = std::pow(halfWay, gamma);
      for (int i = 0; i < 4; ++i) value = std::nextafter(value, 0);
      for (int i = 0; i < 9; ++i, value = std::nextafter(value, 2)) values.push_back(value);
    }
    ExpectPlain(values, gamma);
  }
}

// The middles of the table's intervals, their ends, and their neighbours.
TEST_F(UserDesignMathAvx2, EndsOfTheIntervals) {
  std::vector<double> values;
  for (int i = 0; i <= 33 * 64; ++i) {
    const double value = std::ldexp(1 + i % 64 / 64.0, -1 - i / 64);
    for (const double toward : {0.0, 1.0}) {
      values.push_back(value);
      values.push_back(std::nextafter(value, toward));
      values.push_back(value + (toward - value) * 0x1p-43);
      values.push_back(value + (toward - value) * 0x1p-41);
    }
  }
  for (int byte = 0; byte < 256; ++byte) {
    ExpectPlain(values, EdidGamma(byte));
  }
}

TEST_F(UserDesignMathAvx2, OddValuesInEachLane) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> odd = {0.0, -0.0, -1e-20, -1.0, -kInfinity, kInfinity, kNan, -kNan, 1e300};
  for (const double edge : {1e-16, 0x1p-32, 0.9999999999999999, 1.0}) {
    odd.insert(odd.end(), {std::nextafter(edge, 0), edge, std::nextafter(edge, 2)});
  }
  for (const double value : odd) {
    for (size_t lane = 0; lane < 4; ++lane) {
      std::vector<double> plain = {0.1, 0.2, 0.3, 0.4};
      plain[lane] = value;
      std::vector<double> fast = plain;
      DenormalizePlain(plain, 2.2);
      DenormalizeAvx2(fast, 2.2);
      EXPECT_EQ(BitsOf(fast), BitsOf(plain)) << value;
    }
  }
}

TEST_F(UserDesignMathAvx2, BoundsOfTheGamma) {
  std::vector<double> values(1000);
  for (double& value : values) {
    value = Random();
  }
  ExpectPlain(values, kLeastGammaForAvx2);
  ExpectPlain(values, kGreatestGammaForAvx2);
}

TEST_F(UserDesignMathAvx2, EveryCount) {
  for (size_t count = 0; count < 20; ++count) {
    const std::vector<double> values(count, 0.25);
    const testsupport::GuardedBuffer buffer(
        {reinterpret_cast<const uint8_t*>(values.data()), count * sizeof(double)});
    auto* fast = reinterpret_cast<double*>(buffer.data());
    DenormalizeAvx2({fast, count}, 2.0);
    EXPECT_EQ(std::vector<double>(fast, fast + count), std::vector<double>(count, 511.5));
  }
}

}  // namespace
}  // namespace velora
