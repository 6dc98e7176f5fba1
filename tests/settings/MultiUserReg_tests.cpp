#include "settings/MultiUserReg.h"

#include <gtest/gtest.h>

#include <string>

#include "settings/FeatureManager.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"

namespace velora {
namespace {

const std::wstring kSwitchTestKey = L"SOFTWARE\\Norvex\\Velora";
const std::wstring kWhitePointKey = kSwitchTestKey + L"\\WhitePoint";
const std::wstring kSid = L"S-1-5-21-7-8-9-1001";

class Settings : public MultiUserReg {
 public:
  using MultiUserReg::isAdmin_;
  using MultiUserReg::isMultiUser_;
  using MultiUserReg::MultiUserReg;
  using MultiUserReg::regPath_;
  using MultiUserReg::rootKey_;
};

class MultiUserRegTest : public testsupport::NotebookTest {
 protected:
  MultiUserRegTest() { FeatureManager::GetInstance().IsMultiUser(0); }
  ~MultiUserRegTest() override { FeatureManager::GetInstance().SetMultiUser(0, 0); }

  void MakeMultiUser(int flag = 1) {
    ASSERT_EQ(FeatureManager::GetInstance().SetMultiUser(0, flag), ResultOk);
  }
  void ExpectHome(const Settings& settings, HKEY root, const std::wstring& path) {
    EXPECT_EQ(settings.rootKey_, root);
    EXPECT_EQ(settings.regPath_, path);
  }

