#include <limits>

#include "lut/LutBlock.h"
#include "lut/UserLutTest.h"
#include "support/FailingNew.h"

namespace lutmachine {
namespace {

class ColorField3DLutUserFiles : public UserLutTest {
 protected:
  static std::string Temp(const std::string& name) { return kUserDir + "temp\\" + name; }
};

TEST_F(ColorField3DLutUserFiles, SaveUser3DLutBin_IsTheBlockOfAnotherEncoder) {
  const std::vector<double> lut = Some3DLut();
  EXPECT_EQ(engine.SaveUser3DLutBin(lut.data(), "Mine%1"), Temp("Mine%1_3dlut.bin"));
  const Bytes file = ReadFileBytes(Temp("Mine%1_3dlut.bin"));
  EXPECT_EQ(file.size(), 24725u);
  EXPECT_EQ(Part(file, 66, 70), Bytes({0x00, 0x00, 0x5F, 0xF5}));
  EXPECT_EQ(file, UserBlock(lut));
  EXPECT_TRUE(EngineLog().empty());
}

TEST_F(ColorField3DLutUserFiles, SaveUserGammaLutBin_IsTheBlockOfAnotherEncoder) {
  const std::vector<double> lut = SomeGammaLut();
  EXPECT_EQ(engine.SaveUserGammaLutBin(lut.data(), "Mine%1"), Temp("Mine%1_gammalut.bin"));
  const Bytes file = ReadFileBytes(Temp("Mine%1_gammalut.bin"));
  EXPECT_EQ(file.size(), 5280u);
  EXPECT_EQ(Part(file, 64, 70), Bytes({0x0B, 0x0C, 0x00, 0x00, 0x14, 0x00}));
  EXPECT_EQ(file, UserBlock(lut));
}

TEST_F(ColorField3DLutUserFiles, TheReaderTakesWhatTheWriterWrote) {
  std::vector<double> lut3D = Some3DLut();
  std::vector<double> gamma = SomeGammaLut();
  for (double& value : lut3D) value += 0.9;  // is cut off
  engine.SaveUser3DLutBin(lut3D.data(), "Mine");
  engine.SaveUserGammaLutBin(gamma.data(), "Mine");
  std::filesystem::copy_file(Temp("Mine_3dlut.bin"), UserFile3D("Mine"));
  std::filesystem::copy_file(Temp("Mine_gammalut.bin"), UserFileGamma("Mine"));
  Unplug();  // the LUT goes to the platform as it is
  EXPECT_TRUE(engine.SetDisplayerByUser3DLut("Mine", false));
  EXPECT_TRUE(engine.SetDisplayerByUserGammaLut("Mine", false));
  EXPECT_EQ(notebook.platform.lut3D, Some3DLut());
  EXPECT_EQ(notebook.platform.gammaLut, SomeGammaLut());
}

TEST_F(ColorField3DLutUserFiles, WriteLutDataToBin_FieldsByHand) {
  std::vector<double> lut(3072, 0.0);
  const double entries[][3] = {
      {1023, 0, 0}, {0, 4095, 4095}, {1022.9, 1, 2}, {0x123, 0x456, 0x789}};
  for (size_t i = 0; i < std::size(entries); ++i) {
    std::ranges::copy(entries[i], lut.begin() + static_cast<ptrdiff_t>(3 * i));
  }
  engine.SaveUserGammaLutBin(lut.data(), "Mine");
  const Bytes file = ReadFileBytes(Temp("Mine_gammalut.bin"));
  EXPECT_EQ(Part(file, 128, 144), Bytes({0xFF, 0, 0, 0, 0x00, 0xFF, 0xFF, 0xFF, 0xFE, 0x00, 0x10,
                                         0x02, 0x23, 0x45, 0x67, 0x89}));
  EXPECT_EQ(Part(file, 4224, 4228), Bytes({3, 0, 3, 1}));
}

// What does not fit runs into the field above; what is no number has a defined outcome.
TEST_F(ColorField3DLutUserFiles, WriteLutDataToBin_ValuesBeyondTheirFields) {
  std::vector<double> lut(3072, 0.0);
  lut[2] = 4096;
  lut[4] = 4096;
  lut[6] = std::numeric_limits<double>::quiet_NaN();
  lut[9] = 1e300;
  engine.SaveUserGammaLutBin(lut.data(), "Mine");
  const Bytes file = ReadFileBytes(Temp("Mine_gammalut.bin"));
  EXPECT_EQ(Part(file, 128, 144),
            Bytes({0x00, 0x00, 0x10, 0x00, 0x01, 0x00, 0x00, 0x00, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Part(file, 4224, 4228), Bytes({0, 0, 0, 0}));
}

TEST_F(ColorField3DLutUserFiles, AllZerosIsAFileThatHoldsAndALutThatDoesNot) {
  const std::vector<double> zeros(14739, 0.0);
  engine.SaveUser3DLutBin(zeros.data(), "Mine");
  const Bytes file = ReadFileBytes(Temp("Mine_3dlut.bin"));
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(file)));
  EXPECT_FALSE(engine.IsThreeDLutDataValid(zeros.data()));
  EXPECT_EQ(EngineLog(), Lines({Error("IsThreeDLutDataValid", "3DLut data is invalid")}));
}

TEST_F(ColorField3DLutUserFiles, SavingTwiceReplacesTheFile) {
  std::vector<double> lut = SomeGammaLut();
  engine.SaveUserGammaLutBin(lut.data(), "Mine");
  lut[0] = 99;
  engine.SaveUserGammaLutBin(lut.data(), "Mine");
  EXPECT_EQ(ReadFileBytes(Temp("Mine_gammalut.bin")), UserBlock(lut));
}

TEST_F(ColorField3DLutUserFiles, NullLuts) {
  EXPECT_EQ(engine.SaveUser3DLutBin(nullptr, "Mine"), "");
  EXPECT_EQ(engine.SaveUserGammaLutBin(nullptr, "Mine"), "");
  EXPECT_FALSE(engine.WriteLutDataToBin(Temp("x"), nullptr, 1024));
  EXPECT_EQ(EngineLog(),
            Lines({Error("SaveUser3DLutBin", "ThreeDLutData is null, save failed"),
                   Error("SaveUserGammaLutBin", "selfGammaLutData is null, save failed"),
                   Error("WriteLutDataToBin", "Out data is null" + Temp("x"))}));
  EXPECT_TRUE(std::filesystem::is_empty(kUserDir + "temp"));
}

TEST_F(ColorField3DLutUserFiles, IdsThatNoFileNameCanHold) {
  const std::vector<double> lut3D = Some3DLut();
  const std::vector<double> gamma = SomeGammaLut();
  for (const std::string id : {"a?b", "a|b", "a<b", "no\\such\\folder"}) {
    notebook.ForgetRecords();
    EXPECT_EQ(engine.SaveUser3DLutBin(lut3D.data(), id), "") << id;
    EXPECT_EQ(engine.SaveUserGammaLutBin(gamma.data(), id), "") << id;
    const std::string path3D = Temp(id + "_3dlut.bin");
    const std::string pathGamma = Temp(id + "_gammalut.bin");
    EXPECT_EQ(EngineLog(),
              Lines({Error("CreateUserBinFile", "Open binfile error" + path3D),
                     Error("SaveUser3DLutBin",
                           "Create user 3dlut temp bin file fail, bin path :" + path3D),
                     Error("CreateUserBinFile", "Open binfile error" + pathGamma),
                     Error("SaveUserGammaLutBin",
                           "Create user gammalut temp bin file fail, bin path :" + pathGamma)}));
  }
}

// Each of the three passes opens the file anew.
TEST_F(ColorField3DLutUserFiles, AnOpenFails) {
  const std::vector<double> lut = SomeGammaLut();
  const std::string path = Temp("Mine_gammalut.bin");
  const std::string end =
      Error("SaveUserGammaLutBin", "Create user gammalut temp bin file fail, bin path :" + path);
  const struct {
    unsigned open;
    Lines lines;
    size_t left;  // bytes on the disk
  } rows[] = {
      {1, {Error("CreateUserBinFile", "Open binfile error" + path)}, 0},
      {2,
       {Error("WriteLutDataToBin", "Open binfile error" + path),
        Error("CreateUserBinFile", "Add lut data fail, bin file path: " + path)},
       128},
      {3,
       {Error("Sha256UserLut", "Open binfile error" + path),
        Error("CreateUserBinFile", "Add sha256 data fail, bin file path: " + path)},
       5248},
  };
  for (const auto& row : rows) {
    std::filesystem::remove(path);
    notebook.ForgetRecords();
    notebook.ClearFaults();
    notebook.FailCall("CreateFileA", row.open, static_cast<uint64_t>(-1), ERROR_ACCESS_DENIED);
    EXPECT_EQ(engine.SaveUserGammaLutBin(lut.data(), "Mine"), "") << row.open;
    EXPECT_EQ(EngineLog(), row.lines + Lines({end})) << row.open;
    const Bytes file = std::filesystem::exists(path) ? ReadFileBytes(path) : Bytes();
    EXPECT_EQ(file.size(), row.left) << row.open;
    EXPECT_FALSE(file.size() >= 5280) << "never a file that passes";
  }
}

// What the disk did not take has no hash that holds: zeros never pass for a user's LUT.
TEST_F(ColorField3DLutUserFiles, AWriteOrReadFails) {
  const std::vector<double> lut = SomeGammaLut();
  const std::string path = Temp("Mine_gammalut.bin");
  const struct {
    const char* function;
    unsigned n;
    uint64_t result;
  } rows[] = {{"WriteFile", 1, FALSE},     {"WriteFile", 1, TRUE},  {"WriteFile", 2, FALSE},
              {"WriteFile", 2, TRUE},      {"WriteFile", 3, FALSE}, {"WriteFile", 3, TRUE},
              {"GetFileSizeEx", 1, FALSE}, {"ReadFile", 1, FALSE},  {"ReadFile", 1, TRUE}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.function + std::to_string(row.n));
    notebook.ForgetRecords();
    notebook.ClearFaults();
    notebook.FailCall(row.function, row.n, row.result, ERROR_DISK_FULL);
    EXPECT_EQ(engine.SaveUserGammaLutBin(lut.data(), "Mine"), "");
    EXPECT_EQ(EngineLog(),
              Lines({Error("CreateUserBinFile", "Add sha256 data fail, bin file path: " + path),
                     Error("SaveUserGammaLutBin",
                           "Create user gammalut temp bin file fail, bin path :" + path)}));
    EXPECT_LT(ReadFileBytes(path).size(), 5280u) << "no file that passes";
  }
}

TEST_F(ColorField3DLutUserFiles, Sha256UserLut_NoMemory) {
  const std::vector<double> lut = SomeGammaLut();
  const testsupport::FailingNew failing(1);
  EXPECT_EQ(engine.SaveUserGammaLutBin(lut.data(), "Mine"), "");
  EXPECT_EQ(EngineLog().front(), Error("Sha256UserLut", "Sha256Data failed to apply for space"));
}

TEST_F(ColorField3DLutUserFiles, CreateUserLutHead) {
  char head[128] = {};
  EXPECT_FALSE(engine.CreateUserLutHead(head, 2, 128));
  EXPECT_EQ(std::string(head, 128), std::string(128, '\0'));
  EXPECT_EQ(EngineLog(),
            Lines({Error("CreateUserLutHead", "Set_Type error, fail to create head")}));
  EXPECT_TRUE(engine.CreateUserLutHead(head, 1, 128));
  EXPECT_EQ(std::string(head + 64, 6), std::string("\x0B\x0C\0\0\x5F\xF5", 6));
  EXPECT_TRUE(engine.CreateUserLutHead(head, 3, 128));
  EXPECT_EQ(std::string(head + 64, 6), std::string("\x0B\x0C\0\0\x14\0", 6));
  for (int i = 0; i < 128; ++i) {
    if (i < 64 || i > 69) {
      EXPECT_EQ(head[i], '\0') << i;
    }
  }
}

// Any count but 4913 yields a gamma head.
TEST_F(ColorField3DLutUserFiles, CreateUserBinFile_OtherCounts) {
  const std::vector<double> lut(30, 7.0);
  EXPECT_TRUE(engine.CreateUserBinFile(Temp("ten.bin"), lut.data(), 10));
  const Bytes file = ReadFileBytes(Temp("ten.bin"));
  EXPECT_EQ(file.size(), 128u + 50 + 32);
  EXPECT_EQ(Part(file, 66, 70), Bytes({0, 0, 0x14, 0}));
}

// --- A user's 3D LUT on its way to the panel ---

class ColorField3DLutUser3DApply : public UserLutTest {
 protected:
  // second(first(x)) where x is a grid point, by the definition of tetrahedral interpolation on a
  // grid of 64 steps, rounded to nearest.
  static std::vector<double> Compose(const std::vector<double>& first,
                                     const std::vector<double>& second) {
    std::vector<double> out;
    for (size_t i = 0; i < first.size(); i += 3) {
      int point[3];
      int fraction[3];
      int order[3] = {0, 1, 2};
      for (int c = 0; c < 3; ++c) {
        const int value = static_cast<int>(first[i + static_cast<size_t>(c)]);
        point[c] = value / 64;
        fraction[c] = value % 64;
      }
      std::stable_sort(order, order + 3, [&](int a, int b) { return fraction[a] > fraction[b]; });
      int sum[3] = {32, 32, 32};
      int weightLeft = 64;
      for (int step = 0; step <= 3; ++step) {
        const int next = step < 3 ? fraction[order[step]] : 0;
        const int entry = point[0] * 289 + point[1] * 17 + point[2];
        for (int c = 0; c < 3; ++c) {
          sum[c] +=
              (weightLeft - next) * static_cast<int>(second[static_cast<size_t>(3 * entry + c)]);
        }
        weightLeft = next;
        if (step < 3 && next > 0) ++point[order[step]];
      }
      for (int total : sum) out.push_back(total / 64);
    }
    return out;
  }

