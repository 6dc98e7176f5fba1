// A machine in the notebook: one built-in panel, consistent wherever the system shows it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "virtualnotebook/Notebook.h"

namespace virtualnotebook {

// The panel's Plug and Play device id: "DISPLAY\<model>\<instance>".
inline constexpr wchar_t kPanelDeviceId[] = L"DISPLAY\\NVX1234\\4&1a2b3c&0&UID0";

// The other names of the panel with this device id.
std::wstring MonitorDeviceId(const std::wstring& deviceId);  // EnumDisplayDevicesW; key of profiles
std::wstring InterfacePath(const std::wstring& deviceId);    // the same by device interface
std::wstring WmiInstanceName(const std::wstring& deviceId);  // ROOT\WMI

// The panel, deaf to DDC/CI, as the only monitor, on the primary display: WMI answers, adapter,
// desktop.
void SetUpNotebook(Notebook& notebook, const std::wstring& deviceId = kPanelDeviceId);

// A monitor plugged in behind those that are there, with an adapter of its own; the first of a
// machine is the primary one. It takes every value over DDC/CI. What it shows is in
// notebook.desktop.back().physicalMonitors.front().
void PlugInMonitor(Notebook& notebook, const std::wstring& deviceId,
                   const std::wstring& description);

// The panel's EDID in the registry, below
// HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Enum\<device id>\Device Parameters. Plugged in for as
// long as the object lives; what it made in the registry goes with it.
class PluggedPanel {
 public:
  explicit PluggedPanel(const std::vector<uint8_t>& edid,
                        const std::wstring& deviceId = kPanelDeviceId);
  ~PluggedPanel();
  PluggedPanel(const PluggedPanel&) = delete;
  PluggedPanel& operator=(const PluggedPanel&) = delete;

  // Another panel in its place.
  void Replace(const std::vector<uint8_t>& edid);

 private:
  std::wstring path_;
  std::wstring made_;  // the topmost key that was not there; empty: all were
};

}  // namespace virtualnotebook
