// How natural colour in the shipped library follows the settings.
#include "scenarios/NaturalColour.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace scenarios {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using testsupport::WaitUntil;
using virtualnotebook::Call;
using virtualnotebook::LogLine;

constexpr wchar_t kEventName[] = L"Global\\FEATURE_TYPE_NATURAL_COLOR_EVENT_OBJECT";
constexpr int kEbookMode = 7;

const LogLine kNowConnected{
    1, L"StartMonitorNatureColor Success(NaturalColorMsg::ContorlNatureColor)"};
const LogLine kNowDisconnecting{
    1, L"StopMonitorNatureColor Sensor(NaturalColorMsg::ContorlNatureColor)"};
const LogLine kExit{1, L"GetConfigLoop Exit(NaturalColorMsg::GetConfigLoop)"};
const LogLine kExit2{1, L"GetConfigLoop Exit2(NaturalColorMsg::GetConfigLoop)"};

LogLine ModeLine(int mode) {
  return {1, L"defaultMode:" + std::to_wstring(mode) + L"(GetColorFieldCurrentMode)"};
}
LogLine StatusLine(int status) {
  return {1, L"defaultStatus:" + std::to_wstring(status) + L"(GetNatureColorStatus)"};
}
LogLine SyncLine(int status) {
  return {1, L"SyncNatureColorStatus:" + std::to_wstring(status) +
                 L",dimmingCct_ value:6500(NaturalColorAdjustAlgorithm::SyncNatureColorStatus)"};
}
LogLine ConfigLine(int status) {
  return {1, L"GetNcConfig:" + std::to_wstring(status) + L"(NaturalColorMsg::GetConfigLoop)"};
}

class NaturalColourSettings : public NaturalColourTest {
 protected:
  void SetMode(int mode) { EXPECT_EQ(library.SetColorFieldCurrentMode(mode), ResultOk); }

  // What the message part does for a change, ahead of the dimming.
  std::vector<LogLine> RingLog() {
    notebook.Locked([&] { notebook.log.clear(); });
    Ring();
    std::vector<LogLine> lines = notebook.LogNow();
    std::erase_if(lines, [](const LogLine& line) {
      for (const wchar_t* function :
           {L"(GetColorFieldCurrentMode)", L"(GetNatureColorStatus)", L"(NaturalColorMsg::",
            L"(NaturalColorAdjustAlgorithm::SyncNatureColorStatus)"}) {
        if (line.text.find(function) != std::wstring::npos) {
          return false;
        }
      }
      return true;
    });
    return lines;
  }

  std::vector<LogLine> LoopLog() const { return LogOf(L"NaturalColorMsg::GetConfigLoop"); }

  // From now on, for each line of the log that contains the text, on its thread.
  void OnLine(const std::wstring& part, std::function<void()> action) {
    notebook.Locked([&] {
      notebook.onCall = [part, action = std::move(action)](const Call& call) {
        if (call.function == "LcdLogMessage" &&
            call.arguments[1].find(part) != std::wstring::npos) {
          action();
        }
      };
    });
  }
  void OnNothing() {
    notebook.Locked([&] { notebook.onCall = nullptr; });
  }

  // Starts, and sees the loop to its wait for a ring; what it logged is forgotten.
  void StartToTheWait() {
    Start();
    std::atomic<DWORD> loopThread = 0;
    std::atomic<bool> isWaiting = false;
    notebook.Locked([&] {
      notebook.onCall = [&](const Call& call) {
        if (call.function == "LcdLogMessage" &&
            call.arguments[1].find(L"GetNcConfig:") != std::wstring::npos) {
          loopThread = GetCurrentThreadId();
        } else if (call.function == "WaitForSingleObject" && loopThread == GetCurrentThreadId()) {
          isWaiting = true;
        }
      };
    });
    Ring();
    EXPECT_TRUE(WaitUntil([&] { return isWaiting.load(); }));
    OnNothing();
    notebook.Locked([&] { notebook.log.clear(); });
  }
};

// --- The effective status ---

