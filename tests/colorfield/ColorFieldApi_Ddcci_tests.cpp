#include <cstddef>
#include <limits>
#include <optional>

#include "ColorFieldTest.h"
#include "colorfield/MonitorConfiguration.h"
#include "support/FailingNew.h"

using testing::ElementsAre;
using testing::Gt;
using testing::IsEmpty;
using testing::SizeIs;
using virtualnotebook::VcpWrite;

namespace {

constexpr ColorFieldMode kLowest = std::numeric_limits<ColorFieldMode>::min();
constexpr ColorFieldMode kHighest = std::numeric_limits<ColorFieldMode>::max();

constexpr wchar_t kOtherModel[] = L"AAA0001";
constexpr wchar_t kMakersModel[] = L"NVX2701";

const testsupport::LogLine kFailedLine = {
    3, L"EnableColorFieldByDdcci failed.(ColorFieldApi::EnableColorFieldByDdcci)"};
const testsupport::LogLine kSaveFailedLine = {
    3, L"SaveCurrentSettings is failed(ColorFieldApi::SetMonitorColorField)"};
const testsupport::LogLine kNoHandleLine = {
    3, L"LCD physicalMonitorHandle is nullptr(ColorFieldApi::SetMonitorColorField)"};
const testsupport::LogLine kNoCountLine = {
    3,
    L"Get Number Of Physical Monitors From HMONITOR Failed!(ColorFieldApi::SetMonitorColorField)"};
const testsupport::LogLine kNoArrayLine = {
    3, L"physicalMonitors is nullptr!(ColorFieldApi::SetMonitorColorField)"};
const testsupport::LogLine kNoMonitorsLine = {
    3, L"Get Physical Monitors From HMONITOR Failed!(ColorFieldApi::SetMonitorColorField)"};
const testsupport::LogLine kNoInfoLine = {
    3, L"GetMonitorInfo failed.(ColorFieldApi::IsNorvexMonitorByHmonitor)"};

testsupport::LogLine RefusedLine(unsigned value, unsigned count, unsigned index,
                                 const std::wstring& description) {
  return {3, L"LCD SetVCPFeature set Failed! Code:224, value:" + std::to_wstring(value) +
                 L", physicalMonitorsCount:" + std::to_wstring(count) + L", index:" +
                 std::to_wstring(index) + L", description:" + description +
                 L"(ColorFieldApi::SetMonitorColorField)"};
}

testsupport::LogLine WrongModeLine(ColorFieldMode mode) {
  return {3, L"mode is error, mode is " + std::to_wstring(mode) +
                 L"(ColorFieldApi::EnableColorFieldByDdcci)"};
}

HMONITOR Handle(size_t number) { return reinterpret_cast<HMONITOR>(number); }

// A machine without monitors. Whatever a test does: each array of physical monitors is destroyed
// once, and nothing but the colour mode's code and its two values leaves.
class ColorFieldApiDdcci : public testsupport::NotebookTest {
 protected:
  ColorFieldApiDdcci() { notebook.ForgetRecords(); }  // of the construction of api
  void TearDown() override {
    for (const auto& array : notebook.monitorArrays) {
      EXPECT_EQ(array.destroyed, 1u) << "of monitor " << array.desktopIndex;
    }
    EXPECT_EQ(notebook.CountCalls("DestroyPhysicalMonitors"), notebook.monitorArrays.size());
    for (const auto& call : notebook.calls) {
      if (call.function == "SetVCPFeature") {
        EXPECT_EQ(call.arguments[1], L"224");
        EXPECT_THAT(call.arguments[2], testing::AnyOf(L"6", L"1"));
      }
    }
  }

  // The next HMONITOR, with these physical monitors behind it.
  void Plug(const wchar_t* model, const std::vector<std::wstring>& descriptions) {
    PlugInMonitor(notebook, L"DISPLAY\\" + std::wstring(model) + L"\\5&2b&0&UID4352", L"");
    auto& physical = notebook.desktop.back().physicalMonitors;
    physical.clear();
    for (const std::wstring& description : descriptions) {
      physical.push_back({.description = description, .taken = {}});
    }
  }

  virtualnotebook::PhysicalMonitor& Device(size_t monitor, size_t index = 0) {
    return notebook.desktop.at(monitor).physicalMonitors.at(index);
  }
  // What the device shows, "saved" or not.
  std::vector<VcpWrite> Taken(size_t monitor, size_t index = 0) {
    return Device(monitor, index).taken;
  }
  static VcpWrite Saved(uint32_t value) { return {224, value, true}; }
  static VcpWrite Shown(uint32_t value) { return {224, value, false}; }

