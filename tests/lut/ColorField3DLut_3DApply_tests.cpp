#include <functional>

#include "lut/LutMachine.h"
#include "support/FailingNew.h"

namespace lutmachine {
namespace {

class ColorField3DLut3DApply : public LutMachine {
 protected:
  ColorField3DLut3DApply() {
    foreign.serial = {9, 8, 7, 6};
    Register(engine);
    notebook.ForgetRecords();
  }

  // As a host does at its start.
  static void Register(velora::ColorField3DLut& lut, const std::string& binDir = "") {
    lut.InitColorFieldThreeLutBaseInfo(BaseInfo(binDir, kGoldenName));
    lut.InitColorFieldGammaInfo(ModeInfo(4, 4));
  }

  // What the panel shows for a LUT type of the firmware, or of the golden file.
  std::vector<double> Own(uint8_t lutType) const {
    return virtualnotebook::MakeLut(machine.panel, lutType);
  }
  std::vector<double> Golden(uint8_t lutType) const {
    return virtualnotebook::MakeLut(nominal, lutType);
  }

  // The names of the calls made, LcdLogMessage left out.
  Lines Calls() const {
    Lines names;
    for (const auto& call : notebook.calls) {
      if (call.function != "LcdLogMessage") {
        names.push_back(call.function);
      }
    }
    return names;
  }

  static std::string Entry(int mode) {
    return Info("SetDisplayerBy3DLut", "SetDisplayer by 3DLut, mode is " + std::to_string(mode));
  }
  // The lines between a panel that is not the block's and the golden file.
  Lines ChangedLines(int mode, const PanelDescription& block, const PanelDescription& panel) const {
    return {InvalidLine(virtualnotebook::HeaderOf(block, 0), panel),
            Error("IsLcdChanged", "LCD data is not match or get data error, ret is 1"),
            Info("Sync3DLutDataTable", "LCD changed! mode:" + std::to_string(mode))};
  }

  const std::string notEbook = Info("FusionEbookProc", "Not e-book mode.");
  const std::string syncFailed = Error("SetDisplayerBy3DLut", "Sync3DLutDataTable Failed");
  PanelDescription foreign;
};

// --- Mode 0 ---

TEST_F(ColorField3DLut3DApply, Mode0_OnlyResets) {
  notebook.platform.lut3D = Own(2);
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(0));
  EXPECT_EQ(Log(), Lines({Entry(0)}));
  EXPECT_EQ(Calls(), Lines({"PlatformReset3DLut"}));
  EXPECT_TRUE(notebook.platform.lut3D.empty());
}

TEST_F(ColorField3DLut3DApply, Mode0_ResetFails) {
  notebook.FailCall("PlatformReset3DLut", 1, 7);
  EXPECT_FALSE(engine.SetDisplayerBy3DLut(0));
  EXPECT_EQ(Log(),
            Lines({Entry(0), Error("SetDisplayerBy3DLut", "PlatformSet3DLut Failed, ret is7")}));
}

TEST_F(ColorField3DLut3DApply, Mode0_Exception) {
  notebook.ThrowFrom("PlatformReset3DLut", 1, "driver gone");
  EXPECT_FALSE(engine.SetDisplayerBy3DLut(0));
  EXPECT_EQ(Log(), Lines({Entry(0), Error("SetDisplayerBy3DLut",
                                          "SetDisplayerBy3DLut exception:driver gone, mode:0")}));
}

// --- The roads of a mode ---

TEST_F(ColorField3DLut3DApply, Cold) {
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2), GamutLine(machine.panel), notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Own(2));
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 1u);
  EXPECT_EQ(LastArgument("PlatformSet3DLut", 1), "4913");
  EXPECT_EQ(ReadFileBytes(DataFile("P3.bin")), Block(2));
  EXPECT_FALSE(std::filesystem::exists(DataFile("GoldenP3.bin")));
}

TEST_F(ColorField3DLut3DApply, WarmInOneProcess) {
  ASSERT_TRUE(engine.SetDisplayerBy3DLut(2));
  notebook.platform.lut3D.clear();
  notebook.ForgetRecords();
  std::filesystem::remove_all(kDataDir);
  Unplug();
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2)}));
  EXPECT_EQ(Calls(), Lines({"PlatformSet3DLut"}));
  EXPECT_EQ(notebook.platform.lut3D, Own(2));
}

