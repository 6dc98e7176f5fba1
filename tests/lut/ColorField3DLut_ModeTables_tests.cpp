#include <map>

#include "lut/LutMachine.h"

namespace lutmachine {
namespace {

class ColorField3DLutModeTables : public LutMachine {
 protected:
  // Whether a block with this type byte is the mode's.
  bool Takes(int mode, uint8_t typeByte) {
    Bytes header(128, 0);
    header[64] = typeByte;
    return engine.OneLutTypeIsValid(mode, header.data(), header.size());
  }

  // What exists nowhere: the mode cannot be had, and moves to the golden file on the way.
  void LoseEverything() {
    notebook.firmwareTable.clear();
    std::filesystem::remove(kGoldenFile);
    std::filesystem::remove_all(kDataDir);
  }
};

constexpr uint8_t kTypeBytes[] = {0, 1, 2, 3, 4, 7, 160, 255, 5};

const std::map<int, std::string> kFirmwareFiles = {
    {1, "sRGB.bin"}, {2, "P3.bin"},    {3, "sRGB.bin"}, {4, "P3.bin"}, {5, "P3.bin"},
    {6, "P3.bin"},   {7, "EBOOK.bin"}, {8, "sRGB.bin"}, {9, "P3.bin"}, {10, "Adobe.bin"}};
const std::map<int, std::string> kGoldenFiles = {
    {1, "GoldensRGB.bin"}, {2, "GoldenP3.bin"},    {3, "GoldensRGB.bin"}, {4, "GoldenP3.bin"},
    {5, "GoldenP3.bin"},   {6, "GoldenP3.bin"},    {7, "EBOOK.bin"},      {8, "GoldensRGB.bin"},
    {9, "GoldenP3.bin"},   {10, "GoldenAdobe.bin"}};

TEST_F(ColorField3DLutModeTables, Constructor_EachModeHasItsBinFile) {
  for (const auto& [mode, file] : kFirmwareFiles) {
    EXPECT_EQ(FileOf(engine, mode), DataFile(file)) << mode;
  }
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutModeTables, Constructor_GammaHasItsBinFile) {
  engine.IsGammaLutBinFileExist();
  EXPECT_EQ(LastArgument("_access", 0), DataFile("Gamma.bin"));
}

TEST_F(ColorField3DLutModeTables, Constructor_OtherModesHaveNoFile) {
  for (const int mode : {0, 11, -1, 12}) {
    notebook.ForgetRecords();
    EXPECT_FALSE(engine.IsThreeLutBinFileExist(mode));
    EXPECT_EQ(notebook.CountCalls("_access"), 0u);
    EXPECT_EQ(
        Log(),
        Lines({Error("IsThreeLutBinFileExist",
                     "Temp bin file not exist! mode not found! mode:" + std::to_string(mode))}));
  }
}

TEST_F(ColorField3DLutModeTables, Constructor_ModesWithAFixedGamut) {
  const std::map<int, uint8_t> types = {{0, 0}, {1, 1}, {2, 2}, {7, 7}, {10, 4}};
  for (const auto& [mode, type] : types) {
    for (const uint8_t byte : kTypeBytes) {
      EXPECT_EQ(Takes(mode, byte), byte == type) << mode << " " << int{byte};
    }
  }
}

TEST_F(ColorField3DLutModeTables, UnregisteredModeTakesTheBaseBlock) {
  for (const int mode : {3, 4, 5, 6, 8, 9, 11}) {
    EXPECT_TRUE(Takes(mode, 0)) << mode;
    EXPECT_FALSE(Takes(mode, 1)) << mode;
    EXPECT_FALSE(Takes(mode, 2)) << mode;
  }
}

// The first look at an unregistered mode's gamut stores it: a registration comes too late.
TEST_F(ColorField3DLutModeTables, UnregisteredModeKeepsGamut0OnceItWasAskedFor) {
  EXPECT_TRUE(Takes(3, 0));
  EXPECT_EQ(engine.InitColorFieldGammaInfo(ModeInfo(3, 1)), 0);
  EXPECT_TRUE(Takes(3, 0));
  EXPECT_FALSE(Takes(3, 1));
}

TEST_F(ColorField3DLutModeTables, EachGamutHasItsLutType) {
  const std::map<int, uint8_t> types = {{0, 0}, {1, 1}, {2, 2}, {3, 1}, {4, 2},  {5, 2},
                                        {6, 2}, {7, 7}, {8, 1}, {9, 2}, {10, 4}, {-1, 5}};
  for (const auto& [gamut, type] : types) {
    const int mode = 100 + gamut;
    ASSERT_EQ(engine.InitColorFieldGammaInfo(ModeInfo(mode, gamut)), 0);
    for (const uint8_t byte : kTypeBytes) {
      EXPECT_EQ(Takes(mode, byte), byte == type) << gamut << " " << int{byte};
    }
  }
}

TEST_F(ColorField3DLutModeTables, UnknownGamutHasTypeZero) {
  ASSERT_EQ(engine.InitColorFieldGammaInfo(ModeInfo(100, 11)), 0);
  EXPECT_TRUE(Takes(100, 0));
}

TEST_F(ColorField3DLutModeTables, InitColorFieldThreeLutBaseInfo_LogsBothTexts) {
  EXPECT_EQ(engine.InitColorFieldThreeLutBaseInfo(BaseInfo("D:\\bin\\", "\\Gold.bin")), 0);
  EXPECT_EQ(Log(), Lines({Debug("InitColorFieldThreeLutBaseInfo", "threeLutBinFilePath:D:\\bin\\"),
                          Debug("InitColorFieldThreeLutBaseInfo", "goldenFilePath:\\Gold.bin")}));
}

TEST_F(ColorField3DLutModeTables, InitColorFieldThreeLutBaseInfo_FullFieldsHaveNoTerminator) {
  const std::string directory(100, 'd');
  const std::string golden = "\\" + std::string(99, 'g');
  EXPECT_EQ(engine.InitColorFieldThreeLutBaseInfo(BaseInfo(directory, golden)), 0);
  EXPECT_EQ(Log(),
            Lines({Debug("InitColorFieldThreeLutBaseInfo", "threeLutBinFilePath:" + directory),
                   Debug("InitColorFieldThreeLutBaseInfo", "goldenFilePath:" + golden)}));
  engine.SwitchLutFileTable(1);
  EXPECT_EQ(FileOf(engine, 1), directory + "sRGB.bin");
}

TEST_F(ColorField3DLutModeTables, InitColorFieldThreeLutBaseInfo_ExceptionGivesOneAndKeepsTheOld) {
  notebook.ThrowFrom("LcdLogMessage", 1, "no stream");
  EXPECT_EQ(engine.InitColorFieldThreeLutBaseInfo(BaseInfo("D:\\bin\\", "\\Gold.bin")), 1);
  EXPECT_EQ(Log(), Lines({Error("InitColorFieldThreeLutBaseInfo",
                                "SetColorFieldTempLutFilePath exception:no stream")}));
  engine.SwitchLutFileTable(1);
  EXPECT_EQ(FileOf(engine, 1), DataFile("sRGB.bin"));
}

TEST_F(ColorField3DLutModeTables, InitColorFieldGammaInfo_LogsTheMode) {
  ColorFieldModeInfo info = ModeInfo(4, 2);
  info.gamma = 2.4;
  info.temperR = 0.98765432;
  info.temperG = 1;
  info.temperB = 0.5;
  EXPECT_EQ(engine.InitColorFieldGammaInfo(info), 0);
  EXPECT_EQ(Log(), Lines({Debug("InitColorFieldGammaInfo",
                                "Init colorFiledMode info, mode: 4 gamma: 2.4 Temper r g b: "
                                "0.987654, 1, 0.5 gamut: 2")}));
}

TEST_F(ColorField3DLutModeTables, InitColorFieldGammaInfo_FixedGamutStays) {
  EXPECT_EQ(engine.InitColorFieldGammaInfo(ModeInfo(1, 5)), 0);
  EXPECT_TRUE(Takes(1, 1));
  EXPECT_FALSE(Takes(1, 2));
}

TEST_F(ColorField3DLutModeTables, InitColorFieldGammaInfo_SecondRegistrationChangesNothing) {
  EXPECT_EQ(engine.InitColorFieldGammaInfo(ModeInfo(4, 2)), 0);
  EXPECT_EQ(engine.InitColorFieldGammaInfo(ModeInfo(4, 1)), 0);
  EXPECT_TRUE(Takes(4, 2));
  EXPECT_FALSE(Takes(4, 1));
}

TEST_F(ColorField3DLutModeTables, InitColorFieldGammaInfo_ExceptionGivesOneAndKeepsWhatWasDone) {
  notebook.ThrowFrom("LcdLogMessage", 1, "no stream");
  EXPECT_EQ(engine.InitColorFieldGammaInfo(ModeInfo(4, 2)), 1);
  EXPECT_EQ(
      Log(),
      Lines({Error("InitColorFieldGammaInfo", "SetColorFieldGamma Info exception:no stream")}));
  EXPECT_TRUE(Takes(4, 2));
}

TEST_F(ColorField3DLutModeTables, SwitchLutFileTable_FirmwareNamesInTheDirectoryGiven) {
  engine.InitColorFieldThreeLutBaseInfo(BaseInfo("D:\\bin\\", kGoldenName));
  for (const auto& [mode, file] : kFirmwareFiles) {
    EXPECT_EQ(FileOf(engine, mode), DataFile(file)) << "the directory counts before: " << mode;
    engine.SwitchLutFileTable(mode);
    EXPECT_EQ(FileOf(engine, mode), "D:\\bin\\" + file) << mode;
  }
}

// A directory is used as it stands.
TEST_F(ColorField3DLutModeTables, SwitchLutFileTable_DirectoryWithoutABackslashAtItsEnd) {
  engine.InitColorFieldThreeLutBaseInfo(BaseInfo("D:\\bin", kGoldenName));
  engine.SwitchLutFileTable(2);
  EXPECT_EQ(FileOf(engine, 2), "D:\\binP3.bin");
}

TEST_F(ColorField3DLutModeTables, SwitchLutFileTable_GoldenNamesAfterAPanelChange) {
  LoseEverything();
  for (const auto& [mode, file] : kGoldenFiles) {
    EXPECT_FALSE(engine.Sync3DLutDataTable(mode));
    EXPECT_EQ(FileOf(engine, mode), DataFile(file)) << mode;
  }
}

TEST_F(ColorField3DLutModeTables, SwitchLutFileTable_GoldenNamesInTheDirectoryGiven) {
  LoseEverything();
  engine.InitColorFieldThreeLutBaseInfo(BaseInfo("D:\\bin\\", kGoldenName));
  for (const auto& [mode, file] : kGoldenFiles) {
    EXPECT_FALSE(engine.Sync3DLutDataTable(mode));
    EXPECT_EQ(FileOf(engine, mode), "D:\\bin\\" + file) << mode;
  }
}

TEST_F(ColorField3DLutModeTables, SwitchLutFileTable_OtherModesChangeNothing) {
  engine.InitColorFieldThreeLutBaseInfo(BaseInfo("D:\\bin\\", kGoldenName));
  for (const int mode : {0, 11, -1}) {
    engine.SwitchLutFileTable(mode);
    EXPECT_FALSE(engine.IsThreeLutBinFileExist(mode));
    EXPECT_EQ(notebook.CountCalls("_access"), 0u) << mode;
  }
  for (const auto& [mode, file] : kFirmwareFiles) {
    EXPECT_EQ(FileOf(engine, mode), DataFile(file)) << mode;
  }
}

TEST_F(ColorField3DLutModeTables, SwitchGammaLutFile_AlwaysInTheDefaultDirectory) {
  engine.InitColorFieldThreeLutBaseInfo(BaseInfo("D:\\bin\\", kGoldenName));
  engine.SwitchGammaLutFile(true);
  engine.IsGammaLutBinFileExist();
  EXPECT_EQ(LastArgument("_access", 0), DataFile("GoldensGamma.bin"));
  engine.SwitchGammaLutFile(false);
  engine.IsGammaLutBinFileExist();
  EXPECT_EQ(LastArgument("_access", 0), DataFile("Gamma.bin"));
}

// Each engine has tables of its own.
TEST_F(ColorField3DLutModeTables, EnginesShareNothing) {
  engine.InitColorFieldThreeLutBaseInfo(BaseInfo("D:\\bin\\", kGoldenName));
  engine.SwitchLutFileTable(1);
  velora::ColorField3DLut other;
  EXPECT_EQ(FileOf(other, 1), DataFile("sRGB.bin"));
}

}  // namespace
}  // namespace lutmachine
