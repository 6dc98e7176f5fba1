#include "ColorFieldTest.h"

using testing::ElementsAre;
using virtualnotebook::Monitor;

namespace {

Monitor MakeMonitor(const std::wstring& adapter, const std::wstring& model,
                    const std::wstring& text = L"Generic PnP Monitor") {
  Monitor monitor;
  monitor.deviceName = adapter + L"\\Monitor0";
  monitor.deviceString = text;
  monitor.deviceID = L"MONITOR\\" + model + L"\\{4d36e96e}\\0001";
  monitor.deviceKey = L"key of " + model;
  return monitor;
}

class ColorFieldApiTargetMonitor : public ColorFieldTest {
 protected:
  // Adapters DISPLAY1, DISPLAY2, ... with one monitor each; the first is the primary display.
  void Show(const std::vector<Monitor>& monitors) {
    notebook.adapters.clear();
    notebook.desktop.clear();
    for (const Monitor& monitor : monitors) {
      const std::wstring name = monitor.deviceName.substr(0, monitor.deviceName.rfind(L'\\'));
      notebook.adapters.push_back(
          {.deviceName = name, .deviceString = L"Graphics", .monitors = {monitor}});
      notebook.desktop.push_back({name, notebook.desktop.empty() ? DWORD{1} : DWORD{0}});
    }
  }

  // The device id that GetTargetMonitorName gives.
  std::wstring Target() {
    std::wstring name = L"before";
    EXPECT_EQ(api.GetTargetMonitorName(name), ResultOk);
    return name;
  }

  const std::wstring first = L"\\\\.\\DISPLAY1";
  const std::wstring second = L"\\\\.\\DISPLAY2";
  const std::wstring third = L"\\\\.\\DISPLAY3";
};

// --- GetTargetMonitorName: the choice ---

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_TheInternalPanelWinsOverThePrimaryDisplay) {
  const Monitor internal = MakeMonitor(second, L"NVX1234");
  Show({MakeMonitor(first, L"AAA0001"), internal, MakeMonitor(third, L"BBB0002")});
  EXPECT_EQ(Target(), internal.deviceID);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_TheInternalPanelWinsOverTheMakersMonitor) {
  Init(velora::SetTypeDdcci);
  const Monitor internal = MakeMonitor(second, L"NVX1234");
  Show({MakeMonitor(first, L"AAA0001", L"NVX Display"), internal});
  EXPECT_EQ(Target(), internal.deviceID);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_WmiFailsOnAMachineWithOneMonitor) {
  notebook.FailCall("WmiQuery::ExcuteQueryImpl", 1, 5);
  const Monitor only = MakeMonitor(second, L"AAA0001");
  Show({only});
  // Chosen as internal: it is not on the primary display.
  notebook.desktop = {{first, MONITORINFOF_PRIMARY}};
  EXPECT_EQ(Target(), only.deviceID);
  EXPECT_LOG({3,
              L"QueryWmiNamespaceProperty WmiMonitorConnectionParams error."
              L"(ColorFieldApi::GetTargetMonitorNameByWmi)"},
             {2, L"GetTargetMonitorNameByWmi Failed!(ColorFieldApi::GetTargetMonitorName)"},
             {1, L"monitorName is " + only.deviceID + L"(ColorFieldApi::GetTargetMonitorName)"});
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_WmiFailsOnAMachineWithTwoMonitors) {
  notebook.FailCall("WmiQuery::ExcuteQueryImpl", 0, 5);
  const Monitor primary = MakeMonitor(first, L"AAA0001");
  const Monitor maker = MakeMonitor(second, L"BBB0002", L"NVX Display");
  Show({primary, maker});
  Init(velora::SetType3DLut);
  EXPECT_EQ(Target(), primary.deviceID);
  Init(velora::SetTypeDdcci);
  EXPECT_EQ(Target(), maker.deviceID);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_MirroredPanelIsNoInternalMatch) {
  Monitor mirror = MakeMonitor(second, L"NVX1234");
  mirror.deviceID = L"MONITOR\\NVX1234\\{4d36e96e}\\0002";
  const Monitor panelRow = MakeMonitor(first, L"NVX1234");
  Show({panelRow, mirror});
  EXPECT_EQ(Target(), panelRow.deviceID);
  notebook.desktop = {{first, 0}, {second, MONITORINFOF_PRIMARY}};
  EXPECT_EQ(Target(), mirror.deviceID);
}

