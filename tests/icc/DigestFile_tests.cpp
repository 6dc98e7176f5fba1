#include "icc/DigestFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "support/GuardedBuffer.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;

// A record of this text, cut at 63 bytes; all bytes that are never read are 'Z'.
DigestRecord MakeRecord(std::string_view fileName) {
  DigestRecord record;
  std::memset(&record, 'Z', sizeof record);
  std::memset(record.fileName, 0, sizeof record.fileName);
  std::copy_n(fileName.begin(), std::min(fileName.size(), sizeof record.fileName), record.fileName);
  return record;
}

TEST(DigestFile, RecordLayout) {
  uint8_t bytes[102];
  for (size_t i = 0; i < sizeof bytes; ++i) {
    bytes[i] = static_cast<uint8_t>(i);
  }
  DigestRecord record;
  static_assert(sizeof record == sizeof bytes);
  std::memcpy(&record, bytes, sizeof record);
  EXPECT_EQ(record.fileName[0], 0);
  EXPECT_EQ(record.fileName[62], 62);
  for (uint8_t i = 0; i < 32; ++i) {
    EXPECT_EQ(record.sha256[i], 67 + i);
  }
}

TEST(DigestFile, HoldsName_OfItsFile) {
  EXPECT_TRUE(HoldsName(MakeRecord("P3.icc"), "P3.icc"));
  EXPECT_FALSE(HoldsName(MakeRecord("P3.icc"), "sRGB.icc"));
}

TEST(DigestFile, HoldsName_OfAnyPart) {
  const DigestRecord record = MakeRecord("NvxP3.icc");
  EXPECT_TRUE(HoldsName(record, "P3.icc"));
  EXPECT_TRUE(HoldsName(record, "NvxP3"));
  EXPECT_TRUE(HoldsName(record, "x"));
  EXPECT_TRUE(HoldsName(record, ""));
  EXPECT_FALSE(HoldsName(record, "NvxP3.icc2"));
}

TEST(DigestFile, HoldsName_KeepsCaseApart) {
  EXPECT_FALSE(HoldsName(MakeRecord("P3.icc"), "p3.icc"));
}

TEST(DigestFile, HoldsName_EndsAtTheFirstTerminator) {
  EXPECT_FALSE(HoldsName(MakeRecord(std::string_view("a\0P3.icc", 8)), "P3.icc"));
}

TEST(DigestFile, HoldsName_62CharactersCount) {
  const std::string name62 = std::string(60, 'a') + "bc";
  const std::string name63 = name62 + "d";
  EXPECT_TRUE(HoldsName(MakeRecord(name62), name62));
  EXPECT_FALSE(HoldsName(MakeRecord(name63), name63));
  EXPECT_FALSE(HoldsName(MakeRecord(name63), "d"));
  EXPECT_TRUE(HoldsName(MakeRecord(name63), name62));
}

TEST(DigestFile, HoldsName_ReadsNothingBehindTheName) {
  EXPECT_FALSE(HoldsName(MakeRecord(std::string(63, 'a')), "Z"));
  EXPECT_FALSE(HoldsName(MakeRecord(""), "Z"));
}

TEST(DigestFile, HoldsName_OfARecordAtTheEndOfMemory) {
  DigestRecord record;
  std::memset(&record, 'a', sizeof record);
  const GuardedBuffer buffer({reinterpret_cast<const uint8_t*>(&record), sizeof record});
  EXPECT_FALSE(HoldsName(*reinterpret_cast<const DigestRecord*>(buffer.data()), "b"));
}

}  // namespace
}  // namespace velora
