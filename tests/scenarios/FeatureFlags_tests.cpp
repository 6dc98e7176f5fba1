// The feature flags through the shipped library: each library stands for a process.
#include <gtest/gtest.h>

#include <string>

#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/HostedLibrary.h"

namespace virtualnotebook {
namespace {

using testsupport::DwordValue;
using testsupport::ReadKey;
using testsupport::RegistryValues;

const std::wstring kTestKey = L"SOFTWARE\\Norvex\\Velora";
const std::wstring kInfo = kTestKey + L"\\FeatureInfo";
const std::wstring kFirstUse = kInfo + L"\\FirstUse";

class FeatureFlags : public testing::Test {
 protected:
  const testsupport::ScopedKey machine{HKEY_LOCAL_MACHINE, kTestKey};
  const testsupport::ScopedKey user{HKEY_CURRENT_USER, kTestKey};
};

TEST_F(FeatureFlags, EmptyRegistry) {
  const HostedLibrary library;
  EXPECT_EQ(library.IsFeatureSupport(FEATURE_TYPE_WHITEPOINT), 0);
  EXPECT_EQ(library.IsMultiUser(FEATURE_TYPE_WHITEPOINT), 0);
  EXPECT_EQ(library.IsDisplayerCheck(FEATURE_TYPE_WHITEPOINT), 0);
  EXPECT_EQ(library.IsFirstUse(FEATURE_TYPE_WHITEPOINT), 1);
  EXPECT_EQ(library.GetFrameWorkType(), 0);
  EXPECT_TRUE(testsupport::LogIs(library.notebook, {})) << "none of them logs at entry";
}

TEST_F(FeatureFlags, TheNextProcessSeesWhatThisOneSet) {
  {
    const HostedLibrary library;
    library.IsFeatureSupport(0);
    EXPECT_EQ(library.SetFeatureSupport(FEATURE_TYPE_ESD, 7), ResultOk);
    EXPECT_EQ(library.SetMultiUser(FEATURE_TYPE_EYE_PROTECT, 1), ResultOk);
    EXPECT_EQ(library.SetDisplayerCheck(FEATURE_TYPE_TEMPERATURE, 1), ResultOk);
    EXPECT_EQ(library.SetFirstUseState(FEATURE_TYPE_COLOR_FIELD, 0), ResultOk);
    EXPECT_EQ(library.SetFrameWorkType(3), ResultOk);
    EXPECT_EQ(library.IsFeatureSupport(FEATURE_TYPE_ESD), 7) << "as it was given";
    EXPECT_TRUE(testsupport::LogIs(library.notebook, {}));
  }
  const HostedLibrary library;
  EXPECT_EQ(library.IsFeatureSupport(FEATURE_TYPE_ESD), 1) << "reduced by the load";
  EXPECT_EQ(library.IsMultiUser(FEATURE_TYPE_EYE_PROTECT), 1);
  EXPECT_EQ(library.IsDisplayerCheck(FEATURE_TYPE_TEMPERATURE), 1);
  EXPECT_EQ(library.IsFirstUse(FEATURE_TYPE_COLOR_FIELD), 0);
  EXPECT_EQ(library.GetFrameWorkType(), 3);
}

TEST_F(FeatureFlags, AChangeByAnotherProcessIsNotSeen) {
  const HostedLibrary library;
  EXPECT_EQ(library.IsFeatureSupport(0), 0);
  testsupport::WriteValue(HKEY_LOCAL_MACHINE, kInfo + L"\\Support", L"WhitePoint", DwordValue(1));
  testsupport::WriteValue(HKEY_LOCAL_MACHINE, kInfo, L"FrameWorkType", DwordValue(2));
  EXPECT_EQ(library.IsFeatureSupport(0), 0);
  EXPECT_EQ(library.GetFrameWorkType(), 2) << "the one value that is read anew";
}

TEST_F(FeatureFlags, TypesOutsideTheRange) {
  const HostedLibrary library;
  EXPECT_EQ(library.IsMultiUser(9), 0);
  EXPECT_EQ(library.IsFeatureSupport(-1), 0);
  EXPECT_EQ(library.SetFeatureSupport(9, 1), ResultFailed);
  EXPECT_TRUE(testsupport::LogIs(
      library.notebook,
      {{3, L"invalid featureType:9, valid range:[0, 9)(FeatureManager::IsFeatureImpl)"},
       {3, L"invalid featureType:-1, valid range:[0, 9)(FeatureManager::IsFeatureImpl)"},
       {3, L"invalid featureType:9, valid range:[0, 9)(FeatureManager::SetFeatureImpl)"}}));
}

TEST_F(FeatureFlags, FeaturesWithoutFlags) {
  const HostedLibrary library;
  EXPECT_EQ(library.SetMultiUser(FEATURE_TYPE_USER_DESIGN, 1), ResultFailed);
  EXPECT_EQ(library.IsMultiUser(FEATURE_TYPE_USER_DESIGN), 0);
  EXPECT_EQ(library.SetMultiUser(FEATURE_TYPE_WHITEPOINT_FINE_TUE, 1), ResultFailed);
  EXPECT_EQ(library.IsMultiUser(FEATURE_TYPE_WHITEPOINT_FINE_TUE), 0);
  EXPECT_TRUE(testsupport::LogIs(library.notebook, {}));
}

// Where the first-use flag goes depends on whether anything was read before.
TEST_F(FeatureFlags, FirstUseOfAMultiUserFeature) {
  const RegistryValues cleared{{L"EyeProtect", DwordValue(0)}};
  testsupport::WriteValue(HKEY_LOCAL_MACHINE, kInfo + L"\\MultiUser", L"EyeProtect", DwordValue(1));
  {
    const HostedLibrary library;
    EXPECT_EQ(library.SetFirstUseState(FEATURE_TYPE_EYE_PROTECT, 0), ResultOk);
    EXPECT_EQ(ReadKey(HKEY_LOCAL_MACHINE, kFirstUse), cleared);
    EXPECT_EQ(ReadKey(HKEY_CURRENT_USER, kFirstUse), RegistryValues());
    EXPECT_EQ(library.IsFirstUse(FEATURE_TYPE_EYE_PROTECT), 1) << "the load asks the user's hive";
  }
  const HostedLibrary library;
  EXPECT_EQ(library.IsMultiUser(FEATURE_TYPE_EYE_PROTECT), 1);
  EXPECT_EQ(library.SetFirstUseState(FEATURE_TYPE_EYE_PROTECT, 0), ResultOk);
  EXPECT_EQ(ReadKey(HKEY_CURRENT_USER, kFirstUse), cleared);
  EXPECT_EQ(library.IsFirstUse(FEATURE_TYPE_EYE_PROTECT), 0);
}

TEST_F(FeatureFlags, TheRegistryRefuses) {
  HostedLibrary library;
  EXPECT_EQ(library.IsFeatureSupport(0), 0);
  library.notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(library.SetFeatureSupport(0, 1), ResultFailed);
  EXPECT_EQ(library.SetFrameWorkType(1), ResultFailed);
  EXPECT_TRUE(testsupport::LogIs(
      library.notebook,
      {{3, L"RegCreateKeyEx:" + kInfo + L"\\Support failed!(RegisterHelper::RegWriteValue)"},
       {3, L"RegCreateKeyEx:" + kInfo + L" failed!(RegisterHelper::RegWriteValue)"}}));
  EXPECT_EQ(library.IsFeatureSupport(0), 0);
}

}  // namespace
}  // namespace virtualnotebook
