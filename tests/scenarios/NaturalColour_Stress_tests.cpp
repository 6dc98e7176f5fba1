// Natural colour in the shipped library, with everything happening at once; and with nothing
// happening at all.
#include "scenarios/NaturalColour.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tlhelp32.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cwchar>
#include <iostream>
#include <map>
#include <mutex>
#include <random>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "naturalcolor/Replay.h"
#include "support/Holdings.h"
#include "support/Watchdog.h"

namespace scenarios {
namespace {

using ::testing::IsEmpty;
using testsupport::Event;
using testsupport::What;
using virtualnotebook::Call;
using virtualnotebook::Notebook;

constexpr float kBrightRoom = 300;  // lux
constexpr int32_t kByPlatform = 1;
constexpr int32_t kByHelper = 0;

// Sees each call of the library on the thread that makes it, and keeps what a replay needs. A frame
// is seen ahead of its log line, when the library holds everybody else off.
class Witness {
 public:
  Witness(const Notebook& notebook, double (*sensorColor)())
      : notebook_(notebook), sensorColor_(sensorColor) {}

  void See(const Call& call) {
    if (call.function == "LcdLogMessage") {
      SeeLine(call.arguments[1]);
    } else if (call.function == "RegSetValueExW") {
      SeeValue(call.arguments[1]);
    } else if (call.function == "WTSEnumerateSessionsW") {
      dimmingThread_ = GetCurrentThreadId();
    } else if (call.function == "QueryServiceStatus") {
      const DWORD thread = GetCurrentThreadId();
      if (thread != dimmingThread_ && thread != startingThread_) {
        Keep(What::ServiceFound, 0);  // it may have been
      }
    }
  }

  std::vector<Event> Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(events_, {});
  }

 private:
  void SeeLine(const std::wstring& text) {
    if (text.starts_with(L"InitNaturalColorAdjustAlgorithm In")) {
      startingThread_ = GetCurrentThreadId();
      isStarting_ = true;
      isOff_ = false;
    } else if (text.starts_with(L"frameIndex_ = ")) {
      SeeDelivery();
      Keep(What::SensorColor, sensorColor_());
    } else if (!text.starts_with(L"StartCct:") && !text.starts_with(L"SyncNatureColorStatus:")) {
      return;
    }
    Keep(What::LogLine, 0, text);
  }

  // A start stores "SensorColor" only when it goes to the neutral point.
  void SeeValue(const std::wstring& name) {
    if (!isStarting_ || GetCurrentThreadId() != startingThread_) {
      return;
    }
    if (name == L"SensorColor") {
      isOff_ = true;
    } else if (name == L"SensorCCT") {
      Keep(What::StatusRead, isOff_ ? 0 : 1);
      if (isOff_) {
        Keep(What::SensorColor, sensorColor_());
        Keep(What::Refused, 0);
        SeeDelivery();
      }
      Keep(What::PrinterCct, 5000);
      isStarting_ = false;
    }
  }

  // One, or none, since the last time.
  void SeeDelivery() {
    size_t byPlatform = 0;
    size_t byHelper = 0;
    double red = 0;
    notebook_.Locked([&] {
      byPlatform = notebook_.platform.temperatures3D.size();
      byHelper = notebook_.startedProcesses.size();
      if (byPlatform > byPlatform_) {
        red = notebook_.platform.temperatures3D.back().r;
      } else if (byHelper > byHelper_) {
        constexpr std::wstring_view kName = L"nouse ";
        red = std::wcstod(notebook_.startedProcesses.back().commandLine.c_str() + kName.size(),
                          nullptr);
      }
    });
    const size_t since = byPlatform - byPlatform_ + byHelper - byHelper_;
    EXPECT_LE(since, 1U);
    if (since > 0) {
      Keep(What::Delivered, red);
    }
    byPlatform_ = byPlatform;
    byHelper_ = byHelper;
  }

  void Keep(What what, double value, const std::wstring& text = {}) {
    const std::lock_guard lock(mutex_);
    events_.push_back({events_.size(), what, value, text});
  }

