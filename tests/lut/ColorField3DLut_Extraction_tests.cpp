#include "lut/LutMachine.h"

namespace lutmachine {
namespace {

using virtualnotebook::HeaderOf;
using virtualnotebook::MakeFirmwareTable;
using virtualnotebook::MakeGoldenFile;
using virtualnotebook::MakeLutBlock;

// Where things stand in a table of the factory.
constexpr size_t kControlHeader = 52;
constexpr size_t kFirstBlock = 52 + 16;
constexpr size_t kBlockSize = 24725;
constexpr size_t kGammaBlockSize = 5280;

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

class ColorField3DLutExtraction : public LutMachine {
 protected:
  // A mode moves to the golden file for good when its panel cannot be told.
  void MoveToGolden(int mode) {
    Unplug();
    engine.Sync3DLutDataTable(mode);
    notebook.ForgetRecords();
  }

  // A table of one block of a LUT type, cut or spoilt by the caller.
  Bytes TableOf(const Bytes& block) const { return MakeFirmwareTable({block}); }

  // A block whose hash does not fit.
  Bytes Damaged(uint8_t lutType) const {
    Bytes block = Block(lutType);
    block[200] ^= 1;
    return block;
  }

  static std::string HashText(size_t length) {
    return "SHA256 Value is not match, shadata len is " + std::to_string(length);
  }

  const std::string noTable =
      Error("ReadBiosLutDataBlock", "GetSystemFirmwareTable Failed! Error Code:1168");
};

// --- The firmware ---

TEST_F(ColorField3DLutExtraction, GetBiosLutDataBlockSize_AsksForTheTable) {
  unsigned size = 0;
  EXPECT_TRUE(engine.GetBiosLutDataBlockSize(size));
  EXPECT_EQ(size, machine.firmwareTable.size());
  EXPECT_EQ(LastArgument("GetSystemFirmwareTable", 0), std::to_string(0x41435049));
  EXPECT_EQ(LastArgument("GetSystemFirmwareTable", 1), std::to_string(0x54554C44));
  EXPECT_EQ(LastArgument("GetSystemFirmwareTable", 2), "null");
  EXPECT_EQ(LastArgument("GetSystemFirmwareTable", 3), "0");
}

TEST_F(ColorField3DLutExtraction, GetBiosLutDataBlockSize_Limit) {
  unsigned size = 1;
  for (const UINT reported : {0u, 131124u}) {
    notebook.reportedFirmwareSize = reported;
    EXPECT_TRUE(engine.GetBiosLutDataBlockSize(size));
    EXPECT_EQ(size, reported);
  }
  EXPECT_EQ(Log(), Lines());
  for (const UINT reported : {131125u, 0xFFFFFFFFu}) {
    notebook.ForgetRecords();
    notebook.reportedFirmwareSize = reported;
    EXPECT_FALSE(engine.GetBiosLutDataBlockSize(size));
    EXPECT_EQ(Log(), Lines({Error("GetBiosLutDataBlockSize",
                                  "Firmware Table bufferSize over max size!bufferSize:" +
                                      std::to_string(reported))}));
  }
}

TEST_F(ColorField3DLutExtraction, ReadBiosLutDataBlock_FillsTheBuffer) {
  velora::LutBuffer buffer(machine.firmwareTable.size(), '0');
  EXPECT_TRUE(engine.ReadBiosLutDataBlock(buffer));
  EXPECT_EQ(ToBytes(buffer), machine.firmwareTable);
  EXPECT_EQ(LastArgument("GetSystemFirmwareTable", 3), std::to_string(buffer.size()));
}

TEST_F(ColorField3DLutExtraction, ReadBiosLutDataBlock_NoTable) {
  notebook.firmwareTable.clear();
  velora::LutBuffer buffer(100, '0');
  EXPECT_FALSE(engine.ReadBiosLutDataBlock(buffer));
  EXPECT_EQ(Log(), Lines({noTable}));
}

TEST_F(ColorField3DLutExtraction, ReadBiosLutDataBlock_TableLargerThanTheBuffer) {
  velora::LutBuffer buffer(machine.firmwareTable.size() - 1, '0');
  EXPECT_FALSE(engine.ReadBiosLutDataBlock(buffer));
  EXPECT_EQ(Log(),
            Lines({Error("ReadBiosLutDataBlock", "GetSystemFirmwareTable Failed! Error Code:" +
                                                     std::to_string(ERROR_INSUFFICIENT_BUFFER))}));
}

TEST_F(ColorField3DLutExtraction, ReadBiosLutDataBlock_TellsTheErrorCode) {
  notebook.FailCall("GetSystemFirmwareTable", 1, 0, ERROR_ACCESS_DENIED);
  velora::LutBuffer buffer(machine.firmwareTable.size(), '0');
  EXPECT_FALSE(engine.ReadBiosLutDataBlock(buffer));
  EXPECT_EQ(Log(),
            Lines({Error("ReadBiosLutDataBlock", "GetSystemFirmwareTable Failed! Error Code:5")}));
}

// --- Sources ---

TEST_F(ColorField3DLutExtraction, GetSourceDataBlock_Firmware) {
  velora::LutBuffer buffer = "old contents";
  EXPECT_TRUE(engine.GetSourceDataBlock(2, buffer));
  EXPECT_EQ(ToBytes(buffer), machine.firmwareTable);
  EXPECT_EQ(Log(), Lines());
}

// What the firmware leaves of its own size is filler.
TEST_F(ColorField3DLutExtraction, GetSourceDataBlock_FillerBehindAShortTable) {
  notebook.reportedFirmwareSize = static_cast<UINT>(machine.firmwareTable.size() + 2);
  velora::LutBuffer buffer;
  EXPECT_TRUE(engine.GetSourceDataBlock(2, buffer));
  EXPECT_EQ(buffer.size(), machine.firmwareTable.size() + 2);
  EXPECT_EQ(buffer.substr(machine.firmwareTable.size()), "00");
}

TEST_F(ColorField3DLutExtraction, GetSourceDataBlock_FirmwareFails) {
  velora::LutBuffer buffer;
  notebook.reportedFirmwareSize = 131125;
  EXPECT_FALSE(engine.GetSourceDataBlock(2, buffer));
  EXPECT_EQ(Log(), Lines({Error("GetBiosLutDataBlockSize",
                                "Firmware Table bufferSize over max size!bufferSize:131125"),
                          Error("GetSourceDataBlock", "GetBiosLutDataBlockSize Failed!")}));
  notebook.ForgetRecords();
  notebook.reportedFirmwareSize.reset();
  notebook.firmwareTable.clear();  // size 0: found out by the read
  EXPECT_FALSE(engine.GetSourceDataBlock(2, buffer));
  EXPECT_EQ(Log(), Lines({noTable, Error("GetSourceDataBlock", "ReadBiosLutDataBlock Failed!")}));
  EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 2u);
}

TEST_F(ColorField3DLutExtraction, GetSourceDataBlock_GoldenFile) {
  MoveToGolden(2);
  velora::LutBuffer buffer;
  EXPECT_TRUE(engine.GetSourceDataBlock(2, buffer));
  EXPECT_EQ(buffer.substr(0, 52), std::string(52, '0'));
  EXPECT_EQ(ToBytes(buffer.substr(52)), machine.goldenFile);
  EXPECT_EQ(Log(), Lines());
  EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 0u);
  // Each mode has a source of its own.
  EXPECT_TRUE(engine.GetSourceDataBlock(1, buffer));
  EXPECT_EQ(ToBytes(buffer), machine.firmwareTable);
}

