#include "panel/BiosControlHeader.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "support/GuardedBuffer.h"
#include "support/LogCapture.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;
using testsupport::Line;
using testsupport::LogCapture;
using Bytes = std::array<uint8_t, 16>;
using Lines = std::vector<Line>;

constexpr int kError = 3;

// The sum of bytes 0 to 13 is 0x0461, put down by hand.
constexpr Bytes kHeader = {'D',  'L',  'U',  'T',   // 0x44 + 0x4C + 0x55 + 0x54 = 0x139
                           0x12, 0x34,              // headerLength: 0x46
                           0xAB, 0xCD,              // blockCount: 0x178
                           0x01, 0x02, 0xF3, 0x04,  // blockSize: 0xFA
                           0x05, 0x6B,              // controlExtra: 0x70
                           0x04, 0x61};             // 0x139 + 0x46 + 0x178 + 0xFA + 0x70

TEST(BiosControlHeader, Constructor_IsEmpty) {
  const BiosControlHeader header;
  EXPECT_EQ(header.GetSignature(), std::string(4, '\0'));
  EXPECT_EQ(header.GetHeaderLength(), 0);
  EXPECT_EQ(header.GetBlockCount(), 0);
  EXPECT_EQ(header.GetBlockSize(), 0u);
  EXPECT_EQ(header.GetChecksum(), 0);
}

TEST(BiosControlHeader, Parse_ReadsBigEndianNumbers) {
  const LogCapture log;
  const GuardedBuffer buffer(kHeader);
  BiosControlHeader header;
  ASSERT_TRUE(header.Parse(buffer.data(), buffer.size()));
  EXPECT_EQ(header.GetSignature(), "DLUT");
  EXPECT_EQ(header.GetHeaderLength(), 0x1234);
  EXPECT_EQ(header.GetBlockCount(), 0xABCD);
  EXPECT_EQ(header.GetBlockSize(), 0x0102F304u);
  EXPECT_EQ(header.GetChecksum(), 0x0461);
  EXPECT_EQ(log.Lines(), Lines{});
}

TEST(BiosControlHeader, Parse_BytesBehindTheHeaderDoNotCount) {
  std::array<uint8_t, 17> longer{};
  std::copy(kHeader.begin(), kHeader.end(), longer.begin());
  longer[16] = 0xFF;
  BiosControlHeader header;
  EXPECT_TRUE(header.Parse(longer.data(), longer.size()));
}

TEST(BiosControlHeader, Parse_NullBuffer) {
  const LogCapture log;
  BiosControlHeader header;
  EXPECT_FALSE(header.Parse(nullptr, 16));
  EXPECT_EQ(log.Lines(),
            (Lines{{kError, L"buf is nullptr!(BiosControlHeader::IsBiosControlDataValid)"}}));
}

TEST(BiosControlHeader, Parse_NullGoesBeforeLength) {
  const LogCapture log;
  BiosControlHeader header;
  EXPECT_FALSE(header.Parse(nullptr, 0));
  EXPECT_EQ(log.Lines(),
            (Lines{{kError, L"buf is nullptr!(BiosControlHeader::IsBiosControlDataValid)"}}));
}

TEST(BiosControlHeader, Parse_15BytesAreTooFew) {
  const LogCapture log;
  const GuardedBuffer buffer(kHeader, 15);
  BiosControlHeader header;
  EXPECT_FALSE(header.Parse(buffer.data(), buffer.size()));
  EXPECT_EQ(log.Lines(),
            (Lines{{kError,
                    L"bufLen:15 is invalid! minHeaderLen is:16 for Bios control header."
                    L"(BiosControlHeader::IsBiosControlDataValid)"}}));
}

TEST(BiosControlHeader, Parse_AnyShorterLengthIsRefusedUnread) {
  for (size_t length = 0; length < 16; ++length) {
    const LogCapture log;
    const GuardedBuffer buffer(kHeader, length);
    BiosControlHeader header;
    EXPECT_FALSE(header.Parse(buffer.data(), buffer.size())) << length;
    EXPECT_EQ(log.Lines(),
              (Lines{{kError, L"bufLen:" + std::to_wstring(length) +
                                  L" is invalid! minHeaderLen is:16 for Bios control header."
                                  L"(BiosControlHeader::IsBiosControlDataValid)"}}));
  }
}

TEST(BiosControlHeader, Parse_RefusedLengthKeepsTheFormerFields) {
  BiosControlHeader header;
  ASSERT_TRUE(header.Parse(kHeader.data(), kHeader.size()));
  EXPECT_FALSE(header.Parse(kHeader.data(), 15));
  EXPECT_EQ(header.GetBlockSize(), 0x0102F304u);
}

// Every bit of the summed bytes, controlExtra at 12 and 13 included.
TEST(BiosControlHeader, Parse_AnyFlippedBitFailsSilently) {
  for (size_t byte = 0; byte < 14; ++byte) {
    for (int bit = 0; bit < 8; ++bit) {
      const LogCapture log;
      Bytes damaged = kHeader;
      damaged[byte] ^= static_cast<uint8_t>(1 << bit);
      BiosControlHeader header;
      EXPECT_FALSE(header.Parse(damaged.data(), damaged.size())) << byte << ", bit " << bit;
      EXPECT_EQ(log.Lines(), Lines{});
    }
  }
}

