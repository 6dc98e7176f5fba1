#include "ColorFieldTest.h"
#include "icc/ICCProfileOperation.h"
#include "support/Registry.h"

using testing::ElementsAre;

namespace {

const std::string kUserFolder = "C:\\ProgramData\\Comms\\NxVelora\\User\\";
constexpr wchar_t kModesKey[] = L"SOFTWARE\\Norvex\\Velora\\ColorField\\UserDesign";

// A user's LUT is tied to no panel.
const virtualnotebook::BlockHeader kNoPanel = {"00000000", "0000", "00", "0000", 11};

// The mode "Mine%1", registered, with its profile and its LUT files.
class ColorFieldApiUserModes : public ColorFieldTest {
 protected:
  ColorFieldApiUserModes() {
    for (const char* name : {"temp", "3dlut", "gammalut"}) {
      std::filesystem::create_directories(kUserFolder + name);
    }
    UserDesignInfo info = UserMode("Mine", "");
    info.gamut = 1;
    info.gamma = 2.2;
    info.whitePointX = 0.3127;
    info.whitePointY = 0.329;
    EXPECT_EQ(velora::ICCProfileOperation().CreateAndSaveIccProfile(info), 0);
    std::filesystem::copy_file(kUserFolder + "temp\\Mine%1_usr.icc", profile);
    lut3D.assign(14739, 500);
    gamma.assign(3072, 2000);
    WriteLuts();
    AddUserMode("Mine", profile);
    notebook.ForgetRecords();
  }
  ~ColorFieldApiUserModes() override {
    std::filesystem::remove(InstalledPath("Mine%1_usr.icc"));
    std::error_code ignored;
    std::filesystem::remove_all("C:\\ProgramData\\Comms\\NxVelora", ignored);
  }

  void WriteLuts() const {
    testsupport::WriteFileBytes(kUserFolder + "3dlut\\Mine%1.bin",
                                virtualnotebook::MakeLutBlock(kNoPanel, lut3D));
    testsupport::WriteFileBytes(kUserFolder + "gammalut\\Mine%1.bin",
                                virtualnotebook::MakeLutBlock(kNoPanel, gamma));
  }
  std::vector<std::wstring> Associations() const { return notebook.profiles.at(panel); }
  bool Logged(const std::wstring& text) const { return testsupport::Logged(notebook, 3, text); }
  static bool HasCurrentMode() {
    return testsupport::ReadKey(HKEY_LOCAL_MACHINE, kModesKey).contains(L"CurrentUsrMode");
  }
  static testsupport::RegistryValue CurrentMode() {
    return testsupport::ReadKey(HKEY_LOCAL_MACHINE, kModesKey)[L"CurrentUsrMode"];
  }
  // The output's calls, in their order.
  std::vector<std::string> OutputCalls() const {
    return testsupport::CallsOf(
        notebook, {"WcsAssociateColorProfileWithDevice", "PlatformSetGammaLut", "PlatformSet3DLut",
                   "CoreKit::GetDisplayType"});
  }

