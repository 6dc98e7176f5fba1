#include <cmath>

#include "lut/UserLutTest.h"
#include "support/FailingNew.h"

namespace lutmachine {
namespace {

class ColorField3DLutGammaApply : public UserLutTest {
 protected:
  ColorField3DLutGammaApply() {
    Register(2, 2.2, {1, 1, 1});
    notebook.ForgetRecords();
  }

  void Register(int mode, double gamma, const std::array<double, 3>& gains) {
    ColorFieldModeInfo info = ModeInfo(mode, 2);
    info.gamma = gamma;
    info.temperR = gains[0];
    info.temperG = gains[1];
    info.temperB = gains[2];
    engine.InitColorFieldGammaInfo(info);
  }

  // A mode's curve, calculated plainly: coefficients, then the power.
  static std::vector<double> Curve(const PanelDescription& panel, double gamma,
                                   const std::array<double, 3>& gains) {
    std::vector<double> lut = virtualnotebook::MakeLut(panel, virtualnotebook::kGammaLut);
    for (size_t i = 0; i < lut.size(); ++i) {
      lut[i] = 4095.0 * std::pow(lut[i] * gains[i % 3] / 4095.0, gamma / 2.2);
    }
    return lut;
  }

  static std::string Entry(int mode) {
    return Info("SetDisplayerByGammaLut",
                "SetDisplayer by GammaLut, modeGamma is " + std::to_string(mode));
  }
  static std::string Coefficients(const std::string& numbers) {
    return Info("ParseOneLutDataFileGamma", "Coefficient_RGB " + numbers);
  }
  static std::string NothingStored(int mode) {
    return Error("GetPresetModeWhitePoint",
                 "Get preset mode white point value fail, mode: " + std::to_string(mode));
  }
  const std::string syncFailed = Error("SetDisplayerByGammaLut", "SyncGammaLutDataTable Failed");
};

// --- Preset modes ---

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_Cold) {
  EXPECT_TRUE(engine.SetDisplayerByGammaLut(2));
  EXPECT_EQ(notebook.platform.gammaLut, Curve(machine.panel, 2.2, {1, 1, 1}));
  EXPECT_EQ(LastArgument("PlatformSetGammaLut", 1), "1024");
  EXPECT_EQ(EngineLog(),
            Lines({Entry(2), Info("IsGammaLutBinFileNeedUpdate", "GammaLutBinFile not Exist"),
                   Coefficients("1 1 1 1"), NothingStored(2)}));
  // All blocks stand at the stride of a 3D LUT; what is behind the gamma block goes along.
  EXPECT_EQ(Part(ReadFileBytes(DataFile("Gamma.bin")), 0, 5280), Block(virtualnotebook::kGammaLut));
  const std::vector<double> firmware =
      virtualnotebook::MakeLut(machine.panel, virtualnotebook::kGammaLut);
  for (size_t i = 0; i < firmware.size(); ++i) {
    EXPECT_NEAR(notebook.platform.gammaLut[i], firmware[i], 1e-9) << i;
  }
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_CoefficientsAreBentToo) {
  Register(4, 2.4, {0.9, 1.0, 0.8});
  EXPECT_TRUE(engine.SetDisplayerByGammaLut(4));
  EXPECT_EQ(notebook.platform.gammaLut, Curve(machine.panel, 2.4, {0.9, 1.0, 0.8}));
  EXPECT_TRUE(testsupport::Logged(
      notebook, 1,
      L"Coefficient_RGB 0.9 1 0.8 1.09091(ColorField3DLut::ParseOneLutDataFileGamma)"));
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_WarmTouchesNoFile) {
  ASSERT_TRUE(engine.SetDisplayerByGammaLut(2));
  const std::vector<double> first = notebook.platform.gammaLut;
  notebook.platform.gammaLut.clear();
  std::filesystem::remove(DataFile("Gamma.bin"));
  notebook.ForgetRecords();
  EXPECT_TRUE(engine.SetDisplayerByGammaLut(2));
  EXPECT_EQ(EngineLog(), Lines({Entry(2), NothingStored(2)}));
  EXPECT_EQ(notebook.CountCalls("CreateFileA"), 0u);
  EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 0u);
  EXPECT_EQ(notebook.platform.gammaLut, first);
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_NewRegistrationChangesNothing) {
  ASSERT_TRUE(engine.SetDisplayerByGammaLut(2));
  const std::vector<double> first = notebook.platform.gammaLut;
  Register(2, 2.4, {0.5, 0.5, 0.5});
  EXPECT_TRUE(engine.SetDisplayerByGammaLut(2));
  EXPECT_EQ(notebook.platform.gammaLut, first);
}

