// Natural colour: a curve, the settings of the dimming, and readings of colour temperature and
// light, all from the host's and the sensor's hands. Interpolation is compared with plain
// arithmetic, and a dimming with what it is for: it lands on the target, in its frames, and never
// walks away from it.
#include "naturalcolor/CctCurve.h"

#include <algorithm>
#include <cmath>

#include "fuzz/Fuzz.h"
#include "naturalcolor/DimmingFrames.h"
#include "support/LogCapture.h"

namespace {

using velora::CctCurve;

// A curve that can be calculated with plainly: finite, ascending, of sensible numbers.
bool IsSensible(const CctCurve& curve) {
  for (size_t i = 0; i < curve.size(); ++i) {
    const CctAlgoInfo& point = curve[i];
    const bool isGood = point.cct >= 0 && point.cct <= 1e5F && std::fabs(point.r) <= 4 &&
                        std::fabs(point.g) <= 4 && std::fabs(point.b) <= 4;
    if (!isGood || (i > 0 && !(point.cct - curve[i - 1].cct >= 1))) {
      return false;
    }
  }
  return !curve.empty();
}

double PlainGain(const CctCurve& curve, double cct, double CctAlgoInfo::*channel) {
  if (cct <= curve.front().cct) return curve.front().*channel;
  for (size_t i = 1; i < curve.size(); ++i) {
    if (cct <= curve[i].cct) {
      const double way = (cct - curve[i - 1].cct) / (curve[i].cct - curve[i - 1].cct);
      return curve[i - 1].*channel * (1 - way) + curve[i].*channel * way;
    }
  }
  return curve.back().*channel;
}

void CheckGains(const CctCurve& curve, float cct) {
  float r = -7;
  float g = -7;
  float b = -7;
  const bool isCalculated = velora::CalcCctRgb(curve, cct, r, g, b);
  fuzz::Require(isCalculated == !curve.empty(), "every curve with points gives gains");
  if (!isCalculated) {
    fuzz::Require(r == -7 && g == -7 && b == -7, "no curve leaves the gains");
    return;
  }
  if (IsSensible(curve) && !std::isnan(cct)) {
    constexpr double kTolerance = 1e-4;  // of single precision, at 1e5 kelvin
    fuzz::Require(std::fabs(r - PlainGain(curve, cct, &CctAlgoInfo::r)) < kTolerance &&
                      std::fabs(g - PlainGain(curve, cct, &CctAlgoInfo::g)) < kTolerance &&
                      std::fabs(b - PlainGain(curve, cct, &CctAlgoInfo::b)) < kTolerance,
                  "gains lie on the line");
    const float clamped = velora::ClampToCurve(curve, cct);
    fuzz::Require(clamped == std::clamp(cct, curve.front().cct, curve.back().cct),
                  "the curve ends where it ends");
  }
}

void CheckNeutral(const CctCurve& curve) {
  const auto isOne = [](double gain) { return std::floor(gain) == 1; };
  const auto found = velora::FindNeutralCct(curve);
  for (const CctAlgoInfo& point : curve) {
    if (isOne(point.r) && isOne(point.g) && isOne(point.b)) {
      fuzz::Require(found && std::memcmp(&*found, &point.cct, sizeof point.cct) == 0,
                    "the first neutral point");
      return;
    }
  }
  fuzz::Require(!found, "no neutral point");
}

class Dimming : public velora::DimmingFrames {
 public:
  void TakeSettings(fuzz::Input& input) {
    frameCount_ = input.Take<int32_t>();
    ctLowLuma_ = input.Take<float>();
    luminanceThresh_ = input.Take<float>();
    dimmingThresh_ = input.Take<float>();
  }

  void Reading(float cct, float lux, bool isSwitch) {
    const float target = TargetOf(cct, lux);
    const float plain = lux < luminanceThresh_ ? ctLowLuma_ : cct;
    fuzz::Require(std::memcmp(&target, &plain, sizeof plain) == 0, "the dark has its own target");
    if (!IsEnableCctDimming(target)) {
      fuzz::Require(!(std::fabs(target - previousAmbientCct_) > dimmingThresh_), "near is near");
      return;
    }
    previousAmbientCct_ = target;
    StartDimming(target);
    isSwitchDimming_ = isSwitch;
    Dim(isSwitch);
  }

 private:
  // Frames until the end; a dimming of very many is left in the middle.
  void Dim(bool isSwitch) {
    constexpr int kMostFrames = 200;
    constexpr int kSkipped = 25;
    const int32_t asked = frameCount_;
    // The steps of a switch are made for 25 frames, whatever their number is: with more than twice
    // as many it walks beyond its target, until its last frame takes it back.
    const bool isSensible = std::fabs(shown_) < 1e6F && std::fabs(targetCct_) < 1e6F &&
                            (!isSwitch || asked <= 2 * kSkipped);
    int frames = 0;
    float distance = std::fabs(targetCct_ - shown_);
    while (isDimming_ && frames < kMostFrames) {
      NextFrame(targetCct_, shown_);
      shown_ = cctVal_;
      CheckLastFrame();
      ++frames;
      if (isSensible) {
        const float rest = std::fabs(targetCct_ - shown_);
        fuzz::Require(rest <= distance + 1, "no frame walks away from the target");
        distance = rest;
      }
    }
    const int64_t steps = asked == 0 ? 50 : asked;
    const int64_t first = isSwitch ? kSkipped : 0;
    const int64_t expected = std::max<int64_t>(1, steps - first + 1);
    fuzz::Require(frames == std::min<int64_t>(expected, kMostFrames), "a dimming has its frames");
    if (!isDimming_) {
      fuzz::Require(std::memcmp(&shown_, &targetCct_, sizeof shown_) == 0,
                    "a dimming lands on the target");
      fuzz::Require(frameIndex_ == 0, "the next dimming starts anew");
    }
    fuzz::Require(!isSwitchDimming_, "a switch is one dimming");
    StopDimming();
  }

  float shown_ = velora::kDefaultCct;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const testsupport::LogCapture log;
  fuzz::Input input(data, size);
  CctCurve curve(input.Take<uint8_t>() % 32);
  for (CctAlgoInfo& point : curve) {
    point.cct = input.Take<float>();
    point.r = input.Take<double>();
    point.g = input.Take<double>();
    point.b = input.Take<double>();
  }
  CheckNeutral(curve);
  Dimming dimming;
  dimming.TakeSettings(input);
  for (int readings = 0; readings < 16 && !input.IsEmpty(); ++readings) {
    const auto cct = input.Take<float>();
    const auto lux = input.Take<float>();
    CheckGains(curve, cct);
    dimming.Reading(cct, lux, input.Take<uint8_t>() % 2 == 1);
  }
  return 0;
}
