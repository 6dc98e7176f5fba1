#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr DWORD kAcpi = 0x41435049;
constexpr DWORD kDlut = 0x54554C44;

class FirmwareTable : public testsupport::NotebookTest {
 protected:
  UINT Read(std::vector<uint8_t>& buffer) {
    SetLastError(0xdeadbeef);
    return GetSystemFirmwareTable(kAcpi, kDlut, buffer.data(), static_cast<DWORD>(buffer.size()));
  }
};

TEST_F(FirmwareTable, Absent) {
  std::vector<uint8_t> buffer;
  EXPECT_EQ(Read(buffer), 0U);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_FOUND});
}

TEST_F(FirmwareTable, TellsItsSizeAndIsRead) {
  notebook.firmwareTable = {1, 2, 3, 4, 5};
  EXPECT_EQ(GetSystemFirmwareTable(kAcpi, kDlut, nullptr, 0), 5U);
  std::vector<uint8_t> buffer(5);
  EXPECT_EQ(Read(buffer), 5U);
  EXPECT_EQ(GetLastError(), 0xdeadbeef);
  EXPECT_EQ(buffer, notebook.firmwareTable);
}

TEST_F(FirmwareTable, TooSmallABufferStaysAsItIs) {
  notebook.firmwareTable = {1, 2, 3, 4, 5};
  std::vector<uint8_t> buffer(4, 0xBD);
  EXPECT_EQ(Read(buffer), 5U);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_THAT(buffer, Each(0xBD));
}

TEST_F(FirmwareTable, ALargerBufferIsFilledAsFarAsTheTableGoes) {
  notebook.firmwareTable = {1, 2, 3};
  std::vector<uint8_t> buffer(5, 0xBD);
  EXPECT_EQ(Read(buffer), 3U);
  EXPECT_THAT(buffer, ElementsAre(1, 2, 3, 0xBD, 0xBD));
}

TEST_F(FirmwareTable, ReportsAnotherSizeWhenTold) {
  notebook.firmwareTable = {1, 2, 3};
  notebook.reportedFirmwareSize = 0xFFFFFFFF;
  EXPECT_EQ(GetSystemFirmwareTable(kAcpi, kDlut, nullptr, 0), 0xFFFFFFFF);
  std::vector<uint8_t> buffer(3);
  EXPECT_EQ(Read(buffer), 3U);
  EXPECT_EQ(buffer, notebook.firmwareTable);
}

// Wine has no ACPI tables: whatever it says, it is not the notebook's table.
TEST_F(FirmwareTable, OtherTablesAreTheSystems) {
  notebook.firmwareTable = {1, 2, 3};
  EXPECT_NE(GetSystemFirmwareTable(kAcpi, 0x50434146, nullptr, 0), 3U);
}

class Displays : public testsupport::NotebookTest {
 protected:
  Displays() {
    Monitor first;
    first.deviceName = L"\\\\.\\DISPLAY1\\Monitor0";
    first.deviceString = L"first";
    first.deviceID = L"MONITOR\\NVX1234\\{x}\\0001";
    first.deviceKey = L"key";
    first.interfacePath = L"\\\\?\\DISPLAY#NVX1234";
    Monitor second;
    second.deviceID = L"MONITOR\\NVX5678\\{x}\\0002";
    second.stateFlags = 0;
    notebook.adapters = {{L"\\\\.\\DISPLAY1", L"graphics", {first, second}},
                         {L"\\\\.\\DISPLAY2", L"other graphics", {}}};
    notebook.desktop = {{L"\\\\.\\DISPLAY2", 0}, {L"\\\\.\\DISPLAY1", MONITORINFOF_PRIMARY}};
  }

  bool Enumerate(const wchar_t* device, DWORD index, DWORD flags = 0) {
    device_ = {};
    device_.cb = sizeof device_;
    return EnumDisplayDevicesW(device, index, &device_, flags) != FALSE;
  }

  DISPLAY_DEVICEW device_{};
};

TEST_F(Displays, Adapters) {
  ASSERT_TRUE(Enumerate(nullptr, 0));
  EXPECT_STREQ(device_.DeviceName, L"\\\\.\\DISPLAY1");
  EXPECT_STREQ(device_.DeviceString, L"graphics");
  EXPECT_EQ(device_.StateFlags, DWORD{DISPLAY_DEVICE_ATTACHED_TO_DESKTOP});
  ASSERT_TRUE(Enumerate(nullptr, 1));
  EXPECT_STREQ(device_.DeviceName, L"\\\\.\\DISPLAY2");
  EXPECT_FALSE(Enumerate(nullptr, 2));
}

