#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tlhelp32.h>
#include <winsvc.h>

#include <array>
#include <string>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kManager[] = "OpenSCManagerW";
constexpr char kService[] = "OpenServiceW";
constexpr char kSnapshot[] = "CreateToolhelp32Snapshot";

class Services : public testsupport::NotebookTest {
 protected:
  // 0 for a service that can't be asked.
  static DWORD State(const wchar_t* name) {
    SERVICE_STATUS status{};
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    const SC_HANDLE service = OpenServiceW(manager, name, SERVICE_QUERY_STATUS);
    if (service != nullptr) {
      EXPECT_TRUE(QueryServiceStatus(service, &status));
      EXPECT_TRUE(CloseServiceHandle(service));
    }
    EXPECT_TRUE(CloseServiceHandle(manager));
    return status.dwCurrentState;
  }
};

TEST_F(Services, WinmgmtRunsUnlessTold) {
  EXPECT_EQ(State(L"Winmgmt"), DWORD{SERVICE_RUNNING});
  notebook.services[L"Winmgmt"] = SERVICE_STOP_PENDING;
  EXPECT_EQ(State(L"Winmgmt"), DWORD{SERVICE_STOP_PENDING});
  notebook.services.clear();
  EXPECT_EQ(State(L"Winmgmt"), 0U);
  EXPECT_EQ(notebook.CountOpen(kManager) + notebook.CountOpen(kService), 0U);
}

TEST_F(Services, OnesThatAreNotThere) {
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
  EXPECT_EQ(OpenServiceW(manager, L"NoSuchService", SERVICE_QUERY_STATUS), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SERVICE_DOES_NOT_EXIST});
  EXPECT_EQ(OpenServiceW(nullptr, L"Winmgmt", SERVICE_QUERY_STATUS), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
  SERVICE_STATUS status{};
  EXPECT_FALSE(QueryServiceStatus(manager, &status)) << "the manager is no service";
  const SC_HANDLE service = OpenServiceW(manager, L"Winmgmt", SERVICE_QUERY_STATUS);
  notebook.services.clear();
  EXPECT_FALSE(QueryServiceStatus(service, &status));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SERVICE_DOES_NOT_EXIST});
}

TEST_F(Services, HandlesAreCountedUntilTheyComeBackOnce) {
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
  const SC_HANDLE service = OpenServiceW(manager, L"Winmgmt", SERVICE_QUERY_STATUS);
  EXPECT_EQ(notebook.CountOpen(kManager), 1U);
  EXPECT_EQ(notebook.CountOpen(kService), 1U);
  EXPECT_TRUE(CloseServiceHandle(service));
  EXPECT_FALSE(CloseServiceHandle(service));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
  EXPECT_EQ(notebook.CountOpen(kManager), 1U);
  EXPECT_EQ(notebook.CountOpen(kService), 0U);
  EXPECT_TRUE(CloseServiceHandle(manager));
  EXPECT_EQ(notebook.CountOpen(kManager), 0U);
}

TEST_F(Services, CallsAreRecordedWithTheirArguments) {
  State(L"Winmgmt");
  EXPECT_THAT(testsupport::CallsOf(
                  notebook, {kManager, kService, "QueryServiceStatus", "CloseServiceHandle"}),
              ElementsAre(kManager, kService, "QueryServiceStatus", "CloseServiceHandle",
                          "CloseServiceHandle"));
  EXPECT_THAT(notebook.calls[0].arguments, ElementsAre(L"null", L"null", L"983103"));
  EXPECT_THAT(notebook.calls[1].arguments, ElementsAre(L"pointer", L"Winmgmt", L"4"));
}

class Processes : public testsupport::NotebookTest {
 protected:
  Processes() { entry_.dwSize = sizeof entry_; }

  // What is left from the entry on that First or Next gave.
  std::vector<std::wstring> Rest(BOOL found) {
    std::vector<std::wstring> names;
    for (; found; found = Process32NextW(snapshot_, &entry_)) {
      names.emplace_back(entry_.szExeFile);
    }
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
    return names;
  }

  std::vector<std::wstring> All() { return Rest(Process32FirstW(snapshot_, &entry_)); }

  void Open() { snapshot_ = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0); }

  HANDLE snapshot_ = nullptr;
  PROCESSENTRY32W entry_{};
};

