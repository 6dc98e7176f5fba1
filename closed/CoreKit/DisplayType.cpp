#include "CoreKit/DisplayType.h"

namespace {

constexpr unsigned int kCannotBeTold = 0xFFFFFFFF;

bool IsInternal(DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY technology) {
  switch (technology) {
    case DISPLAYCONFIG_OUTPUT_TECHNOLOGY_INTERNAL:
    case DISPLAYCONFIG_OUTPUT_TECHNOLOGY_LVDS:
    case DISPLAYCONFIG_OUTPUT_TECHNOLOGY_DISPLAYPORT_EMBEDDED:
    case DISPLAYCONFIG_OUTPUT_TECHNOLOGY_UDI_EMBEDDED:
      return true;
    default:
      return false;
  }
}

}  // namespace

unsigned int ChooseDisplayType(const std::vector<DISPLAYCONFIG_PATH_INFO>& paths, bool onDesktop) {
  for (const DISPLAYCONFIG_PATH_INFO& path : paths) {
    if (IsInternal(path.targetInfo.outputTechnology)) {
      return static_cast<unsigned int>(path.targetInfo.outputTechnology);
    }
  }
  if (!paths.empty()) {
    return static_cast<unsigned int>(paths.front().targetInfo.outputTechnology);
  }
  return onDesktop ? static_cast<unsigned int>(DISPLAYCONFIG_OUTPUT_TECHNOLOGY_INTERNAL)
                   : kCannotBeTold;
}
