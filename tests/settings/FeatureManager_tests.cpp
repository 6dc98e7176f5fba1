#include "settings/FeatureManager.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>

#include "support/NotebookTest.h"
#include "support/Registry.h"

namespace velora {
namespace {

using testsupport::DwordValue;
using testsupport::KeyExists;
using testsupport::LogLine;
using testsupport::ReadKey;
using testsupport::RegistryValues;

const std::wstring kTestKey = L"SOFTWARE\\Norvex\\Velora";
const std::wstring kInfo = L"SOFTWARE\\Norvex\\Velora\\FeatureInfo";
const std::wstring kSupport = kInfo + L"\\Support";
const std::wstring kMultiUser = kInfo + L"\\MultiUser";
const std::wstring kLcdCheck = kInfo + L"\\LcdCheck";
const std::wstring kFirstUse = kInfo + L"\\FirstUse";

const wchar_t* const kFeatureNames[] = {L"WhitePoint", L"EyeProtect",   L"Temperature",
                                        L"ColorField", L"NaturalColor", L"DpInOut",
                                        L"Esd"};

// Lays bare what readers and writers have in common.
class Flags : public FeatureManager {
 public:
  using FeatureManager::FlagTable;
  using FeatureManager::IsFeatureImpl;
  using FeatureManager::SetFeatureImpl;
};

class FeatureManagerTest : public testsupport::NotebookTest {
 protected:
  void Store(const std::wstring& key, const std::wstring& name, uint32_t value) {
    testsupport::WriteValue(HKEY_LOCAL_MACHINE, key, name, DwordValue(value));
  }
  void StoreOfUser(const std::wstring& key, const std::wstring& name, uint32_t value) {
    testsupport::WriteValue(HKEY_CURRENT_USER, key, name, DwordValue(value));
  }

  const testsupport::ScopedKey machine{HKEY_LOCAL_MACHINE, kTestKey};
  const testsupport::ScopedKey user{HKEY_CURRENT_USER, kTestKey};
  Flags flags;  // not loaded yet
};

TEST_F(FeatureManagerTest, EmptyRegistryGivesTheDefaults) {
  for (int type = 0; type < 7; ++type) {
    EXPECT_EQ(flags.IsFeatureSupport(type), 0);
    EXPECT_EQ(flags.IsMultiUser(type), 0);
    EXPECT_EQ(flags.IsDisplayerCheck(type), 0);
    EXPECT_EQ(flags.IsFirstUse(type), 1);
  }
  EXPECT_LOG();
  EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, kTestKey)) << "nothing is written";
}

// Each flag has its key and each feature its value.
TEST_F(FeatureManagerTest, EachFlagOfEachFeature) {
  using Reader = int (FeatureManager::*)(FeatureType);
  const std::map<std::wstring, Reader> readers = {
      {kSupport, &FeatureManager::IsFeatureSupport},
      {kMultiUser, &FeatureManager::IsMultiUser},
      {kLcdCheck, &FeatureManager::IsDisplayerCheck},
  };
  for (int stored = 0; stored < 7; ++stored) {
    for (const auto& [storedKey, storedReader] : readers) {
      const testsupport::ScopedKey key(HKEY_LOCAL_MACHINE, kTestKey);
      Store(storedKey, kFeatureNames[stored], 1);
      FeatureManager manager;
      for (int type = 0; type < 9; ++type) {
        for (const auto& [flagKey, reader] : readers) {
          EXPECT_EQ((manager.*reader)(type), type == stored && flagKey == storedKey ? 1 : 0);
        }
      }
    }
    const testsupport::ScopedKey key(HKEY_LOCAL_MACHINE, kTestKey);
    Store(kFirstUse, kFeatureNames[stored], 0);
    FeatureManager manager;
    for (int type = 0; type < 7; ++type) {
      EXPECT_EQ(manager.IsFirstUse(type), type == stored ? 0 : 1);
    }
  }
}

TEST_F(FeatureManagerTest, ALoadedFlagIsZeroOrOne) {
  Store(kSupport, L"WhitePoint", 7);
  Store(kMultiUser, L"WhitePoint", 0x80000000);
  Store(kLcdCheck, L"WhitePoint", 0xFFFFFFFF);
  StoreOfUser(kFirstUse, L"WhitePoint", 2);
  EXPECT_EQ(flags.IsFeatureSupport(0), 1);
  EXPECT_EQ(flags.IsMultiUser(0), 1);
  EXPECT_EQ(flags.IsDisplayerCheck(0), 1);
  EXPECT_EQ(flags.IsFirstUse(0), 1);
}

TEST_F(FeatureManagerTest, ASetFlagIsWhatWasGiven) {
  EXPECT_EQ(flags.IsFeatureSupport(0), 0);
  EXPECT_EQ(flags.SetFeatureSupport(0, 7), ResultOk);
  EXPECT_EQ(flags.IsFeatureSupport(0), 7);
  EXPECT_EQ(flags.SetFeatureSupport(0, -1), ResultOk);
  EXPECT_EQ(flags.IsFeatureSupport(0), -1);
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kSupport),
            (RegistryValues{{L"WhitePoint", DwordValue(0xFFFFFFFF)}}));
  Flags ofNextProcess;
  EXPECT_EQ(ofNextProcess.IsFeatureSupport(0), 1);
}

