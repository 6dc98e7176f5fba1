// Start and stop of natural colour in the shipped library.
#include "scenarios/NaturalColour.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tlhelp32.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "scenarios/HostProcess.h"

namespace scenarios {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testsupport::CallsOf;
using testsupport::WaitUntil;
using virtualnotebook::Call;
using virtualnotebook::LogLine;

// Threads of this process.
size_t CountThreads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 thread{};
  thread.dwSize = sizeof thread;
  size_t count = 0;
  for (BOOL more = Thread32First(snapshot, &thread); more; more = Thread32Next(snapshot, &thread)) {
    count += thread.th32OwnerProcessID == GetCurrentProcessId() ? 1U : 0U;
  }
  CloseHandle(snapshot);
  return count;
}

class NaturalColourLifecycle : public NaturalColourTest {
 protected:
  // Something that a thread did: a function that it called, or a line without its function's name.
  struct Event {
    std::string what;
    DWORD thread;
    size_t threads;  // of the process
  };

  // From now on.
  void Watch() {
    notebook.onCall = [this](const Call& call) {
      std::string what = call.function;
      if (what == "LcdLogMessage") {
        what = testsupport::Utf8(call.arguments[1]);
        what = what.substr(0, what.rfind('('));
      }
      const size_t threads = CountThreads();
      const std::lock_guard lock(eventsMutex_);
      events_.push_back({what, GetCurrentThreadId(), threads});
    };
  }
  void ForgetEvents() {
    const std::lock_guard lock(eventsMutex_);
    events_.clear();
  }

  // Those that begin with one of the texts.
  std::vector<Event> Events(const std::vector<std::string>& beginnings) {
    const std::lock_guard lock(eventsMutex_);
    std::vector<Event> found;
    for (const Event& event : events_) {
      for (const std::string& beginning : beginnings) {
        if (event.what.starts_with(beginning)) {
          found.push_back({beginning, event.thread, event.threads});
        }
      }
    }
    return found;
  }

  static std::vector<std::string> Texts(const std::vector<Event>& events) {
    std::vector<std::string> texts;
    for (const Event& event : events) {
      texts.push_back(event.what);
    }
    return texts;
  }

 private:
  std::mutex eventsMutex_;
  std::vector<Event> events_;
};

// --- Start ---

TEST_F(NaturalColourLifecycle, TheStartInItsOrder) {
  dataIn.monitorType = 1;
  SwitchOn();
  Watch();
  Start();
  const std::vector<std::string> steps = {"dataIn:",
                                          "InitNaturalColorAdjustAlgorithm In",
                                          "PlatformInit",
                                          "InitNaturalColorMsg monitorType=1",
                                          "CoInitializeEx",
                                          "CoCreateInstance",
                                          "InitSensorData Success.",
                                          "BiosEventMonitor::StartEventMonitor",
                                          "ISensor::SetEventSink",
                                          "InitNatureColor end"};
  const std::vector<Event> events = Events(steps);
  EXPECT_EQ(Texts(events), steps);
  for (const Event& event : events) {
    EXPECT_EQ(event.thread, GetCurrentThreadId()) << event.what;
  }
  EXPECT_LOGGED(1,
                L"dataIn:frameCount:4, frameTime:0, dimmingThreshold:100, methodVersion:0, "
                L"minLuma:4000, luminanceThreshold:50, monitorType:1, executionType:1, "
                L"algoInfoCnt:4(InitNatureColor)");
  EXPECT_LOGGED(1, L"InitNatureColor end(NaturalColorApi::InitNatureColor)");
}

TEST_F(NaturalColourLifecycle, TheRecordIsLoggedInFull) {
  dataIn = {.frameCount = -1,
            .frameTime = 1,
            .dimmingThreshold = 0.5F,
            .methodVersion = -2,
            .minLuma = 1234567,
            .luminanceThreshold = -3.25F,
            .monitorType = -4,
            .executionType = -5,
            .algoInfo = nullptr,
            .algoInfoCnt = 0};
  curve.clear();
  Start();
  EXPECT_EQ(notebook.LogNow().front(),
            (LogLine{1,
                     L"dataIn:frameCount:-1, frameTime:1, dimmingThreshold:0.5, methodVersion:-2, "
                     L"minLuma:1.23457e+06, luminanceThreshold:-3.25, monitorType:-4, "
                     L"executionType:-5, algoInfoCnt:0(InitNatureColor)"}));
}

