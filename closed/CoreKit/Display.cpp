#include <windows.h>

#include <vector>

#include "CoreKit/CoreKit.h"
#include "CoreKit/DisplayType.h"

namespace CoreKit {
namespace {

// Empty when the configuration can't be read.
std::vector<DISPLAYCONFIG_PATH_INFO> ActivePaths() {
  std::vector<DISPLAYCONFIG_PATH_INFO> paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  LONG status;
  do {
    UINT32 pathCount = 0;
    UINT32 modeCount = 0;
    status = GetDisplayConfigBufferSizes(QDC_ONLY_ACTIVE_PATHS, &pathCount, &modeCount);
    if (status != ERROR_SUCCESS) {
      return {};
    }
    paths.resize(pathCount);
    modes.resize(modeCount);
    status = QueryDisplayConfig(QDC_ONLY_ACTIVE_PATHS, &pathCount, paths.data(), &modeCount,
                                modes.data(), nullptr);
    paths.resize(pathCount);
  } while (status == ERROR_INSUFFICIENT_BUFFER);  // the displays changed in between
  if (status != ERROR_SUCCESS) {
    return {};
  }
  return paths;
}

bool IsDisplayOnDesktop() {
  DISPLAY_DEVICEW adapter{};
  adapter.cb = sizeof adapter;
  for (DWORD i = 0; EnumDisplayDevicesW(nullptr, i, &adapter, 0); ++i) {
    if (adapter.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) {
      return true;
    }
  }
  return false;
}

}  // namespace

unsigned int GetDisplayType() { return ChooseDisplayType(ActivePaths(), IsDisplayOnDesktop()); }

}  // namespace CoreKit
