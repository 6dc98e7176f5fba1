#include "ColorFieldTest.h"
#include "support/Registry.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// The panel's profile is "VeloraOld.icc", that of mode 0; mode 2 has "VeloraNew.icc".
class ColorFieldApiSync : public ColorFieldTest {
 protected:
  ColorFieldApiSync() { Prepare(velora::SetType3DLut); }

  void Prepare(ColorFieldSetType setType, ColorFieldMode defaultMode = 0) {
    ColorFieldInitInfo info = InitInfo(setType, digestPath);
    info.defaultMode = defaultMode;
    EXPECT_EQ(api.InitColorFieldInfo(&info), ResultOk);
    AddMode(0, directory.Path("VeloraOld.icc"));
    AddMode(P3Mode, newPath);
    notebook.ForgetRecords();
  }
  void NoProfile() { notebook.profiles[panel].clear(); }
  void StoreMode(int mode) {
    ASSERT_EQ(SetColorFieldCurrentMode(mode), ResultOk);
    notebook.ForgetRecords();
  }
  bool Logged(int level, const std::wstring& text) const {
    return testsupport::Logged(notebook, level, text);
  }
  std::vector<std::string> PlatformCalls() const {
    return testsupport::CallsOf(
        notebook, {"PlatformSet3DLut", "PlatformReset3DLut", "PlatformSetPccMatrixInfo",
                   "PlatformSetGammaLut", "PlatformResetPccMatrixInfo", "SetVCPFeature"});
  }
  std::vector<std::wstring> Associations() const { return notebook.profiles.at(panel); }

