// The extended desktop through the shipped library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "closed/TestFiles.h"
#include "support/NotebookTest.h"
#include "virtualnotebook/HostedLibrary.h"

namespace virtualnotebook {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;

// The calls that log, in their order; the first logger's line as "level text".
std::vector<std::wstring> LoggedBy(const Notebook& notebook) {
  std::vector<std::wstring> lines;
  for (const Call& call : notebook.calls) {
    if (call.function == "NxLogger::Log") {
      lines.push_back(L"NxLogger " + call.arguments[1] + L" " + call.arguments[2]);
    } else if (call.function == "LcdLogMessage") {
      lines.push_back(call.arguments[0] + L" " + call.arguments[1]);
    }
  }
  return lines;
}

TEST(MonitorExtendMode, TheCallerWaitsUntilTheDisplaysHaveSettled) {
  HostedLibrary library;
  library.notebook.topology.paths.resize(2);
  library.notebook.topology.modes.resize(4);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(library.SetMonitorExtendMode());
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2900));
  EXPECT_THAT(LoggedBy(library.notebook),
              ElementsAre(L"1 (SetMonitorExtendMode)",
                          L"NxLogger 3 enter SetMonitorExtendMode!"
                          L"(MonitorExtendMode::SetMonitorExtendMode)",
                          L"NxLogger 3 SetMonitorExtendMode success!"
                          L"(MonitorExtendMode::SetMonitorExtendMode)"));
}

// Whatever call fails: false, except for the switch, whose result is not looked at.
TEST(MonitorExtendMode, EachCallFailsOnce) {
  HostedLibrary library;
  library.notebook.sleeps = false;
  library.notebook.topology.paths.resize(2);
  library.notebook.topology.modes.resize(4);
  const auto line = [](const std::wstring& text, const std::wstring& method) {
    return L"NxLogger " + text + L"(MonitorExtendMode::" + method + L")";
  };
  const std::wstring call = L"1 (SetMonitorExtendMode)";
  const std::wstring entered = line(L"3 enter SetMonitorExtendMode!", L"SetMonitorExtendMode");
  const std::wstring sizes =
      line(L"4 GetDisplayConfigBufferSizes failed!31", L"GetDisplayConfigData");
  const std::wstring query = line(L"4 QueryDisplayConfig failed!31", L"GetDisplayConfigData");
  const std::wstring noOld = line(L"3 GetDisplayConfigDataOld failed!", L"SetMonitorExtendMode");
  const std::wstring noNew = line(L"3 GetDisplayConfigDataNew failed!", L"SetMonitorExtendMode");
  const std::wstring done = line(L"3 SetMonitorExtendMode success!", L"SetMonitorExtendMode");
  const struct {
    const char* function;
    unsigned n;
    bool result;
    std::vector<std::wstring> log;
    size_t switches;
  } cases[] = {
      {"GetDisplayConfigBufferSizes", 1, false, {call, entered, sizes, noOld}, 0},
      {"QueryDisplayConfig", 1, false, {call, entered, query, noOld}, 0},
      {"SetDisplayConfig", 1, true, {call, entered, done}, 2},
      {"GetDisplayConfigBufferSizes", 2, false, {call, entered, sizes, noNew}, 1},
      {"QueryDisplayConfig", 2, false, {call, entered, query, noNew}, 1},
      {"SetDisplayConfig", 2, false, {call, entered}, 2},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.function + std::to_string(each.n));
    library.notebook.ForgetRecords();
    library.notebook.ClearFaults();
    library.notebook.FailCall(each.function, each.n, ERROR_GEN_FAILURE);
    EXPECT_EQ(library.SetMonitorExtendMode(), each.result);
    EXPECT_THAT(LoggedBy(library.notebook), ElementsAreArray(each.log));
    EXPECT_EQ(library.notebook.CountCalls("SetDisplayConfig"), each.switches);
  }
}

// The second logger's own file shows what its levels mean: 3 is information, 4 an error.
TEST(MonitorExtendMode, TheSecondLoggersFile) {
  HostedLibrary library;
  library.notebook.sleeps = false;
  const LONG error = static_cast<LONG>(GetTickCount() | 1);  // tells this run's lines from others
  library.notebook.FailCall("QueryDisplayConfig", 1, static_cast<uint64_t>(error));
  EXPECT_FALSE(library.SetMonitorExtendMode());
  const std::vector<std::string> lines = closedtests::LogLinesWith(
      std::string(closedtests::kLogDirectory) + "nxlogger.log", "(MonitorExtendMode::");
  const auto failure = std::ranges::find_if(lines, [&](const std::string& line) {
    return line.ends_with(" ERROR QueryDisplayConfig failed!" + std::to_string(error) +
                          "(MonitorExtendMode::GetDisplayConfigData)");
  });
  ASSERT_NE(failure, lines.end());
  ASSERT_EQ(failure, lines.end() - 2);
  EXPECT_THAT(failure[-1], EndsWith(" INFO enter SetMonitorExtendMode!"
                                    "(MonitorExtendMode::SetMonitorExtendMode)"));
  EXPECT_THAT(failure[1], EndsWith(" INFO GetDisplayConfigDataOld failed!"
                                   "(MonitorExtendMode::SetMonitorExtendMode)"));
}

}  // namespace
}  // namespace virtualnotebook