TEST_F(Processes, ASnapshotHoldsThoseThatRanWhenItWasTaken) {
  notebook.processes = {L"one.exe", L"Two.exe", L"one.exe"};
  Open();
  notebook.processes = {};
  EXPECT_THAT(All(), ElementsAre(L"one.exe", L"Two.exe", L"one.exe"));
  EXPECT_THAT(All(), ElementsAre(L"one.exe", L"Two.exe", L"one.exe")) << "First starts again";
  Open();
  EXPECT_THAT(All(), IsEmpty());
}

TEST_F(Processes, AnEntryMustTellItsSize) {
  notebook.processes = {L"one.exe"};
  Open();
  entry_.dwSize = 0;
  EXPECT_FALSE(Process32FirstW(snapshot_, &entry_));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_LENGTH});
}

TEST_F(Processes, SnapshotsAreCountedUntilTheyComeBack) {
  Open();
  EXPECT_EQ(notebook.CountOpen(kSnapshot), 1U);
  EXPECT_TRUE(CloseHandle(snapshot_));
  EXPECT_EQ(notebook.CountOpen(kSnapshot), 0U);
  EXPECT_FALSE(Process32FirstW(snapshot_, &entry_));
  EXPECT_FALSE(CloseHandle(snapshot_)) << "now the system is asked";
}

TEST_F(Processes, OtherHandlesAndSnapshotsAreTheSystems) {
  const HANDLE event = CreateEventW(nullptr, TRUE, TRUE, nullptr);
  EXPECT_EQ(WaitForSingleObject(event, 0), DWORD{WAIT_OBJECT_0});
  EXPECT_TRUE(CloseHandle(event));
  EXPECT_NE(WaitForSingleObject(event, 0), DWORD{WAIT_OBJECT_0});
  const HANDLE threads = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  EXPECT_NE(threads, INVALID_HANDLE_VALUE);
  EXPECT_EQ(notebook.CountOpen(kSnapshot), 0U);
  EXPECT_TRUE(CloseHandle(threads));
}

TEST_F(Processes, TheHostsProgramHasTheToldPath) {
  std::array<wchar_t, MAX_PATH> path{};
  const auto ask = [&](HMODULE module, DWORD size) {
    path.fill(L'?');
    SetLastError(ERROR_SUCCESS);
    return GetModuleFileNameW(module, path.data(), size);
  };
  const DWORD own = ask(nullptr, MAX_PATH);
  EXPECT_TRUE(std::wstring(path.data(), own).ends_with(L"\\virtualnotebook_tests.exe"));
  notebook.hostProgram = L"C:\\host.exe";
  EXPECT_EQ(ask(nullptr, 12), 11U);
  EXPECT_STREQ(path.data(), L"C:\\host.exe");
  EXPECT_EQ(ask(nullptr, 11), 11U);
  EXPECT_STREQ(path.data(), L"C:\\host.ex");
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  const DWORD ofAnother = ask(GetModuleHandleW(L"CoreKit.dll"), MAX_PATH);
  EXPECT_TRUE(std::wstring(path.data(), ofAnother).ends_with(L"CoreKit.dll"));
}

TEST_F(Processes, StartsAreNotedAndNotMadeUnlessTold) {
  EXPECT_EQ(CoreKit::LoadUserProcessByServerPriviledge(L"C:\\no such.exe", L"nouse 1"), 0);
  EXPECT_EQ(CoreKit::LoadUserProcessByServerPriviledge(L"C:\\other.exe", L""), 0);
  EXPECT_THAT(notebook.startedProcesses, ElementsAre(StartedProcess{L"C:\\no such.exe", L"nouse 1"},
                                                     StartedProcess{L"C:\\other.exe", L""}));
  notebook.forwardProcessStart = true;
  EXPECT_NE(CoreKit::LoadUserProcessByServerPriviledge(L"C:\\no such.exe", L""), 0);
  EXPECT_EQ(notebook.startedProcesses.size(), 2U);
}

TEST_F(Processes, AFailedStartIsNone) {
  notebook.FailCall("CoreKit::LoadUserProcessByServerPriviledge", 1, 5);
  EXPECT_EQ(CoreKit::LoadUserProcessByServerPriviledge(L"C:\\helper.exe", L"x"), 5);
  EXPECT_THAT(notebook.startedProcesses, IsEmpty());
  EXPECT_THAT(notebook.calls.back().arguments, ElementsAre(L"C:\\helper.exe", L"x"));
}

}  // namespace
}  // namespace virtualnotebook
