#include "common/UsersAccess.h"

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <array>

namespace closed {
namespace {

// SY the system, BA administrators, BU local users; GA generic all.
constexpr wchar_t kFullAccessForUsers[] = L"D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;BU)";

}  // namespace

SharedWithUsers::SharedWithUsers() : attributes_{sizeof attributes_, nullptr, FALSE} {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (ConvertStringSecurityDescriptorToSecurityDescriptorW(kFullAccessForUsers, SDDL_REVISION_1,
                                                           &descriptor, nullptr)) {
    descriptor_.reset(descriptor);
    attributes_.lpSecurityDescriptor = descriptor;
  }
}

OwnedLocal<ACL> MergeUsersAccess(PACL acl, DWORD inheritance) {
  std::array<uint8_t, SECURITY_MAX_SID_SIZE> users;
  DWORD size = users.size();
  if (!CreateWellKnownSid(WinBuiltinUsersSid, nullptr, users.data(), &size)) {
    return nullptr;
  }
  EXPLICIT_ACCESSW entry{};
  entry.grfAccessPermissions = FILE_ALL_ACCESS;
  entry.grfAccessMode = GRANT_ACCESS;
  entry.grfInheritance = inheritance;
  BuildTrusteeWithSidW(&entry.Trustee, users.data());
  PACL merged = nullptr;
  if (SetEntriesInAclW(1, &entry, acl, &merged) != ERROR_SUCCESS) {
    return nullptr;
  }
  return OwnedLocal<ACL>(merged);
}

}  // namespace closed
