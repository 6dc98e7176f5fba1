// Natural colour's threads and those that call in, for ThreadSanitizer to watch; what they did is
// then followed step by step.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iostream>
#include <random>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "naturalcolor/NaturalColorAdjustAlgorithm.h"
#include "naturalcolor/Replay.h"
#include "naturalcolor/native/Surroundings.h"
#include "support/Watchdog.h"

namespace velora {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr float kBright = 300;  // lux
constexpr float kDark = 10;
constexpr int32_t kByPlatform = 1;
constexpr int32_t kByHelper = 0;

constexpr std::array<CctAlgoInfo, 3> kCurve = {{
    {3000, 0.5, 0.5, 0.5},
    {6500, 1, 1, 1},
    {9000, 0.75, 0.75, 0.75},
}};

NatureColorDataIn Settings(int32_t executionType, int32_t frameCount) {
  return {.frameCount = frameCount,
          .frameTime = 0,
          .dimmingThreshold = 100,
          .methodVersion = 0,
          .minLuma = 4000,
          .luminanceThreshold = 50,
          .monitorType = 0,
          .executionType = executionType,
          .algoInfo = kCurve.data(),
          .algoInfoCnt = static_cast<int32_t>(kCurve.size())};
}

bool WaitUntil(const std::function<bool()>& predicate) {
  const auto end = steady_clock::now() + std::chrono::seconds(60);
  while (!predicate()) {
    if (steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(milliseconds(1));
  }
  return true;
}

// How often the thread has gone to sleep.
uint64_t CountSleeps(int thread) {
  const std::string label = "voluntary_ctxt_switches:";
  std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(label)) {
      return std::stoull(line.substr(label.size()));
    }
  }
  ADD_FAILURE() << "no thread " << thread;
  return 0;
}

class NaturalColorThreads : public testing::Test {
 protected:
  NaturalColorThreads() {
    surroundings::isSessionActive = true;
    surroundings::isServiceRunning = true;
    surroundings::failedDeliveries = 0;
    surroundings::naturalColorStatus = 1;
    surroundings::sensorColor = 5000;
    surroundings::frames = 0;
    surroundings::looksAtService = 0;
    surroundings::TakeEvents();
  }

  // Calls again and again, at moments of a seed's own, until the thread is stopped.
  template <typename Action>
  std::jthread Repeat(uint32_t seed, int longestPause, Action action) {
    return std::jthread([=](const std::stop_token& stop) {
      std::minstd_rand random(seed);
      std::uniform_int_distribution pause(0, longestPause);
      while (!stop.stop_requested()) {
        action(random);
        std::this_thread::sleep_for(std::chrono::microseconds(pause(random)));
      }
    });
  }

  // Readings of every kind: far and near, above and below the curve, in the dark.
  std::jthread Readings(uint32_t seed) {
    return Repeat(seed, 2000, [this](std::minstd_rand& random) {
      const auto cct = static_cast<float>(2500 + 50 * (random() % 140));
      algorithm_.StartCctDimming(cct, random() % 8 == 0 ? kDark : kBright);
    });
  }

  std::jthread StatusSwitches(uint32_t seed) {
    return Repeat(seed, 20000, [this](std::minstd_rand& random) {
      const uint32_t status = random() % 3 != 0;
      surroundings::naturalColorStatus.store(static_cast<int>(status), kRelaxed);
      algorithm_.SyncNatureColorStatus(status);
    });
  }

  static bool IsShown(double cct) { return surroundings::sensorColor.load(kRelaxed) == cct; }

  // The first is far from the last one, whatever that was.
  void ExpectReadingsAreFollowed() {
    algorithm_.SyncNatureColorStatus(1);
    algorithm_.StartCctDimming(2000, kBright);
    EXPECT_TRUE(WaitUntil([] { return IsShown(kCurve.front().cct); }));
    algorithm_.StartCctDimming(8700, kBright);
    EXPECT_TRUE(WaitUntil([] { return IsShown(8700); }));
  }

  void Start(const NatureColorDataIn& settings) {
    algorithm_.InitNaturalColorAdjustAlgorithm(&settings);
  }

  void Stop() { algorithm_.StopNaturalColorAdjustAlgorithm(); }

  static const testsupport::Replay::Counts& Show(const testsupport::Replay& replay) {
    const auto& counts = replay.Count();
    std::cout << counts.starts << " starts, " << counts.readings << " readings, " << counts.switches
              << " switches, " << counts.frames << " frames in " << counts.dimmings << " dimmings, "
              << counts.failedFrames << " failed, " << counts.ends << " at the target, "
              << counts.resumed << " dimmings resumed by the service" << std::endl;
    return counts;
  }

