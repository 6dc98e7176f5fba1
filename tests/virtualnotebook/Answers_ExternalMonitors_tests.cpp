#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "src/colorfield/MonitorConfiguration.h"
#include "support/NotebookTest.h"
#include "virtualnotebook/Machine.h"

namespace virtualnotebook {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

HMONITOR Handle(size_t number) { return reinterpret_cast<HMONITOR>(number); }

// A PC with two external monitors; behind the second one's HMONITOR there are two devices.
class ExternalMonitors : public testsupport::NotebookTest {
 protected:
  ExternalMonitors() {
    PlugInMonitor(notebook, L"DISPLAY\\NVX2701\\5&2b&0&UID4352", L"NVX Studio 27");
    PlugInMonitor(notebook, L"DISPLAY\\AAA0001\\5&2b&0&UID4353", L"Other");
    notebook.desktop[1].physicalMonitors.push_back(
        {.description = L"Mirror", .hasHandle = false, .taken = {}});
  }

  bool Open(size_t number, DWORD count) {
    array_ = {};
    return GetPhysicalMonitorsFromHMONITOR(Handle(number), count, array_.data()) != FALSE;
  }
  HANDLE First() const { return array_[0].hPhysicalMonitor; }

  std::array<PHYSICAL_MONITOR, 4> array_{};
};

TEST_F(ExternalMonitors, CountOfEachHmonitor) {
  DWORD count = 9;
  EXPECT_TRUE(GetNumberOfPhysicalMonitorsFromHMONITOR(Handle(1), &count));
  EXPECT_EQ(count, 1u);
  EXPECT_TRUE(GetNumberOfPhysicalMonitorsFromHMONITOR(Handle(2), &count));
  EXPECT_EQ(count, 2u);
  EXPECT_FALSE(GetNumberOfPhysicalMonitorsFromHMONITOR(Handle(3), &count));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_MONITOR_HANDLE});
  EXPECT_FALSE(GetNumberOfPhysicalMonitorsFromHMONITOR(Handle(1), nullptr));
}