TEST_F(NaturalColourSettings, AChangeInAllItsSteps) {
  SwitchOff();
  Start();
  EXPECT_EQ(RingLog(), (std::vector<LogLine>{ModeLine(-1), StatusLine(0), kNowDisconnecting,
                                             SyncLine(0), ConfigLine(0)}));
  SwitchOn();
  EXPECT_EQ(RingLog(), (std::vector<LogLine>{ModeLine(-1), StatusLine(0), kNowConnected,
                                             SyncLine(1), ConfigLine(1)}));
  EXPECT_TRUE(WaitUntil([&] { return SensorColor() == 5000; })) << "not at the room's yet";
  SetMode(2);
  EXPECT_EQ(RingLog(), (std::vector<LogLine>{ModeLine(-1), StatusLine(1), kNowConnected,
                                             SyncLine(1), ConfigLine(1)}));
  SwitchOff();
  EXPECT_EQ(RingLog(), (std::vector<LogLine>{ModeLine(2), StatusLine(1), kNowDisconnecting,
                                             SyncLine(0), ConfigLine(0)}));
  EXPECT_TRUE(WaitUntil([&] { return SensorColor() == 6500; })) << "the neutral point";
}

TEST_F(NaturalColourSettings, AnyNumberButZeroIsOn) {
  Start();
  EXPECT_EQ(library.SetNatureColorStatus(2), ResultOk);
  EXPECT_EQ(RingLog(), (std::vector<LogLine>{ModeLine(-1), StatusLine(0), kNowConnected,
                                             SyncLine(2), ConfigLine(2)}));
  EXPECT_NE(notebook.LightSensorSink(), nullptr);
}

TEST_F(NaturalColourSettings, TheEbookModeForcesItOff) {
  SwitchOn();
  Start();
  SetMode(kEbookMode);
  EXPECT_EQ(RingLog(),
            (std::vector<LogLine>{ModeLine(-1), kNowDisconnecting, SyncLine(0), ConfigLine(0)}))
      << "without asking for the setting";
  EXPECT_EQ(notebook.LightSensorSink(), nullptr);
  EXPECT_TRUE(WaitUntil([&] { return SensorColor() == 6500; }));
  EXPECT_EQ(library.GetNatureColorStatus(0), 1) << "the setting stays";
  SetMode(P3Mode);
  EXPECT_EQ(RingLog(), (std::vector<LogLine>{ModeLine(kEbookMode), StatusLine(0), kNowConnected,
                                             SyncLine(1), ConfigLine(1)}));
  EXPECT_NE(notebook.LightSensorSink(), nullptr);
}

TEST_F(NaturalColourSettings, TheEbookModeAtTheStart) {
  dataIn.monitorType = 1;
  SwitchOn();
  SetMode(kEbookMode);
  Start();
  EXPECT_EQ(notebook.LightSensorSink(), nullptr);
  EXPECT_EQ(notebook.CountCalls("BiosEventMonitor::StartEventMonitor"), 0U);
  EXPECT_LOGGED(1, L"InitSensorData Success.(NaturalColorMsg::InitSensorData)");
  EXPECT_THAT(Frames(), IsEmpty()) << "the adjust part goes by the setting";
}

TEST_F(NaturalColourSettings, TheStopGoesByTheSettingWhateverTheMode) {
  SwitchOn();
  SetMode(kEbookMode);
  Start();
  notebook.ForgetRecords();
  Stop();
  const std::vector<LogLine> log = notebook.LogNow();
  EXPECT_EQ(std::ranges::count(log, StatusLine(0)), 1);
  EXPECT_EQ(CountLogged(L"(GetColorFieldCurrentMode)"), 0U);
  EXPECT_LOGGED(1, L"StopNaturalColorMsg Success(NaturalColorMsg::StopNaturalColorMsg)");
  EXPECT_EQ(notebook.CountOpen("CoCreateInstance"), 0U);
}

TEST_F(NaturalColourSettings, WhatIsNoLongerStoredStaysAsItWas) {
  SwitchOn();
  SetMode(kEbookMode);
  Start();
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora\\ColorField");
  EXPECT_EQ(RingLog(), (std::vector<LogLine>{ModeLine(kEbookMode), kNowDisconnecting, SyncLine(0),
                                             ConfigLine(0)}));
  SetMode(P3Mode);
  Ring();
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora\\NaturalColor");
  EXPECT_EQ(RingLog(), (std::vector<LogLine>{ModeLine(P3Mode), StatusLine(1), kNowConnected,
                                             SyncLine(1), ConfigLine(1)}));
}

