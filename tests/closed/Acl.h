#pragma once

#include <windows.h>

#include <sddl.h>

#include <string>

#include "common/Owned.h"

namespace closedtests {

// An access list as text, "D:(A;;FA;;;BU)".
inline std::wstring DescribeAcl(PACL acl) {
  SECURITY_DESCRIPTOR descriptor;
  InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
  SetSecurityDescriptorDacl(&descriptor, TRUE, acl, FALSE);
  wchar_t* text = nullptr;
  ConvertSecurityDescriptorToStringSecurityDescriptorW(&descriptor, SDDL_REVISION_1,
                                                       DACL_SECURITY_INFORMATION, &text, nullptr);
  const closed::OwnedLocal<wchar_t> owner(text);
  return text ? text : L"";
}

}  // namespace closedtests