// The writers do not load: the first reader's load replaces what they put into the table.
TEST_F(FeatureManagerTest, AFlagSetAheadOfTheLoadIsLoadedAgain) {
  EXPECT_EQ(flags.SetFeatureSupport(0, 7), ResultOk);
  EXPECT_EQ(notebook.CountCalls("RegQueryValueExW"), 0u);
  EXPECT_EQ(flags.IsFeatureSupport(0), 1);
}

TEST_F(FeatureManagerTest, EachWriterHasItsKey) {
  flags.IsFeatureSupport(0);
  EXPECT_EQ(flags.SetFeatureSupport(1, 2), ResultOk);
  EXPECT_EQ(flags.SetMultiUser(2, 3), ResultOk);
  EXPECT_EQ(flags.SetDisplayerCheck(3, 4), ResultOk);
  EXPECT_EQ(flags.SetFirstUseState(4, 5), ResultOk);
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kSupport),
            (RegistryValues{{L"EyeProtect", DwordValue(2)}}));
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kMultiUser),
            (RegistryValues{{L"Temperature", DwordValue(3)}}));
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kLcdCheck),
            (RegistryValues{{L"ColorField", DwordValue(4)}}));
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kFirstUse),
            (RegistryValues{{L"NaturalColor", DwordValue(5)}}));
  EXPECT_EQ(flags.IsFeatureSupport(1), 2);
  EXPECT_EQ(flags.IsMultiUser(2), 3);
  EXPECT_EQ(flags.IsDisplayerCheck(3), 4);
  EXPECT_EQ(flags.IsFirstUse(4), 5);
  EXPECT_LOG();
}

TEST_F(FeatureManagerTest, LoadsOncePerProcess) {
  EXPECT_EQ(flags.IsFeatureSupport(0), 0);
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyW"), 28u) << "four flags of seven features";
  Store(kSupport, L"WhitePoint", 1);
  EXPECT_EQ(flags.IsFeatureSupport(0), 0);
  EXPECT_EQ(flags.IsFirstUse(6), 1);
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyW"), 28u);
}

TEST_F(FeatureManagerTest, LoadsFeatureByFeature) {
  flags.IsFeatureSupport(0);
  std::vector<std::wstring> opened;
  for (const auto& call : notebook.calls) {
    if (call.function == "RegOpenKeyW") {
      opened.push_back(call.arguments[1]);
    }
  }
  std::vector<std::wstring> expected;
  for (int i = 0; i < 7; ++i) {
    expected.insert(expected.end(), {kSupport, kMultiUser, kLcdCheck, kFirstUse});
  }
  EXPECT_EQ(opened, expected);
}

TEST_F(FeatureManagerTest, FirstUseOfAMultiUserFeatureIsTheUsers) {
  Store(kMultiUser, L"EyeProtect", 5);
  Store(kFirstUse, L"EyeProtect", 1);
  StoreOfUser(kFirstUse, L"EyeProtect", 0);
  Store(kFirstUse, L"Temperature", 0);
  StoreOfUser(kFirstUse, L"Temperature", 1);
  EXPECT_EQ(flags.IsFirstUse(1), 0);
  EXPECT_EQ(flags.IsFirstUse(2), 0);
}

TEST_F(FeatureManagerTest, InvalidTypeInAReader) {
  const auto line = [](const wchar_t* type) {
    return LogLine{3, std::wstring(L"invalid featureType:") + type +
                          L", valid range:[0, 9)(FeatureManager::IsFeatureImpl)"};
  };
  EXPECT_EQ(flags.IsFeatureSupport(9), 0);
  EXPECT_EQ(flags.IsMultiUser(-1), 0);
  EXPECT_EQ(flags.IsDisplayerCheck(10), 0);
  EXPECT_EQ(flags.IsFirstUse(-2147483647 - 1), 0);
  EXPECT_LOG(line(L"9"), line(L"-1"), line(L"10"), line(L"-2147483648"));
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyW"), 0u) << "it does not load";
}

TEST_F(FeatureManagerTest, InvalidTypeInAWriter) {
  const auto line = [](const wchar_t* type) {
    return LogLine{3, std::wstring(L"invalid featureType:") + type +
                          L", valid range:[0, 9)(FeatureManager::SetFeatureImpl)"};
  };
  EXPECT_EQ(flags.SetFeatureSupport(9, 1), ResultFailed);
  EXPECT_EQ(flags.SetMultiUser(-1, 1), ResultFailed);
  EXPECT_EQ(flags.SetDisplayerCheck(2147483647, 1), ResultFailed);
  EXPECT_EQ(flags.SetFirstUseState(9, 1), ResultFailed);
  EXPECT_EQ(flags.SetFirstUseState(-1, 1), ResultFailed);
  EXPECT_LOG(line(L"9"), line(L"-1"), line(L"2147483647"), line(L"9"), line(L"-1"));
  EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, kTestKey));
}

