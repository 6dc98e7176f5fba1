#pragma once

#include <windows.h>

#include <vector>

namespace velora {

// Extends the desktop over all displays and keeps the first display path as it was. It logs through
// the maker's second logger.
class MonitorExtendMode {
 public:
  // Blocks for three seconds. False also where the switch was made but the former first path was
  // not written back: the switch stays.
  bool SetMonitorExtendMode() const;

  // The active paths and their modes. The lists keep the sizes that the system announced.
  bool GetDisplayConfigData(std::vector<DISPLAYCONFIG_PATH_INFO>& pathInfos,
                            std::vector<DISPLAYCONFIG_MODE_INFO>& modeInfos) const;
};

}  // namespace velora
