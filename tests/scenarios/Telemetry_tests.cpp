// Telemetry through the shipped library, down to the file that the telemetry library's reference
// build keeps.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "closed/TestFiles.h"
#include "support/NotebookTest.h"
#include "support/ReportingThreads.h"
#include "virtualnotebook/HostedLibrary.h"

namespace scenarios {
namespace {

using closedtests::Marker;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

// The events in the file that hold the marker.
std::vector<std::string> EventsWith(const std::string& marker) {
  return closedtests::LogLinesWith(std::string(closedtests::kLogDirectory) + "orbevent.jsonl",
                                   marker);
}

std::string EventLine(int id, const std::string& key, const std::string& value) {
  return "\"event\":" + std::to_string(id) + ",\"data\":{\"" + key + "\":\"" + value + "\"}}";
}

class TelemetryScenario : public testing::Test {
 protected:
  // Nothing is ever logged.
  void TearDown() override {
    EXPECT_LOG();
    EXPECT_EQ(notebook.CountCalls("NxLogger::Log"), 0u);
  }

  virtualnotebook::HostedLibrary library;
  virtualnotebook::Notebook& notebook = library.notebook;
  const std::string marker = Marker("t");
  // The library must not be freed beneath a thread of its own: each test waits for its own.
  testsupport::ReportingThreads reporting{notebook};
};

TEST_F(TelemetryScenario, SyncHasReportedWhenItReturns) {
  library.OrbviewReportDataSync(991705, "mode", marker.c_str());
  EXPECT_THAT(EventsWith(marker), ElementsAre(EndsWith(EventLine(991705, "mode", marker))));
}

TEST_F(TelemetryScenario, AnyNumber) {
  for (const int id : {0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    const std::string value = marker + "of" + std::to_string(id);
    library.OrbviewReportDataSync(id, "k", value.c_str());
    EXPECT_THAT(EventsWith(value), ElementsAre(EndsWith(EventLine(id, "k", value))));
  }
}

TEST_F(TelemetryScenario, AsyncReturnsAtOnceAndTheTextsMayGo) {
  std::string value = marker + std::string(900, 'v');
  const std::string expected = value;
  {
    const auto held = reporting.Hold();
    auto* const page =
        static_cast<char*>(VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    ASSERT_NE(page, nullptr);
    strcpy(page, "key");
    library.OrbviewReportDataAsync(5, page, value.c_str());
    value.assign(value.size(), '#');
    VirtualFree(page, 0, MEM_RELEASE);  // a late look at it would end the program
    EXPECT_THAT(EventsWith(marker), IsEmpty());
  }
  ASSERT_TRUE(reporting.End(1));
  EXPECT_THAT(EventsWith(marker), ElementsAre(EndsWith(EventLine(5, "key", expected))));
}

// The telemetry library keeps the limits: it leaves out such a pair and takes the event.
TEST_F(TelemetryScenario, LimitsExceeded) {
  const std::string key(32, 'k');
  const std::string value = marker + std::string(1024 - marker.size(), 'v');
  library.OrbviewReportDataSync(1, key.c_str(), value.c_str());
  EXPECT_THAT(EventsWith(marker), ElementsAre(EndsWith(EventLine(1, key, value))));

  const int id = static_cast<int>(GetTickCount());  // tells this run's events from older ones
  const std::string empty = "\"event\":" + std::to_string(id) + ",\"data\":{}}";
  library.OrbviewReportDataSync(id, (key + "k").c_str(), marker.c_str());
  library.OrbviewReportDataSync(id, "key", (value + "v").c_str());
  library.OrbviewReportDataSync(id, "", marker.c_str());
  const std::string huge(1 << 20, 'h');
  library.OrbviewReportDataAsync(id, huge.c_str(), huge.c_str());
  ASSERT_TRUE(reporting.End(1));
  EXPECT_EQ(EventsWith(empty).size(), 4u);
  EXPECT_EQ(EventsWith(marker).size(), 1u);
}

TEST_F(TelemetryScenario, NullTextsThrow) {
  for (auto* const report : {library.OrbviewReportDataSync, library.OrbviewReportDataAsync}) {
    EXPECT_THROW(report(1, nullptr, "v"), std::logic_error);
    EXPECT_THROW(report(1, "k", nullptr), std::logic_error);
  }
  EXPECT_EQ(notebook.CountCalls("OrbView::Report"), 0u);
  EXPECT_EQ(notebook.CountCalls("_beginthreadex"), 0u);
}

// The exceptions leave the library and reach the host as what they are.
TEST_F(TelemetryScenario, AThreadThatCanNotBeStarted) {
  notebook.FailCall("_beginthreadex", 1, 0);
  EXPECT_THROW(library.OrbviewReportDataAsync(1, "k", marker.c_str()), std::system_error);
  library.OrbviewReportDataAsync(2, "k", marker.c_str());
  ASSERT_TRUE(reporting.End(1));
  EXPECT_THAT(EventsWith(marker), ElementsAre(EndsWith(EventLine(2, "k", marker))));
}

TEST_F(TelemetryScenario, AnExceptionOfTheTelemetryLibrary) {
  notebook.ThrowFrom("OrbView::Report", 1, "no room");
  EXPECT_THROW(library.OrbviewReportDataSync(1, "k", marker.c_str()), std::runtime_error);
  EXPECT_EQ(notebook.CountCalls("OrbEvent::~OrbEvent"), 1u);
}

TEST_F(TelemetryScenario, FromManyThreads) {
  constexpr int kThreads = 8;
  constexpr int kEvents = 25;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kEvents; ++i) {
        const std::string number = std::to_string(t) + "-" + std::to_string(i);
        const std::string value = marker + "," + number;
        library.OrbviewReportDataSync(t, ("s" + number).c_str(), value.c_str());
        library.OrbviewReportDataAsync(t, ("a" + number).c_str(), value.c_str());
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  ASSERT_TRUE(reporting.End(2u * kThreads * kEvents));
  const std::vector<std::string> events = EventsWith(marker);
  EXPECT_EQ(events.size(), 2u * kThreads * kEvents);
  for (int t = 0; t < kThreads; ++t) {
    for (int i = 0; i < kEvents; ++i) {
      const std::string number = std::to_string(t) + "-" + std::to_string(i);
      for (const char* const way : {"s", "a"}) {
        const std::string line = EventLine(t, way + number, marker + "," + number);
        EXPECT_EQ(std::ranges::count_if(
                      events, [&](const std::string& event) { return event.ends_with(line); }),
                  1)
            << line;
      }
    }
  }
}

}  // namespace
}  // namespace scenarios
