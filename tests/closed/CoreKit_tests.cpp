#include "CoreKit/CoreKit.h"

#include <windows.h>

#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>
#include <shlobj.h>

#include <array>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Acl.h"
#include "Child.h"
#include "TestFiles.h"
#include "virtualnotebook/ImportRedirection.h"

using closedtests::FreshDirectory;
using closedtests::LogLinesWith;
using closedtests::Marker;
using closedtests::ReadBytes;
using closedtests::Widen;
using closedtests::WriteBytes;

namespace {

const std::string kLog = std::string(closedtests::kLogDirectory) + "velora.log";

DWORD OwnSession() {
  DWORD session = 0;
  EXPECT_TRUE(ProcessIdToSessionId(GetCurrentProcessId(), &session));
  return session;
}

std::wstring OwnSid() {
  HANDLE token = nullptr;
  EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
  const closed::OwnedHandle owner(token);
  alignas(TOKEN_USER) std::array<uint8_t, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user;
  DWORD size = user.size();
  EXPECT_TRUE(GetTokenInformation(token, TokenUser, user.data(), size, &size));
  wchar_t* text = nullptr;
  EXPECT_TRUE(
      ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, &text));
  const closed::OwnedLocal<wchar_t> textOwner(text);
  return text;
}

// Starts the command processor under a program name of the test's own; what it then writes.
std::string StartAndRead() {
  const std::string directory = FreshDirectory();
  CreateDirectoryA(directory.c_str(), nullptr);
  const std::string file = directory + "arguments";
  const std::wstring commandLine = L"nouse /c echo 0.930000 255>" + Widen(file) + L".new&&ren " +
                                   Widen(file) + L".new arguments";
  EXPECT_EQ(
      CoreKit::LoadUserProcessByServerPriviledge(L"C:\\windows\\system32\\cmd.exe", commandLine),
      0);
  for (DWORD waited = 0; ReadBytes(file).empty() && waited < closedtests::kPatience; waited += 20) {
    Sleep(20);
  }
  return ReadBytes(file);
}

}  // namespace

TEST(CoreKit, LcdLogMessage_NamesTheLevel) {
  const std::string marker = Marker("levels");
  for (const int level : {0, 1, 2, 3, 4, -1}) {
    LcdLogMessage(level, Widen(marker).c_str());
  }
  const std::vector<std::string> lines = LogLinesWith(kLog, marker);
  const std::string names[] = {" DEBUG ", " INFO ", " WARN ", " ERROR ", " 4 ", " -1 "};
  ASSERT_EQ(lines.size(), std::size(names));
  for (size_t i = 0; i < lines.size(); ++i) {
    EXPECT_TRUE(lines[i].ends_with(names[i] + marker)) << lines[i];
    const std::regex shape("[0-9-]{10}T[0-9:.]{12}Z (\\d+ \\d+) \\S+ \\S+");
    std::smatch match;
    ASSERT_TRUE(std::regex_match(lines[i], match, shape)) << lines[i];
    EXPECT_EQ(match[1], closedtests::ProcessAndThread());
  }
}

TEST(CoreKit, LcdLogMessage_NullCountsAsEmpty) {
  const std::string thread = closedtests::ProcessAndThread() + " 77 ";
  LcdLogMessage(77, nullptr);
  const std::vector<std::string> lines = LogLinesWith(kLog, thread);
  ASSERT_FALSE(lines.empty());
  EXPECT_TRUE(lines.back().ends_with(thread));
}