  const Notebook& notebook_;
  double (*const sensorColor_)();
  std::mutex mutex_;
  std::vector<Event> events_;
  std::atomic<DWORD> startingThread_ = 0;
  std::atomic<DWORD> dimmingThread_ = 0;
  std::atomic<bool> isStarting_ = false;
  bool isOff_ = false;     // of the starting thread
  size_t byPlatform_ = 0;  // under the library's own lock
  size_t byHelper_ = 0;    // likewise
};

// Processor time by thread, in 100 ns, of all other threads of this process.
using ThreadTimes = std::map<DWORD, uint64_t>;

uint64_t Time(HANDLE thread) {
  FILETIME made;
  FILETIME ended;
  FILETIME kernel;
  FILETIME user;
  EXPECT_TRUE(GetThreadTimes(thread, &made, &ended, &kernel, &user));
  const auto number = [](const FILETIME& time) {
    return uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
  };
  return number(kernel) + number(user);
}

ThreadTimes TimesOfThreads() {
  ThreadTimes times;
  HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId() &&
        entry.th32ThreadID != GetCurrentThreadId()) {
      HANDLE const thread = OpenThread(THREAD_QUERY_INFORMATION, FALSE, entry.th32ThreadID);
      EXPECT_NE(thread, nullptr);
      times[entry.th32ThreadID] = Time(thread);
      CloseHandle(thread);
    }
  }
  CloseHandle(snapshot);
  return times;
}

// --- Everything at once ---

class NaturalColourStress : public NaturalColourTest {
 protected:
  NaturalColourStress() {
    curve = {{.cct = 3000, .r = 0.5, .g = 0.5, .b = 0.5},
             {.cct = 6500, .r = 1, .g = 1, .b = 1},
             {.cct = 9000, .r = 0.75, .g = 0.75, .b = 0.75}};
    dataIn.frameCount = 30;
    notebook.onCall = [this](const Call& call) { witness_.See(call); };
  }
  ~NaturalColourStress() override {
    Stop();
    notebook.Locked([this] { notebook.onCall = nullptr; });
  }

  // Calls again and again, at moments of a seed's own, until the thread is stopped.
  template <typename Action>
  static std::jthread Repeat(uint32_t seed, unsigned longestPause, Action action) {
    return std::jthread([=](const std::stop_token& stop) {
      std::minstd_rand random(seed);
      while (!stop.stop_requested()) {
        action(random);
        SleepEx(random() % (longestPause + 1), FALSE);
      }
    });
  }

  void ReportAnything(std::minstd_rand& random) {
    const auto kelvin = static_cast<float>(2500 + 50 * (random() % 140));
    notebook.ReportLight(Reading(kelvin, random() % 8 == 0 ? 10 : kBrightRoom));
  }

  void FireAnything(std::minstd_rand& random) {
    const uint32_t kelvin = 2500 + 50 * (random() % 140);
    notebook.Locked([&] {
      notebook.biosAnswer = {0, static_cast<uint8_t>(kelvin), static_cast<uint8_t>(kelvin >> 8), 0,
                             0};
    });
    notebook.FireBiosEvent(705);
  }