TEST_F(FeatureManagerTest, NoTable) {
  EXPECT_EQ(flags.IsFeatureImpl(0, nullptr), 0);
  EXPECT_EQ(flags.SetFeatureImpl(HKEY_LOCAL_MACHINE, 0, 1, nullptr, kSupport), ResultFailed);
  EXPECT_LOG({3, L"table null(FeatureManager::IsFeatureImpl)"},
             {3, L"table null(FeatureManager::SetFeatureImpl)"});
  EXPECT_EQ(flags.IsFeatureImpl(9, nullptr), 0);
  EXPECT_LOGGED(3, L"table null(FeatureManager::IsFeatureImpl)");
  EXPECT_NOT_LOGGED(L"invalid featureType");
}

TEST_F(FeatureManagerTest, FeaturesWithoutFlags) {
  for (const int type : {7, 8}) {
    EXPECT_EQ(flags.SetFeatureSupport(type, 1), ResultFailed);
    EXPECT_EQ(flags.SetMultiUser(type, 1), ResultFailed);
    EXPECT_EQ(flags.SetDisplayerCheck(type, 1), ResultFailed);
    EXPECT_EQ(flags.SetFirstUseState(type, 1), ResultFailed);
    EXPECT_EQ(flags.IsFeatureSupport(type), 0);
    EXPECT_EQ(flags.IsMultiUser(type), 0);
    EXPECT_EQ(flags.IsDisplayerCheck(type), 0);
    EXPECT_EQ(flags.IsFirstUse(type), 0);
  }
  EXPECT_LOG();
  EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, kTestKey));
}

TEST_F(FeatureManagerTest, AFailedWriteLeavesTheTable) {
  EXPECT_EQ(flags.IsFeatureSupport(0), 0);
  EXPECT_EQ(flags.SetFeatureSupport(0, 3), ResultOk);
  notebook.FailCall("RegSetValueExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(flags.SetFeatureSupport(0, 5), ResultFailed);
  notebook.FailCall("RegCreateKeyExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(flags.SetFeatureSupport(0, 5), ResultFailed);
  EXPECT_LOG({3, L"Write key:" + kSupport +
                     L", itemName:WhitePoint, value:5 failed!(RegisterHelper::RegWriteValue)"},
             {3, L"RegCreateKeyEx:" + kSupport + L" failed!(RegisterHelper::RegWriteValue)"});
  EXPECT_EQ(flags.IsFeatureSupport(0), 3);
}

// The root goes by the flags as they stand, and nothing has loaded them yet.
TEST_F(FeatureManagerTest, SetFirstUseState_AheadOfTheLoadGoesToTheMachine) {
  Store(kMultiUser, L"EyeProtect", 1);
  EXPECT_EQ(flags.SetFirstUseState(1, 0), ResultOk);
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kFirstUse),
            (RegistryValues{{L"EyeProtect", DwordValue(0)}}));
  EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, kFirstUse));
}

TEST_F(FeatureManagerTest, SetFirstUseState_AfterTheLoadGoesToTheUser) {
  Store(kMultiUser, L"EyeProtect", 1);
  EXPECT_EQ(flags.IsMultiUser(1), 1);
  EXPECT_EQ(flags.SetFirstUseState(1, 0), ResultOk);
  EXPECT_EQ(ReadKey(HKEY_CURRENT_USER, kFirstUse),
            (RegistryValues{{L"EyeProtect", DwordValue(0)}}));
  EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, kFirstUse));
}

// Only the flag value 1 leads to the user's hive.
TEST_F(FeatureManagerTest, SetFirstUseState_GoesByTheFlagAsItWasSet) {
  flags.IsMultiUser(0);
  flags.SetMultiUser(0, 2);
  flags.SetFirstUseState(0, 0);
  EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, kFirstUse));
  flags.SetMultiUser(0, 1);
  flags.SetFirstUseState(0, 0);
  EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, kFirstUse));
}

TEST_F(FeatureManagerTest, FrameWorkType_IsReadAnewEachTime) {
  EXPECT_EQ(flags.GetFrameWorkType(), 0);
  Store(kInfo, L"FrameWorkType", 4);
  EXPECT_EQ(flags.GetFrameWorkType(), 4);
  EXPECT_EQ(flags.SetFrameWorkType(-6), ResultOk);
  EXPECT_EQ(flags.GetFrameWorkType(), -6);
  EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kInfo),
            (RegistryValues{{L"FrameWorkType", DwordValue(0xFFFFFFFA)}}));
  EXPECT_LOG();
}

TEST_F(FeatureManagerTest, FrameWorkType_FailedWrite) {
  notebook.FailCall("RegSetValueExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(flags.SetFrameWorkType(2), ResultFailed);
  EXPECT_LOG({3, L"Write key:" + kInfo +
                     L", itemName:FrameWorkType, value:2 failed!(RegisterHelper::RegWriteValue)"});
}

TEST_F(FeatureManagerTest, GetInstance_IsOneObject) {
  EXPECT_EQ(&FeatureManager::GetInstance(), &FeatureManager::GetInstance());
}

}  // namespace
}  // namespace velora