TEST_F(ColorField3DLut3DApply, WarmInTheNextProcess) {
  ASSERT_TRUE(engine.SetDisplayerBy3DLut(2));
  velora::ColorField3DLut next;
  Register(next);
  notebook.platform.lut3D.clear();
  notebook.ForgetRecords();
  EXPECT_TRUE(next.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2), GamutLine(machine.panel), notEbook}));
  EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 0u);
  EXPECT_EQ(notebook.CountCalls("WriteFile"), 0u);
  EXPECT_EQ(notebook.platform.lut3D, Own(2));
}

TEST_F(ColorField3DLut3DApply, EachModeShowsItsGamut) {
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(1));
  EXPECT_EQ(notebook.platform.lut3D, Own(1));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(4));  // registered with gamut 4
  EXPECT_EQ(notebook.platform.lut3D, Own(2));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(1));
  EXPECT_EQ(notebook.platform.lut3D, Own(1));
}

// A mode that was never registered shows the base LUT, out of the file that its name promises.
TEST_F(ColorField3DLut3DApply, UnregisteredMode) {
  ASSERT_TRUE(engine.SetDisplayerBy3DLut(1));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(3));
  EXPECT_EQ(notebook.platform.lut3D, Own(0));
  EXPECT_EQ(ReadFileBytes(DataFile("sRGB.bin")), Block(0));
}

TEST_F(ColorField3DLut3DApply, DamagedBinFile) {
  Bytes damaged = Block(2);
  damaged[20000] ^= 0x20;
  WriteFileBytes(DataFile("P3.bin"), damaged);
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(),
            Lines({Entry(2), GamutLine(machine.panel),
                   Error("IsLutDataValid3D", "SHA256 Value is not match, shadata len is 24693"),
                   notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Own(2));
  EXPECT_EQ(ReadFileBytes(DataFile("P3.bin")), Block(2));
}

TEST_F(ColorField3DLut3DApply, ShortBinFile) {
  WriteFileBytes(DataFile("P3.bin"), Part(Block(2), 0, 24724));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2), GamutLine(machine.panel),
                          Error("Read3DLutDataFormFile",
                                "3D LUT Data File Len Error! fileName:" + DataFile("P3.bin")),
                          notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Own(2));
}

TEST_F(ColorField3DLut3DApply, BinFileOfAnotherType) {
  WriteFileBytes(DataFile("P3.bin"), Block(1));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2), GamutLine(machine.panel), notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Own(2));
  EXPECT_EQ(ReadFileBytes(DataFile("P3.bin")), Block(2));
}

TEST_F(ColorField3DLut3DApply, ReplacedPanel) {
  ASSERT_TRUE(engine.SetDisplayerBy3DLut(2));
  PlugIn(virtualnotebook::MakeEdid(foreign));
  velora::ColorField3DLut next;
  Register(next);
  notebook.ForgetRecords();
  EXPECT_TRUE(next.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2), GamutLine(foreign)}) + ChangedLines(2, machine.panel, foreign) +
                       Lines({notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Golden(2));
  EXPECT_EQ(ReadFileBytes(DataFile("GoldenP3.bin")), GoldenBlock(2));
  EXPECT_EQ(ReadFileBytes(DataFile("P3.bin")), Block(2));  // a foreign panel's file stays
}

TEST_F(ColorField3DLut3DApply, ReplacedPanel_NextProcessTakesTheGoldenBinFile) {
  PlugIn(virtualnotebook::MakeEdid(foreign));
  ASSERT_TRUE(engine.SetDisplayerBy3DLut(2));
  std::filesystem::remove(kGoldenFile);
  velora::ColorField3DLut next;
  Register(next);
  notebook.platform.lut3D.clear();
  notebook.ForgetRecords();
  EXPECT_TRUE(next.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2), GamutLine(foreign)}) + ChangedLines(2, machine.panel, foreign) +
                       Lines({notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Golden(2));
}

// The directory given counts from the change on.
TEST_F(ColorField3DLut3DApply, ReplacedPanel_DirectoryGiven) {
  const std::string directory = kDataDir + "\\bin\\";
  std::filesystem::create_directories(directory);
  Register(engine, directory);
  PlugIn(virtualnotebook::MakeEdid(foreign));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(notebook.platform.lut3D, Golden(2));
  EXPECT_EQ(ReadFileBytes(DataFile("P3.bin")), Block(2));
  EXPECT_EQ(ReadFileBytes(directory + "GoldenP3.bin"), GoldenBlock(2));
  EXPECT_FALSE(std::filesystem::exists(DataFile("GoldenP3.bin")));
}

