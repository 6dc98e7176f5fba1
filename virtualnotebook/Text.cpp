#include <array>

#include "virtualnotebook/StandIn.h"

namespace virtualnotebook {

std::wstring WideText(const std::string& text) {
  std::wstring wide;
  for (const char c : text) {
    wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
  }
  return wide;
}

std::wstring KeyText(HKEY key) {
  struct Root {
    HKEY key;
    const wchar_t* name;
  };
  static const std::array<Root, 4> kRoots = {{{HKEY_CLASSES_ROOT, L"HKEY_CLASSES_ROOT"},
                                              {HKEY_CURRENT_USER, L"HKEY_CURRENT_USER"},
                                              {HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE"},
                                              {HKEY_USERS, L"HKEY_USERS"}}};
  for (const Root& root : kRoots) {
    if (root.key == key) {
      return root.name;
    }
  }
  return key == nullptr ? L"null" : L"pointer";
}

}  // namespace virtualnotebook
