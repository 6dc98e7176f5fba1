#include <windows.h>

#include <wbemidl.h>

#include "WmiKit/WmiKit.h"

namespace NxSDK {

int BiosWmi::GetBiosInfo(WmiInputParams& /*input*/, WmiOutputParams& /*output*/) {
  return static_cast<int>(WBEM_E_NOT_AVAILABLE);
}

BiosEventMonitor::BiosEventMonitor() = default;

BiosEventMonitor::~BiosEventMonitor() = default;

int BiosEventMonitor::StartEventMonitor(void (*callback)(uint32_t eventId)) {
  return callback ? S_OK : E_POINTER;
}

int BiosEventMonitor::StopEventMonitor() { return S_OK; }

}  // namespace NxSDK
