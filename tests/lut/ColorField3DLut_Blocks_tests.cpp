#include "lut/ColorField3DLut.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/GuardedBuffer.h"
#include "support/LogCapture.h"
#include "virtualnotebook/Factory.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;
using virtualnotebook::Bytes;
using virtualnotebook::HeaderOf;
using virtualnotebook::MakeFirmwareTable;
using virtualnotebook::MakeGoldenFile;
using virtualnotebook::MakeLutBlock;

// Where things stand in a table of the factory.
constexpr size_t kControlHeader = 52;
constexpr size_t kFirstBlock = 52 + 16;
constexpr size_t kBlockSize = 24725;

void PutBigEndian(Bytes& bytes, size_t offset, uint64_t value, size_t width) {
  for (size_t i = 0; i < width; ++i) {
    bytes[offset + i] = static_cast<uint8_t>(value >> 8 * (width - 1 - i));
  }
}

// A table's control header, with its sum.
void PutControlHeader(Bytes& table, uint16_t headerLength, uint16_t count, uint32_t size) {
  PutBigEndian(table, kControlHeader + 4, headerLength, 2);
  PutBigEndian(table, kControlHeader + 6, count, 2);
  PutBigEndian(table, kControlHeader + 8, size, 4);
  unsigned sum = 0;
  for (size_t i = 0; i < 14; ++i) sum += table[kControlHeader + i];
  PutBigEndian(table, kControlHeader + 14, sum & 0xFFFF, 2);
}

std::string TableLengthText(const char* kind, size_t length, uint64_t target) {
  return std::string(kind) + " Lut Table len is error, buffLen is " + std::to_string(length) +
         "target len is " + std::to_string(target);
}

// Log lines as "level message(function)".
using Lines = std::vector<std::string>;

std::string Error(const std::string& method, const std::string& message) {
  return "3 " + message + "(ColorField3DLut::" + method + ")";
}

std::string HashText(size_t length) {
  return "SHA256 Value is not match, shadata len is " + std::to_string(length);
}

LutBuffer ToBuffer(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }
Bytes ToBytes(const LutBuffer& buffer) { return {buffer.begin(), buffer.end()}; }

class ColorField3DLutBlocks : public testing::Test {
 protected:
  // The default panel's, calculated once.
  static const Bytes& Block(uint8_t lutType) {
    static std::map<uint8_t, Bytes> blocks;
    if (!blocks.contains(lutType)) {
      blocks[lutType] =
          MakeLutBlock(HeaderOf(kPanel, lutType), virtualnotebook::MakeLut(kPanel, lutType));
    }
    return blocks[lutType];
  }
  static const Bytes& Table() {
    static const Bytes table =
        MakeFirmwareTable({Block(0), Block(2), Block(1), Block(7), Block(160)});
    return table;
  }

  void ForgetLog() {
    log_.reset();
    log_.emplace();
  }
  Lines Log() const {
    Lines lines;
    for (const auto& [level, text] : log_->Lines()) {
      lines.push_back(std::to_string(level) + " " + std::string(text.begin(), text.end()));
    }
    return lines;
  }

  static inline const virtualnotebook::PanelDescription kPanel{};
  ColorField3DLut engine;

 private:
  std::optional<testsupport::LogCapture> log_{std::in_place};
};

// --- From a table to a block ---

TEST_F(ColorField3DLutBlocks, PadFirmwarePrefix_Inserts52Characters0) {
  velora::LutBuffer buffer = "table";
  engine.PadFirmwarePrefix(buffer);
  EXPECT_EQ(buffer, std::string(52, '0') + "table");
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_TakesTheModesBlock) {
  for (const auto& [mode, type] : {std::pair<int, uint8_t>{0, 0}, {1, 1}, {2, 2}, {7, 7}}) {
    LutBuffer buffer = ToBuffer(Table());
    EXPECT_TRUE(engine.GetOneLutDat3D(mode, buffer));
    EXPECT_EQ(ToBytes(buffer), Block(type));
  }
  EXPECT_EQ(Log(), Lines());
}

