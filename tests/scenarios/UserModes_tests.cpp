// Gamma LUTs, fine tuning and user modes through the shipped library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "scenarios/HostProcess.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"

namespace scenarios {
namespace {

using virtualnotebook::Bytes;

const std::string kUser = "C:\\ProgramData\\Comms\\NxVelora\\User\\";

class UserModesScenario : public testing::Test {
 protected:
  UserModesScenario() {
    virtualnotebook::RemoveMachine();
    std::filesystem::remove_all(kUser);
    files_ = virtualnotebook::InstallMachine(machine_);
    for (const char* name : {"3dlut", "gammalut"})
      std::filesystem::create_directories(kUser + name);
    virtualnotebook::SetUpNotebook(notebook);
    notebook.firmwareTable = machine_.firmwareTable;
    ColorFieldInitInfo init{};
    init.setType = 3;
    files_.digestFile.copy(init.pIccCheckFilePath, 100);
    files_.goldenName.copy(init.goldenFilePath, 100);
    EXPECT_EQ(library.InitColorFieldInfo(&init), ResultOk);
    AddMode(P3Mode, 2.4, 0.9);
    AddMode(SrgbMode, 2.2, 1.0);
    notebook.ForgetRecords();
  }
  ~UserModesScenario() override {
    std::filesystem::remove_all(kUser);
    virtualnotebook::RemoveMachine();
  }

  void AddMode(ColorFieldMode mode, double gamma, double blue) {
    ColorFieldModeInfo info{};
    info.mode = mode;
    files_.Profile(mode == P3Mode ? 2 : 1).copy(info.iccPath, 100);
    info.gamma = gamma;
    info.gamut = mode;
    info.temperR = info.temperG = 1;
    info.temperB = blue;
    EXPECT_EQ(library.AddColorFieldModeInfo(&info), ResultOk);
  }

  std::vector<double> Curve(double gamma, double blue) const {
    std::vector<double> lut = virtualnotebook::MakeLut(machine_.panel, virtualnotebook::kGammaLut);
    for (size_t i = 0; i < lut.size(); ++i) {
      lut[i] = 4095.0 * std::pow(lut[i] * (i % 3 == 2 ? blue : 1.0) / 4095.0, gamma / 2.2);
    }
    return lut;
  }
  void ExpectGammaLut(std::vector<double> expected, const double (&gains)[3]) const {
    ASSERT_EQ(notebook.platform.gammaLut.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
      EXPECT_DOUBLE_EQ(notebook.platform.gammaLut[i], expected[i] * gains[i % 3]) << i;
    }
  }

