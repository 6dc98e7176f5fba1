#include "naturalcolor/NaturalColorAdjustAlgorithm.h"

#include <windows.h>

#include <wtsapi32.h>

#include <array>
#include <string>

#include "CoreKit/CoreKit.h"
#include "frame/Log.h"
#include "naturalcolor/RunningSystem.h"
#include "settings/NumberText.h"

namespace velora {
namespace {

constexpr wchar_t kHelperName[] = L"\\VeloraAssistant.exe";

// In characters, the terminator included.
constexpr DWORD kMaxPath = 1024;
constexpr size_t kMaxCommandLine = 1024;

bool IsSessionActive(DWORD session) {
  wchar_t* buffer = nullptr;
  DWORD size = 0;
  if (!WTSQuerySessionInformationW(WTS_CURRENT_SERVER_HANDLE, session, WTSConnectState, &buffer,
                                   &size)) {
    return false;
  }
  const auto state = *reinterpret_cast<const WTS_CONNECTSTATE_CLASS*>(buffer);
  WTSFreeMemory(buffer);
  return state == WTSActive;
}

// Without its last backslash; empty where it can't be told.
std::wstring HostDirectory() {
  std::array<wchar_t, kMaxPath + 1> path = {};
  GetModuleFileNameW(nullptr, path.data(), kMaxPath);
  const std::wstring file(path.data());
  const size_t end = file.rfind(L'\\');
  return end == std::wstring::npos ? std::wstring() : file.substr(0, end);
}

// The first word stands in the place of the program's name. Empty when it is too long.
std::wstring CommandLine(const Color3DInfo& info) {
  std::wstring line = L"nouse " + FormatDouble(info.r) + L' ' + FormatDouble(info.g) + L' ' +
                      FormatDouble(info.b) + L' ' + std::to_wstring(info.colorBlue) + L' ' +
                      FormatDouble(info.protectValue);
  return line.size() < kMaxCommandLine ? line : std::wstring();
}

}  // namespace

// The list of sessions is left to the process, at each frame.
bool NaturalColorAdjustAlgorithm::IsFoundActiveSession() const {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::IsFoundActiveSession");
  WTS_SESSION_INFOW* sessions = nullptr;
  DWORD count = 0;
  if (!WTSEnumerateSessionsW(WTS_CURRENT_SERVER_HANDLE, 0, 1, &sessions, &count)) {
    log.Error(L"enumerateSessions error");
    return false;
  }
  for (DWORD i = 0; i < count; ++i) {
    if (IsSessionActive(sessions[i].SessionId)) {
      return true;
    }
  }
  log.Error(L"can not FoundActiveSession");
  return false;
}

bool NaturalColorAdjustAlgorithm::SetColorTemperByPlatform(const Color3DInfo* info) const {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::SetColorTemperByPlatform");
  const Color3DInfo copy = *info;
  const int result = Set3DColorTemperature(&copy);
  if (result != 0) {
    log.Error(L"Set3DColorTemperature error: ", result);
  }
  return result == 0;
}

bool NaturalColorAdjustAlgorithm::SetColorTemperByVeloraAssistant(const Color3DInfo* info) {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::SetColorTemperByVeloraAssistant");
  const std::wstring directory = HostDirectory();
  if (directory.empty()) {
    return false;
  }
  const std::wstring commandLine = CommandLine(*info);
  if (commandLine.empty()) {
    log.Error(L"swprintf_s error");
    return false;
  }
  if (!IsWinmgmtThere()) {
    return false;
  }
  const int count = CountProcess(processName_);
  log.Info(L"VeloraAssistant.exe process count =", count);
  if (count > maxProcessCount_) {
    log.Warn(L"VeloraAssistant.exe process count >", maxProcessCount_,
             L" no start veloraassistand.exe");
    return false;
  }
  if (CoreKit::LoadUserProcessByServerPriviledge(directory + kHelperName, commandLine) != 0) {
    log.Error(L"LoadUserProcessByServerPriviledge error");
    return false;
  }
  return true;
}

}  // namespace velora
