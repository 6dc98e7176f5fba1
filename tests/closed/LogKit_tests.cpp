#include "LogKit/LogKit.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "TestFiles.h"

using closedtests::LogLinesWith;
using closedtests::Marker;
using closedtests::Widen;

namespace {

const std::string kSenderLog = std::string(closedtests::kLogDirectory) + "nxlogger.log";

}  // namespace

TEST(NxLogger, GetInstance_OneOfThem) {
  NxLogger* other = nullptr;
  std::thread([&] { other = &NxLogger::GetInstance(); }).join();
  EXPECT_EQ(&NxLogger::GetInstance(), other);
}

TEST(NxLogger, Log_WritesALineAndKeepsTheStream) {
  const std::string marker = Marker("nx");
  std::wstringstream text;
  text << Widen(marker) << L" " << 1.25 << L"(MonitorExtendMode::SetMonitorExtendMode)";
  const std::wstring before = text.str();
  NxLogger::GetInstance().Log(LOG_MESSAGE_INFO, text);
  NxLogger::GetInstance().Log(LOG_MESSAGE_ERROR, text);
  NxLogger::GetInstance().Log(static_cast<LOG_MESSAGE_LEVEL>(9), text);
  EXPECT_EQ(text.str(), before);

  const std::vector<std::string> lines = LogLinesWith(kSenderLog, marker);
  const std::string message = marker + " 1.25(MonitorExtendMode::SetMonitorExtendMode)";
  const std::string thread = closedtests::ProcessAndThread();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_TRUE(lines[0].ends_with(thread + " INFO " + message)) << lines[0];
  EXPECT_TRUE(lines[1].ends_with(thread + " ERROR " + message)) << lines[1];
  EXPECT_TRUE(lines[2].ends_with(thread + " 9 " + message)) << lines[2];
}

TEST(NxLogger, Log_ThreadsLoseNothing) {
  constexpr int kLines = 200;
  const std::string marker = Marker("nxrace");
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < kLines; ++n) {
        std::wstringstream text(Widen(marker));
        NxLogger::GetInstance().Log(LOG_MESSAGE_INFO, text);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::vector<std::string> lines = LogLinesWith(kSenderLog, marker);
  EXPECT_EQ(lines.size(), 3u * kLines);
  for (const std::string& line : lines) {
    ASSERT_TRUE(line.ends_with(" INFO " + marker)) << line;
  }
}