TEST_F(Displays, MonitorsOfAnAdapter) {
  ASSERT_TRUE(Enumerate(L"\\\\.\\DISPLAY1", 0));
  EXPECT_STREQ(device_.DeviceName, L"\\\\.\\DISPLAY1\\Monitor0");
  EXPECT_STREQ(device_.DeviceString, L"first");
  EXPECT_STREQ(device_.DeviceID, L"MONITOR\\NVX1234\\{x}\\0001");
  EXPECT_STREQ(device_.DeviceKey, L"key");
  EXPECT_EQ(device_.StateFlags, DWORD{DISPLAY_DEVICE_ACTIVE | DISPLAY_DEVICE_ATTACHED});
  ASSERT_TRUE(Enumerate(L"\\\\.\\DISPLAY1", 1));
  EXPECT_EQ(device_.StateFlags, 0U);
  EXPECT_FALSE(Enumerate(L"\\\\.\\DISPLAY1", 2));
  EXPECT_FALSE(Enumerate(L"\\\\.\\DISPLAY2", 0));
  EXPECT_FALSE(Enumerate(L"\\\\.\\DISPLAY3", 0));
}

TEST_F(Displays, MonitorsByDeviceInterface) {
  ASSERT_TRUE(Enumerate(L"\\\\.\\DISPLAY1", 0, EDD_GET_DEVICE_INTERFACE_NAME));
  EXPECT_STREQ(device_.DeviceID, L"\\\\?\\DISPLAY#NVX1234");
  ASSERT_TRUE(Enumerate(L"\\\\.\\DISPLAY1", 1, EDD_GET_DEVICE_INTERFACE_NAME));
  EXPECT_STREQ(device_.DeviceID, L"MONITOR\\NVX5678\\{x}\\0002") << "it has no interface path";
}

TEST_F(Displays, ARecordThatDoesNotTellItsSizeIsRefused) {
  DISPLAY_DEVICEW device{};
  EXPECT_FALSE(EnumDisplayDevicesW(nullptr, 0, &device, 0));
}

TEST_F(Displays, TextsAreCutToTheirFields) {
  notebook.adapters = {{std::wstring(40, L'n'), std::wstring(200, L's'), {}}};
  ASSERT_TRUE(Enumerate(nullptr, 0));
  EXPECT_EQ(device_.DeviceName, std::wstring(31, L'n'));
  EXPECT_EQ(device_.DeviceString, std::wstring(127, L's'));
}

std::vector<std::wstring> VisitDesktop(size_t limit, BOOL& result) {
  struct Visit {
    size_t limit;
    std::vector<std::wstring> names;
  } visit{limit, {}};
  const auto callback = [](HMONITOR monitor, HDC, RECT*, LPARAM data) -> BOOL {
    MONITORINFOEXW info{};
    info.cbSize = sizeof info;
    EXPECT_TRUE(GetMonitorInfoW(monitor, &info));
    auto& seen = *reinterpret_cast<Visit*>(data);
    seen.names.push_back(std::wstring(info.szDevice) + (info.dwFlags == 1 ? L" primary" : L""));
    return seen.names.size() < seen.limit ? TRUE : FALSE;
  };
  result = EnumDisplayMonitors(nullptr, nullptr, callback, reinterpret_cast<LPARAM>(&visit));
  return visit.names;
}

TEST_F(Displays, DesktopMonitorsInTheirOrder) {
  BOOL result = FALSE;
  EXPECT_THAT(VisitDesktop(10, result),
              ElementsAre(L"\\\\.\\DISPLAY2", L"\\\\.\\DISPLAY1 primary"));
  EXPECT_TRUE(result);
  EXPECT_EQ(notebook.CountCalls("GetMonitorInfoW"), 2U) << "calls from the callback count too";
}

TEST_F(Displays, TheCallbackEndsTheEnumeration) {
  BOOL result = TRUE;
  EXPECT_THAT(VisitDesktop(1, result), ElementsAre(L"\\\\.\\DISPLAY2"));
  EXPECT_FALSE(result);
}

TEST_F(Displays, GetMonitorInfo_KnowsItsHandlesAndSizes) {
  MONITORINFO info{};
  info.cbSize = sizeof info;
  EXPECT_TRUE(GetMonitorInfoW(reinterpret_cast<HMONITOR>(2), &info));
  EXPECT_EQ(info.dwFlags, DWORD{MONITORINFOF_PRIMARY});
  EXPECT_FALSE(GetMonitorInfoW(nullptr, &info));
  EXPECT_FALSE(GetMonitorInfoW(reinterpret_cast<HMONITOR>(3), &info));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_MONITOR_HANDLE});
  info.cbSize = 1;
  EXPECT_FALSE(GetMonitorInfoW(reinterpret_cast<HMONITOR>(1), &info));
}

}  // namespace
}  // namespace virtualnotebook
