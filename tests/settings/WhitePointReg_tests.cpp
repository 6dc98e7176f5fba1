#include "settings/WhitePointReg.h"

#include <gtest/gtest.h>

#include <string>

#include "settings/FeatureManager.h"
#include "settings/Singleton.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"

namespace velora {
namespace {

using testsupport::DwordValue;
using testsupport::ReadKey;
using testsupport::RegistryValues;
using testsupport::TextValue;

const std::wstring kPointTestKey = L"SOFTWARE\\Norvex\\Velora";
const std::wstring kPointKey = kPointTestKey + L"\\WhitePoint";

class WhitePointRegTest : public testsupport::NotebookTest {
 protected:
  WhitePointRegTest() {
    FeatureManager::GetInstance().IsMultiUser(0);
    FeatureManager::GetInstance().SetMultiUser(0, 0);
  }
  ~WhitePointRegTest() override { FeatureManager::GetInstance().SetMultiUser(0, 0); }

  void MakeMultiUser() { FeatureManager::GetInstance().SetMultiUser(0, 1); }

  const std::wstring sid = testsupport::CurrentUserSid();
  const testsupport::ScopedKey machine{HKEY_LOCAL_MACHINE, kPointTestKey};
  const testsupport::ScopedKey user{HKEY_CURRENT_USER, kPointTestKey};
};

TEST_F(WhitePointRegTest, Status_IsTheDefaultUntilStored) {
  WhitePointReg settings;
  notebook.ForgetRecords();
  EXPECT_EQ(settings.GetWhitePointStatus(5), 5);
  EXPECT_LOG();
  EXPECT_TRUE(ReadKey(HKEY_LOCAL_MACHINE, kPointKey).empty()) << "nothing is seeded";
  EXPECT_EQ(settings.SetWhitePointStatus(1), ResultOk);
  EXPECT_EQ(settings.GetWhitePointStatus(5), 1);
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kPointKey), (RegistryValues{{L"IsEnable", DwordValue(1)}}));
  EXPECT_EQ(settings.SetWhitePointStatus(-9), ResultOk);
  EXPECT_EQ(settings.GetWhitePointStatus(5), -9) << "any number is valid";
  EXPECT_LOG();
}

TEST_F(WhitePointRegTest, Status_AnotherProcessesWriteIsSeen) {
  const WhitePointReg settings;
  testsupport::WriteValue(HKEY_LOCAL_MACHINE, kPointKey, L"IsEnable", DwordValue(1));
  EXPECT_EQ(settings.GetWhitePointStatus(0), 1);
  testsupport::WriteValue(HKEY_LOCAL_MACHINE, kPointKey, L"IsEnable", DwordValue(0));
  EXPECT_EQ(settings.GetWhitePointStatus(1), 0);
}

TEST_F(WhitePointRegTest, SetStatus_FailedWrite) {
  WhitePointReg settings;
  notebook.ForgetRecords();
  notebook.FailCall("RegSetValueExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetWhitePointStatus(1), ResultFailed);
  EXPECT_LOG({3, L"Write key:" + kPointKey +
                     L", itemName:IsEnable, value:1 failed!(RegisterHelper::RegWriteValue)"});
  EXPECT_TRUE(ReadKey(HKEY_LOCAL_MACHINE, kPointKey).empty());
}

TEST_F(WhitePointRegTest, Rgb_IsStoredAsText) {
  WhitePointReg settings;
  EXPECT_EQ(settings.SetWhitePointRGB(1, 0.987654321, 0.5), ResultOk);
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kPointKey),
            (RegistryValues{{L"r", TextValue(L"1.000000")},
                            {L"g", TextValue(L"0.987654")},
                            {L"b", TextValue(L"0.500000")}}));
  double r = 0;
  double g = 0;
  double b = 0;
  EXPECT_EQ(settings.GetWhitePointRGB(&r, &g, &b), ResultOk);
  EXPECT_EQ(r, 1.0);
  EXPECT_EQ(g, 0.987654);
  EXPECT_EQ(b, 0.5);
}