  std::vector<double> Base() const { return virtualnotebook::MakeLut(machine.panel, 0); }
  void WriteUserLut(const std::vector<double>& lut) {
    WriteFileBytes(UserFile3D("Mine%1"), UserBlock(lut));
  }
};

TEST_F(ColorField3DLutUser3DApply, ComposedWithTheFirmwaresBaseLut) {
  WriteUserLut(Some3DLut());
  EXPECT_TRUE(engine.SetDisplayerByUser3DLut("Mine%1", false));
  EXPECT_EQ(notebook.platform.lut3D, Compose(Some3DLut(), Base()));
  EXPECT_EQ(LastArgument("PlatformSet3DLut", 1), "4913");
  // Each application reads the firmware and composes again; the disk is not read.
  notebook.ForgetRecords();
  EXPECT_TRUE(engine.SetDisplayerByUser3DLut("Mine%1", false));
  EXPECT_GT(notebook.CountCalls("GetSystemFirmwareTable"), 0u);
  EXPECT_EQ(notebook.CountCalls("CreateFileA"), 0u);
  EXPECT_EQ(notebook.platform.lut3D, Compose(Some3DLut(), Base()));
}

TEST_F(ColorField3DLutUser3DApply, Reload) {
  WriteUserLut(Some3DLut());
  ASSERT_TRUE(engine.SetDisplayerByUser3DLut("Mine%1", false));
  std::vector<double> changed = Some3DLut();
  changed[3] = 500;
  WriteUserLut(changed);
  EXPECT_TRUE(engine.SetDisplayerByUser3DLut("Mine%1", false));
  EXPECT_EQ(notebook.platform.lut3D, Compose(Some3DLut(), Base()));
  EXPECT_TRUE(engine.SetDisplayerByUser3DLut("Mine%1", true));
  EXPECT_EQ(notebook.platform.lut3D, Compose(changed, Base()));
}

TEST_F(ColorField3DLutUser3DApply, PanelNotConfirmed_GoesAsItIs) {
  WriteUserLut(Some3DLut());
  const auto expectUnfused = [&](const char* cause) {
    notebook.ForgetRecords();
    notebook.platform.lut3D.clear();
    velora::ColorField3DLut lut;
    EXPECT_TRUE(lut.SetDisplayerByUser3DLut("Mine%1", false)) << cause;
    EXPECT_EQ(notebook.platform.lut3D, Some3DLut()) << cause;
    EXPECT_EQ(EngineLog().back(), Info("SetDisplayerByUser3DLut", "Screen has been replaced"));
  };
  PanelDescription other = machine.panel;
  other.serial = {9, 8, 7, 6};
  PlugIn(virtualnotebook::MakeEdid(other));
  expectUnfused("another panel");
  PlugIn(machine.edid);
  notebook.firmwareTable =
      virtualnotebook::MakeMachine(machine.panel, {.firmwareTypes = {1, 2, 160}}).firmwareTable;
  expectUnfused("no base LUT");
  notebook.firmwareTable.clear();
  expectUnfused("no firmware table");
  Unplug();
  expectUnfused("no EDID");
  EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 0u) << "the EDID comes first";
}