  std::vector<std::string> Calls() const {
    return testsupport::CallsOf(
        notebook, {"EnumDisplayMonitors", "GetMonitorInfoW", "EnumDisplayDevicesW",
                   "GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR",
                   "SetVCPFeature", "SaveCurrentSettings", "DestroyPhysicalMonitors"});
  }

  velora::ColorFieldApi api;
};

// --- The value ---

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_WritesTheModesValueAndSavesIt) {
  Plug(kMakersModel, {L"NVX Studio 27"});
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultOk);
  EXPECT_THAT(Taken(0), ElementsAre(Saved(6)));
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultOk);
  EXPECT_THAT(Taken(0), ElementsAre(Saved(6), Saved(1)));
  EXPECT_LOG();
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_TheCallsInTheirOrder) {
  Plug(kOtherModel, {L"NVX Studio 27"});
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultOk);
  // No identity is asked for in the first pass, and the monitor is never read.
  EXPECT_THAT(Calls(), ElementsAre("EnumDisplayMonitors", "GetNumberOfPhysicalMonitorsFromHMONITOR",
                                   "GetPhysicalMonitorsFromHMONITOR", "SetVCPFeature",
                                   "SaveCurrentSettings", "DestroyPhysicalMonitors"));
  EXPECT_EQ(notebook.calls.front().arguments[0], L"null");
  EXPECT_EQ(notebook.calls.front().arguments[1], L"null");
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_OtherModesDontEnumerate) {
  Plug(kMakersModel, {L"NVX Studio 27"});
  std::vector<ColorFieldMode> modes = {kLowest, 224, 256 + 1, 65536 + 2, kHighest};
  for (ColorFieldMode mode = -20; mode <= 20; ++mode) {
    if (mode != SrgbMode && mode != P3Mode) {
      modes.push_back(mode);
    }
  }
  for (const ColorFieldMode mode : modes) {
    notebook.ForgetRecords();
    EXPECT_EQ(api.EnableColorFieldByDdcci(mode), ResultFailed);
    EXPECT_LOG(WrongModeLine(mode));
    EXPECT_THAT(Calls(), IsEmpty());
  }
}

// --- The first pass: by description ---

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_NoMonitorsAtAll) {
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultColorFieldError);
  EXPECT_THAT(Calls(), ElementsAre("EnumDisplayMonitors", "EnumDisplayMonitors"));
  EXPECT_LOG(kFailedLine);
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_OtherDescriptionsArePassedOverSilently) {
  Plug(kOtherModel, {L"Generic PnP Monitor", L"nvx", L"27\" by NVX", L"NV X"});
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultOk);
  EXPECT_THAT(Taken(0, 0), IsEmpty());
  EXPECT_THAT(Taken(0, 1), IsEmpty());
  EXPECT_THAT(Taken(0, 2), ElementsAre(Saved(6)));
  EXPECT_THAT(Taken(0, 3), IsEmpty());
  EXPECT_LOG();
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_AnotherMakersMonitorInFrontEndsBothPasses) {
  Plug(kOtherModel, {L"Generic PnP Monitor"});
  Plug(kMakersModel, {L"NVX Studio 27"});
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultColorFieldError);
  EXPECT_THAT(Calls(), ElementsAre("EnumDisplayMonitors", "GetNumberOfPhysicalMonitorsFromHMONITOR",
                                   "GetPhysicalMonitorsFromHMONITOR", "DestroyPhysicalMonitors",
                                   "EnumDisplayMonitors", "GetMonitorInfoW", "EnumDisplayDevicesW",
                                   "EnumDisplayDevicesW"));
  EXPECT_THAT(Taken(1), IsEmpty());
  EXPECT_LOG(kFailedLine);
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_GoesPastAMonitorThatSaved) {
  Plug(kMakersModel, {L"NVX Studio 27"});
  Plug(kOtherModel, {L"NVX Studio 24"});
  Plug(kOtherModel, {L"Generic PnP Monitor"});
  Plug(kMakersModel, {L"NVX Studio 32"});
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultOk);
  EXPECT_THAT(Taken(0), ElementsAre(Saved(1)));
  EXPECT_THAT(Taken(1), ElementsAre(Saved(1)));
  // The third ends the pass, which is the only one.
  EXPECT_THAT(Taken(3), IsEmpty());
  EXPECT_THAT(notebook.monitorArrays, SizeIs(3));
  EXPECT_EQ(notebook.CountCalls("EnumDisplayMonitors"), 1u);
  EXPECT_LOG();
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_NothingBehindTheMonitor) {
  Plug(kOtherModel, {});
  Plug(kMakersModel, {L"NVX Studio 27"});
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultColorFieldError);
  EXPECT_THAT(notebook.monitorArrays, SizeIs(1));
  EXPECT_LOG(kFailedLine);
}