TEST(CoreKit, LcdLogMessage_ThreadsAndProcessesLoseNothing) {
  constexpr int kLines = 300;
  const std::string marker = Marker("race");
  const closedtests::Child child(L"lcd " + Widen(marker) + L".child " + std::to_wstring(kLines));
  std::vector<std::thread> threads;
  for (const char* name : {".one", ".two"}) {
    threads.emplace_back([tag = Widen(marker + name)] {
      for (int i = 0; i < kLines; ++i) {
        LcdLogMessage(1, (tag + L" " + std::to_wstring(i)).c_str());
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  ASSERT_EQ(child.Wait(), 0u);
  std::set<std::string> expected;
  for (const char* name : {".one ", ".two ", ".child "}) {
    for (int i = 0; i < kLines; ++i) {
      expected.insert("INFO " + marker + name + std::to_string(i));
    }
  }
  std::multiset<std::string> found;
  for (const std::string& line : LogLinesWith(kLog, marker)) {
    found.insert(line.substr(line.find("INFO ")));
  }
  EXPECT_TRUE(std::equal(found.begin(), found.end(), expected.begin(), expected.end()))
      << found.size() << " lines";
}

TEST(CoreKit, IsAdminPrivilege_IsTheShellsAnswer) {
  EXPECT_EQ(CoreKit::IsAdminPrivilege(), IsUserAnAdmin() ? 1 : 0);
}

// A token in which the administrators' group can only deny, as an administrator has it before
// elevation.
TEST(CoreKit, IsAdminPrivilege_NotBeforeElevation) {
  HANDLE own = nullptr;
  ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(),
                               TOKEN_DUPLICATE | TOKEN_QUERY | TOKEN_IMPERSONATE, &own));
  const closed::OwnedHandle owner(own);
  std::array<uint8_t, SECURITY_MAX_SID_SIZE> administrators;
  DWORD size = administrators.size();
  ASSERT_TRUE(
      CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators.data(), &size));
  SID_AND_ATTRIBUTES denied{administrators.data(), 0};
  HANDLE restricted = nullptr;
  ASSERT_TRUE(CreateRestrictedToken(own, 0, 1, &denied, 0, nullptr, 0, nullptr, &restricted));
  const closed::OwnedHandle restrictedOwner(restricted);
  ASSERT_TRUE(ImpersonateLoggedOnUser(restricted));
  const int answer = CoreKit::IsAdminPrivilege();
  RevertToSelf();
  EXPECT_EQ(answer, 0);
}

TEST(CoreKit, GetLogonSessionId_IsTheSessionOfAProgramAtTheConsole) {
  EXPECT_EQ(CoreKit::GetLogonSessionId(), OwnSession());
}

TEST(CoreKit, GetUserSIDBySessionId_OwnSession) {
  std::wstring sid = L"before";
  EXPECT_EQ(CoreKit::GetUserSIDBySessionId(OwnSession(), sid), 0);
  EXPECT_EQ(sid, OwnSid());
  EXPECT_TRUE(sid.starts_with(L"S-1-5-")) << "the form of a SID";
}

TEST(CoreKit, GetUserSIDBySessionId_NoSessionLeavesTheSid) {
  std::wstring sid = L"before";
  EXPECT_NE(CoreKit::GetUserSIDBySessionId(0xFFFFFFFF, sid), 0);
  EXPECT_EQ(sid, L"before");
}

TEST(CoreKit, BytesToHexString_TwoLowerCaseDigitsInOrder) {
  const uint8_t bytes[] = {0x00, 0x0F, 0xA5, 0xFF, 0x10};
  EXPECT_EQ(CoreKit::BytesToHexString(bytes, 5), "000fa5ff10");
  EXPECT_EQ(CoreKit::BytesToHexString(bytes, 1), "00");
  EXPECT_EQ(CoreKit::BytesToHexString(bytes, 0), "");
  EXPECT_EQ(CoreKit::BytesToHexString(nullptr, 5), "");
}

TEST(CoreKit, StringConversions) {
  EXPECT_EQ(CoreKit::StringToWString("P3.icm"), L"P3.icm");
  EXPECT_EQ(CoreKit::WStringToString(L"P3.icm"), "P3.icm");
  EXPECT_EQ(CoreKit::StringToWString(""), L"");
  EXPECT_EQ(CoreKit::WStringToString(L""), "");
  std::string all;  // every byte of a single-byte code page survives the way there and back
  for (int value = 1; value < 256; ++value) {
    all += static_cast<char>(value);
  }
  if (GetACP() == 1252) {
    EXPECT_EQ(CoreKit::WStringToString(CoreKit::StringToWString(all)), all);
  }
}

TEST(CoreKit, GetCanonicalizedFilePath_Resolves) {
  const struct {
    const char* path;
    const char* canonical;
  } rows[] = {
      {"C:\\ProgramData\\P3.bin", "C:\\ProgramData\\P3.bin"},
      {"C:\\a\\.\\b\\..\\c.bin", "C:\\a\\c.bin"},
      {"C:\\..\\..\\x", "C:\\x"},
      {"C:/a//b/c", "C:\\a\\b\\c"},
      {"C:\\a\\", "C:\\a\\"},
      {"C:\\a\\x.bin.. ", "C:\\a\\x.bin"},
      {"\\\\server\\share\\a\\..\\b", "\\\\server\\share\\b"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(CoreKit::GetCanonicalizedFilePath(row.path), row.canonical) << row.path;
  }
}

TEST(CoreKit, GetCanonicalizedFilePath_RelativeToTheCurrentDirectory) {
  wchar_t before[MAX_PATH];
  GetCurrentDirectoryW(MAX_PATH, before);
  ASSERT_TRUE(SetCurrentDirectoryW(L"C:\\windows"));
  const std::string canonical = CoreKit::GetCanonicalizedFilePath("system32\\..\\x.bin");
  SetCurrentDirectoryW(before);
  EXPECT_EQ(canonical, "C:\\windows\\x.bin");
}

TEST(CoreKit, GetCanonicalizedFilePath_Refuses) {
  for (const char* path : {"", "C:\\a<b", "C:\\a>b", "C:\\a\"b", "C:\\a|b", "C:\\a?b", "C:\\a*b",
                           "C:\\a\nb", "C:\\a\x01", "C:\\a\x1f.bin", "C:\\a.bin:stream", ":\\a",
                           "\\\\?\\C:\\a", "\\\\.\\PhysicalDrive0", "NUL"}) {
    EXPECT_EQ(CoreKit::GetCanonicalizedFilePath(path), "") << path;
  }
  EXPECT_EQ(CoreKit::GetCanonicalizedFilePath(std::string("C:\\a\0b", 6)), "") << "a zero";
}

TEST(CoreKit, GetCanonicalizedFilePath_UpTo259Characters) {
  const auto pathOf = [](size_t length) { return std::string("C:\\").append(length - 3, 'a'); };
  EXPECT_EQ(CoreKit::GetCanonicalizedFilePath(pathOf(258)), pathOf(258));
  EXPECT_EQ(CoreKit::GetCanonicalizedFilePath(pathOf(259)), pathOf(259));
  EXPECT_EQ(CoreKit::GetCanonicalizedFilePath(pathOf(260)), "");
  EXPECT_EQ(CoreKit::GetCanonicalizedFilePath(pathOf(100000)), "");
}

TEST(CoreKit, EnableFileUsersPriviledge_FileAndDirectory) {
  const std::string directory = FreshDirectory();
  ASSERT_TRUE(CreateDirectoryA(directory.c_str(), nullptr));
  const std::string file = directory + "P3.bin";
  WriteBytes(file, "before");
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(file), 0);
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(file), 0) << "again";
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(directory), 0);
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(directory.substr(0, directory.size() - 1)), 0);
  EXPECT_EQ(ReadBytes(file), "before");
  WriteBytes(file, "after");
  EXPECT_EQ(ReadBytes(file), "after");
}

