// A fault at every call of the change events, the external monitors, the extended desktop, the
// panel's vendor, the telemetry and the platform's start and stop.
#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <system_error>
#include <vector>

#include "faults/ColorModeSweep.h"
#include "virtualnotebook/HostedLibrary.h"

namespace faults {
namespace {

using testsupport::LogLine;
using virtualnotebook::Notebook;

// --- Change events ---

constexpr int kFeature = FEATURE_TYPE_COLOR_FIELD;
const std::wstring kEvent = L"Global\\FEATURE_TYPE_COLOR_FIELD_EVENT_OBJECT";

bool EventExists() {
  const HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, kEvent.c_str());
  if (event != nullptr) {
    CloseHandle(event);
  }
  return event != nullptr;
}

class FaultSweep_ConfigSync : public testing::Test {
 protected:
  // check: the export's result and its one line, or none.
  void Sweep(const std::string& name, const std::function<ResultT()>& call, bool isOpen,
             const std::function<void(const Fault&, ResultT, const std::vector<LogLine>&)>& check,
             bool isOpenNext) {
    ResultT result = 0;
    RunSweep({.name = name,
              .start = [&]() -> Notebook& {
                library->FiniConfigSyncObject(kFeature);
                EXPECT_FALSE(EventExists());
                if (isOpen) {
                  EXPECT_EQ(library->InitConfigSyncObject(kFeature), ResultOk);
                }
                return library.notebook();
              },
              .call = [&] { result = call(); },
              .check =
                  [&](const Fault& fault) {
                    check(fault, result, library.notebook().log);
                    // Behind it, everything goes on.
                    const ResultT opened = library->InitConfigSyncObject(kFeature);
                    EXPECT_EQ(opened, EventWasOpen(fault, result, isOpenNext) ? ResultAlreadyInit
                                                                              : ResultOk);
                    EXPECT_EQ(library->NotifyConfigChange(kFeature), ResultOk);
                    EXPECT_EQ(library->WaitConfigChangeSync(kFeature, 100), ResultOk);
                    EXPECT_EQ(library->FiniConfigSyncObject(kFeature), ResultOk);
                    EXPECT_FALSE(EventExists());
                  }});
  }

  // A failure leaves a row as it was.
  static bool EventWasOpen(const Fault&, ResultT result, bool isOpenNext) {
    return result == ResultOk || result == ResultTimeout ? isOpenNext : !isOpenNext;
  }

  static std::vector<LogLine> Line(const std::wstring& text, const std::wstring& function) {
    return {{3, text + L"type:3, obj name:" + kEvent + L"(ConfigSyncObject::" + function + L")"}};
  }

