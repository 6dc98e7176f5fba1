// What concerns the machine around the panel.
#include "frame/Log.h"
#include "periphery/MonitorExtendMode.h"
#include "settings/Singleton.h"
#include "velora/VeloraCtlApi.h"

using velora::FunctionLog;
using velora::MonitorExtendMode;
using velora::Singleton;

bool SetMonitorExtendMode(void) {
  FunctionLog(__func__).Info();
  return Singleton<MonitorExtendMode>::GetInstance().SetMonitorExtendMode();
}
