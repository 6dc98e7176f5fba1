#include "lut/ColorField3DLut.h"

#include <windows.h>

#include <exception>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "WmiKit/WmiKit.h"
#include "frame/BoundedCopy.h"
#include "frame/Constants.h"
#include "frame/Log.h"

namespace velora {
namespace {

constexpr wchar_t kAnyMonitorQuery[] =
    L"SELECT PNPDeviceID FROM Win32_DesktopMonitor WHERE PNPDeviceID IS NOT NULL";
constexpr wchar_t kBuiltInMonitorQuery[] =
    L"SELECT PNPDeviceID, MonitorManufacturer FROM Win32_DesktopMonitor "
    L"WHERE MonitorManufacturer LIKE 'Norvex Device%'";
constexpr wchar_t kCaptionQuery[] = L"SELECT Caption FROM Win32_DesktopMonitor";

constexpr DWORD kEdidSizeLimit = 20 * 128;  // bytes; an EDID of twenty blocks is refused

// True when the query gave rows; text is the first one's.
bool QueryFirstRow(const wchar_t* query, const wchar_t* property, std::wstring& text) {
  std::vector<std::wstring> rows;
  const int status = NxSDK::WmiQuery(kWmiCimV2).ExcuteQuery(query, property, rows, true);
  text = rows.empty() ? std::wstring() : rows.front();
  return status == 0 && !rows.empty();
}

bool QueryDeviceId(const wchar_t* query, std::wstring& id) {
  return QueryFirstRow(query, L"PNPDeviceID", id) && !id.empty();
}

// "DISPLAY\model\instance"
bool HasTwoBackslashes(const std::string& id) {
  const size_t first = id.find('\\');
  return first != std::string::npos && id.find('\\', first + 1) != std::string::npos;
}

bool NextDisplayDevice(const wchar_t* parent, DWORD index, DWORD flags, DISPLAY_DEVICEW& device) {
  device = {};
  device.cb = sizeof device;
  return EnumDisplayDevicesW(parent, index, &device, flags) != 0;
}

struct CloseKey {
  void operator()(HKEY key) const { RegCloseKey(key); }
};
using UniqueKey = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseKey>;

}  // namespace

bool ColorField3DLut::GetLcdEdidData() {
  constexpr FunctionLog log("ColorField3DLut::GetLcdEdidData");
  if (edidLoaded_) {
    return true;
  }
  const std::string path = GetEdidDataPath();
  if (path.empty()) {
    return false;
  }

  constexpr DWORD kNoOptions = 0;
  HKEY opened = nullptr;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), kNoOptions, KEY_READ, &opened) !=
      ERROR_SUCCESS) {
    log.Error(L"RegOpenKeyExA Failed! edidFullPath:", path);
    return false;
  }
  const UniqueKey key(opened);

  constexpr char kEdidValue[] = "EDID";
  DWORD* const reserved = nullptr;
  BYTE* const noBuffer = nullptr;
  DWORD type = REG_BINARY;
  DWORD size = 0;
  if (RegQueryValueExA(key.get(), kEdidValue, reserved, &type, noBuffer, &size) != ERROR_SUCCESS ||
      size == 0 || size >= kEdidSizeLimit) {
    log.Error(L"RegQuery max Edid value length Failed, maxValueLength is ", size);
    return false;
  }
  const std::unique_ptr<uint8_t[]> value(new (std::nothrow) uint8_t[size]());
  if (value == nullptr) {
    log.Error(L"outValue is nullptr!");
    return false;
  }
  edidLoaded_ = RegQueryValueExA(key.get(), kEdidValue, reserved, &type, value.get(), &size) ==
                    ERROR_SUCCESS &&
                lcdEdidParse_.ParseEdidData(value.get(), size);
  return edidLoaded_;
}

std::string ColorField3DLut::GetEdidDataPath() {
  constexpr FunctionLog log("ColorField3DLut::GetEdidDataPath");
  const std::string id = GetPnpDeviceID();
  if (id.empty()) {
    log.Error(L"GetPnpDeviceID Failed! edidRegistryPath is empty.");
    return {};
  }
  return "SYSTEM\\CurrentControlSet\\Enum\\" + id + "\\Device Parameters\\";
}

std::string ColorField3DLut::GetPnpDeviceID() {
  constexpr FunctionLog log("ColorField3DLut::GetPnpDeviceID");
  const wchar_t* query = kAnyMonitorQuery;
  std::wstring id;
  if (HasMultipleMonitors()) {
    log.Info(L"Multiple monitors are connected!");
    query = kBuiltInMonitorQuery;
    if (!QueryDeviceId(query, id)) {
      log.Error(L"Norvex monitor QueryCimv2NameSpaceProperty failed, id is ", id);
      query = kAnyMonitorQuery;
    }
  }
  // The manufacturer's query runs a second time here, on purpose: what it gave before was a test.
  if (!QueryDeviceId(query, id)) {
    log.Error(L"QueryCimv2NameSpaceProperty failed, id is ");
    // A caption is no device id: the registry path made of it does not open, which ends this case.
    return CoreKit::WStringToString(GetLCDNameByWMI());
  }
  std::string deviceId = CoreKit::WStringToString(id);
  if (!HasTwoBackslashes(deviceId)) {
    log.Error(L"GetPnpDeviceID Failed! deviceId is invalid, deviceId is ", deviceId);
    return {};
  }
  return deviceId;
}