TEST_F(WhitePointRegTest, SetRgb_EndsAtTheFirstFailure) {
  WhitePointReg settings;
  notebook.ForgetRecords();
  notebook.FailCall("RegSetValueExW", 2, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetWhitePointRGB(0.1, 0.2, 0.3), ResultFailed);
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kPointKey),
            (RegistryValues{{L"r", TextValue(L"0.100000")}}));
  EXPECT_EQ(notebook.CountCalls("RegSetValueExW"), 2u);
}

TEST_F(WhitePointRegTest, GetRgb_EndsAtTheFirstFailure) {
  WhitePointReg settings;
  notebook.ForgetRecords();
  double r = 7;
  double g = 8;
  double b = 9;
  EXPECT_EQ(settings.GetWhitePointRGB(&r, &g, &b), ResultKeyNotFound);
  EXPECT_EQ(r, 7);
  testsupport::WriteValue(HKEY_LOCAL_MACHINE, kPointKey, L"r", TextValue(L"0.25"));
  testsupport::WriteValue(HKEY_LOCAL_MACHINE, kPointKey, L"b", TextValue(L"0.75"));
  EXPECT_EQ(settings.GetWhitePointRGB(&r, &g, &b), ResultFailed);
  EXPECT_EQ(r, 0.25);
  EXPECT_EQ(g, 8);
  EXPECT_EQ(b, 9);
  EXPECT_LOG(
      {3, L"Reg key:" + kPointKey + L" not exists!(RegisterHelper::RegReadValue)"},
      {3, L"itemName:g not exist in subKey:" + kPointKey + L"(RegisterHelper::RegReadValue)"});
}

// One value, reached from either process: the application's HKEY_CURRENT_USER is the service's hive
// under HKEY_USERS.
TEST_F(WhitePointRegTest, MultiUser_ServiceAndApplicationShareTheUsersValue) {
  MakeMultiUser();
  notebook.userSid = sid;
  WhitePointReg application;
  notebook.administrator = true;
  WhitePointReg service;
  EXPECT_EQ(application.SetWhitePointStatus(1), ResultOk);
  EXPECT_EQ(service.GetWhitePointStatus(0), 1);
  EXPECT_EQ(service.SetWhitePointStatus(2), ResultOk);
  EXPECT_EQ(application.GetWhitePointStatus(0), 2);
  EXPECT_EQ(ReadKey(HKEY_CURRENT_USER, kPointKey), (RegistryValues{{L"IsEnable", DwordValue(2)}}));
  EXPECT_FALSE(testsupport::KeyExists(HKEY_LOCAL_MACHINE, kPointKey));
}

TEST_F(WhitePointRegTest, SwitchUser_ReadsAtTheRootOfTheHive) {
  MakeMultiUser();
  notebook.administrator = true;
  notebook.userSid = sid;
  WhitePointReg settings;
  EXPECT_EQ(settings.SetWhitePointStatus(1), ResultOk);
  settings.SwitchUser();
  EXPECT_EQ(settings.GetWhitePointStatus(5), 5);
  EXPECT_EQ(settings.SetWhitePointStatus(3), ResultOk);
  EXPECT_EQ(settings.GetWhitePointStatus(5), 3);
  EXPECT_EQ(ReadKey(HKEY_USERS, sid)[L"IsEnable"], DwordValue(3));
  EXPECT_EQ(ReadKey(HKEY_CURRENT_USER, kPointKey)[L"IsEnable"], DwordValue(1));
  EXPECT_EQ(RegDeleteKeyValueW(HKEY_USERS, sid.c_str(), L"IsEnable"), ERROR_SUCCESS);
}

TEST_F(WhitePointRegTest, Singleton_IsOneObject) {
  EXPECT_EQ(&Singleton<WhitePointReg>::GetInstance(), &Singleton<WhitePointReg>::GetInstance());
}

}  // namespace
}  // namespace velora