// The stride goes out whole, with what lies behind the hash.
TEST_F(ColorField3DLutBlocks, GetOneLutDat_TakesTheWholeStride) {
  LutBuffer buffer = ToBuffer(Table());
  EXPECT_TRUE(engine.GetOneLutDatGamma(buffer));
  Bytes stride = Block(160);
  ASSERT_EQ(stride.size(), 5280u);
  stride.resize(kBlockSize, 0xFF);
  EXPECT_EQ(ToBytes(buffer), stride);

  buffer = ToBuffer(MakeFirmwareTable({Block(1), Block(2)}, 30000));
  EXPECT_TRUE(engine.GetOneLutDat3D(2, buffer));
  stride = Block(2);
  stride.resize(30000, 0xFF);
  EXPECT_EQ(ToBytes(buffer), stride);
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_NoRoomForAControlHeader) {
  for (const size_t size : {0u, 1u, 15u}) {
    ForgetLog();
    LutBuffer buffer(size, '\0');
    EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer));
    EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
    EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", "Data error!mode:2"),
                            Error("GetOneLutDatGamma", "Gamma Data error!")}));
  }
}

// The first test lets 16 bytes through, but the header's last byte is the 68th.
TEST_F(ColorField3DLutBlocks, GetOneLutDat_ControlHeaderEndsBeyondTheBuffer) {
  const Lines refused = {Error("GetOneLutDat3D", "biosControlHeader Parse Failed!"),
                         Error("GetOneLutDatGamma", "biosControlHeader Parse Failed!")};
  for (const size_t size : {16u, 51u, 52u, 53u, 67u}) {
    ForgetLog();
    LutBuffer buffer(size, '\0');  // a zero control header would be a good one
    EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer));
    EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
    EXPECT_EQ(Log(), refused) << size;
  }
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_WrongChecksum) {
  for (size_t byte = kControlHeader; byte < kFirstBlock; ++byte) {
    ForgetLog();
    Bytes table = Table();
    table[byte] ^= 0x10;
    LutBuffer buffer = ToBuffer(table);
    EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer)) << byte;
    EXPECT_FALSE(engine.GetOneLutDatGamma(buffer)) << byte;
    EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", "biosControlHeader Parse Failed!"),
                            Error("GetOneLutDatGamma", "biosControlHeader Parse Failed!")}));
  }
}

// An all-zero control header has the right sum, and a block size of 0.
TEST_F(ColorField3DLutBlocks, GetOneLutDat_BlockSizeZero) {
  LutBuffer buffer(kFirstBlock, '\0');
  EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer));
  EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
  EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", TableLengthText("3D", 68, 52)),
                          Error("GetOneLutDatGamma", TableLengthText("Gamma", 68, 52))}));
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_BlocksEndBeyondTheBuffer) {
  const size_t target = kFirstBlock + 5 * kBlockSize;
  for (const size_t size : {kFirstBlock, kFirstBlock + kBlockSize, target - 1}) {
    ForgetLog();
    LutBuffer buffer = ToBuffer(Table()).substr(0, size);
    EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
    EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
    EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", TableLengthText("3D", size, target)),
                            Error("GetOneLutDatGamma", TableLengthText("Gamma", size, target))}));
  }
  LutBuffer longer = ToBuffer(Table()) + "more";
  EXPECT_TRUE(engine.GetOneLutDat3D(0, longer));
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_SumsDoNotWrap) {
  Bytes table(kFirstBlock + 300, 0);
  // 2 times 2^31 is 2^32, the greatest count and size come near 2^48.
  PutControlHeader(table, 16, 2, 0x80000000);
  LutBuffer buffer = ToBuffer(table);
  EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
  PutControlHeader(table, 0xFFFF, 0xFFFF, 0xFFFFFFFF);
  buffer = ToBuffer(table);
  EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
  EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", TableLengthText("3D", 368, 4294967364)),
                          Error("GetOneLutDat3D",
                                TableLengthText("3D", 368, 281470681743360 - 0xFFFF + 65587))}));
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_NoBlocks) {
  Bytes table(kFirstBlock, 0);
  PutControlHeader(table, 16, 0, kBlockSize);
  LutBuffer buffer = ToBuffer(table);
  EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
  EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_NoBlockOfTheType) {
  LutBuffer buffer = ToBuffer(MakeFirmwareTable({Block(0), Block(1)}));
  EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer));
  EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_HeaderLengthPlacesTheBlocks) {
  Bytes table = MakeFirmwareTable({Block(2)});
  table.insert(table.begin() + kFirstBlock, 4, 0xAA);
  PutControlHeader(table, 20, 1, kBlockSize);
  LutBuffer buffer = ToBuffer(table);
  EXPECT_TRUE(engine.GetOneLutDat3D(2, buffer));
  EXPECT_EQ(ToBytes(buffer), Block(2));
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_FirstBlockOfTheTypeWins) {
  const Bytes first = MakeLutBlock(HeaderOf(kPanel, 2), virtualnotebook::MakeIdentityLut());
  LutBuffer buffer = ToBuffer(MakeFirmwareTable({Block(1), first, Block(2)}));
  EXPECT_TRUE(engine.GetOneLutDat3D(2, buffer));
  EXPECT_EQ(ToBytes(buffer), first);
}