TEST_F(ColorField3DLutExtraction, GetSourceDataBlock_GoldenFileLimits) {
  MoveToGolden(2);
  Bytes golden(24741, 'g');
  velora::LutBuffer buffer;
  WriteFileBytes(kGoldenFile, golden);
  EXPECT_TRUE(engine.GetSourceDataBlock(2, buffer));
  EXPECT_EQ(Log(), Lines());
  golden.pop_back();
  WriteFileBytes(kGoldenFile, golden);
  EXPECT_FALSE(engine.GetSourceDataBlock(2, buffer));
  EXPECT_EQ(Log(), Lines({Error("Read3DLutDataFormFile",
                                "3D LUT Data File Len Error! fileName:" + kGoldenFile)}));
}

TEST_F(ColorField3DLutExtraction, GetSourceDataBlockGamma_Firmware) {
  velora::LutBuffer buffer;
  EXPECT_TRUE(engine.GetSourceDataBlockGamma(buffer));
  EXPECT_EQ(ToBytes(buffer), machine.firmwareTable);
}

TEST_F(ColorField3DLutExtraction, GetSourceDataBlockGamma_FirmwareFails) {
  velora::LutBuffer buffer;
  notebook.reportedFirmwareSize = 131125;
  EXPECT_FALSE(engine.GetSourceDataBlockGamma(buffer));
  EXPECT_EQ(Log(), Lines({Error("GetBiosLutDataBlockSize",
                                "Firmware Table bufferSize over max size!bufferSize:131125"),
                          Error("GetSourceDataBlockGamma", "GetBiosLutDataBlockSize Failed!")}));
}

TEST_F(ColorField3DLutExtraction, PadFirmwarePrefix_Inserts52Characters0) {
  velora::LutBuffer buffer = "table";
  engine.PadFirmwarePrefix(buffer);
  EXPECT_EQ(buffer, std::string(52, '0') + "table");
}

// --- GetFullGoldenFilePath ---

class ColorField3DLutGoldenPath : public ColorField3DLutExtraction {
 protected:
  ColorField3DLutGoldenPath() { std::filesystem::remove(kGoldenFile); }
  ~ColorField3DLutGoldenPath() override {
    for (const std::string& path : {beside_, above_, shell_}) {
      std::filesystem::remove(path);
    }
  }