  const testsupport::ScopedKey settings{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
};

// --- SyncSysColorField ---

TEST_F(ColorFieldApiSync, SyncSysColorField_SwitchesToTheProfilesMode) {
  StoreMode(P3Mode);
  EXPECT_EQ(api.SyncSysColorField(), 0);
  EXPECT_TRUE(Logged(1, L"targetIccFileName is VeloraOld.icc(ColorFieldApi::SyncSysColorField)"));
  EXPECT_THAT(PlatformCalls(), ElementsAre("PlatformReset3DLut"));
  EXPECT_EQ(GetColorFieldCurrentMode(-5), P3Mode) << "the host stores it";
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
}

TEST_F(ColorFieldApiSync, SyncSysColorField_TheStoredModeAlready) {
  StoreMode(0);
  EXPECT_EQ(api.SyncSysColorField(), 0);
  EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(ColorFieldApiSync, SyncSysColorField_QueryFails) {
  notebook.FailCall("WcsGetDefaultColorProfile", 1, 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(api.SyncSysColorField(), -1);
  EXPECT_TRUE(Logged(
      3,
      L"GetDefaultIccFile Failed, ret is1currentIccFileName:(ColorFieldApi::SyncSysColorField)"));
}

TEST_F(ColorFieldApiSync, SyncSysColorField_NoProfile) {
  NoProfile();
  EXPECT_EQ(api.SyncSysColorField(), -1) << "nothing is stored";
  StoreMode(7);
  EXPECT_EQ(api.SyncSysColorField(), 7);
  EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(ColorFieldApiSync, SyncSysColorField_UnknownProfileIsTheDefaultMode) {
  notebook.profiles[panel] = {L"Stranger.icc"};
  EXPECT_EQ(api.SyncSysColorField(), 0);
  EXPECT_THAT(PlatformCalls(), ElementsAre("PlatformReset3DLut"));
  StoreMode(0);
  EXPECT_EQ(api.SyncSysColorField(), 0);
  EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(ColorFieldApiSync, SyncSysColorField_APieceOfAnEarlierPathDecides) {
  notebook.profiles[panel] = {L".icc"};
  StoreMode(P3Mode);
  EXPECT_EQ(api.SyncSysColorField(), 0) << "the first row's path contains it";
}

TEST_F(ColorFieldApiSync, SyncSysColorField_OutputFails) {
  notebook.FailCall("PlatformReset3DLut", 1, 5);
  EXPECT_EQ(api.SyncSysColorField(), -1);
  EXPECT_TRUE(
      Logged(3, L"EnableColorFieldMode:0 failed,ret is 17(ColorFieldApi::SyncSysColorField)"));
}

// A user mode wins over a preset; where it fails, the preset's row counts after all.
TEST_F(ColorFieldApiSync, SyncSysColorField_UserModeThatFails) {
  AddUserMode("Mine", directory.Path("VeloraOld.icc"));
  StoreMode(P3Mode);
  EXPECT_EQ(api.SyncSysColorField(), 0);
  EXPECT_TRUE(Logged(3,
                     L"Find mode by icc, mode id isMine%1, but enable failed"
                     L"(ColorFieldApi::SyncSysColorField)"));
  EXPECT_THAT(PlatformCalls(), ElementsAre("PlatformReset3DLut"));
}

// --- SyncCurrentModeIccFile ---

TEST_F(ColorFieldApiSync, SyncCurrentModeIccFile_QueryFails) {
  notebook.FailCall("WcsGetDefaultColorProfile", 1, 0, ERROR_ACCESS_DENIED);
  EXPECT_TRUE(api.SyncCurrentModeIccFile());
  EXPECT_TRUE(Logged(1, L"Get DefaultIcc Fail!(ColorFieldApi::SyncCurrentModeIccFile)"));
}

TEST_F(ColorFieldApiSync, SyncCurrentModeIccFile_AnyProfileWillDo) {
  StoreMode(P3Mode);
  EXPECT_TRUE(api.SyncCurrentModeIccFile());
  EXPECT_TRUE(
      Logged(1, L"targetIccFileName is VeloraOld.icc(ColorFieldApi::SyncCurrentModeIccFile)"));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
}

TEST_F(ColorFieldApiSync, SyncCurrentModeIccFile_AssociatesTheStoredModes) {
  NoProfile();
  StoreMode(P3Mode);
  EXPECT_TRUE(api.SyncCurrentModeIccFile());
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraNew.icc"));
  EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(ColorFieldApiSync, SyncCurrentModeIccFile_NoRowForTheStoredMode) {
  NoProfile();
  StoreMode(5);
  EXPECT_FALSE(api.SyncCurrentModeIccFile());
  EXPECT_TRUE(Logged(3, L"modeIccVec_ is not initialized.(ColorFieldApi::FindIccFilePathByMode)"));
  EXPECT_TRUE(Logged(3, L"Can not find icc by mode(ColorFieldApi::SyncCurrentModeIccFile)"));
}

TEST_F(ColorFieldApiSync, SyncCurrentModeIccFile_NothingStoredIsMode0) {
  NoProfile();
  EXPECT_FALSE(api.SyncCurrentModeIccFile());
  EXPECT_TRUE(Logged(3, L"SetOsIccFileWithCheck Failed(ColorFieldApi::SyncCurrentModeIccFile)"))
      << "mode 0's profile has no digest record";
}

TEST_F(ColorFieldApiSync, SyncCurrentModeIccFile_UserMode) {
  NoProfile();
  StoreMode(USRDESIGN_MODE);
  EXPECT_FALSE(api.SyncCurrentModeIccFile());
  EXPECT_TRUE(Logged(3, L"Can not find icc by modeName(ColorFieldApi::SyncCurrentModeIccFile)"));
  AddUserMode("Mine", directory.Path("none.icc"));
  velora::UserDesignReg().SetCurrentUsrMode("Mine");
  notebook.ForgetRecords();
  EXPECT_FALSE(api.SyncCurrentModeIccFile());
  EXPECT_TRUE(Logged(3, L"SetUsrIccFileWithCheck Failed(ColorFieldApi::SyncCurrentModeIccFile)"));
}

// --- ResetColorField ---

TEST_F(ColorFieldApiSync, ResetColorField_NothingStored) {
  EXPECT_EQ(api.ResetColorField(), ResultNotSet);
  EXPECT_TRUE(
      Logged(1, L"Reset color field failed,resetMode:0setType:4(ColorFieldApi::ResetColorField)"));
  SetColorFieldSetType(1);
  SetColorFieldResetMode(-1);
  EXPECT_EQ(api.ResetColorField(), ResultNotSet);
  EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(ColorFieldApiSync, ResetColorField_ByTheStoredSetType) {
  const struct {
    int setType;
    const char* call;
  } rows[] = {
      {1, "PlatformReset3DLut"}, {2, "PlatformResetPccMatrixInfo"}, {3, "PlatformReset3DLut"}};
  for (const auto& row : rows) {
    SetColorFieldSetType(row.setType);
    SetColorFieldResetMode(1);
    notebook.ForgetRecords();
    EXPECT_EQ(api.ResetColorField(), ResultOk);
    EXPECT_THAT(PlatformCalls(), ElementsAre(row.call)) << row.setType;
    EXPECT_TRUE(Logged(3, L"setType:" + std::to_wstring(row.setType) +
                              L", resetMode:1(ColorFieldApi::ResetColorField)"));
    notebook.FailCall(row.call, 1, 23);
    EXPECT_EQ(api.ResetColorField(), 23);
    notebook.ClearFaults();
  }
}

TEST_F(ColorFieldApiSync, ResetColorField_OtherSetTypes) {
  SetColorFieldSetType(5);
  SetColorFieldResetMode(1);
  EXPECT_EQ(api.ResetColorField(), ResultColorFieldError);
  EXPECT_TRUE(Logged(3,
                     L"PC Displayer ColorField Mode Not Support on this version, resetMode is 1"
                     L"(ColorFieldApi::ResetColorField)"));
  SetColorFieldSetType(0);
  SetColorFieldResetMode(7);
  EXPECT_EQ(api.ResetColorField(), ResultFailed);
  EXPECT_TRUE(Logged(3, L"mode is error, mode is 7(ColorFieldApi::EnableColorFieldByDdcci)"));
}

}  // namespace