TEST_F(ColorFieldApiTargetMonitor,
       GetTargetMonitorName_OnlyAMachineOfWay0LooksForTheMakersMonitor) {
  const Monitor primary = MakeMonitor(first, L"AAA0001");
  const Monitor maker = MakeMonitor(second, L"BBB0002", L"a NVX display");
  Show({primary, maker});
  for (const ColorFieldSetType setType : {1u, 2u, 3u, 4u}) {
    Init(setType);
    EXPECT_EQ(Target(), primary.deviceID) << setType;
  }
  Init(velora::SetTypeDdcci);
  EXPECT_EQ(Target(), maker.deviceID);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_TwoMonitorsOfTheMaker) {
  Init(velora::SetTypeDdcci);
  const Monitor primary = MakeMonitor(first, L"AAA0001");
  Show({primary, MakeMonitor(second, L"BBB0002", L"NVX 1"),
        MakeMonitor(third, L"CCC0003", L"NVX 2")});
  EXPECT_EQ(Target(), primary.deviceID);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_ALaterRowOfThePrimaryDisplayCounts) {
  const Monitor primary = MakeMonitor(first, L"AAA0001");
  Monitor later = MakeMonitor(first, L"BBB0002");
  later.deviceName = first + L"\\Monitor1";
  Show({primary});
  notebook.adapters[0].monitors.push_back(later);
  EXPECT_EQ(Target(), later.deviceID);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_ThePrimaryNameIsAPartOfAnother) {
  const Monitor other = MakeMonitor(L"\\\\.\\DISPLAY10", L"BBB0002");
  Show({MakeMonitor(first, L"AAA0001"), other});
  EXPECT_EQ(Target(), other.deviceID);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_NoRowForThePrimaryDisplay) {
  Show({MakeMonitor(second, L"AAA0001"), MakeMonitor(third, L"BBB0002")});
  notebook.desktop = {{first, MONITORINFOF_PRIMARY}};
  EXPECT_EQ(Target(), L"");
  std::wstring name = L"before";
  notebook.ForgetRecords();
  EXPECT_EQ(api.GetDefaultIccFile(name), ResultFailed);
  EXPECT_EQ(name, L"before");
  EXPECT_LOGGED(3, L"currentMainMonitorName empty!(ColorFieldApi::GetDefaultIccFile)");
  EXPECT_EQ(notebook.CountCalls("WcsGetDefaultColorProfile"), 0u);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_IsRenewedByEachRun) {
  EXPECT_EQ(Target(), panel);
  Show({MakeMonitor(first, L"AAA0001")});
  EXPECT_EQ(Target(), L"MONITOR\\AAA0001\\{4d36e96e}\\0001");
}

// --- GetTargetMonitorName: the primary display ---

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_NoPrimaryDisplayInAnyRun) {
  notebook.desktop.clear();
  std::wstring name = L"before";
  EXPECT_EQ(api.GetTargetMonitorName(name), ResultFailed);
  EXPECT_EQ(name, L"before");
  EXPECT_EQ(notebook.CountCalls("EnumDisplayDevicesW"), 0u);
  EXPECT_EQ(api.GetDefaultIccFile(name), ResultFailed);
  EXPECT_LOGGED(3, L"GetTargetMonitorName Failed!(ColorFieldApi::GetDefaultIccFile)");
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_ThePrimaryNameOfAnEarlierRunStays) {
  const Monitor primary = MakeMonitor(first, L"AAA0001");
  Show({primary, MakeMonitor(second, L"BBB0002")});
  EXPECT_EQ(Target(), primary.deviceID);
  notebook.desktop.clear();
  EXPECT_EQ(Target(), primary.deviceID);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_FlagsEqualOneExactly) {
  notebook.desktop = {{first, MONITORINFOF_PRIMARY | 2}, {second, 0}};
  std::wstring name;
  EXPECT_EQ(api.GetTargetMonitorName(name), ResultFailed);
  EXPECT_EQ(notebook.CountCalls("GetMonitorInfoW"), 2u);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_ThePrimaryMonitorEndsTheEnumeration) {
  notebook.desktop = {{third, 0}, {first, MONITORINFOF_PRIMARY}, {second, MONITORINFOF_PRIMARY}};
  EXPECT_EQ(Target(), panel);
  EXPECT_EQ(notebook.CountCalls("GetMonitorInfoW"), 2u);
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorName_MonitorWithoutInformationIsPassedOver) {
  notebook.desktop = {{third, MONITORINFOF_PRIMARY}, {first, MONITORINFOF_PRIMARY}};
  notebook.FailCall("GetMonitorInfoW", 1, FALSE);
  EXPECT_EQ(Target(), panel);
  EXPECT_EQ(notebook.CountCalls("GetMonitorInfoW"), 2u);
}