// Zeros in the tables: every value bends to the maximum.
TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_ModeNeverRegistered) {
  EXPECT_TRUE(engine.SetDisplayerByGammaLut(5));
  EXPECT_EQ(notebook.platform.gammaLut, std::vector<double>(3072, 4095.0));
  EXPECT_TRUE(testsupport::Logged(
      notebook, 1, L"Coefficient_RGB 0 0 0 0(ColorField3DLut::ParseOneLutDataFileGamma)"));
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_ReplacedPanelTakesTheGoldenFileForAll) {
  PanelDescription other = machine.panel;
  other.serial = {9, 8, 7, 6};
  PlugIn(virtualnotebook::MakeEdid(other));
  EXPECT_TRUE(engine.SetDisplayerByGammaLut(2));
  EXPECT_EQ(notebook.platform.gammaLut, Curve(nominal, 2.2, {1, 1, 1}));
  EXPECT_TRUE(
      testsupport::Logged(notebook, 1, L"LCD changed!(ColorField3DLut::SyncGammaLutDataTable)"));
  EXPECT_EQ(Part(ReadFileBytes(DataFile("GoldensGamma.bin")), 0, 5280),
            GoldenBlock(virtualnotebook::kGammaLut));
  // The next mode does not look at the firmware any more.
  Register(4, 2.4, {1, 1, 1});
  notebook.ForgetRecords();
  EXPECT_TRUE(engine.SetDisplayerByGammaLut(4));
  EXPECT_EQ(notebook.platform.gammaLut, Curve(nominal, 2.4, {1, 1, 1}));
  EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 0u);
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_NeitherFirmwareNorGoldenFile) {
  notebook.firmwareTable.clear();
  std::filesystem::remove(kGoldenFile);
  EXPECT_FALSE(engine.SetDisplayerByGammaLut(2));
  const Lines log = EngineLog();
  ASSERT_GE(log.size(), 2u);
  EXPECT_EQ(log[log.size() - 2], Error("SyncGammaLutDataTable", "UpdateGammaLutBinFile Failed!"));
  EXPECT_EQ(log.back(), syncFailed);
  EXPECT_EQ(notebook.CountCalls("PlatformSetGammaLut"), 0u);
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_FileCannotBeRead) {
  WriteFileBytes(DataFile("Gamma.bin"), Block(virtualnotebook::kGammaLut));
  // The check reads it once; the reading for the table is the second.
  notebook.FailCall("CreateFileA", 2, static_cast<uint64_t>(-1), ERROR_ACCESS_DENIED);
  EXPECT_FALSE(engine.SetDisplayerByGammaLut(2));
  EXPECT_TRUE(testsupport::Logged(
      notebook, 3, L"ReadGammaLutDataFile Failed!(ColorField3DLut::SyncGammaLutDataTable)"));
  EXPECT_EQ(EngineLog().back(), syncFailed);
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_NoMemoryForTheTable) {
  WriteFileBytes(DataFile("Gamma.bin"), Block(virtualnotebook::kGammaLut));
  ASSERT_TRUE(engine.GetLcdEdidData());  // which asks for memory too
  notebook.ForgetRecords();
  const testsupport::FailingNew failing(1);
  EXPECT_FALSE(engine.SetDisplayerByGammaLut(2));
  EXPECT_TRUE(failing.HasFailed());
  EXPECT_EQ(EngineLog(),
            Lines({Entry(2), Error("ParseOneLutDataFileGamma", "pLutDataGamma is nullptr!mode:2"),
                   Error("SyncGammaLutDataTable", "ParseOneLutDataFileGamma Failed! mode:2"),
                   syncFailed}));
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_PlatformRefuses) {
  notebook.FailCall("PlatformSetGammaLut", 1, 9);
  EXPECT_FALSE(engine.SetDisplayerByGammaLut(2));
  EXPECT_EQ(EngineLog().back(),
            Error("SetDisplayerByGammaLut", "PlatformSetGammaLut Failed, ret is 9"));
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_Exception) {
  notebook.ThrowFrom("PlatformSetGammaLut", 1, "driver gone");
  EXPECT_FALSE(engine.SetDisplayerByGammaLut(2));
  EXPECT_EQ(EngineLog().back(), Error("SetDisplayerByGammaLut",
                                      "SetDisplayerByGammaLut exception:driver gone, modeGamma:2"));
}

