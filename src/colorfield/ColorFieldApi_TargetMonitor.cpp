// Which monitor profiles are associated with.
#include "colorfield/ColorFieldApi.h"

#include <algorithm>

#include "WmiKit/WmiKit.h"
#include "frame/BoundedCopy.h"
#include "frame/Constants.h"
#include "frame/Log.h"

namespace velora {
namespace {

// D3DKMDT_VOT_INTERNAL: the connection of a built-in panel.
constexpr wchar_t kInternalPanelQuery[] =
    L"SELECT * FROM WmiMonitorConnectionParams WHERE VideoOutputTechnology=2147483648";

// A model code is three letters and four hexadecimal digits (the EDID's product id).
constexpr size_t kModelCodeLength = 7;

bool Contains(const std::wstring& text, const std::wstring& part) {
  return text.find(part) != std::wstring::npos;
}

// Calls take(record) for each device below parent (null: the adapters themselves).
template <typename Take>
void ForEachDisplayDevice(const wchar_t* parent, Take take) {
  for (DWORD index = 0;; ++index) {
    DISPLAY_DEVICEW device{};
    device.cb = sizeof device;
    if (!EnumDisplayDevicesW(parent, index, &device, 0)) {
      return;
    }
    take(device);
  }
}

}  // namespace

ResultT ColorFieldApi::GetTargetMonitorName(std::wstring& name) {
  constexpr FunctionLog log("ColorFieldApi::GetTargetMonitorName");
  std::wstring modelName;
  if (GetTargetMonitorNameByWmi(modelName) != ResultOk) {
    log.Warn(L"GetTargetMonitorNameByWmi Failed!");
  }
  // Not cleared before: a run that sees no primary monitor keeps the one of an earlier run.
  EnumDisplayMonitors(nullptr, nullptr, StorePrimaryDisplayName, reinterpret_cast<LPARAM>(this));
  if (primaryDisplayName_.empty()) {
    return ResultFailed;
  }
  std::vector<MonitorInfo> monitors;
  ForEachDisplayDevice(nullptr, [&](const DISPLAY_DEVICEW& adapter) {
    EnumerateCurrentAdapters(adapter, monitors);
  });
  targetMonitorInfo_ = ChooseMonitor(monitors, modelName);
  name = targetMonitorInfo_.deviceID;
  log.Info(L"monitorName is ", name);
  return ResultOk;
}

BOOL CALLBACK ColorFieldApi::StorePrimaryDisplayName(HMONITOR monitor, HDC, RECT*, LPARAM self) {
  MONITORINFOEXW info{};
  info.cbSize = sizeof info;
  GetMonitorInfoW(monitor, &info);
  // Equal, not a bit among others: a primary monitor with further flags is passed over.
  if (info.dwFlags != MONITORINFOF_PRIMARY) {
    return TRUE;
  }
  reinterpret_cast<ColorFieldApi*>(self)->primaryDisplayName_ = info.szDevice;
  return FALSE;
}

// The built-in panel wins over the primary monitor, and only a machine that drives external
// monitors looks for the maker's own. Without any of them the choice is all empty.
MonitorInfo ColorFieldApi::ChooseMonitor(const std::vector<MonitorInfo>& monitors,
                                         const std::wstring& modelName) const {
  std::vector<const MonitorInfo*> norvexMonitors;
  std::vector<const MonitorInfo*> internalMonitors;
  const MonitorInfo* primaryMonitor = nullptr;
  for (const MonitorInfo& monitor : monitors) {
    if (IsNorvexMonitorName(monitor.deviceString)) {
      norvexMonitors.push_back(&monitor);
    }
    // Without a model name every monitor counts as internal.
    if (Contains(monitor.deviceID, modelName)) {
      internalMonitors.push_back(&monitor);
    }
    if (Contains(monitor.deviceName, primaryDisplayName_)) {
      primaryMonitor = &monitor;
    }
  }
  if (internalMonitors.size() == 1) {
    return *internalMonitors.front();
  }
  if (setType_ == SetTypeDdcci && norvexMonitors.size() == 1) {
    return *norvexMonitors.front();
  }
  return primaryMonitor != nullptr ? *primaryMonitor : MonitorInfo();
}

ResultT ColorFieldApi::GetTargetMonitorNameByWmi(std::wstring& name) const {
  constexpr FunctionLog log("ColorFieldApi::GetTargetMonitorNameByWmi");
  std::vector<std::wstring> instanceNames;
  const int status = NxSDK::WmiQuery(kWmiWmi).ExcuteQuery(kInternalPanelQuery, L"InstanceName",
                                                          instanceNames, true);
  if (status != 0) {
    log.Error(L"QueryWmiNamespaceProperty WmiMonitorConnectionParams error.");
    return ResultFailed;
  }
  const std::wstring& instanceName = instanceNames.front();
  log.Info(L"instanceName is ", instanceName);
  name.clear();
  const size_t first = instanceName.find(L'\\');
  if (first != std::wstring::npos) {
    const size_t second = instanceName.find(L'\\', first + 1);
    name = instanceName.substr(first + 1, second - first - 1);
  }
  log.Info(L"monitorDriverName is ", name);
  return ResultOk;
}

void ColorFieldApi::EnumerateCurrentAdapters(const DISPLAY_DEVICEW& adapter,
                                             std::vector<MonitorInfo>& monitors) const {
  constexpr FunctionLog log("ColorFieldApi::EnumerateCurrentAdapters");
  constexpr DWORD kInUse = DISPLAY_DEVICE_ACTIVE | DISPLAY_DEVICE_ATTACHED;
  ForEachDisplayDevice(adapter.DeviceName, [&](const DISPLAY_DEVICEW& device) {
    if ((device.StateFlags & kInUse) != kInUse) {
      return;
    }
    std::wstring modelDriver;
    if (!GetModelDriverFromDeviceID(device.DeviceID, modelDriver)) {
      log.Warn(L"GetModelDriverFromDeviceID Failed.");
      return;
    }
    monitors.push_back({.deviceName = device.DeviceName,
                        .deviceID = device.DeviceID,
                        .modelDriver = modelDriver,
                        .deviceString = device.DeviceString,
                        .deviceKey = device.DeviceKey});
  });
}

bool ColorFieldApi::GetModelDriverFromDeviceID(const wchar_t* deviceID, std::wstring& model) const {
  model.clear();
  const wchar_t* const first = deviceID == nullptr ? nullptr : std::wcschr(deviceID, L'\\');
  const wchar_t* const second = first == nullptr ? nullptr : std::wcschr(first + 1, L'\\');
  if (second == nullptr) {
    return false;
  }
  const size_t length = std::min(static_cast<size_t>(second - first - 1), kModelCodeLength);
  wchar_t code[kModelCodeLength + 1];
  if (wcsncpy_s(code, std::size(code), first + 1, length) != 0) {
    return false;
  }
  model = code;
  return true;
}

}  // namespace velora