  static std::string ProgramDir() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::string program = Utf8(path);
    return program.substr(0, program.rfind('\\'));
  }

  void NameShellProgram(const std::wstring& program) {
    ASSERT_EQ(RegSetKeyValueW(HKEY_CLASSES_ROOT, kShellKey, nullptr, REG_SZ, program.c_str(),
                              static_cast<DWORD>((program.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
  }

  static constexpr wchar_t kShellKey[] = L"DesktopBackground\\Shell\\NxVelora\\command";
  const testsupport::ScopedKey key_{HKEY_CLASSES_ROOT, L"DesktopBackground\\Shell\\NxVelora"};
  const std::string shell_ = kDataDir + kGoldenName;
  const std::string beside_ = ProgramDir() + kGoldenName;
  const std::string above_ = ProgramDir() + "\\.." + kGoldenName;
  const std::string readLine_ = Debug("GetFullGoldenFilePath", "Read Golden File:" + above_);
};

TEST_F(ColorField3DLutGoldenPath, FirstPlaceThatHasIt) {
  NameShellProgram(L"C:\\ProgramData\\Comms\\NxVelora\\Velora.exe");
  for (const std::string& path : {above_, beside_, shell_, kGoldenFile}) {
    WriteFileBytes(path, {1});
  }
  notebook.ForgetRecords();
  EXPECT_EQ(engine.GetFullGoldenFilePath(), kGoldenFile);
  std::filesystem::remove(kGoldenFile);
  EXPECT_EQ(engine.GetFullGoldenFilePath(),
            "C:\\ProgramData\\Comms\\NxVelora\\Velora.exe\\.." + std::string(kGoldenName));
  std::filesystem::remove(shell_);
  EXPECT_EQ(engine.GetFullGoldenFilePath(), beside_);
  EXPECT_EQ(Log(), Lines());
  std::filesystem::remove(beside_);
  EXPECT_EQ(engine.GetFullGoldenFilePath(), above_);
  EXPECT_EQ(Log(), Lines({readLine_}));
}

// No shell entry: that place is passed over in silence.
TEST_F(ColorField3DLutGoldenPath, WithoutShellEntry) {
  WriteFileBytes(beside_, {1});
  notebook.ForgetRecords();
  EXPECT_EQ(engine.GetFullGoldenFilePath(), beside_);
  EXPECT_EQ(Log(), Lines());
  EXPECT_EQ(notebook.CountCalls("_access"), 2u);
}

TEST_F(ColorField3DLutGoldenPath, NowhereGivesTheLastPlace) {
  EXPECT_EQ(engine.GetFullGoldenFilePath(), above_);
  EXPECT_EQ(Log(), Lines({readLine_}));
  EXPECT_EQ(notebook.CountCalls("_access"), 2u);  // the last place is not looked at
}

TEST_F(ColorField3DLutGoldenPath, NowhereEndsInAFailedRead) {
  const std::string path =
      std::filesystem::path(above_).lexically_normal().make_preferred().string();
  std::vector<double> lut(14739);
  EXPECT_FALSE(engine.GetGoldenFileLutData3D(2, lut.data()));
  EXPECT_EQ(Log(), Lines({readLine_, Error("Read3DLutDataFormFile",
                                           "Open 3D LUT Data File Failed! fileName:" + path)}));
}

TEST_F(ColorField3DLutGoldenPath, AsksTheSystemForTheProgram) {
  engine.GetFullGoldenFilePath();
  EXPECT_EQ(LastArgument("GetModuleFileNameW", 0), "null");
  EXPECT_EQ(LastArgument("GetModuleFileNameW", 2), "261");
}

TEST_F(ColorField3DLutGoldenPath, NoProgramPath) {
  notebook.FailCall("GetModuleFileNameW", 1, 0, ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(engine.GetFullGoldenFilePath(), "\\.." + std::string(kGoldenName));
}

// --- GetOneLutDat3D, GetOneLutDatGamma ---

TEST_F(ColorField3DLutExtraction, GetOneLutDat_TakesTheModesBlock) {
  for (const auto& [mode, type] : {std::pair<int, uint8_t>{0, 0}, {1, 1}, {2, 2}, {7, 7}}) {
    velora::LutBuffer buffer = ToBuffer(machine.firmwareTable);
    EXPECT_TRUE(engine.GetOneLutDat3D(mode, buffer));
    EXPECT_EQ(ToBytes(buffer), Block(type));
  }
  EXPECT_EQ(Log(), Lines());
}

// The stride goes out whole, with what lies behind the hash.
TEST_F(ColorField3DLutExtraction, GetOneLutDat_TakesTheWholeStride) {
  velora::LutBuffer buffer = ToBuffer(machine.firmwareTable);
  EXPECT_TRUE(engine.GetOneLutDatGamma(buffer));
  Bytes stride = Block(160);
  ASSERT_EQ(stride.size(), kGammaBlockSize);
  stride.resize(kBlockSize, 0xFF);
  EXPECT_EQ(ToBytes(buffer), stride);

  buffer = ToBuffer(MakeFirmwareTable({Block(1), Block(2)}, 30000));
  EXPECT_TRUE(engine.GetOneLutDat3D(2, buffer));
  stride = Block(2);
  stride.resize(30000, 0xFF);
  EXPECT_EQ(ToBytes(buffer), stride);
}

TEST_F(ColorField3DLutExtraction, GetOneLutDat_NoRoomForAControlHeader) {
  for (const size_t size : {0u, 1u, 15u}) {
    notebook.ForgetRecords();
    velora::LutBuffer buffer(size, '\0');
    EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer));
    EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
    EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", "Data error!mode:2"),
                            Error("GetOneLutDatGamma", "Gamma Data error!")}));
  }
}

