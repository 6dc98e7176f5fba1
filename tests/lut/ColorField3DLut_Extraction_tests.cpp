#include "lut/LutMachine.h"

namespace lutmachine {
namespace {

using virtualnotebook::HeaderOf;
using virtualnotebook::MakeFirmwareTable;
using virtualnotebook::MakeGoldenFile;
using virtualnotebook::MakeLutBlock;

// Where things stand in a table of the factory.
constexpr size_t kFirstBlock = 52 + 16;
constexpr size_t kBlockSize = 24725;

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

// --- Decoding ---

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

// A known weakness: a link in the file's place leads the bytes elsewhere.
TEST_F(ColorField3DLutExtraction, UpdateThreeLutBinFile3D_WritesThroughALink) {
  const std::string elsewhere = DataFile("elsewhere");
  WriteFileBytes(elsewhere, {1, 2, 3});
  std::filesystem::create_hard_link(elsewhere, DataFile("P3.bin"));
  EXPECT_TRUE(engine.UpdateThreeLutBinFile3D(2));
  EXPECT_EQ(ReadFileBytes(elsewhere), Block(2));
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