  const testsupport::Watchdog watchdog_{std::chrono::seconds(60)};
  NaturalColorAdjustAlgorithm algorithm_;
};

TEST_F(NaturalColorThreads, FramesStayInOrderWhateverComesInBetween) {
  const NatureColorDataIn settings = Settings(kByPlatform, 40);
  Start(settings);
  {
    const auto light = Readings(1);
    const auto firmware = Readings(2);
    const auto config = StatusSwitches(3);
    const auto panel = Repeat(4, 10000, [](std::minstd_rand& random) {
      surroundings::failedDeliveries.store(random() % 2 == 0 ? 0 : 100, kRelaxed);
      surroundings::isSessionActive.store(random() % 8 != 0, kRelaxed);
    });
    std::this_thread::sleep_for(milliseconds(1500));
  }
  surroundings::failedDeliveries = 0;
  surroundings::isSessionActive = true;
  ExpectReadingsAreFollowed();
  Stop();

  testsupport::Replay replay(settings);
  replay.Follow(surroundings::TakeEvents());
  const auto& counts = Show(replay);
  EXPECT_GT(counts.readings, 500U);
  EXPECT_GT(counts.switches, 50U);
  EXPECT_GT(counts.frames, 1000U);
  EXPECT_GT(counts.failedFrames, 10U);
  EXPECT_GT(counts.ends, 10U);
}

TEST_F(NaturalColorThreads, ServiceStopsAndComesBack) {
  const NatureColorDataIn settings = Settings(kByHelper, 40);
  Start(settings);
  {
    const auto light = Readings(5);
    const auto firmware = Readings(6);
    const auto config = StatusSwitches(7);
    const auto service = Repeat(8, 40000, [](std::minstd_rand& random) {
      surroundings::isServiceRunning.store(random() % 2 == 0, kRelaxed);
    });
    std::this_thread::sleep_for(milliseconds(2500));
  }
  surroundings::isServiceRunning = true;
  ExpectReadingsAreFollowed();
  Stop();

  testsupport::Replay replay(settings);
  replay.Follow(surroundings::TakeEvents());
  const auto& counts = Show(replay);
  EXPECT_GT(counts.frames, 500U);
  EXPECT_GT(counts.failedFrames, 20U);
}

// Nothing else does: the dimming stays where it was. There is one look each two seconds.
TEST_F(NaturalColorThreads, ServiceThatComesBackResumesTheDimming) {
  const NatureColorDataIn settings = Settings(kByHelper, 10);
  Start(settings);
  surroundings::isServiceRunning = false;
  algorithm_.StartCctDimming(8000, kBright);
  const auto start = steady_clock::now();
  EXPECT_TRUE(WaitUntil([] { return surroundings::looksAtService.load(kRelaxed) == 1; }));
  EXPECT_GE(steady_clock::now() - start, milliseconds(1900));
  EXPECT_TRUE(IsShown(5000));
  surroundings::isServiceRunning = true;
  EXPECT_TRUE(WaitUntil([] { return IsShown(8000); }));
  EXPECT_GE(steady_clock::now() - start, milliseconds(3900));
  EXPECT_EQ(surroundings::looksAtService.load(kRelaxed), 2U);
  Stop();

  testsupport::Replay replay(settings);
  replay.Follow(surroundings::TakeEvents());
  EXPECT_EQ(Show(replay).resumed, 1U);
  EXPECT_EQ(replay.Count().failedFrames, 1U);
  EXPECT_EQ(replay.Count().frames, 12U);
}

TEST_F(NaturalColorThreads, StopDuringTheWaitForTheService) {
  const NatureColorDataIn settings = Settings(kByHelper, 10);
  surroundings::isServiceRunning = false;
  for (int round = 0; round < 200; ++round) {
    const uint32_t framesBefore = surroundings::frames.load(kRelaxed);
    Start(settings);
    algorithm_.StartCctDimming(round % 2 == 0 ? 8000 : 3500, kBright);
    EXPECT_TRUE(WaitUntil([=] { return surroundings::frames.load(kRelaxed) > framesBefore; }));
    Stop();
  }
  testsupport::Replay replay(settings);
  replay.Follow(surroundings::TakeEvents());
  EXPECT_GE(Show(replay).failedFrames, 200U);
}