TEST_F(ColorField3DLutUser3DApply, ComposedLutWithADarkWhiteIsRefused) {
  std::vector<double> dark = Some3DLut();
  dark[14736] = dark[14737] = dark[14738] = 0;
  WriteUserLut(dark);
  EXPECT_FALSE(engine.SetDisplayerByUser3DLut("Mine%1", false));
  const Lines log = EngineLog();
  EXPECT_EQ(
      Lines(log.end() - 2, log.end()),
      Lines({Error("IsThreeDLutDataValid", "3DLut data is invalid"),
             Error("SetDisplayerByUser3DLut", "3DLut data error, can not enable color mode")}));
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 0u);
  // Unfused it is not looked at.
  Unplug();
  velora::ColorField3DLut next;
  EXPECT_TRUE(next.SetDisplayerByUser3DLut("Mine%1", false));
}

TEST_F(ColorField3DLutUser3DApply, BadFiles) {
  const std::string path = UserFile3D("Mine%1");
  const Bytes good = UserBlock(Some3DLut());
  const std::string end = Error("SetDisplayerByUser3DLut", "Get 3dlut from bin failed");
  EXPECT_FALSE(engine.SetDisplayerByUser3DLut("Mine%1", false));
  EXPECT_EQ(
      EngineLog(),
      Lines({Error("Read3DLutDataFormFile", "Open 3D LUT Data File Failed! fileName:" + path),
             Error("Get3DLutDataFromBin", "read 3dlut data Failed, bin path: " + path), end}));
  WriteFileBytes(path, Part(good, 0, 24724));
  EXPECT_FALSE(engine.SetDisplayerByUser3DLut("Mine%1", false));
  for (size_t i : {size_t{0}, size_t{67}, size_t{128}, size_t{19780}, size_t{24724}}) {
    Bytes damaged = good;
    damaged[i] ^= 0x80;
    WriteFileBytes(path, damaged);
    notebook.ForgetRecords();
    EXPECT_FALSE(engine.SetDisplayerByUser3DLut("Mine%1", false)) << i;
    const Lines log = EngineLog();
    EXPECT_EQ(log.at(log.size() - 2),
              Error("Get3DLutDataFromBin", "3dlut data error, bin path: " + path));
    EXPECT_EQ(log.back(), end);
  }
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 0u);
}

