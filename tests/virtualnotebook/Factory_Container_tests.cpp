#include "virtualnotebook/Factory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace virtualnotebook {
namespace {

using testing::Each;
using testing::ElementsAre;

Bytes Slice(const Bytes& bytes, size_t offset, size_t size) {
  const auto from = bytes.begin() + static_cast<ptrdiff_t>(offset);
  return Bytes(from, from + static_cast<ptrdiff_t>(size));
}

std::string TextAt(const Bytes& bytes, size_t offset, size_t size) {
  const Bytes slice = Slice(bytes, offset, size);
  return std::string(slice.begin(), slice.end());
}

const BlockHeader kHeader = {"01020304", "2024", "08", "NVX#", 2, 12};

TEST(Factory, Sha256_OfAbc) {
  const Bytes abc = {'a', 'b', 'c'};
  EXPECT_THAT(Sha256(abc),
              ElementsAre(0xBA, 0x78, 0x16, 0xBF, 0x8F, 0x01, 0xCF, 0xEA, 0x41, 0x41, 0x40, 0xDE,
                          0x5D, 0xAE, 0x22, 0x23, 0xB0, 0x03, 0x61, 0xA3, 0x96, 0x17, 0x7A, 0x9C,
                          0xB4, 0x10, 0xFF, 0x61, 0xF2, 0x00, 0x15, 0xAD));
}

TEST(Factory, HeaderOf_NamesThePanel) {
  PanelDescription panel;
  panel.serial = {0xAB, 0x02, 0x00, 0xFF};
  const BlockHeader header = HeaderOf(panel, 160);
  EXPECT_EQ("AB0200FF", header.serialNumber);
  EXPECT_EQ("2024", header.year);
  EXPECT_EQ("08", header.week);
  EXPECT_EQ("NVX#", header.vendor);
  EXPECT_EQ(160, header.typeByte);
}

TEST(Factory, HeaderOf_AnUnknownWeekIsZero) {
  PanelDescription panel;
  panel.week = 53;
  EXPECT_EQ("53", HeaderOf(panel, 0).week);
  panel.week = 54;
  EXPECT_EQ("00", HeaderOf(panel, 0).week);
}

// Two entries by hand: 1023, 1, 2 is the word FF 00 10 02 and the extension byte 3; 4095, 4095,
// 4095 is FF FF FF FF and F.
TEST(Factory, MakeLutBlock_LaysOutHeaderWordsExtensionAndHash) {
  const Bytes block = MakeLutBlock(kHeader, {1023, 1, 2, 4095, 4095, 4095});
  ASSERT_EQ(128u + 10 + 32, block.size());
  EXPECT_EQ("02", TextAt(block, 4, 2));
  EXPECT_EQ("01020304", TextAt(block, 46, 8));
  EXPECT_EQ("2024", TextAt(block, 54, 4));
  EXPECT_EQ("08", TextAt(block, 58, 2));
  EXPECT_EQ("NVX#", TextAt(block, 60, 4));
  EXPECT_THAT(Slice(block, 64, 6), ElementsAre(2, 12, 0, 0, 0, 10));
  EXPECT_THAT(Slice(block, 70, 58), Each(0));
  EXPECT_THAT(Slice(block, 128, 10),
              ElementsAre(0xFF, 0x00, 0x10, 0x02, 0xFF, 0xFF, 0xFF, 0xFF, 0x03, 0x0F));
  EXPECT_EQ(Sha256(Slice(block, 0, 138)), Slice(block, 138, 32));
}

TEST(Factory, MakeLutBlock_SizesOfTheTwoKinds) {
  const Bytes cube = MakeLutBlock(kHeader, MakeIdentityLut());
  EXPECT_EQ(24725u, cube.size());
  EXPECT_THAT(Slice(cube, 66, 4), ElementsAre(0, 0, 0x5F, 0xF5));
  EXPECT_EQ(Sha256(Slice(cube, 0, 24693)), Slice(cube, 24693, 32));
  const Bytes gamma = MakeLutBlock(kHeader, MakeLut({}, kGammaLut));
  EXPECT_EQ(5280u, gamma.size());
  EXPECT_THAT(Slice(gamma, 66, 4), ElementsAre(0, 0, 0x14, 0x00));
  EXPECT_EQ(15, gamma[4224 + 1023]);  // R's high bits of the last entry, 4095
}

TEST(Factory, MakeLutBlock_RefusesWhatTheLayoutCannotHold) {
  EXPECT_THROW(MakeLutBlock(kHeader, {1, 2}), std::invalid_argument);
  EXPECT_THROW(MakeLutBlock(kHeader, {1, 2, 4096}), std::invalid_argument);
  EXPECT_THROW(MakeLutBlock(kHeader, {1, 2, -1}), std::invalid_argument);
  EXPECT_THROW(MakeLutBlock(kHeader, {1, 2, 0.5}), std::invalid_argument);
  BlockHeader header = kHeader;
  header.week = "8";
  EXPECT_THROW(MakeLutBlock(header, {1, 2, 3}), std::invalid_argument);
}

// The checksum by hand: 'N' 78 + 'X' 88 + 'V' 86 + 'L' 76 + 16 + 2 + 4 = 350 = 0x015E.
TEST(Factory, MakeGoldenFile_ControlHeaderThenBlocksAtOneStride) {
  const Bytes file = MakeGoldenFile({{1, 2, 3, 4}, {5, 6}});
  EXPECT_THAT(file, ElementsAre('N', 'X', 'V', 'L', 0, 16, 0, 2, 0, 0, 0, 4, 0, 0, 0x01, 0x5E, 1, 2,
                                3, 4, 5, 6, 0xFF, 0xFF));
}

TEST(Factory, MakeGoldenFile_TakesAWiderStride) {
  const Bytes file = MakeGoldenFile({{1, 2}}, 0x0102);
  ASSERT_EQ(16u + 0x0102, file.size());
  EXPECT_THAT(Slice(file, 8, 4), ElementsAre(0, 0, 1, 2));
  EXPECT_THROW(MakeGoldenFile({{1, 2, 3}}, 2), std::invalid_argument);
}

TEST(Factory, MakeGoldenFile_MayHoldNothing) { EXPECT_EQ(16u, MakeGoldenFile({}).size()); }

TEST(Factory, MakeFirmwareTable_IsAnAcpiTableAheadOfTheSame) {
  const std::vector<Bytes> blocks = {{1, 2, 3, 4}, {5, 6}};
  const Bytes table = MakeFirmwareTable(blocks), content = MakeGoldenFile(blocks);
  ASSERT_EQ(52 + content.size(), table.size());
  EXPECT_EQ("DLUT", TextAt(table, 0, 4));
  EXPECT_THAT(Slice(table, 4, 4), ElementsAre(76, 0, 0, 0));  // little-endian
  unsigned sum = 0;
  for (uint8_t byte : table) sum += byte;
  EXPECT_EQ(0u, sum % 256);
  EXPECT_EQ(content, Slice(table, 52, content.size()));
}

}  // namespace
}  // namespace virtualnotebook