  const testsupport::ScopedKey machine{HKEY_LOCAL_MACHINE, kSwitchTestKey};
};

TEST_F(MultiUserRegTest, SingleUser_EachFeatureHasItsKey) {
  const wchar_t* const keys[] = {L"WhitePoint",
                                 L"EyeProtect",
                                 L"ColorTemperature",
                                 L"ColorField",
                                 L"NaturalColor",
                                 L"DpInOut",
                                 L"Esd",
                                 L"ColorField\\UserDesign",
                                 L"ColorField\\WhitePointFineTue"};
  for (int type = 0; type < 9; ++type) {
    notebook.ForgetRecords();
    const Settings settings(type);
    ExpectHome(settings, HKEY_LOCAL_MACHINE, kSwitchTestKey + L"\\" + keys[type]);
    EXPECT_FALSE(settings.isMultiUser_);
    EXPECT_FALSE(settings.isAdmin_);
    EXPECT_LOG(
        {1,
         L"FeatureType " + std::to_wstring(type) + L" is single user!(MultiUserReg::MultiUserReg)"},
        {1, L"reg path:" + kSwitchTestKey + L"\\" + keys[type] + L"(MultiUserReg::MultiUserReg)"});
  }
}

TEST_F(MultiUserRegTest, SingleUser_AsksForNoUser) {
  notebook.administrator = true;
  notebook.userSid = kSid;
  const Settings settings(0);
  ExpectHome(settings, HKEY_LOCAL_MACHINE, kWhitePointKey);
  EXPECT_FALSE(settings.isAdmin_);
  EXPECT_EQ(notebook.CountCalls("CoreKit::IsAdminPrivilege"), 0u);
  EXPECT_EQ(notebook.CountCalls("CoreKit::GetUserSIDBySessionId"), 0u);
}

TEST_F(MultiUserRegTest, MultiUser_InTheApplication) {
  MakeMultiUser();
  notebook.userSid = kSid;
  const Settings settings(0);
  ExpectHome(settings, HKEY_CURRENT_USER, kWhitePointKey);
  EXPECT_TRUE(settings.isMultiUser_);
  EXPECT_FALSE(settings.isAdmin_);
  EXPECT_LOG({1, L"FeatureType 0 is multi user!(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + kWhitePointKey + L"(MultiUserReg::MultiUserReg)"});
  EXPECT_EQ(notebook.CountCalls("CoreKit::GetUserSIDBySessionId"), 0u);
}

TEST_F(MultiUserRegTest, MultiUser_InTheService) {
  MakeMultiUser();
  notebook.administrator = true;
  notebook.sessionId = 3;
  notebook.userSid = kSid;
  const Settings settings(0);
  ExpectHome(settings, HKEY_USERS, kSid + L"\\" + kWhitePointKey);
  EXPECT_TRUE(settings.isMultiUser_);
  EXPECT_TRUE(settings.isAdmin_);
  EXPECT_LOG({1, L"FeatureType 0 is multi user!(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + kSid + L"\\" + kWhitePointKey + L"(MultiUserReg::MultiUserReg)"});
}

TEST_F(MultiUserRegTest, MultiUser_AsksForTheUserOfTheLogonSession) {
  MakeMultiUser();
  notebook.administrator = true;
  notebook.sessionId = 3;
  notebook.userSid = kSid;
  const Settings settings(0);
  const std::vector<std::string> functions = {
      "CoreKit::IsAdminPrivilege", "CoreKit::GetLogonSessionId", "CoreKit::GetUserSIDBySessionId"};
  EXPECT_EQ(testsupport::CallsOf(notebook, functions), functions);
  for (const auto& call : notebook.calls) {
    if (call.function == "CoreKit::GetUserSIDBySessionId") {
      EXPECT_EQ(call.arguments[0], L"3");
    }
  }
}

TEST_F(MultiUserRegTest, MultiUser_InTheServiceWithoutSid) {
  MakeMultiUser();
  notebook.administrator = true;
  const Settings settings(0);
  ExpectHome(settings, HKEY_USERS, kWhitePointKey);
  EXPECT_TRUE(settings.isMultiUser_);
  EXPECT_TRUE(settings.isAdmin_);
  EXPECT_LOG({1, L"FeatureType 0 is multi user!(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + kWhitePointKey + L"(MultiUserReg::MultiUserReg)"});
}

TEST_F(MultiUserRegTest, MultiUser_AnyFlagButZero) {
  MakeMultiUser(7);
  const Settings settings(0);
  ExpectHome(settings, HKEY_CURRENT_USER, kWhitePointKey);
}

TEST_F(MultiUserRegTest, OnlyTheLowByteTellsAnAdministrator) {
  MakeMultiUser();
  notebook.userSid = kSid;
  notebook.FailCall("CoreKit::IsAdminPrivilege", 0, 0xCCCCCC00);
  ExpectHome(Settings(0), HKEY_CURRENT_USER, kWhitePointKey);
  notebook.ClearFaults();
  notebook.FailCall("CoreKit::IsAdminPrivilege", 0, 0xCCCCCC80);
  ExpectHome(Settings(0), HKEY_USERS, kSid + L"\\" + kWhitePointKey);
}

// Features 7 and 8 have no flag that could make them multi-user.
TEST_F(MultiUserRegTest, TheUserDesignStoresAreSingleUserAlways) {
  notebook.administrator = true;
  notebook.userSid = kSid;
  for (const int type : {7, 8}) {
    EXPECT_EQ(FeatureManager::GetInstance().SetMultiUser(type, 1), ResultFailed);
    notebook.ForgetRecords();
    const Settings settings(type);
    EXPECT_EQ(settings.rootKey_, HKEY_LOCAL_MACHINE);
    EXPECT_LOGGED(1, L"FeatureType " + std::to_wstring(type) +
                         L" is single user!(MultiUserReg::MultiUserReg)");
  }
}

TEST_F(MultiUserRegTest, TheChoiceStaysWhenTheFlagChanges) {
  const Settings settings(0);
  MakeMultiUser();
  ExpectHome(settings, HKEY_LOCAL_MACHINE, kWhitePointKey);
}

// --- SwitchUser ---

TEST_F(MultiUserRegTest, SwitchUser_IsSilentForASingleUserFeature) {
  notebook.administrator = true;
  notebook.userSid = kSid;
  Settings settings(0);
  notebook.ForgetRecords();
  settings.SwitchUser();
  ExpectHome(settings, HKEY_LOCAL_MACHINE, kWhitePointKey);
  EXPECT_LOG();
  EXPECT_TRUE(notebook.calls.empty());
}

TEST_F(MultiUserRegTest, SwitchUser_IsSilentInTheApplication) {
  MakeMultiUser();
  notebook.userSid = kSid;
  Settings settings(0);
  notebook.administrator = true;
  notebook.ForgetRecords();
  settings.SwitchUser();
  ExpectHome(settings, HKEY_CURRENT_USER, kWhitePointKey);
  EXPECT_LOG();
  EXPECT_TRUE(notebook.calls.empty());
}

// The feature key is gone: the object is at the root of the new user's hive.
TEST_F(MultiUserRegTest, SwitchUser_InTheService) {
  MakeMultiUser();
  notebook.administrator = true;
  notebook.userSid = kSid;
  Settings settings(0);
  notebook.ForgetRecords();
  notebook.userSid = L"S-1-5-21-7-8-9-1002";
  settings.SwitchUser();
  ExpectHome(settings, HKEY_USERS, L"S-1-5-21-7-8-9-1002\\");
  EXPECT_LOG({1, L"reg path:S-1-5-21-7-8-9-1002\\(MultiUserReg::SwitchUser)"});
}

TEST_F(MultiUserRegTest, SwitchUser_AFailedLookUpKeepsThePath) {
  MakeMultiUser();
  notebook.administrator = true;
  notebook.userSid = kSid;
  Settings settings(0);
  notebook.ForgetRecords();
  notebook.userSid.clear();
  settings.SwitchUser();
  ExpectHome(settings, HKEY_USERS, kSid + L"\\" + kWhitePointKey);
  EXPECT_LOG({1, L"reg path:" + kSid + L"\\" + kWhitePointKey + L"(MultiUserReg::SwitchUser)"});
}

TEST_F(MultiUserRegTest, SwitchUser_AfterAFailedLookUpAtConstruction) {
  MakeMultiUser();
  notebook.administrator = true;
  Settings settings(0);
  notebook.ForgetRecords();
  settings.SwitchUser();
  ExpectHome(settings, HKEY_USERS, kWhitePointKey);
  EXPECT_LOG({1, L"reg path:" + kWhitePointKey + L"(MultiUserReg::SwitchUser)"});
  notebook.userSid = kSid;
  settings.SwitchUser();
  ExpectHome(settings, HKEY_USERS, kSid + L"\\");
}

}  // namespace
}  // namespace velora
