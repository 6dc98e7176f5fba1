// Sessions: who is logged on, and whether he sits there.
#include "virtualnotebook/Answers.h"

#include <algorithm>
#include <cstring>

#include "virtualnotebook/Recorder.h"

namespace virtualnotebook::answers {
namespace {

wchar_t consoleName[] = L"Console";

}  // namespace

BOOL WTSEnumerateSessionsW(Notebook& notebook, decltype(::WTSEnumerateSessionsW)*, HANDLE server,
                           DWORD reserved, DWORD version, WTS_SESSION_INFOW** sessions,
                           DWORD* count) {
  if (server != WTS_CURRENT_SERVER_HANDLE || reserved != 0 || version != 1 || sessions == nullptr ||
      count == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const NotebookGuard guard(TheLock());
  // A byte more, so that an empty list has an address as well.
  std::vector<uint8_t> block(notebook.sessions.size() * sizeof(WTS_SESSION_INFOW) + 1);
  for (size_t i = 0; i < notebook.sessions.size(); ++i) {
    const Session& session = notebook.sessions[i];
    const WTS_SESSION_INFOW info{session.id, consoleName, session.state};
    std::memcpy(block.data() + i * sizeof info, &info, sizeof info);
  }
  *count = static_cast<DWORD>(notebook.sessions.size());
  *sessions = static_cast<WTS_SESSION_INFOW*>(Recorder::Handles(notebook).Give(
      {.giver = "WTSEnumerateSessionsW", .block = std::move(block)}));
  return TRUE;
}

BOOL WTSQuerySessionInformationW(Notebook& notebook, decltype(::WTSQuerySessionInformationW)*,
                                 HANDLE server, DWORD id, WTS_INFO_CLASS infoClass,
                                 wchar_t** buffer, DWORD* size) {
  if (server != WTS_CURRENT_SERVER_HANDLE || infoClass != WTSConnectState || buffer == nullptr ||
      size == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const NotebookGuard guard(TheLock());
  const auto session = std::ranges::find(notebook.sessions, id, &Session::id);
  if (session == notebook.sessions.end()) {
    return Fail(ERROR_FILE_NOT_FOUND);
  }
  std::vector<uint8_t> block(sizeof session->state);
  std::memcpy(block.data(), &session->state, sizeof session->state);
  *size = sizeof session->state;
  *buffer = static_cast<wchar_t*>(Recorder::Handles(notebook).Give(
      {.giver = "WTSQuerySessionInformationW", .block = std::move(block)}));
  return TRUE;
}

void WTSFreeMemory(Notebook& notebook, decltype(::WTSFreeMemory)* original, void* memory) {
  {
    const NotebookGuard guard(TheLock());
    if (Recorder::Handles(notebook).TakeBack(
            memory, {"WTSEnumerateSessionsW", "WTSQuerySessionInformationW"})) {
      return;
    }
  }
  original(memory);
}

}  // namespace virtualnotebook::answers
