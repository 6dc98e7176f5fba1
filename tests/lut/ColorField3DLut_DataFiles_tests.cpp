#include "lut/LutMachine.h"

namespace lutmachine {
namespace {

class ColorField3DLutDataFiles : public LutMachine {
 protected:
  // The 3D reader's result on a file of this size, with the least size of a 3D bin file.
  bool ReadsFileOf(size_t size) {
    notebook.ForgetRecords();
    WriteFileBytes(path, Bytes(size, 0xAB));
    return engine.Read3DLutDataFormFile(path, 24725, buffer);
  }

  const std::string path = DataFile("Data.bin");
  const Lines lengthError = {
      Error("Read3DLutDataFormFile", "3D LUT Data File Len Error! fileName:" + path)};
  velora::LutBuffer buffer = "old contents";
};

// --- Read3DLutDataFormFile ---

TEST_F(ColorField3DLutDataFiles, Read3DLutDataFormFile_ReadsItAll) {
  const Bytes block = Block(2);
  WriteFileBytes(path, block);
  EXPECT_TRUE(engine.Read3DLutDataFormFile(path, 24725, buffer));
  EXPECT_EQ(ToBytes(buffer), block);
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutDataFiles, Read3DLutDataFormFile_NoFile) {
  EXPECT_FALSE(engine.Read3DLutDataFormFile(path, 24725, buffer));
  EXPECT_EQ(
      Log(),
      Lines({Error("Read3DLutDataFormFile", "Open 3D LUT Data File Failed! fileName:" + path)}));
  EXPECT_EQ(buffer, "old contents");
}

// The canonical path is the one that is opened and told.
TEST_F(ColorField3DLutDataFiles, Read3DLutDataFormFile_CanonicalPath) {
  const std::string roundabout = kDataDir + "\\User\\..\\.\\Data.bin";
  EXPECT_FALSE(engine.Read3DLutDataFormFile(roundabout, 24725, buffer));
  EXPECT_EQ(LastArgument("CreateFileA", 0), path);
  EXPECT_EQ(
      Log(),
      Lines({Error("Read3DLutDataFormFile", "Open 3D LUT Data File Failed! fileName:" + path)}));
}

TEST_F(ColorField3DLutDataFiles, Read3DLutDataFormFile_RefusedPath) {
  WriteFileBytes(path, Block(2));
  notebook.FailCall("CoreKit::GetCanonicalizedFilePath", 1, 0);
  EXPECT_FALSE(engine.Read3DLutDataFormFile(path, 24725, buffer));
  EXPECT_EQ(Log(),
            Lines({Error("Read3DLutDataFormFile", "Open 3D LUT Data File Failed! fileName:")}));
}

TEST_F(ColorField3DLutDataFiles, Read3DLutDataFormFile_LeastSize) {
  EXPECT_TRUE(ReadsFileOf(24725));
  EXPECT_EQ(Log(), Lines());
  for (const size_t size : {24724u, 1u, 0u}) {
    EXPECT_FALSE(ReadsFileOf(size));
    EXPECT_EQ(Log(), lengthError) << size;
    EXPECT_EQ(buffer, std::string(size, '\0'));  // sized, and not read
  }
}

TEST_F(ColorField3DLutDataFiles, Read3DLutDataFormFile_GreatestSize) {
  EXPECT_TRUE(ReadsFileOf(131072));
  EXPECT_EQ(ToBytes(buffer), Bytes(131072, 0xAB));
  buffer = "old contents";
  EXPECT_FALSE(ReadsFileOf(131073));
  EXPECT_EQ(Log(), Lines({Error("Read3DLutDataFormFile",
                                "LUT Data File over max block size! fileName:" + path)}));
  EXPECT_EQ(buffer, "old contents");
}

TEST_F(ColorField3DLutDataFiles, Read3DLutDataFormFile_NoSize) {
  notebook.FailCall("GetFileSizeEx", 1, 0, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(ReadsFileOf(24725));
  EXPECT_EQ(Log(), lengthError);
}

// Zeros must not pass for the contents of a file that could not be read.
TEST_F(ColorField3DLutDataFiles, Read3DLutDataFormFile_NoRead) {
  notebook.FailCall("ReadFile", 1, 0, ERROR_READ_FAULT);
  EXPECT_FALSE(ReadsFileOf(24725));
  EXPECT_EQ(Log(), lengthError);
}

TEST_F(ColorField3DLutDataFiles, Read3DLutDataFormFile_ClosesTheFile) {
  EXPECT_TRUE(ReadsFileOf(24725));
  EXPECT_EQ(notebook.CountCalls("CloseHandle"), 1u);
  EXPECT_FALSE(ReadsFileOf(24724));
  EXPECT_EQ(notebook.CountCalls("CloseHandle"), 1u);
}

// Another process may hold the file, for writing and deleting too.
TEST_F(ColorField3DLutDataFiles, FilesAreShared) {
  WriteFileBytes(DataFile("P3.bin"), Block(2));
  const HANDLE other = CreateFileW(
      L"C:\\ProgramData\\Comms\\NxVelora\\P3.bin", GENERIC_READ | GENERIC_WRITE | DELETE,
      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(other, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(engine.Get3DLutDataFormFileByFieldMode(2, buffer));
  EXPECT_TRUE(engine.CreateLutDataFile3D(2, buffer));
  CloseHandle(other);
}

// --- By mode ---

TEST_F(ColorField3DLutDataFiles, Get3DLutDataFormFileByFieldMode) {
  WriteFileBytes(DataFile("P3.bin"), Block(2));
  EXPECT_TRUE(engine.Get3DLutDataFormFileByFieldMode(9, buffer));
  EXPECT_EQ(ToBytes(buffer), Block(2));
  WriteFileBytes(DataFile("P3.bin"), Bytes(24724, 1));
  EXPECT_FALSE(engine.Get3DLutDataFormFileByFieldMode(9, buffer));
  EXPECT_EQ(Log(), Lines({Error("Read3DLutDataFormFile",
                                "3D LUT Data File Len Error! fileName:" + DataFile("P3.bin"))}));
}

TEST_F(ColorField3DLutDataFiles, Get3DLutDataFormFileByFieldMode_UnknownMode) {
  EXPECT_FALSE(engine.Get3DLutDataFormFileByFieldMode(11, buffer));
  EXPECT_EQ(Log(), Lines({Error("Get3DLutDataFormFileByFieldMode",
                                "ReadTempLutDataFile error,mode not found!mode:11")}));
}

TEST_F(ColorField3DLutDataFiles, ReadGammaLutDataFile_LeastSize) {
  WriteFileBytes(DataFile("Gamma.bin"), Bytes(5280, 1));
  EXPECT_TRUE(engine.ReadGammaLutDataFile(buffer));
  WriteFileBytes(DataFile("Gamma.bin"), Bytes(5279, 1));
  EXPECT_FALSE(engine.ReadGammaLutDataFile(buffer));
  EXPECT_EQ(Log(), Lines({Error("Read3DLutDataFormFile",
                                "3D LUT Data File Len Error! fileName:" + DataFile("Gamma.bin"))}));
}

// --- Writing ---

TEST_F(ColorField3DLutDataFiles, CreateLutDataFile3D_ReplacesTheFile) {
  WriteFileBytes(DataFile("Adobe.bin"), Bytes(30000, 1));
  EXPECT_TRUE(engine.CreateLutDataFile3D(10, "block"));
  EXPECT_EQ(ReadFileBytes(DataFile("Adobe.bin")), ToBytes("block"));
  EXPECT_EQ(notebook.CountCalls("CloseHandle"), 1u);
  EXPECT_EQ(Log(), Lines());
}

// The line tells the type of the header parsed last.
TEST_F(ColorField3DLutDataFiles, CreateLutDataFile3D_UnknownMode) {
  const auto expectType = [this](const std::string& type) {
    notebook.ForgetRecords();
    EXPECT_FALSE(engine.CreateLutDataFile3D(11, "block"));
    EXPECT_EQ(Log(), Lines({Error("CreateLutDataFile3D",
                                  "CreateLutDataFile3D error,Lut Type error! type:" + type)}));
  };
  const Bytes gamma = Block(160);
  engine.OneLutTypeIsValidGamma(gamma.data(), gamma.size());
  expectType("160");
  const Bytes none = virtualnotebook::MakeLutBlock(virtualnotebook::HeaderOf(machine.panel, 5), {});
  engine.OneLutTypeIsValidGamma(none.data(), none.size());
  expectType("162");
}

TEST_F(ColorField3DLutDataFiles, CreateLutDataFile_RefusedPath) {
  notebook.FailCall("CoreKit::GetCanonicalizedFilePath", 0, 0);
  EXPECT_FALSE(engine.CreateLutDataFile3D(2, "block"));
  EXPECT_FALSE(engine.CreateLutDataFileGamma("block"));
  EXPECT_EQ(Log(), Lines({Error("CreateLutDataFile3D", "lutFileTable error"),
                          Error("CreateLutDataFileGamma", "lutFileTable error")}));
  EXPECT_EQ(notebook.CountCalls("CreateFileA"), 0u);
}

TEST_F(ColorField3DLutDataFiles, CreateLutDataFile_NoDirectory) {
  std::filesystem::remove_all(kDataDir);
  EXPECT_FALSE(engine.CreateLutDataFile3D(2, "block"));
  EXPECT_FALSE(engine.CreateLutDataFileGamma("block"));
  EXPECT_EQ(Log(),
            Lines({Error("CreateLutDataFile3D",
                         "Open 3D LUT Data File Failed! fileName:" + DataFile("P3.bin")),
                   Error("CreateLutDataFileGamma",
                         "Open Gamma LUT Data File Failed! fileName:" + DataFile("Gamma.bin"))}));
}

// The short file that a broken write leaves is the next reader's to find.
TEST_F(ColorField3DLutDataFiles, CreateLutDataFile3D_BrokenWrite) {
  notebook.FailCall("WriteFile", 1, 0, ERROR_DISK_FULL);
  EXPECT_TRUE(engine.CreateLutDataFile3D(2, "block"));
  EXPECT_EQ(Log(), Lines());
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(2), 1);
}

TEST_F(ColorField3DLutDataFiles, CreateLutDataFileGamma_ReplacesTheFile) {
  WriteFileBytes(DataFile("Gamma.bin"), Bytes(30000, 1));
  EXPECT_TRUE(engine.CreateLutDataFileGamma("block"));
  EXPECT_EQ(ReadFileBytes(DataFile("Gamma.bin")), ToBytes("block"));
}

// --- Are they there, are they good ---

TEST_F(ColorField3DLutDataFiles, Exist) {
  EXPECT_FALSE(engine.IsThreeLutBinFileExist(2));
  EXPECT_FALSE(engine.IsGammaLutBinFileExist());
  WriteFileBytes(DataFile("P3.bin"), {1});
  WriteFileBytes(DataFile("Gamma.bin"), {1});
  EXPECT_TRUE(engine.IsThreeLutBinFileExist(2));
  EXPECT_TRUE(engine.IsGammaLutBinFileExist());
  EXPECT_EQ(LastArgument("_access", 1), "0");
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutDataFiles, IsThreeLutBinFileNeedUpdate_GoodFiles) {
  WriteFileBytes(DataFile("P3.bin"), Block(2));
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(2), 0);
  Bytes longer = Block(2);
  longer.resize(30000, 0xFF);
  WriteFileBytes(DataFile("P3.bin"), longer);
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(2), 0);
  // Whatever panel it names.
  WriteFileBytes(DataFile("P3.bin"), GoldenBlock(2));
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(2), 0);
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutDataFiles, IsThreeLutBinFileNeedUpdate_MissingFileIsSilent) {
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(2), 1);
  EXPECT_EQ(Log(), Lines());
  EXPECT_EQ(notebook.CountCalls("CreateFileA"), 0u);
}

