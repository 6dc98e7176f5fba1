// A fault at every call of natural colour's life: start, a reading, a change of the setting, a
// ring, stop. Neither export has a result: what counts is that everything ends, that nothing stays
// behind but the references that are given away, that a reading still moves the display where its
// road is whole, and that the next life is a good one.
#include "faults/FaultSweep.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/IniFile.h"
#include "support/NotebookTest.h"
#include "support/Watchdog.h"

namespace faults {
namespace {

using testsupport::WaitUntil;
using virtualnotebook::Notebook;

// Of the C++ runtime's own waits too; and those of the settings, of which each frame has a dozen.
const std::vector<std::string> kRuntimeCalls = {"SetEvent", "WaitForSingleObject", "CloseHandle",
                                                "_beginthreadex"};
// Without the event the config thread is never joined, which ends the process when the library is
// unloaded or started again.
const std::vector<std::string> kEventCalls = {"InitializeSecurityDescriptor",
                                              "SetSecurityDescriptorDacl", "CreateEventW"};
const std::vector<std::string> kSettingsCalls = {"RegOpenKeyW",     "RegQueryValueExW",
                                                 "RegCreateKeyExW", "RegSetValueExW",
                                                 "RegCloseKey",     "GetPrivateProfileStringW"};
constexpr uint64_t kShort = 60;    // milliseconds, for what may not come
constexpr uint64_t kLong = 60000;  // for what comes

class FaultSweep_NaturalColour : public testing::Test {
 protected:
  // Neutral at 6500 K.
  std::vector<CctAlgoInfo> curve = {{.cct = 3000, .r = 1, .g = 0.75, .b = 0.5},
                                    {.cct = 6500, .r = 1, .g = 1, .b = 1},
                                    {.cct = 8000, .r = 0.75, .g = 0.875, .b = 1}};
  NatureColorDataIn dataIn = {.frameCount = 2,
                              .frameTime = 0,
                              .dimmingThreshold = 100,
                              .methodVersion = 0,
                              .minLuma = 4000,
                              .luminanceThreshold = 50,
                              .monitorType = 1,
                              .executionType = 1,
                              .algoInfo = nullptr,
                              .algoInfoCnt = 0};

  // A whole life, with natural colour on. True when a reading at its end moved the display.
  bool Live(FreshLibrary& library, uint64_t patience) {
    Notebook& notebook = library.notebook();
    library->InitNatureColor(&dataIn);
    const auto frames = [&] {
      size_t count = 0;
      notebook.Locked([&] {
        count = notebook.platform.temperatures3D.size() + notebook.startedProcesses.size();
      });
      return count;
    };
    const auto reading = [](float kelvin) {
      return virtualnotebook::LightReading{.lux = virtualnotebook::SensorFloat(300),
                                           .kelvin = virtualnotebook::SensorFloat(kelvin)};
    };
    const auto light = [&](float kelvin, uint8_t low, uint8_t high) {
      notebook.Locked([&] { notebook.biosAnswer = {0, low, high, 0, 0}; });
      notebook.ReportLight(reading(kelvin));
      notebook.FireBiosEvent(705);
    };
    light(7000, 0x58, 0x1B);
    // The loop's body once more, where there is a loop.
    const size_t before = CountLogged(notebook, L"GetNcConfig:");
    library->NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR);
    WaitUntil([&] { return CountLogged(notebook, L"GetNcConfig:") > before; }, patience);
    const size_t shown = frames();
    light(3500, 0xAC, 0x0D);
    const bool moved = WaitUntil([&] { return frames() > shown; }, patience);
    library->FiniNatureColor();
    return moved;
  }

  static size_t CountLogged(const Notebook& notebook, const std::wstring& part) {
    size_t count = 0;
    for (const virtualnotebook::LogLine& line : notebook.LogNow()) {
      count += line.text.find(part) != std::wstring::npos ? 1U : 0U;
    }
    return count;
  }

