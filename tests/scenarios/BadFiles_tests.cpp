// Bin, golden and digest files missing, short, long, with a bit flipped.
#include <gtest/gtest.h>

#include <filesystem>

#include "scenarios/BrokenMachine.h"
#include "support/NotebookTest.h"

namespace scenarios {
namespace {

using testsupport::WriteFileBytes;
using virtualnotebook::kP3Lut;

constexpr size_t kLargestFile = 131072;

Lines ShortFile(const std::string& path) {
  return {LutLine(3, "3D LUT Data File Len Error! fileName:" + path, "Read3DLutDataFormFile")};
}

Lines LongFile(const std::string& path) {
  return {
      LutLine(3, "LUT Data File over max block size! fileName:" + path, "Read3DLutDataFormFile")};
}

Lines BadHash() {
  return {LutLine(3, "SHA256 Value is not match, shadata len is 24693", "IsLutDataValid3D")};
}

// --- Bin file: rebuilt from the firmware
// -----------------------------------------------------------

class BadBinFile : public BrokenMachine {
 protected:
  // A good file of this panel whose LUT is not the firmware's, so that its use shows.
  static Bytes OtherBlock() {
    return virtualnotebook::MakeLutBlock(HeaderOf(WholeMachine().panel, kP3Lut),
                                         virtualnotebook::MakeIdentityLut());
  }

  void ExpectFileUsed(const Outcome& outcome, const Bytes& file) const {
    EXPECT_EQ(outcome.result, ResultOk);
    ASSERT_EQ(outcome.sent.size(), 1u);
    EXPECT_TRUE(outcome.sent[0] == virtualnotebook::MakeIdentityLut());
    EXPECT_EQ(outcome.firmwareReads, 0u);
    EXPECT_TRUE(testsupport::ReadFileBytes(DataFile("P3.bin")) == file);
    EXPECT_EQ(outcome.lutLog, FirmwareLog({}));
  }
};

TEST_F(BadBinFile, None_IsUsed) {
  WriteFileBytes(DataFile("P3.bin"), OtherBlock());
  ExpectFileUsed(SetP3Mode(), OtherBlock());
}

TEST_F(BadBinFile, Longer_IsUsed) {
  for (const size_t size : {kBlockSize + 1, kLargestFile - 1, kLargestFile}) {
    SCOPED_TRACE(size);
    Bytes file = OtherBlock();
    file.resize(size, 0xFF);
    WriteFileBytes(DataFile("P3.bin"), file);
    ExpectFileUsed(SetP3Mode(), file);
  }
}

TEST_F(BadBinFile, TooLong) {
  Bytes file = OtherBlock();
  file.resize(kLargestFile + 1);
  WriteFileBytes(DataFile("P3.bin"), file);
  const Outcome outcome = SetP3Mode();
  ExpectFirmwareLut(outcome);
  EXPECT_EQ(outcome.lutLog, FirmwareLog(LongFile(DataFile("P3.bin"))));
}

TEST_F(BadBinFile, ShortAnywhere) {
  for (const size_t size : {size_t{0}, size_t{1}, size_t{127}, size_t{128}, size_t{12345},
                            kPayloadAndHeader, kBlockSize - 1}) {
    SCOPED_TRACE(size);
    Bytes file = OtherBlock();
    file.resize(size);
    WriteFileBytes(DataFile("P3.bin"), file);
    const Outcome outcome = SetP3Mode();
    ExpectFirmwareLut(outcome);
    EXPECT_EQ(outcome.lutLog, FirmwareLog(ShortFile(DataFile("P3.bin"))));
  }
}

// The hash covers the header too, so that a wrong type is found by it first.
TEST_F(BadBinFile, OneBitAnywhere) {
  for (const size_t byte : SampledBytesOfBlock()) {
    SCOPED_TRACE(byte);
    Bytes file = P3Block();
    FlipBit(file, byte, (byte + 3) % 8);
    WriteFileBytes(DataFile("P3.bin"), file);
    const Outcome outcome = SetP3Mode();
    ExpectFirmwareLut(outcome);
    if (byte < 66 || byte >= 70) {  // other than in the data length
      EXPECT_EQ(outcome.lutLog, FirmwareLog(BadHash()));
    } else {
      EXPECT_EQ(outcome.lutLog.size(), FirmwareLog(BadHash()).size());
    }
  }
}

TEST_F(BadBinFile, OfAnotherType) {
  WriteFileBytes(DataFile("P3.bin"), virtualnotebook::MakeLutBlock(
                                         HeaderOf(WholeMachine().panel, virtualnotebook::kSrgbLut),
                                         virtualnotebook::MakeIdentityLut()));
  const Outcome outcome = SetP3Mode();
  ExpectFirmwareLut(outcome);
  EXPECT_EQ(outcome.lutLog, FirmwareLog({}));
}

// A directory in the file's place can be neither read nor rebuilt: the mode moves to its other
// file.
TEST_F(BadBinFile, ThatIsADirectory) {
  std::filesystem::create_directory(DataFile("P3.bin"));
  const std::string text = "Open 3D LUT Data File Failed! fileName:" + DataFile("P3.bin");
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  EXPECT_EQ(
      outcome.lutLog,
      GoldenLog({LutLine(3, text, "Read3DLutDataFormFile"), LutLine(3, text, "CreateLutDataFile3D"),
                 LutLine(3, "CreateLutDataFile3D Failed! mode:2", "UpdateThreeLutBinFile3D")}));
}

// --- Golden file: without the firmware, the last source
// --------------------------------------------

class BadGoldenFile : public BrokenMachine {
 protected:
  BadGoldenFile() { firmwareTable.clear(); }

