// The fast way of composing 3D LUTs against the plain one, which LutComposition_tests.cpp proves.
#include "lut/LutComposition.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "frame/Avx2.h"
#include "lut/LutBlock.h"
#include "support/FailingNew.h"
#include "support/GuardedBuffer.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;
using Lut = std::vector<double>;

constexpr size_t kLutValues = LutValueCount(k3DEntries);

class LutCompositionAvx2 : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasAvx2()) {
      GTEST_SKIP() << "a processor without AVX2";
    }
  }

  // Some 16 bits, the same in each run.
  int Random() { return static_cast<int>(random_() >> 48); }

  Lut RandomLut(int bound) {
    Lut lut(kLutValues);
    for (double& value : lut) {
      value = Random() % bound;
    }
    return lut;
  }

  std::mt19937_64 random_;
};

Lut Plain(const Lut& first, const Lut& second) {
  Lut result(kLutValues, -1);
  EXPECT_TRUE(ComposeLutsPlain(first.data(), second.data(), result.data()));
  return result;
}

// Empty where the way does not go. Each of the three arrays ends at a page without access.
Lut Fast(const Lut& first, const Lut& second) {
  const auto guarded = [](const Lut& lut) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(lut.data());
    return GuardedBuffer({bytes, lut.size() * sizeof(double)});
  };
  const GuardedBuffer firstBuffer = guarded(first);
  const GuardedBuffer secondBuffer = guarded(second);
  const GuardedBuffer resultBuffer = guarded(Lut(kLutValues, -1));
  auto* result = reinterpret_cast<double*>(resultBuffer.data());
  if (!ComposeLutsAvx2(reinterpret_cast<const double*>(firstBuffer.data()),
                       reinterpret_cast<const double*>(secondBuffer.data()), result)) {
    return {};
  }
  return {result, result + kLutValues};
}

TEST_F(LutCompositionAvx2, TenMillionRandomPoints) {
  const Lut second = RandomLut(1024);
  for (int point = 0; point < 10'000'000; point += k3DEntries) {
    const Lut first = RandomLut(1024);
    ASSERT_EQ(Fast(first, second), Plain(first, second)) << point;
  }
}

TEST_F(LutCompositionAvx2, RandomLutsOfAllWidths) {
  for (const int bound : {1, 2, 64, 1024, 4096, 32768}) {
    for (int i = 0; i < 20; ++i) {
      const Lut first = RandomLut(1024);
      const Lut second = RandomLut(bound);
      ASSERT_EQ(Fast(first, second), Plain(first, second)) << bound;
    }
  }
}

// All 262,144 places in a cell, among them every order of the fractions and every tie, in cells at
// both ends and inside; the corners' values make sums of every remainder, the halves too, and the
// largest there are.
TEST_F(LutCompositionAvx2, AllFractions) {
  const Lut smallSteps = RandomLut(4);
  Lut extremes(kLutValues);
  for (double& value : extremes) {
    value = Random() % 2 == 0 ? 0 : 32767;
  }
  for (const int cell : {0, 7, 15}) {
    int place = 0;
    while (place < 64 * 64 * 64) {
      Lut first;
      for (int i = 0; i < k3DEntries; ++i, ++place) {
        for (const int fraction : {place >> 12, place >> 6, place}) {
          first.push_back(64 * cell + (fraction & 63));
        }
      }
      ASSERT_EQ(Fast(first, smallSteps), Plain(first, smallSteps)) << cell << " " << place;
      ASSERT_EQ(Fast(first, extremes), Plain(first, extremes)) << cell << " " << place;
    }
  }
}

TEST_F(LutCompositionAvx2, CutsFractionsOfBoth) {
  Lut first = RandomLut(1024);
  Lut second = RandomLut(1024);
  const Lut expected = Plain(first, second);
  for (size_t i = 0; i < kLutValues; ++i) {
    first[i] += 0.9;
    second[i] += 0.9;
  }
  EXPECT_EQ(Fast(first, second), expected);
}

// Everything that is not on the grid counts as its last value, no number and what is below 0 too.
TEST_F(LutCompositionAvx2, AnyValueOfTheFirst) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double values[] = {1023,         1023.9,       1024,
                           1087,         4095,         32767,
                           32768,        65535,        65536,
                           2147483647,   1e300,        kInfinity,
                           -0.5,         -1,           -32768,
                           -65536,       -1e300,       -kInfinity,
                           2147483648.0, 4294967296.0, std::numeric_limits<double>::quiet_NaN()};
  const Lut second = RandomLut(1024);
  Lut first = RandomLut(1024);
  for (size_t i = 0; i < kLutValues; ++i) {
    if (Random() % 4 == 0) {
      first[i] = values[static_cast<size_t>(Random()) % std::size(values)];
    }
  }
  EXPECT_EQ(Fast(first, second), Plain(first, second));
  for (const double value : values) {
    EXPECT_EQ(Plain(Lut(kLutValues, value), second),
              Plain(Lut(kLutValues, value == -0.5 ? 0 : 1023), second))
        << value;
  }
}

TEST_F(LutCompositionAvx2, RefusesASecondOfMoreThan15Bits) {
  const Lut first(kLutValues, 512);
  Lut second = RandomLut(32768);
  EXPECT_NE(Fast(first, second), Lut());
  for (size_t i = 0; i < kLutValues; i = i < 100 || i > kLutValues - 100 ? i + 1 : i + 97) {
    const double value = second[i];
    second[i] = 32768;
    ASSERT_EQ(Fast(first, second), Lut()) << i;
    second[i] = value;
  }
  for (const double value :
       {-1.0, 65535.0, 2147483647.0, 1e300, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
    second[4000] = value;
    EXPECT_EQ(Fast(first, second), Lut()) << value;
  }
}

}  // namespace

// What the fast way refuses goes the plain one, and needs memory for it.
TEST(LutComposition, ComposeLuts_OfExtensionBytesThatAreFull) {
  Lut first(kLutValues, 1000);
  Lut second(kLutValues, 65535);
  const std::unique_ptr<double[]> result(ComposeLuts(first.data(), second.data()));
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(Lut(result.get(), result.get() + kLutValues), second);
  const testsupport::FailingNew failure(2);
  EXPECT_EQ(ComposeLuts(first.data(), second.data()), nullptr);
  EXPECT_TRUE(failure.HasFailed());
}

}  // namespace velora