// --- The second pass: by identity ---

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_ByTheInterfacePath) {
  Plug(kMakersModel, {L"Generic PnP Monitor"});
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultOk);
  EXPECT_THAT(Taken(0), ElementsAre(Saved(6)));
  EXPECT_THAT(Calls(), ElementsAre("EnumDisplayMonitors", "GetNumberOfPhysicalMonitorsFromHMONITOR",
                                   "GetPhysicalMonitorsFromHMONITOR", "DestroyPhysicalMonitors",
                                   "EnumDisplayMonitors", "GetMonitorInfoW", "EnumDisplayDevicesW",
                                   "GetNumberOfPhysicalMonitorsFromHMONITOR",
                                   "GetPhysicalMonitorsFromHMONITOR", "SetVCPFeature",
                                   "SaveCurrentSettings", "DestroyPhysicalMonitors"));
  EXPECT_EQ(testing::PrintToString(notebook.calls[6]),
            "EnumDisplayDevicesW(\\\\.\\DISPLAY1, 0, pointer, 1)");
  EXPECT_LOG();
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_ByIdentityDescriptionsDontMatter) {
  Plug(kMakersModel, {L"Generic PnP Monitor", L""});
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultOk);
  EXPECT_THAT(Taken(0, 0), ElementsAre(Saved(1)));
  EXPECT_THAT(Taken(0, 1), ElementsAre(Saved(1)));
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_ByIdentityGoesPastAMonitorThatSaved) {
  Plug(kMakersModel, {L"first"});
  Plug(kMakersModel, {L"second"});
  Plug(kOtherModel, {L"NVX Studio 27"});
  Plug(kMakersModel, {L"fourth"});
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultOk);
  EXPECT_THAT(Taken(0), ElementsAre(Saved(1)));
  EXPECT_THAT(Taken(1), ElementsAre(Saved(1)));
  EXPECT_THAT(Taken(2), IsEmpty());
  EXPECT_THAT(Taken(3), IsEmpty());
  EXPECT_LOG();
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_ByIdentityARefusalEndsThePass) {
  Plug(kMakersModel, {L"first"});
  Plug(kMakersModel, {L"second"});
  Device(0).answersDdcci = false;
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultColorFieldError);
  EXPECT_THAT(Taken(1), IsEmpty());
  EXPECT_LOG(RefusedLine(1, 1, 0, L"first"), kFailedLine);
}

TEST_F(ColorFieldApiDdcci, IsNorvexMonitorByHmonitor_AnyMonitorOfTheAdapter) {
  Plug(kOtherModel, {L""});
  EXPECT_FALSE(api.IsNorvexMonitorByHmonitor(Handle(1)));
  EXPECT_EQ(notebook.CountCalls("EnumDisplayDevicesW"), 2u);
  virtualnotebook::Monitor second;
  second.deviceID = L"MONITOR\\AAA0001\\{x}\\0002";
  second.interfacePath = L"\\\\?\\DISPLAY#NVX2701#5&2b&0&UID4353";
  notebook.adapters[0].monitors.push_back(second);
  EXPECT_TRUE(api.IsNorvexMonitorByHmonitor(Handle(1)));
  EXPECT_LOG();
}

TEST_F(ColorFieldApiDdcci, IsNorvexMonitorByHmonitor_TheDeviceIdIsNotTheInterfacePath) {
  Plug(kMakersModel, {L""});
  notebook.adapters[0].monitors[0].interfacePath = L"\\\\?\\DISPLAY#AAA0001#5&2b&0&UID4352";
  EXPECT_FALSE(api.IsNorvexMonitorByHmonitor(Handle(1)));
}