  static Lines NoTable() {
    return {LutLine(3, "GetSystemFirmwareTable Failed! Error Code:1168", "ReadBiosLutDataBlock"),
            LutLine(3, "ReadBiosLutDataBlock Failed!", "GetSourceDataBlock")};
  }

  Outcome SetP3ModeWith(const Bytes& golden) {
    RemoveBinFiles();
    WriteFileBytes(files.goldenFile, golden);
    return SetP3Mode();
  }

  void ExpectRefusedFor(const Outcome& outcome, const Lines& reasons) const {
    ExpectRefused(outcome);
    EXPECT_EQ(outcome.lutLog, RefusedLog(NoTable(), reasons));
  }

  static Lines InvalidBlock(Lines reasons) {
    return reasons +
           Lines{LutLine(3, "Bios 3D Lut Data invalid! mode:2", "UpdateThreeLutBinFile3D")};
  }
};

// The last place to look is named untested, beside the running program's directory.
TEST_F(BadGoldenFile, Missing) {
  std::filesystem::remove(files.goldenFile);
  wchar_t program[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const std::filesystem::path dir = std::filesystem::path(program).parent_path();
  ExpectRefusedFor(SetP3Mode(),
                   {LutLine(0, "Read Golden File:" + dir.string() + "\\.." + files.goldenName,
                            "GetFullGoldenFilePath"),
                    LutLine(3,
                            "Open 3D LUT Data File Failed! fileName:" + dir.parent_path().string() +
                                files.goldenName,
                            "Read3DLutDataFormFile")});
}

TEST_F(BadGoldenFile, OfOneBlock_IsEnough) {
  const Bytes golden = virtualnotebook::MakeGoldenFile({GoldenP3Block()});
  ASSERT_EQ(golden.size(), 24741u);
  ExpectGoldenLut(SetP3ModeWith(golden));
}

TEST_F(BadGoldenFile, Short) {
  for (const size_t size : {0u, 1u, 15u, 16u, 24740u}) {
    SCOPED_TRACE(size);
    Bytes golden = virtualnotebook::MakeGoldenFile({GoldenP3Block()});
    golden.resize(size);
    ExpectRefusedFor(SetP3ModeWith(golden), ShortFile(files.goldenFile));
  }
}

TEST_F(BadGoldenFile, CutOffAnywhere) {
  const size_t whole = WholeMachine().goldenFile.size();
  for (const size_t size :
       {size_t{24741}, size_t{24742}, kP3InGolden + kBlockSize, size_t{70001}, whole - 1}) {
    SCOPED_TRACE(size);
    Bytes golden = WholeMachine().goldenFile;
    golden.resize(size);
    ExpectRefusedFor(SetP3ModeWith(golden),
                     {LutLine(3,
                              "3D Lut Table len is error, buffLen is " + std::to_string(size + 52) +
                                  "target len is " + std::to_string(whole + 52),
                              "GetOneLutDat3D")});
  }
}

TEST_F(BadGoldenFile, Longest_IsUsed) {
  Bytes golden = WholeMachine().goldenFile;
  golden.resize(kLargestFile, 0xFF);
  ExpectGoldenLut(SetP3ModeWith(golden));
}

TEST_F(BadGoldenFile, TooLong) {
  Bytes golden = WholeMachine().goldenFile;
  golden.resize(kLargestFile + 1, 0xFF);
  ExpectRefusedFor(SetP3ModeWith(golden), LongFile(files.goldenFile));
}

TEST_F(BadGoldenFile, OneBitOfEachByteOfTheControlHeader) {
  for (size_t byte = 0; byte < 16; ++byte) {
    SCOPED_TRACE(byte);
    Bytes golden = WholeMachine().goldenFile;
    FlipBit(golden, byte, byte % 8);
    ExpectRefusedFor(SetP3ModeWith(golden),
                     {LutLine(3, "biosControlHeader Parse Failed!", "GetOneLutDat3D")});
  }
}

TEST_F(BadGoldenFile, OneBitOfTheBlockAnywhere) {
  for (const size_t byte : SampledBytesOfBlock()) {
    SCOPED_TRACE(byte);
    Bytes golden = WholeMachine().goldenFile;
    FlipBit(golden, kP3InGolden + byte, byte % 8);
    const Outcome outcome = SetP3ModeWith(golden);
    if (byte == 64) {  // no block of the type: no line of its own
      ExpectRefusedFor(outcome, {});
    } else if (byte < 66 || byte >= 70) {
      ExpectRefusedFor(outcome, InvalidBlock(BadHash()));
    } else {
      ExpectRefused(outcome);
    }
  }
}

TEST_F(BadGoldenFile, BehindADamagedBinFile_RebuildsIt) {
  for (const size_t byte : SampledBytesOfBlock()) {
    SCOPED_TRACE(byte);
    Bytes file = GoldenP3Block();
    FlipBit(file, byte, byte % 8);
    WriteFileBytes(DataFile("GoldenP3.bin"), file);
    ExpectGoldenLut(SetP3Mode());
  }
}

// A bad source leaves the damaged file as it is, and the mode is refused.
TEST_F(BadGoldenFile, AndADamagedBinFile) {
  Bytes file = GoldenP3Block();
  FlipBit(file, 5000, 0);
  WriteFileBytes(DataFile("GoldenP3.bin"), file);
  std::filesystem::remove(files.goldenFile);
  const Outcome outcome = SetP3Mode();
  EXPECT_EQ(outcome.result, ResultColorFieldError);
  EXPECT_EQ(outcome.sent.size(), 0u);
  EXPECT_TRUE(testsupport::ReadFileBytes(DataFile("GoldenP3.bin")) == file);
}

// --- Digest file: decides whether the profile may be associated
// ------------------------------------

class BadDigestFile : public BrokenMachine {
 protected:
  BadDigestFile() { profilesBefore = {L"before.icc"}; }

  static constexpr size_t kRecordSize = 102;

  std::string Profile() const { return files.Profile(kP3Lut); }

  // One record: the P3 profile's.
  static Bytes Record() {
    const std::string name = virtualnotebook::PresetProfileName(kP3Lut);
    return virtualnotebook::MakeDigestFile({{name, WholeMachine().profiles.at(name)}});
  }

  void ExpectSwitched(const Outcome& outcome) const {
    EXPECT_EQ(outcome.result, ResultOk);
    EXPECT_EQ(outcome.sent.size(), 1u);
    const std::string name = virtualnotebook::PresetProfileName(kP3Lut);
    ASSERT_FALSE(outcome.profiles.empty());
    EXPECT_EQ(outcome.profiles.front(), std::wstring(name.begin(), name.end()));
  }

  // Refused by the profile's check: neither profile nor panel was touched.
  void ExpectRefusedWith(const Outcome& outcome, ResultT result, const std::string& reason) const {
    EXPECT_EQ(outcome.result, result);
    EXPECT_EQ(outcome.sent.size(), 0u);
    EXPECT_EQ(outcome.lutLog, Lines{});
    EXPECT_EQ(outcome.profiles, profilesBefore);
    const Lines tail = {"3 " + reason + "(ColorFieldApi::CheckTargetIccFileIsValid)",
                        "3 Icc Already Associated. iccFileName:" + Profile() +
                            "(ColorFieldApi::SetOsIccFileWithCheck)",
                        "3 SetOsIccFile Failed, ret is" + std::to_string(result) +
                            "(ColorFieldApi::SetColorField)"};
    ASSERT_GE(outcome.log.size(), tail.size());
    EXPECT_EQ(Lines(outcome.log.end() - static_cast<ptrdiff_t>(tail.size()), outcome.log.end()),
              tail);
  }
  void ExpectNotFound(const Outcome& outcome) const {
    ExpectRefusedWith(outcome, ResultFileNotFound, "Icc File:" + Profile() + " Not Found!");
  }
  void ExpectModified(const Outcome& outcome) const {
    ExpectRefusedWith(outcome, ResultIccError, "Icc File Be Modified! fileName:" + Profile());
  }
};

TEST_F(BadDigestFile, None_Switches) { ExpectSwitched(SetP3Mode(true)); }

TEST_F(BadDigestFile, Missing) {
  std::filesystem::remove(files.digestFile);
  ExpectNotFound(SetP3Mode(true));
}

TEST_F(BadDigestFile, ShortAnywhere) {
  ASSERT_EQ(Record().size(), kRecordSize);
  for (const size_t size :
       {size_t{0}, size_t{1}, size_t{62}, size_t{63}, size_t{99}, kRecordSize - 1}) {
    SCOPED_TRACE(size);
    Bytes digest = Record();
    digest.resize(size);
    WriteFileBytes(files.digestFile, digest);
    ExpectModified(SetP3Mode(true));
  }
}

TEST_F(BadDigestFile, ATrailingPieceIsIgnored) {
  Bytes digest = Record();
  digest.resize(2 * kRecordSize - 1, 0xFF);
  WriteFileBytes(files.digestFile, digest);
  ExpectSwitched(SetP3Mode(true));
}

TEST_F(BadDigestFile, WithoutTheProfile) {
  const std::string name = virtualnotebook::PresetProfileName(virtualnotebook::kSrgbLut);
  WriteFileBytes(files.digestFile,
                 virtualnotebook::MakeDigestFile({{name, WholeMachine().profiles.at(name)}}));
  ExpectModified(SetP3Mode(true));
}

TEST_F(BadDigestFile, OneBitOfEachByte) {
  const size_t nameLength = virtualnotebook::PresetProfileName(kP3Lut).size();
  for (size_t byte = 0; byte < kRecordSize; ++byte) {
    SCOPED_TRACE(byte);
    Bytes digest = Record();
    FlipBit(digest, byte, byte % 7);
    WriteFileBytes(files.digestFile, digest);
    const bool isHash = byte >= 67 && byte < 99;
    const Outcome outcome = SetP3Mode(true);
    if (byte < nameLength || isHash) {
      ExpectModified(outcome);
    } else {  // what stands behind the name, or is never read
      ExpectSwitched(outcome);
    }
  }
}

TEST_F(BadDigestFile, ForAMissingProfile) {
  std::filesystem::remove(Profile());
  ExpectNotFound(SetP3Mode(true));
}

TEST_F(BadDigestFile, ForAProfileOfLength0) {
  WriteFileBytes(Profile(), {});
  ExpectModified(SetP3Mode(true));
}

TEST_F(BadDigestFile, ForAProfileWithOneBitChanged) {
  const Bytes whole = WholeMachine().profiles.at(virtualnotebook::PresetProfileName(kP3Lut));
  for (size_t byte = 0; byte < whole.size(); byte += whole.size() / 23) {
    SCOPED_TRACE(byte);
    Bytes profile = whole;
    FlipBit(profile, byte, byte % 8);
    WriteFileBytes(Profile(), profile);
    ExpectModified(SetP3Mode(true));
  }
}

TEST_F(BadDigestFile, ForAProfileThatIsCutOffOrGrew) {
  const Bytes whole = WholeMachine().profiles.at(virtualnotebook::PresetProfileName(kP3Lut));
  for (const size_t size : {size_t{1}, whole.size() - 1, whole.size() + 1}) {
    SCOPED_TRACE(size);
    Bytes profile = whole;
    profile.resize(size);
    WriteFileBytes(Profile(), profile);
    ExpectModified(SetP3Mode(true));
  }
}

}  // namespace
}  // namespace scenarios