// The first test lets 16 bytes through, but the header's last byte is the 68th.
TEST_F(ColorField3DLutExtraction, GetOneLutDat_ControlHeaderEndsBeyondTheBuffer) {
  const Lines refused = {Error("GetOneLutDat3D", "biosControlHeader Parse Failed!"),
                         Error("GetOneLutDatGamma", "biosControlHeader Parse Failed!")};
  for (const size_t size : {16u, 51u, 52u, 53u, 67u}) {
    notebook.ForgetRecords();
    velora::LutBuffer buffer(size, '\0');  // a zero control header would be a good one
    EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer));
    EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
    EXPECT_EQ(Log(), refused) << size;
  }
}

TEST_F(ColorField3DLutExtraction, GetOneLutDat_WrongChecksum) {
  for (size_t byte = kControlHeader; byte < kFirstBlock; ++byte) {
    notebook.ForgetRecords();
    Bytes table = machine.firmwareTable;
    table[byte] ^= 0x10;
    velora::LutBuffer buffer = ToBuffer(table);
    EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer)) << byte;
    EXPECT_FALSE(engine.GetOneLutDatGamma(buffer)) << byte;
    EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", "biosControlHeader Parse Failed!"),
                            Error("GetOneLutDatGamma", "biosControlHeader Parse Failed!")}));
  }
}

// An all-zero control header has the right sum, and a block size of 0.
TEST_F(ColorField3DLutExtraction, GetOneLutDat_BlockSizeZero) {
  velora::LutBuffer buffer(kFirstBlock, '\0');
  EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer));
  EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
  EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", TableLengthText("3D", 68, 52)),
                          Error("GetOneLutDatGamma", TableLengthText("Gamma", 68, 52))}));
}

TEST_F(ColorField3DLutExtraction, GetOneLutDat_BlocksEndBeyondTheBuffer) {
  const size_t target = kFirstBlock + 5 * kBlockSize;
  for (const size_t size : {kFirstBlock, kFirstBlock + kBlockSize, target - 1}) {
    notebook.ForgetRecords();
    velora::LutBuffer buffer = ToBuffer(machine.firmwareTable).substr(0, size);
    EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
    EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
    EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", TableLengthText("3D", size, target)),
                            Error("GetOneLutDatGamma", TableLengthText("Gamma", size, target))}));
  }
  velora::LutBuffer longer = ToBuffer(machine.firmwareTable) + "more";
  EXPECT_TRUE(engine.GetOneLutDat3D(0, longer));
}

TEST_F(ColorField3DLutExtraction, GetOneLutDat_SumsDoNotWrap) {
  Bytes table(kFirstBlock + 300, 0);
  // 2 times 2^31 is 2^32, the greatest count and size come near 2^48.
  PutControlHeader(table, 16, 2, 0x80000000);
  velora::LutBuffer buffer = ToBuffer(table);
  EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
  PutControlHeader(table, 0xFFFF, 0xFFFF, 0xFFFFFFFF);
  buffer = ToBuffer(table);
  EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
  EXPECT_EQ(Log(), Lines({Error("GetOneLutDat3D", TableLengthText("3D", 368, 4294967364)),
                          Error("GetOneLutDat3D",
                                TableLengthText("3D", 368, 281470681743360 - 0xFFFF + 65587))}));
}

TEST_F(ColorField3DLutExtraction, GetOneLutDat_NoBlocks) {
  Bytes table(kFirstBlock, 0);
  PutControlHeader(table, 16, 0, kBlockSize);
  velora::LutBuffer buffer = ToBuffer(table);
  EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
  EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, GetOneLutDat_NoBlockOfTheType) {
  velora::LutBuffer buffer = ToBuffer(MakeFirmwareTable({Block(0), Block(1)}));
  EXPECT_FALSE(engine.GetOneLutDat3D(2, buffer));
  EXPECT_FALSE(engine.GetOneLutDatGamma(buffer));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, GetOneLutDat_HeaderLengthPlacesTheBlocks) {
  Bytes table = MakeFirmwareTable({Block(2)});
  table.insert(table.begin() + kFirstBlock, 4, 0xAA);
  PutControlHeader(table, 20, 1, kBlockSize);
  velora::LutBuffer buffer = ToBuffer(table);
  EXPECT_TRUE(engine.GetOneLutDat3D(2, buffer));
  EXPECT_EQ(ToBytes(buffer), Block(2));
}

TEST_F(ColorField3DLutExtraction, GetOneLutDat_FirstBlockOfTheTypeWins) {
  const Bytes first = MakeLutBlock(HeaderOf(machine.panel, 2), virtualnotebook::MakeIdentityLut());
  velora::LutBuffer buffer = ToBuffer(MakeFirmwareTable({Block(1), first, Block(2)}));
  EXPECT_TRUE(engine.GetOneLutDat3D(2, buffer));
  EXPECT_EQ(ToBytes(buffer), first);
}