TEST_F(ColorFieldApiDdcci, IsNorvexMonitorByHmonitor_AnyResultButOneEndsTheSearch) {
  Plug(kMakersModel, {L""});
  notebook.FailCall("EnumDisplayDevicesW", 1, 2);
  EXPECT_FALSE(api.IsNorvexMonitorByHmonitor(Handle(1)));
  EXPECT_EQ(notebook.CountCalls("EnumDisplayDevicesW"), 1u);
}

TEST_F(ColorFieldApiDdcci, IsNorvexMonitorByHmonitor_NoMonitorInfo) {
  Plug(kMakersModel, {L""});
  notebook.FailCall("GetMonitorInfoW", 1, FALSE, ERROR_INVALID_MONITOR_HANDLE);
  EXPECT_FALSE(api.IsNorvexMonitorByHmonitor(Handle(1)));
  EXPECT_LOG(kNoInfoLine);
  EXPECT_EQ(notebook.CountCalls("EnumDisplayDevicesW"), 0u);
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_NoMonitorInfo) {
  Plug(kMakersModel, {L"Generic PnP Monitor"});
  notebook.FailCall("GetMonitorInfoW", 1, FALSE, ERROR_INVALID_MONITOR_HANDLE);
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultColorFieldError);
  EXPECT_LOG(kNoInfoLine, kFailedLine);
  EXPECT_THAT(notebook.monitorArrays, SizeIs(1)) << "the first pass's";
}

TEST_F(ColorFieldApiDdcci, IsNorvexMonitorName_TheMarkAnywhere) {
  using velora::ColorFieldApi;
  EXPECT_TRUE(ColorFieldApi::IsNorvexMonitorName(L"NVX"));
  EXPECT_TRUE(ColorFieldApi::IsNorvexMonitorName(L"27\" NVX"));
  EXPECT_TRUE(ColorFieldApi::IsNorvexMonitorName(L"NNVXX"));
  EXPECT_FALSE(ColorFieldApi::IsNorvexMonitorName(L""));
  EXPECT_FALSE(ColorFieldApi::IsNorvexMonitorName(L"NV"));
  EXPECT_FALSE(ColorFieldApi::IsNorvexMonitorName(L"Nvx"));
}

// --- Writes and saves that fail ---

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_AMatchThatRefusesLeavesNoSecondPass) {
  Plug(kMakersModel, {L"NVX Studio 27"});
  Plug(kMakersModel, {L"NVX Studio 24"});
  Device(0).answersDdcci = false;
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultColorFieldError);
  EXPECT_LOG(RefusedLine(6, 1, 0, L"NVX Studio 27"), kFailedLine);
  EXPECT_EQ(notebook.CountCalls("EnumDisplayMonitors"), 1u);
  EXPECT_EQ(notebook.CountCalls("SaveCurrentSettings"), 0u);
  EXPECT_THAT(Taken(1), IsEmpty());
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_ARefusalDoesNotStopTheOthersOfItsMonitor) {
  Plug(kMakersModel, {L"other", L"NVX a", L"NVX b"});
  Plug(kMakersModel, {L"NVX c"});
  Device(0, 1).answersDdcci = false;
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultOk);
  EXPECT_LOG(RefusedLine(1, 3, 1, L"NVX a"));
  EXPECT_THAT(Taken(0, 2), ElementsAre(Saved(1)));
  EXPECT_THAT(Taken(1), ElementsAre(Saved(1)));
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_ARefusalKeepsAnEarlierSave) {
  Plug(kMakersModel, {L"NVX a", L"NVX b"});
  Plug(kMakersModel, {L"NVX c"});
  Device(0, 1).answersDdcci = false;
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultOk);
  EXPECT_LOG(RefusedLine(1, 2, 1, L"NVX b"));
  EXPECT_THAT(Taken(1), ElementsAre(Saved(1))) << "the enumeration goes on";
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_AResultOtherThanOneIsARefusal) {
  Plug(kMakersModel, {L"NVX a"});
  notebook.FailCall("SetVCPFeature", 1, 2);
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultColorFieldError);
  EXPECT_LOG(RefusedLine(1, 1, 0, L"NVX a"), kFailedLine);
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_AFailedSaveLeavesTheValue) {
  Plug(kMakersModel, {L"NVX a"});
  Plug(kMakersModel, {L"NVX b"});
  notebook.FailCall("SaveCurrentSettings", 1, FALSE, ERROR_GEN_FAILURE);
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultColorFieldError);
  EXPECT_LOG(kSaveFailedLine, kFailedLine);
  EXPECT_THAT(Taken(0), ElementsAre(Shown(1)));
  EXPECT_THAT(Taken(1), IsEmpty());
  EXPECT_EQ(notebook.CountCalls("EnumDisplayMonitors"), 1u);
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_AnEarlierSaveCountsButTheLastDecides) {
  Plug(kMakersModel, {L"NVX a", L"NVX b"});
  Plug(kMakersModel, {L"NVX c"});
  notebook.FailCall("SaveCurrentSettings", 2, FALSE, ERROR_GEN_FAILURE);
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultOk);
  EXPECT_LOG(kSaveFailedLine);
  EXPECT_THAT(Taken(0, 0), ElementsAre(Saved(1)));
  EXPECT_THAT(Taken(0, 1), ElementsAre(Shown(1)));
  EXPECT_THAT(Taken(1), IsEmpty());
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_ASaveOtherThanOneGoesOnAsAFailure) {
  Plug(kMakersModel, {L"NVX a"});
  Plug(kMakersModel, {L"other"});
  notebook.FailCall("SaveCurrentSettings", 1, 2);
  EXPECT_EQ(api.EnableColorFieldByDdcci(P3Mode), ResultColorFieldError);
  EXPECT_LOG(kSaveFailedLine, kFailedLine);
  EXPECT_THAT(notebook.monitorArrays, SizeIs(2)) << "the second monitor was looked at";
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_AFailedSaveAndLaterASuccess) {
  Plug(kMakersModel, {L"NVX a", L"NVX b"});
  notebook.FailCall("SaveCurrentSettings", 1, FALSE);
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultOk);
  EXPECT_LOG(kSaveFailedLine);
  EXPECT_THAT(Taken(0, 0), ElementsAre(Shown(6)));
  EXPECT_THAT(Taken(0, 1), ElementsAre(Saved(6)));
}