TEST(CoreKit, EnableFileUsersPriviledge_NothingThere) {
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(""), 1);
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(FreshDirectory() + "absent.bin"), 1);
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge("C:\\a|b"), 1);
}

TEST(CoreKit, GetDisplayType_IsToldWhereADisplayIsOnTheDesktop) {
  DISPLAY_DEVICEW adapter{};
  adapter.cb = sizeof adapter;
  const bool anyDisplay = EnumDisplayDevicesW(nullptr, 0, &adapter, 0) &&
                          (adapter.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP);
  EXPECT_EQ(CoreKit::GetDisplayType() != 0xFFFFFFFF, anyDisplay);
}

TEST(CoreKit, LoadUserProcessByServerPriviledge_HandsOverTheCommandLine) {
  EXPECT_EQ(StartAndRead(), "0.930000 255\r\n");
}

TEST(CoreKit, LoadUserProcessByServerPriviledge_NothingToStart) {
  EXPECT_NE(CoreKit::LoadUserProcessByServerPriviledge(L"C:\\absent\\x.exe", L"nouse"), 0);
  EXPECT_NE(CoreKit::LoadUserProcessByServerPriviledge(L"", L""), 0);
  EXPECT_NE(CoreKit::LoadUserProcessByServerPriviledge(L"C:\\windows", L"nouse"), 0);
}

