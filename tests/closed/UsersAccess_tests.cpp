#include "common/UsersAccess.h"

#include <windows.h>

#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>

#include <string>

#include "Acl.h"

using closedtests::DescribeAcl;

namespace {

closed::OwnedLocal<void> Parse(const wchar_t* text, PACL& acl) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ConvertStringSecurityDescriptorToSecurityDescriptorW(text, SDDL_REVISION_1, &descriptor, nullptr);
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  GetSecurityDescriptorDacl(descriptor, &present, &acl, &defaulted);
  return closed::OwnedLocal<void>(descriptor);
}

}  // namespace

TEST(UsersAccess, MergeUsersAccess_IntoNoList) {
  const auto merged = closed::MergeUsersAccess(nullptr, NO_INHERITANCE);
  ASSERT_TRUE(merged);
  EXPECT_EQ(DescribeAcl(merged.get()), L"D:(A;;FA;;;BU)");
}

TEST(UsersAccess, MergeUsersAccess_KeepsTheOthers) {
  PACL acl = nullptr;
  const auto owner = Parse(L"D:(A;;FA;;;SY)(A;;FR;;;WD)", acl);
  const auto merged = closed::MergeUsersAccess(acl, NO_INHERITANCE);
  ASSERT_TRUE(merged);
  const std::wstring text = DescribeAcl(merged.get());
  for (const wchar_t* entry : {L"(A;;FA;;;SY)", L"(A;;FR;;;WD)", L"(A;;FA;;;BU)"}) {
    EXPECT_NE(text.find(entry), std::wstring::npos) << entry;
  }
}

TEST(UsersAccess, MergeUsersAccess_IsInheritedFromADirectory) {
  const auto merged = closed::MergeUsersAccess(nullptr, SUB_CONTAINERS_AND_OBJECTS_INHERIT);
  ASSERT_TRUE(merged);
  EXPECT_EQ(DescribeAcl(merged.get()), L"D:(A;OICI;FA;;;BU)");
}

TEST(UsersAccess, SharedWithUsers_SystemAdministratorsAndUsers) {
  closed::SharedWithUsers security;
  EXPECT_EQ(security.Get()->nLength, sizeof(SECURITY_ATTRIBUTES));
  EXPECT_FALSE(security.Get()->bInheritHandle);
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  PACL acl = nullptr;
  ASSERT_TRUE(
      GetSecurityDescriptorDacl(security.Get()->lpSecurityDescriptor, &present, &acl, &defaulted));
  EXPECT_TRUE(present);
  EXPECT_EQ(DescribeAcl(acl), L"D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;BU)");
}