// --- Handles ---

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_AMonitorWithoutHandleIsNoMatch) {
  Plug(kOtherModel, {L"NVX Studio 27"});
  Device(0).hasHandle = false;
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultColorFieldError);
  EXPECT_LOG(kNoHandleLine, kFailedLine);
  EXPECT_EQ(notebook.CountCalls("EnumDisplayMonitors"), 2u);
  EXPECT_EQ(notebook.CountCalls("SetVCPFeature"), 0u);
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_TheOthersBesideAMonitorWithoutHandle) {
  Plug(kOtherModel, {L"NVX a", L"NVX b"});
  Device(0, 0).hasHandle = false;
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultOk);
  EXPECT_LOG(kNoHandleLine);
  EXPECT_THAT(Taken(0, 1), ElementsAre(Saved(6)));
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_WithoutHandleInBothPasses) {
  Plug(kMakersModel, {L"Generic PnP Monitor"});
  Device(0).hasHandle = false;
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultColorFieldError);
  EXPECT_LOG(kNoHandleLine, kNoHandleLine, kFailedLine);
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_NoNumberOfMonitors) {
  Plug(kOtherModel, {L"NVX Studio 27"});
  notebook.FailCall("GetNumberOfPhysicalMonitorsFromHMONITOR", 1, FALSE);
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultColorFieldError);
  EXPECT_LOG(kNoCountLine, kFailedLine);
  EXPECT_EQ(notebook.CountCalls("GetPhysicalMonitorsFromHMONITOR"), 0u);
  EXPECT_EQ(notebook.CountCalls("EnumDisplayMonitors"), 2u);
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_NoMemoryForTheArray) {
  Plug(kOtherModel, {L"NVX Studio 27"});
  const testsupport::FailingNew noMemory(1);
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultColorFieldError);
  EXPECT_TRUE(noMemory.HasFailed());
  EXPECT_LOG(kNoArrayLine, kFailedLine);
  EXPECT_EQ(notebook.CountCalls("GetPhysicalMonitorsFromHMONITOR"), 0u);
}

TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_NoPhysicalMonitors) {
  Plug(kOtherModel, {L"NVX Studio 27"});
  Plug(kMakersModel, {L"NVX Studio 24"});
  notebook.FailCall("GetPhysicalMonitorsFromHMONITOR", 1, FALSE);
  EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultColorFieldError);
  EXPECT_LOG(kNoMonitorsLine, kFailedLine);
  EXPECT_EQ(notebook.CountCalls("DestroyPhysicalMonitors"), 0u) << "there are no handles";
  EXPECT_EQ(notebook.CountCalls("SetVCPFeature"), 0u);
}