TEST_F(ColorField3DLutDataFiles, IsThreeLutBinFileNeedUpdate_ShortFile) {
  WriteFileBytes(DataFile("P3.bin"), Part(Block(2), 0, 24724));
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(2), 1);
  EXPECT_EQ(Log(), Lines({Error("Read3DLutDataFormFile",
                                "3D LUT Data File Len Error! fileName:" + DataFile("P3.bin"))}));
}

TEST_F(ColorField3DLutDataFiles, IsThreeLutBinFileNeedUpdate_DamagedFile) {
  Bytes block = Block(2);
  block[10000] ^= 4;
  WriteFileBytes(DataFile("P3.bin"), block);
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(2), 1);
  EXPECT_EQ(Log(),
            Lines({Error("IsLutDataValid3D", "SHA256 Value is not match, shadata len is 24693")}));
}

TEST_F(ColorField3DLutDataFiles, IsThreeLutBinFileNeedUpdate_AnotherTypeIsSilent) {
  WriteFileBytes(DataFile("P3.bin"), Block(1));
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(2), 1);
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutDataFiles, IsThreeLutBinFileNeedUpdate_UnknownMode) {
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(11), 1);
  EXPECT_EQ(
      Log(),
      Lines({Error("IsThreeLutBinFileExist", "Temp bin file not exist! mode not found! mode:11")}));
}