TEST(BiosControlHeader, Parse_AnyFlippedBitOfTheChecksumFailsSilently) {
  for (size_t byte = 14; byte < 16; ++byte) {
    for (int bit = 0; bit < 8; ++bit) {
      const LogCapture log;
      Bytes damaged = kHeader;
      damaged[byte] ^= static_cast<uint8_t>(1 << bit);
      BiosControlHeader header;
      EXPECT_FALSE(header.Parse(damaged.data(), damaged.size())) << byte << ", bit " << bit;
      EXPECT_EQ(log.Lines(), Lines{});
    }
  }
}

// The checksum is no part of its own sum: what stands at 14 and 15 changes nothing else.
TEST(BiosControlHeader, Parse_AWrongChecksumLeavesTheFieldsFilled) {
  Bytes damaged = kHeader;
  damaged[15] = 0x62;
  BiosControlHeader header;
  EXPECT_FALSE(header.Parse(damaged.data(), damaged.size()));
  EXPECT_EQ(header.GetHeaderLength(), 0x1234);
  EXPECT_EQ(header.GetBlockSize(), 0x0102F304u);
  EXPECT_EQ(header.GetChecksum(), 0x0462);
}

TEST(BiosControlHeader, Parse_LargestSum) {
  Bytes ones;
  ones.fill(0xFF);
  ones[14] = 0x0D;  // 14 * 255 = 0x0DF2
  ones[15] = 0xF2;
  BiosControlHeader header;
  EXPECT_TRUE(header.Parse(ones.data(), ones.size()));
  EXPECT_EQ(header.GetBlockSize(), 0xFFFFFFFFu);
}

TEST(BiosControlHeader, Parse_AllZeroIsGood) {
  const LogCapture log;
  const Bytes zeros{};
  BiosControlHeader header;
  EXPECT_TRUE(header.Parse(zeros.data(), zeros.size()));
  EXPECT_EQ(header.GetBlockSize(), 0u);
  EXPECT_EQ(log.Lines(), Lines{});
}

TEST(BiosControlHeader, IsBiosControlDataValid_Limits) {
  const LogCapture log;
  const BiosControlHeader header;
  EXPECT_FALSE(header.IsBiosControlDataValid(kHeader.data(), 15));
  EXPECT_EQ(log.Lines().size(), 1u);
  EXPECT_TRUE(header.IsBiosControlDataValid(kHeader.data(), 16));
  EXPECT_TRUE(header.IsBiosControlDataValid(kHeader.data(), 17));
  EXPECT_EQ(log.Lines().size(), 1u);
}

TEST(BiosControlHeader, ParseBinaryData_TakesTheWidthOfTheNumber) {
  const BiosControlHeader header;
  uint16_t half = 0;
  uint32_t word = 0;
  uint32_t offset = 4;
  EXPECT_TRUE(header.ParseBinaryData(kHeader.data(), offset, half));
  EXPECT_EQ(half, 0x1234);
  EXPECT_EQ(offset, 6u);
  EXPECT_TRUE(header.ParseBinaryData(kHeader.data(), offset, word));
  EXPECT_EQ(word, 0xABCD0102u);
  EXPECT_EQ(offset, 10u);
}

TEST(BiosControlHeader, ParseBinaryData_UpToTheEnd) {
  const GuardedBuffer buffer(kHeader);
  const BiosControlHeader header;
  uint16_t half = 0;
  uint32_t word = 0;
  uint32_t offset = 14;
  EXPECT_TRUE(header.ParseBinaryData(buffer.data(), offset, half));
  EXPECT_EQ(half, 0x0461);
  offset = 12;
  EXPECT_TRUE(header.ParseBinaryData(buffer.data(), offset, word));
  EXPECT_EQ(word, 0x056B0461u);
  EXPECT_EQ(offset, 16u);
}

TEST(BiosControlHeader, ParseBinaryData_NullBuffer) {
  const LogCapture log;
  const BiosControlHeader header;
  uint16_t half = 7;
  uint32_t offset = 99;
  EXPECT_FALSE(header.ParseBinaryData(nullptr, offset, half));
  EXPECT_EQ(half, 7);
  EXPECT_EQ(offset, 99u);
  EXPECT_EQ(log.Lines(), (Lines{{kError, L"buf is nullptr!(BiosControlHeader::ParseBinaryData)"}}));
}