TEST_F(ColorField3DLutExtraction, GetOneLutDat_BlocksWithoutRoomForAHeader) {
  Bytes table(kFirstBlock + 254, 0);
  PutControlHeader(table, 16, 2, 127);
  velora::LutBuffer buffer = ToBuffer(table);
  EXPECT_FALSE(engine.GetOneLutDat3D(0, buffer));
  const std::string line =
      Error("OneLutTypeIsValid", "3DLut data buffLen error!mode:0, buffLen:127");
  EXPECT_EQ(Log(), Lines({line, line}));
}

// --- The tests of a block ---

TEST_F(ColorField3DLutExtraction, OneLutTypeIsValid_NoData) {
  EXPECT_FALSE(engine.OneLutTypeIsValid(2, nullptr, 128));
  EXPECT_FALSE(engine.OneLutTypeIsValidGamma(nullptr, 128));
  EXPECT_EQ(
      Log(),
      Lines({Error("OneLutTypeIsValid", "3DLut data pLutData3D is nullptr!mode:2, buffLen:128"),
             Error("OneLutTypeIsValidGamma",
                   "GammaLut data pLutDataGamma is nullptr! buffLen:128")}));
}

TEST_F(ColorField3DLutExtraction, OneLutTypeIsValid_Length) {
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

TEST_F(ColorField3DLutExtraction, OneLutTypeIsValid_ADifferenceIsSilent) {
  const Bytes block = Block(2);
  EXPECT_FALSE(engine.OneLutTypeIsValid(1, block.data(), block.size()));
  EXPECT_FALSE(engine.OneLutTypeIsValidGamma(block.data(), block.size()));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, OneLutTypeIsValidGamma_Type160Only) {
  for (unsigned type = 0; type < 256; ++type) {
    const Bytes block = MakeLutBlock(HeaderOf(machine.panel, static_cast<uint8_t>(type)), {});
    EXPECT_EQ(engine.OneLutTypeIsValidGamma(block.data(), block.size()), type == 160) << type;
  }
}

TEST_F(ColorField3DLutExtraction, IsLutDataValid3D_GoodBlocks) {
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(Block(2))));
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(Block(160))));
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(Block(2)) + "behind the hash"));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, IsLutDataValid3D_Length) {
  const velora::LutBuffer block = ToBuffer(Block(2));
  for (const size_t size : {0u, 127u}) {
    notebook.ForgetRecords();
    EXPECT_FALSE(engine.IsLutDataValid3D(block.substr(0, size)));
    EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", "3D Lut data error!")}));
  }
  for (const size_t size : {size_t{128}, size_t{24693}, kBlockSize - 1}) {
    notebook.ForgetRecords();
    EXPECT_FALSE(engine.IsLutDataValid3D(block.substr(0, size)));
    EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", "Lut Data Len error!")}));
  }
}

// With 32 bits, these data lengths and 160 would come out at 0, at 159 and at 160 bytes.
TEST_F(ColorField3DLutExtraction, IsLutDataValid3D_LengthDoesNotWrap) {
  for (const uint32_t length : {0xFFFFFF60u, 0xFFFFFFFFu, 0xFFFFFF80u}) {
    notebook.ForgetRecords();
    Bytes block = Block(2);
    PutBigEndian(block, 66, length, 4);
    EXPECT_FALSE(engine.IsLutDataValid3D(ToBuffer(block)));
    EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", "Lut Data Len error!")}));
  }
}

TEST_F(ColorField3DLutExtraction, IsLutDataValid3D_AnyBitFlipped) {
  const Lines refused = {Error("IsLutDataValid3D", HashText(24693))};
  const Bytes good = Block(2);
  // Header, words, extension bytes, hash; the data length has tests of its own.
  for (const size_t byte : {0u, 46u, 64u, 127u, 128u, 19779u, 19780u, 24692u, 24693u, 24724u}) {
    notebook.ForgetRecords();
    Bytes block = good;
    block[byte] ^= 1;
    EXPECT_FALSE(engine.IsLutDataValid3D(ToBuffer(block))) << byte;
    EXPECT_EQ(Log(), refused) << byte;
  }
}

TEST_F(ColorField3DLutExtraction, IsLutDataValid3D_GammaHash) {
  Bytes block = Block(160);
  block[5247] ^= 0x80;
  EXPECT_FALSE(engine.IsLutDataValid3D(ToBuffer(block)));
  EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", HashText(5248))}));
}

TEST_F(ColorField3DLutExtraction, IsLutDataValid3D_MarkBehindTheHash) {
  Bytes block = Block(7);
  block.push_back(0x7F);
  ASSERT_EQ(block.size(), 24726u);
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(block)));
}

// --- Decoding ---

TEST_F(ColorField3DLutExtraction, ParseLutData_Decodes) {
  const Bytes block = Block(2);
  std::vector<double> lut(14739);
  EXPECT_TRUE(engine.ParseLutData(2, block.data(), block.size(), lut.data()));
  EXPECT_EQ(lut, virtualnotebook::MakeLut(machine.panel, 2));
}