// --- What the system refuses, or answers on other machines --------------------------------------

namespace {

// Stands in for functions that CoreKit.dll imports.
class Standing {
 public:
  explicit Standing(const std::vector<virtualnotebook::ImportedFunction>& functions)
      : redirection_(GetModuleHandleW(L"CoreKit.dll"), functions) {
    calls = 0;
  }

  static int calls;

 private:
  virtualnotebook::ImportRedirection redirection_;
};
int Standing::calls = 0;

template <typename Function>
virtualnotebook::ImportedFunction Instead(const char* library, const char* symbol,
                                          Function standIn) {
  static void* original = nullptr;
  return {library, symbol, symbol, reinterpret_cast<void*>(+standIn), &original};
}

// As for every caller but the system.
const auto kNoUserToken = Instead("wtsapi32.dll", "WTSQueryUserToken", [](ULONG, HANDLE*) -> BOOL {
  ++Standing::calls;
  SetLastError(ERROR_PRIVILEGE_NOT_HELD);
  return FALSE;
});

// Somebody else is at the console.
const auto kOtherConsole = Instead("kernel32.dll", "WTSGetActiveConsoleSessionId",
                                   []() -> DWORD { return OwnSession() + 1; });

const auto kNoDisplayConfiguration =
    Instead("user32.dll", "QueryDisplayConfig",
            [](UINT32, UINT32*, DISPLAYCONFIG_PATH_INFO*, UINT32*, DISPLAYCONFIG_MODE_INFO*,
               DISPLAYCONFIG_TOPOLOGY_ID*) -> LONG {
              ++Standing::calls;
              return ERROR_NOT_SUPPORTED;
            });

const auto kNoDisplay =
    Instead("user32.dll", "EnumDisplayDevicesW",
            [](LPCWSTR, DWORD, DISPLAY_DEVICEW*, DWORD) -> BOOL { return FALSE; });

}  // namespace

TEST(CoreKit, GetUserSIDBySessionId_WithoutTheSystemsRightOnlyTheOwnSession) {
  const Standing standing({kNoUserToken});
  std::wstring sid = L"before";
  EXPECT_NE(CoreKit::GetUserSIDBySessionId(OwnSession() + 1, sid), 0);
  EXPECT_EQ(sid, L"before");
  EXPECT_EQ(CoreKit::GetUserSIDBySessionId(OwnSession(), sid), 0);
  EXPECT_EQ(sid, OwnSid());
  EXPECT_EQ(Standing::calls, 2);
}

TEST(CoreKit, LoadUserProcessByServerPriviledge_WithoutTheSystemsRightInTheOwnSession) {
  const Standing standing({kNoUserToken});
  EXPECT_EQ(StartAndRead(), "0.930000 255\r\n");
  EXPECT_EQ(Standing::calls, 1);
}

TEST(CoreKit, LoadUserProcessByServerPriviledge_WithoutTheSystemsRightNotInAnother) {
  const Standing standing({kNoUserToken, kOtherConsole});
  EXPECT_EQ(CoreKit::GetLogonSessionId(), OwnSession() + 1);
  EXPECT_NE(CoreKit::LoadUserProcessByServerPriviledge(L"C:\\windows\\system32\\cmd.exe",
                                                       L"nouse /c exit"),
            0);
}

