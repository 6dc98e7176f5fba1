#include "naturalcolor/NaturalColorAdjustAlgorithm.h"

#include <chrono>

#include "frame/Log.h"
#include "settings/NaturalColorReg.h"
#include "settings/Singleton.h"

namespace velora {

int NaturalColorAdjustAlgorithm::CctDimming() {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::CctDimming");
  while (isRunning_) {
    {
      std::unique_lock lock(cctMutex_);
      while (!isDimming_) {
        frameIndex_ = 0;
        if (!isRunning_) {
          isCctThreadAtEnd_ = true;
          return 0;
        }
        cctCond_.wait(lock);
      }
      DeliverFrame();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(msPerFrame_));
  }
  log.Info(L"CctDimming quit2");
  isCctThreadAtEnd_ = true;
  return 0;
}

void NaturalColorAdjustAlgorithm::DeliverFrame() {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::CctDimming");
  const float tempTargetCct = targetCct_;
  const float previous = previousCct_;
  NextFrame(tempTargetCct, previous);
  // The gains come from the curve while natural colour is being switched off, too.
  if (IsFoundActiveSession() && SetColorTemper(cctVal_, 1)) {
    isSetColorFail_ = false;
  } else {
    StopDimming();
    isSetColorFail_ = true;
    SetPreviousCct(previous);  // the display stayed where it was
  }
  CheckLastFrame();
  log.Info(L"frameIndex_ = ", frameIndex_, L", frameCount_ = ", frameCount_, L", previousCct_ = ",
           previousCct_, L", tempTargetCct = ", tempTargetCct, L", cctVal_ = ", cctVal_,
           L", step_ = ", step_, L", isSetColorFail_ = ", isSetColorFail_);
}

bool NaturalColorAdjustAlgorithm::SetColorTemper(float cct, uint32_t status) {
  float r = 1.0F;
  float g = 1.0F;
  float b = 1.0F;
  SetPreviousCct(cct);
  if (status != 0) {
    CalcCctRgb(cctMappingCurve_, cct, r, g, b);
  }
  Singleton<NaturalColorReg>::GetInstance().SetNaturalColorRGB(r, g, b);
  FusionInfo input = {};
  input.status = status;
  input.colorInfo.r = r;
  input.colorInfo.g = g;
  input.colorInfo.b = b;
  Color3DInfo output = {};
  Fusion(FEATURE_TYPE_NATURAL_COLOR, &input, &output);
  return executionType_ == kByPlatform ? SetColorTemperByPlatform(&output)
                                       : SetColorTemperByVeloraAssistant(&output);
}

void NaturalColorAdjustAlgorithm::SetPreviousCct(float cct) {
  previousCct_ = cct;
  Singleton<NaturalColorReg>::GetInstance().SetSensorColor(cct);
}

}  // namespace velora
