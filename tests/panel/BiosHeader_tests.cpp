#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "panel/BiosHeaderV1.h"
#include "panel/BiosHeaderV2.h"
#include "panel/TestBlockHeader.h"
#include "support/GuardedBuffer.h"
#include "support/LogCapture.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;
using testsupport::Line;
using testsupport::LogCapture;
using Lines = std::vector<Line>;

constexpr int kHeaderError = 3;

// --- What both versions do ---

// The least length that is taken.
template <typename Header>
constexpr size_t kMin = 0;
template <>
constexpr size_t kMin<BiosHeaderV1> = 66;
template <>
constexpr size_t kMin<BiosHeaderV2> = 123;

template <typename Header>
class BlockHeader : public testing::Test {
 protected:
  static Line Refusal(size_t length);
};

template <>
Line BlockHeader<BiosHeaderV1>::Refusal(size_t length) {
  return {kHeaderError, L"bufLen:" + std::to_wstring(length) +
                            L" is invalid! minHeaderLen is:66 on V1 version"
                            L"(BiosHeaderV1::IsBiosHeaderDataValid)"};
}

template <>
Line BlockHeader<BiosHeaderV2>::Refusal(size_t length) {
  return {kHeaderError, L"bufLen:" + std::to_wstring(length) +
                            L" is invalid! minHeaderLen is:123 on V2 version"
                            L"(BiosHeaderV2::IsBiosHeaderDataValid)"};
}

using Versions = testing::Types<BiosHeaderV1, BiosHeaderV2>;
TYPED_TEST_SUITE(BlockHeader, Versions);

TYPED_TEST(BlockHeader, Constructor_IsEmpty) {
  const TypeParam header;
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

TYPED_TEST(BlockHeader, Parse_ReadsTheCommonFields) {
  const LogCapture log;
  const GuardedBuffer buffer(MakeTestHeader());
  TypeParam header;
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

TYPED_TEST(BlockHeader, Parse_KeepsZeroBytesOfTexts) {
  auto bytes = MakeTestHeader();
  bytes[47] = 0;
  TypeParam header;
  ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
  EXPECT_EQ(header.GetSerialNumber(), std::string("S\0"
                                                  "345678",
                                                  8));
}

TYPED_TEST(BlockHeader, Parse_TakesABufferObject) {
  const auto bytes = MakeTestHeader();
  TypeParam header;
  EXPECT_TRUE(header.Parse(std::string(bytes.begin(), bytes.end())));
  EXPECT_EQ(header.GetVendor(), "NVX#");
}

// The least length lies below the 128 bytes that are read; only the callers see to the rest.
TYPED_TEST(BlockHeader, Parse_LeastLength) {
  const auto bytes = MakeTestHeader();
  const LogCapture log;
  TypeParam header;
  EXPECT_TRUE(header.Parse(bytes.data(), kMin<TypeParam>));
  EXPECT_TRUE(header.Parse(bytes.data(), kMin<TypeParam> + 1));
  EXPECT_EQ(log.Lines(), Lines{});
  EXPECT_FALSE(header.Parse(bytes.data(), kMin<TypeParam> - 1));
  EXPECT_EQ(log.Lines(), (Lines{this->Refusal(kMin<TypeParam> - 1)}));
}

TYPED_TEST(BlockHeader, Parse_ShortBuffersAreRefusedUnread) {
  const auto bytes = MakeTestHeader();
  for (size_t length = 0; length < kMin<TypeParam>; ++length) {
    const GuardedBuffer buffer(bytes, length);
    const LogCapture log;
    TypeParam header;
    EXPECT_FALSE(header.Parse(buffer.data(), buffer.size())) << length;
    EXPECT_EQ(log.Lines(), (Lines{this->Refusal(length)}));
  }
}

TYPED_TEST(BlockHeader, Parse_RefusedLengthKeepsTheFormerFields) {
  const auto bytes = MakeTestHeader();
  TypeParam header;
  ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
  EXPECT_FALSE(header.Parse(bytes.data(), kMin<TypeParam> - 1));
  EXPECT_EQ(header.GetSerialNumber(), "SN345678");
}

TYPED_TEST(BlockHeader, Parse_DoesNotLookAtTheVersion) {
  auto bytes = MakeTestHeader();
  bytes[4] = bytes[5] = 'x';
  TypeParam header;
  EXPECT_TRUE(header.Parse(bytes.data(), bytes.size()));
}

TYPED_TEST(BlockHeader, Destructor_ClearsAllBytes) {
  std::array<uint8_t, 128> bytes;
  bytes.fill(0xA5);
  constexpr size_t kFields = sizeof(void*);  // behind the vtable's pointer
  alignas(TypeParam) unsigned char storage[sizeof(TypeParam)] = {};
  BiosHeaderBase* const header = new (storage) TypeParam;
  ASSERT_TRUE(header->Parse(bytes.data(), bytes.size()));
  ASSERT_EQ(std::count(std::begin(storage) + kFields, std::end(storage), 0xA5), 128);
  std::destroy_at(header);
  const volatile unsigned char* const left = storage;
  for (size_t i = kFields; i < sizeof storage; ++i) {
    EXPECT_EQ(left[i], 0) << i;
  }
}

// --- Version 1 ---

TEST(BiosHeaderV1, HoldsNoLut) {
  auto bytes = MakeTestHeader();
  bytes[64] = 1;  // the type byte of version 2
  BiosHeaderV1 header;
  ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
  EXPECT_EQ(header.GetLutType(), 162u);
  EXPECT_EQ(header.GetDataLength(), 0u);
}

// --- Version 2 ---

TEST(BiosHeaderV2, GetLutType_OfEveryTypeByte) {
  auto bytes = MakeTestHeader();
  for (int typeByte = 0; typeByte < 256; ++typeByte) {
    bytes[64] = static_cast<uint8_t>(typeByte);
    BiosHeaderV2 header;
    ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
    uint32_t expected = 162;
    switch (typeByte) {
      case 0:
        expected = 0;
        break;
      case 1:
        expected = 1;
        break;
      case 2:
        expected = 2;
        break;
      case 3:
        expected = 3;
        break;
      case 4:
        expected = 4;
        break;
      case 7:
        expected = 7;
        break;
      case 160:
        expected = 160;
        break;
      case 255:
        expected = 161;
        break;
    }
    EXPECT_EQ(header.GetLutType(), expected) << typeByte;
  }
}

TEST(BiosHeaderV2, GetDataLength_IsBigEndian) {
  auto bytes = MakeTestHeader();
  bytes[66] = 0x00, bytes[67] = 0x00, bytes[68] = 0x5F, bytes[69] = 0xF5;
  BiosHeaderV2 header;
  ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
  EXPECT_EQ(header.GetDataLength(), 24565u);
  bytes[66] = 0x81, bytes[67] = 0x02, bytes[68] = 0x03, bytes[69] = 0x04;
  ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
  EXPECT_EQ(header.GetDataLength(), 0x81020304u);
}

// A version 1 block shows its own bytes where version 2 has type and length.
TEST(BiosHeaderV2, Parse_OfAVersion1Block) {
  auto bytes = MakeTestHeader();
  bytes[5] = '1';
  bytes[64] = 160;
  BiosHeaderV2 header;
  ASSERT_TRUE(header.Parse(bytes.data(), bytes.size()));
  EXPECT_EQ(header.GetLutType(), 160u);
  EXPECT_EQ(header.GetDataLength(), 0x42434445u);  // offsets 66 to 69 hold their own numbers
}

}  // namespace
}  // namespace velora
