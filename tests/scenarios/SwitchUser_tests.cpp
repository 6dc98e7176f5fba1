// The user's white point settings, and the change of users, through the shipped library.
#include <gtest/gtest.h>

#include <string>

#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/HostedLibrary.h"

namespace virtualnotebook {
namespace {

using testsupport::DwordValue;
using testsupport::LogIs;
using testsupport::ReadKey;
using testsupport::RegistryValues;

const std::wstring kSwitchTestKey = L"SOFTWARE\\Norvex\\Velora";
const std::wstring kWhitePoint = kSwitchTestKey + L"\\WhitePoint";
const std::wstring kIsEnable = L"IsEnable";

class SwitchUserTest : public testing::Test {
 protected:
  void MakeMultiUser() {
    testsupport::WriteValue(HKEY_LOCAL_MACHINE, kSwitchTestKey + L"\\FeatureInfo\\MultiUser",
                            L"WhitePoint", DwordValue(1));
  }
  void BeService() {
    library.notebook.administrator = true;
    library.notebook.userSid = sid;
  }

  const std::wstring sid = testsupport::CurrentUserSid();
  const testsupport::ScopedKey machine{HKEY_LOCAL_MACHINE, kSwitchTestKey};
  const testsupport::ScopedKey user{HKEY_CURRENT_USER, kSwitchTestKey};
  HostedLibrary library;
};

TEST_F(SwitchUserTest, SingleUser_IsTheMachines) {
  BeService();
  EXPECT_EQ(library.SetWhitePointStatus(1), ResultOk);
  EXPECT_EQ(library.GetWhitePointStatus(0), 1);
  EXPECT_TRUE(
      LogIs(library.notebook, {{1, L"whitePointEnable:1(SetWhitePointStatus)"},
                               {1, L"FeatureType 0 is single user!(MultiUserReg::MultiUserReg)"},
                               {1, L"reg path:" + kWhitePoint + L"(MultiUserReg::MultiUserReg)"},
                               {1, L"defaultWhitePointEnable:0(GetWhitePointStatus)"}}));
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kWhitePoint), (RegistryValues{{kIsEnable, DwordValue(1)}}));

  library.notebook.ForgetRecords();
  library.SwitchUser();
  EXPECT_TRUE(LogIs(library.notebook, {{1, L"(SwitchUser)"}}));
  EXPECT_EQ(library.GetWhitePointStatus(0), 1);
}

TEST_F(SwitchUserTest, MultiUser_InTheApplicationDoesNothing) {
  MakeMultiUser();
  library.notebook.userSid = sid;
  EXPECT_EQ(library.SetWhitePointStatus(1), ResultOk);
  EXPECT_EQ(ReadKey(HKEY_CURRENT_USER, kWhitePoint), (RegistryValues{{kIsEnable, DwordValue(1)}}));
  library.notebook.ForgetRecords();
  library.SwitchUser();
  EXPECT_TRUE(LogIs(library.notebook, {{1, L"(SwitchUser)"}}));
  EXPECT_EQ(library.GetWhitePointStatus(0), 1);
}

TEST_F(SwitchUserTest, MultiUser_TheServiceReadsWhatTheApplicationWrote) {
  MakeMultiUser();
  testsupport::WriteValue(HKEY_CURRENT_USER, kWhitePoint, kIsEnable, DwordValue(6));
  BeService();
  EXPECT_EQ(library.GetWhitePointStatus(0), 6);
  EXPECT_TRUE(
      LogIs(library.notebook,
            {{1, L"defaultWhitePointEnable:0(GetWhitePointStatus)"},
             {1, L"FeatureType 0 is multi user!(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + sid + L"\\" + kWhitePoint + L"(MultiUserReg::MultiUserReg)"}}));
}

// From the switch on, the service is at the root of the new user's hive.
TEST_F(SwitchUserTest, MultiUser_InTheService) {
  MakeMultiUser();
  library.notebook.administrator = true;
  library.notebook.userSid = L"S-1-5-21-1-2-3-1001";
  EXPECT_EQ(library.GetWhitePointStatus(4), 4);
  library.notebook.ForgetRecords();
  library.notebook.userSid = sid;
  library.SwitchUser();
  EXPECT_TRUE(LogIs(library.notebook, {{1, L"(SwitchUser)"},
                                       {1, L"reg path:" + sid + L"\\(MultiUserReg::SwitchUser)"}}));

  EXPECT_EQ(library.SetWhitePointStatus(3), ResultOk);
  EXPECT_EQ(library.GetWhitePointStatus(4), 3);
  EXPECT_EQ(ReadKey(HKEY_CURRENT_USER, L"")[kIsEnable], DwordValue(3));
  EXPECT_EQ(ReadKey(HKEY_CURRENT_USER, kWhitePoint), RegistryValues());
  EXPECT_EQ(RegDeleteKeyValueW(HKEY_CURRENT_USER, nullptr, kIsEnable.c_str()), ERROR_SUCCESS);
}

// Without a SID the service addresses a key that is nobody's.
TEST_F(SwitchUserTest, MultiUser_InTheServiceWithoutSid) {
  MakeMultiUser();
  library.notebook.administrator = true;
  EXPECT_EQ(library.GetWhitePointStatus(4), 4);
  EXPECT_TRUE(testsupport::Logged(library.notebook, 1,
                                  L"reg path:" + kWhitePoint + L"(MultiUserReg::MultiUserReg)"));
  for (const Call& call : library.notebook.calls) {
    if (call.function == "RegOpenKeyW" && call.arguments[1] == kWhitePoint) {
      EXPECT_EQ(call.arguments[0], L"HKEY_USERS");
    }
  }
  library.notebook.ForgetRecords();
  library.SwitchUser();
  EXPECT_TRUE(LogIs(
      library.notebook,
      {{1, L"(SwitchUser)"}, {1, L"reg path:" + kWhitePoint + L"(MultiUserReg::SwitchUser)"}}));
}

// The first call of all constructs the settings after its entry line, and then switches.
TEST_F(SwitchUserTest, IsTheFirstCall) {
  MakeMultiUser();
  BeService();
  library.SwitchUser();
  EXPECT_TRUE(
      LogIs(library.notebook,
            {{1, L"(SwitchUser)"},
             {1, L"FeatureType 0 is multi user!(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + sid + L"\\" + kWhitePoint + L"(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + sid + L"\\(MultiUserReg::SwitchUser)"}}));
}

TEST_F(SwitchUserTest, LoadingTouchesNothing) {
  EXPECT_TRUE(library.notebook.calls.empty());
  EXPECT_TRUE(LogIs(library.notebook, {}));
}

}  // namespace
}  // namespace virtualnotebook
