// Firmware and displays.
#include "virtualnotebook/Answers.h"

#include <algorithm>
#include <cstring>

namespace virtualnotebook::answers {
namespace {

constexpr DWORD kAcpi = 'A' << 24 | 'C' << 16 | 'P' << 8 | 'I';
constexpr DWORD kLutTable = 'T' << 24 | 'U' << 16 | 'L' << 8 | 'D';  // the bytes "DLUT"

// Monitors stand side by side.
constexpr LONG kWidth = 1920;
constexpr LONG kHeight = 1080;

// The record's texts are cut to their field.
template <size_t kSize>
void CopyText(wchar_t (&field)[kSize], const std::wstring& text) {
  const size_t length = std::min(text.size(), kSize - 1);
  std::copy_n(text.data(), length, field);
  field[length] = L'\0';
}

void Describe(const Adapter& adapter, DISPLAY_DEVICEW& device) {
  CopyText(device.DeviceName, adapter.deviceName);
  CopyText(device.DeviceString, adapter.deviceString);
  CopyText(device.DeviceID, L"");
  CopyText(device.DeviceKey, L"");
  device.StateFlags = adapter.stateFlags;
}

void Describe(const Monitor& monitor, bool askedForInterface, DISPLAY_DEVICEW& device) {
  const bool byInterface = askedForInterface && !monitor.interfacePath.empty();
  CopyText(device.DeviceName, monitor.deviceName);
  CopyText(device.DeviceString, monitor.deviceString);
  CopyText(device.DeviceID, byInterface ? monitor.interfacePath : monitor.deviceID);
  CopyText(device.DeviceKey, monitor.deviceKey);
  device.StateFlags = monitor.stateFlags;
}

RECT PlaceOf(size_t index) {
  const LONG left = static_cast<LONG>(index) * kWidth;
  return {left, 0, left + kWidth, kHeight};
}

}  // namespace

// Handles are numbers from 1.
DesktopMonitor* FindDesktopMonitor(Notebook& notebook, HMONITOR handle) {
  const auto number = reinterpret_cast<uintptr_t>(handle);
  return number == 0 || number > notebook.desktop.size() ? nullptr : &notebook.desktop[number - 1];
}

UINT GetSystemFirmwareTable(Notebook& notebook, decltype(::GetSystemFirmwareTable)* original,
                            DWORD provider, DWORD id, void* buffer, DWORD size) {
  if (provider != kAcpi || id != kLutTable) {
    return original(provider, id, buffer, size);
  }
  const bool isSizeQuery = buffer == nullptr || size == 0;
  if (isSizeQuery && notebook.reportedFirmwareSize) {
    return *notebook.reportedFirmwareSize;
  }
  const std::vector<uint8_t>& table = notebook.firmwareTable;
  if (table.empty()) {
    SetLastError(ERROR_NOT_FOUND);
    return 0;
  }
  if (isSizeQuery || size < table.size()) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
  } else {
    std::memcpy(buffer, table.data(), table.size());
  }
  return static_cast<UINT>(table.size());
}

BOOL EnumDisplayDevicesW(Notebook& notebook, decltype(::EnumDisplayDevicesW)*,
                         const wchar_t* device, DWORD index, DISPLAY_DEVICEW* out, DWORD flags) {
  if (out == nullptr || out->cb != sizeof *out) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  if (device == nullptr) {
    if (index >= notebook.adapters.size()) {
      return FALSE;
    }
    Describe(notebook.adapters[index], *out);
    return TRUE;
  }
  const auto adapter = std::ranges::find(notebook.adapters, device, &Adapter::deviceName);
  if (adapter == notebook.adapters.end() || index >= adapter->monitors.size()) {
    return FALSE;
  }
  Describe(adapter->monitors[index], (flags & EDD_GET_DEVICE_INTERFACE_NAME) != 0, *out);
  return TRUE;
}

BOOL EnumDisplayMonitors(Notebook& notebook, decltype(::EnumDisplayMonitors)*, HDC dc, const RECT*,
                         MONITORENUMPROC callback, LPARAM data) {
  for (size_t i = 0; i < notebook.desktop.size(); ++i) {
    RECT place = PlaceOf(i);
    if (!callback(reinterpret_cast<HMONITOR>(i + 1), dc, &place, data)) {
      return FALSE;
    }
  }
  return TRUE;
}

BOOL GetMonitorInfoW(Notebook& notebook, decltype(::GetMonitorInfoW)*, HMONITOR monitor,
                     MONITORINFO* info) {
  const DesktopMonitor* const found = FindDesktopMonitor(notebook, monitor);
  if (found == nullptr) {
    return Fail(ERROR_INVALID_MONITOR_HANDLE);
  }
  if (info == nullptr ||
      (info->cbSize != sizeof(MONITORINFO) && info->cbSize != sizeof(MONITORINFOEXW))) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  info->rcMonitor = PlaceOf(static_cast<size_t>(found - notebook.desktop.data()));
  info->rcWork = info->rcMonitor;
  info->dwFlags = found->flags;
  if (info->cbSize == sizeof(MONITORINFOEXW)) {
    CopyText(reinterpret_cast<MONITORINFOEXW*>(info)->szDevice, found->adapterName);
  }
  return TRUE;
}

}  // namespace virtualnotebook::answers
