#include "virtualnotebook/probe/Probe.h"

#include <exception>

LSTATUS ProbeOpenKey(const wchar_t* path) {
  HKEY key = nullptr;
  const LSTATUS status = RegOpenKeyW(HKEY_CURRENT_USER, path, &key);
  if (status == ERROR_SUCCESS) {
    RegCloseKey(key);
  }
  return status;
}

LSTATUS ProbeOpenKeyGuarded(const wchar_t* path, char* what, int size) {
  try {
    return ProbeOpenKey(path);
  } catch (const std::exception& exception) {
    lstrcpynA(what, exception.what(), size);
    return -1;
  }
}
