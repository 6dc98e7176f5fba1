#include "naturalcolor/Replay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <span>

namespace testsupport {
namespace {

constexpr float kDefault = 5000;
constexpr int32_t kShortFrames = 25;
constexpr double kTolerance = 1e-5;  // of a gain, which is in single precision

// The number behind the label, for lines whose numbers have six digits at most.
float Number(const std::wstring& line, const std::wstring& label) {
  const size_t at = line.find(label);
  if (at == std::wstring::npos) {
    ADD_FAILURE() << "a log line without " << std::string(label.begin(), label.end());
    return 0;
  }
  return std::wcstof(line.c_str() + at + label.size(), nullptr);
}

// Red at a colour temperature on the curve.
double Red(const NatureColorDataIn& settings, float cct) {
  const std::span points(settings.algoInfo, static_cast<size_t>(settings.algoInfoCnt));
  for (size_t i = 1; i < points.size(); ++i) {
    if (cct <= points[i].cct) {
      const double share = (cct - points[i - 1].cct) / (points[i].cct - points[i - 1].cct);
      return points[i - 1].r + share * (points[i].r - points[i - 1].r);
    }
  }
  return points.back().r;
}

std::optional<float> Neutral(const NatureColorDataIn& settings) {
  for (const CctAlgoInfo& point :
       std::span(settings.algoInfo, static_cast<size_t>(settings.algoInfoCnt))) {
    if (point.r == 1 && point.g == 1 && point.b == 1) {
      return point.cct;
    }
  }
  return std::nullopt;
}

}  // namespace

float Replay::Clamped(float cct) const {
  return std::clamp(cct, settings_.algoInfo[0].cct,
                    settings_.algoInfo[settings_.algoInfoCnt - 1].cct);
}

void Replay::Begin(float target) {
  target_ = target;
  index_ = 0;
  isDimming_ = true;
}

void Replay::ExpectShown(float cct, const std::wstring& line) {
  EXPECT_EQ(stored_, cct) << std::string(line.begin(), line.end());
}

void Replay::Follow(const std::vector<Event>& events) {
  const bool hasFailedBefore = testing::Test::HasFailure();
  for (const Event& event : events) {
    switch (event.what) {
      case What::StatusRead:
        status_ = static_cast<uint32_t>(event.value);
        break;
      case What::SensorColor:
        stored_ = event.value;
        break;
      case What::Delivered:
      case What::Refused:
        delivery_ = event;
        break;
      case What::ServiceFound:
        mayResume_ = true;
        break;
      case What::PrinterCct:
        if (isStarting_) {
          OnStartsPrinterCct(event.value);
        } else {
          EXPECT_EQ(event.value, target_) << "the line of the reading comes ahead of it";
        }
        break;
      case What::LogLine:
        if (event.text.starts_with(L"InitNaturalColorAdjustAlgorithm In")) {
          isStarting_ = true;
        } else if (event.text.starts_with(L"StartCct:")) {
          OnReading(event.text);
        } else if (event.text.starts_with(L"SyncNatureColorStatus:")) {
          OnSwitch(event.text);
        } else if (event.text.starts_with(L"frameIndex_ = ")) {
          OnFrame(event.text);
        }
        break;
    }
    if (!hasFailedBefore && testing::Test::HasFailure()) {
      return;  // what follows would all be wrong
    }
  }
}

// By then a start has read the status, and has gone to the neutral point or has not.
void Replay::OnStartsPrinterCct(double cct) {
  isStarting_ = false;
  ++counts_.starts;
  EXPECT_EQ(cct, kDefault);
  const auto neutral = Neutral(settings_);
  EXPECT_EQ(delivery_.has_value(), status_ == 0 && neutral);
  if (delivery_) {
    shown_ = *neutral;
    delivery_.reset();
  }
  EXPECT_EQ(stored_, shown_);
}

void Replay::OnReading(const std::wstring& line) {
  ++counts_.readings;
  const float target = Number(line, L"targetCct = ");
  const float lux = Number(line, L"sensorLight = ");
  const bool isEnough = std::fabs(target - reference_) > settings_.dimmingThreshold;
  const std::string text(line.begin(), line.end());
  EXPECT_EQ(Number(line, L"isEnableCctDimming = "), isEnough) << text;
  EXPECT_EQ(Number(line, L"previousAmbientCct_ = "), reference_) << text;
  EXPECT_EQ(Number(line, L"naturalColorStatus_ = "), status_) << text;
  if (lux < settings_.luminanceThreshold) {
    EXPECT_EQ(target, settings_.minLuma) << text;
  }
  if (isEnough) {
    reference_ = target;
  }
  if (isEnough || hasFailed_) {
    Begin(Clamped(target));
  }
  if (status_ == 0) {
    isDimming_ = false;
  }
}

void Replay::OnSwitch(const std::wstring& line) {
  ++counts_.switches;
  status_ = static_cast<uint32_t>(Number(line, L"SyncNatureColorStatus:"));
  if (const auto neutral = Neutral(settings_)) {
    Begin(status_ == 1 ? kDefault : *neutral);
    isShort_ = true;
  } else {
    isDimming_ = false;
    shown_ = kDefault;
    ExpectShown(kDefault, line);
  }
  delivery_.reset();
}

void Replay::OnFrame(const std::wstring& line) {
  const std::string text(line.begin(), line.end());
  ++counts_.frames;
  if (!isDimming_ && mayResume_) {
    mayResume_ = false;
    isDimming_ = true;
    index_ = 0;
    ++counts_.resumed;
  }
  ASSERT_TRUE(isDimming_) << "a frame while idle: " << text;
  const int32_t count = settings_.frameCount;
  if (index_ == 0) {
    ++counts_.dimmings;
    const int32_t difference = static_cast<int32_t>(target_ - shown_);
    step_ = difference / (isShort_ ? kShortFrames : count);
    index_ = isShort_ ? kShortFrames : 0;
    isShort_ = false;
  }
  const float cct = index_ < count ? shown_ + static_cast<float>(step_) : target_;
  ++index_;
  const bool isShown = delivery_ && delivery_->what == What::Delivered;
  if (delivery_) {
    EXPECT_NEAR(delivery_->value, Red(settings_, cct), kTolerance) << text;
    delivery_.reset();
  }
  hasFailed_ = !isShown;
  if (isShown) {
    shown_ = cct;
  } else {
    ++counts_.failedFrames;
    isDimming_ = false;
    index_ = 0;
  }
  if (index_ > count) {
    ++counts_.ends;
    isDimming_ = false;
    index_ = 0;
  }
  EXPECT_EQ(Number(line, L"frameIndex_ = "), index_) << text;
  EXPECT_EQ(Number(line, L"frameCount_ = "), count) << text;
  EXPECT_EQ(Number(line, L"previousCct_ = "), shown_) << text;
  EXPECT_EQ(Number(line, L"tempTargetCct = "), target_) << text;
  EXPECT_EQ(Number(line, L"cctVal_ = "), cct) << text;
  EXPECT_EQ(Number(line, L"step_ = "), step_) << text;
  EXPECT_EQ(Number(line, L"isSetColorFail_ = "), hasFailed_) << text;
  ExpectShown(shown_, line);
}

}  // namespace testsupport