TEST_F(ColorField3DLutExtraction, ParseLutData_Refuses) {
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

class ColorField3DLutDecode : public ColorField3DLutExtraction {
 protected:
  bool FromBios(int mode) {
    notebook.ForgetRecords();
    return engine.GetBiosLutData3D(mode, lut.data());
  }
  bool FromGolden(int mode) {
    notebook.ForgetRecords();
    return engine.GetGoldenFileLutData3D(mode, lut.data());
  }

  std::vector<double> lut = std::vector<double>(14739, -1);
};

TEST_F(ColorField3DLutDecode, GetBiosLutData3D_Decodes) {
  EXPECT_TRUE(FromBios(0));
  EXPECT_EQ(lut, virtualnotebook::MakeLut(machine.panel, 0));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutDecode, GetBiosLutData3D_AlwaysTheFirmware) {
  MoveToGolden(2);
  EXPECT_TRUE(FromBios(2));
  EXPECT_EQ(lut, virtualnotebook::MakeLut(machine.panel, 2));
}

TEST_F(ColorField3DLutDecode, GetGoldenFileLutData3D_AlwaysTheGoldenFile) {
  EXPECT_TRUE(FromGolden(2));
  EXPECT_EQ(lut, virtualnotebook::MakeLut(nominal, 2));
  EXPECT_EQ(Log(), Lines());
  EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 0u);
}

// Its own lines are notes, those beneath them errors.
TEST_F(ColorField3DLutDecode, GetBiosLutData3D_FirmwareFails) {
  notebook.reportedFirmwareSize = 131125;
  EXPECT_FALSE(FromBios(2));
  EXPECT_EQ(Log(), Lines({Error("GetBiosLutDataBlockSize",
                                "Firmware Table bufferSize over max size!bufferSize:131125"),
                          Info("GetBiosLutData3D", "GetBiosLutDataBlockSize Failed!")}));
  notebook.reportedFirmwareSize.reset();
  notebook.firmwareTable.clear();
  EXPECT_FALSE(FromBios(2));
  EXPECT_EQ(Log(), Lines({noTable, Info("GetBiosLutData3D", "ReadBiosLutDataBlock Failed!")}));
}

TEST_F(ColorField3DLutDecode, NoBlockOfTheTypeIsSilent) {
  notebook.firmwareTable = MakeFirmwareTable({Block(1)});
  WriteFileBytes(kGoldenFile, MakeGoldenFile({GoldenBlock(1)}));
  EXPECT_FALSE(FromBios(2));
  EXPECT_EQ(Log(), Lines());
  EXPECT_FALSE(FromGolden(2));
  EXPECT_EQ(Log(), Lines());
}

// A damaged first block is not passed over for a good one behind it.
TEST_F(ColorField3DLutDecode, DamagedBlock) {
  notebook.firmwareTable = MakeFirmwareTable({Damaged(2), Block(2)});
  WriteFileBytes(kGoldenFile, MakeGoldenFile({Damaged(2), Block(2)}));
  EXPECT_FALSE(FromBios(2));
  EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", HashText(24693)),
                          Info("GetBiosLutData3D", "Bios 3D Lut Data invalid! mode:2")}));
  EXPECT_FALSE(FromGolden(2));
  EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", HashText(24693)),
                          Info("GetGoldenFileLutData3D", "Bios 3D Lut Data invalid! mode:2")}));
}

TEST_F(ColorField3DLutDecode, BlockOfTooFewEntries) {
  const Bytes small = MakeLutBlock(HeaderOf(machine.panel, 2), std::vector<double>(3000, 7));
  notebook.firmwareTable = MakeFirmwareTable({small}, kBlockSize - 1);
  EXPECT_FALSE(FromBios(2));
  EXPECT_EQ(Log(), Lines({Error("ParseLutData", "LutDataFile Error!mode:2"),
                          Info("GetBiosLutData3D", "Parse 3D Lut Data failed! mode:2")}));
  // Its own test asks for one block of a 3D LUT, so the golden file needs two short ones.
  WriteFileBytes(kGoldenFile, MakeGoldenFile({small, small}, kBlockSize - 1));
  EXPECT_FALSE(FromGolden(2));
  EXPECT_EQ(Log(), Lines({Error("ParseLutData", "LutDataFile Error!mode:2"),
                          Info("GetGoldenFileLutData3D", "Parse 3D Lut Data failed! mode:2")}));
}

TEST_F(ColorField3DLutDecode, NoRoomForTheResult) {
  EXPECT_FALSE(engine.GetBiosLutData3D(2, nullptr));
  EXPECT_EQ(Log(), Lines({Error("ParseLutData", "pLutData3D is nullptr!mode:2"),
                          Info("GetBiosLutData3D", "Parse 3D Lut Data failed! mode:2")}));
}

TEST_F(ColorField3DLutDecode, Exceptions) {
  notebook.ThrowFrom("GetSystemFirmwareTable", 1, "no firmware");
  EXPECT_FALSE(FromBios(2));
  EXPECT_EQ(Log(), Lines({Error("GetBiosLutData3D",
                                "GetPanelThreeLutBinFile3D exception:no firmware ,mode:2")}));
  notebook.ThrowFrom("CoreKit::GetCanonicalizedFilePath", 1, "no path");
  EXPECT_FALSE(FromGolden(2));
  EXPECT_EQ(Log(), Lines({Error("GetGoldenFileLutData3D",
                                "GetEbookThreeLutBinFile3D exception:no path ,mode:2")}));
}

