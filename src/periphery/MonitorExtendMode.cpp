#include "periphery/MonitorExtendMode.h"

#include <locale>
#include <sstream>

#include "LogKit/LogKit.h"

namespace velora {
namespace {

// Flags of the Windows 11 SDK that the compiler's headers lack.
constexpr UINT32 kQdcVirtualRefreshRateAware = 0x00000040;
constexpr UINT32 kSdcVirtualRefreshRateAware = 0x00020000;

constexpr UINT32 kQueryFlags = QDC_ONLY_ACTIVE_PATHS | kQdcVirtualRefreshRateAware;
constexpr UINT32 kExtendFlags = SDC_APPLY | SDC_TOPOLOGY_EXTEND;
constexpr UINT32 kWriteBackFlags = SDC_USE_SUPPLIED_DISPLAY_CONFIG | SDC_APPLY |
                                   SDC_SAVE_TO_DATABASE | SDC_ALLOW_CHANGES |
                                   kSdcVirtualRefreshRateAware;

// Until the displays have settled, in milliseconds.
constexpr DWORD kSettlingTime = 3000;

// Of two extended displays each path has a source and a target mode; fewer can't be written back.
constexpr size_t kMinPaths = 2;
constexpr size_t kMinModes = 3;

template <typename... Parts>
void Log(LOG_MESSAGE_LEVEL level, const wchar_t* method, const Parts&... parts) {
  std::wstringstream line;
  line.imbue(std::locale::classic());
  (line << ... << parts) << L"(MonitorExtendMode::" << method << L")";
  NxLogger::GetInstance().Log(level, line);
}

}  // namespace

bool MonitorExtendMode::SetMonitorExtendMode() const {
  const auto log = [](const auto&... parts) {
    Log(LOG_MESSAGE_INFO, L"SetMonitorExtendMode", parts...);
  };
  log(L"enter SetMonitorExtendMode!");
  std::vector<DISPLAYCONFIG_PATH_INFO> dispPathInfos;
  std::vector<DISPLAYCONFIG_MODE_INFO> dispModeInfos;
  if (!GetDisplayConfigData(dispPathInfos, dispModeInfos)) {
    log(L"GetDisplayConfigDataOld failed!");
    return false;
  }

  // What it has led to is read, not what it says.
  SetDisplayConfig(0, nullptr, 0, nullptr, kExtendFlags);
  Sleep(kSettlingTime);

  std::vector<DISPLAYCONFIG_PATH_INFO> dispPathInfosNew;
  std::vector<DISPLAYCONFIG_MODE_INFO> dispModeInfosNew;
  if (!GetDisplayConfigData(dispPathInfosNew, dispModeInfosNew)) {
    log(L"GetDisplayConfigDataNew failed!");
    return false;
  }
  if (dispPathInfosNew.size() != dispPathInfos.size() ||
      dispModeInfosNew.size() != dispModeInfos.size() || dispPathInfos.size() < kMinPaths ||
      dispModeInfosNew.size() < kMinModes) {
    log(L"dispPathInfos.size()", dispPathInfos.size());
    log(L"dispPathInfosNew.size()", dispPathInfosNew.size());
    log(L"dispModeInfos.size()", dispModeInfos.size());
    log(L"dispModeInfosNew.size()", dispModeInfosNew.size());
    return false;
  }

  dispPathInfosNew.front() = dispPathInfos.front();
  if (SetDisplayConfig(static_cast<UINT32>(dispPathInfosNew.size()), dispPathInfosNew.data(),
                       static_cast<UINT32>(dispModeInfosNew.size()), dispModeInfosNew.data(),
                       kWriteBackFlags) != ERROR_SUCCESS) {
    return false;
  }
  log(L"SetMonitorExtendMode success!");
  return true;
}

bool MonitorExtendMode::GetDisplayConfigData(
    std::vector<DISPLAYCONFIG_PATH_INFO>& pathInfos,
    std::vector<DISPLAYCONFIG_MODE_INFO>& modeInfos) const {
  pathInfos.clear();
  modeInfos.clear();
  UINT32 pathCount = 0;
  UINT32 modeCount = 0;
  const LONG sized = GetDisplayConfigBufferSizes(kQueryFlags, &pathCount, &modeCount);
  if (sized != ERROR_SUCCESS) {
    Log(LOG_MESSAGE_ERROR, L"GetDisplayConfigData", L"GetDisplayConfigBufferSizes failed!", sized);
    return false;
  }
  pathInfos.resize(pathCount);
  modeInfos.resize(modeCount);
  const LONG queried = QueryDisplayConfig(kQueryFlags, &pathCount, pathInfos.data(), &modeCount,
                                          modeInfos.data(), nullptr);
  if (queried != ERROR_SUCCESS) {
    Log(LOG_MESSAGE_ERROR, L"GetDisplayConfigData", L"QueryDisplayConfig failed!", queried);
    return false;
  }
  return true;
}

}  // namespace velora