// A first pass that came to nothing does not stand in the second one's way.
TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_FailuresOfTheFirstPassOnly) {
  for (const char* function :
       {"GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR"}) {
    notebook.adapters.clear();
    notebook.desktop.clear();
    notebook.ClearFaults();
    Plug(kMakersModel, {L"NVX Studio 27"});
    notebook.FailCall(function, 1, FALSE);
    EXPECT_EQ(api.EnableColorFieldByDdcci(SrgbMode), ResultOk) << function;
    EXPECT_THAT(Taken(0), ElementsAre(Saved(6)));
  }
}

// Two monitors with two devices each, and once each call of the road fails.
TEST_F(ColorFieldApiDdcci, EnableColorFieldByDdcci_EachCallFailsOnce) {
  for (const wchar_t* description : {L"NVX", L"Generic PnP Monitor"}) {
    for (const char* function :
         {"EnumDisplayMonitors", "GetMonitorInfoW", "EnumDisplayDevicesW",
          "GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR",
          "SetVCPFeature", "SaveCurrentSettings"}) {
      for (unsigned n = 1; n <= 5; ++n) {
        SCOPED_TRACE(function + std::to_string(n));
        notebook.adapters.clear();
        notebook.desktop.clear();
        Plug(kMakersModel, {description, description});
        Plug(kMakersModel, {description, description});
        notebook.ClearFaults();
        notebook.FailCall(function, n, FALSE);
        const ResultT result = api.EnableColorFieldByDdcci(SrgbMode);
        const bool saved =
            std::ranges::any_of(notebook.desktop, [](const virtualnotebook::DesktopMonitor& one) {
              return std::ranges::any_of(one.physicalMonitors,
                                         [](const virtualnotebook::PhysicalMonitor& device) {
                                           return device.taken == std::vector<VcpWrite>{Saved(6)};
                                         });
            });
        EXPECT_EQ(result, saved ? ResultOk : ResultColorFieldError);
        EXPECT_EQ(notebook.CountOpenMonitorArrays(), 0u);
      }
    }
  }
  EXPECT_THAT(notebook.monitorArrays.size(), Gt(100u));
}

TEST_F(ColorFieldApiDdcci, SetMonitorColorField_AnExceptionLeavesNoHandlesOpen) {
  Plug(kMakersModel, {L"NVX Studio 27"});
  velora::DdcciRequest request{};
  request.vcpCode = 224;
  request.vcpValue = 6;
  notebook.ThrowFrom("SetVCPFeature", 1, "thrown by the notebook");
  EXPECT_THROW(api.SetMonitorColorField(Handle(1), request), std::runtime_error);
  EXPECT_THAT(notebook.monitorArrays, SizeIs(1));
}

// --- The record that travels ---

TEST_F(ColorFieldApiDdcci, SetMonitorColorField_WhatIsWrittenDown) {
  Plug(kMakersModel, {L"NVX Studio 27"});
  velora::DdcciRequest request{224, 6, false, false, 0, &api};
  EXPECT_EQ(api.SetMonitorColorField(Handle(1), request), 1);
  EXPECT_TRUE(request.matched);
  EXPECT_TRUE(request.succeeded);

  request = {224, 6, false, false, 0, &api};
  notebook.FailCall("SaveCurrentSettings", 1, FALSE);
  EXPECT_EQ(api.SetMonitorColorField(Handle(1), request), 0);
  EXPECT_TRUE(request.matched);
  EXPECT_FALSE(request.succeeded);

  request = {224, 6, false, false, 1, &api};
  notebook.adapters.clear();
  EXPECT_EQ(api.SetMonitorColorField(Handle(1), request), 0);
  EXPECT_FALSE(request.matched);
}