TEST_F(ColorField3DLutUser3DApply, NoMemory) {
  WriteUserLut(Some3DLut());
  {
    const testsupport::FailingNew failing(1);
    EXPECT_FALSE(engine.SetDisplayerByUser3DLut("Mine%1", false));
    EXPECT_EQ(EngineLog(),
              Lines({Error("ParseUserLut3D", "pLutData3D is nullptr! file:" + UserFile3D("Mine%1")),
                     Error("Get3DLutDataFromBin",
                           "parse user 3dlut failed, bin path: " + UserFile3D("Mine%1")),
                     Error("SetDisplayerByUser3DLut", "Get 3dlut from bin failed")}));
  }
  notebook.ForgetRecords();
  const testsupport::FailingNew failing(2);
  EXPECT_FALSE(engine.SetDisplayerByUser3DLut("Mine%1", false));
  EXPECT_EQ(EngineLog(), Lines({Error("SetDisplayerByUser3DLut", "biosThreeDLut is null")}));
}

TEST_F(ColorField3DLutUser3DApply, ParseUserLut3D_NullAndShort) {
  const Bytes block = UserBlock(Some3DLut());
  EXPECT_FALSE(engine.ParseUserLut3D("Mine%1", nullptr, 24725));
  EXPECT_FALSE(engine.ParseUserLut3D("Mine%1", block.data(), 24724));
  EXPECT_EQ(EngineLog(),
            Lines(2, Error("ParseUserLut3D", "LutDataFile Error! file:" + UserFile3D("Mine%1"))));
}