  FreshLibrary library;
};

TEST_F(FaultSweep_ConfigSync, InitConfigSyncObject) {
  Sweep(
      "InitConfigSyncObject", [this] { return library->InitConfigSyncObject(kFeature); }, false,
      [](const Fault& fault, ResultT result, const std::vector<LogLine>& log) {
        // Without its descriptor the event may be refused by the system.
        const bool mayFail = !fault.function.empty() && !fault.IsOf("CreateEventW");
        EXPECT_EQ(result == ResultOk, log.empty());
        EXPECT_EQ(result == ResultOk, EventExists());
        if (result != ResultOk) {
          EXPECT_EQ(result, ResultCreateFailed);
          EXPECT_EQ(log, Line(L"Create ConfigSyncObject failed! ", L"InitConfigSyncObject"));
        }
        if (!mayFail) {
          EXPECT_EQ(result, fault.function.empty() ? ResultOk : ResultCreateFailed);
        }
      },
      true);
}

TEST_F(FaultSweep_ConfigSync, NotifyConfigChange) {
  ResultT last = 0;
  RunSweep({.name = "NotifyConfigChange",
            .start = [&]() -> Notebook& {
              library->InitConfigSyncObject(kFeature);
              return library.notebook();
            },
            .call = [&] { last = library->NotifyConfigChange(kFeature); },
            .check =
                [&](const Fault& fault) {
                  const bool failed = fault.IsOf("SetEvent");
                  EXPECT_EQ(last, failed ? ResultFailed : ResultOk);
                  EXPECT_EQ(library.notebook().log,
                            failed ? Line(L"NotifyConfigChange failed! ", L"NotifyConfigChange")
                                   : std::vector<LogLine>());
                  // It rings, or it does not.
                  EXPECT_EQ(library->WaitConfigChangeSync(kFeature, 1),
                            failed ? ResultTimeout : ResultOk);
                  EXPECT_EQ(library->NotifyConfigChange(kFeature), ResultOk);
                  EXPECT_EQ(library->WaitConfigChangeSync(kFeature, 1), ResultOk);
                }});
}

TEST_F(FaultSweep_ConfigSync, WaitConfigChangeSync) {
  ResultT last = 0;
  RunSweep({.name = "WaitConfigChangeSync",
            .start = [&]() -> Notebook& {
              library->InitConfigSyncObject(kFeature);
              library->NotifyConfigChange(kFeature);
              return library.notebook();
            },
            .call = [&] { last = library->WaitConfigChangeSync(kFeature, 0); },
            .check =
                [&](const Fault& fault) {
                  EXPECT_EQ(last, fault.function.empty()              ? ResultOk
                                  : fault.kind.result == WAIT_TIMEOUT ? ResultTimeout
                                                                      : ResultFailed);
                  EXPECT_TRUE(library.notebook().log.empty());
                  // A ring that was not heard is still there.
                  EXPECT_EQ(library->WaitConfigChangeSync(kFeature, 1),
                            fault.function.empty() ? ResultTimeout : ResultOk);
                }});
}

TEST_F(FaultSweep_ConfigSync, FiniConfigSyncObject) {
  ResultT last = 0;
  RunSweep({.name = "FiniConfigSyncObject",
            .start = [&]() -> Notebook& {
              library->InitConfigSyncObject(kFeature);
              return library.notebook();
            },
            .call = [&] { last = library->FiniConfigSyncObject(kFeature); },
            .check =
                [&](const Fault& fault) {
                  const bool failed = fault.IsOf("CloseHandle");
                  EXPECT_EQ(last, failed ? ResultFailed : ResultOk);
                  EXPECT_EQ(library.notebook().log,
                            failed ? Line(L"FiniConfigSyncObject failed! ", L"FiniConfigSyncObject")
                                   : std::vector<LogLine>());
                  // The handle stays in its row.
                  EXPECT_EQ(EventExists(), failed);
                  EXPECT_EQ(library->FiniConfigSyncObject(kFeature),
                            failed ? ResultOk : ResultNotCreated);
                  EXPECT_FALSE(EventExists());
                }});
}

// --- External monitors ---

// The maker's monitor in front, described so that the first pass finds it, or only the second.
class FaultSweep_ExternalMonitor : public ColorModeSweep {
 protected:
  void SweepMonitor(const std::wstring& description) {
    int result = 0;
    RunSweep({.name = "SetColorField",
              .start = [&]() -> Notebook& {
                RemoveTraces();
                StartProcess(0);
                notebook().adapters.clear();
                notebook().desktop.clear();
                virtualnotebook::PlugInMonitor(notebook(), L"DISPLAY\\NVX1234\\1&2&3&UID1",
                                               description);
                SetProfile(L"NVX-P3.icc");  // the switch is of the output alone
                const auto device = notebook().adapters[0].monitors[0].deviceID;
                notebook().profiles[device] = {L"NVX-P3.icc"};
                return notebook();
              },
              .call = [&] { result = library().SetColorField(P3Mode); },
              .check = [&](const Fault& fault) { Check(fault, result); }});
  }