std::wstring ColorField3DLut::GetLCDNameByWMI() {
  constexpr FunctionLog log("ColorField3DLut::GetLCDNameByWMI");
  std::wstring caption;
  if (!QueryFirstRow(kCaptionQuery, L"Caption", caption)) {
    log.Error(L"Get LCD Name and query Caption by WMI failed.");
    return {};
  }
  return caption;
}

bool ColorField3DLut::HasMultipleMonitors() {
  const wchar_t* const allAdapters = nullptr;
  DISPLAY_DEVICEW adapter;
  DISPLAY_DEVICEW monitor;
  int monitors = 0;
  for (DWORD i = 0; NextDisplayDevice(allAdapters, i, 0, adapter); ++i) {
    for (DWORD k = 0;
         NextDisplayDevice(adapter.DeviceName, k, EDD_GET_DEVICE_INTERFACE_NAME, monitor); ++k) {
      if (++monitors > 1) {
        return true;
      }
    }
  }
  return false;
}

// The texts are compared byte for byte, the dates as numbers, and the first difference ends it: a
// date that is no number matters only on a panel whose texts match.
uint8_t ColorField3DLut::IsLcdDataValid() {
  constexpr FunctionLog log("ColorField3DLut::IsLcdDataValid");
  const std::string week = biosHeaderV2_.GetWeek();
  const std::string year = biosHeaderV2_.GetYear();
  try {
    if (lcdEdidParse_.GetSerialNumber() == biosHeaderV2_.GetSerialNumber() &&
        lcdEdidParse_.GetVendor() == biosHeaderV2_.GetVendor() &&
        lcdEdidParse_.GetWeek() == std::stoi(week) && lcdEdidParse_.GetYear() == std::stoi(year)) {
      return 0;
    }
  } catch (const std::exception& exception) {
    log.Error(L"IsLcdDataValid exception,msg:", exception.what(), L" , biosHeaderV2 Week:", week,
              L" , biosHeaderV2 Year:", year);
    return 1;
  }
  log.Info(L"LCD Invalid! Bios SN:", biosHeaderV2_.GetSerialNumber(), L"Edid SN:",
           lcdEdidParse_.GetSerialNumber(), L"Bios Vendor:", biosHeaderV2_.GetVendor(),
           L"Edid Vendor:", lcdEdidParse_.GetVendor(), L"Bios Week:", week, L"Edid Week:",
           lcdEdidParse_.GetWeek(), L"Bios Year:", year, L"Edid Year:", lcdEdidParse_.GetYear());
  return 1;
}

// In both, the test of the bin file or else its update leaves the header in biosHeaderV2_ that the
// panel is then compared with.
uint8_t ColorField3DLut::IsLcdChanged(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::IsLcdChanged");
  if (!GetLcdEdidData()) {
    log.Error(L"Get LCD EDID Data error.");
    return 1;
  }
  if (IsThreeLutBinFileNeedUpdate(mode) != 0 && !UpdateThreeLutBinFile3D(mode)) {
    log.Error(L"UpdateThreeLutBinFile3D Failed! mode:", mode);
    return 1;
  }
  return ComparePanel(log);
}

uint8_t ColorField3DLut::IsLcdChangedGamma() {
  constexpr FunctionLog log("ColorField3DLut::IsLcdChangedGamma");
  if (!GetLcdEdidData()) {
    log.Error(L"Get LCD EDID Data error.");
    return 1;
  }
  if (IsGammaLutBinFileNeedUpdate() != 0 && !UpdateGammaLutBinFile()) {
    log.Error(L"UpdateGammaLutBinFile Failed!");
    return 1;
  }
  return ComparePanel(log);
}

uint8_t ColorField3DLut::ComparePanel(const FunctionLog& log) {
  const uint8_t changed = IsLcdDataValid();
  if (changed != 0) {
    log.Error(L"LCD data is not match or get data error, ret is ", int{changed});
  }
  return changed;
}

void ColorField3DLut::GetVendor(char* buffer, int length) {
  constexpr FunctionLog log("ColorField3DLut::GetVendor");
  if (!GetLcdEdidData()) {
    log.Error(L"Get LCD EDID Data error.");
    return;
  }
  // A negative length becomes one that the bounded copy refuses.
  if (strcpy_s(buffer, static_cast<size_t>(length), lcdEdidParse_.GetVendor().c_str()) != 0) {
    log.Error(L"strcpy_s failed, err = %d\n");  // the system's own text: nothing fills it in
  }
}

LcdEdidParse ColorField3DLut::GetEdidCopy() {
  GetLcdEdidData();
  return lcdEdidParse_;
}

}  // namespace velora