// No name in the store's table: what it throws ends in the guard.
TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_ModeUnknownToTheStore) {
  EXPECT_FALSE(engine.SetDisplayerByGammaLut(12));
  EXPECT_EQ(EngineLog().back(),
            Error("SetDisplayerByGammaLut",
                  "SetDisplayerByGammaLut exception:invalid map<K, T> key, modeGamma:12"));
  EXPECT_EQ(notebook.CountCalls("PlatformSetGammaLut"), 0u);
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_WithGains) {
  StoreGains(Gains(2, 1.0, 0.95, 0.9));
  EXPECT_TRUE(engine.SetDisplayerByGammaLut(2));
  std::vector<double> expected = Curve(machine.panel, 2.2, {1, 1, 1});
  for (size_t i = 0; i < expected.size(); ++i) {
    expected[i] *= std::array{1.0, 0.95, 0.9}[i % 3];
  }
  EXPECT_EQ(notebook.platform.gammaLut, expected);
  EXPECT_EQ(notebook.CountCalls("PlatformSetGammaLut"), 1u);
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_WithGainsPlatformRefuses) {
  StoreGains(Gains(2, 1.0, 0.95, 0.9));
  notebook.FailCall("PlatformSetGammaLut", 1, 9);
  EXPECT_FALSE(engine.SetDisplayerByGammaLut(2));
  EXPECT_EQ(EngineLog().back(),
            Error("SetDisplayerByGammaLut", "Edit gamma lut by white point fail, mode: 2"));
}

// The store keeps six decimals: a gain that small comes back as 0.
TEST_F(ColorField3DLutGammaApply, SetDisplayerByGammaLut_OneGainMissingTakesTheLutAsItIs) {
  StoreGains(Gains(2, 1.0, 0.95, 0.0));
  EXPECT_TRUE(engine.SetDisplayerByGammaLut(2));
  EXPECT_EQ(notebook.platform.gammaLut, Curve(machine.panel, 2.2, {1, 1, 1}));
  EXPECT_EQ(StoredGains(L"PresetMode\\P3Mode").at(2), L"0.000000") << "not repaired";
}

TEST_F(ColorField3DLutGammaApply, ParseOneLutDataFileGamma_NullAndShort) {
  const Bytes block = Block(virtualnotebook::kGammaLut);
  EXPECT_FALSE(engine.ParseOneLutDataFileGamma(2, nullptr, 5280));
  EXPECT_FALSE(engine.ParseOneLutDataFileGamma(2, block.data(), 5279));
  EXPECT_EQ(EngineLog(),
            Lines(2, Error("ParseOneLutDataFileGamma", "GammaLutDataFile Error!mode:2")));
  EXPECT_TRUE(engine.ParseOneLutDataFileGamma(2, block.data(), 5280));
}

// --- User modes ---

