#include "virtualnotebook/Machine.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "WmiKit/WmiKit.h"
#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::ElementsAre;

constexpr wchar_t kEnumKey[] = L"SYSTEM\\CurrentControlSet\\Enum\\";
constexpr wchar_t kModelKey[] = L"SYSTEM\\CurrentControlSet\\Enum\\DISPLAY\\TST0001";
constexpr wchar_t kTestPanel[] = L"DISPLAY\\TST0001\\1&2&3";

// The EDID that the registry holds for the device; empty: none.
std::vector<uint8_t> RegisteredEdid(const std::wstring& deviceId) {
  const std::wstring path = kEnumKey + deviceId + L"\\Device Parameters";
  std::vector<uint8_t> bytes(4096);
  DWORD size = static_cast<DWORD>(bytes.size());
  DWORD type = 0;
  if (RegGetValueW(HKEY_LOCAL_MACHINE, path.c_str(), L"EDID", RRF_RT_REG_BINARY, &type,
                   bytes.data(), &size) != ERROR_SUCCESS) {
    return {};
  }
  bytes.resize(size);
  return bytes;
}

bool KeyExists(const wchar_t* path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return false;
  }
  RegCloseKey(key);
  return true;
}

TEST(PluggedPanel, ShowsItsEdidAndLeavesNothingBehind) {
  const std::vector<uint8_t> edid = {0, 255, 255, 1};
  ASSERT_FALSE(KeyExists(kModelKey));
  {
    PluggedPanel panel(edid, kTestPanel);
    EXPECT_EQ(RegisteredEdid(kTestPanel), edid);
    panel.Replace({1, 2});
    EXPECT_THAT(RegisteredEdid(kTestPanel), ElementsAre(1, 2));
  }
  EXPECT_FALSE(KeyExists(kModelKey));
  EXPECT_TRUE(KeyExists(L"SYSTEM\\CurrentControlSet\\Enum"));
}

TEST(PluggedPanel, ASecondInstanceOfAModelLeavesTheFirst) {
  PluggedPanel first({1}, kTestPanel);
  { PluggedPanel second({2}, L"DISPLAY\\TST0001\\4&5&6"); }
  EXPECT_THAT(RegisteredEdid(kTestPanel), ElementsAre(1));
}

TEST(Machine, NamesOfOnePanel) {
  EXPECT_EQ(MonitorDeviceId(L"DISPLAY\\NVX1234\\4&1a2b3c&0&UID0"),
            L"MONITOR\\NVX1234\\{4d36e96e-e325-11ce-bfc1-08002be10318}\\0001");
  EXPECT_EQ(InterfacePath(L"DISPLAY\\NVX1234\\4&1a2b3c&0&UID0"),
            L"\\\\?\\DISPLAY#NVX1234#4&1a2b3c&0&UID0#{e6f07b5f-ee97-4a90-b076-33f57bf4eaa7}");
  EXPECT_EQ(WmiInstanceName(L"DISPLAY\\NVX1234\\4&1a2b3c&0&UID0"),
            L"DISPLAY\\NVX1234\\4&1a2b3c&0&UID0_0");
}

class SetUpNotebook_Default : public testsupport::NotebookTest {
 protected:
  SetUpNotebook_Default() { SetUpNotebook(notebook); }
};

TEST_F(SetUpNotebook_Default, WmiNamesThePanel) {
  std::vector<std::wstring> rows;
  EXPECT_EQ(NxSDK::WmiQuery(L"ROOT\\CIMV2")
                .ExcuteQuery(L"SELECT PNPDeviceID FROM Win32_DesktopMonitor "
                             L"WHERE PNPDeviceID IS NOT NULL",
                             L"PNPDeviceID", rows, true),
            0);
  EXPECT_THAT(rows, ElementsAre(kPanelDeviceId));
  EXPECT_EQ(NxSDK::WmiQuery(L"ROOT\\WMI")
                .ExcuteQuery(L"SELECT * FROM WmiMonitorConnectionParams "
                             L"WHERE VideoOutputTechnology=2147483648",
                             L"InstanceName", rows, true),
            0);
  EXPECT_THAT(rows, ElementsAre(WmiInstanceName(kPanelDeviceId)));
}

TEST_F(SetUpNotebook_Default, ThePanelIsTheOnlyMonitorAndPrimary) {
  DISPLAY_DEVICEW adapter{};
  adapter.cb = sizeof adapter;
  ASSERT_TRUE(EnumDisplayDevicesW(nullptr, 0, &adapter, 0));
  DISPLAY_DEVICEW monitor{};
  monitor.cb = sizeof monitor;
  ASSERT_TRUE(EnumDisplayDevicesW(adapter.DeviceName, 0, &monitor, 0));
  EXPECT_EQ(monitor.DeviceID, MonitorDeviceId(kPanelDeviceId));
  EXPECT_FALSE(EnumDisplayDevicesW(adapter.DeviceName, 1, &monitor, 0));
  ASSERT_EQ(notebook.desktop.size(), 1U);
  EXPECT_EQ(notebook.desktop[0].adapterName, adapter.DeviceName);
  EXPECT_EQ(notebook.desktop[0].flags, DWORD{MONITORINFOF_PRIMARY});
}

}  // namespace
}  // namespace virtualnotebook