TEST(CoreKit, GetDisplayType_WithoutADisplayConfiguration) {
  {
    const Standing standing({kNoDisplayConfiguration});
    EXPECT_EQ(CoreKit::GetDisplayType(), 0x80000000u) << "the display on the desktop";
    EXPECT_EQ(Standing::calls, 1);
  }
  const Standing standing({kNoDisplayConfiguration, kNoDisplay});
  EXPECT_EQ(CoreKit::GetDisplayType(), 0xFFFFFFFFu);
}

TEST(CoreKit, GetDisplayType_AsksAgainWhenTheDisplaysChangeInBetween) {
  const Standing standing(
      {Instead("user32.dll", "QueryDisplayConfig",
               [](UINT32, UINT32* pathCount, DISPLAYCONFIG_PATH_INFO* paths, UINT32*,
                  DISPLAYCONFIG_MODE_INFO*, DISPLAYCONFIG_TOPOLOGY_ID*) -> LONG {
                 if (++Standing::calls == 1) {
                   return ERROR_INSUFFICIENT_BUFFER;
                 }
                 *pathCount = 1;
                 paths[0].targetInfo.outputTechnology = DISPLAYCONFIG_OUTPUT_TECHNOLOGY_LVDS;
                 return ERROR_SUCCESS;
               })});
  EXPECT_EQ(CoreKit::GetDisplayType(), 6u);
  EXPECT_EQ(Standing::calls, 2);
}

// Wine keeps no list entry for the group of users: what reaches the system is looked at instead.
TEST(CoreKit, EnableFileUsersPriviledge_GivesTheUsersFullAccess) {
  static std::wstring given;
  const Standing standing({Instead("advapi32.dll", "SetNamedSecurityInfoW",
                                   [](LPWSTR, SE_OBJECT_TYPE type, SECURITY_INFORMATION information,
                                      PSID, PSID, PACL dacl, PACL) -> DWORD {
                                     EXPECT_EQ(type, SE_FILE_OBJECT);
                                     EXPECT_EQ(information, static_cast<SECURITY_INFORMATION>(
                                                                DACL_SECURITY_INFORMATION));
                                     given = closedtests::DescribeAcl(dacl);
                                     return ERROR_SUCCESS;
                                   })});
  const std::string directory = FreshDirectory();
  ASSERT_TRUE(CreateDirectoryA(directory.c_str(), nullptr));
  WriteBytes(directory + "P3.bin", "x");
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(directory + "P3.bin"), 0);
  EXPECT_NE(given.find(L"(A;;FA;;;BU)"), std::wstring::npos) << given;
  EXPECT_NE(given.find(L"(A;;FA;;;SY)"), std::wstring::npos) << "beside the others: " << given;
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(directory), 0);
  EXPECT_NE(given.find(L"(A;OICI;FA;;;BU)"), std::wstring::npos) << given;
}

TEST(CoreKit, EnableFileUsersPriviledge_TheSystemRefuses) {
  const Standing standing({Instead("advapi32.dll", "SetNamedSecurityInfoW",
                                   [](LPWSTR, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID, PSID,
                                      PACL, PACL) -> DWORD { return ERROR_ACCESS_DENIED; })});
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge("C:\\windows"), 1);
}

TEST(CoreKit, EnableFileUsersPriviledge_WithoutAListEverybodyHasAccess) {
  const Standing standing(
      {Instead("advapi32.dll", "GetNamedSecurityInfoW",
               [](LPCWSTR, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID*, PSID*, PACL* dacl, PACL*,
                  PSECURITY_DESCRIPTOR* descriptor) -> DWORD {
                 *dacl = nullptr;
                 *descriptor = nullptr;
                 return ERROR_SUCCESS;
               }),
       Instead("advapi32.dll", "SetNamedSecurityInfoW",
               [](LPWSTR, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID, PSID, PACL, PACL) -> DWORD {
                 ++Standing::calls;
                 return ERROR_SUCCESS;
               })});
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge("C:\\windows"), 0);
  EXPECT_EQ(Standing::calls, 0);
}
