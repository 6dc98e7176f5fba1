#include "panel/BiosHeaderBase.h"

#include <gtest/gtest.h>

#include "support/LogCapture.h"

namespace velora {
namespace {

using testsupport::Line;
using testsupport::LogCapture;
using Lines = std::vector<Line>;

constexpr int kBaseError = 3;

// Opens what only the versions see, and records what the base forwards.
class OpenHeader : public BiosHeaderBase {
 public:
  using BiosHeaderBase::CopyData;
  using BiosHeaderBase::Parse;
  using BiosHeaderBase::ParseCommonFields;

  bool Parse(const uint8_t* buf, size_t bufLen) override {
    parsed = buf;
    parsedLength = bufLen;
    return result;
  }
  bool IsBiosHeaderDataValid(const uint8_t*, size_t) const override { return true; }

  const uint8_t* parsed = nullptr;
  size_t parsedLength = 0;
  bool result = false;
};

TEST(BiosHeaderBase, GetVersion_OfBothVersions) {
  const LogCapture log;
  EXPECT_EQ(BiosHeaderBase::GetVersion("tag!01"), 0);
  EXPECT_EQ(BiosHeaderBase::GetVersion("tag!02 and more"), 1);
  EXPECT_EQ(log.Lines(), Lines{});
}

TEST(BiosHeaderBase, GetVersion_OfAnotherVersion) {
  const LogCapture log;
  EXPECT_EQ(BiosHeaderBase::GetVersion("tag!03"), 2);
  EXPECT_EQ(log.Lines(), (Lines{{kBaseError, L"invalid ver:03(BiosHeaderBase::GetVersion)"}}));
}

TEST(BiosHeaderBase, GetVersion_LooksAtItsTwoBytesOnly) {
  const LogCapture log;
  EXPECT_EQ(BiosHeaderBase::GetVersion("0202ab"), 2);
  EXPECT_EQ(BiosHeaderBase::GetVersion("tag!1\x30"), 2);
  EXPECT_EQ(log.Lines(), (Lines{{kBaseError, L"invalid ver:ab(BiosHeaderBase::GetVersion)"},
                                {kBaseError, L"invalid ver:10(BiosHeaderBase::GetVersion)"}}));
}

TEST(BiosHeaderBase, GetVersion_OfABlockWithoutOne) {
  const LogCapture log;
  EXPECT_EQ(BiosHeaderBase::GetVersion("tag!0"), 2);
  EXPECT_EQ(log.Lines(), (Lines{{kBaseError,
                                 L"copy data failed! offset:4, copyLen:2, buf size:5"
                                 L"(BiosHeaderBase::CopyData)"},
                                {kBaseError, L"invalid ver:(BiosHeaderBase::GetVersion)"}}));
}

TEST(BiosHeaderBase, HoldsNoLut) {
  const OpenHeader header;
  EXPECT_EQ(header.GetLutType(), 162u);
  EXPECT_EQ(header.GetDataLength(), 0u);
}

TEST(BiosHeaderBase, Parse_ForwardsABuffer) {
  OpenHeader header;
  const std::string block = "some bytes";
  EXPECT_FALSE(header.Parse(block));
  EXPECT_EQ(header.parsed, reinterpret_cast<const uint8_t*>(block.data()));
  EXPECT_EQ(header.parsedLength, 10u);
  header.result = true;
  EXPECT_TRUE(header.Parse(block));
}

TEST(BiosHeaderBase, ParseCommonFields_StartsAtTheFront) {
  OpenHeader header;
  uint8_t bytes[64] = {'f', 'r', 'o', 'n'};
  uint32_t offset = 7;
  header.ParseCommonFields(bytes, offset);
  EXPECT_EQ(header.GetTag(), "fron");
  EXPECT_EQ(offset, 64u);
}

TEST(BiosHeaderBase, CopyData_FromBytes) {
  const LogCapture log;
  const uint8_t source[] = {1, 2, 3, 4, 5};
  uint8_t target[2] = {};
  uint32_t offset = 3;
  OpenHeader::CopyData(target, 2, source, offset);
  EXPECT_EQ(target[0], 4);
  EXPECT_EQ(target[1], 5);
  EXPECT_EQ(offset, 5u);
  EXPECT_EQ(log.Lines(), Lines{});
}

// A refused copy is only logged, and the fields behind it keep their places.
TEST(BiosHeaderBase, CopyData_RefusedCopyMovesTheOffset) {
  const LogCapture log;
  const uint8_t source[] = {1, 2, 3, 4, 5};
  uint32_t offset = 1;
  OpenHeader::CopyData(nullptr, 3, source, offset);
  EXPECT_EQ(offset, 4u);
  EXPECT_EQ(log.Lines(), (Lines{{kBaseError, L"memcpy_s failed!(BiosHeaderBase::CopyData)"}}));
}

TEST(BiosHeaderBase, CopyData_FromABufferUpToItsEnd) {
  const LogCapture log;
  char target[3] = {};
  uint32_t offset = 2;
  OpenHeader::CopyData(target, 3, std::string("abcde"), offset);
  EXPECT_EQ(std::string(target, 3), "cde");
  EXPECT_EQ(offset, 5u);
  EXPECT_EQ(log.Lines(), Lines{});
}

TEST(BiosHeaderBase, CopyData_BeyondABufferCopiesNothing) {
  const LogCapture log;
  char target[3] = {'x', 'y', 'z'};
  uint32_t offset = 3;
  OpenHeader::CopyData(target, 3, std::string("abcde"), offset);
  EXPECT_EQ(offset, 3u);
  offset = 0xFFFFFFFF;  // the end of this copy does not wrap around to 2
  OpenHeader::CopyData(target, 3, std::string("abcde"), offset);
  EXPECT_EQ(offset, 0xFFFFFFFF);
  EXPECT_EQ(std::string(target, 3), "xyz");
  EXPECT_EQ(log.Lines(), (Lines{{kBaseError,
                                 L"copy data failed! offset:3, copyLen:3, buf size:5"
                                 L"(BiosHeaderBase::CopyData)"},
                                {kBaseError,
                                 L"copy data failed! offset:4294967295, copyLen:3, buf size:5"
                                 L"(BiosHeaderBase::CopyData)"}}));
}

}  // namespace
}  // namespace velora