// --- GetTargetMonitorNameByWmi ---

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorNameByWmi_BetweenTheFirstTwoBackslashes) {
  const struct {
    const wchar_t* instance;
    const wchar_t* name;
  } kRows[] = {{L"DISPLAY\\BOE05EF\\4&1\\x_0", L"BOE05EF"},
               {L"DISPLAY\\LONGMODEL12\\4", L"LONGMODEL12"},  // not cut
               {L"DISPLAY\\\\4", L""},
               {L"DISPLAY\\BOE05EF", L"BOE05EF"},
               {L"DISPLAY", L""}};
  for (const auto& row : kRows) {
    notebook.AnswerWmi(L"ROOT\\WMI",
                       L"SELECT * FROM WmiMonitorConnectionParams WHERE "
                       L"VideoOutputTechnology=2147483648",
                       L"InstanceName", {row.instance, L"DISPLAY\\SECOND\\row"});
    notebook.ForgetRecords();
    std::wstring name = L"before";
    EXPECT_EQ(api.GetTargetMonitorNameByWmi(name), ResultOk);
    EXPECT_EQ(name, row.name);
    EXPECT_LOG({1, std::wstring(L"instanceName is ") + row.instance +
                       L"(ColorFieldApi::GetTargetMonitorNameByWmi)"},
               {1, std::wstring(L"monitorDriverName is ") + row.name +
                       L"(ColorFieldApi::GetTargetMonitorNameByWmi)"});
  }
}

TEST_F(ColorFieldApiTargetMonitor, GetTargetMonitorNameByWmi_NoRow) {
  notebook.AnswerWmi(L"ROOT\\WMI",
                     L"SELECT * FROM WmiMonitorConnectionParams WHERE "
                     L"VideoOutputTechnology=2147483648",
                     L"InstanceName", {});
  std::wstring name = L"before";
  EXPECT_EQ(api.GetTargetMonitorNameByWmi(name), ResultFailed);
  EXPECT_EQ(name, L"before");
  EXPECT_LOG({3,
              L"QueryWmiNamespaceProperty WmiMonitorConnectionParams error."
              L"(ColorFieldApi::GetTargetMonitorNameByWmi)"});
}

// --- EnumerateCurrentAdapters ---

TEST_F(ColorFieldApiTargetMonitor, EnumerateCurrentAdapters_AppendsWhatIsActiveAndAttached) {
  std::vector<Monitor> rows;
  for (const DWORD flags : {0u, 1u, 2u, 3u, 7u}) {
    rows.push_back(MakeMonitor(first, L"AAA000" + std::to_wstring(flags)));
    rows.back().stateFlags = flags;
  }
  notebook.adapters = {{.deviceName = first, .deviceString = L"Graphics", .monitors = rows}};
  DISPLAY_DEVICEW adapter{};
  first.copy(adapter.DeviceName, 32);
  std::vector<velora::MonitorInfo> monitors(1);
  api.EnumerateCurrentAdapters(adapter, monitors);
  ASSERT_EQ(monitors.size(), 3u);
  EXPECT_EQ(monitors[1].deviceName, first + L"\\Monitor0");
  EXPECT_EQ(monitors[1].deviceID, L"MONITOR\\AAA0003\\{4d36e96e}\\0001");
  EXPECT_EQ(monitors[1].modelDriver, L"AAA0003");
  EXPECT_EQ(monitors[1].deviceString, L"Generic PnP Monitor");
  EXPECT_EQ(monitors[1].deviceKey, L"key of AAA0003");
  EXPECT_EQ(monitors[2].modelDriver, L"AAA0007");
  EXPECT_LOG();
}

TEST_F(ColorFieldApiTargetMonitor, EnumerateCurrentAdapters_DeviceIdWithoutBackslashesIsSkipped) {
  Monitor nameless = MakeMonitor(first, L"AAA0001");
  nameless.deviceID = L"MONITOR";
  notebook.adapters = {{.deviceName = first,
                        .deviceString = L"Graphics",
                        .monitors = {nameless, MakeMonitor(first, L"B")}}};
  DISPLAY_DEVICEW adapter{};
  first.copy(adapter.DeviceName, 32);
  std::vector<velora::MonitorInfo> monitors;
  api.EnumerateCurrentAdapters(adapter, monitors);
  ASSERT_EQ(monitors.size(), 1u);
  EXPECT_EQ(monitors[0].modelDriver, L"B");
  EXPECT_LOG({2, L"GetModelDriverFromDeviceID Failed.(ColorFieldApi::EnumerateCurrentAdapters)"});
}

// --- GetModelDriverFromDeviceID ---

TEST_F(ColorFieldApiTargetMonitor, GetModelDriverFromDeviceID) {
  const struct {
    const wchar_t* deviceID;
    bool result;
    const wchar_t* model;
  } kRows[] = {{L"MONITOR\\BOE05EF\\{4d}\\0001", true, L"BOE05EF"},
               {L"MONITOR\\BOE05E\\", true, L"BOE05E"},
               {L"MONITOR\\BOE05EF8\\", true, L"BOE05EF"},  // cut at 7
               {L"\\\\", true, L""},
               {L"MONITOR\\BOE05EF", false, L""},
               {L"MONITOR", false, L""},
               {L"", false, L""},
               {nullptr, false, L""}};
  for (const auto& row : kRows) {
    std::wstring model = L"before";
    EXPECT_EQ(api.GetModelDriverFromDeviceID(row.deviceID, model), row.result);
    EXPECT_EQ(model, row.model);
  }
}

}  // namespace
