// Services and processes.
#include "virtualnotebook/Answers.h"

#include <algorithm>

#include "virtualnotebook/Recorder.h"

namespace virtualnotebook::answers {
namespace {

// Writes the process that is due.
BOOL NextProcess(GivenHandle& snapshot, PROCESSENTRY32W* entry) {
  if (entry == nullptr || entry->dwSize != sizeof *entry) {
    return Fail(ERROR_BAD_LENGTH);
  }
  if (snapshot.next == snapshot.images.size()) {
    return Fail(ERROR_NO_MORE_FILES);
  }
  *entry = {};
  entry->dwSize = sizeof *entry;
  entry->th32ProcessID = static_cast<DWORD>(4 * (snapshot.next + 1));
  snapshot.images[snapshot.next].copy(entry->szExeFile, MAX_PATH - 1);
  ++snapshot.next;
  return TRUE;
}

// One step through a snapshot of the notebook's; others go on to the real function.
template <typename Function>
BOOL Step(Notebook& notebook, Function* original, HANDLE handle, PROCESSENTRY32W* entry,
          bool fromTheStart) {
  {
    const NotebookGuard guard(TheLock());
    GivenHandle* const snapshot =
        Recorder::Handles(notebook).Find(handle, "CreateToolhelp32Snapshot");
    if (snapshot != nullptr) {
      snapshot->next = fromTheStart ? 0 : snapshot->next;
      return NextProcess(*snapshot, entry);
    }
  }
  return original(handle, entry);
}

}  // namespace

SC_HANDLE OpenSCManagerW(Notebook& notebook, decltype(::OpenSCManagerW)*, const wchar_t*,
                         const wchar_t*, DWORD) {
  const NotebookGuard guard(TheLock());
  return static_cast<SC_HANDLE>(Recorder::Handles(notebook).Give({.giver = "OpenSCManagerW"}));
}

SC_HANDLE OpenServiceW(Notebook& notebook, decltype(::OpenServiceW)*, SC_HANDLE manager,
                       const wchar_t* name, DWORD) {
  const NotebookGuard guard(TheLock());
  GivenHandles& handles = Recorder::Handles(notebook);
  if (handles.Find(manager, "OpenSCManagerW") == nullptr) {
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  if (name == nullptr || !notebook.services.contains(name)) {
    SetLastError(ERROR_SERVICE_DOES_NOT_EXIST);
    return nullptr;
  }
  return static_cast<SC_HANDLE>(handles.Give({.giver = "OpenServiceW", .service = name}));
}

BOOL QueryServiceStatus(Notebook& notebook, decltype(::QueryServiceStatus)*, SC_HANDLE service,
                        SERVICE_STATUS* status) {
  const NotebookGuard guard(TheLock());
  const GivenHandle* const handle = Recorder::Handles(notebook).Find(service, "OpenServiceW");
  if (handle == nullptr) {
    return Fail(ERROR_INVALID_HANDLE);
  }
  const auto found = notebook.services.find(handle->service);
  if (found == notebook.services.end()) {  // taken away meanwhile
    return Fail(ERROR_SERVICE_DOES_NOT_EXIST);
  }
  *status = {};
  status->dwServiceType = SERVICE_WIN32_SHARE_PROCESS;
  status->dwCurrentState = found->second;
  return TRUE;
}

BOOL CloseServiceHandle(Notebook& notebook, decltype(::CloseServiceHandle)*, SC_HANDLE handle) {
  const NotebookGuard guard(TheLock());
  return Recorder::Handles(notebook).TakeBack(handle, {"OpenSCManagerW", "OpenServiceW"})
             ? TRUE
             : Fail(ERROR_INVALID_HANDLE);
}

HANDLE CreateToolhelp32Snapshot(Notebook& notebook, decltype(::CreateToolhelp32Snapshot)* original,
                                DWORD flags, DWORD process) {
  if (flags != TH32CS_SNAPPROCESS) {
    return original(flags, process);
  }
  const NotebookGuard guard(TheLock());
  return Recorder::Handles(notebook).Give(
      {.giver = "CreateToolhelp32Snapshot", .images = notebook.processes});
}

BOOL Process32FirstW(Notebook& notebook, decltype(::Process32FirstW)* original, HANDLE snapshot,
                     PROCESSENTRY32W* entry) {
  return Step(notebook, original, snapshot, entry, true);
}

BOOL Process32NextW(Notebook& notebook, decltype(::Process32NextW)* original, HANDLE snapshot,
                    PROCESSENTRY32W* entry) {
  return Step(notebook, original, snapshot, entry, false);
}

BOOL CloseHandle(Notebook& notebook, decltype(::CloseHandle)* original, HANDLE handle) {
  {
    const NotebookGuard guard(TheLock());
    if (Recorder::Handles(notebook).TakeBack(handle, {"CreateToolhelp32Snapshot"})) {
      return TRUE;
    }
  }
  return original(handle);
}

DWORD GetModuleFileNameW(Notebook& notebook, decltype(::GetModuleFileNameW)* original,
                         HMODULE module, wchar_t* path, DWORD size) {
  std::wstring program;
  if (module == nullptr && size > 0) {
    const NotebookGuard guard(TheLock());
    program = notebook.hostProgram;
  }
  if (program.empty()) {
    return original(module, path, size);
  }
  const auto length = static_cast<DWORD>(program.copy(path, size - 1));
  path[length] = L'\0';
  if (length == program.size()) {
    return length;
  }
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return size;
}

// Wine fails to start one process in a thousand, while others come and go.
ResultT LoadUserProcessByServerPriviledge(
    Notebook& notebook, decltype(CoreKit::LoadUserProcessByServerPriviledge)* original,
    const std::wstring& path, const std::wstring& commandLine) {
  constexpr int kTries = 5;
  constexpr DWORD kPause = 50;  // milliseconds
  ResultT result = 0;
  for (int i = 0; notebook.forwardProcessStart && i < kTries; ++i) {
    result = original(path, commandLine);
    if (result == 0) {
      break;
    }
    ::Sleep(kPause);
  }
  if (result == 0) {
    const NotebookGuard guard(TheLock());
    notebook.startedProcesses.push_back({path, commandLine});
  }
  return result;
}

}  // namespace virtualnotebook::answers