// --- The bell ---

TEST_F(NaturalColourSettings, EachRingRunsAllOfIt) {
  dataIn.monitorType = 1;
  SwitchOn();
  Start();
  for (size_t rings = 1; rings <= 3; ++rings) {
    Ring();
    EXPECT_TRUE(WaitUntil([&] { return Frames().size() == rings; })) << "a short dimming";
    EXPECT_EQ(notebook.CountCalls("ISensor::SetEventSink"), 1 + rings);
    EXPECT_EQ(notebook.CountOpen("ISensorCollection::GetAt"), 1 + rings);
    EXPECT_EQ(notebook.CountCalls("BiosEventMonitor::StartEventMonitor"), 1 + rings);
  }
}

TEST_F(NaturalColourSettings, AnotherProcessRings) {
  Start();
  const HANDLE bell = OpenEventW(EVENT_MODIFY_STATE, FALSE, kEventName);
  ASSERT_NE(bell, nullptr);
  SwitchOn();
  SetEvent(bell);
  EXPECT_TRUE(testsupport::LoggedWithin(notebook, 1, ConfigLine(1).text));
  CloseHandle(bell);
}

TEST_F(NaturalColourSettings, ARingDuringAChangeIsHeard) {
  Start();
  std::atomic<int> changes = 0;
  OnLine(L"GetNcConfig:", [&] {
    if (++changes == 1) {
      library.NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR);
    }
  });
  Ring();
  EXPECT_TRUE(WaitUntil([&] { return changes == 2; }));
  OnNothing();
}

TEST_F(NaturalColourSettings, ARingAheadOfTheStartIsHeard) {
  EXPECT_EQ(library.InitConfigSyncObject(FEATURE_TYPE_NATURAL_COLOR), ResultOk);
  EXPECT_EQ(library.NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR), ResultOk);
  SwitchOn();
  Start();
  EXPECT_LOGGED(3, std::wstring(L"ConfigSyncObject has beed init!type:4, obj name:") + kEventName +
                       L"(ConfigSyncObject::InitConfigSyncObject)");
  EXPECT_TRUE(testsupport::LoggedWithin(notebook, 1, ConfigLine(1).text));
}

// --- The loop's ends ---

TEST_F(NaturalColourSettings, TheStopWakesTheLoop) {
  StartToTheWait();
  Stop();
  EXPECT_EQ(LoopLog(), (std::vector<LogLine>{kExit}));
}

// The ring of the stop is then left for the next start.
TEST_F(NaturalColourSettings, TheStopDuringAChange) {
  Start();
  std::atomic<bool> isStopping = false;
  std::atomic<bool> isInLoop = false;
  notebook.Locked([&] {
    notebook.onCall = [&](const Call& call) {
      if (call.function == "SetEvent" && isInLoop) {
        isStopping = true;
      } else if (call.function == "LcdLogMessage" &&
                 call.arguments[1].find(L"GetNcConfig:") != std::wstring::npos) {
        isInLoop = true;
        EXPECT_TRUE(WaitUntil([&] { return isStopping.load(); }));
      }
    };
  });
  EXPECT_EQ(library.NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR), ResultOk);
  ASSERT_TRUE(WaitUntil([&] { return isInLoop.load(); }));
  library.FiniNatureColor();
  OnNothing();
  EXPECT_EQ(LoopLog(), (std::vector<LogLine>{ConfigLine(0), kExit2}));
  notebook.ForgetRecords();
  Start();
  EXPECT_TRUE(testsupport::LoggedWithin(notebook, 1, ConfigLine(0).text));
}

