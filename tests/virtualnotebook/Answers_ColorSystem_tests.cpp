#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <icm.h>

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
  EXPECT_FALSE(Query(MAX_PATH, kEveryone)) << "only the user has associations";
}

TEST_F(ColorSystem, TheNameNeedsItsRoom) {
  notebook.profiles[kDevice] = {L"P3.icc"};
  EXPECT_FALSE(Query(13));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_STREQ(name_, L"untouched");
  EXPECT_TRUE(Query(14));
  EXPECT_STREQ(name_, L"P3.icc");
}

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
