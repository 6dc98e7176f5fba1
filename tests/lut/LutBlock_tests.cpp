#include "lut/LutBlock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "support/GuardedBuffer.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;
using Bytes = std::vector<uint8_t>;
using Lut = std::vector<double>;

Bytes Encode(const Lut& lut) {
  const auto entries = static_cast<int>(lut.size() / 3);
  const GuardedBuffer data(Bytes(LutDataLength(entries)));
  EncodeLut(lut.data(), entries, data.data());
  return {data.Bytes().begin(), data.Bytes().end()};
}

// Header and hash hold bytes that would show in the result.
Lut Decode(const Bytes& data) {
  Bytes block(128 + data.size() + 32, 0xA5);
  std::copy(data.begin(), data.end(), block.begin() + 128);
  const GuardedBuffer buffer(block);
  const auto entries = static_cast<int>(data.size() / 5);
  Lut lut(LutValueCount(entries), -1);
  DecodeLut(buffer.Bytes(), entries, lut.data());
  return lut;
}

TEST(LutBlock, Sizes) {
  EXPECT_EQ(LutDataLength(k3DEntries), 24565u);
  EXPECT_EQ(LutDataLength(kGammaEntries), 5120u);
  EXPECT_EQ(LutBlockSize(k3DEntries), 24725u);
  EXPECT_EQ(LutBlockSize(kGammaEntries), 5280u);
  EXPECT_EQ(LutValueCount(k3DEntries) * sizeof(double), 117912u);
  EXPECT_EQ(LutValueCount(kGammaEntries) * sizeof(double), 24576u);
}

TEST(LutBlock, DecodeLut_PlacesOfTheComponents) {
  // Two entries: two words, then two extension bytes.
  EXPECT_EQ(Decode({0x12, 0xAB, 0xC9, 0x87, 0xFE, 0x00, 0x10, 0x02, 0x03, 0x45}),
            (Lut{0x312, 0xABC, 0x987, 0x45FE, 0x001, 0x002}));
}

// The words of a 3D LUT end and the extension bytes begin at 19780; of a gamma LUT, at 4224.
TEST(LutBlock, DecodeLut_ExtensionBytesStandBehindAllWords) {
  for (const auto& [entries, offset] : {std::pair(k3DEntries, 19780), {kGammaEntries, 4224}}) {
    Bytes block(LutBlockSize(entries));
    block[static_cast<size_t>(offset)] = 2;
    block[static_cast<size_t>(offset + entries - 1)] = 1;
    const GuardedBuffer buffer(block);
    Lut lut(LutValueCount(entries), -1);
    DecodeLut(buffer.Bytes(), entries, lut.data());
    Lut expected(LutValueCount(entries), 0);
    expected[0] = 512;
    expected[LutValueCount(entries) - 3] = 256;
    EXPECT_EQ(lut, expected);
  }
}

TEST(LutBlock, DecodeLut_WritesAllEntriesAndNoMore) {
  Bytes block(LutBlockSize(kGammaEntries));
  Lut lut(LutValueCount(kGammaEntries) + 1, -1);
  DecodeLut(block, kGammaEntries, lut.data());
  for (size_t i = 0; i < LutValueCount(kGammaEntries); ++i) {
    ASSERT_EQ(lut[i], 0) << i;
  }
  EXPECT_EQ(lut.back(), -1);
}

TEST(LutBlock, EncodeLut_ComponentsInTheWord) {
  EXPECT_EQ(Encode({0x312, 0xABC, 0x987}), (Bytes{0x12, 0xAB, 0xC9, 0x87, 0x03}));
}

TEST(LutBlock, EncodeLut_RedOf1023) {
  EXPECT_EQ(Encode({1023, 0, 0}), (Bytes{0xFF, 0x00, 0x00, 0x00, 0x03}));
}

TEST(LutBlock, EncodeLut_GreenAndBlueOf4095) {
  EXPECT_EQ(Encode({0, 4095, 4095}), (Bytes{0x00, 0xFF, 0xFF, 0xFF, 0x00}));
}

TEST(LutBlock, EncodeLut_ExtensionBytesStandBehindAllWords) {
  EXPECT_EQ(Encode({256, 0, 1, 512, 0, 2, 769, 0, 3}),
            (Bytes{0, 0, 0, 1, 0, 0, 0, 2, 1, 0, 0, 3, 1, 2, 3}));
}

TEST(LutBlock, EncodeLut_CutsFractions) {
  EXPECT_EQ(Encode({1022.9, 0.999, 4094.5}), Encode({1022, 0, 4094}));
}

// Nothing masks a component: what is too large shows in the field above.
TEST(LutBlock, EncodeLut_TooLargeComponentsRunIntoTheFieldAbove) {
  EXPECT_EQ(Encode({0, 4096, 0}), (Bytes{0x01, 0x00, 0x00, 0x00, 0x00}));
  EXPECT_EQ(Encode({0, 0, 4096}), (Bytes{0x00, 0x00, 0x10, 0x00, 0x00}));
  EXPECT_EQ(Encode({0x10000, 0, 0}), (Bytes{0x00, 0x00, 0x00, 0x00, 0x00}));
}

// All values of each component, against shuffled values of the other two.
TEST(LutBlock, RoundTrip_OfEveryComponentValue) {
  std::mt19937 random(20240817);
  const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random()) % limit; };
  Lut lut;
  for (unsigned i = 0; i < 65536; ++i) {
    lut.push_back(i);
    lut.push_back(i % 4096);
    lut.push_back(below(4096));
  }
  for (unsigned i = 0; i < 4096; ++i) {
    lut.push_back(below(65536));
    lut.push_back(below(4096));
    lut.push_back(i);
  }
  EXPECT_EQ(Decode(Encode(lut)), lut);
}

TEST(LutBlock, RoundTrip_OfRandomBytes) {
  std::mt19937 random(17);
  Bytes data(LutDataLength(k3DEntries));
  for (uint8_t& byte : data) {
    byte = static_cast<uint8_t>(random());
  }
  EXPECT_EQ(Encode(Decode(data)), data);
}

}  // namespace
}  // namespace velora
