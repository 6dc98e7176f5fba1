// Mode switches, settings and fades without end: what a process holds stays what it was, apart from
// what the library gives away, which is counted to the byte.
#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <iostream>
#include <optional>
#include <string>

#include "scenarios/Long.h"
#include "scenarios/NaturalColour.h"
#include "scenarios/Persistent.h"
#include "scenarios/machinehost/MachineHost.h"
#include "support/Holdings.h"
#include "support/NotebookTest.h"
#include "support/Watchdog.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/Machine.h"

namespace scenarios {
namespace {

using testsupport::Holdings;

// Ahead of a measurement: what is made once is there by then.
constexpr int kWarmUp = 4;  // rounds

int Rounds(int shortRun, int longRun) { return IsLongRun() ? longRun : shortRun; }

void Report(const std::string& what, const Holdings& before, const Holdings& after) {
  std::cout << what << ": " << testing::PrintToString(before) << "; then "
            << testing::PrintToString(after) << std::endl;
}

// The measure itself.
TEST(LongRun, WhatStaysIsSeen) {
  const auto open = [] {
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE", 0, KEY_READ, &key), ERROR_SUCCESS);
    return key;
  };
  RegCloseKey(open());
  Holdings::Now();
  const Holdings before = Holdings::Now();
  const HKEY key = open();
  void* const block = HeapAlloc(GetProcessHeap(), 0, 1234);
  Holdings expected = before.With(1, {1234});
  expected.handles += 1;
  expected.keys += 1;
  EXPECT_EQ(Holdings::Now(), expected);
  HeapFree(GetProcessHeap(), 0, block);
  RegCloseKey(key);
  EXPECT_EQ(Holdings::Now(), before);
}

// --- Modes ---

class LongRunOfModes : public testing::Test {
 protected:
  LongRunOfModes() {
    RemovePersistent();
    virtualnotebook::InstallMachine(machine_);
  }
  ~LongRunOfModes() override {
    host_.reset();
    RemovePersistent();
    virtualnotebook::RemoveMachine();
  }

  void SetUp() override {
    host_.emplace(machinehost::Role::Application);
    const UserDesignInfo design = machinehost::Design(kMode, 1);
    ASSERT_EQ(host_->library.SaveUserSelfColor(&design), ResultOk);
  }

  static constexpr size_t kSwitchesOfARound = 100;
  static constexpr char kMode[] = "Long%1";

  // A hundred switches, one in ten to the user's mode, and the last one by an edit of it.
  void Round() {
    constexpr std::array<ColorFieldMode, 3> kModes = {SrgbMode, P3Mode, 7};
    for (size_t i = 1; i < kSwitchesOfARound; ++i) {
      const ResultT result = i % 10 == 0 ? host_->library.SetUserColorField(kMode)
                                         : host_->library.SetColorField(kModes[i % kModes.size()]);
      ASSERT_EQ(result, ResultOk) << i;
    }
    const UserDesignInfo design = machinehost::Design(kMode, 1 + ++edits_ % 2);
    ASSERT_EQ(host_->library.EditUserColorField(&design, kMode), ResultOk);
    transforms_ += host_->notebook.CountCalls("CreateMultiProfileTransform");
    host_->notebook.ForgetRecords();
  }

