// User-designed modes and fine tuning through the exports of the shipped library.
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>

#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/HostedLibrary.h"

namespace scenarios {
namespace {

using testsupport::DwordValue;
using testsupport::KeyExists;
using testsupport::ReadKey;
using testsupport::RegistryValues;
using testsupport::TextValue;

const HKEY kRoot = HKEY_LOCAL_MACHINE;
const std::wstring kDesignTestKey = L"SOFTWARE\\Norvex\\Velora";
const std::wstring kModes = L"SOFTWARE\\Norvex\\Velora\\ColorField\\UserDesign";
const std::wstring kTunings = L"SOFTWARE\\Norvex\\Velora\\ColorField\\WhitePointFineTue";

const testsupport::LogLine kTuningsAreOfTheMachine[] = {
    {1, L"FeatureType 8 is single user!(MultiUserReg::MultiUserReg)"},
    {1, L"reg path:" + kTunings + L"(MultiUserReg::MultiUserReg)"}};
const testsupport::LogLine kModesAreOfTheMachine[] = {
    {1, L"FeatureType 7 is single user!(MultiUserReg::MultiUserReg)"},
    {1, L"reg path:" + kModes + L"(MultiUserReg::MultiUserReg)"}};

std::wstring Shown(const void* pointer) {
  std::wostringstream text;
  text << pointer;
  return text.str();
}

class UserDesignScenario : public testing::Test {
 protected:
  const testsupport::ScopedKey key{kRoot, kDesignTestKey};
  virtualnotebook::HostedLibrary library;
  virtualnotebook::Notebook& notebook = library.notebook;
};

TEST_F(UserDesignScenario, SetAndGetWhitePointTueValue) {
  WhitePointFineTueInfo tuning{.id = {}, .mode = P3Mode, .r = 0.5, .g = 0.1234567, .b = 1};
  EXPECT_EQ(library.SetWhitePointTueValue(&tuning), ResultOk);
  EXPECT_LOG({1, L"whitePoint:R:0.5, G:0.123457, B:1(SetWhitePointTueValue)"},
             kTuningsAreOfTheMachine[0], kTuningsAreOfTheMachine[1]);
  EXPECT_EQ(ReadKey(kRoot, kTunings + L"\\PresetMode\\P3Mode"),
            (RegistryValues{{L"Id", TextValue(L"")},
                            {L"Mode", DwordValue(2)},
                            {L"R", TextValue(L"0.500000")},
                            {L"G", TextValue(L"0.123457")},
                            {L"B", TextValue(L"1.000000")}}));
  notebook.ForgetRecords();
  WhitePointFineTueInfo read{.id = {}, .mode = P3Mode, .r = 7, .g = 8, .b = 9};
  EXPECT_EQ(library.GetWhitePointTueValue(&read), ResultOk);
  EXPECT_LOG({1, L"whitePoint:R:7, G:8, B:9(GetWhitePointTueValue)"});
  EXPECT_EQ(read.r, 0.5);
  EXPECT_EQ(read.g, 0.123457);
  EXPECT_EQ(read.b, 1);
}

// The exception leaves the library and reaches the host as what it is.
TEST_F(UserDesignScenario, ModesOutsideTheTableThrow) {
  for (const ColorFieldMode mode : {12, -1, 2147483647}) {
    WhitePointFineTueInfo tuning{.id = {}, .mode = mode, .r = 1, .g = 2, .b = 3};
    for (auto* const call : {library.GetWhitePointTueValue, library.SetWhitePointTueValue}) {
      try {
        call(&tuning);
        ADD_FAILURE() << "nothing thrown for " << mode;
      } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "invalid map<K, T> key");
      }
    }
  }
  EXPECT_LOGGED(1, L"whitePoint:R:1, G:2, B:3(GetWhitePointTueValue)");
  EXPECT_LOGGED(1, L"whitePoint:R:1, G:2, B:3(SetWhitePointTueValue)");
  EXPECT_FALSE(KeyExists(kRoot, kTunings));
  WhitePointFineTueInfo tuning{.id = {}, .mode = P3Mode, .r = 1, .g = 2, .b = 3};
  EXPECT_EQ(library.SetWhitePointTueValue(&tuning), ResultOk) << "the library goes on";
}