TEST_F(ColorField3DLutBlocks, GetOneLutDat_BlocksWithoutRoomForAHeader) {
  Bytes table(kFirstBlock + 254, 0);
  PutControlHeader(table, 16, 2, 127);
  LutBuffer buffer = ToBuffer(table);
  EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
  const std::string line =
      Error("OneLutTypeIsValid", "3DLut data buffLen error!mode:0, buffLen:127");
  EXPECT_EQ(Log(), Lines({line, line}));
}

// --- The tests of a block ---

TEST_F(ColorField3DLutBlocks, OneLutTypeIsValid_NoData) {
  EXPECT_FALSE(engine.OneLutTypeIsValid(2, nullptr, 128));
  EXPECT_FALSE(engine.OneLutTypeIsValidGamma(nullptr, 128));
  EXPECT_EQ(
      Log(),
      Lines({Error("OneLutTypeIsValid", "3DLut data pLutData3D is nullptr!mode:2, buffLen:128"),
             Error("OneLutTypeIsValidGamma",
                   "GammaLut data pLutDataGamma is nullptr! buffLen:128")}));
}

TEST_F(ColorField3DLutBlocks, OneLutTypeIsValid_Length) {
  const Bytes block = Block(2);
  const Bytes gamma = Block(160);
  EXPECT_FALSE(engine.OneLutTypeIsValid(2, block.data(), 127));
  EXPECT_FALSE(engine.OneLutTypeIsValidGamma(gamma.data(), 127));
  EXPECT_EQ(Log(),
            Lines({Error("OneLutTypeIsValid", "3DLut data buffLen error!mode:2, buffLen:127"),
                   Error("OneLutTypeIsValidGamma", "GammaLut data buffLen error! buffLen:127")}));
  EXPECT_TRUE(engine.OneLutTypeIsValid(2, block.data(), 128));
  EXPECT_TRUE(engine.OneLutTypeIsValidGamma(gamma.data(), 128));
}

TEST_F(ColorField3DLutBlocks, OneLutTypeIsValid_ADifferenceIsSilent) {
  const Bytes block = Block(2);
  EXPECT_FALSE(engine.OneLutTypeIsValid(1, block.data(), block.size()));
  EXPECT_FALSE(engine.OneLutTypeIsValidGamma(block.data(), block.size()));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutBlocks, OneLutTypeIsValidGamma_Type160Only) {
  for (unsigned type = 0; type < 256; ++type) {
    const Bytes block = MakeLutBlock(HeaderOf(kPanel, static_cast<uint8_t>(type)), {});
    EXPECT_EQ(engine.OneLutTypeIsValidGamma(block.data(), block.size()), type == 160) << type;
  }
}

TEST_F(ColorField3DLutBlocks, IsLutDataValid3D_GoodBlocks) {
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(Block(2))));
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(Block(160))));
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(Block(2)) + "behind the hash"));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutBlocks, IsLutDataValid3D_Length) {
  const LutBuffer block = ToBuffer(Block(2));
  for (const size_t size : {0u, 127u}) {
    ForgetLog();
    EXPECT_FALSE(engine.IsLutDataValid3D(block.substr(0, size)));
    EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", "3D Lut data error!")}));
  }
  for (const size_t size : {size_t{128}, size_t{24693}, kBlockSize - 1}) {
    ForgetLog();
    EXPECT_FALSE(engine.IsLutDataValid3D(block.substr(0, size)));
    EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", "Lut Data Len error!")}));
  }
}