  const testsupport::ScopedKey settings{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const std::string profile = directory.Path("Mine%1_usr.icc");
  std::vector<double> lut3D;
  std::vector<double> gamma;
};

TEST_F(ColorFieldApiUserModes, SetUserColorField) {
  EXPECT_EQ(api.SetUserColorField("Mine%1"), ResultOk);
  EXPECT_THAT(Associations(), ElementsAre(L"Mine%1_usr.icc", L"VeloraOld.icc"));
  EXPECT_EQ(notebook.platform.lut3D, lut3D);
  EXPECT_EQ(notebook.platform.gammaLut, gamma);
  EXPECT_EQ(CurrentMode(), testsupport::TextValue(L"Mine"));
  EXPECT_THAT(OutputCalls(), ElementsAre("WcsAssociateColorProfileWithDevice",
                                         "PlatformSetGammaLut", "PlatformSet3DLut"))
      << "the display type is not asked for";
}

// A user mode needs no set type.
TEST_F(ColorFieldApiUserModes, SetUserColorField_WhateverTheSetType) {
  for (ColorFieldSetType type : {0u, 1u, 2u, 3u, 4u, 99u}) {
    Init(type);
    EXPECT_EQ(api.SetUserColorField("Mine%1"), ResultOk) << type;
  }
}

TEST_F(ColorFieldApiUserModes, SetUserColorField_AssociatedAlready) {
  ASSERT_EQ(api.SetUserColorField("Mine%1"), ResultOk);
  notebook.ForgetRecords();
  EXPECT_EQ(api.SetUserColorField("Mine%1"), ResultOk);
  EXPECT_THAT(OutputCalls(), ElementsAre("PlatformSetGammaLut", "PlatformSet3DLut"));
}

TEST_F(ColorFieldApiUserModes, SetUserColorField_NoTargetMonitor) {
  notebook.FailCall("WcsGetDefaultColorProfile", 1, 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(api.SetUserColorField("Mine%1"), ResultColorFieldError);
  EXPECT_TRUE(Logged(
      L"GetDefaultIccFile Failed, ret is1currentIccFileName:(ColorFieldApi::SetUserColorField)"));
  EXPECT_TRUE(OutputCalls().empty());
  EXPECT_FALSE(HasCurrentMode());
}

TEST_F(ColorFieldApiUserModes, SetUserColorField_UnknownMode) {
  EXPECT_EQ(api.SetUserColorField("Other%1"), ResultFailed);
  EXPECT_TRUE(
      Logged(L"FindIccFilePathByModeName failed, modeName is Other"
             L"(ColorFieldApi::EnableUsrICCProfile)"));
  EXPECT_TRUE(
      Logged(L"EnableUsrICCProfile Failed, id isOther(ColorFieldApi::EnableUserColorField)"));
  EXPECT_TRUE(Logged(L"EnableColorFieldMode error,ret is :1(ColorFieldApi::SetUserColorField)"));
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 0u);
  EXPECT_EQ(Associations().front(), L"VeloraOld.icc");
}

TEST_F(ColorFieldApiUserModes, SetUserColorField_ProfileMissing) {
  std::filesystem::remove(profile);
  EXPECT_EQ(api.SetUserColorField("Mine%1"), ResultFileNotFound);
  EXPECT_TRUE(
      Logged(L"Icc File:" + Wide(profile) + L" Not Found!(ColorFieldApi::SetUsrIccFileWithCheck)"));
  EXPECT_TRUE(
      Logged(L"SetUsrIccFileWithCheck Failed, ret is15(ColorFieldApi::EnableUsrICCProfile)"));
  EXPECT_EQ(notebook.CountCalls("PlatformSetGammaLut"), 0u);
}

TEST_F(ColorFieldApiUserModes, SetUserColorField_ProfileChanged) {
  std::vector<uint8_t> bytes = testsupport::ReadFileBytes(profile);
  bytes[300] ^= 1;
  testsupport::WriteFileBytes(profile, bytes);
  EXPECT_EQ(api.SetUserColorField("Mine%1"), ResultIccError);
  EXPECT_TRUE(Logged(L"Icc File Be Modified! fileName:" + Wide(profile) +
                     L"(ColorFieldApi::SetUsrIccFileWithCheck)"));
  EXPECT_EQ(notebook.CountCalls("PlatformSetGammaLut"), 0u);
  EXPECT_EQ(Associations().front(), L"VeloraOld.icc");
}

// Both LUTs are tried; the old profile comes back, the current mode is not written.
TEST_F(ColorFieldApiUserModes, SetUserColorField_ALutFails) {
  for (const char* function : {"PlatformSetGammaLut", "PlatformSet3DLut"}) {
    notebook.profiles[panel] = {L"VeloraOld.icc"};
    notebook.ForgetRecords();
    notebook.ClearFaults();
    notebook.FailCall(function, 1, 5);
    EXPECT_EQ(api.SetUserColorField("Mine%1"), ResultColorFieldError) << function;
    EXPECT_THAT(OutputCalls(),
                ElementsAre("WcsAssociateColorProfileWithDevice", "PlatformSetGammaLut",
                            "PlatformSet3DLut", "WcsAssociateColorProfileWithDevice"));
    EXPECT_TRUE(
        Logged(L"EnableUsrBinProfile Failed, id isMine%1(ColorFieldApi::EnableUserColorField)"));
    EXPECT_TRUE(Logged(L"EnableColorFieldMode error,ret is :17(ColorFieldApi::SetUserColorField)"));
    EXPECT_EQ(Associations().front(), L"VeloraOld.icc");
    EXPECT_FALSE(HasCurrentMode());
  }
}

TEST_F(ColorFieldApiUserModes, EnableUserColorField_KeepsTheProfileWhenALutFails) {
  notebook.FailCall("PlatformSet3DLut", 1, 5);
  EXPECT_EQ(api.EnableUserColorField("Mine%1", false), ResultColorFieldError);
  EXPECT_EQ(Associations().front(), L"Mine%1_usr.icc");
}

TEST_F(ColorFieldApiUserModes, EnableUserColorField_Reload) {
  ASSERT_EQ(api.EnableUserColorField("Mine%1", false), ResultOk);
  lut3D.assign(14739, 600);
  gamma.assign(3072, 1000);
  WriteLuts();
  ASSERT_EQ(api.EnableUserColorField("Mine%1", false), ResultOk);
  EXPECT_NE(notebook.platform.lut3D, lut3D);
  ASSERT_EQ(api.EnableUserColorField("Mine%1", true), ResultOk);
  EXPECT_EQ(notebook.platform.lut3D, lut3D);
  EXPECT_EQ(notebook.platform.gammaLut, gamma);
}

TEST_F(ColorFieldApiUserModes, EnableUserColorField_TheNameEndsAtTheFirstMark) {
  EXPECT_EQ(api.EnableUserColorField("A%b%c", false), ResultFailed);
  EXPECT_TRUE(Logged(L"EnableUsrICCProfile Failed, id isA(ColorFieldApi::EnableUserColorField)"));
  EXPECT_EQ(api.EnableUserColorField("whole", false), ResultFailed);
  EXPECT_TRUE(
      Logged(L"EnableUsrICCProfile Failed, id iswhole(ColorFieldApi::EnableUserColorField)"));
}

TEST_F(ColorFieldApiUserModes, EnableUserColorField_TheStoreDoesNotMatter) {
  notebook.FailCall("RegSetValueExW", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(api.EnableUserColorField("Mine%1", false), ResultOk);
}

TEST_F(ColorFieldApiUserModes, EnableUsrICCProfile_NoTargetMonitor) {
  notebook.FailCall("WcsGetDefaultColorProfile", 1, 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(api.EnableUsrICCProfile("Mine"), ResultFailed);
  EXPECT_TRUE(Logged(
      L"GetDefaultIccFile Failed, ret is1currentIccFileName:(ColorFieldApi::EnableUsrICCProfile)"));
}

// --- WhitePointFineTue ---

TEST_F(ColorFieldApiUserModes, WhitePointFineTue) {
  ASSERT_EQ(api.SetUserColorField("Mine%1"), ResultOk);
  WhitePointFineTueInfo record{};
  record.mode = USRDESIGN_MODE;
  std::string("Mine%1").copy(record.id, 100);
  record.r = 1;
  record.g = 0.95;
  record.b = 0.9;
  EXPECT_EQ(api.WhitePointFineTue(&record), ResultOk);
  EXPECT_EQ(notebook.platform.gammaLut.at(1), 2000 * 0.95);
  notebook.FailCall("PlatformSetGammaLut", 1, 5);
  EXPECT_EQ(api.WhitePointFineTue(&record), 5);
  EXPECT_TRUE(
      Logged(L"WhitePoint fine tue error, mode: 11, id: Mine%1(ColorFieldApi::WhitePointFineTue)"));
}

// --- The way of gamma LUT and 3D LUT ---

class ColorFieldApiGammaWay : public ColorFieldTest {
 protected:
  ColorFieldApiGammaWay() {
    std::filesystem::create_directories(kData);
    notebook.firmwareTable = machine.firmwareTable;
    Init(velora::SetTypeGammaLut);
    ColorFieldModeInfo info = ModeInfo(P3Mode, newPath);
    info.gamma = 2.2;
    info.gamut = 2;
    info.temperR = info.temperG = info.temperB = 1;
    EXPECT_EQ(api.AddColorFieldModeInfo(&info), ResultOk);
    notebook.ForgetRecords();
  }
  ~ColorFieldApiGammaWay() override { std::filesystem::remove_all(kData); }

  static inline const std::string kData = "C:\\ProgramData\\Comms\\NxVelora";
  const virtualnotebook::MachineData machine =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  const virtualnotebook::PluggedPanel plugged{machine.edid};
  const testsupport::ScopedKey settings{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
};

TEST_F(ColorFieldApiGammaWay, GammaLutThen3DLut) {
  EXPECT_EQ(api.SetColorField(P3Mode), ResultOk);
  EXPECT_THAT(testsupport::CallsOf(notebook, {"CoreKit::GetDisplayType", "PlatformSetGammaLut",
                                              "PlatformSet3DLut", "PlatformSetPccMatrixInfo"}),
              ElementsAre("CoreKit::GetDisplayType", "PlatformSetGammaLut", "PlatformSet3DLut"));
  EXPECT_EQ(notebook.platform.lut3D, virtualnotebook::MakeLut(machine.panel, 2));
}

TEST_F(ColorFieldApiGammaWay, DisplayTypeUnknown) {
  notebook.displayType = 0xFFFFFFFF;
  EXPECT_EQ(api.EnableColorFieldByGamma(P3Mode), ResultFailed);
  EXPECT_LOG({3, L"Display Type not found! mode:2(ColorFieldApi::EnableColorFieldByGamma)"});
}

TEST_F(ColorFieldApiGammaWay, GammaFails_The3DLutIsNotTouched) {
  notebook.FailCall("PlatformSetGammaLut", 1, 5);
  EXPECT_EQ(api.SetColorField(P3Mode), ResultColorFieldError);
  EXPECT_TRUE(testsupport::Logged(
      notebook, 3,
      L"SetDisplayerByGammalut Failed, mode is 2(ColorFieldApi::EnableColorFieldByGamma)"));
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 0u);
  EXPECT_EQ(notebook.profiles.at(panel).front(), L"VeloraOld.icc");
}

TEST_F(ColorFieldApiGammaWay, LutFails_TheGammaLutStays) {
  notebook.FailCall("PlatformSet3DLut", 1, 5);
  EXPECT_EQ(api.SetColorField(P3Mode), ResultColorFieldError);
  EXPECT_TRUE(testsupport::Logged(
      notebook, 3,
      L"SetDisplayerBy3DLut Failed, mode is 2(ColorFieldApi::EnableColorFieldByGamma)"));
  EXPECT_EQ(notebook.platform.gammaLut.size(), 3072u);
  EXPECT_EQ(notebook.profiles.at(panel).front(), L"VeloraOld.icc");
}

}  // namespace
