#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <icm.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::ElementsAre;

constexpr auto kUser = WCS_PROFILE_MANAGEMENT_SCOPE_CURRENT_USER;
constexpr auto kEveryone = WCS_PROFILE_MANAGEMENT_SCOPE_SYSTEM_WIDE;
constexpr wchar_t kDevice[] = L"MONITOR\\NVX1234\\{x}\\0001";

class ColorSystem : public testsupport::NotebookTest {
 protected:
  BOOL Query(DWORD size = MAX_PATH * sizeof(wchar_t), WCS_PROFILE_MANAGEMENT_SCOPE scope = kUser) {
    SetLastError(0xdeadbeef);
    return WcsGetDefaultColorProfile(scope, kDevice, CPT_ICC, CPST_RGB_WORKING_SPACE, 0, size,
                                     name_);
  }

  wchar_t name_[MAX_PATH] = L"untouched";
};

TEST_F(ColorSystem, NoProfile) {
  EXPECT_FALSE(Query());
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
  EXPECT_STREQ(name_, L"untouched");
}

TEST_F(ColorSystem, TheFirstProfileIsTheDefault) {
  notebook.profiles[kDevice] = {L"first.icc", L"second.icc"};
  EXPECT_TRUE(Query());
  EXPECT_STREQ(name_, L"first.icc");
  EXPECT_FALSE(Query(MAX_PATH, kEveryone)) << "they are the user's";
  notebook.systemProfiles[kDevice] = {L"third.icc"};
  EXPECT_TRUE(Query(MAX_PATH, kEveryone));
  EXPECT_STREQ(name_, L"third.icc");
}

TEST_F(ColorSystem, TheNameNeedsItsRoom) {
  notebook.profiles[kDevice] = {L"P3.icc"};
  EXPECT_FALSE(Query(13));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_STREQ(name_, L"untouched");
  EXPECT_TRUE(Query(14));
  EXPECT_STREQ(name_, L"P3.icc");
}

// --- All profiles of a device, in either scope ---

class ProfileList : public ColorSystem {
 protected:
  // File names one behind the other, each with its zero, and a zero at the end.
  std::wstring List(WCS_PROFILE_MANAGEMENT_SCOPE scope) {
    DWORD size = 0;
    EXPECT_TRUE(WcsEnumColorProfilesSize(scope, &wanted_, &size));
    std::wstring texts(size / sizeof(wchar_t), L'?');
    EXPECT_TRUE(WcsEnumColorProfiles(scope, &wanted_, reinterpret_cast<BYTE*>(texts.data()), size,
                                     &count_));
    return texts;
  }

  wchar_t device_[std::size(kDevice)] = {};

  ENUMTYPEW wanted_{};
  DWORD count_ = 99;

 private:
  void SetUp() override {
    ColorSystem::SetUp();
    std::ranges::copy(kDevice, device_);
    wanted_.dwSize = sizeof wanted_;
    wanted_.dwVersion = ENUM_TYPE_VERSION;
    wanted_.dwFields = ET_DEVICENAME;
    wanted_.pDeviceName = device_;
  }
};

TEST_F(ProfileList, EachScopeHasItsOwn) {
  notebook.profiles[kDevice] = {L"C:\\dir\\one.icc", L"two.icc"};
  notebook.systemProfiles[kDevice] = {L"three.icc"};
  EXPECT_EQ(List(kUser), std::wstring(L"one.icc\0two.icc\0\0", 17));
  EXPECT_EQ(count_, 2u);
  EXPECT_EQ(List(kEveryone), std::wstring(L"three.icc\0\0", 11));
  EXPECT_EQ(count_, 1u);
}

TEST_F(ProfileList, NoProfile) {
  EXPECT_EQ(List(kUser), std::wstring(1, L'\0'));
  EXPECT_EQ(count_, 0u);
}

TEST_F(ProfileList, TheTextsNeedTheirRoom) {
  notebook.profiles[kDevice] = {L"P3.icc"};
  wchar_t texts[8] = L"";
  EXPECT_FALSE(WcsEnumColorProfiles(kUser, &wanted_, reinterpret_cast<BYTE*>(texts), 15, &count_));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_TRUE(WcsEnumColorProfiles(kUser, &wanted_, reinterpret_cast<BYTE*>(texts), 16, nullptr));
}

