#include "virtualnotebook/tour/HelpersInTurn.h"

#include <windows.h>

#include <tlhelp32.h>

#include <memory>
#include <sstream>
#include <string_view>

namespace tour {
namespace {

using namespace virtualnotebook;
using Gains = HelpersInTurn::Gains;

constexpr std::wstring_view kHelper = L"VeloraAssistant.exe";
constexpr DWORD kHelperPatience = 60000;  // milliseconds for one helper

// Beside the library, as the helper is.
std::wstring InstalledHost() {
  wchar_t path[MAX_PATH] = L"";
  GetModuleFileNameW(GetModuleHandleW(L"VeloraCtlApi.dll"), path, MAX_PATH);
  const std::wstring library = path;
  return library.substr(0, library.rfind(L'\\') + 1) + L"host.exe";
}

bool IsHelperRunning() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (snapshot == INVALID_HANDLE_VALUE) {
    return false;
  }
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  bool isThere = false;
  for (BOOL more = Process32FirstW(snapshot, &entry); more && !isThere;
       more = Process32NextW(snapshot, &entry)) {
    isThere = entry.szExeFile == kHelper;
  }
  CloseHandle(snapshot);
  return isThere;
}

Gains GainsOf(const std::wstring& commandLine) {
  std::wistringstream words(commandLine);
  std::wstring program;
  Gains gains = {};
  words >> program >> gains[0] >> gains[1] >> gains[2];
  return gains;
}

}  // namespace

HelpersInTurn::HelpersInTurn(Notebook& notebook, bool isPlayed)
    : notebook_(notebook), isPlayed_(isPlayed) {
  notebook_.hostProgram = InstalledHost();
  notebook_.forwardProcessStart = !isPlayed;
  notebook_.onCall = [this](const Call& call) {
    if (call.function == "CoreKit::LoadUserProcessByServerPriviledge") {
      AwaitTheLast();
    }
  };
}

HelpersInTurn::~HelpersInTurn() {
  notebook_.onCall = nullptr;
  notebook_.forwardProcessStart = false;
  notebook_.hostProgram.clear();
}

const std::vector<Gains>& HelpersInTurn::Shown() {
  AwaitTheLast();
  return shown_;
}

void HelpersInTurn::AwaitTheLast() {
  std::wstring commandLine;
  notebook_.Locked([&] {
    if (notebook_.startedProcesses.size() > shown_.size()) {
      commandLine = notebook_.startedProcesses.back().commandLine;
    }
  });
  if (commandLine.empty()) {
    return;
  }
  if (isPlayed_) {
    shown_.push_back(GainsOf(commandLine));
    return;
  }
  // Its end, not its colour: the one ahead of it may have shown the same.
  const ULONGLONG end = GetTickCount64() + kHelperPatience;
  while (inTime_ && IsHelperRunning()) {
    inTime_ = GetTickCount64() < end;
    Sleep(1);
  }
  shown_.push_back(ShownNow());
}

Gains HelpersInTurn::ShownNow() const {
  const auto state = std::make_unique<softwarepanel::State>();
  panel_.Read(*state);
  return {state->temperature3D.r, state->temperature3D.g, state->temperature3D.b};
}

}  // namespace tour
