#include "naturalcolor/DimmingFrames.h"

#include <cmath>

#include "frame/IntegerCast.h"
#include "frame/Log.h"

namespace velora {
namespace {

constexpr int32_t kSwitchFrames = 25;
constexpr int32_t kDefaultFrames = 50;

// Both without their fractions. The lowest number by -1 has no quotient and stays as it is.
int32_t Divide(float difference, int32_t frames) {
  return static_cast<int32_t>(int64_t{TruncateToInt32(difference)} / frames);
}

}  // namespace

float DimmingFrames::TargetOf(float ambientCct, float lux) const {
  return luminanceThresh_ > lux ? ctLowLuma_ : ambientCct;
}

bool DimmingFrames::IsEnableCctDimming(float targetCct) const {
  return std::fabs(targetCct - previousAmbientCct_) > dimmingThresh_;
}

void DimmingFrames::StartDimming(float targetCct) {
  frameIndex_ = 0;
  isDimming_ = true;
  targetCct_ = targetCct;
}

void DimmingFrames::StopDimming() {
  isDimming_ = false;
  frameIndex_ = 0;
}

void DimmingFrames::NextFrame(float targetCct, float previousCct) {
  if (frameIndex_ == 0) {
    if (frameCount_ == 0) {
      frameCount_ = kDefaultFrames;
    }
    step_ = GetStepValue(targetCct, previousCct);
  }
  const bool isLast = int64_t{frameCount_} - frameIndex_ < 1;
  cctVal_ = isLast ? targetCct : static_cast<float>(step_) + previousCct;
  ++frameIndex_;
}

void DimmingFrames::CheckLastFrame() {
  if (frameIndex_ > frameCount_) {
    StopDimming();
  }
}

int32_t DimmingFrames::GetStepValue(float targetCct, float previousCct) {
  constexpr FunctionLog log("NaturalColorAdjustAlgorithm::GetStepValue");
  const float difference = targetCct - previousCct;
  if (isSwitchDimming_) {
    isSwitchDimming_ = false;
    frameIndex_ += kSwitchFrames;
    log.Info(L"NaturalColor open/close dimming.Number of frames:", kSwitchFrames);
    return Divide(difference, kSwitchFrames);
  }
  log.Info(L"NaturalColor sensor change dimming.Number of frames:", frameCount_);
  return Divide(difference, frameCount_ == 0 ? kDefaultFrames : frameCount_);
}

}  // namespace velora