  void ChangeSettings(std::minstd_rand& random) {
    library.SetNatureColorStatus(random() % 4 != 0);
    library.SetColorFieldCurrentMode(random() % 8 == 0 ? 7 : 2);
    library.NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR);
  }

  // Deliveries of both ways, and the session.
  void BreakOrMendDelivery(std::minstd_rand& random) {
    notebook.ClearFaults();
    if (random() % 2 == 0) {
      const unsigned n = 1 + static_cast<unsigned>(random() % 20);
      notebook.FailCall("PlatformSet3DColorTemperature", n, 5);
      notebook.FailCall("CoreKit::LoadUserProcessByServerPriviledge", n, 5);
    }
    const bool isActive = random() % 8 != 0;
    notebook.Locked([&] { notebook.sessions = {{1, isActive ? WTSActive : WTSDisconnected}}; });
  }

  void StopOrStartService(std::minstd_rand& random) {
    const DWORD state = random() % 3 != 0 ? SERVICE_RUNNING : SERVICE_STOPPED;
    const size_t helpers = random() % 8 == 0 ? 11 : 0;
    notebook.Locked([&] {
      notebook.services[L"Winmgmt"] = state;
      notebook.processes.assign(helpers, L"VeloraAssistant.exe");
    });
  }

  void MendAll() {
    notebook.ClearFaults();
    notebook.Locked([&] {
      notebook.sessions = {{1, WTSActive}};
      notebook.services[L"Winmgmt"] = SERVICE_RUNNING;
      notebook.processes.clear();
    });
  }

  // A start, everything at once for a while, a stop.
  void Round(uint32_t round) {
    dataIn.executionType = round % 2 == 0 ? kByPlatform : kByHelper;
    dataIn.monitorType = static_cast<int32_t>(round / 2 % 2);
    const auto host = Repeat(100 * round + 1, 30, [this](auto& random) { ChangeSettings(random); });
    const auto light = Repeat(100 * round + 2, 5, [this](auto& random) { ReportAnything(random); });
    const auto firmware =
        Repeat(100 * round + 3, 5, [this](auto& random) { FireAnything(random); });
    const auto panel =
        Repeat(100 * round + 4, 10, [this](auto& random) { BreakOrMendDelivery(random); });
    const auto system =
        Repeat(100 * round + 5, 20, [this](auto& random) { StopOrStartService(random); });
    Start();
    SleepEx(400, FALSE);
    const auto begin = std::chrono::steady_clock::now();
    Stop();
    longestStop_ = std::max(longestStop_, std::chrono::steady_clock::now() - begin);
  }

  // One that leaves nothing behind: with natural colour on.
  void QuietRound() {
    MendAll();
    library.SetColorFieldCurrentMode(2);
    SwitchOn();
    Start();
    Stop();
  }

  const testsupport::Watchdog watchdog_{std::chrono::seconds(120)};
  Witness witness_{notebook, &NaturalColourStress::SensorColor};
  std::chrono::steady_clock::duration longestStop_{};
};

TEST_F(NaturalColourStress, EverythingAtOnce) {
  constexpr uint32_t kRounds = 12;
  Round(0);
  Round(3);
  QuietRound();
  const testsupport::Holdings before = testsupport::Holdings::Now();
  for (uint32_t round = 4; round < 4 + kRounds; ++round) {
    Round(round);
  }
  QuietRound();
  const testsupport::Holdings after = testsupport::Holdings::Now();
  // Each of the hundreds of threads that there were has handles of its own; the C runtime keeps a
  // few for threads to come.
  EXPECT_NEAR(static_cast<double>(after.handles), static_cast<double>(before.handles), 8);
  EXPECT_EQ(after.threads, before.threads);

  // Followed to the end again, by both ways. The first reading is far from all that there were.
  dataIn.monitorType = 0;
  dataIn.executionType = kByHelper;
  Start();
  notebook.ReportLight(Reading(2000, kBrightRoom));
  EXPECT_TRUE(testsupport::WaitUntil([] { return SensorColor() == 3000; }));
  Stop();
  dataIn.executionType = kByPlatform;
  Start();
  notebook.ReportLight(Reading(8000, kBrightRoom));
  EXPECT_TRUE(testsupport::WaitUntil([] { return SensorColor() == 8000; }));
  Stop();

  testsupport::Replay replay(dataIn);
  replay.Follow(witness_.Take());
  const auto& counts = replay.Count();
  std::cout << counts.starts << " starts, " << counts.readings << " readings, " << counts.switches
            << " switches, " << counts.frames << " frames in " << counts.dimmings << " dimmings, "
            << counts.failedFrames << " failed, " << counts.ends << " at the target; longest stop "
            << std::chrono::duration_cast<std::chrono::milliseconds>(longestStop_) << std::endl;
  EXPECT_EQ(counts.starts, kRounds + 6);
  EXPECT_GT(counts.readings, 500U);
  EXPECT_GT(counts.switches, 50U);
  EXPECT_GT(counts.frames, 500U);
  EXPECT_GT(counts.failedFrames, 50U);
  EXPECT_GT(counts.ends, 10U);
  EXPECT_EQ(replay.Shown(), 8000);
  // Up to two looks at the service, two seconds apart.
  EXPECT_LT(longestStop_, std::chrono::seconds(5));

  // Left by design: the list of sessions at each frame, a sensor at each pass.
  EXPECT_EQ(notebook.CountOpen("WTSEnumerateSessionsW"), counts.frames);
  EXPECT_EQ(notebook.CountOpen("ISensorCollection::GetAt"),
            notebook.CountCalls("ISensorCollection::GetAt"));
  for (const char* const giver :
       {"WTSQuerySessionInformationW", "OpenSCManagerW", "OpenServiceW", "CreateToolhelp32Snapshot",
        "CoCreateInstance", "ISensorManager::GetSensorsByCategory",
        "ISensorDataReport::GetSensorValue", "ISensorEvents"}) {
    EXPECT_EQ(notebook.CountOpen(giver), 0U) << giver;
  }
  EXPECT_EQ(notebook.CountCalls("PlatformInit"), notebook.CountCalls("PlatformFini"));
}

