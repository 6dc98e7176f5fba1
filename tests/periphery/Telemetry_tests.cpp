#include "periphery/Telemetry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "support/NotebookTest.h"
#include "support/ReportingThreads.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;
using velora::Telemetry;

namespace {

constexpr char kConstructor[] = "OrbEvent::OrbEvent";
constexpr char kDestructor[] = "OrbEvent::~OrbEvent";
constexpr char kReport[] = "OrbView::Report";
constexpr char kThreadStart[] = "_beginthreadex";

class TelemetryTest : public testsupport::NotebookTest {
 protected:
  // Neither of the two loggers hears of telemetry, whatever happens.
  void TearDown() override {
    EXPECT_LOG();
    EXPECT_EQ(notebook.CountCalls("NxLogger::Log"), 0u);
  }

  // The calls of the telemetry library.
  std::vector<std::string> Calls() const {
    std::vector<std::string> texts;
    for (const auto& call : notebook.calls) {
      if (call.function.starts_with("Orb")) {
        texts.push_back(testing::PrintToString(call));
      }
    }
    return texts;
  }
  // Keys and values that were added, as "key=value".
  std::vector<std::string> Pairs() const {
    std::vector<std::string> texts;
    for (const auto& call : notebook.calls) {
      if (call.function == "OrbEvent::PutString") {
        texts.push_back(testsupport::Utf8(call.arguments[1] + L"=" + call.arguments[2]));
      }
    }
    return texts;
  }