TEST_F(ColorField3DLutUser3DApply, PlatformRefusesOrThrows) {
  WriteUserLut(Some3DLut());
  notebook.FailCall("PlatformSet3DLut", 1, 9);
  EXPECT_FALSE(engine.SetDisplayerByUser3DLut("Mine%1", false));
  const std::string refused =
      Error("SetDisplayerByUser3DLut", "PlatformSet3DLut set userColorField Failed");
  EXPECT_EQ(EngineLog().back(), refused);
  notebook.ClearFaults();
  notebook.ThrowFrom("PlatformSet3DLut", 1, "driver gone");
  EXPECT_THROW(engine.SetDisplayerByUser3DLut("Mine%1", false), std::runtime_error);
  notebook.ClearFaults();
  Unplug();
  velora::ColorField3DLut next;
  notebook.FailCall("PlatformSet3DLut", 1, 9);
  EXPECT_FALSE(next.SetDisplayerByUser3DLut("Mine%1", false));
  EXPECT_EQ(EngineLog().back(), refused);
}

TEST_F(ColorField3DLutUser3DApply, IsThreeDLutDataValid_Null) {
  EXPECT_FALSE(engine.IsThreeDLutDataValid(nullptr));
  EXPECT_EQ(EngineLog(), Lines({Error("IsThreeDLutDataValid", "3DLut data is null")}));
}

}  // namespace
}  // namespace lutmachine
