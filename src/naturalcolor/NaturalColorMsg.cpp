#include "naturalcolor/NaturalColorMsg.h"

#include "frame/Log.h"

namespace velora {
namespace {

// The e-book mode has natural colour off, whatever the setting says.
constexpr uint32_t kEbookMode = 7;

}  // namespace

void NaturalColorMsg::InitNaturalColorMsg(uint32_t monitorType) {
  constexpr FunctionLog log("NaturalColorMsg::InitNaturalColorMsg");
  monitorType_ = static_cast<int32_t>(monitorType);
  log.Info(L"InitNaturalColorMsg monitorType=", monitorType);
  InitConfigSyncObject(FEATURE_TYPE_NATURAL_COLOR);
  ReadEffectiveStatus();
  isConfigLoopRun_ = true;
  configThread_ = std::thread(&NaturalColorMsg::GetConfigLoop, this);
  InitSensorData();
  if (natureColorStatus_ != 0) {
    ContorlWmiSensorEvent();
    ContorlNatureColor();
  }
}

void NaturalColorMsg::ReadEffectiveStatus() {
  colorFieldMode_ =
      static_cast<uint32_t>(GetColorFieldCurrentMode(static_cast<int>(colorFieldMode_)));
  natureColorStatus_ =
      colorFieldMode_ == kEbookMode
          ? 0
          : static_cast<uint32_t>(GetNatureColorStatus(static_cast<int>(natureColorStatus_)));
}

// Each ring of the settings application runs the whole of it, whether or not the status changed.
int NaturalColorMsg::GetConfigLoop() {
  constexpr FunctionLog log("NaturalColorMsg::GetConfigLoop");
  while (isConfigLoopRun_) {
    const ResultT result = WaitConfigChangeSync(FEATURE_TYPE_NATURAL_COLOR, 0);
    if (result != ResultOk) {
      log.Error(L"WaitConfigChangeSync Faild:", result);
      return 1;
    }
    if (!isConfigLoopRun_) {
      log.Info(L"GetConfigLoop Exit");
      return 0;
    }
    ReadEffectiveStatus();
    ContorlNatureColor();
    ContorlWmiSensorEvent();
    adjustAlgorithm_->SyncNatureColorStatus(natureColorStatus_);
    log.Info(L"GetNcConfig:", natureColorStatus_.load());
  }
  log.Info(L"GetConfigLoop Exit2");
  return 0;
}

void NaturalColorMsg::StopNaturalColorMsg() {
  constexpr FunctionLog log("NaturalColorMsg::StopNaturalColorMsg");
  isConfigLoopRun_ = false;
  if (NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR) == ResultOk && configThread_.joinable()) {
    configThread_.join();
  }
  natureColorStatus_ =
      static_cast<uint32_t>(GetNatureColorStatus(static_cast<int>(natureColorStatus_)));
  if (natureColorStatus_ == 0) {
    CoUninitialize();
    return;
  }
  try {
    log.Info(L"StopNaturalColorMsg WMI&&SENSOR");
    StopNaturalColorNotifications();
    StopSensorData();
    if (monitorType_ == kSensorAndBios && biosEventMonitor_.StopEventMonitor() != 0) {
      log.Error(L"StopWmiEventMonitor fail.");
    }
  } catch (...) {
    log.Error(L"StopNaturalColorMsg Exception.");
  }
  log.Info(L"StopNaturalColorMsg Success");
}

}  // namespace velora