// --- Nothing happens ---

class NaturalColourIdle : public NaturalColourTest {
 protected:
  static constexpr DWORD kSettle = 100;  // milliseconds

  // Follows one reading to its end.
  void Dim() {
    SwitchOn();
    Start();
    ASSERT_EQ(notebook.ReportLight(Reading(7000, kBrightRoom)), S_OK);
    ASSERT_TRUE(testsupport::WaitUntil([this] { return CountLogged(L"frameIndex_ = ") == 5; }));
    SleepEx(kSettle, FALSE);
  }

  void ExpectNothingFor(DWORD milliseconds) {
    notebook.ForgetRecords();
    const ThreadTimes before = TimesOfThreads();
    SleepEx(milliseconds, FALSE);
    EXPECT_EQ(TimesOfThreads(), before);
    // A thread that wakes up waits anew, which is a call.
    EXPECT_THAT(notebook.CallsNow(), IsEmpty());
    EXPECT_THAT(notebook.LogNow(), IsEmpty());
  }

  const size_t threadsBefore_ = TimesOfThreads().size();
};

TEST_F(NaturalColourIdle, NobodyWakesUpBehindADimming) {
  ASSERT_NO_FATAL_FAILURE(Dim());
  EXPECT_EQ(TimesOfThreads().size(), threadsBefore_ + 2);
  ExpectNothingFor(600);
}

TEST_F(NaturalColourIdle, NobodyWakesUpBehindADimmingByTheHelper) {
  dataIn.executionType = kByHelper;
  dataIn.monitorType = 1;
  notebook.biosAnswer = {0, 0x58, 0x1B};  // 7000
  ASSERT_NO_FATAL_FAILURE(Dim());
  EXPECT_EQ(TimesOfThreads().size(), threadsBefore_ + 2);
  ExpectNothingFor(600);
}

TEST_F(NaturalColourIdle, NobodyWakesUpWithNaturalColourOff) {
  Start();
  SleepEx(kSettle, FALSE);
  ExpectNothingFor(600);
}

// The measure itself.
TEST_F(NaturalColourIdle, AThreadThatRunsIsSeen) {
  const ThreadTimes before = TimesOfThreads();
  const std::jthread busy([](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
    }
  });
  SleepEx(200, FALSE);
  uint64_t most = 0;
  for (const auto& [thread, time] : TimesOfThreads()) {
    most = std::max(most, before.contains(thread) ? 0 : time);
  }
  EXPECT_GT(most, 200'000U);  // 20 ms
}

TEST_F(NaturalColourIdle, OneLookAtTheServiceEachTwoSeconds) {
  dataIn.executionType = kByHelper;
  notebook.services[L"Winmgmt"] = SERVICE_STOPPED;
  SwitchOn();
  Start();
  ASSERT_EQ(notebook.ReportLight(Reading(7000, kBrightRoom)), S_OK);
  ASSERT_TRUE(testsupport::WaitUntil([this] { return CountLogged(L"frameIndex_ = ") == 1; }));
  SleepEx(kSettle, FALSE);
  EXPECT_EQ(TimesOfThreads().size(), threadsBefore_ + 3);
  ExpectNothingFor(1000);  // of the first two seconds
  SleepEx(3500, FALSE);    // behind two looks, ahead of the third
  EXPECT_EQ(notebook.CountCalls("OpenSCManagerW"), 2U);
  EXPECT_EQ(notebook.CountCalls("QueryServiceStatus"), 2U);
  EXPECT_EQ(notebook.CountCalls("CloseServiceHandle"), 4U);
  EXPECT_LE(notebook.CallsNow().size(), 2 * (5 + 1U)) << "and one wait a look";
}

}  // namespace
}  // namespace scenarios