TEST_F(ColorField3DLut3DApply, NoFirmwareTable) {
  notebook.firmwareTable.clear();
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(),
            Lines({Entry(2), GamutLine(machine.panel),
                   Error("ReadBiosLutDataBlock", "GetSystemFirmwareTable Failed! Error Code:1168"),
                   Error("GetSourceDataBlock", "ReadBiosLutDataBlock Failed!"),
                   Error("IsLcdChanged", "UpdateThreeLutBinFile3D Failed! mode:2"),
                   Info("Sync3DLutDataTable", "LCD changed! mode:2"), notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Golden(2));
}

TEST_F(ColorField3DLut3DApply, NoEdid) {
  Unplug();
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(
      Log(),
      Lines({Entry(2), Error("GetLcdEdidData", "RegOpenKeyExA Failed! edidFullPath:" + kEdidPath),
             Error("IsLcdChanged", "Get LCD EDID Data error."),
             Info("Sync3DLutDataTable", "LCD changed! mode:2"), notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Golden(2));
  EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 0u);
}

TEST_F(ColorField3DLut3DApply, NothingCanBeHad) {
  Unplug();
  notebook.firmwareTable.clear();
  std::filesystem::remove(kGoldenFile);
  EXPECT_FALSE(engine.SetDisplayerBy3DLut(2));
  const Lines log = Log();
  ASSERT_EQ(log.size(), 8u);
  EXPECT_EQ(
      Lines(log.begin(), log.begin() + 4),
      Lines({Entry(2), Error("GetLcdEdidData", "RegOpenKeyExA Failed! edidFullPath:" + kEdidPath),
             Error("IsLcdChanged", "Get LCD EDID Data error."),
             Info("Sync3DLutDataTable", "LCD changed! mode:2")}));
  // Where this test program stands is part of these two.
  EXPECT_TRUE(log[4].starts_with("0 Read Golden File:")) << log[4];
  EXPECT_TRUE(log[5].starts_with("3 Open 3D LUT Data File Failed! fileName:")) << log[5];
  EXPECT_EQ(
      Lines(log.begin() + 6, log.end()),
      Lines({Error("Sync3DLutDataTable", "UpdateThreeLutBinFile3D Failed! mode:2"), syncFailed}));
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 0u);
}

// Nothing is rolled back: a mode that moved to the golden file stays there, and only that mode.
TEST_F(ColorField3DLut3DApply, GoldenFlagSurvivesAFailure) {
  std::filesystem::remove(kGoldenFile);
  notebook.firmwareTable.clear();
  ASSERT_FALSE(engine.SetDisplayerBy3DLut(2));
  notebook.firmwareTable = machine.firmwareTable;
  WriteFileBytes(kGoldenFile, machine.goldenFile);
  notebook.ForgetRecords();
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2)}) + ChangedLines(2, nominal, machine.panel) + Lines({notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Golden(2));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(1));
  EXPECT_EQ(notebook.platform.lut3D, Own(1));
}

TEST_F(ColorField3DLut3DApply, ModeWithoutAFile) {
  EXPECT_FALSE(engine.SetDisplayerBy3DLut(11));
  const std::string noFile =
      Error("IsThreeLutBinFileExist", "Temp bin file not exist! mode not found! mode:11");
  const Lines notWritten = {
      Error("CreateLutDataFile3D", "CreateLutDataFile3D error,Lut Type error! type:0"),
      Error("UpdateThreeLutBinFile3D", "CreateLutDataFile3D Failed! mode:11")};
  EXPECT_EQ(Log(),
            Lines({Entry(11), GamutLine(machine.panel), noFile}) + notWritten +
                Lines({Error("IsLcdChanged", "UpdateThreeLutBinFile3D Failed! mode:11"),
                       Info("Sync3DLutDataTable", "LCD changed! mode:11"), noFile}) +
                notWritten +
                Lines({Error("Sync3DLutDataTable", "UpdateThreeLutBinFile3D Failed! mode:11"),
                       syncFailed}));
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 0u);
}