TEST_F(ColorField3DLutGammaApply, SetDisplayerByUserGammaLut_TakesTheFileAsItStands) {
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(SomeGammaLut()));
  EXPECT_TRUE(engine.SetDisplayerByUserGammaLut("Mine%1", false));
  EXPECT_EQ(notebook.platform.gammaLut, SomeGammaLut());
  EXPECT_EQ(EngineLog(),
            Lines({Error("GetUsrModeWhitePoint", "Get usr mode white point fail, id: Mine%1")}));
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByUserGammaLut_CachedUnlessReload) {
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(SomeGammaLut()));
  ASSERT_TRUE(engine.SetDisplayerByUserGammaLut("Mine%1", false));
  std::vector<double> changed = SomeGammaLut();
  changed[0] = 77;
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(changed));
  notebook.ForgetRecords();
  EXPECT_TRUE(engine.SetDisplayerByUserGammaLut("Mine%1", false));
  EXPECT_EQ(notebook.platform.gammaLut, SomeGammaLut());
  EXPECT_EQ(notebook.CountCalls("CreateFileA"), 0u);
  EXPECT_TRUE(engine.SetDisplayerByUserGammaLut("Mine%1", true));
  EXPECT_EQ(notebook.platform.gammaLut, changed);
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByUserGammaLut_BadFiles) {
  const std::string path = UserFileGamma("Mine%1");
  const Bytes good = UserBlock(SomeGammaLut());
  const std::string end = Error("SetDisplayerByUserGammaLut", "get gammalut from bin failed");

  EXPECT_FALSE(engine.SetDisplayerByUserGammaLut("Mine%1", false)) << "no file";
  EXPECT_EQ(EngineLog(),
            Lines({Error("Read3DLutDataFormFile", "Open 3D LUT Data File Failed! fileName:" + path),
                   Error("GetGammaLutDataFromBin", "Read3DLutDataFormFile Failed, " + path), end}));
  notebook.ForgetRecords();
  WriteFileBytes(path, Part(good, 0, 5279));
  EXPECT_FALSE(engine.SetDisplayerByUserGammaLut("Mine%1", false)) << "short";
  EXPECT_EQ(EngineLog(),
            Lines({Error("Read3DLutDataFormFile", "3D LUT Data File Len Error! fileName:" + path),
                   Error("GetGammaLutDataFromBin", "Read3DLutDataFormFile Failed, " + path), end}));
  for (size_t i : {size_t{0}, size_t{66}, size_t{128}, size_t{4300}, size_t{5279}}) {
    Bytes damaged = good;
    damaged[i] ^= 1;
    WriteFileBytes(path, damaged);
    notebook.ForgetRecords();
    EXPECT_FALSE(engine.SetDisplayerByUserGammaLut("Mine%1", false)) << i;
    const Lines log = EngineLog();
    EXPECT_EQ(log.at(log.size() - 2),
              Error("GetGammaLutDataFromBin", "IsLutDataValid3D Failed, " + path));
  }
  // Longer is harmless: what the header tells of is whole.
  Bytes longer = good;
  longer.resize(6000);
  WriteFileBytes(path, longer);
  EXPECT_TRUE(engine.SetDisplayerByUserGammaLut("Mine%1", false));
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByUserGammaLut_DarkLut) {
  std::vector<double> dark = SomeGammaLut();
  dark[3070] = 0;
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(dark));
  EXPECT_FALSE(engine.SetDisplayerByUserGammaLut("Mine%1", false));
  const Lines log = EngineLog();
  EXPECT_EQ(Lines(log.end() - 2, log.end()),
            Lines({Error("IsGammaLutDataValid", "GammaLut data is invalid"),
                   Error("SetDisplayerByUserGammaLut",
                         "GammaLut data error, can not enable color mode")}));
  EXPECT_EQ(notebook.CountCalls("PlatformSetGammaLut"), 0u);
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByUserGammaLut_PlatformRefuses) {
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(SomeGammaLut()));
  notebook.FailCall("PlatformSetGammaLut", 1, 9);
  EXPECT_FALSE(engine.SetDisplayerByUserGammaLut("Mine%1", false));
  EXPECT_EQ(EngineLog().back(),
            Error("SetDisplayerByUserGammaLut", "PlatformSetGammaLut set userGammaLut Failed"));
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByUserGammaLut_PassesExceptionsOn) {
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(SomeGammaLut()));
  notebook.ThrowFrom("PlatformSetGammaLut", 1, "driver gone");
  EXPECT_THROW(engine.SetDisplayerByUserGammaLut("Mine%1", false), std::runtime_error);
}