TEST(BiosControlHeader, ParseBinaryData_BeyondTheEnd) {
  const LogCapture log;
  const BiosControlHeader header;
  uint16_t half = 7;
  uint32_t word = 7;
  uint32_t offset = 15;
  EXPECT_FALSE(header.ParseBinaryData(kHeader.data(), offset, half));
  EXPECT_EQ(offset, 15u);
  offset = 13;
  EXPECT_FALSE(header.ParseBinaryData(kHeader.data(), offset, word));
  EXPECT_EQ(offset, 13u);
  offset = 0xFFFFFFFE;  // the end of this copy does not wrap around to 0
  EXPECT_FALSE(header.ParseBinaryData(kHeader.data(), offset, half));
  EXPECT_EQ(half, 7);
  EXPECT_EQ(word, 7u);
  EXPECT_EQ(log.Lines(), (Lines{{kError,
                                 L"Copy out of range.current offset:15, dataLen:2"
                                 L"(BiosControlHeader::ParseBinaryData)"},
                                {kError,
                                 L"Copy out of range.current offset:13, dataLen:4"
                                 L"(BiosControlHeader::ParseBinaryData)"},
                                {kError,
                                 L"Copy out of range.current offset:4294967294, dataLen:2"
                                 L"(BiosControlHeader::ParseBinaryData)"}}));
}

TEST(BiosControlHeader, CopyData_MovesTheOffset) {
  const LogCapture log;
  const GuardedBuffer buffer(kHeader);
  const BiosControlHeader header;
  char text[4] = {};
  uint32_t offset = 0;
  EXPECT_TRUE(header.CopyData(text, 4, buffer.data(), offset));
  EXPECT_EQ(std::string(text, 4), "DLUT");
  EXPECT_EQ(offset, 4u);
  offset = 15;
  EXPECT_TRUE(header.CopyData(text, 1, buffer.data(), offset));
  EXPECT_EQ(text[0], 0x61);
  EXPECT_EQ(offset, 16u);
  EXPECT_EQ(log.Lines(), Lines{});
}

TEST(BiosControlHeader, CopyData_NullPointersGoFirst) {
  const LogCapture log;
  const BiosControlHeader header;
  char text[4] = {};
  uint32_t offset = 99;
  EXPECT_FALSE(header.CopyData(text, 4, nullptr, offset));
  EXPECT_FALSE(header.CopyData(nullptr, 4, kHeader.data(), offset));
  EXPECT_EQ(offset, 99u);
  const Line line{kError, L"buf or dst is nullptr!(BiosControlHeader::CopyData)"};
  EXPECT_EQ(log.Lines(), (Lines{line, line}));
}

TEST(BiosControlHeader, CopyData_BeyondTheEnd) {
  const LogCapture log;
  const BiosControlHeader header;
  char text[4] = {'a', 'b', 'c', 'd'};
  uint32_t offset = 13;
  EXPECT_FALSE(header.CopyData(text, 4, kHeader.data(), offset));
  EXPECT_EQ(offset, 13u);
  offset = 2;
  EXPECT_FALSE(header.CopyData(text, 0xFFFFFFFF, kHeader.data(), offset));
  EXPECT_EQ(std::string(text, 4), "abcd");
  EXPECT_EQ(log.Lines(), (Lines{{kError,
                                 L"Copy out of range.current offset:13, copyLen:4"
                                 L"(BiosControlHeader::CopyData)"},
                                {kError,
                                 L"Copy out of range.current offset:2, copyLen:4294967295"
                                 L"(BiosControlHeader::CopyData)"}}));
}

TEST(BiosControlHeader, CopyData_NothingWithinTheHeader) {
  const LogCapture log;
  const BiosControlHeader header;
  char text[4] = {};
  uint32_t offset = 16;
  EXPECT_FALSE(header.CopyData(text, 0, kHeader.data(), offset));
  EXPECT_EQ(log.Lines(),
            (Lines{{kError, L"copyLen error!copyLen:0(BiosControlHeader::CopyData)"}}));
}

TEST(BiosControlHeader, CopyData_NothingBehindTheEndIsOutOfRange) {
  const LogCapture log;
  const BiosControlHeader header;
  char text[4] = {};
  uint32_t offset = 17;
  EXPECT_FALSE(header.CopyData(text, 0, kHeader.data(), offset));
  EXPECT_EQ(log.Lines(), (Lines{{kError,
                                 L"Copy out of range.current offset:17, copyLen:0"
                                 L"(BiosControlHeader::CopyData)"}}));
}

// A copy onto itself is one that the bounded copy refuses.
TEST(BiosControlHeader, CopyData_RefusedCopy) {
  const LogCapture log;
  const BiosControlHeader header;
  Bytes buffer = kHeader;
  uint32_t offset = 4;
  EXPECT_FALSE(header.CopyData(buffer.data() + 5, 4, buffer.data(), offset));
  EXPECT_EQ(offset, 4u);
  EXPECT_EQ(log.Lines(), (Lines{{kError, L"memcpy_s failed!(BiosControlHeader::CopyData)"}}));
}

// The same refusal from within Parse: the object's own bytes as the buffer.
TEST(BiosControlHeader, Parse_RefusedCopyFailsTheParse) {
  const LogCapture log;
  BiosControlHeader header;
  EXPECT_FALSE(header.Parse(reinterpret_cast<const uint8_t*>(&header), sizeof header));
  EXPECT_EQ(log.Lines(), (Lines{{kError, L"memcpy_s failed!(BiosControlHeader::CopyData)"},
                                {kError, L"Parse data failed!(BiosControlHeader::Parse)"}}));
}

}  // namespace
}  // namespace velora
