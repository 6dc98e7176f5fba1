// The firmware's table absent, cut off or damaged: the golden file takes its place, and when that
// is bad too, nothing reaches the panel.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "scenarios/BrokenMachine.h"
#include "support/NotebookTest.h"

namespace scenarios {
namespace {

using virtualnotebook::kP3Lut;

class BadFirmware : public BrokenMachine {
 protected:
  // Control header fields, big-endian, with the checksum put right.
  void SetControlField(size_t offset, std::initializer_list<uint8_t> bytes) {
    std::copy(bytes.begin(), bytes.end(),
              firmwareTable.begin() + kTableControlHeader + static_cast<ptrdiff_t>(offset));
    SealControlHeader(firmwareTable, kTableControlHeader);
  }
};

Lines NoTable(int errorCode) {
  return {LutLine(3, "GetSystemFirmwareTable Failed! Error Code:" + std::to_string(errorCode),
                  "ReadBiosLutDataBlock"),
          LutLine(3, "ReadBiosLutDataBlock Failed!", "GetSourceDataBlock")};
}

const Lines kBadControlHeader = {LutLine(3, "biosControlHeader Parse Failed!", "GetOneLutDat3D")};

Lines BadTableLength(size_t length, size_t target) {
  return {LutLine(3,
                  "3D Lut Table len is error, buffLen is " + std::to_string(length) +
                      "target len is " + std::to_string(target),
                  "GetOneLutDat3D")};
}

Lines BadHash(size_t hashedLength) {
  return {LutLine(3, "SHA256 Value is not match, shadata len is " + std::to_string(hashedLength),
                  "IsLutDataValid3D"),
          LutLine(3, "Bios 3D Lut Data invalid! mode:2", "UpdateThreeLutBinFile3D")};
}

const Lines kBadLength = {
    LutLine(3, "Lut Data Len error!", "IsLutDataValid3D"),
    LutLine(3, "Bios 3D Lut Data invalid! mode:2", "UpdateThreeLutBinFile3D")};

TEST_F(BadFirmware, None_IsAGoodMachine) {
  const Outcome outcome = SetP3Mode();
  ExpectFirmwareLut(outcome);
  EXPECT_EQ(outcome.lutLog, FirmwareLog({}));
}

TEST_F(BadFirmware, Absent) {
  firmwareTable.clear();
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(NoTable(ERROR_NOT_FOUND)));
}

TEST_F(BadFirmware, LargestTable) {
  firmwareTable.resize(131124, 0xFF);
  const Outcome outcome = SetP3Mode();
  ExpectFirmwareLut(outcome);
  EXPECT_EQ(outcome.lutLog, FirmwareLog({}));
}

TEST_F(BadFirmware, TooLarge) {
  firmwareTable.resize(131125, 0xFF);
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog,
            GoldenLog({LutLine(3, "Firmware Table bufferSize over max size!bufferSize:131125",
                               "GetBiosLutDataBlockSize"),
                       LutLine(3, "GetBiosLutDataBlockSize Failed!", "GetSourceDataBlock")}));
  EXPECT_EQ(outcome.firmwareReads, 1u);
}

TEST_F(BadFirmware, GrewSinceItsSizeWasAsked) {
  reportedFirmwareSize = static_cast<UINT>(firmwareTable.size() - 1);
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(NoTable(ERROR_INSUFFICIENT_BUFFER)));
}

TEST_F(BadFirmware, ShrankSinceItsSizeWasAsked) {
  reportedFirmwareSize = static_cast<UINT>(firmwareTable.size() + 1000);
  const Outcome outcome = SetP3Mode();
  ExpectFirmwareLut(outcome);
}

TEST_F(BadFirmware, CutOffAnywhere) {
  std::vector<size_t> lengths = {1, 15, 16, 17, 51, 52, 53, 67, 68, 69};
  for (size_t length = 5000; length < kTableSize; length += 9973) {
    lengths.push_back(length);
  }
  for (const size_t length : {kP3InTable - 1, kP3InTable, kP3InTable + 1, kP3InTable + 128,
                              kP3InTable + kBlockSize, kTableSize - 1}) {
    lengths.push_back(length);
  }
  for (const size_t length : lengths) {
    SCOPED_TRACE(length);
    RemoveBinFiles();
    firmwareTable = WholeMachine().firmwareTable;
    firmwareTable.resize(length);
    const Outcome outcome = SetP3Mode();
    ExpectGoldenLut(outcome);
    const Lines reasons = length < 16   ? Lines{LutLine(3, "Data error!mode:2", "GetOneLutDat3D")}
                          : length < 68 ? kBadControlHeader
                                        : BadTableLength(length, kTableSize);
    EXPECT_EQ(outcome.lutLog, GoldenLog(reasons));
  }
}

