#include <windows.h>

#include <sddl.h>
#include <userenv.h>
#include <wtsapi32.h>

#include <array>
#include <string>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "common/Owned.h"

namespace CoreKit {
namespace {

constexpr ResultT kOk = 0;
constexpr ResultT kFailed = 1;

constexpr DWORD kNoSession = 0xFFFFFFFF;

// Null unless the caller is the system and somebody is logged on in the session.
closed::OwnedHandle UserTokenOf(DWORD session) {
  HANDLE token = nullptr;
  if (session == kNoSession || !WTSQueryUserToken(session, &token)) {
    return nullptr;
  }
  return closed::OwnedHandle(token);
}

bool IsOwnSession(DWORD session) {
  DWORD own = kNoSession;
  return ProcessIdToSessionId(GetCurrentProcessId(), &own) && own == session;
}

closed::OwnedHandle OwnToken() {
  HANDLE token = nullptr;
  OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
  return closed::OwnedHandle(token);
}

// Empty on failure.
std::wstring SidOf(HANDLE token) {
  DWORD size = 0;
  GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  std::vector<uint8_t> bytes(size);
  if (!GetTokenInformation(token, TokenUser, bytes.data(), size, &size)) {
    return {};
  }
  wchar_t* text = nullptr;
  if (!ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(bytes.data())->User.Sid, &text)) {
    return {};
  }
  const closed::OwnedLocal<wchar_t> owner(text);
  return text;
}

struct EnvironmentDestroyer {
  void operator()(void* block) const { DestroyEnvironmentBlock(block); }
};
using OwnedEnvironment = std::unique_ptr<void, EnvironmentDestroyer>;

// The user's own variables; null, which stands for the caller's, when they can't be had.
OwnedEnvironment EnvironmentOf(HANDLE token) {
  void* block = nullptr;
  CreateEnvironmentBlock(&block, token, FALSE);
  return OwnedEnvironment(block);
}

}  // namespace

int IsAdminPrivilege() {
  std::array<uint8_t, SECURITY_MAX_SID_SIZE> administrators;
  DWORD size = administrators.size();
  BOOL member = FALSE;
  // A null token asks about the caller; the group of a token that isn't elevated does not count.
  return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators.data(), &size) &&
         CheckTokenMembership(nullptr, administrators.data(), &member) && member;
}

unsigned int GetLogonSessionId() { return WTSGetActiveConsoleSessionId(); }

ResultT GetUserSIDBySessionId(unsigned int sessionId, std::wstring& sid) {
  closed::OwnedHandle token = UserTokenOf(sessionId);
  if (!token && IsOwnSession(sessionId)) {
    token = OwnToken();
  }
  const std::wstring text = token ? SidOf(token.get()) : std::wstring();
  if (text.empty()) {
    return kFailed;
  }
  sid = text;
  return kOk;
}

ResultT LoadUserProcessByServerPriviledge(const std::wstring& exePath,
                                          const std::wstring& commandLine) {
  const DWORD session = WTSGetActiveConsoleSessionId();
  const closed::OwnedHandle token = UserTokenOf(session);
  if (!token && !IsOwnSession(session)) {
    return kFailed;
  }
  wchar_t desktop[] = L"winsta0\\default";  // where the user sees and hears the program
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.lpDesktop = desktop;
  PROCESS_INFORMATION process{};
  std::wstring arguments = commandLine;  // the system writes into it
  BOOL started;
  if (token) {
    const OwnedEnvironment environment = EnvironmentOf(token.get());
    started = CreateProcessAsUserW(token.get(), exePath.c_str(), arguments.data(), nullptr, nullptr,
                                   FALSE, CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT,
                                   environment.get(), nullptr, &startup, &process);
  } else {
    started = CreateProcessW(exePath.c_str(), arguments.data(), nullptr, nullptr, FALSE,
                             CREATE_NO_WINDOW, nullptr, nullptr, &startup, &process);
  }
  if (!started) {
    return kFailed;
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return kOk;
}

}  // namespace CoreKit
