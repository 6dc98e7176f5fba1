// What tests/support offers to tests on the notebook.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "orbevent/orbevent.h"
#include "support/NotebookTest.h"
#include "support/ReportingThreads.h"

namespace testsupport {
namespace {

constexpr wchar_t kKey[] = L"Software\\VeloraSupportTest";
constexpr wchar_t kSubKey[] = L"Software\\VeloraSupportTest\\Sub";

bool KeyExists() {
  return RegGetValueW(HKEY_CURRENT_USER, kSubKey, L"value", RRF_RT_ANY, nullptr, nullptr,
                      nullptr) == ERROR_SUCCESS;
}

void MakeKey() {
  const DWORD value = 1;
  ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kSubKey, L"value", REG_DWORD, &value, sizeof value),
            ERROR_SUCCESS);
}

class Support : public NotebookTest {};

TEST_F(Support, ScopedKey_IsNotThereAtTheStartAndNotAtTheEnd) {
  MakeKey();
  {
    ScopedKey key(HKEY_CURRENT_USER, kKey);
    EXPECT_FALSE(KeyExists());
    MakeKey();
    EXPECT_TRUE(KeyExists());
  }
  EXPECT_FALSE(KeyExists());
}

TEST_F(Support, ScratchDirectory_HoldsFilesForItsLife) {
  std::string path;
  {
    ScratchDirectory scratch;
    path = scratch.Write("sub\\file.bin", {1, 0, 13, 10, 26, 255});
    EXPECT_THAT(scratch.Read("sub\\file.bin"), ::testing::ElementsAre(1, 0, 13, 10, 26, 255));
    EXPECT_EQ(std::filesystem::file_size(path), 6U);
    EXPECT_THROW(scratch.Read("other"), std::runtime_error);
  }
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(std::filesystem::is_empty(ScratchDirectory().Path())) << "a second one starts anew";
}

TEST_F(Support, LeavesNoTraceInTheRecords) {
  ScopedKey key(HKEY_CURRENT_USER, kKey);
  ScratchDirectory scratch;
  scratch.Write("file.bin", {1});
  scratch.Read("file.bin");
  WaitUntil([] { return false; }, 20);
  EXPECT_THAT(notebook.calls, ::testing::IsEmpty());
}

TEST_F(Support, WaitUntil_LooksUntilThePredicateHoldsOrTheTimeIsOver) {
  int looks = 0;
  EXPECT_TRUE(WaitUntil([&] { return ++looks == 3; }));
  EXPECT_EQ(looks, 3);
  const uint64_t start = GetTickCount64();
  EXPECT_FALSE(WaitUntil([] { return false; }, 50));
  EXPECT_GE(GetTickCount64() - start, 50U);
}

TEST_F(Support, LoggedWithin_WaitsForTheLine) {
  std::thread other([] {
    SleepEx(30, FALSE);
    LcdLogMessage(1, L"late");
  });
  EXPECT_TRUE(LoggedWithin(notebook, 1, L"late"));
  other.join();
  EXPECT_FALSE(LoggedWithin(notebook, 2, L"late", 1));
}

TEST_F(Support, CallsOf_KeepsTheOrderOfTheFunctionsAskedFor) {
  HKEY key = nullptr;
  RegOpenKeyW(HKEY_CURRENT_USER, L"Software", &key);
  SetEvent(nullptr);
  RegCloseKey(key);
  EXPECT_THAT(CallsOf(notebook, {"RegCloseKey", "RegOpenKeyW"}),
              ::testing::ElementsAre("RegOpenKeyW", "RegCloseKey"));
}

TEST_F(Support, ReportingThreads_AreHeldAndWaitedFor) {
  ReportingThreads reporting(notebook);
  std::atomic ended = 0;
  std::vector<std::thread> threads;
  {
    const auto held = reporting.Hold();
    for (int i = 0; i < 3; ++i) {
      threads.emplace_back([&] {
        { const OrbEvent event(1); }
        ++ended;
      });
    }
    EXPECT_EQ(notebook.CountCalls("OrbEvent::OrbEvent"), 0u);
    EXPECT_EQ(ended, 0);
  }
  EXPECT_TRUE(reporting.End(3));
  EXPECT_EQ(ended, 3);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace testsupport