TEST_F(BadFirmware, BlockSizeOf0) {
  SetControlField(8, {0, 0, 0, 0});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(BadTableLength(kTableSize, 68)));
}

// Sixteen zeros have the right checksum.
TEST_F(BadFirmware, ControlHeaderOfZeros) {
  std::fill_n(firmwareTable.begin() + kTableControlHeader, 16, uint8_t{0});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(BadTableLength(kTableSize, 52)));
}

TEST_F(BadFirmware, BlockCountOf0) {
  SetControlField(6, {0, 0});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog({}));
}

TEST_F(BadFirmware, BlockCountThatEndsAheadOfTheBlock) {
  SetControlField(6, {0, 1});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog({}));
}

TEST_F(BadFirmware, OneBlockTooMany) {
  SetControlField(6, {0, 6});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(BadTableLength(kTableSize, kTableSize + kBlockSize)));
}

// 65535 blocks of 4 GiB: the product does not wrap around to something small.
TEST_F(BadFirmware, LargestCountAndSize) {
  SetControlField(6, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(BadTableLength(kTableSize, 68 + 65535ull * 0xFFFFFFFF)));
}

// 65536 times 65536 is 0 in 32 bits.
TEST_F(BadFirmware, ProductThatIs0In32Bits) {
  SetControlField(6, {0x80, 0x00, 0x00, 0x02, 0x00, 0x00});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(BadTableLength(kTableSize, 68 + 0x100000000)));
}

TEST_F(BadFirmware, HeaderLengthBeyondTheTable) {
  SetControlField(4, {0xFF, 0xFF});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(BadTableLength(kTableSize, 52 + 65535 + 5 * kBlockSize)));
}

TEST_F(BadFirmware, BlocksShorterThanTheirHeader) {
  SetControlField(8, {0, 0, 0, 127});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  const std::string line =
      LutLine(3, "3DLut data buffLen error!mode:2, buffLen:127", "OneLutTypeIsValid");
  EXPECT_EQ(outcome.lutLog, GoldenLog({line, line, line, line, line}));
}

TEST_F(BadFirmware, AnyBitOfTheControlHeader) {
  for (size_t bit = 0; bit < 16 * 8; ++bit) {
    SCOPED_TRACE(bit);
    RemoveBinFiles();
    firmwareTable = WholeMachine().firmwareTable;
    FlipBit(firmwareTable, kTableControlHeader + bit / 8, bit % 8);
    const Outcome outcome = SetP3Mode();
    ExpectGoldenLut(outcome);
    EXPECT_EQ(outcome.lutLog, GoldenLog(kBadControlHeader));
  }
}

// The type byte: there is no P3 block any more, which is no line of its own.
TEST_F(BadFirmware, AnyBitOfTheTypeByte) {
  for (size_t bit = 0; bit < 8; ++bit) {
    SCOPED_TRACE(bit);
    RemoveBinFiles();
    firmwareTable = WholeMachine().firmwareTable;
    FlipBit(firmwareTable, kP3InTable + 64, bit);
    const Outcome outcome = SetP3Mode();
    ExpectGoldenLut(outcome);
    EXPECT_EQ(outcome.lutLog, GoldenLog({}));
  }
}

// The data length: 24565, or 0x5FF5.
TEST_F(BadFirmware, AnyBitOfTheDataLength) {
  for (size_t bit = 0; bit < 32; ++bit) {
    SCOPED_TRACE(bit);
    RemoveBinFiles();
    firmwareTable = WholeMachine().firmwareTable;
    FlipBit(firmwareTable, kP3InTable + 69 - bit / 8, bit % 8);
    const Outcome outcome = SetP3Mode();
    ExpectGoldenLut(outcome);
    const uint64_t length = 24565 ^ uint64_t { 1 } << bit;
    EXPECT_EQ(outcome.lutLog, GoldenLog(length > 24565 ? kBadLength : BadHash(length + 128)));
  }
}

// 0xFFFFFFFF + 160 is small in 32 bits.
TEST_F(BadFirmware, LargestDataLength) {
  std::fill_n(firmwareTable.begin() + kP3InTable + 66, 4, uint8_t{0xFF});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(kBadLength));
}

