// The extended desktop through the shipped library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/NotebookTest.h"
#include "virtualnotebook/HostedLibrary.h"

namespace virtualnotebook {
namespace {

using testing::ElementsAre;

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
  for (const char* function :
       {"GetDisplayConfigBufferSizes", "QueryDisplayConfig", "SetDisplayConfig"}) {
    for (const unsigned n : {1u, 2u}) {
      library.notebook.ClearFaults();
      library.notebook.FailCall(function, n, ERROR_GEN_FAILURE);
      const bool isTheSwitch = std::string(function) == "SetDisplayConfig" && n == 1;
      EXPECT_EQ(library.SetMonitorExtendMode(), isTheSwitch) << function << n;
    }
  }
}

}  // namespace
}  // namespace virtualnotebook