  const testsupport::ScopedKey settings_{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const virtualnotebook::MachineData machine_ =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  const virtualnotebook::PluggedPanel panel_{machine_.edid};
  virtualnotebook::InstalledFiles files_;
  virtualnotebook::HostedLibrary library;
  virtualnotebook::Notebook& notebook = library.notebook;
};

TEST_F(UserModesScenario, GammaLutAnd3DLutOfAPresetMode) {
  EXPECT_EQ(library.SetColorField(P3Mode), ResultOk);
  ExpectGammaLut(Curve(2.4, 0.9), {1, 1, 1});
  EXPECT_EQ(notebook.platform.lut3D, virtualnotebook::MakeLut(machine_.panel, 2));
  EXPECT_TRUE(testsupport::Logged(
      notebook, 1, L"Coefficient_RGB 1 1 0.9 1.09091(ColorField3DLut::ParseOneLutDataFileGamma)"));
}

TEST_F(UserModesScenario, FineTuningActsAtOnceAndWithEachSwitch) {
  ASSERT_EQ(library.SetColorField(P3Mode), ResultOk);
  WhitePointFineTueInfo gains = {.id = "", .mode = P3Mode, .r = 1.0, .g = 0.96, .b = 0.92};
  ASSERT_EQ(library.SetWhitePointTueValue(&gains), ResultOk);
  notebook.ForgetRecords();
  EXPECT_EQ(library.WhitePointFineTue(&gains), ResultOk);
  EXPECT_TRUE(
      testsupport::Logged(notebook, 1, L"whitePoint:R:1, G:0.96, B:0.92(WhitePointFineTue)"));
  ExpectGammaLut(Curve(2.4, 0.9), {1, 0.96, 0.92});
  ASSERT_EQ(library.SetColorField(SrgbMode), ResultOk);
  ExpectGammaLut(Curve(2.2, 1.0), {1, 1, 1});
  ASSERT_EQ(library.SetColorField(P3Mode), ResultOk);
  ExpectGammaLut(Curve(2.4, 0.9), {1, 0.96, 0.92});
}

TEST_F(UserModesScenario, BadGainsAreRepaired) {
  ASSERT_EQ(library.SetColorField(P3Mode), ResultOk);
  WhitePointFineTueInfo gains = {.id = "", .mode = P3Mode, .r = 1.0, .g = 0.5, .b = 0.92};
  EXPECT_EQ(library.WhitePointFineTue(&gains), ResultOk);
  EXPECT_EQ(gains.r, 1.0);
  EXPECT_EQ(gains.g, 1.0);
  EXPECT_EQ(gains.b, 1.0);
  ExpectGammaLut(Curve(2.4, 0.9), {1, 1, 1});
  WhitePointFineTueInfo stored = {.id = "", .mode = P3Mode, .r = 0, .g = 0, .b = 0};
  EXPECT_EQ(library.GetWhitePointTueValue(&stored), ResultOk);
  EXPECT_EQ(stored.g, 1.0);
}

TEST_F(UserModesScenario, UserModeThatIsNotRegistered) {
  EXPECT_EQ(library.SetUserColorField("Mine%1"), ResultFailed);
  EXPECT_TRUE(testsupport::Logged(notebook, 1, L"id:Mine%1(SetUserColorField)"));
  EXPECT_TRUE(notebook.platform.gammaLut.empty());
}

TEST_F(UserModesScenario, FineTuningOfAUserModeThatIsNotLoaded) {
  WhitePointFineTueInfo gains = {.id = "Mine%1", .mode = USRDESIGN_MODE, .r = 1, .g = 1, .b = 1};
  EXPECT_EQ(library.WhitePointFineTue(&gains), ResultFailed);
  EXPECT_TRUE(testsupport::Logged(
      notebook, 3,
      L"WhitePoint fine tue error, mode: 11, id: Mine%1(ColorFieldApi::WhitePointFineTue)"));
}

// --- A mode of the user's own ---

UserDesignInfo Design(const std::string& id, const std::string& name, double x, double y) {
  UserDesignInfo info{};
  info.mode = USRDESIGN_MODE;
  id.copy(info.id, sizeof info.id);
  name.copy(info.modeName, sizeof info.modeName);
  info.gamut = 1;
  info.gamma = 2.2;
  info.whitePointX = x;
  info.whitePointY = y;
  return info;
}

std::string ColorFile(const std::string& id) {
  return "C:\\Windows\\System32\\spool\\drivers\\color\\" + id + "_usr.icc";
}

class UserModeLifeScenario : public UserModesScenario {
 protected:
  ~UserModeLifeScenario() override {
    for (const char* id : {"Mine%1", "Yours%2", "Service%1"}) {
      std::filesystem::remove(ColorFile(id));
    }
  }
  std::wstring Profile() const {
    const auto profiles =
        notebook.profiles.find(virtualnotebook::MonitorDeviceId(virtualnotebook::kPanelDeviceId));
    return profiles == notebook.profiles.end() || profiles->second.empty()
               ? L""
               : profiles->second.front();
  }
};

TEST_F(UserModeLifeScenario, TheWholeLifeOfAMode) {
  UserDesignInfo info = Design("Mine%1", "Mine", 0.3127, 0.3290);
  ASSERT_EQ(library.SaveUserSelfColor(&info), ResultOk);
  EXPECT_EQ(Profile(), L"Mine%1_usr.icc");
  const std::vector<double> neutral = notebook.platform.gammaLut;

  info = Design("Mine%1", "Mine", 0.3457, 0.3585);
  ASSERT_EQ(library.EditUserColorField(&info, "Mine%1"), ResultOk);
  EXPECT_LT(notebook.platform.gammaLut.back(), neutral.back()) << "a warmer white has less blue";

  info = Design("Yours%2", "Yours", 0.3457, 0.3585);
  const std::vector<double> warm = notebook.platform.gammaLut;
  ASSERT_EQ(library.EditUserColorField(&info, "Mine%1"), ResultOk);
  EXPECT_EQ(Profile(), L"Yours%2_usr.icc");
  EXPECT_EQ(notebook.platform.gammaLut, warm);
  EXPECT_FALSE(std::filesystem::exists(ColorFile("Mine%1")));

  ASSERT_EQ(library.SetColorField(SrgbMode), ResultOk);
  ASSERT_EQ(library.SetUserColorField("Yours%2"), ResultOk);
  EXPECT_EQ(library.SyncSysColorField(), USRDESIGN_MODE);
  ASSERT_EQ(library.DeleteUserSelfColor("Yours%2"), ResultOk);
  EXPECT_EQ(library.SetUserColorField("Yours%2"), ResultFailed);
  EXPECT_EQ(library.DeleteUserDesignReg(&info), ResultOk);
}

// The profile of a mode is checked each time that it is associated.
TEST_F(UserModeLifeScenario, AChangedProfileIsRefused) {
  UserDesignInfo info = Design("Mine%1", "Mine", 0.3127, 0.3290);
  ASSERT_EQ(library.SaveUserSelfColor(&info), ResultOk);
  ASSERT_EQ(library.SetColorField(SrgbMode), ResultOk);
  Bytes profile = testsupport::ReadFileBytes(ColorFile("Mine%1"));
  profile[400] ^= 1;
  testsupport::WriteFileBytes(ColorFile("Mine%1"), profile);
  const std::vector<double> before = notebook.platform.lut3D;
  EXPECT_EQ(library.SetUserColorField("Mine%1"), ResultIccError);
  EXPECT_EQ(notebook.platform.lut3D, before);
  EXPECT_EQ(Profile(), L"NVX-sRGB.icc");
}

// A profile that was chosen in the system's settings.
TEST_F(UserModeLifeScenario, SyncSysColorFieldFollowsAPreset) {
  library.SetColorFieldCurrentMode(USRDESIGN_MODE);
  notebook.profiles[virtualnotebook::MonitorDeviceId(virtualnotebook::kPanelDeviceId)] = {
      L"NVX-P3.icc"};
  EXPECT_EQ(library.SyncSysColorField(), P3Mode);
  EXPECT_EQ(notebook.platform.lut3D, virtualnotebook::MakeLut(machine_.panel, 2));
}

TEST_F(UserModeLifeScenario, ResetAndProfileByTheSettings) {
  EXPECT_EQ(library.ResetColorField(), ResultNotSet);
  EXPECT_TRUE(testsupport::Logged(notebook, 1, L"(ResetColorField)"));
  library.SetColorFieldSetType(3);
  library.SetColorFieldResetMode(1);
  EXPECT_EQ(library.ResetColorField(), ResultOk);
  library.SetColorFieldCurrentMode(P3Mode);
  EXPECT_TRUE(library.SyncCurrentModeIccFile());
  EXPECT_EQ(Profile(), L"NVX-P3.icc");
}

// The other process of the test below, a service: it saves, and leaves everything where it is.
TEST(UserModeService, DISABLED_Saves) {
  virtualnotebook::HostedLibrary service;
  virtualnotebook::SetUpNotebook(service.notebook);
  service.notebook.firmwareTable =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{}).firmwareTable;
  const UserDesignInfo info = Design("Service%1", "Service", 0.3457, 0.3585);
  EXPECT_EQ(service.SaveUserSelfColor(&info), ResultOk);
}

// The application has registered the mode too; files, store and profile are the service's.
TEST_F(UserModeLifeScenario, TheServiceSavesAndTheApplicationEnables) {
  ASSERT_EQ(RunTest(L"UserModeService.DISABLED_Saves"), 0u);
  UserDesignInfo info = Design("Service%1", "Service", 0.3457, 0.3585);
  EXPECT_EQ(library.SetUserColorField("Service%1"), ResultFailed) << "not registered here yet";
  ColorFile("Service%1").copy(info.iccPath, sizeof info.iccPath);
  ASSERT_EQ(library.AddUsrDesignInfo(&info), ResultOk);
  EXPECT_EQ(library.SetUserColorField("Service%1"), ResultOk);
  EXPECT_EQ(Profile(), L"Service%1_usr.icc");
  EXPECT_EQ(notebook.platform.lut3D.size(), 14739u);
  EXPECT_LT(notebook.platform.gammaLut.back(), 4095) << "the service's white";
  // The application edits; the service's files are replaced.
  const UserDesignInfo neutral = Design("Service%1", "Service", 0.3127, 0.3290);
  EXPECT_EQ(library.EditUserColorField(&neutral, "Service%1"), ResultOk);
  EXPECT_GT(notebook.platform.gammaLut.back(), 4000);
}

}  // namespace
}  // namespace scenarios