TEST_F(UserDesignScenario, FailedTunings) {
  WhitePointFineTueInfo tuning{.id = "Mine", .mode = USRDESIGN_MODE, .r = 0.5, .g = 0.6, .b = 0.7};
  EXPECT_EQ(library.GetWhitePointTueValue(&tuning), ResultFailed);
  EXPECT_LOGGED(3, L"Reg key:" + kTunings +
                       L"\\UserDesignMode\\Mine not exists!(RegisterHelper::RegReadValue)");
  EXPECT_LOGGED(3,
                L"Read reg whitePoint R value fail, mode: 11, id: "
                L"Mine(WhitePointFineTueReg::GetWhitePointTueValue)");
  notebook.FailCall("RegSetValueExW", 5, ERROR_ACCESS_DENIED);
  EXPECT_EQ(library.SetWhitePointTueValue(&tuning), ResultFailed);
  EXPECT_LOGGED(3, L"Write whitePoint b fail, b: 0.5(WhitePointFineTueReg::SetWhitePointTueValue)");
  EXPECT_EQ(library.GetWhitePointTueValue(&tuning), ResultFailed);
  EXPECT_LOGGED(3,
                L"Read reg whitePoint B value fail, mode: 11id: "
                L"Mine(WhitePointFineTueReg::GetWhitePointTueValue)");
}

TEST_F(UserDesignScenario, EditUserSerialNumReg) {
  UserDesignInfo info{};
  info.serialNum = 1.5;
  EXPECT_EQ(library.EditUserSerialNumReg(&info), ResultFailed);
  EXPECT_LOG({1, L"userDesignInfo:" + Shown(&info) + L"(EditUserSerialNumReg)"},
             kModesAreOfTheMachine[0], kModesAreOfTheMachine[1], kTuningsAreOfTheMachine[0],
             kTuningsAreOfTheMachine[1],
             {3,
              L"Edit user design serial num failed, id is "
              L"empty(UserDesignReg::EditUserSerialNumReg)"});
  EXPECT_FALSE(KeyExists(kRoot, kDesignTestKey));
  notebook.ForgetRecords();
  std::memset(info.id, 'i', sizeof info.id);  // without a terminator
  std::memset(info.modeName, 'm', sizeof info.modeName);
  EXPECT_EQ(library.EditUserSerialNumReg(&info), ResultOk);
  EXPECT_EQ(ReadKey(kRoot, kModes + L"\\" + std::wstring(100, L'i')),
            (RegistryValues{{L"SerialNum", TextValue(L"1.500000")}}));
  EXPECT_LOG({1, L"userDesignInfo:" + Shown(&info) + L"(EditUserSerialNumReg)"});
}

TEST_F(UserDesignScenario, DeleteUserDesignReg) {
  UserDesignInfo info{};
  std::strcpy(info.id, "Mine%1");
  EXPECT_EQ(library.EditUserSerialNumReg(&info), ResultOk);
  WhitePointFineTueInfo tuning{
      .id = "Mine%1", .mode = USRDESIGN_MODE, .r = 0.5, .g = 0.6, .b = 0.7};
  EXPECT_EQ(library.SetWhitePointTueValue(&tuning), ResultOk);
  notebook.ForgetRecords();
  EXPECT_EQ(library.DeleteUserDesignReg(&info), ResultOk);
  EXPECT_EQ(library.DeleteUserDesignReg(&info), ResultOk);
  const testsupport::LogLine entry{1, L"userDesignInfo:" + Shown(&info) + L"(DeleteUserDesignReg)"};
  EXPECT_LOG(entry, entry,
             {1, L"IsRegKeyExists false, path" + kModes +
                     L"\\Mine%1(UserDesignReg::DeleteUserDesignReg)"});
  EXPECT_FALSE(KeyExists(kRoot, kModes + L"\\Mine%1"));
  EXPECT_FALSE(KeyExists(kRoot, kTunings + L"\\UserDesignMode\\Mine%1"));
}

TEST_F(UserDesignScenario, GetUserRegHkey) {
  EXPECT_EQ(library.GetUserRegHkey(), 2);
  EXPECT_EQ(library.SetMultiUser(FEATURE_TYPE_USER_DESIGN, 1), ResultFailed);
  EXPECT_EQ(library.GetUserRegHkey(), 2);
  EXPECT_LOG({1, L"(GetUserRegHkey)"}, kModesAreOfTheMachine[0], kModesAreOfTheMachine[1],
             kTuningsAreOfTheMachine[0], kTuningsAreOfTheMachine[1],
             {1, L"hkey is HKEY_LOCAL_MACHINE(UserDesignReg::GetUserRegHkey)"},
             {1, L"(GetUserRegHkey)"},
             {1, L"hkey is HKEY_LOCAL_MACHINE(UserDesignReg::GetUserRegHkey)"});
}

}  // namespace
}  // namespace scenarios