TEST_F(BadFirmware, OneBitOfTheBlockAnywhereElse) {
  for (const size_t byte : SampledBytesOfBlock()) {
    if (byte == 64 || (byte >= 66 && byte < 70)) {
      continue;
    }
    SCOPED_TRACE(byte);
    RemoveBinFiles();
    firmwareTable = WholeMachine().firmwareTable;
    FlipBit(firmwareTable, kP3InTable + byte, byte % 8);
    const Outcome outcome = SetP3Mode();
    ExpectGoldenLut(outcome);
    EXPECT_EQ(outcome.lutLog, GoldenLog(BadHash(24693)));
  }
}

// What the other blocks hold does not matter to this one.
TEST_F(BadFirmware, OneBitOfAnotherBlock) {
  FlipBit(firmwareTable, kP3InTable - 1, 0);
  FlipBit(firmwareTable, kP3InTable + kBlockSize, 0);
  ExpectFirmwareLut(SetP3Mode());
}

TEST_F(BadFirmware, ADamagedFirstBlockIsNotSkipped) {
  Bytes damaged = P3Block();
  FlipBit(damaged, 200, 3);
  firmwareTable = virtualnotebook::MakeFirmwareTable({damaged, P3Block()});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(BadHash(24693)));
}

// Another panel's firmware is good data that must not be used: its bin file stays as it was
// written.
TEST_F(BadFirmware, OfAnotherPanel) {
  virtualnotebook::PanelDescription other = WholeMachine().panel;
  other.serial = {4, 3, 2, 1};
  const Bytes block =
      virtualnotebook::MakeLutBlock(HeaderOf(other, kP3Lut), MakeLut(other, kP3Lut));
  firmwareTable = virtualnotebook::MakeFirmwareTable({block});
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_TRUE(testsupport::ReadFileBytes(DataFile("P3.bin")) == block);
  EXPECT_EQ(outcome.lutLog,
            (Lines{LutLine(1, "SetDisplayer by 3DLut, mode is 2", "SetDisplayerBy3DLut"),
                   FirmwareLog({})[1],
                   LutLine(1,
                           "LCD Invalid! Bios SN:04030201Edid SN:01020304Bios Vendor:NVX#"
                           "Edid Vendor:NVX#Bios Week:08Edid Week:8Bios Year:2024Edid Year:2024",
                           "IsLcdDataValid"),
                   LutLine(3, "LCD data is not match or get data error, ret is 1", "IsLcdChanged"),
                   LutLine(1, "LCD changed! mode:2", "Sync3DLutDataTable"),
                   LutLine(1, "Not e-book mode.", "FusionEbookProc")}));
}

// A valid bin file spares the firmware: the worst table does not matter.
TEST_F(BadFirmware, BehindAGoodBinFile) {
  firmwareTable.resize(131125);
  testsupport::WriteFileBytes(DataFile("P3.bin"), P3Block());
  const Outcome outcome = SetP3Mode();
  ExpectFirmwareLut(outcome);
  EXPECT_EQ(outcome.lutLog, FirmwareLog({}));
  EXPECT_EQ(outcome.firmwareReads, 0u);
}

TEST_F(BadFirmware, BeforeAGoodGoldenBinFile) {
  firmwareTable.clear();
  testsupport::WriteFileBytes(DataFile("GoldenP3.bin"), GoldenP3Block());
  std::filesystem::remove(files.goldenFile);
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(outcome.lutLog, GoldenLog(NoTable(ERROR_NOT_FOUND)));
}

// Both sources bad: the failure is told from the inside out, and the panel keeps what it had.
TEST_F(BadFirmware, AndABadGoldenFile) {
  firmwareTable.clear();
  Bytes golden = WholeMachine().goldenFile;
  FlipBit(golden, kP3InGolden + 128, 0);
  testsupport::WriteFileBytes(files.goldenFile, golden);
  const Outcome outcome = SetP3Mode();
  ExpectRefused(outcome);
  EXPECT_EQ(outcome.lutLog, RefusedLog(NoTable(ERROR_NOT_FOUND), BadHash(24693)));
  const Lines tail = {
      "3 SetDisplayerBy3DLut Failed, mode is 2(ColorFieldApi::EnableColorFieldByDriver)",
      "3 Set Color Filed Failed, ret is 17(ColorFieldApi::EnableColorFieldMode)",
      "3 EnableColorFieldMode error,ret is :17(ColorFieldApi::SetColorField)"};
  const auto at = std::ranges::search(outcome.log, tail);
  EXPECT_FALSE(at.empty()) << testing::PrintToString(outcome.log);
}

}  // namespace
}  // namespace scenarios