TEST_F(NaturalColourLifecycle, AReadingMayComeAsSoonAsTheSinkIsSet) {
  SwitchOn();
  notebook.onCall = [this](const Call& call) {
    if (call.function == "LcdLogMessage" &&
        call.arguments[1].find(L"StartMonitorNatureColor") != std::wstring::npos) {
      EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
    }
  };
  Start();
  EXPECT_TRUE(WaitUntil([&] { return Frames().size() == 5; }));
  EXPECT_EQ(SensorColor(), 7000);
}

// --- The neutral point ---

TEST_F(NaturalColourLifecycle, WhileOffEachStartDeliversTheNeutralPoint) {
  for (size_t starts = 1; starts <= 3; ++starts) {
    SCOPED_TRACE(starts);
    notebook.ForgetRecords();
    Start();
    ASSERT_EQ(Frames().size(), starts);
    EXPECT_EQ(Frames().back().r, 1);
    EXPECT_EQ(Frames().back().g, 1);
    EXPECT_EQ(Frames().back().b, 1);
    EXPECT_EQ(SensorColor(), 6500);
    EXPECT_EQ(SensorCct(), 5000U);
    EXPECT_LOGGED(1, L"NaturalColorReset Success(NaturalColorAdjustAlgorithm::IsFlushTemper)");
    EXPECT_THAT(CallsOf(notebook, {"PlatformSet3DColorTemperature", "PlatformInit"}),
                ElementsAre("PlatformSet3DColorTemperature", "PlatformInit"));
    Stop();
  }
}

TEST_F(NaturalColourLifecycle, WhileOnAStartDeliversNothing) {
  SwitchOn();
  Start();
  EXPECT_THAT(Frames(), IsEmpty());
  EXPECT_NOT_LOGGED(L"NaturalColorReset Success");
}

// --- Stop ---

TEST_F(NaturalColourLifecycle, TheStopInItsOrder) {
  dataIn.monitorType = 1;
  SwitchOn();
  Start();
  Ring();
  Watch();
  Stop();
  const std::vector<std::string> steps = {"GetConfigLoop Exit",
                                          "StopNaturalColorMsg WMI&&SENSOR",
                                          "ISensor::SetEventSink",
                                          "ISensorCollection::Release",
                                          "ISensorManager::Release",
                                          "StopSensorData Success.",
                                          "CoUninitialize",
                                          "BiosEventMonitor::StopEventMonitor",
                                          "StopNaturalColorMsg Success",
                                          "PlatformFini",
                                          "StopNaturalColorAdjustAlgorithm Success",
                                          "FiniNatureColor Success"};
  const std::vector<Event> events = Events(steps);
  ASSERT_EQ(Texts(events), steps);
  EXPECT_NE(events[0].thread, GetCurrentThreadId());
  for (size_t i = 1; i < events.size(); ++i) {
    EXPECT_EQ(events[i].thread, GetCurrentThreadId()) << events[i].what;
  }
  EXPECT_LOGGED(1, L"(FiniNatureColor)");
  EXPECT_LOGGED(1, L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)");
}

// A frame that is being delivered is waited for.
TEST_F(NaturalColourLifecycle, TheStopDuringAFrame) {
  SwitchOn();
  Start();
  notebook.onCall = [this](const Call& call) {
    if (call.function == "PlatformSet3DColorTemperature") {
      WaitUntil([&] { return CountLogged(L"StopNaturalColorMsg Success") == 1; });
      EXPECT_FALSE(WaitUntil([&] { return notebook.CountCalls("PlatformFini") > 0; }, 50));
    }
  };
  ASSERT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
  ASSERT_TRUE(WaitUntil([&] { return CountLogged(L"Number of frames:4") == 1; }));
  Stop();
  EXPECT_EQ(Frames().size(), 1U) << "the rest is left out";
  EXPECT_LOGGED(1, L"CctDimming quit2(NaturalColorAdjustAlgorithm::CctDimming)");
  EXPECT_EQ(notebook.CallsNow().back().function, "LcdLogMessage");
  EXPECT_EQ(notebook.CountCalls("PlatformFini"), 1U);
}