TEST_F(ColorFieldApiDdcci, SetMonitorColorFieldProc_WithoutARequestTheEnumerationGoesOn) {
  Plug(kMakersModel, {L"NVX Studio 27"});
  velora::DdcciRequest request{224, 6, false, false, 0, nullptr};
  EXPECT_EQ(velora::ColorFieldApi::SetMonitorColorFieldProc(Handle(1), nullptr, nullptr, 0), 1);
  EXPECT_EQ(velora::ColorFieldApi::SetMonitorColorFieldProc(Handle(1), nullptr, nullptr,
                                                            reinterpret_cast<LPARAM>(&request)),
            1);
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(ColorFieldApiDdcci, DdcciRequest_Layout) {
  using velora::DdcciRequest;
  EXPECT_EQ(offsetof(DdcciRequest, vcpCode), 0u);
  EXPECT_EQ(offsetof(DdcciRequest, vcpValue), 4u);
  EXPECT_EQ(offsetof(DdcciRequest, succeeded), 8u);
  EXPECT_EQ(offsetof(DdcciRequest, matched), 9u);
  EXPECT_EQ(offsetof(DdcciRequest, byMonitorIdentity), 12u);
  EXPECT_EQ(offsetof(DdcciRequest, owner), 16u);
}

// --- The way within a switch ---

// The panel is the one monitor, of the maker by its interface path.
class ColorFieldApiDdcciWay : public ColorFieldTest {
 protected:
  ColorFieldApiDdcciWay() {
    notebook.desktop[0].physicalMonitors = {{.description = L"NVX Studio 27", .taken = {}}};
    Init(velora::SetTypeDdcci);
    for (const ColorFieldMode mode : {SrgbMode, P3Mode, WebMode}) {
      AddMode(mode, newPath);
    }
  }
};

TEST_F(ColorFieldApiDdcciWay, EnableColorFieldMode_AsksForNoDisplayType) {
  notebook.displayType = 0xFFFFFFFF;
  EXPECT_EQ(api.EnableColorFieldMode(SrgbMode), ResultOk);
  EXPECT_TRUE(LogIs({{{1, L"set colorfield mode is:1(ColorFieldApi::EnableColorFieldMode)"}}}));
  EXPECT_EQ(notebook.CountCalls("CoreKit::GetDisplayType"), 0u);
  EXPECT_EQ(notebook.desktop[0].physicalMonitors[0].Value(224), 6u);
}

TEST_F(ColorFieldApiDdcciWay, SetColorField_ProfileAndMonitor) {
  EXPECT_EQ(api.SetColorField(P3Mode), ResultOk);
  EXPECT_EQ(notebook.desktop[0].physicalMonitors[0].Value(224), 1u);
  EXPECT_THAT(notebook.profiles.at(panel), ElementsAre(L"VeloraNew.icc", L"VeloraOld.icc"));
  EXPECT_LOGGED(1, L"SetColorField mode is :2,ret is 0(ColorFieldApi::SetColorField)");
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 0u);
  EXPECT_EQ(notebook.CountCalls("PlatformSetPccMatrixInfo"), 0u);
}

TEST_F(ColorFieldApiDdcciWay, SetColorField_ARefusalPutsTheProfileBack) {
  notebook.desktop[0].physicalMonitors[0].answersDdcci = false;
  EXPECT_EQ(api.SetColorField(P3Mode), ResultColorFieldError);
  EXPECT_LOGGED(3, RefusedLine(1, 1, 0, L"NVX Studio 27").text);
  EXPECT_LOGGED(3, kFailedLine.text);
  EXPECT_LOGGED(3, L"Set Color Filed Failed, ret is 17(ColorFieldApi::EnableColorFieldMode)");
  EXPECT_LOGGED(3, L"EnableColorFieldMode error,ret is :17(ColorFieldApi::SetColorField)");
  EXPECT_THAT(notebook.profiles.at(panel), ElementsAre(L"VeloraOld.icc", L"VeloraNew.icc"));
}

TEST_F(ColorFieldApiDdcciWay, SetColorField_AnotherModePutsTheProfileBack) {
  EXPECT_EQ(api.SetColorField(WebMode), ResultFailed);
  EXPECT_LOGGED(3, WrongModeLine(WebMode).text);
  EXPECT_LOGGED(3, L"Set Color Filed Failed, ret is 1(ColorFieldApi::EnableColorFieldMode)");
  EXPECT_LOGGED(3, L"EnableColorFieldMode error,ret is :1(ColorFieldApi::SetColorField)");
  EXPECT_THAT(notebook.profiles.at(panel), ElementsAre(L"VeloraOld.icc", L"VeloraNew.icc"));
  EXPECT_EQ(notebook.CountCalls("SetVCPFeature"), 0u);
}

}  // namespace
