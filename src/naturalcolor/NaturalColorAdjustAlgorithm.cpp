#include "naturalcolor/NaturalColorAdjustAlgorithm.h"

#include <chrono>

#include "VeloraPlatform/VeloraPlatform.h"
#include "frame/Log.h"
#include "settings/NaturalColorReg.h"
#include "settings/PrinterReg.h"
#include "settings/Singleton.h"

namespace velora {

void NaturalColorAdjustAlgorithm::InitNaturalColorAdjustAlgorithm(const NatureColorDataIn* dataIn) {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::InitNaturalColorAdjustAlgorithm");
  // Readings may come by now: a stop with natural colour off leaves the firmware's monitor running.
  const std::lock_guard lock(cctMutex_);
  log.Info(L"InitNaturalColorAdjustAlgorithm In");
  frameCount_ = dataIn->frameCount;
  msPerFrame_ = dataIn->frameTime;
  dimmingThresh_ = dataIn->dimmingThreshold;
  isNewMethod_ = dataIn->methodVersion != 0;
  ctLowLuma_ = dataIn->minLuma;
  luminanceThresh_ = dataIn->luminanceThreshold;
  executionType_ = dataIn->executionType;
  log.Info(L"InitNaturalColorAdjustAlgorithm frameCount_=", frameCount_, L",msPerFrame_=",
           msPerFrame_, L",dimmingThresh_=", dimmingThresh_, L",isNewMethod_=", isNewMethod_,
           L",ctLowLuma_=", ctLowLuma_, L",luminanceThresh_=", luminanceThresh_,
           L",executionType_=", executionType_);
  cctMappingCurve_.clear();
  for (int32_t i = 0; i < dataIn->algoInfoCnt; ++i) {
    const CctAlgoInfo& point = cctMappingCurve_.emplace_back(dataIn->algoInfo[i]);
    log.Info(L"cctMappingCurve_ index=", i, L",cct=", point.cct, L",r=", point.r, L",g=", point.g,
             L",b=", point.b);
  }

  naturalColorStatus_ =
      static_cast<uint32_t>(GetNatureColorStatus(static_cast<int>(naturalColorStatus_)));
  IsFlushTemper();
  PrinterReg::GetInstance().SetPrinterCcts(kDefaultCct);
  double sensorColor = kDefaultCct;
  Singleton<NaturalColorReg>::GetInstance().GetSensorColor(&sensorColor, kDefaultCct);
  previousCct_ = static_cast<float>(sensorColor);
  // The neutral point has been delivered by now: the platform takes it ahead of this as well.
  if (executionType_ == kByPlatform) {
    PlatformInit();
  }
  isRunning_ = true;
  isCctThreadAtEnd_ = false;
  cctThread_ = std::thread(&NaturalColorAdjustAlgorithm::CctDimming, this);
}

// Clears what an earlier run may have left on the panel: with natural colour off the display goes
// to the neutral point.
void NaturalColorAdjustAlgorithm::IsFlushTemper() {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::IsFlushTemper");
  if (const auto neutralCct = FindNeutralCct(cctMappingCurve_)) {
    dimmingCct_ = *neutralCct;
    log.Info(L"dimmingCct_ parsing succeeded. dimmingCct_ value:", dimmingCct_);
  }
  if (dimmingCct_ == 0.0F || naturalColorStatus_ != 0) {
    return;
  }
  if (SetColorTemper(dimmingCct_, 0)) {
    log.Info(L"NaturalColorReset Success");
  }
}

void NaturalColorAdjustAlgorithm::StopNaturalColorAdjustAlgorithm() {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::StopNaturalColorAdjustAlgorithm");
  try {
    StopCctThread();
    StopWaitThread();
    if (executionType_ == kByPlatform) {
      PlatformFini();
    }
  } catch (...) {
    log.Error(L"StopNaturalColorAdjustAlgorithm Exception.");
  }
  log.Info(L"StopNaturalColorAdjustAlgorithm Success");
}

void NaturalColorAdjustAlgorithm::StopCctThread() {
  isRunning_ = false;
  if (!cctThread_.joinable()) {
    return;
  }
  // Without the mutex, a signal that falls between the thread's test of the flag and its wait is
  // lost: it is given until the thread has seen the flag.
  while (!isCctThreadAtEnd_) {
    cctCond_.notify_all();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  cctThread_.join();
}

int NaturalColorAdjustAlgorithm::StartCctDimming(float targetCct, float sensorLight) {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::StartCctDimming");
  {
    const std::lock_guard lock(cctMutex_);
    if (cctMappingCurve_.empty()) {
      return 1;
    }
    targetCct = TargetOf(targetCct, sensorLight);
    const bool isEnableCctDimming = IsEnableCctDimming(targetCct);
    log.Info(L"StartCct:isEnableCctDimming = ", isEnableCctDimming, L",previousAmbientCct_ = ",
             previousAmbientCct_, L",targetCct = ", targetCct, L",dimmingThresh_ = ",
             dimmingThresh_, L",sensorLight = ", sensorLight, L",naturalColorStatus_ = ",
             naturalColorStatus_.load());
    if (isEnableCctDimming) {
      previousAmbientCct_ = targetCct;
      StartDimming(ClampToCurve(cctMappingCurve_, targetCct));
      if (naturalColorStatus_ != 0) {
        PrinterReg::GetInstance().SetPrinterCcts(targetCct_);
      }
      sensorLight_ = sensorLight;
    } else if (isSetColorFail_) {  // any reading is enough to try again
      StartDimming(ClampToCurve(cctMappingCurve_, targetCct));
      sensorLight_ = sensorLight;
    }
    if (naturalColorStatus_ == 0) {
      isDimming_ = false;
      return 0;
    }
  }
  cctCond_.notify_one();
  return 0;
}

void NaturalColorAdjustAlgorithm::SyncNatureColorStatus(uint32_t status) {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::SyncNatureColorStatus");
  const std::lock_guard lock(cctMutex_);
  naturalColorStatus_ = status;
  if (dimmingCct_ != 0.0F) {
    StartDimming(status == 1 ? kDefaultCct : dimmingCct_);
    isSwitchDimming_ = true;
    cctCond_.notify_one();
  } else {
    isDimming_ = false;
    SetColorTemper(kDefaultCct, status);
  }
  log.Info(L"SyncNatureColorStatus:", status, L",dimmingCct_ value:", dimmingCct_);
}

}  // namespace velora