TEST_F(ExternalMonitors, HandlesAndDescriptions) {
  ASSERT_TRUE(Open(2, 2));
  EXPECT_NE(First(), nullptr);
  EXPECT_NE(First(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(std::wstring(array_[0].szPhysicalMonitorDescription), L"Other");
  EXPECT_EQ(array_[1].hPhysicalMonitor, INVALID_HANDLE_VALUE);
  EXPECT_EQ(std::wstring(array_[1].szPhysicalMonitorDescription), L"Mirror");
  EXPECT_EQ(array_[2].hPhysicalMonitor, nullptr) << "only what was asked for is written";
}

TEST_F(ExternalMonitors, LongDescriptionsAreCut) {
  notebook.desktop[0].physicalMonitors[0].description = std::wstring(200, L'x');
  ASSERT_TRUE(Open(1, 1));
  EXPECT_EQ(std::wstring(array_[0].szPhysicalMonitorDescription), std::wstring(127, L'x'));
}

TEST_F(ExternalMonitors, TheArrayMustFit) {
  EXPECT_FALSE(Open(2, 1));
  EXPECT_FALSE(Open(2, 3));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_FALSE(Open(3, 1));
  EXPECT_FALSE(GetPhysicalMonitorsFromHMONITOR(Handle(1), 1, nullptr));
  EXPECT_THAT(notebook.monitorArrays, IsEmpty());
}

TEST_F(ExternalMonitors, ArraysAreCountedUntilTheyAreDestroyed) {
  ASSERT_TRUE(Open(1, 1));
  std::array<PHYSICAL_MONITOR, 2> other{};
  ASSERT_TRUE(GetPhysicalMonitorsFromHMONITOR(Handle(2), 2, other.data()));
  EXPECT_EQ(notebook.CountOpenMonitorArrays(), 2u);
  EXPECT_TRUE(DestroyPhysicalMonitors(1, array_.data()));
  EXPECT_EQ(notebook.CountOpenMonitorArrays(), 1u);
  EXPECT_FALSE(DestroyPhysicalMonitors(1, array_.data())) << "a second time";
  EXPECT_EQ(notebook.monitorArrays[0].destroyed, 2u);
  EXPECT_FALSE(DestroyPhysicalMonitors(1, other.data())) << "not its count";
  EXPECT_EQ(notebook.monitorArrays[1].destroyed, 0u);
  EXPECT_TRUE(DestroyPhysicalMonitors(2, other.data()));
  EXPECT_EQ(notebook.CountOpenMonitorArrays(), 0u);
}

TEST_F(ExternalMonitors, TheSameMemoryAgain) {
  ASSERT_TRUE(Open(1, 1));
  const HANDLE before = First();
  EXPECT_TRUE(DestroyPhysicalMonitors(1, array_.data()));
  ASSERT_TRUE(Open(1, 1));
  EXPECT_NE(First(), before);
  EXPECT_TRUE(DestroyPhysicalMonitors(1, array_.data()));
  ASSERT_EQ(notebook.monitorArrays.size(), 2u);
  EXPECT_EQ(notebook.monitorArrays[0].destroyed, 1u);
  EXPECT_EQ(notebook.monitorArrays[1].destroyed, 1u);
}

TEST_F(ExternalMonitors, AnEmptyArrayIsOneToo) {
  notebook.desktop[0].physicalMonitors.clear();
  ASSERT_TRUE(Open(1, 0));
  EXPECT_EQ(notebook.CountOpenMonitorArrays(), 1u);
  EXPECT_TRUE(DestroyPhysicalMonitors(0, array_.data()));
  EXPECT_EQ(notebook.CountOpenMonitorArrays(), 0u);
}

TEST_F(ExternalMonitors, TakeValuesAndSaveThem) {
  const PhysicalMonitor& monitor = notebook.desktop[0].physicalMonitors[0];
  EXPECT_EQ(monitor.Value(0x10), std::nullopt);
  ASSERT_TRUE(Open(1, 1));
  EXPECT_TRUE(SetVCPFeature(First(), 0x10, 50));
  EXPECT_TRUE(SaveCurrentSettings(First()));
  EXPECT_TRUE(SetVCPFeature(First(), 0x12, 70));
  EXPECT_TRUE(SetVCPFeature(First(), 0x10, 60));
  EXPECT_THAT(monitor.taken, ElementsAre(VcpWrite{0x10, 50, true}, VcpWrite{0x12, 70, false},
                                         VcpWrite{0x10, 60, false}));
  EXPECT_EQ(monitor.Value(0x10), 60u);
  EXPECT_EQ(monitor.Value(0x12), 70u);
  EXPECT_THAT(notebook.desktop[1].physicalMonitors[0].taken, IsEmpty());
}

TEST_F(ExternalMonitors, ADeafMonitorTakesNothing) {
  notebook.desktop[0].physicalMonitors[0].answersDdcci = false;
  ASSERT_TRUE(Open(1, 1));
  EXPECT_FALSE(SetVCPFeature(First(), 0x10, 50));
  EXPECT_FALSE(SaveCurrentSettings(First()));
  EXPECT_EQ(GetLastError(), 0xC0262580);
  EXPECT_THAT(notebook.desktop[0].physicalMonitors[0].taken, IsEmpty());
}

TEST_F(ExternalMonitors, HandlesThatAreNone) {
  ASSERT_TRUE(Open(2, 2));
  const HANDLE closed = First();
  EXPECT_FALSE(SetVCPFeature(INVALID_HANDLE_VALUE, 0x10, 50));
  EXPECT_FALSE(SetVCPFeature(nullptr, 0x10, 50));
  EXPECT_TRUE(DestroyPhysicalMonitors(2, array_.data()));
  EXPECT_FALSE(SetVCPFeature(closed, 0x10, 50));
  EXPECT_FALSE(SaveCurrentSettings(closed));
  EXPECT_EQ(GetLastError(), 0xC026258C);
  EXPECT_THAT(notebook.desktop[1].physicalMonitors[0].taken, IsEmpty());
}

TEST_F(ExternalMonitors, TheNthWriteCanFail) {
  notebook.FailCall("SetVCPFeature", 2, FALSE, ERROR_GEN_FAILURE);
  ASSERT_TRUE(Open(1, 1));
  EXPECT_TRUE(SetVCPFeature(First(), 0x10, 1));
  EXPECT_FALSE(SetVCPFeature(First(), 0x10, 2));
  EXPECT_TRUE(SetVCPFeature(First(), 0x10, 3));
  EXPECT_THAT(notebook.desktop[0].physicalMonitors[0].taken,
              ElementsAre(VcpWrite{0x10, 1, false}, VcpWrite{0x10, 3, false}));
}

// --- PlugInMonitor, and the panel's side of it ---

TEST_F(ExternalMonitors, PlugInMonitor_StandsWhereverTheSystemShowsIt) {
  DISPLAY_DEVICEW adapter{};
  adapter.cb = sizeof adapter;
  ASSERT_TRUE(EnumDisplayDevicesW(nullptr, 1, &adapter, 0));
  EXPECT_STREQ(adapter.DeviceName, L"\\\\.\\DISPLAY2");
  DISPLAY_DEVICEW monitor{};
  monitor.cb = sizeof monitor;
  ASSERT_TRUE(EnumDisplayDevicesW(adapter.DeviceName, 0, &monitor, EDD_GET_DEVICE_INTERFACE_NAME));
  EXPECT_STREQ(monitor.DeviceName, L"\\\\.\\DISPLAY2\\Monitor0");
  EXPECT_STREQ(monitor.DeviceString, L"Other");
  EXPECT_STREQ(monitor.DeviceID,
               L"\\\\?\\DISPLAY#AAA0001#5&2b&0&UID4353#{e6f07b5f-ee97-4a90-b076-33f57bf4eaa7}");
  MONITORINFOEXW info{};
  info.cbSize = sizeof info;
  ASSERT_TRUE(GetMonitorInfoW(Handle(2), &info));
  EXPECT_STREQ(info.szDevice, adapter.DeviceName);
  EXPECT_EQ(info.dwFlags, 0u);
  ASSERT_TRUE(GetMonitorInfoW(Handle(1), &info));
  EXPECT_EQ(info.dwFlags, DWORD{MONITORINFOF_PRIMARY});
}

TEST_F(ExternalMonitors, ThePanelIsDeafAndStaysPrimary) {
  SetUpNotebook(notebook);
  PlugInMonitor(notebook, L"DISPLAY\\NVX2701\\5&2b&0&UID4352", L"NVX Studio 27");
  ASSERT_EQ(notebook.desktop.size(), 2u);
  EXPECT_EQ(notebook.desktop[0].flags, DWORD{MONITORINFOF_PRIMARY});
  EXPECT_EQ(notebook.desktop[1].flags, 0u);
  ASSERT_TRUE(Open(1, 1));
  EXPECT_EQ(std::wstring(array_[0].szPhysicalMonitorDescription), L"Generic PnP Monitor");
  EXPECT_FALSE(SetVCPFeature(First(), 0x10, 50));
}

}  // namespace
}  // namespace virtualnotebook