  void Prepare(Notebook& notebook) {
    dataIn.algoInfo = curve.data();
    dataIn.algoInfoCnt = static_cast<int32_t>(curve.size());
    notebook.biosAnswer = {0, 0x58, 0x1B, 0, 0};  // 7000 K
    notebook.hostProgram = L"C:\\host\\host.exe";
    notebook.platformType = 2;
    notebook.sleeps = false;
  }

  void Sweep(const std::string& name) {
    const testsupport::Watchdog watchdog(std::chrono::seconds(240));
    std::optional<FreshLibrary> library;
    std::vector<std::string> without = kRuntimeCalls;
    without.insert(without.end(), kEventCalls.begin(), kEventCalls.end());
    without.insert(without.end(), kSettingsCalls.begin(), kSettingsCalls.end());
    RunSweep({.name = name,
              .start = [&]() -> Notebook& {
                library.reset();
                library.emplace();
                Prepare(library->notebook());
                (*library)->SetNatureColorStatus(1);
                return library->notebook();
              },
              .call = [&] { Live(*library, kShort); },
              .check = [&](const Fault& fault) { Check(*library, fault); },
              .without = without,
              .also0 = false});
  }

  void Check(FreshLibrary& library, const Fault& fault) {
    Notebook& notebook = library.notebook();
    // It came to its ends.
    EXPECT_TRUE(
        testsupport::Logged(notebook, 1, L"InitNatureColor end(NaturalColorApi::InitNatureColor)"));
    EXPECT_TRUE(testsupport::Logged(notebook, 1,
                                    L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)"));
    EXPECT_EQ(CountLogged(notebook, L"Exception"), 0u);
    // What one call could not give back is not given back; all else is.
    for (const auto& [giver, taker] : std::vector<std::pair<std::string, std::string>>{
             {"WTSQuerySessionInformationW", "WTSFreeMemory"},
             {"OpenSCManagerW", "CloseServiceHandle"},
             {"OpenServiceW", "CloseServiceHandle"},
             {"CreateToolhelp32Snapshot", "CloseHandle"}}) {
      if (!fault.IsOf(taker)) {
        EXPECT_EQ(notebook.CountOpen(giver), 0u) << giver;
      }
    }
    // A new life in the same process is a good one.
    if (!testing::Test::HasFailure()) {
      notebook.ForgetRecords();
      library->SetNatureColorStatus(1);
      EXPECT_TRUE(Live(library, kLong)) << "the next life";
    }
  }

  const testsupport::ScopedKey settings_{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const testsupport::IniFile noDefaults_;
};

TEST_F(FaultSweep_NaturalColour, ByThePlatform) { Sweep("InitNatureColor, FiniNatureColor"); }

TEST_F(FaultSweep_NaturalColour, ByTheSensorAlone) {
  dataIn.monitorType = 0;
  Sweep("InitNatureColor, FiniNatureColor");
}

TEST_F(FaultSweep_NaturalColour, ByTheAssistant) {
  dataIn.executionType = 0;
  Sweep("InitNatureColor, FiniNatureColor");
}

// A store that refuses everything does not keep natural colour from its ends.
TEST_F(FaultSweep_NaturalColour, NoSettings) {
  const testsupport::Watchdog watchdog(std::chrono::seconds(240));
  size_t faults = 0;
  for (const std::string& function : kSettingsCalls) {
    for (const FaultKind& kind : FaultKindsOf(function)) {
      SCOPED_TRACE(function);
      FreshLibrary library;
      Prepare(library.notebook());
      library->SetNatureColorStatus(1);
      library.notebook().FailCall(function, 0, kind.result, kind.lastError);
      Live(library, kShort);
      library.notebook().ClearFaults();
      faults += library.notebook().CountCalls(function);
      Check(library, {});
    }
  }
  CountFaults("InitNatureColor, FiniNatureColor", faults);
}

}  // namespace
}  // namespace faults
