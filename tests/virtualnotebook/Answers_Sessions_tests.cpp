#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <wtsapi32.h>

#include <optional>
#include <utility>
#include <vector>

#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr char kEnumerate[] = "WTSEnumerateSessionsW";
constexpr char kQuery[] = "WTSQuerySessionInformationW";

class Sessions : public testsupport::NotebookTest {
 protected:
  // Gives the list back.
  static std::vector<std::pair<DWORD, WTS_CONNECTSTATE_CLASS>> List() {
    WTS_SESSION_INFOW* sessions = nullptr;
    DWORD count = 0;
    EXPECT_TRUE(WTSEnumerateSessionsW(WTS_CURRENT_SERVER_HANDLE, 0, 1, &sessions, &count));
    EXPECT_NE(sessions, nullptr);
    std::vector<std::pair<DWORD, WTS_CONNECTSTATE_CLASS>> list;
    for (DWORD i = 0; i < count; ++i) {
      list.emplace_back(sessions[i].SessionId, sessions[i].State);
    }
    WTSFreeMemory(sessions);
    return list;
  }

  static std::optional<int> State(DWORD id) {
    wchar_t* buffer = nullptr;
    DWORD size = 0;
    if (!WTSQuerySessionInformationW(WTS_CURRENT_SERVER_HANDLE, id, WTSConnectState, &buffer,
                                     &size)) {
      return std::nullopt;
    }
    EXPECT_EQ(size, sizeof(WTS_CONNECTSTATE_CLASS));
    const int state = *reinterpret_cast<const int*>(buffer);
    WTSFreeMemory(buffer);
    return state;
  }
};

TEST_F(Sessions, OneIsActiveUnlessTold) {
  EXPECT_THAT(List(), ElementsAre(Pair(1, WTSActive)));
  EXPECT_EQ(State(1), WTSActive);
}

TEST_F(Sessions, ListAndStatesAreTheNotebooks) {
  notebook.sessions = {{0, WTSDisconnected}, {5, WTSConnected}, {3, WTSActive}};
  EXPECT_THAT(List(),
              ElementsAre(Pair(0, WTSDisconnected), Pair(5, WTSConnected), Pair(3, WTSActive)));
  EXPECT_EQ(State(0), WTSDisconnected);
  EXPECT_EQ(State(5), WTSConnected);
  EXPECT_EQ(State(3), WTSActive);
  EXPECT_EQ(State(1), std::nullopt);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(Sessions, AnEmptyListIsAListAndHasToComeBack) {
  notebook.sessions = {};
  EXPECT_THAT(List(), IsEmpty());
  EXPECT_EQ(notebook.CountOpen(kEnumerate), 0U);
}

TEST_F(Sessions, MemoryIsCountedUntilItComesBack) {
  WTS_SESSION_INFOW* sessions = nullptr;
  DWORD count = 0;
  ASSERT_TRUE(WTSEnumerateSessionsW(WTS_CURRENT_SERVER_HANDLE, 0, 1, &sessions, &count));
  WTS_SESSION_INFOW* again = nullptr;
  ASSERT_TRUE(WTSEnumerateSessionsW(WTS_CURRENT_SERVER_HANDLE, 0, 1, &again, &count));
  wchar_t* state = nullptr;
  DWORD size = 0;
  ASSERT_TRUE(
      WTSQuerySessionInformationW(WTS_CURRENT_SERVER_HANDLE, 1, WTSConnectState, &state, &size));
  EXPECT_EQ(notebook.CountOpen(kEnumerate), 2U);
  EXPECT_EQ(notebook.CountOpen(kQuery), 1U);
  WTSFreeMemory(state);
  EXPECT_EQ(notebook.CountOpen(kEnumerate), 2U);
  EXPECT_EQ(notebook.CountOpen(kQuery), 0U);
  WTSFreeMemory(sessions);
  EXPECT_EQ(notebook.CountOpen(kEnumerate), 1U);
}

TEST_F(Sessions, OtherQuestionsAreRefused) {
  WTS_SESSION_INFOW* sessions = nullptr;
  wchar_t* text = nullptr;
  DWORD count = 0;
  EXPECT_FALSE(WTSEnumerateSessionsW(WTS_CURRENT_SERVER_HANDLE, 0, 2, &sessions, &count));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_FALSE(WTSEnumerateSessionsW(WTS_CURRENT_SERVER_HANDLE, 0, 1, nullptr, &count));
  EXPECT_FALSE(
      WTSQuerySessionInformationW(WTS_CURRENT_SERVER_HANDLE, 1, WTSUserName, &text, &count));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(notebook.CountOpen(kEnumerate) + notebook.CountOpen(kQuery), 0U);
}

TEST_F(Sessions, AFailedCallGivesNothing) {
  notebook.FailCall(kQuery, 1, FALSE, ERROR_ACCESS_DENIED);
  EXPECT_EQ(State(1), std::nullopt);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(notebook.CountOpen(kQuery), 0U);
  EXPECT_EQ(State(1), WTSActive);
}

TEST_F(Sessions, CallsAreRecordedWithTheirArguments) {
  State(7);
  ASSERT_EQ(notebook.calls.size(), 1U);
  EXPECT_EQ(notebook.calls[0].function, kQuery);
  EXPECT_THAT(notebook.calls[0].arguments,
              ElementsAre(L"null", L"7", L"8", L"pointer", L"pointer"));
}

}  // namespace
}  // namespace virtualnotebook