TEST_F(ProfileList, RefusesWhatNamesNoDevice) {
  DWORD size = 99;
  BYTE texts[8];
  const auto refused = [&](ENUMTYPEW* wanted) {
    SetLastError(0xdeadbeef);
    const bool first = !WcsEnumColorProfilesSize(kUser, wanted, &size) &&
                       GetLastError() == DWORD{ERROR_INVALID_PARAMETER};
    SetLastError(0xdeadbeef);
    return first && !WcsEnumColorProfiles(kUser, wanted, texts, sizeof texts, &count_) &&
           GetLastError() == DWORD{ERROR_INVALID_PARAMETER};
  };
  EXPECT_TRUE(refused(nullptr));
  wanted_.pDeviceName = nullptr;
  EXPECT_TRUE(refused(&wanted_));
  wanted_.pDeviceName = device_;
  wanted_.dwFields = ET_CLASS;
  EXPECT_TRUE(refused(&wanted_));
  EXPECT_EQ(size, 99u);
  EXPECT_EQ(count_, 99u);
}

TEST_F(ColorSystem, PerUserProfiles_AreAsTheNotebookSays) {
  constexpr DWORD kMonitors = 0x6D6E7472;  // "mntr"
  BOOL perUser = 99;
  for (const bool isOn : {true, false}) {
    notebook.perUserProfiles = isOn;
    EXPECT_TRUE(WcsGetUsePerUserProfiles(kDevice, kMonitors, &perUser));
    EXPECT_EQ(perUser, isOn ? TRUE : FALSE);
  }
  perUser = 99;
  EXPECT_FALSE(WcsGetUsePerUserProfiles(L"", kMonitors, &perUser));
  EXPECT_FALSE(WcsGetUsePerUserProfiles(kDevice, 0x70727472, &perUser)) << "printers";
  EXPECT_FALSE(WcsGetUsePerUserProfiles(kDevice, kMonitors, nullptr));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(perUser, 99);
}

// --- Changing them ---

TEST_F(ColorSystem, Associate_KeepsTheFileNameAndMakesItTheDefault) {
  EXPECT_TRUE(WcsAssociateColorProfileWithDevice(kUser, L"C:\\dir\\one.icc", kDevice));
  EXPECT_TRUE(WcsAssociateColorProfileWithDevice(kUser, L"C:/dir/two.icc", kDevice));
  EXPECT_THAT(notebook.profiles[kDevice], ElementsAre(L"two.icc", L"one.icc"));
  EXPECT_TRUE(WcsAssociateColorProfileWithDevice(kUser, L"one.icc", kDevice));
  EXPECT_THAT(notebook.profiles[kDevice], ElementsAre(L"one.icc", L"two.icc"));
  EXPECT_TRUE(Query());
  EXPECT_STREQ(name_, L"one.icc");
}

TEST_F(ColorSystem, Associate_RefusesEmptyNames) {
  EXPECT_FALSE(WcsAssociateColorProfileWithDevice(kUser, L"", kDevice));
  EXPECT_FALSE(WcsAssociateColorProfileWithDevice(kUser, nullptr, kDevice));
  EXPECT_FALSE(WcsAssociateColorProfileWithDevice(kUser, L"one.icc", L""));
  EXPECT_FALSE(WcsAssociateColorProfileWithDevice(kEveryone, L"one.icc", kDevice));
  EXPECT_TRUE(notebook.profiles.empty());
}

TEST_F(ColorSystem, Disassociate_TakesTheProfileAway) {
  notebook.profiles[kDevice] = {L"one.icc", L"two.icc"};
  EXPECT_TRUE(WcsDisassociateColorProfileFromDevice(kUser, L"C:\\dir\\one.icc", kDevice));
  EXPECT_THAT(notebook.profiles[kDevice], ElementsAre(L"two.icc"));
}

TEST_F(ColorSystem, Disassociate_OfAProfileThatIsNotAssociated) {
  notebook.profiles[kDevice] = {L"one.icc"};
  for (const wchar_t* name : {L"two.icc", L""}) {
    SetLastError(0xdeadbeef);
    EXPECT_FALSE(WcsDisassociateColorProfileFromDevice(kUser, name, kDevice));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
  }
  EXPECT_FALSE(WcsDisassociateColorProfileFromDevice(kUser, L"one.icc", L"another device"));
  EXPECT_THAT(notebook.profiles[kDevice], ElementsAre(L"one.icc"));
}

}  // namespace
}  // namespace virtualnotebook