// Nothing is released, and the next start takes it as it is.
TEST_F(NaturalColourLifecycle, AStopWithTheSettingOff) {
  dataIn.monitorType = 1;
  notebook.biosAnswer = {0, 0x88, 0x13, 0, 0};  // 5000 K
  SwitchOn();
  Start();
  SwitchOff();  // nobody is told
  notebook.ForgetRecords();
  Stop();
  EXPECT_EQ(CountLogged(L"NaturalColorMsg::Stop"), 0U);
  EXPECT_EQ(notebook.CountCalls("CoUninitialize"), 1U);
  EXPECT_EQ(notebook.CountCalls("ISensor::SetEventSink"), 0U);
  EXPECT_EQ(notebook.CountCalls("BiosEventMonitor::StopEventMonitor"), 0U);
  EXPECT_EQ(notebook.CountOpen("CoCreateInstance"), 1U);
  EXPECT_EQ(notebook.CountOpen("ISensorManager::GetSensorsByCategory"), 1U);
  EXPECT_LOGGED(1, L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)");
  EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK) << "still connected";
  EXPECT_THAT(Readings(), IsEmpty()) << "and dropped";
  SwitchOn();
  Start();
  EXPECT_EQ(notebook.CountCalls("CoInitializeEx"), 1U);
  EXPECT_EQ(notebook.CountCalls("CoCreateInstance"), 0U);
  EXPECT_EQ(notebook.CountCalls("ISensorManager::GetSensorsByCategory"), 0U);
  EXPECT_LOGGED(1, L"InitSensorData Success.(NaturalColorMsg::InitSensorData)");
  Stop();
  EXPECT_EQ(notebook.CountOpen("CoCreateInstance"), 0U);
  EXPECT_EQ(notebook.CountOpen("ISensorManager::GetSensorsByCategory"), 0U);
}

TEST_F(NaturalColourLifecycle, AnExceptionOfTheAdjustPart) {
  Start();
  notebook.ThrowFrom("PlatformFini", 1, "thrown");
  Stop();
  EXPECT_EQ(
      LogOf(L"NaturalColorAdjustAlgorithm::Stop"),
      (std::vector<LogLine>{{3,
                             L"StopNaturalColorAdjustAlgorithm Exception."
                             L"(NaturalColorAdjustAlgorithm::StopNaturalColorAdjustAlgorithm)"},
                            {1,
                             L"StopNaturalColorAdjustAlgorithm Success"
                             L"(NaturalColorAdjustAlgorithm::StopNaturalColorAdjustAlgorithm)"}}));
  EXPECT_LOGGED(1, L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)");
}

TEST_F(NaturalColourLifecycle, AnExceptionOfTheMessagePartLeavesTheOtherToStop) {
  SwitchOn();
  Start();
  notebook.ThrowFrom("ISensorCollection::GetCount", 1, "thrown");
  Stop();
  EXPECT_LOGGED(3, L"StopNaturalColorMsg Exception.(NaturalColorMsg::StopNaturalColorMsg)");
  EXPECT_EQ(notebook.CountCalls("PlatformFini"), 1U);
  EXPECT_LOGGED(1, L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)");
}

// --- Stop without a start ---

const std::wstring kNoEvent =
    L"ConfigSyncObject not created!type:4, obj name:"
    L"Global\\FEATURE_TYPE_NATURAL_COLOR_EVENT_OBJECT(ConfigSyncObject::NotifyConfigChange)";