TEST_F(ColorField3DLut3DApply, FileIsGoneAtTheLastRead) {
  notebook.FailCall("CreateFileA", 2, static_cast<uint64_t>(-1), ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(),
            Lines({Entry(2), GamutLine(machine.panel), notEbook,
                   Error("Read3DLutDataFormFile",
                         "Open 3D LUT Data File Failed! fileName:" + DataFile("P3.bin")),
                   Error("Sync3DLutDataTable", "ReadLutDataFile Failed! mode:2"), syncFailed}));
  // The next call starts anew.
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(notebook.platform.lut3D, Own(2));
}

// A known weakness: the file is read twice, and proved the first time. What another process writes
// in between is shown; the next process finds it, and rebuilds the file.
TEST_F(ColorField3DLut3DApply, FileThatChangesBehindItsProofIsShown) {
  Bytes changed = Block(2);
  changed[128 + 3] ^= 1;  // the first entry's blue
  WriteFileBytes(DataFile("P3.bin"), Block(2));
  int openings = 0;
  notebook.onCall = [&](const virtualnotebook::Call& call) {
    if (call.function == "CreateFileA" && ++openings == 2) {
      WriteFileBytes(DataFile("P3.bin"), changed);
    }
  };
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  notebook.onCall = nullptr;
  std::vector<double> shown = Own(2);
  shown[2] = static_cast<int>(shown[2]) ^ 1;
  EXPECT_EQ(notebook.platform.lut3D, shown);
  EXPECT_EQ(Log(), Lines({Entry(2), GamutLine(machine.panel), notEbook}));

  velora::ColorField3DLut next;
  Register(next);
  EXPECT_TRUE(next.SetDisplayerBy3DLut(2));
  EXPECT_EQ(notebook.platform.lut3D, Own(2));
  EXPECT_EQ(ReadFileBytes(DataFile("P3.bin")), Block(2));
}

TEST_F(ColorField3DLut3DApply, NoMemoryForTheLut) {
  ASSERT_TRUE(engine.GetLcdEdidData());
  notebook.ForgetRecords();
  const testsupport::FailingNew failure(1);
  EXPECT_FALSE(engine.SetDisplayerBy3DLut(2));
  EXPECT_TRUE(failure.HasFailed());
  EXPECT_EQ(
      Log(),
      Lines({Entry(2), notEbook, Error("ParseOneLutDataFile3D", "pLutData3D is nullptr!mode:2"),
             Error("Sync3DLutDataTable", "ParseOneLutDataFile3D Failed! mode:2"), syncFailed}));
}

// --- The platform ---

TEST_F(ColorField3DLut3DApply, PlatformRefuses) {
  notebook.FailCall("PlatformSet3DLut", 1, static_cast<uint64_t>(-5));
  EXPECT_FALSE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2), GamutLine(machine.panel), notEbook,
                          Error("SetDisplayerBy3DLut", "PlatformSet3DLut Failed, ret is -5")}));
  EXPECT_TRUE(notebook.platform.lut3D.empty());
  // The LUT is there: a second try needs the platform only.
  notebook.ForgetRecords();
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Calls(), Lines({"PlatformSet3DLut"}));
}

TEST_F(ColorField3DLut3DApply, PlatformThrows) {
  notebook.ThrowFrom("PlatformSet3DLut", 1, "driver gone");
  EXPECT_FALSE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(
      Log(),
      Lines({Entry(2), GamutLine(machine.panel), notEbook,
             Error("SetDisplayerBy3DLut", "SetDisplayerBy3DLut exception:driver gone, mode:2")}));
}

// What lies beneath has no guard of its own there.
TEST_F(ColorField3DLut3DApply, IdentityThrows) {
  notebook.ThrowFrom("WmiQuery::ExcuteQueryImpl", 1, "no service");
  EXPECT_FALSE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2), Error("SetDisplayerBy3DLut",
                                          "SetDisplayerBy3DLut exception:no service, mode:2")}));
}