 private:
  void Check(const Fault& fault, int result) {
    const auto& taken = notebook().desktop[0].physicalMonitors[0].taken;
    const bool isSaved = !taken.empty() && taken.back().saved;
    // A success is a value that was taken and saved, and nothing else is.
    EXPECT_EQ(result == ResultOk, isSaved);
    if (result == ResultOk) {
      EXPECT_TRUE(isSaved);
      EXPECT_EQ(taken.back(), (virtualnotebook::VcpWrite{224, 1, true}));
    } else {
      EXPECT_TRUE(result == ResultFailed || result == ResultColorFieldError) << result;
    }
    EXPECT_EQ(notebook().CountOpenMonitorArrays(),
              fault.IsOf("DestroyPhysicalMonitors") && fault.n != 0 ? 1u
              : fault.IsOf("DestroyPhysicalMonitors") ? notebook().monitorArrays.size()
                                                      : 0u);
    if (fault.n != 0) {
      const bool switches[] = {fault.IsOf("SetVCPFeature"), fault.IsOf("SaveCurrentSettings")};
      if (switches[0] || switches[1]) {
        EXPECT_EQ(result, ResultColorFieldError);
        EXPECT_TRUE(testsupport::Logged(
            notebook(), 3,
            L"EnableColorFieldByDdcci failed.(ColorFieldApi::EnableColorFieldByDdcci)"));
        EXPECT_EQ(taken.size(), switches[0] ? 0u : 1u) << "the value stays for the moment";
      }
      if (fault.IsOf("GetPhysicalMonitorsFromHMONITOR") ||
          fault.IsOf("GetNumberOfPhysicalMonitorsFromHMONITOR")) {
        // The first pass's failure leaves the monitor to the second one.
        EXPECT_EQ(result, fault.n == 1 ? ResultOk : ResultColorFieldError);
      }
    }
    notebook().ForgetRecords();
    EXPECT_EQ(library().SetColorField(P3Mode), ResultOk);
    EXPECT_TRUE(notebook().desktop[0].physicalMonitors[0].taken.back().saved);
  }
};

TEST_F(FaultSweep_ExternalMonitor, ByItsDescription) { SweepMonitor(L"NVX Studio 27"); }

TEST_F(FaultSweep_ExternalMonitor, ByItsIdentity) { SweepMonitor(L"Generic PnP Monitor"); }

// --- The panel's vendor ---

class FaultSweep_Vendor : public ColorModeSweep {};

TEST_F(FaultSweep_Vendor, GetVendor) {
  std::string vendor;
  const auto get = [&] {
    char buffer[8] = "before";
    library().GetVendor(buffer, sizeof buffer);
    vendor = buffer;
  };
  RunSweep({.name = "GetVendor",
            .start = [&]() -> Notebook& {
              StartProcess(1);
              return notebook();
            },
            .call = get,
            .check =
                [&](const Fault& fault) {
                  // The serial and the number of monitors are not asked for.
                  const bool harmless =
                      fault.function.empty() || fault.IsOf("CoreKit::BytesToHexString") ||
                      fault.IsOf("EnumDisplayDevicesW") || fault.IsOf("RegCloseKey");
                  EXPECT_EQ(vendor, harmless ? "NVX#" : "before");
                  EXPECT_EQ(
                      testsupport::Logged(notebook(), 3,
                                          L"Get LCD EDID Data error.(ColorField3DLut::GetVendor)"),
                      !harmless);
                  get();
                  EXPECT_EQ(vendor, "NVX#");
                }});
}

// --- The extended desktop ---

class FaultSweep_Desktop : public testing::Test {};

TEST_F(FaultSweep_Desktop, SetMonitorExtendMode) {
  FreshLibrary library;
  Notebook& notebook = library.notebook();
  notebook.sleeps = false;
  notebook.topology.paths.resize(2);
  notebook.topology.modes.resize(4);
  notebook.topology.paths[0].flags = 77;
  const auto before = notebook.topology;
  virtualnotebook::DisplayTopology extended = before;
  extended.paths[0].flags = 1;
  notebook.extendedTopology = extended;
  bool result = false;
  RunSweep({.name = "SetMonitorExtendMode",
            .start = [&]() -> Notebook& {
              notebook.topology = before;
              return notebook;
            },
            .call = [&] { result = library->SetMonitorExtendMode(); },
            .check =
                [&](const Fault& fault) {
                  // The first failing read leaves everything, the second one the switch; so does a
                  // write-back that is refused. A switch that was refused is not looked at.
                  const bool isRead =
                      fault.IsOf("GetDisplayConfigBufferSizes") || fault.IsOf("QueryDisplayConfig");
                  const bool good =
                      fault.function.empty() || (fault.IsOf("SetDisplayConfig") && fault.n == 1);
                  EXPECT_EQ(result, good);
                  const auto count = notebook.CountCalls("SetDisplayConfig");
                  EXPECT_EQ(count, isRead ? (fault.n == 2 ? 1u : 0u) : 2u);
                  const auto flags = notebook.topology.paths[0].flags;
                  EXPECT_EQ(flags, good                                             ? 77u
                                   : isRead && fault.n != 2                         ? 77u
                                   : fault.IsOf("SetDisplayConfig") && fault.n == 0 ? 77u
                                                                                    : 1u);
                  notebook.topology = before;
                  EXPECT_TRUE(library->SetMonitorExtendMode());
                },
            .without = {"NxLogger::GetInstance"}});
}

// --- Telemetry ---

TEST_F(FaultSweep_Desktop, OrbviewReportData) {
  FreshLibrary library;
  bool hasThrown = false;
  RunSweep({.name = "OrbviewReportDataAsync",
            .start = [&]() -> Notebook& { return library.notebook(); },
            .call =
                [&] {
                  hasThrown = false;
                  try {
                    library->OrbviewReportDataAsync(705, "key", "value");
                  } catch (const std::system_error&) {
                    hasThrown = true;
                  }
                  testsupport::WaitUntil(
                      [&] { return hasThrown || library.notebook().CallsNow().size() >= 5; });
                },
            .check =
                [&](const Fault& fault) {
                  // A thread that can't be started is the host's to know; nothing is reported then.
                  EXPECT_EQ(hasThrown, fault.IsOf("_beginthreadex"));
                  EXPECT_EQ(library.notebook().CountCalls("OrbView::Report"), hasThrown ? 0u : 1u);
                  library.notebook().ForgetRecords();
                  library->OrbviewReportDataSync(705, "key", "value");
                  EXPECT_EQ(library.notebook().CountCalls("OrbView::Report"), 1u);
                },
            .without = {"CreateEventW", "SetEvent", "WaitForSingleObject", "CloseHandle"},
            .also0 = false});
}

// --- The platform's start and stop ---

TEST_F(FaultSweep_Desktop, InitAndFini) {
  for (const bool isInit : {true, false}) {
    FreshLibrary library;
    int result = 0;
    const auto call = [&] { result = isInit ? library->Init() : library->Fini(); };
    RunSweep({.name = isInit ? "Init" : "Fini",
              .start = [&]() -> Notebook& { return library.notebook(); },
              .call = call,
              .check =
                  [&](const Fault& fault) {
                    EXPECT_EQ(result, static_cast<int>(fault.kind.result)) << "as it comes";
                    EXPECT_TRUE(library.notebook().log.empty());
                    call();
                    EXPECT_EQ(result, 0);
                  }});
  }
}

}  // namespace
}  // namespace faults