TEST_F(ColorField3DLutDecode, AnyCut) {
  for (const size_t size : {size_t{1}, size_t{15}, size_t{16}, size_t{60}, size_t{68},
                            kFirstBlock + 3 * kBlockSize, machine.firmwareTable.size() - 1}) {
    notebook.firmwareTable = Part(machine.firmwareTable, 0, size);
    EXPECT_FALSE(FromBios(2)) << size;
    EXPECT_EQ(notebook.log.size(), 1u) << size;
  }
}

// --- UpdateThreeLutBinFile3D, UpdateGammaLutBinFile ---

TEST_F(ColorField3DLutExtraction, UpdateThreeLutBinFile3D_WritesTheBlock) {
  EXPECT_TRUE(engine.UpdateThreeLutBinFile3D(2));
  EXPECT_EQ(ReadFileBytes(DataFile("P3.bin")), Block(2));
  EXPECT_EQ(LastArgument("CoreKit::EnableFileUsersPriviledge", 0), DataFile("P3.bin"));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, UpdateThreeLutBinFile3D_FromTheGoldenFile) {
  MoveToGolden(2);
  std::filesystem::remove(DataFile("GoldenP3.bin"));
  EXPECT_TRUE(engine.UpdateThreeLutBinFile3D(2));
  EXPECT_EQ(ReadFileBytes(DataFile("GoldenP3.bin")), GoldenBlock(2));
}

TEST_F(ColorField3DLutExtraction, UpdateThreeLutBinFile3D_BadSourceLeavesTheFile) {
  WriteFileBytes(DataFile("P3.bin"), {1, 2, 3});
  // A damaged block is not passed over for a good one behind it.
  notebook.firmwareTable = MakeFirmwareTable({Damaged(2), Block(2)});
  EXPECT_FALSE(engine.UpdateThreeLutBinFile3D(2));
  EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", HashText(24693)),
                          Error("UpdateThreeLutBinFile3D", "Bios 3D Lut Data invalid! mode:2")}));
  EXPECT_EQ(ReadFileBytes(DataFile("P3.bin")), Bytes({1, 2, 3}));
}

TEST_F(ColorField3DLutExtraction, UpdateThreeLutBinFile3D_NoBlockIsSilent) {
  notebook.firmwareTable = MakeFirmwareTable({Block(0), Block(1)});
  EXPECT_FALSE(engine.UpdateThreeLutBinFile3D(2));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, UpdateThreeLutBinFile3D_TypeByte5IsNoModes) {
  notebook.firmwareTable = MakeFirmwareTable(
      {MakeLutBlock(HeaderOf(machine.panel, 5), virtualnotebook::MakeIdentityLut())});
  for (const int mode : {1, 2, 3, 7, 10}) {
    EXPECT_FALSE(engine.UpdateThreeLutBinFile3D(mode));
  }
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, UpdateThreeLutBinFile3D_FileCannotBeWritten) {
  notebook.FailCall("CreateFileA", 1, static_cast<uint64_t>(-1), ERROR_SHARING_VIOLATION);
  EXPECT_FALSE(engine.UpdateThreeLutBinFile3D(2));
  EXPECT_EQ(Log(), Lines({Error("CreateLutDataFile3D",
                                "Open 3D LUT Data File Failed! fileName:" + DataFile("P3.bin")),
                          Error("UpdateThreeLutBinFile3D", "CreateLutDataFile3D Failed! mode:2")}));
  EXPECT_EQ(notebook.CountCalls("CoreKit::EnableFileUsersPriviledge"), 0u);
}

TEST_F(ColorField3DLutExtraction, UpdateThreeLutBinFile3D_FileStaysClosedToOthers) {
  notebook.FailCall("CoreKit::EnableFileUsersPriviledge", 1, 1);
  EXPECT_TRUE(engine.UpdateThreeLutBinFile3D(2));
  EXPECT_EQ(Log(),
            Lines({Warn("UpdateThreeLutBinFile3D",
                        "EnableFileUsersPriviledge Failed! fileName:" + DataFile("P3.bin"))}));
  notebook.ForgetRecords();
  notebook.FailCall("CoreKit::EnableFileUsersPriviledge", 1, 2);  // only 1 is a failure
  EXPECT_TRUE(engine.UpdateThreeLutBinFile3D(2));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, UpdateThreeLutBinFile3D_Exception) {
  notebook.ThrowFrom("CoreKit::EnableFileUsersPriviledge", 1, "no rights");
  EXPECT_FALSE(engine.UpdateThreeLutBinFile3D(2));
  EXPECT_EQ(Log(), Lines({Error("UpdateThreeLutBinFile3D",
                                "UpdateThreeLutBinFile3D exception:no rights ,mode:2")}));
}