TEST_F(ColorField3DLutGammaApply, SetDisplayerByUserGammaLut_WithGains) {
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(SomeGammaLut()));
  StoreGains(Gains(11, 0.9, 0.95, 1.0, "Mine%1"));
  EXPECT_TRUE(engine.SetDisplayerByUserGammaLut("Mine%1", false));
  std::vector<double> expected = SomeGammaLut();
  for (size_t i = 0; i < expected.size(); ++i) expected[i] *= std::array{0.9, 0.95, 1.0}[i % 3];
  EXPECT_EQ(notebook.platform.gammaLut, expected);

  notebook.FailCall("PlatformSetGammaLut", 1, 9);
  EXPECT_FALSE(engine.SetDisplayerByUserGammaLut("Mine%1", false));
  EXPECT_EQ(EngineLog().back(),
            Error("SetDisplayerByUserGammaLut", "SetDisplayerByUserGammaLut fail, id: Mine%1"));
}

TEST_F(ColorField3DLutGammaApply, ParseUserLutGamma_NullShortAndNoMemory) {
  const Bytes block = UserBlock(SomeGammaLut());
  const std::string path = UserFileGamma("Mine%1");
  EXPECT_FALSE(engine.ParseUserLutGamma("Mine%1", nullptr, 5280));
  EXPECT_FALSE(engine.ParseUserLutGamma("Mine%1", block.data(), 5279));
  const testsupport::FailingNew failing(1);
  EXPECT_FALSE(engine.ParseUserLutGamma("Mine%1", block.data(), 5280));
  EXPECT_EQ(EngineLog(),
            Lines({Error("ParseUserLutGamma", "LutDataFile Error! file:" + path),
                   Error("ParseUserLutGamma", "LutDataFile Error! file:" + path),
                   Error("ParseUserLutGamma", "pLutData3D is nullptr! file:" + path)}));
}

TEST_F(ColorField3DLutGammaApply, GetGammaLutDataFromBin_ParseFails) {
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(SomeGammaLut()));
  const testsupport::FailingNew failing(1);
  EXPECT_FALSE(engine.GetGammaLutDataFromBin("Mine%1"));
  EXPECT_EQ(EngineLog().back(), Error("GetGammaLutDataFromBin",
                                      "ParseUserLutDataFile3D Failed, " + UserFileGamma("Mine%1")));
}

TEST_F(ColorField3DLutGammaApply, IsGammaLutDataValid_Null) {
  EXPECT_FALSE(engine.IsGammaLutDataValid(nullptr));
  EXPECT_EQ(EngineLog(), Lines({Error("IsGammaLutDataValid", "GammaLut data is null")}));
}

TEST_F(ColorField3DLutGammaApply, FindGammalutByMode) {
  EXPECT_EQ(engine.FindGammalutByMode(Gains(11, 1, 1, 1, "Mine%1")), nullptr);
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(SomeGammaLut()));
  EXPECT_EQ(engine.FindGammalutByMode(Gains(11, 1, 1, 1, "Mine%1")), nullptr) << "not loaded";
  ASSERT_TRUE(engine.GetGammaLutDataFromBin("Mine%1"));
  EXPECT_NE(engine.FindGammalutByMode(Gains(11, 1, 1, 1, "Mine%1")), nullptr);
  EXPECT_NE(engine.FindGammalutByMode(Gains(2, 1, 1, 1)), nullptr) << "loaded for it";
  notebook.firmwareTable.clear();
  std::filesystem::remove(kGoldenFile);
  std::filesystem::remove(DataFile("Gamma.bin"));
  EXPECT_EQ(engine.FindGammalutByMode(Gains(4, 1, 1, 1)), nullptr);
  EXPECT_EQ(EngineLog().back(), Error("FindGammalutByMode", "SyncGammaLutDataTable Failed"));
}

}  // namespace
}  // namespace lutmachine