// With 32 bits, these data lengths and 160 would come out at 0, at 159 and at 160 bytes.
TEST_F(ColorField3DLutBlocks, IsLutDataValid3D_LengthDoesNotWrap) {
  for (const uint32_t length : {0xFFFFFF60u, 0xFFFFFFFFu, 0xFFFFFF80u}) {
    ForgetLog();
    Bytes block = Block(2);
    PutBigEndian(block, 66, length, 4);
    EXPECT_FALSE(engine.IsLutDataValid3D(ToBuffer(block)));
    EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", "Lut Data Len error!")}));
  }
}

TEST_F(ColorField3DLutBlocks, IsLutDataValid3D_AnyBitFlipped) {
  const Lines refused = {Error("IsLutDataValid3D", HashText(24693))};
  const Bytes good = Block(2);
  // Header, words, extension bytes, hash; the data length has tests of its own.
  for (const size_t byte : {0u, 46u, 64u, 127u, 128u, 19779u, 19780u, 24692u, 24693u, 24724u}) {
    ForgetLog();
    Bytes block = good;
    block[byte] ^= 1;
    EXPECT_FALSE(engine.IsLutDataValid3D(ToBuffer(block))) << byte;
    EXPECT_EQ(Log(), refused) << byte;
  }
}

TEST_F(ColorField3DLutBlocks, IsLutDataValid3D_GammaHash) {
  Bytes block = Block(160);
  block[5247] ^= 0x80;
  EXPECT_FALSE(engine.IsLutDataValid3D(ToBuffer(block)));
  EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", HashText(5248))}));
}

TEST_F(ColorField3DLutBlocks, IsLutDataValid3D_MarkBehindTheHash) {
  Bytes block = Block(7);
  block.push_back(0x7F);
  ASSERT_EQ(block.size(), 24726u);
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(block)));
}

// --- Decoding ---

TEST_F(ColorField3DLutBlocks, ParseLutData_Decodes) {
  const Bytes block = Block(2);
  std::vector<double> lut(14739);
  EXPECT_TRUE(engine.ParseLutData(2, block.data(), block.size(), lut.data()));
  EXPECT_EQ(lut, virtualnotebook::MakeLut(kPanel, 2));
}

TEST_F(ColorField3DLutBlocks, ParseLutData_Refuses) {
  const Bytes block = Block(2);
  std::vector<double> lut(14739, -1);
  EXPECT_FALSE(engine.ParseLutData(2, nullptr, block.size(), lut.data()));
  EXPECT_FALSE(engine.ParseLutData(2, block.data(), kBlockSize - 1, lut.data()));
  EXPECT_FALSE(engine.ParseLutData(2, block.data(), kBlockSize, nullptr));
  EXPECT_EQ(Log(), Lines({Error("ParseLutData", "LutDataFile Error!mode:2"),
                          Error("ParseLutData", "LutDataFile Error!mode:2"),
                          Error("ParseLutData", "pLutData3D is nullptr!mode:2")}));
  EXPECT_EQ(lut, std::vector<double>(14739, -1));
}

// --- Every cut, at the end of a page ---

TEST_F(ColorField3DLutBlocks, OneLutTypeIsValid_EveryCut) {
  for (size_t length = 0; length <= 128; ++length) {
    const GuardedBuffer p3(Block(2), length);
    const GuardedBuffer gamma(Block(160), length);
    EXPECT_EQ(engine.OneLutTypeIsValid(2, p3.data(), length), length == 128);
    EXPECT_EQ(engine.OneLutTypeIsValidGamma(gamma.data(), length), length == 128);
  }
}

TEST_F(ColorField3DLutBlocks, ParseLutData_EveryCut) {
  std::vector<double> lut(14739);
  // One buffer for all: its last bytes are as good as its first ones.
  const GuardedBuffer block(Block(2));
  size_t decoded = 0;
  for (size_t length = 0; length <= kBlockSize; ++length) {
    const uint8_t* const data = block.data() + (kBlockSize - length);
    decoded += engine.ParseLutData(2, data, length, lut.data()) ? 1u : 0u;
  }
  EXPECT_EQ(decoded, 1u);
  EXPECT_EQ(Log().size(), kBlockSize);
}

}  // namespace
}  // namespace velora
