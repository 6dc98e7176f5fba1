#include "virtualnotebook/Machine.h"

#include <algorithm>
#include <stdexcept>

namespace virtualnotebook {
namespace {

constexpr wchar_t kEnumKey[] = L"SYSTEM\\CurrentControlSet\\Enum\\";
constexpr wchar_t kParametersKey[] = L"\\Device Parameters";
constexpr wchar_t kEdidValue[] = L"EDID";

// The system's class and interface of monitors (devguid.h, ntddvdeo.h).
constexpr wchar_t kMonitorClass[] = L"{4d36e96e-e325-11ce-bfc1-08002be10318}";
constexpr wchar_t kMonitorInterface[] = L"{e6f07b5f-ee97-4a90-b076-33f57bf4eaa7}";

constexpr wchar_t kAdapterName[] = L"\\\\.\\DISPLAY1";
constexpr wchar_t kMonitorCaption[] = L"Generic PnP Monitor";

bool KeyExists(const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return false;
  }
  RegCloseKey(key);
  return true;
}

// The first key on the way to path that is not there; empty when all are.
std::wstring FirstMissingKey(const std::wstring& path) {
  size_t end = 0;
  do {
    end = path.find(L'\\', end + 1);
    if (!KeyExists(path.substr(0, end))) {
      return path.substr(0, end);
    }
  } while (end != std::wstring::npos);
  return {};
}

}  // namespace

std::wstring MonitorDeviceId(const std::wstring& deviceId) {
  const size_t model = deviceId.find(L'\\') + 1;
  const std::wstring name = deviceId.substr(model, deviceId.find(L'\\', model) - model);
  return L"MONITOR\\" + name + L"\\" + kMonitorClass + L"\\0001";
}

std::wstring InterfacePath(const std::wstring& deviceId) {
  std::wstring path = deviceId;
  std::ranges::replace(path, L'\\', L'#');
  return L"\\\\?\\" + path + L"#" + kMonitorInterface;
}

std::wstring WmiInstanceName(const std::wstring& deviceId) { return deviceId + L"_0"; }

void SetUpNotebook(Notebook& notebook, const std::wstring& deviceId) {
  notebook.AnswerWmi(L"ROOT\\CIMV2",
                     L"SELECT PNPDeviceID FROM Win32_DesktopMonitor WHERE PNPDeviceID IS NOT NULL",
                     L"PNPDeviceID", {deviceId});
  notebook.AnswerWmi(L"ROOT\\CIMV2", L"SELECT Caption FROM Win32_DesktopMonitor", L"Caption",
                     {kMonitorCaption});
  notebook.AnswerWmi(L"ROOT\\WMI",
                     L"SELECT * FROM WmiMonitorConnectionParams "
                     L"WHERE VideoOutputTechnology=2147483648",
                     L"InstanceName", {WmiInstanceName(deviceId)});
  Monitor panel;
  panel.deviceName = std::wstring(kAdapterName) + L"\\Monitor0";
  panel.deviceString = kMonitorCaption;
  panel.deviceID = MonitorDeviceId(deviceId);
  panel.interfacePath = InterfacePath(deviceId);
  notebook.adapters = {{kAdapterName, L"Internal graphics", {panel}}};
  const PhysicalMonitor deaf{.description = kMonitorCaption, .answersDdcci = false};
  notebook.desktop = {{kAdapterName, MONITORINFOF_PRIMARY, {deaf}}};
}

void PlugInMonitor(Notebook& notebook, const std::wstring& deviceId,
                   const std::wstring& description) {
  const std::wstring adapterName =
      L"\\\\.\\DISPLAY" + std::to_wstring(notebook.adapters.size() + 1);
  Monitor monitor;
  monitor.deviceName = adapterName + L"\\Monitor0";
  monitor.deviceString = description;
  monitor.deviceID = MonitorDeviceId(deviceId);
  monitor.interfacePath = InterfacePath(deviceId);
  notebook.adapters.push_back({adapterName, L"Graphics", {monitor}});
  const DWORD flags = notebook.desktop.empty() ? MONITORINFOF_PRIMARY : 0;
  notebook.desktop.push_back({adapterName, flags, {{.description = description}}});
}

PluggedPanel::PluggedPanel(const std::vector<uint8_t>& edid, const std::wstring& deviceId)
    : path_(kEnumKey + deviceId + kParametersKey), made_(FirstMissingKey(path_)) {
  Replace(edid);
}

PluggedPanel::~PluggedPanel() {
  if (made_.empty()) {
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, path_.c_str(), kEdidValue);
  } else {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, made_.c_str());
  }
}

void PluggedPanel::Replace(const std::vector<uint8_t>& edid) {
  const LSTATUS status = RegSetKeyValueW(HKEY_LOCAL_MACHINE, path_.c_str(), kEdidValue, REG_BINARY,
                                         edid.data(), static_cast<DWORD>(edid.size()));
  if (status != ERROR_SUCCESS) {
    throw std::runtime_error("the EDID can't be written to the registry");
  }
}

}  // namespace virtualnotebook