  const virtualnotebook::MachineData machine_ =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  const virtualnotebook::PluggedPanel panel_{machine_.edid};
  std::optional<machinehost::Host> host_;
  int edits_ = 0;
  size_t transforms_ = 0;
};

// An edit forgets the decoded LUTs of the mode without freeing them. The colour system makes no
// transforms here: see below.
TEST_F(LongRunOfModes, HoldsNothingButForgottenLuts) {
  constexpr size_t k3DLut = 4913 * 3 * sizeof(double);
  constexpr size_t kGammaLut = 1024 * 3 * sizeof(double);
  const auto rounds = static_cast<size_t>(Rounds(20, 1000));
  host_->notebook.FailCall("CreateMultiProfileTransform", 0, 0);
  for (int n = 0; n < kWarmUp; ++n) {
    ASSERT_NO_FATAL_FAILURE(Round());
  }
  const Holdings before = Holdings::Now();
  for (size_t n = 0; n < rounds; ++n) {
    ASSERT_NO_FATAL_FAILURE(Round());
  }
  const Holdings after = Holdings::Now();
  EXPECT_EQ(after, before.With(rounds, {k3DLut, kGammaLut}));
  Report(std::to_string(rounds * kSwitchesOfARound) + " switches, " + std::to_string(rounds) +
             " of them by an edit",
         before, after);
}

// Each change of the profile gives away the colour system's transform, as big as the system makes
// it.
TEST_F(LongRunOfModes, AProfileChangeGivesAwayATransform) {
  for (int n = 0; n < kWarmUp; ++n) {
    ASSERT_NO_FATAL_FAILURE(Round());
  }
  const Holdings start = Holdings::Now();
  transforms_ = 0;
  ASSERT_NO_FATAL_FAILURE(Round());
  const Holdings before = Holdings::Now();
  const size_t ofARound = transforms_;
  EXPECT_GT(ofARound, 0U);
  ASSERT_NO_FATAL_FAILURE(Round());
  ASSERT_NO_FATAL_FAILURE(Round());
  const Holdings after = Holdings::Now();
  EXPECT_EQ(transforms_, 3 * ofARound);
  const auto perTransform = [](const Holdings& from, const Holdings& to, size_t transforms) {
    return static_cast<double>(to.bytes - from.bytes) / static_cast<double>(transforms);
  };
  const double bytes = perTransform(start, before, ofARound);
  EXPECT_NEAR(perTransform(before, after, 2 * ofARound), bytes, bytes / 100);
  EXPECT_EQ(after.handles, start.handles);
  std::cout << ofARound << " transforms in " << kSwitchesOfARound
            << " switches: " << (before.bytes - start.bytes) / ofARound << " bytes each"
            << std::endl;
}

// --- Settings ---

TEST(LongRun, SettingsHoldNothing) {
  const testsupport::ScopedKey key(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora");
  const int rounds = Rounds(30, 1334);
  virtualnotebook::HostedLibrary library;
  const auto round = [&](int n) {
    ASSERT_EQ(machinehost::WriteSettings(library, 1 + n % 2), 0);
    ASSERT_FALSE(machinehost::ReadSettings(library).empty());
    library.notebook.ForgetRecords();
  };
  for (int n = 0; n < kWarmUp; ++n) {
    ASSERT_NO_FATAL_FAILURE(round(n));
  }
  const Holdings before = Holdings::Now();
  for (int n = 0; n < rounds; ++n) {
    ASSERT_NO_FATAL_FAILURE(round(n));
  }
  const Holdings after = Holdings::Now();
  EXPECT_EQ(after, before);
  Report(std::to_string(rounds * machinehost::kSettingsCalls) + " settings calls", before, after);
}

// --- Fades ---

class LongRunOfFades : public NaturalColourTest {
 protected:
  static constexpr size_t kFramesOfAFade = 5;
  static constexpr DWORD kPatience = 60000;  // milliseconds for a fade

  LongRunOfFades() {
    notebook.onCall = [this](const virtualnotebook::Call& call) {
      if (call.function == "LcdLogMessage" && call.arguments[1].starts_with(L"frameIndex_ = ")) {
        if (++frames_ % kFramesOfAFade == 0) {
          SetEvent(faded_);
        }
      }
    };
  }
  ~LongRunOfFades() override {
    Stop();
    notebook.Locked([this] { notebook.onCall = nullptr; });
    CloseHandle(faded_);
  }

  // Readings one after the other, each followed to its end.
  void Fade(size_t count) {
    constexpr float kBright = 300;
    for (size_t i = 0; i < count; ++i) {
      ASSERT_EQ(notebook.ReportLight(Reading(++fades_ % 2 == 0 ? 3500 : 7500, kBright)), S_OK);
      ASSERT_EQ(WaitForSingleObject(faded_, kPatience), WAIT_OBJECT_0);
      if (fades_ % 10 == 0) {
        Forget();
      }
    }
  }

  // Starts, each with a fade, and stops.
  void StartAndStop(size_t count) {
    for (size_t i = 0; i < count; ++i) {
      Start();
      ASSERT_NO_FATAL_FAILURE(Fade(1));
      Stop();
    }
  }

  void Forget() {
    notebook.ForgetRecords();
    notebook.Locked([this] { notebook.platform.temperatures3D.clear(); });
  }

  // Behind the last frame's last call: with nothing new on record.
  Holdings AtRest() {
    Holdings held;
    do {
      SleepEx(100, FALSE);
      Forget();
      held = Holdings::Now();
    } while (!notebook.CallsNow().empty());
    return held;
  }

  // All but what the C runtime makes when threads first meet at a lock.
  static void ExpectHeld(const Holdings& held, const Holdings& expected) {
    constexpr double kHandles = 4;
    constexpr double kBlocks = 16;
    constexpr double kBytes = 2048;
    EXPECT_EQ(held.keys, expected.keys);
    EXPECT_EQ(held.threads, expected.threads);
    EXPECT_NEAR(static_cast<double>(held.handles), static_cast<double>(expected.handles), kHandles);
    EXPECT_NEAR(static_cast<double>(held.blocks), static_cast<double>(expected.blocks), kBlocks);
    EXPECT_NEAR(static_cast<double>(held.bytes), static_cast<double>(expected.bytes), kBytes);
  }

  // Held at the end of so many, of which the first ones gave away what lies between two
  // measurements.
  static Holdings Extrapolate(const Holdings& start, const Holdings& before, size_t first,
                              size_t count) {
    Holdings held = before;
    held.blocks += (before.blocks - start.blocks) / first * count;
    held.bytes += (before.bytes - start.bytes) / first * count;
    return held;
  }

  const testsupport::Watchdog watchdog_{std::chrono::seconds(IsLongRun() ? 3600 : 60)};
  const HANDLE faded_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  std::atomic<size_t> frames_ = 0;
  size_t fades_ = 0;
};

// Each frame gives away the system's list of sessions. How much that is together with the
// notebook's note of it, the first fades tell; it is the same for all others.
TEST_F(LongRunOfFades, HoldNothingButSessionLists) {
  constexpr size_t kFirst = 40;
  const auto fades = static_cast<size_t>(Rounds(400, 100'000));
  SwitchOn();
  Start();
  ASSERT_NO_FATAL_FAILURE(Fade(kFirst));
  const Holdings start = AtRest();
  ASSERT_NO_FATAL_FAILURE(Fade(kFirst));
  const Holdings before = AtRest();
  EXPECT_EQ(notebook.CountOpen("WTSEnumerateSessionsW"), 2 * kFirst * kFramesOfAFade);
  ASSERT_NO_FATAL_FAILURE(Fade(fades));
  const Holdings after = AtRest();
  EXPECT_EQ(notebook.CountOpen("WTSEnumerateSessionsW"), (2 * kFirst + fades) * kFramesOfAFade);
  ExpectHeld(after, Extrapolate(start, before, kFirst, fades));
  Report(std::to_string(fades) + " fades of " + std::to_string(kFramesOfAFade) + " frames", before,
         after);
  for (const char* giver :
       {"WTSQuerySessionInformationW", "ISensorDataReport::GetSensorValue", "ISensorEvents"}) {
    EXPECT_EQ(notebook.CountOpen(giver), 0U) << giver;
  }
}

// Each start and each stop give away a reference to the sensor, and the fade its lists.
TEST_F(LongRunOfFades, StartsAndStopsHoldNothingButSensors) {
  constexpr size_t kFirst = 20;
  const auto starts = static_cast<size_t>(Rounds(40, 2000));
  SwitchOn();
  ASSERT_NO_FATAL_FAILURE(StartAndStop(kFirst));
  const Holdings start = AtRest();
  ASSERT_NO_FATAL_FAILURE(StartAndStop(kFirst));
  const Holdings before = AtRest();
  EXPECT_EQ(notebook.CountOpen("ISensorCollection::GetAt"), 2 * (2 * kFirst));
  ASSERT_NO_FATAL_FAILURE(StartAndStop(starts));
  const Holdings after = AtRest();
  EXPECT_EQ(notebook.CountOpen("ISensorCollection::GetAt"), 2 * (2 * kFirst + starts));
  EXPECT_EQ(notebook.CountOpen("CoCreateInstance"), 0U);
  EXPECT_EQ(notebook.CountOpen("ISensorManager::GetSensorsByCategory"), 0U);
  ExpectHeld(after, Extrapolate(start, before, kFirst, starts));
  Report(std::to_string(starts) + " starts and stops", before, after);
}

}  // namespace
}  // namespace scenarios