TEST_F(ColorField3DLutExtraction, UpdateGammaLutBinFile_WritesTheStride) {
  EXPECT_TRUE(engine.UpdateGammaLutBinFile());
  Bytes stride = Block(160);
  stride.resize(kBlockSize, 0xFF);
  EXPECT_EQ(ReadFileBytes(DataFile("Gamma.bin")), stride);
  EXPECT_EQ(LastArgument("CoreKit::EnableFileUsersPriviledge", 0), DataFile("Gamma.bin"));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, UpdateGammaLutBinFile_BadSourceLeavesTheFile) {
  WriteFileBytes(DataFile("Gamma.bin"), {1, 2, 3});
  notebook.firmwareTable = MakeFirmwareTable({Damaged(160), Block(160)});
  EXPECT_FALSE(engine.UpdateGammaLutBinFile());
  EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", HashText(5248)),
                          Error("UpdateGammaLutBinFile", "Bios Gamma Lut Data invalid!")}));
  EXPECT_EQ(ReadFileBytes(DataFile("Gamma.bin")), Bytes({1, 2, 3}));
}

TEST_F(ColorField3DLutExtraction, UpdateGammaLutBinFile_NoBlockIsSilent) {
  notebook.firmwareTable = MakeFirmwareTable({Block(0), Block(1)});
  EXPECT_FALSE(engine.UpdateGammaLutBinFile());
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, UpdateGammaLutBinFile_FileCannotBeWritten) {
  notebook.FailCall("CreateFileA", 1, static_cast<uint64_t>(-1), ERROR_SHARING_VIOLATION);
  EXPECT_FALSE(engine.UpdateGammaLutBinFile());
  EXPECT_EQ(Log(),
            Lines({Error("CreateLutDataFileGamma",
                         "Open Gamma LUT Data File Failed! fileName:" + DataFile("Gamma.bin")),
                   Error("UpdateGammaLutBinFile", "CreateLutDataFileGamma Failed!")}));
}

TEST_F(ColorField3DLutExtraction, UpdateGammaLutBinFile_FileStaysClosedToOthers) {
  notebook.FailCall("CoreKit::EnableFileUsersPriviledge", 1, 1);
  EXPECT_TRUE(engine.UpdateGammaLutBinFile());
  EXPECT_EQ(Log(),
            Lines({Warn("UpdateGammaLutBinFile",
                        "EnableFileUsersPriviledge Failed! fileName:" + DataFile("Gamma.bin"))}));
}

TEST_F(ColorField3DLutExtraction, UpdateGammaLutBinFile_Exception) {
  notebook.ThrowFrom("GetSystemFirmwareTable", 2, "no firmware");
  EXPECT_FALSE(engine.UpdateGammaLutBinFile());
  EXPECT_EQ(Log(),
            Lines({Error("UpdateGammaLutBinFile", "UpdateGammaLutBinFile exception:no firmware")}));
}

// --- ReadBios3DLutData ---

TEST_F(ColorField3DLutExtraction, ReadBios3DLutData_WritesTheBlock) {
  EXPECT_TRUE(engine.ReadBios3DLutData(1));
  EXPECT_EQ(ReadFileBytes(DataFile("sRGB.bin")), Block(1));
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutExtraction, ReadBios3DLutData_Failures) {
  notebook.reportedFirmwareSize = 131125;
  EXPECT_FALSE(engine.ReadBios3DLutData(1));
  EXPECT_EQ(Log(), Lines({Error("GetBiosLutDataBlockSize",
                                "Firmware Table bufferSize over max size!bufferSize:131125"),
                          Error("ReadBios3DLutData", "GetBiosLutDataBlockSize Failed!")}));
  notebook.ForgetRecords();
  notebook.reportedFirmwareSize = 99;
  notebook.firmwareTable.clear();
  EXPECT_FALSE(engine.ReadBios3DLutData(1));
  EXPECT_EQ(Log(), Lines({noTable, Error("ReadBios3DLutData",
                                         "ReadBiosLutDataBlock Failed, biosTableSize is 99")}));
  notebook.ForgetRecords();
  notebook.reportedFirmwareSize.reset();
  notebook.firmwareTable = MakeFirmwareTable({Block(0)});
  EXPECT_FALSE(engine.ReadBios3DLutData(1));
  EXPECT_EQ(Log(), Lines({Info("ReadBios3DLutData", "GetOneLutDat3D failed, mode is 1")}));
  notebook.ForgetRecords();
  notebook.firmwareTable = MakeFirmwareTable({Damaged(1)});
  EXPECT_FALSE(engine.ReadBios3DLutData(1));
  EXPECT_EQ(Log(), Lines({Error("IsLutDataValid3D", HashText(24693)),
                          Error("ReadBios3DLutData", "Bios 3D Lut Data invalid! mode:1")}));
  notebook.ForgetRecords();
  notebook.firmwareTable = machine.firmwareTable;
  notebook.FailCall("CreateFileA", 1, static_cast<uint64_t>(-1));
  EXPECT_FALSE(engine.ReadBios3DLutData(1));
  EXPECT_EQ(Log(), Lines({Error("CreateLutDataFile3D", "Open 3D LUT Data File Failed! fileName:" +
                                                           DataFile("sRGB.bin"))}));
}

}  // namespace
}  // namespace lutmachine
