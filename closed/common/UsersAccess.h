#pragma once

#include <windows.h>

#include "common/Owned.h"

// Access for all local users: the service and the settings application run as different users.
namespace closed {

// Security of a new object that every local user's processes share: full access for the system,
// administrators and local users.
class SharedWithUsers {
 public:
  SharedWithUsers();
  SharedWithUsers(const SharedWithUsers&) = delete;
  SharedWithUsers& operator=(const SharedWithUsers&) = delete;

  // As the system's calls want it; they only read it.
  SECURITY_ATTRIBUTES* Get() const { return const_cast<SECURITY_ATTRIBUTES*>(&attributes_); }

 private:
  OwnedLocal<void> descriptor_;
  SECURITY_ATTRIBUTES attributes_;
};

// Merges full access for local users into acl (null: an empty list). inheritance: flags of the new
// entry, NO_INHERITANCE for a file. Gives null when the system refuses.
OwnedLocal<ACL> MergeUsersAccess(PACL acl, DWORD inheritance);

}  // namespace closed
