#include "panel/BiosHeaderV1.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <new>

#include "panel/TestBlockHeader.h"
#include "support/GuardedBuffer.h"
#include "support/LogCapture.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;
using testsupport::Line;
using testsupport::LogCapture;
using Lines = std::vector<Line>;

constexpr int kError = 3;

TEST(BiosHeaderV1, Constructor_IsEmpty) {
  const BiosHeaderV1 header;
  EXPECT_EQ(header.GetTag(), std::string(4, '\0'));
  EXPECT_EQ(header.GetVersionText(), std::string(2, '\0'));
  for (size_t item = 0; item < 10; ++item) {
    EXPECT_EQ(header.GetPanelField(item), std::string(4, '\0'));
  }
  EXPECT_EQ(header.GetSerialNumber(), std::string(8, '\0'));
  EXPECT_EQ(header.GetYear(), std::string(4, '\0'));
  EXPECT_EQ(header.GetWeek(), std::string(2, '\0'));
  EXPECT_EQ(header.GetVendor(), std::string(4, '\0'));
  EXPECT_EQ(header.GetDataLength(), 0u);
}

TEST(BiosHeaderV1, Parse_ReadsTheCommonFields) {
  const LogCapture log;
  const GuardedBuffer buffer(MakeTestHeader());
  BiosHeaderV1 header;
  ASSERT_TRUE(header.Parse(buffer.data(), buffer.size()));
  EXPECT_EQ(header.GetTag(), "tag!");
  EXPECT_EQ(header.GetVersionText(), "02");
  const char* const items[] = {"aa00", "bb11", "cc22", "dd33", "ee44",
                               "ff55", "gg66", "hh77", "ii88", "jj99"};
  for (size_t item = 0; item < 10; ++item) {
    EXPECT_EQ(header.GetPanelField(item), items[item]);
  }
  EXPECT_EQ(header.GetSerialNumber(), "SN345678");
  EXPECT_EQ(header.GetYear(), "2024");
  EXPECT_EQ(header.GetWeek(), "08");
  EXPECT_EQ(header.GetVendor(), "NVX#");
  EXPECT_EQ(log.Lines(), Lines{});
}

TEST(BiosHeaderV1, Parse_KeepsZeroBytesOfTexts) {
  auto bytes = MakeTestHeader();
  bytes[47] = 0;
  BiosHeaderV1 header;
  ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
  EXPECT_EQ(header.GetSerialNumber(), std::string("S\0"
                                                  "345678",
                                                  8));
}

TEST(BiosHeaderV1, Parse_TakesABufferObject) {
  const auto bytes = MakeTestHeader();
  BiosHeaderV1 header;
  EXPECT_TRUE(header.Parse(std::string(bytes.begin(), bytes.end())));
  EXPECT_EQ(header.GetVendor(), "NVX#");
}

// The least length lies below the 128 bytes that are read; only the callers see to the rest.
TEST(BiosHeaderV1, Parse_LeastLength) {
  const auto bytes = MakeTestHeader();
  const LogCapture log;
  BiosHeaderV1 header;
  EXPECT_TRUE(header.Parse(bytes.data(), 66));
  EXPECT_TRUE(header.Parse(bytes.data(), 67));
  EXPECT_EQ(log.Lines(), Lines{});
  EXPECT_FALSE(header.Parse(bytes.data(), 65));
  EXPECT_EQ(log.Lines(), (Lines{{kError,
                                 L"bufLen:65 is invalid! minHeaderLen is:66 on V1 version"
                                 L"(BiosHeaderV1::IsBiosHeaderDataValid)"}}));
}

TEST(BiosHeaderV1, Parse_ShortBuffersAreRefusedUnread) {
  const auto bytes = MakeTestHeader();
  for (size_t length = 0; length < 66; ++length) {
    const GuardedBuffer buffer(bytes, length);
    const LogCapture log;
    BiosHeaderV1 header;
    EXPECT_FALSE(header.Parse(buffer.data(), buffer.size())) << length;
    EXPECT_EQ(log.Lines(), (Lines{{kError, L"bufLen:" + std::to_wstring(length) +
                                               L" is invalid! minHeaderLen is:66 on V1 version"
                                               L"(BiosHeaderV1::IsBiosHeaderDataValid)"}}));
  }
}

TEST(BiosHeaderV1, Parse_RefusedLengthKeepsTheFormerFields) {
  const auto bytes = MakeTestHeader();
  BiosHeaderV1 header;
  ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
  EXPECT_FALSE(header.Parse(bytes.data(), 65));
  EXPECT_EQ(header.GetSerialNumber(), "SN345678");
}

TEST(BiosHeaderV1, Parse_DoesNotLookAtTheVersion) {
  auto bytes = MakeTestHeader();
  bytes[4] = bytes[5] = 'x';
  BiosHeaderV1 header;
  EXPECT_TRUE(header.Parse(bytes.data(), bytes.size()));
}

TEST(BiosHeaderV1, Destructor_ClearsAllBytes) {
  std::array<uint8_t, 128> bytes;
  bytes.fill(0xA5);
  alignas(BiosHeaderV1) unsigned char storage[sizeof(BiosHeaderV1)];
  BiosHeaderBase* const header = new (storage) BiosHeaderV1;
  ASSERT_TRUE(header->Parse(bytes.data(), bytes.size()));
  ASSERT_EQ(std::count(std::begin(storage), std::end(storage), 0xA5), 128);
  std::destroy_at(header);
  const volatile unsigned char* const left = storage;
  for (size_t i = sizeof(void*); i < sizeof storage; ++i) {  // behind the vtable's pointer
    EXPECT_EQ(left[i], 0) << i;
  }
}

TEST(BiosHeaderV1, HoldsNoLut) {
  auto bytes = MakeTestHeader();
  bytes[64] = 1;  // the type byte of version 2
  BiosHeaderV1 header;
  ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
  EXPECT_EQ(header.GetLutType(), 162u);
  EXPECT_EQ(header.GetDataLength(), 0u);
}

}  // namespace
}  // namespace velora
