#include "virtualnotebook/Notebook.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr wchar_t kNoSuchKey[] = L"Software\\Velora\\NoSuchKey";
constexpr wchar_t kSoftwareKey[] = L"Software";

// Opens and closes a key of the current user; the status of the opening.
LSTATUS OpenKey(const wchar_t* path) {
  HKEY key = nullptr;
  const LSTATUS status = RegOpenKeyW(HKEY_CURRENT_USER, path, &key);
  if (status == ERROR_SUCCESS) {
    RegCloseKey(key);
  }
  return status;
}

class Notebook_OnTheProgram : public testsupport::NotebookTest {};

TEST_F(Notebook_OnTheProgram, RecordsCallsInOrderWithTheirArguments) {
  OpenKey(kSoftwareKey);
  RegCloseKey(nullptr);
  ASSERT_EQ(notebook.calls.size(), 3U);
  EXPECT_EQ(notebook.calls[0].function, "RegOpenKeyW");
  EXPECT_THAT(notebook.calls[0].arguments,
              ElementsAre(L"HKEY_CURRENT_USER", kSoftwareKey, L"pointer"));
  EXPECT_EQ(notebook.calls[1].function, "RegCloseKey");
  EXPECT_THAT(notebook.calls[1].arguments, ElementsAre(L"pointer"));
  EXPECT_THAT(notebook.calls[2].arguments, ElementsAre(L"null"));
}

TEST_F(Notebook_OnTheProgram, ShowsNumbersInDecimalAndNarrowTextsWidened) {
  const HANDLE file = CreateFileA("C:\\no such \xE9.bin", GENERIC_READ, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  EXPECT_EQ(file, INVALID_HANDLE_VALUE);
  ASSERT_EQ(notebook.calls.size(), 1U);
  EXPECT_THAT(notebook.calls[0].arguments, ElementsAre(L"C:\\no such \u00E9.bin", L"2147483648",
                                                       L"1", L"null", L"3", L"128", L"null"));
}

TEST_F(Notebook_OnTheProgram, ForwardsWhatItDoesNotAnswer) {
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_SUCCESS);
  EXPECT_EQ(OpenKey(kNoSuchKey), ERROR_FILE_NOT_FOUND);
}

TEST_F(Notebook_OnTheProgram, LeavesTheLastErrorToTheRealFunction) {
  SetLastError(0xdeadbeef);
  EXPECT_EQ(CreateFileA("C:\\no such file", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
  SetLastError(0xdeadbeef);
  EXPECT_EQ(CoreKit::GetDisplayType(), 0U);
  EXPECT_EQ(GetLastError(), 0xdeadbeef);
}

TEST_F(Notebook_OnTheProgram, FailCall_FailsTheNthCallFromNowOnAlone) {
  OpenKey(kSoftwareKey);
  notebook.FailCall("RegOpenKeyW", 2, ERROR_ACCESS_DENIED);
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_SUCCESS);
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_ACCESS_DENIED);
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_SUCCESS);
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyW"), 4U);
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 3U);
}

TEST_F(Notebook_OnTheProgram, FailCall_0FailsEveryCallUntilFaultsAreCleared) {
  notebook.FailCall("RegOpenKeyW", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_ACCESS_DENIED);
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_ACCESS_DENIED);
  notebook.ClearFaults();
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_SUCCESS);
}

TEST_F(Notebook_OnTheProgram, FailCall_TwoFaultsOfOneFunctionCountAlike) {
  notebook.FailCall("RegOpenKeyW", 1, ERROR_ACCESS_DENIED);
  notebook.FailCall("RegOpenKeyW", 3, ERROR_BADKEY);
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_ACCESS_DENIED);
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_SUCCESS);
  EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_BADKEY);
}

TEST_F(Notebook_OnTheProgram, FailCall_DoesNothingAndSetsTheLastError) {
  testsupport::ScratchDirectory scratch;
  const std::string path = scratch.Path("never made");
  notebook.FailCall("CreateFileA", 1, reinterpret_cast<uint64_t>(INVALID_HANDLE_VALUE),
                    ERROR_WRITE_PROTECT);
  EXPECT_EQ(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_WRITE_PROTECT});
  EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(Notebook_OnTheProgram, FailCall_OfAnAnsweredFunctionChangesNoState) {
  notebook.FailCall("LcdLogMessage", 1, 0);
  LcdLogMessage(3, L"lost");
  LcdLogMessage(3, L"kept");
  EXPECT_LOG({3, L"kept"});
}

TEST_F(Notebook_OnTheProgram, ThrowFrom_ThrowsAtTheNthCall) {
  notebook.ThrowFrom("CoreKit::GetDisplayType", 2, "no display");
  EXPECT_EQ(CoreKit::GetDisplayType(), 0U);
  try {
    CoreKit::GetDisplayType();
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "no display");
  }
  EXPECT_EQ(CoreKit::GetDisplayType(), 0U);
}

TEST_F(Notebook_OnTheProgram, RefusesNamesThatItDoesNotKnow) {
  EXPECT_THROW(notebook.FailCall("RegOpenKey", 1, 5), std::invalid_argument);
  EXPECT_THROW(notebook.ThrowFrom("RegOpenKey", 1, ""), std::invalid_argument);
  EXPECT_THROW(notebook.CountCalls("RegOpenKey"), std::invalid_argument);
}