// The waiting thread is left behind; a stop that can ring joins it.
TEST_F(NaturalColourSettings, AStopThatCantRing) {
  SwitchOn();
  StartToTheWait();
  notebook.FailCall("SetEvent", 1, FALSE);
  library.FiniNatureColor();
  EXPECT_LOGGED(3, std::wstring(L"NotifyConfigChange failed! type:4, obj name:") + kEventName +
                       L"(ConfigSyncObject::NotifyConfigChange)");
  EXPECT_THAT(LoopLog(), IsEmpty());
  EXPECT_LOGGED(1, L"StopNaturalColorMsg Success(NaturalColorMsg::StopNaturalColorMsg)");
  EXPECT_LOGGED(1, L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)");
  EXPECT_EQ(notebook.LightSensorSink(), nullptr);
  Stop();
  EXPECT_EQ(LoopLog(), (std::vector<LogLine>{kExit}));
}

TEST_F(NaturalColourSettings, WithoutAnEventChangesAreNotFollowed) {
  notebook.onCall = [&](const Call& call) {
    if (call.function == "CreateEventW" && call.arguments.back() == kEventName) {
      notebook.FailCall("CreateEventW", 1, 0, ERROR_ACCESS_DENIED);
    }
  };
  SwitchOn();
  Start();
  EXPECT_TRUE(testsupport::LoggedWithin(
      notebook, 3, L"WaitConfigChangeSync Faild:11(NaturalColorMsg::GetConfigLoop)"));
  OnNothing();
  EXPECT_LOGGED(3, std::wstring(L"Create ConfigSyncObject failed! type:4, obj name:") + kEventName +
                       L"(ConfigSyncObject::InitConfigSyncObject)");
  EXPECT_LOGGED(1, L"InitNatureColor end(NaturalColorApi::InitNatureColor)");
  EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
  EXPECT_THAT(Readings(), ElementsAre(Pair(7000, 300))) << "the sensors go on";
  library.FiniNatureColor();
  EXPECT_LOGGED(3, std::wstring(L"ConfigSyncObject not created!type:4, obj name:") + kEventName +
                       L"(ConfigSyncObject::NotifyConfigChange)");
  EXPECT_LOGGED(1, L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)");
  // The thread has ended and is joined by a stop that can ring.
  EXPECT_EQ(library.InitConfigSyncObject(FEATURE_TYPE_NATURAL_COLOR), ResultOk);
}

// How a wait that comes behind a change fails, and the result that is logged.
class NaturalColourFailedWait : public NaturalColourSettings {
 protected:
  NaturalColourFailedWait() {
    curve.erase(curve.begin() + 2);  // without a neutral point the dimming thread sleeps on
    SwitchOn();
    Start();
  }

  void ExpectEnd(const std::wstring& result) {
    EXPECT_TRUE(testsupport::LoggedWithin(
        notebook, 3,
        L"WaitConfigChangeSync Faild:" + result + L"(NaturalColorMsg::GetConfigLoop)"));
    OnNothing();
    EXPECT_EQ(LoopLog().size(), 2U) << "no line of an exit";
    EXPECT_NE(notebook.LightSensorSink(), nullptr) << "the sinks stay";
    EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
    EXPECT_THAT(Readings(), ElementsAre(Pair(7000, 300)));
  }
};

TEST_F(NaturalColourFailedWait, TheSystemRefuses) {
  OnLine(L"GetNcConfig:", [&] { notebook.FailCall("WaitForSingleObject", 1, WAIT_FAILED); });
  Ring();
  ExpectEnd(L"1");
  EXPECT_EQ(library.NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR), ResultOk);
  EXPECT_EQ(library.WaitConfigChangeSync(FEATURE_TYPE_NATURAL_COLOR, 1), ResultOk)
      << "nobody else hears it";
  library.FiniNatureColor();
  Start();
  EXPECT_TRUE(WaitUntil([&] { return CountLogged(L"GetNcConfig:1") == 2; }))
      << "the stop's ring is still there";
  Ring();
}

TEST_F(NaturalColourFailedWait, TheEventIsClosed) {
  OnLine(L"GetNcConfig:",
         [&] { EXPECT_EQ(library.FiniConfigSyncObject(FEATURE_TYPE_NATURAL_COLOR), ResultOk); });
  Ring();
  ExpectEnd(L"11");
  EXPECT_EQ(library.InitConfigSyncObject(FEATURE_TYPE_NATURAL_COLOR), ResultOk);
  Stop();
}

}  // namespace
}  // namespace scenarios
