// The way to the maker's external monitors: one VCP feature through DDC/CI.
#include "colorfield/ColorFieldApi.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

#include "colorfield/MonitorConfiguration.h"
#include "frame/Log.h"

namespace velora {
namespace {

// The manufacturer code of the maker's monitors, in their names and identities.
constexpr wchar_t kMakerMark[] = L"NVX";

// The feature of the maker's monitors that selects the colour mode. VESA MCCS leaves the codes from
// 0xE0 to the makers.
constexpr uint8_t kColorModeCode = 0xE0;

struct ColorModeValue {
  ColorFieldMode mode;
  uint32_t value;
};
constexpr ColorModeValue kColorModeValues[] = {{SrgbMode, 6}, {P3Mode, 1}};

// Values of DdcciRequest::byMonitorIdentity.
enum : uint32_t {
  MatchByDescription = 0,
  MatchByIdentity = 1,
};

// Closes the handles of an array that the system has filled.
struct MonitorsDestroyer {
  DWORD count;
  void operator()(PHYSICAL_MONITOR* monitors) const { DestroyPhysicalMonitors(count, monitors); }
};

void EnumerateMonitors(DdcciRequest& request) {
  EnumDisplayMonitors(nullptr, nullptr, ColorFieldApi::SetMonitorColorFieldProc,
                      reinterpret_cast<LPARAM>(&request));
}

}  // namespace

ResultT ColorFieldApi::EnableColorFieldByDdcci(ColorFieldMode mode) const {
  constexpr FunctionLog log("ColorFieldApi::EnableColorFieldByDdcci");
  DdcciRequest request{};
  request.vcpCode = kColorModeCode;
  request.owner = this;
  const auto* const row = std::ranges::find(kColorModeValues, mode, &ColorModeValue::mode);
  if (row == std::end(kColorModeValues)) {
    log.Error(L"mode is error, mode is ", mode);
    return ResultFailed;
  }
  request.vcpValue = row->value;

  request.byMonitorIdentity = MatchByDescription;
  EnumerateMonitors(request);
  // A monitor that refused the value has matched too: there is no second try.
  if (!request.matched) {
    request.byMonitorIdentity = MatchByIdentity;
    EnumerateMonitors(request);
  }
  if (!request.succeeded) {
    log.Error(L"EnableColorFieldByDdcci failed.");
    return ResultColorFieldError;
  }
  return ResultOk;
}

BOOL CALLBACK ColorFieldApi::SetMonitorColorFieldProc(HMONITOR monitor, HDC, RECT*, LPARAM data) {
  auto* const request = reinterpret_cast<DdcciRequest*>(data);
  if (request == nullptr || request->owner == nullptr) {
    return TRUE;
  }
  return request->owner->SetMonitorColorField(monitor, *request);
}

// The result ends the enumeration unless a save has succeeded last: monitors behind one that
// doesn't match, or that refuses the value, are not looked at. The maker's monitor is expected in
// front.
BOOL ColorFieldApi::SetMonitorColorField(HMONITOR monitor, DdcciRequest& request) const {
  constexpr FunctionLog log("ColorFieldApi::SetMonitorColorField");
  const bool byIdentity = request.byMonitorIdentity == MatchByIdentity;
  if (byIdentity && !IsNorvexMonitorByHmonitor(monitor)) {
    return FALSE;
  }
  DWORD count = 0;
  if (!GetNumberOfPhysicalMonitorsFromHMONITOR(monitor, &count)) {
    log.Error(L"Get Number Of Physical Monitors From HMONITOR Failed!");
    return FALSE;
  }
  const std::unique_ptr<PHYSICAL_MONITOR[]> monitors(new (std::nothrow) PHYSICAL_MONITOR[count]());
  if (monitors == nullptr) {
    log.Error(L"physicalMonitors is nullptr!");
    return FALSE;
  }
  if (!GetPhysicalMonitorsFromHMONITOR(monitor, count, monitors.get())) {
    log.Error(L"Get Physical Monitors From HMONITOR Failed!");
    return FALSE;
  }
  const std::unique_ptr<PHYSICAL_MONITOR, MonitorsDestroyer> handles(monitors.get(), {count});

  BOOL goOn = FALSE;
  for (DWORD i = 0; i < count; ++i) {
    const HANDLE handle = monitors[i].hPhysicalMonitor;
    if (handle == INVALID_HANDLE_VALUE) {
      log.Error(L"LCD physicalMonitorHandle is nullptr");
      continue;
    }
    const std::wstring description = monitors[i].szPhysicalMonitorDescription;
    if (!byIdentity && !IsNorvexMonitorName(description)) {
      continue;
    }
    request.matched = true;
    if (SetVCPFeature(handle, request.vcpCode, request.vcpValue) != TRUE) {
      log.Error(L"LCD SetVCPFeature set Failed! Code:", unsigned{request.vcpCode}, L", value:",
                request.vcpValue, L", physicalMonitorsCount:", count, L", index:", i,
                L", description:", description);
      continue;
    }
    goOn = SaveCurrentSettings(handle);
    if (goOn == TRUE) {
      request.succeeded = true;
    } else {
      log.Error(L"SaveCurrentSettings is failed");
    }
  }
  return goOn;
}

bool ColorFieldApi::IsNorvexMonitorByHmonitor(HMONITOR monitor) const {
  constexpr FunctionLog log("ColorFieldApi::IsNorvexMonitorByHmonitor");
  MONITORINFOEXW info{};
  info.cbSize = sizeof info;
  if (!GetMonitorInfoW(monitor, &info)) {
    log.Error(L"GetMonitorInfo failed.");
    return false;
  }
  for (DWORD index = 0;; ++index) {
    DISPLAY_DEVICEW device{};
    device.cb = sizeof device;
    if (EnumDisplayDevicesW(info.szDevice, index, &device, EDD_GET_DEVICE_INTERFACE_NAME) != TRUE) {
      return false;
    }
    // The interface path, which holds the EDID's manufacturer code.
    if (IsNorvexMonitorName(device.DeviceID)) {
      return true;
    }
  }
}

bool ColorFieldApi::IsNorvexMonitorName(const std::wstring& name) {
  return name.find(kMakerMark) != std::wstring::npos;
}

}  // namespace velora