// The guard of the extraction turns an exception into a failed update, and the golden file helps.
TEST_F(ColorField3DLut3DApply, ExtractionThrows) {
  notebook.ThrowFrom("GetSystemFirmwareTable", 1, "no firmware");
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(Log(), Lines({Entry(2), GamutLine(machine.panel),
                          Error("UpdateThreeLutBinFile3D",
                                "UpdateThreeLutBinFile3D exception:no firmware ,mode:2"),
                          Error("IsLcdChanged", "UpdateThreeLutBinFile3D Failed! mode:2"),
                          Info("Sync3DLutDataTable", "LCD changed! mode:2"), notEbook}));
  EXPECT_EQ(notebook.platform.lut3D, Golden(2));
}

// --- ParseOneLutDataFile3D ---

TEST_F(ColorField3DLut3DApply, ParseOneLutDataFile3D_Refuses) {
  const Bytes block = Block(2);
  EXPECT_FALSE(engine.ParseOneLutDataFile3D(2, nullptr, block.size()));
  EXPECT_FALSE(engine.ParseOneLutDataFile3D(2, block.data(), 24724));
  const std::string line = Error("ParseOneLutDataFile3D", "LutDataFile Error!mode:2");
  EXPECT_EQ(Log(), Lines({line, line}));
}

TEST_F(ColorField3DLut3DApply, ParseOneLutDataFile3D_FillsTheTable) {
  const Bytes block = Block(1);
  EXPECT_TRUE(engine.ParseOneLutDataFile3D(11, block.data(), block.size()));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(11));
  EXPECT_EQ(notebook.platform.lut3D, Own(1));
}

TEST_F(ColorField3DLut3DApply, ParseOneLutDataFile3D_GreatestValues) {
  const std::vector<double> white(14739, 1023);
  const Bytes block =
      virtualnotebook::MakeLutBlock(virtualnotebook::HeaderOf(machine.panel, 2), white);
  ASSERT_EQ(block[128], 0xFF);  // the low bits of R
  ASSERT_EQ(block[19780], 3);   // its high bits
  EXPECT_TRUE(engine.ParseOneLutDataFile3D(2, block.data(), block.size()));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(2));
  EXPECT_EQ(notebook.platform.lut3D, white);
}

// --- Any one call fails ---

// Whatever fails, and whenever: the platform gets a whole LUT, the panel's own or the golden one,
// or none; and a try without faults afterwards brings one.
TEST_F(ColorField3DLut3DApply, NoFaultLetsAnythingElseThrough) {
  struct Fault {
    const char* function;
    uint64_t result;
  };
  constexpr auto kInvalidHandle = static_cast<uint64_t>(-1);
  const Fault faults[] = {{"EnumDisplayDevicesW", 0},
                          {"WmiQuery::ExcuteQueryImpl", 5},
                          {"RegOpenKeyExA", ERROR_ACCESS_DENIED},
                          {"RegQueryValueExA", ERROR_ACCESS_DENIED},
                          {"GetSystemFirmwareTable", 0},
                          {"GetSystemFirmwareTable", 200000},
                          {"_access", kInvalidHandle},
                          {"CoreKit::GetCanonicalizedFilePath", 0},
                          {"CoreKit::BytesToHexString", 0},
                          {"CoreKit::WStringToString", 0},
                          {"CoreKit::EnableFileUsersPriviledge", 1},
                          {"CreateFileA", kInvalidHandle},
                          {"GetFileSizeEx", 0},
                          {"ReadFile", 0},
                          {"WriteFile", 0}};
  for (const Fault& fault : faults) {
    for (unsigned n = 1; n <= 5; ++n) {
      SCOPED_TRACE(std::string(fault.function) + " " + std::to_string(n));
      std::filesystem::remove_all(kDataDir);
      std::filesystem::create_directories(kDataDir);
      notebook.platform.lut3D.clear();
      notebook.ForgetRecords();
      velora::ColorField3DLut lut;
      Register(lut);
      notebook.FailCall(fault.function, n, fault.result, ERROR_ACCESS_DENIED);
      const bool shown = lut.SetDisplayerBy3DLut(2);
      notebook.ClearFaults();
      EXPECT_EQ(shown, !notebook.platform.lut3D.empty());
      if (!shown) {
        EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 0u);
        EXPECT_EQ(Log().back(), syncFailed);
        EXPECT_TRUE(lut.SetDisplayerBy3DLut(2));
      }
      EXPECT_TRUE(notebook.platform.lut3D == Own(2) || notebook.platform.lut3D == Golden(2));
    }
  }
}

}  // namespace
}  // namespace lutmachine