TEST_F(Notebook_OnTheProgram, ForgetRecords_EmptiesLogAndCalls) {
  LcdLogMessage(1, L"line");
  ASSERT_EQ(notebook.log.size(), 1U);
  ASSERT_EQ(notebook.calls.size(), 1U);
  notebook.ForgetRecords();
  EXPECT_THAT(notebook.log, IsEmpty());
  EXPECT_THAT(notebook.calls, IsEmpty());
}

TEST_F(Notebook_OnTheProgram, RecordsFromSeveralThreads) {
  constexpr int kLines = 2000;
  const auto write = [] {
    for (int i = 0; i < kLines; ++i) {
      LcdLogMessage(1, L"line");
    }
  };
  std::thread other(write);
  write();
  other.join();
  EXPECT_EQ(notebook.log.size(), size_t{2 * kLines});
  EXPECT_EQ(notebook.CountCalls("LcdLogMessage"), size_t{2 * kLines});
}

TEST_F(Notebook_OnTheProgram, OnCall_RunsAheadOfTheCallOnItsThread) {
  std::vector<std::wstring> seen;
  DWORD thread = 0;
  notebook.onCall = [&](const Call& call) {
    seen.insert(seen.end(), call.arguments.begin(), call.arguments.end());
    thread = GetCurrentThreadId();
    EXPECT_TRUE(notebook.log.empty()) << "the call is still to come";
  };
  LcdLogMessage(3, L"line");
  EXPECT_THAT(seen, ElementsAre(L"3", L"line"));
  EXPECT_EQ(thread, GetCurrentThreadId());
  EXPECT_LOG({3, L"line"});
}

TEST_F(Notebook_OnTheProgram, OnCall_MayCallAndIsNotReentered) {
  unsigned runs = 0;
  notebook.onCall = [&](const Call&) {
    ++runs;
    EXPECT_EQ(OpenKey(kSoftwareKey), ERROR_SUCCESS);
    EXPECT_EQ(notebook.CountCalls("RegCloseKey"), size_t{runs});
  };
  LcdLogMessage(1, L"one");
  LcdLogMessage(1, L"two");
  EXPECT_EQ(runs, 2U);
  EXPECT_EQ(
      testsupport::CallsOf(notebook, {"LcdLogMessage", "RegOpenKeyW"}),
      (std::vector<std::string>{"RegOpenKeyW", "LcdLogMessage", "RegOpenKeyW", "LcdLogMessage"}));
}

TEST_F(Notebook_OnTheProgram, OnCall_RunsAgainAfterItThrew) {
  unsigned runs = 0;
  notebook.onCall = [&](const Call&) {
    if (++runs == 1) {
      throw std::runtime_error("thrown ahead of the call");
    }
  };
  EXPECT_THROW(LcdLogMessage(1, L"lost"), std::runtime_error);
  LcdLogMessage(1, L"kept");
  EXPECT_EQ(runs, 2U);
  EXPECT_LOG({1, L"kept"});
}

TEST_F(Notebook_OnTheProgram, OnCall_RunsOnOtherThreadsMeanwhile) {
  std::atomic<unsigned> runs = 0;
  notebook.onCall = [&](const Call& call) {
    ++runs;
    if (call.arguments[1] == L"first") {  // the other thread's call must not wait for this one
      std::thread([] { LcdLogMessage(1, L"second"); }).join();
    }
  };
  LcdLogMessage(1, L"first");
  EXPECT_GE(runs, 2U);
  EXPECT_LOG({1, L"second"}, {1, L"first"});
}

TEST_F(Notebook_OnTheProgram, CountOpen_RefusesWhatGivesNothing) {
  EXPECT_THROW(notebook.CountOpen("RegOpenKeyW"), std::invalid_argument);
  EXPECT_THROW(notebook.CountOpen("WTSFreeMemory"), std::invalid_argument);
  EXPECT_EQ(notebook.CountOpen("WTSEnumerateSessionsW"), 0U);
}

// Meant to be run while another thread writes: each copy is whole.
TEST_F(Notebook_OnTheProgram, LogAndCallsAreReadWhileThreadsRun) {
  constexpr int kLines = 2000;
  std::thread other([] {
    for (int i = 0; i < kLines; ++i) {
      LcdLogMessage(1, L"line");
    }
  });
  size_t lines = 0;
  EXPECT_TRUE(testsupport::WaitUntil([&] {
    const auto log = notebook.LogNow();
    EXPECT_GE(log.size(), lines);
    lines = log.size();
    EXPECT_GE(notebook.CallsNow().size(), lines) << "a call is recorded ahead of its line";
    return lines == kLines;
  }));
  other.join();
}

TEST_F(Notebook_OnTheProgram, Locked_ChangesWhatOtherThreadsRead) {
  std::thread other([&] {
    while (CoreKit::GetDisplayType() == 0) {
      notebook.Locked([&] { notebook.startedProcesses.push_back({L"x", L""}); });
    }
  });
  size_t started = 0;
  EXPECT_TRUE(testsupport::WaitUntil([&] {
    notebook.Locked([&] { started = notebook.startedProcesses.size(); });
    return started > 0;
  }));
  notebook.Locked([&] { notebook.displayType = 1; });
  other.join();
}

TEST_F(Notebook_OnTheProgram, ThereIsOneAtATime) {
  EXPECT_THROW(Notebook second(GetModuleHandleW(nullptr)), std::logic_error);
  OpenKey(kSoftwareKey);
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyW"), 1U);
}

}  // namespace
}  // namespace virtualnotebook