TEST_F(NaturalColourLifecycle, AStopWithoutAStart) {
  library.FiniNatureColor();
  EXPECT_LOGGED(3, kNoEvent);
  EXPECT_EQ(CountLogged(L"NaturalColorMsg::Stop"), 0U);
  EXPECT_EQ(notebook.CountCalls("CoUninitialize"), 1U);
  EXPECT_EQ(notebook.CountCalls("PlatformFini"), 0U);
  EXPECT_EQ(notebook.LogNow().back(),
            (LogLine{1, L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)"}));
}

TEST_F(NaturalColourLifecycle, AStopWithoutAStartWhileOn) {
  SwitchOn();
  library.FiniNatureColor();
  EXPECT_LOGGED(3, kNoEvent);
  EXPECT_EQ(LogOf(L"NaturalColorMsg::"),
            (std::vector<LogLine>{
                {1, L"StopNaturalColorMsg WMI&&SENSOR(NaturalColorMsg::StopNaturalColorMsg)"},
                {1, L"StopSensorData Success.(NaturalColorMsg::StopSensorData)"},
                {1, L"StopNaturalColorMsg Success(NaturalColorMsg::StopNaturalColorMsg)"}}));
  EXPECT_EQ(notebook.CountCalls("BiosEventMonitor::StopEventMonitor"), 0U);
  EXPECT_EQ(notebook.CountCalls("PlatformFini"), 0U);
}

TEST_F(NaturalColourLifecycle, ASecondStop) {
  SwitchOn();
  Start();
  Stop();
  notebook.ForgetRecords();
  library.FiniNatureColor();
  EXPECT_LOGGED(1, L"StopNaturalColorMsg Success(NaturalColorMsg::StopNaturalColorMsg)");
  EXPECT_LOGGED(1, L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)");
  EXPECT_EQ(notebook.CountCalls("ISensorManager::Release"), 0U);
  EXPECT_EQ(notebook.CountCalls("PlatformFini"), 1U);
}

// --- Restart ---

TEST_F(NaturalColourLifecycle, ARestartTakesTheNewRecord) {
  SwitchOn();
  Start();
  Stop();
  notebook.ForgetRecords();
  dataIn.frameCount = 2;
  dataIn.minLuma = 3500;
  curve = {{.cct = 2000, .r = 1, .g = 1, .b = 1}, {.cct = 9000, .r = 0.5, .g = 0.5, .b = 1}};
  Start();
  EXPECT_EQ(CountLogged(L"cctMappingCurve_ index="), 2U);
  EXPECT_EQ(notebook.ReportLight(Reading(9500, 300)), S_OK);
  ASSERT_TRUE(WaitUntil([&] { return Frames().size() == 3; }));
  EXPECT_EQ(SensorColor(), 9000);
  EXPECT_EQ(Frames().back().r, 0.5);
  EXPECT_EQ(notebook.ReportLight(Reading(9000, 1)), S_OK);
  EXPECT_EQ(Readings().back().first, 3500);
}

TEST_F(NaturalColourLifecycle, ARestartKeepsTheReferenceOfTheReadings) {
  SwitchOn();
  Start();
  EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
  ASSERT_TRUE(WaitUntil([&] { return Frames().size() == 5; }));
  Stop();
  Start();
  EXPECT_EQ(SensorCct(), 5000U);
  EXPECT_EQ(notebook.ReportLight(Reading(7100, 300)), S_OK);
  EXPECT_EQ(CountLogged(L"isEnableCctDimming = 0,previousAmbientCct_ = 7000,targetCct = 7100"), 1U);
}

TEST_F(NaturalColourLifecycle, ARestartKeepsAFailure) {
  SwitchOn();
  Start();
  notebook.FailCall("PlatformSet3DColorTemperature", 1, 9);
  EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
  ASSERT_TRUE(WaitUntil([&] { return CountLogged(L"isSetColorFail_ = 1") == 1; }));
  Stop();
  Start();
  EXPECT_EQ(notebook.ReportLight(Reading(7050, 300)), S_OK) << "below the threshold";
  EXPECT_TRUE(WaitUntil([&] { return Frames().size() == 5; }));
  EXPECT_EQ(SensorColor(), 7050);
}

// A thread that was not joined would end the process at the third start.
TEST_F(NaturalColourLifecycle, StartAndStopAgainAndAgain) {
  SwitchOn();
  const size_t before = CountThreads();
  for (int i = 0; i < 20; ++i) {
    Start();
    notebook.ReportLight(Reading(i % 2 == 0 ? 7000.0F : 4000.0F, 300));
    Stop();
    EXPECT_EQ(CountThreads(), before);
    EXPECT_EQ(notebook.CountOpen("CoCreateInstance"), 0U);
  }
  EXPECT_EQ(CountLogged(L"FiniNatureColor Success"), 20U);
}

// --- Threads ---

TEST_F(NaturalColourLifecycle, ThreadsComeAndGoInTheirOrder) {
  SwitchOn();
  const size_t before = CountThreads();
  Watch();
  Start();
  Ring();
  ASSERT_TRUE(WaitUntil([&] { return Frames().size() == 1; }));
  Stop();
  const std::map<std::string, size_t> threads = {{"InitNaturalColorAdjustAlgorithm In", 0},
                                                 {"InitNaturalColorMsg monitorType=0", 1},
                                                 {"CoInitializeEx", 2},
                                                 {"GetNcConfig:1", 2},
                                                 {"PlatformSet3DColorTemperature", 2},
                                                 {"StopNaturalColorMsg WMI&&SENSOR", 1},
                                                 {"StopNaturalColorMsg Success", 1},
                                                 {"PlatformFini", 0},
                                                 {"FiniNatureColor Success", 0}};
  std::map<std::string, DWORD> ids;
  for (const auto& [what, expected] : threads) {
    const std::vector<Event> events = Events({what});
    ASSERT_EQ(events.size(), 1U) << what;
    EXPECT_EQ(events[0].threads, before + expected) << what;
    ids[what] = events[0].thread;
  }
  EXPECT_NE(ids["GetNcConfig:1"], GetCurrentThreadId());
  EXPECT_NE(ids["PlatformSet3DColorTemperature"], GetCurrentThreadId());
  EXPECT_NE(ids["PlatformSet3DColorTemperature"], ids["GetNcConfig:1"]);
}

// The helper needs a service that is down: a thread waits for it, and the stop ends that too.
TEST_F(NaturalColourLifecycle, TheStopEndsTheWaitForTheService) {
  dataIn.executionType = 0;
  notebook.services.clear();
  SwitchOn();
  const size_t before = CountThreads();
  for (int i = 0; i < 2; ++i) {
    Start();
    notebook.ReportLight(Reading(i % 2 == 0 ? 7000.0F : 4000.0F, 300));
    ASSERT_TRUE(WaitUntil([&] { return CountThreads() == before + 3; }));
    Stop();
    EXPECT_EQ(CountThreads(), before);
  }
  EXPECT_EQ(notebook.CountCalls("PlatformInit"), 0U);
  EXPECT_EQ(notebook.CountCalls("PlatformFini"), 0U);
}

// --- Ends of the host ---

constexpr wchar_t kHostKey[] = L"SOFTWARE\\Norvex\\VeloraHost";
constexpr DWORD kAborted = 3;  // the C runtime's

void Note(const wchar_t* what) {
  testsupport::WriteValue(HKEY_CURRENT_USER, kHostKey, what, testsupport::DwordValue(1));
}

// Hosts in processes of their own; the last line of each is not reached.
class NaturalColourHost : public NaturalColourTest {};

TEST_F(NaturalColourHost, DISABLED_StartsTwice) {
  Start();
  Note(L"Started");
  Start();
  Note(L"GoneOn");
}

TEST(NaturalColourOtherHost, DISABLED_FreesTheLibraryWithoutAStop) {
  auto library = std::make_unique<virtualnotebook::HostedLibrary>();
  CctAlgoInfo curve[] = {{.cct = 3000, .r = 1, .g = 1, .b = 1},
                         {.cct = 8000, .r = 1, .g = 1, .b = 1}};
  NatureColorDataIn dataIn{};
  dataIn.executionType = 1;
  dataIn.algoInfo = curve;
  dataIn.algoInfoCnt = 2;
  library->InitNatureColor(&dataIn);
  Note(L"Started");
  library.reset();
  Note(L"GoneOn");
}

class NaturalColourHosts : public testing::TestWithParam<const wchar_t*> {
 private:
  const testsupport::ScopedKey notes_{HKEY_CURRENT_USER, kHostKey};
};

TEST_P(NaturalColourHosts, TheProcessEnds) {
  EXPECT_EQ(RunTest(GetParam()), kAborted);
  const testsupport::RegistryValues notes = testsupport::ReadKey(HKEY_CURRENT_USER, kHostKey);
  EXPECT_EQ(notes, (testsupport::RegistryValues{{L"Started", testsupport::DwordValue(1)}}));
}

INSTANTIATE_TEST_SUITE_P(
    All, NaturalColourHosts,
    testing::Values(L"NaturalColourHost.DISABLED_StartsTwice",
                    L"NaturalColourOtherHost.DISABLED_FreesTheLibraryWithoutAStop"));

}  // namespace
}  // namespace scenarios