TEST_F(ColorField3DLutDataFiles, IsGammaLutBinFileNeedUpdate) {
  EXPECT_EQ(engine.IsGammaLutBinFileNeedUpdate(), 1);
  EXPECT_EQ(Log(), Lines({Info("IsGammaLutBinFileNeedUpdate", "GammaLutBinFile not Exist")}));
  notebook.ForgetRecords();

  WriteFileBytes(DataFile("Gamma.bin"), Block(160));
  EXPECT_EQ(engine.IsGammaLutBinFileNeedUpdate(), 0);
  EXPECT_EQ(Log(), Lines());

  WriteFileBytes(DataFile("Gamma.bin"), Part(Block(160), 0, 5279));
  EXPECT_EQ(engine.IsGammaLutBinFileNeedUpdate(), 1);
  EXPECT_EQ(Log(), Lines({Error("Read3DLutDataFormFile",
                                "3D LUT Data File Len Error! fileName:" + DataFile("Gamma.bin"))}));
  notebook.ForgetRecords();

  Bytes damaged = Block(160);
  damaged[300] ^= 4;
  WriteFileBytes(DataFile("Gamma.bin"), damaged);
  EXPECT_EQ(engine.IsGammaLutBinFileNeedUpdate(), 1);
  EXPECT_EQ(Log(),
            Lines({Error("IsLutDataValid3D", "SHA256 Value is not match, shadata len is 5248")}));
  notebook.ForgetRecords();

  WriteFileBytes(DataFile("Gamma.bin"), Block(2));
  EXPECT_EQ(engine.IsGammaLutBinFileNeedUpdate(), 1);
  EXPECT_EQ(Log(), Lines());
}

}  // namespace
}  // namespace lutmachine