  // A thread that still reports must not outlive the notebook: each test waits for its own.
  testsupport::ReportingThreads reporting{notebook};
};

TEST_F(TelemetryTest, ReportSync_OneEventWithOnePair) {
  Telemetry::ReportSync(705, "mode", "P3");
  EXPECT_THAT(Calls(), ElementsAre("OrbEvent::OrbEvent(pointer, 705)",
                                   "OrbEvent::PutString(pointer, mode, P3)",
                                   "OrbView::Report(pointer)", "OrbEvent::~OrbEvent(pointer)"));
  EXPECT_EQ(notebook.CountCalls(kThreadStart), 0u);
}

TEST_F(TelemetryTest, ReportSync_AnyNumber) {
  for (const int id : {0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    notebook.ForgetRecords();
    Telemetry::ReportSync(id, "k", "v");
    EXPECT_EQ(Calls().front(), "OrbEvent::OrbEvent(pointer, " + std::to_string(id) + ")");
  }
}

// The limits of an event are the telemetry library's: it is handed everything.
TEST_F(TelemetryTest, ReportSync_TextsBeyondTheLimitsArePassedOn) {
  const std::string key(33, 'k');
  const std::string value(100000, 'v');
  Telemetry::ReportSync(1, key.c_str(), value.c_str());
  Telemetry::ReportSync(1, "", "");
  EXPECT_THAT(Pairs(), ElementsAre(key + "=" + value, "="));
  EXPECT_EQ(notebook.CountCalls(kReport), 2u);
}

TEST_F(TelemetryTest, ReportSync_ANullTextThrows) {
  EXPECT_THROW(Telemetry::ReportSync(1, nullptr, "v"), std::logic_error);
  EXPECT_THROW(Telemetry::ReportSync(1, "k", nullptr), std::logic_error);
  EXPECT_EQ(notebook.CountCalls(kConstructor), 2u);
  EXPECT_EQ(notebook.CountCalls(kDestructor), 2u);
  EXPECT_EQ(notebook.CountCalls(kReport), 0u);
}

TEST_F(TelemetryTest, ReportSync_AnExceptionLeavesNoEvent) {
  for (const char* function : {"OrbEvent::PutString", kReport}) {
    notebook.ForgetRecords();
    notebook.ClearFaults();
    notebook.ThrowFrom(function, 1, "no");
    EXPECT_THROW(Telemetry::ReportSync(1, "k", "v"), std::runtime_error);
    EXPECT_EQ(notebook.CountCalls(kDestructor), 1u);
  }
}

TEST_F(TelemetryTest, ReportAsync_TheSameStepsOnAThread) {
  Telemetry::ReportAsync(705, "mode", "P3");
  ASSERT_TRUE(reporting.End(1));
  EXPECT_THAT(Calls(), ElementsAre("OrbEvent::OrbEvent(pointer, 705)",
                                   "OrbEvent::PutString(pointer, mode, P3)",
                                   "OrbView::Report(pointer)", "OrbEvent::~OrbEvent(pointer)"));
  EXPECT_EQ(notebook.CountCalls(kThreadStart), 1u);
}

TEST_F(TelemetryTest, ReportAsync_ReturnsAtOnce) {
  {
    const auto held = reporting.Hold();
    Telemetry::ReportAsync(1, "k", "v");
    EXPECT_THAT(Calls(), IsEmpty());
    EXPECT_EQ(notebook.CountCalls(kThreadStart), 1u);
  }
  ASSERT_TRUE(reporting.End(1));
  EXPECT_EQ(notebook.CountCalls(kReport), 1u);
}

TEST_F(TelemetryTest, ReportAsync_TheTextsMayGoRightAfterTheCall) {
  std::string key = "a key of sixteen";
  std::string value(1024, 'v');
  {
    const auto held = reporting.Hold();
    Telemetry::ReportAsync(1, key.c_str(), value.c_str());
    key.assign(key.size(), '#');
    value.assign(value.size(), '#');
  }
  ASSERT_TRUE(reporting.End(1));
  EXPECT_THAT(Pairs(), ElementsAre("a key of sixteen=" + std::string(1024, 'v')));
}

TEST_F(TelemetryTest, ReportAsync_AThreadForEachEvent) {
  {
    const auto held = reporting.Hold();
    for (int i = 0; i < 20; ++i) {
      Telemetry::ReportAsync(i, "k", "v");
    }
    EXPECT_EQ(notebook.CountCalls(kThreadStart), 20u);
  }
  ASSERT_TRUE(reporting.End(20));
  EXPECT_EQ(notebook.CountCalls(kReport), 20u);
}

TEST_F(TelemetryTest, ReportAsync_AThreadThatCanNotBeStarted) {
  notebook.FailCall(kThreadStart, 1, 0);
  EXPECT_THROW(Telemetry::ReportAsync(1, "k", "v"), std::system_error);
  EXPECT_THAT(Calls(), IsEmpty());
  Telemetry::ReportAsync(2, "k", "v");
  ASSERT_TRUE(reporting.End(1));
  EXPECT_EQ(Calls().front(), "OrbEvent::OrbEvent(pointer, 2)");
}

// The caller gets the exception, not a thread of the library.
TEST_F(TelemetryTest, ReportAsync_ANullTextThrowsAheadOfTheThread) {
  EXPECT_THROW(Telemetry::ReportAsync(1, nullptr, "v"), std::logic_error);
  EXPECT_THROW(Telemetry::ReportAsync(1, "k", nullptr), std::logic_error);
  EXPECT_EQ(notebook.CountCalls(kThreadStart), 0u);
  EXPECT_THAT(Calls(), IsEmpty());
}

TEST_F(TelemetryTest, BothFromManyThreads) {
  constexpr int kThreads = 4;
  constexpr int kEvents = 25;
  std::vector<std::string> expected;
  for (int t = 0; t < kThreads; ++t) {
    for (int i = 0; i < kEvents; ++i) {
      const std::string number = std::to_string(t) + "." + std::to_string(i);
      expected.push_back("sync" + number + "=" + number);
      expected.push_back("async" + number + "=" + number);
    }
  }
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < kEvents; ++i) {
        const std::string number = std::to_string(t) + "." + std::to_string(i);
        Telemetry::ReportSync(t, ("sync" + number).c_str(), number.c_str());
        Telemetry::ReportAsync(t, ("async" + number).c_str(), number.c_str());
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  ASSERT_TRUE(reporting.End(expected.size()));
  EXPECT_THAT(Pairs(), UnorderedElementsAreArray(expected));
  EXPECT_EQ(notebook.CountCalls(kReport), expected.size());
  EXPECT_EQ(notebook.CountCalls(kDestructor), expected.size());
}

}  // namespace
