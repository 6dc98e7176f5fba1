// Many threads of several processes write, read and ring at once, while this process waits for the
// rings.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <deque>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "scenarios/HostProcess.h"
#include "scenarios/host/Stress.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/HostedLibrary.h"

namespace scenarios {
namespace {

constexpr uint32_t kShort = 50;  // milliseconds

// What everybody finds: the values of writer 0.
void Seed(virtualnotebook::HostedLibrary& library) {
  const int seed = stress::Written(0, 0);
  ASSERT_EQ(library.SetWhitePointStatus(seed), ResultOk);
  ASSERT_EQ(library.SetFrameWorkType(seed), ResultOk);
  for (int type = 0; type < 7; ++type) {
    ASSERT_EQ(library.SetFeatureSupport(type, seed), ResultOk);
  }
  for (const ColorFieldMode mode : {P3Mode, USRDESIGN_MODE}) {
    WhitePointFineTueInfo tuning{
        .id = {}, .mode = mode, .r = seed + 0.5, .g = seed + 0.5, .b = seed + 0.5};
    std::copy(std::begin(stress::kUserMode), std::end(stress::kUserMode), tuning.id);
    ASSERT_EQ(library.SetWhitePointTueValue(&tuning), ResultOk);
  }
}

TEST(SettingsStress, EveryValueReadIsOneThatSomebodyWrote) {
  const testsupport::ScopedKey key(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora");
  virtualnotebook::HostedLibrary library;
  ASSERT_NO_FATAL_FAILURE(Seed(library));
  for (const int type : stress::kRungTypes) {
    ASSERT_EQ(library.InitConfigSyncObject(type), ResultOk);
  }

  std::atomic<int> wakes = 0;
  std::vector<std::jthread> waiters;
  for (const int type : stress::kRungTypes) {
    waiters.emplace_back([&, type](const std::stop_token& over) {
      // The round behind the last ring takes what is still pending.
      for (bool last = false; !last;) {
        last = over.stop_requested();
        const ResultT result = library.WaitConfigChangeSync(type, kShort);
        EXPECT_TRUE(result == ResultOk || result == ResultTimeout) << result;
        wakes += result == ResultOk;
      }
    });
  }

  std::deque<HostProcess> hosts(stress::kProcesses);
  for (int process = 0; process < stress::kProcesses; ++process) {
    hosts[static_cast<size_t>(process)].Send("stress " + std::to_string(process) + " " +
                                             std::to_string(stress::kThreads) + " " +
                                             std::to_string(stress::kOperations));
  }
  int operations = 0;
  int reads = 0;
  int rings = 0;
  int wrong = 0;
  for (HostProcess& host : hosts) {
    std::istringstream answer(host.Receive());
    std::array<int, 4> counts{};
    for (int& count : counts) {
      EXPECT_TRUE(answer >> count) << answer.str();
    }
    operations += counts[0];
    reads += counts[1];
    rings += counts[2];
    wrong += counts[3];
  }
  waiters.clear();

  std::cout << operations << " operations in " << stress::kProcesses << " processes of "
            << stress::kThreads << " threads: " << reads << " values read, " << rings << " rings, "
            << wakes << " wakes, " << wrong << " wrong" << std::endl;
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(operations, stress::kProcesses * stress::kThreads * stress::kOperations);
  EXPECT_GT(reads, operations / 5);
  EXPECT_GE(wakes, static_cast<int>(std::size(stress::kRungTypes)));
  EXPECT_LE(wakes, rings);
  for (const int type : stress::kRungTypes) {
    EXPECT_EQ(library.WaitConfigChangeSync(type, kShort), ResultTimeout) << "no ring is left";
  }
  EXPECT_TRUE(
      stress::IsWritten(library.GetWhitePointStatus(-1), 0, stress::kProcesses * stress::kThreads));
}

}  // namespace
}  // namespace scenarios