TEST_F(NaturalColorThreads, EveryReadingBehindAFailureTriesAgain) {
  constexpr uint32_t kRounds = 150;
  const NatureColorDataIn settings = Settings(kByPlatform, 5);
  Start(settings);
  uint32_t frames = surroundings::frames.load(kRelaxed);
  const auto areDone = [&](uint32_t more) {
    frames += more;
    return WaitUntil([&] { return surroundings::frames.load(kRelaxed) == frames; });
  };
  for (uint32_t round = 0; round < kRounds; ++round) {
    const float target = round % 2 == 0 ? 8000 : 3500;
    surroundings::isSessionActive.store(false, kRelaxed);
    algorithm_.StartCctDimming(target, kBright);
    ASSERT_TRUE(areDone(1));
    EXPECT_FALSE(IsShown(target));

    // As near to the last one as can be, from another thread.
    std::thread([&] { algorithm_.StartCctDimming(target, kBright); }).join();
    ASSERT_TRUE(areDone(1)) << "it failed once more";
    EXPECT_FALSE(IsShown(target));

    surroundings::isSessionActive.store(true, kRelaxed);
    std::thread([&] { algorithm_.StartCctDimming(target, kBright); }).join();
    ASSERT_TRUE(areDone(6));
    EXPECT_TRUE(IsShown(target));
  }
  Stop();

  testsupport::Replay replay(settings);
  replay.Follow(surroundings::TakeEvents());
  EXPECT_EQ(Show(replay).failedFrames, 2 * kRounds);
  EXPECT_EQ(replay.Count().frames, (2 + 6) * kRounds);
}

// Counted by the system: the thread gives the processor back each time it goes to sleep again.
TEST_F(NaturalColorThreads, NobodyWakesUpWhileNothingHappens) {
  const NatureColorDataIn settings = Settings(kByPlatform, 5);
  Start(settings);
  algorithm_.StartCctDimming(8000, kBright);
  EXPECT_TRUE(WaitUntil([] { return surroundings::frames.load(kRelaxed) == 6; }));
  const auto wakeUps = [] { return CountSleeps(surroundings::dimmingThread.load(kRelaxed)); };
  std::this_thread::sleep_for(milliseconds(50));
  const uint64_t before = wakeUps();
  EXPECT_GT(before, 0U);
  std::this_thread::sleep_for(milliseconds(500));
  EXPECT_EQ(wakeUps(), before);
  algorithm_.StartCctDimming(3500, kBright);
  EXPECT_TRUE(WaitUntil([&] { return wakeUps() > before; })) << "they are counted";
  Stop();
}

// A stop that finds the thread just ahead of its wait must wake it all the same. The reading puts
// the thread into every place of its loop.
TEST_F(NaturalColorThreads, StopIsSeenWhereverTheThreadIs) {
  constexpr uint32_t kRounds = 2000;
  const NatureColorDataIn settings = Settings(kByPlatform, 1);
  std::minstd_rand random(9);
  for (uint32_t round = 0; round < kRounds; ++round) {
    Start(settings);
    const uint32_t way = random() % 4;
    if (way > 0) {
      algorithm_.StartCctDimming(round % 2 == 0 ? 8000 : 3500, kBright);
    }
    if (way > 1) {
      const auto end = steady_clock::now() + std::chrono::microseconds(random() % 150);
      while (steady_clock::now() < end) {
      }
    }
    Stop();
  }
  testsupport::Replay replay(settings);
  replay.Follow(surroundings::TakeEvents());
  EXPECT_EQ(Show(replay).starts, kRounds);
}

// A stop with natural colour off leaves the firmware's monitor running: its readings come during
// the stop, behind it and during the next start.
TEST_F(NaturalColorThreads, ReadingsComeThroughStopAndStart) {
  constexpr uint32_t kRounds = 300;
  const NatureColorDataIn settings = Settings(kByPlatform, 3);
  {
    std::jthread firmware;
    for (uint32_t round = 0; round < kRounds; ++round) {
      surroundings::naturalColorStatus.store(round % 2, kRelaxed);
      Start(settings);
      if (round == 0) {
        firmware = Readings(10);
      }
      algorithm_.SyncNatureColorStatus(1);
      std::this_thread::sleep_for(std::chrono::microseconds(300));
      Stop();
    }
  }
  testsupport::Replay replay(settings);
  replay.Follow(surroundings::TakeEvents());
  EXPECT_EQ(Show(replay).starts, kRounds);
}

}  // namespace
}  // namespace velora
